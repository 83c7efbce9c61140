// The linear family's estimated models: predictions through x'b, fitted values, residuals and
// individual effects.
#include "MIM_LM.h"

#include <cmath>
#include <map>

#include "Dataset.h"
#include "RandomEngine.h"

void MIM_LinearFamily::SetEstimates(const Estimator& estimator, const std::string& typeName,
                                    const std::string& title, std::vector<std::string> labels, double logML,
                                    double logML_CJ) {
  Description().typeName = typeName;
  Description().title = title;
  Description().gibbs = estimator.Settings().ToVector();
  SetDraws(estimator.Draws(), std::move(labels));
  AddResult("logML", Eigen::MatrixXd::Constant(1, 1, logML));
  AddResult("logML_CJ", Eigen::MatrixXd::Constant(1, 1, logML_CJ));
}

namespace {

// The labels start with dependent$regressor for each regressor, and the keyword is `keyword`.
bool MainListHolds(const Model& model, const char* keyword) {
  const ModelDescription& d = model.Description();
  const std::vector<std::string>& labels = model.Labels();
  if (d.keyword != keyword || labels.size() < d.regressors.size()) return false;
  for (std::size_t j = 0; j < d.regressors.size(); ++j) {
    if (labels[j] != d.dependent + "$" + d.regressors[j]) return false;
  }
  return true;
}

}  // namespace

bool MIM_LinearFamily::LayoutHolds() const {
  const ModelDescription& d = Description();
  const std::vector<std::string>& labels = Labels();
  const std::size_t k = d.regressors.size();
  if (!MainListHolds(*this, "lm")) return false;
  if (d.typeName != "LM_HET") return d.secondList.empty() && labels.size() == k + 1 && labels[k] == "tau";
  if (d.secondList.empty() || labels.size() != k + d.secondList.size()) return false;
  for (std::size_t j = 0; j < d.secondList.size(); ++j) {
    const std::string& label = labels[k + j];
    const std::string tail = "$" + d.secondList[j];
    if (label.size() < tail.size() || label.compare(label.size() - tail.size(), tail.size(), tail) != 0) return false;
  }
  return true;
}

bool MIM_LM_RE::LayoutHolds() const {
  const ModelDescription& d = Description();
  const std::vector<std::string>& labels = Labels();
  const std::size_t k = d.regressors.size();
  return MainListHolds(*this, "lm_re") && d.secondList.empty() && labels.size() == k + 2 && labels[k] == "tau" &&
         labels[k + 1] == "omega";
}

const IndexLink& MIM_LinearFamily::Link() const {
  static const IdentityLink link;
  return link;
}

std::vector<std::string> MIM_LinearFamily::StoredSeries() const { return {"fitted", "residuals"}; }

std::vector<std::pair<std::string, Eigen::VectorXd>> MIM_LinearFamily::StoreSeries(const std::string& name,
                                                                                   const ActionData& data) const {
  // x'b is linear in b, so the posterior mean of the fit is the fit at the posterior mean.
  const Eigen::VectorXd b = CoefficientDraws().colwise().mean().transpose();
  const Eigen::VectorXd fitted = data.data.X * b;
  if (name == "fitted") return {{"fitted", fitted}};
  return {{"residuals", data.data.y - fitted}};
}

std::string MIM_LM_RE::DescribeFurther(int) const { return "E(y|x, a_i), with the individual effects"; }

std::vector<std::string> MIM_LM_RE::ExtraVariables(const Dataset& dataset) const {
  return {dataset.Structure().groupVariable};
}

MIM_LM_RE::GroupSums MIM_LM_RE::SumByGroup(const ActionData& data) {
  GroupSums sums;
  const Eigen::VectorXd& codes = data.data.extra.col(0);
  std::map<double, int> numbers;
  for (Eigen::Index i = 0; i < codes.size(); ++i) {
    sums.group.push_back(numbers.try_emplace(codes(i), static_cast<int>(numbers.size())).first->second);
  }
  const auto groups = static_cast<Eigen::Index>(numbers.size());
  sums.X = Eigen::MatrixXd::Zero(data.data.X.cols(), groups);
  sums.y = Eigen::VectorXd::Zero(groups);
  sums.size = Eigen::VectorXd::Zero(groups);
  for (Eigen::Index i = 0; i < codes.size(); ++i) {
    const int g = sums.group[static_cast<std::size_t>(i)];
    sums.X.col(g) += data.data.X.row(i).transpose();
    sums.y(g) += data.data.y(i);
    sums.size(g) += 1.0;
  }
  return sums;
}

void MIM_LM_RE::FurtherQuantity(int, const ActionData& data, Eigen::Index first, Eigen::MatrixXd& index) const {
  // a_i | b, tau, omega, y ~ N(tau (sy_i - s_i'b) / (tau T_i + omega), 1 / (tau T_i + omega)).
  const GroupSums sums = SumByGroup(data);
  const Eigen::MatrixXd& draws = PooledDraws();
  const auto k = static_cast<Eigen::Index>(Description().regressors.size());
  const Eigen::MatrixXd B = draws.leftCols(k);
  RandomEngine rng;  // seeded by the block, so the result does not depend on the threads
  rng.Seed(static_cast<std::uint64_t>(Description().gibbs(4)) * 1000003u + static_cast<std::uint64_t>(first));
  for (Eigen::Index c = 0; c < index.cols(); ++c) {
    const int g = sums.group[static_cast<std::size_t>(first + c)];
    const Eigen::VectorXd residualSums = sums.y(g) - (B * sums.X.col(g)).array();
    for (Eigen::Index d = 0; d < index.rows(); ++d) {
      const double tau = draws(d, k), omega = draws(d, k + 1);
      const double precision = tau * sums.size(g) + omega;
      index(d, c) += tau * residualSums(d) / precision + rng.Normal() / std::sqrt(precision);
    }
  }
}

std::vector<std::string> MIM_LM_RE::StoredSeries() const { return {"fitted", "residuals", "effects"}; }

std::vector<std::pair<std::string, Eigen::VectorXd>> MIM_LM_RE::StoreSeries(const std::string& name,
                                                                            const ActionData& data) const {
  if (name != "effects") return MIM_LinearFamily::StoreSeries(name, data);
  // E(a_i | y): the conditional mean of each draw, averaged over the draws.
  const GroupSums sums = SumByGroup(data);
  const Eigen::MatrixXd& draws = PooledDraws();
  const auto k = static_cast<Eigen::Index>(Description().regressors.size());
  const Eigen::MatrixXd residualSums = (-(draws.leftCols(k) * sums.X)).rowwise() + sums.y.transpose();
  Eigen::VectorXd effects = Eigen::VectorXd::Zero(sums.y.size());
  for (Eigen::Index d = 0; d < draws.rows(); ++d) {
    const double tau = draws(d, k), omega = draws(d, k + 1);
    effects += (tau * residualSums.row(d).transpose().array() / (tau * sums.size.array() + omega)).matrix();
  }
  effects /= static_cast<double>(draws.rows());
  Eigen::VectorXd perObservation(data.data.y.size());
  for (Eigen::Index i = 0; i < perObservation.size(); ++i) perObservation(i) = effects(sums.group[static_cast<std::size_t>(i)]);
  return {{"effects", perObservation}};
}

namespace {
const ModelClassRegistration kLM("LM", [] { return std::make_shared<MIM_LinearFamily>(); });
const ModelClassRegistration kLMHet("LM_HET", [] { return std::make_shared<MIM_LinearFamily>(); });
const ModelClassRegistration kLMRe("LM_RE", [] { return std::make_shared<MIM_LM_RE>(); });
}  // namespace
