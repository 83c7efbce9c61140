// Element-wise expressions over large matrices run in one pass: the numbers must be exactly those
// of operator-by-operator evaluation, aliasing the target must be safe, and anything that cannot
// be fused must still report its own error.
#include <gtest/gtest.h>

#include "InterpreterTestSupport.h"

namespace {

struct LargeMatrices : testing::Test {
  RecordingSession run;
  Eigen::MatrixXd a = Eigen::MatrixXd::Random(90, 70);  // 6300 elements: above the fusion size
  Eigen::MatrixXd b = Eigen::MatrixXd::Random(90, 70);
  void SetUp() override {
    run.session.workspace.Store("A", TavixValue::FromMatrix(a));
    run.session.workspace.Store("B", TavixValue::FromMatrix(b));
    run.session.workspace.Store("s", TavixValue::FromScalar(3.0));
  }
  const Eigen::MatrixXd& Get(const char* name) { return *run.session.workspace.matrices.at(name); }
};

}  // namespace

TEST_F(LargeMatrices, ResultsAreThoseOfOneOperatorAtATime) {
  ASSERT_EQ(run.ErrorOf("C = A * 2 - B;\nD = s - A ./ B;\nE = (A + B) / 2;\n"
                        "F = -A .* B + A * s - 1;\nG = 2 * (A - B) .* (A + B);"),
            "");
  const Eigen::ArrayXXd x = a.array();
  const Eigen::ArrayXXd y = b.array();
  EXPECT_TRUE((Get("C").array() == x * 2 - y).all());
  EXPECT_TRUE((Get("D").array() == 3.0 - x / y).all());
  EXPECT_TRUE((Get("E").array() == (x + y) / 2).all());
  EXPECT_TRUE((Get("F").array() == (-x) * y + x * 3.0 - 1).all());
  EXPECT_TRUE((Get("G").array() == (2 * (x - y)) * (x + y)).all());
}

TEST_F(LargeMatrices, TheTargetMayBeAnOperand) {
  ASSERT_EQ(run.ErrorOf("C = A;\nC = C * 2 - A;\nB = A - B * 0.5;"), "");
  EXPECT_TRUE((Get("C").array() == a.array() * 2 - a.array()).all());
  EXPECT_TRUE((Get("B").array() == a.array() - b.array() * 0.5).all());
  EXPECT_TRUE((Get("A").array() == a.array()).all());  // operands are never written
}

TEST_F(LargeMatrices, UnfusableExpressionsKeepTheirMessages) {
  run.session.workspace.Store("R", TavixValue::FromMatrix(Eigen::MatrixXd::Random(70, 90)));
  // A matrix product inside, a size mismatch, an undefined name: evaluated one operator at a time.
  EXPECT_EQ(run.ErrorOf("P = A * R + 1;"), "");
  EXPECT_EQ(Get("P").rows(), 90);
  EXPECT_NE(run.ErrorOf("Q = A * 2 - R;").find("comformable"), std::string::npos);
  EXPECT_NE(run.ErrorOf("Q = A * 2 - missing;").find("Symbol \"missing\" is not defined."),
            std::string::npos);
  EXPECT_EQ(run.session.workspace.ID_code("Q"), -1);
}
