// Weibull distribution (shape, scale): closed-form density and cdf, inverse-transform draws.
#include "Weibull.h"

#include <cmath>
#include <limits>

namespace dist {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

bool ValidParameters(double shape, double scale) {
  return std::isfinite(shape) && shape > 0.0 && std::isfinite(scale) && scale > 0.0;
}

}  // namespace

// The density (k / λ) z^(k - 1) exp(-z^k) with z = x / λ, zero for x < 0 and x = +inf; at z = 0
// it is infinite for k < 1, 1 / λ for k = 1 and 0 above. NaN for a NaN argument or when a
// parameter is not positive and finite.
double WeibullPdf(double x, double shape, double scale) {
  if (!ValidParameters(shape, scale) || std::isnan(x)) {
    return kNaN;
  }
  if (x < 0.0 || std::isinf(x)) {
    return 0.0;
  }
  const double z = x / scale;
  if (std::isinf(z)) {
    return 0.0;
  }
  if (z == 0.0) {
    return shape < 1.0 ? std::numeric_limits<double>::infinity() : (shape == 1.0 ? 1.0 / scale : 0.0);
  }
  // In logs, so that z^(k - 1) overflowing against exp(-z^k) underflowing still gives 0.
  const double logZ = std::log(z);
  return shape / scale * std::exp((shape - 1.0) * logZ - std::exp(shape * logZ));
}

// P(X <= x) = 1 - exp(-(x / λ)^k), through expm1 so that the lower tail keeps full relative
// accuracy; NaN for a NaN argument or invalid parameters.
double WeibullCdf(double x, double shape, double scale) {
  if (!ValidParameters(shape, scale) || std::isnan(x)) {
    return kNaN;
  }
  if (x <= 0.0) {
    return 0.0;
  }
  return -std::expm1(-std::pow(x / scale, shape));
}

// λ (-log(1 - u))^(1 / k) with one uniform u; NaN for invalid parameters.
double WeibullDraw(RandomEngine& rng, double shape, double scale) {
  if (!ValidParameters(shape, scale)) {
    return kNaN;
  }
  return scale * std::pow(-std::log(1.0 - rng.Uniform()), 1.0 / shape);
}

}  // namespace dist
