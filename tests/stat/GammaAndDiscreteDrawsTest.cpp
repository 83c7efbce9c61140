// Goodness of fit and moments of 10^5 seeded gamma-related and discrete draws per case.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

#include <Eigen/Dense>
#include <gtest/gtest.h>

#include "Beta.h"
#include "Binomial.h"
#include "Categorical.h"
#include "Dirichlet.h"
#include "Exponential.h"
#include "FisherF.h"
#include "Gamma.h"
#include "GoodnessOfFit.h"
#include "NegativeBinomial.h"
#include "Poisson.h"
#include "RandomEngine.h"
#include "Weibull.h"

namespace {

constexpr long kDraws = 100000;
// Mean and variance must lie within this many Monte Carlo standard errors; a rate read as a scale,
// swapped shapes or p read as 1 - p move one of them by many more.
constexpr double kStandardErrors = 5.0;

std::vector<double> Sample(std::uint64_t seed, const std::function<double(RandomEngine&)>& draw) {
  RandomEngine rng;
  rng.Seed(seed);
  std::vector<double> draws(kDraws);
  for (double& x : draws) {
    x = draw(rng);
  }
  return draws;
}

void ExpectMoments(const std::vector<double>& draws, double mean, double variance) {
  const SampleMoments m = Moments(draws);
  EXPECT_NEAR(m.mean, mean, kStandardErrors * std::sqrt(variance / kDraws));
  EXPECT_NEAR(m.variance, variance, kStandardErrors * m.varianceStandardError);
}

// Kolmogorov-Smirnov below its 0.999 critical value, then the moments.
void ExpectContinuousFit(const std::vector<double>& draws, const std::function<double(double)>& cdf,
                         double mean, double variance) {
  EXPECT_LT(KolmogorovSmirnov(draws, cdf), KolmogorovSmirnovCritical999(kDraws));
  ExpectMoments(draws, mean, variance);
}

// Pearson's chi-square against the cdf of a distribution on 0, 1, 2, ...: cells are closed from
// below upwards once they expect at least 10 draws, as long as at least 10 are expected above them;
// the first cell takes everything below, the last everything above. Candidate cell ends step by 1,
// or by a tenth of a standard deviation for wide distributions, from 8 standard deviations below
// the mean. Every draw must be a non-negative integer. Then the moments.
void ExpectDiscreteFit(const std::vector<double>& draws, const std::function<double(double)>& cdf,
                       double mean, double variance) {
  const double n = static_cast<double>(kDraws);
  const double sd = std::sqrt(variance);
  const double step = std::max(1.0, std::floor(sd / 10.0));
  std::vector<double> upper;  // inclusive upper end of each cell but the last
  std::vector<double> probabilities;
  double below = 0.0;  // cdf at the upper end of the last closed cell
  for (double k = std::max(0.0, std::floor(mean - 8.0 * sd)); n * (1.0 - cdf(k)) >= 10.0; k += step) {
    const double c = cdf(k);
    if (n * (c - below) >= 10.0) {
      upper.push_back(k);
      probabilities.push_back(c - below);
      below = c;
    }
  }
  probabilities.push_back(1.0 - below);
  std::vector<long> observed(probabilities.size(), 0);
  for (const double x : draws) {
    ASSERT_TRUE(x >= 0.0 && x == std::floor(x)) << x;
    observed[std::lower_bound(upper.begin(), upper.end(), x) - upper.begin()] += 1;
  }
  ASSERT_GE(probabilities.size(), 2u);
  EXPECT_LT(ChiSquareStatistic(observed, probabilities, kDraws),
            ChiSquareCritical999(static_cast<int>(probabilities.size()) - 1));
  ExpectMoments(draws, mean, variance);
}

}  // namespace

