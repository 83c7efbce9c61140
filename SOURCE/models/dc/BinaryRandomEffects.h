// Probit_RE, Logit_RE: binary choice with a random intercept per group of a panel.
#pragma once

#include <atomic>
#include <limits>
#include <vector>

#include <Eigen/Dense>

#include "Estimator.h"
#include "LinearPrior.h"
#include "RandomIntercepts.h"

class EventDispatcher;

// P(y_it = 1 | x_it, a_i) = F(x_it'b + a_i), a_i ~ N(0, 1/omega), b ~ N(m, P^-1) (constraints
// folded in), omega ~ Gamma(a_re, b_re). Each sweep augments the data so that the outcomes become
// a Normal regression (probit: utilities from truncated Normals; logit: Polya-Gamma weights), draws
// (b, a) as one block from the random-intercept step, rescales (b, a) along the scale group for the
// probit with a prior centred at zero (as the pooled probit does), then draws omega given a.
// Records b, then the effects' variance 1/omega.
class BinaryRandomEffects : public Estimator {
public:
  BinaryRandomEffects(const Eigen::VectorXd& gibbs, BinaryLink link) : Estimator(gibbs), m_link(link) {}

  // Samples the posterior; false when interrupted. `groups` numbers each observation's group
  // 0 ... G-1. Afterwards logML (Lewis & Raftery on (b, log omega), the effects integrated out by
  // quadrature) and, when `chib` is true, logML_CJ (Chib's method, which needs a second run with
  // omega fixed) are set, and `effects` holds each group's posterior mean effect.
  bool Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const std::vector<int>& groups,
              const LinearPrior& prior, double aRe, double bRe, bool chib, const EventDispatcher& out,
              const std::atomic<bool>* interrupt);

  double logML = std::numeric_limits<double>::quiet_NaN();
  double logML_CJ = std::numeric_limits<double>::quiet_NaN();
  Eigen::VectorXd effects;

  // What one chain needs of the model.
  BinaryLink Link() const { return m_link; }
  const Eigen::VectorXd& Y() const { return *m_y; }
  const Eigen::MatrixXd& X() const { return *m_X; }
  const PanelGroups& Groups() const { return m_groups; }
  const LinearPrior& Prior() const { return m_prior; }
  // omega | a ~ Gamma(a_re + G/2, b_re + a'a/2), as (shape, rate).
  std::pair<double, double> OmegaConditional(double sumOfSquaredEffects) const {
    return {m_aRe + 0.5 * static_cast<double>(m_groups.Count()), m_bRe + 0.5 * sumOfSquaredEffects};
  }

private:
  // log p(y | b, omega) + log p(b) + log p(omega).
  double LogKernel(const Eigen::VectorXd& b, double omega) const;
  bool Chib(const Eigen::MatrixXd& pooled, const EventDispatcher& out, const std::atomic<bool>* interrupt);

  BinaryLink m_link;
  const Eigen::VectorXd* m_y = nullptr;
  const Eigen::MatrixXd* m_X = nullptr;
  PanelGroups m_groups;
  LinearPrior m_prior;
  double m_aRe = 0.0, m_bRe = 0.0;
};

class Probit_RE : public BinaryRandomEffects {
public:
  explicit Probit_RE(const Eigen::VectorXd& gibbs) : BinaryRandomEffects(gibbs, BinaryLink::Probit) {}
};

class Logit_RE : public BinaryRandomEffects {
public:
  explicit Logit_RE(const Eigen::VectorXd& gibbs) : BinaryRandomEffects(gibbs, BinaryLink::Logit) {}
};
