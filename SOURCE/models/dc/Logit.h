// Logit: the binary logit model, sampled by the shared independence Metropolis-Hastings step.
#pragma once

#include <atomic>
#include <limits>

#include <Eigen/Dense>

#include "Estimator.h"
#include "IndependenceProposal.h"
#include "IndependenceSampler.h"
#include "LinearPrior.h"

class EventDispatcher;

// P(y = 1 | x) = 1 / (1 + exp(-x'b)), b ~ N(m, P^-1) (constraints folded in). The proposal is a
// multivariate t centred at the posterior mode with the inverse curvature there as its scale: the
// logit posterior is close to it, so nearly every proposal is accepted and the draws are nearly
// independent. Records b.
class Logit : public Estimator, public IndependenceTarget {
public:
  explicit Logit(const Eigen::VectorXd& gibbs) : Estimator(gibbs) {}

  // Samples the posterior; false when interrupted or when the posterior has no mode (its
  // curvature is not negative definite anywhere the search went: separated data under a flat
  // prior). Afterwards logML (Lewis & Raftery), logML_CJ (Chib & Jeliazkov) and the acceptance
  // rate are set.
  bool Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const LinearPrior& prior,
              const EventDispatcher& out, const std::atomic<bool>* interrupt);

  double logML = std::numeric_limits<double>::quiet_NaN();
  double logML_CJ = std::numeric_limits<double>::quiet_NaN();
  double acceptance = std::numeric_limits<double>::quiet_NaN();
  bool noMode = false;

  // The posterior for the independence step.
  Eigen::Index Observations() const override { return m_X->rows(); }
  Eigen::Index Dimension() const override { return m_X->cols(); }
  double BlockLogLikelihood(const Eigen::VectorXd& b, Eigen::Index first, Eigen::Index end,
                            Workspace& workspace) const override;
  double LogPrior(const Eigen::VectorXd& b) const override;
  Eigen::VectorXd SearchStart() const override { return m_prior.mean; }
  double Derivatives(const Eigen::VectorXd& b, Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian) const override;

private:
  const Eigen::VectorXd* m_y = nullptr;
  const Eigen::MatrixXd* m_X = nullptr;
  LinearPrior m_prior;
};

// The t proposal (10 degrees of freedom) at the logit posterior's mode, with the inverse curvature
// there as its scale; false when the posterior has no mode that Newton's method finds.
bool FitLogitProposal(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const LinearPrior& prior,
                      IndependenceProposal& proposal);
