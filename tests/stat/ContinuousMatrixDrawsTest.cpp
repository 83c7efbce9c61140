// Goodness of fit of the multivariate normal, Wishart and inverse-Wishart draws: sample means
// and covariances against the exact ones, and chi-squared laws of quadratic forms.
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

#include <Eigen/Dense>
#include <gtest/gtest.h>

#include "ChiSquared.h"
#include "GoodnessOfFit.h"
#include "MultivariateNormal.h"
#include "Normal.h"
#include "RandomEngine.h"
#include "Wishart.h"

namespace {

constexpr int kDraws = 100000;
constexpr double kStandardErrors = 5.0;

// A 3 x 3 lower Cholesky factor with unequal scales and correlations of both signs, so that
// using L' for L, or S for S^-1, changes the covariance.
Eigen::MatrixXd Factor() {
  Eigen::MatrixXd L(3, 3);
  L << 1.5, 0.0, 0.0, 0.6, 0.8, 0.0, -0.9, 0.4, 1.1;
  return L;
}

Eigen::VectorXd Direction() {
  Eigen::VectorXd a(3);
  a << 1.0, -1.0, 2.0;
  return a;
}

// Checks kDraws matrix draws: the sample mean of every element within a few standard errors of
// `mean` (variances of the elements in `variance`), and the Kolmogorov-Smirnov fit of
// ratio(draw, a) for the first coordinate axis and one oblique direction a against `cdf`.
void ExpectMatrixDrawsFit(const std::function<Eigen::MatrixXd(RandomEngine&)>& draw, std::uint64_t seed,
                          const Eigen::MatrixXd& mean, const Eigen::MatrixXd& variance,
                          const std::function<double(const Eigen::MatrixXd&, const Eigen::VectorXd&)>& ratio,
                          const std::function<double(double)>& cdf) {
  RandomEngine rng;
  rng.Seed(seed);
  const Eigen::VectorXd axis = Eigen::VectorXd::Unit(3, 0);
  const Eigen::VectorXd oblique = Direction();
  Eigen::MatrixXd sum = Eigen::MatrixXd::Zero(3, 3);
  std::vector<double> alongAxis(kDraws);
  std::vector<double> alongOblique(kDraws);
  for (int k = 0; k < kDraws; ++k) {
    const Eigen::MatrixXd w = draw(rng);
    ASSERT_TRUE(w.isApprox(w.transpose(), 0.0)) << "draws must be exactly symmetric";
    sum += w;
    alongAxis[k] = ratio(w, axis);
    alongOblique[k] = ratio(w, oblique);
  }
  const Eigen::MatrixXd sampleMean = sum / kDraws;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      EXPECT_NEAR(sampleMean(i, j), mean(i, j), kStandardErrors * std::sqrt(variance(i, j) / kDraws))
          << "element (" << i << ", " << j << ")";
    }
  }
  EXPECT_LT(KolmogorovSmirnov(alongAxis, cdf), KolmogorovSmirnovCritical999(kDraws));
  EXPECT_LT(KolmogorovSmirnov(alongOblique, cdf), KolmogorovSmirnovCritical999(kDraws));
}

}  // namespace

