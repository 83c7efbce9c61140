// Time-series models: VAR(1), AR(1) and MA(1) recover simulated parameters through their
// statements; the Normal-Wishart VAR matches its closed-form posterior; forecasts of an AR(1)
// match the analytic predictive mean and variance; impulse responses match those computed by hand;
// the marginal likelihood picks the true lag order.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "ARIMA.h"
#include "Dataset.h"
#include "DynamicModel.h"
#include "EventDispatcher.h"
#include "MinnesotaPrior.h"
#include "ModelFamily.h"
#include "VARM.h"

namespace {

Eigen::MatrixXd Scalar(double value) { return Eigen::MatrixXd::Constant(1, 1, value); }

ModelRequest SeriesRequest(const std::string& keyword, const std::shared_ptr<Dataset>& dataset,
                           std::vector<std::string> series, long draws) {
  ModelRequest request;
  request.keyword = keyword;
  request.equations = {{"", series, {}, {}}};
  request.regressors = series;
  request.dataset = dataset;
  request.datasetName = "d";
  request.options.numeric["draws"] = Scalar(static_cast<double>(draws));
  request.options.numeric["burnin"] = Scalar(1000);
  return request;
}

std::shared_ptr<Model> Estimate(const ModelRequest& request) {
  std::unique_ptr<ModelJob> job;
  const std::string status = FindModelFamily(request.keyword)(request, job);
  EXPECT_EQ(status, "OK");
  if (!job) return nullptr;
  static const EventDispatcher out;
  auto model = job->Estimate(ModelRunContext{out, nullptr});
  model->Description().keyword = request.keyword;
  model->SetDataset(request.dataset, "d");
  return model;
}

// The posterior mean and standard deviation of a parameter.
std::pair<double, double> Moments(const Model& model, const std::string& label) {
  const Eigen::VectorXd draws = model.ParameterDraws(label);
  EXPECT_GT(draws.size(), 0) << label;
  const double mean = draws.mean();
  return {mean, std::sqrt((draws.array() - mean).square().sum() / static_cast<double>(draws.size() - 1))};
}

void ExpectRecovered(const Model& model, const std::string& label, double truth) {
  const auto [mean, sd] = Moments(model, label);
  EXPECT_NEAR(mean, truth, 4.0 * sd) << label;
}

// y_t = c + A_1 y_{t-1} + A_2 y_{t-2} + e_t, e_t ~ N(0, I), after a burn-in of 100 periods.
std::shared_ptr<Dataset> SimulateVar(int T, const Eigen::VectorXd& c, const Eigen::MatrixXd& A1,
                                     const Eigen::MatrixXd& A2, std::uint64_t seed) {
  RandomEngine rng;
  rng.Seed(seed);
  const Eigen::Index m = c.size();
  Eigen::MatrixXd y = Eigen::MatrixXd::Zero(T + 100, m);
  for (int t = 2; t < T + 100; ++t) {
    Eigen::VectorXd e(m);
    for (Eigen::Index i = 0; i < m; ++i) e(i) = rng.Normal();
    y.row(t) = (c + A1 * y.row(t - 1).transpose() + A2 * y.row(t - 2).transpose() + e).transpose();
  }
  std::vector<std::string> names;
  for (Eigen::Index i = 0; i < m; ++i) names.push_back("y" + std::to_string(i + 1));
  return std::make_shared<Dataset>(names, Eigen::MatrixXd(y.bottomRows(T)));
}

// w_t = c + phi w_{t-1} + e_t + theta e_{t-1}, e_t ~ N(0, sigma^2).
std::shared_ptr<Dataset> SimulateArma(int T, double c, double phi, double theta, double sigma, std::uint64_t seed) {
  RandomEngine rng;
  rng.Seed(seed);
  Eigen::VectorXd w = Eigen::VectorXd::Zero(T + 100);
  double previous = 0.0;
  for (int t = 1; t < T + 100; ++t) {
    const double e = sigma * rng.Normal();
    w(t) = c + phi * w(t - 1) + e + theta * previous;
    previous = e;
  }
  return std::make_shared<Dataset>(std::vector<std::string>{"y"}, Eigen::MatrixXd(w.tail(T)));
}

}  // namespace

TEST(VARM, RecoversAVarOfOrderOne) {
  Eigen::MatrixXd A1(2, 2);
  A1 << 0.5, 0.1, 0.2, 0.3;
  const auto dataset = SimulateVar(500, Eigen::Vector2d(1.0, -0.5), A1, Eigen::MatrixXd::Zero(2, 2), 1);
  ModelRequest request = SeriesRequest("varm", dataset, {"y1", "y2"}, 3000);
  request.options.numeric["lags"] = Scalar(1);
  request.options.numeric["lambda1"] = Scalar(5);  // hardly any shrinkage
  const auto model = Estimate(request);
  ASSERT_TRUE(model);
  EXPECT_TRUE(model->LayoutHolds());
  ExpectRecovered(*model, "y1$constant", 1.0);
  ExpectRecovered(*model, "y2$constant", -0.5);
  ExpectRecovered(*model, "y1$y1_lag1", 0.5);
  ExpectRecovered(*model, "y1$y2_lag1", 0.1);
  ExpectRecovered(*model, "y2$y1_lag1", 0.2);
  ExpectRecovered(*model, "y2$y2_lag1", 0.3);
  ExpectRecovered(*model, "sigma2$y1", 1.0);
  ExpectRecovered(*model, "rho$y1_y2", 0.0);
}

