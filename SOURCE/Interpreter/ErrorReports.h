// The report texts of syntax errors and of semantic errors raised while statements run.
#pragma once

#include <string>

// The kinds of syntax error the parser tells apart, each with its own report.
enum class SyntaxErrorKind {
  MissingToken,     // the expected token is missing before the offending one
  UnwantedToken,    // the offending token is extra: the expected one follows it
  Recognition,      // a generic recognition failure
  NoViableAlt,      // no alternative of a rule starts with the offending token
  MismatchedToken,  // a plain mismatch
};

// What the report needs of a syntax error.
struct SyntaxErrorInfo {
  SyntaxErrorKind kind = SyntaxErrorKind::MismatchedToken;
  int line = 0;                // line of the offending token (without the line offset)
  int charPositionInLine = 0;  // position of the offending token in its line
  std::string tokenText;       // text of the offending token
  int expectedType = 0;        // for MissingToken: the token type that was expected
  std::string message;         // for UnwantedToken and Recognition
};

// "Syntax error in input NAME, line L" and the lines that describe the error.
std::string SyntaxErrorReport(const std::string& inputName, long lineOffset,
                              const SyntaxErrorInfo& info);

// "In input NAME, line L\nTEXT ...\nMESSAGE": the form of every error raised by a running
// statement. `separator` follows the text (" ..." everywhere, " ... " for the for statement).
std::string SemanticErrorReport(const std::string& inputName, long line, const std::string& text,
                                const std::string& message, const char* separator = " ...");

// The report of an expression or stray token standing where a statement should.
std::string IncompleteStatementReport(const std::string& inputName, long line);
