// The discrete-choice family's estimated models and their links.
#include "MIM_DC.h"

#include <cmath>

namespace {

constexpr double kInvSqrt2 = 0.70710678118654752440;
constexpr double kInvSqrt2Pi = 0.39894228040143267794;

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
    index = index.unaryExpr([](double t) { return t >= 0.0 ? 1.0 / (1.0 + std::exp(-t)) : std::exp(t) / (1.0 + std::exp(t)); });
  }
  void Derivative(int, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>&) const override {
    index = index.unaryExpr([](double t) {
      const double e = std::exp(-std::fabs(t));
      return e / ((1.0 + e) * (1.0 + e));
    });
  }
};

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