// The conjugate prior's posterior mean of B is V1 (V0^-1 B0 + X'Y), computed here from the lag
// matrix and the prior the statement builds.
TEST(VARM, NormalWishartPriorMatchesItsClosedFormMeans) {
  Eigen::MatrixXd A1(2, 2);
  A1 << 0.4, 0.0, 0.3, 0.2;
  const auto dataset = SimulateVar(120, Eigen::Vector2d(0.5, 0.0), A1, Eigen::MatrixXd::Zero(2, 2), 2);
  ModelRequest request = SeriesRequest("varm", dataset, {"y1", "y2"}, 20000);
  request.options.numeric["lags"] = Scalar(2);
  request.options.strings["prior"] = "nw";
  const auto model = Estimate(request);
  ASSERT_TRUE(model);
  const Eigen::MatrixXd Y = dataset->Data();
  const Eigen::MatrixXd X = VARM::LagMatrix(Y, Eigen::MatrixXd(Y.rows(), 0), 2, 2, true);
  Eigen::MatrixXd B0, V0inverse;
  MinnesotaConjugate(MinnesotaSettings{}, AutoregressiveScales(Y, 2, 2), 2, true, 0, B0, V0inverse);
  const Eigen::MatrixXd V1inverse = V0inverse + X.transpose() * X;
  const Eigen::MatrixXd B1 = V1inverse.ldlt().solve(V0inverse * B0 + X.transpose() * Y.bottomRows(Y.rows() - 2));
  const Eigen::MatrixXd& draws = *model->GetpMatrix("draws");
  for (Eigen::Index j = 0; j < 2; ++j) {
    for (Eigen::Index r = 0; r < X.cols(); ++r) {
      const Eigen::VectorXd b = draws.col(j * X.cols() + r);
      const double sd = std::sqrt((b.array() - b.mean()).square().mean());
      EXPECT_NEAR(b.mean(), B1(r, j), 4.0 * sd / std::sqrt(static_cast<double>(b.size()))) << model->Labels()[j * X.cols() + r];
    }
  }
}

TEST(ARIMA, RecoversAutoregressiveAndMovingAverageModels) {
  {
    SCOPED_TRACE("AR(1)");
    ModelRequest request = SeriesRequest("arima", SimulateArma(500, 0.5, 0.7, 0.0, 1.0, 3), {"y"}, 3000);
    const auto model = Estimate(request);
    ASSERT_TRUE(model);
    EXPECT_TRUE(model->LayoutHolds());
    ExpectRecovered(*model, "y$constant", 0.5);
    ExpectRecovered(*model, "y$ar1", 0.7);
    ExpectRecovered(*model, "sigma2$y", 1.0);
  }
  {
    SCOPED_TRACE("MA(1)");
    ModelRequest request = SeriesRequest("arima", SimulateArma(600, 0.2, 0.0, 0.6, 0.5, 4), {"y"}, 3000);
    request.options.numeric["lags"] = Scalar(0);
    request.options.numeric["ma"] = Scalar(1);
    const auto model = Estimate(request);
    ASSERT_TRUE(model);
    ExpectRecovered(*model, "y$ma1", 0.6);
    ExpectRecovered(*model, "sigma2$y", 0.25);
  }
}

// Forecasts of an AR(1) fitted on a long sample, where parameter uncertainty is small: the
// h-step mean is mu + phi^h (y_T - mu) and the variance sigma^2 (1 + phi^2 + ... + phi^(2(h-1))),
// at the posterior means.
TEST(ARIMA, ForecastsMatchTheAnalyticPredictiveDistribution) {
  const auto dataset = SimulateArma(3000, 1.0, 0.8, 0.0, 1.0, 5);
  const auto model = Estimate(SeriesRequest("arima", dataset, {"y"}, 4000));
  ASSERT_TRUE(model);
  ActionOptions options;
  options.horizon = 3;
  static const EventDispatcher out;
  MIM_TimeSeries::Forecasts forecasts;
  bool interrupted = false;
  const auto& series = static_cast<const MIM_TimeSeries&>(*model);
  ASSERT_EQ(series.ComputeForecasts(options, ActionContext{out, nullptr, "m", dataset}, forecasts, interrupted), "OK");
  const double c = Moments(*model, "y$constant").first, phi = Moments(*model, "y$ar1").first;
  const double sigma2 = Moments(*model, "sigma2$y").first;
  const double mu = c / (1.0 - phi), last = dataset->Data()(2999, 0);
  double variance = 0.0;
  for (int h = 1; h <= 3; ++h) {
    variance += sigma2 * std::pow(phi, 2 * (h - 1));
    EXPECT_NEAR(forecasts.mean(h - 1, 0), mu + std::pow(phi, h) * (last - mu), 0.08) << "h = " << h;
    EXPECT_NEAR(forecasts.sd(h - 1, 0), std::sqrt(variance), 0.06 * std::sqrt(variance)) << "h = " << h;
  }
}

