// The ordered-choice family's interpreter: oprobit (OrderedProbit) and ologit (OrderedLogit).
#include <cmath>
#include <cstdio>
#include <memory>
#include <set>

#include "MIM_OC.h"
#include "ModelData.h"
#include "ModelPriors.h"
#include "ModelsInterpreter.h"
#include "OrderedLogit.h"
#include "OrderedProbit.h"

namespace {

// Vague but proper: coefficients N(0, 1/0.001) each, as for the binary models; the cut-points
// likewise, restricted to their order.
constexpr double kDefaultPrecision = 0.001;

std::string Number(double x) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%g", x);
  return buffer;
}

// The message for the error of check_Integral on y: which value has a fraction, or which code is
// missing between the smallest and the largest.
std::string CodesMessage(const ModelRequest& request, const Eigen::VectorXd& y, int error) {
  const std::string what = "The dependent variable \"" + request.dependent + "\" of model \"" + request.keyword + "\"";
  if (error == 1) {
    for (Eigen::Index i = 0; i < y.size(); ++i) {
      if (y(i) != std::floor(y(i))) {
        return what + " must hold whole-number codes of ordered categories, but it holds the value " + Number(y(i)) + ".";
      }
    }
  }
  const std::set<double> codes(y.data(), y.data() + y.size());
  double missing = *codes.begin();
  while (codes.count(missing)) missing += 1.0;
  return what + " must hold consecutive whole-number codes, one for each category, but it holds codes from " +
         Number(*codes.begin()) + " to " + Number(*codes.rbegin()) + " without " + Number(missing) + ".";
}

// The prior of the cut-points: "m_cut" a number, "P_cut" a positive number.
std::string ReadCutPointPrior(const ModelRequest& request, CutPointPrior& prior) {
  prior = CutPointPrior{0.0, kDefaultPrecision};
  const auto& numeric = request.options.numeric;
  if (const auto it = numeric.find("m_cut"); it != numeric.end()) {
    if (it->second.size() != 1 || !std::isfinite(it->second(0, 0))) {
      return "The prior mean \"m_cut\" of the cut-points must be a number (the same for every cut-point).";
    }
    prior.mean = it->second(0, 0);
  }
  if (const auto it = numeric.find("P_cut"); it != numeric.end()) {
    if (!ModelsInterpreter::check_PositiveNumber(it->second, prior.precision) || !std::isfinite(prior.precision)) {
      return "The prior precision \"P_cut\" of the cut-points must be a positive number (the same for every cut-point).";
    }
  }
  return "OK";
}

// The column of X that is a constant term (constant and not zero), or -1.
Eigen::Index InterceptColumn(const Eigen::MatrixXd& X) {
  for (Eigen::Index j : ModelsInterpreter::locs_Constants(X)) {
    if (X(0, j) != 0.0) return j;
  }
  return -1;
}

// Whether the index at the posterior mean puts every observation inside its category's interval
// between the mean cut-points: the data are then separated, and the likelihood alone would send the
// coefficients and cut-points to infinity.
bool Separated(const Eigen::VectorXi& y, const Eigen::MatrixXd& X, bool firstFixed, const Eigen::VectorXd& mean) {
  const Eigen::Index k = X.cols();
  Eigen::VectorXd cuts(mean.size() - k + (firstFixed ? 1 : 0));
  if (firstFixed) cuts(0) = 0.0;
  cuts.tail(mean.size() - k) = mean.tail(mean.size() - k);
  const Eigen::VectorXd index = X * mean.head(k);
  for (Eigen::Index i = 0; i < y.size(); ++i) {
    const int j = y(i);
    if ((j > 0 && index(i) <= cuts(j - 1)) || (j < cuts.size() && index(i) > cuts(j))) return false;
  }
  return true;
}

}  // namespace

