// LM: the Gibbs sampler of the linear model and its marginal likelihoods.
#include "LM.h"

#include <cmath>

#include "Gamma.h"
#include "MarginalLikelihood.h"

namespace {

constexpr double kLog2Pi = 1.8378770664093454836;

class LMChain : public GibbsChain {
public:
  LMChain(const Eigen::MatrixXd& XtX, const Eigen::VectorXd& Xty, double yty, double n,
          const LinearPrior& prior, double a, double b, double startTau)
      : m_XtX(XtX), m_Xty(Xty), m_yty(yty), m_n(n), m_prior(prior), m_a(a), m_b(b),
        m_tau(startTau), m_coefficients(Xty.size()), m_z(Xty.size()) {}

  void Sweep(RandomEngine& rng) override {
    // b | tau ~ N(A^-1 c, A^-1), A = tau X'X + P, c = tau X'y + P m.
    m_llt.compute(m_tau * m_XtX + m_prior.precision);
    DrawCanonicalNormal(m_llt, m_tau * m_Xty + m_prior.precisionTimesMean, rng, m_z, m_coefficients);
    // tau | b ~ Gamma(a + n/2, b + SSE/2).
    const double sse = std::max(0.0, m_yty - 2.0 * m_coefficients.dot(m_Xty) +
                                         m_coefficients.dot(m_XtX * m_coefficients));
    m_tau = dist::GammaDraw(rng, m_a + 0.5 * m_n, m_b + 0.5 * sse);
  }

  void Record(DrawRow row) const override {
    const Eigen::Index k = m_coefficients.size();
    row.head(k) = m_coefficients.transpose();
    row(k) = m_tau;
  }

private:
  const Eigen::MatrixXd& m_XtX;
  const Eigen::VectorXd& m_Xty;
  double m_yty, m_n;
  const LinearPrior& m_prior;
  double m_a, m_b;
  double m_tau;
  Eigen::VectorXd m_coefficients, m_z;
  Eigen::LLT<Eigen::MatrixXd> m_llt;
};

}  // namespace

double LM::SumOfSquares(const Eigen::VectorXd& c) const {
  return std::max(0.0, m_yty - 2.0 * c.dot(m_Xty) + c.dot(m_XtX * c));
}

double LM::LogLikelihood(const Eigen::VectorXd& coefficients, double tau) const {
  return 0.5 * m_n * (std::log(tau) - kLog2Pi) - 0.5 * tau * SumOfSquares(coefficients);
}

bool LM::Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const LinearPrior& prior,
                double a, double b, const EventDispatcher& out,
                const std::atomic<bool>* interrupt) {
  m_XtX = X.transpose() * X;
  m_Xty = X.transpose() * y;
  m_yty = y.squaredNorm();
  m_n = static_cast<double>(y.size());
  m_prior = prior;
  m_a = a;
  m_b = b;

  // Chains start from the precision of the residuals at the prior-weighted least-squares fit,
  // spread by a factor between 1/4 and 4 across chains so that R-hat can reveal slow mixing.
  const Eigen::VectorXd fit = (m_XtX + m_prior.precision).llt().solve(m_Xty + m_prior.precisionTimesMean);
  const double baseTau = (m_n + 1.0) / (SumOfSquares(fit) + 1.0);
  const long chains = Settings().chains;
  auto make = [&](int c) -> std::unique_ptr<GibbsChain> {
    const double spread = chains > 1 ? std::pow(4.0, 2.0 * c / static_cast<double>(chains - 1) - 1.0) : 1.0;
    return std::make_unique<LMChain>(m_XtX, m_Xty, m_yty, m_n, m_prior, m_a, m_b, baseTau * spread);
  };
  const Eigen::Index k = X.cols();
  if (!RunChains(make, static_cast<int>(k + 1), out, interrupt)) return false;

  Eigen::MatrixXd pooled(Settings().KeptDraws() * chains, k + 1);
  for (long c = 0; c < chains; ++c) pooled.middleRows(c * Settings().KeptDraws(), Settings().KeptDraws()) = Draws()[c];
  MarginalLikelihoods(pooled);
  return true;
}

void LM::MarginalLikelihoods(const Eigen::MatrixXd& pooled) {
  const Eigen::Index k = m_Xty.size();
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
    ordinates(g) = mlik::LogGammaDensity(tauStar, m_a + 0.5 * m_n, m_b + 0.5 * SumOfSquares(bg));
  }
  const Eigen::MatrixXd A = tauStar * m_XtX + m_prior.precision;
  const Eigen::VectorXd conditionalMean = A.llt().solve(tauStar * m_Xty + m_prior.precisionTimesMean);
  logML_CJ = LogLikelihood(bStar, tauStar) +
             mlik::LogNormalDensity(bStar, m_prior.mean, m_prior.precision) +
             mlik::LogGammaDensity(tauStar, m_a, m_b) - mlik::LogMeanExp(ordinates) -
             mlik::LogNormalDensity(bStar, conditionalMean, A);
}
