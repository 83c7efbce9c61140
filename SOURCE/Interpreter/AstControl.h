// Compound statements: if, while and for, whose blocks are read once and run from their nodes.
#pragma once

#include <string>

#include "AstConditions.h"
#include "MatrixEntryCache.h"

// if (condition) block [else block] end
struct IfStatement : Statement {
  BoolExpressionPtr condition;
  std::unique_ptr<Block> then;
  std::unique_ptr<Block> otherwise;  // empty without else
  void Execute(ExecContext& context) const override;
};

// while (condition) block end
struct WhileStatement : Statement {
  BoolExpressionPtr condition;
  std::unique_ptr<Block> body;
  void Execute(ExecContext& context) const override;
  // Runs the loop given the condition's first value.
  void Loop(ExecContext& context, bool holds) const;
};

// for (name = from : to) block end
struct ForStatement : Statement {
  std::string variable;
  ExpressionPtr from;
  ExpressionPtr to;
  std::unique_ptr<Block> body;
  void Execute(ExecContext& context) const override;

private:
  MatrixEntryCache m_counter;  // where the loop variable lives
};
