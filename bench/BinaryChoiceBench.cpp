// Speed of the binary choice samplers on the anchors' design: 10,000 observations, 10 regressors
// (the constant and nine standard normal variables), 10,000 burn-in and 20,000 draws, one chain.
// Prints the time, the smallest effective sample size over the coefficients and effective draws
// per second, for probit and logit.
#include <chrono>
#include <cstdio>

#include "EventDispatcher.h"
#include "Logit.h"
#include "McmcDiagnostics.h"
#include "Probit.h"
#include "RandomEngine.h"

namespace {

constexpr int kObservations = 10000;
constexpr int kRegressors = 10;

template <class Sampler>
void Run(const char* name, const Eigen::VectorXd& y, const Eigen::MatrixXd& X) {
  Eigen::VectorXd gibbs(5);
  gibbs << 20000, 10000, 1, 1, 42;
  const LinearPrior prior =
      LinearPrior::Combine(Eigen::VectorXd::Zero(kRegressors), Eigen::MatrixXd::Identity(kRegressors, kRegressors) * 1e-3,
                           Eigen::MatrixXd(0, kRegressors), Eigen::VectorXd(0), Eigen::MatrixXd(0, 0));
  Sampler sampler(gibbs);
  const auto start = std::chrono::steady_clock::now();
  sampler.Sample(y, X, prior, EventDispatcher(), nullptr);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const double ess = numerics::EffectiveSampleSize(sampler.Draws()).minCoeff();
  std::printf("| %s | %.2f | %.0f | %.0f |\n", name, seconds, ess, ess / seconds);
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
  const Eigen::VectorXd b = Eigen::VectorXd::LinSpaced(kRegressors, 0.5, -0.5);
  Eigen::VectorXd probitY(kObservations), logitY(kObservations);
  for (int i = 0; i < kObservations; ++i) {
    const double index = X.row(i).dot(b);
    probitY(i) = index + rng.Normal() > 0.0 ? 1.0 : 0.0;
    const double u = rng.Uniform();
    logitY(i) = index - std::log(1.0 / u - 1.0) > 0.0 ? 1.0 : 0.0;
  }
  std::printf("| model | seconds | min ESS | ESS/s |\n|---|---|---|---|\n");
  Run<Probit>("probit", probitY, X);
  Run<Logit>("logit", logitY, X);
  return 0;
}
