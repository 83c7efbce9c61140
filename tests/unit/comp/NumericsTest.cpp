// The numerics behind the built-ins: sorting and statistics with missing values, special
// functions against reference values, symmetric eigenproblems and quadrature rules.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "Decompositions.h"
#include "MatrixStatistics.h"
#include "SpecialFunctions.h"

using Eigen::MatrixXd;

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

MatrixXd Column(std::initializer_list<double> values) {
  MatrixXd m(static_cast<Eigen::Index>(values.size()), 1);
  Eigen::Index i = 0;
  for (double v : values) m(i++, 0) = v;
  return m;
}

}  // namespace

TEST(MatrixStatistics, SortsAndOrderStatisticsWithMissingValues) {
  const MatrixXd sorted = numerics::matrixSort(Column({3, kNaN, -1, 2}));
  EXPECT_EQ(sorted(0, 0), -1);
  EXPECT_EQ(sorted(2, 0), 3);
  EXPECT_TRUE(std::isnan(sorted(3, 0)));  // missing last
  MatrixXd rows(4, 2);
  rows << 2, 1, 1, 9, 2, 0, 1, 9;
  const MatrixXd byFirst = numerics::SortMatrixVarIndex(rows, {0});
  EXPECT_EQ(byFirst.col(1), Eigen::Vector4d(9, 9, 1, 0));  // stable within ties
  const MatrixXd byBoth = numerics::SortMatrixVarIndex(rows, {0, 1});
  EXPECT_EQ(byBoth.col(1), Eigen::Vector4d(9, 9, 0, 1));
  EXPECT_EQ(numerics::matrixMedian(Column({4, 1, 3, 2}))(0, 0), 2.5);
  EXPECT_EQ(numerics::matrixMedian(Column({5, 1, 3}))(0, 0), 3);
  EXPECT_TRUE(std::isnan(numerics::matrixMedian(Column({1, kNaN, 3}))(0, 0)));
  EXPECT_EQ(numerics::matrixMedianRowwise(rows.transpose()).rows(), 2);
}

TEST(MatrixStatistics, MomentsAndCovariances) {
  // Large offsets test the two-pass variance: a naive sum of squares loses every digit here.
  const MatrixXd v = Column({1e9 + 4, 1e9 + 7, 1e9 + 13, 1e9 + 16});
  EXPECT_NEAR(numerics::matrixVar(v)(0, 0), 30.0, 1e-6);
  EXPECT_NEAR(numerics::matrixSd(v)(0, 0), std::sqrt(30.0), 1e-7);
  EXPECT_TRUE(std::isnan(numerics::matrixVar(Column({1}))(0, 0)));
  MatrixXd x(4, 3);
  x << 1, 2, 1, 2, 4, kNaN, 3, 6, 0, 4, 8, 5;
  const MatrixXd c = numerics::cov(x);
  EXPECT_NEAR(c(0, 0), 5.0 / 3.0, 1e-14);
  EXPECT_NEAR(c(0, 1), 10.0 / 3.0, 1e-14);
  EXPECT_TRUE(std::isnan(c(0, 2)) && std::isnan(c(2, 2)));
  const MatrixXd r = numerics::corr(x);
  EXPECT_NEAR(r(0, 1), 1.0, 1e-14);
  EXPECT_EQ(r(1, 1), 1.0);
  EXPECT_NEAR(numerics::covRowwise(x.leftCols(2).transpose())(0, 1), 10.0 / 3.0, 1e-14);
}

TEST(MatrixStatistics, TabulateCountsDistinctValues) {
  numerics::TabulateStatus status;
  const MatrixXd t = numerics::vectorTabulate(Column({3, 1, 3, kNaN, 2, 3}), 20, status);
  EXPECT_EQ(status, numerics::TabulateStatus::Ok);
  MatrixXd expected(3, 2);
  expected << 1, 1, 2, 1, 3, 3;
  EXPECT_EQ(t, expected);
  numerics::vectorTabulate(Column({1, 2, 3}), 2, status);
  EXPECT_EQ(status, numerics::TabulateStatus::TooManyUnique);
  numerics::vectorTabulate(Column({kNaN}), 2, status);
  EXPECT_EQ(status, numerics::TabulateStatus::NoUsableData);
}

