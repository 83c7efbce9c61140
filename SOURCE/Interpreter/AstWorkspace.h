// Workspace statements: clear and setbinary.
#pragma once

#include <string>
#include <vector>

#include "Ast.h"
#include "AstExpressions.h"

// clear(all); clear(matrices); ... clear(name, d.variable, s.member, ...);
struct ClearStatement : Statement {
  int collection = -1;  // a token type: ALL, MATRICES, DATASETS, MODELS, STRUCTURES or STRINGS
  std::vector<std::vector<std::string>> paths;
  void Execute(ExecContext& context) const override;
};

// setbinary(program, directory); records where an external program is installed.
struct SetBinaryStatement : Statement {
  std::string program;  // as typed
  ExpressionPtr directory;
  void Execute(ExecContext& context) const override;
};
