// BuiltinCall: what a built-in function sees when it runs: its evaluated arguments, their text,
// the shared argument checks and the error path.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <Eigen/Dense>

#include "TavixOrderStructure.h"
#include "TavixValue.h"

class ExecContext;
class RandomEngine;
struct FrontEndRequest;
struct BuiltinCallExpression;

class BuiltinCall {
public:
  // Evaluates the call's arguments and named options, left to right.
  BuiltinCall(ExecContext& context, const BuiltinCallExpression& node);

  // The function's keyword as typed ("exp", "normrnd", ...).
  const std::string& Name() const;
  std::size_t Count() const { return m_values.size(); }
  const TavixValue& Value(std::size_t i) const { return m_values[i]; }
  // The text of argument i as typed.
  std::string Text(std::size_t i) const;
  // The named options ("lower" = value), in the order written.
  struct Option {
    std::string name;
    TavixValue value;
    std::string text;  // the value as typed
    const std::vector<std::string>* names = nullptr;  // a list in braces, {"a", "b"}, as typed
  };
  const std::vector<Option>& Options() const { return m_options; }

  // The names of argument i when it is a list in braces; null otherwise.
  const std::vector<std::string>* NameList(std::size_t i) const;

  // Hands a request to the window front end and waits for it (see ExecContext::RequestFrontEnd).
  void RequestFrontEnd(const FrontEndRequest& request) const;
  // Stops the statement with `message`.
  [[noreturn]] void Fail(const std::string& message) const;
  // Prints a warning about the statement; the run goes on.
  void Warn(const std::string& message) const;

  // Argument i as a numeric matrix: a matrix as it is, a dataset's data. Strings, structures and
  // models fail with `refusal` followed by the kind's plural word ("strings."); a dataset with
  // string variables fails with `datasetMessage`, or by default "Dataset "{A}" contains string
  // variables and cannot be used in mathematical expressions.".
  std::shared_ptr<const Eigen::MatrixXd> Numeric(std::size_t i, const std::string& refusal,
                                                 const std::string& datasetMessage = "") const;
  // The same with "Function "{f}" is not defined for " as the refusal.
  std::shared_ptr<const Eigen::MatrixXd> Numeric(std::size_t i) const;
  // Argument i as a matrix or dataset data, or nothing for any other kind (the caller words the
  // refusal). A dataset with string variables fails with the usual dataset message.
  std::shared_ptr<const Eigen::MatrixXd> MatrixOrNull(std::size_t i) const;

  // Stops the statement with the size refusal when a rows x cols result cannot fit in memory.
  void CheckSize(double rows, double cols) const;
  // Throws TavixInterrupted when the user asked to stop: called between pieces of long work.
  void CheckInterrupt() const;

  RandomEngine& Random() const;
  ExecContext& Context() const { return m_context; }

private:
  ExecContext& m_context;
  const BuiltinCallExpression& m_node;
  std::vector<TavixValue> m_values;
  std::vector<Option> m_options;
};

// A built-in with one result, and one with several (an ordered structure, member "0" first).
using BuiltinFunction = TavixValue (*)(const BuiltinCall& call);
using MultiBuiltinFunction = TavixOrderStructure (*)(const BuiltinCall& call);

// The numbers of positional arguments a built-in accepts, as a set of bits.
constexpr unsigned ArgCounts(int a, int b = -1, int c = -1, int d = -1) {
  unsigned bits = 0;
  for (int n : {a, b, c, d}) {
    if (n >= 0) bits |= 1u << n;
  }
  return bits;
}

// One row of the table of built-in functions.
struct BuiltinRow {
  const char* name;
  unsigned counts;    // ArgCounts(...): how many positional arguments may be given
  bool namedOptions;  // accepts "name" = value after the positional arguments
  BuiltinFunction function;
  MultiBuiltinFunction multiFunction = nullptr;  // set instead of `function` for several outputs
  // The last positional argument is a range `a:b`, passed to the function as two arguments.
  bool rangeLast = false;
  // Bit i set: positional argument i is a bare name (a variable of a dataset), read as a one-name
  // list rather than evaluated.
  unsigned nameArguments = 0;

  bool Accepts(int count) const { return count < 32 && ((counts >> count) & 1u) != 0; }
  int MaxArguments() const {
    int most = 0;
    for (int n = 0; n < 32; ++n) {
      if (Accepts(n)) most = n;
    }
    return most;
  }
};

// Shared checks of integer and positive scalar arguments: true when `m` is acceptable.
bool IntrCheck_Number(const Eigen::MatrixXd& m, double& out);
bool IntrCheck_PositiveNumber(const Eigen::MatrixXd& m, double& out);
bool IntrCheck_Integer(const Eigen::MatrixXd& m, int& out);
bool IntrCheck_PositiveInteger(const Eigen::MatrixXd& m, int& out);
bool IntrCheck_Integers(const Eigen::MatrixXd& m);
bool IntrCheck_NonNegativeIntegers(const Eigen::MatrixXd& m);

// Whether a square matrix is symmetric up to rounding: products such as X'X are symmetric only to
// their last bits.
bool IsSymmetric(const Eigen::MatrixXd& a);

// The singular word for a kind at the end of a message: "string.", "structure.", "model.".
const char* KindWordSingular(int code);
