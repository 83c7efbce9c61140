// The nodes that parsing builds and running executes: the bases shared by every node family.
#pragma once

#include <memory>
#include <vector>

#include "TavixValue.h"

class ExecContext;

// Every node remembers the indices of its first and last token, which is all an error report
// needs: the line and the text of the construct as typed.
struct Node {
  int first = 0;
  int last = 0;
  virtual ~Node() = default;
};

// A statement: runs for its effects.
struct Statement : Node {
  virtual void Execute(ExecContext& context) const = 0;
};

// An expression: yields a value.
struct Expression : Node {
  virtual TavixValue Evaluate(ExecContext& context) const = 0;
  // Evaluates a matrix result straight into `destination`, reusing its storage; false when the
  // node does not do this (the caller then uses Evaluate). `destination` may be one of the
  // operands; it is written only after every check has passed.
  virtual bool EvaluateInto(ExecContext&, Eigen::MatrixXd&) const { return false; }
  // The value as a plain number when the whole expression is arithmetic on 1 by 1 values, with
  // no allocation; false otherwise, having raised nothing and changed nothing (the caller then
  // uses Evaluate, which reports any error). Only nodes without side effects implement it.
  virtual bool EvaluateScalar(ExecContext&, double&) const { return false; }
  // The matrix the expression names, without copying and without raising anything; null when
  // it is not a plain name of a matrix.
  virtual const Eigen::MatrixXd* PeekMatrix(ExecContext&) const { return nullptr; }
};

using StatementPtr = std::unique_ptr<Statement>;
using ExpressionPtr = std::unique_ptr<Expression>;

// A block of statements, read once and run as often as its statement requires.
struct Block : Node {
  std::vector<StatementPtr> statements;
  // Runs the statements in order; checks for an interrupt before each.
  void Run(ExecContext& context) const;
};
