// The discrete-choice family's interpreter: probit (Probit), logit (Logit) and their versions with
// individual effects, probit_re (Probit_RE) and logit_re (Logit_RE).
#include <algorithm>
#include <cmath>
#include <memory>

#include "BinaryRandomEffects.h"
#include "Dataset.h"
#include "Logit.h"
#include "MIM_DC.h"
#include "ModelData.h"
#include "ModelPriors.h"
#include "ModelsInterpreter.h"
#include "Probit.h"

namespace {

// Vague but proper: coefficients N(0, 1/0.001) each. On the probit scale that is already wide.
constexpr double kDefaultPrecision = 0.001;
// The effects' precision: Gamma(0.001, 0.001), as for the linear model's effects.
constexpr double kDefaultShape = 0.001;
constexpr double kDefaultRate = 0.001;

// Whether the index at `b` puts every observation on the side of zero its outcome says: the
// data are then separated, and the likelihood alone would send the coefficients to infinity.
bool Separated(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const Eigen::VectorXd& b) {
  const Eigen::VectorXd index = X * b;
  for (Eigen::Index i = 0; i < y.size(); ++i) {
    if ((y(i) > 0.5) != (index(i) > 0.0)) return false;
  }
  return true;
}

// The job of probit_re or logit_re.
std::unique_ptr<ModelJob> RandomEffectsJob(const ModelRequest& request, const Eigen::VectorXd& gibbs, const ModelData& data,
                                           const std::vector<int>& groups, const LinearPrior& prior, double aRe, double bRe) {
  const bool logit = request.keyword == "logit_re";
  const auto chib = request.options.logical.find("logML_CJ");
  const bool withChib = chib != request.options.logical.end() && chib->second;
  std::vector<std::string> labels = request.labels;
  labels.push_back("var_re");
  // Each group's code in the dataset, for the member "effects".
  const Eigen::VectorXd codes = request.dataset->GetVariable(request.dataset->Structure().groupVariable);
  Eigen::VectorXd groupCodes(groups.empty() ? 0 : *std::max_element(groups.begin(), groups.end()) + 1);
  for (std::size_t i = 0; i < groups.size(); ++i) groupCodes(groups[i]) = codes(data.rows[i]);
  return std::make_unique<ModelJobFunction>([=](const ModelRunContext& context) -> std::shared_ptr<Model> {
    std::unique_ptr<BinaryRandomEffects> sampler;
    if (logit) {
      sampler = std::make_unique<Logit_RE>(gibbs);
    } else {
      sampler = std::make_unique<Probit_RE>(gibbs);
    }
    BinaryRandomEffects& estimator = *sampler;
    if (!estimator.Sample(data.y, data.X, groups, prior, aRe, bRe, withChib, context.out, context.interrupt)) {
      return nullptr;
    }
    std::shared_ptr<Model> model;
    if (logit) {
      model = std::make_shared<MIM_Logit_RE>();
    } else {
      model = std::make_shared<MIM_Probit_RE>();
    }
    model->SetDraws(estimator.Draws(), labels);
    DescribeEstimate(*model, logit ? "Logit_RE" : "Probit_RE",
             logit ? "Binary logit model with individual effects" : "Binary probit model with individual effects",
             estimator, data, estimator.logML, estimator.logML_CJ);
    Eigen::MatrixXd effects(groupCodes.size(), 2);
    effects << groupCodes, estimator.effects;
    model->AddResult("effects", effects);
    if (logit) {
      Eigen::MatrixXd acceptance(1, 2);
      acceptance << estimator.coefficientAcceptance, estimator.effectAcceptance;
      model->AddResult("acceptance", acceptance);
    }
    return model;
  });
}

}  // namespace

