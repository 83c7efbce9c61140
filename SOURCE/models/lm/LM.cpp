// LM: the Gibbs sampler of the linear model and its marginal likelihoods.
#include "LM.h"

#include <cmath>

#include "Gamma.h"
#include "MarginalLikelihood.h"

namespace {

constexpr double kLog2Pi = 1.8378770664093454836;

class LMChain : public GibbsChain {
public:
  LMChain(const RegressionStatistics& stats, const LinearPrior& prior, double a, double b,
          double startTau)
      : m_stats(stats), m_prior(prior), m_a(a), m_b(b), m_tau(startTau),
        m_coefficients(stats.Xty().size()), m_z(stats.Xty().size()) {}

  void Sweep(RandomEngine& rng) override {
    // b | tau ~ N(A^-1 c, A^-1), A = tau X'X + P, c = tau X'y + P m.
    m_llt.compute(m_tau * m_stats.XtX() + m_prior.precision);
    DrawCanonicalNormal(m_llt, m_tau * m_stats.Xty() + m_prior.precisionTimesMean, rng, m_z,
                        m_coefficients);
    // tau | b ~ Gamma(a + n/2, b + SSE/2).
    m_tau = dist::GammaDraw(rng, m_a + 0.5 * m_stats.Observations(),
                            m_b + 0.5 * m_stats.SumOfSquares(m_coefficients));
  }

  void Record(DrawRow row) const override {
    const Eigen::Index k = m_coefficients.size();
    row.head(k) = m_coefficients.transpose();
    row(k) = m_tau;
  }

private:
  const RegressionStatistics& m_stats;
  const LinearPrior& m_prior;
  double m_a, m_b;
  double m_tau;
  Eigen::VectorXd m_coefficients, m_z;
  Eigen::LLT<Eigen::MatrixXd> m_llt;
};

}  // namespace

double LM::LogLikelihood(const Eigen::VectorXd& coefficients, double tau) const {
  return 0.5 * m_stats.Observations() * (std::log(tau) - kLog2Pi) -
         0.5 * tau * m_stats.SumOfSquares(coefficients);
}

bool LM::Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const LinearPrior& prior,
                double a, double b, const EventDispatcher& out,
                const std::atomic<bool>* interrupt) {
  m_stats = RegressionStatistics(X, y);
  m_prior = prior;
  m_a = a;
  m_b = b;

  // Chains start from the precision of the residuals at the prior-weighted least-squares fit,
  // spread by a factor between 1/4 and 4 across chains so that R-hat can reveal slow mixing.
  const Eigen::VectorXd fit = (m_stats.XtX() + m_prior.precision)
                                  .llt()
                                  .solve(m_stats.Xty() + m_prior.precisionTimesMean);
  const double baseTau = (m_stats.Observations() + 1.0) / (m_stats.SumOfSquares(fit) + 1.0);
  const long chains = Settings().chains;
  auto make = [&](int c) -> std::unique_ptr<GibbsChain> {
    const double spread = chains > 1 ? std::pow(4.0, 2.0 * c / static_cast<double>(chains - 1) - 1.0) : 1.0;
    return std::make_unique<LMChain>(m_stats, m_prior, m_a, m_b, baseTau * spread);
  };
  const Eigen::Index k = X.cols();
  if (!RunChains(make, static_cast<int>(k + 1), out, interrupt)) return false;

  Eigen::MatrixXd pooled(Settings().KeptDraws() * chains, k + 1);
  for (long c = 0; c < chains; ++c) pooled.middleRows(c * Settings().KeptDraws(), Settings().KeptDraws()) = Draws()[c];
  MarginalLikelihoods(pooled);
  return true;
}

void LM::MarginalLikelihoods(const Eigen::MatrixXd& pooled) {
  const Eigen::Index k = m_stats.Xty().size();
  const double n = m_stats.Observations();
  // Lewis & Raftery on (b, log tau): the kernel gains the Jacobian tau of the log scale.
  Eigen::MatrixXd transformed = pooled;
  transformed.col(k) = pooled.col(k).array().log();
  const Eigen::RowVectorXd centre = transformed.colwise().mean();
  const Eigen::VectorXd bBar = centre.head(k).transpose();
  const double tauBar = std::exp(centre(k));
  const double kernel = LogLikelihood(bBar, tauBar) +
                        mlik::LogNormalDensity(bBar, m_prior.mean, m_prior.precision) +
                        mlik::LogGammaDensity(tauBar, m_a, m_b) + std::log(tauBar);
  logML = mlik::LaplaceMetropolis(kernel, transformed);

  // Chib: p(y) = f(y | b*, tau*) p(b*) p(tau*) / (p(tau* | y) p(b* | tau*, y)), with
  // p(tau* | y) averaged over the draws of b and p(b* | tau*, y) Normal.
  const Eigen::VectorXd bStar = pooled.leftCols(k).colwise().mean().transpose();
  const double tauStar = pooled.col(k).mean();
  Eigen::VectorXd ordinates(pooled.rows());
  for (Eigen::Index g = 0; g < pooled.rows(); ++g) {
    const Eigen::VectorXd bg = pooled.row(g).head(k).transpose();
    ordinates(g) = mlik::LogGammaDensity(tauStar, m_a + 0.5 * n, m_b + 0.5 * m_stats.SumOfSquares(bg));
  }
  const Eigen::MatrixXd A = tauStar * m_stats.XtX() + m_prior.precision;
  const Eigen::VectorXd conditionalMean =
      A.llt().solve(tauStar * m_stats.Xty() + m_prior.precisionTimesMean);
  logML_CJ = LogLikelihood(bStar, tauStar) +
             mlik::LogNormalDensity(bStar, m_prior.mean, m_prior.precision) +
             mlik::LogGammaDensity(tauStar, m_a, m_b) - mlik::LogMeanExp(ordinates) -
             mlik::LogNormalDensity(bStar, conditionalMean, A);
}
