// User functions: their definitions, calls, and assignments of several outputs.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "AstBuiltins.h"
#include "AstStatements.h"
#include "TavixOrderStructure.h"

class TokenStream;

// A function as the session keeps it: its parsed body and the text it points into, with the
// input name and line offset its errors report.
struct FunctionDefinition {
  std::string name;
  std::vector<std::string> inputs;
  std::vector<std::string> outputs;
  std::shared_ptr<TokenStream> stream;
  std::shared_ptr<Block> body;
  std::string inputName;
  long lineOffset = 0;
};

// function [outputs] = name(inputs) block end: running it defines the function for the session.
struct FunctionStatement : Statement {
  std::string name;
  std::vector<std::string> inputs;
  std::vector<std::string> outputs;
  std::shared_ptr<Block> body;
  void Execute(ExecContext& context) const override;
};

// @name(arguments): runs the function on a fresh workspace holding the arguments.
struct FunctionCallExpression : MultiValueExpression {
  std::string name;  // without the "@"
  std::vector<ExpressionPtr> arguments;
  TavixOrderStructure Call(ExecContext& context) const override;
  // The first output; a function without outputs cannot stand in an expression.
  TavixValue Evaluate(ExecContext& context) const override;
};

// @name(arguments); as a statement: the outputs are dropped.
struct FunctionCallStatement : Statement {
  std::unique_ptr<FunctionCallExpression> call;
  void Execute(ExecContext& context) const override { call->Call(context); }
};

// [a, b, ...] = @name(arguments); or a built-in with several outputs on the right.
struct MultiAssignStatement : Statement {
  std::vector<std::unique_ptr<AssignStatement>> targets;
  std::unique_ptr<MultiValueExpression> call;
  void Execute(ExecContext& context) const override;
};
