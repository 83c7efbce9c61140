// Posterior model probabilities against hand computation and their table; the diagnostics report's
// figures, verdicts and layout, on known chains and on degenerate draws.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "CompareModels.h"
#include "EventDispatcher.h"
#include "McmcDiagnostics.h"
#include "ModelDiagnostics.h"
#include "RandomEngine.h"
#include "RecordingSink.h"

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::vector<std::string> Words(const std::string& line) {
  std::vector<std::string> words;
  std::istringstream in(line);
  for (std::string w; in >> w;) words.push_back(w);
  return words;
}

// A printed figure read back: "-" is NaN.
double Read(const std::string& word) { return word == "-" ? kNaN : std::stod(word); }

}  // namespace

TEST(CompareModels, ProbabilitiesFromLogMarginalLikelihoods) {
  // Two models 2 apart under equal priors: 1 / (1 + e^-2) and the rest.
  Eigen::MatrixXd logML(2, 2);
  logML << -100.0, -1e5, -102.0, -1e5 + 3.0;
  const CompareModels equal({"a", "b"}, {"  Lewis & Raftery", "  Chib & Jeliazkov"}, logML, Eigen::Vector2d(0.5, 0.5));
  EXPECT_NEAR(equal.Probabilities()(0, 0), 1.0 / (1.0 + std::exp(-2.0)), 1e-15);
  EXPECT_NEAR(equal.Probabilities()(1, 0), 1.0 / (1.0 + std::exp(2.0)), 1e-15);
  // Log-marginal likelihoods of -1e5, whose exponentials are 0 in doubles, still compare.
  EXPECT_NEAR(equal.Probabilities()(0, 1), 1.0 / (1.0 + std::exp(3.0)), 1e-12);
  EXPECT_NEAR(equal.Probabilities()(1, 1), 1.0 / (1.0 + std::exp(-3.0)), 1e-12);

  // Prior odds multiply the Bayes factor: 0.2 e^0 against 0.8 e^-2.
  const CompareModels weighted({"a", "b"}, {"  Lewis & Raftery"}, logML.leftCols(1), Eigen::Vector2d(0.2, 0.8));
  EXPECT_NEAR(weighted.Probabilities()(0, 0), 0.2 / (0.2 + 0.8 * std::exp(-2.0)), 1e-15);

  // Three models, unequal priors, one far behind: its probability is tiny but not lost.
  Eigen::MatrixXd three(3, 1);
  three << -750.0, -751.5, -800.0;
  const Eigen::Vector3d priors(0.5, 0.3, 0.2);
  const CompareModels several({"a", "b", "c"}, {"  Lewis & Raftery"}, three, priors);
  const double wa = 0.5, wb = 0.3 * std::exp(-1.5), wc = 0.2 * std::exp(-50.0);
  const Eigen::Vector3d expected = Eigen::Vector3d(wa, wb, wc) / (wa + wb + wc);
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(several.Probabilities()(i, 0) / expected(i), 1.0, 1e-12) << i;
  EXPECT_GT(several.Probabilities()(2, 0), 0.0);
  EXPECT_NEAR(several.Probabilities().sum(), 1.0, 1e-15);

  // A missing estimate leaves its method without probabilities, and only that method.
  logML(1, 1) = kNaN;
  const CompareModels missing({"a", "b"}, {"  Lewis & Raftery", "  Chib & Jeliazkov"}, logML, Eigen::Vector2d(0.5, 0.5));
  EXPECT_TRUE(missing.Probabilities().col(1).array().isNaN().all());
  EXPECT_TRUE(missing.Probabilities().col(0).allFinite());
}