// Shape a and rate b: mean a / b, variance a / b^2. Rates away from 1 so that a rate read as a
// scale changes the mean by a factor of 4 or more; shape 0.3 exercises the boost for shapes below 1.
TEST(GammaAndDiscreteDraws, Gamma) {
  struct Case {
    double shape;
    double rate;
  };
  std::uint64_t seed = 201;
  for (const Case c : {Case{0.3, 2.0}, Case{1.0, 0.5}, Case{2.5, 3.0}, Case{50.0, 4.0}}) {
    SCOPED_TRACE(testing::Message() << "gamma(" << c.shape << ", " << c.rate << ")");
    const auto draws =
        Sample(seed++, [c](RandomEngine& rng) { return dist::GammaDraw(rng, c.shape, c.rate); });
    ExpectContinuousFit(draws, [c](double x) { return dist::GammaCdf(x, c.shape, c.rate); }, c.shape / c.rate,
                        c.shape / (c.rate * c.rate));
  }
  // A shape so small that most draws underflow stays a valid non-negative number.
  RandomEngine rng;
  rng.Seed(209);
  for (int i = 0; i < 1000; ++i) {
    const double x = dist::GammaDraw(rng, 1e-3, 1.0);
    ASSERT_TRUE(x >= 0.0 && std::isfinite(x)) << x;
  }
}

// Beta(a, b): mean a / (a + b), variance a b / ((a + b)^2 (a + b + 1)); asymmetric shapes so that
// swapping them moves the mean.
TEST(GammaAndDiscreteDraws, Beta) {
  struct Case {
    double a;
    double b;
  };
  std::uint64_t seed = 211;
  for (const Case c : {Case{2.0, 5.0}, Case{0.5, 0.5}, Case{0.2, 3.0}, Case{40.0, 7.0}}) {
    SCOPED_TRACE(testing::Message() << "beta(" << c.a << ", " << c.b << ")");
    const auto draws = Sample(seed++, [c](RandomEngine& rng) { return dist::BetaDraw(rng, c.a, c.b); });
    const double s = c.a + c.b;
    ExpectContinuousFit(draws, [c](double x) { return dist::BetaCdf(x, c.a, c.b); }, c.a / s,
                        c.a * c.b / (s * s * (s + 1.0)));
  }
  // Shapes whose gamma draws underflow still give draws in [0, 1], near 1 with probability
  // a / (a + b) = 0.2 and near 0 otherwise.
  RandomEngine rng;
  rng.Seed(219);
  int nearZero = 0;
  for (int i = 0; i < 10000; ++i) {
    const double x = dist::BetaDraw(rng, 1e-4, 4e-4);
    ASSERT_TRUE(x >= 0.0 && x <= 1.0) << x;
    nearZero += x < 0.5 ? 1 : 0;
  }
  EXPECT_NEAR(nearZero / 10000.0, 0.8, 0.02);
}

// Exponential, Weibull and F, with parameters that a swapped or inverted reading would change.
TEST(GammaAndDiscreteDraws, ExponentialWeibullAndF) {
  {
    SCOPED_TRACE("exponential(2.5)");
    const auto draws = Sample(221, [](RandomEngine& rng) { return dist::ExponentialDraw(rng, 2.5); });
    ExpectContinuousFit(draws, [](double x) { return dist::ExponentialCdf(x, 2.5); }, 0.4, 0.16);
  }
  // Mean l gamma(1 + 1/k), variance l^2 (gamma(1 + 2/k) - gamma(1 + 1/k)^2).
  for (const auto& [k, l] : {std::pair{1.5, 2.0}, std::pair{0.7, 1.3}}) {
    SCOPED_TRACE(testing::Message() << "weibull(" << k << ", " << l << ")");
    const auto draws = Sample(222, [k, l](RandomEngine& rng) { return dist::WeibullDraw(rng, k, l); });
    const double g1 = std::tgamma(1.0 + 1.0 / k);
    const double g2 = std::tgamma(1.0 + 2.0 / k);
    ExpectContinuousFit(draws, [k, l](double x) { return dist::WeibullCdf(x, k, l); }, l * g1,
                        l * l * (g2 - g1 * g1));
  }
  {
    // Mean d2 / (d2 - 2) = 1.2; variance 2 d2^2 (d1 + d2 - 2) / (d1 (d2 - 2)^2 (d2 - 4)) = 1.08;
    // d2 = 12 keeps the fourth moment finite.
    SCOPED_TRACE("F(5, 12)");
    const auto draws = Sample(224, [](RandomEngine& rng) { return dist::FisherDraw(rng, 5.0, 12.0); });
    ExpectContinuousFit(draws, [](double x) { return dist::FisherCdf(x, 5.0, 12.0); }, 1.2, 1.08);
  }
  {
    // A numerator dof below 2 (density infinite at 0); mean 20 / 18, variance 2 400 19.5 / (1.5 324 16).
    SCOPED_TRACE("F(1.5, 20)");
    const auto draws = Sample(225, [](RandomEngine& rng) { return dist::FisherDraw(rng, 1.5, 20.0); });
    ExpectContinuousFit(draws, [](double x) { return dist::FisherCdf(x, 1.5, 20.0); }, 20.0 / 18.0,
                        2.0 * 400.0 * 19.5 / (1.5 * 324.0 * 16.0));
  }
}

