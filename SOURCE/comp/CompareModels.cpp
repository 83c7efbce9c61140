// CompareModels: probabilities computed in log space, so that log-marginal likelihoods of any
// size compare without underflow.
#include "CompareModels.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "EventDispatcher.h"

namespace {

// A number right-aligned in a column of `width` after at least one blank, five significant digits
// as in the results table; "-" when it is missing.
std::string Cell(double x, int width) {
  char buffer[64];
  if (std::isnan(x)) {
    std::snprintf(buffer, sizeof buffer, " %*s", width - 1, "-");
  } else {
    std::snprintf(buffer, sizeof buffer, " %*.5g", width - 1, x);
  }
  return buffer;
}

std::string Heading(const char* name, int width) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, " %*s", width - 1, name);
  return buffer;
}

constexpr int kWidth = 13;

}  // namespace

CompareModels::CompareModels(std::vector<std::string> models, std::vector<std::string> methodLabels,
                             Eigen::MatrixXd logML, Eigen::VectorXd priors)
    : m_models(std::move(models)), m_methods(std::move(methodLabels)), m_logML(std::move(logML)),
      m_priors(std::move(priors)) {
  m_probabilities.resize(m_logML.rows(), m_logML.cols());
  const Eigen::ArrayXd logPriors = m_priors.array().log();
  for (Eigen::Index m = 0; m < m_logML.cols(); ++m) {
    const Eigen::ArrayXd logPosterior = m_logML.col(m).array() + logPriors;
    if (m_logML.rows() == 0 || !logPosterior.allFinite()) {
      m_probabilities.col(m).setConstant(std::numeric_limits<double>::quiet_NaN());
      continue;
    }
    // p_i = prior_i exp(l_i) / sum_j prior_j exp(l_j), with the largest term factored out so that
    // the greatest exponent is 0 and the sum lies in [1, number of models].
    const double top = logPosterior.maxCoeff();
    const Eigen::ArrayXd scaled = (logPosterior - top).exp();
    m_probabilities.col(m) = scaled / scaled.sum();
  }
}

void CompareModels::Print(const EventDispatcher& out) const {
  std::size_t width = 7;
  for (const auto& m : m_models) width = std::max(width, m.size());
  width += 4;
  auto padded = [width](const std::string& text) { return text + std::string(width - std::min(width, text.size()), ' '); };
  out.Print("\nPOSTERIOR MODEL PROBABILITIES\n", true);
  for (Eigen::Index m = 0; m < m_logML.cols(); ++m) {
    const std::string method = static_cast<std::size_t>(m) < m_methods.size() ? m_methods[static_cast<std::size_t>(m)] : "";
    out.Print("\n" + method + "\n", true);
    out.Print(padded("  Model") + Heading("Log-ML", kWidth) + Heading("Prior", kWidth) + Heading("Posterior", kWidth) +
                  "\n",
              true);
    std::string text;
    for (std::size_t i = 0; i < m_models.size(); ++i) {
      const auto r = static_cast<Eigen::Index>(i);
      text += padded("  " + m_models[i]) + Cell(m_logML(r, m), kWidth) + Cell(m_priors(r), kWidth) +
              Cell(m_probabilities(r, m), kWidth) + "\n";
    }
    out.Print(text);
  }
}
