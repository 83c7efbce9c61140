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

const ModelClassRegistration kProbit("Probit", [] { return std::make_shared<MIM_Probit>(); });

}  // namespace

const IndexLink& MIM_Probit::Link() const {
  static const ProbitLink link;
  return link;
}
