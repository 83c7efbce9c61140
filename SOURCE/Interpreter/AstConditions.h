// Condition nodes: boolean conditions of if and while, each yielding one truth value.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Ast.h"

// A condition that yields one truth value.
struct BoolExpression : Node {
  virtual bool Test(ExecContext& context) const = 0;
};

using BoolExpressionPtr = std::unique_ptr<BoolExpression>;

// "true" or "false".
struct BoolConstant : BoolExpression {
  bool value = false;
  bool Test(ExecContext&) const override { return value; }
};

// "~" condition
struct BoolNot : BoolExpression {
  BoolExpressionPtr operand;
  bool Test(ExecContext& context) const override { return !operand->Test(context); }
};

// condition { ("&" | "|") condition }, grouped from the left; a right operand runs only when the
// left side does not already decide the result.
struct BoolChain : BoolExpression {
  BoolExpressionPtr head;
  std::vector<std::pair<bool, BoolExpressionPtr>> rest;  // (is "&", operand)
  bool Test(ExecContext& context) const override;
};

// The six comparison operators.
enum class Comparison { Equal, NotEqual, Less, Greater, LessEqual, GreaterEqual };

// Compares two numbers: "==" and the orderings are false when NaN is involved; "~=" is true
// unless the numbers are equal.
bool Compare(Comparison op, double a, double b);
Comparison ComparisonOf(std::string_view text);

// expr COMPARISON expr, both sides 1 by 1 matrices.
struct BoolComparison : BoolExpression {
  Comparison op = Comparison::Equal;
  ExpressionPtr left;
  ExpressionPtr right;
  bool Test(ExecContext& context) const override;
};

// strcmp(expr, expr): true when both are strings with equal text.
struct StrcmpCondition : BoolExpression {
  ExpressionPtr left;
  ExpressionPtr right;
  bool Test(ExecContext& context) const override;
};

// A condition with one truth value (0 or 1) per element, such as a row selector.
struct LogicalExpression : Node {
  virtual Eigen::VectorXi Evaluate(ExecContext& context) const = 0;
};

using LogicalExpressionPtr = std::unique_ptr<LogicalExpression>;

// "~" condition: 1 and 0 swap.
struct LogicalNot : LogicalExpression {
  LogicalExpressionPtr operand;
  Eigen::VectorXi Evaluate(ExecContext& context) const override;
};

// condition { ("&" | "|") condition }, grouped from the left; both sides always evaluated; "&"
// takes the element-wise minimum, "|" the maximum.
struct LogicalChain : LogicalExpression {
  LogicalExpressionPtr head;
  std::vector<std::pair<bool, LogicalExpressionPtr>> rest;  // (is "&", operand)
  Eigen::VectorXi Evaluate(ExecContext& context) const override;
};

// expr COMPARISON expr on vectors, element by element; a 1 by 1 side meets every element.
struct LogicalComparison : LogicalExpression {
  Comparison op = Comparison::Equal;
  ExpressionPtr left;
  ExpressionPtr right;
  Eigen::VectorXi Evaluate(ExecContext& context) const override;
};
