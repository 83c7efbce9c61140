// Requests for matrices larger than the memory there is are refused at once with the figures,
// whichever statement asks, and leave the workspace as it was.
#include <gtest/gtest.h>

#include <string>

#include "InterpreterTestSupport.h"
#include "MatrixArithmetic.h"
#include "TavixError.h"

TEST(OversizedRequest, EveryWayOfAskingIsRefusedWithTheSize) {
  RecordingSession s;
  ASSERT_EQ(s.ErrorOf("v = ones(1e6, 1); a = [1 2];"), "");
  const std::string refusal = "A 1000000 by 1000000 matrix would need 8000.0 GB of memory, but only ";
  for (const char* request :
       {"a = zeros(1e6, 1e6);", "a = ones(1e6, 1e6);", "a = unifrnd(1e6, 1e6);", "a = normrnd(0, 1, 1e6, 1e6);",
        "a = catrnd([0.5 0.5], 1e6, 1e6);", "a = repmat(1, 1e6, 1e6);", "a = kron(ones(1000, 1000), ones(1000, 1000));",
        "a = diag(v);", "a = v * v';", "a = v(v, v);", "a = cov(v');"}) {
    SCOPED_TRACE(request);
    EXPECT_NE(s.ErrorOf(request).find(refusal), std::string::npos) << s.ErrorOf(request);
  }
  EXPECT_EQ(s.session.workspace.matrices.at("a")->cols(), 2);
}

TEST(OversizedRequest, LargeProductsAreExactInBlocksAndStopBetweenThem) {
  const Eigen::MatrixXd a = Eigen::MatrixXd::Random(1000, 700);
  const Eigen::MatrixXd b = Eigen::MatrixXd::Random(700, 500);
  std::atomic<bool> stop{false};
  Eigen::MatrixXd blocked;
  ASSERT_EQ(arithmetic::Multiply(a, b, blocked, &stop), "");
  const Eigen::MatrixXd plain = a * b;
  EXPECT_LT((blocked - plain).cwiseAbs().maxCoeff(), 1e-9);
  stop = true;
  EXPECT_THROW(arithmetic::Multiply(a, b, blocked, &stop), TavixInterrupted);
  // A power by repeated squaring goes through the same products; a whole exponent of any size.
  Eigen::MatrixXd out;
  ASSERT_EQ(arithmetic::Power(Eigen::Matrix2d::Identity() * -1.0, Eigen::MatrixXd::Constant(1, 1, 1e30), out), "");
  EXPECT_EQ(out, Eigen::MatrixXd(Eigen::Matrix2d::Identity()));
}
