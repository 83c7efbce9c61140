// The multinomial choice models' probabilities and the names of their predicted quantities.
#include "MIM_Choice.h"

#include <cmath>

namespace {

// Names the probability of each alternative; the probabilities themselves come from the model's
// indices (SeveralIndices), so this link is never asked for them.
class AlternativesLink : public IndexLink {
public:
  AlternativesLink(std::string dependent, std::vector<long long> codes)
      : m_dependent(std::move(dependent)), m_codes(std::move(codes)) {}
  int Types() const override { return static_cast<int>(m_codes.size()); }
  std::string Describe(int type) const override {
    return "Prob(" + m_dependent + " = " + std::to_string(m_codes[static_cast<std::size_t>(type - 1)]) + "|x)";
  }
  void Quantity(int, Eigen::Ref<Eigen::MatrixXd>, const Eigen::Ref<const Eigen::MatrixXd>&) const override {}
  void Derivative(int, Eigen::Ref<Eigen::MatrixXd>, const Eigen::Ref<const Eigen::MatrixXd>&) const override {}

private:
  std::string m_dependent;
  std::vector<long long> m_codes;
};

const ModelClassRegistration kMNLogit("MNLogit", [] { return std::make_shared<MIM_MNLogit>(); });
const ModelClassRegistration kCLogit("CLogit", [] { return std::make_shared<MIM_CLogit>(); });
const ModelClassRegistration kMNProbit("MNProbit", [] { return std::make_shared<MIM_MNProbit>(); });
const ModelClassRegistration kCProbit("CProbit", [] { return std::make_shared<MIM_CProbit>(); });
const ModelClassRegistration kMVProbit("MVProbit", [] { return std::make_shared<MIM_MVProbit>(); });
const ModelClassRegistration kMVProbit2("MVProbit2", [] { return std::make_shared<MIM_MVProbit>(); });
const ModelClassRegistration kMVProbit3("MVProbit3", [] { return std::make_shared<MIM_MVProbit>(); });

}  // namespace

std::vector<long long> MultinomialChoiceModel::Codes() const {
  std::vector<long long> codes;
  if (const auto kept = GetpMatrix("alternatives")) {
    for (Eigen::Index j = 0; j < kept->size(); ++j) codes.push_back(static_cast<long long>((*kept)(j)));
  }
  return codes;
}

Eigen::Index MultinomialChoiceModel::BasePosition() const {
  const std::vector<long long> codes = Codes();
  const double base = ScalarResult("base");
  for (std::size_t j = 0; j < codes.size(); ++j) {
    if (static_cast<double>(codes[j]) == base) return static_cast<Eigen::Index>(j);
  }
  return 0;
}

const IndexLink& MultinomialChoiceModel::Link() const {
  if (!m_link) m_link = std::make_unique<AlternativesLink>(Description().dependent, Codes());
  return *m_link;
}

void MultinomialChoiceModel::QuantityOfRegressors(int type, const Eigen::Ref<const Eigen::MatrixXd>& X,
                                                  const Eigen::MatrixXd& draws, Eigen::MatrixXd& out) const {
  const Eigen::Index k = X.cols(), others = static_cast<Eigen::Index>(Codes().size()) - 1;
  thread_local std::vector<Eigen::MatrixXd> indices;
  indices.resize(static_cast<std::size_t>(others));
  for (Eigen::Index j = 0; j < others; ++j) {
    indices[static_cast<std::size_t>(j)].noalias() = draws.middleCols(j * k, k) * X.transpose();
  }
  // Type t is the t-th code; the base is alternative 0, the others follow in the order of codes.
  const Eigen::Index position = type - 1, base = BasePosition();
  const Eigen::Index alternative = position == base ? 0 : (position < base ? position + 1 : position);
  Probability(alternative, indices, draws, out);
}

void MIM_MNLogit::Probability(Eigen::Index alternative, const std::vector<Eigen::MatrixXd>& indices,
                              const Eigen::MatrixXd&, Eigen::MatrixXd& out) const {
  // e^(eta_a - top) / (e^-top + sum_j e^(eta_j - top)), top = max(0, eta_j): finite for any index.
  thread_local Eigen::MatrixXd top, total;
  top = Eigen::MatrixXd::Zero(indices.front().rows(), indices.front().cols());
  for (const auto& eta : indices) top = top.cwiseMax(eta);
  total = (-top).array().exp();
  for (const auto& eta : indices) total.array() += (eta - top).array().exp();
  if (alternative == 0) {
    out = (-top).array().exp() / total.array();
  } else {
    out = (indices[static_cast<std::size_t>(alternative - 1)] - top).array().exp() / total.array();
  }
}