// Sample mean and covariance of 10^5 draws against mean and L L' (standard errors
// sqrt(S_ii / n) and sqrt((S_ii S_jj + S_ij^2) / n)), and a' x against N(a' mean, a' S a).
TEST(ContinuousMatrixDraws, MultivariateNormalMeanCovarianceAndProjection) {
  const Eigen::MatrixXd L = Factor();
  const Eigen::MatrixXd S = L * L.transpose();
  Eigen::VectorXd mean(3);
  mean << 1.0, -2.0, 0.5;
  RandomEngine rng;
  rng.Seed(501);
  const Eigen::MatrixXd draws = dist::MultivariateNormalDraws(rng, mean, L, kDraws);
  ASSERT_EQ(draws.rows(), kDraws);
  ASSERT_EQ(draws.cols(), 3);
  const Eigen::VectorXd sampleMean = draws.colwise().mean().transpose();
  const Eigen::MatrixXd centred = draws.rowwise() - sampleMean.transpose();
  const Eigen::MatrixXd sampleCovariance = centred.transpose() * centred / (kDraws - 1.0);
  for (int i = 0; i < 3; ++i) {
    EXPECT_NEAR(sampleMean(i), mean(i), kStandardErrors * std::sqrt(S(i, i) / kDraws)) << "mean " << i;
    for (int j = 0; j < 3; ++j) {
      const double se = std::sqrt((S(i, i) * S(j, j) + S(i, j) * S(i, j)) / kDraws);
      EXPECT_NEAR(sampleCovariance(i, j), S(i, j), kStandardErrors * se) << "covariance " << i << ", " << j;
    }
  }
  const Eigen::VectorXd a = Direction();
  const Eigen::VectorXd projected = draws * a;
  const double projectedMean = a.dot(mean);
  const double projectedSd = std::sqrt(a.dot(S * a));
  EXPECT_LT(KolmogorovSmirnov(std::vector<double>(projected.data(), projected.data() + kDraws),
                              [&](double x) { return dist::NormalCdf(x, projectedMean, projectedSd); }),
            KolmogorovSmirnovCritical999(kDraws));
}

// Wishart(S, nu): mean nu S, Var(W_ij) = nu (S_ij^2 + S_ii S_jj), and a' W a / a' S a chi-squared
// with nu dof; for whole nu by both routes, and for a fractional nu by the Bartlett route (where
// a diagonal dof off by one would move the mean by S_ii).
TEST(ContinuousMatrixDraws, WishartForWholeAndFractionalDof) {
  const Eigen::MatrixXd L = Factor();
  const Eigen::MatrixXd S = L * L.transpose();
  const Eigen::MatrixXd outer = S.cwiseProduct(S) + S.diagonal() * S.diagonal().transpose();
  const auto ratio = [&S](const Eigen::MatrixXd& w, const Eigen::VectorXd& a) {
    return a.dot(w * a) / a.dot(S * a);
  };
  {
    SCOPED_TRACE("Bartlett, nu = 5");
    ExpectMatrixDrawsFit([&L](RandomEngine& rng) { return dist::WishartDraw(rng, L, 5.0); }, 601, 5.0 * S,
                         5.0 * outer, ratio, [](double x) { return dist::ChiSquaredCdf(x, 5.0); });
  }
  {
    SCOPED_TRACE("outer products, nu = 5");
    ExpectMatrixDrawsFit([&L](RandomEngine& rng) { return dist::WishartDrawIntegerDof(rng, L, 5); }, 602,
                         5.0 * S, 5.0 * outer, ratio, [](double x) { return dist::ChiSquaredCdf(x, 5.0); });
  }
  {
    SCOPED_TRACE("Bartlett, nu = 2.6");
    ExpectMatrixDrawsFit([&L](RandomEngine& rng) { return dist::WishartDraw(rng, L, 2.6); }, 603, 2.6 * S,
                         2.6 * outer, ratio, [](double x) { return dist::ChiSquaredCdf(x, 2.6); });
  }
}

