// Execution of the program's own statement nodes.
#include "AstStatements.h"

#include "ErrorReports.h"
#include "ExecContext.h"
#include "TavixError.h"

void GeneralErrorStatement::Execute(ExecContext& context) const {
  if (value) value->Evaluate(context);
  if (condition) condition->Test(context);
  throw TavixError(IncompleteStatementReport(context.inputName(), context.ReportLine(first)));
}
