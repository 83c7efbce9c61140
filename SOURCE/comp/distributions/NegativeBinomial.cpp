// Negative binomial distribution: Boost.Math pmf and cdf, gamma-Poisson mixture draws.
#include "NegativeBinomial.h"

#include <cmath>
#include <limits>

#include <boost/math/distributions/negative_binomial.hpp>

#include "Gamma.h"
#include "Poisson.h"

namespace dist {

namespace {

// Boost.Math reports bad input as NaN (or infinity) instead of throwing.
using Policy = boost::math::policies::policy<
    boost::math::policies::domain_error<boost::math::policies::errno_on_error>,
    boost::math::policies::pole_error<boost::math::policies::errno_on_error>,
    boost::math::policies::overflow_error<boost::math::policies::errno_on_error>,
    boost::math::policies::evaluation_error<boost::math::policies::errno_on_error>>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// r positive (not necessarily whole) and p in (0, 1]; p = 1 puts all mass at 0.
bool ValidParameters(double r, double p) { return std::isfinite(r) && r > 0.0 && p > 0.0 && p <= 1.0; }

}  // namespace

// P(X = x) = C(x + r - 1, x) p^r (1 - p)^x for a non-negative integer x, 0 for any other x; NaN
// for a NaN argument, r not positive and finite, or p outside (0, 1].
double NegativeBinomialPdf(double x, double r, double p) {
  if (!ValidParameters(r, p) || std::isnan(x)) {
    return kNaN;
  }
  if (x < 0.0 || !std::isfinite(x) || x != std::floor(x)) {
    return 0.0;
  }
  if (p == 1.0) {
    return x == 0.0 ? 1.0 : 0.0;
  }
  return boost::math::pdf(boost::math::negative_binomial_distribution<double, Policy>(r, p), x);
}

// P(X <= x) at floor(x), the regularised incomplete beta I_p(r, floor(x) + 1); NaN for a NaN
// argument or invalid parameters.
double NegativeBinomialCdf(double x, double r, double p) {
  if (!ValidParameters(r, p) || std::isnan(x)) {
    return kNaN;
  }
  if (x < 0.0) {
    return 0.0;
  }
  if (std::isinf(x) || p == 1.0) {
    return 1.0;
  }
  return boost::math::cdf(boost::math::negative_binomial_distribution<double, Policy>(r, p), std::floor(x));
}

// A Poisson draw whose mean is a Gamma(r, rate p / (1 - p)) draw. The gamma draw is taken with
// rate 1 and divided by the rate here, which gives the same value as GammaDraw with that rate
// while allowing rates whose reciprocal overflows. 0 for p = 1 (no uniform used); NaN for invalid
// parameters.
double NegativeBinomialDraw(RandomEngine& rng, double r, double p) {
  if (!ValidParameters(r, p)) {
    return kNaN;
  }
  if (p == 1.0) {
    return 0.0;
  }
  const double rate = p / (1.0 - p);
  return PoissonDraw(rng, GammaDraw(rng, r, 1.0) / rate);
}

}  // namespace dist
