// Workspace statements: clear.
#pragma once

#include <string>
#include <vector>

#include "Ast.h"

// clear(all); clear(matrices); ... clear(name, d.variable, s.member, ...);
struct ClearStatement : Statement {
  int collection = -1;  // a token type: ALL, MATRICES, DATASETS, MODELS, STRUCTURES or STRINGS
  std::vector<std::vector<std::string>> paths;
  void Execute(ExecContext& context) const override;
};
