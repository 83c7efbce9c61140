// Binomial distribution: Boost.Math pmf and cdf, draws by the waiting-time method or, for large
// expected counts, by transformed rejection.
#include "Binomial.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <boost/math/distributions/binomial.hpp>

#include "SaddlePoint.h"

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

// Below this expected count of the rarer outcome the waiting-time method is used; from it on,
// transformed rejection, whose cost does not grow with n.
constexpr double kRejectionMean = 10.0;

// Hörmann's transformed rejection with squeeze (BTRS, 1993) for q <= 1/2 and n q >= 10: a
// proposal from a transformed uniform, accepted at once inside the squeeze and otherwise against
// log(f(k) / f(mode)). That ratio comes from saddle-point terms rather than from log-factorials
// of numbers as large as n, whose differences would lose their digits for large n. About 1.15
// pairs of uniforms per draw whatever n.
double TransformedRejection(RandomEngine& rng, double trials, double q) {
  const double spq = std::sqrt(trials * q * (1.0 - q));
  const double b = 1.15 + 2.53 * spq;
  const double a = -0.0873 + 0.0248 * b + 0.01 * q;
  const double c = trials * q + 0.5;
  const double vr = 0.92 - 4.2 / b;
  const double alpha = (2.83 + 5.1 / b) * spq;
  const double mode = std::floor((trials + 1.0) * q);
  const double logAtMode = BinomialLogProbability(mode, trials, q);
  for (;;) {
    const double u = rng.Uniform() - 0.5;
    const double v = rng.Uniform();
    const double us = 0.5 - std::fabs(u);
    const double k = std::floor((2.0 * a / us + b) * u + c);
    if (k < 0.0 || k > trials) continue;
    if (us >= 0.07 && v <= vr) return k;
    const double logHat = std::log(v * alpha / (a / (us * us) + b));
    if (logHat <= BinomialLogProbability(k, trials, q) - logAtMode) return k;
  }
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

// On the rarer outcome (successes for p < 1/2, failures, the draw then n minus the count, for
// p >= 1/2): the waiting-time method, one uniform per spacing, while n times its probability is
// below 10; transformed rejection from there on, so that a draw with 10^12 trials costs what one
// with 100 does. n = 0, p = 0 and p = 1 return at once without a uniform. NaN for invalid
// parameters.
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
  const double rare = std::min(p, 1.0 - p);
  if (trials * rare >= kRejectionMean) {
    const double count = TransformedRejection(rng, trials, rare);
    return p <= 0.5 ? count : trials - count;
  }
  if (p < 0.5) {
    return WaitingTimeCount(rng, trials, std::log1p(-p));
  }
  return trials - WaitingTimeCount(rng, trials, std::log(p));
}

}  // namespace dist
