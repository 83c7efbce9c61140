// Dataset: named variables of equal length; numeric, or strings kept as codes with their texts.
#pragma once

#include <string>
#include <vector>

#include <Eigen/Dense>

// Variables in the order they were added. A string variable holds codes 1..k in its column and
// the text of each code; missing numeric values are NaN.
class Dataset {
public:
  Dataset() = default;
  // One numeric variable per column; throws std::invalid_argument when the names do not match
  // the columns.
  Dataset(std::vector<std::string> names, const Eigen::MatrixXd& data);

  // Adds a numeric variable; false when the name exists or the length differs (an empty dataset
  // takes the length of its first variable).
  bool AddVariable(const std::string& name, const Eigen::VectorXd& values);
  // Adds a string variable from its texts, coded 1, 2, ... in order of first appearance; an empty
  // text is a missing value (NaN).
  bool AddStringVariable(const std::string& name, const std::vector<std::string>& values);
  // Turns an existing variable into a string variable holding `values` (one per observation),
  // coded as AddStringVariable does.
  bool SetStringVariable(const std::string& name, const std::vector<std::string>& values);
  // Replaces a variable's values by numbers; a string variable becomes numeric.
  bool ReplaceVariable(const std::string& name, const Eigen::VectorXd& values);
  // Makes a string variable numeric, keeping its codes.
  void DisassociateStringVar(const std::string& name);

  bool VariableExists(const std::string& name) const { return Find(name) >= 0; }
  bool IsStringVariable(const std::string& name) const;
  bool HasStringVariables() const;
  // The variable's column (codes for a string variable); empty when there is none.
  Eigen::VectorXd GetVariable(const std::string& name) const;
  // The text of a string variable at a row (0-based); "" for missing or numeric.
  std::string StringValue(const std::string& name, Eigen::Index row) const;
  // All variables side by side.
  Eigen::MatrixXd GetData() const { return m_data; }
  const Eigen::MatrixXd& Data() const { return m_data; }

  // Reorders the observations by the key variables, the first key first: a stable sort, numbers
  // ascending, string variables by their texts, missing values last. Every key must exist.
  void SortData(const std::vector<std::string>& keys);

  // A dataset of the given observations (0-based rows, in the order given), string texts kept.
  Dataset SelectRows(const std::vector<Eigen::Index>& rows) const;

  Eigen::Index NumberOfObservations() const { return m_data.rows(); }
  Eigen::Index NumberOfVariables() const { return m_data.cols(); }
  const std::vector<std::string>& VariableNames() const { return m_names; }

private:
  int Find(const std::string& name) const;

  std::vector<std::string> m_names;
  Eigen::MatrixXd m_data;
  // For each variable, the texts of its codes (empty for a numeric variable).
  std::vector<std::vector<std::string>> m_labels;
};
