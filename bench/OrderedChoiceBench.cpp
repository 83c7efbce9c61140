// Speed of the ordered-choice samplers on the anchors' design: 10,000 observations, 10 regressors
// (the constant and nine standard normal variables), five categories, 10,000 burn-in and 20,000
// draws, one chain. Prints the time, the smallest effective sample size over the coefficients and
// the free cut-points and effective draws per second for oprobit and ologit, and with R and MCMCpack
// installed MCMCpack's ordered probit on the same data in the same run (the ratio of effective
// draws per second; goal: at least 10).
#include <chrono>
#include <cmath>
#include <cstdio>

#include "EventDispatcher.h"
#include "McmcDiagnostics.h"
#include "OrderedLogit.h"
#include "OrderedProbit.h"
#include "PeerScript.h"
#include "RandomEngine.h"

namespace {

constexpr int kObservations = 10000;
constexpr int kRegressors = 10;
constexpr int kCategories = 5;

Eigen::VectorXd Gibbs() {
  Eigen::VectorXd gibbs(5);
  gibbs << 20000, 10000, 1, 1, 42;
  return gibbs;
}

LinearPrior Prior() {
  return LinearPrior::Combine(Eigen::VectorXd::Zero(kRegressors), Eigen::MatrixXd::Identity(kRegressors, kRegressors) * 1e-3,
                              Eigen::MatrixXd(0, kRegressors), Eigen::VectorXd(0), Eigen::MatrixXd(0, 0));
}

template <class Sampler>
double Run(const char* name, const Eigen::VectorXi& y, const Eigen::MatrixXd& X) {
  Sampler sampler(Gibbs());
  const auto start = std::chrono::steady_clock::now();
  sampler.Sample(y, kCategories, X, 0, Prior(), CutPointPrior{}, EventDispatcher(), nullptr);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const double ess = numerics::EffectiveSampleSize(sampler.Draws()).minCoeff();
  std::printf("| %s | %.2f | %.0f | %.0f | acceptance %.2f |\n", name, seconds, ess, ess / seconds, sampler.acceptance);
  std::fflush(stdout);
  return ess / seconds;
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
  // Cut-points 0, 0.8, 1.5, 2.5 with the constant: every category holds a good share.
  const double cuts[kCategories - 1] = {0.0, 0.8, 1.5, 2.5};
  Eigen::VectorXi probitY(kObservations), logitY(kObservations);
  auto category = [&](double latent) {
    int j = 0;
    while (j < kCategories - 1 && latent > cuts[j]) ++j;
    return j;
  };
  for (int i = 0; i < kObservations; ++i) {
    const double index = X.row(i).dot(b);
    probitY(i) = category(index + rng.Normal());
    const double u = rng.Uniform();
    logitY(i) = category(index - std::log(1.0 / u - 1.0));
  }
  std::printf("| model | seconds | min ESS | ESS/s | |\n|---|---|---|---|---|\n");
  const double probit = Run<OrderedProbit>("oprobit", probitY, X);
  double seconds = 0.0, ess = 0.0;
  if (RunPeerScript(argv[0], "ordered_choice.R", probitY.cast<double>(), X, "", seconds, ess)) {
    std::printf("| MCMCpack oprobit | %.2f | %.0f | %.0f | Tavix/MCMCpack ESS/s: %.1f |\n", seconds, ess, ess / seconds,
                probit / (ess / seconds));
    std::fflush(stdout);
  }
  Run<OrderedLogit>("ologit", logitY, X);

  // The search for the mode and the curvature there, with analytic derivatives: a run of 10 draws
  // costs little else.
  Eigen::VectorXd few(5);
  few << 10, 1, 1, 1, 42;
  OrderedProbit search(few);
  const auto start = std::chrono::steady_clock::now();
  search.Sample(probitY, kCategories, X, 0, Prior(), CutPointPrior{}, EventDispatcher(), nullptr);
  std::printf("\noprobit with 10 draws (the search for the mode and little else): %.3f s\n",
              std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  return 0;
}
