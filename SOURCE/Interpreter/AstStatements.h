// Statement nodes that belong to the program's own rules.
#pragma once

#include "Ast.h"
#include "AstConditions.h"

// Something that cannot stand alone (an expression, a string, a stray token): its value, if
// any, is evaluated, then it is reported as an incomplete statement.
struct GeneralErrorStatement : Statement {
  ExpressionPtr value;  // empty for a stray token
  BoolExpressionPtr condition;  // a strcmp standing alone
  void Execute(ExecContext& context) const override;
};

#include <string>
#include <vector>

#include "AstExpressions.h"
#include "MatrixEntryCache.h"

// `target = value;` where the target is a name, a dotted path (a dataset variable, or a member
// of a structure, created as needed), and optionally an index range on it.
struct AssignStatement : Statement {
  std::vector<std::string> path;
  int targetLast = 0;  // last token of the target, for messages
  std::vector<std::unique_ptr<IndexArgument>> indices;  // empty: the whole target
  ExpressionPtr value;  // empty for a target of a multiple assignment
  bool namesTarget = false;  // range and dataset messages name the target (multiple assignment)
  void Execute(ExecContext& context) const override;
  // Stores a value in the target: the whole target, or the range given by `indices`.
  void Store(ExecContext& context, const TavixValue& value) const;

private:
  MatrixEntryCache m_target;  // where a plain name's matrix lives
};

// `print(value [, colour]);`
struct PrintStatement : Statement {
  ExpressionPtr value;
  ExpressionPtr colour;  // optional
  void Execute(ExecContext& context) const override;
};
