// The family interpreter of the multivariate probits: mvprobit (MVProbit), mvprobit2 (MVProbit2)
// and mvprobit3 (MVProbit3).
#include <limits>
#include <memory>
#include <set>

#include "MIM_Choice.h"
#include "ModelData.h"
#include "ModelPriors.h"
#include "ModelsInterpreter.h"
#include "MultivariateProbit.h"

namespace {

// As for the binary probit: N(0, 1/0.001) for each coefficient.
constexpr double kDefaultPrecision = 0.001;

}  // namespace

// Checks an mvprobit, mvprobit2 or mvprobit3 statement: at least two equations, binary outcomes,
// options, Gibbs settings, the constraints' precision and the prior.
std::string Intrepr_DC3(const ModelRequest& request, std::unique_ptr<ModelJob>& job) {
  const std::string& keyword = request.keyword;
  const auto p = static_cast<Eigen::Index>(request.equations.size());
  if (p < 2) {
    return "Model \"" + keyword + "\" needs at least two equations, each in braces: " + keyword +
           "({y1 ~ constant x1}, {y2 ~ constant x2}, ...).";
  }
  if (keyword == "mvprobit3" && p < 3) {
    return "Model \"mvprobit3\" needs at least three equations: with two, one factor's loadings are not identified "
           "(only their product is); use \"mvprobit\".";
  }
  std::set<std::string> dependents;
  for (const auto& e : request.equations) {
    if (!dependents.insert(e.dependent).second) {
      return "Variable \"" + e.dependent + "\" is the dependent variable of more than one equation of model \"" +
             keyword + "\".";
    }
  }
  std::string status = CheckOptionNames(request, {"m", "P"});
  if (status != "OK") return status;
  Eigen::VectorXd gibbs;
  Eigen::MatrixXd xi;
  if ((status = ReadSamplerSettings(request, gibbs, xi)) != "OK") return status;
  // Every equation over the same rows: those complete in every variable of the system.
  std::vector<std::string> everything;
  for (const auto& e : request.equations) {
    everything.push_back(e.dependent);
    for (const auto& x : e.regressors) {
      if (x != "constant") everything.push_back(x);
    }
  }
  Eigen::MatrixXd Y;
  std::vector<Eigen::MatrixXd> X;
  ModelData first;
  for (const auto& e : request.equations) {
    ModelRequest single = request;
    single.dependent = e.dependent;
    single.regressors = e.regressors;
    ModelData data;
    if ((status = ExtractModelData(single, data, everything)) != "OK") return status;
    if (!ModelsInterpreter::check_Binary(data.y)) {
      return "The dependent variable \"" + e.dependent + "\" of model \"" + keyword + "\" must hold only the values 0 and 1.";
    }
    if (Y.size() == 0) {
      Y.resize(data.y.size(), p);
      first = data;
    }
    Y.col(static_cast<Eigen::Index>(X.size())) = data.y;
    X.push_back(data.X);
  }
  const auto k = static_cast<Eigen::Index>(request.labels.size());
  Eigen::VectorXd m;
  Eigen::MatrixXd P;
  if ((status = ReadNormalPrior(request, "m", "P", k, kDefaultPrecision, m, P)) != "OK") return status;
  const LinearPrior prior = LinearPrior::Combine(m, P, request.constraints.R, request.constraints.r, xi);
  const CorrelationStructure structure = keyword == "mvprobit2"   ? CorrelationStructure::Common
                                         : keyword == "mvprobit3" ? CorrelationStructure::OneFactor
                                                                  : CorrelationStructure::Unrestricted;
  std::vector<std::string> names;
  for (const auto& e : request.equations) names.push_back(e.dependent);
  std::vector<std::string> labels = request.labels;
  for (const auto& label : MVProbit::CorrelationLabels(structure, names)) labels.push_back(label);
  const std::string typeName = keyword == "mvprobit2" ? "MVProbit2" : keyword == "mvprobit3" ? "MVProbit3" : "MVProbit";
  const std::string title = keyword == "mvprobit2"   ? "Multivariate probit model, one common correlation"
                            : keyword == "mvprobit3" ? "Multivariate probit model, one-factor correlation"
                                                     : "Multivariate probit model";
  job = std::make_unique<ModelJobFunction>([=](const ModelRunContext& context) -> std::shared_ptr<Model> {
    MVProbit estimator(gibbs, structure);
    if (!estimator.Sample(Y, X, prior, context.out, context.interrupt)) return nullptr;
    auto model = std::make_shared<MIM_MVProbit>();
    model->SetDraws(estimator.Draws(), labels);
    // Chib's method would need the ordinates of the slice steps: not given.
    DescribeEstimate(*model, typeName, title, estimator, first, estimator.logML, std::numeric_limits<double>::quiet_NaN());
    return model;
  });
  return "OK";
}

namespace {
const ModelFamilyRegistration kMultivariateProbit({"mvprobit", "mvprobit2", "mvprobit3"}, &Intrepr_DC3);
}
