// Stochastic frontiers: the composed error's densities against each other and against their
// normalisation, recovery of simulated parameters and efficiency scores for every distribution,
// production and cost frontiers, and the marginal likelihoods' choice of the true distribution.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "CompositeError.h"
#include "EventDispatcher.h"
#include "MarginalLikelihood.h"
#include "PooledDraws.h"
#include "RandomIntercepts.h"
#include "RandomEngine.h"
#include "SF_EXP.h"
#include "SF_GAMMA.h"
#include "SF_HNORM.h"
#include "SF_IE_EXP.h"
#include "SF_LNORM.h"
#include "SF_TNORM.h"
#include "Gamma.h"
#include "TruncatedNormal.h"

namespace {

Eigen::VectorXd Gibbs(long draws, long burnin, long chains = 1) {
  Eigen::VectorXd g(5);
  g << static_cast<double>(draws), static_cast<double>(burnin), static_cast<double>(chains), 1, 42;
  return g;
}

StochasticFrontier::Priors Priors(Eigen::Index k) {
  StochasticFrontier::Priors p;
  p.coefficients = LinearPrior::Combine(Eigen::VectorXd::Zero(k), Eigen::MatrixXd::Identity(k, k) * 1e-3,
                                        Eigen::MatrixXd(0, k), Eigen::VectorXd(0), Eigen::MatrixXd(0, 0));
  return p;
}

InefficiencyPrior VaguePrior(Eigen::Index p = 1) {
  InefficiencyPrior prior;
  prior.scaleShape = 1.0;
  prior.scaleRate = 0.1;
  prior.locationMean = Eigen::VectorXd::Zero(p);
  prior.locationPrecision = Eigen::MatrixXd::Identity(p, p);
  return prior;
}

struct Sample {
  Eigen::VectorXd y, u;
  Eigen::MatrixXd X, Z;
};

// y = X b + v - s u, X = [1, x1, x2], v ~ N(0, sv^2), u from `drawU(rng, i)`.
Sample Simulate(int n, const Eigen::VectorXd& b, double sv, bool cost, std::uint64_t seed,
                const std::function<double(RandomEngine&, const Sample&, int)>& drawU) {
  RandomEngine rng;
  rng.Seed(seed);
  Sample s;
  s.X.resize(n, b.size());
  s.Z.resize(n, 2);
  s.y.resize(n);
  s.u.resize(n);
  for (int i = 0; i < n; ++i) {
    s.X(i, 0) = 1.0;
    for (Eigen::Index j = 1; j < b.size(); ++j) s.X(i, j) = rng.Normal();
    s.Z(i, 0) = 1.0;
    s.Z(i, 1) = rng.Normal();
  }
  for (int i = 0; i < n; ++i) {
    s.u(i) = drawU(rng, s, i);
    s.y(i) = s.X.row(i).dot(b) + sv * rng.Normal() + (cost ? s.u(i) : -s.u(i));
  }
  return s;
}

// Posterior means within `sds` posterior standard deviations of the truth (NaN: not checked).
void ExpectRecovered(const Estimator& estimator, const Eigen::VectorXd& truth, double sds = 4.0) {
  const Eigen::MatrixXd draws = Pooled(estimator);
  ASSERT_EQ(draws.cols(), truth.size());
  const Eigen::RowVectorXd mean = draws.colwise().mean();
  const Eigen::MatrixXd cov = mlik::Covariance(draws);
  for (Eigen::Index j = 0; j < truth.size(); ++j) {
    if (!std::isnan(truth(j))) {
      EXPECT_NEAR(mean(j), truth(j), sds * std::sqrt(cov(j, j))) << "parameter " << j;
    }
  }
}

double Correlation(const Eigen::VectorXd& a, const Eigen::VectorXd& b) {
  const Eigen::ArrayXd x = a.array() - a.mean(), y = b.array() - b.mean();
  return (x * y).sum() / std::sqrt((x * x).sum() * (y * y).sum());
}

// The integrals of a density f and of w f(w) over [-6, 10], by Simpson's rule (fine enough for
// densities of spread above 0.2).
std::pair<double, double> MassAndMean(const std::function<double(double)>& f) {
  const int intervals = 800;
  const double a = -6.0, h = 16.0 / intervals;
  double mass = 0.0, mean = 0.0;
  for (int j = 0; j <= intervals; ++j) {
    const double w = a + h * j, weight = (j == 0 || j == intervals) ? 1.0 : (j % 2 == 1 ? 4.0 : 2.0);
    const double value = f(w);
    mass += weight * value;
    mean += weight * w * value;
  }
  return {mass * h / 3.0, mean * h / 3.0};
}

const Eigen::VectorXd kB = (Eigen::VectorXd(3) << 1.0, 0.5, -0.3).finished();

}  // namespace

