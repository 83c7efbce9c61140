// Probit: the sampler's sweep and the two marginal likelihoods.
#include "Probit.h"

#include <cmath>
#include <memory>

#include "BinaryAugmentation.h"
#include "Gamma.h"
#include "MarginalLikelihood.h"
#include "NormalLinearStep.h"

namespace {

class ProbitChain : public GibbsChain {
public:
  ProbitChain(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const LinearPrior& prior, bool rescale,
              Eigen::VectorXd start, int threads)
      : m_y(y), m_X(X), m_prior(prior), m_step(X, prior), m_rescale(rescale), m_threads(threads),
        m_b(std::move(start)), m_mean(m_b.size()), m_index(y.size()), m_z(y.size()), m_residual(y.size()) {}

  void Sweep(RandomEngine& rng) override {
    // The blocks' engines are seeded from the chain's own at its first sweep.
    if (!m_blocks) m_blocks = std::make_unique<ObservationBlocks>(m_y.size(), rng, m_threads);
    m_index.noalias() = m_X * m_b;
    DrawBinaryUtilities(m_y, m_index, *m_blocks, m_z);
    m_step.Mean(m_z, m_mean);
    m_step.Draw(m_mean, rng, m_b);
    if (m_rescale) {
      m_residual.noalias() = m_z - m_X * m_b;
      const double rate = 0.5 * (m_residual.squaredNorm() + m_b.dot(m_prior.precision * m_b));
      const double shape = 0.5 * static_cast<double>(m_y.size() + m_b.size());
      m_b *= std::sqrt(dist::GammaDraw(rng, shape, rate));
    }
  }

  // b, then the conditional mean of b given this sweep's utilities (for Chib's ordinate; dropped
  // from what the model keeps).
  void Record(DrawRow row) const override {
    const Eigen::Index k = m_b.size();
    row.head(k) = m_b.transpose();
    row.segment(k, k) = m_mean.transpose();
  }

private:
  const Eigen::VectorXd& m_y;
  const Eigen::MatrixXd& m_X;
  const LinearPrior& m_prior;
  NormalLinearStep m_step;
  bool m_rescale;
  int m_threads;
  std::unique_ptr<ObservationBlocks> m_blocks;
  Eigen::VectorXd m_b, m_mean, m_index, m_z, m_residual;
};

}  // namespace

bool Probit::Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const LinearPrior& prior,
                    const EventDispatcher& out, const std::atomic<bool>* interrupt) {
  const Eigen::Index k = X.cols();
  // The scale move needs a prior that the scale group maps into itself: centred at zero.
  const bool rescale = prior.precisionTimesMean.cwiseAbs().maxCoeff() == 0.0;
  // Chains start at the prior mean shifted by +-0.5 so that R-hat can reveal slow mixing.
  const long chains = Settings().chains;
  auto make = [&](int c) -> std::unique_ptr<GibbsChain> {
    const double offset = chains > 1 ? (2.0 * c / static_cast<double>(chains - 1) - 1.0) * 0.5 : 0.0;
    return std::make_unique<ProbitChain>(y, X, prior, rescale, Eigen::VectorXd(prior.mean.array() + offset),
                                         ObservationBlocks::ThreadsPerChain(chains));
  };
  if (!RunChains(make, static_cast<int>(2 * k), out, interrupt)) return false;

  const Eigen::MatrixXd pooled = PoolDraws(k);
  const Eigen::MatrixXd draws = pooled.leftCols(k);
  const Eigen::VectorXd bStar = draws.colwise().mean().transpose();
  const double logLikelihood = ProbitLogLikelihood(y, X * bStar);
  const double logPrior = mlik::LogNormalDensity(bStar, prior.mean, prior.precision);
  logML = mlik::LaplaceMetropolis(logLikelihood + logPrior, draws);

  // Chib: p(b* | y) is the average over the draws of the Normal conditional given the utilities.
  const NormalLinearStep step(X, prior);
  Eigen::VectorXd ordinates(pooled.rows());
  for (Eigen::Index g = 0; g < pooled.rows(); ++g) {
    ordinates(g) = mlik::LogNormalDensity(bStar, pooled.row(g).tail(k).transpose(), step.Precision());
  }
  logML_CJ = logLikelihood + logPrior - mlik::LogMeanExp(ordinates);
  return true;
}
