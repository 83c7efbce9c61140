// IndependenceProposal: a multivariate t proposal centred at the posterior mode with the inverse
// curvature there as its scale, for independence Metropolis-Hastings steps.
#pragma once

#include <functional>

#include <Eigen/Dense>

#include "RandomEngine.h"

class IndependenceProposal {
public:
  // The log posterior kernel with its gradient and Hessian at a point (the Hessian negative
  // definite near the mode).
  using Derivatives = std::function<double(const Eigen::VectorXd& b, Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian)>;

  // Finds the mode by Newton's method from `start` (step halving while the kernel falls) and
  // takes its curvature; false when the curvature is not negative definite there.
  bool Fit(const Derivatives& derivatives, Eigen::VectorXd start, double dof);

  // A draw into `out`.
  void Draw(RandomEngine& rng, Eigen::VectorXd& z, Eigen::VectorXd& out) const;
  // The log density of the proposal at b.
  double LogDensity(const Eigen::VectorXd& b) const;
  const Eigen::VectorXd& Mode() const { return m_mode; }

private:
  Eigen::VectorXd m_mode;
  Eigen::MatrixXd m_lower;  // lower Cholesky factor of the scale matrix
  double m_dof = 10.0;
  double m_logConstant = 0.0;
};
