// Running compound statements from their nodes.
#include "AstControl.h"

#include <cmath>

#include "ExecContext.h"
#include "ValueKind.h"

void IfStatement::Execute(ExecContext& context) const {
  if (condition->Test(context)) {
    then->Run(context);
  } else if (otherwise) {
    otherwise->Run(context);
  }
}

void WhileStatement::Execute(ExecContext& context) const { Loop(context, condition->Test(context)); }

void WhileStatement::Loop(ExecContext& context, bool holds) const {
  while (holds) {
    context.CheckInterrupt();
    body->Run(context);
    holds = condition->Test(context);
  }
}

namespace {

// The loop variable's matrix, copied first when something else shares it; null when the body
// has removed the variable or left it empty.
Eigen::MatrixXd* LoopVariable(Workspace& ws, const std::string& name,
                              const MatrixEntryCache& cache) {
  std::shared_ptr<Eigen::MatrixXd>* entry = cache.Find(ws, name);
  if (!entry || (*entry)->size() == 0) return nullptr;
  if (entry->use_count() > 1) *entry = std::make_shared<Eigen::MatrixXd>(**entry);
  return entry->get();
}

}  // namespace

void ForStatement::Execute(ExecContext& context) const {
  const TavixValue a = from->Evaluate(context);
  const TavixValue b = to->Evaluate(context);
  const auto integer = [](const TavixValue& v) {
    if (v.code != kind::MATRIX || v.matrix->rows() != 1 || v.matrix->cols() != 1) return false;
    const double x = (*v.matrix)(0, 0);
    return std::isfinite(x) && x == std::floor(x);
  };
  if (!integer(a) || !integer(b)) {
    context.FailWithText(context.stream().FirstLineText(first, last),
                         "In range opetations, 'a:b', 'a' and 'b' must be integers.", " ... ");
  }
  const double last = (*b.matrix)(0, 0);
  Workspace& ws = context.workspace();
  // The variable is a matrix beside any other value of that name, looked up on every pass, so a
  // body that assigns it moves the loop.
  ws.matrices[variable] = std::make_shared<Eigen::MatrixXd>(*a.matrix);
  while (Eigen::MatrixXd* counter = LoopVariable(ws, variable, m_counter)) {
    if (last < (*counter)(0, 0)) {
      counter->array() -= 1.0;
      break;
    }
    context.CheckInterrupt();
    body->Run(context);
    counter = LoopVariable(ws, variable, m_counter);
    if (!counter) break;
    counter->array() += 1.0;
  }
}
