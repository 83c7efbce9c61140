// F distribution: Boost.Math density and cdf, draws as a ratio of scaled chi-squared draws.
#include "FisherF.h"

#include <cmath>
#include <limits>

#include <boost/math/distributions/fisher_f.hpp>

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

using Fisher = boost::math::fisher_f_distribution<double, Policy>;

bool ValidDof(double numeratorDof, double denominatorDof) {
  return std::isfinite(numeratorDof) && numeratorDof > 0.0 && std::isfinite(denominatorDof) &&
         denominatorDof > 0.0;
}

}  // namespace

// The density at x, zero for x < 0 and x = +inf; at x = 0 it is infinite for a numerator dof
// below 2, 1 for exactly 2 and 0 above. NaN for a NaN argument or when a dof is not positive and
// finite.
double FisherPdf(double x, double numeratorDof, double denominatorDof) {
  if (!ValidDof(numeratorDof, denominatorDof) || std::isnan(x)) {
    return kNaN;
  }
  if (x < 0.0 || std::isinf(x)) {
    return 0.0;
  }
  if (x == 0.0) {
    return numeratorDof < 2.0 ? std::numeric_limits<double>::infinity() : (numeratorDof == 2.0 ? 1.0 : 0.0);
  }
  return boost::math::pdf(Fisher(numeratorDof, denominatorDof), x);
}

// P(X <= x), an incomplete beta of d1 x / (d1 x + d2); NaN for a NaN argument or invalid dof.
double FisherCdf(double x, double numeratorDof, double denominatorDof) {
  if (!ValidDof(numeratorDof, denominatorDof) || std::isnan(x)) {
    return kNaN;
  }
  if (x <= 0.0) {
    return 0.0;
  }
  if (std::isinf(x)) {
    return 1.0;
  }
  return boost::math::cdf(Fisher(numeratorDof, denominatorDof), x);
}

// (X1 / d1) / (X2 / d2) with X1, X2 chi-squared on d1 and d2 degrees of freedom, each a gamma
// draw with shape d / 2 and rate 1 / 2, numerator first. NaN for invalid dof.
double FisherDraw(RandomEngine& rng, double numeratorDof, double denominatorDof) {
  if (!ValidDof(numeratorDof, denominatorDof)) {
    return kNaN;
  }
  const double numerator = GammaDraw(rng, 0.5 * numeratorDof, 0.5) / numeratorDof;
  const double denominator = GammaDraw(rng, 0.5 * denominatorDof, 0.5) / denominatorDof;
  return numerator / denominator;
}

}  // namespace dist
