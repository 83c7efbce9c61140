// The censored regression: recovery of simulated parameters with one and two limits, the linear
// model when nothing is censored, and both marginal likelihoods against two-dimensional
// quadrature.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "ChiSquared.h"
#include "EventDispatcher.h"
#include "LM.h"
#include "MarginalLikelihood.h"
#include "PooledDraws.h"
#include "RandomEngine.h"
#include "TobitI.h"
#include "TobitII.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

Eigen::VectorXd Gibbs(long draws, long burnin, long chains) {
  Eigen::VectorXd g(5);
  g << static_cast<double>(draws), static_cast<double>(burnin), static_cast<double>(chains), 1, 42;
  return g;
}

LinearPrior Prior(Eigen::Index k, double precision) {
  return LinearPrior::Combine(Eigen::VectorXd::Zero(k), Eigen::MatrixXd::Identity(k, k) * precision,
                              Eigen::MatrixXd(0, k), Eigen::VectorXd(0), Eigen::MatrixXd(0, 0));
}

struct Sample {
  Eigen::VectorXd y;
  Eigen::MatrixXd X;
};

// y = min(max(x'b + e, lower), upper), e ~ N(0, sd^2), X = [1, x1, x2].
Sample Simulate(int n, const Eigen::VectorXd& b, double sd, double lower, double upper, std::uint64_t seed) {
  RandomEngine rng;
  rng.Seed(seed);
  Sample s;
  s.X.resize(n, b.size());
  s.y.resize(n);
  for (int i = 0; i < n; ++i) {
    s.X(i, 0) = 1.0;
    for (Eigen::Index j = 1; j < b.size(); ++j) s.X(i, j) = rng.Normal();
    s.y(i) = std::min(std::max(s.X.row(i).dot(b) + sd * rng.Normal(), lower), upper);
  }
  return s;
}

}  // namespace

TEST(TobitI, RecoversSimulatedParametersWithOneAndTwoLimits) {
  Eigen::VectorXd truth(3);
  truth << 0.3, 1.0, -0.6;
  const double sd = 0.8;
  for (const auto& [lower, upper] : {std::pair{0.0, kInf}, std::pair{0.0, 1.5}}) {
    SCOPED_TRACE(testing::Message() << "limits " << lower << ", " << upper);
    const Sample s = Simulate(2000, truth, sd, lower, upper, 5);
    TobitI model(Gibbs(1000, 200, 2));
    ASSERT_TRUE(model.Sample(s.y, s.X, lower, upper, Prior(3, 1e-3), 1e-3, 1e-3, false, EventDispatcher(), nullptr));
    const Eigen::MatrixXd draws = Pooled(model);
    ASSERT_EQ(draws.cols(), 4);
    const Eigen::RowVectorXd mean = draws.colwise().mean();
    const Eigen::MatrixXd cov = mlik::Covariance(draws);
    for (Eigen::Index j = 0; j < 3; ++j) EXPECT_NEAR(mean(j), truth(j), 4.0 * std::sqrt(cov(j, j))) << j;
    EXPECT_NEAR(mean(3), 1.0 / (sd * sd), 4.0 * std::sqrt(cov(3, 3)));
  }
}

// Limits outside the data: nothing is censored and the model is the linear one.
TEST(TobitI, WithoutCensoringIsTheLinearModel) {
  Eigen::VectorXd truth(3);
  truth << 0.3, 1.0, -0.6;
  const Sample s = Simulate(400, truth, 0.8, -kInf, kInf, 6);
  const LinearPrior prior = Prior(3, 0.1);
  TobitI tobit(Gibbs(4000, 500, 1));
  ASSERT_TRUE(tobit.Sample(s.y, s.X, -kInf, kInf, prior, 2.0, 1.0, true, EventDispatcher(), nullptr));
  LM lm(Gibbs(4000, 500, 1));
  ASSERT_TRUE(lm.Sample(s.y, s.X, prior, 2.0, 1.0, EventDispatcher(), nullptr));
  const Eigen::RowVectorXd tobitMean = Pooled(tobit).colwise().mean(), lmMean = Pooled(lm).colwise().mean();
  const Eigen::MatrixXd cov = mlik::Covariance(Pooled(lm));
  for (Eigen::Index j = 0; j < 4; ++j) EXPECT_NEAR(tobitMean(j), lmMean(j), 0.15 * std::sqrt(cov(j, j))) << j;
  EXPECT_NEAR(tobit.logML_CJ, lm.logML_CJ, 0.02);
  EXPECT_NEAR(tobit.logML, lm.logML, 0.05);
}

