// ModelData: columns by name, "constant" as ones, rows with missing values left out; what every
// estimated model records of its estimation.
#include "ModelData.h"

#include <cmath>
#include <cstdio>
#include <map>
#include <string>

#include "Dataset.h"
#include "Estimator.h"
#include "Model.h"

namespace {

// Beyond this magnitude sums of squares overflow (or come close) for any sample size.
constexpr double kLargestModelValue = 1e100;

// The column of one variable over all rows, or the message why it cannot be used.
std::string Column(const ModelRequest& request, const std::string& name, Eigen::VectorXd& out) {
  const Dataset& d = *request.dataset;
  if (!d.VariableExists(name)) {
    if (name == "constant") {
      out = Eigen::VectorXd::Ones(d.NumberOfObservations());
      return "OK";
    }
    return "Dataset \"" + request.datasetName + "\" does not have a variable named \"" + name + "\".";
  }
  if (d.IsStringVariable(name)) {
    return "Variable \"" + name + "\" of dataset \"" + request.datasetName +
           "\" is a string variable and cannot be used in a model.";
  }
  out = d.GetVariable(name);
  for (Eigen::Index i = 0; i < out.size(); ++i) {
    const double x = out(i);
    if (std::isinf(x)) {
      return "Variable \"" + name + "\" of dataset \"" + request.datasetName +
             "\" has an infinite value (observation " + std::to_string(i + 1) +
             "): models need finite data.";
    }
    if (std::fabs(x) > kLargestModelValue) {
      char value[32];
      std::snprintf(value, sizeof value, "%g", x);
      return "Variable \"" + name + "\" of dataset \"" + request.datasetName + "\" has the value " +
             value + " (observation " + std::to_string(i + 1) +
             "): rescale it, since the squares of such values overflow.";
    }
  }
  return "OK";
}

std::string Columns(const ModelRequest& request, const std::vector<std::string>& names,
                    Eigen::MatrixXd& out) {
  out.resize(request.dataset->NumberOfObservations(), static_cast<Eigen::Index>(names.size()));
  Eigen::VectorXd column;
  for (std::size_t j = 0; j < names.size(); ++j) {
    const std::string status = Column(request, names[j], column);
    if (status != "OK") return status;
    out.col(static_cast<Eigen::Index>(j)) = column;
  }
  return "OK";
}

}  // namespace

std::string ExtractModelData(const ModelRequest& request, ModelData& data,
                             const std::vector<std::string>& extraVariables, MissingDependent missingDependent) {
  Eigen::VectorXd y;
  Eigen::MatrixXd X, Z, extra;
  std::string status = Column(request, request.dependent, y);
  if (status == "OK") status = Columns(request, request.regressors, X);
  if (status == "OK") status = Columns(request, request.secondList, Z);
  if (status == "OK") status = Columns(request, extraVariables, extra);
  if (status != "OK") return status;

  const Eigen::Index n = y.size();
  data.rows.clear();
  for (Eigen::Index i = 0; i < n; ++i) {
    const bool complete = (missingDependent == MissingDependent::Keep || !std::isnan(y(i))) && !X.row(i).array().isNaN().any() &&
                          !Z.row(i).array().isNaN().any() && !extra.row(i).array().isNaN().any();
    if (complete) data.rows.push_back(i);
  }
  if (data.rows.empty()) {
    return "No observation of dataset \"" + request.datasetName +
           "\" has values for every variable of the model.";
  }
  ModelData all;
  all.y = std::move(y);
  all.X = std::move(X);
  all.Z = std::move(Z);
  all.extra = std::move(extra);
  all.rows.resize(static_cast<std::size_t>(n));
  for (Eigen::Index i = 0; i < n; ++i) all.rows[static_cast<std::size_t>(i)] = i;
  const std::vector<Eigen::Index> complete = std::move(data.rows);
  data = KeepObservations(all, complete);
  data.dropped = static_cast<long>(n) - static_cast<long>(complete.size());
  return "OK";
}

ModelData KeepObservations(const ModelData& data, const std::vector<Eigen::Index>& keep) {
  ModelData kept;
  kept.y = data.y(keep);
  kept.X = data.X(keep, Eigen::all);
  kept.Z = data.Z(keep, Eigen::all);
  kept.extra = data.extra(keep, Eigen::all);
  for (Eigen::Index r : keep) kept.rows.push_back(data.rows[static_cast<std::size_t>(r)]);
  kept.dropped = data.dropped;
  return kept;
}

std::string CheckPanel(const ModelRequest& request) {
  if (request.dataset->Structure().kind == DatasetKind::Panel) return "OK";
  return "Model \"" + request.keyword + "\" needs a panel dataset: declare its structure with set_pd.";
}

// The group of each observation used, numbered from 0 in order of first appearance. Rows whose
// group is missing are left out of `data` and counted as dropped. Returns "OK" or the message.
std::string ReadPanelGroups(const ModelRequest& request, ModelData& data, std::vector<int>& groups) {
  const Dataset& dataset = *request.dataset;
  const std::string& variable = dataset.Structure().groupVariable;
  if (!dataset.VariableExists(variable)) {
    return "The group variable \"" + variable + "\" of dataset \"" + request.datasetName +
           "\" no longer exists: declare the panel structure again with set_pd.";
  }
  const Eigen::VectorXd codes = dataset.GetVariable(variable);
  std::map<double, int> numbers;
  std::vector<Eigen::Index> keep;
  groups.clear();
  for (std::size_t r = 0; r < data.rows.size(); ++r) {
    const double code = codes(data.rows[r]);
    if (std::isnan(code)) continue;
    const auto [it, added] = numbers.try_emplace(code, static_cast<int>(numbers.size()));
    groups.push_back(it->second);
    keep.push_back(static_cast<Eigen::Index>(r));
  }
  if (keep.empty()) {
    return "No observation of dataset \"" + request.datasetName +
           "\" has values for every variable of the model and its group variable.";
  }
  if (keep.size() < data.rows.size()) {
    ModelData kept = KeepObservations(data, keep);
    kept.dropped = data.dropped + static_cast<long>(data.rows.size() - keep.size());
    data = std::move(kept);
  }
  return "OK";
}

void DescribeEstimate(Model& model, const std::string& typeName, const std::string& title, const Estimator& estimator,
                      const ModelData& data, double logML, double logML_CJ) {
  model.Description().typeName = typeName;
  model.Description().title = title;
  model.Description().gibbs = estimator.Settings().ToVector();
  model.Description().observations = static_cast<long>(data.y.size());
  model.Description().observationsDropped = data.dropped;
  model.AddResult("logML", Eigen::MatrixXd::Constant(1, 1, logML));
  model.AddResult("logML_CJ", Eigen::MatrixXd::Constant(1, 1, logML_CJ));
}
