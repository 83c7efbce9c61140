// Posterior model probabilities against hand computation, and the diagnostics report's verdicts.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "CompareModels.h"
#include "EventDispatcher.h"
#include "ModelDiagnostics.h"
#include "RandomEngine.h"
#include "RecordingSink.h"

TEST(CompareModels, ProbabilitiesFromLogMarginalLikelihoods) {
  // Two models 2 apart in log-marginal likelihood under equal priors: 1 / (1 + e^-2) and the rest.
  Eigen::MatrixXd logML(2, 2);
  logML << -100.0, -1e5, -102.0, -1e5 + 3.0;
  const CompareModels equal({"a", "b"}, {"  Lewis & Raftery", "  Chib & Jeliazkov"}, logML, Eigen::Vector2d(0.5, 0.5));
  EXPECT_NEAR(equal.Probabilities()(0, 0), 1.0 / (1.0 + std::exp(-2.0)), 1e-15);
  EXPECT_NEAR(equal.Probabilities()(1, 0), 1.0 / (1.0 + std::exp(2.0)), 1e-15);
  // Log-marginal likelihoods of -1e5 do not underflow.
  EXPECT_NEAR(equal.Probabilities()(1, 1), 1.0 / (1.0 + std::exp(-3.0)), 1e-12);
  // Prior odds multiply the Bayes factor: 0.2 e^0 against 0.8 e^-2.
  const CompareModels weighted({"a", "b"}, {"  Lewis & Raftery"}, logML.leftCols(1), Eigen::Vector2d(0.2, 0.8));
  EXPECT_NEAR(weighted.Probabilities()(0, 0), 0.2 / (0.2 + 0.8 * std::exp(-2.0)), 1e-15);
  // A missing estimate leaves its method without probabilities.
  logML(1, 1) = NAN;
  const CompareModels missing({"a", "b"}, {"  Lewis & Raftery", "  Chib & Jeliazkov"}, logML, Eigen::Vector2d(0.5, 0.5));
  EXPECT_TRUE(std::isnan(missing.Probabilities()(0, 1)));
  EXPECT_FALSE(std::isnan(missing.Probabilities()(0, 0)));

  auto sink = std::make_shared<RecordingSink>();
  weighted.Print(EventDispatcher(sink));
  const std::string text = sink->Transcript();
  EXPECT_NE(text.find("  Lewis & Raftery\n"), std::string::npos) << text;
  EXPECT_NE(text.find("  a                 -100          0.2       0.6488"), std::string::npos) << text;
}

namespace {

Eigen::MatrixXd Chain(RandomEngine& rng, int n, double mean, double rho) {
  Eigen::MatrixXd chain(n, 2);
  double ar = 0.0;
  for (int i = 0; i < n; ++i) {
    ar = rho * ar + std::sqrt(1 - rho * rho) * rng.Normal();
    chain(i, 0) = mean + rng.Normal();
    chain(i, 1) = ar;
  }
  return chain;
}

}  // namespace

// The closing line names what fails: R-hat when the chains disagree, the effective sample size of
// a slow chain; a constant parameter prints dashes, never "nan".
TEST(ModelDiagnostics, ClosingLineNamesTheParametersThatFail) {
  RandomEngine rng;
  rng.Seed(9);
  const std::string good = FormatDiagnostics({Chain(rng, 2000, 0.0, 0.0), Chain(rng, 2000, 0.0, 0.0)}, {"a", "b"});
  EXPECT_NE(good.find("Every parameter has an effective sample size of at least 400 and an R-hat of at most 1.01."),
            std::string::npos)
      << good;
  const std::string bad = FormatDiagnostics({Chain(rng, 2000, 0.0, 0.99), Chain(rng, 2000, 1.0, 0.99)}, {"a", "b"});
  EXPECT_NE(bad.find("Check the convergence of: a (R-hat "), std::string::npos) << bad;
  const std::size_t b = bad.find(", b (");
  ASSERT_NE(b, std::string::npos) << bad;
  EXPECT_NE(bad.find("ESS ", b), std::string::npos) << bad;
  Eigen::MatrixXd constant = Chain(rng, 100, 0.0, 0.0);
  constant.col(1).setConstant(2.0);
  const std::string flat = FormatDiagnostics({constant}, {"a", "c"});
  EXPECT_EQ(flat.find("nan"), std::string::npos) << flat;
  EXPECT_NE(flat.find("(R-hat needs several chains)"), std::string::npos);
}
