// The log-normal distribution: density and distribution function through Boost.Math, and draws.
#include "LogNormal.h"

#include <cmath>
#include <limits>

#include <boost/math/distributions/lognormal.hpp>

namespace dist {

namespace {

// Boost.Math reports bad input as NaN (or infinity) instead of throwing.
using Policy = boost::math::policies::policy<
    boost::math::policies::domain_error<boost::math::policies::errno_on_error>,
    boost::math::policies::pole_error<boost::math::policies::errno_on_error>,
    boost::math::policies::overflow_error<boost::math::policies::errno_on_error>,
    boost::math::policies::evaluation_error<boost::math::policies::errno_on_error>>;

bool ValidParameters(double location, double scale) {
  return std::isfinite(location) && std::isfinite(scale) && scale > 0.0;
}

}  // namespace

// The density at x, zero for x <= 0; NaN for a NaN argument or when scale is not positive and
// finite.
double LogNormalPdf(double x, double location, double scale) {
  if (!ValidParameters(location, scale) || std::isnan(x)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  if (x <= 0.0 || std::isinf(x)) {
    return 0.0;
  }
  return boost::math::pdf(boost::math::lognormal_distribution<double, Policy>(location, scale), x);
}

// P(X <= x), through the normal cdf of log(x) (erfc-based, accurate in the lower tail); NaN for
// a NaN argument or invalid parameters.
double LogNormalCdf(double x, double location, double scale) {
  if (!ValidParameters(location, scale) || std::isnan(x)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  if (x <= 0.0) {
    return 0.0;
  }
  if (std::isinf(x)) {
    return 1.0;
  }
  return boost::math::cdf(boost::math::lognormal_distribution<double, Policy>(location, scale), x);
}

// exp(location + scale * z) with z from the engine's normal; NaN for invalid parameters.
double LogNormalDraw(RandomEngine& rng, double location, double scale) {
  if (!ValidParameters(location, scale)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  return std::exp(location + scale * rng.Normal());
}

}  // namespace dist
