// Built-in functions through the interpreter: results, the shape rule, seeding, argument counts,
// and the messages users see for bad arguments.
#include <gtest/gtest.h>

#include <cmath>

#include "InterpreterTestSupport.h"

namespace {

// The message of a report: its last line.
std::string MessageOf(RecordingSession& run, const std::string& code) {
  const std::string report = run.ErrorOf(code);
  const auto cut = report.rfind('\n');
  return cut == std::string::npos ? report : report.substr(cut + 1);
}

// The matrix an expression evaluates to.
Eigen::MatrixXd ValueOf(RecordingSession& run, const std::string& expression) {
  const std::string error = run.ErrorOf("result = " + expression + ";");
  EXPECT_EQ(error, "") << expression;
  const auto found = run.session.workspace.matrices.find("result");
  return found == run.session.workspace.matrices.end() ? Eigen::MatrixXd() : *found->second;
}

Eigen::MatrixXd M(int rows, int cols, std::initializer_list<double> rowMajor) {
  Eigen::MatrixXd m(rows, cols);
  auto it = rowMajor.begin();
  for (int i = 0; i < rows; ++i) {
    for (int j = 0; j < cols; ++j) m(i, j) = *it++;
  }
  return m;
}

}  // namespace

TEST(Builtins, ShapesFollowColumnOrder) {
  RecordingSession run;
  EXPECT_EQ(ValueOf(run, "reshape([1 2 3; 4 5 6], 3, 2)"), M(3, 2, {1, 5, 4, 3, 2, 6}));
  EXPECT_EQ(ValueOf(run, "size(ones(2, 5))"), M(1, 2, {2, 5}));
  EXPECT_EQ(ValueOf(run, "rows(zeros(4, 1)) + cols(eye(2, 3))"), M(1, 1, {7}));
  EXPECT_EQ(ValueOf(run, "repmat([1 2], 2, 2)"), M(2, 4, {1, 2, 1, 2, 1, 2, 1, 2}));
  EXPECT_EQ(ValueOf(run, "kron([1 2], [1; 10])"), M(2, 2, {1, 2, 10, 20}));
  EXPECT_EQ(ValueOf(run, "diag([1 2])"), M(2, 2, {1, 0, 0, 2}));
  EXPECT_EQ(ValueOf(run, "diag([1 2; 3 4])"), M(2, 1, {1, 4}));
  EXPECT_EQ(ValueOf(run, "eye(2, 3)"), M(2, 3, {1, 0, 0, 0, 1, 0}));
  EXPECT_EQ(ValueOf(run, "mod([-7 7], [3 3])"), M(1, 2, {-1, 1}));
  // Built-ins are values inside larger expressions, and apply to their own arguments only.
  EXPECT_EQ(ValueOf(run, "2 * sum([1 2; 3 4])' + 1"), M(2, 1, {9, 13}));
}

TEST(Builtins, LinearAlgebraAndStatistics) {
  RecordingSession run;
  const Eigen::MatrixXd a = M(2, 2, {4, 2, 2, 3});
  EXPECT_NEAR(ValueOf(run, "det([4 2; 2 3])")(0, 0), 8.0, 1e-12);
  EXPECT_TRUE(ValueOf(run, "inv([4 2; 2 3]) * [4 2; 2 3]").isApprox(Eigen::MatrixXd::Identity(2, 2)));
  EXPECT_TRUE(ValueOf(run, "invpd([4 2; 2 3])").isApprox(a.inverse()));
  const Eigen::MatrixXd l = ValueOf(run, "chol([4 2; 2 3])");
  EXPECT_EQ(l(0, 1), 0.0);  // lower triangular
  EXPECT_TRUE((l * l.transpose()).isApprox(a));
  EXPECT_EQ(ValueOf(run, "trace([4 2; 2 3])"), M(1, 1, {7}));
  EXPECT_EQ(ValueOf(run, "max([1 5; 7 2])"), M(1, 2, {7, 5}));
  EXPECT_EQ(ValueOf(run, "min([1 5; 7 2], 2)"), M(2, 1, {1, 2}));
  EXPECT_EQ(ValueOf(run, "mean([1 2; 3 4])"), M(1, 2, {2, 3}));
  EXPECT_NEAR(ValueOf(run, "logsumexp([1000; 1000])")(0, 0), 1000.0 + std::log(2.0), 1e-9);
  // A missing value makes its column's statistics missing.
  const Eigen::MatrixXd s = ValueOf(run, "sum([1 nan; 2 3])");
  EXPECT_EQ(s(0, 0), 3.0);
  EXPECT_TRUE(std::isnan(s(0, 1)));
  EXPECT_TRUE(std::isnan(ValueOf(run, "max([1; nan; 3])")(0, 0)));
}

