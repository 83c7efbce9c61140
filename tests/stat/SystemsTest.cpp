// Systems of regressions: sur recovers simulated coefficients and the error covariance through its
// statement; the conjugate Normal-Wishart sampler matches its closed-form posterior, and the two
// estimates of the marginal likelihood agree.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "Dataset.h"
#include "EventDispatcher.h"
#include "Model.h"
#include "ModelFamily.h"
#include "PooledDraws.h"
#include "RandomEngine.h"
#include "SystemRegression.h"

namespace {

Eigen::VectorXd Gibbs(long draws, long burnin, long chains) {
  Eigen::VectorXd g(5);
  g << static_cast<double>(draws), static_cast<double>(burnin), static_cast<double>(chains), 1, 42;
  return g;
}

// y1 = 1 + 2 x1 + e1, y2 = -1 + 0.5 x2 - x3 + e2, var(e) = [1 0.6; 0.6 2].
std::shared_ptr<Dataset> SimulateSystem(int n, std::uint64_t seed) {
  RandomEngine rng;
  rng.Seed(seed);
  Eigen::MatrixXd data(n, 5);
  const Eigen::Matrix2d L = (Eigen::Matrix2d() << 1.0, 0.6, 0.6, 2.0).finished().llt().matrixL();
  for (int i = 0; i < n; ++i) {
    const Eigen::Vector3d x(rng.Normal(), rng.Normal(), rng.Normal());
    const Eigen::Vector2d e = L * Eigen::Vector2d(rng.Normal(), rng.Normal());
    data.row(i) << 1.0 + 2.0 * x(0) + e(0), -1.0 + 0.5 * x(1) - x(2) + e(1), x(0), x(1), x(2);
  }
  return std::make_shared<Dataset>(std::vector<std::string>{"y1", "y2", "x1", "x2", "x3"}, data);
}

ModelRequest SurRequest(const std::shared_ptr<Dataset>& dataset) {
  ModelRequest request;
  request.keyword = "sur";
  request.equations = {{"y1", {"constant", "x1"}, {}, {"y1$constant", "y1$x1"}},
                       {"y2", {"constant", "x2", "x3"}, {}, {"y2$constant", "y2$x2", "y2$x3"}}};
  request.dependent = "y1";
  request.regressors = {"constant", "x1"};
  for (const auto& e : request.equations) request.labels.insert(request.labels.end(), e.labels.begin(), e.labels.end());
  request.dataset = dataset;
  request.datasetName = "d";
  Eigen::MatrixXd draws(1, 1), burnin(1, 1);
  draws << 2000;
  burnin << 500;
  request.options.numeric["draws"] = draws;
  request.options.numeric["burnin"] = burnin;
  return request;
}

std::shared_ptr<Model> Estimate(const ModelRequest& request) {
  std::unique_ptr<ModelJob> job;
  const std::string status = FindModelFamily(request.keyword)(request, job);
  EXPECT_EQ(status, "OK");
  if (!job) return nullptr;
  static const EventDispatcher out;
  return job->Estimate(ModelRunContext{out, nullptr});
}

}  // namespace

TEST(SUR, RecoversCoefficientsAndErrorCovariance) {
  const auto model = Estimate(SurRequest(SimulateSystem(1500, 3)));
  ASSERT_TRUE(model);
  const std::vector<std::string> expected = {"y1$constant", "y1$x1",     "y2$constant", "y2$x2",
                                             "y2$x3",       "sigma2$y1", "sigma2$y2",   "rho$y1_y2"};
  ASSERT_EQ(model->Labels(), expected);
  const double truth[] = {1.0, 2.0, -1.0, 0.5, -1.0, 1.0, 2.0, 0.6 / std::sqrt(2.0)};
  for (std::size_t j = 0; j < expected.size(); ++j) {
    const Eigen::VectorXd draws = model->ParameterDraws(expected[j]);
    const double mean = draws.mean();
    const double sd = std::sqrt((draws.array() - mean).square().sum() / static_cast<double>(draws.size() - 1));
    EXPECT_NEAR(mean, truth[j], 4.0 * sd) << expected[j];
  }
  // Chib's estimate and the Laplace-Metropolis one target the same number.
  EXPECT_NEAR(model->ScalarResult("logML"), model->ScalarResult("logML_CJ"), 1.0);
}