TEST(CompositeError, DensitiesIntegrateToOneAndAgreeWhereTheyCoincide) {
  using D = InefficiencyDistribution;
  const double sigma = 0.3;
  struct Case { D d; double p1, p2; };
  for (const Case& c : {Case{D::HalfNormal, 4.0, 0}, Case{D::TruncatedNormal, 0.3, 9.0}, Case{D::TruncatedNormal, -0.4, 4.0},
                        Case{D::Exponential, 3.0, 0}, Case{D::Gamma, 2.5, 6.0}, Case{D::Gamma, 0.6, 2.0},
                        Case{D::LogNormal, -1.5, 2.0}}) {
    SCOPED_TRACE(testing::Message() << static_cast<int>(c.d) << " " << c.p1 << " " << c.p2);
    const auto [mass, mean] = MassAndMean([&](double w) { return std::exp(LogCompositeDensity(c.d, w, sigma, c.p1, c.p2)); });
    EXPECT_NEAR(mass, 1.0, 1e-5);
    // The mean of w is E(u).
    EXPECT_NEAR(mean, MeanInefficiency(c.d, c.p1, c.p2), 1e-5);
  }
  // The gamma of shape 1 is the exponential: the quadrature against the closed form, tails included.
  for (double w : {-3.0, -0.5, 0.0, 0.2, 1.0, 4.0}) {
    EXPECT_NEAR(LogCompositeDensity(D::Gamma, w, 0.2, 1.0, 3.0), LogCompositeDensity(D::Exponential, w, 0.2, 3.0, 0), 1e-7)
        << w;
  }
}

TEST(CompositeError, MeanEfficiencyMatchesMonteCarlo) {
  using D = InefficiencyDistribution;
  RandomEngine rng;
  rng.Seed(3);
  const int n = 200000;
  struct Case { D d; double p1, p2; std::function<double()> draw; };
  const Case cases[] = {
      {D::HalfNormal, 4.0, 0, [&] { return std::fabs(rng.Normal()) / 2.0; }},
      {D::TruncatedNormal, 0.3, 9.0, [&] { return dist::TruncatedNormalDraw(rng, 0.3, 1.0 / 3.0, 0.0, INFINITY); }},
      {D::Exponential, 3.0, 0, [&] { return -std::log1p(-rng.Uniform()) / 3.0; }},
      {D::Gamma, 2.5, 6.0, [&] { return dist::GammaDraw(rng, 2.5, 6.0); }},
      {D::LogNormal, -1.5, 2.0, [&] { return std::exp(-1.5 + rng.Normal() / std::sqrt(2.0)); }},
  };
  for (const Case& c : cases) {
    double sum = 0.0;
    for (int i = 0; i < n; ++i) sum += std::exp(-c.draw());
    EXPECT_NEAR(sum / n, MeanEfficiency(c.d, c.p1, c.p2), 2e-3) << static_cast<int>(c.d);
  }
}

