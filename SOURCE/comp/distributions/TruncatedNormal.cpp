// The truncated normal distribution: density and distribution function from the standardised
// bounds, and exact draws for any interval.
#include "TruncatedNormal.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <boost/random/normal_distribution.hpp>

namespace dist {

namespace {

constexpr double kInvSqrt2Pi = 0.39894228040143267794;
constexpr double kInvSqrt2 = 0.70710678118654752440;
constexpr double kSqrt2Pi = 2.50662827463100050242;
constexpr double kSqrtHalfPi = 1.25331413731550025121;
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Below this bound the one-sided tail draw rejects from the half-normal (ziggurat draws are cheap
// enough to beat the exponential proposal while at least 42% of them are accepted).
constexpr double kTailHalfNormalEnd = 0.8;

// From this standardised lower bound on, the exponential proposal beats half-normal rejection
// (whose acceptance 2 Q(a) has fallen to about 0.6).
constexpr double kExponentialFrom = 0.5;

// The bounds in standard deviations from the mean. The interval must keep a < b after scaling and
// must not lie entirely at an infinity.
struct Standardised {
  double a = 0.0;
  double b = 0.0;
  bool valid = false;
};

Standardised Standardise(double mean, double sd, double lower, double upper) {
  Standardised s;
  if (!std::isfinite(mean) || !std::isfinite(sd) || !(sd > 0.0) || std::isnan(lower) || std::isnan(upper)) {
    return s;
  }
  s.a = (lower - mean) / sd;
  s.b = (upper - mean) / sd;
  s.valid = s.a < s.b && s.a < kInf && s.b > -kInf;
  return s;
}

// The Mills ratio Q(x) / phi(x) for x >= 0. Below 5 from erfc directly; from 5 on by the
// continued fraction 1 / (x + 1 / (x + 2 / (x + 3 / ...))), which at 40 terms is exact to
// rounding there and, unlike erfc, does not underflow.
double MillsRatio(double x) {
  if (x < 5.0) {
    return 0.5 * std::erfc(x * kInvSqrt2) / (kInvSqrt2Pi * std::exp(-0.5 * x * x));
  }
  double t = x;
  for (int k = 40; k >= 1; --k) {
    t = x + k / t;
  }
  return 1.0 / t;
}

// The 10-point Gauss-Legendre rule on [-1, 1]: positive nodes and their weights.
constexpr double kLegendreNodes[5][2] = {{0.14887433898163121088, 0.29552422471475287017},
                                         {0.43339539412924719080, 0.26926671930999635509},
                                         {0.67940956829902440623, 0.21908636251598204400},
                                         {0.86506336668898451073, 0.14945134915058059315},
                                         {0.97390652851717172008, 0.06667134430868813759}};

// (Q(lo) - Q(hi)) / phi(lo) for 0 <= lo <= hi (hi may be infinite): the mass of [lo, hi] in units
// of the density at lo, finite however far out the interval lies. On short intervals (where the
// integrand exp(-(t - lo)(t + lo) / 2) falls by at most e over the interval) the integral by the
// Gauss-Legendre rule, exact to rounding there; elsewhere M(lo) - exp(...) M(hi), whose second term
// is then at most 0.61 of the first, so no digits cancel either way.
double MassOverDensity(double lo, double hi) {
  if (std::isinf(hi)) {
    return MillsRatio(lo);
  }
  const double width = hi - lo;
  if (width * hi <= 1.0) {
    const double half = 0.5 * width;
    double sum = 0.0;
    for (const auto& [node, weight] : kLegendreNodes) {
      for (const double s : {half * (1.0 - node), half * (1.0 + node)}) {
        sum += weight * std::exp(-0.5 * s * (s + 2.0 * lo));
      }
    }
    return half * sum;
  }
  return MillsRatio(lo) - std::exp(-0.5 * width * (hi + lo)) * MillsRatio(hi);
}

// P(a <= Z <= b) of a standard normal over an interval that straddles zero: half-widths from erf,
// both positive, so no digits cancel even when the interval is short.
double StraddlingMass(double a, double b) {
  return 0.5 * (std::erf(b * kInvSqrt2) - std::erf(a * kInvSqrt2));
}

// Draws z on [a, b] with a < 0 < b: uniform proposals on short intervals (where they accept
// more often than the normal, width below sqrt(2 pi)), normal rejection otherwise.
double DrawStraddling(RandomEngine& rng, double a, double b) {
  const double width = b - a;
  if (width < kSqrt2Pi) {
    for (;;) {
      const double z = a + width * rng.Uniform();
      if (rng.Uniform() < std::exp(-0.5 * z * z)) {
        return z;
      }
    }
  }
  for (;;) {
    const double z = rng.Normal();
    if (z >= a && z <= b) {
      return z;
    }
  }
}

// Draws z on [a, b] with 0 <= a < b (b may be infinite).
double DrawUpper(RandomEngine& rng, double a, double b) {
  const double width = b - a;
  if (a < kExponentialFrom) {
    // Near zero: uniform proposals on intervals short enough to beat half-normal rejection
    // (acceptance Z / (width phi(a)) against 2 Z), else half-normal rejection.
    if (width < kSqrtHalfPi * std::exp(0.5 * a * a)) {
      for (;;) {
        const double z = a + width * rng.Uniform();
        if (rng.Uniform() < std::exp(-0.5 * (z - a) * (z + a))) {
          return z;
        }
      }
    }
    for (;;) {
      const double z = std::fabs(rng.Normal());
      if (z >= a && z <= b) {
        return z;
      }
    }
  }
  // In an unbounded tail from 2 sd on: Marsaglia's method, x = sqrt(a^2 - 2 log u) accepted when
  // v x < a, which needs no exponential and accepts at least 84% of proposals there.
  if (!std::isfinite(b) && a >= 2.0 && a < 1e150) {
    const double a2 = a * a;
    for (;;) {
      const double x = std::sqrt(a2 - 2.0 * std::log(1.0 - rng.Uniform()));
      if (rng.Uniform() * x < a) {
        return x;
      }
    }
  }
  // In a bounded tail: the shifted exponential of rate lambda (the rate that maximises the acceptance
  // on [a, inf)), truncated at b by inversion, accepted with probability
  // exp(-((z - lambda)^2 - (m - lambda)^2) / 2) where m is the point of [a, b] nearest lambda.
  // hypot keeps lambda finite for bounds whose square overflows (a tiny sd).
  const double lambda = 0.5 * (a + std::hypot(a, 2.0));
  const bool bounded = std::isfinite(b);
  const double truncatedMass = bounded ? -std::expm1(-lambda * width) : 1.0;
  const double peakOffset = bounded && b < lambda ? b - lambda : 0.0;
  const double peak = peakOffset * peakOffset;
  for (;;) {
    const double z = a - std::log1p(-rng.Uniform() * truncatedMass) / lambda;
    const double d = z - lambda;
    if (rng.Uniform() < std::exp(-0.5 * (d * d - peak))) {
      return z;
    }
  }
}

}  // namespace

// The density phi(z) / (sd Z) on [lower, upper], zero outside, with Z the normal mass of the
// interval. In a tail everything is taken relative to the density at the nearer bound, so bounds
// beyond 37 sd (where Z underflows) still give finite values. NaN for a NaN argument, sd not
// positive and finite, or lower >= upper.
double TruncatedNormalPdf(double x, double mean, double sd, double lower, double upper) {
  const Standardised s = Standardise(mean, sd, lower, upper);
  if (!s.valid || std::isnan(x)) {
    return kNaN;
  }
  if (x < lower || x > upper) {
    return 0.0;
  }
  const double z = (x - mean) / sd;
  if (s.a < 0.0 && s.b > 0.0) {
    return kInvSqrt2Pi * std::exp(-0.5 * z * z) / (sd * StraddlingMass(s.a, s.b));
  }
  // Reflect an interval below zero onto the positive half.
  const bool reflect = s.b <= 0.0;
  const double a = reflect ? -s.b : s.a;
  const double b = reflect ? -s.a : s.b;
  const double t = reflect ? -z : z;
  return std::exp(-0.5 * (t - a) * (t + a)) / (sd * MassOverDensity(a, b));
}

// P(X <= x): the normal mass of [lower, x] over that of [lower, upper]. Masses on one side of
// the mean are measured in units of the density at their end nearer the mean, and intervals that
// cross the mean use erf, so short intervals and far tails keep their digits. NaN for a NaN
// argument or invalid parameters.
double TruncatedNormalCdf(double x, double mean, double sd, double lower, double upper) {
  const Standardised s = Standardise(mean, sd, lower, upper);
  if (!s.valid || std::isnan(x)) {
    return kNaN;
  }
  if (x <= lower) {
    return 0.0;
  }
  if (x >= upper) {
    return 1.0;
  }
  const double z = (x - mean) / sd;
  double p = 0.0;
  if (s.a < 0.0 && s.b > 0.0) {
    // Below zero the mass of [a, z] is that of [-z, -a] on the positive side, phi(z) M-scaled.
    const double below =
        z <= 0.0 ? kInvSqrt2Pi * std::exp(-0.5 * z * z) * MassOverDensity(-z, -s.a) : StraddlingMass(s.a, z);
    p = below / StraddlingMass(s.a, s.b);
  } else if (s.a >= 0.0) {
    p = MassOverDensity(s.a, z) / MassOverDensity(s.a, s.b);
  } else {
    // Below zero, reflected: [lower, x] becomes [-z, -a] inside [-b, -a], measured from -b.
    const double a = -s.b;
    const double t = -z;
    p = std::exp(-0.5 * (t - a) * (t + a)) * MassOverDensity(t, -s.a) / MassOverDensity(a, -s.a);
  }
  return std::clamp(p, 0.0, 1.0);
}

// An exact draw on [lower, upper]: normal or half-normal rejection where the interval holds
// enough mass, uniform proposals on short intervals near the mean, Marsaglia's method in an
// unbounded tail and the exponential proposal in a bounded one (Robert, 1995), both fast however
// far out the bound is. NaN for invalid
// parameters.
double StandardNormalTailDraw(RandomEngine& rng, double a) {
  // The ziggurat normal costs less than half the engine's polar one; these draws are the whole
  // cost of a probit sweep.
  boost::random::normal_distribution<double> normal;
  if (a <= 0.0) {
    for (;;) {
      const double x = normal(rng.Engine());
      if (x > a) return x;
    }
  }
  if (a < kTailHalfNormalEnd) {
    for (;;) {
      const double x = std::fabs(normal(rng.Engine()));
      if (x > a) return x;
    }
  }
  const double rate = 0.5 * (a + std::sqrt(a * a + 4.0));
  for (;;) {
    const double x = a - std::log1p(-rng.Uniform()) / rate;
    const double d = x - rate;
    if (rng.Uniform() < std::exp(-0.5 * d * d)) return x;
  }
}

double TruncatedNormalDraw(RandomEngine& rng, double mean, double sd, double lower, double upper) {
  const Standardised s = Standardise(mean, sd, lower, upper);
  if (!s.valid) {
    return kNaN;
  }
  double x = 0.0;
  if (s.a < 0.0 && s.b > 0.0) {
    x = mean + sd * DrawStraddling(rng, s.a, s.b);
  } else if (s.a >= 0.0) {
    x = mean + sd * DrawUpper(rng, s.a, s.b);
  } else {
    x = mean - sd * DrawUpper(rng, -s.b, -s.a);
  }
  // Rounding in mean + sd z may step just outside the bounds.
  return std::clamp(x, lower, upper);
}

}  // namespace dist