// Inverse-Wishart(S, nu) of order p = 3: mean S / (nu - p - 1),
// Var(X_ij) = ((nu - p + 1) S_ij^2 + (nu - p - 1) S_ii S_jj) / ((nu - p)(nu - p - 1)^2 (nu - p - 3)),
// and a' S a / a' X a chi-squared with nu - p + 1 dof.
TEST(ContinuousMatrixDraws, InverseWishartForWholeAndFractionalDof) {
  const Eigen::MatrixXd L = Factor();
  const Eigen::MatrixXd S = L * L.transpose();
  const auto ratio = [&S](const Eigen::MatrixXd& x, const Eigen::VectorXd& a) {
    return a.dot(S * a) / a.dot(x * a);
  };
  const auto moments = [&S](double nu, Eigen::MatrixXd& mean, Eigen::MatrixXd& variance) {
    const double p = 3.0;
    mean = S / (nu - p - 1.0);
    const Eigen::MatrixXd diagonalProducts = S.diagonal() * S.diagonal().transpose();
    variance = ((nu - p + 1.0) * S.cwiseProduct(S) + (nu - p - 1.0) * diagonalProducts) /
               ((nu - p) * (nu - p - 1.0) * (nu - p - 1.0) * (nu - p - 3.0));
  };
  Eigen::MatrixXd mean;
  Eigen::MatrixXd variance;
  moments(9.0, mean, variance);
  {
    SCOPED_TRACE("Bartlett, nu = 9");
    ExpectMatrixDrawsFit([&L](RandomEngine& rng) { return dist::InverseWishartDraw(rng, L, 9.0); }, 701, mean,
                         variance, ratio, [](double x) { return dist::ChiSquaredCdf(x, 7.0); });
  }
  {
    SCOPED_TRACE("outer products, nu = 9");
    ExpectMatrixDrawsFit(
        [&L](RandomEngine& rng) { return dist::InverseWishartDrawIntegerDof(rng, L, 9); }, 702, mean,
        variance, ratio, [](double x) { return dist::ChiSquaredCdf(x, 7.0); });
  }
  moments(8.5, mean, variance);
  {
    SCOPED_TRACE("Bartlett, nu = 8.5");
    ExpectMatrixDrawsFit([&L](RandomEngine& rng) { return dist::InverseWishartDraw(rng, L, 8.5); }, 703, mean,
                         variance, ratio, [](double x) { return dist::ChiSquaredCdf(x, 6.5); });
  }
}

// Sizes that disagree, a factor without a positive diagonal, and nu <= p - 1 give NaN; empty
// sizes give empty results without reaching Eigen's triangular routines.
TEST(ContinuousMatrixDraws, BadArgumentsGiveNaN) {
  RandomEngine rng;
  const Eigen::MatrixXd L = Factor();
  EXPECT_TRUE(dist::MultivariateNormalDraws(rng, Eigen::VectorXd::Zero(2), L, 4).array().isNaN().all());
  EXPECT_EQ(dist::MultivariateNormalDraws(rng, Eigen::VectorXd::Zero(3), L, 0).rows(), 0);
  EXPECT_EQ(dist::MultivariateNormalPdf(Eigen::MatrixXd(0, 3), Eigen::VectorXd::Zero(3), L).size(), 0);
  const Eigen::MatrixXd noColumns =
      dist::MultivariateNormalDraws(rng, Eigen::VectorXd(0), Eigen::MatrixXd(0, 0), 2);
  EXPECT_EQ(noColumns.rows(), 2);
  EXPECT_EQ(noColumns.cols(), 0);
  EXPECT_EQ(dist::WishartDraw(rng, Eigen::MatrixXd(0, 0), 3.0).size(), 0);
  Eigen::MatrixXd singular = L;
  singular(2, 2) = 0.0;
  const Eigen::VectorXd zero = Eigen::VectorXd::Zero(3);
  EXPECT_TRUE(dist::MultivariateNormalDraws(rng, zero, singular, 2).array().isNaN().all());
  EXPECT_TRUE(dist::WishartDraw(rng, L, 2.0).array().isNaN().all());
  EXPECT_TRUE(dist::WishartDraw(rng, singular, 5.0).array().isNaN().all());
  EXPECT_TRUE(dist::WishartDrawIntegerDof(rng, L, 2).array().isNaN().all());
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(dist::InverseWishartDraw(rng, L, inf).array().isNaN().all());
  const Eigen::MatrixXd notSquare = Eigen::MatrixXd::Identity(3, 2);
  EXPECT_TRUE(dist::InverseWishartDrawIntegerDof(rng, notSquare, 5).array().isNaN().all());
  // Just above p - 1 is valid.
  EXPECT_TRUE(dist::WishartDraw(rng, L, 2.01).allFinite());
}