// y = b + e censored at 0, 40 observations: p(y) by quadrature over (b, log tau).
TEST(TobitI, MarginalLikelihoodsAgreeWithQuadrature) {
  Eigen::VectorXd truth(1);
  truth << 0.2;
  const Sample s = Simulate(40, truth, 1.0, 0.0, kInf, 7);
  const double priorPrecision = 0.5, a = 2.0, rate = 1.5;
  auto logKernel = [&](double b, double tau) {
    double sum = 0.0;
    for (Eigen::Index i = 0; i < s.y.size(); ++i) {
      if (s.y(i) <= 0.0) {
        sum += std::log(0.5 * std::erfc(b * std::sqrt(tau) / std::sqrt(2.0)));
      } else {
        sum += 0.5 * std::log(tau / (2.0 * M_PI)) - 0.5 * tau * (s.y(i) - b) * (s.y(i) - b);
      }
    }
    return sum + 0.5 * std::log(priorPrecision / (2.0 * M_PI)) - 0.5 * priorPrecision * b * b +
           a * std::log(rate) - std::lgamma(a) + (a - 1.0) * std::log(tau) - rate * tau;
  };
  // On (b, t = log tau): the density gains the Jacobian tau. A fine grid over a wide box.
  const int grid = 600;
  const double bLow = -2.0, bHigh = 2.5, tLow = -2.5, tHigh = 2.0;
  const double db = (bHigh - bLow) / grid, dt = (tHigh - tLow) / grid;
  Eigen::VectorXd values(grid * grid);
  for (int i = 0; i < grid; ++i) {
    for (int j = 0; j < grid; ++j) {
      const double b = bLow + (i + 0.5) * db, t = tLow + (j + 0.5) * dt;
      values(i * grid + j) = logKernel(b, std::exp(t)) + t;
    }
  }
  const double exact = mlik::LogMeanExp(values) + std::log((bHigh - bLow) * (tHigh - tLow));
  TobitI model(Gibbs(20000, 1000, 1));
  ASSERT_TRUE(model.Sample(s.y, s.X, 0.0, kInf, Prior(1, priorPrecision), a, rate, true, EventDispatcher(), nullptr));
  EXPECT_NEAR(model.logML_CJ, exact, 0.03);
  EXPECT_NEAR(model.logML, exact, 0.1);
}

namespace {

struct Selection {
  Eigen::MatrixXd X, Z;
  Eigen::VectorXd y, selected;
};

// y = b0 + b1 x + e observed where 0.3 + 0.5 x - 0.9 z + u > 0, Var(e) = sigma^2, Corr(e, u) = rho.
Selection SimulateSelection(int n, const Eigen::Vector2d& b, const Eigen::Vector3d& g, double sigma, double rho,
                            std::uint64_t seed) {
  RandomEngine rng;
  rng.Seed(seed);
  Selection s;
  s.X.resize(n, 2);
  s.Z.resize(n, 3);
  s.y.resize(n);
  s.selected.resize(n);
  for (int i = 0; i < n; ++i) {
    const double x = rng.Normal(), z = rng.Normal();
    s.X.row(i) << 1.0, x;
    s.Z.row(i) << 1.0, x, z;
    const double u = rng.Normal();
    const double e = sigma * (rho * u + std::sqrt(1.0 - rho * rho) * rng.Normal());
    s.selected(i) = s.Z.row(i).dot(g) + u > 0.0 ? 1.0 : 0.0;
    s.y(i) = s.selected(i) > 0.5 ? s.X.row(i).dot(b) + e : std::numeric_limits<double>::quiet_NaN();
  }
  return s;
}

TobitII::Priors SelectionPriors(double precision) {
  TobitII::Priors priors;
  priors.coefficients = Prior(6, precision);
  priors.a = 2.0;
  priors.b = 1.0;
  return priors;
}

}  // namespace

