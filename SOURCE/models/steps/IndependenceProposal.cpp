// IndependenceProposal: Newton's method for the mode, the t density and its draws.
#include "IndependenceProposal.h"

#include <cmath>

#include "ChiSquared.h"

bool IndependenceProposal::Fit(const Derivatives& derivatives, Eigen::VectorXd start, double dof) {
  const Eigen::Index k = start.size();
  Eigen::VectorXd gradient(k), trialGradient(k);
  Eigen::MatrixXd hessian(k, k), trialHessian(k, k);
  double value = derivatives(start, gradient, hessian);
  for (int iteration = 0; iteration < 200; ++iteration) {
    const Eigen::LLT<Eigen::MatrixXd> negative(-hessian);
    if (negative.info() != Eigen::Success) return false;
    const Eigen::VectorXd step = negative.solve(gradient);
    double scale = 1.0;
    Eigen::VectorXd trial = start + step;
    double trialValue = derivatives(trial, trialGradient, trialHessian);
    while (!(trialValue >= value) && scale > 1e-10) {
      scale *= 0.5;
      trial = start + scale * step;
      trialValue = derivatives(trial, trialGradient, trialHessian);
    }
    if (!(trialValue >= value)) break;
    const bool converged = std::fabs(trialValue - value) < 1e-10 * (1.0 + std::fabs(value));
    start = trial;
    value = trialValue;
    gradient = trialGradient;
    hessian = trialHessian;
    if (converged) break;
  }
  const Eigen::LLT<Eigen::MatrixXd> negative(-hessian);
  if (negative.info() != Eigen::Success) return false;
  const Eigen::MatrixXd covariance = negative.solve(Eigen::MatrixXd::Identity(k, k));
  const Eigen::LLT<Eigen::MatrixXd> factor(covariance);
  if (factor.info() != Eigen::Success) return false;
  m_mode = start;
  m_lower = factor.matrixL();
  m_dof = dof;
  const double d = static_cast<double>(k);
  m_logConstant = std::lgamma(0.5 * (dof + d)) - std::lgamma(0.5 * dof) - 0.5 * d * std::log(dof * M_PI) -
                  m_lower.diagonal().array().log().sum();
  return true;
}

void IndependenceProposal::Draw(RandomEngine& rng, Eigen::VectorXd& z, Eigen::VectorXd& out) const {
  for (Eigen::Index j = 0; j < z.size(); ++j) z(j) = rng.Normal();
  const double w = std::sqrt(m_dof / dist::ChiSquaredDraw(rng, m_dof));
  out.noalias() = m_lower.triangularView<Eigen::Lower>() * z;
  out *= w;
  out += m_mode;
}

double IndependenceProposal::LogDensity(const Eigen::VectorXd& b) const {
  const Eigen::VectorXd u = m_lower.triangularView<Eigen::Lower>().solve(b - m_mode);
  const double d = static_cast<double>(b.size());
  return m_logConstant - 0.5 * (m_dof + d) * std::log1p(u.squaredNorm() / m_dof);
}