// The table names each method as given, then one row per model whose figures read back as the
// log-marginal likelihood, the prior and the posterior probability; a missing value prints "-".
TEST(CompareModels, TablePerMethod) {
  Eigen::MatrixXd logML(2, 2);
  logML << -25.995, -26.243, -20.972, kNaN;
  const Eigen::Vector2d priors(0.2, 0.8);
  const CompareModels comparison({"m", "model_two"}, {"  Lewis & Raftery", "  Chib & Jeliazkov"}, logML, priors);
  auto sink = std::make_shared<RecordingSink>();
  comparison.Print(EventDispatcher(sink));
  const std::string text = sink->Transcript();
  EXPECT_EQ(text.find("nan"), std::string::npos) << text;

  const std::vector<std::string> lines = Lines(text);
  std::vector<std::size_t> methods;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (lines[i] == "  Lewis & Raftery" || lines[i] == "  Chib & Jeliazkov") methods.push_back(i);
  }
  ASSERT_EQ(methods.size(), 2u) << text;
  EXPECT_EQ(lines[methods[0]], "  Lewis & Raftery");
  for (std::size_t m = 0; m < 2; ++m) {
    const std::size_t at = methods[m];
    ASSERT_LT(at + 3, lines.size() + 1) << text;
    EXPECT_EQ(Words(lines[at + 1]), (std::vector<std::string>{"Model", "Log-ML", "Prior", "Posterior"}));
    for (std::size_t r = 0; r < 2; ++r) {
      const std::string& row = lines[at + 2 + r];
      // Columns line up with the header.
      EXPECT_EQ(row.size(), lines[at + 1].size()) << row;
      const std::vector<std::string> w = Words(row);
      ASSERT_EQ(w.size(), 4u) << row;
      EXPECT_EQ(w[0], r == 0 ? "m" : "model_two");
      const auto i = static_cast<Eigen::Index>(r);
      const auto j = static_cast<Eigen::Index>(m);
      if (std::isnan(logML(i, j))) {
        EXPECT_EQ(w[1], "-");
      } else {
        EXPECT_NEAR(Read(w[1]), logML(i, j), 1e-4 * std::fabs(logML(i, j)));
      }
      EXPECT_NEAR(Read(w[2]), priors(i), 1e-5);
      if (m == 1) {
        EXPECT_EQ(w[3], "-");
      } else {
        EXPECT_NEAR(Read(w[3]), comparison.Probabilities()(i, j), 1e-4 * comparison.Probabilities()(i, j));
      }
    }
  }
}

namespace {

// A chain of n draws: column 0 independent normal draws around `mean`, column 1 a stationary
// AR(1) series of unit variance with coefficient rho.
Eigen::MatrixXd Chain(RandomEngine& rng, int n, double mean, double rho) {
  Eigen::MatrixXd chain(n, 2);
  double ar = rng.Normal();
  for (int i = 0; i < n; ++i) {
    chain(i, 0) = mean + rng.Normal();
    chain(i, 1) = ar;
    ar = rho * ar + std::sqrt(1 - rho * rho) * rng.Normal();
  }
  return chain;
}

// The report's table read back: for each "label/chain" ("b/1", "b/all") the figures by heading.
using Table = std::map<std::string, std::map<std::string, double>>;

Table ReadTable(const std::string& report) {
  Table table;
  const std::vector<std::string> lines = Lines(report);
  std::vector<std::string> headings;
  std::string label;
  for (const std::string& line : lines) {
    const std::vector<std::string> w = Words(line);
    if (!w.empty() && w[0] == "Parameter") {
      headings.clear();
      for (std::size_t k = 2; k < w.size(); ++k) {
        if (w[k] == "z" && !headings.empty()) {
          headings.back() += " z";  // "Geweke z"
        } else {
          headings.push_back(w[k]);
        }
      }
      continue;
    }
    if (headings.empty() || w.empty() || line[0] == '(') continue;
    if (w.size() == headings.size() + 2) {
      label = w[0];
    } else if (w.size() != headings.size() + 1) {
      break;
    }
    const std::size_t first = w.size() - headings.size();
    auto& row = table[label + "/" + w[first - 1]];
    for (std::size_t k = 0; k < headings.size(); ++k) row[headings[k]] = Read(w[first + k]);
  }
  return table;
}

// The closing verdict: the lines after the table that name parameters (continuation lines joined)
// or say they all pass.
std::string Verdict(const std::string& report) {
  std::string verdict;
  for (const std::string& line : Lines(report)) {
    if (line.rfind("Check the convergence of:", 0) == 0 || line.rfind("Every parameter", 0) == 0) {
      verdict = line;
    } else if (!verdict.empty() && line.rfind("  ", 0) == 0) {
      verdict += " " + line.substr(2);
    } else if (!verdict.empty()) {
      break;
    }
  }
  return verdict;
}

}  // namespace

