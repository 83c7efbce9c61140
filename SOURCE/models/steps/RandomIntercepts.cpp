// RandomIntercepts: the block draw of coefficients and group intercepts, and the integrated
// likelihood of binary outcomes.
#include "RandomIntercepts.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

#include "BinaryAugmentation.h"
#include "Decompositions.h"

PanelGroups PanelGroups::FromCodes(const std::vector<int>& groups) {
  PanelGroups p;
  p.group = groups;
  const int count = groups.empty() ? 0 : *std::max_element(groups.begin(), groups.end()) + 1;
  p.size = Eigen::VectorXd::Zero(count);
  for (int g : groups) p.size(g) += 1.0;
  p.start.assign(static_cast<std::size_t>(count) + 1, 0);
  for (int g = 0; g < count; ++g) p.start[static_cast<std::size_t>(g) + 1] = p.start[static_cast<std::size_t>(g)] + static_cast<Eigen::Index>(p.size(g));
  p.members.resize(groups.size());
  std::vector<Eigen::Index> next(p.start.begin(), p.start.end() - 1);
  for (std::size_t i = 0; i < groups.size(); ++i) {
    p.members[static_cast<std::size_t>(next[static_cast<std::size_t>(groups[i])]++)] = static_cast<Eigen::Index>(i);
  }
  return p;
}

void PanelGroups::AddEffects(const Eigen::VectorXd& effects, Eigen::Index first, Eigen::Index end,
                             Eigen::VectorXd& index) const {
  for (Eigen::Index i = first; i < end; ++i) index(i) += effects(group[static_cast<std::size_t>(i)]);
}

RandomInterceptStep::RandomInterceptStep(const Eigen::MatrixXd& X, const PanelGroups& groups, const LinearPrior& prior)
    : m_X(X), m_groups(groups), m_prior(prior), m_XtX(X.transpose() * X) {
  const Eigen::Index k = X.cols();
  const Eigen::Index G = groups.Count();
  m_groupX = Eigen::MatrixXd::Zero(k, G);
  for (Eigen::Index i = 0; i < X.rows(); ++i) m_groupX.col(groups.group[static_cast<std::size_t>(i)]) += X.row(i).transpose();
  std::map<double, std::size_t> bySize;
  for (Eigen::Index g = 0; g < G; ++g) {
    const auto [it, added] = bySize.try_emplace(groups.size(g), m_sizes.size());
    if (added) {
      m_sizes.push_back(groups.size(g));
      m_sizeSS.push_back(Eigen::MatrixXd::Zero(k, k));
    }
    m_sizeSS[it->second].noalias() += m_groupX.col(g) * m_groupX.col(g).transpose();
  }
  m_M.resize(k, k);
  m_v.resize(k);
  m_z.resize(k);
  m_groupResponse.resize(G);
  m_groupWeight.resize(G);
  m_scale.resize(G);
}

void RandomInterceptStep::Draw(const Eigen::VectorXd& z, double omega, RandomEngine& rng, Eigen::VectorXd& b,
                               Eigen::VectorXd& a) {
  // Integrating a_g out of group g's T_g responses subtracts s_g s_g' / (omega + T_g) from X'X.
  m_M = m_XtX;
  for (std::size_t j = 0; j < m_sizes.size(); ++j) m_M -= m_sizeSS[j] / (omega + m_sizes[j]);
  m_v.noalias() = m_X.transpose() * z;
  m_groupResponse.setZero();
  for (Eigen::Index i = 0; i < z.size(); ++i) m_groupResponse(m_groups.group[static_cast<std::size_t>(i)]) += z(i);
  Finish(m_groupResponse, m_groups.size, m_groupX, omega, rng, b, a);
}

void RandomInterceptStep::DrawWeighted(const Eigen::VectorXd& kappa, const Eigen::VectorXd& w, double omega,
                                       RandomEngine& rng, Eigen::VectorXd& b, Eigen::VectorXd& a) {
  m_weightedX = m_X.array().colwise() * w.array();
  m_M.noalias() = m_X.transpose() * m_weightedX;
  m_v.noalias() = m_X.transpose() * kappa;
  m_weightedGroupX.setZero(m_X.cols(), m_groups.Count());
  m_groupResponse.setZero();
  m_groupWeight.setZero();
  for (Eigen::Index i = 0; i < w.size(); ++i) {
    const int g = m_groups.group[static_cast<std::size_t>(i)];
    m_weightedGroupX.col(g) += m_weightedX.row(i).transpose();
    m_groupResponse(g) += kappa(i);
    m_groupWeight(g) += w(i);
  }
  // Integrating a_g out subtracts u_g u_g' / (omega + W_g), u_g = sum of w_i x_i over the group.
  m_scale = (omega + m_groupWeight.array()).inverse().sqrt().matrix();
  m_root = m_weightedGroupX * m_scale.asDiagonal();
  m_M.noalias() -= m_root * m_root.transpose();
  Finish(m_groupResponse, m_groupWeight, m_weightedGroupX, omega, rng, b, a);
}

