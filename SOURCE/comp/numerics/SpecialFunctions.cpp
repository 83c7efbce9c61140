// Element-wise special functions through Boost.Math, and rounding.
#include "SpecialFunctions.h"

#include <cmath>
#include <limits>
#include <numbers>

#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/gamma.hpp>

namespace numerics {

namespace {

namespace policies = boost::math::policies;
// Errors come back as values (NaN, infinities), never as exceptions or aborts.
using Quiet = policies::policy<policies::domain_error<policies::errno_on_error>,
                               policies::pole_error<policies::errno_on_error>,
                               policies::overflow_error<policies::errno_on_error>,
                               policies::underflow_error<policies::ignore_error>,
                               policies::evaluation_error<policies::errno_on_error>>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

bool IsNonPositiveInteger(double x) { return x <= 0.0 && x == std::floor(x); }

// Fills `out` with f(a(i)), or fails when some element is outside `inDomain` (NaN passes).
template <typename InDomain, typename F>
bool Unary(const Eigen::MatrixXd& a, Eigen::MatrixXd& out, InDomain inDomain, F f) {
  for (double x : a.reshaped()) {
    if (!std::isnan(x) && !inDomain(x)) return false;
  }
  out.resize(a.rows(), a.cols());
  for (Eigen::Index i = 0; i < a.size(); ++i) out(i) = std::isnan(a(i)) ? kNaN : f(a(i));
  return true;
}

template <typename InDomain, typename F>
bool Binary(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, Eigen::MatrixXd& out,
            InDomain inDomain, F f) {
  if (a.rows() != b.rows() || a.cols() != b.cols()) return false;
  for (Eigen::Index i = 0; i < a.size(); ++i) {
    if (!std::isnan(a(i)) && !std::isnan(b(i)) && !inDomain(a(i), b(i))) return false;
  }
  out.resize(a.rows(), a.cols());
  for (Eigen::Index i = 0; i < a.size(); ++i) {
    out(i) = std::isnan(a(i)) || std::isnan(b(i)) ? kNaN : f(a(i), b(i));
  }
  return true;
}

// log of the multivariate gamma function of dimension p.
double LogMultivariateGamma(double a, int p) {
  double sum = p * (p - 1) / 4.0 * std::log(std::numbers::pi);
  for (int j = 1; j <= p; ++j) sum += boost::math::lgamma(a + (1.0 - j) / 2.0, Quiet());
  return sum;
}

}  // namespace

bool gamma(const Eigen::MatrixXd& a, Eigen::MatrixXd& out) {
  return Unary(a, out, [](double x) { return !IsNonPositiveInteger(x); },
               [](double x) { return boost::math::tgamma(x, Quiet()); });
}

bool lgamma(const Eigen::MatrixXd& a, Eigen::MatrixXd& out) {
  return Unary(a, out, [](double x) { return !IsNonPositiveInteger(x); },
               [](double x) { return boost::math::lgamma(x, Quiet()); });
}

bool beta(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, Eigen::MatrixXd& out) {
  return Binary(a, b, out, [](double x, double y) { return x > 0.0 && y > 0.0; },
                [](double x, double y) { return boost::math::beta(x, y, Quiet()); });
}

bool lbeta(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, Eigen::MatrixXd& out) {
  return Binary(a, b, out, [](double x, double y) { return x > 0.0 && y > 0.0; },
                [](double x, double y) {
                  return boost::math::lgamma(x, Quiet()) + boost::math::lgamma(y, Quiet()) -
                         boost::math::lgamma(x + y, Quiet());
                });
}

bool mvgamma(const Eigen::MatrixXd& a, int p, Eigen::MatrixXd& out) {
  const double least = (p - 1) / 2.0;
  return Unary(a, out, [least](double x) { return x > least; },
               [p](double x) { return std::exp(LogMultivariateGamma(x, p)); });
}

bool lmvgamma(const Eigen::MatrixXd& a, int p, Eigen::MatrixXd& out) {
  const double least = (p - 1) / 2.0;
  return Unary(a, out, [least](double x) { return x > least; },
               [p](double x) { return LogMultivariateGamma(x, p); });
}

bool gammainc(const Eigen::MatrixXd& x, const Eigen::MatrixXd& a, Eigen::MatrixXd& out) {
  return Binary(x, a, out, [](double u, double s) { return u >= 0.0 && s > 0.0; },
                [](double u, double s) {
                  return std::isinf(u) ? 1.0 : boost::math::gamma_p(s, u, Quiet());
                });
}

bool betainc(const Eigen::MatrixXd& x, const Eigen::MatrixXd& a, const Eigen::MatrixXd& b,
             Eigen::MatrixXd& out) {
  if (x.rows() != a.rows() || x.cols() != a.cols() || x.rows() != b.rows() || x.cols() != b.cols()) {
    return false;
  }
  out.resize(x.rows(), x.cols());
  for (Eigen::Index i = 0; i < x.size(); ++i) {
    const double u = x(i);
    const double p = a(i);
    const double q = b(i);
    if (std::isnan(u) || std::isnan(p) || std::isnan(q)) {
      out(i) = kNaN;
      continue;
    }
    if (u < 0.0 || u > 1.0 || !(p > 0.0) || !(q > 0.0)) return false;
    out(i) = boost::math::ibeta(p, q, u, Quiet());
  }
  return true;
}

Eigen::MatrixXd ceil(const Eigen::MatrixXd& a) {
  return a.unaryExpr([](double x) { return std::ceil(x); });
}
Eigen::MatrixXd floor(const Eigen::MatrixXd& a) {
  return a.unaryExpr([](double x) { return std::floor(x); });
}
Eigen::MatrixXd round(const Eigen::MatrixXd& a) {
  return a.unaryExpr([](double x) { return std::round(x); });
}

}  // namespace numerics