// An AR(1) chain's autocorrelations are rho^k; its effective sample size about n (1 - rho) / (1 + rho);
// the p-value is the two-sided tail of the z printed beside it.
TEST(ModelDiagnostics, FiguresOfAKnownChain) {
  RandomEngine rng;
  rng.Seed(5);
  const int n = 20000;
  const double rho = 0.8;
  const std::string report = FormatDiagnostics({Chain(rng, n, 0.0, rho)}, {"a", "b$x"});
  const Table table = ReadTable(report);
  ASSERT_TRUE(table.count("b$x/1")) << report;
  const auto& b = table.at("b$x/1");
  EXPECT_NEAR(b.at("ACF(1)"), rho, 0.02) << report;
  EXPECT_NEAR(b.at("ACF(5)"), std::pow(rho, 5), 0.05) << report;
  EXPECT_NEAR(b.at("ACF(10)"), std::pow(rho, 10), 0.05) << report;
  EXPECT_NEAR(b.at("ACF(50)"), 0.0, 0.05) << report;
  const double ess = n * (1 - rho) / (1 + rho);
  EXPECT_NEAR(b.at("ESS"), ess, 0.15 * ess) << report;
  EXPECT_NEAR(b.at("MCSE"), 1.0 / std::sqrt(ess), 0.1 / std::sqrt(ess)) << report;
  // Independent draws: every autocorrelation near 0, ESS near n.
  const auto& a = table.at("a/1");
  for (const char* lag : {"ACF(1)", "ACF(5)", "ACF(10)", "ACF(50)"}) EXPECT_NEAR(a.at(lag), 0.0, 0.03) << lag;
  EXPECT_NEAR(a.at("ESS"), n, 0.15 * n);
  for (const auto& [name, row] : table) {
    EXPECT_NEAR(row.at("p-value"), std::erfc(std::fabs(row.at("Geweke z")) / std::sqrt(2.0)), 1e-4) << name;
  }
  // One chain: no R-hat column.
  EXPECT_FALSE(b.count("R-hat"));
  EXPECT_EQ(Verdict(report), "Every parameter has an effective sample size of at least 400.");
}

// The closing line names what fails and why: the effective sample size of a slow chain; R-hat when
// the chains disagree; nothing when all is well.
TEST(ModelDiagnostics, ClosingLineNamesTheParametersThatFail) {
  RandomEngine rng;
  rng.Seed(9);
  const std::vector<Eigen::MatrixXd> slow = {Chain(rng, 2000, 0.0, 0.97)};
  const double slowEss = numerics::EffectiveSampleSize(slow)(1);
  ASSERT_LT(slowEss, 400.0);
  EXPECT_EQ(Verdict(FormatDiagnostics(slow, {"a", "tau"})),
            "Check the convergence of: tau (ESS " + std::to_string(std::lround(slowEss)) + ")");

  // Chains around 0 and 0.3: column 0 fails R-hat (and, the chains' disagreement counting as
  // autocorrelation, the effective sample size); column 1 (fast, agreeing) passes.
  const std::vector<Eigen::MatrixXd> apart = {Chain(rng, 2000, 0.0, 0.0), Chain(rng, 2000, 0.3, 0.0)};
  const Eigen::VectorXd rhat = numerics::SplitRHat(apart);
  const Eigen::VectorXd ess = numerics::EffectiveSampleSize(apart);
  ASSERT_GT(rhat(0), 1.01);
  ASSERT_GE(ess(1), 400.0);
  ASSERT_LE(rhat(1), 1.01);
  const std::string report = FormatDiagnostics(apart, {"b$x", "sigma"});
  const Table table = ReadTable(report);
  EXPECT_NEAR(table.at("b$x/all").at("R-hat"), rhat(0), 1e-4);
  EXPECT_NEAR(table.at("sigma/all").at("R-hat"), rhat(1), 1e-4);
  char expected[80];
  std::snprintf(expected, sizeof expected, "Check the convergence of: b$x (R-hat %.5g, ESS %ld)", rhat(0),
                std::lround(ess(0)));
  EXPECT_EQ(Verdict(report), expected) << report;

  // Many names run on over lines of at most 99 characters.
  Eigen::MatrixXd wide(50, 30);
  std::vector<std::string> names;
  for (Eigen::Index j = 0; j < wide.cols(); ++j) {
    for (Eigen::Index i = 0; i < wide.rows(); ++i) wide(i, j) = rng.Normal();
    names.push_back("beta$regressor_" + std::to_string(j + 1));
  }
  const std::string many = FormatDiagnostics({wide}, names);
  const std::string named = Verdict(many);
  for (const std::string& name : names) EXPECT_NE(named.find(" " + name + " (ESS "), std::string::npos) << name;
  bool after = false;
  for (const std::string& line : Lines(many)) {
    after = after || line.rfind("Check the convergence of:", 0) == 0;
    if (after) {
      EXPECT_LE(line.size(), 99u) << line;
    }
  }

  const std::string good = FormatDiagnostics({Chain(rng, 2000, 0.0, 0.0), Chain(rng, 2000, 0.0, 0.0)}, {"a", "b"});
  EXPECT_EQ(Verdict(good), "Every parameter has an effective sample size of at least 400 and an R-hat of at most 1.01.")
      << good;
}

