// MultivariateProbit: several binary outcomes whose latent utilities have correlated errors
// (MVProbit, MVProbit2, MVProbit3), sampled by data augmentation of the utilities.
#pragma once

#include <atomic>
#include <limits>
#include <string>
#include <vector>

#include <Eigen/Dense>

#include "Estimator.h"
#include "LinearPrior.h"

class EventDispatcher;

// How the errors' correlation matrix R is restricted: unrestricted (uniform prior over correlation
// matrices), one common correlation rho between every pair (uniform on (-1/(p-1), 1)), or one
// factor, R = lambda lambda' + diag(1 - lambda_e^2) (each loading uniform on (-1, 1)).
enum class CorrelationStructure { Unrestricted, Common, OneFactor };

// y_ie = 1(w_ie > 0), w_i = (x_i1'b_1, ..., x_ip'b_p)' + e_i, e_i ~ N(0, R) with unit variances,
// b ~ N(m, P^-1) (constraints folded in). Each sweep: the utilities one component at a time given
// b and R; b given the utilities and R (one generalised least-squares draw over every equation);
// then each parameter of R by a slice step on its conditional given the residuals' cross-products
// E'E, -n/2 log|R| - tr(R^-1 E'E)/2, which is -infinity where R is not positive definite, so R stays
// a correlation matrix. Records b, then R's parameters: the correlations below the diagonal
// (column by column), rho, or the loadings with lambda_1 >= 0 (the sign of all loadings is not
// identified; R is the same for both).
class MVProbit : public Estimator {
public:
  MVProbit(const Eigen::VectorXd& gibbs, CorrelationStructure structure) : Estimator(gibbs), m_structure(structure) {}

  // Y: n x p outcomes; X: each equation's regressors (n rows each). False when interrupted.
  bool Sample(const Eigen::MatrixXd& Y, const std::vector<Eigen::MatrixXd>& X, const LinearPrior& prior,
              const EventDispatcher& out, const std::atomic<bool>* interrupt);

  double logML = std::numeric_limits<double>::quiet_NaN();  // Lewis & Raftery, GHK likelihood

  // The labels of R's parameters for the outcomes named `names`.
  static std::vector<std::string> CorrelationLabels(CorrelationStructure structure, const std::vector<std::string>& names);
  static Eigen::Index CorrelationCount(CorrelationStructure structure, Eigen::Index p);
  // R from its parameters.
  static Eigen::MatrixXd Correlation(CorrelationStructure structure, const Eigen::VectorXd& theta, Eigen::Index p);

private:
  CorrelationStructure m_structure;
};
