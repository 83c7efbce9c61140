// Model statements: the keyword, the variable lists, the options and the linear constraints.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Ast.h"
#include "ModelFamily.h"

// One term of a linear constraint: coefficient * [prefix$]name.
struct ConstraintTerm {
  double coefficient = 1.0;
  std::string prefix;  // empty when the name is not qualified
  std::string name;
};

// terms = value, as typed.
struct ConstraintNode : Node {
  std::vector<ConstraintTerm> terms;
  double value = 0.0;
};

// "name" = true/false, or "name" = expression.
struct ModelOptionNode : Node {
  std::string name;
  bool logical = false;
  std::string word;  // the word of a logical option
  ExpressionPtr value;
};

// A variable list model: dependent ~ regressors [| second list]. Several equations for systems;
// a series list without "~" has an empty dependent.
struct ModelEquation {
  std::string dependent;
  std::vector<std::string> regressors;
  std::vector<std::string> secondList;
};

// A native model: estimates when evaluated, prints its results and yields the model (nothing
// for "UNKNOWN MODEL").
struct ModelExpression : Expression {
  std::string keyword;
  std::vector<ModelEquation> equations;
  std::vector<ModelOptionNode> options;
  bool hasConstraints = false;
  std::vector<ConstraintNode> constraints;

  TavixValue Evaluate(ExecContext& context) const override;
};

// jags, openbugs and stan: a model file and options for the external sampler.
struct ExternalModelExpression : Expression {
  std::string keyword;
  ExpressionPtr modelFile;
  std::vector<ModelOptionNode> options;

  TavixValue Evaluate(ExecContext& context) const override;
};

// A model standing as a statement: the results are printed and the value dropped.
struct ModelStatement : Statement {
  ExpressionPtr model;
  void Execute(ExecContext& context) const override { model->Evaluate(context); }
};

// The label prefix of the second list of a keyword ("logtau" for lm, "u" for sf, ...).
std::string SecondListPrefix(const std::string& keyword);

// Resolves constraints against the coefficient labels (main list, then second list) into the
// rows of R and r. Returns "" or the message, with `failing` the constraint at fault.
std::string ResolveConstraints(const std::vector<ConstraintNode>& constraints,
                               const std::vector<std::string>& labels,
                               const std::vector<std::string>& secondLabels,
                               LinearConstraints& out, const ConstraintNode*& failing);

// Pairs (i, j), i < j, of constraints that set the same combination of coefficients (up to a
// factor) to different values, so that no coefficients can satisfy both.
std::vector<std::pair<std::size_t, std::size_t>> ContradictingConstraints(const LinearConstraints& constraints);
