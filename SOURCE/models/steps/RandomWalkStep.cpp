// RandomWalkStep: adaptive random-walk Metropolis-Hastings.
#include "RandomWalkStep.h"

#include <algorithm>
#include <cmath>
#include <limits>

AdaptiveScale::AdaptiveScale(double start, double targetAcceptance)
    : m_logScale(std::log(start)), m_scale(start), m_target(targetAcceptance) {}

void AdaptiveScale::Update(double acceptanceProbability, bool accepted) {
  UpdateBatch(acceptanceProbability, accepted ? 1 : 0, 1);
}

void AdaptiveScale::UpdateBatch(double meanProbability, long accepted, long proposals) {
  if (!m_tuning) {
    m_accepted += accepted;
    m_proposed += proposals;
    return;
  }
  // A decreasing gain: large moves early, a settled scale by the end of burn-in.
  ++m_steps;
  const double gain = std::min(0.5, 5.0 / std::pow(static_cast<double>(m_steps) + 10.0, 0.6));
  m_logScale = std::clamp(m_logScale + gain * (meanProbability - m_target), -15.0, 5.0);
  m_scale = std::exp(m_logScale);
}

double AdaptiveScale::AcceptanceRate() const {
  return m_proposed > 0 ? static_cast<double>(m_accepted) / static_cast<double>(m_proposed)
                        : std::numeric_limits<double>::quiet_NaN();
}

double LogAcceptanceProbability(double current, double proposed) {
  const double difference = proposed - current;
  if (std::isnan(difference)) return -std::numeric_limits<double>::infinity();
  return std::min(0.0, difference);
}

RandomWalkStep::RandomWalkStep(Eigen::MatrixXd factor, double startScale, double targetAcceptance)
    : m_factor(std::move(factor)), m_scale(startScale, targetAcceptance), m_e(m_factor.cols()),
      m_proposal(m_factor.rows()) {}

bool RandomWalkStep::Accept(double current, double proposed, RandomEngine& rng) {
  const double logAccept = LogAcceptanceProbability(current, proposed);
  const bool accepted = std::log(rng.Uniform()) < logAccept;
  m_scale.Update(std::exp(logAccept), accepted);
  return accepted;
}

void RandomWalkStep::Propose(const Eigen::VectorXd& x, RandomEngine& rng, Eigen::VectorXd& out) {
  for (Eigen::Index j = 0; j < m_e.size(); ++j) m_e(j) = rng.Normal();
  out = x;
  out.noalias() += m_scale.Scale() * (m_factor * m_e);
}

double RandomWalkStep::LogProposalDensity(const Eigen::VectorXd& from, const Eigen::VectorXd& to) const {
  // N(from, s^2 F F'): with F = Q R, |det F| = |det R| and F^-1 (to - from) solves R z = Q'(to - from).
  const Eigen::HouseholderQR<Eigen::MatrixXd> qr(m_factor);
  const double scale = m_scale.Scale();
  const Eigen::VectorXd z = qr.solve(to - from) / scale;
  const auto d = static_cast<double>(from.size());
  return -0.5 * z.squaredNorm() - 0.5 * d * 1.8378770664093454836 - d * std::log(scale) - qr.logAbsDeterminant();
}
