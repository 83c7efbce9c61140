// Bandwidth, kernel density, autocorrelations and histogram bins against values worked by hand or
// summed directly from their definitions.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "DensityEstimates.h"
#include "RandomEngine.h"

using Eigen::VectorXd;

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

VectorXd Values(std::initializer_list<double> values) {
  VectorXd v(static_cast<Eigen::Index>(values.size()));
  Eigen::Index i = 0;
  for (double value : values) v[i++] = value;
  return v;
}

VectorXd NormalDraws(Eigen::Index n, std::uint64_t seed) {
  RandomEngine engine;
  engine.Seed(seed);
  VectorXd x(n);
  for (Eigen::Index i = 0; i < n; ++i) x[i] = engine.Normal();
  return x;
}

// The Gaussian kernel density at g straight from its definition.
double DirectDensity(const VectorXd& x, double h, double g) {
  double sum = 0.0;
  for (double v : x) sum += std::exp(-0.5 * (g - v) * (g - v) / (h * h));
  return sum / (static_cast<double>(x.size()) * h * std::sqrt(2.0 * std::numbers::pi));
}

}  // namespace

TEST(DensityEstimates, SilvermanBandwidthTakesTheSmallerScale) {
  // 1..5 (in any order): sd sqrt(2.5), quartiles 2 and 4, so IQR / 1.34 is the smaller scale.
  EXPECT_NEAR(numerics::SilvermanBandwidth(Values({4, 1, 5, 3, 2})), 0.9 * (2.0 / 1.34) * std::pow(5.0, -0.2),
              1e-12);
  // 0, 0, 1, 1: quartiles 0 and 1 (IQR / 1.34 = 0.746), sd sqrt(1/3) = 0.577 is smaller.
  EXPECT_NEAR(numerics::SilvermanBandwidth(Values({0, 1, 0, 1})),
              0.9 * std::sqrt(1.0 / 3.0) * std::pow(4.0, -0.2), 1e-12);
}

TEST(DensityEstimates, SilvermanBandwidthOfDegenerateSamples) {
  // Quartiles both 2: the sd (sqrt(1.8)) is the scale.
  EXPECT_NEAR(numerics::SilvermanBandwidth(Values({2, 2, 5, 2, 2})),
              0.9 * std::sqrt(1.8) * std::pow(5.0, -0.2), 1e-12);
  EXPECT_NEAR(numerics::SilvermanBandwidth(Values({-3, -3, -3})), 0.9 * 0.3 * std::pow(3.0, -0.2), 1e-12);
  EXPECT_DOUBLE_EQ(numerics::SilvermanBandwidth(Values({0})), 0.9);
  EXPECT_TRUE(std::isnan(numerics::SilvermanBandwidth(VectorXd())));
  EXPECT_TRUE(std::isnan(numerics::SilvermanBandwidth(Values({kNaN, kInf}))));
  EXPECT_DOUBLE_EQ(numerics::SilvermanBandwidth(Values({1, kNaN, 2, 3, 4, 5})),
                   numerics::SilvermanBandwidth(Values({1, 2, 3, 4, 5})));
}

TEST(DensityEstimates, KernelDensityOfASmallSampleIsTheDirectSum) {
  const VectorXd x = Values({0, 1, kNaN, kInf});  // the non-finite values are left out
  VectorXd grid, density;
  numerics::KernelDensity(x, 0.5, 5, grid, density);
  ASSERT_EQ(grid.size(), 5);
  ASSERT_EQ(density.size(), 5);
  const VectorXd finite = Values({0, 1});
  for (int j = 0; j < 5; ++j) {
    EXPECT_NEAR(grid[j], -1.5 + j, 1e-12);
    EXPECT_NEAR(density[j], DirectDensity(finite, 0.5, grid[j]), 1e-12);
  }
  // By hand at the midpoint 0.5: two kernels one bandwidth away, phi(1) / 0.5 on average.
  EXPECT_NEAR(density[2], 2.0 * std::exp(-0.5) / std::sqrt(2.0 * std::numbers::pi), 1e-12);
}

