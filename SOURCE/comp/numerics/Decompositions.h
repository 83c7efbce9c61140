// Eigenvalues of symmetric matrices and Gauss quadrature rules.
#pragma once

#include <Eigen/Dense>

namespace numerics {

// Eigenvalues (a column, ascending) and the matching unit eigenvectors (columns) of a symmetric
// matrix; false when the decomposition fails.
bool SymmetricEigen(const Eigen::MatrixXd& a, Eigen::MatrixXd& values, Eigen::MatrixXd& vectors);

// Nodes (a column, ascending) and weights (a column) of the n-point Gauss rule, by the
// Golub-Welsch eigen-decomposition of the Jacobi matrix; false when it fails.
// Hermite: the integral of exp(-x^2) f(x) over the real line.
bool HermiteQuad(int n, Eigen::MatrixXd& nodes, Eigen::MatrixXd& weights);
// Laguerre: the integral of exp(-x) f(x) over [0, inf).
bool LaguerreQuad(int n, Eigen::MatrixXd& nodes, Eigen::MatrixXd& weights);

}  // namespace numerics
