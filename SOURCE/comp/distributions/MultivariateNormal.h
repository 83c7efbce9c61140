// The multivariate normal distribution, given its mean and the lower Cholesky factor L of its
// covariance (Sigma = L L').
#pragma once

#include <Eigen/Dense>

#include "RandomEngine.h"

namespace dist {

// The density at each row of X (n x p), as an n x 1 column; mean is a p-vector.
Eigen::VectorXd MultivariateNormalPdf(const Eigen::MatrixXd& X, const Eigen::VectorXd& mean,
                                      const Eigen::MatrixXd& L);
// k draws, one per row of the k x p result: mean + L z with z standard normal.
Eigen::MatrixXd MultivariateNormalDraws(RandomEngine& rng, const Eigen::VectorXd& mean,
                                        const Eigen::MatrixXd& L, int k);

}  // namespace dist
