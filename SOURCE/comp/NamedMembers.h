// NamedMembers: values of the five kinds kept by name, the common ground of the structures.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "TavixValue.h"

// Adding a name that exists replaces it, whatever its kind. Getters return an empty pointer when
// there is no member of that name and kind.
class NamedMembers {
public:
  void AddMatrix(const std::string& name, std::shared_ptr<Eigen::MatrixXd> value) {
    m_members[name] = TavixValue::FromMatrix(std::move(value));
  }
  void AddDataset(const std::string& name, std::shared_ptr<Dataset> value) {
    m_members[name] = TavixValue::FromDataset(std::move(value));
  }
  void AddModel(const std::string& name, std::shared_ptr<Model> value) {
    m_members[name] = TavixValue::FromModel(std::move(value));
  }
  void AddStructure(const std::string& name, std::shared_ptr<TavixStructure> value) {
    m_members[name] = TavixValue::FromStructure(std::move(value));
  }
  void AddString(const std::string& name, std::shared_ptr<std::string> value) {
    m_members[name] = TavixValue::FromString(std::move(value));
  }

  std::shared_ptr<Eigen::MatrixXd> GetpMatrix(const std::string& name) const { return GetValue(name).matrix; }
  std::shared_ptr<Dataset> GetpDataset(const std::string& name) const { return GetValue(name).dataset; }
  std::shared_ptr<Model> GetpModel(const std::string& name) const { return GetValue(name).model; }
  std::shared_ptr<TavixStructure> GetpStructure(const std::string& name) const {
    return GetValue(name).structure;
  }
  std::shared_ptr<std::string> GetpString(const std::string& name) const { return GetValue(name).string; }

  // Whether the member exists, and its kind code.
  bool HasMember(const std::string& name, int& code) const;
  // The member as a value (kind UNKNOWN when absent), and setting a member from a value.
  TavixValue GetValue(const std::string& name) const;
  void SetValue(const std::string& name, const TavixValue& value) { m_members[name] = value; }
  std::size_t NumberOfMembers() const { return m_members.size(); }
  // Every member's name, in name order.
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    names.reserve(m_members.size());
    for (const auto& member : m_members) names.push_back(member.first);
    return names;
  }

protected:
  // Takes the member out when it has kind `code`; the value is empty otherwise.
  TavixValue Release(const std::string& name, int code);

  std::map<std::string, TavixValue> m_members;
};
