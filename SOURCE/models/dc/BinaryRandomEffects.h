// Probit_RE, Logit_RE: binary choice with a random intercept per group of a panel.
#pragma once

#include <algorithm>
#include <atomic>
#include <limits>
#include <vector>

#include <Eigen/Dense>

#include "Estimator.h"
#include "LinearPrior.h"
#include "RandomIntercepts.h"

class EventDispatcher;

// P(y_it = 1 | x_it, a_i) = F(x_it'b + a_i), a_i ~ N(0, 1/omega), b ~ N(m, P^-1) (constraints
// folded in), omega ~ Gamma(a_re, b_re). The probit's sweep augments the data with utilities from
// truncated Normals, draws (b, a) as one block from the random-intercept step and rescales (b, a)
// along the scale group when the prior is centred at zero (as the pooled probit does). The logit's
// sweep is Metropolis-Hastings within Gibbs (see LogitRandomIntercepts.h); only Chib's reduced run
// uses Polya-Gamma weights, whose draws cost several times a logistic evaluation. Both then draw
// omega given a. Records b, then the effects' variance 1/omega.
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
  // The logit's acceptance rates of the coefficients' and the effects' Metropolis-Hastings steps.
  double coefficientAcceptance = std::numeric_limits<double>::quiet_NaN();
  double effectAcceptance = std::numeric_limits<double>::quiet_NaN();

  // What one chain needs of the model.
  BinaryLink Link() const { return m_link; }
  const Eigen::VectorXd& Y() const { return *m_y; }
  const Eigen::MatrixXd& X() const { return *m_X; }
  const PanelGroups& Groups() const { return m_groups; }
  // y and X with the observations group by group (the logit's chain works on these).
  const Eigen::VectorXd& SortedY() const { return m_sortedY; }
  const Eigen::MatrixXd& SortedX() const { return m_sortedX; }
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
  Eigen::VectorXd m_sortedY;
  Eigen::MatrixXd m_sortedX;
  LinearPrior m_prior;
  double m_aRe = 0.0, m_bRe = 0.0;
};

// What the chains of both links record: b, 1/omega and a'a (for omega's ordinate in Chib's method;
// dropped from what the model keeps), and the running sums of the effects.
class RandomEffectsChain : public GibbsChain {
public:
  // The average of the effects over the recorded draws.
  Eigen::VectorXd EffectMeans() const { return m_effectSums / static_cast<double>(std::max(1L, m_recorded)); }

protected:
  explicit RandomEffectsChain(Eigen::Index groups) : m_effectSums(Eigen::VectorXd::Zero(groups)) {}
  void RecordState(DrawRow row, const Eigen::VectorXd& b, double omega, const Eigen::VectorXd& a) const {
    const Eigen::Index k = b.size();
    row.head(k) = b.transpose();
    row(k) = 1.0 / omega;
    row(k + 1) = a.squaredNorm();
    m_effectSums += a;
    ++m_recorded;
  }

private:
  mutable Eigen::VectorXd m_effectSums;
  mutable long m_recorded = 0;
};

class Probit_RE : public BinaryRandomEffects {
public:
  explicit Probit_RE(const Eigen::VectorXd& gibbs) : BinaryRandomEffects(gibbs, BinaryLink::Probit) {}
};

class Logit_RE : public BinaryRandomEffects {
public:
  explicit Logit_RE(const Eigen::VectorXd& gibbs) : BinaryRandomEffects(gibbs, BinaryLink::Logit) {}
};
