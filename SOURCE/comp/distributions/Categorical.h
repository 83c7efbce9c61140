// The categorical distribution over categories 1 ... K with a probability row vector.
#pragma once

#include <Eigen/Dense>

#include "RandomEngine.h"

namespace dist {

// One uniform variate u per draw; the draw is the first k with u < p(0) + ... + p(k - 1)
// (K when rounding leaves u at or above the total).
double CategoricalDraw(RandomEngine& rng, const Eigen::Ref<const Eigen::RowVectorXd>& p);

}  // namespace dist
