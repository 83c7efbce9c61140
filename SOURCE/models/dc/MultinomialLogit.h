// MultinomialLogit: the multinomial logit model (MNLogit), sampled by the shared independence
// Metropolis-Hastings step.
#pragma once

#include <atomic>
#include <limits>

#include <Eigen/Dense>

#include "Estimator.h"
#include "IndependenceSampler.h"
#include "LinearPrior.h"

class EventDispatcher;

// P(choice = j | x) = exp(x'b_j) / sum_l exp(x'b_l), with b_0 = 0 for the base alternative and
// b = (b_1, ..., b_{J-1}) ~ N(m, P^-1) (constraints folded in). The posterior is close to Normal
// for the sample sizes the model is used with, so a t proposal at its mode is accepted nearly
// always and its draws are nearly independent. Records b, alternative by alternative.
class MNLogit : public Estimator, public IndependenceTarget {
public:
  explicit MNLogit(const Eigen::VectorXd& gibbs) : Estimator(gibbs) {}

  // Samples the posterior of `alternatives` - 1 coefficient vectors given each observation's
  // choice (0 the base, 1 ... J-1); false when interrupted or when the posterior has no mode.
  // Afterwards logML, logML_CJ and the acceptance rate are set.
  bool Sample(const Eigen::VectorXi& choice, Eigen::Index alternatives, const Eigen::MatrixXd& X,
              const LinearPrior& prior, const EventDispatcher& out, const std::atomic<bool>* interrupt);

  double logML = std::numeric_limits<double>::quiet_NaN();
  double logML_CJ = std::numeric_limits<double>::quiet_NaN();
  double acceptance = std::numeric_limits<double>::quiet_NaN();
  bool noMode = false;

  Eigen::Index Observations() const override { return m_X->rows(); }
  Eigen::Index Dimension() const override { return m_X->cols() * m_others; }
  double BlockLogLikelihood(const Eigen::VectorXd& b, Eigen::Index first, Eigen::Index end,
                            Workspace& workspace) const override;
  double LogPrior(const Eigen::VectorXd& b) const override;
  Eigen::VectorXd SearchStart() const override { return m_prior.mean; }
  double Derivatives(const Eigen::VectorXd& b, Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian) const override;

private:
  const Eigen::MatrixXd* m_X = nullptr;
  Eigen::MatrixXd m_chose;  // n x (J-1): 1 where the observation chose that alternative
  Eigen::Index m_others = 0;
  LinearPrior m_prior;
};

// The choice probabilities of every alternative (columns; the base first) at indices `eta`
// (n x (J-1), the base's index being 0), finite for any indices.
Eigen::MatrixXd MultinomialLogitProbabilities(const Eigen::MatrixXd& eta);
