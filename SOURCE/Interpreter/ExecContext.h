// ExecContext: what a running statement sees: the session, its source and where errors point.
#pragma once

#include <string>

#include "Ast.h"
#include "Session.h"
#include "TokenStream.h"

class Model;

// One per parser: the session it works on, the token stream its nodes point into, the input
// name and line offset for reports, and the statement now running.
class ExecContext {
public:
  // Names resolve in `workspace`: the session's own, or a function call's local one.
  ExecContext(Session& session, Workspace& workspace, const TokenStream& stream,
              std::string inputName, long lineOffset)
      : m_session(session), m_workspace(workspace), m_stream(stream),
        m_inputName(std::move(inputName)), m_lineOffset(lineOffset) {}
  ExecContext(Session& session, const TokenStream& stream, std::string inputName, long lineOffset)
      : ExecContext(session, session.workspace, stream, std::move(inputName), lineOffset) {}

  // While `test` evaluates its conditions: the model whose parameter labels name draws.
  const Model* drawScope = nullptr;

  Session& session() const { return m_session; }
  Workspace& workspace() const { return m_workspace; }
  const EventDispatcher& dispatcher() const { return m_session.dispatcher; }
  const TokenStream& stream() const { return m_stream; }
  const std::string& inputName() const { return m_inputName; }
  long lineOffset() const { return m_lineOffset; }

  // Runs one statement: checks for an interrupt, then executes it as the current statement.
  void Run(const Statement& statement);

  // Throws the semantic error report: the line of the running statement's first token, the text
  // from that token to the end of `failing`, and the message.
  [[noreturn]] void Fail(const Node& failing, const std::string& message) const;
  // The same with an explicit text and separator (statements that quote only part of themselves).
  [[noreturn]] void FailWithText(const std::string& text, const std::string& message,
                                 const char* separator = " ...") const;
  // Prints a warning in the report form (input, line, the statement's text up to `at`); the run
  // goes on.
  void Warn(const Node& at, const std::string& message) const;
  // Prints "This is a Tavix internal error: (tag)" in its colour; the run goes on.
  void InternalError(const std::string& tag) const;
  // Inside a call of `mthread`: raises at `at` that `keyword` cannot be used there (it would wait
  // for the user, or change what every thread shares). Does nothing elsewhere.
  void RefuseInParallelCall(const Node& at, const std::string& keyword) const;
  // Inside a call of `mthread`: raises at `at` that figures cannot be drawn there.
  void RefuseFigureInParallelCall(const Node& at) const;
  // Throws TavixInterrupted when the user asked to stop.
  void CheckInterrupt() const;
  // Hands a request to the window front end and waits until it is done or the user stops the
  // job; a refusal of the front end is raised as the error of `at`.
  void RequestFrontEnd(const Node& at, const FrontEndRequest& request) const;

  // While alive, the statement starting at token `first` is the running one (for statements
  // that run while they are read, such as compound statements at the top level).
  class StatementScope {
  public:
    StatementScope(ExecContext& context, int first)
        : m_context(context), m_outer(context.m_statementFirst) {
      context.CheckInterrupt();
      context.m_statementFirst = first;
    }
    ~StatementScope() { m_context.m_statementFirst = m_outer; }
    StatementScope(const StatementScope&) = delete;
    StatementScope& operator=(const StatementScope&) = delete;

  private:
    ExecContext& m_context;
    int m_outer;
  };

  // While alive, one more level of code runs inside code (eval, run, a function call); past the
  // session's limit it raises the message at `at` instead, so runaway recursion never exhausts
  // the stack.
  class NestingScope {
  public:
    NestingScope(ExecContext& context, const Node& at);
    ~NestingScope() { --m_session.nesting; }
    NestingScope(const NestingScope&) = delete;
    NestingScope& operator=(const NestingScope&) = delete;

  private:
    Session& m_session;
  };

  // The stream's owner, for nodes that must outlive this run (function bodies); may be empty.
  const std::shared_ptr<TokenStream>& streamOwner() const { return m_streamOwner; }
  void SetStreamOwner(std::shared_ptr<TokenStream> owner) { m_streamOwner = std::move(owner); }

  // Line of a token as reports print it (line offset added).
  long ReportLine(int tokenIndex) const { return m_lineOffset + m_stream.Get(tokenIndex).line; }
  int currentStatementFirst() const { return m_statementFirst; }

private:
  Session& m_session;
  Workspace& m_workspace;
  const TokenStream& m_stream;
  std::string m_inputName;
  long m_lineOffset;
  int m_statementFirst = 0;
  std::shared_ptr<TokenStream> m_streamOwner;
};
