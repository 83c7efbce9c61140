// CorrelatedUtilities: the component-wise truncated Normal draws.
#include "CorrelatedUtilities.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "TruncatedNormal.h"

namespace {

// The conditional mean of component j of row i given the others.
double ConditionalMean(const Eigen::MatrixXd& M, const Eigen::MatrixXd& H, const Eigen::MatrixXd& W, Eigen::Index i,
                       Eigen::Index j) {
  double shift = 0.0;
  for (Eigen::Index l = 0; l < W.cols(); ++l) {
    if (l != j) shift += H(j, l) * (W(i, l) - M(i, l));
  }
  return M(i, j) - shift / H(j, j);
}

// N(mean, sd^2) above `lower`, or below `upper`, by the one-sided tail draw of the standard Normal.
double Above(RandomEngine& rng, double mean, double sd, double lower) {
  return mean + sd * dist::StandardNormalTailDraw(rng, (lower - mean) / sd);
}
double Below(RandomEngine& rng, double mean, double sd, double upper) {
  return mean - sd * dist::StandardNormalTailDraw(rng, (mean - upper) / sd);
}

}  // namespace

void DrawChoiceUtilities(const Eigen::VectorXi& choice, const Eigen::MatrixXd& available, const Eigen::MatrixXd& M,
                         const Eigen::MatrixXd& H, Eigen::Index first, Eigen::Index end, RandomEngine& rng,
                         Eigen::MatrixXd& W) {
  const Eigen::Index p = W.cols();
  const bool all = available.size() == 0;
  for (Eigen::Index i = first; i < end; ++i) {
    const int c = choice(i);
    for (Eigen::Index j = 0; j < p; ++j) {
      const double mean = ConditionalMean(M, H, W, i, j), sd = 1.0 / std::sqrt(H(j, j));
      if (!all && available(i, j) == 0.0) {
        W(i, j) = mean + sd * rng.Normal();
      } else if (c == 0) {
        W(i, j) = Below(rng, mean, sd, 0.0);
      } else if (c - 1 == j) {
        double lower = 0.0;
        for (Eigen::Index l = 0; l < p; ++l) {
          if (l != j && (all || available(i, l) != 0.0)) lower = std::max(lower, W(i, l));
        }
        W(i, j) = Above(rng, mean, sd, lower);
      } else {
        W(i, j) = Below(rng, mean, sd, W(i, c - 1));
      }
    }
  }
}

void DrawCorrelatedBinaryUtilities(const Eigen::MatrixXd& Y, const Eigen::MatrixXd& M, const Eigen::MatrixXd& H,
                                   Eigen::Index first, Eigen::Index end, RandomEngine& rng, Eigen::MatrixXd& W) {
  for (Eigen::Index i = first; i < end; ++i) {
    for (Eigen::Index j = 0; j < W.cols(); ++j) {
      const double mean = ConditionalMean(M, H, W, i, j), sd = 1.0 / std::sqrt(H(j, j));
      W(i, j) = Y(i, j) > 0.5 ? Above(rng, mean, sd, 0.0) : Below(rng, mean, sd, 0.0);
    }
  }
}
