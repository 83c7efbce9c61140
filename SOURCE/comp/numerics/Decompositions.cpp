// Symmetric eigen-decompositions and Gauss quadrature rules by the Golub-Welsch method.
#include "Decompositions.h"

#include <cmath>
#include <numbers>

#include <Eigen/Eigenvalues>

namespace numerics {

namespace {

// Nodes and weights from the Jacobi matrix with the given diagonal and off-diagonal: the nodes
// are its eigenvalues, the weights mu0 times the squared first components of its eigenvectors.
bool GolubWelsch(const Eigen::VectorXd& diagonal, const Eigen::VectorXd& offDiagonal, double mu0,
                 Eigen::MatrixXd& nodes, Eigen::MatrixXd& weights) {
  Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver;
  solver.computeFromTridiagonal(diagonal, offDiagonal, Eigen::ComputeEigenvectors);
  if (solver.info() != Eigen::Success) return false;
  nodes = solver.eigenvalues();
  weights = mu0 * solver.eigenvectors().row(0).transpose().array().square();
  return nodes.allFinite() && weights.allFinite();
}

}  // namespace

bool SymmetricEigen(const Eigen::MatrixXd& a, Eigen::MatrixXd& values, Eigen::MatrixXd& vectors) {
  const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(a);
  if (solver.info() != Eigen::Success) return false;
  values = solver.eigenvalues();
  vectors = solver.eigenvectors();
  return true;
}

bool HermiteQuad(int n, Eigen::MatrixXd& nodes, Eigen::MatrixXd& weights) {
  const Eigen::VectorXd diagonal = Eigen::VectorXd::Zero(n);
  Eigen::VectorXd off(n - 1);
  for (int k = 1; k < n; ++k) off(k - 1) = std::sqrt(k / 2.0);
  return GolubWelsch(diagonal, off, std::sqrt(std::numbers::pi), nodes, weights);
}

bool LaguerreQuad(int n, Eigen::MatrixXd& nodes, Eigen::MatrixXd& weights) {
  Eigen::VectorXd diagonal(n);
  for (int k = 0; k < n; ++k) diagonal(k) = 2.0 * k + 1.0;
  Eigen::VectorXd off(n - 1);
  for (int k = 1; k < n; ++k) off(k - 1) = k;
  return GolubWelsch(diagonal, off, 1.0, nodes, weights);
}

}  // namespace numerics
