// Built-ins that make datasets: from a delimited text file, and from a matrix.
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <set>
#include <sstream>

#include "BuiltinFamilies.h"
#include "Dataset.h"
#include "DatasetSummary.h"
#include "DelimitedText.h"
#include "KeywordTable.h"
#include "Token.h"
#include "Download.h"
#include "ExecContext.h"
#include "ValueKind.h"

namespace {

// The delimiter argument: ",", ";" or a tab (typed "\t").
char Delimiter(const BuiltinCall& call) {
  const TavixValue& value = call.Value(1);
  if (value.code == kind::STRING) {
    if (*value.string == ",") return ',';
    if (*value.string == ";") return ';';
    if (*value.string == "\\t" || *value.string == "\t") return '\t';
  }
  call.Fail("The second argument of \"" + call.Name() + "\" should be \",\", \";\" or \"\\t\".");
}

// Words of the language (keywords, function names, constants) cannot name variables.
bool IsReservedWord(const std::string& word) {
  return KeywordType(word) != tok::ID;
}

// The warnings about a dataset whose shape suggests the wrong delimiter, and about renamed
// variables.
void WarnAboutImport(const BuiltinCall& call, const DelimitedImport& imported) {
  const Dataset& d = *imported.dataset;
  const char* shape = d.NumberOfVariables() == 0     ? "zero columns."
                      : d.NumberOfObservations() == 0 ? "zero rows."
                      : d.NumberOfObservations() == 1 ? "one row."
                                                      : nullptr;
  if (shape) {
    call.Warn(std::string("The imported dataset appears to have ") + shape +
              "\nIf not intented, then this was most likelly caused by the cell delimiter in the "
              "data file being different\nfrom the one specified in the \"" +
              call.Name() + "\" command.");
  }
  if (!imported.renamed.empty()) {
    std::string list;
    for (const auto& [from, to] : imported.renamed) list += "\n\"" + from + "\" -> \"" + to + "\"";
    call.Warn("Variable names that are not identifiers, or are words of the language, were changed:" + list);
  }
}

// import(file, delimiter): a dataset from a delimited text file with a header row of names.
TavixValue Import(const BuiltinCall& call) {
  if (call.Value(0).code != kind::STRING) {
    call.Fail("The first argument of \"" + call.Name() + "\" must be a string.");
  }
  const std::string& file = *call.Value(0).string;
  const char delimiter = Delimiter(call);
  const std::string cannot = "Cannot import data from \"" + file + "\". ";
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) call.Fail(cannot + "File does not exist.");
  std::ifstream in(file, std::ios::binary);
  if (!in) call.Fail(cannot + "File is not readable.");
  std::string text;
  in.seekg(0, std::ios::end);
  const std::streamoff size = in.tellg();
  in.seekg(0, std::ios::beg);
  if (size > 0) {
    text.resize(static_cast<std::size_t>(size));
    in.read(text.data(), size);
  }
  if (!in && size > 0) call.Fail(cannot + "File is not readable.");
  const DelimitedImport imported = ReadDelimited(text, delimiter, IsReservedWord);
  if (!imported.error.empty()) call.Fail(cannot + "Incompatible file format: " + imported.error);
  WarnAboutImport(call, imported);
  return TavixValue::FromDataset(imported.dataset);
}

// The download limits of webimport: the defaults, the size limit raised or lowered by the option
// "maxsize" (megabytes; inf for none), and the session's interrupt flag.
DownloadLimits WebImportLimits(const BuiltinCall& call) {
  DownloadLimits limits;
  std::set<std::string> given;
  for (const auto& option : call.Options()) {
    if (option.name != "maxsize") {
      call.Fail("Unknown optional argument \"" + option.name +
                "\" passed to \"webimport\". The function takes only the size limit (\"maxsize\" = "
                "megabytes) as an optional argument.");
    }
    if (!given.insert(option.name).second) call.Fail("Some optional arguments are provided multiple times.");
    double megabytes = 0.0;
    if (option.value.code != kind::MATRIX || !IntrCheck_PositiveNumber(*option.value.matrix, megabytes)) {
      call.Fail("The \"maxsize\" option passed to \"webimport\" must be a positive number of megabytes.");
    }
    const double bytes = std::floor(megabytes * 1e6);
    limits.maxBytes = bytes >= static_cast<double>(std::numeric_limits<std::size_t>::max())
                          ? std::numeric_limits<std::size_t>::max()
                          : static_cast<std::size_t>(bytes);
  }
  Session& session = call.Context().session();
  limits.interrupted = [&session] { return session.interruptRequested.load(std::memory_order_relaxed); };
  return limits;
}

