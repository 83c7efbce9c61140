// ExecContext: running statements and raising their errors.
#include "ExecContext.h"

#include <algorithm>

#include "ErrorReports.h"
#include "Messages.h"
#include "TavixError.h"

void Block::Run(ExecContext& context) const {
  for (const auto& statement : statements) context.Run(*statement);
}

void ExecContext::Run(const Statement& statement) {
  CheckInterrupt();
  const int outer = m_statementFirst;
  m_statementFirst = statement.first;
  statement.Execute(*this);
  m_statementFirst = outer;
}

void ExecContext::Fail(const Node& failing, const std::string& message) const {
  const int first = std::min(m_statementFirst, failing.first);
  throw TavixError(SemanticErrorReport(m_inputName, ReportLine(first),
                                       m_stream.Text(first, failing.last), message));
}

void ExecContext::FailWithText(const std::string& text, const std::string& message,
                               const char* separator) const {
  throw TavixError(
      SemanticErrorReport(m_inputName, ReportLine(m_statementFirst), text, message, separator));
}

void ExecContext::Warn(const Node& at, const std::string& message) const {
  const int first = std::min(m_statementFirst, at.first);
  m_session.dispatcher.PrintError(
      SemanticErrorReport(m_inputName, ReportLine(first), m_stream.Text(first, at.last), message) +
          "\n",
      true);
}

void ExecContext::InternalError(const std::string& tag) const {
  m_session.dispatcher.PrintInternalError(tag);
}

void ExecContext::RefuseInParallelCall(const Node& at, const std::string& keyword) const {
  if (m_session.parallelCall) Fail(at, "\"" + keyword + "\"" + msg::kRefusedInParallelCall);
}

void ExecContext::RefuseFigureInParallelCall(const Node& at) const {
  if (m_session.parallelCall) Fail(at, msg::kFiguresInParallelCall);
}

void ExecContext::CheckInterrupt() const {
  if (m_session.interruptRequested.load(std::memory_order_relaxed)) throw TavixInterrupted();
}

ExecContext::NestingScope::NestingScope(ExecContext& context, const Node& at)
    : m_session(context.session()) {
  if (m_session.nesting >= Session::kMaxNesting) {
    context.Fail(at, "Scripts are nested too deeply (more than " +
                         std::to_string(Session::kMaxNesting) +
                         " levels of eval, run and function calls).");
  }
  ++m_session.nesting;
}

void ExecContext::RequestFrontEnd(const Node& at, const FrontEndRequest& request) const {
  Session& session = m_session;
  {
    std::lock_guard lock(session.externalMutex);
    session.externalBusy = true;
    session.plotError = false;
  }
  session.postToFrontEnd(request);
  {
    std::unique_lock lock(session.externalMutex);
    session.externalCondition.wait(lock, [&] {
      return !session.externalBusy || session.interruptRequested.load();
    });
  }
  CheckInterrupt();
  if (session.plotError) Fail(at, session.plotErrorMessage);
}
