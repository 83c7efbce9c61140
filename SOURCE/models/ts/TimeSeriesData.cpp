// TimeSeriesData: series in order, missing values trimmed, gaps in time refused.
#include "TimeSeriesData.h"

#include <cmath>
#include <cstdio>

#include "Dataset.h"

namespace {

std::string NumberText(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

}  // namespace

std::string ReadTimeSeries(const Dataset& dataset, const std::string& keyword, const std::vector<std::string>& series,
                           const std::vector<std::string>& exogenous, TimeSeriesData& out) {
  const DatasetStructure& structure = dataset.Structure();
  if (structure.kind == DatasetKind::Panel) {
    return "Model \"" + keyword + "\" works on one time series, but the dataset is a panel. Select one unit's rows "
           "into a dataset of their own, or declare the dataset a time series with set_ts.";
  }
  std::vector<std::string> names = series;
  names.insert(names.end(), exogenous.begin(), exogenous.end());
  const Eigen::Index n = dataset.NumberOfObservations();
  Eigen::MatrixXd values(n, static_cast<Eigen::Index>(names.size()));
  for (std::size_t j = 0; j < names.size(); ++j) {
    if (!dataset.VariableExists(names[j])) return "Variable \"" + names[j] + "\" is not in the dataset.";
    if (dataset.IsStringVariable(names[j])) {
      return "Variable \"" + names[j] + "\" holds strings: model \"" + keyword + "\" needs numbers.";
    }
    values.col(static_cast<Eigen::Index>(j)) = dataset.GetVariable(names[j]);
  }
  const auto complete = [&](Eigen::Index i) { return !values.row(i).array().isNaN().any(); };
  Eigen::Index first = 0, last = n - 1;
  while (first < n && !complete(first)) ++first;
  while (last >= first && !complete(last)) --last;
  if (first > last) return "Model \"" + keyword + "\" has no observation where every variable has a value.";
  for (Eigen::Index i = first; i <= last; ++i) {
    if (!complete(i)) {
      for (std::size_t j = 0; j < names.size(); ++j) {
        if (std::isnan(values(i, static_cast<Eigen::Index>(j)))) {
          return "Variable \"" + names[j] + "\" has a missing value at observation " + std::to_string(i + 1) +
                 ", inside the sample of model \"" + keyword +
                 "\": its lags would join periods that are not consecutive. Fill the value or shorten the dataset.";
        }
      }
    }
  }
  std::vector<long long> time;
  const bool dated = structure.kind == DatasetKind::TimeSeries;
  if (dated) {
    const std::string problem = dataset.TimeIndexOfObservations(time);
    if (!problem.empty()) return problem;
    for (Eigen::Index i = first + 1; i <= last; ++i) {
      if (time[static_cast<std::size_t>(i)] != time[static_cast<std::size_t>(i - 1)] + 1) {
        return "The time series has a gap between observations " + std::to_string(i) + " and " +
               std::to_string(i + 1) + " (time variable \"" + structure.timeVariable + "\"): the lags of model \"" +
               keyword + "\" need consecutive periods in the dataset's order.";
      }
    }
  }
  const Eigen::Index T = last - first + 1;
  const auto m = static_cast<Eigen::Index>(series.size());
  out.Y = values.block(first, 0, T, m);
  out.X = values.block(first, m, T, values.cols() - m);
  out.rows.clear();
  out.times.clear();
  const bool textTime = dated && dataset.IsStringVariable(structure.timeVariable);
  const Eigen::VectorXd timeValues = dated && !textTime ? dataset.GetVariable(structure.timeVariable) : Eigen::VectorXd();
  for (Eigen::Index i = first; i <= last; ++i) {
    out.rows.push_back(i);
    if (!dated) {
      out.times.push_back(std::to_string(i + 1));
    } else if (textTime) {
      out.times.push_back(dataset.StringValue(structure.timeVariable, i));
    } else {
      out.times.push_back(NumberText(timeValues(i)));
    }
  }
  out.dropped = static_cast<long>(n - T);
  return "OK";
}
