// The linear family when the level of y dwarfs its noise: sums of squares must not cancel.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "EventDispatcher.h"
#include "LM.h"
#include "LM_HET.h"
#include "LM_RE.h"
#include "PooledDraws.h"
#include "RandomEngine.h"
#include "RegressionStatistics.h"

namespace {

Eigen::VectorXd Gibbs(long draws, long burnin, long chains) {
  Eigen::VectorXd g(5);
  g << static_cast<double>(draws), static_cast<double>(burnin), static_cast<double>(chains), 1, 42;
  return g;
}

LinearPrior Flat(Eigen::Index k) {
  // Precision 1e-12 moves an intercept of 1e8 by about 1e-9: flat for every purpose here.
  return LinearPrior::Combine(Eigen::VectorXd::Zero(k), Eigen::MatrixXd::Identity(k, k) * 1e-12,
                              Eigen::MatrixXd(0, k), Eigen::VectorXd(0), Eigen::MatrixXd(0, 0));
}

struct Sample {
  Eigen::VectorXd y;
  Eigen::MatrixXd X;
};

// y = level + 2 x + e, sd(e) = 0.1, x standard normal.
Sample Simulate(int n, double level, std::uint64_t seed) {
  RandomEngine rng;
  rng.Seed(seed);
  Sample s;
  s.X.resize(n, 2);
  s.y.resize(n);
  for (int i = 0; i < n; ++i) {
    s.X(i, 0) = 1.0;
    s.X(i, 1) = rng.Normal();
    s.y(i) = level + 2.0 * s.X(i, 1) + 0.1 * rng.Normal();
  }
  return s;
}

// The least-squares sum of squares of y on [1 x], computed on centred data in long double: the
// reference the samplers are checked against.
long double ReferenceSumOfSquares(const Sample& s) {
  const Eigen::Index n = s.y.size();
  long double my = 0, mx = 0;
  for (Eigen::Index i = 0; i < n; ++i) {
    my += s.y(i);
    mx += s.X(i, 1);
  }
  my /= n;
  mx /= n;
  long double sxx = 0, sxy = 0, syy = 0;
  for (Eigen::Index i = 0; i < n; ++i) {
    const long double dx = s.X(i, 1) - mx, dy = s.y(i) - my;
    sxx += dx * dx;
    sxy += dx * dy;
    syy += dy * dy;
  }
  return syy - sxy * sxy / sxx;
}

}  // namespace

// The stable sum of squares equals the reference to six digits up to a level of 1e8 and to three
// at 1e12 (where the stored data themselves keep only four digits of the noise), while the
// textbook y'y - 2b'X'y + b'X'Xb loses every digit from about 1e7 on.
TEST(LinearFamilyLevel, SumOfSquaresKeepsItsDigits) {
  for (double level : {0.0, 1e4, 1e8, 1e12}) {
    const double tolerance = level > 1e8 ? 1e-3 : 1e-6;
    const Sample s = Simulate(1000, level, 5);
    const RegressionStatistics stats(s.X, s.y);
    const Eigen::VectorXd ols = stats.XtX().ldlt().solve(stats.Xty());
    const double reference = static_cast<double>(ReferenceSumOfSquares(s));
    EXPECT_NEAR(stats.SumOfSquares(ols), reference, tolerance * reference) << "level " << level;
    // Away from the least-squares point the sum grows by the quadratic form exactly.
    Eigen::VectorXd shifted = ols;
    shifted(1) += 0.01;
    EXPECT_NEAR(stats.SumOfSquares(shifted), reference + 1e-4 * stats.XtX()(1, 1), tolerance * reference)
        << "level " << level;
  }
}

// With a flat prior on b the posterior of tau is Gamma(a + (n - k)/2, b + SSE/2): the draws must
// match its mean at a level of 1e8 as they do at 0.
TEST(LinearFamilyLevel, LinearModelPrecisionAtLargeLevel) {
  for (double level : {0.0, 1e8}) {
    const Sample s = Simulate(1000, level, 7);
    LM model(Gibbs(4000, 500, 1));
    ASSERT_TRUE(model.Sample(s.y, s.X, Flat(2), 0.001, 0.001, EventDispatcher(), nullptr));
    const Eigen::MatrixXd draws = Pooled(model);
    const double shape = 0.001 + 0.5 * (1000 - 2);
    const double rate = 0.001 + 0.5 * static_cast<double>(ReferenceSumOfSquares(s));
    const double sd = std::sqrt(shape) / rate;
    // Draws of tau given b are nearly independent here: 4 Monte Carlo standard errors.
    EXPECT_NEAR(draws.col(2).mean(), shape / rate, 4.0 * sd / std::sqrt(4000.0)) << "level " << level;
    EXPECT_NEAR(draws.col(1).mean(), 2.0, 0.02) << "level " << level;
    EXPECT_TRUE(std::isfinite(model.logML) && std::isfinite(model.logML_CJ));
    EXPECT_NEAR(model.logML, model.logML_CJ, 0.1) << "level " << level;
  }
}

// The heteroskedastic model with a constant log-precision: its one coefficient is log tau, whose
// posterior is close to N(log(n / SSE), 2 / n). At a level of 1e6 the chain used to stick.
TEST(LinearFamilyLevel, HeteroskedasticModelAtLargeLevel) {
  const Sample s = Simulate(1000, 1e6, 9);
  const Eigen::MatrixXd Z = Eigen::MatrixXd::Ones(1000, 1);
  LM_HET model(Gibbs(3000, 1000, 1));
  ASSERT_TRUE(model.Sample(s.y, s.X, Z, Flat(3), EventDispatcher(), nullptr));
  const Eigen::MatrixXd draws = Pooled(model);
  const double expected = std::log(998.0 / static_cast<double>(ReferenceSumOfSquares(s)));
  const double sd = std::sqrt(2.0 / 1000.0);
  EXPECT_NEAR(draws.col(2).mean(), expected, 0.5 * sd);
  const Eigen::ArrayXd d = draws.col(2).array();
  EXPECT_NEAR(std::sqrt((d - d.mean()).square().mean()), sd, 0.25 * sd);
  EXPECT_NEAR(model.logML, model.logML_CJ, 0.2);
}

// Individual effects on top of a level of 1e8: tau is still found.
TEST(LinearFamilyLevel, RandomEffectsModelAtLargeLevel) {
  RandomEngine rng;
  rng.Seed(11);
  const int groups = 100, size = 5;
  Sample s;
  s.X.resize(groups * size, 2);
  s.y.resize(groups * size);
  std::vector<int> group;
  for (int g = 0; g < groups; ++g) {
    const double effect = 0.5 * rng.Normal();
    for (int t = 0; t < size; ++t) {
      const int i = g * size + t;
      s.X(i, 0) = 1.0;
      s.X(i, 1) = rng.Normal();
      s.y(i) = 1e8 + 2.0 * s.X(i, 1) + effect + 0.1 * rng.Normal();
      group.push_back(g);
    }
  }
  LM_RE model(Gibbs(3000, 500, 1));
  ASSERT_TRUE(model.Sample(s.y, s.X, group, Flat(2), 0.001, 0.001, 0.001, 0.001, false,
                           EventDispatcher(), nullptr));
  const Eigen::MatrixXd draws = Pooled(model);
  // tau = 100 with 400 within-group degrees of freedom: posterior sd about 7.
  EXPECT_NEAR(draws.col(2).mean(), 100.0, 25.0);
  EXPECT_NEAR(draws.col(1).mean(), 2.0, 0.03);
}
