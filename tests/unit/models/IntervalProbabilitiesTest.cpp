// IntervalProbabilities: log(F(u) - F(l)) for the Normal and logistic distributions against long
// double references on both sides of each change of formula (far tails, short intervals, infinite
// bounds), and the product form of their sum against the sum of the logs.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "IntervalProbabilities.h"
#include "RandomEngine.h"

namespace {

long double NormalReference(long double l, long double u) {
  const long double r = 0.70710678118654752440084436L;
  // In the tail where both bounds lie, where erfcl keeps its relative accuracy.
  if (l > 0) return std::log(0.5L * (std::erfc(l * r) - std::erfc(u * r)));
  return std::log(0.5L * (std::erfc(-u * r) - std::erfc(-l * r)));
}

long double LogisticReference(long double l, long double u) {
  if (l > 0) return std::log(1.0L / (1.0L + std::exp(l)) - 1.0L / (1.0L + std::exp(u)));
  return std::log(1.0L / (1.0L + std::exp(-u)) - 1.0L / (1.0L + std::exp(-l)));
}

}  // namespace

TEST(IntervalProbabilities, AgreeWithReferencesAcrossTheirFormulas) {
  const double inf = oc::kInf;
  const std::vector<std::pair<double, double>> intervals = {
      {-0.3, 0.4},  {1.0, 2.5},   {-2.5, -1.0}, {29.9, 30.5}, {30.1, 31.0}, {40.0, 40.5},  {-31.0, -30.2},
      {-29.5, -29.0}, {1.0, 1.0 + 5e-8}, {-3.0, -3.0 + 2e-7}, {-inf, -35.0}, {-inf, 0.7}, {38.0, inf}, {-0.2, inf},
      {-inf, -40.0}, {45.0, inf}};
  for (const auto& [l, u] : intervals) {
    const long double ll = l, lu = u;
    const double normal = oc::NormalInterval::LogInterval(l, u);
    const long double normalReference = NormalReference(ll, lu);
    EXPECT_NEAR(normal, static_cast<double>(normalReference), 1e-9 * std::fabs(static_cast<double>(normalReference)) + 1e-12)
        << "Normal, (" << l << ", " << u << "]";
    const double logistic = oc::LogisticInterval::LogInterval(l, u);
    const long double logisticReference = LogisticReference(ll, lu);
    EXPECT_NEAR(logistic, static_cast<double>(logisticReference),
                1e-9 * std::fabs(static_cast<double>(logisticReference)) + 1e-12)
        << "logistic, (" << l << ", " << u << "]";
  }
}

TEST(IntervalProbabilities, ProductFormOfTheSumAgreesWithTheSumOfLogs) {
  RandomEngine rng;
  rng.Seed(9);
  oc::LogProbabilitySum normal, logistic;
  double normalLogs = 0.0, logisticLogs = 0.0;
  // Ordinary intervals with now and then one far in a tail, whose probability is below what the
  // product takes directly.
  for (int i = 0; i < 5000; ++i) {
    double l = 2.0 * rng.Normal(), u = l + 0.05 + rng.Uniform();
    if (i % 97 == 0) l = -oc::kInf, u = -45.0;
    if (i % 89 == 0) l = 50.0, u = 51.0;
    normal.Add<oc::NormalInterval>(l, u);
    logistic.Add<oc::LogisticInterval>(l, u);
    normalLogs += oc::NormalInterval::LogInterval(l, u);
    logisticLogs += oc::LogisticInterval::LogInterval(l, u);
  }
  EXPECT_NEAR(normal.Value(), normalLogs, 1e-10 * std::fabs(normalLogs));
  EXPECT_NEAR(logistic.Value(), logisticLogs, 1e-10 * std::fabs(logisticLogs));
}
