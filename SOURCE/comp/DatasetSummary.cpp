#include "DatasetSummary.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <set>

#include "Dataset.h"

namespace {

std::string Number(double x) {
  if (std::isnan(x)) return ".";
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", x);
  return text;
}

std::string Padded(const std::string& text, std::size_t width) {
  return text.size() >= width ? text : std::string(width - text.size(), ' ') + text;
}

}  // namespace

std::string SummaryTable(const Dataset& dataset, const std::vector<std::string>& variables) {
  std::size_t nameWidth = 8;
  for (const auto& name : variables) nameWidth = std::max(nameWidth, name.size());
  const std::size_t w = 13;
  std::string out = "Variable" + std::string(nameWidth - 8, ' ') + Padded("Obs", w) +
                    Padded("Mean", w) + Padded("Std. Dev.", w) + Padded("Min", w) +
                    Padded("Max", w) + "\n";
  out += std::string(nameWidth + 5 * w, '-') + "\n";
  for (const auto& name : variables) {
    const Eigen::VectorXd v = dataset.GetVariable(name);
    std::vector<double> present;
    for (double x : v) {
      if (!std::isnan(x)) present.push_back(x);
    }
    const auto n = static_cast<double>(present.size());
    out += name + std::string(nameWidth - name.size(), ' ') + Padded(Number(n), w);
    if (dataset.IsStringVariable(name)) {
      const std::set<double> distinct(present.begin(), present.end());
      out += "   string variable, " + std::to_string(distinct.size()) + " distinct values\n";
      continue;
    }
    double mean = std::nan("");
    double sd = std::nan("");
    double low = std::nan("");
    double high = std::nan("");
    if (!present.empty()) {
      double sum = 0.0;
      for (double x : present) sum += x;
      mean = sum / n;
      double squares = 0.0;
      for (double x : present) squares += (x - mean) * (x - mean);
      if (present.size() > 1) sd = std::sqrt(squares / (n - 1.0));
      low = *std::min_element(present.begin(), present.end());
      high = *std::max_element(present.begin(), present.end());
    }
    out += Padded(Number(mean), w) + Padded(Number(sd), w) + Padded(Number(low), w) +
           Padded(Number(high), w) + "\n";
  }
  return out;
}

std::string PanelBalance(const Dataset& dataset) {
  const DatasetStructure& structure = dataset.Structure();
  if (structure.kind != DatasetKind::Panel) return {};
  const Eigen::VectorXd groups = dataset.GetVariable(structure.groupVariable);
  const Eigen::VectorXd times = dataset.GetVariable(structure.timeVariable);
  std::map<double, std::set<double>> periodsOf;
  std::set<double> periods;
  for (Eigen::Index i = 0; i < groups.size(); ++i) {
    periodsOf[groups(i)].insert(times(i));
    periods.insert(times(i));
  }
  std::size_t incomplete = 0;
  for (const auto& [group, seen] : periodsOf) {
    if (seen.size() < periods.size()) ++incomplete;
  }
  std::string out = "Panel: " + std::to_string(periodsOf.size()) + " groups, " +
                    std::to_string(periods.size()) + " time periods; ";
  out += incomplete == 0 ? std::string("balanced.\n")
                         : "unbalanced: " + std::to_string(incomplete) +
                               " group(s) are not observed in every period.\n";
  return out;
}
