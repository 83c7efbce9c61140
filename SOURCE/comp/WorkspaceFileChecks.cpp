// WorkspaceFileChecks: the rules a value meets in a workspace file, shared by save and load.
#include "WorkspaceFileChecks.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>
#include <typeinfo>

#include "CheckID.h"
#include "Dataset.h"
#include "Model.h"

namespace {

bool WholeInRange(double x, double low) { return x >= low && x <= kMaxCount && x == std::floor(x); }

// Distinct identifiers (the words of the language allowed: "constant" is a regressor).
bool DistinctIdentifiers(const std::vector<std::string>& names) {
  std::set<std::string> seen;
  for (const std::string& name : names) {
    if (!CheckID(name) || !seen.insert(name).second) return false;
  }
  return true;
}

}  // namespace

bool NameFitsFile(const std::string& name, const ReservedWords& reserved) {
  return CheckID(name) && !(reserved && reserved(name));
}

std::string MatrixProblem(const Eigen::MatrixXd& m) {
  if (m.size() == 0 && std::max(m.rows(), m.cols()) > kMaxEmptyExtent) {
    return "it is an empty matrix of " + std::to_string(m.rows()) + " x " + std::to_string(m.cols());
  }
  return "";
}

std::string DatasetProblem(const Dataset& d, const ReservedWords& reserved) {
  const std::vector<std::string>& names = d.VariableNames();
  if (static_cast<Eigen::Index>(names.size()) != d.Data().cols()) return "its variables do not match its data";
  if (const std::string problem = MatrixProblem(d.Data()); !problem.empty()) return problem;
  std::set<std::string> seen;
  for (const std::string& name : names) {
    if (!NameFitsFile(name, reserved)) return "its variable \"" + name + "\" is not a valid name";
    if (!seen.insert(name).second) return "two of its variables are named \"" + name + "\"";
  }
  for (std::size_t j = 0; j < names.size(); ++j) {
    const auto& labels = d.Labels(names[j]);
    if (labels.empty()) continue;
    const auto codes = d.Data().col(static_cast<Eigen::Index>(j));
    const auto count = static_cast<double>(labels.size());
    for (Eigen::Index i = 0; i < codes.size(); ++i) {
      const double code = codes(i);
      if (!std::isnan(code) && !(code >= 1.0 && code <= count && code == std::floor(code))) {
        return "its string variable \"" + names[j] + "\" holds a code without a text";
      }
    }
  }
  const DatasetStructure& s = d.Structure();
  const auto missing = [&](const std::string& variable) { return !d.VariableExists(variable); };
  if ((s.kind == DatasetKind::TimeSeries || s.kind == DatasetKind::Panel) && missing(s.timeVariable)) {
    return "its time variable \"" + s.timeVariable + "\" is not among its variables";
  }
  if (s.kind == DatasetKind::Panel && missing(s.groupVariable)) {
    return "its group variable \"" + s.groupVariable + "\" is not among its variables";
  }
  return "";
}

std::string ModelProblem(const Model& m) {
  const ModelDescription& d = m.Description();
  // Draws, burn-in, chains, thinning, seed: whole numbers, all positive but the burn-in.
  if (d.gibbs.size() != 5) return "its sampler settings are not the five numbers a model keeps";
  for (Eigen::Index i = 0; i < 5; ++i) {
    if (!WholeInRange(d.gibbs(i), i == 1 ? 0.0 : 1.0)) return "its sampler settings are not positive whole numbers";
  }
  const auto chains = static_cast<std::size_t>(d.gibbs(2));
  const auto kept = static_cast<Eigen::Index>(std::floor(d.gibbs(0) / d.gibbs(3)));
  const auto& draws = m.Draws();
  const auto parameters = static_cast<Eigen::Index>(m.Labels().size());
  if (draws.size() != chains) return "its draws are not one matrix per chain";
  if (parameters == 0) return "it has no parameters";
  for (const Eigen::MatrixXd& chain : draws) {
    if (chain.rows() != kept || kept == 0) return "its draws are not as many as its sampler settings keep";
    if (chain.cols() != parameters) return "its draws are not one column per parameter";
  }
  if (!WholeInRange(static_cast<double>(d.observations), 0.0) ||
      !WholeInRange(static_cast<double>(d.observationsDropped), 0.0)) {
    return "its counts of observations are out of range";
  }
  // Systems and series models name several dependent variables, separated by single blanks.
  if (!d.dependent.empty()) {
    std::vector<std::string> dependents(1);
    for (char c : d.dependent) {
      if (c == ' ') dependents.emplace_back();
      else dependents.back() += c;
    }
    if (!DistinctIdentifiers(dependents)) return "its dependent variable is not a valid name";
  }
  if (!DistinctIdentifiers(d.regressors) || !DistinctIdentifiers(d.secondList)) {
    return "its lists of variables hold invalid or repeated names";
  }
  for (const std::string& name : m.MemberNames()) {
    if (!CheckID(name)) return "its result \"" + name + "\" is not a valid name";
    if (const std::string problem = MatrixProblem(*m.GetpMatrix(name)); !problem.empty()) return problem;
  }
  const double nobs = m.ScalarResult("nobs");
  if (!std::isnan(nobs) && nobs != static_cast<double>(d.observations)) {
    return "its result \"nobs\" differs from its count of observations";
  }
  // Checked as the class load makes of the model, should this one be of another.
  const std::shared_ptr<Model> loaded = Model::Create(d.typeName);
  const Model* as = &m;
  const Model& fresh = *loaded;
  if (typeid(fresh) != typeid(m)) {
    loaded->CopyContentsFrom(m);
    as = loaded.get();
  }
  if (!as->LayoutHolds()) return "its parameters are not laid out as a \"" + d.typeName + "\" model's";
  return "";
}
