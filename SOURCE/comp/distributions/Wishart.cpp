// The Wishart and inverse-Wishart distributions: draws by the Bartlett decomposition and by sums
// of outer products, all through triangular factors.
#include "Wishart.h"

#include <cmath>
#include <limits>

#include "ChiSquared.h"

namespace dist {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// A square factor of order p >= 1 whose lower triangle is finite with a positive diagonal, and
// nu > p - 1.
bool ValidArguments(const Eigen::MatrixXd& L, double nu) {
  const Eigen::Index p = L.rows();
  if (p < 1 || L.cols() != p || !std::isfinite(nu) || !(nu > static_cast<double>(p) - 1.0)) {
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

Eigen::MatrixXd NaNMatrix(const Eigen::MatrixXd& L) {
  return Eigen::MatrixXd::Constant(L.rows(), L.rows(), kNaN);
}

// B B', exactly symmetric.
Eigen::MatrixXd OuterProduct(const Eigen::MatrixXd& B) {
  Eigen::MatrixXd w = Eigen::MatrixXd::Zero(B.rows(), B.rows());
  w.selfadjointView<Eigen::Lower>().rankUpdate(B);
  w.triangularView<Eigen::StrictlyUpper>() = w.transpose();
  return w;
}

// The Bartlett factor of a Wishart(I, nu) draw A A': lower triangular, the i-th diagonal entry
// (from 0) the root of a chi-squared with nu - i degrees of freedom, standard normals below it;
// filled row by row.
Eigen::MatrixXd BartlettFactor(RandomEngine& rng, Eigen::Index p, double nu) {
  Eigen::MatrixXd a = Eigen::MatrixXd::Zero(p, p);
  for (Eigen::Index i = 0; i < p; ++i) {
    a(i, i) = std::sqrt(ChiSquaredDraw(rng, nu - static_cast<double>(i)));
    for (Eigen::Index j = 0; j < i; ++j) {
      a(i, j) = rng.Normal();
    }
  }
  return a;
}

// p x nu standard normals, one column (one N(0, I) vector) after another.
Eigen::MatrixXd NormalColumns(RandomEngine& rng, Eigen::Index p, int nu) {
  Eigen::MatrixXd z(p, nu);
  for (int j = 0; j < nu; ++j) {
    for (Eigen::Index i = 0; i < p; ++i) {
      z(i, j) = rng.Normal();
    }
  }
  return z;
}

// L G^-T for a lower-triangular G, as (G^-1 L')' by a triangular solve.
Eigen::MatrixXd TimesInverseTranspose(const Eigen::MatrixXd& lowerL, const Eigen::MatrixXd& G) {
  return G.triangularView<Eigen::Lower>().solve(lowerL.transpose()).transpose();
}

}  // namespace

// Wishart(S, nu) as (L A)(L A)' with A the Bartlett factor; any real nu > p - 1. All NaN for
// invalid arguments.
Eigen::MatrixXd WishartDraw(RandomEngine& rng, const Eigen::MatrixXd& L, double nu) {
  if (!ValidArguments(L, nu)) {
    return NaNMatrix(L);
  }
  const Eigen::MatrixXd a = BartlettFactor(rng, L.rows(), nu);
  return OuterProduct(L.triangularView<Eigen::Lower>() * a);
}

// Wishart(S, nu) for whole nu > p - 1 as Y Y' with Y = L Z, Z's nu columns independent N(0, I).
// All NaN for invalid arguments.
Eigen::MatrixXd WishartDrawIntegerDof(RandomEngine& rng, const Eigen::MatrixXd& L, int nu) {
  if (!ValidArguments(L, nu)) {
    return NaNMatrix(L);
  }
  const Eigen::MatrixXd z = NormalColumns(rng, L.rows(), nu);
  return OuterProduct(L.triangularView<Eigen::Lower>() * z);
}

// Inverse-Wishart(S, nu): the inverse of W = C A A' C' ~ Wishart(S^-1, nu) with C = L^-T (so
// C C' = S^-1), which is (L A^-T)(L A^-T)'; found by one triangular solve, without forming S, its
// inverse or W. All NaN for invalid arguments.
Eigen::MatrixXd InverseWishartDraw(RandomEngine& rng, const Eigen::MatrixXd& L, double nu) {
  if (!ValidArguments(L, nu)) {
    return NaNMatrix(L);
  }
  const Eigen::MatrixXd a = BartlettFactor(rng, L.rows(), nu);
  const Eigen::MatrixXd lowerL = L.triangularView<Eigen::Lower>();
  return OuterProduct(TimesInverseTranspose(lowerL, a));
}

// Inverse-Wishart(S, nu) for whole nu > p - 1: with Z Z' = R R' (Cholesky) for the nu N(0, I)
// columns Z, the inverse of L^-T Z Z' L^-1 is (L R^-T)(L R^-T)'. All NaN for invalid arguments.
Eigen::MatrixXd InverseWishartDrawIntegerDof(RandomEngine& rng, const Eigen::MatrixXd& L, int nu) {
  if (!ValidArguments(L, nu)) {
    return NaNMatrix(L);
  }
  const Eigen::MatrixXd z = NormalColumns(rng, L.rows(), nu);
  const Eigen::LLT<Eigen::MatrixXd> cholesky(OuterProduct(z));
  if (cholesky.info() != Eigen::Success) {
    return NaNMatrix(L);  // Z Z' singular to working precision
  }
  const Eigen::MatrixXd lowerL = L.triangularView<Eigen::Lower>();
  return OuterProduct(TimesInverseTranspose(lowerL, cholesky.matrixL().toDenseMatrix()));
}

}  // namespace dist
