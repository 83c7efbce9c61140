// Built-ins about a dataset's structure and time: set_ts, set_pd, set_cs, lags, differences,
// group statistics and renaming.
#include <algorithm>
#include <cmath>
#include <map>

#include "BuiltinFamilies.h"
#include "Dataset.h"
#include "ExecContext.h"
#include "ValueKind.h"

namespace {

// The workspace entry of the dataset a command works on: the "dataset" option, or the first
// dataset of the workspace. Options other than `allowed` fail with `otherOption`.
std::map<std::string, std::shared_ptr<Dataset>>::iterator DatasetEntry(
    const BuiltinCall& call, const std::vector<std::string>& allowed, const std::string& otherOption) {
  std::string given;
  std::vector<std::string> seen;
  for (const auto& option : call.Options()) {
    if (std::find(allowed.begin(), allowed.end(), option.name) == allowed.end()) {
      call.Fail(otherOption.empty() ? "Unrecognized option \"" + option.name + "\"" : otherOption);
    }
    if (std::find(seen.begin(), seen.end(), option.name) != seen.end()) {
      call.Fail("Some optional arguments are provided multiple times.");
    }
    seen.push_back(option.name);
    if (option.name != "dataset") continue;
    if (option.value.code != kind::DATASET) call.Fail("\"" + option.text + "\" is not a dataset.");
    given = option.text;
  }
  auto& datasets = call.Context().workspace().datasets;
  if (given.empty()) {
    if (datasets.empty()) call.Fail("The current workspace does not contain any datasets.");
    return datasets.begin();
  }
  const auto found = datasets.find(given);
  if (found == datasets.end()) call.Fail("\"" + given + "\" is not a dataset.");
  return found;
}

std::string OnlyDatasets(const BuiltinCall& call) {
  return "The \"" + call.Name() + "\" function takes only datasets as optional arguments.";
}

// The single name of argument i (a bare variable name).
std::string NameArgument(const BuiltinCall& call, std::size_t i, const std::string& refusal) {
  const auto* names = call.NameList(i);
  if (!names || names->size() != 1) call.Fail(refusal);
  return names->front();
}

// The "format" option of set_ts and set_pd; "index" when absent.
TimeFormat FormatOption(const BuiltinCall& call) {
  for (const auto& option : call.Options()) {
    if (option.name != "format") continue;
    const auto format = option.value.code == kind::STRING ? TimeFormatFromName(*option.value.string)
                                                          : std::nullopt;
    if (!format) {
      call.Fail("The \"format\" option passed to \"" + call.Name() +
                "\" can be set to one of the following values:\n-> \"index\"\n-> \"yyyyqx\"\n"
                "-> \"yyyymxx\"\n-> \"yyyy/mm/dd\"");
    }
    return *format;
  }
  return TimeFormat::Index;
}

// A changed copy of the dataset replaces the workspace entry, so other holders keep theirs.
Dataset& Writable(std::map<std::string, std::shared_ptr<Dataset>>::iterator entry) {
  entry->second = std::make_shared<Dataset>(*entry->second);
  return *entry->second;
}

TavixValue SetStructure(const BuiltinCall& call) {
  const std::string& f = call.Name();
  std::string otherOption;
  for (const auto& option : call.Options()) {
    if (option.name != "dataset" && (f == "set_cs" || option.name != "format")) {
      otherOption = "Unrecognized option \"" + option.name + "\" passed to \"" + f +
                    "\". The function takes only datasets (\"dataset\"=...)" +
                    (f == "set_cs" ? "" : " and the time-series format (\"format\"=\"...\")") +
                    " as optional arguments.";
    }
  }
  if (!otherOption.empty()) call.Fail(otherOption);
  auto entry = DatasetEntry(call, {"dataset", "format"}, "");
  if (f == "set_cs") {
    Writable(entry).SetCrossSection();
    return {};
  }
  const TimeFormat format = FormatOption(call);
  const std::string problem = [&] {
    if (f == "set_ts") {
      if (call.Count() != 1) call.Fail("Function \"set_ts\" takes only one variable name as an argument.");
      Dataset changed = *entry->second;
      std::string why = changed.SetTimeSeries(
          NameArgument(call, 0, "Function \"set_ts\" takes only one variable name as an argument."),
          format);
      if (why.empty()) entry->second = std::make_shared<Dataset>(std::move(changed));
      return why;
    }
    const std::string twoNames = "The \"set_pd\" function takes two variable names as arguments: "
                                 "time-series and group variable names.";
    if (call.Count() != 2) call.Fail(twoNames);
    Dataset changed = *entry->second;
    std::string why = changed.SetPanelData(NameArgument(call, 0, twoNames),
                                           NameArgument(call, 1, twoNames), format);
    if (why.empty()) entry->second = std::make_shared<Dataset>(std::move(changed));
    return why;
  }();
  if (!problem.empty()) call.Fail(problem);
  return {};
}

// lag(var, k) and diff(var, k [, s]): a column with one value per observation.
TavixValue LagDiff(const BuiltinCall& call) {
  const bool lag = call.Name() == "lag";
  auto entry = DatasetEntry(call, {"dataset"},
                            lag ? "The \"lag\"\nfunction takes only datasets as optional arguments."
                                : OnlyDatasets(call));
  const std::string variable = NameArgument(call, 0, "The first argument passed to \"" + call.Name() +
                                                         "\" must be a variable name.");
  if (!entry->second->VariableExists(variable)) {
    call.Fail("Dataset \"" + entry->first + "\" does not have a variable \"" + variable + "\".");
  }
  if (lag && call.Count() == 3) {
    call.Fail("A seasonal-differencing argument can only be passed to the \"diff\" function.");
  }
  const auto k = call.MatrixOrNull(1);
  int order = 0;
  Eigen::VectorXd out;
  std::string problem;
  if (lag) {
    if (!k || !IntrCheck_Integer(*k, order)) {
      call.Fail("The order of lags/leads passed as argument to the \"lag\" function must be an integer.");
    }
    problem = entry->second->TakeLags(variable, order, out);
  } else {
    int season = 0;
    if (call.Count() == 3) {
      const auto s = call.MatrixOrNull(2);
      if (!s || !IntrCheck_Integer(*s, season)) {
        call.Fail("The seasonal-differencing argument passed to the \"diff\" function must be an "
                  "integer.");
      }
      if (!k || !IntrCheck_Integer(*k, order) || order < 0) {
        call.Fail("The order of differencing passed as argument to the \"diff\" function must be a "
                  "non-negative integer.");
      }
    } else if (!k || !IntrCheck_PositiveInteger(*k, order)) {
      call.Fail("The order of differencing passed as argument to the \"diff\" function must be a "
                "positive integer.");
    }
    problem = entry->second->TakeDiffs(variable, order, season, out);
  }
  if (!problem.empty()) call.Fail(problem);
  return TavixValue::FromMatrix(Eigen::MatrixXd(out));
}

// groupmeans(var), groupmedians, groupsums, groupsds, groupvars, groupcounts.
TavixValue GroupStatistic(const BuiltinCall& call) {
  auto entry = DatasetEntry(call, {"dataset"}, OnlyDatasets(call));
  const std::string variable = NameArgument(call, 0, "The argument passed to \"" + call.Name() +
                                                         "\" must be a variable name.");
  if (!entry->second->VariableExists(variable)) {
    call.Fail("Dataset \"" + entry->first + "\" does not have a variable \"" + variable + "\".");
  }
  Eigen::VectorXd out;
  const std::string problem =
      entry->second->CalculateGroupStats(variable, call.Name().substr(5), out);
  if (!problem.empty()) call.Fail(problem);
  return TavixValue::FromMatrix(Eigen::MatrixXd(out));
}

// rename(old, new [, "dataset" = d]);
TavixValue Rename(const BuiltinCall& call) {
  auto entry = DatasetEntry(call, {"dataset"}, OnlyDatasets(call));
  const std::string refusal = "The \"rename\" function takes two variable names as arguments.";
  const std::string from = NameArgument(call, 0, refusal);
  const std::string to = NameArgument(call, 1, refusal);
  if (!entry->second->VariableExists(from)) {
    call.Fail("Dataset \"" + entry->first + "\" does not have a variable named \"" + from + "\".");
  }
  if (entry->second->VariableExists(to)) {
    call.Fail("Dataset \"" + entry->first + "\" has another variable named \"" + to + "\".");
  }
  Writable(entry).RenameVariable(from, to);
  return {};
}

constexpr unsigned kAllNames = 0xFu;

const BuiltinRow kRows[] = {
    {"set_ts", ArgCounts(1, 2, 3), true, SetStructure, nullptr, false, kAllNames},
    {"set_pd", ArgCounts(1, 2, 3), true, SetStructure, nullptr, false, kAllNames},
    {"set_cs", ArgCounts(0), true, SetStructure},
    {"lag", ArgCounts(2, 3), true, LagDiff, nullptr, false, 1u},
    {"diff", ArgCounts(2, 3), true, LagDiff, nullptr, false, 1u},
    {"groupmeans", ArgCounts(1), true, GroupStatistic, nullptr, false, 1u},
    {"groupmedians", ArgCounts(1), true, GroupStatistic, nullptr, false, 1u},
    {"groupsums", ArgCounts(1), true, GroupStatistic, nullptr, false, 1u},
    {"groupsds", ArgCounts(1), true, GroupStatistic, nullptr, false, 1u},
    {"groupvars", ArgCounts(1), true, GroupStatistic, nullptr, false, 1u},
    {"groupcounts", ArgCounts(1), true, GroupStatistic, nullptr, false, 1u},
    {"rename", ArgCounts(2), true, Rename, nullptr, false, 3u},
};

}  // namespace

std::span<const BuiltinRow> DatasetStructureBuiltins() { return kRows; }
