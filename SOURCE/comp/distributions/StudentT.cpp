// Student's t distribution: density and distribution function through Boost.Math, and draws as a
// normal over the root of a scaled chi-squared.
#include "StudentT.h"

#include <cmath>
#include <limits>

#include <boost/math/distributions/students_t.hpp>

#include "ChiSquared.h"

namespace dist {

namespace {

// Boost.Math reports bad input as NaN (or infinity) instead of throwing.
using Policy = boost::math::policies::policy<
    boost::math::policies::domain_error<boost::math::policies::errno_on_error>,
    boost::math::policies::pole_error<boost::math::policies::errno_on_error>,
    boost::math::policies::overflow_error<boost::math::policies::errno_on_error>,
    boost::math::policies::evaluation_error<boost::math::policies::errno_on_error>>;

constexpr double kInvSqrt2Pi = 0.39894228040143267794;
constexpr double kInvSqrt2 = 0.70710678118654752440;

// Positive dof; an infinite dof is the standard normal.
bool ValidDof(double dof) { return dof > 0.0; }

}  // namespace

// The density at x; NaN for a NaN argument or a dof that is not positive.
double StudentTPdf(double x, double dof) {
  if (!ValidDof(dof) || std::isnan(x)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  if (std::isinf(x)) {
    return 0.0;
  }
  if (std::isinf(dof)) {
    return kInvSqrt2Pi * std::exp(-0.5 * x * x);
  }
  return boost::math::pdf(boost::math::students_t_distribution<double, Policy>(dof), x);
}

// P(X <= x), through the incomplete beta function (accurate in both tails); NaN for a NaN argument
// or a dof that is not positive.
double StudentTCdf(double x, double dof) {
  if (!ValidDof(dof) || std::isnan(x)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  if (std::isinf(x)) {
    return x > 0.0 ? 1.0 : 0.0;
  }
  if (std::isinf(dof)) {
    return 0.5 * std::erfc(-x * kInvSqrt2);
  }
  return boost::math::cdf(boost::math::students_t_distribution<double, Policy>(dof), x);
}

// z / sqrt(c / dof) with z standard normal and c chi-squared with dof degrees of freedom (z alone
// for infinite dof); NaN for a dof that is not positive.
double StudentTDraw(RandomEngine& rng, double dof) {
  if (!ValidDof(dof)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  const double z = rng.Normal();
  if (std::isinf(dof)) {
    return z;
  }
  return z / std::sqrt(ChiSquaredDraw(rng, dof) / dof);
}

}  // namespace dist
