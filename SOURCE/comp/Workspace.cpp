// Workspace: look-up order, storing and removing.
#include "Workspace.h"

#include "ValueKind.h"

#include <atomic>

namespace {
std::uint64_t NextWorkspaceId() {
  static std::atomic<std::uint64_t> next{1};
  return next.fetch_add(1, std::memory_order_relaxed);
}
}  // namespace

Workspace::Workspace() : m_id(NextWorkspaceId()) {}

Workspace::Workspace(const Workspace& other)
    : matrices(other.matrices),
      datasets(other.datasets),
      models(other.models),
      structures(other.structures),
      strings(other.strings),
      m_id(NextWorkspaceId()) {}

Workspace& Workspace::operator=(const Workspace& other) {
  if (this != &other) {
    matrices = other.matrices;
    datasets = other.datasets;
    models = other.models;
    structures = other.structures;
    strings = other.strings;
    ++m_generation;  // entries were replaced
  }
  return *this;
}

int Workspace::ID_code(const std::string& name) const {
  if (matrices.count(name)) return kind::MATRIX;
  if (datasets.count(name)) return kind::DATASET;
  if (models.count(name)) return kind::MODEL;
  if (structures.count(name)) return kind::STRUCTURE;
  if (strings.count(name)) return kind::STRING;
  return kind::UNKNOWN;
}

TavixValue Workspace::Get(const std::string& name) const {
  if (auto it = matrices.find(name); it != matrices.end()) return TavixValue::FromMatrix(it->second);
  if (auto it = datasets.find(name); it != datasets.end()) return TavixValue::FromDataset(it->second);
  if (auto it = models.find(name); it != models.end()) return TavixValue::FromModel(it->second);
  if (auto it = structures.find(name); it != structures.end()) {
    return TavixValue::FromStructure(it->second);
  }
  if (auto it = strings.find(name); it != strings.end()) return TavixValue::FromString(it->second);
  return {};
}

void Workspace::Store(const std::string& name, const TavixValue& value) {
  // Replacing a matrix by a matrix keeps the map entry: no removal, caches stay valid.
  if (value.code != kind::MATRIX || !matrices.count(name)) Remove(name);
  switch (value.code) {
    case kind::MATRIX: matrices[name] = value.matrix; break;
    case kind::DATASET: datasets[name] = value.dataset; break;
    case kind::MODEL: models[name] = value.model; break;
    case kind::STRUCTURE: structures[name] = value.structure; break;
    case kind::STRING: strings[name] = value.string; break;
    default: break;
  }
}

bool Workspace::Remove(const std::string& name) {
  const bool removed = matrices.erase(name) + datasets.erase(name) + models.erase(name) +
                           structures.erase(name) + strings.erase(name) > 0;
  if (removed) ++m_generation;
  return removed;
}

void Workspace::ClearKind(int code) {
  switch (code) {
    case kind::MATRIX: matrices.clear(); break;
    case kind::DATASET: datasets.clear(); break;
    case kind::MODEL: models.clear(); break;
    case kind::STRUCTURE: structures.clear(); break;
    case kind::STRING: strings.clear(); break;
    default: return;
  }
  ++m_generation;
}

void Workspace::Clear() {
  matrices.clear();
  datasets.clear();
  models.clear();
  structures.clear();
  strings.clear();
  ++m_generation;
}

std::vector<std::string> Workspace::Names() const {
  std::vector<std::string> names;
  for (const auto& [name, value] : matrices) names.push_back(name);
  for (const auto& [name, value] : datasets) names.push_back(name);
  for (const auto& [name, value] : models) names.push_back(name);
  for (const auto& [name, value] : structures) names.push_back(name);
  for (const auto& [name, value] : strings) names.push_back(name);
  return names;
}
