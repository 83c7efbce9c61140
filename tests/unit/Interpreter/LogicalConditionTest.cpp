// Logical conditions: element-wise comparisons, "&", "|", "~", grouping and their messages.
#include <gtest/gtest.h>

#include "InterpreterTestSupport.h"
#include "TavixParser.h"

namespace {

struct LogicalConditions : testing::Test {
  RecordingSession run;
  void SetUp() override {
    ASSERT_EQ(run.ErrorOf("v = [1; 2; 3; 4];\nw = [4 3 2 1];\nM = [1 2; 3 4];\nz = nan;"), "");
  }
  // The 0/1 vector of a condition, or the report it raises.
  Eigen::VectorXi Evaluate(const std::string& code, std::string* error = nullptr) {
    TokenStream stream(code, "\"l\"");
    TavixParser parser(stream, run.session, "\"l\"", 0);
    try {
      return parser.logical_expr(true)->Evaluate(parser.context());
    } catch (const TavixError& e) {
      if (error) *error = e.what();
    }
    return {};
  }
  std::string ErrorOf(const std::string& code) {
    std::string error;
    Evaluate(code, &error);
    return error;
  }
};

Eigen::VectorXi V(std::initializer_list<int> values) {
  Eigen::VectorXi out(static_cast<Eigen::Index>(values.size()));
  Eigen::Index i = 0;
  for (int x : values) out(i++) = x;
  return out;
}

}  // namespace

TEST_F(LogicalConditions, ComparisonsWorkElementByElement) {
  EXPECT_EQ(Evaluate("v > 2"), V({0, 0, 1, 1}));
  EXPECT_EQ(Evaluate("2 >= v"), V({1, 1, 0, 0}));  // a 1 by 1 side on either side
  EXPECT_EQ(Evaluate("v == w"), V({0, 0, 0, 0}));   // a row and a column of one length
  EXPECT_EQ(Evaluate("v' ~= [1 0 3 0]"), V({0, 1, 0, 1}));
  EXPECT_EQ(Evaluate("z == z"), V({0}));
  EXPECT_EQ(Evaluate("z ~= z"), V({1}));
}

TEST_F(LogicalConditions, AndOrNotGroupFromTheLeft) {
  EXPECT_EQ(Evaluate("v > 1 & v < 4"), V({0, 1, 1, 0}));
  EXPECT_EQ(Evaluate("v < 2 | v > 3"), V({1, 0, 0, 1}));
  EXPECT_EQ(Evaluate("~(v < 2 | v > 3)"), V({0, 1, 1, 0}));
  // ((v == 1) | (v == 4)) & (v > 2), grouped from the left
  EXPECT_EQ(Evaluate("v == 1 | v == 4 & v > 2"), V({0, 0, 0, 1}));
  EXPECT_EQ(Evaluate("(v + 1) * 2 > 6"), V({0, 0, 1, 1}));  // parentheses around arithmetic
}

TEST_F(LogicalConditions, RefusalsNameTheOperands) {
  EXPECT_EQ(ErrorOf("M > 1"),
            "In input \"l\", line 1\nM > 1 ...\n\"M\" is not a vector.");
  EXPECT_EQ(ErrorOf("v > [1 2]"),
            "In input \"l\", line 1\nv > [1 2] ...\nThe dimensions of \"v\" and \"[1 2]\" do not "
            "match.");
  EXPECT_EQ(ErrorOf("v > \"a\""),
            "In input \"l\", line 1\nv > \"a\" ...\nLeft- and right-side expressions in logical "
            "conditions must be vectors.");
  EXPECT_EQ(ErrorOf("v > 1 & [1 2] > 0"),
            "In input \"l\", line 1\nv > 1 & [1 2] > 0 ...\nThe logical conditions in the compound "
            "logical expression have different number of rows");
}