TEST(Builtins, SeveralOutputs) {
  RecordingSession run;
  EXPECT_EQ(run.ErrorOf("[v, e] = eig([2 1; 1 2]);\nfirst = eig([2 1; 1 2]);"), "");
  const auto& ws = run.session.workspace.matrices;
  EXPECT_TRUE(ws.at("v")->isApprox(M(2, 1, {1, 3})));
  EXPECT_EQ(ws.at("e")->rows(), 2);
  EXPECT_EQ(*ws.at("first"), *ws.at("v"));  // in an expression: the first output
  EXPECT_EQ(run.ErrorOf("[x, w] = quadrature(2, \"hermite\");"), "");
  EXPECT_NEAR((*ws.at("x"))(1, 0), std::sqrt(0.5), 1e-12);
  EXPECT_NEAR(ws.at("w")->sum(), std::sqrt(std::acos(-1.0)), 1e-12);
}

TEST(Builtins, SeedFixesTheDraws) {
  RecordingSession run;
  EXPECT_EQ(run.ErrorOf("seed(42);\na = unifrnd(1, 2);\nz = normrnd(0, 1, 3, 1);\n"
                        "seed(42);\nb = unifrnd(1, 2);\nw = normrnd(0, 1, 3, 1);"),
            "");
  const auto& ws = run.session.workspace.matrices;
  EXPECT_DOUBLE_EQ((*ws.at("a"))(0, 0), 0.755155532954539);
  EXPECT_DOUBLE_EQ((*ws.at("a"))(0, 1), 0.639031393854697);
  EXPECT_EQ(*ws.at("a"), *ws.at("b"));
  EXPECT_EQ(*ws.at("z"), *ws.at("w"));  // the cached normal variate does not survive seed
  // The shape rule: scalar parameters with dimensions, or the parameters' own dimensions.
  EXPECT_EQ(ValueOf(run, "size(normrnd(0, 1, 2, 3))"), M(1, 2, {2, 3}));
  EXPECT_EQ(ValueOf(run, "size(gamrnd([1 2 3], 2))"), M(1, 2, {1, 3}));
  const Eigen::MatrixXd t = ValueOf(run, "truncnrnd([0 0], 1, \"lower\" = [1 5])");
  EXPECT_GE(t(0, 0), 1.0);
  EXPECT_GE(t(0, 1), 5.0);
  EXPECT_EQ(ValueOf(run, "binomrnd(4, 1, 1, 3)"), M(1, 3, {4, 4, 4}));
  EXPECT_EQ(ValueOf(run, "size(mvnrnd([0 0], eye(2, 2), 5))"), M(1, 2, {5, 2}));
  EXPECT_NEAR(ValueOf(run, "sum(drchrnd([1 2 3]), 2)")(0, 0), 1.0, 1e-12);
}

TEST(Builtins, DensitiesAndDistributionFunctions) {
  RecordingSession run;
  EXPECT_NEAR(ValueOf(run, "normcdf(1.96, 0, 1)")(0, 0), 0.9750021048517795, 1e-12);
  EXPECT_NEAR(ValueOf(run, "exppdf(2, 0.5)")(0, 0), 0.5 * std::exp(-1.0), 1e-14);
  EXPECT_NEAR(ValueOf(run, "gamcdf(1, 1, 2)")(0, 0), 1.0 - std::exp(-2.0), 1e-14);  // rate 2
  const Eigen::MatrixXd limits = ValueOf(run, "normcdf([-inf nan inf], 0, 1)");
  EXPECT_EQ(limits(0, 0), 0.0);
  EXPECT_TRUE(std::isnan(limits(0, 1)));
  EXPECT_EQ(limits(0, 2), 1.0);
  EXPECT_NEAR(ValueOf(run, "mvnormpdf([0 0], [0 0], eye(2, 2))")(0, 0), 1.0 / (2.0 * std::acos(-1.0)),
              1e-14);
}

TEST(Builtins, WrongArgumentCountsAreSyntaxErrors) {
  RecordingSession run;
  EXPECT_NE(run.ErrorOf("x = rows(1, 2);").find("Syntax error"), std::string::npos);
  EXPECT_NE(run.ErrorOf("x = exprnd(1, 2);").find("Syntax error"), std::string::npos);
  EXPECT_NE(run.ErrorOf("x = zeros(1);").find("Syntax error"), std::string::npos);
  EXPECT_EQ(run.ErrorOf("x = exprnd(1, 2, 2);"), "");
}

