// The frontier family's interpreter for sf and sf_re: the inefficiency distribution ("dist"), the
// cost option, determinants of the inefficiency (the second list), priors, data, the job.
#include <cmath>
#include <functional>
#include <memory>

#include "MIM_SF.h"
#include "ModelData.h"
#include "ModelPriors.h"
#include "ModelsInterpreter.h"
#include "SF_EXP.h"
#include "SF_GAMMA.h"
#include "SF_HNORM.h"
#include "SF_IE_EXP.h"
#include "SF_LNORM.h"
#include "SF_TNORM.h"

namespace {

// Vague but proper: coefficients N(0, 1/0.001) each, tau ~ Gamma(0.001, 0.001), as for lm; the
// firm effects' precision likewise.
constexpr double kDefaultPrecision = 0.001;
constexpr double kDefaultShape = 0.001;
constexpr double kDefaultRate = 0.001;
// The median efficiency expected a priori (van den Broeck et al.'s choice).
constexpr double kDefaultMedianEfficiency = 0.875;
// Locations of u (mu_u, the determinants' coefficients) are on the scale of u itself: N(0, 1).
constexpr double kDefaultLocationPrecision = 1.0;
// The median of |N(0, 1)|.
constexpr double kHalfNormalMedian = 0.67448975019608171;

struct Distribution {
  const char* word;
  const char* typeName;
  const char* inefficiency;
};

const Distribution kDistributions[] = {
    {"hnorm", "SF_HNORM", "half-normal inefficiency"},
    {"tnorm", "SF_TNORM", "truncated-normal inefficiency"},
    {"exp", "SF_EXP", "exponential inefficiency"},
    {"gamma", "SF_GAMMA", "gamma inefficiency"},
    {"lognorm", "SF_LNORM", "log-normal inefficiency"},
};

bool LogicalOption(const ModelRequest& request, const char* name) {
  const auto it = request.options.logical.find(name);
  return it != request.options.logical.end() && it->second;
}

std::string ReadPositive(const ModelRequest& request, const std::string& name, double& value) {
  const auto it = request.options.numeric.find(name);
  if (it == request.options.numeric.end()) return "OK";
  if (!ModelsInterpreter::check_PositiveNumber(it->second, value)) {
    return "The \"" + name + "\" option of model \"" + request.keyword + "\" must be a positive number.";
  }
  return "OK";
}

// The prior of the inefficiency's parameters. The scale parameter's Gamma prior has shape "a_u"
// (default 1) and, unless "b_u" is given, the rate that puts its prior mean where the median
// inefficiency is -log("r_star").
std::string ReadInefficiencyPrior(const ModelRequest& request, const std::string& word, InefficiencyPrior& prior) {
  double medianEfficiency = kDefaultMedianEfficiency;
  if (const auto it = request.options.numeric.find("r_star"); it != request.options.numeric.end()) {
    if (it->second.size() != 1 || !(it->second(0, 0) > 0.0 && it->second(0, 0) < 1.0)) {
      return "The \"r_star\" option of model \"" + request.keyword +
             "\" (the median efficiency expected a priori) must be a number between 0 and 1.";
    }
    medianEfficiency = it->second(0, 0);
  }
  const double medianU = -std::log(medianEfficiency);
  std::string status = ReadPositive(request, "a_u", prior.scaleShape);
  if (status != "OK") return status;
  // The scale parameter's value at which the median of u is medianU.
  double scaleAtMedian = 1.0;
  if (word == "hnorm" || word == "tnorm") {
    scaleAtMedian = std::pow(kHalfNormalMedian / medianU, 2.0);
  } else if (word == "exp" || word == "gamma") {
    scaleAtMedian = std::log(2.0) / medianU;
  }
  prior.scaleRate = word == "lognorm" ? 1.0 : prior.scaleShape / scaleAtMedian;
  if ((status = ReadPositive(request, "b_u", prior.scaleRate)) != "OK") return status;
  if ((status = ReadPositive(request, "a_shape", prior.shapeShape)) != "OK") return status;
  if ((status = ReadPositive(request, "b_shape", prior.shapeRate)) != "OK") return status;
  if (!request.secondList.empty()) {
    const auto p = static_cast<Eigen::Index>(request.secondList.size());
    return ReadNormalPrior(request, "mz", "Pz", p, kDefaultLocationPrecision, prior.locationMean,
                           prior.locationPrecision);
  }
  status = ReadNormalPrior(request, "m_mu", "P_mu", 1, kDefaultLocationPrecision, prior.locationMean,
                           prior.locationPrecision);
  // The log-normal's mu_u is the log of the median of u.
  if (word == "lognorm" && !request.options.numeric.count("m_mu")) prior.locationMean(0) = std::log(medianU);
  return status;
}

using MakeEstimator = std::function<std::unique_ptr<StochasticFrontier>(const Eigen::VectorXd&)>;

}  // namespace

