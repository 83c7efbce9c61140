// mthread: the calls' argument lists, the threads option, the calls, and their outputs stacked.
#include "AstParallelCalls.h"

#include <algorithm>
#include <string>

#include "AstFunctions.h"
#include "BuiltinCall.h"
#include "ExecContext.h"
#include "Messages.h"
#include "ParallelCalls.h"
#include "TavixStructure.h"

namespace {

constexpr const char* kArgumentsKind =
    "The second argument passed to \"mthread\" must be a matrix (one call per row) or a structure "
    "(one call per member).";
constexpr const char* kThreadsOption = "The \"threads\" option of \"mthread\" must be a positive integer.";

// The argument lists of the calls, and the member names of a structure of argument lists.
struct CallList {
  std::vector<std::vector<TavixValue>> arguments;
  std::vector<std::string> names;  // empty for a matrix
};

std::string CallFailed(std::size_t call, const std::string& function) {
  return "Call " + std::to_string(call + 1) + " of function \"" + function + "\" failed:\n";
}

// A matrix gives one call per row, the row's elements its arguments in order. A structure gives
// one call per member in name order: a member that is a structure gives its members to the inputs
// of the same names (inputs without a member stay unset), any other member is the one argument.
CallList ArgumentLists(ExecContext& context, const Node& at, const TavixValue& value,
                       const FunctionDefinition& function) {
  CallList calls;
  if (value.IsMatrix()) {
    const Eigen::MatrixXd& m = *value.matrix;
    calls.arguments.resize(static_cast<std::size_t>(m.rows()));
    for (Eigen::Index i = 0; i < m.rows(); ++i) {
      for (Eigen::Index j = 0; j < m.cols(); ++j) {
        calls.arguments[static_cast<std::size_t>(i)].push_back(TavixValue::FromScalar(m(i, j)));
      }
    }
    return calls;
  }
  if (!value.IsStructure()) context.Fail(at, kArgumentsKind);
  calls.names = value.structure->Names();
  for (const std::string& name : calls.names) {
    const TavixValue member = value.structure->GetValue(name);
    std::vector<TavixValue> list;
    if (member.IsStructure()) {
      list.resize(function.inputs.size());
      for (const std::string& argument : member.structure->Names()) {
        const auto input = std::find(function.inputs.begin(), function.inputs.end(), argument);
        if (input == function.inputs.end()) {
          context.Fail(at, CallFailed(calls.arguments.size(), function.name) + "Function \"" + function.name +
                               "\" has no input \"" + argument + "\".");
        }
        list[static_cast<std::size_t>(input - function.inputs.begin())] = member.structure->GetValue(argument);
      }
    } else {
      list.push_back(member);
    }
    calls.arguments.push_back(std::move(list));
  }
  return calls;
}

// The member name of call i of n when the outputs form a structure: the argument's member name,
// or "call" and the number with as many digits for every call, so that name order is call order.
std::string OutputName(const CallList& calls, std::size_t i) {
  if (!calls.names.empty()) return calls.names[i];
  const std::string number = std::to_string(i + 1);
  const std::size_t width = std::to_string(calls.arguments.size()).size();
  return "call" + std::string(width - number.size(), '0') + number;
}

// The first outputs as the rows of a matrix when each is a matrix of one row and all have the
// same number of columns; as a structure otherwise.
TavixValue Stacked(const CallList& calls, const std::vector<TavixOrderStructure>& outputs) {
  const std::size_t n = outputs.size();
  if (n == 0) return TavixValue::FromMatrix(Eigen::MatrixXd(0, 0));
  bool rows = true;
  const TavixValue first = outputs[0].GetValue(0);
  for (const TavixOrderStructure& output : outputs) {
    const TavixValue value = output.GetValue(0);
    if (!value.IsMatrix() || value.matrix->rows() != 1 || !first.IsMatrix() ||
        value.matrix->cols() != first.matrix->cols()) {
      rows = false;
      break;
    }
  }
  if (rows) {
    Eigen::MatrixXd stacked(static_cast<Eigen::Index>(n), first.matrix->cols());
    for (std::size_t i = 0; i < n; ++i) stacked.row(static_cast<Eigen::Index>(i)) = *outputs[i].GetValue(0).matrix;
    return TavixValue::FromMatrix(std::move(stacked));
  }
  auto structure = std::make_shared<TavixStructure>();
  for (std::size_t i = 0; i < n; ++i) structure->SetValue(OutputName(calls, i), outputs[i].GetValue(0));
  return TavixValue::FromStructure(std::move(structure));
}

}  // namespace

TavixValue MthreadExpression::Run(ExecContext& context, bool resultWanted) const {
  context.RefuseInParallelCall(*this, "mthread");
  const TavixValue argumentValue = arguments->Evaluate(context);
  int threads = HardwareThreads();
  bool threadsGiven = false;
  for (const NamedOption& option : options) {
    if (option.name != "threads") context.Fail(*this, "Unknown optional argument \"" + option.name + "\"");
    if (threadsGiven) context.Fail(*this, "Optional argument \"threads\" was defined multiple times.");
    threadsGiven = true;
    const TavixValue value = option.value->Evaluate(context);
    if (!value.IsMatrix() || !IntrCheck_PositiveInteger(*value.matrix, threads)) context.Fail(*this, kThreadsOption);
  }
  const auto function = FindFunction(context, *this, name);
  if (resultWanted && function->outputs.empty()) context.Fail(*this, msg::kNoReturnValue);
  const CallList calls = ArgumentLists(context, *this, argumentValue, *function);
  for (std::size_t i = 0; i < calls.arguments.size(); ++i) {
    const std::string refusal = TooManyArguments(*function, calls.arguments[i].size());
    if (!refusal.empty()) context.Fail(*this, CallFailed(i, name) + refusal);
  }

  ExecContext::NestingScope nested(context, *this);
  ParallelCallsRequest request;
  request.function = function;
  request.arguments = calls.arguments;
  request.threads = threads;
  // One draw of the session's engine seeds every call: the same seed gives the same results
  // whatever the number of threads.
  request.seed = context.session().random.Engine()();
  const ParallelCallsOutcome outcome = RunParallelCalls(context.session(), request);
  if (outcome.failedCall >= 0) {
    context.Fail(*this, CallFailed(static_cast<std::size_t>(outcome.failedCall), name) + outcome.failure);
  }
  if (outcome.incomplete) {
    context.InternalError("mthread_call");
    return {};
  }
  if (!resultWanted) return {};
  return Stacked(calls, outcome.outputs);
}
