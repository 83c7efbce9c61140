// Closing figures, with their windows when there are any.
#include "AstPlots.h"

#include "ExecContext.h"
#include "ValueKind.h"

void CloseStatement::Execute(ExecContext& context) const {
  Session& session = context.session();
  std::string closed;  // empty: every figure
  if (all) {
    session.figures.Clear();
  } else {
    const TavixValue value = title->Evaluate(context);
    if (value.code != kind::STRING) {
      context.Fail(*this, "The argument passed to \"close\" must be \"all\" or the title of a figure.");
    }
    if (!session.figures.Remove(*value.string)) {
      context.Fail(*this, "There is no figure window with title \"" + *value.string + "\" currently open.");
    }
    closed = *value.string;
  }
  if (session.postToFrontEnd) {
    FrontEndRequest request;
    request.kind = FrontEndRequest::Kind::CloseFigure;
    request.command = closed;
    context.RequestFrontEnd(*this, request);
  }
}
