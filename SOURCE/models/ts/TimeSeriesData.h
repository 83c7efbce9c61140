// TimeSeriesData: the series of a time-series model and its exogenous variables, in the dataset's
// order, checked for what would break their lags.
#pragma once

#include <string>
#include <vector>

#include <Eigen/Dense>

class Dataset;

struct TimeSeriesData {
  Eigen::MatrixXd Y;  // one column per series
  Eigen::MatrixXd X;  // exogenous variables (no columns when there are none)
  std::vector<Eigen::Index> rows;  // the dataset's rows, consecutive
  std::vector<std::string> times;  // how each row is named: its time under set_ts, else its number
  long dropped = 0;                // rows with missing values at the start or the end
};

// Reads the series and exogenous variables of `keyword`'s statement. Missing values may open or
// close the sample (those rows are left out) but not interrupt it; a panel dataset is refused; a
// time series declared with set_ts must have no gap in time. Returns "OK" or the message.
std::string ReadTimeSeries(const Dataset& dataset, const std::string& keyword, const std::vector<std::string>& series,
                           const std::vector<std::string>& exogenous, TimeSeriesData& out);