TEST(SpecialFunctions, ReferenceValuesAndDomains) {
  MatrixXd out;
  // Values from mpmath at 30 digits.
  ASSERT_TRUE(numerics::gammainc(MatrixXd::Constant(1, 1, 1.7), MatrixXd::Constant(1, 1, 2.5), out));
  EXPECT_NEAR(out(0, 0), 0.361430076896204909880922985571, 1e-15);
  ASSERT_TRUE(numerics::gammainc(MatrixXd::Constant(1, 1, 30), MatrixXd::Constant(1, 1, 0.5), out));
  EXPECT_NEAR(1.0 - out(0, 0), 9.485737571073848e-15, 2.3e-16);  // one step of a double below 1
  ASSERT_TRUE(numerics::betainc(MatrixXd::Constant(1, 1, 0.3), MatrixXd::Constant(1, 1, 2),
                                MatrixXd::Constant(1, 1, 5), out));
  EXPECT_NEAR(out(0, 0), 0.579825, 1e-15);
  ASSERT_TRUE(numerics::gamma(MatrixXd::Constant(1, 1, -1.5), out));
  EXPECT_NEAR(out(0, 0), 2.36327180120735470306422331112, 1e-14);
  ASSERT_TRUE(numerics::lgamma(MatrixXd::Constant(1, 1, -1.5), out));
  EXPECT_NEAR(out(0, 0), 0.86004701537648101451093268167, 1e-14);
  ASSERT_TRUE(numerics::gamma(MatrixXd::Constant(1, 1, 171.5), out));
  EXPECT_NEAR(out(0, 0) / 9.4833675668247993362534054692e+307, 1.0, 1e-13);
  ASSERT_TRUE(numerics::beta(MatrixXd::Constant(1, 1, 2.5), MatrixXd::Constant(1, 1, 3.5), out));
  EXPECT_NEAR(out(0, 0), 0.0368155389092553895132341021478, 1e-16);
  ASSERT_TRUE(numerics::lbeta(MatrixXd::Constant(1, 1, 1000), MatrixXd::Constant(1, 1, 2000), out));
  EXPECT_NEAR(out(0, 0), -1911.87461421445156884083327457, 1e-9);
  ASSERT_TRUE(numerics::lmvgamma(MatrixXd::Constant(1, 1, 3.2), 3, out));
  EXPECT_NEAR(out(0, 0), 3.13426767637475293101748218726, 1e-13);
  // Outside the domain: refused; missing values pass through.
  EXPECT_FALSE(numerics::gamma(MatrixXd::Constant(1, 1, -2), out));
  EXPECT_FALSE(numerics::mvgamma(MatrixXd::Constant(1, 1, 0.9), 3, out));
  EXPECT_FALSE(numerics::betainc(MatrixXd::Constant(1, 1, 1.5), MatrixXd::Ones(1, 1), MatrixXd::Ones(1, 1), out));
  ASSERT_TRUE(numerics::gamma(MatrixXd::Constant(1, 1, kNaN), out));
  EXPECT_TRUE(std::isnan(out(0, 0)));
  EXPECT_EQ(numerics::round(Column({2.5, -2.5, 0.49}))(1, 0), -3.0);
}

TEST(Decompositions, EigenvaluesAndQuadratureRules) {
  MatrixXd a(3, 3);
  a << 4, 1, 0, 1, 3, 1, 0, 1, 2;
  MatrixXd values;
  MatrixXd vectors;
  ASSERT_TRUE(numerics::SymmetricEigen(a, values, vectors));
  EXPECT_LT(values(0, 0), values(1, 0));
  EXPECT_TRUE((a * vectors).isApprox(vectors * values.col(0).asDiagonal()));
  MatrixXd x;
  MatrixXd w;
  ASSERT_TRUE(numerics::HermiteQuad(2, x, w));
  EXPECT_NEAR(x(1, 0), std::sqrt(0.5), 1e-15);
  EXPECT_NEAR(w(0, 0), std::sqrt(std::numbers::pi) / 2, 1e-15);
  // An n-point rule integrates polynomials up to degree 2n - 1 exactly:
  // the integral of exp(-x^2) x^(2k) is gamma(k + 1/2), of exp(-x) x^k is k!.
  ASSERT_TRUE(numerics::HermiteQuad(10, x, w));
  for (int k = 0; k <= 9; ++k) {
    EXPECT_NEAR((w.array() * x.array().pow(2 * k)).sum() / std::tgamma(k + 0.5), 1.0, 1e-12) << k;
  }
  ASSERT_TRUE(numerics::LaguerreQuad(10, x, w));
  for (int k = 0; k <= 19; ++k) {
    EXPECT_NEAR((w.array() * x.array().pow(k)).sum() / std::tgamma(k + 1.0), 1.0, 1e-9) << k;
  }
  for (int n : {300}) {
    ASSERT_TRUE(numerics::HermiteQuad(n, x, w));
    EXPECT_NEAR(w.sum(), std::sqrt(std::numbers::pi), 1e-12);
    EXPECT_NEAR((w.array() * x.array().square()).sum(), std::sqrt(std::numbers::pi) / 2, 1e-12);
    ASSERT_TRUE(numerics::LaguerreQuad(n, x, w));
    EXPECT_NEAR(w.sum(), 1.0, 1e-12);
    EXPECT_NEAR((w.array() * x.array()).sum(), 1.0, 1e-10);
    EXPECT_NEAR((w.array() * x.array().square()).sum(), 2.0, 1e-10);
  }
}