// The selection model: outcome and selection coefficients, sigma and a strong correlation
// recovered from 2,000 observations of which about 60% are selected.
TEST(TobitII, RecoversSimulatedParameters) {
  const double sigma = 1.2, rho = 0.6;
  const Eigen::Vector2d b(1.0, 0.8);
  const Eigen::Vector3d g(0.3, 0.5, -0.9);
  const Selection s = SimulateSelection(2000, b, g, sigma, rho, 11);
  const Eigen::MatrixXd& X = s.X;
  const Eigen::MatrixXd& Z = s.Z;
  const Eigen::VectorXd& y = s.y;
  const Eigen::VectorXd& selected = s.selected;
  const TobitII::Priors priors = SelectionPriors(1e-3);
  TobitII model(Gibbs(1500, 300, 2));
  ASSERT_TRUE(model.Sample(y, selected, X, Z, priors, false, EventDispatcher(), nullptr));
  const Eigen::MatrixXd draws = Pooled(model);
  ASSERT_EQ(draws.cols(), 7);
  Eigen::VectorXd truth(7);
  truth << b, g, sigma, rho;
  const Eigen::RowVectorXd mean = draws.colwise().mean();
  const Eigen::MatrixXd cov = mlik::Covariance(draws);
  for (Eigen::Index j = 0; j < 7; ++j) EXPECT_NEAR(mean(j), truth(j), 4.0 * std::sqrt(cov(j, j))) << j;
  EXPECT_LT(std::sqrt(cov(6, 6)), 0.1);  // the data pin rho down
}

// Both marginal likelihoods against importance sampling from a t fitted to the posterior draws in
// (b, g, w, log 1/xi^2) (heavier-tailed and wider than the posterior, so the weights stay
// bounded), and the ranking of a selection equation without its excluded regressor.
TEST(TobitII, MarginalLikelihoodsAgreeWithImportanceSampling) {
  const Selection s = SimulateSelection(400, Eigen::Vector2d(1.0, 0.8), Eigen::Vector3d(0.3, 0.5, -0.9), 1.2, 0.6, 12);
  const TobitII::Priors priors = SelectionPriors(0.1);
  TobitII model(Gibbs(3000, 500, 1));
  ASSERT_TRUE(model.Sample(s.y, s.selected, s.X, s.Z, priors, true, EventDispatcher(), nullptr));

  const Eigen::MatrixXd kept = model.Draws()[0];  // b, g, sigma, rho
  Eigen::MatrixXd theta(kept.rows(), 7);
  for (Eigen::Index d = 0; d < kept.rows(); ++d) {
    const double sigma = kept(d, 5), rho = kept(d, 6);
    theta.row(d) << kept.row(d).head(5), rho * sigma, -std::log(sigma * sigma * (1.0 - rho * rho));
  }
  const Eigen::VectorXd mu = theta.colwise().mean().transpose();
  const Eigen::MatrixXd L = (2.25 * mlik::Covariance(theta)).llt().matrixL();
  const double nu = 5.0, dim = 7.0;
  const double logConstant = std::lgamma(0.5 * (nu + dim)) - std::lgamma(0.5 * nu) - 0.5 * dim * std::log(nu * M_PI) -
                             L.diagonal().array().log().sum();
  RandomEngine rng;
  rng.Seed(99);
  Eigen::VectorXd logWeights(20000), z(7), coefficients(6);
  for (Eigen::Index m = 0; m < logWeights.size(); ++m) {
    for (Eigen::Index j = 0; j < 7; ++j) z(j) = rng.Normal();
    const double scale = std::sqrt(nu / dist::ChiSquaredDraw(rng, nu));
    const Eigen::VectorXd t = mu + scale * (L * z);
    const double logProposal = logConstant - 0.5 * (nu + dim) * std::log1p(z.squaredNorm() * scale * scale / nu);
    coefficients << t.head(2), t(5), t.segment(2, 3);  // (b, w, g)
    const double tau = std::exp(t(6));
    logWeights(m) = model.LogLikelihood(t.head(2), t.segment(2, 3), t(5), 1.0 / tau) +
                    mlik::LogNormalDensity(coefficients, priors.coefficients.mean, priors.coefficients.precision) +
                    mlik::LogGammaDensity(tau, priors.a, priors.b) + t(6) - logProposal;
  }
  const double reference = mlik::LogMeanExp(logWeights);
  EXPECT_NEAR(model.logML_CJ, reference, 0.06);
  EXPECT_NEAR(model.logML, reference, 0.3);

  TobitII::Priors smallerPriors;
  smallerPriors.coefficients = Prior(5, 0.1);
  smallerPriors.a = priors.a;
  smallerPriors.b = priors.b;
  TobitII smaller(Gibbs(3000, 500, 1));
  ASSERT_TRUE(smaller.Sample(s.y, s.selected, s.X, s.Z.leftCols(2), smallerPriors, false, EventDispatcher(), nullptr));
  EXPECT_GT(model.logML, smaller.logML + 5.0);
}
