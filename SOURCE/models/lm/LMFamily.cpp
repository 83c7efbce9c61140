// The linear family's interpreter: lm (LM, or LM_HET with a second list) and lm_re (LM_RE).
#include <cmath>
#include <limits>
#include <map>

#include "Dataset.h"
#include "LM.h"
#include "LM_HET.h"
#include "LM_RE.h"
#include "MIM_LM.h"
#include "ModelData.h"
#include "ModelPriors.h"
#include "ModelsInterpreter.h"

namespace {

// Vague but proper defaults: coefficients N(0, 1000) each, precisions Gamma(0.001, 0.001).
constexpr double kDefaultPrecision = 0.001;
constexpr double kDefaultShape = 0.001;
constexpr double kDefaultRate = 0.001;

// The constraints' columns for the main list and for the second list.
void SplitConstraints(const ModelRequest& request, Eigen::MatrixXd& main, Eigen::MatrixXd& second) {
  const auto k = static_cast<Eigen::Index>(request.labels.size());
  const Eigen::MatrixXd& R = request.constraints.R;
  main = R.leftCols(std::min(k, R.cols()));
  second = R.cols() > k ? Eigen::MatrixXd(R.rightCols(R.cols() - k)) : Eigen::MatrixXd(R.rows(), 0);
}

// The model's record of how many observations were used and left out.
void DescribeObservations(Model& model, const ModelData& data) {
  model.Description().observations = static_cast<long>(data.y.size());
  model.Description().observationsDropped = data.dropped;
}

// The family's model from a finished estimator: its draws under `labels`, both marginal
// likelihoods, and the observations used.
template <class Mim = MIM_LinearFamily, class Estimator>
std::shared_ptr<Model> LinearModel(const Estimator& estimator, const char* typeName, const char* title,
                                   std::vector<std::string> labels, const ModelData& data) {
  auto model = std::make_shared<Mim>();
  model->SetEstimates(estimator, typeName, title, std::move(labels), estimator.logML, estimator.logML_CJ);
  DescribeObservations(*model, data);
  return model;
}

}  // namespace

