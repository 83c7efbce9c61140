// save(file); and load(file); the whole workspace to and from a file.
#include <algorithm>
#include <filesystem>
#include <fstream>

#include "BuiltinFamilies.h"
#include "ExecContext.h"
#include "ValueKind.h"
#include "WorkspaceFile.h"

namespace {

// The file argument, with backslashes turned into forward slashes.
std::string FileArgument(const BuiltinCall& call) {
  if (call.Value(0).code != kind::STRING) {
    call.Fail("The argument passed to \"" + call.Name() + "\" must be a string.");
  }
  std::string file = *call.Value(0).string;
  std::replace(file.begin(), file.end(), '\\', '/');
  return file;
}

TavixValue Save(const BuiltinCall& call) {
  const std::string file = FileArgument(call);
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
  // Written beside the file and renamed over it at the end, so a failure never destroys an
  // earlier save.
  const std::string partial = file + ".partial";
  std::ofstream out(partial, std::ios::binary);
  if (!out) call.Fail("File \"" + file + "\" cannot be opened for writing.");
  const int skipped = SaveWorkspace(call.Context().workspace(), out);
  out.close();
  std::filesystem::rename(partial, file, error);
  if (!out || error) {
    std::filesystem::remove(partial, error);
    call.Fail("File \"" + file + "\" cannot be opened for writing.");
  }
  if (skipped > 0) {
    call.Warn(std::to_string(skipped) + " value(s) of an unknown kind were left out of \"" + file + "\".");
  }
  return {};
}

TavixValue Load(const BuiltinCall& call) {
  const Workspace& current = call.Context().workspace();
  if (!current.matrices.empty() || !current.datasets.empty() || !current.models.empty() ||
      !current.structures.empty() || !current.strings.empty()) {
    call.Fail("The current workspace is not empty. You must clear the current workspace by running "
              "\"clear(all);\" before using \"load\".");
  }
  const std::string file = FileArgument(call);
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) {
    call.Fail("Cannot load workspace from \"" + file + "\". File does not exist.");
  }
  std::ifstream in(file, std::ios::binary);
  if (!in) call.Fail("Cannot load workspace from \"" + file + "\". File is not readable.");
  std::string problem;
  if (!LoadWorkspace(in, call.Context().workspace(), problem)) {
    call.Fail("File \"" + file + "\" cannot be opened for reading: " + problem);
  }
  return {};
}

const BuiltinRow kRows[] = {
    {"save", ArgCounts(1), false, Save},
    {"load", ArgCounts(1), false, Load},
};

}  // namespace

std::span<const BuiltinRow> WorkspaceFileBuiltins() { return kRows; }
