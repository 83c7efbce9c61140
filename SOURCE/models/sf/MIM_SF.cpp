// The frontier models as the workspace holds them: results with the efficiency scores, links for
// predictions, stored efficiency and inefficiency.
#include "MIM_SF.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <vector>

#include "EventDispatcher.h"

namespace {

struct ClassLayout {
  InefficiencyDistribution distribution;
  std::vector<std::string> parameters;  // the inefficiency's labels
  bool firmEffects;
  bool determinants;
};

const std::map<std::string, ClassLayout>& Layouts() {
  static const std::map<std::string, ClassLayout> layouts = {
      {"SF_HNORM", {InefficiencyDistribution::HalfNormal, {"omega_u"}, false, false}},
      {"SF_TNORM", {InefficiencyDistribution::TruncatedNormal, {"mu_u", "omega_u"}, false, false}},
      {"SF_EXP", {InefficiencyDistribution::Exponential, {"lambda"}, false, false}},
      {"SF_GAMMA", {InefficiencyDistribution::Gamma, {"shape", "lambda"}, false, false}},
      {"SF_LNORM", {InefficiencyDistribution::LogNormal, {"mu_u", "omega_u"}, false, false}},
      {"SF_IE_TNORM", {InefficiencyDistribution::TruncatedNormal, {"omega_u"}, false, true}},
      {"SF_IE_EXP", {InefficiencyDistribution::Exponential, {}, false, true}},
      {"SF_RE_HNORM", {InefficiencyDistribution::HalfNormal, {"omega_u"}, true, false}},
      {"SF_RE_EXP", {InefficiencyDistribution::Exponential, {"lambda"}, true, false}},
  };
  return layouts;
}

// Types 1 to 3 through the index x'b: the frontier, the mean of y, the expected efficiency.
// The inefficiency's parameters sit in the draws from column `first`.
class FrontierLink : public IndexLink {
public:
  // `types` 1: the frontier alone (the other quantities depend on z as well).
  FrontierLink(InefficiencyDistribution d, Eigen::Index first, double sign, int types)
      : m_d(d), m_first(first), m_sign(sign), m_types(types) {}
  int Types() const override { return m_types; }
  std::string Describe(int type) const override {
    switch (type) {
      case 1: return "the frontier x'b";
      case 2: return "E(y|x)";
      default: return "E(exp(-u))";
    }
  }
  void Quantity(int type, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>& draws) const override {
    if (type == 1) return;
    for (Eigen::Index d = 0; d < index.rows(); ++d) {
      const double p1 = draws(d, m_first), p2 = m_first + 1 < draws.cols() ? draws(d, m_first + 1) : 0.0;
      if (type == 2) {
        index.row(d).array() -= m_sign * MeanInefficiency(m_d, p1, p2);
      } else {
        index.row(d).setConstant(MeanEfficiency(m_d, p1, p2));
      }
    }
  }
  void Derivative(int type, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>&) const override {
    if (type == 3) {
      index.setZero();
    } else {
      index.setOnes();
    }
  }

private:
  InefficiencyDistribution m_d;
  Eigen::Index m_first;
  double m_sign;
  int m_types;
};

// The distribution's parameters at the determinants' index z'd of one draw: the truncated
// normal's (mu = z'd, omega_u), the exponential's rate exp(-z'd).
struct DeterminantParameters {
  InefficiencyDistribution d;
  Eigen::Index omegaColumn;  // the truncated normal's omega_u among the draws
  std::pair<double, double> operator()(double zIndex, const Eigen::Ref<const Eigen::MatrixXd>& draws, Eigen::Index row) const {
    if (d == InefficiencyDistribution::Exponential) return {std::exp(-zIndex), 0.0};
    return {zIndex, draws(row, omegaColumn)};
  }
};

// Marginal effects of the determinants: type 1 on E(u), type 2 on E(exp(-u)), through z'd.
class DeterminantsLink : public IndexLink {
public:
  explicit DeterminantsLink(DeterminantParameters parameters) : m_parameters(parameters) {}
  int Types() const override { return 2; }
  std::string Describe(int type) const override { return type == 1 ? "E(u|z)" : "E(exp(-u)|z)"; }
  void Quantity(int type, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>& draws) const override {
    for (Eigen::Index r = 0; r < index.rows(); ++r) {
      for (Eigen::Index c = 0; c < index.cols(); ++c) {
        const auto [p1, p2] = m_parameters(index(r, c), draws, r);
        index(r, c) = type == 1 ? MeanInefficiency(m_parameters.d, p1, p2) : MeanEfficiency(m_parameters.d, p1, p2);
      }
    }
  }

private:
  DeterminantParameters m_parameters;
};

std::string Cell(double x) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%11.4f", x);
  return buffer;
}

// The p-quantile with the interpolation between order statistics that the intervals use.
double Quantile(const std::vector<double>& sorted, double p) {
  const double h = static_cast<double>(sorted.size() - 1) * p;
  const auto lo = static_cast<std::size_t>(std::floor(h));
  return lo + 1 < sorted.size() ? sorted[lo] + (h - static_cast<double>(lo)) * (sorted[lo + 1] - sorted[lo]) : sorted[lo];
}

}  // namespace