void RandomInterceptStep::Finish(const Eigen::VectorXd& groupResponse, const Eigen::VectorXd& groupWeight,
                                 const Eigen::MatrixXd& groupX, double omega, RandomEngine& rng, Eigen::VectorXd& b,
                                 Eigen::VectorXd& a) {
  m_M += m_prior.precision;
  m_v.noalias() -= groupX * (groupResponse.array() / (omega + groupWeight.array())).matrix();
  m_v += m_prior.precisionTimesMean;
  m_factor.compute(m_M);
  DrawCanonicalNormal(m_factor, m_v, rng, m_z, b);
  // a_g | b ~ N((K_g - u_g'b) / (W_g + omega), 1 / (W_g + omega)).
  for (Eigen::Index g = 0; g < a.size(); ++g) {
    const double precision = groupWeight(g) + omega;
    a(g) = (groupResponse(g) - groupX.col(g).dot(b)) / precision + rng.Normal() / std::sqrt(precision);
  }
}

double RandomInterceptStep::LogOrdinate(const Eigen::VectorXd& bStar) const {
  constexpr double kLog2Pi = 1.8378770664093454836;
  const Eigen::VectorXd mean = m_factor.solve(m_v);
  const Eigen::VectorXd scaled = m_factor.matrixU() * (bStar - mean);
  const double logDet = 2.0 * m_factor.matrixLLT().diagonal().array().log().sum();
  return -0.5 * static_cast<double>(bStar.size()) * kLog2Pi + 0.5 * logDet - 0.5 * scaled.squaredNorm();
}

namespace {

constexpr int kQuadratureNodes = 48;

// log F(u) and its first two derivatives.
struct LogCdf {
  double value, first, second;
};

LogCdf Evaluate(BinaryLink link, double u) {
  if (link == BinaryLink::Logit) {
    const double value = u >= 0.0 ? -std::log1p(std::exp(-u)) : u - std::log1p(std::exp(u));
    const double upper = 1.0 / (1.0 + std::exp(u));  // Lambda(-u) = d log Lambda(u) / du
    return {value, upper, -upper * (1.0 - upper)};
  }
  const double value = LogNormalCdf(u);
  const double mills = std::exp(-0.5 * u * u - 0.9189385332046727 - value);  // phi(u) / Phi(u)
  return {value, mills, -mills * (u + mills)};
}

// h(a) = sum over the group of log F(s_i (index_i + a)) - omega a^2 / 2, with h' and h''.
LogCdf GroupTerm(const Eigen::VectorXd& y, const Eigen::VectorXd& index, const PanelGroups& groups, Eigen::Index g,
                 double omega, BinaryLink link, double a) {
  LogCdf h{-0.5 * omega * a * a, -omega * a, -omega};
  for (Eigen::Index j = groups.start[static_cast<std::size_t>(g)]; j < groups.start[static_cast<std::size_t>(g) + 1]; ++j) {
    const Eigen::Index i = groups.members[static_cast<std::size_t>(j)];
    const double s = y(i) > 0.5 ? 1.0 : -1.0;
    const LogCdf f = Evaluate(link, s * (index(i) + a));
    h.value += f.value;
    h.first += s * f.first;
    h.second += f.second;
  }
  return h;
}

}  // namespace

double IntegratedBinaryLogLikelihood(const Eigen::VectorXd& y, const Eigen::VectorXd& index, const PanelGroups& groups,
                                     double omega, BinaryLink link) {
  constexpr double kLog2Pi = 1.8378770664093454836;
  static const auto rule = [] {
    Eigen::MatrixXd nodes, weights;
    numerics::HermiteQuad(kQuadratureNodes, nodes, weights);
    return std::make_pair(Eigen::VectorXd(nodes.reshaped()), Eigen::VectorXd(weights.reshaped()));
  }();
  double total = 0.0;
  Eigen::VectorXd terms(kQuadratureNodes);
  for (Eigen::Index g = 0; g < groups.Count(); ++g) {
    // The mode of the concave h by Newton's method, halving steps that do not raise h.
    double a = 0.0;
    LogCdf h = GroupTerm(y, index, groups, g, omega, link, a);
    for (int iteration = 0; iteration < 100; ++iteration) {
      const double step = -h.first / h.second;
      double next = a + step;
      LogCdf candidate = GroupTerm(y, index, groups, g, omega, link, next);
      for (int halving = 0; halving < 50 && candidate.value < h.value; ++halving) {
        next = 0.5 * (a + next);
        candidate = GroupTerm(y, index, groups, g, omega, link, next);
      }
      const bool settled = std::fabs(next - a) < 1e-10 * (1.0 + std::fabs(a));
      a = next;
      h = candidate;
      if (settled) break;
    }
    const double scale = std::sqrt(2.0 / -h.second);
    for (int j = 0; j < kQuadratureNodes; ++j) {
      const double x = rule.first(j);
      terms(j) = std::log(rule.second(j)) + x * x + GroupTerm(y, index, groups, g, omega, link, a + scale * x).value;
    }
    const double top = terms.maxCoeff();
    total += std::log(scale) + top + std::log((terms.array() - top).exp().sum()) + 0.5 * (std::log(omega) - kLog2Pi);
  }
  return total;
}