// Each distribution's own data: the parameters and efficiency scores recovered, and the
// marginal likelihood higher for the true distribution than for the other.
TEST(StochasticFrontier, HalfNormalAndExponentialRecoverAndChooseTheTrueDistribution) {
  const Sample h = Simulate(2000, kB, 0.15, false, 11, [](RandomEngine& rng, const Sample&, int) {
    return std::fabs(rng.Normal()) * 0.4;
  });
  const Sample e = Simulate(2000, kB, 0.15, false, 12, [](RandomEngine& rng, const Sample&, int) {
    return -std::log1p(-rng.Uniform()) / 4.0;
  });
  SF_HNORM hnormOnH(Gibbs(2000, 1000), VaguePrior()), hnormOnE(Gibbs(2000, 1000), VaguePrior());
  SF_EXP expOnH(Gibbs(2000, 1000), VaguePrior()), expOnE(Gibbs(2000, 1000), VaguePrior());
  ASSERT_TRUE(hnormOnH.Sample(h.y, h.X, {}, false, Priors(3), false, EventDispatcher(), nullptr));
  ASSERT_TRUE(expOnH.Sample(h.y, h.X, {}, false, Priors(3), false, EventDispatcher(), nullptr));
  ASSERT_TRUE(hnormOnE.Sample(e.y, e.X, {}, false, Priors(3), false, EventDispatcher(), nullptr));
  ASSERT_TRUE(expOnE.Sample(e.y, e.X, {}, false, Priors(3), false, EventDispatcher(), nullptr));
  ExpectRecovered(hnormOnH, (Eigen::VectorXd(5) << kB, 1.0 / 0.0225, 1.0 / 0.16).finished());
  EXPECT_GT(Correlation(hnormOnH.efficiency, (-h.u).array().exp().matrix()), 0.8);
  ExpectRecovered(expOnE, (Eigen::VectorXd(5) << kB, 1.0 / 0.0225, 4.0).finished());
  EXPECT_GT(Correlation(expOnE.efficiency, (-e.u).array().exp().matrix()), 0.8);
  EXPECT_GT(Correlation(expOnE.inefficiency, e.u), 0.8);
  EXPECT_GT(hnormOnH.logML, expOnH.logML + 5.0);
  EXPECT_GT(expOnE.logML, hnormOnE.logML + 5.0);
}

// y = x'b + v + u: the same sampler with the sign of u turned.
TEST(StochasticFrontier, CostFrontierRecovered) {
  const Sample h = Simulate(2000, kB, 0.15, true, 13, [](RandomEngine& rng, const Sample&, int) {
    return std::fabs(rng.Normal()) * 0.4;
  });
  SF_HNORM model(Gibbs(2000, 1000), VaguePrior());
  ASSERT_TRUE(model.Sample(h.y, h.X, {}, true, Priors(3), false, EventDispatcher(), nullptr));
  ExpectRecovered(model, (Eigen::VectorXd(5) << kB, 1.0 / 0.0225, 1.0 / 0.16).finished());
  EXPECT_GT(Correlation(model.efficiency, (-h.u).array().exp().matrix()), 0.8);
  // Read as a production frontier, the same data fit far worse.
  SF_HNORM wrongSign(Gibbs(2000, 1000), VaguePrior());
  ASSERT_TRUE(wrongSign.Sample(h.y, h.X, {}, false, Priors(3), false, EventDispatcher(), nullptr));
  EXPECT_GT(model.logML, wrongSign.logML + 5.0);
}

// The distributions sampled by Metropolis-Hastings steps, with small noise: the truncated normal
// (mu_u, omega_u), the gamma (shape, rate) and the log-normal (mu_u, omega_u).
const double kSmallNoise = 0.1;

