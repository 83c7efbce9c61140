// SF_LNORM: the frontier with log-normal inefficiency, log u ~ N(mu_u, 1/omega_u).
#pragma once

#include "InefficiencyPrior.h"
#include "StochasticFrontier.h"

// mu_u ~ N(location prior) and omega_u ~ Gamma(scaleShape, scaleRate) are conjugate given u; each
// u_i moves by an independence Metropolis-Hastings step whose proposal mixes the log-normal and
// the truncated Normal that the composed residual alone gives. Records mu_u, omega_u.
class SF_LNORM : public StochasticFrontier {
public:
  SF_LNORM(const Eigen::VectorXd& gibbs, const InefficiencyPrior& prior);
};
