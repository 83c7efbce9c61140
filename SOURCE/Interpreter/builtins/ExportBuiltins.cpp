// export(symbol, file [, delimiter]); writes a matrix or a dataset as delimited text.
#include <filesystem>
#include <fstream>

#include "BuiltinFamilies.h"
#include "Dataset.h"
#include "DelimitedText.h"
#include "ValueKind.h"

namespace {

// Checks that the file's directory exists and can be written; fails with the message otherwise.
void CheckWritableDirectory(const BuiltinCall& call, const std::string& file) {
  std::filesystem::path directory = std::filesystem::path(file).parent_path();
  if (directory.empty()) directory = ".";
  std::error_code error;
  if (!std::filesystem::is_directory(directory, error)) {
    call.Fail("Directory \"" + directory.string() + "\" does not exist.");
  }
  const auto permissions = std::filesystem::status(directory, error).permissions();
  if (error || (permissions & std::filesystem::perms::owner_write) == std::filesystem::perms::none) {
    call.Fail("Tavix does not have permission to write to \"" + directory.string() + "\"");
  }
}

TavixValue Export(const BuiltinCall& call) {
  const TavixValue& value = call.Value(0);
  const std::string symbol = call.Text(0);
  if (value.code == kind::STRUCTURE || value.code == kind::MODEL) {
    call.Fail("\"" + symbol + "\" is a " + (value.code == kind::MODEL ? "model" : "structure") +
              " and cannot be exported. Consider saving the current workspace using the \"save\" "
              "function.");
  }
  if (value.code == kind::STRING) {
    call.Fail("No figure titled \"" + *value.string + "\" is open.");
  }
  if (call.Value(1).code != kind::STRING) {
    call.Fail("The second argument passed to \"export\" must be a string.");
  }
  char delimiter = ',';
  if (call.Count() == 3) {
    const TavixValue& d = call.Value(2);
    const std::string text = d.code == kind::STRING ? *d.string : "";
    if (text == ";" || text == ",") {
      delimiter = text[0];
    } else if (text == "\\t" || text == "\t") {
      delimiter = '\t';
    } else {
      call.Fail("When exporting matrices or datasets, the third argument passed to \"export\" "
                "should be \",\", \";\" or \"\\t\".");
    }
  }
  if (!call.Options().empty()) {
    call.Fail("Unused optional argument: \"" + call.Options().front().name + "\"");
  }
  const std::string& file = *call.Value(1).string;
  CheckWritableDirectory(call, file);
  const std::string text = value.code == kind::DATASET ? WriteDelimited(*value.dataset, delimiter)
                                                       : WriteDelimited(*value.matrix, delimiter);
  std::ofstream out(file, std::ios::binary);
  out << text;
  out.close();
  if (!out) call.Fail("Could not export \"" + symbol + "\" to \"" + file + "\"");
  return {};
}

const BuiltinRow kRows[] = {
    {"export", ArgCounts(2, 3), true, Export},
};

}  // namespace

std::span<const BuiltinRow> ExportBuiltins() { return kRows; }
