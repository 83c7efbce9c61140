// MCMC diagnostics on simulated chains with known mixing, on small chains worked by hand, and on
// degenerate input.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "McmcDiagnostics.h"
#include "RandomEngine.h"

using Eigen::MatrixXd;
using Eigen::VectorXd;

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

// Independent standard normal draws plus `shift`.
MatrixXd IidChain(RandomEngine& engine, Eigen::Index draws, Eigen::Index cols, double shift = 0.0) {
  MatrixXd chain(draws, cols);
  for (Eigen::Index j = 0; j < cols; ++j) {
    for (Eigen::Index i = 0; i < draws; ++i) chain(i, j) = shift + engine.Normal();
  }
  return chain;
}

// A stationary AR(1) column x_t = rho x_(t-1) + e_t, started from its stationary distribution.
MatrixXd Ar1Chain(RandomEngine& engine, Eigen::Index draws, double rho) {
  MatrixXd chain(draws, 1);
  double x = engine.Normal() / std::sqrt(1.0 - rho * rho);
  for (Eigen::Index i = 0; i < draws; ++i) {
    x = rho * x + engine.Normal();
    chain(i, 0) = x;
  }
  return chain;
}

MatrixXd Column(std::initializer_list<double> values) {
  MatrixXd m(static_cast<Eigen::Index>(values.size()), 1);
  Eigen::Index i = 0;
  for (double v : values) m(i++, 0) = v;
  return m;
}

}  // namespace

TEST(McmcDiagnostics, EssOfIndependentDrawsIsNearTheirNumber) {
  RandomEngine engine;
  engine.Seed(11);
  const VectorXd single = numerics::EffectiveSampleSize({IidChain(engine, 20000, 3)});
  ASSERT_EQ(single.size(), 3);
  for (Eigen::Index j = 0; j < 3; ++j) EXPECT_NEAR(single(j), 20000.0, 2000.0) << j;

  std::vector<MatrixXd> four;
  for (int c = 0; c < 4; ++c) four.push_back(IidChain(engine, 5000, 2));
  const VectorXd pooled = numerics::EffectiveSampleSize(four);
  for (Eigen::Index j = 0; j < 2; ++j) EXPECT_NEAR(pooled(j), 20000.0, 2000.0) << j;

  // Far from zero a one-pass variance or an uncentred transform would lose every digit.
  const MatrixXd offset = IidChain(engine, 20000, 1, 1e9);
  EXPECT_NEAR(numerics::EffectiveSampleSize({offset})(0), 20000.0, 2000.0);
  EXPECT_NEAR(numerics::SummarizeDraws({offset}).sd(0), 1.0, 0.03);
}

TEST(McmcDiagnostics, EssOfAutocorrelatedChainsMatchesTheAr1Value) {
  RandomEngine engine;
  engine.Seed(12);
  // For AR(1) the integrated autocorrelation time is (1 + rho) / (1 - rho).
  const double rho = 0.9;
  const std::vector<MatrixXd> positive{Ar1Chain(engine, 50000, rho), Ar1Chain(engine, 50000, rho)};
  const double expected = 100000.0 * (1.0 - rho) / (1.0 + rho);
  EXPECT_NEAR(numerics::EffectiveSampleSize(positive)(0), expected, 0.2 * expected);

  // Antithetic chains are more efficient than independent draws.
  const MatrixXd negative = Ar1Chain(engine, 20000, -0.5);
  const double antithetic = 20000.0 * 1.5 / 0.5;
  EXPECT_NEAR(numerics::EffectiveSampleSize({negative})(0), antithetic, 0.2 * antithetic);

  // A linear ramp has autocorrelation 1 - 3s + 2s^3 at lag s n, positive up to s0 = (sqrt(3) - 1)
  // / 2, far beyond the first lags: tau is about 2n (s0 - 3/2 s0^2 + 1/2 s0^4) and the ESS about
  // 2.87 whatever n.
  MatrixXd ramp(2000, 1);
  for (Eigen::Index i = 0; i < 2000; ++i) ramp(i, 0) = static_cast<double>(i);
  const double s0 = (std::sqrt(3.0) - 1.0) / 2.0;
  const double rampEss = 1.0 / (2.0 * (s0 - 1.5 * s0 * s0 + 0.5 * std::pow(s0, 4)));
  EXPECT_NEAR(numerics::EffectiveSampleSize({ramp})(0), rampEss, 0.01 * rampEss);

  // A chain that alternates perfectly has tau = 0: the estimate stops at the cap n log10(n).
  MatrixXd alternating(1000, 1);
  for (Eigen::Index i = 0; i < 1000; ++i) alternating(i, 0) = i % 2 == 0 ? 1.0 : -1.0;
  EXPECT_NEAR(numerics::EffectiveSampleSize({alternating})(0), 3000.0, 1e-6);
}

