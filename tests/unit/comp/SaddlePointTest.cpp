// Saddle-point log-probabilities of counts against Boost.Math's densities, from small counts to
// counts whose log-factorials are far beyond the digits of a double.
#include <cmath>

#include <boost/math/distributions/binomial.hpp>
#include <boost/math/distributions/poisson.hpp>
#include <gtest/gtest.h>

#include "SaddlePoint.h"

TEST(SaddlePoint, StirlingRemainderMatchesLogFactorials) {
  // Up to 1000 lgamma itself is good to about 1e-13; beyond, the remainder is 1 / (12 k) to
  // within 1 / (360 k^3).
  for (const double k : {1.0, 2.0, 7.0, 15.0, 16.0, 17.0, 40.0, 1000.0}) {
    const double exact = std::lgamma(k + 1.0) - (k + 0.5) * std::log(k) + k - 0.5 * std::log(2.0 * M_PI);
    EXPECT_NEAR(dist::StirlingRemainder(k), exact, 1e-12) << k;
  }
  EXPECT_NEAR(dist::StirlingRemainder(1e6), 1.0 / 12e6, 1e-20);
}

TEST(SaddlePoint, DevianceTermOnBothSidesOfTheSeries) {
  // Near the mean the series; away from it the direct form; both are x log(x / m) + m - x.
  for (const double mean : {3.0, 250.0, 1e9}) {
    for (const double ratio : {0.0, 0.2, 0.85, 0.95, 1.0, 1.05, 1.15, 4.0}) {
      const double x = std::floor(ratio * mean);
      const double direct = x == 0.0 ? mean : x * std::log(x / mean) + mean - x;
      EXPECT_NEAR(dist::DevianceTerm(x, mean), direct, 1e-9 * std::max(1.0, direct)) << x << " " << mean;
      EXPECT_GE(dist::DevianceTerm(x, mean), 0.0);
    }
  }
  // Where the direct form cancels to nothing the series keeps its digits: (x - m)^2 / (2 m) to
  // first order.
  EXPECT_NEAR(dist::DevianceTerm(1e15 + 1e7, 1e15), 0.05, 1e-8);
}

TEST(SaddlePoint, LogProbabilitiesMatchBoost) {
  // Where Boost.Math's densities keep about twelve digits.
  for (const double mean : {10.0, 77.5, 1e4, 1e6}) {
    const double sd = std::sqrt(mean);
    for (const double z : {-6.0, -2.0, -0.3, 0.0, 1.0, 5.0}) {
      const double k = std::max(0.0, std::floor(mean + z * sd));
      const double reference = std::log(boost::math::pdf(boost::math::poisson_distribution<>(mean), k));
      EXPECT_NEAR(dist::PoissonLogProbability(k, mean), reference, 1e-10 * std::max(1.0, std::fabs(reference)))
          << "poisson " << mean << " at " << k;
    }
  }
  EXPECT_DOUBLE_EQ(dist::PoissonLogProbability(0.0, 12.0), -12.0);
  for (const double n : {20.0, 1000.0, 1e6}) {
    for (const double q : {0.5, 0.3, 1e-4}) {
      if (n * q < 10.0) continue;
      const double sd = std::sqrt(n * q * (1.0 - q));
      for (const double z : {-6.0, -1.0, 0.0, 0.4, 3.0}) {
        const double k = std::min(n, std::max(0.0, std::floor(n * q + z * sd)));
        const double reference =
            std::log(boost::math::pdf(boost::math::binomial_distribution<>(n, q), k));
        EXPECT_NEAR(dist::BinomialLogProbability(k, n, q), reference,
                    1e-10 * std::max(1.0, std::fabs(reference)))
            << "binomial " << n << ", " << q << " at " << k;
      }
    }
  }
  EXPECT_DOUBLE_EQ(dist::BinomialLogProbability(0.0, 20.0, 0.5), 20.0 * std::log(0.5));
  EXPECT_DOUBLE_EQ(dist::BinomialLogProbability(20.0, 20.0, 0.5), 20.0 * std::log(0.5));
}

// Counts in the trillions, where log-factorials of about 10^13 leave a double no digits for the
// difference (and Boost.Math loses seven of its own): references from 50-digit arithmetic. The
// rounding of n q to a double alone moves the result by about 1e-10.
TEST(SaddlePoint, LogProbabilitiesOfHugeCounts) {
  EXPECT_NEAR(dist::PoissonLogProbability(1e12, 1e12), -14.734449091169030179, 1e-9);
  EXPECT_NEAR(dist::PoissonLogProbability(1e12 + 3e6, 1e12), -19.234446091173530171, 1e-9);
  EXPECT_NEAR(dist::PoissonLogProbability(1e15 - 1e8, 1e15), -23.188326847326687955, 1e-9);
  EXPECT_NEAR(dist::BinomialLogProbability(5e12, 1e13, 0.5), -15.192594457106049378, 1e-9);
  EXPECT_NEAR(dist::BinomialLogProbability(3e12 + 5e6, 1e13, 0.3), -21.057797302725946313, 1e-9);
  EXPECT_NEAR(dist::BinomialLogProbability(2900, 3e9, 1e-6), -6.5907016006828589594, 1e-9);
}
