// Dataset structures (cross-section, time series, panel) and the operations along time and
// within groups: lags, differences, group statistics.
#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <utility>

#include "Dataset.h"

namespace {

const char* kNeedTime =
    "Lags and differences need a time series or panel dataset: declare its structure with "
    "\"set_ts\" or \"set_pd\" first.";

}  // namespace

bool Dataset::RenameVariable(const std::string& from, const std::string& to) {
  const int at = Find(from);
  if (at < 0 || VariableExists(to)) return false;
  m_names[static_cast<std::size_t>(at)] = to;
  if (m_structure.timeVariable == from) m_structure.timeVariable = to;
  if (m_structure.groupVariable == from) m_structure.groupVariable = to;
  return true;
}

std::string Dataset::DescribeStructure() const {
  switch (m_structure.kind) {
    case DatasetKind::CrossSection: return "cross-section";
    case DatasetKind::TimeSeries:
      return std::string("time series (") + TimeFormatName(m_structure.format) +
             ", time variable " + m_structure.timeVariable + ")";
    case DatasetKind::Panel:
      return std::string("panel (") + TimeFormatName(m_structure.format) + ", time variable " +
             m_structure.timeVariable + ", groups " + m_structure.groupVariable + ")";
  }
  return "";
}

std::string Dataset::TimeIndices(const DatasetStructure& structure, std::vector<long long>& out) const {
  const int at = Find(structure.timeVariable);
  if (at < 0) return "The dataset does not have a variable named \"" + structure.timeVariable + "\".";
  out.assign(static_cast<std::size_t>(m_data.rows()), 0);
  const bool isString = !m_labels[static_cast<std::size_t>(at)].empty();
  for (Eigen::Index i = 0; i < m_data.rows(); ++i) {
    const double code = m_data(i, at);
    if (std::isnan(code)) {
      return "The time variable \"" + structure.timeVariable + "\" has missing values.";
    }
    if (structure.format == TimeFormat::Index) {
      if (isString || code != std::floor(code)) {
        return "The values of the time variable \"" + structure.timeVariable +
               "\" must be integers for the \"index\" format.";
      }
      // Beyond 2^53 a double no longer tells neighbouring times apart, and lags would overflow.
      if (std::abs(code) > 9007199254740992.0) {
        return "The values of the time variable \"" + structure.timeVariable +
               "\" must be integers between -9007199254740992 and 9007199254740992 for the \"index\" format.";
      }
      out[static_cast<std::size_t>(i)] = static_cast<long long>(code);
      continue;
    }
    const std::string text = isString ? StringValue(structure.timeVariable, i) : std::string();
    const auto index = ParseTimeText(structure.format, text);
    if (!index) {
      return "The value \"" + (isString ? text : std::to_string(code)) + "\" of the time variable \"" +
             structure.timeVariable + "\" does not have the format \"" +
             TimeFormatName(structure.format) + "\".";
    }
    out[static_cast<std::size_t>(i)] = *index;
  }
  return {};
}

std::string Dataset::SetTimeSeries(const std::string& timeVariable, TimeFormat format) {
  const DatasetStructure structure{DatasetKind::TimeSeries, timeVariable, "", format};
  std::vector<long long> times;
  if (std::string problem = TimeIndices(structure, times); !problem.empty()) return problem;
  if (std::set<long long>(times.begin(), times.end()).size() != times.size()) {
    return "The time variable \"" + timeVariable + "\" repeats some of its values.";
  }
  m_structure = structure;
  return {};
}

std::string Dataset::SetPanelData(const std::string& timeVariable, const std::string& groupVariable,
                                  TimeFormat format) {
  const DatasetStructure structure{DatasetKind::Panel, timeVariable, groupVariable, format};
  std::vector<long long> times;
  if (std::string problem = TimeIndices(structure, times); !problem.empty()) return problem;
  const int group = Find(groupVariable);
  if (group < 0) return "The dataset does not have a variable named \"" + groupVariable + "\".";
  std::set<std::pair<double, long long>> seen;
  for (Eigen::Index i = 0; i < m_data.rows(); ++i) {
    const double g = m_data(i, group);
    if (std::isnan(g)) return "The group variable \"" + groupVariable + "\" has missing values.";
    if (!seen.insert({g, times[static_cast<std::size_t>(i)]}).second) {
      return "The time variable \"" + timeVariable + "\" repeats some of its values within a group.";
    }
  }
  m_structure = structure;
  return {};
}

