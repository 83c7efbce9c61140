// TavixOrderStructure: the outputs of a function with several outputs, in order.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "NamedMembers.h"

// Outputs are members named by their position: the first output is member "0", the second "1",
// and so on. The order records the kind code at each position.
class TavixOrderStructure : public NamedMembers {
public:
  void RemoveMatrix(const std::string& name) { Release(name, kind::MATRIX); }
  void RemoveString(const std::string& name) { Release(name, kind::STRING); }
  // Take a member out and hand its pointer over.
  std::shared_ptr<Dataset> ReleaseDataset(const std::string& name) {
    return Release(name, kind::DATASET).dataset;
  }
  std::shared_ptr<Model> ReleaseModel(const std::string& name) { return Release(name, kind::MODEL).model; }
  std::shared_ptr<TavixStructure> ReleaseStructure(const std::string& name) {
    return Release(name, kind::STRUCTURE).structure;
  }
  void Clear();

  // Records that the member at `position` has kind `code`.
  void AddElementOrder(int position, int code);
  // The kind code at a position; kind::UNKNOWN past the end.
  int GetItemCode(int position) const;
  int NumberOfElements() const { return static_cast<int>(m_order.size()); }

  // Adds a value as the next output (named by its position) and records its kind.
  void Append(const TavixValue& value);
  // The output at a position; kind UNKNOWN when there is none.
  TavixValue GetValue(int position) const { return NamedMembers::GetValue(std::to_string(position)); }
  using NamedMembers::GetValue;

private:
  std::vector<int> m_order;
};
