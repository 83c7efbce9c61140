// TavixStructure: a named collection of members of the five kinds, names unique within it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "NamedMembers.h"

class TavixStructure : public NamedMembers {
public:
  // Copies of a matrix or string member; false when there is none.
  bool GetMatrix(const std::string& name, Eigen::MatrixXd& out) const;
  bool GetString(const std::string& name, std::string& out) const;

  void RemoveMatrix(const std::string& name) { Release(name, kind::MATRIX); }
  void RemoveDataset(const std::string& name) { Release(name, kind::DATASET); }
  void RemoveModel(const std::string& name) { Release(name, kind::MODEL); }
  void RemoveStructure(const std::string& name) { Release(name, kind::STRUCTURE); }
  void RemoveString(const std::string& name) { Release(name, kind::STRING); }

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

private:
  bool HasKind(int code) const;
  void NamesOfKind(int code, std::vector<std::string>& out) const;
};
