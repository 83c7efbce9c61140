// Random bytes and mutated scripts through the lexer: tokens tile the text, or a report comes.
#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>

#include "TavixError.h"
#include "TavixLexer.h"

TEST(LexerFuzz, AnyInputGivesTilingTokensOrAReport) {
  const std::string corpus =
      "a = [1 2; 3 4]'; // c\n/* b */ s = \"x\\ty\"; @f(1.5e-3, .5) .* b ./ c .^ 2;\n";
  std::mt19937_64 rng(7);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
  int runs = 0;
  int failures = 0;
  while (std::chrono::steady_clock::now() < deadline) {
    std::string text;
    if (runs % 2 == 0) {
      text.resize(rng() % 200);
      for (char& c : text) c = static_cast<char>(rng() % 256);
    } else {
      text = corpus;
      for (int edits = 1 + static_cast<int>(rng() % 5); edits > 0; --edits) {
        const std::size_t at = rng() % (text.size() + 1);
        if (rng() % 2) {
          text.insert(at, 1, static_cast<char>(rng() % 128));
        } else if (at < text.size()) {
          text.erase(at, 1);
        }
      }
    }
    if (runs % 97 == 0) text += std::string(10000, 'x');  // a very long line
    try {
      const auto tokens = TavixLexer(text, "\"fuzz\"").Tokenize();
      std::size_t covered = 0;
      for (const Token& token : tokens) {
        ASSERT_EQ(token.offset, covered);
        covered += token.length;
      }
      ASSERT_EQ(covered, text.size());
      ASSERT_EQ(tokens.back().type, tok::END_OF_INPUT);
    } catch (const TavixError&) {
      ++failures;
    }
    ++runs;
  }
  EXPECT_GT(runs, 1000);
  EXPECT_GT(failures, 0);
  EXPECT_LT(failures, runs);
}
