// The Dirichlet distribution with a row vector of positive parameters.
#pragma once

#include <Eigen/Dense>

#include "RandomEngine.h"

namespace dist {

// k draws, one per row of the k x K result: independent gamma(alpha_j, 1) draws normalised to
// sum to one.
Eigen::MatrixXd DirichletDraws(RandomEngine& rng, const Eigen::RowVectorXd& alpha, int k);

}  // namespace dist