// A number of bytes in megabytes, as the option "maxsize" gives them.
std::string Megabytes(double bytes) {
  char text[32];
  const auto [end, error] = std::to_chars(text, text + sizeof text, bytes / 1e6);
  return error == std::errc() ? std::string(text, end) : "?";
}

// webimport(url, delimiter [, "maxsize" = megabytes]): url is "host/file", with or without
// "http://" or "https://". The download is bounded in time and size and ends when the user stops
// the job.
TavixValue WebImport(const BuiltinCall& call) {
  if (call.Value(0).code != kind::STRING) {
    call.Fail("The first argument of \"" + call.Name() + "\" must be a string.");
  }
  std::string url = *call.Value(0).string;
  const char delimiter = Delimiter(call);
  const std::size_t scheme = url.find("://");
  const std::string rest = scheme == std::string::npos ? url : url.substr(scheme + 3);
  const bool knownScheme = scheme == std::string::npos || url.compare(0, scheme, "http") == 0 ||
                           url.compare(0, scheme, "https") == 0;
  const std::size_t slash = rest.find('/');
  if (!knownScheme || slash == std::string::npos || slash == 0 || slash + 1 == rest.size()) {
    call.Fail("The URL provided to \"webimport\" must be of the form \"host/file\".");
  }
  const DownloadLimits limits = WebImportLimits(call);
  if (scheme == std::string::npos) url = "http://" + url;
  const DownloadResult download = DownloadText(url, limits);
  const std::string cannot = "Cannot import data from \"" + url + "\"";
  switch (download.outcome) {
    case DownloadOutcome::Done:
      break;
    case DownloadOutcome::Interrupted:
      call.Context().CheckInterrupt();
      call.Fail(cannot + ": " + download.error);
    case DownloadOutcome::TooLarge:
      call.Fail(cannot + ": the file is larger than " + Megabytes(static_cast<double>(limits.maxBytes)) +
                " MB. The option \"maxsize\" sets another limit in megabytes, for example \"maxsize\" = " +
                Megabytes(2.0 * static_cast<double>(limits.maxBytes)) + ".");
    default:
      call.Fail(cannot + ": " + download.error);
  }
  const DelimitedImport imported = ReadDelimited(download.body, delimiter, IsReservedWord);
  if (!imported.error.empty()) call.Fail(cannot + ". Incompatible file format: " + imported.error);
  WarnAboutImport(call, imported);
  return TavixValue::FromDataset(imported.dataset);
}

// dataset(M) names the variables _V1, _V2, ...; dataset(M, {a, b, ...}) names them.
TavixValue DatasetFromMatrix(const BuiltinCall& call) {
  const auto m = call.Numeric(0, "The first argument passed to \"dataset\" must be a matrix.");
  if (call.Value(0).code != kind::MATRIX) {
    call.Fail("The first argument passed to \"dataset\" must be a matrix.");
  }
  std::vector<std::string> names;
  if (call.Count() == 2) {
    const auto* list = call.NameList(1);
    if (!list) call.Fail("The second argument passed to \"dataset\" must be a list of names.");
    if (static_cast<Eigen::Index>(list->size()) != m->cols()) {
      call.Fail("The number of variable names provided does not match the number of columns of \"" +
                call.Text(0) + "\".");
    }
    if (std::set<std::string>(list->begin(), list->end()).size() != list->size()) {
      call.Fail("The list of variable names provided contains duplicates.");
    }
    names = *list;
  } else {
    for (Eigen::Index j = 0; j < m->cols(); ++j) names.push_back("_V" + std::to_string(j + 1));
  }
  return TavixValue::FromDataset(std::make_shared<Dataset>(names, *m));
}

// The dataset a command works on: the "dataset" option, or the workspace's first dataset.
std::shared_ptr<Dataset> TargetDataset(const BuiltinCall& call) {
  for (const auto& option : call.Options()) {
    if (option.name != "dataset") continue;
    if (option.value.code != kind::DATASET) call.Fail("\"" + option.text + "\" is not a dataset.");
    return option.value.dataset;
  }
  const auto& datasets = call.Context().workspace().datasets;
  if (datasets.empty()) call.Fail("The current workspace does not contain any datasets.");
  return datasets.begin()->second;
}

