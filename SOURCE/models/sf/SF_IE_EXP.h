// SF_IE_EXP: the frontier with exponential inefficiency whose log mean is z'd.
#pragma once

#include "InefficiencyPrior.h"
#include "StochasticFrontier.h"

// u_i ~ Exponential with mean exp(z_i'd); d ~ N(location prior) by a random-walk step with the
// covariance (Z'Z + P)^-1 (the log-likelihood's curvature where u matches its mean), tuned during
// burn-in. u | w is a truncated Normal. Records d after the frontier's coefficients.
class SF_IE_EXP : public StochasticFrontier {
public:
  SF_IE_EXP(const Eigen::VectorXd& gibbs, const InefficiencyPrior& prior, const Eigen::MatrixXd& Z);
};
