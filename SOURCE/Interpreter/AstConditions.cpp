// Evaluation of boolean conditions.
#include "AstConditions.h"

#include <cmath>

#include "Dataset.h"
#include "ExecContext.h"
#include "ValueKind.h"

bool BoolChain::Test(ExecContext& context) const {
  bool result = head->Test(context);
  for (const auto& [isAnd, operand] : rest) {
    if (isAnd) {
      result = result && operand->Test(context);
    } else {
      result = result || operand->Test(context);
    }
  }
  return result;
}

Comparison ComparisonOf(std::string_view text) {
  if (text == "==") return Comparison::Equal;
  if (text == "~=") return Comparison::NotEqual;
  if (text == "<") return Comparison::Less;
  if (text == ">") return Comparison::Greater;
  if (text == "<=") return Comparison::LessEqual;
  return Comparison::GreaterEqual;
}

bool Compare(Comparison op, double a, double b) {
  switch (op) {
    case Comparison::Equal: return a == b;
    case Comparison::Less: return a < b;
    case Comparison::Greater: return a > b;
    case Comparison::LessEqual: return a <= b;
    case Comparison::GreaterEqual: return a >= b;
    case Comparison::NotEqual: break;
  }
  return !(a == b);
}

bool BoolComparison::Test(ExecContext& context) const {
  double x = 0.0;
  double y = 0.0;
  if (left->EvaluateScalar(context, x) && right->EvaluateScalar(context, y)) return Compare(op, x, y);
  const TavixValue a = left->Evaluate(context);
  const TavixValue b = right->Evaluate(context);
  const auto scalar = [](const TavixValue& v) {
    return v.code == kind::MATRIX && v.matrix->rows() == 1 && v.matrix->cols() == 1;
  };
  if (!scalar(a) || !scalar(b)) {
    context.Fail(*this, "Left- and right-side expressions in comparisons must be 1x1 matrices.");
  }
  return Compare(op, (*a.matrix)(0, 0), (*b.matrix)(0, 0));
}

bool StrcmpCondition::Test(ExecContext& context) const {
  const TavixValue a = left->Evaluate(context);
  const TavixValue b = right->Evaluate(context);
  for (const auto* side : {&a, &b}) {
    if (side->code != kind::STRING) {
      const Expression& node = side == &a ? *left : *right;
      context.Fail(*this, "Argument \"" + context.stream().Text(node.first, node.last) +
                              "\" passed to \"strcmp\" is not a string.");
    }
  }
  return *a.string == *b.string;
}

Eigen::VectorXi LogicalNot::Evaluate(ExecContext& context) const {
  return (1 - operand->Evaluate(context).array()).matrix();
}

Eigen::VectorXi LogicalChain::Evaluate(ExecContext& context) const {
  Eigen::VectorXi result = head->Evaluate(context);
  for (const auto& [isAnd, operand] : rest) {
    const Eigen::VectorXi next = operand->Evaluate(context);
    if (next.size() != result.size()) {
      context.Fail(*operand, "The logical conditions in the compound logical expression have "
                             "different number of rows");
    }
    if (isAnd) {
      result = result.cwiseMin(next);
    } else {
      result = result.cwiseMax(next);
    }
  }
  return result;
}

Eigen::VectorXi LogicalComparison::Evaluate(ExecContext& context) const {
  const TavixValue a = left->Evaluate(context);
  const TavixValue b = right->Evaluate(context);
  const auto text = [&](const Expression& node) {
    return context.stream().Text(node.first, node.last);
  };
  // The numbers of a side: a matrix, or a dataset's data.
  const auto numbers = [&](const TavixValue& v) -> Eigen::MatrixXd {
    if (v.code == kind::MATRIX) return *v.matrix;
    if (v.code == kind::DATASET && !v.dataset->HasStringVariables()) return v.dataset->GetData();
    context.Fail(*this, "Left- and right-side expressions in logical conditions must be vectors.");
  };
  const Eigen::MatrixXd x = numbers(a);
  const Eigen::MatrixXd y = numbers(b);
  const auto vector = [](const Eigen::MatrixXd& m) { return m.rows() == 1 || m.cols() == 1; };
  if (!vector(x)) context.Fail(*this, "\"" + text(*left) + "\" is not a vector.");
  if (!vector(y)) context.Fail(*this, "\"" + text(*right) + "\" is not a vector.");
  if (x.size() != 1 && y.size() != 1 && x.size() != y.size()) {
    context.Fail(*this, "The dimensions of \"" + text(*left) + "\" and \"" + text(*right) +
                            "\" do not match.");
  }
  const Eigen::Index n = std::max(x.size(), y.size());
  Eigen::VectorXi result = Eigen::VectorXi::Zero(n);
  for (Eigen::Index i = 0; i < n; ++i) {
    if (Compare(op, x(x.size() == 1 ? 0 : i), y(y.size() == 1 ? 0 : i))) result(i) = 1;
  }
  return result;
}
