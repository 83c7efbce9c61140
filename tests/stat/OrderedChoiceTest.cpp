// The ordered probit and logit: recovery of simulated coefficients and cut-points with and without
// a constant term, the analytic derivatives against central differences, the two-category model
// against the probit sampler, posteriors and marginal likelihoods of two-parameter models against
// quadrature, and the probabilities of the categories that mfx and predict use.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "EventDispatcher.h"
#include "MIM_OC.h"
#include "MarginalLikelihood.h"
#include "OrderedLogit.h"
#include "OrderedProbit.h"
#include "PooledDraws.h"
#include "Probit.h"
#include "RandomEngine.h"

namespace {

Eigen::VectorXd Gibbs(long draws, long burnin, long chains) {
  Eigen::VectorXd g(5);
  g << static_cast<double>(draws), static_cast<double>(burnin), static_cast<double>(chains), 1, 42;
  return g;
}

LinearPrior Prior(Eigen::Index k, double precision) {
  return LinearPrior::Combine(Eigen::VectorXd::Zero(k), Eigen::MatrixXd::Identity(k, k) * precision,
                              Eigen::MatrixXd(0, k), Eigen::VectorXd(0), Eigen::MatrixXd(0, 0));
}

double NormalCdf(double x) { return 0.5 * std::erfc(-x / std::sqrt(2.0)); }
double LogisticCdf(double x) { return 1.0 / (1.0 + std::exp(-x)); }

// A standard Normal or logistic error.
double Error(RandomEngine& rng, bool logistic) {
  if (!logistic) return rng.Normal();
  const double u = rng.Uniform();
  return -std::log(1.0 / u - 1.0);
}

struct Sample {
  Eigen::VectorXi y;
  Eigen::MatrixXd X;
};

// y = the number of cut-points below x'b + e; X = [1 (when `constant`), Normal x, binary x].
Sample Simulate(int n, const Eigen::VectorXd& b, const Eigen::VectorXd& cuts, bool constant, bool logistic,
                std::uint64_t seed) {
  RandomEngine rng;
  rng.Seed(seed);
  Sample s;
  s.X.resize(n, b.size());
  s.y.resize(n);
  for (int i = 0; i < n; ++i) {
    Eigen::Index j = 0;
    if (constant) s.X(i, j++) = 1.0;
    s.X(i, j++) = rng.Normal();
    s.X(i, j) = rng.Uniform() < 0.5 ? 1.0 : 0.0;
    const double latent = s.X.row(i).dot(b) + Error(rng, logistic);
    int category = 0;
    while (category < cuts.size() && latent > cuts(category)) ++category;
    s.y(i) = category;
  }
  return s;
}

}  // namespace

// Both links, with a constant (cut1 fixed at 0, so the constant absorbs it) and without (all three
// cut-points free): posterior means within four posterior standard deviations of the truth.
TEST(OrderedChoice, RecoversCoefficientsAndCutPoints) {
  for (bool logistic : {false, true}) {
    for (bool constant : {true, false}) {
      const Eigen::VectorXd cuts = Eigen::Vector3d(-0.4, 0.5, 1.6);
      Eigen::VectorXd b, truth;
      if (constant) {
        // x'b + e > c_j is 0.4 + ... + e > c_j - c_1 with the first cut-point moved to 0.
        b = Eigen::Vector3d(0.0, 1.0, -0.7);
        truth.resize(5);
        truth << 0.4, 1.0, -0.7, 0.9, 2.0;
      } else {
        b = Eigen::Vector2d(1.0, -0.7);
        truth.resize(5);
        truth << 1.0, -0.7, -0.4, 0.5, 1.6;
      }
      // 1,500 observations: the likelihood is summed over two blocks.
      const Sample s = Simulate(1500, b, cuts, constant, logistic, logistic ? 11 : 12);
      std::unique_ptr<OrderedChoice> model;
      if (logistic) {
        model = std::make_unique<OrderedLogit>(Gibbs(600, 100, 2));
      } else {
        model = std::make_unique<OrderedProbit>(Gibbs(600, 100, 2));
      }
      const std::string which = std::string(logistic ? "ologit" : "oprobit") + (constant ? " with" : " without") +
                                " a constant";
      ASSERT_TRUE(model->Sample(s.y, 4, s.X, constant ? 0 : -1, Prior(b.size(), 1e-3), CutPointPrior{}, EventDispatcher(),
                                nullptr))
          << which;
      const Eigen::MatrixXd draws = Pooled(*model);
      ASSERT_EQ(draws.cols(), 5) << which;
      const Eigen::RowVectorXd mean = draws.colwise().mean();
      const Eigen::MatrixXd cov = mlik::Covariance(draws);
      for (Eigen::Index j = 0; j < 5; ++j) {
        EXPECT_NEAR(mean(j), truth(j), 4.0 * std::sqrt(cov(j, j))) << which << ", parameter " << j;
      }
      EXPECT_GT(model->acceptance, 0.6) << which;
      EXPECT_NEAR(model->logML_CJ, model->logML, 0.5) << which;

      // The analytic derivatives in theta (log gaps, Jacobian included) against central differences
      // of the kernel, away from the mode.
      Eigen::VectorXd theta = model->SearchStart();
      theta(1) += 0.2;
      theta(theta.size() - 1) -= 0.3;
      Eigen::VectorXd gradient, numericGradient;
      Eigen::MatrixXd hessian, numericHessian;
      const double kernel = model->Derivatives(theta, gradient, hessian);
      EXPECT_NEAR(model->IndependenceTarget::Derivatives(theta, numericGradient, numericHessian), kernel,
                  1e-9 * std::fabs(kernel))
          << which;
      EXPECT_LT((numericGradient - gradient).norm(), 1e-4 * gradient.norm()) << which;
      EXPECT_LT((numericHessian - hessian).norm(), 1e-4 * hessian.norm()) << which;
    }
  }
}

