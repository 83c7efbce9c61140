// Scripts that are very long or very deep: flat chains of any length run (iteratively), nesting
// past the documented depth is a syntax error, never a stack overflow or an exponential parse.
#include <gtest/gtest.h>

#include <string>

#include "InterpreterTestSupport.h"

namespace {

std::string Repeated(const std::string& piece, int times) {
  std::string text;
  text.reserve(piece.size() * static_cast<std::size_t>(times));
  for (int i = 0; i < times; ++i) text += piece;
  return text;
}

std::string Sum(const std::string& term, int terms) {
  return term + Repeated(" + " + term, terms - 1);
}

const char* kTooDeep = "Nested more than 256 levels deep (parentheses, brackets, conditions and blocks)";

}  // namespace

TEST(DeepNesting, LongFlatExpressionsRun) {
  RecordingSession s;
  ASSERT_EQ(s.ErrorOf("x = " + Sum("1", 200000) + ";\nA = [1 2; 3 4];\nB = " + Sum("A", 200000) + ";\n" +
                      "C = A" + Repeated("'", 1000001) + ";\nD = " + Sum("2 * A .* A", 50000) + " - A;"),
            "");
  const Workspace& ws = s.session.workspace;
  EXPECT_EQ((*ws.matrices.at("x"))(0, 0), 200000.0);
  EXPECT_EQ((*ws.matrices.at("B"))(1, 1), 800000.0);
  EXPECT_EQ((*ws.matrices.at("C"))(0, 1), 3.0);  // an odd number of primes transposes
  EXPECT_EQ((*ws.matrices.at("D"))(1, 0), 2.0 * 9.0 * 50000.0 - 3.0);
  // A failure deep in a long chain names the chain and its operator.
  EXPECT_NE(s.ErrorOf("y = " + Sum("1", 1000) + " + [1 2] + [1 2 3];").find(
                "Summands are not comformable for element-wise operations."),
            std::string::npos);
}

TEST(DeepNesting, NestingBeyondTheLimitIsASyntaxError) {
  RecordingSession s;
  for (const std::string& script :
       {"x = " + Repeated("(", 1000000) + "1" + Repeated(")", 1000000) + ";",
        "x = " + Repeated("[", 100000) + "1" + Repeated("]", 100000) + ";",
        Repeated("if (1 > 0)\n", 100000) + "x = 1;\n" + Repeated("end\n", 100000),
        "if " + Repeated("(", 300) + "1 > 0" + Repeated(")", 300) + "\nx = 1;\nend\n",
        "x = " + Repeated("-(", 300) + "1" + Repeated(")", 300) + ";"}) {
    const std::string report = s.ErrorOf(script);
    EXPECT_EQ(report.rfind("Syntax error in input \"test.tvx\", line ", 0), 0u) << report.substr(0, 200);
    EXPECT_NE(report.find(kTooDeep), std::string::npos) << report.substr(0, 200);
  }
  // Up to the limit everything works, conditions in parentheses included (each tried once).
  ASSERT_EQ(s.ErrorOf("x = " + Repeated("(", 200) + "1" + Repeated(")", 200) + ";\n" + "if " +
                      Repeated("(", 200) + "x > 0" + Repeated(")", 200) + "\ny = 2;\nend\n" +
                      Repeated("if (1 > 0)\n", 200) + "z = 3;\n" + Repeated("end\n", 200)),
            "");
  EXPECT_EQ((*s.session.workspace.matrices.at("y"))(0, 0), 2.0);
  EXPECT_EQ((*s.session.workspace.matrices.at("z"))(0, 0), 3.0);
}
