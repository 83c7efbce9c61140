// The truncated normal distribution: density and distribution function from the standardised
// bounds, and exact draws for any interval.
#include "TruncatedNormal.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace dist {

namespace {

constexpr double kInvSqrt2Pi = 0.39894228040143267794;
constexpr double kInvSqrt2 = 0.70710678118654752440;
constexpr double kSqrt2Pi = 2.50662827463100050242;
constexpr double kSqrtHalfPi = 1.25331413731550025121;
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

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
  if (!std::isfinite(mean) || !std::isfinite(sd) || !(sd > 0.0) || std::isnan(lower) ||
      std::isnan(upper)) {
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

// Q(x) / phi(a) for x >= a >= 0: the upper-tail mass beyond x in units of the density at a, so
// that tail masses far beyond the range of doubles still have a finite ratio.
double TailOverDensity(double x, double a) {
  if (std::isinf(x)) {
    return 0.0;
  }
  return std::exp(-0.5 * (x - a) * (x + a)) * MillsRatio(x);
}

// P(a <= Z <= b) of a standard normal over an interval that straddles zero: half-widths from erf,
// both positive, so no digits cancel even when the interval is short.
double StraddlingMass(double a, double b) { return 0.5 * (std::erf(b * kInvSqrt2) - std::erf(a * kInvSqrt2)); }

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
  // In the tail: the shifted exponential of rate lambda (the rate that maximises the acceptance
  // on [a, inf)), truncated at b by inversion, accepted with probability
  // exp(-((z - lambda)^2 - (m - lambda)^2) / 2) where m is the point of [a, b] nearest lambda.
  const double lambda = 0.5 * (a + std::sqrt(a * a + 4.0));
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
  const double massOverDensity = TailOverDensity(a, a) - TailOverDensity(b, a);
  return std::exp(-0.5 * (t - a) * (t + a)) / (sd * massOverDensity);
}

// P(X <= x): the normal mass of [lower, x] over that of [lower, upper], each from erf or erfc
// on the side that keeps its digits. NaN for a NaN argument or invalid parameters.
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
    const double below = z <= 0.0 ? 0.5 * (std::erfc(-z * kInvSqrt2) - std::erfc(-s.a * kInvSqrt2))
                                  : StraddlingMass(s.a, z);
    p = below / StraddlingMass(s.a, s.b);
  } else if (s.a >= 0.0) {
    const double total = TailOverDensity(s.a, s.a) - TailOverDensity(s.b, s.a);
    p = (TailOverDensity(s.a, s.a) - TailOverDensity(z, s.a)) / total;
  } else {
    // Below zero, reflected: [lower, x] becomes [-z, -a] inside [-b, -a].
    const double a = -s.b;
    const double b = -s.a;
    const double total = TailOverDensity(a, a) - TailOverDensity(b, a);
    p = (TailOverDensity(-z, a) - TailOverDensity(b, a)) / total;
  }
  return std::clamp(p, 0.0, 1.0);
}

// An exact draw on [lower, upper]: normal or half-normal rejection where the interval holds
// enough mass, uniform proposals on short intervals near the mean, and the exponential proposal
// in a tail (Robert, 1995), which stays fast however far out the bound is. NaN for invalid
// parameters.
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
