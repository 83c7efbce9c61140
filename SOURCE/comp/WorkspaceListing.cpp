#include "WorkspaceListing.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "Dataset.h"
#include "Model.h"
#include "TavixStructure.h"
#include "ValueKind.h"
#include "Workspace.h"

namespace {

std::string Plural(long long count, const std::string& word) {
  return std::to_string(count) + " " + word + (count == 1 ? "" : "s");
}

using Entries = std::vector<std::pair<std::string, TavixValue>>;

// One heading per kind that has entries, then the names padded to a common width.
std::string Listing(const std::array<std::pair<const char*, Entries>, 5>& groups,
                    const std::string& indent) {
  std::size_t width = 0;
  for (const auto& group : groups) {
    for (const auto& entry : group.second) width = std::max(width, entry.first.size());
  }
  std::string out;
  for (const auto& [heading, entries] : groups) {
    if (entries.empty()) continue;
    out += indent + heading + ":\n";
    for (const auto& [name, value] : entries) {
      out += indent + "  " + name + std::string(width - name.size() + 3, ' ') +
             DescribeValue(value) + "\n";
    }
  }
  return out;
}

template <typename Map>
Entries EntriesOf(const Map& map, TavixValue (*make)(typename Map::mapped_type)) {
  Entries entries;
  for (const auto& [name, held] : map) entries.emplace_back(name, make(held));
  return entries;
}

}  // namespace

std::string DescribeValue(const TavixValue& value) {
  switch (value.code) {
    case kind::MATRIX:
      return std::to_string(value.matrix->rows()) + "x" + std::to_string(value.matrix->cols());
    case kind::DATASET:
      return Plural(value.dataset->NumberOfObservations(), "observation") + ", " +
             Plural(value.dataset->NumberOfVariables(), "variable") + ", " +
             value.dataset->DescribeStructure();
    case kind::MODEL:
      return "model " + value.model->TypeName();
    case kind::STRUCTURE:
      return Plural(static_cast<long long>(value.structure->NumberOfMembers()), "member");
    case kind::STRING:
      return Plural(static_cast<long long>(value.string->size()), "character");
    default:
      return "";
  }
}

std::string ListWorkspace(const Workspace& ws) {
  const std::array<std::pair<const char*, Entries>, 5> groups = {{
      {"Matrices", EntriesOf(ws.matrices, &TavixValue::FromMatrix)},
      {"Datasets", EntriesOf(ws.datasets, &TavixValue::FromDataset)},
      {"Models", EntriesOf(ws.models, &TavixValue::FromModel)},
      {"Structures", EntriesOf(ws.structures, &TavixValue::FromStructure)},
      {"Strings", EntriesOf(ws.strings, &TavixValue::FromString)},
  }};
  const std::string out = Listing(groups, "");
  return out.empty() ? "The workspace is empty.\n" : out;
}

std::string ListStructure(const std::string& name, const TavixStructure& structure) {
  std::array<std::pair<const char*, Entries>, 5> groups = {{
      {"Matrices", {}}, {"Datasets", {}}, {"Models", {}}, {"Structures", {}}, {"Strings", {}}}};
  using Getter = void (TavixStructure::*)(std::vector<std::string>&) const;
  const std::array<Getter, 5> getters = {
      &TavixStructure::GetMatrixNames, &TavixStructure::GetDatasetNames,
      &TavixStructure::GetModelNames, &TavixStructure::GetStructureNames,
      &TavixStructure::GetStringNames};
  for (std::size_t k = 0; k < getters.size(); ++k) {
    std::vector<std::string> names;
    (structure.*getters[k])(names);
    for (const auto& member : names) groups[k].second.emplace_back(member, structure.GetValue(member));
  }
  const std::string members = Listing(groups, "  ");
  return "Structure \"" + name + "\"" + (members.empty() ? " has no members.\n" : ":\n" + members);
}