// Psi_h of a VAR(2) by powers of its companion matrix, and of an ARMA(1, 1) by its formula
// phi^(h-1) (phi + theta); the orthogonal impact is the Cholesky factor of Sigma.
TEST(DynamicModel, ImpulseResponsesMatchThoseComputedByHand) {
  DynamicParameters var;
  var.c = Eigen::Vector2d::Zero();
  var.A.resize(2, 4);
  var.A << 0.5, 0.1, 0.2, -0.1, 0.0, 0.3, 0.1, 0.1;
  var.Theta.resize(2, 0);
  var.B.resize(2, 0);
  var.Sigma = (Eigen::Matrix2d() << 1.0, 0.3, 0.3, 0.5).finished();
  const Eigen::MatrixXd P = var.Sigma.llt().matrixL();
  const Eigen::MatrixXd responses = dynamic::ImpulseResponses(var, 6, P);
  const Eigen::MatrixXd C = dynamic::Companion(var.A, 2);
  Eigen::MatrixXd power = Eigen::MatrixXd::Identity(4, 4);
  for (int h = 0; h <= 6; ++h) {
    EXPECT_TRUE(responses.middleRows(2 * h, 2).isApprox(power.topLeftCorner(2, 2) * P, 1e-12)) << "h = " << h;
    power = C * power;
  }

  DynamicParameters arma;
  arma.c = Eigen::VectorXd::Zero(1);
  arma.A = Eigen::MatrixXd::Constant(1, 1, 0.7);
  arma.Theta = Eigen::MatrixXd::Constant(1, 1, 0.4);
  arma.B.resize(1, 0);
  arma.Sigma = Eigen::MatrixXd::Identity(1, 1);
  const Eigen::MatrixXd psi = dynamic::ImpulseResponses(arma, 5, Eigen::MatrixXd::Identity(1, 1));
  EXPECT_DOUBLE_EQ(psi(0, 0), 1.0);
  for (int h = 1; h <= 5; ++h) EXPECT_NEAR(psi(h, 0), std::pow(0.7, h - 1) * 1.1, 1e-12) << "h = " << h;
  EXPECT_NEAR(dynamic::LargestModulus(var.A, 2), C.eigenvalues().cwiseAbs().maxCoeff(), 1e-12);
}

// On a VAR of order 2 with a strong second lag, both estimates of the marginal likelihood rank
// order 2 above orders 1 and 3 (every model fitted to the same periods through "maxlags").
TEST(VARM, MarginalLikelihoodPicksTheTrueLagOrder) {
  Eigen::MatrixXd A1(2, 2), A2(2, 2);
  A1 << 0.3, 0.1, 0.0, 0.2;
  A2 << 0.4, 0.0, 0.1, -0.4;
  const auto dataset = SimulateVar(300, Eigen::Vector2d(0.2, 0.1), A1, A2, 6);
  double lr[4], cj[4];
  for (int p = 1; p <= 3; ++p) {
    ModelRequest request = SeriesRequest("varm", dataset, {"y1", "y2"}, 2000);
    request.options.numeric["lags"] = Scalar(p);
    request.options.numeric["maxlags"] = Scalar(3);
    request.options.numeric["delta"] = Scalar(0);
    const auto model = Estimate(request);
    ASSERT_TRUE(model);
    lr[p] = model->ScalarResult("logML");
    cj[p] = model->ScalarResult("logML_CJ");
  }
  EXPECT_GT(lr[2], lr[1]);
  EXPECT_GT(lr[2], lr[3]);
  EXPECT_GT(cj[2], cj[1]);
  EXPECT_GT(cj[2], cj[3]);
}

// ARMA(1, 1) data: the two estimates of the marginal likelihood (one from the draws' Normal
// approximation, one from the conditionals' ordinates and a reduced run) agree, and rank the true
// model above an AR(1), both fitted to the same periods.
TEST(ARIMA, MarginalLikelihoodsAgreeAndPickTheTrueModel) {
  const auto dataset = SimulateArma(400, 0.5, 0.6, 0.5, 1.0, 7);
  double lr[2], cj[2];
  for (int q = 0; q <= 1; ++q) {
    ModelRequest request = SeriesRequest("arima", dataset, {"y"}, 3000);
    request.options.numeric["ma"] = Scalar(q);
    const auto model = Estimate(request);
    ASSERT_TRUE(model);
    lr[q] = model->ScalarResult("logML");
    cj[q] = model->ScalarResult("logML_CJ");
    EXPECT_NEAR(lr[q], cj[q], 0.5) << "ma = " << q;
  }
  EXPECT_GT(lr[1], lr[0] + 3.0);
  EXPECT_GT(cj[1], cj[0] + 3.0);
}