// Checks an oprobit or ologit statement: options, Gibbs settings, constraints, the category codes
// of the dependent variable, the priors.
std::string Intrepr_OC1(const ModelRequest& request, std::unique_ptr<ModelJob>& job) {
  if (!request.secondList.empty()) {
    return "Model \"" + request.keyword + "\" does not take a second list of variables.";
  }
  std::string status = CheckOptionNames(request, {"m", "P", "m_cut", "P_cut"});
  if (status != "OK") return status;
  Eigen::VectorXd gibbs;
  Eigen::MatrixXd xi;
  if ((status = ReadSamplerSettings(request, gibbs, xi)) != "OK") return status;
  ModelData data;
  status = ExtractModelData(request, data);
  if (status != "OK") return status;
  int error = 0;
  Eigen::VectorXi y;
  ModelsInterpreter::check_Integral(data.y, error, y);
  if (error != 0) return CodesMessage(request, data.y, error);
  const int categories = y.maxCoeff() + 1;
  if (categories < 2) {
    return "The dependent variable \"" + request.dependent + "\" of model \"" + request.keyword +
           "\" takes only the value " + Number(data.y(0)) + ": an ordered model needs at least two categories.";
  }
  if (categories > kMaxOrderedCategories) {
    return "The dependent variable \"" + request.dependent + "\" of model \"" + request.keyword + "\" has " +
           std::to_string(categories) + " categories; ordered models take at most " +
           std::to_string(kMaxOrderedCategories) + ".";
  }
  const auto k = static_cast<Eigen::Index>(request.regressors.size());
  Eigen::VectorXd m;
  Eigen::MatrixXd P;
  status = ReadNormalPrior(request, "m", "P", k, kDefaultPrecision, m, P);
  if (status != "OK") return status;
  CutPointPrior cutPrior;
  status = ReadCutPointPrior(request, cutPrior);
  if (status != "OK") return status;
  const LinearPrior prior = LinearPrior::Combine(m, P, request.constraints.R, request.constraints.r, xi);

  const Eigen::Index intercept = InterceptColumn(data.X);
  std::vector<std::string> labels = request.labels;
  for (int j = intercept >= 0 ? 2 : 1; j < categories; ++j) labels.push_back("cut" + std::to_string(j));
  const double lowest = data.y.minCoeff();
  const Eigen::VectorXd codes = Eigen::VectorXd::LinSpaced(categories, lowest, lowest + categories - 1);
  const bool logit = request.keyword == "ologit";
  const bool vaguePrior = !request.options.numeric.count("m") && !request.options.numeric.count("P") &&
                          !request.options.numeric.count("m_cut") && !request.options.numeric.count("P_cut");
  job = std::make_unique<ModelJobFunction>([=](const ModelRunContext& context) -> std::shared_ptr<Model> {
    std::unique_ptr<OrderedChoice> estimator;
    std::shared_ptr<Model> model;
    if (logit) {
      estimator = std::make_unique<OrderedLogit>(gibbs);
      model = std::make_shared<MIM_OrderedLogit>();
    } else {
      estimator = std::make_unique<OrderedProbit>(gibbs);
      model = std::make_shared<MIM_OrderedProbit>();
    }
    if (!estimator->Sample(y, categories, data.X, intercept, prior, cutPrior, context.out, context.interrupt)) {
      if (estimator->noMode) {
        throw EstimationRefused("The posterior of model \"" + std::string(logit ? "ologit" : "oprobit") +
                                "\" has no mode that the sampler can find. Give stronger priors with \"P\" and "
                                "\"P_cut\".");
      }
      return nullptr;
    }
    model->SetDraws(estimator->Draws(), labels);
    DescribeEstimate(*model, logit ? "OrderedLogit" : "OrderedProbit", logit ? "Ordered logit model" : "Ordered probit model",
                     *estimator, data, estimator->logML, estimator->logML_CJ);
    model->AddResult("acceptance", Eigen::MatrixXd::Constant(1, 1, estimator->acceptance));
    model->AddResult("categories", codes);
    if (vaguePrior && context.warnings && Separated(y, data.X, intercept >= 0, model->Summary().mean)) {
      context.warnings->push_back("The categories are perfectly separated by the regressors: the data do not bound the "
                                  "coefficients and cut-points, which the vague default priors then decide (and the "
                                  "draws mix slowly). Give stronger priors with \"P\" and \"P_cut\", or drop the "
                                  "regressor that separates them.");
    }
    return model;
  });
  return "OK";
}

namespace {
const ModelFamilyRegistration kOrderedChoice({"oprobit", "ologit"}, &Intrepr_OC1);
}
