// The random-intercept probit and logit: the integrated likelihood against brute-force
// integration, the logit sampler's group sums and Newton proposal, recovery of simulated parameters, and the posterior and both marginal likelihoods
// of an intercept-only model against two-dimensional quadrature.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "BinaryRandomEffects.h"
#include "EventDispatcher.h"
#include "LogisticGroupTerms.h"
#include "MarginalLikelihood.h"
#include "NewtonProposal.h"
#include "PooledDraws.h"
#include "RandomEngine.h"
#include "RandomIntercepts.h"

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

struct Panel {
  Eigen::VectorXd y;
  Eigen::MatrixXd X;
  std::vector<int> groups;
};

// G groups of T: y = 1(x'b + a_g + e > 0), a_g ~ N(0, variance), e Normal or logistic.
Panel Simulate(int G, int T, const Eigen::VectorXd& b, double variance, BinaryLink link, std::uint64_t seed) {
  RandomEngine rng;
  rng.Seed(seed);
  Panel p;
  p.X.resize(G * T, b.size());
  p.y.resize(G * T);
  for (int g = 0; g < G; ++g) {
    const double a = std::sqrt(variance) * rng.Normal();
    for (int t = 0; t < T; ++t) {
      const int i = g * T + t;
      p.X(i, 0) = 1.0;
      for (Eigen::Index j = 1; j < b.size(); ++j) p.X(i, j) = rng.Normal();
      const double u = rng.Uniform();
      const double e = link == BinaryLink::Probit ? rng.Normal() : std::log(u / (1.0 - u));
      p.y(i) = p.X.row(i).dot(b) + a + e > 0.0 ? 1.0 : 0.0;
      p.groups.push_back(g);
    }
  }
  return p;
}

double LogF(BinaryLink link, double u) {
  return link == BinaryLink::Probit ? std::log(0.5 * std::erfc(-u / std::sqrt(2.0))) : -std::log1p(std::exp(-u));
}

}  // namespace

TEST(BinaryRandomEffects, IntegratedLikelihoodMatchesBruteForce) {
  // Groups of 1, 3 and 60 observations (the last all ones: a skewed integrand far from zero).
  Eigen::VectorXd y(64), index(64);
  std::vector<int> groups;
  RandomEngine rng;
  rng.Seed(2);
  for (int i = 0; i < 64; ++i) {
    const int g = i == 0 ? 0 : (i < 4 ? 1 : 2);
    groups.push_back(g);
    y(i) = g == 2 ? 1.0 : (rng.Uniform() < 0.5 ? 1.0 : 0.0);
    index(i) = 0.3 * rng.Normal();
  }
  const PanelGroups panel = PanelGroups::FromCodes(groups);
  for (BinaryLink link : {BinaryLink::Probit, BinaryLink::Logit}) {
    for (double omega : {0.25, 1.0, 40.0}) {
      double expected = 0.0;
      for (int g = 0; g < 3; ++g) {
        // Trapezoid over a wide fine grid, in logs.
        const double sd = 1.0 / std::sqrt(omega), lo = -12.0 * sd - 10.0, hi = 12.0 * sd + 10.0;
        const int steps = 40000;
        const double h = (hi - lo) / steps;
        std::vector<double> logs;
        for (int s = 0; s <= steps; ++s) {
          const double a = lo + s * h;
          double v = 0.5 * std::log(omega / (2.0 * M_PI)) - 0.5 * omega * a * a;
          for (int i = 0; i < 64; ++i) {
            if (groups[static_cast<std::size_t>(i)] == g) v += LogF(link, (y(i) > 0.5 ? 1.0 : -1.0) * (index(i) + a));
          }
          logs.push_back(v + std::log(s == 0 || s == steps ? 0.5 * h : h));
        }
        const double top = *std::max_element(logs.begin(), logs.end());
        double sum = 0.0;
        for (double v : logs) sum += std::exp(v - top);
        expected += top + std::log(sum);
      }
      EXPECT_NEAR(IntegratedBinaryLogLikelihood(y, index, panel, omega, link), expected, 1e-5)
          << (link == BinaryLink::Probit ? "probit" : "logit") << ", omega " << omega;
    }
  }
}

// The weighted draw with unit weights is the unweighted one, draw for draw, and so is its ordinate.
TEST(BinaryRandomEffects, WeightedStepWithUnitWeightsIsTheUnitStep) {
  RandomEngine rng;
  rng.Seed(1);
  const int n = 15;
  Eigen::MatrixXd X(n, 2);
  Eigen::VectorXd z(n);
  std::vector<int> groups;
  for (int i = 0; i < n; ++i) {
    X.row(i) << 1.0, rng.Normal();
    z(i) = rng.Normal();
    groups.push_back(i % 4 == 0 ? 0 : 1 + i % 3);  // sizes 4, 4, 4, 3
  }
  const PanelGroups panel = PanelGroups::FromCodes(groups);
  const LinearPrior prior = Prior(2, 1.0);
  RandomInterceptStep unit(X, panel, prior), weighted(X, panel, prior);
  Eigen::VectorXd b1(2), b2(2), a1(4), a2(4);
  RandomEngine r1, r2;
  r1.Seed(5);
  r2.Seed(5);
  unit.Draw(z, 0.7, r1, b1, a1);
  weighted.DrawWeighted(z, Eigen::VectorXd::Ones(n), 0.7, r2, b2, a2);
  EXPECT_LT((b1 - b2).cwiseAbs().maxCoeff(), 1e-12);
  EXPECT_LT((a1 - a2).cwiseAbs().maxCoeff(), 1e-12);
  EXPECT_NEAR(unit.LogOrdinate(b1), weighted.LogOrdinate(b1), 1e-10);
}

