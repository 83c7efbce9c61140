// Dataset: named variables of equal length; numeric, or strings kept as codes with their texts.
#pragma once

#include <string>
#include <vector>

#include <Eigen/Dense>

#include "TimeFormats.h"

// How observations relate: independent units, one unit over time, or several units over time.
enum class DatasetKind { CrossSection, TimeSeries, Panel };

struct DatasetStructure {
  DatasetKind kind = DatasetKind::CrossSection;
  std::string timeVariable;   // time series and panels
  std::string groupVariable;  // panels
  TimeFormat format = TimeFormat::Index;
};

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
  // Removes a variable; false when there is none of that name.
  bool DeleteVariable(const std::string& name);
  // Renames a variable (and the structure's reference to it); false when `from` does not exist
  // or `to` does.
  bool RenameVariable(const std::string& from, const std::string& to);
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

  // The texts of a string variable's codes 1, 2, ... (empty for a numeric variable).
  const std::vector<std::string>& Labels(const std::string& name) const;
  // Restores a string variable's texts and a structure exactly as saved, without checks.
  void RestoreLabels(const std::string& name, std::vector<std::string> labels);
  void RestoreStructure(const DatasetStructure& structure) { m_structure = structure; }

  // The declared structure, and a description for listings: "cross-section", "time series
  // (yyyyqx, time variable t)", "panel (time variable t, groups g)".
  const DatasetStructure& Structure() const { return m_structure; }
  std::string DescribeStructure() const;
  // Declare the structure after checking the time (and group) variables: the time values must
  // parse in the format and be distinct (within each group for a panel). Each returns "" or the
  // reason for a refusal, leaving the structure as it was.
  std::string SetTimeSeries(const std::string& timeVariable, TimeFormat format);
  std::string SetPanelData(const std::string& timeVariable, const std::string& groupVariable,
                           TimeFormat format);
  void SetCrossSection() { m_structure = DatasetStructure{}; }

  // The time index of each observation under the declared structure (consecutive periods differ
  // by one); "" or the reason it cannot be read.
  std::string TimeIndexOfObservations(std::vector<long long>& out) const { return TimeIndices(m_structure, out); }

  // The k-th lag of a variable (k < 0: the lead), matched by time within each group: the value
  // at time t - k of the same unit, missing when there is none. "" or the reason for a refusal.
  std::string TakeLags(const std::string& variable, int k, Eigen::VectorXd& out) const;
  // The k-th difference, then a seasonal difference of season s when s > 0.
  std::string TakeDiffs(const std::string& variable, int k, int s, Eigen::VectorXd& out) const;
  // For each observation, a statistic of the variable over the observations of its panel group:
  // "means", "medians", "sums", "sds", "vars" or "counts"; missing values are left out.
  std::string CalculateGroupStats(const std::string& variable, const std::string& statistic,
                                  Eigen::VectorXd& out) const;

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
  DatasetStructure m_structure;

  // The time index of each observation under `structure`; "" or the reason it cannot be read.
  std::string TimeIndices(const DatasetStructure& structure, std::vector<long long>& out) const;
  // Lags of `values` by k along the declared time, within groups.
  std::string LagOf(const Eigen::VectorXd& values, int k, Eigen::VectorXd& out) const;
};
