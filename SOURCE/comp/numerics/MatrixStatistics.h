// Sorting, order statistics, moments and frequency tables of matrices, as the built-in
// statistics use them.
//
// Missing values: a column (or row) that holds a NaN gives NaN for its median, variance,
// standard deviation, and for every covariance and correlation it enters; sorting puts NaN last;
// `vectorTabulate` ignores NaN. Variances use the n - 1 denominator and are NaN for fewer than two
// values. Column-wise results are 1 x cols rows; row-wise results are rows x 1 columns.
#pragma once

#include <memory>
#include <vector>

#include <Eigen/Dense>

namespace numerics {

// Each column sorted in ascending order.
Eigen::MatrixXd matrixSort(const Eigen::MatrixXd& m);
// Each row sorted in ascending order.
Eigen::MatrixXd matrixSortRowwise(const Eigen::MatrixXd& m);
// The rows reordered by the values in the listed columns (0-based), the first column first; a
// stable sort, so rows equal in every listed column keep their order.
Eigen::MatrixXd SortMatrixVarIndex(const Eigen::MatrixXd& m, const std::vector<int>& columns);

Eigen::MatrixXd matrixMedian(const Eigen::MatrixXd& m);
Eigen::MatrixXd matrixMedianRowwise(const Eigen::MatrixXd& m);
Eigen::MatrixXd matrixVar(const Eigen::MatrixXd& m);
Eigen::MatrixXd matrixVarRowwise(const Eigen::MatrixXd& m);
Eigen::MatrixXd matrixSd(const Eigen::MatrixXd& m);
Eigen::MatrixXd matrixSdRowwise(const Eigen::MatrixXd& m);

// Covariance and correlation matrices of the columns (cols x cols) or of the rows (rows x rows).
Eigen::MatrixXd cov(const Eigen::MatrixXd& m);
Eigen::MatrixXd corr(const Eigen::MatrixXd& m);
Eigen::MatrixXd covRowwise(const Eigen::MatrixXd& m);
Eigen::MatrixXd corrRowwise(const Eigen::MatrixXd& m);

enum class TabulateStatus { Ok, TooManyUnique, NoUsableData };
// The distinct non-missing values of a vector in ascending order with their counts (a K x 2
// matrix); the status says when more than `maxUnique` values were found, or none.
Eigen::MatrixXd vectorTabulate(const Eigen::MatrixXd& v, int maxUnique, TabulateStatus& status);

// The same operations on a shared matrix (a dataset's data), without a copy.
inline Eigen::MatrixXd matrixSort(const std::shared_ptr<const Eigen::MatrixXd>& m) {
  return matrixSort(*m);
}
inline Eigen::MatrixXd matrixSortRowwise(const std::shared_ptr<const Eigen::MatrixXd>& m) {
  return matrixSortRowwise(*m);
}
inline Eigen::MatrixXd matrixMedian(const std::shared_ptr<const Eigen::MatrixXd>& m) {
  return matrixMedian(*m);
}
inline Eigen::MatrixXd matrixMedianRowwise(const std::shared_ptr<const Eigen::MatrixXd>& m) {
  return matrixMedianRowwise(*m);
}
inline Eigen::MatrixXd matrixVar(const std::shared_ptr<const Eigen::MatrixXd>& m) {
  return matrixVar(*m);
}
inline Eigen::MatrixXd matrixVarRowwise(const std::shared_ptr<const Eigen::MatrixXd>& m) {
  return matrixVarRowwise(*m);
}
inline Eigen::MatrixXd matrixSd(const std::shared_ptr<const Eigen::MatrixXd>& m) {
  return matrixSd(*m);
}
inline Eigen::MatrixXd matrixSdRowwise(const std::shared_ptr<const Eigen::MatrixXd>& m) {
  return matrixSdRowwise(*m);
}
inline Eigen::MatrixXd cov(const std::shared_ptr<const Eigen::MatrixXd>& m) {
  return cov(*m);
}
inline Eigen::MatrixXd corr(const std::shared_ptr<const Eigen::MatrixXd>& m) {
  return corr(*m);
}
inline Eigen::MatrixXd covRowwise(const std::shared_ptr<const Eigen::MatrixXd>& m) {
  return covRowwise(*m);
}
inline Eigen::MatrixXd corrRowwise(const std::shared_ptr<const Eigen::MatrixXd>& m) {
  return corrRowwise(*m);
}
inline Eigen::MatrixXd SortMatrixVarIndex(const std::shared_ptr<const Eigen::MatrixXd>& m,
                                          const std::vector<int>& columns) {
  return SortMatrixVarIndex(*m, columns);
}
inline Eigen::MatrixXd vectorTabulate(const std::shared_ptr<const Eigen::MatrixXd>& v,
                                      int maxUnique, TabulateStatus& status) {
  return vectorTabulate(*v, maxUnique, status);
}

}  // namespace numerics
