// Figure statements that are not built-in calls: close(all) and close(title).
#pragma once

#include "Ast.h"

struct CloseStatement : Statement {
  bool all = false;
  ExpressionPtr title;  // when not all
  void Execute(ExecContext& context) const override;
};
