// The normal distribution: density, distribution function through erfc, and draws.
#include "Normal.h"

#include <cmath>
#include <limits>

namespace dist {

namespace {

constexpr double kInvSqrt2Pi = 0.39894228040143267794;
constexpr double kInvSqrt2 = 0.70710678118654752440;

bool ValidParameters(double mean, double sd) { return std::isfinite(mean) && std::isfinite(sd) && sd > 0.0; }

}  // namespace

// The density at x; NaN for a NaN argument or when sd is not positive and finite.
double NormalPdf(double x, double mean, double sd) {
  if (!ValidParameters(mean, sd) || std::isnan(x)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  const double z = (x - mean) / sd;
  return kInvSqrt2Pi / sd * std::exp(-0.5 * z * z);
}

// P(X <= x) as erfc(-z / sqrt 2) / 2, which keeps full relative accuracy in the lower tail; NaN
// for a NaN argument or invalid parameters.
double NormalCdf(double x, double mean, double sd) {
  if (!ValidParameters(mean, sd) || std::isnan(x)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  return 0.5 * std::erfc(-(x - mean) / sd * kInvSqrt2);
}

// mean + sd * z with z from the engine's polar-method normal; NaN for invalid parameters.
double NormalDraw(RandomEngine& rng, double mean, double sd) {
  if (!ValidParameters(mean, sd)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  return mean + sd * rng.Normal();
}

}  // namespace dist
