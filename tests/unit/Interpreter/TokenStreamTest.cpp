// The token stream: look-ahead over on-channel tokens, seeking, and texts with their spacing.
#include <gtest/gtest.h>

#include "TokenStream.h"

TEST(TokenStream, LooksAheadAndBackOverOnChannelTokensOnly) {
  TokenStream stream("  a  /* c */ =\n 1 ;", "\"s\"");
  EXPECT_EQ(stream.LA(1), tok::ID);  // leading blanks skipped
  EXPECT_EQ(stream.LA(2), tok::ASSIGN);
  EXPECT_EQ(stream.LA(3), tok::NUMBER);
  EXPECT_EQ(stream.LA(4), tok::SEMICOL);
  EXPECT_EQ(stream.LA(5), tok::END_OF_INPUT);
  EXPECT_EQ(stream.LA(9), tok::END_OF_INPUT);  // never past the end
  const int a = stream.Index();
  stream.Consume();
  EXPECT_EQ(stream.LA(1), tok::ASSIGN);
  EXPECT_EQ(stream.LT(-1).index, a);
  const int assign = stream.Index();
  stream.Consume();
  stream.Consume();
  stream.Consume();
  EXPECT_EQ(stream.LA(1), tok::END_OF_INPUT);
  stream.Consume();  // consuming the end of input stays there
  EXPECT_EQ(stream.LA(1), tok::END_OF_INPUT);

  // Seeking to a hidden token lands on the next on-channel one.
  stream.Seek(a + 1);
  EXPECT_EQ(stream.Index(), assign);
  stream.Seek(a);
  EXPECT_EQ(stream.Index(), a);

  // Texts of token ranges keep the comments and blanks between them.
  const int semicolon = stream.LT(4).index;
  EXPECT_EQ(stream.Text(a, semicolon), "a  /* c */ =\n 1 ;");
  EXPECT_EQ(stream.FirstLineText(a, semicolon), "a  /* c */ =");
  EXPECT_EQ(stream.Text(semicolon, a), "");
}
