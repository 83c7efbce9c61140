// SF_TNORM, SF_IE_TNORM: frontiers with truncated-normal inefficiency, u ~ N(mu, 1/omega_u)
// truncated to u >= 0, with mu one parameter (mu_u) or z'd (determinants z).
#pragma once

#include "InefficiencyPrior.h"
#include "StochasticFrontier.h"

// u | w is a truncated Normal; mu_u (or d) and omega_u have no conjugate conditionals (the
// truncation's mass depends on both) and move by random-walk Metropolis-Hastings steps tuned
// during burn-in: the location with the curvature of its Normal part as proposal covariance,
// log omega_u alone. mu_u or d ~ N(location prior), omega_u ~ Gamma(scaleShape, scaleRate).
class SF_TNORM : public StochasticFrontier {
public:
  SF_TNORM(const Eigen::VectorXd& gibbs, const InefficiencyPrior& prior);
};

// mu_i = z_i'd: records d (after the frontier's coefficients), then omega_u.
class SF_IE_TNORM : public StochasticFrontier {
public:
  SF_IE_TNORM(const Eigen::VectorXd& gibbs, const InefficiencyPrior& prior, const Eigen::MatrixXd& Z);
};