InefficiencyDistribution MIM_SF::Distribution() const {
  const auto it = Layouts().find(Description().typeName);
  return it == Layouts().end() ? InefficiencyDistribution::HalfNormal : it->second.distribution;
}

Eigen::Index MIM_SF::FirstInefficiencyColumn() const {
  const auto it = Layouts().find(Description().typeName);
  const auto k = static_cast<Eigen::Index>(Description().regressors.size() + Description().secondList.size());
  return k + 1 + (it != Layouts().end() && it->second.firmEffects ? 1 : 0);
}

void MIM_SF::PrintResults(const EventDispatcher& out) const {
  Model::PrintResults(out);
  std::string text;
  const double acceptance = ScalarResult("acceptance");
  if (!std::isnan(acceptance)) {
    char buffer[96];
    std::snprintf(buffer, sizeof buffer, "Metropolis-Hastings acceptance rate: %.3f\n", acceptance);
    text += buffer;
  }
  const auto efficiency = GetpMatrix("efficiency");
  if (efficiency && efficiency->size() > 0) {
    std::vector<double> sorted(efficiency->data(), efficiency->data() + efficiency->size());
    std::sort(sorted.begin(), sorted.end());
    out.Print(text);
    out.Print("\nEfficiency scores (posterior means of exp(-u) of the " + std::to_string(sorted.size()) +
                  " observations)\n",
              true);
    text = "       Mean     Median        25%        75%    Minimum    Maximum\n";
    text += Cell(efficiency->mean()) + Cell(Quantile(sorted, 0.5)) + Cell(Quantile(sorted, 0.25)) +
            Cell(Quantile(sorted, 0.75)) + Cell(sorted.front()) + Cell(sorted.back()) + "\n";
  }
  out.Print(text);
}

bool MIM_SF::LayoutHolds() const {
  const ModelDescription& d = Description();
  const auto it = Layouts().find(d.typeName);
  if (it == Layouts().end()) return false;
  const ClassLayout& layout = it->second;
  if (layout.determinants == d.secondList.empty()) return false;
  std::vector<std::string> expected;
  for (const auto& x : d.regressors) expected.push_back(d.dependent + "$" + x);
  for (const auto& z : d.secondList) expected.push_back("u$" + z);
  expected.push_back("tau");
  if (layout.firmEffects) expected.push_back("omega");
  expected.insert(expected.end(), layout.parameters.begin(), layout.parameters.end());
  const auto efficiency = GetpMatrix("efficiency");
  return Labels() == expected && efficiency && efficiency->size() == d.observations;
}

const IndexLink& MIM_SF::Link() const {
  std::call_once(m_linkMade, [this] {
    m_link = std::make_unique<FrontierLink>(Distribution(), FirstInefficiencyColumn(), Sign(), HasDeterminants() ? 1 : 3);
    if (HasDeterminants()) {
      m_effectsLink = std::make_unique<DeterminantsLink>(DeterminantParameters{Distribution(), FirstInefficiencyColumn()});
    }
  });
  return *m_link;
}

const IndexLink& MIM_SF::EffectsLink() const {
  const IndexLink& link = Link();
  return m_effectsLink ? *m_effectsLink : link;
}

std::string MIM_SF::DescribeFurther(int type) const { return type == 2 ? "E(y|x, z)" : "E(exp(-u)|z)"; }

void MIM_SF::FurtherQuantity(int type, const ActionData& data, Eigen::Index first, Eigen::MatrixXd& index) const {
  // z'd for the same draws and observations as the block of x'b.
  const Eigen::MatrixXd& draws = PooledDraws();
  const Eigen::MatrixXd zIndex = SecondListCoefficientDraws() * data.data.Z.middleRows(first, index.cols()).transpose();
  const DeterminantParameters parameters{Distribution(), FirstInefficiencyColumn()};
  const double sign = Sign();
  for (Eigen::Index r = 0; r < index.rows(); ++r) {
    for (Eigen::Index c = 0; c < index.cols(); ++c) {
      const auto [p1, p2] = parameters(zIndex(r, c), draws, r);
      if (type == 2) {
        index(r, c) -= sign * MeanInefficiency(parameters.d, p1, p2);
      } else {
        index(r, c) = MeanEfficiency(parameters.d, p1, p2);
      }
    }
  }
}

std::vector<std::pair<std::string, Eigen::VectorXd>> MIM_SF::StoreSeries(const std::string& name,
                                                                         const ActionData&) const {
  if (name == "eff") return {{"eff", *GetpMatrix("efficiency")}};
  return {{"u", *GetpMatrix("inefficiency")}};
}

namespace {
const bool kRegistered = [] {
  for (const auto& [typeName, layout] : Layouts()) {
    Model::RegisterClass(typeName, [] { return std::make_shared<MIM_SF>(); });
  }
  return true;
}();
}  // namespace
