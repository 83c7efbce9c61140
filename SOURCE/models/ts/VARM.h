// VARM: the vector autoregression, a system whose equations share their regressors (the lags of
// every series, a constant, exogenous variables), sampled by the system step.
#pragma once

#include <string>
#include <vector>

#include "MIM_TS.h"
#include "SystemRegression.h"

class VARM : public SystemRegression {
public:
  using SystemRegression::SystemRegression;

  // The regressors of period t = start..T-1: [1] [y_{t-1}' ... y_{t-p}'] [x_t'].
  static Eigen::MatrixXd LagMatrix(const Eigen::MatrixXd& Y, const Eigen::MatrixXd& X, Eigen::Index lags,
                                   Eigen::Index start, bool constant);
  // The labels of equation y_i's coefficients: y_i$constant, y_i$y_j_lag1, ..., y_i$x.
  static std::vector<std::string> EquationLabels(const std::string& series, const std::vector<std::string>& names,
                                                 const std::vector<std::string>& exogenous, Eigen::Index lags,
                                                 bool constant);
};

// An estimated VAR: its draws are the coefficients equation by equation, then Sigma.
class MIM_VARM : public MIM_TimeSeries {
public:
  bool LayoutHolds() const override;

protected:
  DynamicParameters ParametersOfDraw(const Eigen::Ref<const Eigen::RowVectorXd>& row) const override;
};
