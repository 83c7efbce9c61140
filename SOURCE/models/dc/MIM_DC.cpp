// The discrete-choice family's estimated models and their links.
#include "MIM_DC.h"

#include <cmath>
#include <limits>
#include <map>

#include "Dataset.h"
#include "Decompositions.h"

namespace {

constexpr double kInvSqrt2 = 0.70710678118654752440;
constexpr double kInvSqrt2Pi = 0.39894228040143267794;

// 1 / (1 + e^-t), finite for any t.
double Logistic(double t) { return t >= 0.0 ? 1.0 / (1.0 + std::exp(-t)) : std::exp(t) / (1.0 + std::exp(t)); }

class ProbitLink : public IndexLink {
public:
  std::string Describe(int) const override { return "Prob(y = 1|x)"; }
  void Quantity(int, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>&) const override {
    index = index.unaryExpr([](double t) { return 0.5 * std::erfc(-t * kInvSqrt2); });
  }
  void Derivative(int, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>&) const override {
    index = (kInvSqrt2Pi * (-0.5 * index.array().square()).exp()).matrix();
  }
};

class LogitLink : public IndexLink {
public:
  std::string Describe(int) const override { return "Prob(y = 1|x)"; }
  void Quantity(int, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>&) const override {
    index = index.unaryExpr(&Logistic);
  }
  void Derivative(int, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>&) const override {
    index = index.unaryExpr([](double t) {
      const double e = std::exp(-std::fabs(t));
      return e / ((1.0 + e) * (1.0 + e));
    });
  }
};


// The effects' variance of each draw: the last parameter.
double EffectVariance(const Eigen::Ref<const Eigen::MatrixXd>& draws, Eigen::Index d) {
  return draws(d, draws.cols() - 1);
}

class ProbitRandomEffectsLink : public IndexLink {
public:
  std::string Describe(int) const override { return "Prob(y = 1|x)"; }
  void Quantity(int, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>& draws) const override {
    for (Eigen::Index d = 0; d < index.rows(); ++d) {
      const double scale = 1.0 / std::sqrt(1.0 + EffectVariance(draws, d));
      for (Eigen::Index c = 0; c < index.cols(); ++c) index(d, c) = 0.5 * std::erfc(-index(d, c) * scale * kInvSqrt2);
    }
  }
  void Derivative(int, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>& draws) const override {
    for (Eigen::Index d = 0; d < index.rows(); ++d) {
      const double scale = 1.0 / std::sqrt(1.0 + EffectVariance(draws, d));
      for (Eigen::Index c = 0; c < index.cols(); ++c) {
        const double t = index(d, c) * scale;
        index(d, c) = scale * kInvSqrt2Pi * std::exp(-0.5 * t * t);
      }
    }
  }
};

class LogitRandomEffectsLink : public IndexLink {
public:
  LogitRandomEffectsLink() {
    Eigen::MatrixXd nodes, weights;
    numerics::HermiteQuad(kNodes, nodes, weights);
    m_nodes = nodes.reshaped() * std::sqrt(2.0);
    m_weights = weights.reshaped() / std::sqrt(3.14159265358979323846);
  }
  std::string Describe(int) const override { return "Prob(y = 1|x)"; }
  void Quantity(int, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>& draws) const override {
    Average(index, draws, [](double t) { return Logistic(t); });
  }
  void Derivative(int, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>& draws) const override {
    Average(index, draws, [](double t) { return Logistic(t) * Logistic(-t); });
  }

private:
  static constexpr int kNodes = 20;
  // Replaces each index t by the average of f(t + a) over a ~ N(0, var_re).
  template <typename F>
  void Average(Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>& draws, F f) const {
    for (Eigen::Index d = 0; d < index.rows(); ++d) {
      const Eigen::VectorXd shifts = m_nodes * std::sqrt(EffectVariance(draws, d));
      for (Eigen::Index c = 0; c < index.cols(); ++c) {
        double sum = 0.0;
        for (int j = 0; j < kNodes; ++j) sum += m_weights(j) * f(index(d, c) + shifts(j));
        index(d, c) = sum;
      }
    }
  }
  Eigen::VectorXd m_nodes, m_weights;
};

const ModelClassRegistration kProbitRe("Probit_RE", [] { return std::make_shared<MIM_Probit_RE>(); });
const ModelClassRegistration kLogitRe("Logit_RE", [] { return std::make_shared<MIM_Logit_RE>(); });
const ModelClassRegistration kProbit("Probit", [] { return std::make_shared<MIM_Probit>(); });
const ModelClassRegistration kLogit("Logit", [] { return std::make_shared<MIM_Logit>(); });

}  // namespace

const IndexLink& MIM_Probit::Link() const {
  static const ProbitLink link;
  return link;
}

const IndexLink& MIM_Logit::Link() const {
  static const LogitLink link;
  return link;
}

const IndexLink& MIM_Probit_RE::Link() const {
  static const ProbitRandomEffectsLink link;
  return link;
}

const IndexLink& MIM_Logit_RE::Link() const {
  static const LogitRandomEffectsLink link;
  return link;
}

std::vector<std::string> MIM_BinaryRandomEffects::ExtraVariables(const Dataset& dataset) const {
  return {dataset.Structure().groupVariable};
}

std::vector<std::pair<std::string, Eigen::VectorXd>> MIM_BinaryRandomEffects::StoreSeries(const std::string&,
                                                                                      const ActionData& data) const {
  // Each observation takes its group's mean; a group the estimation did not see has none.
  std::map<double, double> byGroup;
  if (const auto kept = GetpMatrix("effects"); kept && kept->cols() == 2) {
    for (Eigen::Index g = 0; g < kept->rows(); ++g) byGroup[(*kept)(g, 0)] = (*kept)(g, 1);
  }
  Eigen::VectorXd perObservation(data.data.y.size());
  for (Eigen::Index i = 0; i < perObservation.size(); ++i) {
    const auto it = byGroup.find(data.data.extra(i, 0));
    perObservation(i) = it == byGroup.end() ? std::numeric_limits<double>::quiet_NaN() : it->second;
  }
  return {{"effects", perObservation}};
}