// Checks an sf or sf_re statement: the distribution and its options, Gibbs settings, constraints,
// data and priors.
std::string Intrepr_SF1(const ModelRequest& request, std::unique_ptr<ModelJob>& job) {
  const bool firmEffects = request.keyword == "sf_re";
  const bool determinants = !request.secondList.empty();
  if (request.options.numeric.count("cost")) {
    return "The \"cost\" argument must be set to either \"true\" or \"false\".";
  }
  std::string word = request.options.numeric.count("dist") ? "" : "hnorm";
  if (const auto it = request.options.strings.find("dist"); it != request.options.strings.end()) word = it->second;
  const Distribution* distribution = nullptr;
  for (const Distribution& d : kDistributions) {
    if (word == d.word) distribution = &d;
  }
  if (!distribution || (firmEffects && word != "hnorm" && word != "exp")) {
    return firmEffects ? "The \"dist\" option of model \"sf_re\" must be \"hnorm\" or \"exp\"."
                       : "The \"dist\" option of model \"sf\" must be one of \"hnorm\", \"tnorm\", \"exp\", \"gamma\" "
                         "or \"lognorm\".";
  }
  if (determinants && firmEffects) return "Model \"sf_re\" does not take a second list of variables.";
  if (determinants && word != "tnorm" && word != "exp") {
    return "Model \"sf\" takes a second list (the determinants of the inefficiency) only with \"dist\" = \"tnorm\" "
           "or \"exp\".";
  }
  // With determinants the exponential's scale is z'd: no scale prior to set.
  std::vector<std::string> numeric = {"m", "P", "a", "b"};
  if (!determinants || word == "tnorm") numeric.insert(numeric.end(), {"a_u", "b_u", "r_star"});
  if (determinants) numeric.insert(numeric.end(), {"mz", "Pz"});
  if (!determinants && (word == "tnorm" || word == "lognorm")) numeric.insert(numeric.end(), {"m_mu", "P_mu"});
  if (word == "gamma") numeric.insert(numeric.end(), {"a_shape", "b_shape"});
  if (firmEffects) numeric.insert(numeric.end(), {"a_re", "b_re"});
  const bool chibOffered = !firmEffects && !determinants && (word == "hnorm" || word == "exp");
  std::string status =
      CheckOptionNames(request, numeric, chibOffered ? std::vector<std::string>{"cost", "logML_CJ"} : std::vector<std::string>{"cost"},
                       {"dist"});
  if (status != "OK") return status;
  if (firmEffects && (status = CheckPanel(request)) != "OK") return status;
  Eigen::VectorXd gibbs;
  Eigen::MatrixXd xi;
  if ((status = ReadSamplerSettings(request, gibbs, xi)) != "OK") return status;
  ModelData data;
  if ((status = ExtractModelData(request, data)) != "OK") return status;
  std::vector<int> groups;
  if (firmEffects && (status = ReadPanelGroups(request, data, groups)) != "OK") return status;

  const auto k = static_cast<Eigen::Index>(request.regressors.size());
  Eigen::VectorXd m;
  Eigen::MatrixXd P;
  if ((status = ReadNormalPrior(request, "m", "P", k, kDefaultPrecision, m, P)) != "OK") return status;
  StochasticFrontier::Priors priors;
  if ((status = ReadGammaPrior(request, "a", "b", kDefaultShape, kDefaultRate, priors.a, priors.b)) != "OK") {
    return status;
  }
  if (firmEffects &&
      (status = ReadGammaPrior(request, "a_re", "b_re", kDefaultShape, kDefaultRate, priors.aRe, priors.bRe)) != "OK") {
    return status;
  }
  InefficiencyPrior inefficiencyPrior;
  if ((status = ReadInefficiencyPrior(request, word, inefficiencyPrior)) != "OK") return status;
  priors.coefficients = LinearPrior::Combine(m, P, request.constraints.R.leftCols(std::min(k, request.constraints.R.cols())),
                                             request.constraints.r, xi);
  const bool cost = LogicalOption(request, "cost");
  const bool chib = LogicalOption(request, "logML_CJ");

  std::string typeName = distribution->typeName;
  const std::string title = std::string(cost ? "Stochastic cost frontier model" : "Stochastic frontier model") +
                            (firmEffects ? " with firm effects and " : " with ") + distribution->inefficiency +
                            (determinants ? " depending on the second list" : "");
  MakeEstimator make;
  if (firmEffects) {
    typeName = word == "hnorm" ? "SF_RE_HNORM" : "SF_RE_EXP";
    make = [=](const Eigen::VectorXd& g) -> std::unique_ptr<StochasticFrontier> {
      if (word == "hnorm") return std::make_unique<SF_RE_HNORM>(g, inefficiencyPrior);
      return std::make_unique<SF_RE_EXP>(g, inefficiencyPrior);
    };
  } else if (determinants) {
    typeName = word == "tnorm" ? "SF_IE_TNORM" : "SF_IE_EXP";
    const Eigen::MatrixXd Z = data.Z;
    make = [=](const Eigen::VectorXd& g) -> std::unique_ptr<StochasticFrontier> {
      if (word == "tnorm") return std::make_unique<SF_IE_TNORM>(g, inefficiencyPrior, Z);
      return std::make_unique<SF_IE_EXP>(g, inefficiencyPrior, Z);
    };
  } else {
    make = [=](const Eigen::VectorXd& g) -> std::unique_ptr<StochasticFrontier> {
      if (word == "hnorm") return std::make_unique<SF_HNORM>(g, inefficiencyPrior);
      if (word == "exp") return std::make_unique<SF_EXP>(g, inefficiencyPrior);
      if (word == "tnorm") return std::make_unique<SF_TNORM>(g, inefficiencyPrior);
      if (word == "gamma") return std::make_unique<SF_GAMMA>(g, inefficiencyPrior);
      return std::make_unique<SF_LNORM>(g, inefficiencyPrior);
    };
  }
  std::vector<std::string> labels = request.labels;
  labels.insert(labels.end(), request.secondLabels.begin(), request.secondLabels.end());
  job = std::make_unique<ModelJobFunction>([=](const ModelRunContext& context) -> std::shared_ptr<Model> {
    const std::unique_ptr<StochasticFrontier> estimator = make(gibbs);
    if (!estimator->Sample(data.y, data.X, groups, cost, priors, chib, context.out, context.interrupt)) return nullptr;
    std::vector<std::string> all = labels;
    for (const std::string& label : estimator->ParameterLabels(firmEffects)) all.push_back(label);
    auto model = std::make_shared<MIM_SF>();
    model->SetDraws(estimator->Draws(), all);
    DescribeEstimate(*model, typeName, title, *estimator, data, estimator->logML, estimator->logML_CJ);
    model->AddResult("efficiency", estimator->efficiency);
    model->AddResult("inefficiency", estimator->inefficiency);
    model->AddResult("cost", Eigen::MatrixXd::Constant(1, 1, cost ? 1.0 : 0.0));
    if (!std::isnan(estimator->acceptance)) {
      model->AddResult("acceptance", Eigen::MatrixXd::Constant(1, 1, estimator->acceptance));
    }
    return model;
  });
  return "OK";
}

namespace {
const ModelFamilyRegistration kFrontierFamily({"sf", "sf_re"}, &Intrepr_SF1);
}
