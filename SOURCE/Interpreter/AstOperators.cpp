// Evaluation of operators, matrix literals and indexing.
#include <cmath>
#include <limits>
#include <vector>

#include "AstExpressions.h"
#include "Dataset.h"
#include "ElementwiseFusion.h"
#include "ExecContext.h"
#include "MatrixArithmetic.h"
#include "Messages.h"
#include "ValueKind.h"

namespace {

// The matrix an operator works on: a matrix as it is, a dataset's data. Other kinds fail with
// `refusal` followed by the kind's word; a dataset with string variables cannot take part.
std::shared_ptr<const Eigen::MatrixXd> Operand(ExecContext& context, const Node& at,
                                               const Expression& operand, const TavixValue& value,
                                               const std::string& refusal) {
  switch (value.code) {
    case kind::MATRIX:
      return value.matrix;
    case kind::DATASET:
      if (value.dataset->HasStringVariables()) {
        context.Fail(at, "Dataset \"" +
                             context.stream().Text(operand.first, operand.last) +
                             "\" contains string variables and cannot be used in mathematical "
                             "expressions.");
      }
      return std::make_shared<const Eigen::MatrixXd>(value.dataset->GetData());
    default:
      context.Fail(at, refusal + KindWord(value.code));
  }
}

std::string Refusal(BinaryOperator op, const std::string& text) {
  switch (op) {
    case BinaryOperator::Add:
    case BinaryOperator::Subtract:
      return "Binary operator \"" + text + "\" is not defined for ";
    default:
      return "Operator \"" + text + "\" is not defined for ";
  }
}

}  // namespace

namespace {

// Chains such as a + b + c + ... are trees whose left spine grows with every operand; past this
// length they are evaluated along the spine in a loop rather than by recursion, so that a sum of
// 200,000 terms needs no deeper stack than a sum of two.
constexpr std::size_t kRecursiveSpine = 64;

// The nodes of the left spine from `top` down (top first), stopping after `limit` nodes.
std::vector<const BinaryExpression*> LeftSpine(const BinaryExpression& top, std::size_t limit) {
  std::vector<const BinaryExpression*> spine = {&top};
  while (spine.size() <= limit) {
    const auto* next = dynamic_cast<const BinaryExpression*>(spine.back()->left.get());
    if (!next) break;
    spine.push_back(next);
  }
  return spine;
}

double ScalarOperation(BinaryOperator op, double a, double b) {
  switch (op) {
    case BinaryOperator::Add: return a + b;
    case BinaryOperator::Subtract: return a - b;
    case BinaryOperator::Multiply:
    case BinaryOperator::ElementMultiply: return a * b;
    case BinaryOperator::Divide:
    case BinaryOperator::ElementDivide: return a / b;
    case BinaryOperator::Power:
    case BinaryOperator::ElementPower: return std::pow(a, b);
  }
  return 0.0;
}

// node's operator on its two evaluated operands, with node's messages.
void Combine(ExecContext& context, const BinaryExpression& node, const TavixValue& l, const TavixValue& r,
             Eigen::MatrixXd& out) {
  const BinaryOperator op = node.op;
  const bool power = op == BinaryOperator::Power || op == BinaryOperator::ElementPower;
  if (power && r.code != kind::MATRIX && r.code != kind::DATASET) {
    context.Fail(node, msg::kExponentKind);
  }
  const auto a = Operand(context, node, *node.left, l, Refusal(op, node.opText));
  const auto b = Operand(context, node, *node.right, r, Refusal(op, node.opText));
  const std::atomic<bool>* interrupt = &context.session().interruptRequested;
  std::string failure;
  switch (op) {
    case BinaryOperator::Add: failure = arithmetic::AddSubtract(*a, *b, false, out); break;
    case BinaryOperator::Subtract: failure = arithmetic::AddSubtract(*a, *b, true, out); break;
    case BinaryOperator::Multiply: failure = arithmetic::Multiply(*a, *b, out, interrupt); break;
    case BinaryOperator::Divide: failure = arithmetic::Divide(*a, *b, out); break;
    case BinaryOperator::ElementMultiply: failure = arithmetic::ElementWise(*a, *b, false, out); break;
    case BinaryOperator::ElementDivide: failure = arithmetic::ElementWise(*a, *b, true, out); break;
    case BinaryOperator::Power: failure = arithmetic::Power(*a, *b, out, interrupt); break;
    case BinaryOperator::ElementPower: failure = arithmetic::ElementPower(*a, *b, out); break;
  }
  if (!failure.empty()) context.Fail(node, failure);
}

}  // namespace

