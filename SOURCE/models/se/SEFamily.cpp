// The systems-of-equations family's interpreter: sur, seemingly unrelated regressions.
#include <algorithm>
#include <cmath>
#include <memory>

#include "MIM_SE.h"
#include "ModelData.h"
#include "ModelPriors.h"
#include "SUR.h"

namespace {

// Vague but proper, as for lm: coefficients N(0, 1/0.001) each; Sigma ~ inverse Wishart(0.001 I,
// m + 1).
constexpr double kDefaultPrecision = 0.001;
constexpr double kDefaultScale = 0.001;

// The conjugate prior's mean of B (k x m): a number for every element or the whole matrix.
std::string ReadMatrixMean(const ModelRequest& request, Eigen::Index k, Eigen::Index m, Eigen::MatrixXd& mean) {
  mean = Eigen::MatrixXd::Zero(k, m);
  const auto it = request.options.numeric.find("m");
  if (it == request.options.numeric.end()) return "OK";
  if (it->second.size() == 1 && std::isfinite(it->second(0, 0))) {
    mean.setConstant(it->second(0, 0));
  } else if (it->second.rows() == k && it->second.cols() == m && it->second.allFinite()) {
    mean = it->second;
  } else {
    return "Under the \"nw\" prior the prior mean \"m\" must be a number or a " + std::to_string(k) + " x " +
           std::to_string(m) + " matrix (one column per equation).";
  }
  return "OK";
}

}  // namespace

// Checks a sur statement: at least two equations with distinct dependent variables, options,
// priors, Gibbs settings, constraints and data.
std::string Intrepr_SE1(const ModelRequest& request, std::unique_ptr<ModelJob>& job) {
  const auto m = static_cast<Eigen::Index>(request.equations.size());
  if (m < 2) return "Model \"sur\" needs at least two equations: sur({y1 ~ constant x1}, {y2 ~ constant x2}).";
  std::vector<std::string> dependents;
  std::vector<std::string> variables;  // every regressor once, in order of first appearance
  for (const ModelEquationRequest& e : request.equations) {
    if (!e.secondList.empty()) return "Model \"sur\" does not take a second list of variables.";
    if (std::find(dependents.begin(), dependents.end(), e.dependent) != dependents.end()) {
      return "Variable \"" + e.dependent + "\" is the dependent variable of more than one equation of model \"sur\".";
    }
    dependents.push_back(e.dependent);
    for (const std::string& r : e.regressors) {
      if (std::find(variables.begin(), variables.end(), r) == variables.end()) variables.push_back(r);
    }
  }
  // Regressors are taken as given: a dependent variable among them makes a simultaneous system,
  // which these priors and this sampler do not identify.
  for (const ModelEquationRequest& e : request.equations) {
    for (const std::string& r : e.regressors) {
      if (std::find(dependents.begin(), dependents.end(), r) != dependents.end()) {
        return "Variable \"" + r + "\" is the dependent variable of an equation of model \"sur\" and a regressor of " +
               "equation \"" + e.dependent + "\": the regressors of seemingly unrelated regressions must not be " +
               "determined by the system.";
      }
    }
  }
  std::string status = CheckOptionNames(request, {"m", "P", "nu", "S"}, {}, {"prior"});
  if (status != "OK") return status;
  bool conjugate = false;
  if (const auto it = request.options.strings.find("prior"); it != request.options.strings.end()) {
    if (it->second != "nw") {
      return "The \"prior\" option of model \"sur\" must be \"nw\" (the conjugate Normal-Wishart prior); without it "
             "the coefficients and the error covariance have independent Normal and Wishart priors.";
    }
    conjugate = true;
  }
  if (conjugate) {
    for (const ModelEquationRequest& e : request.equations) {
      if (e.regressors != request.equations.front().regressors) {
        return "The \"nw\" prior of model \"sur\" needs the same regressors, in the same order, in every equation.";
      }
    }
    if (request.constraints.Count() > 0) {
      return "Linear constraints cannot be combined with the \"nw\" prior of model \"sur\": leave out \"prior\" "
             "to use them.";
    }
  }
  Eigen::VectorXd gibbs;
  Eigen::MatrixXd xi;
  if ((status = ReadSamplerSettings(request, gibbs, xi)) != "OK") return status;

  // One extraction over every variable of the system, so that every equation uses the same rows.
  ModelRequest all = request;
  all.regressors = variables;
  ModelData data;
  status = ExtractModelData(all, data, std::vector<std::string>(dependents.begin() + 1, dependents.end()));
  if (status != "OK") return status;
  const auto n = data.y.size();
  if (n <= static_cast<Eigen::Index>(variables.size()) + m) {
    return "Model \"sur\" has " + std::to_string(n) + " complete observations: it needs more than the " +
           std::to_string(variables.size() + static_cast<std::size_t>(m)) + " regressors and dependent variables.";
  }
  Eigen::MatrixXd Y(n, m);
  Y.col(0) = data.y;
  Y.rightCols(m - 1) = data.extra;
  std::vector<std::vector<Eigen::Index>> columns;
  for (const ModelEquationRequest& e : request.equations) {
    std::vector<Eigen::Index> c;
    for (const std::string& r : e.regressors) {
      c.push_back(std::find(variables.begin(), variables.end(), r) - variables.begin());
    }
    columns.push_back(std::move(c));
  }

  SystemPriors priors;
  priors.conjugate = conjugate;
  if ((status = ReadWishartPrior(request, m, static_cast<double>(m + 1), kDefaultScale, priors.nu, priors.S)) != "OK") {
    return status;
  }
  if (conjugate) {
    const auto k = static_cast<Eigen::Index>(request.equations.front().regressors.size());
    if ((status = ReadMatrixMean(request, k, m, priors.B0)) != "OK") return status;
    Eigen::VectorXd unused;
    ModelRequest precisionOnly = request;
    precisionOnly.options.numeric.erase("m");
    if ((status = ReadNormalPrior(precisionOnly, "m", "P", k, kDefaultPrecision, unused, priors.V0inverse)) != "OK") {
      return status;
    }
  } else {
    Eigen::VectorXd mean;
    Eigen::MatrixXd precision;
    const auto K = static_cast<Eigen::Index>(request.labels.size());
    if ((status = ReadNormalPrior(request, "m", "P", K, kDefaultPrecision, mean, precision)) != "OK") return status;
    priors.coefficients = LinearPrior::Combine(mean, precision, request.constraints.R, request.constraints.r, xi);
  }

  std::vector<std::string> labels = request.labels;
  for (const std::string& label : SystemRegression::CovarianceLabels(dependents)) labels.push_back(label);
  std::string dependentList;
  for (const std::string& d : dependents) dependentList += (dependentList.empty() ? "" : " ") + d;
  const SystemStatistics stats(data.X, columns, Y);
  job = std::make_unique<ModelJobFunction>([=](const ModelRunContext& context) -> std::shared_ptr<Model> {
    SUR estimator(gibbs);
    if (!estimator.Sample(stats, priors, context.out, context.interrupt)) return nullptr;
    auto model = std::make_shared<MIM_SUR>();
    model->SetDraws(estimator.Draws(), labels);
    DescribeEstimate(*model, "SUR", "Seemingly unrelated regressions", estimator, data, estimator.logML,
                     estimator.logML_CJ);
    model->Description().dependent = dependentList;
    model->Description().regressors = variables;
    return model;
  });
  return "OK";
}

namespace {
const ModelFamilyRegistration kSystems({"sur"}, &Intrepr_SE1);
const ModelClassRegistration kSUR("SUR", [] { return std::make_shared<MIM_SUR>(); });
}  // namespace
