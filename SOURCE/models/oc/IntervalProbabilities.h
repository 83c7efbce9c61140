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

  // F(u) - F(l) where it keeps its relative accuracy (as LogInterval computes it there); 0 over
  // very short intervals and where it would underflow.
  static double Interval(double l, double u) {
    if (l == -kInf) return 0.5 * std::erfc(-u * kInvSqrt2);
    if (u == kInf) return 0.5 * std::erfc(l * kInvSqrt2);
    if (u - l < 1e-7) return 0.0;
    return l > 0.0 ? 0.5 * (std::erfc(l * kInvSqrt2) - std::erfc(u * kInvSqrt2))
                   : 0.5 * (std::erfc(-u * kInvSqrt2) - std::erfc(-l * kInvSqrt2));
  }

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

  // F(u) - F(l) where it keeps its relative accuracy (as LogInterval computes it there); 0 over
  // very short intervals and far in the tails.
  static double Interval(double l, double u) {
    if (l == -kInf) return 1.0 / (1.0 + std::exp(-u));
    if (u == kInf) return 1.0 / (1.0 + std::exp(l));
    if (!(u - l > 1e-6 && l > -30.0 && u < 30.0)) return 0.0;
    return l > 0.0 ? 1.0 / (1.0 + std::exp(l)) - 1.0 / (1.0 + std::exp(u))
                   : 1.0 / (1.0 + std::exp(-u)) - 1.0 / (1.0 + std::exp(-l));
  }

  // Usually the difference itself, taken in the tail where both bounds lie (F(-l) - F(-u) when
  // both are positive), which keeps its relative accuracy there; over short intervals and far in
  // the tails F(u) (1 - F(l)) (1 - e^(l - u)), three factors without cancellation, in logs.
  static double LogInterval(double l, double u) {
    if (l == -kInf) return LogCdf(u);
    if (u == kInf) return LogCdf(-l);
    if (u - l > 1e-6 && l > -30.0 && u < 30.0) return std::log(Interval(l, u));
    return LogCdf(u) + LogCdf(-l) + Log1mExp(l - u);
  }
};

// The sum of the log probabilities of intervals, kept as a product (its mantissa rescaled now and
// then, its binary exponent counted) where Interval gives the probability, which saves a log per
// term; other terms are added in logs.
class LogProbabilitySum {
public:
  template <class Distribution>
  void Add(double l, double u) {
    const double p = Distribution::Interval(l, u);
    if (p > 1e-150) {
      // The product stays at least 1e-150 before each factor, so it never underflows.
      m_product *= p;
      if (m_product < 1e-150) {
        int exponent = 0;
        m_product = std::frexp(m_product, &exponent);
        m_exponent += exponent;
      }
    } else {
      m_logs += Distribution::LogInterval(l, u);
    }
  }
  double Value() const { return m_logs + std::log(m_product) + m_exponent * 0.69314718055994530942; }

private:
  double m_product = 1.0;
  long m_exponent = 0;
  double m_logs = 0.0;
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
