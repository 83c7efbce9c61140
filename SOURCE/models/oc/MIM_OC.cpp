// The ordered-choice family's estimated models: the probability of each category as their link.
#include "MIM_OC.h"

#include <cstdio>

#include "EventDispatcher.h"
#include "IntervalProbabilities.h"

namespace {

// Prob(y = k-th code | x) = F(c_k - t) - F(c_(k-1) - t) for an index t, with each draw's
// cut-points (taken from the draws, after the coefficients).
class OrderedLink : public IndexLink {
public:
  explicit OrderedLink(const MIM_OrderedChoice& model) : m_model(model) {}

  int Types() const override {
    const auto categories = m_model.GetpMatrix("categories");
    return categories ? static_cast<int>(categories->size()) : 0;
  }
  std::string Describe(int type) const override {
    const auto categories = m_model.GetpMatrix("categories");
    char code[32];
    std::snprintf(code, sizeof code, "%g", (*categories)(type - 1));
    return std::string("Prob(y = ") + code + "|x)";
  }
  void Quantity(int type, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>& draws) const override {
    Apply(type, index, draws, [this](double l, double u) { return m_model.Cdf(u) - m_model.Cdf(l); });
  }
  // d/dt (F(u - t) - F(l - t)) = f(l - t) - f(u - t).
  void Derivative(int type, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>& draws) const override {
    Apply(type, index, draws, [this](double l, double u) { return m_model.Density(l) - m_model.Density(u); });
  }

private:
  // Replaces each index t by g(c_(k-1) - t, c_k - t); F and f vanish at the infinite bounds.
  template <class G>
  void Apply(int type, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>& draws, G g) const {
    const int J = Types();
    const auto k = static_cast<Eigen::Index>(m_model.Description().regressors.size());
    const bool firstFixed = draws.cols() - k == J - 2;
    // Cut-point j (1-based) of draw d.
    auto cut = [&](Eigen::Index d, int j) {
      if (firstFixed) return j == 1 ? 0.0 : draws(d, k + j - 2);
      return draws(d, k + j - 1);
    };
    for (Eigen::Index d = 0; d < index.rows(); ++d) {
      const double lower = type > 1 ? cut(d, type - 1) : -oc::kInf;
      const double upper = type < J ? cut(d, type) : oc::kInf;
      for (Eigen::Index c = 0; c < index.cols(); ++c) {
        const double t = index(d, c);
        index(d, c) = g(lower - t, upper - t);
      }
    }
  }
  const MIM_OrderedChoice& m_model;
};

const ModelClassRegistration kOrderedProbit("OrderedProbit", [] { return std::make_shared<MIM_OrderedProbit>(); });
const ModelClassRegistration kOrderedLogit("OrderedLogit", [] { return std::make_shared<MIM_OrderedLogit>(); });

}  // namespace

MIM_OrderedChoice::MIM_OrderedChoice() : m_link(std::make_unique<OrderedLink>(*this)) {}
MIM_OrderedChoice::~MIM_OrderedChoice() = default;

const IndexLink& MIM_OrderedChoice::Link() const { return *m_link; }

void MIM_OrderedChoice::PrintResults(const EventDispatcher& out) const {
  Model::PrintResults(out);
  const auto categories = GetpMatrix("categories");
  if (!categories || categories->size() < 2) return;
  std::string text = "Categories of " + Description().dependent + ":";
  for (Eigen::Index j = 0; j < categories->size(); ++j) {
    char code[32];
    std::snprintf(code, sizeof code, " %g", (*categories)(j));
    text += code;
  }
  const auto k = static_cast<Eigen::Index>(Description().regressors.size());
  if (static_cast<Eigen::Index>(Labels().size()) - k == categories->size() - 2) {
    text += " (cut1 = 0, fixed: the regressors hold a constant term)";
  }
  out.Print(text + "\n");
}

bool MIM_OrderedChoice::LayoutHolds() const {
  const ModelDescription& d = Description();
  const auto categories = GetpMatrix("categories");
  if ((d.keyword != "oprobit" && d.keyword != "ologit") || !d.secondList.empty() || !categories) return false;
  const Eigen::Index J = categories->size(), k = static_cast<Eigen::Index>(d.regressors.size());
  const auto labels = static_cast<Eigen::Index>(Labels().size());
  if (J < 2 || (labels - k != J - 1 && labels - k != J - 2)) return false;
  for (Eigen::Index j = 0; j < k; ++j) {
    if (Labels()[static_cast<std::size_t>(j)] != d.dependent + "$" + d.regressors[static_cast<std::size_t>(j)]) return false;
  }
  // The cut-points are labelled from cut1, or from cut2 when cut1 is fixed.
  const Eigen::Index firstCut = labels - k == J - 1 ? 1 : 2;
  for (Eigen::Index j = k; j < labels; ++j) {
    if (Labels()[static_cast<std::size_t>(j)] != "cut" + std::to_string(firstCut + j - k)) return false;
  }
  for (Eigen::Index j = 1; j < J; ++j) {
    if ((*categories)(j) != (*categories)(j - 1) + 1.0) return false;
  }
  return true;
}

double MIM_OrderedProbit::Cdf(double x) const { return oc::NormalInterval::Cdf(x); }
double MIM_OrderedProbit::Density(double x) const { return oc::NormalInterval::Density(x); }
double MIM_OrderedLogit::Cdf(double x) const { return oc::LogisticInterval::Cdf(x); }
double MIM_OrderedLogit::Density(double x) const { return oc::LogisticInterval::Density(x); }
