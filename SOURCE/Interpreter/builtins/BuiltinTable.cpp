// The table of built-in functions, by the keyword as typed.
#include <string_view>
#include <unordered_map>

#include "AstBuiltins.h"
#include "BuiltinFamilies.h"

namespace {

std::unordered_map<std::string_view, const BuiltinRow*> BuildTable() {
  std::unordered_map<std::string_view, const BuiltinRow*> table;
  for (auto family : {ShapeBuiltins, LinearAlgebraBuiltins, ElementBuiltins, SortBuiltins,
                      StatisticsBuiltins, RandomBuiltins, MultivariateRandomBuiltins,
                      DistributionBuiltins, StringBuiltins, DatasetBuiltins,
                      DatasetStructureBuiltins, ExportBuiltins,
                      WorkspaceFileBuiltins, PlotBuiltins}) {
    for (const BuiltinRow& row : family()) table.emplace(row.name, &row);
  }
  return table;
}

}  // namespace

const BuiltinRow* FindBuiltin(const std::string& keyword) {
  static const auto table = BuildTable();
  const auto found = table.find(keyword);
  return found == table.end() ? nullptr : found->second;
}
