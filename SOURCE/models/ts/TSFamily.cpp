// The time-series family's interpreters: arima (ARIMA) for one series and varm (VARM) for several.
#include <cmath>
#include <cstdio>
#include <memory>

#include "ARIMA.h"
#include "DynamicModel.h"
#include "MinnesotaPrior.h"
#include "ModelData.h"
#include "ModelPriors.h"
#include "ModelsInterpreter.h"
#include "TimeSeriesData.h"
#include "VARM.h"

namespace {

// A whole number of at least `minimum` from a numeric option, or `fallback` when absent.
std::string ReadCount(const ModelRequest& request, const std::string& name, long minimum, long fallback, long& out) {
  out = fallback;
  const auto it = request.options.numeric.find(name);
  if (it == request.options.numeric.end()) return "OK";
  std::int64_t value = 0;
  if (!ModelsInterpreter::check_Integer(it->second, value) || value < minimum) {
    return "The \"" + name + "\" option of model \"" + request.keyword + "\" must be a whole number of at least " +
           std::to_string(minimum) + ".";
  }
  out = static_cast<long>(value);
  return "OK";
}

std::string ReadPositive(const ModelRequest& request, const std::string& name, double& out) {
  const auto it = request.options.numeric.find(name);
  if (it == request.options.numeric.end()) return "OK";
  if (!ModelsInterpreter::check_PositiveNumber(it->second, out) || !std::isfinite(out)) {
    return "The \"" + name + "\" option of model \"" + request.keyword + "\" must be a positive number.";
  }
  return "OK";
}

// What both statements share: the lags ("lags", default 1 for varm; "maxlags", the periods kept
// aside as the first lags' values, so that models of different orders fit the same observations),
// the constant, and the series with their exogenous variables.
struct SeriesRequest {
  long lags = 1, maxlags = 1;
  bool constant = true;
  TimeSeriesData data;
};

std::string ReadSeriesRequest(const ModelRequest& request, long defaultLags, long minimumLags, SeriesRequest& out) {
  std::string status = ReadCount(request, "lags", minimumLags, defaultLags, out.lags);
  if (status != "OK") return status;
  if ((status = ReadCount(request, "maxlags", out.lags, out.lags, out.maxlags)) != "OK") {
    return "The \"maxlags\" option of model \"" + request.keyword + "\" must be a whole number no smaller than \"lags\" (" +
           std::to_string(out.lags) + ").";
  }
  if (const auto it = request.options.logical.find("constant"); it != request.options.logical.end()) {
    out.constant = it->second;
  }
  return ReadTimeSeries(*request.dataset, request.keyword, request.equations.front().regressors,
                        request.equations.front().secondList, out.data);
}

// The observations a model reports: the periods it fits.
ModelData Fitted(const SeriesRequest& s, Eigen::Index periods) {
  ModelData data;
  data.y = Eigen::VectorXd::Zero(periods);
  data.dropped = s.data.dropped;
  return data;
}

std::string Varm_Statement(const ModelRequest& request, std::unique_ptr<ModelJob>& job) {
  const std::vector<std::string>& series = request.equations.front().regressors;
  const std::vector<std::string>& exogenous = request.equations.front().secondList;
  const auto m = static_cast<Eigen::Index>(series.size());
  if (m < 2) return "Model \"varm\" needs at least two series: varm(y1 y2, \"lags\" = 2). For one series use arima.";
  std::string status = CheckOptionNames(
      request, {"lags", "maxlags", "lambda1", "lambda2", "lambda3", "lambda4", "delta", "nu", "S"}, {"constant"}, {"prior"});
  if (status != "OK") return status;
  bool conjugate = false;
  if (const auto it = request.options.strings.find("prior"); it != request.options.strings.end()) {
    if (it->second != "nw" && it->second != "minnesota") {
      return "The \"prior\" option of model \"varm\" must be \"minnesota\" (the default) or \"nw\" (Normal-Wishart).";
    }
    conjugate = it->second == "nw";
  }
  MinnesotaSettings minnesota;
  for (auto [name, value] : {std::pair<const char*, double*>{"lambda1", &minnesota.lambda1},
                             {"lambda2", &minnesota.lambda2}, {"lambda3", &minnesota.lambda3},
                             {"lambda4", &minnesota.lambda4}}) {
    if ((status = ReadPositive(request, name, *value)) != "OK") return status;
  }
  if (const auto it = request.options.numeric.find("delta"); it != request.options.numeric.end()) {
    if (it->second.size() != 1 || !std::isfinite(it->second(0, 0))) {
      return "The \"delta\" option of model \"varm\" must be a number.";
    }
    minnesota.delta = it->second(0, 0);
  }
  Eigen::VectorXd gibbs;
  Eigen::MatrixXd xi;
  if ((status = ReadSamplerSettings(request, gibbs, xi)) != "OK") return status;
  SeriesRequest s;
  if ((status = ReadSeriesRequest(request, 1, 1, s)) != "OK") return status;
  const Eigen::Index T = s.data.Y.rows(), n = T - s.maxlags;
  const Eigen::Index k = (s.constant ? 1 : 0) + m * s.lags + static_cast<Eigen::Index>(exogenous.size());
  if (n <= k + m) {
    return "Model \"varm\" has " + std::to_string(T) + " periods: with " + std::to_string(s.maxlags) +
           " kept for the first lags, too few to fit " + std::to_string(k) + " coefficients per equation.";
  }
  const Eigen::MatrixXd X = VARM::LagMatrix(s.data.Y, s.data.X, s.lags, s.maxlags, s.constant);
  const Eigen::MatrixXd Y = s.data.Y.bottomRows(n);
  const Eigen::VectorXd scales = AutoregressiveScales(s.data.Y, s.lags, s.maxlags);
  SystemPriors priors;
  priors.conjugate = conjugate;
  if ((status = ReadWishartPrior(request, m, static_cast<double>(m + 2), 1.0, priors.nu, priors.S)) != "OK") {
    return status;
  }
  // Without "S", the prior's error variances are the series' own autoregressive ones.
  if (!request.options.numeric.count("S")) priors.S = Eigen::VectorXd(scales.array().square()).asDiagonal();
  const auto exogenousCount = static_cast<Eigen::Index>(exogenous.size());
  if (conjugate) {
    MinnesotaConjugate(minnesota, scales, s.lags, s.constant, exogenousCount, priors.B0, priors.V0inverse);
  } else {
    Eigen::VectorXd mean, precision;
    MinnesotaIndependent(minnesota, scales, s.lags, s.constant, exogenousCount, mean, precision);
    priors.coefficients = LinearPrior::Combine(mean, precision.asDiagonal(), Eigen::MatrixXd(0, m * k),
                                               Eigen::VectorXd(0), Eigen::MatrixXd(0, 0));
  }
  std::vector<std::vector<Eigen::Index>> columns(static_cast<std::size_t>(m));
  for (auto& c : columns) {
    for (Eigen::Index j = 0; j < k; ++j) c.push_back(j);
  }
  std::vector<std::string> labels;
  for (const std::string& y : series) {
    for (std::string& label : VARM::EquationLabels(y, series, exogenous, s.lags, s.constant)) labels.push_back(std::move(label));
  }
  for (std::string& label : SystemRegression::CovarianceLabels(series)) labels.push_back(std::move(label));
  std::string seriesList;
  for (const std::string& y : series) seriesList += (seriesList.empty() ? "" : " ") + y;
  const SystemStatistics stats(X, columns, Y);
  const ModelData fitted = Fitted(s, n);
  job = std::make_unique<ModelJobFunction>([=](const ModelRunContext& context) -> std::shared_ptr<Model> {
    VARM estimator(gibbs);
    if (!estimator.Sample(stats, priors, context.out, context.interrupt)) return nullptr;
    auto model = std::make_shared<MIM_VARM>();
    model->SetDraws(estimator.Draws(), labels);
    DescribeEstimate(*model, "VARM",
                     std::string("Vector autoregression, ") + (conjugate ? "Normal-Wishart" : "Minnesota") + " prior",
                     estimator, fitted, estimator.logML, estimator.logML_CJ);
    ModelDescription& d = model->Description();
    d.dependent = seriesList;
    d.regressors = exogenous;
    model->AddResult("lags", Eigen::MatrixXd::Constant(1, 1, static_cast<double>(s.lags)));
    model->AddResult("maxlags", Eigen::MatrixXd::Constant(1, 1, static_cast<double>(s.maxlags)));
    model->AddResult("constant", Eigen::MatrixXd::Constant(1, 1, s.constant ? 1.0 : 0.0));
    return model;
  });
  return "OK";
}

// Vague priors for the constant and the exogenous variables' coefficients, N(0, 1) for the
// autoregressive and moving-average ones (which live in the stable and invertible region),
// Gamma(0.001, 0.001) for the error precision.
constexpr double kDeterministicPrecision = 0.001;
constexpr double kDynamicPrecision = 1.0;
constexpr double kDefaultShape = 0.001;
constexpr double kDefaultRate = 0.001;

std::string Arima_Statement(const ModelRequest& request, std::unique_ptr<ModelJob>& job) {
  const std::string& series = request.equations.front().regressors.front();
  const std::vector<std::string>& exogenous = request.equations.front().secondList;
  std::string status = CheckOptionNames(request, {"lags", "diff", "ma", "maxlags", "m", "P", "a", "b"}, {"constant"});
  if (status != "OK") return status;
  long d = 0, q = 0;
  if ((status = ReadCount(request, "diff", 0, 0, d)) != "OK") return status;
  if ((status = ReadCount(request, "ma", 0, 0, q)) != "OK") return status;
  Eigen::VectorXd gibbs;
  Eigen::MatrixXd xi;
  if ((status = ReadSamplerSettings(request, gibbs, xi)) != "OK") return status;
  SeriesRequest s;
  if ((status = ReadSeriesRequest(request, 1, 0, s)) != "OK") return status;
  ARIMA::Setup setup;
  setup.p = s.lags;
  setup.q = q;
  setup.presample = s.maxlags;
  setup.constant = s.constant;
  const Eigen::Index T = s.data.Y.rows();
  const Eigen::Index c = s.constant ? 1 : 0, kx = static_cast<Eigen::Index>(exogenous.size());
  const Eigen::Index K = c + s.lags + q + kx;
  if (T - d - s.maxlags <= K + 1) {
    return "Model \"arima\" has " + std::to_string(T) + " periods: after " + std::to_string(d) + " difference" +
           (d == 1 ? "" : "s") + " and " + std::to_string(s.maxlags) + " kept for the first lags, too few to fit " +
           std::to_string(K + 1) + " parameters.";
  }
  setup.w = dynamic::Difference(s.data.Y, static_cast<int>(d)).col(0);
  setup.X = s.data.X.bottomRows(setup.w.size());
  Eigen::MatrixXd precision;
  if ((status = ReadNormalPrior(request, "m", "P", K, 1.0, setup.mean, precision)) != "OK") return status;
  if (!precision.isDiagonal()) return "The prior precision \"P\" of model \"arima\" must be diagonal (a number or a vector).";
  setup.precision = precision.diagonal();
  if (!request.options.numeric.count("P")) {
    setup.precision.setConstant(kDeterministicPrecision);
    setup.precision.segment(c, s.lags + q).setConstant(kDynamicPrecision);
  }
  if ((status = ReadGammaPrior(request, "a", "b", kDefaultShape, kDefaultRate, setup.a, setup.b)) != "OK") return status;
  const std::vector<std::string> labels = ARIMA::Labels(series, exogenous, s.lags, q, s.constant);
  const ModelData fitted = Fitted(s, T - d - s.maxlags);
  char title[96];
  std::snprintf(title, sizeof title, "ARIMA(%ld, %ld, %ld) model", s.lags, d, q);
  const std::string modelTitle = title;
  job = std::make_unique<ModelJobFunction>([=](const ModelRunContext& context) -> std::shared_ptr<Model> {
    ARIMA estimator(gibbs);
    if (!estimator.Sample(setup, context.out, context.interrupt)) return nullptr;
    auto model = std::make_shared<MIM_ARIMA>();
    model->SetDraws(estimator.Draws(), labels);
    DescribeEstimate(*model, "ARIMA", modelTitle, estimator, fitted, estimator.logML, estimator.logML_CJ);
    ModelDescription& description = model->Description();
    description.dependent = series;
    description.regressors = exogenous;
    model->AddResult("lags", Eigen::MatrixXd::Constant(1, 1, static_cast<double>(s.lags)));
    model->AddResult("diff", Eigen::MatrixXd::Constant(1, 1, static_cast<double>(d)));
    model->AddResult("ma", Eigen::MatrixXd::Constant(1, 1, static_cast<double>(q)));
    model->AddResult("maxlags", Eigen::MatrixXd::Constant(1, 1, static_cast<double>(s.maxlags)));
    model->AddResult("constant", Eigen::MatrixXd::Constant(1, 1, s.constant ? 1.0 : 0.0));
    Eigen::MatrixXd acceptance(1, 2);
    acceptance << estimator.stableAcceptance, estimator.movingAverageAcceptance;
    model->AddResult("acceptance", acceptance);
    return model;
  });
  return "OK";
}

}  // namespace

// Checks an arima statement: orders, prior, data.
std::string Intrepr_TS1(const ModelRequest& request, std::unique_ptr<ModelJob>& job) {
  return Arima_Statement(request, job);
}

// Checks a varm statement: series, lags, prior, data.
std::string Intrepr_TS2(const ModelRequest& request, std::unique_ptr<ModelJob>& job) {
  return Varm_Statement(request, job);
}

namespace {
const ModelFamilyRegistration kVectorAutoregression({"varm"}, &Intrepr_TS2);
const ModelFamilyRegistration kAutoregressiveMovingAverage({"arima"}, &Intrepr_TS1);
const ModelClassRegistration kARIMA("ARIMA", [] { return std::make_shared<MIM_ARIMA>(); });
const ModelClassRegistration kVARM("VARM", [] { return std::make_shared<MIM_VARM>(); });
}  // namespace
