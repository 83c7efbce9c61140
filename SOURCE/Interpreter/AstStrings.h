// Statements on string variables.
#pragma once

#include <string>

#include "AstExpressions.h"

// strreplace(s, find, repl); replaces every occurrence of find in the string variable s;
// strreplace(s, repl, a:b); replaces characters a through b.
struct StringReplaceStatement : Statement {
  std::string name;  // the string variable
  ExpressionPtr second;
  ExpressionPtr third;  // the replacement text, or the start of the range
  ExpressionPtr rangeEnd;  // set for the range form
  void Execute(ExecContext& context) const override;
};