TEST(McmcDiagnostics, EssAndRHatOfShortChainsByHand) {
  // Chain 1, 2, 3, 4: centred -1.5, -0.5, 0.5, 1.5, autocovariances (divisor 4) 5/4, 5/16, -3/8,
  // -9/16, so rho = 1, 1/4, -3/10, -9/20. P_0 = 5/4, P_1 < 0: tau = -1 + 5/2 = 3/2, ESS = 8/3.
  EXPECT_NEAR(numerics::EffectiveSampleSize({Column({1, 2, 3, 4})})(0), 8.0 / 3.0, 1e-12);

  // With a second chain 2, 3, 4, 5 of the same autocovariances: W = 5/4, the chain means 2.5 and
  // 3.5 have variance 1/2, so var+ = 7/4 and rho_t = 1 - (5/4 - acov_t) / (7/4). Both pair sums
  // are positive and decreasing.
  auto rho = [](double acov) { return 1.0 - (1.25 - acov) / 1.75; };
  const double pair0 = 1.0 + rho(5.0 / 16.0);
  const double pair1 = rho(-3.0 / 8.0) + rho(-9.0 / 16.0);
  ASSERT_GT(pair1, 0.0);
  ASSERT_LT(pair1, pair0);
  const double ess2 = 8.0 / (-1.0 + 2.0 * (pair0 + pair1));
  EXPECT_NEAR(numerics::EffectiveSampleSize({Column({1, 2, 3, 4}), Column({2, 3, 4, 5})})(0), ess2,
              1e-12);

  // Chain 0, 0, 2, 1, 3, 0, 3, 4 has autocorrelations 1, -17/1144, -1/572, 37/1144, -9/286,
  // 83/1144, -15/44, -19/88: pair sums 1127/1144, 35/1144, 47/1144 (cut to 35/1144 to keep the
  // sequence monotone), then negative. tau = -1 + 2 (1127 + 35 + 35) / 1144 = 625/572.
  EXPECT_NEAR(numerics::EffectiveSampleSize({Column({0, 0, 2, 1, 3, 0, 3, 4})})(0),
              8.0 * 572.0 / 625.0, 1e-12);

  // Halves 1 2 | 3 4 | 5 6 | 7 8: W = 1/2, the half means 1.5, 3.5, 5.5, 7.5 have variance 20/3,
  // so R-hat = sqrt((1/2 W + 20/3) / W). A middle draw of an odd-length chain is dropped.
  const double rhat = std::sqrt((0.25 + 20.0 / 3.0) / 0.5);
  EXPECT_NEAR(numerics::SplitRHat({Column({1, 2, 3, 4}), Column({5, 6, 7, 8})})(0), rhat, 1e-12);
  EXPECT_NEAR(numerics::SplitRHat({Column({1, 2, 99, 3, 4}), Column({5, 6, -9, 7, 8})})(0), rhat,
              1e-12);
}

