// Cached name look-ups and the scalar path stay correct as the workspace changes.
#include <gtest/gtest.h>

#include "InterpreterTestSupport.h"
#include "TavixParser.h"

TEST(NameCache, FollowsRemovalsReplacementsAndOtherWorkspaces) {
  RecordingSession run;
  Workspace& ws = run.session.workspace;
  TokenStream stream("x + 1", "\"c\"");
  TavixParser parser(stream, run.session, "\"c\"", 0);
  const ExpressionPtr sum = parser.expr(false);
  const ExpressionPtr& name = static_cast<const BinaryExpression&>(*sum).left;
  ExecContext& context = parser.context();

  ws.Store("x", TavixValue::FromScalar(1));
  double value = 0;
  ASSERT_TRUE(sum->EvaluateScalar(context, value));
  EXPECT_EQ(value, 2.0);
  ws.Store("x", TavixValue::FromScalar(41));  // same entry, new matrix
  ASSERT_TRUE(sum->EvaluateScalar(context, value));
  EXPECT_EQ(value, 42.0);

  ws.Store("x", TavixValue::FromString("text"));  // removed from the matrices
  EXPECT_FALSE(name->EvaluateScalar(context, value));
  EXPECT_EQ(name->Evaluate(context).code, kind::STRING);
  ws.Remove("x");
  ws.Store("x", TavixValue::FromMatrix(Eigen::MatrixXd::Constant(2, 2, 3.0)));
  EXPECT_FALSE(sum->EvaluateScalar(context, value));  // not 1 by 1: the matrix path
  EXPECT_EQ(*sum->Evaluate(context).matrix, Eigen::MatrixXd::Constant(2, 2, 4.0));

  // Another workspace at any address never sees this one's entry.
  for (int i = 0; i < 3; ++i) {
    Session other;
    other.workspace.Store("x", TavixValue::FromScalar(i));
    TavixParser second(stream, other, "\"c\"", 0);
    ASSERT_TRUE(sum->EvaluateScalar(second.context(), value));
    EXPECT_EQ(value, i + 1.0);
  }
}

TEST(ScalarPath, AgreesWithMatrixArithmetic) {
  RecordingSession run;
  ASSERT_EQ(run.ErrorOf("a = 3;\nb = -2;\n"
                        "s = 0;\ns = a ^ b + a / b - a .* b ./ 4 + (-a) .^ 2;\n"
                        "m = [a] ^ [b] + [a] / [b] - [a] .* [b] ./ [4] + [-a] .^ [2];"),
            "");
  const Workspace& ws = run.session.workspace;
  EXPECT_DOUBLE_EQ((*ws.matrices.at("s"))(0, 0), (*ws.matrices.at("m"))(0, 0));
  EXPECT_DOUBLE_EQ((*ws.matrices.at("s"))(0, 0), 1.0 / 9.0 - 1.5 + 1.5 + 9.0);
}
