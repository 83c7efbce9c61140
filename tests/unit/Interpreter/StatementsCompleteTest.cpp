// When the consoles run what was typed: complete statements only.
#include <gtest/gtest.h>

#include "StatementsComplete.h"

TEST(StatementsComplete, OnlyClosedBlocksAndEndedStatements) {
  EXPECT_TRUE(StatementsComplete("x = 1;"));
  EXPECT_TRUE(StatementsComplete("x = 1; y = 2;  // a comment"));
  EXPECT_FALSE(StatementsComplete("x = 1"));
  EXPECT_FALSE(StatementsComplete("x = [1 2;"));
  EXPECT_FALSE(StatementsComplete("for (i = 1 : 3)\n  print(i);"));
  EXPECT_TRUE(StatementsComplete("for (i = 1 : 3)\n  print(i);\nend"));
  EXPECT_FALSE(StatementsComplete("if (x > 1)\n  while (y < 2)\n    y = y + 1;\n  end"));
  EXPECT_TRUE(StatementsComplete("if (x > 1)\n  while (y < 2)\n    y = y + 1;\n  end\nend"));
  EXPECT_FALSE(StatementsComplete("function y = f(x)\n  y = x;"));
  EXPECT_FALSE(StatementsComplete("s = \"an unclosed string;"));
  EXPECT_FALSE(StatementsComplete("/* an unclosed comment"));
  // A ";" inside a string or a comment does not end a statement.
  EXPECT_FALSE(StatementsComplete("print(\"a;b\")"));
  EXPECT_FALSE(StatementsComplete("x = 1 // ;"));
}