BinaryExpression::~BinaryExpression() {
  // Takes a long left spine apart from the top, so that destroying it needs no deep stack.
  while (auto* next = dynamic_cast<BinaryExpression*>(left.get())) {
    ExpressionPtr below = std::move(next->left);
    left = std::move(below);
  }
}

TavixValue BinaryExpression::Evaluate(ExecContext& context) const {
  Eigen::MatrixXd out;
  EvaluateInto(context, out);
  return TavixValue::FromMatrix(std::move(out));
}

bool BinaryExpression::EvaluateScalar(ExecContext& context, double& out) const {
  // On 1 by 1 operands every operator is the arithmetic of the two numbers, operands evaluated
  // left to right as the recursion would.
  const std::vector<const BinaryExpression*> spine = LeftSpine(*this, std::numeric_limits<std::size_t>::max());
  double value = 0.0;
  if (!spine.back()->left->EvaluateScalar(context, value)) return false;
  for (auto node = spine.rbegin(); node != spine.rend(); ++node) {
    double b = 0.0;
    if (!(*node)->right->EvaluateScalar(context, b)) return false;
    value = ScalarOperation((*node)->op, value, b);
  }
  out = value;
  return true;
}

bool BinaryExpression::EvaluateInto(ExecContext& context, Eigen::MatrixXd& out) const {
  double scalar = 0.0;
  if (EvaluateScalar(context, scalar)) {
    out.resize(1, 1);
    out(0, 0) = scalar;
    return true;
  }
  const std::vector<const BinaryExpression*> spine = LeftSpine(*this, kRecursiveSpine);
  if (spine.size() > kRecursiveSpine) {
    // A long chain: along the spine from the bottom, each step's result the next one's left.
    const std::vector<const BinaryExpression*> all = LeftSpine(*this, std::numeric_limits<std::size_t>::max());
    TavixValue value = all.back()->left->Evaluate(context);
    for (auto node = all.rbegin(); node != all.rend(); ++node) {
      context.CheckInterrupt();
      Eigen::MatrixXd step;
      Combine(context, **node, value, (*node)->right->Evaluate(context), step);
      value = TavixValue::FromMatrix(std::move(step));
    }
    out = *value.matrix;
    return true;
  }
  if (EvaluateFused(context, *this, out)) return true;
  Combine(context, *this, left->Evaluate(context), right->Evaluate(context), out);
  return true;
}

bool UnaryExpression::EvaluateScalar(ExecContext& context, double& out) const {
  if (!operand->EvaluateScalar(context, out)) return false;
  if (negate) out = -out;
  return true;
}

TavixValue UnaryExpression::Evaluate(ExecContext& context) const {
  TavixValue value = operand->Evaluate(context);
  if (!negate) return value;
  const auto m = Operand(context, *this, *operand, value, "Unary minus is not defined for ");
  return TavixValue::FromMatrix(Eigen::MatrixXd(-*m));
}

TavixValue TransposeExpression::Evaluate(ExecContext& context) const {
  const TavixValue value = operand->Evaluate(context);
  const auto m = Operand(context, *this, *operand, value, "Operator \"'\" is not defined for ");
  // x'' is x again (as a matrix), however many primes follow.
  return TavixValue::FromMatrix(times % 2 == 1 ? Eigen::MatrixXd(m->transpose()) : Eigen::MatrixXd(*m));
}

TavixValue BlockMatrixExpression::Evaluate(ExecContext& context) const {
  // Evaluate every block first, then check the shapes and copy once into the result.
  std::vector<std::vector<std::shared_ptr<Eigen::MatrixXd>>> blocks(rows.size());
  std::vector<Eigen::Index> rowHeights(rows.size(), 0);
  Eigen::Index totalRows = 0;
  Eigen::Index totalCols = -1;
  for (std::size_t r = 0; r < rows.size(); ++r) {
    Eigen::Index height = -1;
    Eigen::Index width = 0;
    for (const auto& element : rows[r]) {
      TavixValue value = element->Evaluate(context);
      if (value.code != kind::MATRIX) context.Fail(*element, msg::kBlockElements);
      const auto& m = value.matrix;
      if (m->size() == 0) continue;  // empty blocks join anything
      if (height >= 0 && m->rows() != height) context.Fail(*element, msg::kInconsistentSubmatrices);
      height = m->rows();
      width += m->cols();
      blocks[r].push_back(m);
    }
    if (height < 0) continue;  // an empty row adds nothing
    if (totalCols >= 0 && width != totalCols) context.Fail(*this, msg::kInconsistentSubmatrices);
    totalCols = width;
    rowHeights[r] = height;
    totalRows += height;
  }
  Eigen::MatrixXd result(totalRows, std::max<Eigen::Index>(totalCols, 0));
  Eigen::Index top = 0;
  for (std::size_t r = 0; r < rows.size(); ++r) {
    Eigen::Index leftEdge = 0;
    for (const auto& m : blocks[r]) {
      result.block(top, leftEdge, m->rows(), m->cols()) = *m;
      leftEdge += m->cols();
    }
    top += rowHeights[r];
  }
  return TavixValue::FromMatrix(std::move(result));
}

