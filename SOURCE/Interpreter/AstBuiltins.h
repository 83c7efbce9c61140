// Calls of built-in functions: the keyword, its arguments and named options, and its table row.
#pragma once

#include <string>
#include <vector>

#include "Ast.h"
#include "BuiltinCall.h"
#include "TavixOrderStructure.h"

// A call that can give several outputs: user functions and the multi-output built-ins.
struct MultiValueExpression : Expression {
  // The outputs in order, the first one as member "0".
  virtual TavixOrderStructure Call(ExecContext& context) const = 0;
};

// A list of names in braces, {a, b, "c"}, as some built-ins take it (variable names).
struct NameListExpression : Expression {
  std::vector<std::string> names;
  // A list is not a value: the built-in that takes it reads `names`.
  TavixValue Evaluate(ExecContext&) const override { return {}; }
};

// keyword(arguments [, "name" = value ...])
struct BuiltinCallExpression : MultiValueExpression {
  std::string keyword;  // as typed
  const BuiltinRow* row = nullptr;
  std::vector<ExpressionPtr> arguments;
  struct NamedOption {
    std::string name;
    ExpressionPtr value;
  };
  std::vector<NamedOption> options;

  TavixValue Evaluate(ExecContext& context) const override;
  TavixOrderStructure Call(ExecContext& context) const override;
};

// A built-in that acts (summary, sortd, ...) standing as a statement; its value is dropped.
struct BuiltinStatement : Statement {
  std::unique_ptr<BuiltinCallExpression> call;
  void Execute(ExecContext& context) const override { call->Evaluate(context); }
};

// The row of the built-in typed as `keyword`; null when no built-in has that name.
const BuiltinRow* FindBuiltin(const std::string& keyword);
