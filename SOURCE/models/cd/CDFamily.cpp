// The count-data family's interpreter: poisson (Poisson) and nbinom (NegBinom).
#include <cmath>
#include <cstdio>
#include <memory>

#include "MIM_CD.h"
#include "ModelData.h"
#include "ModelPriors.h"
#include "ModelsInterpreter.h"
#include "NegBinomRegression.h"
#include "PoissonRegression.h"

namespace {

// Vague but proper: coefficients N(0, 1/0.001) each, as for the other index models.
constexpr double kDefaultPrecision = 0.001;
// alpha ~ Gamma(1, 0.1): an exponential prior with mean 10, which leaves the data to decide
// between no overdispersion (alpha near 0) and a lot; log alpha has light tails on both sides.
constexpr double kDefaultAlphaShape = 1.0;
constexpr double kDefaultAlphaRate = 0.1;
// Below this acceptance rate the proposal fits the posterior poorly and the draws stick.
constexpr double kLowAcceptance = 0.2;

std::string Number(double x) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", x);
  return text;
}

// "OK" when every count is a whole number >= 0, otherwise the message naming the first that is not.
std::string CheckCounts(const ModelRequest& request, const ModelData& data) {
  for (Eigen::Index i = 0; i < data.y.size(); ++i) {
    const double y = data.y(i);
    if (y >= 0.0 && y == std::floor(y)) continue;
    return "The dependent variable \"" + request.dependent + "\" of model \"" + request.keyword +
           "\" must hold counts (whole numbers 0, 1, 2, ...), but observation " +
           std::to_string(data.rows[static_cast<std::size_t>(i)] + 1) + " holds " + Number(y) + ".";
  }
  return "OK";
}

// The exposure variable's name ("OK" and empty when there is none), or the message.
std::string ReadExposure(const ModelRequest& request, std::string& exposure) {
  if (request.options.numeric.count("exposure") || request.options.logical.count("exposure")) {
    return "The option \"exposure\" of model \"" + request.keyword +
           "\" names a variable of the dataset: give the name as a string, \"exposure\" = \"t\".";
  }
  const auto it = request.options.strings.find("exposure");
  exposure = it == request.options.strings.end() ? std::string() : it->second;
  return "OK";
}

std::string CheckExposure(const ModelRequest& request, const std::string& name, const ModelData& data) {
  for (Eigen::Index i = 0; i < data.extra.rows(); ++i) {
    const double value = data.extra(i, 0);
    if (value > 0.0) continue;
    return "The exposure variable \"" + name + "\" of model \"" + request.keyword +
           "\" must hold positive numbers, but observation " + std::to_string(data.rows[static_cast<std::size_t>(i)] + 1) +
           " holds " + Number(value) + ".";
  }
  return "OK";
}

std::string NoModeMessage(const std::string& keyword) {
  return "The posterior of model \"" + keyword +
         "\" has no mode that the sampler can find: the log-likelihood overflows or does not bound the "
         "parameters along the way. Rescale the regressors, or give a stronger prior with \"P\"" +
         (keyword == "nbinom" ? std::string(" (and \"a_alpha\", \"b_alpha\")") : std::string()) + ".";
}

void WarnIfLowAcceptance(const ModelRunContext& context, const std::string& keyword, double acceptance) {
  if (!context.warnings || !(acceptance < kLowAcceptance)) return;
  context.warnings->push_back("The sampler of model \"" + keyword + "\" accepted only " +
                              std::to_string(static_cast<int>(std::round(100.0 * acceptance))) +
                              "% of its proposals: the posterior is far from the Normal shape its proposal "
                              "assumes, so the draws are strongly correlated. Check the effective sample sizes "
                              "and raise \"draws\" if they are small.");
}

}  // namespace

