// ModelData: the columns a model uses, taken from its dataset.
#pragma once

#include <string>
#include <vector>

#include <Eigen/Dense>

#include "ModelFamily.h"

// The dependent variable, the regressors of the two lists and any further variables a family
// needs, over the observations that have a value for every one of them.
struct ModelData {
  Eigen::VectorXd y;
  Eigen::MatrixXd X;      // main list
  Eigen::MatrixXd Z;      // second list (no columns when there is none)
  Eigen::MatrixXd extra;  // further variables, in the order asked for
  std::vector<Eigen::Index> rows;  // the dataset's rows used (0-based)
  long dropped = 0;                // rows left out for missing values
};

// Whether a row with a missing dependent value is left out (most models) or kept (the selection
// model, whose dependent variable is missing where it was not observed).
enum class MissingDependent { LeaveOut, Keep };

// Reads the request's variables from its dataset. "constant" is a column of ones unless the
// dataset has a variable of that name. Returns "OK" or the message (a variable the dataset does
// not have, a string variable, no complete observation).
std::string ExtractModelData(const ModelRequest& request, ModelData& data,
                             const std::vector<std::string>& extraVariables = {},
                             MissingDependent missingDependent = MissingDependent::LeaveOut);

// The observations `keep` (positions in `data`, in order) of `data`; the count of dropped rows is
// carried over.
ModelData KeepObservations(const ModelData& data, const std::vector<Eigen::Index>& keep);

// "OK" when the request's dataset is a panel, otherwise the message naming set_pd.
std::string CheckPanel(const ModelRequest& request);

// The group of each observation of `data` in the request's panel dataset, numbered from 0 in order
// of first appearance. Rows whose group is missing are left out of `data` and counted as dropped.
// Returns "OK" or the message.
std::string ReadPanelGroups(const ModelRequest& request, ModelData& data, std::vector<int>& groups);

class Estimator;
class Model;

// What every estimated model records besides its draws: its class and title, the sampler
// settings, the observations used and left out, and both log-marginal likelihoods.
void DescribeEstimate(Model& model, const std::string& typeName, const std::string& title, const Estimator& estimator,
                      const ModelData& data, double logML, double logML_CJ);
