// export(symbol, file [, delimiter]) writes a matrix or a dataset as delimited text;
// export(title, file [, "width" = w, ...]) writes a figure in the format of the file's extension.
#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>

#include "ExecContext.h"

#include "BuiltinFamilies.h"
#include "SafeFileWrite.h"
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

// The figure titled `title` to `file`: size options, the format from the extension.
void ExportFigure(const BuiltinCall& call, const std::string& title) {
  Session& session = call.Context().session();
  const auto figure = session.figures.Find(title);
  if (!figure) call.Fail("There is no figure window with title \"" + title + "\" currently open.");
  if (call.Value(1).code != kind::STRING) {
    call.Fail("The second argument passed to \"export\" must be a string.");
  }
  if (call.Count() == 3) {
    call.Fail("When exporting figures, optional arguments must come in property/value pairs, for "
              "example:\n\"width\" = 400");
  }
  std::map<std::string, int> sizes = {{"width", 800}, {"height", 600}, {"dpi1", 0}, {"dpi2", 0}};
  std::map<std::string, bool> given;
  for (const auto& option : call.Options()) {
    if (!sizes.count(option.name)) call.Fail("Unkown optional argument \"" + option.name + "\"");
    if (given[option.name]) call.Fail("Optional argument \"" + option.name + "\" was defined multiple times.");
    given[option.name] = true;
    int value = 0;
    if (option.value.code != kind::MATRIX || !IntrCheck_PositiveInteger(*option.value.matrix, value)) {
      call.Fail("Optional arguments when exporting figures must be positive integers.");
    }
    sizes[option.name] = value;
  }
  const std::string& file = *call.Value(1).string;
  std::string extension = std::filesystem::path(file).extension().string();
  if (!extension.empty()) extension.erase(0, 1);
  std::string format = extension;
  std::transform(format.begin(), format.end(), format.begin(), [](unsigned char c) { return std::tolower(c); });
  if (format == "jpg") format = "jpeg";
  if (format != "eps" && format != "png" && format != "jpeg" && format != "svg" && format != "pdf") {
    call.Fail("Unknown ouput format: \"" + extension +
              "\". Recognized extensions are \"eps\", \"png\", \"jpeg\" and \"svg\".");
  }
  CheckWritableDirectory(call, file);
  if (!session.exportFigure) call.Fail("Could not export \"" + title + "\" to \"" + file + "\"");
  const std::string failure =
      session.exportFigure(*figure, file, format, sizes["width"], sizes["height"], sizes["dpi1"], sizes["dpi2"]);
  if (!failure.empty()) {
    call.Warn(failure);
    call.Fail("Could not export \"" + title + "\" to \"" + file + "\"");
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
    ExportFigure(call, *value.string);
    return {};
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
  const std::string problem = SafeFileWrite(file, [&](std::ostream& out) { return static_cast<bool>(out << text); });
  if (!problem.empty()) call.Fail("Could not export \"" + symbol + "\" to \"" + file + "\": " + problem + ".");
  return {};
}

const BuiltinRow kRows[] = {
    {"export", ArgCounts(2, 3), true, Export},
};

}  // namespace

std::span<const BuiltinRow> ExportBuiltins() { return kRows; }
