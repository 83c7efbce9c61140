// Element-wise expressions over large matrices evaluated in one pass, block by block, instead of
// one temporary matrix per operator.
#pragma once

#include <Eigen/Dense>

struct Expression;
class ExecContext;

// Evaluates `expression` into `out` when it is a tree of "+", "-", ".*", "./", scaling by a
// 1 by 1 value, division by one, and unary minus, over named matrices of one size and 1 by 1
// values, with enough elements to be worth it. Returns false, having raised nothing and changed
// nothing, for anything else (the caller then evaluates as usual, which reports any error). The
// results are the same numbers as operator-by-operator evaluation gives.
bool EvaluateFused(ExecContext& context, const Expression& expression, Eigen::MatrixXd& out);
