// ConditionalLogit: the conditional logit model (CLogit) of choices among alternatives described
// by their own regressors, sampled by the shared independence Metropolis-Hastings step.
#pragma once

#include <atomic>
#include <limits>
#include <vector>

#include <Eigen/Dense>

#include "Estimator.h"
#include "IndependenceSampler.h"
#include "LinearPrior.h"

class EventDispatcher;

// The alternatives of each choice situation: rows [start[s], start[s + 1]) of the data sorted by
// situation, and the row chosen in each.
struct ChoiceSituations {
  std::vector<Eigen::Index> start;   // S + 1 offsets
  std::vector<Eigen::Index> chosen;  // per situation: its chosen row
  Eigen::Index Count() const { return static_cast<Eigen::Index>(chosen.size()); }
};

// P(row r of situation s chosen) = e^(x_r'b) / sum over the situation's rows of e^(x'b),
// b ~ N(m, P^-1) (constraints folded in). Records b.
class CLogit : public Estimator, public IndependenceTarget {
public:
  explicit CLogit(const Eigen::VectorXd& gibbs) : Estimator(gibbs) {}

  // Samples the posterior given the regressors of every alternative (rows sorted by situation);
  // false when interrupted or when the posterior has no mode. Afterwards logML, logML_CJ and the
  // acceptance rate are set.
  bool Sample(const ChoiceSituations& situations, const Eigen::MatrixXd& X, const LinearPrior& prior,
              const EventDispatcher& out, const std::atomic<bool>* interrupt);

  double logML = std::numeric_limits<double>::quiet_NaN();
  double logML_CJ = std::numeric_limits<double>::quiet_NaN();
  double acceptance = std::numeric_limits<double>::quiet_NaN();
  bool noMode = false;

  Eigen::Index Observations() const override { return m_situations->Count(); }
  Eigen::Index Dimension() const override { return m_Xt.rows(); }
  double BlockLogLikelihood(const Eigen::VectorXd& b, Eigen::Index first, Eigen::Index end,
                            Workspace& workspace) const override;
  double LogPrior(const Eigen::VectorXd& b) const override;
  Eigen::VectorXd SearchStart() const override { return m_prior.mean; }
  double Derivatives(const Eigen::VectorXd& b, Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian) const override;

private:
  const ChoiceSituations* m_situations = nullptr;
  Eigen::MatrixXd m_Xt;  // k x rows: each alternative's regressors contiguous
  LinearPrior m_prior;
};
