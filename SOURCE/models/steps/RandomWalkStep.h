// RandomWalkStep: a Metropolis-Hastings step with a Normal random-walk proposal whose covariance
// and scale adapt to the chain during burn-in only.
#pragma once

#include <Eigen/Dense>

#include "RandomEngine.h"

// The proposal is N(current, s^2 C): C starts as the identity times `initialVariance` and becomes
// the covariance of the burn-in draws (times 2.38^2 / d) once there are enough of them; log s
// follows a Robbins-Monro rule towards the acceptance rate that suits the dimension (0.44 for one
// parameter, 0.234 for many). Both freeze when burn-in ends.
class RandomWalkStep {
public:
  RandomWalkStep(Eigen::Index dimension, double initialVariance);

  // A proposal from `current`, into `proposal`.
  void Propose(const Eigen::VectorXd& current, RandomEngine& rng, Eigen::VectorXd& proposal);
  // Accepts with probability min(1, exp(logRatio)) (never when logRatio is NaN); adapts during
  // burn-in from the outcome and the value the chain then holds (`value`). Returns the decision.
  bool Decide(double logRatio, RandomEngine& rng);
  void Record(const Eigen::VectorXd& value);
  void EndBurnin() { m_adapting = false; m_accepted = 0; m_tries = 0; }
  // The log density of proposing `to` from `from` with the proposal as it stands.
  double LogProposalDensity(const Eigen::VectorXd& from, const Eigen::VectorXd& to) const;
  // The share of proposals accepted since burn-in ended.
  double AcceptanceRate() const { return m_tries > 0 ? static_cast<double>(m_accepted) / static_cast<double>(m_tries) : 0.0; }

private:
  Eigen::Index m_d;
  bool m_adapting = true;
  double m_logScale = 0.0;
  long m_iteration = 0;
  long m_accepted = 0, m_tries = 0;
  Eigen::VectorXd m_mean;
  Eigen::MatrixXd m_sum;  // sum of outer products of deviations (Welford)
  long m_recorded = 0;
  Eigen::MatrixXd m_factor;  // Cholesky factor of the proposal covariance before scaling
  Eigen::VectorXd m_z;
  double TargetRate() const { return m_d == 1 ? 0.44 : 0.234; }
};
