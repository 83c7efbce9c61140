// Poisson: the Poisson regression model, sampled by the shared independence Metropolis-Hastings
// step.
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

// y ~ Poisson(exposure exp(x'b)), b ~ N(m, P^-1) (constraints folded in). The log posterior is
// concave, so it has one mode; the proposal is a multivariate t there with the inverse curvature as
// its scale. Records b.
class Poisson : public Estimator, public IndependenceTarget {
public:
  explicit Poisson(const Eigen::VectorXd& gibbs) : Estimator(gibbs) {}

  // Samples the posterior. `exposure` holds one positive value per observation, or nothing. False
  // when interrupted or when the search for the mode failed (noMode; the log-likelihood overflows
  // along the way). Afterwards logML (Lewis & Raftery), logML_CJ (Chib & Jeliazkov) and the
  // acceptance rate are set.
  bool Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const Eigen::VectorXd& exposure,
              const LinearPrior& prior, const EventDispatcher& out, const std::atomic<bool>* interrupt);

  double logML = std::numeric_limits<double>::quiet_NaN();
  double logML_CJ = std::numeric_limits<double>::quiet_NaN();
  double acceptance = std::numeric_limits<double>::quiet_NaN();
  bool noMode = false;

  // The posterior for the independence step.
  Eigen::Index Observations() const override { return m_data->Size(); }
  Eigen::Index Dimension() const override { return m_data->X.cols(); }
  double BlockLogLikelihood(const Eigen::VectorXd& b, Eigen::Index first, Eigen::Index end,
                            Workspace& workspace) const override;
  double LogPrior(const Eigen::VectorXd& b) const override;
  Eigen::VectorXd SearchStart() const override { return m_data->LogLinearStart(m_prior); }
  double Derivatives(const Eigen::VectorXd& b, Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian) const override;

private:
  std::optional<CountObservations> m_data;
  LinearPrior m_prior;
};

// The Poisson log posterior kernel at b with its gradient and Hessian (for the samplers that start
// from the Poisson fit).
double PoissonPosteriorDerivatives(const CountObservations& data, const LinearPrior& prior, const Eigen::VectorXd& b,
                                   Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian);
