// BinaryAugmentation: one-sided truncated Normal draws, the scale-group move and the probit
// log-likelihood.
#include "BinaryAugmentation.h"

#include <cmath>
#include <limits>

#include "Gamma.h"
#include "TruncatedNormal.h"

void DrawBinaryUtilities(const Eigen::VectorXd& y, const Eigen::VectorXd& mean, Eigen::Index first, Eigen::Index end,
                         RandomEngine& rng, Eigen::VectorXd& z) {
  // z > 0 is mean + x with x > -mean; z <= 0 is mean - x with x > mean.
  for (Eigen::Index i = first; i < end; ++i) {
    z(i) = y(i) > 0.5 ? mean(i) + dist::StandardNormalTailDraw(rng, -mean(i))
                      : mean(i) - dist::StandardNormalTailDraw(rng, mean(i));
  }
}

double ScaleGroupFactor(RandomEngine& rng, double quadratic, Eigen::Index dimension) {
  return std::sqrt(dist::GammaDraw(rng, 0.5 * static_cast<double>(dimension), 0.5 * quadratic));
}

double LogNormalCdf(double t) {
  if (t > -30.0) return std::log(0.5 * std::erfc(-t / std::sqrt(2.0)));
  const double t2 = t * t;
  return -0.5 * t2 - std::log(-t) - 0.9189385332046727 + std::log1p(-1.0 / t2 + 3.0 / (t2 * t2));
}

double ProbitLogLikelihood(const Eigen::VectorXd& y, const Eigen::VectorXd& index) {
  double sum = 0.0;
  for (Eigen::Index i = 0; i < y.size(); ++i) sum += LogNormalCdf(y(i) > 0.5 ? index(i) : -index(i));
  return sum;
}
