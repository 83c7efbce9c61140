// Model: draws and their summary, named results, and the results table.
#include "Model.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "EventDispatcher.h"
#include "ModelDiagnostics.h"
#include "ValueKind.h"

namespace {

// A number in a column of the results table: five significant digits, right-aligned, with at
// least one blank before it.
std::string Cell(double x, int width = 11) {
  char buffer[64];
  if (std::isnan(x)) {
    std::snprintf(buffer, sizeof buffer, " %*s", width - 1, "-");
  } else {
    std::snprintf(buffer, sizeof buffer, " %*.*g", width - 1, 5, x);
  }
  return buffer;
}

std::string Padded(const std::string& text, std::size_t width) {
  return text.size() >= width ? text + " " : text + std::string(width - text.size(), ' ');
}

std::string Joined(const std::vector<std::string>& names) {
  std::string text;
  for (const auto& n : names) text += (text.empty() ? "" : " ") + n;
  return text;
}

std::map<std::string, std::function<std::shared_ptr<Model>()>>& ModelClasses() {
  static std::map<std::string, std::function<std::shared_ptr<Model>()>> classes;
  return classes;
}

}  // namespace

std::shared_ptr<Model> Model::Create(const std::string& typeName) {
  const auto& classes = ModelClasses();
  const auto it = classes.find(typeName);
  return it == classes.end() ? std::shared_ptr<Model>(new Model()) : it->second();
}

void Model::RegisterClass(const std::string& typeName, std::function<std::shared_ptr<Model>()> make) {
  ModelClasses()[typeName] = std::move(make);
}

std::string Model::RunAction(const std::string& action, const ActionOptions&, const ActionContext&,
                             ActionResult&) const {
  return "Model \"" + TypeName() + "\" has no \"" + action + "\" action.";
}

bool Model::PrintDiagnostics(const EventDispatcher& out) const {
  if (m_draws.empty() || m_draws.front().rows() == 0 || m_labels.empty()) return false;
  out.Print(FormatDiagnostics(m_draws, m_labels));
  return true;
}

void Model::SetDraws(std::vector<Eigen::MatrixXd> draws, std::vector<std::string> labels) {
  m_draws = std::move(draws);
  m_labels = std::move(labels);
  m_summary = numerics::SummarizeDraws(m_draws);
  const Eigen::Index kept = m_draws.empty() ? 0 : m_draws.front().rows();
  // Chains of unequal shapes (only a damaged model has them) pool to nothing rather than overrun.
  const bool even = std::all_of(m_draws.begin(), m_draws.end(), [&](const Eigen::MatrixXd& chain) {
    return chain.rows() == kept && chain.cols() == static_cast<Eigen::Index>(m_labels.size());
  });
  Eigen::MatrixXd pooled(even ? kept * static_cast<Eigen::Index>(m_draws.size()) : 0,
                         static_cast<Eigen::Index>(m_labels.size()));
  for (std::size_t c = 0; even && c < m_draws.size(); ++c) {
    pooled.middleRows(static_cast<Eigen::Index>(c) * kept, kept) = m_draws[c];
  }
  AddResult("draws", std::move(pooled));
  AddResult("post_mean", m_summary.mean);
  AddResult("post_sd", m_summary.sd);
  AddResult("post_median", m_summary.median);
  AddResult("lower", m_summary.lower);
  AddResult("upper", m_summary.upper);
  AddResult("ess", m_summary.ess);
  AddResult("mcse", m_summary.mcse);
  AddResult("geweke", m_summary.geweke);
  AddResult("rhat", m_summary.rhat);
  AddResult("nchains", Eigen::MatrixXd::Constant(1, 1, static_cast<double>(m_draws.size())));
  AddResult("ndraws", Eigen::MatrixXd::Constant(1, 1, static_cast<double>(kept)));
}

Eigen::VectorXd Model::ParameterDraws(const std::string& label) const {
  const auto it = std::find(m_labels.begin(), m_labels.end(), label);
  if (it == m_labels.end()) return {};
  const Eigen::Index column = it - m_labels.begin();
  Eigen::VectorXd values(0);
  for (const Eigen::MatrixXd& chain : m_draws) {
    if (column >= chain.cols()) return {};
    values.conservativeResize(values.size() + chain.rows());
    values.tail(chain.rows()) = chain.col(column);
  }
  return values;
}

