// Dataset: variables, string codes and data.
#include "Dataset.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <limits>
#include <stdexcept>
#include <unordered_map>

Dataset::Dataset(std::vector<std::string> names, const Eigen::MatrixXd& data)
    : m_names(std::move(names)), m_data(data), m_labels(m_names.size()) {
  if (static_cast<Eigen::Index>(m_names.size()) != data.cols()) {
    throw std::invalid_argument("Dataset: one name per column is needed");
  }
}

int Dataset::Find(const std::string& name) const {
  for (std::size_t i = 0; i < m_names.size(); ++i) {
    if (m_names[i] == name) return static_cast<int>(i);
  }
  return -1;
}

bool Dataset::AddVariable(const std::string& name, const Eigen::VectorXd& values) {
  if (VariableExists(name)) return false;
  if (!m_names.empty() && values.size() != m_data.rows()) return false;
  if (m_names.empty()) m_data.resize(values.size(), 0);
  m_data.conservativeResize(Eigen::NoChange, m_data.cols() + 1);
  m_data.col(m_data.cols() - 1) = values;
  m_names.push_back(name);
  m_labels.emplace_back();
  return true;
}

bool Dataset::AddStringVariable(const std::string& name, const std::vector<std::string>& values) {
  if (!AddVariable(name, Eigen::VectorXd::Zero(static_cast<Eigen::Index>(values.size())))) return false;
  return SetStringVariable(name, values);
}

bool Dataset::SetStringVariable(const std::string& name, const std::vector<std::string>& values) {
  const int at = Find(name);
  if (at < 0 || static_cast<Eigen::Index>(values.size()) != m_data.rows()) return false;
  std::vector<std::string> labels;
  std::unordered_map<std::string, double> codes;
  for (std::size_t row = 0; row < values.size(); ++row) {
    double code = std::numeric_limits<double>::quiet_NaN();
    if (!values[row].empty()) {
      const auto [entry, added] = codes.emplace(values[row], static_cast<double>(labels.size() + 1));
      if (added) labels.push_back(values[row]);
      code = entry->second;
    }
    m_data(static_cast<Eigen::Index>(row), at) = code;
  }
  m_labels[static_cast<std::size_t>(at)] = std::move(labels);
  return true;
}

bool Dataset::ReplaceVariable(const std::string& name, const Eigen::VectorXd& values) {
  const int at = Find(name);
  if (at < 0 || values.size() != m_data.rows()) return false;
  m_data.col(at) = values;
  m_labels[static_cast<std::size_t>(at)].clear();
  return true;
}

void Dataset::DisassociateStringVar(const std::string& name) {
  const int at = Find(name);
  if (at >= 0) m_labels[static_cast<std::size_t>(at)].clear();
}

bool Dataset::IsStringVariable(const std::string& name) const {
  const int at = Find(name);
  return at >= 0 && !m_labels[static_cast<std::size_t>(at)].empty();
}

bool Dataset::HasStringVariables() const {
  for (const auto& labels : m_labels) {
    if (!labels.empty()) return true;
  }
  return false;
}

Eigen::VectorXd Dataset::GetVariable(const std::string& name) const {
  const int at = Find(name);
  if (at < 0) return {};
  return m_data.col(at);
}

std::string Dataset::StringValue(const std::string& name, Eigen::Index row) const {
  const int at = Find(name);
  if (at < 0 || row < 0 || row >= m_data.rows()) return {};
  const auto& labels = m_labels[static_cast<std::size_t>(at)];
  const double code = m_data(row, at);
  if (labels.empty() || std::isnan(code)) return {};
  const auto index = static_cast<std::size_t>(code) - 1;
  return index < labels.size() ? labels[index] : std::string();
}

Dataset Dataset::SelectRows(const std::vector<Eigen::Index>& rows) const {
  Dataset selected = *this;
  selected.m_data = m_data(rows, Eigen::all);
  return selected;
}

void Dataset::SortData(const std::vector<std::string>& keys) {
  std::vector<Eigen::Index> order(static_cast<std::size_t>(m_data.rows()));
  std::iota(order.begin(), order.end(), Eigen::Index{0});
  std::vector<int> columns;
  for (const auto& key : keys) columns.push_back(Find(key));
  // -1, 0 or 1 for rows a and b on one key; missing values last.
  auto compare = [&](int column, Eigen::Index a, Eigen::Index b) {
    const double x = m_data(a, column);
    const double y = m_data(b, column);
    if (std::isnan(x) || std::isnan(y)) return std::isnan(x) == std::isnan(y) ? 0 : (std::isnan(x) ? 1 : -1);
    const auto& labels = m_labels[static_cast<std::size_t>(column)];
    if (!labels.empty()) {
      const int c = labels[static_cast<std::size_t>(x) - 1].compare(labels[static_cast<std::size_t>(y) - 1]);
      return c < 0 ? -1 : (c > 0 ? 1 : 0);
    }
    return x < y ? -1 : (x > y ? 1 : 0);
  };
  std::stable_sort(order.begin(), order.end(), [&](Eigen::Index a, Eigen::Index b) {
    for (int column : columns) {
      const int c = compare(column, a, b);
      if (c != 0) return c < 0;
    }
    return false;
  });
  m_data = Eigen::MatrixXd(m_data(order, Eigen::all));
}

bool Dataset::DeleteVariable(const std::string& name) {
  const int at = Find(name);
  if (at < 0) return false;
  const auto column = static_cast<std::size_t>(at);
  std::vector<Eigen::Index> keep;
  for (Eigen::Index j = 0; j < m_data.cols(); ++j) {
    if (j != at) keep.push_back(j);
  }
  m_data = Eigen::MatrixXd(m_data(Eigen::all, keep));
  m_names.erase(m_names.begin() + static_cast<std::ptrdiff_t>(column));
  m_labels.erase(m_labels.begin() + static_cast<std::ptrdiff_t>(column));
  if (m_structure.timeVariable == name || m_structure.groupVariable == name) m_structure = {};
  return true;
}

const std::vector<std::string>& Dataset::Labels(const std::string& name) const {
  static const std::vector<std::string> kNone;
  const int at = Find(name);
  return at < 0 ? kNone : m_labels[static_cast<std::size_t>(at)];
}

void Dataset::RestoreLabels(const std::string& name, std::vector<std::string> labels) {
  const int at = Find(name);
  if (at >= 0) m_labels[static_cast<std::size_t>(at)] = std::move(labels);
}
