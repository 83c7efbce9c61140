// Random bytes and mutated scripts through the lexer: tokens tile the text, or a report comes.
#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>
#include <vector>

#include "TavixError.h"
#include "TavixLexer.h"

namespace {

const std::vector<std::string> kCorpus = {
    "a = [1 2; 3 4]'; // c\n/* b */ s = \"x\\ty\"; @f(1.5e-3, .5) .* b ./ c .^ 2;\n",
    "if (x >= 3 & y ~= 2 | ~z) print(\"multi\nline\"); else w = normrnd(0, 1, 3, 3); end\r\n",
    "for (i = 1 : 10) s = s + i * 0.5 - mean(v(:, 2)) ^ 2; end\n$ { } 7E2 2.5E+10 1.\n",
    "lm_re y x1 x2, draws(100) \"constraints\" \"prefix\" \"stats\" \"diff\" \"lags\" \"ma\";\n",
    "function r = f(a) r = a; end // last\n x = \"",
};

// A random change to `text`: a byte inserted, replaced or removed, or a piece of another script.
void Mutate(std::string& text, std::mt19937_64& rng) {
  const std::size_t at = rng() % (text.size() + 1);
  switch (rng() % 4) {
    case 0:
      text.insert(at, 1, static_cast<char>(rng() % 256));
      break;
    case 1:
      if (at < text.size()) text[at] = static_cast<char>(rng() % 256);
      break;
    case 2:
      if (at < text.size()) text.erase(at, 1 + rng() % 4);
      break;
    default: {
      const std::string& other = kCorpus[rng() % kCorpus.size()];
      const std::size_t from = rng() % other.size();
      text.insert(at, other, from, 1 + rng() % 20);
    }
  }
}

// A line of many thousand characters made of one kind of token.
std::string LongLine(std::mt19937_64& rng) {
  const std::size_t length = 20000 + rng() % 20000;
  switch (rng() % 4) {
    case 0: return std::string(length, 'x');
    case 1: return "\"" + std::string(length, 'a') + "\"";
    case 2: return "/*" + std::string(length, '*') + "*/";
    default: return std::string(length, '9') + "." + std::string(length, '1') + "e+7";
  }
}

// Every token continues where the one before it ended, with the line and position of that place;
// hidden tokens are exactly the whitespace and comments; one end of input comes last.
void ExpectWellFormed(const std::string& text, const std::vector<Token>& tokens) {
  ASSERT_FALSE(tokens.empty());
  std::size_t covered = 0;
  int line = 1;
  int column = 0;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    const Token& token = tokens[i];
    ASSERT_EQ(token.index, static_cast<int>(i));
    ASSERT_EQ(token.offset, covered);
    ASSERT_EQ(token.line, line);
    ASSERT_EQ(token.charPositionInLine, column);
    ASSERT_EQ(token.type == tok::END_OF_INPUT, i + 1 == tokens.size());
    if (token.type != tok::END_OF_INPUT) {
      ASSERT_GT(token.type, tok::UP);
      ASSERT_LT(token.type, tok::TOKEN_TYPE_COUNT);
      ASSERT_GT(token.length, 0u);
    }
    const bool hidden = token.type == tok::WHITESPACE || token.type == tok::COMMENT;
    ASSERT_EQ(token.channel, hidden ? tok::HIDDEN_CHANNEL : tok::DEFAULT_CHANNEL);
    for (std::size_t k = covered; k < covered + token.length; ++k) {
      if (text[k] == '\n') {
        ++line;
        column = 0;
      } else {
        ++column;
      }
    }
    covered += token.length;
  }
  ASSERT_EQ(covered, text.size());
  ASSERT_EQ(tokens.back().length, 0u);
}

}  // namespace

TEST(LexerFuzz, AnyInputGivesTilingTokensOrAReport) {
  std::mt19937_64 rng(20240917);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(3);
  int runs = 0;
  int failures = 0;
  while (std::chrono::steady_clock::now() < deadline) {
    std::string text;
    if (runs % 3 == 0) {
      text.resize(rng() % 300);
      for (char& c : text) c = static_cast<char>(rng() % 256);
    } else {
      text = kCorpus[rng() % kCorpus.size()];
      for (int edits = 1 + static_cast<int>(rng() % 6); edits > 0; --edits) Mutate(text, rng);
    }
    if (runs % 101 == 0) text.insert(rng() % (text.size() + 1), LongLine(rng));
    try {
      const std::vector<Token> tokens = TavixLexer(text, "\"fuzz\"").Tokenize();
      ExpectWellFormed(text, tokens);
      if (HasFatalFailure()) {
        ADD_FAILURE() << "input of " << text.size() << " bytes: " << testing::PrintToString(text);
        return;
      }
    } catch (const TavixError&) {
      ++failures;
    }
    ++runs;
  }
  // Both outcomes must have come up for the run to mean anything.
  EXPECT_GT(runs, 1000);
  EXPECT_GT(failures, 0);
  EXPECT_LT(failures, runs);
}
