// Speed of the count samplers on the anchors' design: 10,000 observations, 10 regressors (the
// constant and nine standard normal variables), 10,000 burn-in and 20,000 draws, one chain. Prints
// the time, the smallest effective sample size over the coefficients and effective draws per second
// for poisson and nbinom (and the effective sample size of alpha), and with R and MCMCpack installed
// MCMCpack's samplers on the same data in the same run (the ratio of effective draws per second).
#include <chrono>
#include <cmath>
#include <cstdio>

#include "EventDispatcher.h"
#include "Gamma.h"
#include "McmcDiagnostics.h"
#include "NegBinomRegression.h"
#include "PeerScript.h"
#include "Poisson.h"
#include "PoissonRegression.h"
#include "RandomEngine.h"

namespace {

constexpr int kObservations = 10000;
constexpr int kRegressors = 10;
constexpr double kAlpha = 0.5;

Eigen::VectorXd Gibbs() {
  Eigen::VectorXd gibbs(5);
  gibbs << 20000, 10000, 1, 1, 42;
  return gibbs;
}

LinearPrior Prior() {
  return LinearPrior::Combine(Eigen::VectorXd::Zero(kRegressors), Eigen::MatrixXd::Identity(kRegressors, kRegressors) * 1e-3,
                              Eigen::MatrixXd(0, kRegressors), Eigen::VectorXd(0), Eigen::MatrixXd(0, 0));
}

// Prints a row of the table and returns the effective draws per second.
double Report(const char* name, double seconds, const Estimator& sampler, double acceptance) {
  const Eigen::VectorXd ess = numerics::EffectiveSampleSize(sampler.Draws());
  const double coefficients = ess.head(kRegressors).minCoeff();
  std::printf("| %s | %.2f | %.0f | %.0f | acceptance %.3f", name, seconds, coefficients, coefficients / seconds,
              acceptance);
  if (ess.size() > kRegressors) std::printf(", ESS of alpha %.0f, alpha %.3f", ess(kRegressors),
                                            sampler.Draws()[0].col(kRegressors).mean());
  std::printf(" |\n");
  std::fflush(stdout);
  return coefficients / seconds;
}

double Seconds(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The same model through MCMCpack, with the ratio of Tavix's effective draws per second to its.
void RunPeer(const char* program, const char* model, const Eigen::VectorXd& y, const Eigen::MatrixXd& X,
             double tavixEssPerSecond) {
  double seconds = 0.0, ess = 0.0;
  if (!RunPeerScript(program, "count_models.R", y, X, model, seconds, ess)) return;
  std::printf("| MCMCpack %s | %.2f | %.0f | %.3g | Tavix/MCMCpack ESS/s: %.1f |\n", model, seconds, ess, ess / seconds,
              tavixEssPerSecond / (ess / seconds));
}

}  // namespace

int main(int, char** argv) {
  RandomEngine rng;
  rng.Seed(2024);
  Eigen::MatrixXd X(kObservations, kRegressors);
  X.col(0).setOnes();
  for (int i = 0; i < kObservations; ++i) {
    for (int j = 1; j < kRegressors; ++j) X(i, j) = rng.Normal();
  }
  // Slopes from 0.25 to -0.25 around an intercept of 1: counts mostly from 0 to 10.
  Eigen::VectorXd b = Eigen::VectorXd::LinSpaced(kRegressors, 0.25, -0.25);
  b(0) = 1.0;
  Eigen::VectorXd poissonY(kObservations), negbinY(kObservations);
  for (int i = 0; i < kObservations; ++i) {
    const double mean = std::exp(X.row(i).dot(b));
    poissonY(i) = dist::PoissonDraw(rng, mean);
    negbinY(i) = dist::PoissonDraw(rng, mean * dist::GammaDraw(rng, 1.0 / kAlpha, 1.0 / kAlpha));
  }
  const Eigen::VectorXd noExposure;
  std::printf("| model | seconds | min ESS | ESS/s | |\n|---|---|---|---|---|\n");
  {
    Poisson sampler(Gibbs());
    const auto start = std::chrono::steady_clock::now();
    sampler.Sample(poissonY, X, noExposure, Prior(), EventDispatcher(), nullptr);
    const double essPerSecond = Report("poisson", Seconds(start), sampler, sampler.acceptance);
    RunPeer(argv[0], "poisson", poissonY, X, essPerSecond);
  }
  {
    NegBinom sampler(Gibbs());
    const auto start = std::chrono::steady_clock::now();
    sampler.Sample(negbinY, X, noExposure, Prior(), 1.0, 0.1, EventDispatcher(), nullptr);
    const double essPerSecond = Report("nbinom", Seconds(start), sampler, sampler.acceptance);
    RunPeer(argv[0], "nbinom", negbinY, X, essPerSecond);
  }
  return 0;
}
