// NamedMembers: look-up and removal by name.
#include "NamedMembers.h"

bool NamedMembers::HasMember(const std::string& name, int& code) const {
  const auto it = m_members.find(name);
  if (it == m_members.end()) return false;
  code = it->second.code;
  return true;
}

TavixValue NamedMembers::GetValue(const std::string& name) const {
  const auto it = m_members.find(name);
  return it == m_members.end() ? TavixValue{} : it->second;
}

TavixValue NamedMembers::Release(const std::string& name, int code) {
  const auto it = m_members.find(name);
  if (it == m_members.end() || it->second.code != code) return {};
  TavixValue value = std::move(it->second);
  m_members.erase(it);
  return value;
}
