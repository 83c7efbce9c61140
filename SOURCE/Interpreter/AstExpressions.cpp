// Evaluation of literals, constants and workspace names.
#include "AstExpressions.h"

#include "Dataset.h"
#include "ExecContext.h"
#include "Model.h"
#include "TavixStructure.h"
#include "ValueKind.h"

TavixValue NumberLiteral::Evaluate(ExecContext&) const { return TavixValue::FromScalar(value); }

TavixValue StringLiteral::Evaluate(ExecContext& context) const {
  // "$TavixHOME" stands for the installation directory, wherever it occurs.
  static const std::string kHome = "$TavixHOME";
  if (text.find(kHome) == std::string::npos) return TavixValue::FromString(text);
  std::string replaced;
  std::size_t from = 0;
  for (std::size_t at = text.find(kHome); at != std::string::npos; at = text.find(kHome, from)) {
    replaced.append(text, from, at - from);
    replaced += context.session().installDir;
    from = at + kHome.size();
  }
  replaced.append(text, from);
  return TavixValue::FromString(std::move(replaced));
}

namespace {

// The value of `member` inside `owner`, which is the path's value so far and named `ownerName`.
TavixValue Member(const ExecContext& context, const Node& node, const TavixValue& owner,
                  const std::string& ownerName, const std::string& member) {
  switch (owner.code) {
    case kind::STRUCTURE: {
      TavixValue value = owner.structure->GetValue(member);
      if (value.code == kind::UNKNOWN) {
        context.Fail(node, "Structure \"" + ownerName + "\" has no element called \"" + member +
                               "\".");
      }
      return value;
    }
    case kind::DATASET: {
      const Dataset& dataset = *owner.dataset;
      if (!dataset.VariableExists(member)) {
        context.Fail(node, "Dataset \"" + ownerName + "\" has no variable called \"" + member +
                               "\".");
      }
      if (dataset.IsStringVariable(member)) {
        context.Fail(node, "Variable \"" + member + "\" from dataset \"" + ownerName +
                               "\" is a string variable and cannot be turned to a matrix.");
      }
      return TavixValue::FromMatrix(Eigen::MatrixXd(dataset.GetVariable(member)));
    }
    case kind::MODEL: {
      int code = kind::UNKNOWN;
      if (!owner.model->HasMember(member, code) || code != kind::MATRIX) {
        context.Fail(node, "Model \"" + ownerName + "\" has no element called \"" + member +
                               "\".");
      }
      return TavixValue::FromMatrix(owner.model->GetpMatrix(member));
    }
    default:
      // Matrices and strings have no members.
      context.Fail(node, "Symbol \"" + ownerName + "." + member + "\" is not defined.");
  }
}

}  // namespace

bool NameExpression::EvaluateScalar(ExecContext& context, double& out) const {
  const auto* entry = CachedMatrix(context.workspace());
  if (!entry || (*entry)->size() != 1) return false;
  out = (**entry)(0, 0);
  return true;
}

const Eigen::MatrixXd* NameExpression::PeekMatrix(ExecContext& context) const {
  const auto* entry = CachedMatrix(context.workspace());
  return entry ? entry->get() : nullptr;
}

TavixValue NameExpression::Evaluate(ExecContext& context) const {
  if (const auto* entry = CachedMatrix(context.workspace())) return TavixValue::FromMatrix(*entry);
  const std::string& name = path.front();
  TavixValue value = context.workspace().Get(name);
  if (value.code == kind::UNKNOWN) context.Fail(*this, "Symbol \"" + name + "\" is not defined.");
  std::string walked = name;
  for (std::size_t i = 1; i < path.size(); ++i) {
    value = Member(context, *this, value, walked, path[i]);
    walked += "." + path[i];
  }
  return value;
}
