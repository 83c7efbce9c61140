// The linear model's sampler against closed forms: posterior moments under a vague prior, the
// marginal likelihood by quadrature, constraints, and the same draws whatever the threads.
#include <cmath>

#include <gtest/gtest.h>

#include "EventDispatcher.h"
#include "LM.h"
#include "MarginalLikelihood.h"
#include "RandomEngine.h"

namespace {

struct Simulated {
  Eigen::VectorXd y;
  Eigen::MatrixXd X;
};

// y = X b + e with a constant and k - 1 standard normal regressors, e ~ N(0, sigma^2).
Simulated Simulate(int n, const Eigen::VectorXd& b, double sigma, std::uint64_t seed) {
  RandomEngine rng;
  rng.Seed(seed);
  Simulated s;
  s.X.resize(n, b.size());
  s.X.col(0).setOnes();
  for (int i = 0; i < n; ++i) {
    for (Eigen::Index j = 1; j < b.size(); ++j) s.X(i, j) = rng.Normal();
  }
  s.y = s.X * b;
  for (int i = 0; i < n; ++i) s.y(i) += sigma * rng.Normal();
  return s;
}

Eigen::VectorXd Gibbs(long draws, long burnin, long chains, std::uint64_t seed = 42) {
  Eigen::VectorXd g(5);
  g << static_cast<double>(draws), static_cast<double>(burnin), static_cast<double>(chains), 1,
      static_cast<double>(seed);
  return g;
}

Eigen::MatrixXd Pooled(const LM& lm) {
  const auto& draws = lm.Draws();
  Eigen::MatrixXd all(draws[0].rows() * static_cast<Eigen::Index>(draws.size()), draws[0].cols());
  for (std::size_t c = 0; c < draws.size(); ++c) {
    all.middleRows(static_cast<Eigen::Index>(c) * draws[0].rows(), draws[0].rows()) = draws[c];
  }
  return all;
}

}  // namespace

// With a nearly flat prior on b and p(tau) close to 1/tau, b | y is Student t with n - k degrees
// of freedom around the least-squares fit and tau | y is Gamma((n - k)/2, SSE/2).
TEST(LinearModel, VaguePriorMatchesTheClosedForm) {
  const int n = 40;
  Eigen::VectorXd b(3);
  b << 1.0, -2.0, 0.5;
  const Simulated s = Simulate(n, b, 1.5, 11);
  const int k = 3;
  const Eigen::MatrixXd XtX = s.X.transpose() * s.X;
  const Eigen::VectorXd ols = XtX.ldlt().solve(s.X.transpose() * s.y);
  const double sse = (s.y - s.X * ols).squaredNorm();
  const double nu = n - k;
  const Eigen::VectorXd sd =
      (XtX.inverse().diagonal() * sse / nu * nu / (nu - 2.0)).array().sqrt();

  const LinearPrior prior = LinearPrior::Combine(Eigen::VectorXd::Zero(k),
                                                 Eigen::MatrixXd::Identity(k, k) * 1e-10,
                                                 Eigen::MatrixXd(0, k), Eigen::VectorXd(0),
                                                 Eigen::MatrixXd(0, 0));
  LM lm(Gibbs(40000, 1000, 2));
  ASSERT_TRUE(lm.Sample(s.y, s.X, prior, 1e-10, 1e-10, EventDispatcher(), nullptr));
  const Eigen::MatrixXd draws = Pooled(lm);
  const Eigen::RowVectorXd mean = draws.colwise().mean();
  const Eigen::MatrixXd cov = mlik::Covariance(draws);
  for (int j = 0; j < k; ++j) {
    const double mcse = sd(j) / std::sqrt(static_cast<double>(draws.rows()));
    EXPECT_NEAR(mean(j), ols(j), 5.0 * mcse) << "coefficient " << j;
    EXPECT_NEAR(std::sqrt(cov(j, j)), sd(j), 0.03 * sd(j)) << "coefficient " << j;
  }
  const double tauMean = nu / sse;
  EXPECT_NEAR(mean(k), tauMean, 0.02 * tauMean);
  EXPECT_NEAR(std::sqrt(cov(k, k)), std::sqrt(nu / 2.0) / (sse / 2.0), 0.03 * tauMean);
}

