// The report of a lexer failure.
#include "LexerErrorReport.h"

std::string LexerErrorReport(const std::string& inputName, const std::string& message) {
  std::string report = "In parsing input " + inputName + "\n";
  if (message != "Unexpected character") return report + message;
  return report +
         "unexpected end of input (EOF)\n(This usually indicates an unterminated multiline "
         "comment or a script file ending with a comment line)";
}
