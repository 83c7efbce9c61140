// The limited-dependent-variable family's estimated models and their links.
#include "MIM_LDV.h"

#include <cmath>
#include <limits>

namespace {

constexpr double kInvSqrt2 = 0.70710678118654752440;
constexpr double kInvSqrt2Pi = 0.39894228040143267794;

double NormalCdf(double t) { return 0.5 * std::erfc(-t * kInvSqrt2); }
double NormalPdf(double t) { return std::isinf(t) ? 0.0 : kInvSqrt2Pi * std::exp(-0.5 * t * t); }

// y* = x'b + e, e ~ N(0, 1/tau), y = y* censored to [lower, upper]; tau is the last parameter.
class TobitLink : public IndexLink {
public:
  TobitLink(double lower, double upper) : m_lower(lower), m_upper(upper) {}
  int Types() const override { return 4; }
  std::string Describe(int type) const override {
    switch (type) {
      case 1: return "E(y*|x)";
      case 2: return "E(y|x)";
      case 3: return "E(y|x, inside the limits)";
      default: return "Prob(inside the limits|x)";
    }
  }
  void Quantity(int type, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>& draws) const override {
    if (type == 1) return;
    for (Eigen::Index d = 0; d < index.rows(); ++d) {
      const double sd = 1.0 / std::sqrt(draws(d, draws.cols() - 1));
      for (Eigen::Index c = 0; c < index.cols(); ++c) index(d, c) = Value(type, index(d, c), sd);
    }
  }

private:
  // With a = (lower - mu) / sd and b = (upper - mu) / sd: the mass inside is Phi(b) - Phi(a) and
  // the mean inside mu + sd (phi(a) - phi(b)) / (Phi(b) - Phi(a)).
  double Value(int type, double mu, double sd) const {
    const double a = (m_lower - mu) / sd, b = (m_upper - mu) / sd;
    // Phi(b) - Phi(a) computed on the side where it does not cancel.
    const double inside = a > 0.0 ? NormalCdf(-a) - NormalCdf(-b) : NormalCdf(b) - NormalCdf(a);
    if (type == 4) return inside;
    const double partial = mu * inside + sd * (NormalPdf(a) - NormalPdf(b));  // E(y*; inside)
    if (type == 3) return inside > 0.0 ? partial / inside : std::numeric_limits<double>::quiet_NaN();
    double mean = partial;
    if (std::isfinite(m_lower)) mean += m_lower * NormalCdf(a);
    if (std::isfinite(m_upper)) mean += m_upper * NormalCdf(-b);
    return mean;
  }
  double m_lower, m_upper;
};

// Type 1: the outcome's mean x'b; type 2: the probability of selection Phi(z'g), whose index the
// model forms from the selection list.
class SelectionLink : public IndexLink {
public:
  int Types() const override { return 2; }
  std::string Describe(int type) const override { return type == 1 ? "E(y*|x)" : "Prob(selected|z)"; }
  void Quantity(int type, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>&) const override {
    if (type == 2) index = index.unaryExpr(&NormalCdf);
  }
  void Derivative(int type, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>&) const override {
    if (type == 2) {
      index = index.unaryExpr(&NormalPdf);
    } else {
      index.setOnes();
    }
  }
};

// Whether the first labels are dependent$regressor for the main list.
bool MainLabelsHold(const ModelDescription& d, const std::vector<std::string>& labels) {
  for (std::size_t j = 0; j < d.regressors.size(); ++j) {
    if (j >= labels.size() || labels[j] != d.dependent + "$" + d.regressors[j]) return false;
  }
  return true;
}

const ModelClassRegistration kTobitII("TobitII", [] { return std::make_shared<MIM_TobitII>(); });
const ModelClassRegistration kTobitI("TobitI", [] { return std::make_shared<MIM_TobitI>(); });

}  // namespace

bool MIM_TobitI::LayoutHolds() const {
  const ModelDescription& d = Description();
  const std::vector<std::string>& labels = Labels();
  const std::size_t k = d.regressors.size();
  if (!d.secondList.empty() || labels.size() != k + 1 || labels[k] != "tau" || !MainLabelsHold(d, labels)) return false;
  const double lower = ScalarResult("lower_limit"), upper = ScalarResult("upper_limit");
  return lower < upper && lower != std::numeric_limits<double>::infinity() &&
         upper != -std::numeric_limits<double>::infinity();
}

const IndexLink& MIM_TobitI::Link() const {
  std::call_once(m_linkMade, [this] { m_link = std::make_unique<TobitLink>(ScalarResult("lower_limit"), ScalarResult("upper_limit")); });
  return *m_link;
}

bool MIM_TobitII::LayoutHolds() const {
  const ModelDescription& d = Description();
  const std::vector<std::string>& labels = Labels();
  const std::size_t k = d.regressors.size(), ks = d.secondList.size();
  if (ks == 0 || labels.size() != k + ks + 2 || !MainLabelsHold(d, labels)) return false;
  for (std::size_t j = 0; j < ks; ++j) {
    if (labels[k + j] != "s$" + d.secondList[j]) return false;
  }
  return labels[k + ks] == "sigma" && labels[k + ks + 1] == "rho";
}

const IndexLink& MIM_TobitII::Link() const {
  static const SelectionLink link;
  return link;
}
