// The count samplers (Poisson and negative binomial by independence Metropolis-Hastings): recovery
// of simulated parameters, the negative binomial likelihood against its probability function, the
// Poisson derivatives against central differences, and a one-coefficient Poisson posterior and its
// marginal likelihoods against quadrature.
#include <gtest/gtest.h>

#include <cmath>

#include "EventDispatcher.h"
#include "Gamma.h"
#include "MarginalLikelihood.h"
#include "NegBinomRegression.h"
#include "NegativeBinomial.h"
#include "Poisson.h"
#include "PoissonRegression.h"
#include "PooledDraws.h"
#include "RandomEngine.h"

namespace {

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
  Eigen::VectorXd y, exposure;
  Eigen::MatrixXd X;
};

// X = [1, normal, binary], exposure uniform on [0.5, 2); y Poisson with mean exposure exp(x'b) times
// a Gamma(1/alpha, 1/alpha) draw (none when alpha is 0).
Sample Simulate(int n, const Eigen::Vector3d& b, double alpha, std::uint64_t seed) {
  RandomEngine rng;
  rng.Seed(seed);
  Sample s;
  s.X.resize(n, 3);
  s.y.resize(n);
  s.exposure.resize(n);
  for (int i = 0; i < n; ++i) {
    s.X.row(i) << 1.0, rng.Normal(), rng.Uniform() < 0.4 ? 1.0 : 0.0;
    s.exposure(i) = 0.5 + 1.5 * rng.Uniform();
    double mean = s.exposure(i) * std::exp(s.X.row(i).dot(b));
    if (alpha > 0.0) mean *= dist::GammaDraw(rng, 1.0 / alpha, 1.0 / alpha);
    s.y(i) = dist::PoissonDraw(rng, mean);
  }
  return s;
}

void ExpectRecovered(const Eigen::MatrixXd& draws, const Eigen::VectorXd& truth) {
  ASSERT_EQ(draws.cols(), truth.size());
  const Eigen::RowVectorXd mean = draws.colwise().mean();
  const Eigen::MatrixXd cov = mlik::Covariance(draws);
  for (Eigen::Index j = 0; j < truth.size(); ++j) {
    EXPECT_NEAR(mean(j), truth(j), 4.0 * std::sqrt(cov(j, j))) << "parameter " << j;
  }
}

}  // namespace

TEST(Poisson, RecoversSimulatedCoefficientsWithExposure) {
  const Eigen::Vector3d truth(0.3, 0.5, -0.4);
  // 2,000 observations: the likelihood is summed in two blocks.
  const Sample s = Simulate(2000, truth, 0.0, 31);
  Poisson model(Gibbs(1000, 200, 2));
  ASSERT_TRUE(model.Sample(s.y, s.X, s.exposure, Prior(3, 1e-3), EventDispatcher(), nullptr));
  ExpectRecovered(Pooled(model), truth);
  EXPECT_GT(model.acceptance, 0.8);

  // Without the exposure the intercept absorbs log E(exposure), about 0.22: the offset is used.
  Poisson without(Gibbs(300, 50, 1));
  ASSERT_TRUE(without.Sample(s.y, s.X, Eigen::VectorXd(), Prior(3, 1e-3), EventDispatcher(), nullptr));
  EXPECT_GT(Pooled(without).col(0).mean() - Pooled(model).col(0).mean(), 0.1);

  // The analytic derivatives agree with the sampler's central differences of the kernel.
  const Eigen::Vector3d b(0.1, 0.3, -0.2);
  Eigen::VectorXd gradient, numericGradient;
  Eigen::MatrixXd hessian, numericHessian;
  const double kernel = model.Derivatives(b, gradient, hessian);
  EXPECT_NEAR(model.IndependenceTarget::Derivatives(b, numericGradient, numericHessian), kernel, 1e-9 * std::fabs(kernel));
  EXPECT_LT((numericGradient - gradient).norm(), 1e-4 * gradient.norm());
  EXPECT_LT((numericHessian - hessian).norm(), 1e-4 * hessian.norm());
}

TEST(NegBinom, RecoversSimulatedCoefficientsAndDispersion) {
  const Eigen::Vector3d b(0.8, 0.5, -0.4);
  const double alpha = 0.6;
  const Sample s = Simulate(2000, b, alpha, 37);
  NegBinom model(Gibbs(1000, 200, 2));
  ASSERT_TRUE(model.Sample(s.y, s.X, s.exposure, Prior(3, 1e-3), 1.0, 0.1, EventDispatcher(), nullptr));
  Eigen::Vector4d truth;
  truth << b, alpha;
  // Recorded: b, then alpha itself (not its log).
  ExpectRecovered(Pooled(model), truth);
  EXPECT_GT(model.acceptance, 0.6);
  EXPECT_TRUE(std::isfinite(model.logML) && std::isfinite(model.logML_CJ));
  EXPECT_NEAR(model.logML, model.logML_CJ, 0.3);
}

