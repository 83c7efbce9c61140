// Summaries of draws and the block reductions of the action layer against plain computations.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "DrawBlocks.h"
#include "McmcDiagnostics.h"
#include "RandomEngine.h"

// The 95% interval of long runs of draws, where the quantiles are found among bounds read off a
// sample, equals the interval by full selection: smooth, heavy-tailed, tied, sorted, constant
// and two-point draws, short and long.
TEST(DrawBlocks, IntervalsMatchFullSelection) {
  RandomEngine rng;
  rng.Seed(5);
  std::vector<std::vector<double>> cases;
  for (int n : {1, 2, 7, 4095, 4096, 20000, 50001}) {
    std::vector<double> normal(static_cast<std::size_t>(n)), cauchy(normal), ties(normal);
    for (int i = 0; i < n; ++i) {
      normal[static_cast<std::size_t>(i)] = rng.Normal();
      cauchy[static_cast<std::size_t>(i)] = rng.Normal() / rng.Normal();
      ties[static_cast<std::size_t>(i)] = std::floor(3.0 * rng.Uniform());
    }
    std::vector<double> sorted = normal;
    std::sort(sorted.begin(), sorted.end());
    std::vector<double> twoPoint(static_cast<std::size_t>(n), 1.0);
    for (int i = 0; i < n / 40; ++i) twoPoint[static_cast<std::size_t>(i)] = -1.0;
    cases.insert(cases.end(), {normal, cauchy, ties, sorted, twoPoint, std::vector<double>(static_cast<std::size_t>(n), 4.0)});
  }
  std::vector<double> scratch;
  for (const auto& values : cases) {
    double mean = 0, sd = 0, lower = 0, upper = 0;
    SummarizeDraws(values.data(), static_cast<Eigen::Index>(values.size()), scratch, mean, sd, lower, upper);
    EXPECT_EQ(lower, numerics::Quantile(values, 0.025)) << values.size();
    EXPECT_EQ(upper, numerics::Quantile(values, 0.975)) << values.size();
  }
}

// Blocks of observations: per-observation summaries and averages over observations agree with
// direct computations, and an interrupt stops the work.
TEST(DrawBlocks, BlocksCoverEveryObservationOnce) {
  const Eigen::Index observations = 333, draws = 50;
  Eigen::MatrixXd values(draws, observations);
  for (Eigen::Index c = 0; c < observations; ++c) {
    for (Eigen::Index d = 0; d < draws; ++d) values(d, c) = std::sin(static_cast<double>(c * draws + d));
  }
  const DrawBlockFunction block = [&](Eigen::Index first, Eigen::Index count, Eigen::MatrixXd& out) {
    out = values.middleCols(first, count);
  };
  RowSummaries summaries;
  ASSERT_TRUE(SummarizeObservations(observations, draws, block, nullptr, summaries));
  for (Eigen::Index c : {0, 63, 64, 332}) EXPECT_DOUBLE_EQ(summaries.mean(c), values.col(c).mean());
  Eigen::MatrixXd averages;
  ASSERT_TRUE(AverageOverObservations(observations, draws, 2,
                                      [&](Eigen::Index first, Eigen::Index count, Eigen::MatrixXd& sums) {
                                        sums.col(0) += values.middleCols(first, count).rowwise().sum();
                                        sums.col(1).array() += static_cast<double>(count);
                                      },
                                      nullptr, averages));
  EXPECT_LT((averages.col(0) - values.rowwise().mean()).cwiseAbs().maxCoeff(), 1e-14);
  EXPECT_TRUE((averages.col(1).array() == 1.0).all());
  const std::atomic<bool> stop{true};
  EXPECT_FALSE(SummarizeObservations(observations, draws, block, &stop, summaries));
}
