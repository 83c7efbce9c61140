// The matrix print format: integers, fixed and scientific notation, special values, blocks.
#include <gtest/gtest.h>

#include <cmath>

#include "MatrixFormat.h"

namespace {
Eigen::MatrixXd M(std::initializer_list<std::initializer_list<double>> rows) {
  return Eigen::MatrixXd{rows};
}
}  // namespace

TEST(MatrixFormat, IntegersPrintWithoutDecimals) {
  EXPECT_EQ(FormatMatrix(M({{1, -12, 0}, {300, 4, -5}})), "    1  -12    0\n  300    4   -5\n\n");
  EXPECT_EQ(FormatMatrix(M({{7}})), "  7\n\n");
  EXPECT_EQ(FormatMatrix(M({{-3}, {20}, {-100}})), "    -3\n    20\n  -100\n\n");
  EXPECT_EQ(FormatMatrix(M({{-0.0, 1}})), "  0  1\n\n");
  EXPECT_EQ(FormatMatrix(M({{-0.0}})), "  0\n\n");
  EXPECT_EQ(FormatMatrix(M({{999999999999999, -1}})), "  999999999999999               -1\n\n");
  EXPECT_EQ(FormatMatrix(Eigen::MatrixXd(0, 3)), "");
}

TEST(MatrixFormat, FixedNotationSharesTheDecimalsOfTheLargest) {
  EXPECT_EQ(FormatMatrix(M({{1.5, 2.25}, {-100.125, 3}})),
            "     1.500     2.250\n  -100.125     3.000\n\n");
  EXPECT_EQ(FormatMatrix(M({{0.5}, {1.0}, {-2.75}})), "   0.50\n   1.00\n  -2.75\n\n");
  EXPECT_EQ(FormatMatrix(M({{1.0 / 3.0}})), "  0.333333\n\n");
  EXPECT_EQ(FormatMatrix(M({{-2.0 / 3.0, 0.0123456789}})), "  -0.666667   0.012346\n\n");
  EXPECT_EQ(FormatMatrix(M({{0.0123456789}})), "  0.0123457\n\n");
  EXPECT_EQ(FormatMatrix(M({{12345.6789, 1.5}})), "  12345.7      1.5\n\n");
  EXPECT_EQ(FormatMatrix(M({{-0.0, 0.5}})), "  0.0  0.5\n\n");
  // Four orders of magnitude apart: the small one keeps two significant digits.
  EXPECT_EQ(FormatMatrix(M({{1.5, 0.00012345}})), "  1.50000  0.00012\n\n");
  // Rounded to six digits the largest is 99999.9, still below 1e5.
  EXPECT_EQ(FormatMatrix(M({{99999.94, 1.5}})), "  99999.9      1.5\n\n");
}

TEST(MatrixFormat, ScientificNotationForLargeTinyOrFarApartMagnitudes) {
  EXPECT_EQ(FormatMatrix(M({{123456.5, 1}})), "  1.23456e+05  1.00000e+00\n\n");
  EXPECT_EQ(FormatMatrix(M({{0.5, -1e-7}})), "   5.00000e-01  -1.00000e-07\n\n");
  EXPECT_EQ(FormatMatrix(M({{1e16, 1}})), "  1.00000e+16  1.00000e+00\n\n");
  EXPECT_EQ(FormatMatrix(M({{1.5, 0.000012345}})), "  1.50000e+00  1.23450e-05\n\n");
  EXPECT_EQ(FormatMatrix(M({{99999.96, 1.5}})), "  1.00000e+05  1.50000e+00\n\n");
  EXPECT_EQ(FormatMatrix(M({{1e-300}, {-2.5e100}})), "   1.00000e-300\n  -2.50000e+100\n\n");
}

TEST(MatrixFormat, SpecialValuesAlignAndDoNotChooseTheFormat) {
  EXPECT_EQ(FormatMatrix(M({{NAN, 1.5}, {INFINITY, -INFINITY}})), "   nan   1.5\n   inf  -inf\n\n");
  EXPECT_EQ(FormatMatrix(M({{NAN, 3}, {-INFINITY, 10}})), "   nan     3\n  -inf    10\n\n");
  EXPECT_EQ(FormatMatrix(M({{NAN, 1e-7, INFINITY}})),
            "          nan  1.00000e-07          inf\n\n");
  EXPECT_EQ(FormatMatrix(M({{NAN, INFINITY}})), "  nan  inf\n\n");
}

TEST(MatrixFormat, WideMatricesComeInBlocksOfColumns) {
  Eigen::MatrixXd wide(2, 30);
  for (int c = 0; c < 30; ++c) {
    wide(0, c) = 100000001 + c;
    wide(1, c) = -1 - c;
  }
  EXPECT_EQ(FormatMatrix(wide),
            "Columns 1 through 7\n\n"
            "  100000001  100000002  100000003  100000004  100000005  100000006  100000007\n"
            "         -1         -2         -3         -4         -5         -6         -7\n\n"
            "Columns 8 through 14\n\n"
            "  100000008  100000009  100000010  100000011  100000012  100000013  100000014\n"
            "         -8         -9        -10        -11        -12        -13        -14\n\n"
            "Columns 15 through 21\n\n"
            "  100000015  100000016  100000017  100000018  100000019  100000020  100000021\n"
            "        -15        -16        -17        -18        -19        -20        -21\n\n"
            "Columns 22 through 28\n\n"
            "  100000022  100000023  100000024  100000025  100000026  100000027  100000028\n"
            "        -22        -23        -24        -25        -26        -27        -28\n\n"
            "Columns 29 and 30\n\n"
            "  100000029  100000030\n"
            "        -29        -30\n\n");
  EXPECT_EQ(FormatMatrix(M({{1000, 2000, 3000, 4000, 5000}}), 12),
            "Columns 1 and 2\n\n  1000  2000\n\n"
            "Columns 3 and 4\n\n  3000  4000\n\n"
            "Column 5\n\n  5000\n\n");
  // Exactly as wide as the console: no blocks.
  EXPECT_EQ(FormatMatrix(M({{10000000, 2, 3, 4, 5, 6, 7, 8}})),
            "  10000000         2         3         4         5         6         7         8\n\n");
  // A column wider than the console still comes one at a time.
  EXPECT_EQ(FormatMatrix(M({{1, 2}}), 2), "Column 1\n\n  1\n\nColumn 2\n\n  2\n\n");
}
