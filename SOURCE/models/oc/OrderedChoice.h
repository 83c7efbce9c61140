// OrderedChoice: what the ordered probit and logit share: the posterior of the coefficients and
// cut-points for the shared independence Metropolis-Hastings sampler.
#pragma once

#include <array>
#include <atomic>
#include <limits>

#include <Eigen/Dense>

#include "CutPoints.h"
#include "Estimator.h"
#include "IndependenceSampler.h"
#include "IntervalProbabilities.h"
#include "LinearPrior.h"

class EventDispatcher;

// y* = x'b + e, y = j when c_(j-1) < y* <= c_j (categories numbered 0 to J-1 here), so
// P(y = j | x) = F(c_j - x'b) - F(c_(j-1) - x'b) with F the distribution function of e;
// b ~ N(m, P^-1) (constraints folded in), the cut-points as CutPoints says. The coefficients and
// the cut-points (as the first free one and the logs of the gaps) are drawn together from a t
// proposal at the posterior mode, which avoids the slow mixing of cut-points drawn one at a time
// given latent data. Records b, then the free cut-points.
class OrderedChoice : public Estimator, public IndependenceTarget {
public:
  explicit OrderedChoice(const Eigen::VectorXd& gibbs) : Estimator(gibbs) {}

  // y holds the categories 0 .. categories-1. With `interceptColumn` >= 0 (the column of X that
  // is constant) the first cut-point is fixed at 0. False when interrupted or when there is no
  // mode; afterwards logML, logML_CJ and the acceptance rate are set.
  bool Sample(const Eigen::VectorXi& y, int categories, const Eigen::MatrixXd& X, Eigen::Index interceptColumn,
              const LinearPrior& prior, const CutPointPrior& cutPrior, const EventDispatcher& out,
              const std::atomic<bool>* interrupt);

  double logML = std::numeric_limits<double>::quiet_NaN();
  double logML_CJ = std::numeric_limits<double>::quiet_NaN();
  double acceptance = std::numeric_limits<double>::quiet_NaN();
  bool noMode = false;

  // The posterior for the independence step, theta = (b, cut-point parameters).
  Eigen::Index Observations() const override { return m_X->rows(); }
  Eigen::Index Dimension() const override { return m_X->cols() + m_cuts.Free(); }
  double LogPrior(const Eigen::VectorXd& theta) const override;
  // The mode in (b, free cut-points), where the posterior is log-concave, found by Newton's method
  // from the cut-points that fit the categories' shares with b = 0.
  Eigen::VectorXd SearchStart() const override;
  double Derivatives(const Eigen::VectorXd& theta, Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian) const override;
  // b, then the free cut-points.
  void Report(const Eigen::VectorXd& theta, DrawRow out) const override;

protected:
  // The block's log-likelihood for the distribution of e.
  template <class Distribution>
  double BlockSum(const Eigen::VectorXd& theta, Eigen::Index first, Eigen::Index end, Workspace& workspace) const {
    const Eigen::Index n = end - first, k = m_X->cols();
    auto index = workspace.index.segment(first, n);
    index.matrix().noalias() = m_X->middleRows(first, n) * theta.head(k);
    // bounds[j] and bounds[j + 1] enclose category j.
    std::array<double, kMaxOrderedCategories + 1> bounds;
    bounds[0] = -oc::kInf;
    m_cuts.All(theta.tail(m_cuts.Free()), bounds.data() + 1);
    bounds[static_cast<std::size_t>(m_cuts.Categories())] = oc::kInf;
    const int* y = m_y->data() + first;
    oc::LogProbabilitySum sum;
    for (Eigen::Index i = 0; i < n; ++i) {
      const auto j = static_cast<std::size_t>(y[i]);
      sum.Add<Distribution>(bounds[j] - index(i), bounds[j + 1] - index(i));
    }
    return sum.Value();
  }
  // The interval's log probability and derivatives, and the quantile function, for e.
  virtual oc::IntervalScores Scores(double l, double u) const = 0;
  virtual double Quantile(double p) const = 0;

private:
  // The log kernel without the Jacobian of theta, with its derivatives, in (b, free cut-points).
  double DerivativesInCuts(const Eigen::VectorXd& b, const Eigen::VectorXd& free, Eigen::VectorXd& gradient,
                           Eigen::MatrixXd& hessian) const;

  const Eigen::VectorXi* m_y = nullptr;
  const Eigen::MatrixXd* m_X = nullptr;
  Eigen::Index m_intercept = -1;
  LinearPrior m_prior;
  double m_priorLogConstant = 0.0;  // log N(m; m, P^-1)
  CutPoints m_cuts;
};
