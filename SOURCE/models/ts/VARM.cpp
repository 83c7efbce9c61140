// VARM: the lag matrix and labels of a VAR, and its draws read back as dynamic parameters.
#include "VARM.h"

#include <cmath>

Eigen::MatrixXd VARM::LagMatrix(const Eigen::MatrixXd& Y, const Eigen::MatrixXd& X, Eigen::Index lags,
                                Eigen::Index start, bool constant) {
  const Eigen::Index m = Y.cols(), n = Y.rows() - start, c = constant ? 1 : 0;
  Eigen::MatrixXd out(n, c + m * lags + X.cols());
  if (constant) out.col(0).setOnes();
  for (Eigen::Index l = 1; l <= lags; ++l) out.middleCols(c + (l - 1) * m, m) = Y.middleRows(start - l, n);
  if (X.cols() > 0) out.rightCols(X.cols()) = X.bottomRows(n);
  return out;
}

std::vector<std::string> VARM::EquationLabels(const std::string& series, const std::vector<std::string>& names,
                                              const std::vector<std::string>& exogenous, Eigen::Index lags,
                                              bool constant) {
  std::vector<std::string> labels;
  if (constant) labels.push_back(series + "$constant");
  for (Eigen::Index l = 1; l <= lags; ++l) {
    for (const std::string& name : names) labels.push_back(series + "$" + name + "_lag" + std::to_string(l));
  }
  for (const std::string& x : exogenous) labels.push_back(series + "$" + x);
  return labels;
}

bool MIM_VARM::LayoutHolds() const {
  const double lags = ScalarResult("lags"), constant = ScalarResult("constant");
  if (std::isnan(lags) || std::isnan(constant) || std::isnan(ScalarResult("maxlags"))) return false;
  std::vector<std::string> expected;
  for (const std::string& series : SeriesNames()) {
    for (std::string& label : VARM::EquationLabels(series, SeriesNames(), ExogenousNames(),
                                                   static_cast<Eigen::Index>(lags), constant != 0.0)) {
      expected.push_back(std::move(label));
    }
  }
  for (std::string& label : SystemRegression::CovarianceLabels(SeriesNames())) expected.push_back(std::move(label));
  return expected == Labels();
}

DynamicParameters MIM_VARM::ParametersOfDraw(const Eigen::Ref<const Eigen::RowVectorXd>& row) const {
  const auto m = static_cast<Eigen::Index>(SeriesNames().size());
  const auto kx = static_cast<Eigen::Index>(ExogenousNames().size());
  const auto p = static_cast<Eigen::Index>(ScalarResult("lags"));
  const Eigen::Index c = ScalarResult("constant") != 0.0 ? 1 : 0;
  const Eigen::Index k = c + m * p + kx;
  DynamicParameters out;
  out.c = Eigen::VectorXd::Zero(m);
  out.A.resize(m, m * p);
  out.B.resize(m, kx);
  out.Theta.resize(m, 0);
  for (Eigen::Index i = 0; i < m; ++i) {
    const Eigen::Index base = i * k;
    if (c == 1) out.c(i) = row(base);
    out.A.row(i) = row.segment(base + c, m * p);
    out.B.row(i) = row.segment(base + c + m * p, kx);
  }
  out.Sigma = SystemRegression::CovarianceFromDraw(row, m * k, m);
  return out;
}
