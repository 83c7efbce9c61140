// The limited-dependent-variable family's interpreter: tobitI (TobitI), the censored regression, and
// tobitII (TobitII), the sample-selection model.
#include <cmath>
#include <limits>
#include <memory>

#include "MIM_LDV.h"
#include "ModelData.h"
#include "ModelPriors.h"
#include "ModelsInterpreter.h"
#include "TobitI.h"
#include "TobitII.h"

namespace {

// Vague but proper: coefficients N(0, 1/0.001) each, tau ~ Gamma(0.001, 0.001), as for lm; the
// selection model's error covariance N(0, 1/0.001) too.
constexpr double kDefaultPrecision = 0.001;
constexpr double kDefaultShape = 0.001;
constexpr double kDefaultRate = 0.001;

std::string Number(double value) {
  if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
  char text[32];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

// A limit option: one number, possibly infinite, never NaN.
std::string ReadLimit(const ModelRequest& request, const std::string& name, double& limit) {
  const auto it = request.options.numeric.find(name);
  if (it == request.options.numeric.end()) return "OK";
  if (it->second.size() != 1 || std::isnan(it->second(0, 0))) {
    return "The \"" + name + "\" option of model \"" + request.keyword + "\" must be a number (inf or -inf for none).";
  }
  limit = it->second(0, 0);
  return "OK";
}

std::string TobitI_Statement(const ModelRequest& request, std::unique_ptr<ModelJob>& job) {
  if (!request.secondList.empty()) {
    return "Model \"" + request.keyword + "\" does not take a second list of variables.";
  }
  std::string status = CheckOptionNames(request, {"m", "P", "a", "b", "lower", "upper"}, {"logML_CJ"});
  if (status != "OK") return status;
  double lower = 0.0, upper = std::numeric_limits<double>::infinity();
  if ((status = ReadLimit(request, "lower", lower)) != "OK") return status;
  if ((status = ReadLimit(request, "upper", upper)) != "OK") return status;
  if (!(lower < upper) || lower == std::numeric_limits<double>::infinity() ||
      upper == -std::numeric_limits<double>::infinity()) {
    return "The lower limit of model \"tobitI\" (" + Number(lower) + ") must be below its upper limit (" +
           Number(upper) + ").";
  }
  Eigen::VectorXd gibbs;
  Eigen::MatrixXd xi;
  if ((status = ReadSamplerSettings(request, gibbs, xi)) != "OK") return status;
  ModelData data;
  status = ExtractModelData(request, data);
  if (status != "OK") return status;
  // Censored values sit at their limit: a value beyond one is a mistake in the data or the limits.
  for (Eigen::Index i = 0; i < data.y.size(); ++i) {
    if (data.y(i) < lower || data.y(i) > upper) {
      return "Variable \"" + request.dependent + "\" has the value " + Number(data.y(i)) + " outside the limits of model \"tobitI\" (" +
             Number(lower) + " and " + Number(upper) + "): censored values must equal their limit.";
    }
  }
  const auto k = static_cast<Eigen::Index>(request.regressors.size());
  Eigen::VectorXd m;
  Eigen::MatrixXd P;
  status = ReadNormalPrior(request, "m", "P", k, kDefaultPrecision, m, P);
  if (status != "OK") return status;
  double a = 0.0, b = 0.0;
  status = ReadGammaPrior(request, "a", "b", kDefaultShape, kDefaultRate, a, b);
  if (status != "OK") return status;
  const LinearPrior prior = LinearPrior::Combine(m, P, request.constraints.R, request.constraints.r, xi);
  const auto chib = request.options.logical.find("logML_CJ");
  const bool withChib = chib != request.options.logical.end() && chib->second;
  std::vector<std::string> labels = request.labels;
  labels.push_back("tau");
  const std::string dependent = request.dependent;
  Eigen::Index censored = 0;
  for (Eigen::Index i = 0; i < data.y.size(); ++i) censored += (data.y(i) <= lower || data.y(i) >= upper) ? 1 : 0;
  job = std::make_unique<ModelJobFunction>([=](const ModelRunContext& context) -> std::shared_ptr<Model> {
    TobitI estimator(gibbs);
    if (!estimator.Sample(data.y, data.X, lower, upper, prior, a, b, withChib, context.out, context.interrupt)) {
      return nullptr;
    }
    auto model = std::make_shared<MIM_TobitI>();
    model->SetDraws(estimator.Draws(), labels);
    DescribeEstimate(*model, "TobitI", "Tobit model (censored regression)", estimator, data, estimator.logML,
                     estimator.logML_CJ);
    model->AddResult("lower_limit", Eigen::MatrixXd::Constant(1, 1, lower));
    model->AddResult("upper_limit", Eigen::MatrixXd::Constant(1, 1, upper));
    model->AddResult("censored", Eigen::MatrixXd::Constant(1, 1, static_cast<double>(censored)));
    if (censored == 0 && context.warnings) {
      context.warnings->push_back("No observation of \"" + dependent +
                                  "\" is at a limit of model \"tobitI\": the model is the linear one. Set the limits "
                                  "with \"lower\" and \"upper\".");
    }
    return model;
  });
  return "OK";
}

std::string TobitII_Statement(const ModelRequest& request, std::unique_ptr<ModelJob>& job) {
  if (request.secondList.empty()) {
    return "Model \"tobitII\" needs a selection equation: list its regressors after \"|\" "
           "(tobitII(y ~ x1 x2 | z1 z2)).";
  }
  std::string status = CheckOptionNames(request, {"m", "P", "mz", "Pz", "P_cov", "a", "b"}, {"logML_CJ"});
  if (status != "OK") return status;
  Eigen::VectorXd gibbs;
  Eigen::MatrixXd xi;
  if ((status = ReadSamplerSettings(request, gibbs, xi)) != "OK") return status;
  // Rows whose outcome is missing are the ones not selected: they stay.
  ModelData data;
  status = ExtractModelData(request, data, {}, MissingDependent::Keep);
  if (status != "OK") return status;
  const Eigen::VectorXd selected = (!data.y.array().isNaN()).cast<double>();
  if (selected.sum() == 0.0 || selected.sum() == static_cast<double>(selected.size())) {
    return "Variable \"" + request.dependent + "\" of model \"tobitII\" must be missing where the outcome was not " +
           "observed and present where it was: " +
           (selected.sum() == 0.0 ? "it is missing everywhere." : "it is missing nowhere, so there is no selection to model.");
  }
  const auto k = static_cast<Eigen::Index>(request.regressors.size());
  const auto ks = static_cast<Eigen::Index>(request.secondList.size());
  Eigen::VectorXd m, mz;
  Eigen::MatrixXd P, Pz;
  if ((status = ReadNormalPrior(request, "m", "P", k, kDefaultPrecision, m, P)) != "OK") return status;
  if ((status = ReadNormalPrior(request, "mz", "Pz", ks, kDefaultPrecision, mz, Pz)) != "OK") return status;
  double covariancePrecision = kDefaultPrecision;
  if (const auto it = request.options.numeric.find("P_cov");
      it != request.options.numeric.end() && !ModelsInterpreter::check_PositiveNumber(it->second, covariancePrecision)) {
    return "The \"P_cov\" option of model \"tobitII\" must be a positive number.";
  }
  double a = 0.0, b = 0.0;
  if ((status = ReadGammaPrior(request, "a", "b", kDefaultShape, kDefaultRate, a, b)) != "OK") return status;
  // One Normal prior on (b, w, g); the constraints' columns (main list, then selection list) get
  // a zero column for w.
  Eigen::VectorXd mean = Eigen::VectorXd::Zero(k + 1 + ks);
  mean.head(k) = m;
  mean.tail(ks) = mz;
  Eigen::MatrixXd precision = Eigen::MatrixXd::Zero(k + 1 + ks, k + 1 + ks);
  precision.topLeftCorner(k, k) = P;
  precision(k, k) = covariancePrecision;
  precision.bottomRightCorner(ks, ks) = Pz;
  const Eigen::Index rows = request.constraints.Count();
  Eigen::MatrixXd R = Eigen::MatrixXd::Zero(rows, k + 1 + ks);
  if (rows > 0) {
    R.leftCols(k) = request.constraints.R.leftCols(k);
    R.rightCols(ks) = request.constraints.R.rightCols(ks);
  }
  TobitII::Priors priors;
  priors.coefficients = LinearPrior::Combine(mean, precision, R, request.constraints.r, xi);
  priors.a = a;
  priors.b = b;
  const auto chib = request.options.logical.find("logML_CJ");
  const bool withChib = chib != request.options.logical.end() && chib->second;
  std::vector<std::string> labels = request.labels;
  labels.insert(labels.end(), request.secondLabels.begin(), request.secondLabels.end());
  labels.insert(labels.end(), {"sigma", "rho"});
  job = std::make_unique<ModelJobFunction>([=](const ModelRunContext& context) -> std::shared_ptr<Model> {
    TobitII estimator(gibbs);
    if (!estimator.Sample(data.y, selected, data.X, data.Z, priors, withChib, context.out, context.interrupt)) {
      return nullptr;
    }
    auto model = std::make_shared<MIM_TobitII>();
    model->SetDraws(estimator.Draws(), labels);
    DescribeEstimate(*model, "TobitII", "Tobit type II model (sample selection)", estimator, data, estimator.logML,
                     estimator.logML_CJ);
    model->AddResult("selected", Eigen::MatrixXd::Constant(1, 1, selected.sum()));
    return model;
  });
  return "OK";
}

}  // namespace

// Checks a tobitI or tobitII statement: options, limits or selection equation, Gibbs settings,
// constraints, data, priors.
std::string Intrepr_LDV1(const ModelRequest& request, std::unique_ptr<ModelJob>& job) {
  return request.keyword == "tobitII" ? TobitII_Statement(request, job) : TobitI_Statement(request, job);
}

namespace {
const ModelFamilyRegistration kLimitedDependent({"tobitI", "tobitII"}, &Intrepr_LDV1);
}
