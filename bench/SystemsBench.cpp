// Speed of the system sampler on the anchors' design: seemingly unrelated regressions of 3
// equations, 5,000 observations, 5 regressors each (a constant and four standard normal
// variables of the equation's own), correlated errors, 10,000 burn-in and 20,000 draws, one chain.
// Prints the time, the smallest effective sample size over the coefficients and the error
// covariance, and effective draws per second; with R and bayesm installed, bayesm's SUR sampler
// on the same data in the same run and the ratio of effective draws per second.
#include <chrono>
#include <cstdio>

#include "EventDispatcher.h"
#include "McmcDiagnostics.h"
#include "PeerScript.h"
#include "RandomEngine.h"
#include "SystemRegression.h"

namespace {

constexpr int kObservations = 5000;
constexpr int kEquations = 3;
constexpr int kRegressors = 5;

}  // namespace

int main(int, char** argv) {
  RandomEngine rng;
  rng.Seed(2025);
  const int K = kEquations * kRegressors;
  Eigen::MatrixXd X(kObservations, K), Y(kObservations, kEquations);
  Eigen::Matrix3d sigma;
  sigma << 1.0, 0.5, 0.2, 0.5, 1.5, 0.4, 0.2, 0.4, 2.0;
  const Eigen::Matrix3d L = sigma.llt().matrixL();
  std::vector<std::vector<Eigen::Index>> columns(kEquations);
  for (int j = 0; j < kEquations; ++j) {
    for (int r = 0; r < kRegressors; ++r) columns[static_cast<std::size_t>(j)].push_back(j * kRegressors + r);
  }
  for (int i = 0; i < kObservations; ++i) {
    const Eigen::Vector3d e = L * Eigen::Vector3d(rng.Normal(), rng.Normal(), rng.Normal());
    for (int j = 0; j < kEquations; ++j) {
      double y = e(j);
      for (int r = 0; r < kRegressors; ++r) {
        X(i, j * kRegressors + r) = r == 0 ? 1.0 : rng.Normal();
        y += X(i, j * kRegressors + r) * (0.5 - 0.2 * r + 0.1 * j);
      }
      Y(i, j) = y;
    }
  }
  Eigen::VectorXd gibbs(5);
  gibbs << 20000, 10000, 1, 1, 42;
  SystemPriors priors;
  priors.coefficients = LinearPrior::Combine(Eigen::VectorXd::Zero(K), Eigen::MatrixXd::Identity(K, K) * 1e-3,
                                             Eigen::MatrixXd(0, K), Eigen::VectorXd(0), Eigen::MatrixXd(0, 0));
  priors.S = 1e-3 * Eigen::MatrixXd::Identity(kEquations, kEquations);
  priors.nu = kEquations + 1;
  std::printf("| model | seconds | min ESS | ESS/s |\n|---|---|---|---|\n");
  const auto start = std::chrono::steady_clock::now();
  const SystemStatistics stats(X, columns, Y);
  SystemRegression sur(gibbs);
  sur.Sample(stats, priors, EventDispatcher(), nullptr);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const double ess = numerics::EffectiveSampleSize(sur.Draws()).minCoeff();
  std::printf("| sur | %.2f | %.0f | %.0f |\n", seconds, ess, ess / seconds);
  std::fflush(stdout);
  // The peer reads y1 as "y", then y2, y3 and the regressors as the other columns.
  Eigen::MatrixXd rest(kObservations, kEquations - 1 + K);
  rest << Y.rightCols(kEquations - 1), X;
  double peerSeconds = 0.0, peerEss = 0.0;
  if (RunPeerScript(argv[0], "systems.R", Y.col(0), rest, std::to_string(kRegressors), peerSeconds, peerEss)) {
    std::printf("| bayesm rsurGibbs | %.2f | %.0f | %.0f | Tavix/bayesm ESS/s: %.1f |\n", peerSeconds, peerEss,
                peerEss / peerSeconds, (ess / seconds) / (peerEss / peerSeconds));
  } else {
    std::printf("(R with bayesm not found: no peer figures)\n");
  }
  return 0;
}