TEST(SUR, RefusesWhatCannotBeEstimated) {
  const auto dataset = SimulateSystem(50, 4);
  std::unique_ptr<ModelJob> job;
  ModelRequest one = SurRequest(dataset);
  one.equations.pop_back();
  EXPECT_NE(FindModelFamily("sur")(one, job), "OK");
  ModelRequest twice = SurRequest(dataset);
  twice.equations[1].dependent = "y1";
  EXPECT_NE(FindModelFamily("sur")(twice, job).find("more than one equation"), std::string::npos);
  ModelRequest simultaneous = SurRequest(dataset);
  simultaneous.equations[0].regressors.push_back("y2");
  EXPECT_NE(FindModelFamily("sur")(simultaneous, job).find("must not be determined by the system"), std::string::npos);
  ModelRequest conjugate = SurRequest(dataset);
  conjugate.options.strings["prior"] = "nw";
  EXPECT_NE(FindModelFamily("sur")(conjugate, job).find("same regressors"), std::string::npos);
}

// With identical regressors and the conjugate prior the posterior is known: Sigma ~ inverse
// Wishart(S1, nu + n), B | Sigma ~ N(B1, Sigma (x) V1). The draws' means match B1 and
// S1 / (nu + n - m - 1), computed here from plain cross-products.
TEST(SystemRegression, ConjugatePriorMatchesItsClosedForm) {
  RandomEngine rng;
  rng.Seed(9);
  const int n = 300, k = 3, m = 2;
  Eigen::MatrixXd X(n, k), Y(n, m);
  for (int i = 0; i < n; ++i) {
    X.row(i) << 1.0, rng.Normal(), rng.Normal();
    const double e1 = rng.Normal(), e2 = 0.5 * e1 + rng.Normal();
    Y.row(i) << 0.5 + X(i, 1) + e1, -0.3 * X(i, 2) + 1.5 * e2;
  }
  SystemPriors priors;
  priors.conjugate = true;
  priors.B0 = Eigen::MatrixXd::Constant(k, m, 0.2);
  priors.V0inverse = 0.5 * Eigen::MatrixXd::Identity(k, k);
  priors.S = Eigen::MatrixXd::Identity(m, m);
  priors.nu = 4.0;
  const SystemStatistics stats(X, {{0, 1, 2}, {0, 1, 2}}, Y);
  SystemRegression sampler(Gibbs(20000, 10, 1));
  ASSERT_TRUE(sampler.Sample(stats, priors, EventDispatcher(), nullptr));
  const Eigen::MatrixXd draws = Pooled(sampler);

  const Eigen::MatrixXd V1inverse = priors.V0inverse + X.transpose() * X;
  const Eigen::MatrixXd B1 = V1inverse.ldlt().solve(priors.V0inverse * priors.B0 + X.transpose() * Y);
  const Eigen::MatrixXd S1 = priors.S + Y.transpose() * Y + priors.B0.transpose() * priors.V0inverse * priors.B0 -
                             B1.transpose() * V1inverse * B1;
  const Eigen::MatrixXd sigmaMean = S1 / (priors.nu + n - m - 1);
  for (int j = 0; j < m; ++j) {
    for (int r = 0; r < k; ++r) {
      const Eigen::VectorXd b = draws.col(j * k + r);
      const double sd = std::sqrt((b.array() - b.mean()).square().mean());
      EXPECT_NEAR(b.mean(), B1(r, j), 4.0 * sd / std::sqrt(20000.0)) << "coefficient " << r << " of equation " << j;
    }
    const Eigen::VectorXd variance = draws.col(m * k + j);
    EXPECT_NEAR(variance.mean(), sigmaMean(j, j), 0.01 * sigmaMean(j, j));
  }
  const double rho = sigmaMean(0, 1) / std::sqrt(sigmaMean(0, 0) * sigmaMean(1, 1));
  EXPECT_NEAR(draws.col(m * k + m).mean(), rho, 0.01);
  // The closed-form marginal likelihood against the Laplace-Metropolis estimate from the draws.
  EXPECT_NEAR(sampler.logML_CJ, sampler.logML, 0.5);
}
