// The keywords of the language and the token type each word lexes as.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// The token type of a keyword or family word, or tok::ID when `word` is a plain name.
int KeywordType(std::string_view word);
// Every keyword and family word of the language, for completion and syntax colouring.
std::vector<std::string> KeywordWords();
