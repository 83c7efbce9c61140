// The categorical distribution over categories 1 ... K with a probability row vector.
#pragma once

#include <vector>

#include <Eigen/Dense>

#include "RandomEngine.h"

namespace dist {

// One uniform variate u per draw; the draw is the first k with u < p(0) + ... + p(k - 1)
// (K when rounding leaves u at or above the total).
double CategoricalDraw(RandomEngine& rng, const Eigen::Ref<const Eigen::RowVectorXd>& p);

// For many draws from one p: its running sums p(0), p(0) + p(1), ..., summed as CategoricalDraw
// sums them; empty when p is empty or has a negative or non-finite entry.
std::vector<double> CumulativeProbabilities(const Eigen::Ref<const Eigen::RowVectorXd>& p);
// The draw CategoricalDraw would make with the same uniform, by binary search over the running
// sums (log K steps instead of K); NaN, and no uniform used, for empty sums.
double CategoricalDrawFromCumulative(RandomEngine& rng, const std::vector<double>& cumulative);

}  // namespace dist
