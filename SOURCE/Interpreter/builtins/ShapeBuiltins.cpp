// Built-ins about shapes: sizes, reshaping, tiling, Kronecker products, diagonals, constant
// matrices and the element-wise remainder.
#include <cmath>

#include "BuiltinFamilies.h"

namespace {

using Eigen::MatrixXd;

TavixValue Rows(const BuiltinCall& call) {
  return TavixValue::FromScalar(static_cast<double>(call.Numeric(0)->rows()));
}

TavixValue Cols(const BuiltinCall& call) {
  return TavixValue::FromScalar(static_cast<double>(call.Numeric(0)->cols()));
}

TavixValue Size(const BuiltinCall& call) {
  const auto a = call.Numeric(0);
  MatrixXd out(1, 2);
  out << static_cast<double>(a->rows()), static_cast<double>(a->cols());
  return TavixValue::FromMatrix(std::move(out));
}

TavixValue Reshape(const BuiltinCall& call) {
  const auto a = call.Numeric(0, "Function \"reshape\" is not defined for ",
                              "Dataset \"" + call.Text(0) +
                                  "\" contains string variables and cannot be turned into a matrix.");
  const auto m = call.MatrixOrNull(1);
  const auto n = call.MatrixOrNull(2);
  int rows = 0;
  int cols = 0;
  if (!m || !n || !IntrCheck_PositiveInteger(*m, rows) || !IntrCheck_PositiveInteger(*n, cols)) {
    call.Fail("The second and third arguments passed to the \"reshape\" function must be positive "
              "integers.");
  }
  const long long requested = static_cast<long long>(rows) * cols;
  if (requested != a->size()) {
    call.Fail("The number of elements in \"" + call.Text(0) + "\" is not equal to " +
              std::to_string(rows) + "x" + std::to_string(cols) + ".");
  }
  return TavixValue::FromMatrix(MatrixXd(a->reshaped(rows, cols)));
}

TavixValue Repmat(const BuiltinCall& call) {
  const auto a = call.Numeric(0, "Function \"repmat\" is not defined for ");
  int down = 0;
  int across = 0;
  const auto m = call.MatrixOrNull(1);
  if (!m || !IntrCheck_PositiveInteger(*m, down)) {
    call.Fail("The second and third arguments passed to the \"repmat\" function must be positive "
              "integers.");
  }
  const auto n = call.MatrixOrNull(2);
  if (!n || !IntrCheck_PositiveInteger(*n, across)) {
    call.Fail("The second and third arguments passed to the \"repmat\" repmat must be positive "
              "integers.");
  }
  call.CheckSize(static_cast<double>(a->rows()) * down, static_cast<double>(a->cols()) * across);
  return TavixValue::FromMatrix(MatrixXd(a->replicate(down, across)));
}

// The operand of a two-argument function that names its arguments in refusals.
std::shared_ptr<const MatrixXd> NamedOperand(const BuiltinCall& call, std::size_t i) {
  const auto m = call.MatrixOrNull(i);
  if (!m) {
    call.Fail(std::string(i == 0 ? "The first" : "The second") + " argument passed to \"" +
              call.Name() + "\" cannot be a " + KindWordSingular(call.Value(i).code));
  }
  return m;
}

TavixValue Kron(const BuiltinCall& call) {
  const auto a = NamedOperand(call, 0);
  const auto b = NamedOperand(call, 1);
  call.CheckSize(static_cast<double>(a->rows()) * static_cast<double>(b->rows()),
                 static_cast<double>(a->cols()) * static_cast<double>(b->cols()));
  MatrixXd out(a->rows() * b->rows(), a->cols() * b->cols());
  for (Eigen::Index j = 0; j < a->cols(); ++j) {
    call.CheckInterrupt();
    for (Eigen::Index i = 0; i < a->rows(); ++i) {
      out.block(i * b->rows(), j * b->cols(), b->rows(), b->cols()) = (*a)(i, j) * *b;
    }
  }
  return TavixValue::FromMatrix(std::move(out));
}

TavixValue Mod(const BuiltinCall& call) {
  const auto a = NamedOperand(call, 0);
  const auto b = NamedOperand(call, 1);
  if (a->rows() != b->rows() || a->cols() != b->cols()) {
    call.Fail("The dimensions of the two matrices/datasets passed to \"mod\" do not match.");
  }
  return TavixValue::FromMatrix(
      MatrixXd(a->binaryExpr(*b, [](double x, double y) { return std::fmod(x, y); })));
}

TavixValue Diag(const BuiltinCall& call) {
  const auto a = call.Numeric(0, "Function \"diag\" is not defined for ");
  if (a->rows() == 1 || a->cols() == 1) {
    call.CheckSize(static_cast<double>(a->size()), static_cast<double>(a->size()));
    return TavixValue::FromMatrix(MatrixXd(a->reshaped().asDiagonal()));
  }
  return TavixValue::FromMatrix(MatrixXd(a->diagonal()));
}

// zeros, ones and eye: an m x n matrix from two positive integers.
template <typename Fill>
TavixValue Constant(const BuiltinCall& call, Fill fill) {
  int rows = 0;
  int cols = 0;
  const auto m = call.MatrixOrNull(0);
  const auto n = call.MatrixOrNull(1);
  if (!m || !n || !IntrCheck_PositiveInteger(*m, rows) || !IntrCheck_PositiveInteger(*n, cols)) {
    call.Fail("Dimensions passed to the \"" + call.Name() +
              "\" function must be positive integers.");
  }
  call.CheckSize(rows, cols);
  return TavixValue::FromMatrix(fill(rows, cols));
}

TavixValue Zeros(const BuiltinCall& call) {
  return Constant(call, [](int m, int n) { return MatrixXd(MatrixXd::Zero(m, n)); });
}
TavixValue Ones(const BuiltinCall& call) {
  return Constant(call, [](int m, int n) { return MatrixXd(MatrixXd::Ones(m, n)); });
}
TavixValue Eye(const BuiltinCall& call) {
  return Constant(call, [](int m, int n) { return MatrixXd(MatrixXd::Identity(m, n)); });
}

const BuiltinRow kRows[] = {
    {"rows", ArgCounts(1), false, Rows},
    {"cols", ArgCounts(1), false, Cols},
    {"size", ArgCounts(1), false, Size},
    {"reshape", ArgCounts(3), false, Reshape},
    {"repmat", ArgCounts(3), false, Repmat},
    {"kron", ArgCounts(2), false, Kron},
    {"mod", ArgCounts(2), false, Mod},
    {"diag", ArgCounts(1), false, Diag},
    {"zeros", ArgCounts(2), false, Zeros},
    {"ones", ArgCounts(2), false, Ones},
    {"eye", ArgCounts(2), false, Eye},
};

}  // namespace

std::span<const BuiltinRow> ShapeBuiltins() { return kRows; }
