// User functions: defining them, calling them on a fresh workspace, and taking their outputs.
#include "AstFunctions.h"

#include <filesystem>
#include <fstream>

#include "ExecContext.h"
#include "Messages.h"
#include "TavixParser.h"
#include "TokenStream.h"

void FunctionStatement::Execute(ExecContext& context) const {
  auto definition = std::make_shared<FunctionDefinition>();
  definition->name = name;
  definition->inputs = inputs;
  definition->outputs = outputs;
  definition->body = body;
  // The body's nodes point into this text: keep it alive with the function.
  definition->stream = context.streamOwner()
                           ? context.streamOwner()
                           : std::make_shared<TokenStream>(context.stream());
  definition->first = first;
  definition->inputName = context.inputName();
  definition->lineOffset = context.lineOffset();
  context.session().functions[name] = std::move(definition);
}

namespace {

// Reads the definition at the current position of `stream` into nodes of its own.
std::shared_ptr<FunctionDefinition> ReadDefinition(Session& session, std::shared_ptr<TokenStream> stream,
                                                   const std::string& inputName, long lineOffset) {
  TavixParser parser(*stream, session, inputName, lineOffset);
  const StatementPtr read = parser.function_run(false);
  const auto& statement = static_cast<const FunctionStatement&>(*read);
  auto definition = std::make_shared<FunctionDefinition>();
  definition->name = statement.name;
  definition->inputs = statement.inputs;
  definition->outputs = statement.outputs;
  definition->body = statement.body;
  definition->first = statement.first;
  definition->stream = std::move(stream);
  definition->inputName = inputName;
  definition->lineOffset = lineOffset;
  return definition;
}

}  // namespace

std::shared_ptr<const FunctionDefinition> ReadFunctionAgain(Session& session,
                                                            const FunctionDefinition& function) {
  auto stream = std::make_shared<TokenStream>(*function.stream);
  stream->Seek(function.first);
  return ReadDefinition(session, std::move(stream), function.inputName, function.lineOffset);
}

std::shared_ptr<const FunctionDefinition> FindFunction(ExecContext& context, const Node& at,
                                                       const std::string& name) {
  Session& session = context.session();
  if (const auto it = session.functions.find(name); it != session.functions.end()) return it->second;
  if (session.callerFunctions) {
    if (const auto it = session.callerFunctions->find(name); it != session.callerFunctions->end()) {
      auto definition = ReadFunctionAgain(session, *it->second);
      session.functions[name] = definition;
      return definition;
    }
  }

  const std::string file = name + ".tvx";
  std::error_code error;
  std::ifstream in(file, std::ios::binary);
  if (!in || std::filesystem::is_directory(file, error)) {
    context.Fail(at, "Function \"" + name + "\" is not defined, and there is no file \"" + file +
                         "\" in the working directory.");
  }
  std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  const std::string inputName = "\"" + file + "\"";
  auto stream = std::make_shared<TokenStream>(std::move(text), inputName);
  const std::string mismatch = "The file \"" + file +
                               "\" does not begin with the definition of function \"" + name +
                               "\".";
  if (stream->LA(1) != tok::FUNCTION) context.Fail(at, mismatch);
  auto definition = ReadDefinition(session, std::move(stream), inputName, 0);
  if (definition->name != name) context.Fail(at, mismatch);
  return definition;
}

std::string TooManyArguments(const FunctionDefinition& function, std::size_t given) {
  if (given <= function.inputs.size()) return {};
  return "Function \"" + function.name + "\" takes " + std::to_string(function.inputs.size()) +
         " inputs, but " + std::to_string(given) + " were given.";
}

TavixOrderStructure RunFunction(Session& session, const FunctionDefinition& function,
                                const std::vector<TavixValue>& values, std::string& unassigned) {
  Workspace local;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (values[i].code != kind::UNKNOWN) local.Store(function.inputs[i], values[i]);
  }
  ExecContext inner(session, local, *function.stream, function.inputName, function.lineOffset);
  inner.SetStreamOwner(function.stream);
  function.body->Run(inner);

  TavixOrderStructure outputs;
  for (const std::string& output : function.outputs) {
    const TavixValue value = local.Get(output);
    if (value.code == kind::UNKNOWN) {
      unassigned = "Function \"" + function.name + "\" did not assign a value to its output \"" +
                   output + "\".";
      break;
    }
    outputs.Append(value);
  }
  return outputs;
}

TavixOrderStructure FunctionCallExpression::Call(ExecContext& context) const {
  std::vector<TavixValue> values;
  values.reserve(arguments.size());
  for (const auto& argument : arguments) values.push_back(argument->Evaluate(context));
  const auto definition = FindFunction(context, *this, name);
  if (const std::string refusal = TooManyArguments(*definition, values.size()); !refusal.empty()) {
    context.Fail(*this, refusal);
  }
  ExecContext::NestingScope nested(context, *this);
  std::string unassigned;
  TavixOrderStructure outputs = RunFunction(context.session(), *definition, values, unassigned);
  if (!unassigned.empty()) context.Fail(*this, unassigned);
  return outputs;
}

TavixValue FunctionCallExpression::Evaluate(ExecContext& context) const {
  const TavixOrderStructure outputs = Call(context);
  if (outputs.NumberOfElements() == 0) context.Fail(*this, msg::kNoReturnValue);
  return outputs.GetValue(0);
}

void MultiAssignStatement::Execute(ExecContext& context) const {
  const TavixOrderStructure outputs = call->Call(context);
  if (static_cast<int>(targets.size()) > outputs.NumberOfElements()) {
    context.Fail(*this, "More return values are requested than what the right-hand side of the "
                        "assignment statement returns.");
  }
  for (std::size_t i = 0; i < targets.size(); ++i) {
    context.CheckInterrupt();
    targets[i]->Store(context, outputs.GetValue(static_cast<int>(i)));
  }
}
