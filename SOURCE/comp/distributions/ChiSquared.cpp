// The chi-squared distribution: density and distribution function through Boost.Math, and draws
// as twice a gamma draw of shape dof / 2.
#include "ChiSquared.h"

#include <cmath>
#include <limits>

#include <boost/math/distributions/chi_squared.hpp>

namespace dist {

namespace {

// Boost.Math reports bad input as NaN (or infinity) instead of throwing.
using Policy = boost::math::policies::policy<
    boost::math::policies::domain_error<boost::math::policies::errno_on_error>,
    boost::math::policies::pole_error<boost::math::policies::errno_on_error>,
    boost::math::policies::overflow_error<boost::math::policies::errno_on_error>,
    boost::math::policies::evaluation_error<boost::math::policies::errno_on_error>>;

bool ValidDof(double dof) { return std::isfinite(dof) && dof > 0.0; }

// Gamma(shape, rate 1) by Marsaglia and Tsang's method: d v with v = (1 + c x)^3, x normal,
// accepted by a squeeze and then the exact log test. Shapes below 1 go through
// Gamma(shape + 1) U^(1 / shape), combined in logs so that small shapes do not round to zero
// before the result does. Kept with this family so that chi-squared draws, and the t and Wishart
// draws built on them, depend on no other family.
double StandardGammaDraw(RandomEngine& rng, double shape) {
  if (shape < 1.0) {
    const double g = StandardGammaDraw(rng, shape + 1.0);
    return std::exp(std::log(g) + std::log(rng.Uniform()) / shape);
  }
  const double d = shape - 1.0 / 3.0;
  const double c = 1.0 / std::sqrt(9.0 * d);
  for (;;) {
    double x = 0.0;
    double v = 0.0;
    do {
      x = rng.Normal();
      v = 1.0 + c * x;
    } while (v <= 0.0);
    v = v * v * v;
    const double u = rng.Uniform();
    const double x2 = x * x;
    if (u < 1.0 - 0.0331 * x2 * x2 || std::log(u) < 0.5 * x2 + d * (1.0 - v + std::log(v))) {
      return d * v;
    }
  }
}

}  // namespace

// The density at x, zero for x < 0; at x = 0 it is infinite for dof < 2, 1/2 for dof = 2 and 0
// above. NaN for a NaN argument or when dof is not positive and finite.
double ChiSquaredPdf(double x, double dof) {
  if (!ValidDof(dof) || std::isnan(x)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  if (x < 0.0 || std::isinf(x)) {
    return 0.0;
  }
  if (x == 0.0) {
    return dof < 2.0 ? std::numeric_limits<double>::infinity() : (dof == 2.0 ? 0.5 : 0.0);
  }
  return boost::math::pdf(boost::math::chi_squared_distribution<double, Policy>(dof), x);
}

// P(X <= x), the regularised lower incomplete gamma P(dof / 2, x / 2); NaN for a NaN argument or
// invalid dof.
double ChiSquaredCdf(double x, double dof) {
  if (!ValidDof(dof) || std::isnan(x)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  if (x <= 0.0) {
    return 0.0;
  }
  if (std::isinf(x)) {
    return 1.0;
  }
  return boost::math::cdf(boost::math::chi_squared_distribution<double, Policy>(dof), x);
}

// A gamma draw with shape dof / 2 and rate 1 / 2, i.e. twice a Gamma(dof / 2, 1) draw; NaN for
// invalid dof.
double ChiSquaredDraw(RandomEngine& rng, double dof) {
  if (!ValidDof(dof)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  return 2.0 * StandardGammaDraw(rng, 0.5 * dof);
}

}  // namespace dist