// Means on both sides of the switch from inversion to rejection (at 10), and large ones.
TEST(GammaAndDiscreteDraws, Poisson) {
  std::uint64_t seed = 231;
  for (const double mean : {0.5, 8.0, 10.0, 37.5, 500.0, 3e7, 1e9}) {
    SCOPED_TRACE(testing::Message() << "poisson(" << mean << ")");
    const auto draws = Sample(seed++, [mean](RandomEngine& rng) { return dist::PoissonDraw(rng, mean); });
    ExpectDiscreteFit(draws, [mean](double x) { return dist::PoissonCdf(x, mean); }, mean, mean);
  }
}

// The waiting-time method (expected rarer count below 10) and transformed rejection (from 10 on),
// each with p below and at or above 1/2 (where p read as 1 - p moves the mean from n p to
// n (1 - p)), up to 10^13 trials.
TEST(GammaAndDiscreteDraws, Binomial) {
  struct Case {
    double n;
    double p;
  };
  std::uint64_t seed = 241;
  for (const Case c : {Case{25, 0.2}, Case{10, 0.7}, Case{40, 0.5}, Case{30, 0.95}, Case{1, 0.3},
                       Case{20, 0.5}, Case{50, 0.2}, Case{1000, 0.03}, Case{2000, 0.9}, Case{1e13, 0.5},
                       Case{3e9, 1e-6}, Case{4e12, 0.999}}) {
    SCOPED_TRACE(testing::Message() << "binomial(" << c.n << ", " << c.p << ")");
    const auto draws = Sample(seed++, [c](RandomEngine& rng) { return dist::BinomialDraw(rng, c.n, c.p); });
    ExpectDiscreteFit(draws, [c](double x) { return dist::BinomialCdf(x, c.n, c.p); }, c.n * c.p,
                      c.n * c.p * (1.0 - c.p));
    EXPECT_LE(*std::max_element(draws.begin(), draws.end()), c.n);
  }
}

// Failures before the r-th success: mean r (1 - p) / p, variance r (1 - p) / p^2; a gamma rate
// inverted to (1 - p) / p would give mean r p / (1 - p).
TEST(GammaAndDiscreteDraws, NegativeBinomial) {
  struct Case {
    double r;
    double p;
  };
  std::uint64_t seed = 251;
  for (const Case c : {Case{3.0, 0.4}, Case{0.5, 0.8}, Case{20.0, 0.1}, Case{1e9, 0.3}}) {
    SCOPED_TRACE(testing::Message() << "negative binomial(" << c.r << ", " << c.p << ")");
    const auto draws =
        Sample(seed++, [c](RandomEngine& rng) { return dist::NegativeBinomialDraw(rng, c.r, c.p); });
    ExpectDiscreteFit(draws, [c](double x) { return dist::NegativeBinomialCdf(x, c.r, c.p); },
                      c.r * (1.0 - c.p) / c.p, c.r * (1.0 - c.p) / (c.p * c.p));
  }
}