// Checks an lm or lm_re statement: options, Gibbs settings, constraints, data and priors.
std::string Intrepr_LM1(const ModelRequest& request, std::unique_ptr<ModelJob>& job) {
  const bool randomEffects = request.keyword == "lm_re";
  const bool heteroskedastic = !request.secondList.empty();
  if (randomEffects && heteroskedastic) {
    return "Model \"lm_re\" does not take a second list of variables.";
  }
  // With a second list the error precision is exp(z'd), so "a" and "b" have nothing to set.
  if (heteroskedastic) {
    for (const char* gammaOption : {"a", "b"}) {
      if (request.options.numeric.count(gammaOption)) {
        return "Model \"lm\" with a second list does not take the option \"" +
               std::string(gammaOption) +
               "\": the second list models the error precision, and \"mz\" and \"Pz\" set the "
               "prior of its coefficients.";
      }
    }
  }
  std::vector<std::string> numeric = {"m", "P"};
  if (heteroskedastic) {
    numeric.insert(numeric.end(), {"mz", "Pz"});
  } else {
    numeric.insert(numeric.end(), {"a", "b"});
  }
  if (randomEffects) numeric.insert(numeric.end(), {"a_re", "b_re"});
  const std::vector<std::string> logical =
      randomEffects ? std::vector<std::string>{"logML_CJ"} : std::vector<std::string>{};
  std::string status = CheckOptionNames(request, numeric, logical);
  if (status != "OK") return status;
  if (randomEffects && (status = CheckPanel(request)) != "OK") return status;

  Eigen::VectorXd gibbs;
  status = ModelsInterpreter::read_Gibbs(request.options.numeric, gibbs);
  if (status != "OK") return status;

  Eigen::MatrixXd xi(0, 0);
  if (request.constraints.Count() > 0) {
    status = ModelsInterpreter::CheckForRestrictions(request.options.numeric,
                                                     request.constraints.Count(), xi);
    if (status != "OK") return status;
  }

  ModelData data;
  status = ExtractModelData(request, data);
  if (status != "OK") return status;
  std::vector<int> groups;
  if (randomEffects) {
    status = ReadPanelGroups(request, data, groups);
    if (status != "OK") return status;
  }

  const auto k = static_cast<Eigen::Index>(request.regressors.size());
  Eigen::VectorXd m;
  Eigen::MatrixXd P;
  status = ReadNormalPrior(request, "m", "P", k, kDefaultPrecision, m, P);
  if (status != "OK") return status;

  if (heteroskedastic) {
    // One Normal prior on the coefficients of both lists, so that constraints may tie them.
    const auto p = static_cast<Eigen::Index>(request.secondList.size());
    Eigen::VectorXd mz;
    Eigen::MatrixXd Pz;
    status = ReadNormalPrior(request, "mz", "Pz", p, kDefaultPrecision, mz, Pz);
    if (status != "OK") return status;
    Eigen::VectorXd mean(k + p);
    mean << m, mz;
    Eigen::MatrixXd precision = Eigen::MatrixXd::Zero(k + p, k + p);
    precision.topLeftCorner(k, k) = P;
    precision.bottomRightCorner(p, p) = Pz;
    std::vector<std::string> labels = request.labels;
    labels.insert(labels.end(), request.secondLabels.begin(), request.secondLabels.end());
    const LinearPrior joint =
        LinearPrior::Combine(mean, precision, request.constraints.R, request.constraints.r, xi);
    job = std::make_unique<ModelJobFunction>([=](const ModelRunContext& context) -> std::shared_ptr<Model> {
      LM_HET estimator(gibbs);
      if (!estimator.Sample(data.y, data.X, data.Z, joint, context.out, context.interrupt)) return nullptr;
      return LinearModel(estimator, "LM_HET", "Linear regression model with heteroskedastic errors", labels,
                         data);
    });
    return "OK";
  }

  double a = 0.0, b = 0.0;
  status = ReadGammaPrior(request, "a", "b", kDefaultShape, kDefaultRate, a, b);
  if (status != "OK") return status;
  Eigen::MatrixXd Rmain, Rsecond;
  SplitConstraints(request, Rmain, Rsecond);
  const LinearPrior prior = LinearPrior::Combine(m, P, Rmain, request.constraints.r, xi);
  if (randomEffects) {
    double aRe = 0.0, bRe = 0.0;
    status = ReadGammaPrior(request, "a_re", "b_re", kDefaultShape, kDefaultRate, aRe, bRe);
    if (status != "OK") return status;
    const auto chib = request.options.logical.find("logML_CJ");
    const bool withChib = chib != request.options.logical.end() && chib->second;
    std::vector<std::string> labels = request.labels;
    labels.insert(labels.end(), {"tau", "omega"});
    job = std::make_unique<ModelJobFunction>([=](const ModelRunContext& context) -> std::shared_ptr<Model> {
      LM_RE estimator(gibbs);
      if (!estimator.Sample(data.y, data.X, groups, prior, a, b, aRe, bRe, withChib, context.out,
                            context.interrupt)) {
        return nullptr;
      }
      return LinearModel<MIM_LM_RE>(estimator, "LM_RE", "Linear regression model with individual effects", labels, data);
    });
    return "OK";
  }
  std::vector<std::string> labels = request.labels;
  labels.push_back("tau");
  job = std::make_unique<ModelJobFunction>([=](const ModelRunContext& context) -> std::shared_ptr<Model> {
    LM estimator(gibbs);
    if (!estimator.Sample(data.y, data.X, prior, a, b, context.out, context.interrupt)) return nullptr;
    return LinearModel(estimator, "LM", "Linear regression model", labels, data);
  });
  return "OK";
}

namespace {
const ModelFamilyRegistration kLinearFamily({"lm", "lm_re"}, &Intrepr_LM1);
}
