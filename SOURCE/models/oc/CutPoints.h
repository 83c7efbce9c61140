// CutPoints: the cut-points of an ordered-choice model, their prior, and the unbounded parameters
// the sampler draws in their place (the first free cut-point, then the logs of the gaps).
#pragma once

#include <cmath>

#include <Eigen/Dense>

// The most categories an ordered model takes (a curvature matrix of the cut-points' size is
// factored at every step of the search for the mode).
constexpr int kMaxOrderedCategories = 100;

// Each free cut-point N(mean, 1/precision), all of them restricted to increasing order, and to
// values above 0 when the first cut-point is fixed at 0.
struct CutPointPrior {
  double mean = 0.0;
  double precision = 0.001;
};

// J categories have J - 1 cut-points c_1 < ... < c_(J-1); category j is the interval
// (c_(j-1), c_j], with c_0 = -inf and c_J = inf. With a constant term among the regressors c_1 is
// fixed at 0 and the others are free; otherwise all are free. The sampler's parameters theta
// replace the free ones: theta_1 = c_1 when it is free, and each further theta is the log of a
// gap c_j - c_(j-1) (with c_1 fixed, the first gap is c_2 - 0).
class CutPoints {
public:
  CutPoints() = default;
  CutPoints(int categories, bool firstFixed, const CutPointPrior& prior);

  int Categories() const { return m_categories; }
  bool FirstFixed() const { return m_firstFixed; }
  // The free cut-points (and parameters theta): J - 1, or J - 2 with c_1 fixed.
  Eigen::Index Free() const { return m_free; }
  // Whether theta_m is the log of a gap (every one but the first when c_1 is free).
  bool IsLogGap(Eigen::Index m) const { return m_firstFixed || m > 0; }

  // The J - 1 cut-points for theta, written to cuts[0 .. J-2].
  template <class Theta>
  void All(const Theta& theta, double* cuts) const {
    double c = m_firstFixed ? 0.0 : theta(0);
    Eigen::Index m = m_firstFixed ? 0 : 1, j = 0;
    cuts[j++] = c;
    for (; m < m_free; ++m) cuts[j++] = c += std::exp(theta(m));
  }
  // The free cut-points for theta.
  Eigen::VectorXd FreeCuts(const Eigen::Ref<const Eigen::VectorXd>& theta) const;
  // theta for free cut-points in increasing order (and positive with c_1 fixed).
  Eigen::VectorXd Theta(const Eigen::VectorXd& free) const;
  // Whether free cut-points are in the region the prior allows.
  bool Ordered(const Eigen::Ref<const Eigen::VectorXd>& free) const;
  // d free / d theta: column m is d theta_m's effect, e^theta_m (or 1 for a free c_1) on rows m
  // and below.
  Eigen::MatrixXd Jacobian(const Eigen::Ref<const Eigen::VectorXd>& theta) const;
  // log |d free / d theta|: the sum of the log gaps.
  double LogJacobian(const Eigen::Ref<const Eigen::VectorXd>& theta) const;

  // The prior's log density of the free cut-points, normalised over the ordered region: n
  // independent N(mean, 1/precision) values are in increasing order with probability 1/n!, and
  // also above 0 with probability Phi(mean sqrt(precision))^n / n!. With its gradient and Hessian
  // in the free cut-points (added to `gradient` and `hessian`).
  double LogDensity(const Eigen::Ref<const Eigen::VectorXd>& free) const;
  // The prior's log density of the free cut-points at theta plus log |d free / d theta|: the
  // prior of theta. Allocates nothing (it is evaluated at every draw).
  template <class Theta>
  double LogDensityOfTheta(const Theta& theta) const {
    double c = 0.0, squares = 0.0, logJacobian = 0.0;
    for (Eigen::Index m = 0; m < m_free; ++m) {
      if (IsLogGap(m)) {
        c += std::exp(theta(m));
        logJacobian += theta(m);
      } else {
        c = theta(m);
      }
      squares += (c - m_prior.mean) * (c - m_prior.mean);
    }
    return m_logConstant - 0.5 * m_prior.precision * squares + logJacobian;
  }
  double AddLogDensityDerivatives(const Eigen::Ref<const Eigen::VectorXd>& free, Eigen::Ref<Eigen::VectorXd> gradient,
                                  Eigen::Ref<Eigen::MatrixXd> hessian) const;

private:
  int m_categories = 0;
  bool m_firstFixed = false;
  Eigen::Index m_free = 0;
  CutPointPrior m_prior;
  double m_logNormaliser = 0.0;  // log of the restriction's probability
  double m_logConstant = 0.0;    // of the density: Normal constants less m_logNormaliser
};
