// NewtonProposal: the Newton-step Normal proposal of a Metropolis-Hastings block.
#include "NewtonProposal.h"

bool NewtonProposal::SetCurvature(const Eigen::MatrixXd& curvature) {
  Eigen::LLT<Eigen::MatrixXd> factor(curvature);
  if (factor.info() != Eigen::Success) return false;
  m_curvature = curvature;
  m_factor = std::move(factor);
  m_z.resize(curvature.rows());
  m_d.resize(curvature.rows());
  return true;
}

void NewtonProposal::Mean(const Eigen::VectorXd& b, const Eigen::VectorXd& gradient, Eigen::VectorXd& mean) const {
  mean = m_factor.solve(gradient);
  mean += b;
}

void NewtonProposal::Draw(const Eigen::VectorXd& mean, RandomEngine& rng, Eigen::VectorXd& out) {
  // H = L L': L'^-1 z has covariance H^-1.
  for (Eigen::Index i = 0; i < m_z.size(); ++i) m_z(i) = rng.Normal();
  out = m_factor.matrixU().solve(m_z);
  out += mean;
}

double NewtonProposal::LogDensity(const Eigen::VectorXd& x, const Eigen::VectorXd& mean) const {
  m_d = x - mean;
  return -0.5 * m_d.dot(m_curvature * m_d);
}