// Category frequencies against the probabilities, and the mean of the one-based category index,
// which an off-by-one would shift by 1.
TEST(GammaAndDiscreteDraws, Categorical) {
  const Eigen::RowVectorXd p{{0.1, 0.25, 0.05, 0.6}};
  const auto draws = Sample(261, [&p](RandomEngine& rng) { return dist::CategoricalDraw(rng, p); });
  std::vector<long> observed(4, 0);
  for (const double x : draws) {
    ASSERT_TRUE(x == 1.0 || x == 2.0 || x == 3.0 || x == 4.0) << x;
    observed[static_cast<std::size_t>(x) - 1] += 1;
  }
  EXPECT_LT(ChiSquareStatistic(observed, {0.1, 0.25, 0.05, 0.6}, kDraws), ChiSquareCritical999(3));
  // Mean 0.1 + 0.5 + 0.15 + 2.4 = 3.15; variance 0.1 + 1 + 0.45 + 9.6 - 3.15^2 = 1.2275.
  ExpectMoments(draws, 3.15, 1.2275);

  // Probabilities summing to less than one: a uniform beyond the total gives the last category.
  const Eigen::RowVectorXd shortfall{{0.5, 0.25}};
  const auto lastHeavy =
      Sample(262, [&shortfall](RandomEngine& rng) { return dist::CategoricalDraw(rng, shortfall); });
  const long second = std::count(lastHeavy.begin(), lastHeavy.end(), 2.0);
  EXPECT_LT(ChiSquareStatistic({kDraws - second, second}, {0.5, 0.5}, kDraws), ChiSquareCritical999(1));
}

// Each component of a Dirichlet(alpha) draw is Beta(alpha_j, alpha_0 - alpha_j); two components
// have covariance -alpha_i alpha_j / (alpha_0^2 (alpha_0 + 1)); every row sums to one.
TEST(GammaAndDiscreteDraws, Dirichlet) {
  const Eigen::RowVectorXd alpha{{0.5, 2.0, 3.5}};
  const double total = alpha.sum();
  RandomEngine rng;
  rng.Seed(271);
  const Eigen::MatrixXd draws = dist::DirichletDraws(rng, alpha, static_cast<int>(kDraws));
  ASSERT_EQ(draws.rows(), kDraws);
  ASSERT_EQ(draws.cols(), 3);
  EXPECT_LT((draws.rowwise().sum().array() - 1.0).abs().maxCoeff(), 1e-12);
  for (int j = 0; j < 3; ++j) {
    SCOPED_TRACE(testing::Message() << "component " << j);
    const double a = alpha(j);
    const std::vector<double> column(draws.col(j).data(), draws.col(j).data() + kDraws);
    ExpectContinuousFit(column, [a, total](double x) { return dist::BetaCdf(x, a, total - a); }, a / total,
                        a * (total - a) / (total * total * (total + 1.0)));
  }
  const Eigen::ArrayXd d0 = draws.col(0).array() - draws.col(0).mean();
  const Eigen::ArrayXd d2 = draws.col(2).array() - draws.col(2).mean();
  const Eigen::ArrayXd products = d0 * d2;
  const double covariance = products.mean();
  const double covarianceError = std::sqrt((products - covariance).square().mean() / kDraws);
  EXPECT_NEAR(covariance, -alpha(0) * alpha(2) / (total * total * (total + 1.0)),
              kStandardErrors * covarianceError);

  // Parameters so small that every gamma draw of a row can underflow still give points of the simplex.
  const Eigen::MatrixXd tiny = dist::DirichletDraws(rng, Eigen::RowVectorXd{{1e-3, 1e-3, 2e-3}}, 2000);
  ASSERT_TRUE(tiny.allFinite());
  EXPECT_LT((tiny.rowwise().sum().array() - 1.0).abs().maxCoeff(), 1e-12);
  EXPECT_GE(tiny.minCoeff(), 0.0);
}

