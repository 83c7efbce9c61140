// LogisticGroupTerms: per-group sums of the logit likelihood's terms, block by block.
#include "LogisticGroupTerms.h"

#include <algorithm>

LogisticGroupTerms::Sums::Sums(Eigen::Index groups)
    : logLikelihood(Eigen::VectorXd::Zero(groups)), gradient(Eigen::VectorXd::Zero(groups)),
      curvature(Eigen::VectorXd::Zero(groups)) {}

void LogisticGroupTerms::Sums::CopyGroup(const Sums& from, Eigen::Index g) {
  logLikelihood(g) = from.logLikelihood(g);
  gradient(g) = from.gradient(g);
  curvature(g) = from.curvature(g);
}

LogisticGroupTerms::LogisticGroupTerms(const Eigen::VectorXd& y, const std::vector<Eigen::Index>& start,
                                       Eigen::Index blocks)
    : m_y(y), m_start(start), m_groupOf(static_cast<std::size_t>(y.size())),
      m_cut(static_cast<std::size_t>(blocks)), m_t(y.size()), m_e(y.size()),
      m_p(y.size()), m_logLikelihood(y.size()) {
  for (std::size_t g = 0; g + 1 < start.size(); ++g) {
    for (Eigen::Index i = start[g]; i < start[g + 1]; ++i) m_groupOf[static_cast<std::size_t>(i)] = static_cast<Eigen::Index>(g);
  }
}

void LogisticGroupTerms::Evaluate(Eigen::Index block, Eigen::Index first, Eigen::Index end, const Eigen::VectorXd& eta,
                                  const Eigen::VectorXd& effects, Eigen::VectorXd& residual, Sums& sums) {
  const Eigen::Index n = end - first;
  const Eigen::Index firstGroup = m_groupOf[static_cast<std::size_t>(first)];
  const Eigen::Index lastGroup = m_groupOf[static_cast<std::size_t>(end - 1)];
  auto range = [&](Eigen::Index g) {
    return std::pair{std::max(m_start[static_cast<std::size_t>(g)], first),
                     std::min(m_start[static_cast<std::size_t>(g) + 1], end)};
  };
  for (Eigen::Index g = firstGroup; g <= lastGroup; ++g) {
    const auto [lo, hi] = range(g);
    m_t.segment(lo, hi - lo) = eta.segment(lo, hi - lo).array() + effects(g);
  }
  // Whole-array passes, which Eigen evaluates with vectorised exp and log1p; log(1 + e^t) is
  // max(t, 0) + log1p(e^-|t|) and p is written to stay finite for any t.
  auto t = m_t.segment(first, n);
  auto e = m_e.segment(first, n);
  auto p = m_p.segment(first, n);
  const auto y = m_y.array().segment(first, n);
  e = (-t.abs()).exp();
  m_logLikelihood.segment(first, n) = y * t - t.max(0.0) - e.log1p();
  p = (t >= 0.0).select(1.0 / (1.0 + e), e / (1.0 + e));
  residual.segment(first, n) = (y - p).matrix();

  auto& cut = m_cut[static_cast<std::size_t>(block)];
  cut[0].group = cut[1].group = -1;
  for (Eigen::Index g = firstGroup; g <= lastGroup; ++g) {
    const auto [lo, hi] = range(g);
    const auto pg = m_p.segment(lo, hi - lo);
    const double logLikelihood = m_logLikelihood.segment(lo, hi - lo).sum();
    const double gradient = residual.segment(lo, hi - lo).sum();
    const double curvature = (pg * (1.0 - pg)).sum();
    if (lo == m_start[static_cast<std::size_t>(g)] && hi == m_start[static_cast<std::size_t>(g) + 1]) {
      sums.logLikelihood(g) = logLikelihood;
      sums.gradient(g) = gradient;
      sums.curvature(g) = curvature;
    } else {
      cut[lo > m_start[static_cast<std::size_t>(g)] ? 0 : 1] = {g, logLikelihood, gradient, curvature};
    }
  }
}

void LogisticGroupTerms::JoinCutGroups(Sums& sums) const {
  for (const auto& cut : m_cut) {
    for (const CutGroup& c : cut) {
      if (c.group >= 0) sums.logLikelihood(c.group) = sums.gradient(c.group) = sums.curvature(c.group) = 0.0;
    }
  }
  for (const auto& cut : m_cut) {
    for (const CutGroup& c : cut) {
      if (c.group < 0) continue;
      sums.logLikelihood(c.group) += c.logLikelihood;
      sums.gradient(c.group) += c.gradient;
      sums.curvature(c.group) += c.curvature;
    }
  }
}