// Checks a probit, logit, probit_re or logit_re statement: options, Gibbs settings, constraints, a
// binary dependent variable, the panel of the random-effects models, the priors.
std::string Intrepr_DC1(const ModelRequest& request, std::unique_ptr<ModelJob>& job) {
  const bool randomEffects = request.keyword == "probit_re" || request.keyword == "logit_re";
  if (!request.secondList.empty()) {
    return "Model \"" + request.keyword + "\" does not take a second list of variables.";
  }
  std::vector<std::string> numeric = {"m", "P"};
  if (randomEffects) numeric.insert(numeric.end(), {"a_re", "b_re"});
  const std::vector<std::string> logical =
      randomEffects ? std::vector<std::string>{"logML_CJ"} : std::vector<std::string>{};
  std::string status = CheckOptionNames(request, numeric, logical);
  if (status != "OK") return status;
  if (randomEffects && (status = CheckPanel(request)) != "OK") return status;
  Eigen::VectorXd gibbs;
  Eigen::MatrixXd xi;
  if ((status = ReadSamplerSettings(request, gibbs, xi)) != "OK") return status;
  ModelData data;
  status = ExtractModelData(request, data);
  if (status != "OK") return status;
  std::vector<int> groups;
  if (randomEffects) {
    status = ReadPanelGroups(request, data, groups);
    if (status != "OK") return status;
  }
  if (!ModelsInterpreter::check_Binary(data.y)) {
    return "The dependent variable \"" + request.dependent + "\" of model \"" + request.keyword +
           "\" must hold only the values 0 and 1.";
  }
  const auto k = static_cast<Eigen::Index>(request.regressors.size());
  Eigen::VectorXd m;
  Eigen::MatrixXd P;
  status = ReadNormalPrior(request, "m", "P", k, kDefaultPrecision, m, P);
  if (status != "OK") return status;
  const LinearPrior prior = LinearPrior::Combine(m, P, request.constraints.R, request.constraints.r, xi);
  if (randomEffects) {
    double aRe = 0.0, bRe = 0.0;
    status = ReadGammaPrior(request, "a_re", "b_re", kDefaultShape, kDefaultRate, aRe, bRe);
    if (status != "OK") return status;
    job = RandomEffectsJob(request, gibbs, data, groups, prior, aRe, bRe);
    return "OK";
  }
  const bool vaguePrior = !request.options.numeric.count("m") && !request.options.numeric.count("P");
  const std::vector<std::string> labels = request.labels;
  const bool logit = request.keyword == "logit";
  job = std::make_unique<ModelJobFunction>([=](const ModelRunContext& context) -> std::shared_ptr<Model> {
    std::shared_ptr<Model> model;
    if (logit) {
      Logit estimator(gibbs);
      if (!estimator.Sample(data.y, data.X, prior, context.out, context.interrupt)) {
        if (estimator.noMode) {
          throw EstimationRefused("The posterior of model \"logit\" has no mode that the sampler can find: the "
                                  "regressors separate the outcomes and the prior does not bound the "
                                  "coefficients. Give a stronger prior with \"P\".");
        }
        return nullptr;
      }
      model = std::make_shared<MIM_Logit>();
      model->SetDraws(estimator.Draws(), labels);
      model->AddResult("acceptance", Eigen::MatrixXd::Constant(1, 1, estimator.acceptance));
      DescribeEstimate(*model, "Logit", "Binary logit model", estimator, data, estimator.logML, estimator.logML_CJ);
    } else {
      Probit estimator(gibbs);
      if (!estimator.Sample(data.y, data.X, prior, context.out, context.interrupt)) return nullptr;
      model = std::make_shared<MIM_Probit>();
      model->SetDraws(estimator.Draws(), labels);
      DescribeEstimate(*model, "Probit", "Binary probit model", estimator, data, estimator.logML, estimator.logML_CJ);
    }
    if (vaguePrior && context.warnings && Separated(data.y, data.X, model->Summary().mean)) {
      context.warnings->push_back("The outcomes are perfectly separated by the regressors: the data do not bound the "
                                  "coefficients, which the vague default prior then decides. Give a stronger prior "
                                  "with \"P\", or drop the regressor that separates them.");
    }
    return model;
  });
  return "OK";
}

namespace {
const ModelFamilyRegistration kDiscreteChoice({"probit", "logit", "probit_re", "logit_re"}, &Intrepr_DC1);
}