TEST(StochasticFrontier, TruncatedNormalRecovered) {
  const Sample s = Simulate(2000, kB, kSmallNoise, false, 21, [](RandomEngine& rng, const Sample&, int) {
    return dist::TruncatedNormalDraw(rng, 0.2, 0.3, 0.0, INFINITY);
  });
  SF_TNORM model(Gibbs(2000, 1000), VaguePrior());
  ASSERT_TRUE(model.Sample(s.y, s.X, {}, false, Priors(3), false, EventDispatcher(), nullptr));
  ExpectRecovered(model, (Eigen::VectorXd(6) << kB, 1.0 / (kSmallNoise * kSmallNoise), 0.2, 1.0 / 0.09).finished());
  EXPECT_GT(Correlation(model.efficiency, (-s.u).array().exp().matrix()), 0.8);
  EXPECT_GT(model.acceptance, 0.15);
}

TEST(StochasticFrontier, GammaRecoveredOnACostFrontier) {
  const Sample s = Simulate(2000, kB, kSmallNoise, true, 22, [](RandomEngine& rng, const Sample&, int) {
    return dist::GammaDraw(rng, 2.0, 6.0);
  });
  SF_GAMMA model(Gibbs(2000, 1000), VaguePrior());
  ASSERT_TRUE(model.Sample(s.y, s.X, {}, true, Priors(3), false, EventDispatcher(), nullptr));
  ExpectRecovered(model, (Eigen::VectorXd(6) << kB, 1.0 / (kSmallNoise * kSmallNoise), 2.0, 6.0).finished());
  EXPECT_GT(Correlation(model.efficiency, (-s.u).array().exp().matrix()), 0.8);
}

TEST(StochasticFrontier, LogNormalRecovered) {
  const Sample s = Simulate(2000, kB, kSmallNoise, false, 23, [](RandomEngine& rng, const Sample&, int) {
    return std::exp(-1.2 + 0.5 * rng.Normal());
  });
  InefficiencyPrior prior = VaguePrior();
  prior.locationMean(0) = -1.0;
  SF_LNORM model(Gibbs(2000, 1000), prior);
  ASSERT_TRUE(model.Sample(s.y, s.X, {}, false, Priors(3), false, EventDispatcher(), nullptr));
  ExpectRecovered(model, (Eigen::VectorXd(6) << kB, 1.0 / (kSmallNoise * kSmallNoise), -1.2, 4.0).finished());
  EXPECT_GT(Correlation(model.efficiency, (-s.u).array().exp().matrix()), 0.8);
}

// Determinants of inefficiency: the exponential's log mean and the truncated normal's location
// are z'd, z = [1, z1].
TEST(StochasticFrontier, DeterminantsOfInefficiencyRecovered) {
  const Eigen::Vector2d d(-1.5, 0.5);
  const Sample e = Simulate(2000, kB, kSmallNoise, false, 31, [&](RandomEngine& rng, const Sample& s, int i) {
    return -std::log1p(-rng.Uniform()) * std::exp(s.Z.row(i).dot(d));
  });
  SF_IE_EXP exponential(Gibbs(2000, 1000), VaguePrior(2), e.Z);
  ASSERT_TRUE(exponential.Sample(e.y, e.X, {}, false, Priors(3), false, EventDispatcher(), nullptr));
  ExpectRecovered(exponential, (Eigen::VectorXd(6) << kB, d, 1.0 / (kSmallNoise * kSmallNoise)).finished());
  EXPECT_GT(Correlation(exponential.efficiency, (-e.u).array().exp().matrix()), 0.8);

  const Eigen::Vector2d location(0.1, 0.2);
  const Sample t = Simulate(2000, kB, kSmallNoise, false, 32, [&](RandomEngine& rng, const Sample& s, int i) {
    return dist::TruncatedNormalDraw(rng, s.Z.row(i).dot(location), 0.25, 0.0, INFINITY);
  });
  SF_IE_TNORM truncated(Gibbs(2000, 1000), VaguePrior(2), t.Z);
  ASSERT_TRUE(truncated.Sample(t.y, t.X, {}, false, Priors(3), false, EventDispatcher(), nullptr));
  ExpectRecovered(truncated, (Eigen::VectorXd(7) << kB, location, 1.0 / (kSmallNoise * kSmallNoise), 16.0).finished());
  EXPECT_GT(Correlation(truncated.efficiency, (-t.u).array().exp().matrix()), 0.8);
}

