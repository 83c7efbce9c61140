// The multivariate normal distribution: row-wise density from the Cholesky factor, and draws.
#include "MultivariateNormal.h"

#include <cmath>
#include <limits>

namespace dist {

namespace {

constexpr double kLog2Pi = 1.83787706640934548356;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// A p x p factor, p >= 1, whose lower triangle is finite with a positive diagonal (the strict
// upper triangle is never read).
bool ValidFactor(const Eigen::MatrixXd& L, Eigen::Index p) {
  if (p < 1 || L.rows() != p || L.cols() != p) {
    return false;
  }
  for (Eigen::Index j = 0; j < p; ++j) {
    if (!(L(j, j) > 0.0)) {
      return false;
    }
    for (Eigen::Index i = j; i < p; ++i) {
      if (!std::isfinite(L(i, j))) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace

// The density at each row of X: exp(-p/2 log(2 pi) - sum log L_ii - |L^-1 (x - mean)|^2 / 2),
// summed in logs and exponentiated once, so that neither the determinant nor the quadratic form
// overflows. Rows with NaN give NaN, rows with an infinite entry give 0. When the mean is empty,
// the sizes disagree, the mean is not finite or L's diagonal is not positive, every entry is NaN.
Eigen::VectorXd MultivariateNormalPdf(const Eigen::MatrixXd& X, const Eigen::VectorXd& mean,
                                      const Eigen::MatrixXd& L) {
  const Eigen::Index p = mean.size();
  const Eigen::Index n = X.rows();
  if (X.cols() != p || !ValidFactor(L, p) || !mean.allFinite()) {
    return Eigen::VectorXd::Constant(n, kNaN);
  }
  if (n == 0) {
    return Eigen::VectorXd(0);  // Eigen's triangular routines must not see empty operands
  }
  Eigen::MatrixXd deviations = (X.rowwise() - mean.transpose()).transpose();
  L.triangularView<Eigen::Lower>().solveInPlace(deviations);
  const double logNormaliser = -0.5 * static_cast<double>(p) * kLog2Pi - L.diagonal().array().log().sum();
  Eigen::VectorXd density(n);
  for (Eigen::Index i = 0; i < n; ++i) {
    if (X.row(i).hasNaN()) {
      density(i) = kNaN;
    } else if (!X.row(i).allFinite()) {
      density(i) = 0.0;
    } else {
      density(i) = std::exp(logNormaliser - 0.5 * deviations.col(i).squaredNorm());
    }
  }
  return density;
}

// k draws as the rows of a k x p matrix: mean + L z, with z's p entries taken from the engine in
// order, one draw after another. No rows for k <= 0; all NaN when the mean is empty, the sizes
// disagree, the mean is not finite or L's diagonal is not positive.
Eigen::MatrixXd MultivariateNormalDraws(RandomEngine& rng, const Eigen::VectorXd& mean,
                                        const Eigen::MatrixXd& L, int k) {
  const Eigen::Index p = mean.size();
  const Eigen::Index rows = k > 0 ? k : 0;
  if (!ValidFactor(L, p) || !mean.allFinite()) {
    return Eigen::MatrixXd::Constant(rows, p, kNaN);
  }
  if (rows == 0) {
    return Eigen::MatrixXd(0, p);  // Eigen's triangular product must not see an empty operand
  }
  Eigen::MatrixXd z(p, rows);
  for (Eigen::Index j = 0; j < rows; ++j) {
    for (Eigen::Index i = 0; i < p; ++i) {
      z(i, j) = rng.Normal();
    }
  }
  Eigen::MatrixXd draws = L.triangularView<Eigen::Lower>() * z;
  draws.colwise() += mean;
  return draws.transpose();
}

}  // namespace dist