TEST(DensityEstimates, BinnedKernelDensityOfManyDrawsStaysNearTheDirectSum) {
  const VectorXd x = NormalDraws(100000, 7);
  const double h = numerics::SilvermanBandwidth(x);
  VectorXd grid, density;
  numerics::KernelDensity(x, h, 512, grid, density);
  ASSERT_EQ(density.size(), 512);
  EXPECT_NEAR(grid[0], x.minCoeff() - 3.0 * h, 1e-12);
  EXPECT_NEAR(grid[511], x.maxCoeff() + 3.0 * h, 1e-9);
  const double peak = 1.0 / (std::sqrt(2.0 * std::numbers::pi) * h);
  double worst = 0.0;
  for (int j = 0; j < 512; j += 17)
    worst = std::max(worst, std::abs(density[j] - DirectDensity(x, h, grid[j])));
  EXPECT_LT(worst, 1.3e-4 * peak);
  // The estimate integrates to 1 (trapezoid rule) and is near the standard normal at 0.
  const double step = grid[1] - grid[0];
  const double integral = step * (density.sum() - 0.5 * (density[0] + density[511]));
  EXPECT_NEAR(integral, 1.0, 1e-3);
  Eigen::Index centre = 0;
  (grid.array().abs()).minCoeff(&centre);
  EXPECT_NEAR(density[centre], 1.0 / std::sqrt(2.0 * std::numbers::pi), 0.01);
}

TEST(DensityEstimates, KernelDensityRefusesWhatItCannotEstimate) {
  VectorXd grid = Values({1}), density = Values({1});
  numerics::KernelDensity(Values({1, 2}), 0.0, 10, grid, density);
  EXPECT_EQ(grid.size(), 0);
  EXPECT_EQ(density.size(), 0);
  numerics::KernelDensity(Values({1, 2}), kNaN, 10, grid, density);
  EXPECT_EQ(density.size(), 0);
  numerics::KernelDensity(Values({1, 2}), 1.0, 1, grid, density);
  EXPECT_EQ(density.size(), 0);
  numerics::KernelDensity(Values({kNaN, -kInf}), 1.0, 10, grid, density);
  EXPECT_EQ(density.size(), 0);
}

TEST(DensityEstimates, AutocorrelationsWorkedByHand) {
  // 1, 2, 3, 4: deviations -1.5, -0.5, 0.5, 1.5 with squares summing to 5.
  const VectorXd r = numerics::Autocorrelations(Values({1, 2, 3, 4}), 5);
  ASSERT_EQ(r.size(), 6);
  EXPECT_DOUBLE_EQ(r[0], 1.0);
  EXPECT_NEAR(r[1], 1.25 / 5.0, 1e-15);
  EXPECT_NEAR(r[2], -1.5 / 5.0, 1e-15);
  EXPECT_NEAR(r[3], -2.25 / 5.0, 1e-15);
  EXPECT_EQ(r[4], 0.0);  // lags from n on have no pairs
  EXPECT_EQ(r[5], 0.0);
}

TEST(DensityEstimates, AutocorrelationsOfAnAr1ChainDecayGeometrically) {
  RandomEngine engine;
  VectorXd x(50000);
  double value = 0.0;
  for (Eigen::Index t = 0; t < x.size(); ++t) x[t] = value = 0.6 * value + engine.Normal();
  const VectorXd r = numerics::Autocorrelations(x, 3);
  for (int k = 1; k <= 3; ++k) EXPECT_NEAR(r[k], std::pow(0.6, k), 0.02) << "lag " << k;
}

