// TavixLexer: turns script text into tokens, whitespace and comments kept on the hidden channel.
#pragma once

#include <string>
#include <vector>

#include "Token.h"

class TavixLexer {
public:
  // The lexer reads `source`, which must outlive it; `inputName` names the input in reports.
  TavixLexer(const std::string& source, std::string inputName);

  // Every token of the source, hidden ones included, ending with one END_OF_INPUT token.
  // Throws TavixError with the lexer report on a character that starts no token, an
  // unterminated string or comment, or a final "//" comment line without a line feed.
  std::vector<Token> Tokenize();

private:
  const std::string& m_source;
  std::string m_inputName;
};
