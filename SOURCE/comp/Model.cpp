// Model: results by name.
#include "Model.h"

#include "EventDispatcher.h"
#include "ValueKind.h"

void Model::PrintResults(const EventDispatcher& out) const {
  std::string text = "\n" + TypeName() + "\n";
  for (const auto& [name, value] : m_results) text += "  " + name + "\n";
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

void Model::SetDataset(std::weak_ptr<Dataset> dataset, std::string name) {
  m_dataset = std::move(dataset);
  m_datasetName = std::move(name);
}
