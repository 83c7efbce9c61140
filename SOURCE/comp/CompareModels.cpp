// CompareModels: probabilities computed in log space, so that log-marginal likelihoods of any
// size compare without underflow.
#include "CompareModels.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "EventDispatcher.h"

CompareModels::CompareModels(std::vector<std::string> models, std::vector<std::string> methodLabels,
                             Eigen::MatrixXd logML, Eigen::VectorXd priors)
    : m_models(std::move(models)), m_methods(std::move(methodLabels)), m_logML(std::move(logML)),
      m_priors(std::move(priors)) {
  m_probabilities.resize(m_logML.rows(), m_logML.cols());
  for (Eigen::Index m = 0; m < m_logML.cols(); ++m) {
    if (!m_logML.col(m).allFinite()) {
      m_probabilities.col(m).setConstant(std::numeric_limits<double>::quiet_NaN());
      continue;
    }
    // p_i = prior_i exp(l_i) / sum_j prior_j exp(l_j), with the largest term factored out.
    const Eigen::ArrayXd logPosterior = m_logML.col(m).array() + m_priors.array().log();
    const double top = logPosterior.maxCoeff();
    const Eigen::ArrayXd scaled = (logPosterior - top).exp();
    m_probabilities.col(m) = scaled / scaled.sum();
  }
}

void CompareModels::Print(const EventDispatcher& out) const {
  std::size_t width = 10;
  for (const auto& m : m_models) width = std::max(width, m.size() + 2);
  auto padded = [width](const std::string& text) { return text + std::string(width - std::min(width, text.size()), ' '); };
  out.Print("\nPOSTERIOR MODEL PROBABILITIES\n", true);
  for (Eigen::Index m = 0; m < m_logML.cols(); ++m) {
    std::string text = "\n" + m_methods[static_cast<std::size_t>(m)] + "\n";
    out.Print(text, true);
    char line[128];
    std::snprintf(line, sizeof line, "%14s %12s %12s\n", "Log-ML", "Prior", "Posterior");
    out.Print(padded("  Model") + line, true);
    text.clear();
    for (std::size_t i = 0; i < m_models.size(); ++i) {
      const auto r = static_cast<Eigen::Index>(i);
      std::snprintf(line, sizeof line, "%14.5g %12.4g %12.4g\n", m_logML(r, m), m_priors(r), m_probabilities(r, m));
      text += padded("  " + m_models[i]) + line;
    }
    out.Print(text);
  }
}
