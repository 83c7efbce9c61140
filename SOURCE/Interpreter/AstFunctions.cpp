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
  definition->inputName = context.inputName();
  definition->lineOffset = context.lineOffset();
  context.session().functions[name] = std::move(definition);
}

namespace {

// The function defined in the session, or else the one that the file "name.tvx" in the working
// directory defines as its first statement.
std::shared_ptr<const FunctionDefinition> FindFunction(ExecContext& context, const Node& at,
                                                       const std::string& name) {
  const auto& functions = context.session().functions;
  if (const auto it = functions.find(name); it != functions.end()) return it->second;

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
  TavixParser parser(*stream, context.session(), inputName, 0);
  const StatementPtr read = parser.function_run(false);
  const auto& statement = static_cast<const FunctionStatement&>(*read);
  if (statement.name != name) context.Fail(at, mismatch);
  auto definition = std::make_shared<FunctionDefinition>();
  definition->name = name;
  definition->inputs = statement.inputs;
  definition->outputs = statement.outputs;
  definition->body = statement.body;
  definition->stream = std::move(stream);
  definition->inputName = inputName;
  return definition;
}

}  // namespace

TavixOrderStructure FunctionCallExpression::Call(ExecContext& context) const {
  std::vector<TavixValue> values;
  values.reserve(arguments.size());
  for (const auto& argument : arguments) values.push_back(argument->Evaluate(context));
  const auto definition = FindFunction(context, *this, name);
  if (values.size() > definition->inputs.size()) {
    context.Fail(*this, "Function \"" + name + "\" takes " +
                            std::to_string(definition->inputs.size()) + " inputs, but " +
                            std::to_string(values.size()) + " were given.");
  }
  ExecContext::NestingScope nested(context, *this);
  Workspace local;
  for (std::size_t i = 0; i < values.size(); ++i) local.Store(definition->inputs[i], values[i]);
  ExecContext inner(context.session(), local, *definition->stream, definition->inputName,
                    definition->lineOffset);
  inner.SetStreamOwner(definition->stream);
  definition->body->Run(inner);

  TavixOrderStructure outputs;
  for (const std::string& output : definition->outputs) {
    const TavixValue value = local.Get(output);
    if (value.code == kind::UNKNOWN) {
      context.Fail(*this, "Function \"" + name + "\" did not assign a value to its output \"" +
                              output + "\".");
    }
    outputs.Append(value);
  }
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