TEST(BinaryRandomEffects, RecoverSimulatedParameters) {
  Eigen::VectorXd truth(3);
  truth << -0.3, 0.8, -0.5;
  const double variance = 0.6;
  for (BinaryLink link : {BinaryLink::Probit, BinaryLink::Logit}) {
    const Panel p = Simulate(150, 8, truth, variance, link, link == BinaryLink::Probit ? 11 : 12);
    BinaryRandomEffects model(Gibbs(1200, 300, 1), link);
    ASSERT_TRUE(model.Sample(p.y, p.X, p.groups, Prior(3, 1e-3), 0.001, 0.001, false, EventDispatcher(), nullptr));
    const Eigen::MatrixXd draws = Pooled(model);
    ASSERT_EQ(draws.cols(), 4);
    const Eigen::RowVectorXd mean = draws.colwise().mean();
    const Eigen::MatrixXd cov = mlik::Covariance(draws);
    for (Eigen::Index j = 0; j < 3; ++j) EXPECT_NEAR(mean(j), truth(j), 4.0 * std::sqrt(cov(j, j))) << j;
    EXPECT_NEAR(mean(3), variance, 4.0 * std::sqrt(cov(3, 3)));
    // The posterior means of the effects follow the groups' shares of ones.
    ASSERT_EQ(model.effects.size(), 150);
    Eigen::VectorXd share = Eigen::VectorXd::Zero(150);
    for (Eigen::Index i = 0; i < p.y.size(); ++i) share(p.groups[static_cast<std::size_t>(i)]) += p.y(i) / 8.0;
    const double correlation = ((share.array() - share.mean()) * (model.effects.array() - model.effects.mean())).sum() /
                               std::sqrt((share.array() - share.mean()).square().sum() *
                                         (model.effects.array() - model.effects.mean()).square().sum());
    EXPECT_GT(correlation, 0.7);
  }
}

// An intercept and the effects' precision: the posterior follows by quadrature over (b, log omega),
// with the likelihood's own integral over each effect.
TEST(BinaryRandomEffects, InterceptModelAgreesWithQuadrature) {
  Eigen::VectorXd truth(1);
  truth << 0.3;
  const double priorPrecision = 1.0, aRe = 2.0, bRe = 1.0;
  for (BinaryLink link : {BinaryLink::Probit, BinaryLink::Logit}) {
    const Panel p = Simulate(12, 5, truth, 0.8, link, 31);
    const PanelGroups panel = PanelGroups::FromCodes(p.groups);
    const int steps = 60;
    const double bLo = -2.5, bHi = 3.0, uLo = -5.0, uHi = 4.0;
    const double hb = (bHi - bLo) / steps, hu = (uHi - uLo) / steps;
    Eigen::MatrixXd logs(steps + 1, steps + 1);
    for (int i = 0; i <= steps; ++i) {
      const double b = bLo + i * hb;
      const Eigen::VectorXd index = Eigen::VectorXd::Constant(p.y.size(), b);
      for (int j = 0; j <= steps; ++j) {
        const double u = uLo + j * hu, omega = std::exp(u);
        logs(i, j) = IntegratedBinaryLogLikelihood(p.y, index, panel, omega, link) + 0.5 * std::log(priorPrecision / (2.0 * M_PI)) -
                     0.5 * priorPrecision * b * b + mlik::LogGammaDensity(omega, aRe, bRe) + u;
      }
    }
    const double top = logs.maxCoeff();
    const Eigen::ArrayXXd w = (logs.array() - top).exp();
    const double mass = w.sum() * hb * hu;
    double meanB = 0.0, meanVar = 0.0, squareB = 0.0;
    for (int i = 0; i <= steps; ++i) {
      for (int j = 0; j <= steps; ++j) {
        const double b = bLo + i * hb, variance = std::exp(-(uLo + j * hu));
        meanB += w(i, j) * b;
        squareB += w(i, j) * b * b;
        meanVar += w(i, j) * variance;
      }
    }
    meanB *= hb * hu / mass;
    meanVar *= hb * hu / mass;
    const double sdB = std::sqrt(squareB * hb * hu / mass - meanB * meanB);
    const double logML = top + std::log(mass);

    BinaryRandomEffects model(Gibbs(3000, 300, 2), link);
    ASSERT_TRUE(model.Sample(p.y, p.X, p.groups, Prior(1, priorPrecision), aRe, bRe, true, EventDispatcher(), nullptr));
    const Eigen::MatrixXd draws = Pooled(model);
    const char* name = link == BinaryLink::Probit ? "probit" : "logit";
    EXPECT_NEAR(draws.col(0).mean(), meanB, 0.1 * sdB) << name;
    EXPECT_NEAR(draws.col(1).mean(), meanVar, 0.05 * meanVar) << name;
    EXPECT_NEAR(model.logML_CJ, logML, 0.1) << name;
    EXPECT_NEAR(model.logML, logML, 0.2) << name;
  }
}

