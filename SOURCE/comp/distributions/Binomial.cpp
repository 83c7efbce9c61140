// Binomial distribution: Boost.Math pmf and cdf, draws by the waiting-time method.
#include "Binomial.h"

#include <cmath>
#include <limits>

#include <boost/math/distributions/binomial.hpp>

namespace dist {

namespace {

// Boost.Math reports bad input as NaN (or infinity) instead of throwing.
using Policy = boost::math::policies::policy<
    boost::math::policies::domain_error<boost::math::policies::errno_on_error>,
    boost::math::policies::pole_error<boost::math::policies::errno_on_error>,
    boost::math::policies::overflow_error<boost::math::policies::errno_on_error>,
    boost::math::policies::evaluation_error<boost::math::policies::errno_on_error>>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// A non-negative whole number of trials and a probability in [0, 1].
bool ValidParameters(double trials, double p) {
  return std::isfinite(trials) && trials >= 0.0 && trials == std::floor(trials) && p >= 0.0 && p <= 1.0;
}

// The number of events among n trials with event probability q <= 1/2: the k-th exponential
// spacing -log(u) / (n - k) is added until the total passes -log(1 - q), and the number of
// spacings that fitted is the count; n when all n fit.
double WaitingTimeCount(RandomEngine& rng, double trials, double logOneMinusQ) {
  double sum = 0.0;
  double k = 0.0;
  while (k < trials) {
    sum += std::log(rng.Uniform()) / (trials - k);
    if (sum < logOneMinusQ) {
      return k;
    }
    k += 1.0;
  }
  return trials;
}

}  // namespace

// P(X = x) for a whole x in 0 ... n, 0 for any other x; NaN for a NaN argument, a number of
// trials that is not a non-negative whole number, or p outside [0, 1].
double BinomialPdf(double x, double trials, double p) {
  if (!ValidParameters(trials, p) || std::isnan(x)) {
    return kNaN;
  }
  if (x < 0.0 || x > trials || x != std::floor(x)) {
    return 0.0;
  }
  return boost::math::pdf(boost::math::binomial_distribution<double, Policy>(trials, p), x);
}

// P(X <= x) at floor(x), an incomplete beta; NaN for a NaN argument or invalid parameters.
double BinomialCdf(double x, double trials, double p) {
  if (!ValidParameters(trials, p) || std::isnan(x)) {
    return kNaN;
  }
  if (x < 0.0) {
    return 0.0;
  }
  if (x >= trials) {
    return 1.0;
  }
  return boost::math::cdf(boost::math::binomial_distribution<double, Policy>(trials, p), std::floor(x));
}

// The waiting-time method on the rarer outcome: successes for p < 1/2, failures (the draw then
// n minus the count) for p >= 1/2, one uniform per spacing. n = 0, p = 0 and p = 1 return at once
// without a uniform. NaN for invalid parameters.
double BinomialDraw(RandomEngine& rng, double trials, double p) {
  if (!ValidParameters(trials, p)) {
    return kNaN;
  }
  if (trials == 0.0 || p == 0.0) {
    return 0.0;
  }
  if (p == 1.0) {
    return trials;
  }
  if (p < 0.5) {
    return WaitingTimeCount(rng, trials, std::log1p(-p));
  }
  return trials - WaitingTimeCount(rng, trials, std::log(p));
}

}  // namespace dist
