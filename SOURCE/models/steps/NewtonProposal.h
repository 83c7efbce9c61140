// NewtonProposal: a Metropolis-Hastings proposal for a block of coefficients whose conditional is
// close to Normal, N(b + H^-1 g(b), H^-1): one Newton step ahead of the current point b (g is the
// log kernel's gradient there) with a fixed curvature H. Where the conditional is Normal with
// precision H this is an exact draw from it, so nearly every proposal is accepted.
#pragma once

#include <Eigen/Dense>

#include "RandomEngine.h"

class NewtonProposal {
public:
  // Sets H, the negative Hessian of the log kernel near where the chain is; false (and H kept)
  // when it is not positive definite. Tuned during burn-in only.
  bool SetCurvature(const Eigen::MatrixXd& curvature);
  // b + H^-1 g into `mean`.
  void Mean(const Eigen::VectorXd& b, const Eigen::VectorXd& gradient, Eigen::VectorXd& mean) const;
  // A draw from N(mean, H^-1) into `out`.
  void Draw(const Eigen::VectorXd& mean, RandomEngine& rng, Eigen::VectorXd& out);
  // log N(x; mean, H^-1) without its constant, which cancels from the acceptance ratio.
  double LogDensity(const Eigen::VectorXd& x, const Eigen::VectorXd& mean) const;

private:
  Eigen::MatrixXd m_curvature;
  Eigen::LLT<Eigen::MatrixXd> m_factor;
  Eigen::VectorXd m_z;
  mutable Eigen::VectorXd m_d;
};
