// The token-name table, generated from the one token list so names and numbers cannot drift apart.
#include "Token.h"

const char* const TavixParserTokenNames[tok::TOKEN_TYPE_COUNT] = {
    "<invalid>", "<EOR>", "<DOWN>", "<UP>",
#define TAVIX_TOKEN(name) #name,
#define TAVIX_LITERAL(name, text) "'" text "'",
#include "TokenList.def"
#undef TAVIX_TOKEN
#undef TAVIX_LITERAL
};

std::string_view TokenName(int type) {
  if (type == tok::END_OF_INPUT) return "<EOF>";
  if (type < 0 || type >= tok::TOKEN_TYPE_COUNT) return "<invalid>";
  return TavixParserTokenNames[type];
}
