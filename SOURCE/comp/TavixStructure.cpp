// TavixStructure: members by name.
#include "TavixStructure.h"

void TavixStructure::AddMatrix(const std::string& name, std::shared_ptr<Eigen::MatrixXd> value) {
  m_members[name] = TavixValue::FromMatrix(std::move(value));
}
void TavixStructure::AddDataset(const std::string& name, std::shared_ptr<Dataset> value) {
  m_members[name] = TavixValue::FromDataset(std::move(value));
}
void TavixStructure::AddModel(const std::string& name, std::shared_ptr<Model> value) {
  m_members[name] = TavixValue::FromModel(std::move(value));
}
void TavixStructure::AddStructure(const std::string& name, std::shared_ptr<TavixStructure> value) {
  m_members[name] = TavixValue::FromStructure(std::move(value));
}
void TavixStructure::AddString(const std::string& name, std::shared_ptr<std::string> value) {
  m_members[name] = TavixValue::FromString(std::move(value));
}

std::shared_ptr<Eigen::MatrixXd> TavixStructure::GetpMatrix(const std::string& name) const {
  const auto it = m_members.find(name);
  return it == m_members.end() ? nullptr : it->second.matrix;
}
std::shared_ptr<Dataset> TavixStructure::GetpDataset(const std::string& name) const {
  const auto it = m_members.find(name);
  return it == m_members.end() ? nullptr : it->second.dataset;
}
std::shared_ptr<Model> TavixStructure::GetpModel(const std::string& name) const {
  const auto it = m_members.find(name);
  return it == m_members.end() ? nullptr : it->second.model;
}
std::shared_ptr<TavixStructure> TavixStructure::GetpStructure(const std::string& name) const {
  const auto it = m_members.find(name);
  return it == m_members.end() ? nullptr : it->second.structure;
}
std::shared_ptr<std::string> TavixStructure::GetpString(const std::string& name) const {
  const auto it = m_members.find(name);
  return it == m_members.end() ? nullptr : it->second.string;
}

bool TavixStructure::GetMatrix(const std::string& name, Eigen::MatrixXd& out) const {
  const auto m = GetpMatrix(name);
  if (!m) return false;
  out = *m;
  return true;
}

bool TavixStructure::GetString(const std::string& name, std::string& out) const {
  const auto s = GetpString(name);
  if (!s) return false;
  out = *s;
  return true;
}

bool TavixStructure::HasMember(const std::string& name, int& code) const {
  const auto it = m_members.find(name);
  if (it == m_members.end()) return false;
  code = it->second.code;
  return true;
}

void TavixStructure::RemoveOfKind(const std::string& name, int code) {
  const auto it = m_members.find(name);
  if (it != m_members.end() && it->second.code == code) m_members.erase(it);
}

bool TavixStructure::HasKind(int code) const {
  for (const auto& [name, value] : m_members) {
    if (value.code == code) return true;
  }
  return false;
}

void TavixStructure::NamesOfKind(int code, std::vector<std::string>& out) const {
  out.clear();
  for (const auto& [name, value] : m_members) {
    if (value.code == code) out.push_back(name);
  }
}

std::shared_ptr<TavixStructure> TavixStructure::Copy() const {
  auto copy = std::make_shared<TavixStructure>();
  for (const auto& [name, value] : m_members) {
    if (value.code == kind::STRUCTURE) {
      copy->m_members[name] = TavixValue::FromStructure(value.structure->Copy());
    } else {
      copy->m_members[name] = value;
    }
  }
  return copy;
}

TavixValue TavixStructure::GetValue(const std::string& name) const {
  const auto it = m_members.find(name);
  return it == m_members.end() ? TavixValue{} : it->second;
}

void TavixStructure::SetValue(const std::string& name, const TavixValue& value) {
  m_members[name] = value;
}
