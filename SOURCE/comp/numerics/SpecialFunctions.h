// Element-wise special functions through Boost.Math. Each returns false, leaving `out`
// unspecified, when an element lies outside the function's domain (NaN elements give NaN and are
// not outside it); the operands of the two- and three-argument forms have the same dimensions.
#pragma once

#include <memory>

#include <Eigen/Dense>

namespace numerics {

// gamma(x): x not zero or a negative integer. lgamma(x): log |gamma(x)|, the same domain.
bool gamma(const Eigen::MatrixXd& a, Eigen::MatrixXd& out);
bool lgamma(const Eigen::MatrixXd& a, Eigen::MatrixXd& out);
// beta(a, b) and its log, a and b positive.
bool beta(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, Eigen::MatrixXd& out);
bool lbeta(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, Eigen::MatrixXd& out);
// The multivariate gamma function of dimension p and its log: pi^(p(p-1)/4) times the product of
// gamma(a + (1 - j) / 2) for j = 1 ... p; each element must exceed (p - 1) / 2.
bool mvgamma(const Eigen::MatrixXd& a, int p, Eigen::MatrixXd& out);
bool lmvgamma(const Eigen::MatrixXd& a, int p, Eigen::MatrixXd& out);
// Regularised lower incomplete gamma P(a, x): x >= 0, a > 0.
bool gammainc(const Eigen::MatrixXd& x, const Eigen::MatrixXd& a, Eigen::MatrixXd& out);
// Regularised incomplete beta I_x(a, b): 0 <= x <= 1, a > 0, b > 0.
bool betainc(const Eigen::MatrixXd& x, const Eigen::MatrixXd& a, const Eigen::MatrixXd& b,
             Eigen::MatrixXd& out);

// Rounding of every element: towards +inf, towards -inf, to the nearest (halves away from zero).
Eigen::MatrixXd ceil(const Eigen::MatrixXd& a);
Eigen::MatrixXd floor(const Eigen::MatrixXd& a);
Eigen::MatrixXd round(const Eigen::MatrixXd& a);

// The same operations on a shared matrix (a dataset's data), without a copy.
inline Eigen::MatrixXd ceil(const std::shared_ptr<const Eigen::MatrixXd>& a) { return ceil(*a); }
inline Eigen::MatrixXd floor(const std::shared_ptr<const Eigen::MatrixXd>& a) { return floor(*a); }
inline Eigen::MatrixXd round(const std::shared_ptr<const Eigen::MatrixXd>& a) { return round(*a); }
inline bool beta(const std::shared_ptr<const Eigen::MatrixXd>& a,
                 const std::shared_ptr<const Eigen::MatrixXd>& b, Eigen::MatrixXd& out) {
  return beta(*a, *b, out);
}
inline bool lbeta(const std::shared_ptr<const Eigen::MatrixXd>& a,
                  const std::shared_ptr<const Eigen::MatrixXd>& b, Eigen::MatrixXd& out) {
  return lbeta(*a, *b, out);
}
inline bool mvgamma(const std::shared_ptr<const Eigen::MatrixXd>& a, int p, Eigen::MatrixXd& out) {
  return mvgamma(*a, p, out);
}
inline bool lmvgamma(const std::shared_ptr<const Eigen::MatrixXd>& a, int p, Eigen::MatrixXd& out) {
  return lmvgamma(*a, p, out);
}

}  // namespace numerics
