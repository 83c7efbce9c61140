// Sorting, order statistics, moments and frequency tables of matrices.
#include "MatrixStatistics.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>

namespace numerics {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Ascending with missing values last; equal values keep their order.
bool Before(double a, double b) {
  if (std::isnan(a)) return false;
  if (std::isnan(b)) return true;
  return a < b;
}

void SortVector(Eigen::Ref<Eigen::VectorXd> v) {
  std::vector<double> values(v.data(), v.data() + v.size());
  std::stable_sort(values.begin(), values.end(), Before);
  for (Eigen::Index i = 0; i < v.size(); ++i) v(i) = values[static_cast<std::size_t>(i)];
}

double Median(const Eigen::VectorXd& v) {
  if (v.size() == 0 || v.hasNaN()) return kNaN;
  std::vector<double> values(v.data(), v.data() + v.size());
  const std::size_t half = values.size() / 2;
  std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(half), values.end());
  const double upper = values[half];
  if (values.size() % 2 == 1) return upper;
  const double lower = *std::max_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(half));
  return lower + (upper - lower) / 2.0;
}

// Two passes: the mean first, then the squared deviations from it.
double Variance(const Eigen::VectorXd& v) {
  if (v.size() < 2 || v.hasNaN()) return kNaN;
  const double mean = v.mean();
  return (v.array() - mean).square().sum() / static_cast<double>(v.size() - 1);
}

// Applies `reduce` to each column, giving a 1 x cols row.
template <typename Reduce>
Eigen::MatrixXd ByColumns(const Eigen::MatrixXd& m, Reduce reduce) {
  Eigen::MatrixXd out(1, m.cols());
  for (Eigen::Index j = 0; j < m.cols(); ++j) out(0, j) = reduce(Eigen::VectorXd(m.col(j)));
  return out;
}

// The covariance matrix of the columns; a column with a missing value gives missing entries
// in its row and column.
Eigen::MatrixXd ColumnCovariance(const Eigen::MatrixXd& m) {
  const Eigen::Index k = m.cols();
  Eigen::MatrixXd out = Eigen::MatrixXd::Constant(k, k, kNaN);
  if (m.rows() < 2) return out;
  Eigen::MatrixXd centred = m.rowwise() - m.colwise().mean();
  out = (centred.transpose() * centred) / static_cast<double>(m.rows() - 1);
  for (Eigen::Index j = 0; j < k; ++j) {
    if (m.col(j).hasNaN()) {
      out.row(j).setConstant(kNaN);
      out.col(j).setConstant(kNaN);
    }
  }
  return out;
}

Eigen::MatrixXd CovarianceToCorrelation(Eigen::MatrixXd c) {
  const Eigen::VectorXd sd = c.diagonal().array().sqrt();
  for (Eigen::Index i = 0; i < c.rows(); ++i) {
    for (Eigen::Index j = 0; j < c.cols(); ++j) c(i, j) = i == j && !std::isnan(c(i, j)) && sd(i) > 0
                                                              ? 1.0
                                                              : c(i, j) / (sd(i) * sd(j));
  }
  return c;
}

}  // namespace

Eigen::MatrixXd matrixSort(const Eigen::MatrixXd& m) {
  Eigen::MatrixXd out = m;
  for (Eigen::Index j = 0; j < out.cols(); ++j) SortVector(out.col(j));
  return out;
}

Eigen::MatrixXd matrixSortRowwise(const Eigen::MatrixXd& m) {
  return matrixSort(m.transpose()).transpose();
}

Eigen::MatrixXd SortMatrixVarIndex(const Eigen::MatrixXd& m, const std::vector<int>& columns) {
  std::vector<Eigen::Index> order(static_cast<std::size_t>(m.rows()));
  std::iota(order.begin(), order.end(), Eigen::Index{0});
  std::stable_sort(order.begin(), order.end(), [&](Eigen::Index a, Eigen::Index b) {
    for (int c : columns) {
      if (Before(m(a, c), m(b, c))) return true;
      if (Before(m(b, c), m(a, c))) return false;
    }
    return false;
  });
  return m(order, Eigen::all);
}

Eigen::MatrixXd matrixMedian(const Eigen::MatrixXd& m) { return ByColumns(m, Median); }
Eigen::MatrixXd matrixMedianRowwise(const Eigen::MatrixXd& m) {
  return matrixMedian(m.transpose()).transpose();
}
Eigen::MatrixXd matrixVar(const Eigen::MatrixXd& m) { return ByColumns(m, Variance); }
Eigen::MatrixXd matrixVarRowwise(const Eigen::MatrixXd& m) {
  return matrixVar(m.transpose()).transpose();
}
Eigen::MatrixXd matrixSd(const Eigen::MatrixXd& m) { return matrixVar(m).array().sqrt(); }
Eigen::MatrixXd matrixSdRowwise(const Eigen::MatrixXd& m) {
  return matrixVarRowwise(m).array().sqrt();
}

Eigen::MatrixXd cov(const Eigen::MatrixXd& m) { return ColumnCovariance(m); }
Eigen::MatrixXd corr(const Eigen::MatrixXd& m) { return CovarianceToCorrelation(ColumnCovariance(m)); }
Eigen::MatrixXd covRowwise(const Eigen::MatrixXd& m) { return ColumnCovariance(m.transpose()); }
Eigen::MatrixXd corrRowwise(const Eigen::MatrixXd& m) {
  return CovarianceToCorrelation(ColumnCovariance(m.transpose()));
}

Eigen::MatrixXd vectorTabulate(const Eigen::MatrixXd& v, int maxUnique, TabulateStatus& status) {
  std::map<double, double> counts;
  for (Eigen::Index i = 0; i < v.size(); ++i) {
    const double x = v(i);
    if (std::isnan(x)) continue;
    counts[x] += 1.0;
    if (static_cast<int>(counts.size()) > maxUnique) {
      status = TabulateStatus::TooManyUnique;
      return {};
    }
  }
  if (counts.empty()) {
    status = TabulateStatus::NoUsableData;
    return {};
  }
  status = TabulateStatus::Ok;
  Eigen::MatrixXd table(static_cast<Eigen::Index>(counts.size()), 2);
  Eigen::Index row = 0;
  for (const auto& [value, count] : counts) {
    table(row, 0) = value;
    table(row, 1) = count;
    ++row;
  }
  return table;
}

}  // namespace numerics
