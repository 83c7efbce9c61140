// Categorical distribution over 1 ... K: draws by inverting the cumulative probabilities.
#include "Categorical.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace dist {

// One uniform u; the draw is the first k (one-based) whose cumulative probability exceeds u, or K
// when rounding leaves the total at or below u. NaN (and no uniform used) for an empty vector or
// a negative or non-finite probability.
double CategoricalDraw(RandomEngine& rng, const Eigen::Ref<const Eigen::RowVectorXd>& p) {
  const Eigen::Index categories = p.size();
  if (categories == 0 || !p.allFinite() || (p.array() < 0.0).any()) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  const double u = rng.Uniform();
  double cumulative = 0.0;
  for (Eigen::Index k = 0; k < categories; ++k) {
    cumulative += p(k);
    if (u < cumulative) {
      return static_cast<double>(k + 1);
    }
  }
  return static_cast<double>(categories);
}

std::vector<double> CumulativeProbabilities(const Eigen::Ref<const Eigen::RowVectorXd>& p) {
  std::vector<double> cumulative;
  if (p.size() == 0 || !p.allFinite() || (p.array() < 0.0).any()) {
    return cumulative;
  }
  cumulative.reserve(static_cast<std::size_t>(p.size()));
  double sum = 0.0;
  for (Eigen::Index k = 0; k < p.size(); ++k) {
    sum += p(k);
    cumulative.push_back(sum);
  }
  return cumulative;
}

double CategoricalDrawFromCumulative(RandomEngine& rng, const std::vector<double>& cumulative) {
  if (cumulative.empty()) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  const double u = rng.Uniform();
  // The first running sum above u; the sums never decrease, so this is the scan's answer.
  const auto above = std::upper_bound(cumulative.begin(), cumulative.end(), u);
  if (above == cumulative.end()) {
    return static_cast<double>(cumulative.size());
  }
  return static_cast<double>(above - cumulative.begin() + 1);
}

}  // namespace dist
