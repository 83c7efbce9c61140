// Goodness of fit of the univariate continuous draws: 10^5 seeded draws per case against the
// family's distribution function, and the sample mean and variance against the exact ones.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

#include "ChiSquared.h"
#include "ExtremeValue.h"
#include "GoodnessOfFit.h"
#include "LogNormal.h"
#include "Logistic.h"
#include "LogitNormal.h"
#include "Normal.h"
#include "RandomEngine.h"
#include "StudentT.h"
#include "TruncatedNormal.h"

namespace {

constexpr long kDraws = 100000;
// Mean and variance must lie within this many Monte Carlo standard errors: about 1.6% of the sd
// for the mean at 10^5 draws, while a mixed-up parameter moves one of them by far more.
constexpr double kStandardErrors = 5.0;
constexpr double kInf = std::numeric_limits<double>::infinity();

// kDraws draws from a freshly seeded engine.
std::vector<double> Sample(std::uint64_t seed, const std::function<double(RandomEngine&)>& draw) {
  RandomEngine rng;
  rng.Seed(seed);
  std::vector<double> draws(kDraws);
  for (double& x : draws) {
    x = draw(rng);
  }
  return draws;
}

// The Kolmogorov-Smirnov statistic below its 0.999 critical value; the sample mean within a few
// standard errors of `mean` and, when `variance` is finite with a finite fourth moment behind
// it (checkVariance), the sample variance within a few standard errors of `variance`.
void ExpectFits(const std::vector<double>& draws, const std::function<double(double)>& cdf, double mean,
                double variance, bool checkVariance = true) {
  EXPECT_LT(KolmogorovSmirnov(draws, cdf), KolmogorovSmirnovCritical999(kDraws));
  const SampleMoments m = Moments(draws);
  EXPECT_NEAR(m.mean, mean, kStandardErrors * std::sqrt(variance / kDraws));
  if (checkVariance) {
    EXPECT_NEAR(m.variance, variance, kStandardErrors * m.varianceStandardError);
  }
}

}  // namespace

// Location-scale families with a scale away from 1, so that a scale used as a variance (or the
// reverse) shifts the variance by a factor of 2.5 or more.
TEST(ContinuousDraws, LocationScaleFamilies) {
  {
    SCOPED_TRACE("normal(1.5, 2.5)");
    const auto draws = Sample(101, [](RandomEngine& rng) { return dist::NormalDraw(rng, 1.5, 2.5); });
    ExpectFits(draws, [](double x) { return dist::NormalCdf(x, 1.5, 2.5); }, 1.5, 6.25);
  }
  {
    // Mean exp(m + s^2 / 2), variance (exp(s^2) - 1) exp(2 m + s^2).
    SCOPED_TRACE("lognormal(0.3, 0.6)");
    const auto draws = Sample(102, [](RandomEngine& rng) { return dist::LogNormalDraw(rng, 0.3, 0.6); });
    ExpectFits(draws, [](double x) { return dist::LogNormalCdf(x, 0.3, 0.6); }, 1.6160744021928934,
               1.1317249038377448);
  }
  {
    // mpmath: quad(g(z) npdf(z)) and quad(g(z)^2 npdf(z)) - mean^2, g(z) = 1 / (1 + exp(-(0.5 + 1.2 z))).
    SCOPED_TRACE("logitnormal(0.5, 1.2)");
    const auto draws = Sample(103, [](RandomEngine& rng) { return dist::LogitNormalDraw(rng, 0.5, 1.2); });
    ExpectFits(draws, [](double x) { return dist::LogitNormalCdf(x, 0.5, 1.2); }, 0.59608730551217241,
               0.052725716609687456);
  }
  {
    // Variance s^2 pi^2 / 3.
    SCOPED_TRACE("logistic(-1, 0.7)");
    const auto draws = Sample(104, [](RandomEngine& rng) { return dist::LogisticDraw(rng, -1.0, 0.7); });
    ExpectFits(draws, [](double x) { return dist::LogisticCdf(x, -1.0, 0.7); }, -1.0,
               0.49 * std::numbers::pi * std::numbers::pi / 3.0);
  }
  {
    // Mean m + gamma s (Euler's gamma), variance pi^2 s^2 / 6; the mean also tells maxima from minima.
    SCOPED_TRACE("extreme value(2, 1.5)");
    const auto draws = Sample(105, [](RandomEngine& rng) { return dist::ExtremeValueDraw(rng, 2.0, 1.5); });
    ExpectFits(draws, [](double x) { return dist::ExtremeValueCdf(x, 2.0, 1.5); },
               2.0 + 1.5 * std::numbers::egamma, std::numbers::pi * std::numbers::pi * 2.25 / 6.0);
  }
}