// p(y) = integral over tau of N(y; X m, I/tau + X P^-1 X') Gamma(tau; a, b): a one-dimensional
// quadrature that shares nothing with the sampler.
TEST(LinearModel, MarginalLikelihoodsAgreeWithQuadrature) {
  const int n = 25;
  Eigen::VectorXd b(2);
  b << 0.5, 1.0;
  const Simulated s = Simulate(n, b, 0.8, 5);
  Eigen::VectorXd m(2);
  m << 0.2, 0.4;
  Eigen::MatrixXd P(2, 2);
  P << 2.0, 0.3, 0.3, 1.0;
  const double a = 3.0, rate = 2.0;

  const Eigen::MatrixXd priorCov = s.X * P.inverse() * s.X.transpose();
  const Eigen::VectorXd mean = s.X * m;
  const double lo = -12.0, hi = 8.0;
  const int steps = 8000;
  Eigen::VectorXd logTerms(steps + 1);
  for (int i = 0; i <= steps; ++i) {
    const double u = lo + (hi - lo) * i / steps;  // u = log tau
    const double tau = std::exp(u);
    const Eigen::MatrixXd cov = Eigen::MatrixXd::Identity(n, n) / tau + priorCov;
    const double weight = (i == 0 || i == steps) ? 0.5 : 1.0;
    logTerms(i) = mlik::LogNormalDensity(s.y, mean, cov.inverse()) +
                  mlik::LogGammaDensity(tau, a, rate) + u + std::log(weight);
  }
  const double exact = mlik::LogMeanExp(logTerms) + std::log((hi - lo) / steps * (steps + 1));

  LM lm(Gibbs(20000, 1000, 1));
  const LinearPrior prior = LinearPrior::Combine(m, P, Eigen::MatrixXd(0, 2), Eigen::VectorXd(0),
                                                 Eigen::MatrixXd(0, 0));
  ASSERT_TRUE(lm.Sample(s.y, s.X, prior, a, rate, EventDispatcher(), nullptr));
  EXPECT_NEAR(lm.logML_CJ, exact, 0.02);
  EXPECT_NEAR(lm.logML, exact, 0.2);
}

// A constraint with a large precision holds in every draw; the unconstrained coefficients move.
TEST(LinearModel, ConstraintsHoldInTheDraws) {
  Eigen::VectorXd b(3);
  b << 1.0, 2.0, 3.0;
  const Simulated s = Simulate(200, b, 1.0, 3);
  Eigen::MatrixXd R(1, 3);
  R << 0.0, 1.0, -1.0;  // b1 = b2
  const LinearPrior prior = LinearPrior::Combine(Eigen::VectorXd::Zero(3),
                                                 Eigen::MatrixXd::Identity(3, 3) * 1e-3, R,
                                                 Eigen::VectorXd::Zero(1),
                                                 Eigen::MatrixXd::Identity(1, 1) * 1e8);
  LM lm(Gibbs(2000, 200, 1));
  ASSERT_TRUE(lm.Sample(s.y, s.X, prior, 1e-3, 1e-3, EventDispatcher(), nullptr));
  const Eigen::MatrixXd draws = Pooled(lm);
  EXPECT_LT((draws.col(1) - draws.col(2)).cwiseAbs().maxCoeff(), 1e-3);
  // The common value lies between the two true slopes, far from both zero and either alone.
  const double common = draws.col(1).mean();
  EXPECT_GT(common, 2.2);
  EXPECT_LT(common, 2.8);
}

// Chain c always draws from the same engine, so two runs agree draw for draw, and chains differ.
TEST(LinearModel, ChainsAreReproducibleAndDistinct) {
  Eigen::VectorXd b(2);
  b << 1.0, 1.0;
  const Simulated s = Simulate(50, b, 1.0, 9);
  const LinearPrior prior = LinearPrior::Combine(Eigen::VectorXd::Zero(2),
                                                 Eigen::MatrixXd::Identity(2, 2) * 1e-3,
                                                 Eigen::MatrixXd(0, 2), Eigen::VectorXd(0),
                                                 Eigen::MatrixXd(0, 0));
  LM first(Gibbs(500, 10, 3, 7));
  LM second(Gibbs(500, 10, 3, 7));
  ASSERT_TRUE(first.Sample(s.y, s.X, prior, 1e-3, 1e-3, EventDispatcher(), nullptr));
  ASSERT_TRUE(second.Sample(s.y, s.X, prior, 1e-3, 1e-3, EventDispatcher(), nullptr));
  for (int c = 0; c < 3; ++c) EXPECT_EQ(first.Draws()[c], second.Draws()[c]) << "chain " << c;
  EXPECT_NE(first.Draws()[0], first.Draws()[1]);

  // An interrupt that is already raised stops the run before it completes.
  std::atomic<bool> stop{true};
  LM stopped(Gibbs(1000000, 10, 2));
  EXPECT_FALSE(stopped.Sample(s.y, s.X, prior, 1e-3, 1e-3, EventDispatcher(), &stop));
}
