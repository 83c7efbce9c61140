// RandomWalkStep: adaptive random-walk Metropolis.
#include "RandomWalkStep.h"

#include <cmath>

namespace {
// The proposal takes the draws' covariance after this many burn-in draws, and again every so many.
constexpr long kFirstCovariance = 100;
constexpr long kCovarianceEvery = 50;
}  // namespace

RandomWalkStep::RandomWalkStep(Eigen::Index dimension, double initialVariance)
    : m_d(dimension), m_mean(Eigen::VectorXd::Zero(dimension)), m_sum(Eigen::MatrixXd::Zero(dimension, dimension)),
      m_factor(std::sqrt(initialVariance) * Eigen::MatrixXd::Identity(dimension, dimension)), m_z(dimension) {}

void RandomWalkStep::Propose(const Eigen::VectorXd& current, RandomEngine& rng, Eigen::VectorXd& proposal) {
  for (Eigen::Index i = 0; i < m_d; ++i) m_z(i) = rng.Normal();
  proposal = current;
  proposal.noalias() += std::exp(m_logScale) * (m_factor * m_z);
}

bool RandomWalkStep::Decide(double logRatio, RandomEngine& rng) {
  const bool accept = !std::isnan(logRatio) && (logRatio >= 0.0 || std::log(rng.Uniform()) < logRatio);
  ++m_tries;
  if (accept) ++m_accepted;
  if (m_adapting) {
    ++m_iteration;
    const double rate = std::isnan(logRatio) ? 0.0 : std::min(1.0, std::exp(std::min(0.0, logRatio)));
    m_logScale += (rate - TargetRate()) / std::pow(static_cast<double>(m_iteration), 0.6);
  }
  return accept;
}

void RandomWalkStep::Record(const Eigen::VectorXd& value) {
  if (!m_adapting) return;
  ++m_recorded;
  const Eigen::VectorXd delta = value - m_mean;
  m_mean += delta / static_cast<double>(m_recorded);
  m_sum.noalias() += delta * (value - m_mean).transpose();
  if (m_recorded >= kFirstCovariance && m_recorded % kCovarianceEvery == 0) {
    Eigen::MatrixXd covariance = m_sum / static_cast<double>(m_recorded - 1);
    covariance *= 2.38 * 2.38 / static_cast<double>(m_d);
    covariance.diagonal().array() += 1e-10;
    const Eigen::LLT<Eigen::MatrixXd> llt(covariance);
    if (llt.info() == Eigen::Success) {
      m_factor = llt.matrixL();
    }
  }
}

double RandomWalkStep::LogProposalDensity(const Eigen::VectorXd& from, const Eigen::VectorXd& to) const {
  // N(from, s^2 F F'), F lower triangular.
  const double scale = std::exp(m_logScale);
  const Eigen::VectorXd z = m_factor.triangularView<Eigen::Lower>().solve(to - from) / scale;
  return -0.5 * z.squaredNorm() - 0.5 * static_cast<double>(m_d) * 1.8378770664093454836 -
         static_cast<double>(m_d) * std::log(scale) - m_factor.diagonal().array().log().sum();
}
