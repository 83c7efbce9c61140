// SystemRegression: several linear regressions over the same observations with correlated
// errors (seemingly unrelated regressions; a VAR is the case of identical regressors), sampled
// from their cross-products.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include <Eigen/Dense>

#include "Estimator.h"
#include "LinearPrior.h"

class EventDispatcher;

// y_j = X_j b_j + e_j, j = 1..m, with (e_1t, ..., e_mt) ~ N(0, Sigma) independently over t. The
// regressors of every equation are columns of one matrix X (a variable in several equations is
// one column), and the cross-products of [X Y] are kept through a QR factor, so that a sweep costs
// the same whatever the number of observations and residual sums of squares do not cancel.
class SystemStatistics {
public:
  SystemStatistics() = default;
  // `columns[j]`: the columns of X that are equation j's regressors, in order.
  SystemStatistics(const Eigen::MatrixXd& X, std::vector<std::vector<Eigen::Index>> columns, const Eigen::MatrixXd& Y);

  Eigen::Index Equations() const { return static_cast<Eigen::Index>(m_columns.size()); }
  // The number of coefficients of all equations, and where equation j's start among them.
  Eigen::Index Coefficients() const { return m_offsets.back(); }
  Eigen::Index Offset(Eigen::Index j) const { return m_offsets[static_cast<std::size_t>(j)]; }
  Eigen::Index Size(Eigen::Index j) const { return Offset(j + 1) - Offset(j); }
  double Observations() const { return m_n; }

  // The precision A and moment c of b | Sigma^-1 from the likelihood: block (i, j) of A is
  // s^ij X_i'X_j and c_i = sum_j s^ij X_i'y_j; written into A and c (sized by the caller).
  void Conditional(const Eigen::MatrixXd& sigmaInverse, Eigen::MatrixXd& A, Eigen::VectorXd& c) const;
  // Working space of ResidualCrossProducts, one per thread.
  struct Scratch {
    Eigen::MatrixXd B, E;
  };
  // E'E, the m x m cross-products of the residuals at b, into `out`.
  void ResidualCrossProducts(const Eigen::VectorXd& b, Eigen::MatrixXd& out, Scratch& scratch) const;
  void ResidualCrossProducts(const Eigen::VectorXd& b, Eigen::MatrixXd& out) const {
    Scratch scratch;
    ResidualCrossProducts(b, out, scratch);
  }
  // The log-likelihood at b and Sigma^-1.
  double LogLikelihood(const Eigen::VectorXd& b, const Eigen::MatrixXd& sigmaInverse) const;

  // For identical regressors (every equation uses all columns of X in order): X'X and X'Y.
  Eigen::MatrixXd XtX() const;
  Eigen::MatrixXd XtY() const;
  Eigen::MatrixXd YtY() const;

private:
  std::vector<std::vector<Eigen::Index>> m_columns;
  std::vector<Eigen::Index> m_offsets;
  Eigen::MatrixXd m_R11, m_R12, m_R22;  // [X Y] = Q [R11 R12; 0 R22]
  std::vector<Eigen::MatrixXd> m_XitXj;  // (i, j) at i * m + j
  std::vector<Eigen::VectorXd> m_XitYj;
  double m_n = 0.0;
};

// The two priors of a system. Independent: b ~ N (constraints folded in) and Sigma^-1 ~
// Wishart(S^-1, nu), i.e. Sigma ~ inverse Wishart(S, nu). Conjugate (identical regressors only):
// Sigma ~ inverse Wishart(S, nu) and B | Sigma ~ N(B0, Sigma (x) V0), B the k x m matrix whose
// column j is b_j and V0^-1 the precision of B's rows.
struct SystemPriors {
  bool conjugate = false;
  LinearPrior coefficients;  // independent prior
  Eigen::MatrixXd B0, V0inverse;  // conjugate prior
  Eigen::MatrixXd S;
  double nu = 0.0;
};

// The sampler: Gibbs for the independent prior (b | Sigma Normal, Sigma^-1 | b Wishart), exact
// draws from the posterior for the conjugate one. Records b (equation by equation), the error
// variances, then the correlations (1,2), (1,3), ..., (m-1,m).
class SystemRegression : public Estimator {
public:
  explicit SystemRegression(const Eigen::VectorXd& gibbs) : Estimator(gibbs) {}

  // Samples the posterior; false when interrupted. Afterwards logML (Lewis & Raftery, on b and the
  // elements of Sigma) and logML_CJ (Chib's; exact for the conjugate prior) are set.
  bool Sample(const SystemStatistics& stats, const SystemPriors& priors, const EventDispatcher& out,
              const std::atomic<bool>* interrupt);

  double logML = 0.0;
  double logML_CJ = 0.0;

  // The labels of the recorded error variances and correlations: sigma2$y1, ..., rho$y1_y2, ...
  static std::vector<std::string> CovarianceLabels(const std::vector<std::string>& names);
  // Sigma from one recorded row's variances and correlations (`at`: where the variances start).
  static Eigen::MatrixXd CovarianceFromDraw(const Eigen::Ref<const Eigen::RowVectorXd>& row, Eigen::Index at,
                                            Eigen::Index m);

private:
  void MarginalLikelihoods(const SystemStatistics& stats, const SystemPriors& priors, const Eigen::MatrixXd& pooled);
};

namespace mlik {
// Log density at W of the Wishart distribution with scale V (given as V^-1) and nu degrees of
// freedom.
double LogWishartDensity(const Eigen::MatrixXd& W, const Eigen::MatrixXd& scaleInverse, double nu);
// Log density at Sigma of the inverse Wishart with scale S and nu degrees of freedom.
double LogInverseWishartDensity(const Eigen::MatrixXd& sigma, const Eigen::MatrixXd& S, double nu);
// The log of the multivariate gamma function of order p.
double LogMultivariateGamma(double a, Eigen::Index p);
}  // namespace mlik
