// MIM_TimeSeries: an estimated time-series model (VARM, ARIMA) and what users do with it:
// forecasts, impulse responses, stability tests, one-step fitted values and residuals.
#pragma once

#include <string>
#include <vector>

#include "DynamicModel.h"
#include "Model.h"
#include "TimeSeriesData.h"

class MIM_TimeSeries : public Model {
public:
  bool ProvidesAction(const std::string& action) const override;
  std::string RunAction(const std::string& action, const ActionOptions& options, const ActionContext& context,
                        ActionResult& result) const override;

  // Every draw's parameters, pooled over the chains.
  std::vector<DynamicParameters> ParameterDraws() const;
  // The parameters at the posterior mean of the draws.
  DynamicParameters ParametersAtMean() const;

  // The forecast's summaries (rows: periods after the sample; columns: series), without printing:
  // "OK" or the refusal; `interrupted` tells that the user stopped it.
  struct Forecasts {
    Eigen::MatrixXd mean, sd, lower, upper;
    Eigen::MatrixXd observed;  // the series over the sample
    std::string last;          // the sample's last period
  };
  std::string ComputeForecasts(const ActionOptions& options, const ActionContext& context, Forecasts& out,
                               bool& interrupted) const;

protected:
  // One draw's parameters from its row of the pooled draws.
  virtual DynamicParameters ParametersOfDraw(const Eigen::Ref<const Eigen::RowVectorXd>& row) const = 0;

  // The series are the description's dependent variables (separated by blanks); its regressors
  // are the exogenous variables.
  std::vector<std::string> SeriesNames() const;
  const std::vector<std::string>& ExogenousNames() const { return Description().regressors; }
  int Differences() const;
  // Periods of the differenced series that only give the first lags their values.
  Eigen::Index Presample() const;

private:
  // The sample as the dataset holds it now: levels, differenced series and exogenous variables.
  struct Sample {
    TimeSeriesData data;
    Eigen::MatrixXd W, X;  // differenced series; exogenous variables on the same rows
  };
  std::string ReadSample(const ActionContext& context, const std::string& action, Sample& sample) const;

  std::string Forecast(const ActionOptions& options, const ActionContext& context, ActionResult& result) const;
  std::string ImpulseResponses(const ActionOptions& options, const ActionContext& context, ActionResult& result) const;
  std::string StabilityTest(const ActionContext& context, ActionResult& result) const;
  std::string FittedValues(const std::string& action, const ActionOptions& options, const ActionContext& context,
                           ActionResult& result) const;
};
