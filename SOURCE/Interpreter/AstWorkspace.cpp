#include "AstWorkspace.h"

#include <filesystem>
#include <map>

#include "Dataset.h"
#include "Model.h"
#include "SystemGlobals.h"
#include "ExecContext.h"
#include "TavixStructure.h"
#include "Token.h"
#include "ValueKind.h"

namespace {

std::string Joined(const std::vector<std::string>& path, std::size_t count) {
  std::string text = path[0];
  for (std::size_t i = 1; i < count; ++i) text += "." + path[i];
  return text;
}

// Removes s.a.b...: every structure on the way is copied first, so other holders keep theirs.
void ClearMember(ExecContext& context, const Node& at, const std::vector<std::string>& path) {
  Workspace& ws = context.workspace();
  auto& held = ws.structures[path[0]];
  held = held->Copy();
  std::shared_ptr<TavixStructure> current = held;
  for (std::size_t i = 1; i + 1 < path.size(); ++i) {
    int code = kind::UNKNOWN;
    if (!current->HasMember(path[i], code)) {
      context.Fail(at, "Structure \"" + Joined(path, i) + "\" does not have an element named \"" +
                           path[i] + "\".");
    }
    if (code != kind::STRUCTURE) {
      context.Fail(at, "\"" + Joined(path, i + 1) + "\" is not a structure and cannot hold elements.");
    }
    auto inner = current->GetpStructure(path[i])->Copy();
    current->AddStructure(path[i], inner);
    current = inner;
  }
  int code = kind::UNKNOWN;
  const std::string& member = path.back();
  if (!current->HasMember(member, code)) {
    context.Fail(at, "Structure \"" + Joined(path, path.size() - 1) +
                         "\" does not have an element named \"" + member + "\".");
  }
  switch (code) {
    case kind::MATRIX: current->RemoveMatrix(member); break;
    case kind::DATASET: current->RemoveDataset(member); break;
    case kind::MODEL: current->RemoveModel(member); break;
    case kind::STRUCTURE: current->RemoveStructure(member); break;
    default: current->RemoveString(member); break;
  }
}

// Models estimated on a dataset that is being cleared stay, knowing that their data are gone.
void NotifyModelsOfDataset(Workspace& ws, const std::shared_ptr<Dataset>& dataset) {
  for (auto& [name, model] : ws.models) {
    if (model->GetDataset() == dataset) model->SetDatasetWasDeleted();
  }
}

}  // namespace

void ClearStatement::Execute(ExecContext& context) const {
  Workspace& ws = context.workspace();
  switch (collection) {
    case tok::ALL: ws.Clear(); return;
    case tok::MATRICES: ws.ClearKind(kind::MATRIX); return;
    case tok::DATASETS:
      for (const auto& [name, dataset] : ws.datasets) NotifyModelsOfDataset(ws, dataset);
      ws.ClearKind(kind::DATASET);
      return;
    case tok::MODELS: ws.ClearKind(kind::MODEL); return;
    case tok::STRUCTURES: ws.ClearKind(kind::STRUCTURE); return;
    case tok::STRINGS: ws.ClearKind(kind::STRING); return;
    default: break;
  }
  for (const auto& path : paths) {
    const std::string& name = path[0];
    const int code = ws.ID_code(name);
    if (code == kind::UNKNOWN) context.Fail(*this, "Symbol \"" + name + "\" is not defined.");
    if (path.size() == 1) {
      if (const auto it = ws.datasets.find(name); it != ws.datasets.end()) {
        NotifyModelsOfDataset(ws, it->second);
      }
      ws.Remove(name);
      continue;
    }
    if (code == kind::MODEL) {
      context.Fail(*this, "\"" + name + "\" is a model and its element cannot be altered.");
    }
    if (code == kind::DATASET && path.size() == 2) {
      auto& held = ws.datasets[name];
      if (!held->VariableExists(path[1])) {
        context.Fail(*this, "Dataset \"" + name + "\" does not have a variable named \"" + path[1] + "\".");
      }
      auto changed = std::make_shared<Dataset>(*held);
      changed->DeleteVariable(path[1]);
      held = changed;
      continue;
    }
    if (code != kind::STRUCTURE) {
      context.Fail(*this, "\"" + name + "\" is not a structure and cannot hold elements.");
    }
    ClearMember(context, *this, path);
  }
}

void SetBinaryStatement::Execute(ExecContext& context) const {
  // The directories are settings of the whole program.
  context.RefuseInParallelCall(*this, "setbinary");
  namespace globals = Tavix_SYSTEM_NAMESPACE::GLOBAL;
  static const std::map<std::string, std::string*> kPrograms = {
      {"jags", &globals::DirectoryJAGS},     {"openbugs", &globals::DirectoryBUGS},
      {"stan", &globals::DirectorySTAN},     {"octave", &globals::DirectoryOCTAVE},
      {"rproject", &globals::DirectoryR},    {"matlab", &globals::DirectoryMATLAB},
      {"stata", &globals::DirectorySTATA},
  };
  const auto found = kPrograms.find(program);
  if (found == kPrograms.end()) context.Fail(*this, "Unkown external program: \"" + program + "\"");
  const TavixValue value = directory->Evaluate(context);
  if (value.code != kind::STRING) {
    context.Fail(*this, "The second argument passed to \"setbinary\" must be a string.");
  }
  std::error_code error;
  if (!std::filesystem::is_directory(*value.string, error)) {
    context.Fail(*this, "Directory \"" + *value.string + "\" does not exist.");
  }
  *found->second = *value.string;
}