TEST(McmcDiagnostics, RHatSeparatesAgreeingFromDisagreeingChains) {
  RandomEngine engine;
  engine.Seed(13);
  std::vector<MatrixXd> chains;
  for (int c = 0; c < 4; ++c) chains.push_back(IidChain(engine, 2000, 2));
  const VectorXd agreeing = numerics::SplitRHat(chains);
  for (Eigen::Index j = 0; j < 2; ++j) EXPECT_LT(agreeing(j), 1.02) << j;

  chains[2] = IidChain(engine, 2000, 2, 2.0);
  const VectorXd shifted = numerics::SplitRHat(chains);
  for (Eigen::Index j = 0; j < 2; ++j) EXPECT_GT(shifted(j), 1.1) << j;

  // Two chains that drift alike agree with each other as wholes; only the split exposes the drift.
  std::vector<MatrixXd> drifting;
  for (int c = 0; c < 2; ++c) {
    MatrixXd chain(2000, 1);
    chain.topRows(1000) = IidChain(engine, 1000, 1);
    chain.bottomRows(1000) = IidChain(engine, 1000, 1, 3.0);
    drifting.push_back(chain);
  }
  EXPECT_GT(numerics::SplitRHat(drifting)(0), 1.1);

  EXPECT_TRUE(std::isnan(numerics::SplitRHat({chains[0]})(0)));
}

TEST(McmcDiagnostics, GewekeIsSmallForStationaryAndLargeForTrendingChains) {
  RandomEngine engine;
  engine.Seed(14);
  const VectorXd iid = numerics::GewekeZ(IidChain(engine, 10000, 4));
  ASSERT_EQ(iid.size(), 4);
  for (Eigen::Index j = 0; j < 4; ++j) EXPECT_LT(std::abs(iid(j)), 3.0) << j;

  // Over replications of a strongly autocorrelated chain the z-scores stay near unit spread; with
  // the plain variance of the segments instead of their long-run variance it would be about
  // sqrt(19) times larger.
  double sumSquares = 0.0;
  const int replications = 40;
  for (int r = 0; r < replications; ++r) {
    const double z = numerics::GewekeZ(Ar1Chain(engine, 4000, 0.9))(0);
    ASSERT_TRUE(std::isfinite(z));
    sumSquares += z * z;
  }
  const double spread = std::sqrt(sumSquares / replications);
  EXPECT_GT(spread, 0.6);
  EXPECT_LT(spread, 2.0);

  // A linear trend: the early mean is far below the late one. (The trend also lengthens the
  // segments' autocorrelations, which bounds z however steep the trend.)
  MatrixXd trend = IidChain(engine, 5000, 1);
  for (Eigen::Index i = 0; i < 5000; ++i) trend(i, 0) += 4.0 * static_cast<double>(i) / 5000.0;
  EXPECT_LT(numerics::GewekeZ(trend)(0), -5.0);
  EXPECT_LT(numerics::GewekeZ(trend, 0.2, 0.3)(0), -5.0);
}

TEST(McmcDiagnostics, QuantilesInterpolateBetweenOrderStatistics) {
  // Sorted: 1, 1, 3, 4, 5, so h = 4 p.
  const std::vector<double> v{3, 1, 4, 1, 5};
  EXPECT_EQ(numerics::Quantile(v, 0.0), 1.0);
  EXPECT_NEAR(numerics::Quantile(v, 0.3), 1.4, 1e-12);  // h = 1.2: 1 + 0.2 (3 - 1)
  EXPECT_EQ(numerics::Quantile(v, 0.5), 3.0);
  EXPECT_NEAR(numerics::Quantile(v, 0.975), 4.9, 1e-12);  // h = 3.9: 4 + 0.9 (5 - 4)
  EXPECT_EQ(numerics::Quantile(v, 1.0), 5.0);
  EXPECT_NEAR(numerics::Quantile({20, 10}, 0.025), 10.25, 1e-12);
  // 100 x 0.29 rounds to just below 29; the result is still exactly the order statistic.
  std::vector<double> hundred(101);
  for (std::size_t i = 0; i < hundred.size(); ++i) hundred[i] = static_cast<double>(100 - i);
  EXPECT_EQ(numerics::Quantile(hundred, 0.29), 29.0);
  EXPECT_EQ(numerics::Quantile({7}, 0.3), 7.0);
  EXPECT_EQ(numerics::Quantile({-kInf, 2, 3}, 0.75), 2.5);
  EXPECT_TRUE(std::isnan(numerics::Quantile({}, 0.5)));
  EXPECT_TRUE(std::isnan(numerics::Quantile({1, kNaN, 3}, 0.5)));
  EXPECT_TRUE(std::isnan(numerics::Quantile(v, -0.1)));
  EXPECT_TRUE(std::isnan(numerics::Quantile(v, 1.5)));
}

