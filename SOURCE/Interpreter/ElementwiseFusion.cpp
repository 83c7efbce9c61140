#include "ElementwiseFusion.h"

#include <algorithm>
#include <array>
#include <vector>

#include "AstExpressions.h"

namespace {

// Below this many elements one temporary per operator costs little.
constexpr Eigen::Index kMinimumElements = 4096;
// Elements per block: the temporaries of a block stay in the first-level cache.
constexpr Eigen::Index kBlock = 4096;

enum class Op { LoadMatrix, LoadScalar, Negate, Add, Subtract, Multiply, Divide };

// One step of the postfix program: loads push a block (or a scalar), operators pop two (one for
// Negate) and push their result.
struct Step {
  Op op;
  const double* data = nullptr;  // LoadMatrix
  double scalar = 0.0;           // LoadScalar
};

struct Plan {
  std::vector<Step> steps;
  Eigen::Index rows = -1;  // the common size of the matrix operands
  Eigen::Index cols = -1;
  int depth = 0;           // the deepest stack the program reaches
  std::size_t visited = 0;  // nodes compiled so far
};

// The shape a subtree yields: a 1 by 1 value or a matrix of the common size.
enum class Shape { Scalar, Matrix, Unfusable };

// Expressions of more steps than this are left to the evaluator (compiling walks the tree by
// recursion, and asks each subtree whether it is a number).
constexpr std::size_t kMaxSteps = 64;

Shape Compile(ExecContext& context, const Expression& node, Plan& plan, int depth) {
  if (++plan.visited > kMaxSteps) return Shape::Unfusable;
  plan.depth = std::max(plan.depth, depth + 1);
  double scalar = 0.0;
  if (node.EvaluateScalar(context, scalar)) {
    plan.steps.push_back({Op::LoadScalar, nullptr, scalar});
    return Shape::Scalar;
  }
  if (const Eigen::MatrixXd* m = node.PeekMatrix(context)) {
    if (m->size() < kMinimumElements) return Shape::Unfusable;
    if (plan.rows >= 0 && (m->rows() != plan.rows || m->cols() != plan.cols)) return Shape::Unfusable;
    plan.rows = m->rows();
    plan.cols = m->cols();
    plan.steps.push_back({Op::LoadMatrix, m->data(), 0.0});
    return Shape::Matrix;
  }
  if (const auto* unary = dynamic_cast<const UnaryExpression*>(&node)) {
    const Shape inner = Compile(context, *unary->operand, plan, depth);
    if (inner == Shape::Unfusable) return inner;
    if (unary->negate) plan.steps.push_back({Op::Negate});
    return inner;
  }
  const auto* binary = dynamic_cast<const BinaryExpression*>(&node);
  if (!binary) return Shape::Unfusable;
  Op op = Op::Add;
  switch (binary->op) {
    case BinaryOperator::Add: op = Op::Add; break;
    case BinaryOperator::Subtract: op = Op::Subtract; break;
    case BinaryOperator::Multiply:
    case BinaryOperator::ElementMultiply: op = Op::Multiply; break;
    case BinaryOperator::Divide:
    case BinaryOperator::ElementDivide: op = Op::Divide; break;
    default: return Shape::Unfusable;
  }
  const Shape left = Compile(context, *binary->left, plan, depth);
  if (left == Shape::Unfusable) return left;
  const Shape right = Compile(context, *binary->right, plan, depth + 1);
  if (right == Shape::Unfusable) return right;
  // A matrix product of two matrices, or a division by a matrix, is not element-wise.
  if (binary->op == BinaryOperator::Multiply && left == Shape::Matrix && right == Shape::Matrix) {
    return Shape::Unfusable;
  }
  if (binary->op == BinaryOperator::Divide && right == Shape::Matrix) return Shape::Unfusable;
  plan.steps.push_back({op});
  return left == Shape::Scalar && right == Shape::Scalar ? Shape::Scalar : Shape::Matrix;
}

// A value on the stack while a block runs: a block of `count` elements or a scalar.
struct Slot {
  const double* data;
  double scalar;
  bool isScalar;
};

using Block = Eigen::Map<Eigen::ArrayXd>;
using ConstBlock = Eigen::Map<const Eigen::ArrayXd>;

// out = a op b over one block, with Eigen's vectorised loops.
template <typename F>
void Apply(const Slot& a, const Slot& b, double* out, Eigen::Index count, F f) {
  Block target(out, count);
  if (a.isScalar) {
    target = f(a.scalar, ConstBlock(b.data, count));
  } else if (b.isScalar) {
    target = f(ConstBlock(a.data, count), b.scalar);
  } else {
    target = f(ConstBlock(a.data, count), ConstBlock(b.data, count));
  }
}

void RunBlock(const Plan& plan, Eigen::Index offset, Eigen::Index count,
              std::vector<std::array<double, kBlock>>& buffers, std::vector<Slot>& stack,
              double* out) {
  stack.clear();
  for (std::size_t k = 0; k < plan.steps.size(); ++k) {
    const Step& step = plan.steps[k];
    const std::size_t level = stack.size();
    // The last step writes straight into the result.
    const bool last = k + 1 == plan.steps.size();
    switch (step.op) {
      case Op::LoadMatrix: stack.push_back({step.data + offset, 0.0, false}); break;
      case Op::LoadScalar: stack.push_back({nullptr, step.scalar, true}); break;
      case Op::Negate: {
        Slot& top = stack.back();
        double* target = last ? out + offset : buffers[level - 1].data();
        Block(target, count) = -ConstBlock(top.data, count);
        top = {target, 0.0, false};
        break;
      }
      default: {
        const Slot b = stack.back();
        stack.pop_back();
        const Slot a = stack.back();
        double* target = last ? out + offset : buffers[level - 2].data();
        switch (step.op) {
          case Op::Add: Apply(a, b, target, count, [](const auto& x, const auto& y) { return x + y; }); break;
          case Op::Subtract: Apply(a, b, target, count, [](const auto& x, const auto& y) { return x - y; }); break;
          case Op::Multiply: Apply(a, b, target, count, [](const auto& x, const auto& y) { return x * y; }); break;
          default: Apply(a, b, target, count, [](const auto& x, const auto& y) { return x / y; }); break;
        }
        stack.back() = {target, 0.0, false};
        break;
      }
    }
  }
}

bool IsLoad(const Step& step) { return step.op == Op::LoadMatrix || step.op == Op::LoadScalar; }

// Calls `use` with the element operation of an operator step.
template <typename Use>
void WithOperation(Op op, Use use) {
  switch (op) {
    case Op::Add: use([](double x, double y) { return x + y; }); break;
    case Op::Subtract: use([](double x, double y) { return x - y; }); break;
    case Op::Multiply: use([](double x, double y) { return x * y; }); break;
    default: use([](double x, double y) { return x / y; }); break;
  }
}

// Two operators over three operands in one loop per block, the most common shape (A * 2 - B,
// (A + B) / 2): op2(op1(a, b), c), or op2(a, op1(b, c)) when `rightNested`. Scalars are read
// from a block filled with their value, so every operand is a plain array and the loop
// vectorises. False when the plan has another shape.
bool RunTwoOperators(const Plan& plan, double* out, Eigen::Index total) {
  const auto& s = plan.steps;
  if (s.size() != 5 || !IsLoad(s[0]) || !IsLoad(s[1]) || s[4].op == Op::Negate) return false;
  bool rightNested = false;
  if (!IsLoad(s[2]) && s[2].op != Op::Negate && IsLoad(s[3])) {
    rightNested = false;
  } else if (IsLoad(s[2]) && !IsLoad(s[3]) && s[3].op != Op::Negate) {
    rightNested = true;
  } else {
    return false;
  }
  const Step* operands[3] = {&s[0], &s[1], rightNested ? &s[2] : &s[3]};
  const Op first = rightNested ? s[3].op : s[2].op;
  std::array<std::array<double, kBlock>, 3> broadcast{};
  for (int k = 0; k < 3; ++k) {
    if (operands[k]->op == Op::LoadScalar) broadcast[static_cast<std::size_t>(k)].fill(operands[k]->scalar);
  }
  WithOperation(first, [&](auto f1) {
    WithOperation(s[4].op, [&](auto f2) {
      for (Eigen::Index offset = 0; offset < total; offset += kBlock) {
        const Eigen::Index count = std::min(kBlock, total - offset);
        const double* p[3];
        for (int k = 0; k < 3; ++k) {
          p[k] = operands[k]->op == Op::LoadScalar ? broadcast[static_cast<std::size_t>(k)].data()
                                                   : operands[k]->data + offset;
        }
        double* o = out + offset;
        if (rightNested) {
          for (Eigen::Index i = 0; i < count; ++i) o[i] = f2(p[0][i], f1(p[1][i], p[2][i]));
        } else {
          for (Eigen::Index i = 0; i < count; ++i) o[i] = f2(f1(p[0][i], p[1][i]), p[2][i]);
        }
      }
    });
  });
  return true;
}

}  // namespace

bool EvaluateFused(ExecContext& context, const Expression& expression, Eigen::MatrixXd& out) {
  Plan plan;
  if (Compile(context, expression, plan, 0) != Shape::Matrix) return false;
  // One operator makes no temporary to save: Eigen does it as well alone.
  const auto operators = std::count_if(plan.steps.begin(), plan.steps.end(), [](const Step& step) {
    return step.op != Op::LoadMatrix && step.op != Op::LoadScalar;
  });
  if (operators < 2) return false;
  // Matrix operands have the result's size, so an `out` that is one of them keeps its storage,
  // and each block is read in full before its results are written.
  out.resize(plan.rows, plan.cols);
  if (RunTwoOperators(plan, out.data(), out.size())) return true;
  std::vector<std::array<double, kBlock>> buffers(static_cast<std::size_t>(plan.depth) + 1);
  std::vector<Slot> stack;
  stack.reserve(buffers.size());
  const Eigen::Index total = out.size();
  for (Eigen::Index offset = 0; offset < total; offset += kBlock) {
    RunBlock(plan, offset, std::min(kBlock, total - offset), buffers, stack, out.data());
  }
  return true;
}