TEST(Builtins, MessagesNameTheFunctionAndTheArgument) {
  RecordingSession run;
  const std::pair<const char*, const char*> cases[] = {
      {"x = rows(\"a\");", "Function \"rows\" is not defined for strings."},
      {"s.a = 1; x = exp(s);", "Function \"exp\" is not defined for structures."},
      {"x = kron(\"a\", 1);", "The first argument passed to \"kron\" cannot be a string."},
      {"x = mod([1 2], [1; 2]);",
       "The dimensions of the two matrices/datasets passed to \"mod\" do not match."},
      {"x = reshape([1 2 3; 4 5 6], 4, 2);",
       "The number of elements in \"[1 2 3; 4 5 6]\" is not equal to 4x2."},
      {"x = reshape([1 2], 0, 2);",
       "The second and third arguments passed to the \"reshape\" function must be positive integers."},
      {"x = trace([1 2]);", "The argument passed to \"trace\" must be square."},
      {"x = inv([1 2; 2 4]);", "\"[1 2; 2 4]\" is singular to machine precision."},
      {"x = chol([1 2; 2 1]);", "\"[1 2; 2 1]\" is not positive definite to machine precision."},
      {"x = zeros(2, 1.5);", "Dimensions passed to the \"zeros\" function must be positive integers."},
      {"x = sort([1 2], 3);", "The second argument passed to the \"sort\" function must be either 1 or 2."},
      {"x = sortrows([1 2], [3]);",
       "columns of \"[1 2]\"."},
      {"x = sum([1 2], 0);", "The second argument passed to \"sum\" must be either 1 or 2."},
      {"x = log([1 -1]);",
       "Argument \"[1 -1]\" passed to \"log\" contains element(s) outside the domain of \"log\"."},
      {"x = quadrature(1, \"hermite\");",
       "The argument passed to \"quadrature\" must be a positive integer between 2 and 300."},
      {"x = quadrature(301, \"hermite\");",
       "The argument passed to \"quadrature\" must be a positive integer between 2 and 300."},
      {"x = quadrature(3, \"gauss\");",
       "The second argument passed to \"quadrature\" must be a string with value equal to either "
       "\"laguerre\" or \"hermite\""},
      {"x = eig([1 2; 3 4]);", "The argument passed to \"eig\" must be a symmetric matrix or dataset."},
      {"x = eig([1 2]);", "Matrix \"[1 2]\" passed to \"eig\" is not square."},
      {"x = tabulate([1 2; 3 4]);", "The argument passed to \"tabulate\" must be a vector."},
      {"x = unifrnd(0, 2);", "Dimension arguments passed to \"unifrnd\" must be positive integers."},
      {"x = normrnd([0 1], 1, 2, 3);",
       "Dimension arguments may be provided to \"normrnd\" only if the distribution's parameters "
       "are scalars."},
      {"x = exprnd([1 2], 2, 3);",
       "Dimension arguments may be provided to \"exprnd\" only if the distribution's parameter is "
       "a scalar."},
      {"x = exprnd(-1);", "The parameter in \"exprnd\" must be a matrix with positive entries."},
      {"x = normrnd(0, -1);",
       "The second parameter in \"normrnd\" must be a matrix with positive entries."},
      {"x = gamrnd([1 2], [1 2 3]);", "Parameter dimensions in \"gamrnd\" do not match."},
      {"x = binomrnd(3, 1.5);",
       "The second parameter in \"binomrnd\" must be a matrix with entries between 0 and 1."},
      {"x = truncnrnd(0, 1, \"upper\" = -1, \"lower\" = 2);",
       "Bound parameter in \"truncnrnd\" is not valid: the lower bound must be smaller than the "
       "upper bound."},
      {"x = truncnrnd(0, 1, \"middle\" = 2);", "Unknown optional argument \"middle\""},
      {"x = catrnd([0.2 0.3 0.6]);",
       "The parameter passed to \"catrnd\" must be a matrix with non-negative entries which sum to "
       "unity across rows."},
      {"x = drchrnd([1]);",
       "The parameter passed to \"drchrnd\" must be a matrix with at least two columns."},
      {"x = mvnrnd([0 0], [1 0; 0 1; 1 1]);",
       "The covariance matrix passed to \"mvnrnd\" must be symmetric and positive definite."},
      {"x = mvnrnd([0 0 0], eye(2, 2));", "Dimension mismatch between the mean and variance dimensions."},
      {"x = wishrnd(eye(3, 3), 1.5);",
       "The degrees-of-freedom parameter passed to \"wishrnd\" must be greater than p-1."},
      {"x = iwishrnd([1 2; 2 1], 5);",
       "The scale matrix passed to \"iwishrnd\" is not positive definite to machine precision."},
      {"x = normpdf(1, 0, 0);",
       "The standard-deviation parameter passed to \"normpdf\" must be a positive number."},
      {"x = lognpdf(1, 0, -2);", "The scale parameter passed to \"lognpdf\" must be a postive number."},
      {"x = gampdf(-1, 2, 1);",
       "The first argument passed to \"gampdf\" contains element(s) outside the domain of \"gampdf\"."},
      {"x = poissonpdf(1.5, 2);",
       "The first argument passed to \"poissonpdf\" contains element(s) outside the domain of "
       "\"poissonpdf\"."},
      {"x = nbinompdf(1, 0, 0.5);",
       "The number-of-failures parameter passed to \"nbinompdf\" must be a positive number"},
      {"x = betacdf(0.5, 1, 0);",
       "The second shape parameter (\"beta\") passed to \"betacdf\" must be a positive number."},
      {"x = normcdf(\"a\", 0, 1);", "The first argument passed to \"normcdf\" must be a matrix."},
      {"seed(0);", "The argument passed to \"seed\" must be a positive integer."},
      {"seed(2.5);", "The argument passed to \"seed\" must be a positive integer."},
  };
  for (const auto& [code, message] : cases) EXPECT_EQ(MessageOf(run, code), message) << code;
}
