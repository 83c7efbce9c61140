// LM_HET: the linear regression model whose error precision depends on a second list of variables.
#pragma once

#include <Eigen/Dense>
#include <atomic>
#include <limits>

#include "Estimator.h"
#include "LinearPrior.h"

class EventDispatcher;

// y_i = x_i'b + e_i, e_i ~ N(0, 1/tau_i), log tau_i = z_i'd. The prior is one Normal on (b, d)
// (constraints folded in, so they may tie b to d). Each sweep moves d by a random-walk
// Metropolis-Hastings step on p(d | y), b integrated out analytically, then draws b from its
// Normal conditional p(b | d, y) (weighted least squares). Integrating b out makes the step
// immune to the correlation between the blocks, which tight constraints across them would
// otherwise freeze. The proposal covariance is a scale times the inverse expected information of
// d; the scale is tuned during burn-in toward an acceptance rate of 0.3 and then frozen.
// Records b, then d.
class LM_HET : public Estimator {
public:
  explicit LM_HET(const Eigen::VectorXd& gibbs) : Estimator(gibbs) {}

  // Samples the posterior; false when interrupted. `prior` is over the k columns of X followed by
  // the p columns of Z. Afterwards logML (Lewis & Raftery, on (b, d)) and logML_CJ (Chib &
  // Jeliazkov, which needs a second, shorter run of proposal draws) are set.
  bool Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const Eigen::MatrixXd& Z,
              const LinearPrior& prior, const EventDispatcher& out,
              const std::atomic<bool>* interrupt);

  double logML = std::numeric_limits<double>::quiet_NaN();
  double logML_CJ = std::numeric_limits<double>::quiet_NaN();

  // The log-likelihood at (b, d).
  double LogLikelihood(const Eigen::VectorXd& b, const Eigen::VectorXd& d) const;

  // What one evaluation at d leaves behind: the canonical form of p(b | d, y).
  struct Conditional {
    Eigen::VectorXd w;   // exp(Z d): the precision of each observation
    Eigen::MatrixXd Xw;  // the rows of X scaled by w
    Eigen::MatrixXd A;   // X'WX + Q_bb: the precision of b | d, y
    Eigen::LLT<Eigen::MatrixXd> llt;
    Eigen::VectorXd c;  // X'Wy + h_b - Q_bd d: A times the mean of b | d, y
    Eigen::VectorXd mean, residual, priorMean;  // scratch of the sum of squares at the mean
  };
  // log p(y | d) + log p(d), b integrated out; -infinity where it cannot be evaluated.
  double LogKernelOfD(const Eigen::VectorXd& d, Conditional& out) const;

  // The proposal's frozen scale, averaged (geometrically) over the chains.
  double ProposalScale() const { return m_scale; }

private:
  Eigen::VectorXd m_y;
  Eigen::MatrixXd m_X, m_Z;
  Eigen::VectorXd m_zSum;  // Z'1
  LinearPrior m_prior;
  // Blocks of the prior precision Q and of h = Q mean; the prior of b given d in canonical form.
  Eigen::MatrixXd m_Qbb, m_Qbd;
  Eigen::VectorXd m_hb;
  Eigen::LLT<Eigen::MatrixXd> m_QbbFactor;
  double m_QbbLogDet = 0.0;
  // The marginal prior of d: mean and precision (the Schur complement of Q_bb in Q).
  Eigen::VectorXd m_dMean;
  Eigen::MatrixXd m_dPrecision;
  double m_dPrecisionLogDet = 0.0;
  // Lower Cholesky factor of the proposal's covariance before scaling.
  Eigen::MatrixXd m_proposalFactor;
  double m_scale = 1.0;

  bool MarginalLikelihoods(const Eigen::MatrixXd& pooled, const Eigen::VectorXd& logKernels,
                           const EventDispatcher& out, const std::atomic<bool>* interrupt);
};
