// The binary choice samplers (probit by augmentation, logit by independence Metropolis-Hastings):
// recovery of simulated coefficients, the posterior of a one-coefficient model against
// quadrature, and both marginal likelihoods against the quadrature value.
#include <gtest/gtest.h>

#include <cmath>

#include "BinaryAugmentation.h"
#include "EventDispatcher.h"
#include "Logit.h"
#include "MarginalLikelihood.h"
#include "PooledDraws.h"
#include "Probit.h"
#include "RandomEngine.h"

namespace {

Eigen::VectorXd Gibbs(long draws, long burnin, long chains) {
  Eigen::VectorXd g(5);
  g << static_cast<double>(draws), static_cast<double>(burnin), static_cast<double>(chains), 1, 42;
  return g;
}

LinearPrior Prior(const Eigen::VectorXd& mean, double precision) {
  const auto k = mean.size();
  return LinearPrior::Combine(mean, Eigen::MatrixXd::Identity(k, k) * precision, Eigen::MatrixXd(0, k),
                              Eigen::VectorXd(0), Eigen::MatrixXd(0, 0));
}

struct Sample {
  Eigen::VectorXd y;
  Eigen::MatrixXd X;
};

// y = 1(x'b + e > 0), X = [1, x1, binary x2, ...].
Sample Simulate(int n, const Eigen::VectorXd& b, std::uint64_t seed) {
  RandomEngine rng;
  rng.Seed(seed);
  Sample s;
  s.X.resize(n, b.size());
  s.y.resize(n);
  for (int i = 0; i < n; ++i) {
    s.X(i, 0) = 1.0;
    for (Eigen::Index j = 1; j < b.size(); ++j) s.X(i, j) = j % 2 ? rng.Normal() : (rng.Uniform() < 0.5 ? 1.0 : 0.0);
    s.y(i) = s.X.row(i).dot(b) + rng.Normal() > 0.0 ? 1.0 : 0.0;
  }
  return s;
}

}  // namespace

TEST(Probit, RecoversSimulatedCoefficients) {
  Eigen::VectorXd truth(3);
  truth << -0.5, 1.0, -0.7;
  // 2,500 observations: several blocks of the augmentation, so their partial sums are exercised.
  const Sample s = Simulate(2500, truth, 17);
  // Centred prior (the rescaling step is used) and a prior centred elsewhere (it is not).
  for (double centre : {0.0, 0.3}) {
    Probit model(Gibbs(1000, 200, 2));
    ASSERT_TRUE(model.Sample(s.y, s.X, Prior(Eigen::VectorXd::Constant(3, centre), 1e-3), EventDispatcher(), nullptr));
    const Eigen::MatrixXd draws = Pooled(model);
    ASSERT_EQ(draws.cols(), 3);
    const Eigen::RowVectorXd mean = draws.colwise().mean();
    const Eigen::MatrixXd cov = mlik::Covariance(draws);
    for (Eigen::Index j = 0; j < 3; ++j) {
      EXPECT_NEAR(mean(j), truth(j), 4.0 * std::sqrt(cov(j, j))) << "coefficient " << j << ", prior centre " << centre;
    }
  }
}

// One coefficient, the intercept: its posterior density is L(b) N(b; 0, 1/P) up to a constant, so
// its mean, its sd and the marginal likelihood follow by quadrature on a fine grid.
TEST(Probit, InterceptModelAgreesWithQuadrature) {
  Eigen::VectorXd truth(1);
  truth << 0.4;
  const Sample s = Simulate(300, truth, 5);
  const double precision = 0.5;
  const int steps = 4000;
  const double lo = -1.0, hi = 2.0, h = (hi - lo) / steps;
  Eigen::VectorXd logKernel(steps + 1), grid(steps + 1);
  for (int i = 0; i <= steps; ++i) {
    grid(i) = lo + i * h;
    logKernel(i) = ProbitLogLikelihood(s.y, Eigen::VectorXd::Constant(s.y.size(), grid(i))) +
                   0.5 * std::log(precision / (2.0 * M_PI)) - 0.5 * precision * grid(i) * grid(i);
  }
  const double top = logKernel.maxCoeff();
  const Eigen::ArrayXd w = (logKernel.array() - top).exp();
  const double mass = w.sum() * h;
  const double mean = (w * grid.array()).sum() * h / mass;
  const double sd = std::sqrt((w * (grid.array() - mean).square()).sum() * h / mass);
  const double logML = top + std::log(mass);

  Probit model(Gibbs(6000, 500, 2));
  ASSERT_TRUE(model.Sample(s.y, s.X, Prior(Eigen::VectorXd::Zero(1), precision), EventDispatcher(), nullptr));
  const Eigen::VectorXd draws = Pooled(model).col(0);
  const double drawMean = draws.mean();
  const double drawSd = std::sqrt((draws.array() - drawMean).square().sum() / static_cast<double>(draws.size() - 1));
  // Effective draws are at least a few thousand here: 0.1 sd is about 5 Monte Carlo errors.
  EXPECT_NEAR(drawMean, mean, 0.1 * sd);
  EXPECT_NEAR(drawSd, sd, 0.08 * sd);
  EXPECT_NEAR(model.logML_CJ, logML, 0.05);
  EXPECT_NEAR(model.logML, logML, 0.1);
}

