// The report texts of syntax and semantic errors, formatted in one place.
#include "ErrorReports.h"

#include "Token.h"

namespace {

// How a missing token is described after "expecting input".
std::string ExpectedDescription(int type) {
  switch (type) {
    case tok::SEMICOL: return ":\t\t\t;";
    case tok::COMMA: return ":\t\t\t,";
    case tok::COLON: return ":\t\t\t:";
    case tok::DOT: return ":\t\t\t.";
    case tok::END: return ":\t\t\tend";
    case tok::OBRCKT: return ":\t\t\t[";
    case tok::CBRCKT: return ":\t\t\t]";
    case tok::OCBRCKT: return ":\t\t\t{";
    case tok::CCBRCKT: return ":\t\t\t}";
    case tok::OPAREN: return ":\t\t\t(";
    case tok::CPAREN: return ":\t\t\t)";
    case tok::SIM: return ":\t\t\t~";
    case tok::STRING: return " of type:\t\tstring";
    default: return " of type:\t\t" + std::string(TokenName(type));
  }
}

std::string UnexpectedInput(const SyntaxErrorInfo& info) {
  return "unexpected input:\t" + info.tokenText + "\nat position:\t\t" +
         std::to_string(info.charPositionInLine + 2) + "\n";
}

}  // namespace

std::string SyntaxErrorReport(const std::string& inputName, long lineOffset,
                              const SyntaxErrorInfo& info) {
  std::string report = "Syntax error in input " + inputName + ", line " +
                       std::to_string(info.line + lineOffset) + "\n";
  switch (info.kind) {
    case SyntaxErrorKind::MissingToken:
      report += "expecting input" + ExpectedDescription(info.expectedType) + "\nat position:\t\t\t" +
                std::to_string(info.charPositionInLine + 3);
      break;
    case SyntaxErrorKind::UnwantedToken:
      // A prefix test here, an equality test for the generic form below.
      if (info.message.rfind("Unexpected token", 0) == 0) {
        report += UnexpectedInput(info);
      } else {
        report += info.message + ": " + info.tokenText + "\n";
      }
      break;
    case SyntaxErrorKind::Recognition:
      if (info.message == "Unexpected token") {
        report += UnexpectedInput(info);
      } else {
        report += info.message + ": " + info.tokenText + "\n";
      }
      break;
    case SyntaxErrorKind::NoViableAlt:
      report += "This appears to be an incomplete statement.\n";
      break;
    case SyntaxErrorKind::MismatchedToken:
      break;
  }
  return report;
}

std::string SemanticErrorReport(const std::string& inputName, long line, const std::string& text,
                                const std::string& message, const char* separator) {
  return "In input " + inputName + ", line " + std::to_string(line) + "\n" + text + separator +
         "\n" + message;
}

std::string IncompleteStatementReport(const std::string& inputName, long line) {
  return "Syntax error in input " + inputName + ", line " + std::to_string(line) +
         "\nThis appears to be an incomplete statement.";
}