// Two categories with a constant leave no free cut-point: the ordered probit is then the binary
// probit, which its own sampler (augmentation, a different algorithm) estimates.
TEST(OrderedChoice, TwoCategoriesAreTheProbit) {
  const Sample s = Simulate(800, Eigen::Vector3d(0.3, 0.8, -0.5), Eigen::VectorXd::Zero(1), true, false, 4);
  OrderedProbit ordered(Gibbs(3000, 200, 1));
  ASSERT_TRUE(ordered.Sample(s.y, 2, s.X, 0, Prior(3, 0.1), CutPointPrior{}, EventDispatcher(), nullptr));
  Probit probit(Gibbs(3000, 200, 1));
  ASSERT_TRUE(probit.Sample(s.y.cast<double>(), s.X, Prior(3, 0.1), EventDispatcher(), nullptr));
  const Eigen::MatrixXd a = Pooled(ordered), b = Pooled(probit);
  ASSERT_EQ(a.cols(), 3);
  const Eigen::RowVectorXd sd = mlik::Covariance(b).diagonal().cwiseSqrt().transpose();
  for (Eigen::Index j = 0; j < 3; ++j) {
    // A tenth of a posterior sd is several Monte Carlo errors of either mean.
    EXPECT_NEAR(a.col(j).mean(), b.col(j).mean(), 0.1 * sd(j)) << j;
    EXPECT_NEAR(std::sqrt(mlik::Covariance(a)(j, j)), sd(j), 0.08 * sd(j)) << j;
  }
  EXPECT_NEAR(ordered.logML_CJ, probit.logML_CJ, 0.1);
}