TEST(DensityEstimates, AutocorrelationsOfDegenerateSamples) {
  EXPECT_TRUE(numerics::Autocorrelations(Values({2, 2, 2}), 2).array().isNaN().all());
  EXPECT_TRUE(numerics::Autocorrelations(Values({1, kNaN, 2}), 1).array().isNaN().all());
  EXPECT_EQ(numerics::Autocorrelations(VectorXd(), 2).size(), 3);
  EXPECT_TRUE(numerics::Autocorrelations(VectorXd(), 2).array().isNaN().all());
  EXPECT_EQ(numerics::Autocorrelations(Values({1, 2}), -1).size(), 0);
}

TEST(DensityEstimates, HistogramBinsByFreedmanDiaconisAndSturges) {
  // 0..99: IQR 74.25 - 24.75 = 49.5, width 99 / 100^(1/3) = 21.3, range 99: 5 bins.
  VectorXd x = VectorXd::LinSpaced(100, 0, 99);
  EXPECT_EQ(numerics::HistogramBins(x), 5);
  // Twenty zeros, then 1 and 2: the IQR is 0, so Sturges: ceil(log2 22) + 1 = 6.
  VectorXd tied = VectorXd::Zero(22);
  tied[20] = 1;
  tied[21] = 2;
  EXPECT_EQ(numerics::HistogramBins(tied), 6);
  // A far outlier asks for millions of bins; the count is capped.
  VectorXd outlier(101);
  outlier << x, 1e9;
  EXPECT_EQ(numerics::HistogramBins(outlier), 1000);
  EXPECT_EQ(numerics::HistogramBins(Values({3, 3, 3})), 1);
  EXPECT_EQ(numerics::HistogramBins(Values({kNaN, 1})), 1);
  EXPECT_EQ(numerics::HistogramBins(VectorXd()), 1);
}

TEST(DensityEstimates, HistogramCountsCloseTheLastBin) {
  VectorXd edges, counts;
  numerics::HistogramCounts(Values({0, 0.5, 1, kNaN, 1.5, 2}), 4, edges, counts);
  ASSERT_EQ(edges.size(), 5);
  for (int i = 0; i <= 4; ++i) EXPECT_DOUBLE_EQ(edges[i], 0.5 * i);
  ASSERT_EQ(counts.size(), 4);
  EXPECT_EQ(counts[0], 1);
  EXPECT_EQ(counts[1], 1);
  EXPECT_EQ(counts[2], 1);
  EXPECT_EQ(counts[3], 2);  // 1.5 and the maximum 2
}

TEST(DensityEstimates, HistogramCountsAgreeWithTheirEdges) {
  // Values that fall exactly on edges computed in floating point (tenths).
  VectorXd x(1011);
  x.head(11) = VectorXd::LinSpaced(11, 0.0, 1.0);
  x.tail(1000) = NormalDraws(1000, 3).array() * 0.2 + 0.5;
  x.tail(1000) = x.tail(1000).cwiseMax(0.0).cwiseMin(1.0);
  VectorXd edges, counts;
  numerics::HistogramCounts(x, 10, edges, counts);
  VectorXd expected = VectorXd::Zero(10);
  for (double v : x) {
    for (int i = 0; i < 10; ++i) {
      if (v >= edges[i] && (v < edges[i + 1] || i == 9)) {
        expected[i] += 1;
        break;
      }
    }
  }
  EXPECT_EQ(counts, expected);
  EXPECT_EQ(counts.sum(), 1011);
}

TEST(DensityEstimates, HistogramCountsOfDegenerateSamples) {
  VectorXd edges, counts;
  numerics::HistogramCounts(Values({4, 4}), 2, edges, counts);
  EXPECT_EQ(edges, Values({3.5, 4, 4.5}));
  EXPECT_EQ(counts, Values({0, 2}));
  numerics::HistogramCounts(Values({kNaN}), 0, edges, counts);
  EXPECT_EQ(edges, Values({0, 1}));
  EXPECT_EQ(counts, Values({0}));
}
