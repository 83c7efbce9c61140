// StochasticFrontier: the Gibbs sampler shared by every frontier model, whatever the distribution
// of the inefficiency, with or without firm effects.
#pragma once

#include <atomic>
#include <limits>
#include <memory>
#include <vector>

#include <Eigen/Dense>

#include "Estimator.h"
#include "Inefficiency.h"
#include "LinearPrior.h"

class EventDispatcher;
struct PanelGroups;

// y_i = x_i'b [+ a_g(i)] + v_i - s u_i, v_i ~ N(0, 1/tau), u_i >= 0 from the distribution
// `inefficiency` describes; s = 1 for a production frontier, -1 for a cost frontier.
// b ~ N(m, P^-1) (constraints folded in), tau ~ Gamma(a, b); with firm effects a_g ~ N(0, 1/omega)
// and omega ~ Gamma(a_re, b_re). Each sweep draws the inefficiency's parameters given u, then u
// given the composed residual, then b (jointly with the firm effects) given y + s u, then tau,
// then omega. Records b, tau, [omega], then the inefficiency's parameters; the posterior means of
// u_i and of exp(-u_i) are summed over the sweeps after burn-in.
class StochasticFrontier : public Estimator {
public:
  StochasticFrontier(const Eigen::VectorXd& gibbs, std::unique_ptr<Inefficiency> inefficiency)
      : Estimator(gibbs), m_inefficiency(std::move(inefficiency)) {}

  struct Priors {
    LinearPrior coefficients;
    double a = 0.001, b = 0.001;        // tau
    double aRe = 0.001, bRe = 0.001;    // omega, with firm effects
  };

  // Samples the posterior; `groups` (empty without firm effects) numbers each observation's firm
  // from 0. False when interrupted. Afterwards the efficiency scores and logML (Lewis & Raftery on
  // (b, log tau, [log omega], the inefficiency's parameters, positive ones in logs), u and the
  // firm effects integrated out) are set.
  // With `chib`, for the half-normal and the exponential without firm effects, logML_CJ (Chib's
  // method, with two more runs that hold the inefficiency's parameters, then tau too, fixed).
  bool Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const std::vector<int>& groups, bool cost,
              const Priors& priors, bool chib, const EventDispatcher& out, const std::atomic<bool>* interrupt);

  // The labels after the coefficients': tau, [omega], the inefficiency's.
  std::vector<std::string> ParameterLabels(bool firmEffects) const;

  double logML = std::numeric_limits<double>::quiet_NaN();
  double logML_CJ = std::numeric_limits<double>::quiet_NaN();
  double acceptance = std::numeric_limits<double>::quiet_NaN();
  Eigen::VectorXd efficiency;    // posterior mean of exp(-u_i)
  Eigen::VectorXd inefficiency;  // posterior mean of u_i

  // log p(y | b, tau, theta) with u integrated out (no firm effects).
  double LogLikelihood(const Eigen::VectorXd& b, double tau, const Eigen::VectorXd& theta) const;

  // The same with firm effects integrated out too.
  double LogLikelihoodWithEffects(const Eigen::VectorXd& b, double tau, double omega, const Eigen::VectorXd& theta,
                                  const PanelGroups& groups) const;

private:
  std::unique_ptr<Inefficiency> m_inefficiency;
  const Eigen::VectorXd* m_y = nullptr;
  const Eigen::MatrixXd* m_X = nullptr;
  double m_sign = 1.0;
  Priors m_priors;
};
