// GoodnessOfFit: Kolmogorov-Smirnov and chi-square statistics shared by the draw tests.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <vector>

#include <boost/math/distributions/chi_squared.hpp>

// The Kolmogorov-Smirnov statistic D = sup |F_n(x) - F(x)| of the draws against a continuous cdf.
// Takes the draws by value because it sorts them. Returns NaN for an empty sample.
inline double KolmogorovSmirnov(std::vector<double> draws, std::function<double(double)> cdf) {
  if (draws.empty()) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  std::sort(draws.begin(), draws.end());
  const double n = static_cast<double>(draws.size());
  double d = 0.0;
  for (std::size_t i = 0; i < draws.size(); ++i) {
    const double f = cdf(draws[i]);
    // The empirical cdf jumps from i/n to (i+1)/n at the i-th order statistic: check both sides.
    d = std::max({d, static_cast<double>(i + 1) / n - f, f - static_cast<double>(i) / n});
  }
  return d;
}

// The 0.999 critical value of the Kolmogorov-Smirnov statistic for a sample of n, by the
// asymptotic formula 1.949 / sqrt(n) (accurate for n above about 100).
inline double KolmogorovSmirnovCritical999(long n) { return 1.949 / std::sqrt(static_cast<double>(n)); }

// Sample mean and variance (divisor n - 1) of draws, with the Monte Carlo standard error of the
// variance, sqrt((m4 - s^4) / n) from the fourth central moment m4, for comparing the variance
// with the exact one in a few standard errors.
struct SampleMoments {
  double mean = 0.0;
  double variance = 0.0;
  double varianceStandardError = 0.0;
};

inline SampleMoments Moments(const std::vector<double>& draws) {
  SampleMoments m;
  const double n = static_cast<double>(draws.size());
  for (const double x : draws) {
    m.mean += x;
  }
  m.mean /= n;
  double sum2 = 0.0;
  double sum4 = 0.0;
  for (const double x : draws) {
    const double d2 = (x - m.mean) * (x - m.mean);
    sum2 += d2;
    sum4 += d2 * d2;
  }
  m.variance = sum2 / (n - 1.0);
  const double m2 = sum2 / n;
  m.varianceStandardError = std::sqrt(std::max(0.0, sum4 / n - m2 * m2) / n);
  return m;
}

// Pearson's chi-square statistic sum (O_k - n p_k)^2 / (n p_k) of observed counts against cell
// probabilities for a sample of n. The caller pools cells so that every n p_k is at least about 5
// and puts the remaining tail mass in the last cell. A count in a cell of probability zero gives
// infinity; empty cells of probability zero are skipped. Mismatched sizes give NaN.
inline double ChiSquareStatistic(const std::vector<long>& observed,
                                 const std::vector<double>& expectedProbabilities, long n) {
  if (observed.size() != expectedProbabilities.size() || n <= 0) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  double statistic = 0.0;
  for (std::size_t k = 0; k < observed.size(); ++k) {
    const double expected = static_cast<double>(n) * expectedProbabilities[k];
    const double o = static_cast<double>(observed[k]);
    if (expected <= 0.0) {
      if (observed[k] != 0) {
        return std::numeric_limits<double>::infinity();
      }
      continue;
    }
    statistic += (o - expected) * (o - expected) / expected;
  }
  return statistic;
}

// The 0.999 quantile of the chi-square distribution with the given degrees of freedom (cells
// minus one, less one per estimated parameter): the critical value for ChiSquareStatistic.
inline double ChiSquareCritical999(int degreesOfFreedom) {
  return boost::math::quantile(boost::math::chi_squared_distribution<double>(degreesOfFreedom), 0.999);
}
