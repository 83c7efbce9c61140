// MinnesotaPrior: the shrinkage prior of a VAR's coefficients towards a random walk for each series,
// tighter for longer lags and for other series' lags.
#pragma once

#include <Eigen/Dense>

struct MinnesotaSettings {
  double lambda1 = 0.2;  // overall tightness: the prior sd of a series' own first lag
  double lambda2 = 0.5;  // relative tightness of other series' lags
  double lambda3 = 1.0;  // decay with the lag: sd divided by lag^lambda3
  double lambda4 = 100.0;  // the constant's and exogenous variables' sd, in units of the series' scale
  double delta = 1.0;    // prior mean of a series' own first lag (1: random walk; 0: white noise)
};

// Each series' residual standard deviation in an autoregression of its own with `lags` lags and a
// constant, over periods start..T-1: the scale of the series in the prior.
Eigen::VectorXd AutoregressiveScales(const Eigen::MatrixXd& Y, Eigen::Index lags, Eigen::Index start);

// The independent prior: means and precisions (a diagonal) of every coefficient, equation by
// equation, each ordered [constant] [lag 1 of every series] ... [lag p] [exogenous].
void MinnesotaIndependent(const MinnesotaSettings& settings, const Eigen::VectorXd& scales, Eigen::Index lags,
                          bool constant, Eigen::Index exogenous, Eigen::VectorXd& mean, Eigen::VectorXd& precision);

// The conjugate prior B | Sigma ~ N(B0, Sigma (x) V0): B0 (k x m) and the diagonal V0^-1 (k x k), a
// coefficient's variance Sigma_ii V0_jj matching the independent prior with lambda2 = 1.
void MinnesotaConjugate(const MinnesotaSettings& settings, const Eigen::VectorXd& scales, Eigen::Index lags,
                        bool constant, Eigen::Index exogenous, Eigen::MatrixXd& B0, Eigen::MatrixXd& V0inverse);
