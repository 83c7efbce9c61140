// The keywords of the language and the token type each word lexes as.
#pragma once

#include <string_view>

// The token type of a keyword or family word, or tok::ID when `word` is a plain name.
int KeywordType(std::string_view word);
