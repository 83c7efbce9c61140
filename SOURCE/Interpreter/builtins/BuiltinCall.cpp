#include "BuiltinCall.h"

#include <algorithm>
#include <climits>
#include <cmath>

#include "AstBuiltins.h"
#include "Dataset.h"
#include "ExecContext.h"
#include "MatrixArithmetic.h"
#include "ValueKind.h"

BuiltinCall::BuiltinCall(ExecContext& context, const BuiltinCallExpression& node)
    : m_context(context), m_node(node) {
  m_values.reserve(node.arguments.size());
  for (const auto& argument : node.arguments) m_values.push_back(argument->Evaluate(context));
  for (const auto& option : node.options) {
    const auto* list = dynamic_cast<const NameListExpression*>(option.value.get());
    m_options.push_back({option.name, option.value->Evaluate(context),
                         context.stream().Text(option.value->first, option.value->last),
                         list ? &list->names : nullptr});
  }
}

const std::string& BuiltinCall::Name() const { return m_node.keyword; }

std::string BuiltinCall::Text(std::size_t i) const {
  const Expression& argument = *m_node.arguments[i];
  return m_context.stream().Text(argument.first, argument.last);
}

void BuiltinCall::Fail(const std::string& message) const { m_context.Fail(m_node, message); }

void BuiltinCall::RequestFrontEnd(const FrontEndRequest& request) const {
  m_context.RequestFrontEnd(m_node, request);
}

void BuiltinCall::Warn(const std::string& message) const { m_context.Warn(m_node, message); }

const std::vector<std::string>* BuiltinCall::NameList(std::size_t i) const {
  const auto* list = dynamic_cast<const NameListExpression*>(m_node.arguments[i].get());
  return list ? &list->names : nullptr;
}

std::shared_ptr<const Eigen::MatrixXd> BuiltinCall::Numeric(std::size_t i,
                                                            const std::string& refusal,
                                                            const std::string& datasetMessage) const {
  const TavixValue& value = m_values[i];
  if (value.code == kind::MATRIX) return value.matrix;
  if (value.code == kind::DATASET) {
    if (value.dataset->HasStringVariables()) {
      Fail(datasetMessage.empty()
               ? "Dataset \"" + Text(i) +
                     "\" contains string variables and cannot be used in mathematical expressions."
               : datasetMessage);
    }
    return std::make_shared<const Eigen::MatrixXd>(value.dataset->GetData());
  }
  Fail(refusal + KindWord(value.code));
}

std::shared_ptr<const Eigen::MatrixXd> BuiltinCall::Numeric(std::size_t i) const {
  return Numeric(i, "Function \"" + Name() + "\" is not defined for ");
}

std::shared_ptr<const Eigen::MatrixXd> BuiltinCall::MatrixOrNull(std::size_t i) const {
  const int code = m_values[i].code;
  if (code != kind::MATRIX && code != kind::DATASET) return nullptr;
  return Numeric(i, "");
}

void BuiltinCall::CheckSize(double rows, double cols) const {
  const std::string refusal = arithmetic::SizeRefusal(rows, cols);
  if (!refusal.empty()) Fail(refusal);
}

void BuiltinCall::CheckInterrupt() const { m_context.CheckInterrupt(); }

RandomEngine& BuiltinCall::Random() const { return m_context.session().random; }

bool IntrCheck_Number(const Eigen::MatrixXd& m, double& out) {
  if (m.size() != 1) return false;
  out = m(0, 0);
  return true;
}

bool IntrCheck_PositiveNumber(const Eigen::MatrixXd& m, double& out) {
  return IntrCheck_Number(m, out) && out > 0.0;
}

bool IntrCheck_Integer(const Eigen::MatrixXd& m, int& out) {
  double x = 0.0;
  double whole = 0.0;
  if (!IntrCheck_Number(m, x) || !std::isfinite(x) || std::modf(x, &whole) != 0.0) return false;
  if (whole > INT_MAX || whole < INT_MIN) return false;
  out = static_cast<int>(whole);
  return true;
}

bool IntrCheck_PositiveInteger(const Eigen::MatrixXd& m, int& out) {
  return IntrCheck_Integer(m, out) && out > 0;
}

bool IntrCheck_Integers(const Eigen::MatrixXd& m) {
  for (double x : m.reshaped()) {
    double whole = 0.0;
    if (!std::isfinite(x) || std::modf(x, &whole) != 0.0) return false;
  }
  return true;
}

bool IntrCheck_NonNegativeIntegers(const Eigen::MatrixXd& m) {
  return IntrCheck_Integers(m) && (m.size() == 0 || m.minCoeff() >= 0.0);
}

bool IsSymmetric(const Eigen::MatrixXd& a) {
  if (a.rows() != a.cols()) return false;
  const double scale = a.size() == 0 ? 0.0 : a.cwiseAbs().maxCoeff();
  return a.size() == 0 ||
         (a - a.transpose()).cwiseAbs().maxCoeff() <= 1e-10 * std::max(1.0, scale);
}

const char* KindWordSingular(int code) {
  switch (code) {
    case kind::MATRIX: return "matrix.";
    case kind::DATASET: return "dataset.";
    case kind::MODEL: return "model.";
    case kind::STRUCTURE: return "structure.";
    case kind::STRING: return "string.";
    default: return "unknown value.";
  }
}