// Degenerate parameters return their single value without using the engine; invalid ones give
// NaN (a NaN matrix for the Dirichlet).
TEST(GammaAndDiscreteDraws, DegenerateAndInvalidParameters) {
  RandomEngine rng;
  RandomEngine twin;
  EXPECT_EQ(dist::BinomialDraw(rng, 0, 0.3), 0.0);
  EXPECT_EQ(dist::BinomialDraw(rng, 7, 0.0), 0.0);
  EXPECT_EQ(dist::BinomialDraw(rng, 7, 1.0), 7.0);
  EXPECT_EQ(dist::PoissonDraw(rng, 0.0), 0.0);
  EXPECT_EQ(dist::NegativeBinomialDraw(rng, 3.0, 1.0), 0.0);
  EXPECT_EQ(rng.Uniform(), twin.Uniform());

  const double kInf = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(std::isnan(dist::GammaDraw(rng, -1.0, 1.0)));
  EXPECT_TRUE(std::isnan(dist::GammaDraw(rng, 2.0, 0.0)));
  EXPECT_TRUE(std::isnan(dist::BetaDraw(rng, 0.0, 1.0)));
  EXPECT_TRUE(std::isnan(dist::ExponentialDraw(rng, 0.0)));
  EXPECT_TRUE(std::isnan(dist::WeibullDraw(rng, 1.0, -1.0)));
  EXPECT_TRUE(std::isnan(dist::FisherDraw(rng, 0.0, 3.0)));
  EXPECT_TRUE(std::isnan(dist::PoissonDraw(rng, -1.0)));
  EXPECT_TRUE(std::isnan(dist::PoissonDraw(rng, kInf)));
  EXPECT_TRUE(std::isnan(dist::BinomialDraw(rng, 2.5, 0.5)));
  EXPECT_TRUE(std::isnan(dist::BinomialDraw(rng, 3.0, 1.2)));
  EXPECT_TRUE(std::isnan(dist::NegativeBinomialDraw(rng, 0.0, 0.5)));
  EXPECT_TRUE(std::isnan(dist::NegativeBinomialDraw(rng, 2.0, 0.0)));
  EXPECT_TRUE(std::isnan(dist::CategoricalDraw(rng, Eigen::RowVectorXd())));
  EXPECT_TRUE(std::isnan(dist::CategoricalDraw(rng, Eigen::RowVectorXd{{0.5, -0.1, 0.6}})));
  const Eigen::MatrixXd bad = dist::DirichletDraws(rng, Eigen::RowVectorXd{{1.0, 0.0}}, 3);
  EXPECT_EQ(bad.rows(), 3);
  EXPECT_EQ(bad.cols(), 2);
  EXPECT_TRUE(bad.array().isNaN().all());
  EXPECT_EQ(dist::DirichletDraws(rng, Eigen::RowVectorXd{{1.0, 2.0}}, 0).rows(), 0);
  EXPECT_EQ(rng.Uniform(), twin.Uniform());
}

// The documented draw sequences, replayed on a twin engine: the exponential as log(1 - u) / (-rate),
// the binomial waiting-time method on both branches, the categorical with one uniform per draw.
TEST(GammaAndDiscreteDraws, DocumentedSequences) {
  RandomEngine rng;
  RandomEngine twin;
  rng.Seed(281);
  twin.Seed(281);
  // Adds log(u) / (n - k) for k = 0, 1, ... until the sum falls below `threshold`; k, or n if it never does.
  auto waitingTime = [&twin](double n, double threshold) {
    double sum = 0.0;
    for (double k = 0.0; k < n; k += 1.0) {
      sum += std::log(twin.Uniform()) / (n - k);
      if (sum < threshold) {
        return k;
      }
    }
    return n;
  };
  const Eigen::RowVectorXd p{{0.2, 0.3, 0.5}};
  for (int i = 0; i < 200; ++i) {
    EXPECT_EQ(dist::ExponentialDraw(rng, 1.7), std::log(1.0 - twin.Uniform()) / -1.7);
    EXPECT_EQ(dist::BinomialDraw(rng, 12, 0.3), waitingTime(12, std::log1p(-0.3)));
    EXPECT_EQ(dist::BinomialDraw(rng, 12, 0.8), 12 - waitingTime(12, std::log(0.8)));
    const double u = twin.Uniform();
    EXPECT_EQ(dist::CategoricalDraw(rng, p), u < 0.2 ? 1.0 : (u < 0.2 + 0.3 ? 2.0 : 3.0));
  }
}
