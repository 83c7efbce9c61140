// Gamma distribution (shape, rate): Boost.Math density and cdf, Marsaglia-Tsang draws.
#include "Gamma.h"

#include <cmath>
#include <limits>

#include <boost/math/distributions/gamma.hpp>

namespace dist {

namespace {

// Boost.Math reports bad input as NaN (or infinity) instead of throwing.
using Policy = boost::math::policies::policy<
    boost::math::policies::domain_error<boost::math::policies::errno_on_error>,
    boost::math::policies::pole_error<boost::math::policies::errno_on_error>,
    boost::math::policies::overflow_error<boost::math::policies::errno_on_error>,
    boost::math::policies::evaluation_error<boost::math::policies::errno_on_error>>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Boost works with a scale, so the rate must also have a positive finite reciprocal.
bool ValidParameters(double shape, double rate) {
  return std::isfinite(shape) && shape > 0.0 && std::isfinite(rate) && rate > 0.0 &&
         std::isfinite(1.0 / rate) && 1.0 / rate > 0.0;
}

// Gamma(shape, rate 1) for shape >= 1: d v with v = (1 + c x)^3, x normal, accepted by the
// squeeze and then the exact log test.
double StandardGammaAtLeastOne(RandomEngine& rng, double shape) {
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

// The density at x, zero for x < 0 and x = +inf; at x = 0 it is infinite for shape < 1, the rate
// for shape = 1 and 0 above. NaN for a NaN argument or when shape or rate is not positive and
// finite.
double GammaPdf(double x, double shape, double rate) {
  if (!ValidParameters(shape, rate) || std::isnan(x)) {
    return kNaN;
  }
  if (x < 0.0 || std::isinf(x)) {
    return 0.0;
  }
  if (x == 0.0) {
    return shape < 1.0 ? std::numeric_limits<double>::infinity() : (shape == 1.0 ? rate : 0.0);
  }
  return boost::math::pdf(boost::math::gamma_distribution<double, Policy>(shape, 1.0 / rate), x);
}

// P(X <= x), the regularised lower incomplete gamma P(shape, rate x); NaN for a NaN argument or
// invalid parameters.
double GammaCdf(double x, double shape, double rate) {
  if (!ValidParameters(shape, rate) || std::isnan(x)) {
    return kNaN;
  }
  if (x <= 0.0) {
    return 0.0;
  }
  if (std::isinf(x)) {
    return 1.0;
  }
  return boost::math::cdf(boost::math::gamma_distribution<double, Policy>(shape, 1.0 / rate), x);
}

// A Gamma(shape, 1) draw divided by the rate. Shapes below 1 go through Gamma(shape + 1) u^(1 /
// shape), combined in logs so that small shapes do not underflow before the result does. NaN for
// invalid parameters.
double GammaDraw(RandomEngine& rng, double shape, double rate) {
  if (!ValidParameters(shape, rate)) {
    return kNaN;
  }
  if (shape < 1.0) {
    const double g = StandardGammaAtLeastOne(rng, shape + 1.0);
    return std::exp(std::log(g) + std::log(rng.Uniform()) / shape) / rate;
  }
  return StandardGammaAtLeastOne(rng, shape) / rate;
}

}  // namespace dist
