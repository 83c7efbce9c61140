// Speed of the stochastic frontier samplers: 10,000 observations, 10 regressors (the constant and
// nine standard normal variables), noise sd 0.2, half-normal (sd 0.4) and exponential (mean 0.25)
// inefficiency, 10,000 burn-in and 20,000 draws, one chain. Prints the time, the smallest
// effective sample size over the parameters and effective draws per second.
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "EventDispatcher.h"
#include "McmcDiagnostics.h"
#include "RandomEngine.h"
#include "SF_EXP.h"
#include "SF_HNORM.h"

namespace {

constexpr int kObservations = 10000;
constexpr int kRegressors = 10;

template <class Model>
void Run(const char* name, const Eigen::VectorXd& y, const Eigen::MatrixXd& X) {
  Eigen::VectorXd gibbs(5);
  gibbs << 20000, 10000, 1, 1, 42;
  if (std::getenv("TAVIX_BENCH_SHORT")) gibbs << 2000, 1000, 1, 1, 42;
  StochasticFrontier::Priors priors;
  priors.coefficients =
      LinearPrior::Combine(Eigen::VectorXd::Zero(kRegressors), Eigen::MatrixXd::Identity(kRegressors, kRegressors) * 1e-3,
                           Eigen::MatrixXd(0, kRegressors), Eigen::VectorXd(0), Eigen::MatrixXd(0, 0));
  InefficiencyPrior prior;
  prior.scaleShape = 1.0;
  prior.scaleRate = 0.1;
  Model model(gibbs, prior);
  const auto start = std::chrono::steady_clock::now();
  model.Sample(y, X, {}, false, priors, false, EventDispatcher(), nullptr);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const Eigen::VectorXd ess = numerics::EffectiveSampleSize(model.Draws());
  std::printf("| %s | %.2f | %.0f | %.0f | slopes: min ESS %.0f |\n", name, seconds, ess.minCoeff(), ess.minCoeff() / seconds,
              ess.segment(1, kRegressors - 1).minCoeff());
  std::fflush(stdout);
}

}  // namespace

int main() {
  RandomEngine rng;
  rng.Seed(2024);
  Eigen::MatrixXd X(kObservations, kRegressors);
  X.col(0).setOnes();
  for (int i = 0; i < kObservations; ++i) {
    for (int j = 1; j < kRegressors; ++j) X(i, j) = rng.Normal();
  }
  Eigen::VectorXd b = Eigen::VectorXd::LinSpaced(kRegressors, 0.5, -0.5);
  b(0) = 1.0;
  Eigen::VectorXd yHalfNormal(kObservations), yExponential(kObservations);
  for (int i = 0; i < kObservations; ++i) {
    const double frontier = X.row(i).dot(b) + 0.2 * rng.Normal();
    yHalfNormal(i) = frontier - 0.4 * std::fabs(rng.Normal());
    yExponential(i) = frontier + 0.25 * std::log1p(-rng.Uniform());
  }
  std::printf("| model | seconds | min ESS | ESS/s | |\n|---|---|---|---|---|\n");
  Run<SF_HNORM>("sf, hnorm", yHalfNormal, X);
  Run<SF_EXP>("sf, exp", yExponential, X);
  return 0;
}
