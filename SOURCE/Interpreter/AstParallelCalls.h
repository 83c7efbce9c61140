// mthread: calls of one user function on worker threads, as a value and as a statement.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Ast.h"

// mthread(@name, arguments [, "threads" = k]): one call per row of a matrix or per member of a
// structure, at most k at a time; the first outputs in call order, as the rows of a matrix when
// each is a row (or a scalar) of the same length, as a structure otherwise.
struct MthreadExpression : Expression {
  std::string name;  // the function, without the "@"
  ExpressionPtr arguments;
  struct NamedOption {
    std::string name;
    ExpressionPtr value;
  };
  std::vector<NamedOption> options;

  TavixValue Evaluate(ExecContext& context) const override { return Run(context, true); }
  // Runs every call; with `resultWanted` false (a statement) the outputs are dropped, and a
  // function without outputs may be called.
  TavixValue Run(ExecContext& context, bool resultWanted) const;
};

// mthread(...); as a statement: the calls run for what they print.
struct MthreadStatement : Statement {
  std::unique_ptr<MthreadExpression> call;
  void Execute(ExecContext& context) const override { call->Run(context, false); }
};