// Three categories and two parameters whose posterior is a 2-D integral over counts: the mean of
// each and the marginal likelihood by the midpoint rule. The ordered probit with a constant (the
// intercept b and cut2 > 0, whose prior N(0.5, 1) is restricted to positive values) and the ordered
// logit with a regressor that is always 0 (its coefficient's posterior is its prior, which
// integrates to 1) and both cut-points free (prior N(0.2, 2) each, in increasing order).
TEST(OrderedChoice, TwoParameterModelsAgreeWithQuadrature) {
  for (bool logistic : {false, true}) {
    RandomEngine rng;
    rng.Seed(logistic ? 31 : 32);
    const int n = 300;
    Sample s;
    s.X = logistic ? Eigen::MatrixXd::Zero(n, 1) : Eigen::MatrixXd::Ones(n, 1);
    s.y.resize(n);
    Eigen::Vector3d counts = Eigen::Vector3d::Zero();
    // Intercept 0.3 and cut2 = 1 (probit); cut-points -0.5 and 0.7 (logit).
    for (int i = 0; i < n; ++i) {
      const double latent = (logistic ? 0.0 : 0.3) + Error(rng, logistic);
      const double c1 = logistic ? -0.5 : 0.0, c2 = logistic ? 0.7 : 1.0;
      s.y(i) = latent > c2 ? 2 : latent > c1 ? 1 : 0;
      counts(s.y(i)) += 1.0;
    }
    const CutPointPrior cutPrior = logistic ? CutPointPrior{0.2, 0.5} : CutPointPrior{0.5, 1.0};
    const double bPrecision = logistic ? 1.0 : 0.5;
    auto F = [&](double x) { return logistic ? LogisticCdf(x) : NormalCdf(x); };
    auto normal = [](double x, double mean, double precision) {
      return 0.5 * std::log(precision / (2.0 * M_PI)) - 0.5 * precision * (x - mean) * (x - mean);
    };
    // Grid over (b, cut2) for the probit and (cut1, cut2) for the logit, 10 sd each way.
    const int steps = 500;
    const double lo1 = logistic ? -1.5 : -0.7, hi1 = logistic ? 0.5 : 1.3;
    const double lo2 = logistic ? 0.0 : 0.3, hi2 = logistic ? 1.6 : 1.9;
    const double h1 = (hi1 - lo1) / steps, h2 = (hi2 - lo2) / steps;
    Eigen::MatrixXd logKernel(steps, steps);
    for (int a = 0; a < steps; ++a) {
      for (int c = 0; c < steps; ++c) {
        const double p1 = lo1 + (a + 0.5) * h1, p2 = lo2 + (c + 0.5) * h2;
        double value;
        if (logistic) {
          // c1 = p1 < c2 = p2, prior density 2! N N on that region.
          value = p1 < p2 ? counts(0) * std::log(F(p1)) + counts(1) * std::log(F(p2) - F(p1)) +
                                counts(2) * std::log(1.0 - F(p2)) + std::log(2.0) + normal(p1, 0.2, 0.5) +
                                normal(p2, 0.2, 0.5)
                          : -INFINITY;
        } else {
          // P(y = 0) = F(0 - b), P(1) = F(c2 - b) - F(-b), P(2) = 1 - F(c2 - b); c2 > 0 with
          // prior N(0.5, 1) / Phi(0.5).
          value = counts(0) * std::log(F(-p1)) + counts(1) * std::log(F(p2 - p1) - F(-p1)) +
                  counts(2) * std::log(1.0 - F(p2 - p1)) + normal(p1, 0.0, bPrecision) + normal(p2, 0.5, 1.0) -
                  std::log(NormalCdf(0.5));
        }
        logKernel(a, c) = value;
      }
    }
    const double top = logKernel.maxCoeff();
    const Eigen::ArrayXXd w = (logKernel.array() - top).exp();
    const double mass = w.sum() * h1 * h2;
    const Eigen::ArrayXd grid1 = Eigen::ArrayXd::LinSpaced(steps, lo1 + 0.5 * h1, hi1 - 0.5 * h1);
    const Eigen::ArrayXd grid2 = Eigen::ArrayXd::LinSpaced(steps, lo2 + 0.5 * h2, hi2 - 0.5 * h2);
    const double mean1 = (w.rowwise().sum() * grid1).sum() / w.sum();
    const double mean2 = (w.colwise().sum().transpose() * grid2).sum() / w.sum();
    const double sd1 = std::sqrt((w.rowwise().sum() * (grid1 - mean1).square()).sum() / w.sum());
    const double sd2 = std::sqrt((w.colwise().sum().transpose() * (grid2 - mean2).square()).sum() / w.sum());
    const double logML = top + std::log(mass);

    std::unique_ptr<OrderedChoice> model;
    if (logistic) {
      model = std::make_unique<OrderedLogit>(Gibbs(5000, 200, 1));
    } else {
      model = std::make_unique<OrderedProbit>(Gibbs(5000, 200, 1));
    }
    const char* which = logistic ? "ologit" : "oprobit";
    ASSERT_TRUE(model->Sample(s.y, 3, s.X, logistic ? -1 : 0, Prior(1, bPrecision), cutPrior, EventDispatcher(), nullptr))
        << which;
    const Eigen::MatrixXd draws = Pooled(*model);
    // Columns: b, then the free cut-points (cut2 for the probit; cut1 and cut2 for the logit).
    const Eigen::VectorXd first = logistic ? draws.col(1) : draws.col(0);
    const Eigen::VectorXd second = logistic ? draws.col(2) : draws.col(1);
    EXPECT_NEAR(first.mean(), mean1, 0.08 * sd1) << which;
    EXPECT_NEAR(second.mean(), mean2, 0.08 * sd2) << which;
    EXPECT_NEAR(model->logML_CJ, logML, 0.05) << which;
    EXPECT_NEAR(model->logML, logML, 0.1) << which;
  }
}

