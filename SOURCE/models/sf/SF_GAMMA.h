// SF_GAMMA: the frontier with gamma inefficiency, u ~ Gamma(shape, lambda) (rate lambda).
#pragma once

#include "InefficiencyPrior.h"
#include "StochasticFrontier.h"

// lambda ~ Gamma(scaleShape, scaleRate) (conjugate given u and the shape), shape ~ Gamma(
// shapeShape, shapeRate) by a random-walk step on its log tuned during burn-in. Each u_i moves by
// an independence Metropolis-Hastings step whose proposal is the exponential case's truncated
// Normal (exact when the shape is 1). Records shape, lambda.
class SF_GAMMA : public StochasticFrontier {
public:
  SF_GAMMA(const Eigen::VectorXd& gibbs, const InefficiencyPrior& prior);
};
