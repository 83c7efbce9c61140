// Seeded calls of mthread: the same results with 1, 2 and 4 threads, and every call's draws
// standard normal and independent of the other calls' draws.
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <boost/math/distributions/normal.hpp>

#include "GoodnessOfFit.h"
#include "Interpreter.h"
#include "Session.h"

namespace {

constexpr int kCalls = 8;
constexpr int kDrawsPerCall = 2000;

// The 8 x 2000 matrix of the calls' draws after `seed(s)`, with `threads` threads.
Eigen::MatrixXd CallDraws(int seed, int threads) {
  Session session;
  const std::string code = "function x = draws(n)\n  x = normrnd(0, 1, 1, n);\nend\nseed(" +
                           std::to_string(seed) + ");\nr = mthread(@draws, " + std::to_string(kDrawsPerCall) +
                           " * ones(" + std::to_string(kCalls) + ", 1), \"threads\" = " + std::to_string(threads) +
                           ");\n";
  RunProgram(session, code, "\"seeds.tvx\"", 0);
  return *session.workspace.matrices.at("r");
}

double Correlation(const Eigen::VectorXd& a, const Eigen::VectorXd& b) {
  const Eigen::VectorXd x = a.array() - a.mean();
  const Eigen::VectorXd y = b.array() - b.mean();
  return x.dot(y) / std::sqrt(x.squaredNorm() * y.squaredNorm());
}

}  // namespace

TEST(ParallelCallsSeeds, SameDrawsWhateverTheThreadsAndIndependentCalls) {
  const Eigen::MatrixXd one = CallDraws(2024, 1);
  ASSERT_EQ(one.rows(), kCalls);
  ASSERT_EQ(one.cols(), kDrawsPerCall);
  EXPECT_EQ(CallDraws(2024, 2), one);
  EXPECT_EQ(CallDraws(2024, 4), one);
  EXPECT_NE(CallDraws(2025, 2), one);

  // All draws together are standard normal.
  const std::vector<double> pooled(one.data(), one.data() + one.size());
  const boost::math::normal_distribution<double> normal;
  EXPECT_LT(KolmogorovSmirnov(pooled, [&](double x) { return boost::math::cdf(normal, x); }),
            KolmogorovSmirnovCritical999(static_cast<long>(pooled.size())));
  // Each call's draws are its own: no two calls' sequences are correlated, at any lag of one
  // draw (a stream shifted against its neighbour would show at lag 1).
  const double bound = 4.5 / std::sqrt(static_cast<double>(kDrawsPerCall));
  for (int i = 0; i < kCalls; ++i) {
    for (int j = i + 1; j < kCalls; ++j) {
      SCOPED_TRACE(std::to_string(i) + " " + std::to_string(j));
      EXPECT_LT(std::abs(Correlation(one.row(i).transpose(), one.row(j).transpose())), bound);
      EXPECT_LT(std::abs(Correlation(one.row(i).head(kDrawsPerCall - 1).transpose(),
                                     one.row(j).tail(kDrawsPerCall - 1).transpose())),
                bound);
    }
  }
}
