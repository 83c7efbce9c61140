// TavixOrderStructure: ordered outputs.
#include "TavixOrderStructure.h"

void TavixOrderStructure::AddMatrix(const std::string& name, std::shared_ptr<Eigen::MatrixXd> value) {
  m_members[name] = TavixValue::FromMatrix(std::move(value));
}
void TavixOrderStructure::AddDataset(const std::string& name, std::shared_ptr<Dataset> value) {
  m_members[name] = TavixValue::FromDataset(std::move(value));
}
void TavixOrderStructure::AddModel(const std::string& name, std::shared_ptr<Model> value) {
  m_members[name] = TavixValue::FromModel(std::move(value));
}
void TavixOrderStructure::AddStructure(const std::string& name,
                                       std::shared_ptr<TavixStructure> value) {
  m_members[name] = TavixValue::FromStructure(std::move(value));
}
void TavixOrderStructure::AddString(const std::string& name, std::shared_ptr<std::string> value) {
  m_members[name] = TavixValue::FromString(std::move(value));
}

std::shared_ptr<Eigen::MatrixXd> TavixOrderStructure::GetpMatrix(const std::string& name) const {
  const auto it = m_members.find(name);
  return it == m_members.end() ? nullptr : it->second.matrix;
}
std::shared_ptr<Dataset> TavixOrderStructure::GetpDataset(const std::string& name) const {
  const auto it = m_members.find(name);
  return it == m_members.end() ? nullptr : it->second.dataset;
}
std::shared_ptr<Model> TavixOrderStructure::GetpModel(const std::string& name) const {
  const auto it = m_members.find(name);
  return it == m_members.end() ? nullptr : it->second.model;
}
std::shared_ptr<TavixStructure> TavixOrderStructure::GetpStructure(const std::string& name) const {
  const auto it = m_members.find(name);
  return it == m_members.end() ? nullptr : it->second.structure;
}
std::shared_ptr<std::string> TavixOrderStructure::GetpString(const std::string& name) const {
  const auto it = m_members.find(name);
  return it == m_members.end() ? nullptr : it->second.string;
}

bool TavixOrderStructure::HasMember(const std::string& name, int& code) const {
  const auto it = m_members.find(name);
  if (it == m_members.end()) return false;
  code = it->second.code;
  return true;
}

TavixValue TavixOrderStructure::Release(const std::string& name, int code) {
  const auto it = m_members.find(name);
  if (it == m_members.end() || it->second.code != code) return {};
  TavixValue value = std::move(it->second);
  m_members.erase(it);
  return value;
}

void TavixOrderStructure::RemoveMatrix(const std::string& name) { Release(name, kind::MATRIX); }
void TavixOrderStructure::RemoveString(const std::string& name) { Release(name, kind::STRING); }
std::shared_ptr<Dataset> TavixOrderStructure::ReleaseDataset(const std::string& name) {
  return Release(name, kind::DATASET).dataset;
}
std::shared_ptr<Model> TavixOrderStructure::ReleaseModel(const std::string& name) {
  return Release(name, kind::MODEL).model;
}
std::shared_ptr<TavixStructure> TavixOrderStructure::ReleaseStructure(const std::string& name) {
  return Release(name, kind::STRUCTURE).structure;
}

void TavixOrderStructure::Clear() {
  m_members.clear();
  m_order.clear();
}

void TavixOrderStructure::AddElementOrder(int position, int code) {
  if (position < 0) return;
  if (static_cast<std::size_t>(position) >= m_order.size()) {
    m_order.resize(static_cast<std::size_t>(position) + 1, kind::UNKNOWN);
  }
  m_order[static_cast<std::size_t>(position)] = code;
}

int TavixOrderStructure::GetItemCode(int position) const {
  if (position < 0 || static_cast<std::size_t>(position) >= m_order.size()) return kind::UNKNOWN;
  return m_order[static_cast<std::size_t>(position)];
}

void TavixOrderStructure::Append(const TavixValue& value) {
  const int position = NumberOfElements();
  m_members[std::to_string(position)] = value;
  AddElementOrder(position, value.code);
}

TavixValue TavixOrderStructure::GetValue(int position) const {
  const auto it = m_members.find(std::to_string(position));
  return it == m_members.end() ? TavixValue{} : it->second;
}
