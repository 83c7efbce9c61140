// Probit: the sampler's sweep and the two marginal likelihoods.
#include "Probit.h"

#include <cmath>
#include <memory>

#include "BinaryAugmentation.h"
#include "MarginalLikelihood.h"
#include "NormalLinearStep.h"
#include "ObservationBlocks.h"

namespace {

class ProbitChain : public GibbsChain {
public:
  ProbitChain(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const LinearPrior& prior, bool rescale,
              Eigen::VectorXd start, int threads)
      : m_y(y), m_X(X), m_prior(prior), m_step(X, prior), m_rescale(rescale), m_threads(threads),
        m_b(std::move(start)), m_mean(m_b.size()), m_index(y.size()), m_z(y.size()), m_Xtz(m_b.size()) {}

  void Sweep(RandomEngine& rng) override {
    // The blocks' engines are seeded from the chain's own at its first sweep.
    if (!m_blocks) {
      m_blocks = std::make_unique<ObservationBlocks>(m_y.size(), rng, m_threads);
      m_partialXtz.resize(m_b.size(), m_blocks->Count());
      m_partialSquares.resize(m_blocks->Count());
    }
    // Block by block: the index x'b, the utilities given it, and the block's shares of X'z and z'z.
    m_blocks->Run([this](Eigen::Index block, Eigen::Index first, Eigen::Index end, RandomEngine& blockRng) {
      const Eigen::Index n = end - first;
      m_index.segment(first, n).noalias() = m_X.middleRows(first, n) * m_b;
      DrawBinaryUtilities(m_y, m_index, first, end, blockRng, m_z);
      m_partialXtz.col(block).noalias() = m_X.middleRows(first, n).transpose() * m_z.segment(first, n);
      m_partialSquares(block) = m_z.segment(first, n).squaredNorm();
    });
    m_Xtz = m_partialXtz.rowwise().sum();
    m_step.MeanFromCrossProduct(m_Xtz, m_mean);
    m_step.Draw(m_mean, rng, m_b);
    if (m_rescale) {
      // |z - X b|^2 = z'z - 2 b'X'z + b'X'X b, without another pass over the data; with the prior's
      // b'P b that is b'A b for A = X'X + P.
      const double quadratic = m_partialSquares.sum() - 2.0 * m_b.dot(m_Xtz) + m_b.dot(m_step.Precision() * m_b);
      m_b *= ScaleGroupFactor(rng, quadratic, m_y.size() + m_b.size());
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
  Eigen::VectorXd m_b, m_mean, m_index, m_z;
  Eigen::MatrixXd m_partialXtz;     // k x blocks
  Eigen::VectorXd m_partialSquares;  // per block: z'z
  Eigen::VectorXd m_Xtz;

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
