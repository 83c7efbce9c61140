// MarginalLikelihood: log densities of priors and posteriors, and the Laplace-Metropolis
// estimate of the log-marginal likelihood.
#pragma once

#include <Eigen/Dense>

namespace mlik {

// Log density of a multivariate normal given its precision matrix.
double LogNormalDensity(const Eigen::VectorXd& x, const Eigen::VectorXd& mean,
                        const Eigen::MatrixXd& precision);
// Log density of a Gamma distribution with shape and rate.
double LogGammaDensity(double x, double shape, double rate);
// Lewis & Raftery's Laplace-Metropolis estimate: the log of likelihood times prior at the
// posterior mean of the draws (given as `logKernelAtMean`, on the scale of the draws, Jacobian
// included), plus d/2 log(2 pi) + 1/2 log|S| with S the posterior covariance of the draws.
double LaplaceMetropolis(double logKernelAtMean, const Eigen::MatrixXd& draws);
// The column means and the covariance of draws (rows are draws).
Eigen::MatrixXd Covariance(const Eigen::MatrixXd& draws);
// Log of the mean of exp(values), computed without overflow.
double LogMeanExp(const Eigen::VectorXd& values);

}  // namespace mlik
