// Polya-Gamma(1, c) draws: the Laplace transform of the draws against its closed form at several
// points, which pins the distribution down, and the mean tanh(c/2) / (2c).
#include <gtest/gtest.h>

#include <cmath>

#include <Eigen/Dense>

#include "PolyaGamma.h"
#include "RandomEngine.h"

TEST(PolyaGammaDraws, LaplaceTransformAndMeanMatchTheDistribution) {
  RandomEngine rng;
  rng.Seed(99);
  const int n = 150000;
  for (double c : {0.0, -0.7, 4.0, 30.0}) {
    Eigen::VectorXd w(n);
    for (int i = 0; i < n; ++i) w(i) = dist::PolyaGammaDraw(rng, c);
    ASSERT_GT(w.minCoeff(), 0.0) << c;
    const double mean = c == 0.0 ? 0.25 : std::tanh(0.5 * c) / (2.0 * c);
    const double sd = std::sqrt((w.array() - w.mean()).square().mean());
    EXPECT_NEAR(w.mean(), mean, 4.5 * sd / std::sqrt(n)) << c;
    for (double t : {0.3, 1.0, 3.0, 10.0, 30.0, 100.0}) {
      const Eigen::ArrayXd e = (-t * w.array()).exp();
      const double spread = std::sqrt((e - e.mean()).square().mean());
      EXPECT_NEAR(e.mean(), dist::PolyaGammaLaplace(t, c), 4.5 * spread / std::sqrt(n) + 1e-12) << "c " << c << ", t " << t;
    }
  }
}
