// StatementsComplete: whether typed text is ready to run, for the consoles of every front end.
#include "StatementsComplete.h"

#include "TavixError.h"
#include "TokenStream.h"

bool StatementsComplete(const std::string& code) {
  try {
    // A line comment needs its line end to be read.
    const TokenStream stream(code + "\n", "\"terminal\"");
    int blocks = 0, brackets = 0;
    int last = tok::END_OF_INPUT;
    for (int i = 0; i < stream.Size(); ++i) {
      const Token& token = stream.Get(i);
      if (token.channel != 0 || token.type == tok::END_OF_INPUT) continue;
      switch (token.type) {
        case tok::IF: case tok::WHILE: case tok::FOR: case tok::FUNCTION: ++blocks; break;
        case tok::END: --blocks; break;
        case tok::OPAREN: case tok::OBRCKT: case tok::OCBRCKT: ++brackets; break;
        case tok::CPAREN: case tok::CBRCKT: case tok::CCBRCKT: --brackets; break;
        default: break;
      }
      last = token.type;
    }
    return blocks <= 0 && brackets <= 0 && (last == tok::SEMICOL || last == tok::END);
  } catch (const TavixError&) {
    return false;
  }
}