// Firm effects kept apart from inefficiency: 200 firms of 10 periods, a_g ~ N(0, 0.3^2).
TEST(StochasticFrontier, FirmEffectsRecoveredAndIntegratedOut) {
  const int firms = 200, periods = 10;
  std::vector<int> groups;
  for (int g = 0; g < firms; ++g) groups.insert(groups.end(), periods, g);
  RandomEngine effectsRng;
  effectsRng.Seed(41);
  Eigen::VectorXd effects(firms);
  for (int g = 0; g < firms; ++g) effects(g) = 0.3 * effectsRng.Normal();
  const Eigen::VectorXd b = (Eigen::VectorXd(2) << 1.0, 0.5).finished();
  for (bool exponential : {false, true}) {
    SCOPED_TRACE(exponential ? "exp" : "hnorm");
    Sample s = Simulate(firms * periods, b, kSmallNoise, false, 42, [&](RandomEngine& rng, const Sample&, int) {
      return exponential ? -std::log1p(-rng.Uniform()) / 5.0 : 0.3 * std::fabs(rng.Normal());
    });
    for (int i = 0; i < firms * periods; ++i) s.y(i) += effects(groups[static_cast<std::size_t>(i)]);
    std::unique_ptr<StochasticFrontier> model;
    if (exponential) {
      model = std::make_unique<SF_RE_EXP>(Gibbs(1500, 1000), VaguePrior());
    } else {
      model = std::make_unique<SF_RE_HNORM>(Gibbs(1500, 1000), VaguePrior());
    }
    ASSERT_TRUE(model->Sample(s.y, s.X, groups, false, Priors(2), false, EventDispatcher(), nullptr));
    // The intercept absorbs the effects' sample mean.
    const double intercept = 1.0 + effects.mean();
    ExpectRecovered(*model, (Eigen::VectorXd(5) << intercept, 0.5, 100.0, 1.0 / 0.09, exponential ? 5.0 : 1.0 / 0.09).finished());
    EXPECT_GT(Correlation(model->efficiency, (-s.u).array().exp().matrix()), 0.8);
    EXPECT_TRUE(std::isfinite(model->logML));
    // With the effects' precision very large the integral over them is the model without them.
    const Eigen::VectorXd theta = Eigen::VectorXd::Constant(1, exponential ? 5.0 : 11.0);
    PanelGroups panel = PanelGroups::FromCodes(groups);
    EXPECT_NEAR(model->LogLikelihoodWithEffects(b, 100.0, 1e10, theta, panel), model->LogLikelihood(b, 100.0, theta), 1e-3);
  }
}

// Chib's estimate (three runs, u augmented) and Lewis & Raftery's (u integrated out in closed
// form) are independent routes to the same number.
TEST(StochasticFrontier, ChibAgreesWithLewisRaftery) {
  const Sample s = Simulate(600, kB, 0.15, false, 51, [](RandomEngine& rng, const Sample&, int) {
    return std::fabs(rng.Normal()) * 0.4;
  });
  SF_HNORM hnorm(Gibbs(2000, 500), VaguePrior());
  ASSERT_TRUE(hnorm.Sample(s.y, s.X, {}, false, Priors(3), true, EventDispatcher(), nullptr));
  EXPECT_NEAR(hnorm.logML_CJ, hnorm.logML, 0.5);
  SF_EXP exponential(Gibbs(2000, 500), VaguePrior());
  ASSERT_TRUE(exponential.Sample(s.y, s.X, {}, false, Priors(3), true, EventDispatcher(), nullptr));
  EXPECT_NEAR(exponential.logML_CJ, exponential.logML, 0.5);
}
