// MatrixEntryCache: remembers where a name's matrix lives in a workspace between look-ups.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Workspace.h"

// Map entries stay where they are until something is removed, which changes the workspace's
// generation; the cache is valid while the workspace and its generation are the same.
class MatrixEntryCache {
public:
  // The matrices-map entry of `name`, or null when the name holds no matrix.
  std::shared_ptr<Eigen::MatrixXd>* Find(Workspace& ws, const std::string& name) const {
    if (m_workspace != ws.Id() || m_generation != ws.Generation() || !m_entry) {
      const auto it = ws.matrices.find(name);
      if (it == ws.matrices.end()) return nullptr;
      m_workspace = ws.Id();
      m_generation = ws.Generation();
      m_entry = &it->second;
    }
    return m_entry;
  }

private:
  mutable std::uint64_t m_workspace = 0;
  mutable std::uint64_t m_generation = 0;
  mutable std::shared_ptr<Eigen::MatrixXd>* m_entry = nullptr;
};
