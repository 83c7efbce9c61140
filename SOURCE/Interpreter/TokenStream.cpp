// TokenStream: look-ahead, seeking and token-range texts.
#include "TokenStream.h"

#include <algorithm>

#include "TavixLexer.h"

TokenStream::TokenStream(std::string source, const std::string& inputName)
    : m_source(std::make_shared<const std::string>(std::move(source))) {
  TavixLexer lexer(*m_source, inputName);
  m_tokens = lexer.Tokenize();
  m_position = NextOnChannel(0);
}

int TokenStream::NextOnChannel(int from) const {
  const int last = Size() - 1;  // END_OF_INPUT
  int i = std::clamp(from, 0, last);
  while (i < last && m_tokens[static_cast<std::size_t>(i)].channel != tok::DEFAULT_CHANNEL) ++i;
  return i;
}

const Token& TokenStream::LT(int k) const {
  int i = m_position;
  if (k > 0) {
    const int last = Size() - 1;
    for (int seen = 1; seen < k && i < last; ++seen) i = NextOnChannel(i + 1);
    return m_tokens[static_cast<std::size_t>(i)];
  }
  if (k < 0) {
    for (int seen = 0; seen > k; --seen) {
      --i;
      while (i >= 0 && m_tokens[static_cast<std::size_t>(i)].channel != tok::DEFAULT_CHANNEL) --i;
      if (i < 0) return m_tokens.front();
    }
    return m_tokens[static_cast<std::size_t>(i)];
  }
  return m_tokens[static_cast<std::size_t>(i)];
}

void TokenStream::Consume() {
  if (m_position < Size() - 1) m_position = NextOnChannel(m_position + 1);
}

void TokenStream::Seek(int index) { m_position = NextOnChannel(index); }

std::string TokenStream::Text(int first, int last) const {
  if (first < 0 || last < first || last >= Size()) return {};
  const Token& a = m_tokens[static_cast<std::size_t>(first)];
  const Token& b = m_tokens[static_cast<std::size_t>(last)];
  return m_source->substr(a.offset, b.offset + b.length - a.offset);
}

std::string TokenStream::FirstLineText(int first, int last) const {
  std::string text = Text(first, last);
  const auto newline = text.find('\n');
  if (newline != std::string::npos) text.erase(newline);
  if (!text.empty() && text.back() == '\r') text.pop_back();
  return text;
}