// Chi-squared from below 1 to large dof: mean dof and variance 2 dof (a gamma rate of 2 instead
// of 1/2 would divide the mean by 4); Student t with the variance dof / (dof - 2) where it has a
// fourth moment, and by the distribution function alone for heavier tails.
TEST(ContinuousDraws, ChiSquaredAndStudentT) {
  for (const double dof : {0.4, 3.0, 7.5, 60.0}) {
    SCOPED_TRACE(testing::Message() << "chi-squared dof " << dof);
    const auto draws = Sample(200 + static_cast<std::uint64_t>(10 * dof),
                              [dof](RandomEngine& rng) { return dist::ChiSquaredDraw(rng, dof); });
    ExpectFits(draws, [dof](double x) { return dist::ChiSquaredCdf(x, dof); }, dof, 2.0 * dof);
  }
  for (const double dof : {0.7, 3.5, 10.0}) {
    SCOPED_TRACE(testing::Message() << "t dof " << dof);
    const auto draws = Sample(300 + static_cast<std::uint64_t>(10 * dof),
                              [dof](RandomEngine& rng) { return dist::StudentTDraw(rng, dof); });
    const std::function<double(double)> cdf = [dof](double x) { return dist::StudentTCdf(x, dof); };
    if (dof > 2.0) {
      ExpectFits(draws, cdf, 0.0, dof / (dof - 2.0), dof > 4.0);
    } else {
      EXPECT_LT(KolmogorovSmirnov(draws, cdf), KolmogorovSmirnovCritical999(kDraws));
    }
  }
}

// Every sampling regime of the truncated normal: normal and half-normal rejection, uniform
// proposals on short intervals, and exponential proposals in one- and two-sided tails, up to
// 40 sd from the mean. Draws must stay inside the bounds. Moments from mpmath at 60 digits with
// a = (lower - m) / s, b = (upper - m) / s, Z = Phi(b) - Phi(a), r = (phi(a) - phi(b)) / Z:
// mean m + s r, variance s^2 (1 + (a phi(a) - b phi(b)) / Z - r^2).
TEST(ContinuousDraws, TruncatedNormalInEveryRegime) {
  struct Case {
    double mean, sd, lower, upper, exactMean, exactVariance;
  };
  const std::vector<Case> cases = {
      {1, 2, 0, 3, 1.413262436123066, 0.69109303634597301},                 // short, across the mean
      {0, 1, -1, 4, 0.28745172460702697, 0.62912441622910603},              // wide, across the mean
      {2, 1, 2.3, kInf, 2.9981659688584832, 0.30311448927035032},           // just above the mean
      {2, 1, 2.1, 3, 2.5140070703796971, 0.064937274389913191},             // short, just above
      {1, 2, 17, kInf, 17.242736224472225, 0.057299533773363641},           // 8 sd out
      {0, 1, 3, 3.5, 3.1855943984006725, 0.018228721911119799},             // two-sided tail
      {0, 1, -kInf, -1.5, -1.9386771666225432, 0.1495465935502027},         // lower tail
      {5, 3, -kInf, 7, 3.7179472250055105, 4.79223513213995},               // upper bound only
      {0, 1, -0.02, 0.01, -0.0049996250112500202, 7.499774993973974e-05},   // narrow, across
      {0, 1, 10, 10.01, 10.004916639184202, 8.3291364170787726e-06},        // narrow, 10 sd out
      {0, 1, 40, kInf, 40.024968847207264, 0.00062266837859138877},         // 40 sd out
  };
  std::uint64_t seed = 400;
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "mean " << c.mean << ", sd " << c.sd << " on [" << c.lower << ", "
                                    << c.upper << "]");
    const auto draws = Sample(++seed, [&c](RandomEngine& rng) {
      return dist::TruncatedNormalDraw(rng, c.mean, c.sd, c.lower, c.upper);
    });
    long outside = 0;
    for (const double x : draws) {
      outside += (x < c.lower || x > c.upper || std::isnan(x)) ? 1 : 0;
    }
    EXPECT_EQ(outside, 0);
    ExpectFits(draws, [&c](double x) { return dist::TruncatedNormalCdf(x, c.mean, c.sd, c.lower, c.upper); },
               c.exactMean, c.exactVariance);
  }
  // Bounds 1e200 sd out, whose square overflows, still give a draw in range.
  RandomEngine rng;
  for (const double upper : {kInf, 3e200}) {
    const double x = dist::TruncatedNormalDraw(rng, 0.0, 1e-100, 1e100, upper);
    EXPECT_TRUE(x >= 1e100 && x <= upper) << x;
  }
}

