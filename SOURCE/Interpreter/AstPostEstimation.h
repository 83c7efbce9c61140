// Post-estimation statements: mfx, predict, forecast, irf, stabtest, store, diagnostics,
// plotdraws, test and pmp, with the frame they share (options, the model, the action).
#pragma once

#include <string>
#include <vector>

#include "AstConditions.h"
#include "AstModels.h"

// An option of a post-estimation statement: "name" = true/false, "name" = expression, or
// "prefix" = identifier.
struct PostOptionNode : ModelOptionNode {
  std::string identifier;  // "prefix" given as a bare name
};

// A parameter's draws named by its label (prefix$name, or a label without a prefix) inside the
// conditions of `test`; a label the model does not have falls back to the workspace's name.
struct DrawLabelExpression : Expression {
  std::string label;
  ExpressionPtr fallback;  // the plain name as an ordinary expression; null for prefix$name
  TavixValue Evaluate(ExecContext& context) const override;
};

// One post-estimation statement: its keyword, what it lists before its options (series to
// store, elements to plot, conditions to test, models to compare) and its options.
struct PostEstimationStatement : Statement {
  std::string keyword;
  std::vector<std::string> names;  // store: series; plotdraws: element labels; pmp: models
  std::vector<Node> nameNodes;     // where each name stands, for reports
  std::vector<LogicalExpressionPtr> conditions;  // test
  std::vector<PostOptionNode> options;
  void Execute(ExecContext& context) const override;
};
