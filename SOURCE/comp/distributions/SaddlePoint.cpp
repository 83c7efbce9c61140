// Saddle-point terms for the log-probabilities of Poisson and binomial counts.
#include "SaddlePoint.h"

#include <array>
#include <cmath>

namespace dist {

namespace {

constexpr double kLogTwoPi = 1.8378770664093454836;

// Below this the remainder is read from a table of exact log-factorials; from it on the series
// 1/(12k) - 1/(360k^3) + 1/(1260k^5) - 1/(1680k^7), whose next term is below 10^-13 there.
constexpr int kTableEnd = 16;

}  // namespace

double StirlingRemainder(double k) {
  if (k < kTableEnd) {
    static const std::array<double, kTableEnd> table = [] {
      std::array<double, kTableEnd> remainders{};
      double logFactorial = 0.0;
      for (int j = 1; j < kTableEnd; ++j) {
        logFactorial += std::log(static_cast<double>(j));
        remainders[j] = logFactorial - (j + 0.5) * std::log(static_cast<double>(j)) + j - 0.5 * kLogTwoPi;
      }
      return remainders;
    }();
    return table[static_cast<int>(k)];
  }
  const double inverse = 1.0 / k;
  const double inverse2 = inverse * inverse;
  return (1.0 / 12.0 - (1.0 / 360.0 - (1.0 / 1260.0 - inverse2 / 1680.0) * inverse2) * inverse2) * inverse;
}

double DevianceTerm(double x, double mean) {
  if (x == 0.0) return mean;
  const double difference = x - mean;
  if (std::fabs(difference) < 0.1 * (x + mean)) {
    // 2 x (v + v^3/3 + v^5/5 + ...) - (x - mean) with v = (x - mean) / (x + mean): the series of
    // x log(x / mean) whose leading term cancels the last one exactly.
    double v = difference / (x + mean);
    double sum = difference * v;
    double term = 2.0 * x * v;
    v *= v;
    for (int j = 1; j < 100; ++j) {
      term *= v;
      const double next = sum + term / (2 * j + 1);
      if (next == sum) break;
      sum = next;
    }
    return sum;
  }
  return x * std::log(x / mean) + mean - x;
}

double PoissonLogProbability(double k, double mean) {
  if (k == 0.0) return -mean;
  return -StirlingRemainder(k) - DevianceTerm(k, mean) - 0.5 * (kLogTwoPi + std::log(k));
}

double BinomialLogProbability(double k, double trials, double q) {
  if (k == 0.0) return trials * std::log1p(-q);
  if (k == trials) return trials * std::log(q);
  const double rest = trials - k;
  const double lc = StirlingRemainder(trials) - StirlingRemainder(k) - StirlingRemainder(rest) -
                    DevianceTerm(k, trials * q) - DevianceTerm(rest, trials * (1.0 - q));
  return lc - 0.5 * (kLogTwoPi + std::log(k) + std::log1p(-k / trials));
}

}  // namespace dist