TEST(McmcDiagnostics, SummaryPoolsChainsAndCombinesDiagnostics) {
  RandomEngine engine;
  engine.Seed(15);
  const std::vector<MatrixXd> chains{IidChain(engine, 3000, 2, 5.0), IidChain(engine, 3000, 2, 5.0),
                                     IidChain(engine, 3000, 2, 5.0)};
  const numerics::DrawSummary s = numerics::SummarizeDraws(chains);
  ASSERT_EQ(s.mean.size(), 2);
  ASSERT_EQ(s.geweke.rows(), 2);
  ASSERT_EQ(s.geweke.cols(), 3);
  for (Eigen::Index j = 0; j < 2; ++j) {
    std::vector<double> pooled;
    for (const MatrixXd& c : chains)
      pooled.insert(pooled.end(), c.col(j).data(), c.col(j).data() + 3000);
    const Eigen::Map<const VectorXd> all(pooled.data(), 9000);
    EXPECT_NEAR(s.mean(j), all.mean(), 1e-12);
    EXPECT_NEAR(s.sd(j), std::sqrt((all.array() - all.mean()).square().sum() / 8999.0), 1e-12);
    EXPECT_EQ(s.median(j), numerics::Quantile(pooled, 0.5));
    EXPECT_EQ(s.lower(j), numerics::Quantile(pooled, 0.025));
    EXPECT_EQ(s.upper(j), numerics::Quantile(pooled, 0.975));
    EXPECT_EQ(s.ess(j), numerics::EffectiveSampleSize(chains)(j));
    EXPECT_NEAR(s.mcse(j), s.sd(j) / std::sqrt(s.ess(j)), 1e-15);
    EXPECT_EQ(s.rhat(j), numerics::SplitRHat(chains)(j));
    for (Eigen::Index c = 0; c < 3; ++c) {
      EXPECT_EQ(s.geweke(j, c), numerics::GewekeZ(chains[static_cast<std::size_t>(c)])(j));
    }
  }
  EXPECT_TRUE(std::isnan(numerics::SummarizeDraws({chains[0]}).rhat(0)));
}

