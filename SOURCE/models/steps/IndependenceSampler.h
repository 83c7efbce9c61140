// IndependenceSampler: models whose whole parameter vector is drawn by one independence
// Metropolis-Hastings step from a multivariate t at the posterior mode (logit, counts, ordered
// choices). A model supplies its log-likelihood as a sum over blocks of observations and its
// prior; the sampler finds the mode, runs the chains, and computes the acceptance rate and both
// log-marginal likelihoods.
#pragma once

#include <atomic>
#include <limits>

#include <Eigen/Dense>

#include "Estimator.h"

class EventDispatcher;

// Degrees of freedom of the t proposal: heavier tails than the Normal approximation of the
// posterior, so that the weights kernel / proposal stay bounded.
constexpr double kIndependenceProposalDof = 10.0;

// The posterior of theta (the sampler's parameterisation: unbounded, with any Jacobian of a
// transformation already in the prior term).
class IndependenceTarget {
public:
  virtual ~IndependenceTarget() = default;

  // Arrays of one value per observation for an evaluation's intermediate results; blocks running
  // at once use disjoint segments of them.
  struct Workspace {
    Eigen::ArrayXd index, work, extra;
  };

  virtual Eigen::Index Observations() const = 0;
  virtual Eigen::Index Dimension() const = 0;
  // The log-likelihood's terms of the observations [first, end) at theta, summed. Called from
  // several threads at once for different blocks.
  virtual double BlockLogLikelihood(const Eigen::VectorXd& theta, Eigen::Index first, Eigen::Index end,
                                    Workspace& workspace) const = 0;
  // log p(theta), constants included (the marginal likelihoods need them).
  virtual double LogPrior(const Eigen::VectorXd& theta) const = 0;
  // Where the search for the mode starts.
  virtual Eigen::VectorXd SearchStart() const = 0;

  // The log kernel with its gradient and Hessian, for the search for the mode (a few dozen calls).
  // By default from central differences of the kernel; models with simple derivatives give them.
  virtual double Derivatives(const Eigen::VectorXd& theta, Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian) const;

  // The parameters the model reports for theta (by default theta itself).
  virtual Eigen::Index ReportedCount() const { return Dimension(); }
  virtual void Report(const Eigen::VectorXd& theta, DrawRow out) const { out = theta.transpose(); }

  // log-likelihood + log prior at theta, on one thread.
  double LogKernel(const Eigen::VectorXd& theta) const;
};

struct IndependenceResult {
  bool noMode = false;  // the posterior has no mode that Newton's method finds
  double acceptance = std::numeric_limits<double>::quiet_NaN();
  double logML = std::numeric_limits<double>::quiet_NaN();     // Lewis & Raftery
  double logML_CJ = std::numeric_limits<double>::quiet_NaN();  // Chib & Jeliazkov
};

// Samples the target with the estimator's settings: chains start at draws from the proposal (so
// that they begin apart) and keep the reported parameters. False when interrupted or when there
// is no mode (result.noMode); the estimator's draws then hold nothing useful.
bool SampleIndependence(Estimator& estimator, const IndependenceTarget& target, const EventDispatcher& out,
                        const std::atomic<bool>* interrupt, IndependenceResult& result);
