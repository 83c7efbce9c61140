// Expression nodes: literals, constants and workspace names.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Ast.h"
#include "Messages.h"
#include "MatrixEntryCache.h"

// A number as typed.
struct NumberLiteral : Expression {
  double value = 0.0;
  TavixValue Evaluate(ExecContext& context) const override;
  bool EvaluateScalar(ExecContext&, double& out) const override {
    out = value;
    return true;
  }
};

// A string literal; its text is kept as typed, escape pairs included.
struct StringLiteral : Expression {
  std::string text;
  TavixValue Evaluate(ExecContext& context) const override;
};

// A name or a dotted path (`s.a.b`, `d.x`, `m.member`), resolved against the workspace.
struct NameExpression : Expression {
  std::vector<std::string> path;
  TavixValue Evaluate(ExecContext& context) const override;
  bool EvaluateScalar(ExecContext& context, double& out) const override;
  const Eigen::MatrixXd* PeekMatrix(ExecContext& context) const override;

private:
  // The matrix a plain name holds, or null.
  const std::shared_ptr<Eigen::MatrixXd>* CachedMatrix(Workspace& ws) const {
    return path.size() == 1 ? m_cache.Find(ws, path.front()) : nullptr;
  }
  MatrixEntryCache m_cache;
};

// The operators of the arithmetic rules.
enum class BinaryOperator { Add, Subtract, Multiply, Divide, ElementMultiply, ElementDivide,
                            Power, ElementPower };

// `left op right` for the additive, multiplicative and power levels.
struct BinaryExpression : Expression {
  BinaryOperator op = BinaryOperator::Add;
  std::string opText;  // as typed, for messages
  ExpressionPtr left;
  ExpressionPtr right;
  ~BinaryExpression() override;
  TavixValue Evaluate(ExecContext& context) const override;
  bool EvaluateInto(ExecContext& context, Eigen::MatrixXd& destination) const override;
  bool EvaluateScalar(ExecContext& context, double& out) const override;
};

// A unary sign in front of an operand.
struct UnaryExpression : Expression {
  bool negate = true;
  ExpressionPtr operand;
  TavixValue Evaluate(ExecContext& context) const override;
  bool EvaluateScalar(ExecContext& context, double& out) const override;
};

// The postfix transpose `'`, written `times` times in a row.
struct TransposeExpression : Expression {
  ExpressionPtr operand;
  long times = 1;
  TavixValue Evaluate(ExecContext& context) const override;
};

// A matrix literal: rows of blocks, joined side by side and stacked.
struct BlockMatrixExpression : Expression {
  std::vector<std::vector<ExpressionPtr>> rows;
  TavixValue Evaluate(ExecContext& context) const override;
};

// One index inside parentheses: ":" (the whole dimension), "a:b", or an expression whose
// elements are the indices.
struct IndexArgument : Node {
  bool all = false;
  ExpressionPtr from;
  ExpressionPtr to;  // set for "a:b"
};

// The indices selected by one index argument, 0-based, checked against `extent`.
struct IndexList {
  bool all = false;
  std::vector<Eigen::Index> indices;
  Eigen::Index Count(Eigen::Index extent) const {
    return all ? extent : static_cast<Eigen::Index>(indices.size());
  }
  Eigen::Index At(Eigen::Index k) const { return all ? k : indices[static_cast<std::size_t>(k)]; }
};

// Evaluates an index argument; fails with the range messages (positive integers, order) and
// "Index out of bounds." past `extent`.
// `outOfBounds` is the message for an index beyond `extent`.
IndexList EvaluateIndex(ExecContext& context, const IndexArgument& argument, Eigen::Index extent,
                        const std::string& outOfBounds = msg::kIndexOutOfBounds);

// `name(i, j)`, `name(k)`: rows and columns of a matrix or of a dataset's data.
struct IndexExpression : Expression {
  ExpressionPtr target;  // a NameExpression
  std::vector<std::unique_ptr<IndexArgument>> arguments;  // one or two
  TavixValue Evaluate(ExecContext& context) const override;
};
