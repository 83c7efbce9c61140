// Statements that change a dataset of the workspace: keeping or dropping observations.
#pragma once

#include <string>
#include <vector>

#include "AstConditions.h"
#include "AstExpressions.h"

// keepif(condition [, "dataset" = d]); and dropif(...): the condition is evaluated with the
// dataset's variables as names, one truth value per observation.
struct KeepDropStatement : Statement {
  bool keep = true;
  LogicalExpressionPtr condition;
  // Options as written: ("dataset", name); any other option name is refused when it runs.
  std::vector<std::pair<std::string, std::string>> options;
  void Execute(ExecContext& context) const override;
};

// The workspace name of the dataset a command works on: `given` when not empty (it must name a
// dataset), otherwise the first dataset of the workspace.
std::string TargetDatasetName(ExecContext& context, const Node& at, const std::string& given);
