// The estimated SUR system: its equations read back from the labels, each acted on as a linear
// model over the rows the system used.
#include "MIM_SE.h"

#include "Dataset.h"
#include "MIM_LM.h"
#include "SystemRegression.h"

namespace {

// One equation of a system: a linear model whose rows are those where every variable of the
// system has a value.
class SystemEquation : public MIM_LinearFamily {
public:
  explicit SystemEquation(std::vector<std::string> systemVariables) : m_systemVariables(std::move(systemVariables)) {}

protected:
  std::vector<std::string> ExtraVariables(const Dataset&) const override { return m_systemVariables; }

private:
  std::vector<std::string> m_systemVariables;
};

}  // namespace

std::vector<MIM_SUR::Equation> MIM_SUR::Equations() const {
  std::vector<Equation> equations;
  const std::vector<std::string>& labels = Labels();
  for (std::size_t j = 0; j < labels.size(); ++j) {
    const std::string& label = labels[j];
    if (label.rfind("sigma2$", 0) == 0) break;
    const std::size_t dollar = label.find('$');
    if (dollar == std::string::npos) return {};
    const std::string dependent = label.substr(0, dollar);
    if (equations.empty() || equations.back().dependent != dependent) {
      equations.push_back({dependent, {}, static_cast<Eigen::Index>(j)});
    }
    equations.back().regressors.push_back(label.substr(dollar + 1));
  }
  return equations;
}

bool MIM_SUR::LayoutHolds() const {
  const std::vector<Equation> equations = Equations();
  if (equations.size() < 2) return false;
  std::size_t coefficients = 0;
  std::vector<std::string> names;
  for (const Equation& e : equations) {
    coefficients += e.regressors.size();
    names.push_back(e.dependent);
  }
  std::vector<std::string> expected(Labels().begin(), Labels().begin() + static_cast<std::ptrdiff_t>(coefficients));
  for (const std::string& label : SystemRegression::CovarianceLabels(names)) expected.push_back(label);
  return expected == Labels();
}

bool MIM_SUR::ProvidesAction(const std::string& action) const {
  return action == "mfx" || action == "predict" || action == "store";
}

std::shared_ptr<MIM_LinearFamily> MIM_SUR::EquationModel(const std::vector<Equation>& equations, std::size_t j) const {
  const Equation& e = equations[j];
  std::vector<std::string> systemVariables;
  for (const Equation& other : equations) {
    systemVariables.push_back(other.dependent);
    for (const std::string& r : other.regressors) {
      if (r != "constant") systemVariables.push_back(r);
    }
  }
  auto model = std::make_shared<SystemEquation>(systemVariables);
  ModelDescription& d = model->Description();
  d = Description();
  d.keyword = "lm";
  d.typeName = "LM";
  d.dependent = e.dependent;
  d.regressors = e.regressors;
  d.secondList.clear();
  const auto k = static_cast<Eigen::Index>(e.regressors.size());
  std::vector<Eigen::MatrixXd> draws;
  for (const Eigen::MatrixXd& chain : Draws()) draws.push_back(chain.middleCols(e.offset, k));
  std::vector<std::string> labels(Labels().begin() + e.offset, Labels().begin() + e.offset + k);
  model->SetDraws(std::move(draws), std::move(labels));
  model->SetDataset(GetDataset(), DatasetName());
  return model;
}

std::string MIM_SUR::RunAction(const std::string& action, const ActionOptions& options, const ActionContext& context,
                               ActionResult& result) const {
  const std::vector<Equation> equations = Equations();
  if (action == "store") {
    for (std::size_t j = 0; j < equations.size(); ++j) {
      ActionResult one;
      const std::string status = EquationModel(equations, j)->RunAction(action, options, context, one);
      if (status != "OK") return status;
      for (auto& [name, values] : one.variables) {
        result.variables.emplace_back(name + "_" + equations[j].dependent, std::move(values));
      }
    }
    return "OK";
  }
  const auto count = static_cast<long>(equations.size());
  if (options.type < 1 || options.type > count) {
    return "Model \"" + context.modelName + "\" has " + std::to_string(count) +
           " equations: \"type\" chooses one of them, from 1 to " + std::to_string(count) + ".";
  }
  ActionOptions one = options;
  one.type = 1;
  return EquationModel(equations, static_cast<std::size_t>(options.type - 1))->RunAction(action, one, context, result);
}
