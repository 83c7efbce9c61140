// The type I extreme-value distribution of maxima: closed-form density, distribution function,
// and draws by inversion.
#include "ExtremeValue.h"

#include <cmath>
#include <limits>

namespace dist {

namespace {

bool ValidParameters(double location, double scale) {
  return std::isfinite(location) && std::isfinite(scale) && scale > 0.0;
}

}  // namespace

// The density exp(-z - e^-z) / scale, z = (x - location) / scale; NaN for a NaN argument or when
// scale is not positive and finite.
double ExtremeValuePdf(double x, double location, double scale) {
  if (!ValidParameters(location, scale) || std::isnan(x)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  const double z = (x - location) / scale;
  if (z == -std::numeric_limits<double>::infinity()) {
    return 0.0;  // -z - e^-z would be inf - inf
  }
  return std::exp(-z - std::exp(-z)) / scale;
}

// P(X <= x) = exp(-e^-z); NaN for a NaN argument or invalid parameters.
double ExtremeValueCdf(double x, double location, double scale) {
  if (!ValidParameters(location, scale) || std::isnan(x)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  return std::exp(-std::exp(-(x - location) / scale));
}

// location - scale * log(-log(u)) with u uniform on (0, 1); NaN for invalid parameters.
double ExtremeValueDraw(RandomEngine& rng, double location, double scale) {
  if (!ValidParameters(location, scale)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  double u = 0.0;
  do {
    u = rng.Uniform();
  } while (u == 0.0);  // log(0) would give an infinite draw
  return location - scale * std::log(-std::log(u));
}

}  // namespace dist
