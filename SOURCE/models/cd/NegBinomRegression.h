// NegBinom: the negative binomial regression model (mean-dispersion form), sampled by the shared
// independence Metropolis-Hastings step.
#pragma once

#include <atomic>
#include <limits>
#include <optional>

#include <Eigen/Dense>

#include "CountObservations.h"
#include "Estimator.h"
#include "IndependenceSampler.h"
#include "LinearPrior.h"

class EventDispatcher;

// y has mean mu = exposure exp(x'b) and variance mu + alpha mu^2: a Poisson whose mean is mu times
// a Gamma(1/alpha, 1/alpha) draw. b ~ N(m, P^-1) (constraints folded in), alpha ~ Gamma(shape,
// rate). The sampler works on theta = (b, log alpha), whose posterior is close to Normal; the
// prior of log alpha carries the Jacobian alpha. Records b, then alpha.
class NegBinom : public Estimator, public IndependenceTarget {
public:
  explicit NegBinom(const Eigen::VectorXd& gibbs) : Estimator(gibbs) {}

  // Samples the posterior. `exposure` holds one positive value per observation, or nothing. False
  // when interrupted or when the search for the mode failed (noMode). Afterwards logML (Lewis &
  // Raftery), logML_CJ (Chib & Jeliazkov) and the acceptance rate are set.
  bool Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const Eigen::VectorXd& exposure,
              const LinearPrior& prior, double alphaShape, double alphaRate, const EventDispatcher& out,
              const std::atomic<bool>* interrupt);

  double logML = std::numeric_limits<double>::quiet_NaN();
  double logML_CJ = std::numeric_limits<double>::quiet_NaN();
  double acceptance = std::numeric_limits<double>::quiet_NaN();
  bool noMode = false;

  // The posterior for the independence step.
  Eigen::Index Observations() const override { return m_data->Size(); }
  Eigen::Index Dimension() const override { return m_data->X.cols() + 1; }
  double BlockLogLikelihood(const Eigen::VectorXd& theta, Eigen::Index first, Eigen::Index end,
                            Workspace& workspace) const override;
  double LogPrior(const Eigen::VectorXd& theta) const override;
  // The mode of the Poisson model's posterior for b, and the best log alpha on a grid given it.
  Eigen::VectorXd SearchStart() const override;
  double Derivatives(const Eigen::VectorXd& theta, Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian) const override;
  void Report(const Eigen::VectorXd& theta, DrawRow out) const override;

private:
  std::optional<CountObservations> m_data;  // in order of the counts
  LinearPrior m_prior;
  double m_shape = 1.0, m_rate = 0.1;
  double m_alphaPriorConstant = 0.0;  // log(rate^shape / Gamma(shape))
};

// log Gamma(count + r) - log Gamma(r) for a whole number count >= 0 and r > 0, accurate for large r
// as well (where both terms are huge and nearly equal).
double LogGammaRatio(double count, double r);
