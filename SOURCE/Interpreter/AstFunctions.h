// User functions: their definitions, calls, and assignments of several outputs.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "AstBuiltins.h"
#include "AstStatements.h"
#include "TavixOrderStructure.h"

class TokenStream;
struct Session;

// A function as the session keeps it: its parsed body and the text it points into, with the
// input name and line offset its errors report.
struct FunctionDefinition {
  std::string name;
  std::vector<std::string> inputs;
  std::vector<std::string> outputs;
  std::shared_ptr<TokenStream> stream;
  int first = 0;  // the index of its `function` token in `stream`
  std::shared_ptr<Block> body;
  std::string inputName;
  long lineOffset = 0;
};

// The function `name` as a call at `at` finds it: defined in the session, else (in a call of
// mthread) defined by the caller, else defined by the file "name.tvx" in the working directory as
// its first statement. Raises at `at` when there is none.
std::shared_ptr<const FunctionDefinition> FindFunction(ExecContext& context, const Node& at,
                                                       const std::string& name);

// A copy of `function` with nodes of its own, read with `session` from a copy of its text (a call
// of mthread must not run nodes that another thread runs).
std::shared_ptr<const FunctionDefinition> ReadFunctionAgain(Session& session,
                                                            const FunctionDefinition& function);

// Runs the function's body with `session` on a fresh workspace holding `values` (at most one per
// input; an input whose value has kind UNKNOWN is left unset) and returns its outputs in order. Errors of the body are raised; an output the body did
// not assign is returned as its message in `unassigned`, with the outputs before it.
TavixOrderStructure RunFunction(Session& session, const FunctionDefinition& function,
                                const std::vector<TavixValue>& values, std::string& unassigned);

// The message of a call with more values than the function has inputs; empty when they fit.
std::string TooManyArguments(const FunctionDefinition& function, std::size_t given);

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
