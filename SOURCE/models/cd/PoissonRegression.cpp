// Poisson: the log-likelihood block by block, the prior and the analytic derivatives.
#include "PoissonRegression.h"

#include "MarginalLikelihood.h"

double PoissonPosteriorDerivatives(const CountObservations& data, const LinearPrior& prior, const Eigen::VectorXd& b,
                                   Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian) {
  Eigen::ArrayXd index = data.X * b;
  if (data.offset.size() > 0) index += data.offset.array();
  const Eigen::ArrayXd mu = index.exp();
  gradient.noalias() = data.X.transpose() * (data.y - mu.matrix()) - prior.precision * (b - prior.mean);
  hessian = -prior.precision;
  hessian.selfadjointView<Eigen::Lower>().rankUpdate((data.X.array().colwise() * mu.sqrt()).matrix().transpose(), -1.0);
  const Eigen::MatrixXd full = hessian.selfadjointView<Eigen::Lower>();
  hessian = full;
  return (data.y.array() * index - mu).sum() - data.LogFactorials(0, data.Size()) +
         mlik::LogNormalDensity(b, prior.mean, prior.precision);
}

double Poisson::BlockLogLikelihood(const Eigen::VectorXd& b, Eigen::Index first, Eigen::Index end,
                                   Workspace& workspace) const {
  // sum of y t - exp(t) - log(y!), with t = x'b + log exposure; the last term was summed once.
  const Eigen::Index n = end - first;
  auto index = workspace.index.segment(first, n);
  index.matrix().noalias() = m_data->X.middleRows(first, n) * b;
  if (m_data->offset.size() > 0) index += m_data->offset.array().segment(first, n);
  return (m_data->y.array().segment(first, n) * index - index.exp()).sum() - m_data->LogFactorials(first, end);
}

double Poisson::LogPrior(const Eigen::VectorXd& b) const {
  return mlik::LogNormalDensity(b, m_prior.mean, m_prior.precision);
}

double Poisson::Derivatives(const Eigen::VectorXd& b, Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian) const {
  return PoissonPosteriorDerivatives(*m_data, m_prior, b, gradient, hessian);
}

bool Poisson::Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const Eigen::VectorXd& exposure,
                     const LinearPrior& prior, const EventDispatcher& out, const std::atomic<bool>* interrupt) {
  m_data.emplace(y, X, exposure, false);
  m_prior = prior;
  IndependenceResult result;
  const bool sampled = SampleIndependence(*this, *this, out, interrupt, result);
  noMode = result.noMode;
  acceptance = result.acceptance;
  logML = result.logML;
  logML_CJ = result.logML_CJ;
  return sampled;
}