// Group sums over blocks of 1,024 against a direct sum per group, with groups of 1 to 40
// observations that block boundaries cut (one group spans a whole block).
TEST(BinaryRandomEffects, LogisticGroupSumsAcrossBlocks) {
  RandomEngine rng;
  rng.Seed(3);
  std::vector<Eigen::Index> start{0};
  auto fill = [&](Eigen::Index to) {
    while (start.back() + 40 < to) start.push_back(start.back() + 1 + static_cast<Eigen::Index>(rng.Uniform() * 40.0));
    start.push_back(to);
  };
  fill(2040);
  start.push_back(3100);  // a group over the whole of block 2, [2048, 3072)
  fill(5000);
  const Eigen::Index n = 5000, G = static_cast<Eigen::Index>(start.size()) - 1;
  Eigen::VectorXd y(n), eta(n), effects(G), residual(n);
  for (Eigen::Index i = 0; i < n; ++i) {
    y(i) = rng.Uniform() < 0.4 ? 1.0 : 0.0;
    eta(i) = 3.0 * rng.Normal();
  }
  LogisticGroupTerms terms(y, start, 5);
  LogisticGroupTerms::Sums sums(G);
  // Twice, so that what the first evaluation left behind must not count in the second.
  for (int round = 0; round < 2; ++round) {
    for (Eigen::Index g = 0; g < G; ++g) effects(g) = 40.0 * rng.Normal();  // far into both tails too
    for (Eigen::Index block = 4; block >= 0; --block) {  // in any order
      terms.Evaluate(block, 1024 * block, std::min<Eigen::Index>(n, 1024 * (block + 1)), eta, effects, residual, sums);
    }
    terms.JoinCutGroups(sums);
  }
  for (Eigen::Index g = 0; g < G; ++g) {
    double logLikelihood = 0.0, gradient = 0.0, curvature = 0.0;
    for (Eigen::Index i = start[static_cast<std::size_t>(g)]; i < start[static_cast<std::size_t>(g) + 1]; ++i) {
      const double t = eta(i) + effects(g);
      const double p = 1.0 / (1.0 + std::exp(-t));
      logLikelihood += y(i) > 0.5 ? -std::log1p(std::exp(-t)) : -std::log1p(std::exp(t));
      gradient += y(i) - p;
      curvature += p * (1.0 - p);
      ASSERT_NEAR(residual(i), y(i) - p, 1e-12);
    }
    ASSERT_NEAR(sums.logLikelihood(g), logLikelihood, 1e-9 * (1.0 + std::fabs(logLikelihood))) << g;
    ASSERT_NEAR(sums.gradient(g), gradient, 1e-9) << g;
    ASSERT_NEAR(sums.curvature(g), curvature, 1e-9) << g;
  }
}

// On a Normal target whose precision is the proposal's curvature, the Newton proposal is an exact
// draw: the Metropolis-Hastings log ratio is zero from any point.
TEST(BinaryRandomEffects, NewtonProposalIsExactOnNormalTargets) {
  Eigen::MatrixXd H(3, 3);
  H << 4.0, 1.0, 0.5, 1.0, 3.0, -0.7, 0.5, -0.7, 2.0;
  Eigen::VectorXd mode(3);
  mode << 1.0, -2.0, 0.5;
  auto logTarget = [&](const Eigen::VectorXd& b) { return -0.5 * (b - mode).dot(H * (b - mode)); };
  auto gradient = [&](const Eigen::VectorXd& b) -> Eigen::VectorXd { return -H * (b - mode); };
  NewtonProposal proposal;
  ASSERT_TRUE(proposal.SetCurvature(H));
  EXPECT_FALSE(proposal.SetCurvature(-H));
  RandomEngine rng;
  rng.Seed(9);
  Eigen::VectorXd b(3), mean(3), trial(3), reverse(3);
  b << 10.0, 5.0, -7.0;
  for (int r = 0; r < 20; ++r) {
    proposal.Mean(b, gradient(b), mean);
    EXPECT_LT((mean - mode).norm(), 1e-12);
    proposal.Draw(mean, rng, trial);
    proposal.Mean(trial, gradient(trial), reverse);
    const double logRatio = logTarget(trial) - logTarget(b) + proposal.LogDensity(b, reverse) -
                            proposal.LogDensity(trial, mean);
    EXPECT_NEAR(logRatio, 0.0, 1e-9);
    b = trial;
  }
}
