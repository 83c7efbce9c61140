// The count models' link, exposure and layout.
#include "MIM_CD.h"

#include <cmath>

namespace {

const std::string kExposureMarker = " with exposure ";

// E(y|x) = exp(x'b), whose derivative is itself.
class ExponentialLink : public IndexLink {
public:
  explicit ExponentialLink(std::string description) : m_description(std::move(description)) {}
  std::string Describe(int) const override { return m_description; }
  void Quantity(int, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>&) const override {
    index = index.array().exp().matrix();
  }
  void Derivative(int, Eigen::Ref<Eigen::MatrixXd> index, const Eigen::Ref<const Eigen::MatrixXd>&) const override {
    index = index.array().exp().matrix();
  }

private:
  std::string m_description;
};

const ModelClassRegistration kPoisson("Poisson", [] { return std::make_shared<MIM_Poisson>(); });
const ModelClassRegistration kNegBinom("NegBinom", [] { return std::make_shared<MIM_NegBinom>(); });

}  // namespace

std::string MIM_CountModel::Title(const std::string& model, const std::string& exposure) {
  return exposure.empty() ? model : model + kExposureMarker + exposure;
}

std::string MIM_CountModel::Exposure() const {
  const std::string& title = Description().title;
  const auto at = title.rfind(kExposureMarker);
  return at == std::string::npos ? std::string() : title.substr(at + kExposureMarker.size());
}

bool MIM_CountModel::LayoutHolds() const {
  const ModelDescription& d = Description();
  std::vector<std::string> expected;
  for (const auto& regressor : d.regressors) expected.push_back(d.dependent + "$" + regressor);
  for (const auto& label : FurtherLabels()) expected.push_back(label);
  const std::string exposure = Exposure();
  const bool exposureNamed = Description().title.find(kExposureMarker) == std::string::npos || !exposure.empty();
  return d.keyword == Keyword() && d.secondList.empty() && Labels() == expected && exposureNamed;
}

const IndexLink& MIM_CountModel::Link() const {
  static const ExponentialLink plain("E(y|x)");
  static const ExponentialLink perExposure("E(y|x) for an exposure of one");
  return Exposure().empty() ? static_cast<const IndexLink&>(plain) : perExposure;
}

std::string MIM_CountModel::DescribeFurther(int) const { return "E(y|x, exposure), with each observation's exposure"; }

void MIM_CountModel::FurtherQuantity(int, const ActionData& data, Eigen::Index first, Eigen::MatrixXd& index) const {
  // exposure exp(x'b) = exp(x'b + log exposure), observation by observation (the columns).
  const auto exposure = data.data.extra.col(0);
  for (Eigen::Index c = 0; c < index.cols(); ++c) {
    index.col(c) = (index.col(c).array() + std::log(exposure(first + c))).exp().matrix();
  }
}

std::vector<std::string> MIM_CountModel::ExtraVariables(const Dataset&) const {
  const std::string exposure = Exposure();
  return exposure.empty() ? std::vector<std::string>{} : std::vector<std::string>{exposure};
}
