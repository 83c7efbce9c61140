// RandomWalkStep: a random-walk Metropolis-Hastings step whose scale is tuned during burn-in and
// frozen after it, with its acceptance rate counted over the kept sweeps.
#pragma once

#include <Eigen/Dense>

#include "RandomEngine.h"

// The scale of a random-walk proposal: Robbins-Monro on the log scale toward a target acceptance
// rate while tuning; afterwards it only counts acceptances. Shared by vector steps and by the
// per-observation steps of latent variables (one scale for many scalar proposals).
class AdaptiveScale {
public:
  AdaptiveScale(double start, double targetAcceptance);
  double Scale() const { return m_scale; }
  // Records one proposal's acceptance probability (tuning) or whether it was accepted (after).
  void Update(double acceptanceProbability, bool accepted);
  // The same for a batch of proposals whose mean acceptance probability is `meanProbability`.
  void UpdateBatch(double meanProbability, long accepted, long proposals);
  void EndTuning() { m_tuning = false; }
  bool Tuning() const { return m_tuning; }
  // Share of proposals accepted after tuning (NaN before any).
  double AcceptanceRate() const;

private:
  double m_logScale;
  double m_scale;
  double m_target;
  bool m_tuning = true;
  long m_steps = 0;
  long m_accepted = 0;
  long m_proposed = 0;
};

// x' = x + scale * L e, e ~ N(0, I), accepted with probability min(1, p(x') / p(x)), where L is a
// fixed factor of the proposal covariance (the inverse curvature of the target, say).
class RandomWalkStep {
public:
  RandomWalkStep(Eigen::MatrixXd factor, double startScale, double targetAcceptance = 0.3);

  // One step from `x` whose log target is `logTarget` (both updated when the proposal is
  // accepted); `logTargetOf(proposal)` evaluates the target (NaN or -inf: never accepted).
  template <class LogTarget>
  bool Step(Eigen::VectorXd& x, double& logTarget, const LogTarget& logTargetOf, RandomEngine& rng) {
    for (Eigen::Index j = 0; j < m_e.size(); ++j) m_e(j) = rng.Normal();
    m_proposal.noalias() = m_factor * m_e;
    m_proposal *= m_scale.Scale();
    m_proposal += x;
    const double proposed = logTargetOf(m_proposal);
    const bool accepted = Accept(logTarget, proposed, rng);
    if (accepted) {
      x.swap(m_proposal);
      logTarget = proposed;
    }
    return accepted;
  }
  void EndBurnin() { m_scale.EndTuning(); }
  double AcceptanceRate() const { return m_scale.AcceptanceRate(); }

  // A proposal from `x` with the scale as it stands, into `out` (no decision, no tuning).
  void Propose(const Eigen::VectorXd& x, RandomEngine& rng, Eigen::VectorXd& out);
  // The log density of proposing `to` from `from` with the scale as it stands (the factor must be
  // square and invertible).
  double LogProposalDensity(const Eigen::VectorXd& from, const Eigen::VectorXd& to) const;

private:
  bool Accept(double current, double proposed, RandomEngine& rng);

  Eigen::MatrixXd m_factor;
  AdaptiveScale m_scale;
  Eigen::VectorXd m_e, m_proposal;
};

// The log of the acceptance probability min(1, exp(proposed - current)); -inf when the proposal
// cannot be evaluated.
double LogAcceptanceProbability(double current, double proposed);