// The block log-likelihood, summed over any partition of the observations, is the sum of the log
// probabilities of the counts, for small and large counts (the Gamma ratio's two forms) and for
// dispersions from nearly Poisson to large; the analytic derivatives match differences of it.
TEST(NegBinom, LogLikelihoodIsTheSumOfLogProbabilities) {
  RandomEngine rng;
  rng.Seed(5);
  const int n = 400;
  Eigen::MatrixXd X(n, 2);
  Eigen::VectorXd y(n), exposure(n);
  for (int i = 0; i < n; ++i) {
    X.row(i) << 1.0, rng.Normal();
    exposure(i) = 0.5 + rng.Uniform();
    y(i) = dist::PoissonDraw(rng, std::exp(2.5 + X(i, 1)));  // counts from 0 to a few hundred
  }
  NegBinom model(Gibbs(20, 0, 1));
  ASSERT_TRUE(model.Sample(y, X, exposure, Prior(2, 1e-3), 1.0, 0.1, EventDispatcher(), nullptr));
  for (double logAlpha : {-14.0, -3.0, -2.0, 0.0, 2.5}) {  // r = 1/alpha from 1.2e6 to 0.08
    const Eigen::Vector3d theta(2.4, 0.9, logAlpha);
    const double r = std::exp(-logAlpha);
    double expected = 0.0;
    for (int i = 0; i < n; ++i) {
      const double mu = exposure(i) * std::exp(theta(0) + theta(1) * X(i, 1));
      expected += std::log(dist::NegativeBinomialPdf(y(i), r, r / (r + mu)));
    }
    IndependenceTarget::Workspace workspace{Eigen::ArrayXd(n), Eigen::ArrayXd(n), Eigen::ArrayXd(n)};
    double blocks = 0.0;
    for (int first : {0, 57, 200, 333}) {
      const int end = first == 333 ? n : first == 0 ? 57 : first == 57 ? 200 : 333;
      blocks += model.BlockLogLikelihood(theta, first, end, workspace);
    }
    EXPECT_NEAR(blocks, expected, 1e-7 * std::fabs(expected)) << "log alpha " << logAlpha;
    if (logAlpha < -10.0) continue;  // where the kernel is flat in log alpha, differences say little
    // The analytic derivatives agree with the sampler's central differences of the kernel.
    Eigen::VectorXd gradient, numericGradient;
    Eigen::MatrixXd hessian, numericHessian;
    const double kernel = model.Derivatives(theta, gradient, hessian);
    EXPECT_NEAR(model.IndependenceTarget::Derivatives(theta, numericGradient, numericHessian), kernel,
                1e-9 * std::fabs(kernel));
    EXPECT_LT((numericGradient - gradient).norm(), 1e-4 * gradient.norm()) << "log alpha " << logAlpha;
    EXPECT_LT((numericHessian - hessian).norm(), 1e-4 * hessian.norm()) << "log alpha " << logAlpha;
    EXPECT_NEAR(numericHessian(2, 2), hessian(2, 2), 1e-4 * std::fabs(hessian(2, 2))) << "log alpha " << logAlpha;
  }
  EXPECT_NEAR(LogGammaRatio(40.0, 0.3), std::lgamma(40.3) - std::lgamma(0.3), 1e-10);
  EXPECT_NEAR(LogGammaRatio(500.0, 1e7), std::lgamma(500.0 + 1e7) - std::lgamma(1e7), 1e-6);
}

// One coefficient, the intercept, with an exposure: the posterior is exp(sum y b - e^b sum t) times
// the Normal prior, up to constants, so its moments and the marginal likelihood follow by
// quadrature on a fine grid.
TEST(Poisson, InterceptModelAgreesWithQuadrature) {
  const Sample full = Simulate(200, Eigen::Vector3d(0.4, 0.0, 0.0), 0.0, 11);
  const Eigen::MatrixXd X = full.X.leftCols(1);
  const double precision = 0.5;
  double constant = 0.0;  // sum of y log t - log y!
  for (Eigen::Index i = 0; i < full.y.size(); ++i) constant += full.y(i) * std::log(full.exposure(i)) - std::lgamma(full.y(i) + 1.0);
  const double ySum = full.y.sum(), tSum = full.exposure.sum();
  const int steps = 4000;
  const double lo = -0.5, hi = 1.3, h = (hi - lo) / steps;
  Eigen::VectorXd logKernel(steps + 1), grid(steps + 1);
  for (int i = 0; i <= steps; ++i) {
    const double b = lo + i * h;
    grid(i) = b;
    logKernel(i) = constant + ySum * b - std::exp(b) * tSum + 0.5 * std::log(precision / (2.0 * M_PI)) -
                   0.5 * precision * b * b;
  }
  const double top = logKernel.maxCoeff();
  const Eigen::ArrayXd w = (logKernel.array() - top).exp();
  const double mass = w.sum() * h;
  const double mean = (w * grid.array()).sum() * h / mass;
  const double sd = std::sqrt((w * (grid.array() - mean).square()).sum() * h / mass);

  Poisson model(Gibbs(6000, 200, 1));
  ASSERT_TRUE(model.Sample(full.y, X, full.exposure, Prior(1, precision), EventDispatcher(), nullptr));
  const Eigen::VectorXd draws = Pooled(model).col(0);
  const double drawMean = draws.mean();
  const double drawSd = std::sqrt((draws.array() - drawMean).square().sum() / static_cast<double>(draws.size() - 1));
  EXPECT_NEAR(drawMean, mean, 0.08 * sd);
  EXPECT_NEAR(drawSd, sd, 0.06 * sd);
  EXPECT_NEAR(model.logML_CJ, top + std::log(mass), 0.05);
  EXPECT_NEAR(model.logML, top + std::log(mass), 0.1);
}