TEST(McmcDiagnostics, DegenerateInputGivesDocumentedValues) {
  // No chains, and chains without draws.
  const numerics::DrawSummary none = numerics::SummarizeDraws({});
  EXPECT_EQ(none.mean.size(), 0);
  EXPECT_EQ(none.geweke.size(), 0);
  const numerics::DrawSummary empty = numerics::SummarizeDraws({MatrixXd(0, 2), MatrixXd(0, 2)});
  ASSERT_EQ(empty.ess.size(), 2);
  EXPECT_EQ(empty.ess(0), 0.0);
  EXPECT_TRUE(std::isnan(empty.mean(0)) && std::isnan(empty.median(0)) &&
              std::isnan(empty.mcse(0)));
  EXPECT_TRUE(std::isnan(empty.geweke(1, 1)) && std::isnan(empty.rhat(1)));

  // One to three draws: moments where they exist, no autocorrelation-based results.
  for (Eigen::Index n = 1; n <= 3; ++n) {
    const MatrixXd chain = VectorXd::LinSpaced(n, 1.0, static_cast<double>(n));
    const MatrixXd shifted = chain.array() + 1.0;
    const numerics::DrawSummary s = numerics::SummarizeDraws({chain, shifted});
    EXPECT_NEAR(s.mean(0), (2.0 + static_cast<double>(n)) / 2.0, 1e-15) << n;
    EXPECT_TRUE(std::isnan(s.ess(0)) && std::isnan(s.mcse(0)) && std::isnan(s.rhat(0))) << n;
    EXPECT_TRUE(std::isnan(s.geweke(0, 0))) << n;
    EXPECT_TRUE(std::isnan(numerics::SummarizeDraws({chain}).ess(0))) << n;
  }
  EXPECT_TRUE(std::isnan(numerics::SummarizeDraws({Column({4})}).sd(0)));

  // A constant column beside an ordinary one, and a column with a missing value.
  RandomEngine engine;
  engine.Seed(16);
  std::vector<MatrixXd> chains;
  for (int c = 0; c < 2; ++c) {
    MatrixXd chain = IidChain(engine, 500, 3);
    chain.col(0).setConstant(0.1);  // 0.1 summed 1000 times is not 100, so the mean needs care
    chains.push_back(chain);
  }
  chains[1](250, 2) = kNaN;
  const numerics::DrawSummary s = numerics::SummarizeDraws(chains);
  EXPECT_EQ(s.mean(0), 0.1);
  EXPECT_EQ(s.sd(0), 0.0);
  EXPECT_EQ(s.ess(0), 1000.0);
  EXPECT_EQ(s.mcse(0), 0.0);
  EXPECT_EQ(s.rhat(0), 1.0);
  EXPECT_TRUE(std::isnan(s.geweke(0, 0)) && std::isnan(s.geweke(0, 1)));
  EXPECT_TRUE(std::isfinite(s.ess(1)) && std::isfinite(s.rhat(1)) && std::isfinite(s.geweke(1, 0)));
  for (double v : {s.mean(2), s.sd(2), s.median(2), s.lower(2), s.upper(2), s.ess(2), s.mcse(2),
                   s.geweke(2, 0), s.geweke(2, 1), s.rhat(2)}) {
    EXPECT_TRUE(std::isnan(v));
  }
  chains[0](3, 1) = kInf;
  EXPECT_TRUE(std::isnan(numerics::EffectiveSampleSize(chains)(1)));

  // Chains constant at different values never mix; a constant segment against another.
  EXPECT_EQ(numerics::SplitRHat({MatrixXd::Constant(8, 1, 1.0), MatrixXd::Constant(8, 1, 2.0)})(0),
            kInf);
  MatrixXd step = MatrixXd::Constant(100, 1, 1.0);
  step.bottomRows(50).setConstant(3.0);
  EXPECT_EQ(numerics::GewekeZ(step)(0), -kInf);
  EXPECT_TRUE(std::isnan(numerics::GewekeZ(step, 0.6, 0.5)(0)));
  EXPECT_TRUE(std::isnan(numerics::GewekeZ(step, 0.0, 0.5)(0)));
  EXPECT_TRUE(std::isnan(numerics::GewekeZ(step.topRows(30))(0)));  // 3 draws in the first 10%

  // Chains of unequal length are cut to their last draws; unequal columns give NaN throughout.
  const numerics::DrawSummary cut =
      numerics::SummarizeDraws({Column({100, 100, 1, 2, 3, 4}), Column({5, 6, 7, 8})});
  EXPECT_EQ(cut.mean(0), 4.5);
  EXPECT_NEAR(cut.rhat(0), numerics::SplitRHat({Column({1, 2, 3, 4}), Column({5, 6, 7, 8})})(0),
              1e-15);
  const numerics::DrawSummary mismatched =
      numerics::SummarizeDraws({MatrixXd::Ones(10, 2), MatrixXd::Ones(10, 3)});
  ASSERT_EQ(mismatched.mean.size(), 2);
  EXPECT_TRUE(std::isnan(mismatched.mean(0)) && std::isnan(mismatched.ess(1)));
  EXPECT_TRUE(
      std::isnan(numerics::EffectiveSampleSize({MatrixXd::Ones(10, 2), MatrixXd::Ones(10, 3)})(0)));
}