// Several chains: a row per chain and a row "all" whose Geweke z combines the chains' and whose
// autocorrelations average theirs; the table stays within 100 columns and its columns line up.
TEST(ModelDiagnostics, PooledRowAndLayout) {
  RandomEngine rng;
  rng.Seed(11);
  const std::vector<Eigen::MatrixXd> chains = {Chain(rng, 1000, 0.0, 0.5), Chain(rng, 1000, 0.0, 0.5),
                                               Chain(rng, 1000, 0.0, 0.5)};
  const std::string report = FormatDiagnostics(chains, {"y$constant", "tau"});
  const Table table = ReadTable(report);
  ASSERT_EQ(table.size(), 8u) << report;
  const auto& all = table.at("tau/all");
  double zSum = 0.0, acfSum = 0.0;
  for (const char* c : {"1", "2", "3"}) {
    zSum += table.at(std::string("tau/") + c).at("Geweke z");
    acfSum += table.at(std::string("tau/") + c).at("ACF(1)");
    EXPECT_TRUE(std::isnan(table.at(std::string("tau/") + c).at("R-hat")));
  }
  EXPECT_NEAR(all.at("Geweke z"), zSum / std::sqrt(3.0), 1e-3);
  EXPECT_NEAR(all.at("ACF(1)"), acfSum / 3.0, 1e-3);
  EXPECT_NEAR(all.at("ESS"), numerics::EffectiveSampleSize(chains)(1), 0.5);

  std::size_t header = 0;
  const std::vector<std::string> lines = Lines(report);
  for (const std::string& line : lines) {
    if (line.rfind("Parameter", 0) == 0) header = line.size();
  }
  EXPECT_LE(header, 100u);
  for (const std::string& line : lines) {
    if (!line.empty() && (line[0] == ' ' || line.rfind("y$constant", 0) == 0 || line.rfind("tau", 0) == 0)) {
      EXPECT_EQ(line.size(), header) << line;
    }
  }
}

// Degenerate draws: constant, missing and infinite values, chains stuck at different values, and
// only 10 draws give "-" where a figure cannot be computed, never "nan", and a verdict.
TEST(ModelDiagnostics, DegenerateDraws) {
  RandomEngine rng;
  rng.Seed(3);
  Eigen::MatrixXd first(10, 4), second(10, 4);
  for (int i = 0; i < 10; ++i) {
    first.row(i) << rng.Normal(), 2.0, rng.Normal(), 5.0;
    second.row(i) << rng.Normal(), 2.0, rng.Normal(), 6.0;
  }
  first(4, 2) = kNaN;
  second(7, 2) = std::numeric_limits<double>::infinity();
  const std::vector<std::string> labels = {"a", "flat", "gaps", "stuck"};
  for (const auto& chains : {std::vector<Eigen::MatrixXd>{first}, std::vector<Eigen::MatrixXd>{first, second}}) {
    const std::string report = FormatDiagnostics(chains, labels);
    EXPECT_EQ(report.find("nan"), std::string::npos) << report;
    const Table table = ReadTable(report);
    ASSERT_EQ(table.size(), chains.size() == 1 ? 4u : 12u) << report;
    // Ten draws reach lags 1 and 5 only.
    EXPECT_FALSE(std::isnan(table.at("a/1").at("ACF(5)")));
    EXPECT_TRUE(std::isnan(table.at("a/1").at("ACF(10)")));
    EXPECT_TRUE(std::isnan(table.at("a/1").at("ACF(50)")));
    // A constant column has no Geweke z, p-value or autocorrelation.
    for (const char* h : {"Geweke z", "p-value", "ACF(1)"}) EXPECT_TRUE(std::isnan(table.at("flat/1").at(h))) << h;
    for (const auto& [heading, value] : table.at("gaps/1")) EXPECT_TRUE(std::isnan(value)) << heading;
    const std::string verdict = Verdict(report);
    EXPECT_NE(verdict.find("gaps (draws not all finite)"), std::string::npos) << report;
    const std::size_t a = verdict.find(": a (");
    ASSERT_NE(a, std::string::npos) << report;
    EXPECT_NE(verdict.find("ESS ", a), std::string::npos) << report;
    if (chains.size() == 2) {
      EXPECT_TRUE(std::isinf(table.at("stuck/all").at("R-hat"))) << report;
      EXPECT_NE(verdict.find("stuck (R-hat inf"), std::string::npos) << report;
      EXPECT_EQ(table.at("flat/all").at("R-hat"), 1.0);
    }
  }
}
