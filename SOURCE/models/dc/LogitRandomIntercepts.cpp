// LogitRandomIntercepts: Metropolis-Hastings within Gibbs for the random-intercept logit.
#include "LogitRandomIntercepts.h"

#include <cmath>
#include <utility>
#include <vector>

#include "Gamma.h"
#include "LogisticGroupTerms.h"
#include "NewtonProposal.h"
#include "ObservationBlocks.h"

namespace {

// During burn-in the coefficients' curvature is taken again every this many sweeps.
constexpr long kTuningInterval = 25;

class LogitRandomInterceptChain : public RandomEffectsChain {
public:
  LogitRandomInterceptChain(const BinaryRandomEffects& model, Eigen::VectorXd start, double omega, long burnin,
                            int threads)
      : RandomEffectsChain(model.Groups().Count()), m_model(model), m_y(model.SortedY()), m_X(model.SortedX()),
        m_start(model.Groups().start), m_prior(model.Prior()), m_burnin(burnin), m_threads(threads),
        m_b(std::move(start)), m_a(Eigen::VectorXd::Zero(model.Groups().Count())), m_omega(omega),
        m_sums(model.Groups().Count()), m_trialSums(model.Groups().Count()) {
    const Eigen::Index n = m_y.size(), k = m_b.size(), G = m_a.size();
    for (Eigen::Index j = 0; j < k && m_constant < 0; ++j) {
      if ((m_X.col(j).array() == 1.0).all()) m_constant = j;
    }
    m_eta.resize(n);
    m_etaTrial.resize(n);
    m_residual.resize(n);
    m_residualTrial.resize(n);
    m_p.resize(n);
    m_trialEffects.resize(G);
    m_effectMean.resize(G);
    m_effectCurvature.resize(G);
    m_trialB.resize(k);
    m_gradient.resize(k);
    m_mean.resize(k);
    m_trialMean.resize(k);
    m_deviation.resize(k);
  }

  void Sweep(RandomEngine& rng) override {
    if (!m_blocks) Start(rng);
    if (m_sweeps < m_burnin && m_sweeps % kTuningInterval == 0) Tune();
    const bool counted = m_sweeps >= m_burnin;
    ++m_sweeps;
    DrawEffects(rng, counted);
    DrawCoefficients(rng, counted);
    ShiftAlongConstant(rng);
    const auto [shape, rate] = m_model.OmegaConditional(m_a.squaredNorm());
    m_omega = dist::GammaDraw(rng, shape, rate);
  }

  void Record(DrawRow row) const override { RecordState(row, m_b, m_omega, m_a); }

  std::pair<double, double> Acceptance() const {
    const double sweeps = static_cast<double>(std::max(1L, m_sweeps - m_burnin));
    return {static_cast<double>(m_acceptedB) / sweeps,
            static_cast<double>(m_acceptedEffects) / (sweeps * static_cast<double>(m_a.size()))};
  }

private:
  // The blocks (their engines are seeded from the chain's, though the blocks draw nothing), the
  // current state's sums and the first curvature.
  void Start(RandomEngine& rng) {
    m_blocks = std::make_unique<ObservationBlocks>(m_y.size(), rng, m_threads);
    m_partialCross.resize(m_b.size(), m_blocks->Count());
    m_terms = std::make_unique<LogisticGroupTerms>(m_y, m_start, m_blocks->Count());
    m_blocks->Run([this](Eigen::Index block, Eigen::Index first, Eigen::Index end, RandomEngine&) {
      const Eigen::Index n = end - first;
      m_eta.segment(first, n).noalias() = m_X.middleRows(first, n) * m_b;
      m_terms->Evaluate(block, first, end, m_eta, m_a, m_residual, m_sums);
    });
    m_terms->JoinCutGroups(m_sums);
    if (!Tune()) {
      // X'X / 4 + P bounds the curvature from above; X has full rank.
      m_proposal.SetCurvature(0.25 * m_X.transpose() * m_X + m_prior.precision);
    }
  }

  // The coefficients' curvature X'WX + P at the current state.
  bool Tune() {
    m_p = m_y.array() - m_residual.array();
    const Eigen::MatrixXd weighted = m_X.array().colwise() * (m_p * (1.0 - m_p)).eval();
    return m_proposal.SetCurvature(m_X.transpose() * weighted + m_prior.precision);
  }

  // Every a_g given b and omega.
  void DrawEffects(RandomEngine& rng, bool counted) {
    const Eigen::Index G = m_a.size();
    for (Eigen::Index g = 0; g < G; ++g) {
      const double curvature = m_sums.curvature(g) + m_omega;
      m_effectCurvature(g) = curvature;
      m_effectMean(g) = m_a(g) + (m_sums.gradient(g) - m_omega * m_a(g)) / curvature;
      m_trialEffects(g) = m_effectMean(g) + rng.Normal() / std::sqrt(curvature);
    }
    m_blocks->Run([this](Eigen::Index block, Eigen::Index first, Eigen::Index end, RandomEngine&) {
      m_terms->Evaluate(block, first, end, m_eta, m_trialEffects, m_residualTrial, m_trialSums);
    });
    m_terms->JoinCutGroups(m_trialSums);
    for (Eigen::Index g = 0; g < G; ++g) {
      const double a = m_a(g), trial = m_trialEffects(g);
      const double curvature = m_trialSums.curvature(g) + m_omega;
      const double reverseMean = trial + (m_trialSums.gradient(g) - m_omega * trial) / curvature;
      const double logRatio = m_trialSums.logLikelihood(g) - 0.5 * m_omega * trial * trial -
                              m_sums.logLikelihood(g) + 0.5 * m_omega * a * a +
                              0.5 * std::log(curvature / m_effectCurvature(g)) -
                              0.5 * curvature * (a - reverseMean) * (a - reverseMean) +
                              0.5 * m_effectCurvature(g) * (trial - m_effectMean(g)) * (trial - m_effectMean(g));
      if (std::log(rng.Uniform()) < logRatio) {
        m_a(g) = trial;
        m_sums.CopyGroup(m_trialSums, g);
        m_residual.segment(m_start[g], m_start[g + 1] - m_start[g]) =
            m_residualTrial.segment(m_start[g], m_start[g + 1] - m_start[g]);
        if (counted) ++m_acceptedEffects;
      }
    }
  }

