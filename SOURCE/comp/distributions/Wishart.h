// The Wishart and inverse-Wishart distributions of order p, given the lower Cholesky factor L of
// the scale matrix (S = L L') and degrees of freedom nu > p - 1.
#pragma once

#include <Eigen/Dense>

#include "RandomEngine.h"

namespace dist {

// Wishart(S, nu), mean nu S, by the Bartlett decomposition (chi-squared diagonal with
// nu - i + 1 degrees of freedom, any real nu > p - 1).
Eigen::MatrixXd WishartDraw(RandomEngine& rng, const Eigen::MatrixXd& L, double nu);
// Wishart(S, nu) for whole nu: the sum of nu outer products of N(0, S) vectors.
Eigen::MatrixXd WishartDrawIntegerDof(RandomEngine& rng, const Eigen::MatrixXd& L, int nu);
// Inverse-Wishart with scale S and nu degrees of freedom (mean S / (nu - p - 1)): the inverse of
// a Wishart(S^-1, nu) draw. `L` is the Cholesky factor of S itself.
Eigen::MatrixXd InverseWishartDraw(RandomEngine& rng, const Eigen::MatrixXd& L, double nu);
Eigen::MatrixXd InverseWishartDrawIntegerDof(RandomEngine& rng, const Eigen::MatrixXd& L, int nu);

}  // namespace dist
