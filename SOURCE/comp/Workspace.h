// Workspace: the five name-keyed collections of a session, looked up in a fixed order.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "TavixValue.h"

class Workspace {
public:
  Workspace();
  // A copy holds the same values under a new identity.
  Workspace(const Workspace& other);
  Workspace& operator=(const Workspace& other);

  std::map<std::string, std::shared_ptr<Eigen::MatrixXd>> matrices;
  std::map<std::string, std::shared_ptr<Dataset>> datasets;
  std::map<std::string, std::shared_ptr<Model>> models;
  std::map<std::string, std::shared_ptr<TavixStructure>> structures;
  std::map<std::string, std::shared_ptr<std::string>> strings;

  // The kind code of the first collection holding `name` in the order matrices, datasets,
  // models, structures, strings; -1 when none does.
  int ID_code(const std::string& name) const;
  // The value of `name` from that first collection (kind UNKNOWN when absent).
  TavixValue Get(const std::string& name) const;
  // Stores a value under `name`, removing the name from every other collection first, so one
  // name means one thing after an assignment.
  void Store(const std::string& name, const TavixValue& value);
  // Removes `name` from every collection; false when it was nowhere.
  bool Remove(const std::string& name);
  void Clear();
  // Empties one collection (a kind code).
  void ClearKind(int code);
  // Every name of every collection, in collection order.
  std::vector<std::string> Names() const;

  // Changes whenever an entry is removed or the workspace cleared, so that name look-ups may be
  // cached while it stays the same.
  std::uint64_t Generation() const { return m_generation; }
  // Unique among all workspaces of the process, so a cached look-up never confuses two of them.
  std::uint64_t Id() const { return m_id; }

private:
  std::uint64_t m_generation = 0;
  std::uint64_t m_id;
};