// The link of the ordered models over given draws: the categories' probabilities add up to 1 for
// every draw, their marginal effects to 0, and an effect is the derivative of its probability.
TEST(OrderedChoice, CategoryProbabilitiesAndEffects) {
  RandomEngine rng;
  rng.Seed(8);
  for (bool firstFixed : {true, false}) {
    // 50 draws of b = (constant, x) or b = (x), then the free cut-points of four categories.
    const Eigen::Index k = firstFixed ? 2 : 1, q = firstFixed ? 2 : 3;
    Eigen::MatrixXd draws(50, k + q);
    for (Eigen::Index d = 0; d < draws.rows(); ++d) {
      for (Eigen::Index j = 0; j < k; ++j) draws(d, j) = 0.5 + 0.2 * rng.Normal();
      double c = firstFixed ? 0.0 : -1.0;
      for (Eigen::Index j = 0; j < q; ++j) draws(d, k + j) = c += 0.5 + rng.Uniform();
    }
    MIM_OrderedProbit model;
    std::vector<std::string> labels = firstFixed ? std::vector<std::string>{"y$constant", "y$x", "cut2", "cut3"}
                                                 : std::vector<std::string>{"y$x", "cut1", "cut2", "cut3"};
    model.SetDraws({draws}, labels);
    model.Description().keyword = "oprobit";
    model.Description().dependent = "y";
    model.Description().regressors =
        firstFixed ? std::vector<std::string>{"constant", "x"} : std::vector<std::string>{"x"};
    model.AddResult("categories", Eigen::Vector4d(1, 2, 3, 4));
    EXPECT_TRUE(model.LayoutHolds());

    const EventDispatcher out;
    const ActionContext context{out, nullptr, "m", nullptr};
    const double x = 0.7, h = 1e-5;
    Eigen::MatrixXd points(3, k);
    points.col(k - 1) << x, x + h, x - h;
    if (firstFixed) points.col(0).setOnes();
    ActionOptions options;
    options.point = ActionOptions::Point::Given;
    options.pointValues = points;
    ActionOptions effectOptions = options;
    effectOptions.pointValues = points.row(0).transpose();
    Eigen::VectorXd probabilitySum = Eigen::VectorXd::Zero(3);
    Eigen::VectorXd effectSum = Eigen::VectorXd::Zero(draws.rows());
    for (int type = 1; type <= 4; ++type) {
      options.type = effectOptions.type = type;
      RowSummaries predictions;
      ActionData data;
      bool interrupted = false;
      ASSERT_EQ(model.ComputePredictions(options, context, predictions, data, interrupted), "OK");
      probabilitySum += predictions.mean;
      MarginalEffects effects;
      ASSERT_EQ(model.ComputeMarginalEffects(effectOptions, context, effects, interrupted), "OK");
      ASSERT_EQ(effects.names.back(), "x");
      effectSum += effects.draws.col(effects.draws.cols() - 1);
      EXPECT_NEAR(effects.draws.col(effects.draws.cols() - 1).mean(), (predictions.mean(1) - predictions.mean(2)) / (2 * h),
                  1e-6)
          << "type " << type;
      if (type == 1) {
        // Prob(y = 1|x) = Phi(c_1 - x'b), averaged over the draws.
        double direct = 0.0;
        for (Eigen::Index d = 0; d < draws.rows(); ++d) {
          const double index = draws.row(d).head(k).dot(points.row(0));
          direct += NormalCdf((firstFixed ? 0.0 : draws(d, k)) - index) / static_cast<double>(draws.rows());
        }
        EXPECT_NEAR(predictions.mean(0), direct, 1e-12);
      }
    }
    EXPECT_LT((probabilitySum.array() - 1.0).abs().maxCoeff(), 1e-12);
    EXPECT_LT(effectSum.cwiseAbs().maxCoeff(), 1e-12);

    // A model read back with its cut-points mislabelled is refused before its link reads them.
    labels.back() = "cut4";
    model.SetDraws({draws}, labels);
    EXPECT_FALSE(model.LayoutHolds());
  }
}
