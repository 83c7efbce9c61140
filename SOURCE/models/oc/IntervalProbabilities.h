// IntervalProbabilities: log P(l < e <= u) = log(F(u) - F(l)) for a standard Normal and a standard
// logistic e, with its first and second derivatives in l and u: the terms of the ordered models.
#pragma once

#include <cmath>
#include <limits>

#include "BinaryAugmentation.h"

namespace oc {

constexpr double kInf = std::numeric_limits<double>::infinity();

// log(1 - e^a) for a < 0, accurate near 0 and far below it.
inline double Log1mExp(double a) { return a > -0.6931471805599453 ? std::log(-std::expm1(a)) : std::log1p(-std::exp(a)); }

// The derivatives of log(F(u) - F(l)): d/dl, d/du and the second derivatives. An infinite bound
// contributes nothing.
struct IntervalScores {
  double logProbability = 0.0;
  double l = 0.0, u = 0.0;
  double ll = 0.0, uu = 0.0, lu = 0.0;
};

// e ~ N(0, 1).
struct NormalInterval {
  static constexpr double kInvSqrt2 = 0.70710678118654752440;
  static constexpr double kLogSqrt2Pi = 0.91893853320467274178;

  static double Cdf(double x) { return 0.5 * std::erfc(-x * kInvSqrt2); }
  static double Density(double x) { return std::exp(-0.5 * x * x - kLogSqrt2Pi); }
  static double LogDensity(double x) { return -0.5 * x * x - kLogSqrt2Pi; }
  // f'(x) / f(x).
  static double DensitySlope(double x) { return -x; }

  // l < u; either may be infinite. Differences are taken in the tail where both bounds lie, where
  // erfc keeps its relative accuracy; beyond 30 standard deviations, in logs; over very short
  // intervals, as density times width.
  static double LogInterval(double l, double u) {
    if (l == -kInf) return LogNormalCdf(u);
    if (u == kInf) return LogNormalCdf(-l);
    if (u - l < 1e-7) return LogDensity(0.5 * (l + u)) + std::log(u - l);
    if (l > 0.0) {
      if (l < 30.0) return std::log(0.5 * (std::erfc(l * kInvSqrt2) - std::erfc(u * kInvSqrt2)));
      const double upper = LogNormalCdf(-l);
      return upper + Log1mExp(LogNormalCdf(-u) - upper);
    }
    if (u > -30.0) return std::log(0.5 * (std::erfc(-u * kInvSqrt2) - std::erfc(-l * kInvSqrt2)));
    const double upper = LogNormalCdf(u);
    return upper + Log1mExp(LogNormalCdf(l) - upper);
  }
};

// e logistic: F(x) = 1 / (1 + e^-x).
struct LogisticInterval {
  // log(1 + e^x), finite for any x.
  static double Softplus(double x) { return std::fmax(x, 0.0) + std::log1p(std::exp(-std::fabs(x))); }
  static double LogCdf(double x) { return -Softplus(-x); }
  static double Cdf(double x) { return x >= 0.0 ? 1.0 / (1.0 + std::exp(-x)) : std::exp(x) / (1.0 + std::exp(x)); }
  static double LogDensity(double x) { return -Softplus(-x) - Softplus(x); }
  static double Density(double x) { return std::exp(LogDensity(x)); }
  static double DensitySlope(double x) { return 1.0 - 2.0 * Cdf(x); }

  // Usually the difference itself, taken in the tail where both bounds lie (F(-l) - F(-u) when
  // both are positive), which keeps its relative accuracy there; over short intervals and far in
  // the tails F(u) (1 - F(l)) (1 - e^(l - u)), three factors without cancellation, in logs.
  static double LogInterval(double l, double u) {
    if (l == -kInf) return LogCdf(u);
    if (u == kInf) return LogCdf(-l);
    if (u - l > 1e-6 && l > -30.0 && u < 30.0) {
      const double difference = l > 0.0 ? 1.0 / (1.0 + std::exp(l)) - 1.0 / (1.0 + std::exp(u))
                                         : 1.0 / (1.0 + std::exp(-u)) - 1.0 / (1.0 + std::exp(-l));
      return std::log(difference);
    }
    return LogCdf(u) + LogCdf(-l) + Log1mExp(l - u);
  }
};

// The interval's log probability and its derivatives, for either distribution.
template <class Distribution>
IntervalScores Scores(double l, double u) {
  IntervalScores s;
  s.logProbability = Distribution::LogInterval(l, u);
  if (u != kInf) {
    s.u = std::exp(Distribution::LogDensity(u) - s.logProbability);
    s.uu = s.u * Distribution::DensitySlope(u) - s.u * s.u;
  }
  if (l != -kInf) {
    s.l = -std::exp(Distribution::LogDensity(l) - s.logProbability);
    s.ll = s.l * Distribution::DensitySlope(l) - s.l * s.l;
  }
  s.lu = -s.l * s.u;
  return s;
}

}  // namespace oc