IndexList EvaluateIndex(ExecContext& context, const IndexArgument& argument, Eigen::Index extent,
                        const std::string& outOfBounds) {
  IndexList list;
  if (argument.all) {
    list.all = true;
    return list;
  }
  auto integerValue = [&](const Expression& node) -> std::shared_ptr<Eigen::MatrixXd> {
    TavixValue value = node.Evaluate(context);
    if (value.code != kind::MATRIX) context.Fail(argument, msg::kRangePositive);
    for (double v : value.matrix->reshaped()) {
      if (!(v >= 1.0) || v != std::floor(v) || !std::isfinite(v)) {
        context.Fail(argument, msg::kRangePositive);
      }
    }
    return value.matrix;
  };
  const auto from = integerValue(*argument.from);
  if (argument.to) {
    const auto to = integerValue(*argument.to);
    if (from->size() != 1 || to->size() != 1) context.Fail(argument, msg::kRangePositive);
    // Compare as numbers first: the ends may be far beyond any index.
    if ((*to)(0, 0) < (*from)(0, 0)) context.Fail(argument, msg::kRangeOrder);
    if ((*to)(0, 0) > static_cast<double>(extent)) context.Fail(argument, outOfBounds);
    const auto a = static_cast<Eigen::Index>((*from)(0, 0));
    const auto b = static_cast<Eigen::Index>((*to)(0, 0));
    list.indices.reserve(static_cast<std::size_t>(b - a + 1));
    for (Eigen::Index i = a; i <= b; ++i) list.indices.push_back(i - 1);
    return list;
  }
  list.indices.reserve(static_cast<std::size_t>(from->size()));
  for (double v : from->reshaped()) {
    if (v > static_cast<double>(extent)) context.Fail(argument, outOfBounds);
    list.indices.push_back(static_cast<Eigen::Index>(v) - 1);
  }
  return list;
}

TavixValue IndexExpression::Evaluate(ExecContext& context) const {
  const TavixValue value = target->Evaluate(context);
  std::shared_ptr<const Eigen::MatrixXd> source;
  if (value.code == kind::MATRIX) {
    source = value.matrix;
  } else if (value.code == kind::DATASET) {
    source = std::make_shared<const Eigen::MatrixXd>(value.dataset->GetData());
  } else {
    context.Fail(*this, std::string("Range operations are not defined for ") + KindWord(value.code));
  }
  const Eigen::MatrixXd& m = *source;

  if (arguments.size() == 1) {
    // One index counts the elements in column order.
    const IndexList list = EvaluateIndex(context, *arguments[0], m.size());
    const Eigen::Index n = list.Count(m.size());
    Eigen::MatrixXd out = m.rows() == 1 ? Eigen::MatrixXd(1, n) : Eigen::MatrixXd(n, 1);
    for (Eigen::Index k = 0; k < n; ++k) out(k) = m.reshaped()(list.At(k));
    return TavixValue::FromMatrix(std::move(out));
  }

  const IndexList rowList = EvaluateIndex(context, *arguments[0], m.rows());
  const IndexList colList = EvaluateIndex(context, *arguments[1], m.cols());
  const Eigen::Index nr = rowList.Count(m.rows());
  const Eigen::Index nc = colList.Count(m.cols());
  if (value.code == kind::DATASET) {
    for (Eigen::Index c = 0; c < nc; ++c) {
      const auto& names = value.dataset->VariableNames();
      if (value.dataset->IsStringVariable(names[static_cast<std::size_t>(colList.At(c))])) {
        context.Fail(*this, "The requested range from dataset \"" +
                                context.stream().Text(target->first, target->last) +
                                "\" contains string variables and cannot be turned into a matrix.");
      }
    }
  }
  // Repeated indices can ask for far more than the source holds: x(ones(1e5, 1), ones(1e5, 1)).
  const std::string refusal = arithmetic::SizeRefusal(static_cast<double>(nr), static_cast<double>(nc));
  if (!refusal.empty()) context.Fail(*this, refusal);
  Eigen::MatrixXd out(nr, nc);
  for (Eigen::Index c = 0; c < nc; ++c) {
    const Eigen::Index sc = colList.At(c);
    for (Eigen::Index r = 0; r < nr; ++r) out(r, c) = m(rowList.At(r), sc);
  }
  return TavixValue::FromMatrix(std::move(out));
}
