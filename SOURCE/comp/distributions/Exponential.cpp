// Exponential distribution (rate): closed-form density and cdf, inverse-transform draws.
#include "Exponential.h"

#include <cmath>
#include <limits>

namespace dist {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

bool ValidRate(double rate) { return std::isfinite(rate) && rate > 0.0; }

}  // namespace

// The density rate exp(-rate x) for x >= 0, zero below; NaN for a NaN argument or when the rate
// is not positive and finite.
double ExponentialPdf(double x, double rate) {
  if (!ValidRate(rate) || std::isnan(x)) {
    return kNaN;
  }
  if (x < 0.0) {
    return 0.0;
  }
  return rate * std::exp(-rate * x);
}

// P(X <= x) = 1 - exp(-rate x), through expm1 so that small x keep full relative accuracy; NaN
// for a NaN argument or an invalid rate.
double ExponentialCdf(double x, double rate) {
  if (!ValidRate(rate) || std::isnan(x)) {
    return kNaN;
  }
  if (x <= 0.0) {
    return 0.0;
  }
  return -std::expm1(-rate * x);
}

// log(1 - u) / (-rate) with one uniform u; 1 - u is never 0 because u < 1. NaN for an invalid
// rate.
double ExponentialDraw(RandomEngine& rng, double rate) {
  if (!ValidRate(rate)) {
    return kNaN;
  }
  return std::log(1.0 - rng.Uniform()) / (-rate);
}

}  // namespace dist
