// Speed of the linear model's sampler: 10 regressors, 10,000 burn-in and 20,000 draws, on 10,000
// and 100,000 simulated observations; with R and MCMCpack installed, the same model on the same
// data through bench/models.R in the same run, compared by time and effective draws per second.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "EventDispatcher.h"
#include "LM.h"
#include "McmcDiagnostics.h"
#include "PeerScript.h"
#include "RandomEngine.h"

namespace {

constexpr int kRegressors = 10;

struct Data {
  Eigen::VectorXd y;
  Eigen::MatrixXd X;
};

Data Simulate(int n) {
  RandomEngine rng;
  rng.Seed(2024);
  Data d;
  d.X.resize(n, kRegressors);
  d.X.col(0).setOnes();
  for (int i = 0; i < n; ++i) {
    for (int j = 1; j < kRegressors; ++j) d.X(i, j) = rng.Normal();
  }
  Eigen::VectorXd b = Eigen::VectorXd::LinSpaced(kRegressors, 1.0, -1.0);
  d.y = d.X * b;
  for (int i = 0; i < n; ++i) d.y(i) += 2.0 * rng.Normal();
  return d;
}

}  // namespace

// Usage: tavix_models_bench [observations...] (default 10000 100000).
int main(int argc, char** argv) {
  std::vector<int> sizes = {10000, 100000};
  if (argc > 1) {
    sizes.clear();
    for (int i = 1; i < argc; ++i) sizes.push_back(std::atoi(argv[i]));
  }
  std::printf("| observations | Tavix lm (s) | min ESS | ESS/s | MCMCpack (s) | min ESS | ESS/s | time ratio | ESS/s ratio |\n");
  std::printf("|---|---|---|---|---|---|---|---|---|\n");
  for (int n : sizes) {
    const Data d = Simulate(n);
    Eigen::VectorXd gibbs(5);
    gibbs << 20000, 10000, 1, 1, 42;
    const LinearPrior prior = LinearPrior::Combine(
        Eigen::VectorXd::Zero(kRegressors), Eigen::MatrixXd::Identity(kRegressors, kRegressors) * 0.001,
        Eigen::MatrixXd(0, kRegressors), Eigen::VectorXd(0), Eigen::MatrixXd(0, 0));
    LM lm(gibbs);
    const auto start = std::chrono::steady_clock::now();
    lm.Sample(d.y, d.X, prior, 0.001, 0.001, EventDispatcher(), nullptr);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const double ess = numerics::EffectiveSampleSize(lm.Draws()).head(kRegressors).minCoeff();
    std::printf("| %d | %.3f | %.0f | %.0f |", n, seconds, ess, ess / seconds);
    double rSeconds = 0.0, rEss = 0.0;
    if (RunPeerScript(argv[0], "models.R", d.y, d.X, "", rSeconds, rEss)) {
      std::printf(" %.2f | %.0f | %.0f | %.1f | %.1f |\n", rSeconds, rEss, rEss / rSeconds,
                  rSeconds / seconds, (ess / seconds) / (rEss / rSeconds));
    } else {
      std::printf(" - | - | - | - | - |\n");
    }
    std::fflush(stdout);
  }
  return 0;
}