  // The gradient of log p(y | b, a) + log p(b) at b, whose X'(y - p) the blocks summed.
  void Gradient(const Eigen::VectorXd& b, Eigen::VectorXd& gradient) {
    m_deviation = b - m_prior.mean;
    gradient.noalias() = m_partialCross.rowwise().sum() - m_prior.precision * m_deviation;
  }

  double LogPrior(const Eigen::VectorXd& b) {
    m_deviation = b - m_prior.mean;
    return -0.5 * m_deviation.dot(m_prior.precision * m_deviation);
  }

  // b given a.
  void DrawCoefficients(RandomEngine& rng, bool counted) {
    m_blocks->Run([this](Eigen::Index block, Eigen::Index first, Eigen::Index end, RandomEngine&) {
      const Eigen::Index n = end - first;
      m_partialCross.col(block).noalias() = m_X.middleRows(first, n).transpose() * m_residual.segment(first, n);
    });
    Gradient(m_b, m_gradient);
    m_proposal.Mean(m_b, m_gradient, m_mean);
    m_proposal.Draw(m_mean, rng, m_trialB);
    m_blocks->Run([this](Eigen::Index block, Eigen::Index first, Eigen::Index end, RandomEngine&) {
      const Eigen::Index n = end - first;
      m_etaTrial.segment(first, n).noalias() = m_X.middleRows(first, n) * m_trialB;
      m_terms->Evaluate(block, first, end, m_etaTrial, m_a, m_residualTrial, m_trialSums);
      m_partialCross.col(block).noalias() = m_X.middleRows(first, n).transpose() * m_residualTrial.segment(first, n);
    });
    m_terms->JoinCutGroups(m_trialSums);
    Gradient(m_trialB, m_gradient);
    m_proposal.Mean(m_trialB, m_gradient, m_trialMean);
    const double logRatio = m_trialSums.logLikelihood.sum() + LogPrior(m_trialB) - m_sums.logLikelihood.sum() -
                            LogPrior(m_b) + m_proposal.LogDensity(m_b, m_trialMean) -
                            m_proposal.LogDensity(m_trialB, m_mean);
    if (std::log(rng.Uniform()) < logRatio) {
      std::swap(m_b, m_trialB);
      std::swap(m_eta, m_etaTrial);
      std::swap(m_residual, m_residualTrial);
      std::swap(m_sums, m_trialSums);
      if (counted) ++m_acceptedB;
    }
  }

  // (b_0 + c, a - c) with c from its Normal conditional: the index x'b + a stays as it is, so only
  // the priors of b and a decide c.
  void ShiftAlongConstant(RandomEngine& rng) {
    if (m_constant < 0) return;
    m_deviation = m_b - m_prior.mean;
    const double precision = m_prior.precision(m_constant, m_constant) + m_omega * static_cast<double>(m_a.size());
    const double pull = m_omega * m_a.sum() - m_prior.precision.row(m_constant).dot(m_deviation);
    const double c = pull / precision + rng.Normal() / std::sqrt(precision);
    m_b(m_constant) += c;
    m_eta.array() += c;
    m_a.array() -= c;
  }

  const BinaryRandomEffects& m_model;
  const Eigen::VectorXd& m_y;
  const Eigen::MatrixXd& m_X;
  const std::vector<Eigen::Index>& m_start;
  const LinearPrior& m_prior;
  long m_burnin;
  int m_threads;
  Eigen::Index m_constant = -1;        // the column of ones, if any
  std::unique_ptr<ObservationBlocks> m_blocks;
  NewtonProposal m_proposal;
  Eigen::VectorXd m_b, m_a;
  double m_omega;
  LogisticGroupTerms::Sums m_sums, m_trialSums;
  std::unique_ptr<LogisticGroupTerms> m_terms;
  Eigen::VectorXd m_eta, m_etaTrial, m_residual, m_residualTrial;
  Eigen::ArrayXd m_p;
  Eigen::VectorXd m_trialEffects, m_effectMean, m_effectCurvature;
  Eigen::VectorXd m_trialB, m_gradient, m_mean, m_trialMean, m_deviation;
  Eigen::MatrixXd m_partialCross;  // k x blocks
  long m_sweeps = 0;
  long m_acceptedB = 0, m_acceptedEffects = 0;
};

}  // namespace

std::unique_ptr<RandomEffectsChain> MakeLogitRandomInterceptChain(const BinaryRandomEffects& model,
                                                                  Eigen::VectorXd start, double omega, int threads) {
  return std::make_unique<LogitRandomInterceptChain>(model, std::move(start), omega, model.Settings().burnin, threads);
}

std::pair<double, double> LogitRandomInterceptAcceptance(const RandomEffectsChain& chain) {
  return static_cast<const LogitRandomInterceptChain&>(chain).Acceptance();
}
