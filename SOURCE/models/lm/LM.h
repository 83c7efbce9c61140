// LM: the linear regression model with a Normal prior on the coefficients and a Gamma prior on
// the error precision, sampled from its sufficient statistics.
#pragma once

#include <atomic>

#include <Eigen/Dense>

#include "Estimator.h"
#include "LinearPrior.h"
#include "RegressionStatistics.h"

class EventDispatcher;

// y = X b + e, e ~ N(0, 1/tau): b ~ N(m, P^-1) (constraints folded in), tau ~ Gamma(a, b).
// The Gibbs sampler draws b | tau and tau | b; both need only the regression's cross-products,
// computed once (stably, from a QR factor), so a draw costs the same whatever the number of
// observations. Records b, then tau.
class LM : public Estimator {
public:
  explicit LM(const Eigen::VectorXd& gibbs) : Estimator(gibbs) {}

  // Samples the posterior; false when interrupted. Afterwards logML (Lewis & Raftery, on
  // (b, log tau)) and logML_CJ (Chib's Rao-Blackwellised ordinate) are set.
  bool Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const LinearPrior& prior,
              double a, double b, const EventDispatcher& out, const std::atomic<bool>* interrupt);

  double logML = 0.0;
  double logML_CJ = 0.0;

  // The log-likelihood at (coefficients, tau) from the sufficient statistics.
  double LogLikelihood(const Eigen::VectorXd& coefficients, double tau) const;

private:
  RegressionStatistics m_stats;
  LinearPrior m_prior;
  double m_a = 0.0;
  double m_b = 0.0;

  void MarginalLikelihoods(const Eigen::MatrixXd& pooled);
};
