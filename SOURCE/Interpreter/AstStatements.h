// Statement nodes that belong to the program's own rules.
#pragma once

#include "Ast.h"

// Something that cannot stand alone (an expression, a string, a stray token): its value, if
// any, is evaluated, then it is reported as an incomplete statement.
struct GeneralErrorStatement : Statement {
  ExpressionPtr value;  // empty for a stray token
  void Execute(ExecContext& context) const override;
};
