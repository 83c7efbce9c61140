// Matrix arithmetic: broadcasting, conformability messages and powers.
#include <gtest/gtest.h>

#include <cmath>

#include "MatrixArithmetic.h"

namespace {

Eigen::MatrixXd M(std::initializer_list<std::initializer_list<double>> rows) {
  return Eigen::MatrixXd{rows};
}

}  // namespace

TEST(MatrixArithmetic, AdditionBroadcastsScalarsOnEitherSide) {
  Eigen::MatrixXd out;
  const Eigen::MatrixXd a = M({{1, 2}, {3, 4}});
  EXPECT_EQ(arithmetic::AddSubtract(a, M({{1}}), false, out), "");
  EXPECT_EQ(out, M({{2, 3}, {4, 5}}));
  EXPECT_EQ(arithmetic::AddSubtract(M({{1}}), a, true, out), "");  // 1 - A
  EXPECT_EQ(out, M({{0, -1}, {-2, -3}}));
  EXPECT_EQ(arithmetic::AddSubtract(a, M({{1}}), true, out), "");  // A - 1
  EXPECT_EQ(out, M({{0, 1}, {2, 3}}));
  out = M({{9}});
  EXPECT_EQ(arithmetic::AddSubtract(M({{1, 2}}), M({{1}, {2}}), false, out),
            "Summands are not comformable for element-wise operations.");
  EXPECT_EQ(out, M({{9}}));  // untouched on failure
}

TEST(MatrixArithmetic, ProductsAndDivisions) {
  Eigen::MatrixXd out;
  EXPECT_EQ(arithmetic::Multiply(M({{1, 2}}), M({{3}, {4}}), out), "");
  EXPECT_EQ(out, M({{11}}));
  EXPECT_EQ(arithmetic::Multiply(M({{2}}), M({{1, 2}}), out), "");
  EXPECT_EQ(out, M({{2, 4}}));
  EXPECT_EQ(arithmetic::Multiply(M({{1, 2}}), M({{1, 2}}), out),
            "Matrices are not comformable for multiplication.");
  EXPECT_EQ(arithmetic::Divide(M({{2, 4}}), M({{2}}), out), "");
  EXPECT_EQ(out, M({{1, 2}}));
  EXPECT_EQ(arithmetic::Divide(M({{2}}), M({{1, 2}, {3, 4}}), out),
            "The \"/\" operator is not defined for matrices or datasets.");
  EXPECT_EQ(arithmetic::ElementWise(M({{2, 4}}), M({{2, 8}}), true, out), "");
  EXPECT_EQ(out, M({{1, 0.5}}));
  EXPECT_EQ(arithmetic::ElementWise(M({{2}}), M({{2, 8}}), true, out), "");  // 2 ./ B
  EXPECT_EQ(out, M({{1, 0.25}}));
  EXPECT_EQ(arithmetic::ElementWise(M({{1, 2}}), M({{1, 2, 3}}), false, out),
            "Factors are not comformable for element-wise operations.");
}

TEST(MatrixArithmetic, Powers) {
  Eigen::MatrixXd out;
  EXPECT_EQ(arithmetic::Power(M({{2}}), M({{-1}}), out), "");
  EXPECT_EQ(out, M({{0.5}}));
  EXPECT_EQ(arithmetic::Power(M({{2}}), M({{1, 2}}), out), "The exponents of scalars must be scalars.");
  EXPECT_EQ(arithmetic::Power(M({{1, 2, 3}, {4, 5, 6}}), M({{2}}), out),
            "The base must be a square matrix.");
  for (double bad : {0.5, 0.0, -1.0, double(NAN), double(INFINITY)}) {
    EXPECT_EQ(arithmetic::Power(M({{1, 1}, {0, 1}}), M({{bad}}), out),
              "The exponents of matrices must be positive integers.")
        << bad;
  }
  // Repeated squaring agrees with repeated products for every exponent up to 9.
  const Eigen::MatrixXd base = M({{1, 1}, {1, 0}});  // Fibonacci
  Eigen::MatrixXd expected = base;
  for (int p = 1; p <= 9; ++p) {
    ASSERT_EQ(arithmetic::Power(base, M({{double(p)}}), out), "");
    EXPECT_EQ(out, expected) << p;
    expected = expected * base;
  }
  EXPECT_EQ(arithmetic::ElementPower(M({{2, 3}}), M({{2, 2}}), out), "");
  EXPECT_EQ(out, M({{4, 9}}));
  EXPECT_EQ(arithmetic::ElementPower(M({{2}}), M({{1, 3}}), out), "");
  EXPECT_EQ(out, M({{2, 8}}));
  EXPECT_EQ(arithmetic::ElementPower(M({{2, 3}}), M({{1, 2, 3}}), out),
            "The matrices are not comformable for element-wise operations.");
}