// The one-sided standard tail of data augmentation, on both sides of zero and far out: mean
// lambda = phi(a) / (1 - Phi(a)) and variance 1 + a lambda - lambda^2.
TEST(ContinuousDraws, StandardNormalTail) {
  std::uint64_t seed = 700;
  for (const double a : {-3.0, -0.3, 0.0, 0.4, 0.79, 0.81, 2.5, 12.0}) {
    SCOPED_TRACE(testing::Message() << "above " << a);
    const auto draws = Sample(++seed, [a](RandomEngine& rng) { return dist::StandardNormalTailDraw(rng, a); });
    EXPECT_GT(*std::min_element(draws.begin(), draws.end()), a);
    const double lambda = std::exp(-0.5 * a * a) / std::sqrt(2.0 * std::numbers::pi) / (0.5 * std::erfc(a / std::sqrt(2.0)));
    ExpectFits(draws, [a](double x) { return dist::TruncatedNormalCdf(x, 0.0, 1.0, a, kInf); }, lambda,
               1.0 + a * lambda - lambda * lambda);
  }
}

// Bad parameters give NaN draws instead of a number, a hang or an exception.
TEST(ContinuousDraws, BadParametersGiveNaN) {
  RandomEngine rng;
  EXPECT_TRUE(std::isnan(dist::NormalDraw(rng, 0.0, 0.0)));
  EXPECT_TRUE(std::isnan(dist::LogNormalDraw(rng, kInf, 1.0)));
  EXPECT_TRUE(std::isnan(dist::LogitNormalDraw(rng, 0.0, -1.0)));
  EXPECT_TRUE(std::isnan(dist::LogisticDraw(rng, 0.0, 0.0)));
  EXPECT_TRUE(std::isnan(dist::ExtremeValueDraw(rng, std::nan(""), 1.0)));
  EXPECT_TRUE(std::isnan(dist::ChiSquaredDraw(rng, 0.0)));
  EXPECT_TRUE(std::isnan(dist::StudentTDraw(rng, -1.0)));
  EXPECT_TRUE(std::isnan(dist::TruncatedNormalDraw(rng, 0.0, 1.0, 2.0, 1.0)));
  EXPECT_TRUE(std::isnan(dist::TruncatedNormalDraw(rng, 0.0, 1.0, 1.0, 1.0)));
  EXPECT_TRUE(std::isnan(dist::TruncatedNormalDraw(rng, 0.0, -1.0, 0.0, 1.0)));
  EXPECT_TRUE(std::isnan(dist::TruncatedNormalDraw(rng, 0.0, 1.0, -kInf, -kInf)));
}
