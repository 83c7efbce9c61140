// The chi-squared distribution: density and distribution function through Boost.Math, and draws
// as gamma draws.
#include "ChiSquared.h"

#include <cmath>
#include <limits>

#include <boost/math/distributions/chi_squared.hpp>

#include "Gamma.h"

namespace dist {

namespace {

// Boost.Math reports bad input as NaN (or infinity) instead of throwing.
using Policy = boost::math::policies::policy<
    boost::math::policies::domain_error<boost::math::policies::errno_on_error>,
    boost::math::policies::pole_error<boost::math::policies::errno_on_error>,
    boost::math::policies::overflow_error<boost::math::policies::errno_on_error>,
    boost::math::policies::evaluation_error<boost::math::policies::errno_on_error>>;

bool ValidDof(double dof) { return std::isfinite(dof) && dof > 0.0; }

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

// A gamma draw with shape dof / 2 and rate 1 / 2; NaN for invalid dof.
double ChiSquaredDraw(RandomEngine& rng, double dof) {
  if (!ValidDof(dof)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  return GammaDraw(rng, 0.5 * dof, 0.5);
}

}  // namespace dist
