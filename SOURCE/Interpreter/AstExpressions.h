// Expression nodes: literals, constants and workspace names.
#pragma once

#include <string>
#include <vector>

#include "Ast.h"

// A number as typed.
struct NumberLiteral : Expression {
  double value = 0.0;
  TavixValue Evaluate(ExecContext& context) const override;
};

// A string literal; its text is kept as typed, escape pairs included.
struct StringLiteral : Expression {
  std::string text;
  TavixValue Evaluate(ExecContext& context) const override;
};

// A name or a dotted path (`s.a.b`, `d.x`, `m.member`), resolved against the workspace.
struct NameExpression : Expression {
  std::vector<std::string> path;
  TavixValue Evaluate(ExecContext& context) const override;
};
