// Speed of the samplers of choices among several alternatives and of several binary outcomes:
// 5,000 choosers, 4 alternatives (or 4 outcomes), 5 regressors (the constant and four standard
// normal variables), 10,000 burn-in and 20,000 draws, one chain. Prints the time, the smallest
// effective sample size over the parameters and effective draws per second; with R installed,
// MCMCpack's multinomial logit and bayesm's multinomial and multivariate probits on the same data
// in the same run. For the multinomial logit it also times the work of a Polya-Gamma sweep (one
// weight per chooser and alternative, then each alternative's coefficients from their Normal
// conditional): sweeps per second bound that sampler's effective draws per second from above.
#include <chrono>
#include <cstdio>
#include <vector>

#include "EventDispatcher.h"
#include "McmcDiagnostics.h"
#include "MultinomialLogit.h"
#include "MultinomialProbit.h"
#include "MultivariateProbit.h"
#include "PeerScript.h"
#include "PolyaGamma.h"
#include "RandomEngine.h"

namespace {

constexpr int kChoosers = 5000, kAlternatives = 4, kRegressors = 5;

Eigen::VectorXd Gibbs() {
  Eigen::VectorXd gibbs(5);
  gibbs << 20000, 10000, 1, 1, 42;
  return gibbs;
}

LinearPrior Prior(Eigen::Index k) {
  return LinearPrior::Combine(Eigen::VectorXd::Zero(k), Eigen::MatrixXd::Identity(k, k) * 1e-3, Eigen::MatrixXd(0, k),
                              Eigen::VectorXd(0), Eigen::MatrixXd(0, 0));
}

double Seconds(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Report(const char* name, double seconds, const Estimator& sampler) {
  const double ess = numerics::EffectiveSampleSize(sampler.Draws()).minCoeff();
  std::printf("| %s | %.2f | %.0f | %.0f |\n", name, seconds, ess, ess / seconds);
  std::fflush(stdout);
  return ess / seconds;
}

void RunPeer(const char* program, const char* model, const Eigen::VectorXd& y, const Eigen::MatrixXd& X, double tavix) {
  double seconds = 0.0, ess = 0.0;
  if (!RunPeerScript(program, "multinomial_choice.R", y, X, model, seconds, ess)) return;
  std::printf("| R %s | %.2f | %.0f | %.0f | Tavix/R ESS/s: %.1f |\n", model, seconds, ess, ess / seconds,
              tavix / (ess / seconds));
  std::fflush(stdout);
}

// The work of `sweeps` Polya-Gamma sweeps of the multinomial logit, without bookkeeping.
double PolyaGammaSweepsPerSecond(const Eigen::VectorXi& choice, const Eigen::MatrixXd& X, int sweeps) {
  RandomEngine rng;
  rng.Seed(5);
  const Eigen::Index n = X.rows(), k = X.cols(), others = kAlternatives - 1;
  Eigen::MatrixXd B = Eigen::MatrixXd::Zero(k, others), eta(n, others);
  Eigen::VectorXd w(n), kappa(n), rhs(k), z(k);
  Eigen::MatrixXd precision(k, k);
  const auto start = std::chrono::steady_clock::now();
  for (int s = 0; s < sweeps; ++s) {
    for (Eigen::Index j = 0; j < others; ++j) {
      eta.noalias() = X * B;
      for (Eigen::Index i = 0; i < n; ++i) {
        // C_ij = log(1 + sum over the other alternatives of e^eta), the binary logit's offset.
        double rest = 1.0;
        for (Eigen::Index l = 0; l < others; ++l) {
          if (l != j) rest += std::exp(eta(i, l));
        }
        const double t = eta(i, j) - std::log(rest);
        w(i) = dist::PolyaGammaDraw(rng, t);
        kappa(i) = (choice(i) == j + 1 ? 0.5 : -0.5) + w(i) * std::log(rest);
      }
      precision.noalias() = X.transpose() * (X.array().colwise() * w.array()).matrix();
      precision.diagonal().array() += 1e-3;
      rhs.noalias() = X.transpose() * kappa;
      const Eigen::LLT<Eigen::MatrixXd> factor(precision);
      for (Eigen::Index r = 0; r < k; ++r) z(r) = rng.Normal();
      B.col(j) = factor.solve(rhs) + factor.matrixU().solve(z);
    }
  }
  return sweeps / Seconds(start);
}

}  // namespace

int main(int, char** argv) {
  RandomEngine rng;
  rng.Seed(2026);
  Eigen::MatrixXd X(kChoosers, kRegressors);
  X.col(0).setOnes();
  for (int i = 0; i < kChoosers; ++i) {
    for (int j = 1; j < kRegressors; ++j) X(i, j) = rng.Normal();
  }
  Eigen::MatrixXd B(kRegressors, kAlternatives - 1);
  for (int j = 0; j < kAlternatives - 1; ++j) B.col(j) = Eigen::VectorXd::LinSpaced(kRegressors, 0.4 - 0.2 * j, -0.4 + 0.3 * j);
  // Logit choices (Gumbel utilities), probit choices (Normal utility differences, Sigma = I + 0.5),
  // and four binary outcomes with correlation 0.4.
  Eigen::VectorXi logitChoice(kChoosers), probitChoice(kChoosers);
  Eigen::MatrixXd outcomes(kChoosers, kAlternatives);
  Eigen::MatrixXd sigma = Eigen::MatrixXd::Constant(kAlternatives - 1, kAlternatives - 1, 0.5);
  sigma.diagonal().setOnes();
  const Eigen::MatrixXd L = sigma.llt().matrixL();
  Eigen::MatrixXd R = Eigen::MatrixXd::Constant(kAlternatives, kAlternatives, 0.4);
  R.diagonal().setOnes();
  const Eigen::MatrixXd LR = R.llt().matrixL();
  for (int i = 0; i < kChoosers; ++i) {
    const Eigen::VectorXd index = B.transpose() * X.row(i).transpose();
    double best = -std::log(-std::log(rng.Uniform()));
    logitChoice(i) = 0;
    for (int j = 0; j < kAlternatives - 1; ++j) {
      const double u = index(j) - std::log(-std::log(rng.Uniform()));
      if (u > best) {
        best = u;
        logitChoice(i) = j + 1;
      }
    }
    Eigen::VectorXd e(kAlternatives - 1);
    for (auto& v : e) v = rng.Normal();
    const Eigen::VectorXd w = index + L * e;
    Eigen::Index top = 0;
    probitChoice(i) = w.maxCoeff(&top) < 0.0 ? 0 : static_cast<int>(top) + 1;
    Eigen::VectorXd f(kAlternatives);
    for (auto& v : f) v = rng.Normal();
    const Eigen::VectorXd latent = (LR * f).array() + X.row(i).dot(B.col(0));
    for (int j = 0; j < kAlternatives; ++j) outcomes(i, j) = latent(j) > 0.0 ? 1.0 : 0.0;
  }

  std::printf("| model | seconds | min ESS | ESS/s |\n|---|---|---|---|\n");
  {
    MNLogit sampler(Gibbs());
    const auto start = std::chrono::steady_clock::now();
    sampler.Sample(logitChoice, kAlternatives, X, Prior(kRegressors * (kAlternatives - 1)), EventDispatcher(), nullptr);
    const double essPerSecond = Report("mnlogit", Seconds(start), sampler);
    std::printf("| mnlogit, work of Polya-Gamma sweeps | | | at most %.0f (sweeps/s) |\n",
                PolyaGammaSweepsPerSecond(logitChoice, X, 300));
    RunPeer(argv[0], "mnl", logitChoice.cast<double>(), X, essPerSecond);
  }
  {
    MNProbit sampler(Gibbs());
    const ChooserDesign design(X, kAlternatives - 1);
    const auto start = std::chrono::steady_clock::now();
    sampler.Sample(design, probitChoice, Eigen::MatrixXd(), Prior(kRegressors * (kAlternatives - 1)), kAlternatives + 2.0,
                   Eigen::MatrixXd::Identity(kAlternatives - 1, kAlternatives - 1), EventDispatcher(), nullptr);
    RunPeer(argv[0], "mnp", probitChoice.cast<double>(), X, Report("mnprobit", Seconds(start), sampler));
  }
  {
    MVProbit sampler(Gibbs(), CorrelationStructure::Unrestricted);
    const std::vector<Eigen::MatrixXd> equations(kAlternatives, X);
    const auto start = std::chrono::steady_clock::now();
    sampler.Sample(outcomes, equations, Prior(kRegressors * kAlternatives), EventDispatcher(), nullptr);
    Eigen::MatrixXd both(kChoosers, kAlternatives + kRegressors);
    both << outcomes, X;
    RunPeer(argv[0], "mvp", Eigen::VectorXd::Zero(kChoosers), both, Report("mvprobit", Seconds(start), sampler));
  }
  return 0;
}
