// The logistic distribution: closed-form density and distribution function, draws by inversion.
#include "Logistic.h"

#include <cmath>
#include <limits>

namespace dist {

namespace {

bool ValidParameters(double location, double scale) {
  return std::isfinite(location) && std::isfinite(scale) && scale > 0.0;
}

}  // namespace

// The density e^-|z| / (scale (1 + e^-|z|)^2), z = (x - location) / scale, written in |z| so that
// nothing overflows; NaN for a NaN argument or when scale is not positive and finite.
double LogisticPdf(double x, double location, double scale) {
  if (!ValidParameters(location, scale) || std::isnan(x)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  const double e = std::exp(-std::fabs((x - location) / scale));
  return e / (scale * (1.0 + e) * (1.0 + e));
}

// P(X <= x) = 1 / (1 + e^-z), written as e^z / (1 + e^z) below the location so the lower tail
// keeps its relative accuracy; NaN for a NaN argument or invalid parameters.
double LogisticCdf(double x, double location, double scale) {
  if (!ValidParameters(location, scale) || std::isnan(x)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  const double z = (x - location) / scale;
  if (z >= 0.0) {
    return 1.0 / (1.0 + std::exp(-z));
  }
  const double e = std::exp(z);
  return e / (1.0 + e);
}

// location + scale * (log(u) - log(1 - u)) with u uniform on (0, 1); NaN for invalid parameters.
double LogisticDraw(RandomEngine& rng, double location, double scale) {
  if (!ValidParameters(location, scale)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  double u = 0.0;
  do {
    u = rng.Uniform();
  } while (u == 0.0);  // the engine's [0, 1) includes 0, where log(u) is -inf
  return location + scale * (std::log(u) - std::log1p(-u));
}

}  // namespace dist
