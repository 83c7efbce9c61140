// TavixOrderStructure: the outputs of a function with several outputs, in order.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "TavixValue.h"

// Outputs are members named by their position: the first output is member "0", the second "1",
// and so on. The order records the kind code at each position.
class TavixOrderStructure {
public:
  void AddMatrix(const std::string& name, std::shared_ptr<Eigen::MatrixXd> value);
  void AddDataset(const std::string& name, std::shared_ptr<Dataset> value);
  void AddModel(const std::string& name, std::shared_ptr<Model> value);
  void AddStructure(const std::string& name, std::shared_ptr<TavixStructure> value);
  void AddString(const std::string& name, std::shared_ptr<std::string> value);

  std::shared_ptr<Eigen::MatrixXd> GetpMatrix(const std::string& name) const;
  std::shared_ptr<Dataset> GetpDataset(const std::string& name) const;
  std::shared_ptr<Model> GetpModel(const std::string& name) const;
  std::shared_ptr<TavixStructure> GetpStructure(const std::string& name) const;
  std::shared_ptr<std::string> GetpString(const std::string& name) const;
  bool HasMember(const std::string& name, int& code) const;

  void RemoveMatrix(const std::string& name);
  void RemoveString(const std::string& name);
  // Take a member out and hand its pointer over.
  std::shared_ptr<Dataset> ReleaseDataset(const std::string& name);
  std::shared_ptr<Model> ReleaseModel(const std::string& name);
  std::shared_ptr<TavixStructure> ReleaseStructure(const std::string& name);
  void Clear();

  // Records that the member at `position` has kind `code`.
  void AddElementOrder(int position, int code);
  // The kind code at a position; kind::UNKNOWN past the end.
  int GetItemCode(int position) const;
  int NumberOfElements() const { return static_cast<int>(m_order.size()); }

  // Adds a value as the next output (named by its position) and records its kind.
  void Append(const TavixValue& value);
  // The output at a position; kind UNKNOWN when there is none.
  TavixValue GetValue(int position) const;

private:
  TavixValue Release(const std::string& name, int code);

  std::map<std::string, TavixValue> m_members;
  std::vector<int> m_order;
};
