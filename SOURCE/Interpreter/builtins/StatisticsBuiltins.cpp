// Statistics of matrices: sums, extremes, log-sum-exp, means, medians, dispersion, covariance
// and correlation matrices, and frequency tables.
#include <cmath>
#include <limits>

#include "BuiltinFamilies.h"
#include "MatrixStatistics.h"
#include "ValueKind.h"

namespace {

using Eigen::MatrixXd;

// The optional direction argument: 1 for columns (the default), 2 for rows.
bool ByRows(const BuiltinCall& call) {
  if (call.Count() < 2) return false;
  const auto d = call.MatrixOrNull(1);
  int direction = 0;
  if (!d || !IntrCheck_Integer(*d, direction) || (direction != 1 && direction != 2)) {
    call.Fail("The second argument passed to \"" + call.Name() + "\" must be either 1 or 2.");
  }
  return direction == 2;
}

// Applies `reduce` to each column (a 1 x cols result) or each row (rows x 1).
template <typename Reduce>
MatrixXd Reduced(const MatrixXd& a, bool byRows, Reduce reduce) {
  if (byRows) {
    MatrixXd out(a.rows(), 1);
    for (Eigen::Index i = 0; i < a.rows(); ++i) out(i, 0) = reduce(a.row(i).transpose());
    return out;
  }
  MatrixXd out(1, a.cols());
  for (Eigen::Index j = 0; j < a.cols(); ++j) out(0, j) = reduce(a.col(j));
  return out;
}

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

double Minimum(const Eigen::VectorXd& v) {
  if (v.size() == 0 || v.hasNaN()) return kNaN;
  return v.minCoeff();
}

double Maximum(const Eigen::VectorXd& v) {
  if (v.size() == 0 || v.hasNaN()) return kNaN;
  return v.maxCoeff();
}

// log(sum(exp(v))) without overflow: the largest element is taken out first.
double LogSumExp(const Eigen::VectorXd& v) {
  if (v.hasNaN()) return kNaN;
  if (v.size() == 0) return -std::numeric_limits<double>::infinity();
  const double top = v.maxCoeff();
  if (std::isinf(top)) return top;
  return top + std::log((v.array() - top).exp().sum());
}

double Mean(const Eigen::VectorXd& v) { return v.size() == 0 ? kNaN : v.mean(); }

TavixValue Reduction(const BuiltinCall& call, double (*reduce)(const Eigen::VectorXd&)) {
  const auto a = call.Numeric(0);
  return TavixValue::FromMatrix(Reduced(*a, ByRows(call), reduce));
}

TavixValue Sum(const BuiltinCall& call) {
  return Reduction(call, [](const Eigen::VectorXd& v) { return v.sum(); });
}
TavixValue Min(const BuiltinCall& call) { return Reduction(call, Minimum); }
TavixValue Max(const BuiltinCall& call) { return Reduction(call, Maximum); }
TavixValue LogSumExpFunction(const BuiltinCall& call) { return Reduction(call, LogSumExp); }
TavixValue MeanFunction(const BuiltinCall& call) { return Reduction(call, Mean); }

// median, sd and var through the library, by columns or rows.
TavixValue Dispersion(const BuiltinCall& call) {
  const auto a = call.Numeric(0);
  const bool rows = ByRows(call);
  const std::string& f = call.Name();
  if (f == "median") {
    return TavixValue::FromMatrix(rows ? numerics::matrixMedianRowwise(a) : numerics::matrixMedian(a));
  }
  if (f == "sd") {
    return TavixValue::FromMatrix(rows ? numerics::matrixSdRowwise(a) : numerics::matrixSd(a));
  }
  return TavixValue::FromMatrix(rows ? numerics::matrixVarRowwise(a) : numerics::matrixVar(a));
}

TavixValue Covariance(const BuiltinCall& call) {
  const auto a = call.Numeric(0);
  const bool rows = ByRows(call);
  const auto order = static_cast<double>(rows ? a->rows() : a->cols());
  call.CheckSize(order, order);
  if (call.Name() == "cov") {
    return TavixValue::FromMatrix(rows ? numerics::covRowwise(a) : numerics::cov(a));
  }
  return TavixValue::FromMatrix(rows ? numerics::corrRowwise(a) : numerics::corr(a));
}

// tabulate(v [, maxunique]): the distinct values of a vector and their counts.
TavixValue Tabulate(const BuiltinCall& call) {
  const bool dataset = call.Value(0).code == kind::DATASET;
  const auto v = call.Numeric(0, "The argument passed to \"tabulate\" must be a vector or an "
                                 "one-dimensional dataset.");
  if (dataset ? v->cols() != 1 : (v->rows() != 1 && v->cols() != 1)) {
    call.Fail(dataset ? "The argument passed to \"tabulate\" must be a vector or an "
                        "one-dimensional dataset."
                      : "The argument passed to \"tabulate\" must be a vector.");
  }
  int maxUnique = 20;
  if (call.Count() == 2) {
    const auto m = call.MatrixOrNull(1);
    if (!m || !IntrCheck_PositiveInteger(*m, maxUnique)) {
      call.Fail("The second argument passed to \"tabulate\" must be a positive integer.");
    }
  }
  numerics::TabulateStatus status = numerics::TabulateStatus::Ok;
  MatrixXd table = numerics::vectorTabulate(v, maxUnique, status);
  const std::string what = dataset ? "dataset" : "vector";
  if (status == numerics::TabulateStatus::NoUsableData) {
    call.Fail("No usable data in " + what + " \"" + call.Text(0) + "\".");
  }
  if (status == numerics::TabulateStatus::TooManyUnique) {
    call.Fail("Too many unique values in " + what + " \"" + call.Text(0) + "\"." +
              (dataset ? " Consider increasing the maximum number of unique values (second "
                         "argument to \"tabulate\")."
                       : ""));
  }
  return TavixValue::FromMatrix(std::move(table));
}

const BuiltinRow kRows[] = {
    {"sum", ArgCounts(1, 2), false, Sum},
    {"min", ArgCounts(1, 2), false, Min},
    {"max", ArgCounts(1, 2), false, Max},
    {"logsumexp", ArgCounts(1, 2), false, LogSumExpFunction},
    {"mean", ArgCounts(1, 2), false, MeanFunction},
    {"median", ArgCounts(1, 2), false, Dispersion},
    {"sd", ArgCounts(1, 2), false, Dispersion},
    {"var", ArgCounts(1, 2), false, Dispersion},
    {"cov", ArgCounts(1, 2), false, Covariance},
    {"corr", ArgCounts(1, 2), false, Covariance},
    {"tabulate", ArgCounts(1, 2), false, Tabulate},
};

}  // namespace

std::span<const BuiltinRow> StatisticsBuiltins() { return kRows; }
