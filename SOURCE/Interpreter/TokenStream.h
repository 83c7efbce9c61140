// TokenStream: the tokens of one source text, with look-ahead over the on-channel tokens.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Token.h"

// Holds the source text and all its tokens (hidden ones included). The current position is
// always an on-channel token; LT(1) is that token, LT(2) the next on-channel one, LT(-1) the
// previous one. The last token is END_OF_INPUT, which LT never moves past.
class TokenStream {
public:
  // Lexes `source`; throws TavixError with the lexer report when it cannot.
  TokenStream(std::string source, const std::string& inputName);

  const Token& LT(int k) const;
  int LA(int k) const { return LT(k).type; }
  // Moves to the next on-channel token (no-op at the end of input).
  void Consume();
  // Index of the current token.
  int Index() const { return m_position; }
  // Moves to the token with that index, or to the first on-channel token after it.
  void Seek(int index);

  const Token& Get(int index) const { return m_tokens[static_cast<std::size_t>(index)]; }
  int Size() const { return static_cast<int>(m_tokens.size()); }
  std::string_view Text(const Token& token) const {
    return std::string_view(*m_source).substr(token.offset, token.length);
  }
  // The source text from token `first` to token `last`, hidden tokens included.
  std::string Text(int first, int last) const;
  // The text of the line that holds token `first`, from that token to the end of its line (or
  // to `last`, whichever comes first).
  std::string FirstLineText(int first, int last) const;
  const std::string& Source() const { return *m_source; }

private:
  int NextOnChannel(int from) const;

  std::shared_ptr<const std::string> m_source;
  std::vector<Token> m_tokens;
  int m_position = 0;
};