// Checks a poisson or nbinom statement: options, Gibbs settings, constraints, counts in the
// dependent variable, a positive exposure variable, the priors.
std::string Intrepr_CD1(const ModelRequest& request, std::unique_ptr<ModelJob>& job) {
  const bool negativeBinomial = request.keyword == "nbinom";
  if (!request.secondList.empty()) {
    return "Model \"" + request.keyword + "\" does not take a second list of variables.";
  }
  std::string exposureName;
  std::string status = ReadExposure(request, exposureName);
  if (status != "OK") return status;
  std::vector<std::string> numeric = {"m", "P"};
  if (negativeBinomial) numeric.insert(numeric.end(), {"a_alpha", "b_alpha"});
  status = CheckOptionNames(request, numeric, {}, {"exposure"});
  if (status != "OK") return status;
  Eigen::VectorXd gibbs;
  Eigen::MatrixXd xi;
  if ((status = ReadSamplerSettings(request, gibbs, xi)) != "OK") return status;
  ModelData data;
  status = ExtractModelData(request, data,
                            exposureName.empty() ? std::vector<std::string>{} : std::vector<std::string>{exposureName});
  if (status != "OK") return status;
  if ((status = CheckCounts(request, data)) != "OK") return status;
  Eigen::VectorXd exposure;
  if (!exposureName.empty()) {
    if ((status = CheckExposure(request, exposureName, data)) != "OK") return status;
    exposure = data.extra.col(0);
  }
  const auto k = static_cast<Eigen::Index>(request.regressors.size());
  Eigen::VectorXd m;
  Eigen::MatrixXd P;
  status = ReadNormalPrior(request, "m", "P", k, kDefaultPrecision, m, P);
  if (status != "OK") return status;
  const LinearPrior prior = LinearPrior::Combine(m, P, request.constraints.R, request.constraints.r, xi);
  double alphaShape = kDefaultAlphaShape, alphaRate = kDefaultAlphaRate;
  if (negativeBinomial) {
    status = ReadGammaPrior(request, "a_alpha", "b_alpha", kDefaultAlphaShape, kDefaultAlphaRate, alphaShape, alphaRate);
    if (status != "OK") return status;
  }

  const std::string keyword = request.keyword;
  const std::vector<std::string> labels = request.labels;
  job = std::make_unique<ModelJobFunction>([=](const ModelRunContext& context) -> std::shared_ptr<Model> {
    std::shared_ptr<Model> model;
    double acceptance = 0.0;
    if (negativeBinomial) {
      NegBinom estimator(gibbs);
      if (!estimator.Sample(data.y, data.X, exposure, prior, alphaShape, alphaRate, context.out, context.interrupt)) {
        if (estimator.noMode) throw EstimationRefused(NoModeMessage(keyword));
        return nullptr;
      }
      std::vector<std::string> parameters = labels;
      parameters.push_back("alpha");
      model = std::make_shared<MIM_NegBinom>();
      model->SetDraws(estimator.Draws(), parameters);
      acceptance = estimator.acceptance;
      DescribeEstimate(*model, "NegBinom", MIM_CountModel::Title("Negative binomial regression model", exposureName),
                       estimator, data, estimator.logML, estimator.logML_CJ);
    } else {
      Poisson estimator(gibbs);
      if (!estimator.Sample(data.y, data.X, exposure, prior, context.out, context.interrupt)) {
        if (estimator.noMode) throw EstimationRefused(NoModeMessage(keyword));
        return nullptr;
      }
      model = std::make_shared<MIM_Poisson>();
      model->SetDraws(estimator.Draws(), labels);
      acceptance = estimator.acceptance;
      DescribeEstimate(*model, "Poisson", MIM_CountModel::Title("Poisson regression model", exposureName), estimator,
                       data, estimator.logML, estimator.logML_CJ);
    }
    model->AddResult("acceptance", Eigen::MatrixXd::Constant(1, 1, acceptance));
    WarnIfLowAcceptance(context, keyword, acceptance);
    return model;
  });
  return "OK";
}

namespace {
const ModelFamilyRegistration kCountData({"poisson", "nbinom"}, &Intrepr_CD1);
}