TEST(Logit, RecoversSimulatedCoefficientsAndAcceptsMostProposals) {
  Eigen::VectorXd truth(3);
  truth << -0.5, 1.0, -0.7;
  // Logistic errors: the latent index plus a logistic draw, -log(1/u - 1).
  RandomEngine rng;
  rng.Seed(23);
  Sample s;
  // 2,500 observations: the likelihood is summed in several blocks.
  s.X.resize(2500, 3);
  s.y.resize(2500);
  for (int i = 0; i < 2500; ++i) {
    s.X.row(i) << 1.0, rng.Normal(), rng.Uniform() < 0.5 ? 1.0 : 0.0;
    const double u = rng.Uniform();
    s.y(i) = s.X.row(i).dot(truth) - std::log(1.0 / u - 1.0) > 0.0 ? 1.0 : 0.0;
  }
  Logit model(Gibbs(2000, 200, 2));
  ASSERT_TRUE(model.Sample(s.y, s.X, Prior(Eigen::VectorXd::Zero(3), 1e-3), EventDispatcher(), nullptr));
  const Eigen::MatrixXd draws = Pooled(model);
  ASSERT_EQ(draws.cols(), 3);
  const Eigen::RowVectorXd mean = draws.colwise().mean();
  const Eigen::MatrixXd cov = mlik::Covariance(draws);
  for (Eigen::Index j = 0; j < 3; ++j) EXPECT_NEAR(mean(j), truth(j), 4.0 * std::sqrt(cov(j, j))) << j;
  EXPECT_GT(model.acceptance, 0.7);

  // The independence sampler's default derivatives (central differences of the kernel), which
  // models without analytic ones rely on, agree with the logit's analytic ones.
  const Eigen::Vector3d b(-0.3, 0.8, -0.2);
  Eigen::VectorXd gradient, numericGradient;
  Eigen::MatrixXd hessian, numericHessian;
  const double kernel = model.Derivatives(b, gradient, hessian);
  EXPECT_NEAR(model.IndependenceTarget::Derivatives(b, numericGradient, numericHessian), kernel, 1e-9 * std::fabs(kernel));
  EXPECT_LT((numericGradient - gradient).norm(), 1e-4 * gradient.norm());
  EXPECT_LT((numericHessian - hessian).norm(), 1e-4 * hessian.norm());
}

TEST(Logit, InterceptModelAgreesWithQuadrature) {
  Eigen::VectorXd truth(1);
  truth << 0.4;
  const Sample s = Simulate(300, truth, 6);
  const double precision = 0.5;
  const int steps = 4000;
  const double lo = -1.5, hi = 2.5, h = (hi - lo) / steps;
  const double ones = s.y.sum(), n = static_cast<double>(s.y.size());
  Eigen::VectorXd logKernel(steps + 1), grid(steps + 1);
  for (int i = 0; i <= steps; ++i) {
    const double b = lo + i * h;
    grid(i) = b;
    logKernel(i) = ones * b - n * std::log1p(std::exp(b)) + 0.5 * std::log(precision / (2.0 * M_PI)) -
                   0.5 * precision * b * b;
  }
  const double top = logKernel.maxCoeff();
  const Eigen::ArrayXd w = (logKernel.array() - top).exp();
  const double mass = w.sum() * h;
  const double mean = (w * grid.array()).sum() * h / mass;
  const double sd = std::sqrt((w * (grid.array() - mean).square()).sum() * h / mass);

  Logit model(Gibbs(6000, 200, 1));
  ASSERT_TRUE(model.Sample(s.y, s.X, Prior(Eigen::VectorXd::Zero(1), precision), EventDispatcher(), nullptr));
  const Eigen::VectorXd draws = Pooled(model).col(0);
  const double drawMean = draws.mean();
  const double drawSd = std::sqrt((draws.array() - drawMean).square().sum() / static_cast<double>(draws.size() - 1));
  EXPECT_NEAR(drawMean, mean, 0.08 * sd);
  EXPECT_NEAR(drawSd, sd, 0.06 * sd);
  EXPECT_NEAR(model.logML_CJ, top + std::log(mass), 0.05);
  EXPECT_NEAR(model.logML, top + std::log(mass), 0.1);
}
