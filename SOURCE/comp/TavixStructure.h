// TavixStructure: a named collection of members of the five kinds, names unique within it.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "TavixValue.h"

// Members are kept by name; adding a name that exists replaces it, whatever its kind.
class TavixStructure {
public:
  void AddMatrix(const std::string& name, std::shared_ptr<Eigen::MatrixXd> value);
  void AddDataset(const std::string& name, std::shared_ptr<Dataset> value);
  void AddModel(const std::string& name, std::shared_ptr<Model> value);
  void AddStructure(const std::string& name, std::shared_ptr<TavixStructure> value);
  void AddString(const std::string& name, std::shared_ptr<std::string> value);

  // The member's pointer; empty when there is no such member of that kind.
  std::shared_ptr<Eigen::MatrixXd> GetpMatrix(const std::string& name) const;
  std::shared_ptr<Dataset> GetpDataset(const std::string& name) const;
  std::shared_ptr<Model> GetpModel(const std::string& name) const;
  std::shared_ptr<TavixStructure> GetpStructure(const std::string& name) const;
  std::shared_ptr<std::string> GetpString(const std::string& name) const;
  // Copies of a matrix or string member; false when there is none.
  bool GetMatrix(const std::string& name, Eigen::MatrixXd& out) const;
  bool GetString(const std::string& name, std::string& out) const;

  // Whether the member exists, and its kind code.
  bool HasMember(const std::string& name, int& code) const;

  void RemoveMatrix(const std::string& name) { RemoveOfKind(name, kind::MATRIX); }
  void RemoveDataset(const std::string& name) { RemoveOfKind(name, kind::DATASET); }
  void RemoveModel(const std::string& name) { RemoveOfKind(name, kind::MODEL); }
  void RemoveStructure(const std::string& name) { RemoveOfKind(name, kind::STRUCTURE); }
  void RemoveString(const std::string& name) { RemoveOfKind(name, kind::STRING); }

  bool HasMatrices() const { return HasKind(kind::MATRIX); }
  bool HasDatasets() const { return HasKind(kind::DATASET); }
  bool HasModels() const { return HasKind(kind::MODEL); }
  bool HasStructures() const { return HasKind(kind::STRUCTURE); }
  bool HasStrings() const { return HasKind(kind::STRING); }
  bool IsEmpty() const { return m_members.empty(); }

  // Member names of one kind, in name order.
  void GetMatrixNames(std::vector<std::string>& out) const { NamesOfKind(kind::MATRIX, out); }
  void GetDatasetNames(std::vector<std::string>& out) const { NamesOfKind(kind::DATASET, out); }
  void GetModelNames(std::vector<std::string>& out) const { NamesOfKind(kind::MODEL, out); }
  void GetStructureNames(std::vector<std::string>& out) const { NamesOfKind(kind::STRUCTURE, out); }
  void GetStringNames(std::vector<std::string>& out) const { NamesOfKind(kind::STRING, out); }

  // A copy whose nested structures are copies too, so writing into it never changes this one.
  // Matrices, strings, datasets and models stay shared: writers copy those before changing them.
  std::shared_ptr<TavixStructure> Copy() const;
  void Clear() { m_members.clear(); }

  // The member as a value (kind UNKNOWN when absent), and setting a member from a value.
  TavixValue GetValue(const std::string& name) const;
  void SetValue(const std::string& name, const TavixValue& value);

private:
  void RemoveOfKind(const std::string& name, int code);
  bool HasKind(int code) const;
  void NamesOfKind(int code, std::vector<std::string>& out) const;

  std::map<std::string, TavixValue> m_members;
};
