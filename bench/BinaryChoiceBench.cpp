// Speed of the binary choice samplers on the anchors' design: 10,000 observations, 10 regressors
// (the constant and nine standard normal variables), 10,000 burn-in and 20,000 draws, one chain.
// Prints the time, the smallest effective sample size over the coefficients and effective draws
// per second, for probit and logit, and with R and MCMCpack installed MCMCpack's samplers on the
// same data in the same run (the ratio of effective draws per second). Then the random-effects models on 500 groups of 10 against the
// pooled models on the same 5,000 observations (goal: at most three times the pooled time).
#include <chrono>
#include <cstdio>

#include <vector>

#include "BinaryRandomEffects.h"
#include "EventDispatcher.h"
#include "Logit.h"
#include "McmcDiagnostics.h"
#include "PeerScript.h"
#include "Probit.h"
#include "RandomEngine.h"

namespace {

constexpr int kObservations = 10000;
constexpr int kRegressors = 10;

Eigen::VectorXd Gibbs() {
  Eigen::VectorXd gibbs(5);
  gibbs << 20000, 10000, 1, 1, 42;
  return gibbs;
}

LinearPrior Prior() {
  return LinearPrior::Combine(Eigen::VectorXd::Zero(kRegressors), Eigen::MatrixXd::Identity(kRegressors, kRegressors) * 1e-3,
                              Eigen::MatrixXd(0, kRegressors), Eigen::VectorXd(0), Eigen::MatrixXd(0, 0));
}

struct Timing {
  double seconds, essPerSecond;
};

// Prints a row of the table.
Timing Report(const char* name, double seconds, const Estimator& sampler) {
  const double ess = numerics::EffectiveSampleSize(sampler.Draws()).minCoeff();
  std::printf("| %s | %.2f | %.0f | %.0f |\n", name, seconds, ess, ess / seconds);
  std::fflush(stdout);
  return {seconds, ess / seconds};
}

template <class Sampler>
Timing Run(const char* name, const Eigen::VectorXd& y, const Eigen::MatrixXd& X) {
  Sampler sampler(Gibbs());
  const auto start = std::chrono::steady_clock::now();
  sampler.Sample(y, X, Prior(), EventDispatcher(), nullptr);
  return Report(name, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), sampler);
}

// The same model through MCMCpack, with the ratio of Tavix's effective draws per second to its.
void RunPeer(const char* program, const char* model, const Eigen::VectorXd& y, const Eigen::MatrixXd& X,
             double tavixEssPerSecond) {
  double seconds = 0.0, ess = 0.0;
  if (!RunPeerScript(program, "binary_choice.R", y, X, model, seconds, ess)) return;
  std::printf("| MCMCpack %s | %.2f | %.0f | %.0f | Tavix/MCMCpack ESS/s: %.1f |\n", model, seconds, ess, ess / seconds,
              tavixEssPerSecond / (ess / seconds));
}

Timing RunRandomEffects(const char* name, BinaryLink link, const Eigen::VectorXd& y, const Eigen::MatrixXd& X,
                        const std::vector<int>& groups) {
  BinaryRandomEffects sampler(Gibbs(), link);
  const auto start = std::chrono::steady_clock::now();
  sampler.Sample(y, X, groups, Prior(), 0.001, 0.001, false, EventDispatcher(), nullptr);
  return Report(name, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), sampler);
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
  const Eigen::VectorXd b = Eigen::VectorXd::LinSpaced(kRegressors, 0.5, -0.5);
  Eigen::VectorXd probitY(kObservations), logitY(kObservations);
  for (int i = 0; i < kObservations; ++i) {
    const double index = X.row(i).dot(b);
    probitY(i) = index + rng.Normal() > 0.0 ? 1.0 : 0.0;
    const double u = rng.Uniform();
    logitY(i) = index - std::log(1.0 / u - 1.0) > 0.0 ? 1.0 : 0.0;
  }
  std::printf("| model | seconds | min ESS | ESS/s |\n|---|---|---|---|\n");
  RunPeer(argv[0], "probit", probitY, X, Run<Probit>("probit", probitY, X).essPerSecond);
  RunPeer(argv[0], "logit", logitY, X, Run<Logit>("logit", logitY, X).essPerSecond);

  // 500 groups of 10 with effects of variance 0.5, against the pooled models on the same rows.
  constexpr int kGroups = 500, kPeriods = 10, kPanel = kGroups * kPeriods;
  const Eigen::MatrixXd panelX = X.topRows(kPanel);
  std::vector<int> groups;
  Eigen::VectorXd panelProbitY(kPanel), panelLogitY(kPanel);
  for (int g = 0; g < kGroups; ++g) {
    const double effect = std::sqrt(0.5) * rng.Normal();
    for (int t = 0; t < kPeriods; ++t) {
      const int i = g * kPeriods + t;
      groups.push_back(g);
      const double index = panelX.row(i).dot(b) + effect;
      panelProbitY(i) = index + rng.Normal() > 0.0 ? 1.0 : 0.0;
      const double u = rng.Uniform();
      panelLogitY(i) = index - std::log(1.0 / u - 1.0) > 0.0 ? 1.0 : 0.0;
    }
  }
  std::printf("\n| model (5,000 observations) | seconds | min ESS | ESS/s |\n|---|---|---|---|\n");
  const double probitPooled = Run<Probit>("probit", panelProbitY, panelX).seconds;
  const double probitRe = RunRandomEffects("probit_re, 500 groups", BinaryLink::Probit, panelProbitY, panelX, groups).seconds;
  const double logitPooled = Run<Logit>("logit", panelLogitY, panelX).seconds;
  const double logitRe = RunRandomEffects("logit_re, 500 groups", BinaryLink::Logit, panelLogitY, panelX, groups).seconds;
  std::printf("\nrandom effects over pooled time: probit %.2f, logit %.2f (goal: at most 3)\n", probitRe / probitPooled,
              logitRe / logitPooled);
  return 0;
}