// sortd({key1, key2, ...} [, "dataset" = d]); sorts the observations of the dataset in place.
TavixValue SortData(const BuiltinCall& call) {
  std::string given;
  for (const auto& option : call.Options()) {
    if (option.name != "dataset") {
      call.Fail("The \"sortd\" function takes only datasets as optional arguments.");
    }
    if (option.value.code != kind::DATASET) call.Fail("\"" + option.text + "\" is not a dataset.");
    given = option.text;
  }
  auto& datasets = call.Context().workspace().datasets;
  if (given.empty()) {
    if (datasets.empty()) call.Fail("The current workspace does not contain any datasets.");
    given = datasets.begin()->first;
  }
  const auto found = datasets.find(given);
  if (found == datasets.end()) call.Fail("\"" + given + "\" is not a dataset.");
  const auto* keys = call.NameList(0);
  if (!keys) call.Fail("The argument passed to \"sortd\" must be a list of variable names.");
  for (const auto& key : *keys) {
    if (!found->second->VariableExists(key)) {
      call.Fail("Dataset \"" + given + "\" does not have a variable named \"" + key + "\".");
    }
  }
  auto sorted = std::make_shared<Dataset>(*found->second);
  sorted->SortData(*keys);
  found->second = sorted;
  return {};
}

// summary([{variables}] [, "dataset" = d] [, "balance" = true/false]); prints the table.
TavixValue Summary(const BuiltinCall& call) {
  for (const auto& option : call.Options()) {
    if (option.name != "dataset" && option.name != "balance") {
      call.Fail("Unkown optional argument: \"" + option.name + "\"");
    }
  }
  const auto dataset = TargetDataset(call);
  std::vector<std::string> variables = dataset->VariableNames();
  if (call.Count() == 1) {
    const auto* list = call.NameList(0);
    if (!list) call.Fail("The argument passed to \"summary\" must be a list of variable names.");
    for (const auto& name : *list) {
      if (!dataset->VariableExists(name)) {
        call.Fail("The dataset does not have a variable named \"" + name + "\".");
      }
    }
    variables = *list;
  }
  std::string table = SummaryTable(*dataset, variables);
  for (const auto& option : call.Options()) {
    if (option.name == "balance" && option.value.code == kind::MATRIX && option.value.matrix->size() == 1 &&
        (*option.value.matrix)(0, 0) != 0.0) {
      table += PanelBalance(*dataset);
    }
  }
  call.Context().dispatcher().Print(table);
  return {};
}

// dropmissing(X): X without the rows that hold a missing value.
TavixValue DropMissing(const BuiltinCall& call) {
  const int code = call.Value(0).code;
  if (code != kind::MATRIX && code != kind::DATASET) {
    call.Fail("Argument \"" + call.Text(0) + "\" passed to \"dropmissing\" must be a matrix or dataset.");
  }
  const Eigen::MatrixXd& data =
      code == kind::MATRIX ? *call.Value(0).matrix : call.Value(0).dataset->Data();
  std::vector<Eigen::Index> kept;
  for (Eigen::Index i = 0; i < data.rows(); ++i) {
    if (!data.row(i).hasNaN()) kept.push_back(i);
  }
  if (kept.empty()) call.Fail("No data are left after dropping rows with missing values.");
  if (code == kind::DATASET) {
    return TavixValue::FromDataset(std::make_shared<Dataset>(call.Value(0).dataset->SelectRows(kept)));
  }
  return TavixValue::FromMatrix(Eigen::MatrixXd(data(kept, Eigen::all)));
}

const BuiltinRow kRows[] = {
    {"summary", ArgCounts(0, 1), true, Summary},
    {"sortd", ArgCounts(1), true, SortData},
    {"dropmissing", ArgCounts(1), false, DropMissing},
    {"import", ArgCounts(2), false, Import},
    {"webimport", ArgCounts(2), true, WebImport},
    {"dataset", ArgCounts(1, 2), false, DatasetFromMatrix},
};

}  // namespace

std::span<const BuiltinRow> DatasetBuiltins() { return kRows; }
