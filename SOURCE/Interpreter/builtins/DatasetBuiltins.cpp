// Built-ins that make datasets: from a delimited text file, and from a matrix.
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "BuiltinFamilies.h"
#include "Dataset.h"
#include "DelimitedText.h"
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
    call.Warn("Variable names that are not identifiers were changed:" + list);
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
  const DelimitedImport imported = ReadDelimited(text, delimiter);
  if (!imported.error.empty()) call.Fail(cannot + "Incompatible file format.");
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

const BuiltinRow kRows[] = {
    {"import", ArgCounts(2), false, Import},
    {"dataset", ArgCounts(1, 2), false, DatasetFromMatrix},
};

}  // namespace

std::span<const BuiltinRow> DatasetBuiltins() { return kRows; }
