// TavixLexer: a hand-written scanner over the script text; longest match, keywords over names.
#include "TavixLexer.h"

#include <string_view>

#include "KeywordTable.h"
#include "LexerErrorReport.h"
#include "TavixError.h"

namespace {

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The quoted option keys, which win over a string literal of the same text.
int QuotedLiteralType(std::string_view text) {
  if (text == "\"constraints\"") return tok::LIT_CONSTRAINTS;
  if (text == "\"prefix\"") return tok::LIT_PREFIX;
  if (text == "\"stats\"") return tok::LIT_STATS;
  if (text == "\"diff\"") return tok::LIT_DIFF;
  if (text == "\"lags\"") return tok::LIT_LAGS;
  if (text == "\"ma\"") return tok::LIT_MA;
  return tok::STRING;
}

bool IsEscapeLetter(char c) {
  switch (c) {
    case 'b': case 't': case 'n': case 'f': case 'r': case '"': case '\'': case '\\':
      return true;
    default:
      return false;
  }
}

}  // namespace

TavixLexer::TavixLexer(const std::string& source, std::string inputName)
    : m_source(source), m_inputName(std::move(inputName)) {}

std::vector<Token> TavixLexer::Tokenize() {
  const std::string_view text(m_source);
  const std::size_t n = text.size();
  std::vector<Token> tokens;
  tokens.reserve(n / 3 + 1);
  std::size_t pos = 0;
  int line = 1;
  int column = 0;

  auto fail = [&]() -> void { throw TavixError(LexerErrorReport(m_inputName, "Unexpected character")); };
  auto at = [&](std::size_t i) -> char { return i < n ? text[i] : '\0'; };
  // Emits the token text[pos, end) and moves past it, keeping line and column.
  auto emit = [&](int type, std::size_t end, int channel = tok::DEFAULT_CHANNEL) {
    Token token;
    token.type = type;
    token.channel = channel;
    token.offset = static_cast<std::uint32_t>(pos);
    token.length = static_cast<std::uint32_t>(end - pos);
    token.line = line;
    token.charPositionInLine = column;
    token.index = static_cast<int>(tokens.size());
    tokens.push_back(token);
    for (; pos < end; ++pos) {
      if (text[pos] == '\n') {
        ++line;
        column = 0;
      } else {
        ++column;
      }
    }
  };
  // The end of an optional exponent starting at `i`, or `i` when there is none.
  auto exponentEnd = [&](std::size_t i) {
    if (at(i) != 'e' && at(i) != 'E') return i;
    std::size_t j = i + 1;
    if (at(j) == '+' || at(j) == '-') ++j;
    if (!IsDigit(at(j))) return i;
    while (IsDigit(at(j))) ++j;
    return j;
  };

  while (pos < n) {
    const char c = text[pos];
    switch (c) {
      case ' ': case '\t': case '\n': case '\r':
        emit(tok::WHITESPACE, pos + 1, tok::HIDDEN_CHANNEL);
        continue;
      case '/':
        if (at(pos + 1) == '/') {
          const std::size_t newline = text.find('\n', pos + 2);
          if (newline == std::string_view::npos) fail();  // a comment line needs its line feed
          emit(tok::COMMENT, newline + 1, tok::HIDDEN_CHANNEL);
        } else if (at(pos + 1) == '*') {
          const std::size_t close = text.find("*/", pos + 2);
          if (close == std::string_view::npos) fail();
          emit(tok::COMMENT, close + 2, tok::HIDDEN_CHANNEL);
        } else {
          emit(tok::DIV, pos + 1);
        }
        continue;
      case '"': {
        if (pos + 1 == n) {
          emit(tok::QUOTE, pos + 1);
          continue;
        }
        std::size_t j = pos + 1;
        while (j < n && text[j] != '"') {
          if (text[j] == '\\') {
            if (!IsEscapeLetter(at(j + 1))) fail();
            j += 2;
          } else {
            ++j;
          }
        }
        if (j >= n) fail();
        emit(QuotedLiteralType(text.substr(pos, j + 1 - pos)), j + 1);
        continue;
      }
      case '.':
        if (IsDigit(at(pos + 1))) {
          std::size_t j = pos + 1;
          while (IsDigit(at(j))) ++j;
          emit(tok::NUMBER, exponentEnd(j));
        } else if (at(pos + 1) == '*') {
          emit(tok::EMULT, pos + 2);
        } else if (at(pos + 1) == '/') {
          emit(tok::EDIV, pos + 2);
        } else if (at(pos + 1) == '^') {
          emit(tok::EPOW, pos + 2);
        } else {
          emit(tok::DOT, pos + 1);
        }
        continue;
      case '=':
        emit(at(pos + 1) == '=' ? tok::COMPARISON : tok::ASSIGN, at(pos + 1) == '=' ? pos + 2 : pos + 1);
        continue;
      case '~':
        emit(at(pos + 1) == '=' ? tok::COMPARISON : tok::SIM, at(pos + 1) == '=' ? pos + 2 : pos + 1);
        continue;
      case '<': case '>':
        emit(tok::COMPARISON, at(pos + 1) == '=' ? pos + 2 : pos + 1);
        continue;
      case '@': {
        if (!IsLetter(at(pos + 1))) fail();
        std::size_t j = pos + 1;
        while (IsLetter(at(j)) || IsDigit(at(j))) ++j;
        emit(tok::FUNCID, j);
        continue;
      }
      case '+': emit(tok::PLUS, pos + 1); continue;
      case '-': emit(tok::MINUS, pos + 1); continue;
      case '*': emit(tok::MULT, pos + 1); continue;
      case '^': emit(tok::POW, pos + 1); continue;
      case ',': emit(tok::COMMA, pos + 1); continue;
      case ':': emit(tok::COLON, pos + 1); continue;
      case ';': emit(tok::SEMICOL, pos + 1); continue;
      case '(': emit(tok::OPAREN, pos + 1); continue;
      case ')': emit(tok::CPAREN, pos + 1); continue;
      case '[': emit(tok::OBRCKT, pos + 1); continue;
      case ']': emit(tok::CBRCKT, pos + 1); continue;
      case '{': emit(tok::OCBRCKT, pos + 1); continue;
      case '}': emit(tok::CCBRCKT, pos + 1); continue;
      case '$': emit(tok::DOLLAR, pos + 1); continue;
      case '|': emit(tok::VERT, pos + 1); continue;
      case '&': emit(tok::AMP, pos + 1); continue;
      case '\'': emit(tok::PRIME, pos + 1); continue;
      default:
        break;
    }
    if (IsLetter(c)) {
      std::size_t j = pos + 1;
      while (IsLetter(at(j)) || IsDigit(at(j))) ++j;
      emit(KeywordType(text.substr(pos, j - pos)), j);
    } else if (IsDigit(c)) {
      std::size_t j = pos + 1;
      while (IsDigit(at(j))) ++j;
      if (at(j) == '.') {
        ++j;
        while (IsDigit(at(j))) ++j;
      }
      emit(tok::NUMBER, exponentEnd(j));
    } else {
      fail();
    }
  }
  Token end;
  end.type = tok::END_OF_INPUT;
  end.offset = static_cast<std::uint32_t>(n);
  end.length = 0;
  end.line = line;
  end.charPositionInLine = column;
  end.index = static_cast<int>(tokens.size());
  tokens.push_back(end);
  return tokens;
}
