// TavixStructure: copies, kinds and names of members.
#include "TavixStructure.h"

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
