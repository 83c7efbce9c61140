// RegressionStatistics: cross-products and sums of squares from a Householder QR of [X y].
#include "RegressionStatistics.h"

#include <algorithm>

RegressionStatistics::RegressionStatistics(const Eigen::MatrixXd& X, const Eigen::VectorXd& y)
    : m_n(static_cast<double>(y.size())) {
  const Eigen::Index k = X.cols();
  Eigen::MatrixXd Xy(X.rows(), k + 1);
  Xy << X, y;
  const Eigen::HouseholderQR<Eigen::MatrixXd> qr(Xy);
  // With fewer observations than columns R has fewer rows: the missing rows are zeros.
  const Eigen::Index rows = std::min<Eigen::Index>(Xy.rows(), k + 1);
  Eigen::MatrixXd R = Eigen::MatrixXd::Zero(k + 1, k + 1);
  R.topRows(rows) = qr.matrixQR().topRows(rows).triangularView<Eigen::Upper>();
  m_R11 = R.topLeftCorner(k, k);
  m_r = R.col(k).head(k);
  m_s2 = R(k, k) * R(k, k);
  m_XtX.noalias() = m_R11.transpose() * m_R11;
  m_Xty.noalias() = m_R11.transpose() * m_r;
}

double RegressionStatistics::SumOfSquares(const Eigen::VectorXd& b) const {
  return (m_R11.triangularView<Eigen::Upper>() * b - m_r).squaredNorm() + m_s2;
}