void Model::PrintResults(const EventDispatcher& out) const {
  const ModelDescription& d = m_description;
  std::string text = "\n";
  out.Print(text);
  out.Print((d.title.empty() ? d.typeName : d.title) + " (" + d.typeName + ")\n", true);
  text = "Dependent variable:  " + d.dependent + "\n";
  if (!d.regressors.empty()) text += "Regressors:          " + Joined(d.regressors) + "\n";
  if (!d.secondList.empty()) text += "Second list:         " + Joined(d.secondList) + "\n";
  text += "Dataset:             " + m_datasetName;
  if (m_datasetDeleted) text += " (since cleared)";
  text += "\nObservations used:   " + std::to_string(d.observations);
  if (d.observationsDropped > 0) {
    text += " (" + std::to_string(d.observationsDropped) + " left out for missing values)";
  }
  text += "\n";
  if (d.gibbs.size() == 5) {
    char buffer[200];
    std::snprintf(buffer, sizeof buffer,
                  "Gibbs sampler:       %.0f draws, %.0f burn-in, %.0f chain%s, thinning %.0f, "
                  "seed %.0f\n",
                  d.gibbs(0), d.gibbs(1), d.gibbs(2), d.gibbs(2) == 1 ? "" : "s", d.gibbs(3),
                  d.gibbs(4));
    text += buffer;
  }
  for (const auto& c : d.constraints) text += "Constraint:          " + c + "\n";
  if (!d.estimationTime.empty()) text += "Estimation time:     " + d.estimationTime + " s\n";
  out.Print(text);

  std::size_t width = 12;
  for (const auto& l : m_labels) width = std::max(width, l.size() + 2);
  const bool severalChains = m_draws.size() > 1;
  std::string header = Padded("Parameter", width);
  for (const char* column : {"Mean", "Sd", "2.5%", "97.5%", "ESS", "MCSE", "Geweke"}) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%11s", column);
    header += buffer;
  }
  if (severalChains) header += "      R-hat";
  out.Print("\n" + header + "\n", true);
  text.clear();
  for (std::size_t j = 0; j < m_labels.size(); ++j) {
    const auto i = static_cast<Eigen::Index>(j);
    text += Padded(m_labels[j], width) + Cell(m_summary.mean(i)) + Cell(m_summary.sd(i)) +
            Cell(m_summary.lower(i)) + Cell(m_summary.upper(i)) +
            Cell(std::round(m_summary.ess(i))) + Cell(m_summary.mcse(i)) +
            Cell(m_summary.geweke.cols() > 0 ? m_summary.geweke(i, 0) : NAN);
    if (severalChains) text += Cell(m_summary.rhat(i));
    text += "\n";
  }
  if (m_summary.geweke.cols() > 1) text += "(Geweke's z-score of the first chain)\n";
  const double lr = ScalarResult("logML");
  const double cj = ScalarResult("logML_CJ");
  if (!std::isnan(lr) || !std::isnan(cj)) {
    text += "\nLog-marginal likelihood\n";
    if (!std::isnan(lr)) text += "  Lewis & Raftery:   " + Cell(lr, 0) + "\n";
    if (!std::isnan(cj)) text += "  Chib & Jeliazkov:  " + Cell(cj, 0) + "\n";
  }
  out.Print(text);
}

void Model::AddResult(const std::string& name, Eigen::MatrixXd value) {
  m_results[name] = std::make_shared<Eigen::MatrixXd>(std::move(value));
}

bool Model::HasMember(const std::string& name, int& code) const {
  if (m_results.find(name) == m_results.end()) return false;
  code = kind::MATRIX;
  return true;
}

std::shared_ptr<Eigen::MatrixXd> Model::GetpMatrix(const std::string& name) const {
  const auto it = m_results.find(name);
  return it == m_results.end() ? nullptr : it->second;
}

std::vector<std::string> Model::MemberNames() const {
  std::vector<std::string> names;
  for (const auto& [name, value] : m_results) names.push_back(name);
  return names;
}

double Model::ScalarResult(const std::string& name) const {
  const auto it = m_results.find(name);
  if (it == m_results.end() || it->second->size() != 1) return std::numeric_limits<double>::quiet_NaN();
  return (*it->second)(0, 0);
}

void Model::SetDataset(std::weak_ptr<Dataset> dataset, std::string name) {
  m_dataset = std::move(dataset);
  m_datasetName = std::move(name);
  m_datasetDeleted = false;
}
