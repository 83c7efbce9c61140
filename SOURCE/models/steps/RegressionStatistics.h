// RegressionStatistics: the cross-products of a regression kept through a QR factor of [X y], so
// that sums of squares are computed without cancellation however large the level of y.
#pragma once

#include <Eigen/Dense>

// With [X y] = Q R and R = [R11 r; 0 s], X'X = R11'R11, X'y = R11'r and
// (y - Xb)'(y - Xb) = |R11 b - r|^2 + s^2: a sum of k + 1 squares of small numbers, where the
// textbook y'y - 2b'X'y + b'X'Xb subtracts numbers of the size of n times the level of y squared.
// A draw of the coefficients then costs the same whatever the number of observations.
class RegressionStatistics {
public:
  RegressionStatistics() = default;
  RegressionStatistics(const Eigen::MatrixXd& X, const Eigen::VectorXd& y);

  const Eigen::MatrixXd& XtX() const { return m_XtX; }
  const Eigen::VectorXd& Xty() const { return m_Xty; }
  double Observations() const { return m_n; }
  // (y - X b)'(y - X b).
  double SumOfSquares(const Eigen::VectorXd& b) const;

private:
  Eigen::MatrixXd m_R11;
  Eigen::VectorXd m_r;
  double m_s2 = 0.0;
  Eigen::MatrixXd m_XtX;
  Eigen::VectorXd m_Xty;
  double m_n = 0.0;
};
