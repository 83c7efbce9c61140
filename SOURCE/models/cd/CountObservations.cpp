// CountObservations: ordering, runs of equal counts, sums of log factorials, the starting point.
#include "CountObservations.h"

#include <cmath>
#include <numeric>

CountObservations::CountObservations(const Eigen::VectorXd& counts, const Eigen::MatrixXd& regressors,
                                     const Eigen::VectorXd& exposure, bool sortByCount) {
  const Eigen::Index n = counts.size();
  std::vector<Eigen::Index> order(static_cast<std::size_t>(n));
  std::iota(order.begin(), order.end(), Eigen::Index{0});
  if (sortByCount) {
    std::stable_sort(order.begin(), order.end(), [&](Eigen::Index a, Eigen::Index b) { return counts(a) < counts(b); });
  }
  y = counts(order);
  X = regressors(order, Eigen::all);
  if (exposure.size() > 0) offset = exposure(order).array().log().matrix();

  m_logFactorialSums.resize(n + 1);
  m_logFactorialSums(0) = 0.0;
  for (Eigen::Index i = 0; i < n; ++i) {
    m_logFactorialSums(i + 1) = m_logFactorialSums(i) + std::lgamma(y(i) + 1.0);
    if (i == 0 || y(i) != y(i - 1)) runs.push_back({y(i), i, i});
    runs.back().end = i + 1;
  }
}

Eigen::VectorXd CountObservations::LogLinearStart(const LinearPrior& prior) const {
  Eigen::VectorXd z = (y.array() + 0.5).log().matrix();
  if (offset.size() > 0) z -= offset;
  Eigen::MatrixXd A = prior.precision;
  A.selfadjointView<Eigen::Lower>().rankUpdate(X.transpose());
  const Eigen::VectorXd rhs = X.transpose() * z + prior.precisionTimesMean;
  return A.selfadjointView<Eigen::Lower>().llt().solve(rhs);
}
