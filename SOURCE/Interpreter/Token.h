// Token types of the language and the token record the lexer produces.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tok {

// Token type numbers: 0 to 3 are reserved, the language's tokens start at 4 (see TokenList.def).
enum Type : int {
  END_OF_INPUT = -1,
  INVALID_TOKEN = 0,
  EOR = 1,
  DOWN = 2,
  UP = 3,
  TAVIX_TOKEN_FIRST_ = 3,
#define TAVIX_TOKEN(name) name,
#define TAVIX_LITERAL(name, text) name,
#include "TokenList.def"
#undef TAVIX_TOKEN
#undef TAVIX_LITERAL
  TOKEN_TYPE_COUNT
};

static_assert(ACF == 4 && ALL == 5 && AMP == 6 && ASSIGN == 7 && TAVIX_TEST_STATEMENT == 8);
static_assert(ZEROS == 199 && LIT_CONSTRAINTS == 200 && LIT_MA == 205 && TOKEN_TYPE_COUNT == 206);

constexpr int DEFAULT_CHANNEL = 0;
constexpr int HIDDEN_CHANNEL = 99;

}  // namespace tok

// One token: its type, where its text lies in the source, and where it stands in the stream.
struct Token {
  int type = tok::INVALID_TOKEN;
  int channel = tok::DEFAULT_CHANNEL;
  std::uint32_t offset = 0;  // first character in the source text
  std::uint32_t length = 0;  // number of characters
  int line = 1;              // from 1
  int charPositionInLine = 0;  // from 0
  int index = 0;             // position in the token stream
};

// The token-name table: 206 entries, the four reserved names then every token in numeric order.
extern const char* const TavixParserTokenNames[tok::TOKEN_TYPE_COUNT];

// The name of a token type as messages print it ("<EOF>" for the end of input).
std::string_view TokenName(int type);
