// The matrix print format: integers, fixed and scientific notation, special values, blocks.
#include <gtest/gtest.h>

#include <cmath>

#include "MatrixFormat.h"

namespace {
Eigen::MatrixXd M(std::initializer_list<std::initializer_list<double>> rows) {
  return Eigen::MatrixXd{rows};
}
}  // namespace

TEST(MatrixFormat, IntegersFixedAndScientific) {
  EXPECT_EQ(FormatMatrix(M({{1, -12}, {300, 0}})), "    1  -12\n  300    0\n\n");
  EXPECT_EQ(FormatMatrix(M({{7}})), "  7\n\n");
  EXPECT_EQ(FormatMatrix(M({{-0.0}})), "  0\n\n");
  // One number of decimals for all, the zero decimals common to all dropped.
  EXPECT_EQ(FormatMatrix(M({{1.5, 2.25}, {-100.125, 3}})),
            "     1.500     2.250\n  -100.125     3.000\n\n");
  EXPECT_EQ(FormatMatrix(M({{0.5}, {1.0}})), "  0.5\n  1.0\n\n");
  EXPECT_EQ(FormatMatrix(M({{1.0 / 3.0}})), "  0.333333\n\n");
  EXPECT_EQ(FormatMatrix(M({{123456.5, 1}})), "  1.23456e+05  1.00000e+00\n\n");
  EXPECT_EQ(FormatMatrix(M({{0.5, 1e-7}})), "  5.00000e-01  1.00000e-07\n\n");
  EXPECT_EQ(FormatMatrix(M({{1e16, 1}})), "  1.00000e+16  1.00000e+00\n\n");
}

TEST(MatrixFormat, SpecialValuesAlignWithNumbers) {
  EXPECT_EQ(FormatMatrix(M({{NAN, 1.5}, {INFINITY, -INFINITY}})),
            "   nan   1.5\n   inf  -inf\n\n");
  EXPECT_EQ(FormatMatrix(M({{NAN, NAN}})), "  nan  nan\n\n");
  EXPECT_EQ(FormatMatrix(Eigen::MatrixXd(0, 3)), "");
}

TEST(MatrixFormat, WideMatricesComeInBlocksOfColumns) {
  Eigen::MatrixXd wide(2, 11);
  for (int c = 0; c < 11; ++c) {
    wide(0, c) = 1000000 + c;
    wide(1, c) = c;
  }
  // Columns are 9 wide: 3 fit in 30 characters.
  const std::string text = FormatMatrix(wide, 30);
  EXPECT_EQ(text.rfind("Columns 1 through 3\n\n  1000000  1000001  1000002\n        0        1        2\n\n", 0),
            0u);
  EXPECT_NE(text.find("Columns 7 through 9\n"), std::string::npos);
  EXPECT_NE(text.find("Columns 10 and 11\n\n  1000009  1000010\n        9       10\n\n"),
            std::string::npos);
  const std::string seven = FormatMatrix(wide.leftCols(7), 30);
  const std::string last = "Column 7\n\n  1000006\n        6\n\n";
  ASSERT_GT(seven.size(), last.size());
  EXPECT_EQ(seven.substr(seven.size() - last.size()), last);
  EXPECT_EQ(FormatMatrix(wide.leftCols(3), 30).find("Column"), std::string::npos);
}
