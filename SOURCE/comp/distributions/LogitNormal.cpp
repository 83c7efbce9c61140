// The logit-normal distribution on (0, 1): closed-form density and distribution function, draws.
#include "LogitNormal.h"

#include <cmath>
#include <limits>

namespace dist {

namespace {

constexpr double kInvSqrt2Pi = 0.39894228040143267794;
constexpr double kInvSqrt2 = 0.70710678118654752440;

bool ValidParameters(double location, double scale) {
  return std::isfinite(location) && std::isfinite(scale) && scale > 0.0;
}

// log(x / (1 - x)) without forming 1 - x by rounding near 1.
double Logit(double x) { return std::log(x) - std::log1p(-x); }

}  // namespace

// The density phi((logit(x) - location) / scale) / (scale x (1 - x)) on (0, 1), zero outside;
// NaN for a NaN argument or when scale is not positive and finite.
double LogitNormalPdf(double x, double location, double scale) {
  if (!ValidParameters(location, scale) || std::isnan(x)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  if (x <= 0.0 || x >= 1.0) {
    return 0.0;
  }
  const double z = (Logit(x) - location) / scale;
  // exp(-z^2 / 2) may underflow while x (1 - x) is tiny: combine in logs.
  const double logDensity = -0.5 * z * z - std::log(x) - std::log1p(-x);
  return kInvSqrt2Pi / scale * std::exp(logDensity);
}

// P(X <= x) = Phi((logit(x) - location) / scale) through erfc; NaN for a NaN argument or invalid
// parameters.
double LogitNormalCdf(double x, double location, double scale) {
  if (!ValidParameters(location, scale) || std::isnan(x)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  if (x <= 0.0) {
    return 0.0;
  }
  if (x >= 1.0) {
    return 1.0;
  }
  return 0.5 * std::erfc(-(Logit(x) - location) / scale * kInvSqrt2);
}

// 1 / (1 + exp(-(location + scale * z))) with z from the engine's normal; NaN for invalid
// parameters.
double LogitNormalDraw(RandomEngine& rng, double location, double scale) {
  if (!ValidParameters(location, scale)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  return 1.0 / (1.0 + std::exp(-(location + scale * rng.Normal())));
}

}  // namespace dist
