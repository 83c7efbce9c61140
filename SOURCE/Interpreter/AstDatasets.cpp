#include "AstDatasets.h"

#include "Dataset.h"
#include "ExecContext.h"
#include "ValueKind.h"

std::string TargetDatasetName(ExecContext& context, const Node& at, const std::string& given) {
  Workspace& ws = context.workspace();
  if (!given.empty()) {
    if (ws.ID_code(given) != kind::DATASET) context.Fail(at, "\"" + given + "\" is not a dataset.");
    return given;
  }
  if (ws.datasets.empty()) context.Fail(at, "The current workspace does not contain any datasets.");
  return ws.datasets.begin()->first;
}

void KeepDropStatement::Execute(ExecContext& context) const {
  Workspace& ws = context.workspace();
  std::string given;
  for (const auto& [option, value] : options) {
    if (option != "dataset") {
      context.Fail(*this, std::string("The \"") + (keep ? "keepif" : "dropif") +
                              "\" function takes only datasets as optional arguments.");
    }
    if (!given.empty()) context.Fail(*this, "Some optional arguments are provided multiple times.");
    given = value;
  }
  const std::string name = TargetDatasetName(context, *this, given);
  const std::shared_ptr<Dataset> dataset = ws.datasets.at(name);
  // The condition sees the dataset's variables as names, over the usual workspace.
  Workspace scope = ws;
  for (const auto& variable : dataset->VariableNames()) {
    scope.Store(variable, TavixValue::FromMatrix(Eigen::MatrixXd(dataset->GetVariable(variable))));
  }
  ExecContext inner(context.session(), scope, context.stream(), context.inputName(),
                    context.lineOffset());
  const ExecContext::StatementScope running(inner, first);
  const Eigen::VectorXi truth = condition->Evaluate(inner);
  if (truth.size() != dataset->NumberOfObservations()) {
    context.Fail(*this, "The number of rows of the logical condition must match the number of "
                        "observations\nin the dataset.");
  }
  std::vector<Eigen::Index> rows;
  for (Eigen::Index i = 0; i < truth.size(); ++i) {
    if ((truth(i) != 0) == keep) rows.push_back(i);
  }
  ws.datasets[name] = std::make_shared<Dataset>(dataset->SelectRows(rows));
}
