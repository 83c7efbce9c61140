// Running built-in function calls through their table rows.
#include "AstBuiltins.h"

#include "ExecContext.h"
#include "Messages.h"

TavixOrderStructure BuiltinCallExpression::Call(ExecContext& context) const {
  const BuiltinCall call(context, *this);
  if (row->multiFunction) return row->multiFunction(call);
  TavixOrderStructure outputs;
  outputs.Append(row->function(call));
  return outputs;
}

TavixValue BuiltinCallExpression::Evaluate(ExecContext& context) const {
  if (!row->multiFunction) return row->function(BuiltinCall(context, *this));
  const TavixOrderStructure outputs = Call(context);
  if (outputs.NumberOfElements() == 0) context.Fail(*this, msg::kNoReturnValue);
  return outputs.GetValue(0);
}
