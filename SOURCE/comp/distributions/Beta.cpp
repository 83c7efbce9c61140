// Beta distribution: Boost.Math density and cdf, draws from two gamma draws.
#include "Beta.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <boost/math/distributions/beta.hpp>

#include "Gamma.h"

namespace dist {

namespace {

// Boost.Math reports bad input as NaN (or infinity) instead of throwing.
using Policy = boost::math::policies::policy<
    boost::math::policies::domain_error<boost::math::policies::errno_on_error>,
    boost::math::policies::pole_error<boost::math::policies::errno_on_error>,
    boost::math::policies::overflow_error<boost::math::policies::errno_on_error>,
    boost::math::policies::evaluation_error<boost::math::policies::errno_on_error>>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

bool ValidShapes(double alpha, double beta) {
  return std::isfinite(alpha) && alpha > 0.0 && std::isfinite(beta) && beta > 0.0;
}

// The log of a Gamma(shape, 1) draw. It consumes the engine exactly as GammaDraw does, but keeps
// the u^(1 / shape) boost of small shapes in logs, where GammaDraw's result would underflow to 0.
double LogStandardGammaDraw(RandomEngine& rng, double shape) {
  if (shape < 1.0) {
    const double g = GammaDraw(rng, shape + 1.0, 1.0);
    return std::log(g) + std::log(rng.Uniform()) / shape;
  }
  return std::log(GammaDraw(rng, shape, 1.0));
}

}  // namespace

// The density at x, zero outside [0, 1]; at an end point it is infinite when the shape parameter
// of that end is below 1, the other parameter when it equals 1, and 0 above. NaN for a NaN
// argument or when a parameter is not positive and finite.
double BetaPdf(double x, double alpha, double beta) {
  if (!ValidShapes(alpha, beta) || std::isnan(x)) {
    return kNaN;
  }
  if (x < 0.0 || x > 1.0) {
    return 0.0;
  }
  if (x == 0.0) {
    return alpha < 1.0 ? kInf : (alpha == 1.0 ? beta : 0.0);
  }
  if (x == 1.0) {
    return beta < 1.0 ? kInf : (beta == 1.0 ? alpha : 0.0);
  }
  return boost::math::pdf(boost::math::beta_distribution<double, Policy>(alpha, beta), x);
}

// P(X <= x), the regularised incomplete beta I_x(alpha, beta); NaN for a NaN argument or invalid
// parameters.
double BetaCdf(double x, double alpha, double beta) {
  if (!ValidShapes(alpha, beta) || std::isnan(x)) {
    return kNaN;
  }
  if (x <= 0.0) {
    return 0.0;
  }
  if (x >= 1.0) {
    return 1.0;
  }
  return boost::math::cdf(boost::math::beta_distribution<double, Policy>(alpha, beta), x);
}

// X / (X + Y) with X ~ Gamma(alpha, 1) and Y ~ Gamma(beta, 1). The ratio is formed from the logs
// of the two draws so that tiny shapes, whose gamma draws both underflow, still give a draw near 0
// or 1 rather than 0 / 0. NaN for invalid parameters.
double BetaDraw(RandomEngine& rng, double alpha, double beta) {
  if (!ValidShapes(alpha, beta)) {
    return kNaN;
  }
  for (;;) {
    const double logX = LogStandardGammaDraw(rng, alpha);
    const double logY = LogStandardGammaDraw(rng, beta);
    const double top = std::max(logX, logY);
    // Both logs are -inf only when both uniforms of the boost were exactly 0: draw again.
    if (top == -kInf) {
      continue;
    }
    const double x = std::exp(logX - top);
    const double y = std::exp(logY - top);
    return x / (x + y);
  }
}

}  // namespace dist
