// Built-ins of linear algebra: trace, inverses, Cholesky factor, determinant, symmetric eigen
// decomposition, and Gauss quadrature rules.
#include <cmath>

#include <Eigen/Cholesky>
#include <Eigen/LU>

#include "BuiltinFamilies.h"
#include "Decompositions.h"
#include "ValueKind.h"

namespace {

using Eigen::MatrixXd;

// The square matrix argument of trace, inv, invpd, chol and det.
std::shared_ptr<const MatrixXd> SquareArgument(const BuiltinCall& call,
                                               const std::string& datasetMessage = "") {
  const auto a = call.Numeric(0, "Function \"" + call.Name() + "\" is not defined for ",
                              datasetMessage);
  if (a->rows() != a->cols()) {
    call.Fail("The argument passed to \"" + call.Name() + "\" must be square.");
  }
  return a;
}

TavixValue Trace(const BuiltinCall& call) {
  return TavixValue::FromScalar(SquareArgument(call)->trace());
}

TavixValue Det(const BuiltinCall& call) {
  const auto a = SquareArgument(call);
  if (a->size() == 0) return TavixValue::FromScalar(1.0);
  return TavixValue::FromScalar(a->partialPivLu().determinant());
}

TavixValue Inv(const BuiltinCall& call) {
  const auto a = SquareArgument(
      call, "Dataset \"" + call.Text(0) +
                "\" contains string variables and cannot be turned into a matrix.");
  const std::string singular = "\"" + call.Text(0) + "\" is singular to machine precision.";
  if (!a->allFinite()) call.Fail(singular);
  const Eigen::FullPivLU<MatrixXd> lu(*a);
  if (!lu.isInvertible()) call.Fail(singular);
  return TavixValue::FromMatrix(MatrixXd(lu.inverse()));
}

// The Cholesky factorisation behind invpd and chol; refuses matrices that are not symmetric (the
// factorisation reads only the lower triangle, so an upper one that disagrees would be ignored)
// and those that are not positive definite.
Eigen::LLT<MatrixXd> Cholesky(const BuiltinCall& call, const MatrixXd& a) {
  const std::string refusal =
      "\"" + call.Text(0) + "\" is not positive definite to machine precision.";
  if (!a.allFinite()) call.Fail(refusal);
  if (!IsSymmetric(a)) {
    call.Fail("The argument passed to \"" + call.Name() + "\" must be a symmetric matrix or dataset.");
  }
  Eigen::LLT<MatrixXd> llt(a);
  if (llt.info() != Eigen::Success) call.Fail(refusal);
  return llt;
}

TavixValue Invpd(const BuiltinCall& call) {
  const auto a = SquareArgument(call);
  const auto llt = Cholesky(call, *a);
  return TavixValue::FromMatrix(MatrixXd(llt.solve(MatrixXd::Identity(a->rows(), a->cols()))));
}

// The lower-triangular factor L with A = L L'.
TavixValue Chol(const BuiltinCall& call) {
  const auto a = SquareArgument(call);
  return TavixValue::FromMatrix(MatrixXd(Cholesky(call, *a).matrixL()));
}


// eig(A): eigenvalues (ascending, a column) first, eigenvectors (columns) second.
TavixOrderStructure Eig(const BuiltinCall& call) {
  const auto a = call.MatrixOrNull(0);
  const std::string refusal = "The argument passed to \"eig\" must be a symmetric matrix or dataset.";
  if (!a) call.Fail(refusal);
  if (a->rows() != a->cols()) {
    call.Fail("Matrix \"" + call.Text(0) + "\" passed to \"eig\" is not square.");
  }
  if (!a->allFinite() || !IsSymmetric(*a)) call.Fail(refusal);
  MatrixXd values;
  MatrixXd vectors;
  if (!numerics::SymmetricEigen(*a, values, vectors)) call.Fail("Eigen decomposition failed.");
  TavixOrderStructure outputs;
  outputs.Append(TavixValue::FromMatrix(std::move(values)));
  outputs.Append(TavixValue::FromMatrix(std::move(vectors)));
  return outputs;
}

// quadrature(n, "hermite" | "laguerre"): nodes first, weights second.
TavixOrderStructure Quadrature(const BuiltinCall& call) {
  const auto n = call.MatrixOrNull(0);
  int points = 0;
  if (!n || !IntrCheck_Integer(*n, points) || points < 2 || points > 300) {
    call.Fail("The argument passed to \"quadrature\" must be a positive integer between 2 and 300.");
  }
  const TavixValue& kindValue = call.Value(1);
  const std::string kindText = kindValue.code == kind::STRING ? *kindValue.string : "";
  if (kindText != "hermite" && kindText != "laguerre") {
    call.Fail("The second argument passed to \"quadrature\" must be a string with value equal to "
              "either \"laguerre\" or \"hermite\"");
  }
  MatrixXd nodes;
  MatrixXd weights;
  const bool hermite = kindText == "hermite";
  const bool done = hermite ? numerics::HermiteQuad(points, nodes, weights)
                            : numerics::LaguerreQuad(points, nodes, weights);
  if (!done) {
    call.Fail(std::string("Eigenvalue decomposition failed while calculating the nodes and weights "
                          "of a ") +
              (hermite ? "Hermite" : "Laguerre") + " quadrature.");
  }
  TavixOrderStructure outputs;
  outputs.Append(TavixValue::FromMatrix(std::move(nodes)));
  outputs.Append(TavixValue::FromMatrix(std::move(weights)));
  return outputs;
}

const BuiltinRow kRows[] = {
    {"trace", ArgCounts(1), false, Trace},
    {"det", ArgCounts(1), false, Det},
    {"inv", ArgCounts(1), false, Inv},
    {"invpd", ArgCounts(1), false, Invpd},
    {"chol", ArgCounts(1), false, Chol},
    {"eig", ArgCounts(1), false, nullptr, Eig},
    {"quadrature", ArgCounts(2), false, nullptr, Quadrature},
};

}  // namespace

std::span<const BuiltinRow> LinearAlgebraBuiltins() { return kRows; }
