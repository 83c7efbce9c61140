// Inefficiency: what a stochastic frontier's distribution of the inefficiency u >= 0 contributes
// to the sampler: the draws of u given the composed residual, the draws of its own parameters
// given u, and, for the marginal likelihood, the density of the composed residual with u
// integrated out.
#pragma once

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <Eigen/Dense>

#include "RandomEngine.h"

// Every distribution sees the data through w_i = s (x_i'b - y_i) = u_i - s v_i, s = 1 for a
// production frontier (y = x'b + v - u) and -1 for a cost frontier (y = x'b + v + u): as v is
// symmetric, w_i = u_i + N(0, 1/tau) in both cases.
class Inefficiency {
public:
  virtual ~Inefficiency() = default;
  // A fresh copy with the same data and prior, for one chain.
  virtual std::unique_ptr<Inefficiency> Clone() const = 0;

  // The parameters theta, in the order they are recorded and given to the functions below: first
  // the coefficients of the determinants of u (the second list; their labels are the model's),
  // then the parameters labelled by Labels().
  virtual Eigen::Index DeterminantCount() const { return 0; }
  virtual std::vector<std::string> Labels() const = 0;
  Eigen::Index Count() const { return DeterminantCount() + static_cast<Eigen::Index>(Labels().size()); }
  // Which parameters (all of theta) are positive: their logs are the unconstrained parameters of
  // the marginal likelihood.
  virtual std::vector<bool> Positive() const = 0;

  // Called once, before the chains' copies are made, with the number of observations.
  virtual void Prepare(Eigen::Index /*observations*/) {}
  // Starting values of the parameters that make the mean of u about `meanU`.
  virtual void Start(double meanU) = 0;
  // u_i | w_i, tau, parameters for the observations [first, end). Blocks of observations are
  // drawn at once on several threads, each with its own engine: nothing else may change here.
  virtual void DrawInefficiency(const Eigen::VectorXd& w, double tau, Eigen::Index first, Eigen::Index end,
                                RandomEngine& rng, Eigen::VectorXd& u) = 0;
  // The parameters given u, or given w and tau with u integrated out where that mixes better
  // (the draw of u that follows then completes a draw of both from their joint conditional).
  virtual void DrawParameters(const Eigen::VectorXd& u, const Eigen::VectorXd& w, double tau, RandomEngine& rng) = 0;
  // sum_i log g(u_i + shift) up to a constant, g the density of u at the current parameters
  // (-inf when some u_i + shift <= 0): the target of the move that shifts u and the intercept.
  virtual double LogDensitySum(const Eigen::VectorXd& u, double shift) const = 0;
  virtual void Record(Eigen::Ref<Eigen::RowVectorXd> out) const = 0;
  // Tuned proposals stop tuning.
  virtual void EndBurnin() {}
  // The acceptance rate of the Metropolis-Hastings steps (NaN for Gibbs steps only).
  virtual double Acceptance() const { return std::numeric_limits<double>::quiet_NaN(); }

  // For Chib's marginal likelihood, distributions whose parameters have a conjugate conditional
  // given u: the statistic of u it depends on, and log p(theta | u) from it.
  virtual bool HasConjugateOrdinate() const { return false; }
  virtual double SufficientStatistic(const Eigen::VectorXd& /*u*/) const { return std::numeric_limits<double>::quiet_NaN(); }
  virtual double LogParameterOrdinate(const Eigen::VectorXd& /*theta*/, double /*statistic*/, Eigen::Index /*n*/) const {
    return std::numeric_limits<double>::quiet_NaN();
  }
  // Sets the parameters (for the reduced runs that hold them fixed).
  virtual void Fix(const Eigen::VectorXd& /*theta*/) {}
  // log p(parameters).
  virtual double LogPrior(const Eigen::VectorXd& theta) const = 0;
  // sum_i log of the density of w_i = u_i + v_i, v_i ~ N(0, 1/tau), u integrated out.
  virtual double LogConvolvedDensity(const Eigen::VectorXd& w, double tau, const Eigen::VectorXd& theta) const = 0;
};
