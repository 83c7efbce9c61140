// Poisson distribution: Boost.Math pmf and cdf, exact draws by inversion or PTRS rejection.
#include "Poisson.h"

#include <cmath>
#include <limits>

#include <boost/math/distributions/poisson.hpp>

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

// Means at or above this go to the rejection method; inversion's expected cost grows with the
// mean, the rejection method's does not.
constexpr double kRejectionMean = 10.0;

// A mean of 0 is allowed: all mass at 0.
bool ValidMean(double mean) { return std::isfinite(mean) && mean >= 0.0; }

// Inversion by sequential search from 0. Rounding can leave the running sum just below a u close
// to 1; the search then gives up where the terms have become negligible and starts over with a
// new u, which happens with a probability of the order of 10^-15.
double PoissonByInversion(RandomEngine& rng, double mean) {
  const double p0 = std::exp(-mean);
  for (;;) {
    const double u = rng.Uniform();
    double term = p0;
    double sum = p0;
    double k = 0.0;
    while (u >= sum && k < 200.0) {
      k += 1.0;
      term *= mean / k;
      sum += term;
    }
    if (u < sum) {
      return k;
    }
  }
}

// Hörmann's transformed rejection with squeeze (PTRS, 1993): a hat of the form (2a / v + b) u
// over the inverse cdf, an acceptance region without a logarithm for most pairs, and otherwise the
// exact test against log p(k) = k log(mean) - mean - log k!, taken from saddle-point terms: the
// three large terms of that sum would cancel to nothing for means beyond about 10^12.
double PoissonByRejection(RandomEngine& rng, double mean) {
  const double sqrtMean = std::sqrt(mean);
  const double b = 0.931 + 2.53 * sqrtMean;
  const double a = -0.059 + 0.02483 * b;
  const double invAlpha = 1.1239 + 1.1328 / (b - 3.4);
  const double vr = 0.9277 - 3.6224 / (b - 2.0);
  for (;;) {
    const double u = rng.Uniform() - 0.5;
    const double v = rng.Uniform();
    const double us = 0.5 - std::abs(u);
    const double k = std::floor((2.0 * a / us + b) * u + mean + 0.43);
    if (us >= 0.07 && v <= vr) {
      return k;
    }
    if (k < 0.0 || (us < 0.013 && v > us)) {
      continue;
    }
    const double logHat = std::log(v) + std::log(invAlpha) - std::log(a / (us * us) + b);
    if (logHat <= PoissonLogProbability(k, mean)) {
      return k;
    }
  }
}

bool IsCount(double x) { return x >= 0.0 && std::isfinite(x) && x == std::floor(x); }

}  // namespace

// P(X = x) for a non-negative integer x, 0 for any other x; NaN for a NaN argument or when the
// mean is negative or not finite.
double PoissonPdf(double x, double mean) {
  if (!ValidMean(mean) || std::isnan(x)) {
    return kNaN;
  }
  if (!IsCount(x)) {
    return 0.0;
  }
  if (mean == 0.0) {
    return x == 0.0 ? 1.0 : 0.0;
  }
  return boost::math::pdf(boost::math::poisson_distribution<double, Policy>(mean), x);
}

// P(X <= x) = Q(floor(x) + 1, mean), the upper regularised incomplete gamma; NaN for a NaN
// argument or an invalid mean.
double PoissonCdf(double x, double mean) {
  if (!ValidMean(mean) || std::isnan(x)) {
    return kNaN;
  }
  if (x < 0.0) {
    return 0.0;
  }
  if (std::isinf(x) || mean == 0.0) {
    return 1.0;
  }
  return boost::math::cdf(boost::math::poisson_distribution<double, Policy>(mean), std::floor(x));
}

// An exact draw: inversion below a mean of 10, PTRS from there on; 0 for a mean of 0 (no uniform
// used) and NaN for an invalid mean.
double PoissonDraw(RandomEngine& rng, double mean) {
  if (!ValidMean(mean)) {
    return kNaN;
  }
  if (mean == 0.0) {
    return 0.0;
  }
  return mean < kRejectionMean ? PoissonByInversion(rng, mean) : PoissonByRejection(rng, mean);
}

}  // namespace dist