std::string Dataset::LagOf(const Eigen::VectorXd& values, int k, Eigen::VectorXd& out) const {
  if (m_structure.kind == DatasetKind::CrossSection) return kNeedTime;
  std::vector<long long> times;
  if (std::string problem = TimeIndices(m_structure, times); !problem.empty()) return problem;
  const int group = m_structure.kind == DatasetKind::Panel ? Find(m_structure.groupVariable) : -1;
  if (m_structure.kind == DatasetKind::Panel && group < 0) {
    return "The dataset does not have a variable named \"" + m_structure.groupVariable + "\".";
  }
  std::map<std::pair<double, long long>, Eigen::Index> rowAt;
  for (Eigen::Index i = 0; i < m_data.rows(); ++i) {
    rowAt[{group >= 0 ? m_data(i, group) : 0.0, times[static_cast<std::size_t>(i)]}] = i;
  }
  out.resize(m_data.rows());
  for (Eigen::Index i = 0; i < m_data.rows(); ++i) {
    const auto found = rowAt.find({group >= 0 ? m_data(i, group) : 0.0,
                                   times[static_cast<std::size_t>(i)] - k});
    out(i) = found == rowAt.end() ? std::nan("") : values(found->second);
  }
  return {};
}

std::string Dataset::TakeLags(const std::string& variable, int k, Eigen::VectorXd& out) const {
  const int at = Find(variable);
  if (at < 0) return "The dataset does not have a variable named \"" + variable + "\".";
  return LagOf(m_data.col(at), k, out);
}

std::string Dataset::TakeDiffs(const std::string& variable, int k, int s, Eigen::VectorXd& out) const {
  const int at = Find(variable);
  if (at < 0) return "The dataset does not have a variable named \"" + variable + "\".";
  if (m_structure.kind == DatasetKind::CrossSection) return kNeedTime;
  out = m_data.col(at);
  Eigen::VectorXd lagged;
  for (int pass = 0; pass < k; ++pass) {
    if (std::string problem = LagOf(out, 1, lagged); !problem.empty()) return problem;
    out -= lagged;
  }
  if (s > 0) {
    if (std::string problem = LagOf(out, s, lagged); !problem.empty()) return problem;
    out -= lagged;
  }
  return {};
}

std::string Dataset::CalculateGroupStats(const std::string& variable, const std::string& statistic,
                                         Eigen::VectorXd& out) const {
  const int at = Find(variable);
  if (at < 0) return "The dataset does not have a variable named \"" + variable + "\".";
  if (m_structure.kind != DatasetKind::Panel) {
    return "Group statistics need a panel dataset: declare its structure with \"set_pd\" first.";
  }
  const int group = Find(m_structure.groupVariable);
  if (group < 0) {
    return "The dataset does not have a variable named \"" + m_structure.groupVariable + "\".";
  }
  std::map<double, std::vector<double>> members;
  for (Eigen::Index i = 0; i < m_data.rows(); ++i) {
    if (!std::isnan(m_data(i, at))) members[m_data(i, group)].push_back(m_data(i, at));
  }
  std::map<double, double> value;
  for (auto& [g, v] : members) {
    const auto n = static_cast<double>(v.size());
    double sum = 0.0;
    for (double x : v) sum += x;
    const double mean = sum / n;
    double squares = 0.0;
    for (double x : v) squares += (x - mean) * (x - mean);
    double result = std::nan("");
    if (statistic == "sums") result = sum;
    if (statistic == "means") result = mean;
    if (statistic == "counts") result = n;
    if (statistic == "vars" && v.size() > 1) result = squares / (n - 1.0);
    if (statistic == "sds" && v.size() > 1) result = std::sqrt(squares / (n - 1.0));
    if (statistic == "medians") {
      std::sort(v.begin(), v.end());
      const std::size_t h = v.size() / 2;
      result = v.size() % 2 == 1 ? v[h] : (v[h - 1] + v[h]) / 2.0;
    }
    value[g] = result;
  }
  out.resize(m_data.rows());
  for (Eigen::Index i = 0; i < m_data.rows(); ++i) {
    const auto found = value.find(m_data(i, group));
    out(i) = found == value.end() ? (statistic == "counts" ? 0.0 : std::nan("")) : found->second;
  }
  return {};
}
