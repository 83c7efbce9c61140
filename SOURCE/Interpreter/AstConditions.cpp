// Evaluation of boolean conditions.
#include "AstConditions.h"

#include <cmath>

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
