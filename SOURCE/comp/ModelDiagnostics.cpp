// ModelDiagnostics: convergence figures of every parameter, chain by chain and pooled.
#include "ModelDiagnostics.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "DensityEstimates.h"
#include "McmcDiagnostics.h"
#include "Normal.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int kLags[] = {1, 5, 10, 50};
constexpr int kLagCount = 4;
constexpr double kRHatLimit = 1.01;
constexpr double kEssLimit = 400.0;
constexpr std::size_t kLineWidth = 99;

// A column of figures: its heading and its width, the leading blank included.
struct Column {
  const char* name;
  int width;
};
constexpr Column kEss{"ESS", 7};
constexpr Column kMcse{"MCSE", 11};
constexpr Column kGeweke{"Geweke z", 10};
constexpr Column kPValue{"p-value", 10};
constexpr Column kRHat{"R-hat", 8};
constexpr Column kAcf[] = {{"ACF(1)", 9}, {"ACF(5)", 9}, {"ACF(10)", 9}, {"ACF(50)", 9}};

// A number with `digits` significant digits, "-" when it cannot be computed.
std::string Number(double x, int digits = 5) {
  if (std::isnan(x)) return "-";
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.*g", digits, x);
  return buffer;
}

std::string RightAligned(const std::string& text, int width) {
  return std::string(static_cast<std::size_t>(std::max(1, width - static_cast<int>(text.size()))), ' ') + text;
}

// A number right-aligned in `width` characters after at least one blank: five significant digits
// as in the results table, fewer when that is the only way to keep the column straight.
std::string Cell(double x, int width) {
  std::string text = Number(x);
  for (int digits = 4; digits >= 1 && static_cast<int>(text.size()) >= width; --digits) text = Number(x, digits);
  return RightAligned(text, width);
}

// An autocorrelation, which lies in [-1, 1], with four decimals so that the points line up.
std::string Correlation(double x, int width) {
  if (std::isnan(x)) return RightAligned("-", width);
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.4f", x);
  const std::string text = buffer;
  return RightAligned(text == "-0.0000" ? "0.0000" : text, width);
}

// A count (the effective sample size) as a whole number.
std::string Count(double x) {
  if (!std::isfinite(x) || std::fabs(x) >= 1e9) return Number(x);
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.0f", x);
  return buffer;
}

std::string Heading(const Column& c) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, " %*s", c.width - 1, c.name);
  return buffer;
}

// The chain column holds "Chain", "all" or a chain's number (at most 4 digits: 1000 chains at most),
// and the figures that follow open with a blank.
constexpr std::size_t kChainWidth = 5;

std::string Padded(const std::string& text, std::size_t width) {
  return text + std::string(width - std::min(width, text.size()), ' ');
}

// Two-sided p-value of a standard normal z, from the lower tail so that large |z| keep their digits.
double PValue(double z) { return std::isnan(z) ? kNaN : 2.0 * dist::NormalCdf(-std::fabs(z), 0.0, 1.0); }

double StandardDeviation(const Eigen::VectorXd& x) {
  if (x.size() < 2) return kNaN;
  const double mean = x.mean();
  return std::sqrt((x.array() - mean).square().sum() / static_cast<double>(x.size() - 1));
}

// The figures of one parameter over a set of draws: one chain, or all chains pooled.
struct Figures {
  double ess = kNaN, mcse = kNaN, z = kNaN, rhat = kNaN;
  double acf[kLagCount] = {kNaN, kNaN, kNaN, kNaN};
};

// Autocorrelations of one chain at the report's lags; a lag the chain cannot reach is NaN.
void Autocorrelations(const Eigen::VectorXd& chain, double (&acf)[kLagCount]) {
  const int deepest = static_cast<int>(std::min<Eigen::Index>(kLags[kLagCount - 1], chain.size() - 1));
  const Eigen::VectorXd r = numerics::Autocorrelations(chain, deepest);
  for (int l = 0; l < kLagCount; ++l) acf[l] = kLags[l] <= deepest ? r(kLags[l]) : kNaN;
}

std::string Row(const std::string& label, std::size_t labelWidth, const std::string& chain, const Figures& f,
                bool withRHat) {
  std::string row = Padded(label, labelWidth) + Padded(chain, kChainWidth) + RightAligned(Count(f.ess), kEss.width) +
                    Cell(f.mcse, kMcse.width) + Cell(f.z, kGeweke.width) + Cell(PValue(f.z), kPValue.width);
  if (withRHat) row += Cell(f.rhat, kRHat.width);
  for (int l = 0; l < kLagCount; ++l) row += Correlation(f.acf[l], kAcf[l].width);
  return row + "\n";
}

