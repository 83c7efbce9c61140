// save(file); and load(file); the whole workspace to and from a file.
#include <algorithm>
#include <filesystem>
#include <fstream>

#include "BuiltinFamilies.h"
#include "ExecContext.h"
#include "KeywordTable.h"
#include "Token.h"
#include "ValueKind.h"
#include "SafeFileWrite.h"
#include "WorkspaceFile.h"

namespace {

// The words of the language, which name nothing in a workspace.
bool Reserved(const std::string& word) { return KeywordType(word) != tok::ID; }

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
  std::string unfit;
  if (!WorkspaceFitsFile(call.Context().workspace(), unfit, Reserved)) call.Fail(unfit);
  int skipped = 0;
  const std::string problem = SafeFileWrite(file, [&](std::ostream& out) {
    skipped = SaveWorkspace(call.Context().workspace(), out);
    return static_cast<bool>(out);
  });
  if (!problem.empty()) call.Fail("The workspace cannot be saved to \"" + file + "\": " + problem + ".");
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
  if (!LoadWorkspace(in, call.Context().workspace(), problem, Reserved)) {
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
