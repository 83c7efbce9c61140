// LM_RE: the linear regression model with individual (random) effects on panel data.
#pragma once

#include <Eigen/Dense>
#include <atomic>
#include <limits>
#include <utility>
#include <vector>

#include "Estimator.h"
#include "LinearPrior.h"
#include "RegressionStatistics.h"

class EventDispatcher;

// y_it = x_it'b + a_i + e_it, e_it ~ N(0, 1/tau), a_i ~ N(0, 1/omega); b ~ N(m, P^-1)
// (constraints folded in), tau ~ Gamma(a, b), omega ~ Gamma(a_re, b_re). Each sweep draws
// (b, a) jointly given (tau, omega) (b from its GLS conditional with the effects integrated out,
// then each a_i given b), then tau given (b, a) and omega given a. Everything works on group
// sums prepared once, so a sweep costs O(N k + k^3) for N groups, not O(n k).
// Records b, then tau, then omega.
class LM_RE : public Estimator {
public:
  explicit LM_RE(const Eigen::VectorXd& gibbs) : Estimator(gibbs) {}

  // Samples the posterior; false when interrupted. `groups` gives each observation's group as
  // 0, 1, ..., N-1 (every code used). Afterwards logML (Lewis & Raftery, on (b, log tau,
  // log omega), effects integrated out) is set, and logML_CJ (Chib's method, which needs a
  // second run with omega fixed) when `chib` is true; it is NaN otherwise.
  bool Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const std::vector<int>& groups,
              const LinearPrior& prior, double a, double b, double aRe, double bRe, bool chib,
              const EventDispatcher& out, const std::atomic<bool>* interrupt);

  double logML = std::numeric_limits<double>::quiet_NaN();
  double logML_CJ = std::numeric_limits<double>::quiet_NaN();

  // log p(y | b, tau, omega) with the effects integrated out: per group,
  // y_i ~ N(X_i b, tau^-1 I + omega^-1 11').
  double LogIntegratedLikelihood(const Eigen::VectorXd& coefficients, double tau,
                                 double omega) const;

  // The canonical form (M, v) of p(b | tau, omega, y): M = X'V^-1 X + prior precision,
  // v = X'V^-1 y + prior precision times mean.
  void CoefficientConditional(double tau, double omega, Eigen::MatrixXd& M,
                              Eigen::VectorXd& v) const;

  // Working space of one chain's draws of (b, a).
  struct Scratch {
    Eigen::MatrixXd M;
    Eigen::VectorXd v, z, groupResidual;
    Eigen::LLT<Eigen::MatrixXd> factor;
  };
  // One joint draw of (b, a) given (tau, omega).
  void DrawCoefficientsAndEffects(double tau, double omega, RandomEngine& rng, Scratch& scratch,
                                  Eigen::VectorXd& coefficients, Eigen::VectorXd& effects) const;

  // sum_it (y_it - x_it'b - a_i)^2 from the group sums; `groupResidual` holds sy_i - s_i'b, as
  // DrawCoefficientsAndEffects leaves it.
  double SumOfSquares(const Eigen::VectorXd& coefficients, const Eigen::VectorXd& effects,
                      const Eigen::VectorXd& groupResidual) const;

  // The Gamma conditionals of tau given the sum of squared errors and of omega given the sum of
  // squared effects, as (shape, rate).
  std::pair<double, double> TauConditional(double sumOfSquares) const {
    return {m_a + 0.5 * m_n, m_b + 0.5 * sumOfSquares};
  }
  std::pair<double, double> OmegaConditional(double sumOfSquaredEffects) const {
    return {m_aRe + 0.5 * static_cast<double>(m_groupSize.size()),
            m_bRe + 0.5 * sumOfSquaredEffects};
  }

private:
  RegressionStatistics m_stats;
  double m_n = 0.0;
  Eigen::MatrixXd m_groupX;     // k x N: the sums of X over each group's observations
  Eigen::VectorXd m_groupY;     // N: the sums of y over each group
  Eigen::VectorXd m_groupSize;  // N: T_i
  // X'V^-1 X = tau (W_xx + sum_i f_i s_i s_i' / T_i) with f_i = omega / (omega + tau T_i), W the
  // within-group cross products and s_i the group sums of X (sy_i of y); likewise X'V^-1 y.
  // Groups of equal size share f_i, so the sums are kept per distinct size.
  Eigen::MatrixXd m_withinXX;
  Eigen::VectorXd m_withinXy;
  std::vector<double> m_sizes;
  std::vector<Eigen::MatrixXd> m_sizeSS;  // sum of s_i s_i' / T_i over the groups of a size
  std::vector<Eigen::VectorXd> m_sizeSY;  // sum of s_i sy_i / T_i
  LinearPrior m_prior;
  double m_a = 0.0, m_b = 0.0, m_aRe = 0.0, m_bRe = 0.0;

  bool ChibJeliazkov(const Eigen::MatrixXd& pooled, const Eigen::VectorXd& sumsOfSquaredEffects,
                     const EventDispatcher& out, const std::atomic<bool>* interrupt);
};
