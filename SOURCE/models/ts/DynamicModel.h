// DynamicModel: one draw of a linear dynamic model of m series (a VAR, or an ARMA for one series)
// and what post-estimation computes from it: residuals, impulse responses, simulated futures and
// the roots of its polynomials.
#pragma once

#include <Eigen/Dense>

#include "RandomEngine.h"

// w_t = c + B x_t + A_1 w_{t-1} + ... + A_p w_{t-p} + e_t + T_1 e_{t-1} + ... + T_q e_{t-q},
// e_t ~ N(0, Sigma); w is the series after `d` differences.
struct DynamicParameters {
  Eigen::VectorXd c;      // m (zeros without a constant)
  Eigen::MatrixXd B;      // m x exogenous
  Eigen::MatrixXd A;      // m x m p: [A_1 ... A_p]
  Eigen::MatrixXd Theta;  // m x m q: [T_1 ... T_q]
  Eigen::MatrixXd Sigma;  // m x m

  Eigen::Index Series() const { return Sigma.rows(); }
  Eigen::Index Lags() const { return Series() == 0 ? 0 : A.cols() / Series(); }
  Eigen::Index MovingAverage() const { return Series() == 0 ? 0 : Theta.cols() / Series(); }
};

namespace dynamic {

// The companion matrix of [A_1 ... A_p] (m p x m p); its eigenvalues are the inverse roots of the
// autoregressive polynomial, inside the unit circle exactly when the model is stable.
Eigen::MatrixXd Companion(const Eigen::MatrixXd& A, Eigen::Index m);
// The largest modulus of the companion matrix's eigenvalues (0 without lags).
double LargestModulus(const Eigen::MatrixXd& A, Eigen::Index m);

// Residuals e_t for t = start..T-1 of the differenced series W (rows: periods) with exogenous X,
// the errors before `start` taken as zero; rows before `start` are left zero.
Eigen::MatrixXd Residuals(const DynamicParameters& p, const Eigen::MatrixXd& W, const Eigen::MatrixXd& X,
                          Eigen::Index start);

// Responses Psi_h * impact for h = 0..horizon, stacked: block h is rows h m..h m + m - 1.
Eigen::MatrixXd ImpulseResponses(const DynamicParameters& p, Eigen::Index horizon, const Eigen::MatrixXd& impact);

// One simulated future of the differenced series for `horizon` periods after the sample (rows:
// periods), from the sample's last values W, its last residuals E and the future exogenous values
// Xf (rows: periods); `shocks` holds standard normal draws (horizon x m), turned into errors by
// the Cholesky factor of Sigma.
Eigen::MatrixXd SimulateFuture(const DynamicParameters& p, const Eigen::MatrixXd& W, const Eigen::MatrixXd& E,
                               const Eigen::MatrixXd& Xf, const Eigen::MatrixXd& sigmaFactor,
                               const Eigen::MatrixXd& shocks);

// Undoes `d` differences of a future (rows: periods) that continues the levels Y (rows: periods).
Eigen::MatrixXd Integrate(const Eigen::MatrixXd& future, const Eigen::MatrixXd& Y, int d);
// The d-th difference of the rows of Y (d rows fewer).
Eigen::MatrixXd Difference(const Eigen::MatrixXd& Y, int d);

}  // namespace dynamic
