// Logit: the posterior's log-likelihood, prior and derivatives for the independence step.
#include "Logit.h"

#include <cmath>

#include "MarginalLikelihood.h"

namespace {

// The log posterior kernel with its gradient and Hessian. p = 1 / (1 + exp(-index)) and
// log(1 + e^index) are written to stay finite for large indices of either sign.
double PosteriorDerivatives(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const LinearPrior& prior,
                            const Eigen::VectorXd& b, Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian) {
  const Eigen::ArrayXd index = X * b;
  const Eigen::ArrayXd e = (-index.abs()).exp();
  const Eigen::ArrayXd prob = (index >= 0.0).select(1.0 / (1.0 + e), e / (1.0 + e));
  gradient.noalias() = X.transpose() * (y - prob.matrix()) - prior.precision * (b - prior.mean);
  const Eigen::ArrayXd w = prob * (1.0 - prob);
  hessian.noalias() = -(X.transpose() * (X.array().colwise() * w).matrix());
  hessian -= prior.precision;
  return (y.array() * index - index.max(0.0) - e.log1p()).sum() +
         mlik::LogNormalDensity(b, prior.mean, prior.precision);
}

}  // namespace

double Logit::BlockLogLikelihood(const Eigen::VectorXd& b, Eigen::Index first, Eigen::Index end,
                                 Workspace& workspace) const {
  // The sum of y t - log(1 + e^t), with log(1 + e^t) = max(t, 0) + log1p(e^-|t|): finite for any
  // t. In whole-array passes, which Eigen evaluates with vectorised exp and log1p.
  const Eigen::Index n = end - first;
  auto index = workspace.index.segment(first, n);
  auto work = workspace.work.segment(first, n);
  index.matrix().noalias() = m_X->middleRows(first, n) * b;
  work = (-index.abs()).exp();
  return (m_y->array().segment(first, n) * index).sum() - (index.max(0.0) + work.log1p()).sum();
}

double Logit::LogPrior(const Eigen::VectorXd& b) const {
  return mlik::LogNormalDensity(b, m_prior.mean, m_prior.precision);
}

double Logit::Derivatives(const Eigen::VectorXd& b, Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian) const {
  return PosteriorDerivatives(*m_y, *m_X, m_prior, b, gradient, hessian);
}

bool Logit::Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const LinearPrior& prior,
                   const EventDispatcher& out, const std::atomic<bool>* interrupt) {
  m_y = &y;
  m_X = &X;
  m_prior = prior;
  IndependenceResult result;
  const bool sampled = SampleIndependence(*this, *this, out, interrupt, result);
  noMode = result.noMode;
  acceptance = result.acceptance;
  logML = result.logML;
  logML_CJ = result.logML_CJ;
  return sampled;
}

bool FitLogitProposal(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const LinearPrior& prior,
                      IndependenceProposal& proposal) {
  auto derivatives = [&](const Eigen::VectorXd& b, Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian) {
    return PosteriorDerivatives(y, X, prior, b, gradient, hessian);
  };
  return proposal.Fit(derivatives, prior.mean, kIndependenceProposalDof);
}
