// ModelDiagnostics: convergence figures of every parameter, chain by chain and pooled.
#include "ModelDiagnostics.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "DensityEstimates.h"
#include "McmcDiagnostics.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int kLags[] = {1, 5, 10, 50};
constexpr double kRHatLimit = 1.01;
constexpr double kEssLimit = 400.0;

std::string Cell(double x) {
  char buffer[32];
  if (!std::isfinite(x)) {
    std::snprintf(buffer, sizeof buffer, " %10s", std::isinf(x) ? (x > 0 ? "inf" : "-inf") : "-");
  } else {
    std::snprintf(buffer, sizeof buffer, " %10.4g", x);
  }
  return buffer;
}

std::string Padded(const std::string& text, std::size_t width) {
  return text.size() >= width ? text + " " : text + std::string(width - text.size(), ' ');
}

// Two-sided p-value of a standard normal z.
double PValue(double z) { return std::isfinite(z) ? std::erfc(std::fabs(z) / std::sqrt(2.0)) : kNaN; }

// One row of figures for the draws of one parameter (one chain, or all chains pooled).
std::string Figures(const std::vector<Eigen::MatrixXd>& chains, Eigen::Index column, double ess, double z,
                    double rhat, bool withRHat) {
  Eigen::Index n = 0;
  for (const auto& c : chains) n += c.rows();
  Eigen::VectorXd values(n);
  Eigen::Index at = 0;
  for (const auto& c : chains) {
    values.segment(at, c.rows()) = c.col(column);
    at += c.rows();
  }
  const double mean = n > 0 ? values.mean() : kNaN;
  const double sd = n > 1 ? std::sqrt((values.array() - mean).square().sum() / static_cast<double>(n - 1)) : kNaN;
  std::string row = Cell(std::round(ess)) + Cell(sd / std::sqrt(ess)) + Cell(z) + Cell(PValue(z));
  if (withRHat) row += Cell(rhat);
  // Autocorrelations within chains: of the one chain, or averaged over the chains when pooled.
  Eigen::VectorXd acf = Eigen::VectorXd::Zero(4);
  for (const auto& c : chains) {
    const Eigen::VectorXd r = numerics::Autocorrelations(c.col(column), kLags[3]);
    for (int l = 0; l < 4; ++l) acf(l) += kLags[l] < c.rows() ? r(kLags[l]) : kNaN;
  }
  for (int l = 0; l < 4; ++l) row += Cell(acf(l) / static_cast<double>(chains.size()));
  return row + "\n";
}

}  // namespace

std::string FormatDiagnostics(const std::vector<Eigen::MatrixXd>& chains, const std::vector<std::string>& labels) {
  const bool several = chains.size() > 1;
  std::size_t width = 14;
  for (const auto& l : labels) width = std::max(width, l.size() + 4);
  std::string header = Padded("Parameter", width) + Padded("Chain", 7);
  std::vector<const char*> columns = {"ESS", "MCSE", "Geweke z", "p-value"};
  if (several) columns.push_back("R-hat");
  for (const char* c : {"ACF(1)", "ACF(5)", "ACF(10)", "ACF(50)"}) columns.push_back(c);
  for (const char* c : columns) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, " %10s", c);
    header += buffer;
  }
  const Eigen::VectorXd pooledEss = numerics::EffectiveSampleSize(chains);
  const Eigen::VectorXd rhat = numerics::SplitRHat(chains);
  std::vector<Eigen::VectorXd> chainEss, geweke;
  for (const auto& c : chains) {
    chainEss.push_back(numerics::EffectiveSampleSize({c}));
    geweke.push_back(numerics::GewekeZ(c));
  }
  std::string text = "\nMCMC diagnostics (" + std::to_string(chains.size()) + " chain" + (several ? "s" : "") +
                     " of " + std::to_string(chains.empty() ? 0 : chains.front().rows()) + " draws)\n\n" + header + "\n";
  std::vector<std::string> flagged;
  for (std::size_t j = 0; j < labels.size(); ++j) {
    const auto column = static_cast<Eigen::Index>(j);
    for (std::size_t c = 0; c < chains.size(); ++c) {
      text += Padded(c == 0 ? labels[j] : "", width) + Padded(std::to_string(c + 1), 7) +
              Figures({chains[c]}, column, chainEss[c](column), geweke[c](column), kNaN, several);
    }
    if (several) {
      text += Padded("", width) + Padded("all", 7) +
              Figures(chains, column, pooledEss(column), kNaN, rhat(column), several);
    }
    std::string why;
    if (several && !(rhat(column) <= kRHatLimit)) why += "R-hat " + Cell(rhat(column)).substr(1);
    if (!(pooledEss(column) >= kEssLimit)) {
      char buffer[48];
      std::snprintf(buffer, sizeof buffer, "ESS %.0f", pooledEss(column));
      why += (why.empty() ? "" : ", ") + std::string(std::isfinite(pooledEss(column)) ? buffer : "ESS -");
    }
    if (!why.empty()) {
      why.erase(0, why.find_first_not_of(' '));
      flagged.push_back(labels[j] + " (" + why + ")");
    }
  }
  if (!several) text += "(R-hat needs several chains)\n";
  if (flagged.empty()) {
    text += "\nEvery parameter has an effective sample size of at least 400" +
            std::string(several ? " and an R-hat of at most 1.01.\n" : ".\n");
  } else {
    text += "\nCheck the convergence of:";
    for (std::size_t i = 0; i < flagged.size(); ++i) text += (i == 0 ? " " : ", ") + flagged[i];
    text += "\n(R-hat above 1.01 or effective sample size below 400: run longer chains.)\n";
  }
  return text;
}