// Why a parameter needs a look, from its pooled figures; empty when it passes both checks.
std::string Verdict(const Figures& pooled, bool severalChains) {
  std::string why;
  if (std::isnan(pooled.ess)) return "draws not all finite";
  if (severalChains && !(pooled.rhat <= kRHatLimit)) why = "R-hat " + Number(pooled.rhat);
  if (pooled.ess < kEssLimit) why += (why.empty() ? "ESS " : ", ESS ") + Count(pooled.ess);
  return why;
}

}  // namespace

std::string FormatDiagnostics(const std::vector<Eigen::MatrixXd>& chains, const std::vector<std::string>& labels) {
  if (chains.empty() || labels.empty()) return "\nMCMC diagnostics: there are no draws.\n";
  const bool several = chains.size() > 1;
  const std::size_t count = chains.size();
  const Eigen::Index draws = chains.front().rows();
  std::size_t labelWidth = 9;
  for (const auto& l : labels) labelWidth = std::max(labelWidth, l.size());
  labelWidth += 2;

  std::string text = "\nMCMC diagnostics (" + std::to_string(count) + " chain" + (several ? "s" : "") + " of " +
                     std::to_string(draws) + " draws)\n\n" + Padded("Parameter", labelWidth) + Padded("Chain", kChainWidth);
  for (const Column& c : {kEss, kMcse, kGeweke, kPValue}) text += Heading(c);
  if (several) text += Heading(kRHat);
  for (const Column& c : kAcf) text += Heading(c);
  text += "\n";

  const Eigen::VectorXd pooledEss = numerics::EffectiveSampleSize(chains);
  const Eigen::VectorXd rhat = numerics::SplitRHat(chains);
  std::vector<Eigen::VectorXd> chainEss, geweke;
  for (const auto& c : chains) {
    chainEss.push_back(numerics::EffectiveSampleSize({c}));
    geweke.push_back(numerics::GewekeZ(c));
  }

  std::vector<std::string> flagged;
  for (std::size_t j = 0; j < labels.size(); ++j) {
    const auto column = static_cast<Eigen::Index>(j);
    std::vector<Eigen::VectorXd> values;
    for (const auto& c : chains) values.emplace_back(c.col(column));
    std::vector<Figures> rows(count);
    for (std::size_t c = 0; c < count; ++c) {
      Figures& f = rows[c];
      f.ess = chainEss[c](column);
      f.mcse = StandardDeviation(values[c]) / std::sqrt(f.ess);
      f.z = geweke[c](column);
      Autocorrelations(values[c], f.acf);
      text += Row(c == 0 ? labels[j] : "", labelWidth, std::to_string(c + 1), f, several);
    }
    Figures pooled;
    pooled.ess = pooledEss(column);
    pooled.rhat = rhat(column);
    if (several) {
      Eigen::Index at = 0;
      for (const Eigen::VectorXd& v : values) at += v.size();
      Eigen::VectorXd all(at);
      at = 0;
      for (const Eigen::VectorXd& v : values) {
        all.segment(at, v.size()) = v;
        at += v.size();
      }
      pooled.mcse = StandardDeviation(all) / std::sqrt(pooled.ess);
      // The chains' z-scores combined: under convergence each is standard normal and they are
      // independent, so their sum over the square root of their number is standard normal too.
      // Autocorrelations are averaged, not taken of the pooled draws, which would add a jump
      // where one chain ends and the next begins.
      pooled.z = 0.0;
      for (int l = 0; l < kLagCount; ++l) pooled.acf[l] = 0.0;
      for (const Figures& f : rows) {
        pooled.z += f.z / std::sqrt(static_cast<double>(count));
        for (int l = 0; l < kLagCount; ++l) pooled.acf[l] += f.acf[l] / static_cast<double>(count);
      }
      text += Row("", labelWidth, "all", pooled, several);
    }
    const std::string why = Verdict(pooled, several);
    if (!why.empty()) flagged.push_back(labels[j] + " (" + why + ")");
  }

  if (several) {
    text += "(all: the chains pooled, their Geweke z-scores combined and autocorrelations averaged)\n";
  } else {
    text += "(R-hat needs several chains)\n";
  }
  if (flagged.empty()) {
    text += "\nEvery parameter has an effective sample size of at least 400" +
            std::string(several ? " and an R-hat of at most 1.01.\n" : ".\n");
  } else {
    // The names run on lines of at most kLineWidth characters, continued after two blanks.
    text += "\n";
    std::string line = "Check the convergence of:";
    for (std::size_t i = 0; i < flagged.size(); ++i) {
      const std::string item = flagged[i] + (i + 1 < flagged.size() ? "," : "");
      if (i > 0 && line.size() + 1 + item.size() > kLineWidth) {
        text += line + "\n";
        line = " ";
      }
      line += " " + item;
    }
    text += line + std::string("\n(") + (several ? "R-hat above 1.01 or effective" : "Effective") +
            " sample size below 400: run longer chains.)\n";
  }
  return text;
}
