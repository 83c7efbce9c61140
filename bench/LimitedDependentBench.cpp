// Speed of the tobit sampler on the anchors' design: 10,000 observations, 10 regressors (the
// constant and nine standard normal variables), about a third censored at 0, 10,000 burn-in and
// 20,000 draws, one chain. Prints the time, the smallest effective sample size over the
// coefficients and the precision, and effective draws per second; with R and MCMCpack installed,
// MCMCpack's tobit on the same data in the same run and the ratio of effective draws per second.
// Then the selection model (MCMCpack has none) on the same regressors: about 60% of the outcomes
// observed, rho = 0.5, the last regressor only in the selection equation.
#include <chrono>
#include <cmath>
#include <cstdio>
#include <limits>

#include "EventDispatcher.h"
#include "McmcDiagnostics.h"
#include "PeerScript.h"
#include "RandomEngine.h"
#include "TobitI.h"
#include "TobitII.h"

namespace {

constexpr int kObservations = 10000;
constexpr int kRegressors = 10;

}  // namespace

int main(int, char** argv) {
  RandomEngine rng;
  rng.Seed(2024);
  Eigen::MatrixXd X(kObservations, kRegressors);
  X.col(0).setOnes();
  for (int i = 0; i < kObservations; ++i) {
    for (int j = 1; j < kRegressors; ++j) X(i, j) = rng.Normal();
  }
  Eigen::VectorXd b = Eigen::VectorXd::LinSpaced(kRegressors, 0.5, -0.5);
  b(0) = 0.6;
  Eigen::VectorXd y(kObservations);
  int censored = 0;
  for (int i = 0; i < kObservations; ++i) {
    y(i) = std::max(0.0, X.row(i).dot(b) + 1.5 * rng.Normal());
    censored += y(i) == 0.0;
  }
  Eigen::VectorXd gibbs(5);
  gibbs << 20000, 10000, 1, 1, 42;
  const LinearPrior prior =
      LinearPrior::Combine(Eigen::VectorXd::Zero(kRegressors), Eigen::MatrixXd::Identity(kRegressors, kRegressors) * 1e-3,
                           Eigen::MatrixXd(0, kRegressors), Eigen::VectorXd(0), Eigen::MatrixXd(0, 0));
  std::printf("%d of %d observations censored at 0\n\n| model | seconds | min ESS | ESS/s |\n|---|---|---|---|\n", censored,
              kObservations);
  TobitI tobit(gibbs);
  const auto start = std::chrono::steady_clock::now();
  tobit.Sample(y, X, 0.0, std::numeric_limits<double>::infinity(), prior, 0.001, 0.001, false, EventDispatcher(), nullptr);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const double ess = numerics::EffectiveSampleSize(tobit.Draws()).minCoeff();
  std::printf("| tobitI | %.2f | %.0f | %.0f |\n", seconds, ess, ess / seconds);
  std::fflush(stdout);
  double peerSeconds = 0.0, peerEss = 0.0;
  if (RunPeerScript(argv[0], "limited_dependent.R", y, X, "tobit", peerSeconds, peerEss)) {
    std::printf("| MCMCpack tobit | %.2f | %.0f | %.0f | Tavix/MCMCpack ESS/s: %.1f |\n", peerSeconds, peerEss,
                peerEss / peerSeconds, (ess / seconds) / (peerEss / peerSeconds));
  }

  // The selection model: y observed where z'g + u > 0, Corr(e, u) = 0.5, Var(e) = 1.5^2.
  const Eigen::MatrixXd Xo = X.leftCols(kRegressors - 1);
  Eigen::VectorXd g = Eigen::VectorXd::LinSpaced(kRegressors, -0.4, 0.4);
  g(0) = 0.3;
  Eigen::VectorXd outcome(kObservations), selected(kObservations);
  for (int i = 0; i < kObservations; ++i) {
    const double u = rng.Normal();
    selected(i) = X.row(i).dot(g) + u > 0.0 ? 1.0 : 0.0;
    outcome(i) = selected(i) > 0.5 ? Xo.row(i).dot(b.head(kRegressors - 1)) + 1.5 * (0.5 * u + std::sqrt(0.75) * rng.Normal())
                                   : std::numeric_limits<double>::quiet_NaN();
  }
  TobitII::Priors priors;
  priors.coefficients = LinearPrior::Combine(Eigen::VectorXd::Zero(2 * kRegressors),
                                             Eigen::MatrixXd::Identity(2 * kRegressors, 2 * kRegressors) * 1e-3,
                                             Eigen::MatrixXd(0, 2 * kRegressors), Eigen::VectorXd(0), Eigen::MatrixXd(0, 0));
  priors.a = priors.b = 0.001;
  TobitII selection(gibbs);
  const auto selectionStart = std::chrono::steady_clock::now();
  selection.Sample(outcome, selected, Xo, X, priors, false, EventDispatcher(), nullptr);
  const double selectionSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - selectionStart).count();
  const Eigen::VectorXd selectionEss = numerics::EffectiveSampleSize(selection.Draws());
  std::printf("| tobitII (%.0f%% observed) | %.2f | %.0f | %.0f | rho: ESS %.0f |\n", 100.0 * selected.mean(), selectionSeconds,
              selectionEss.minCoeff(), selectionEss.minCoeff() / selectionSeconds, selectionEss(selectionEss.size() - 1));
  return 0;
}
