// SF_LNORM: the frontier with log-normal inefficiency, log u ~ N(mu_u, 1/omega_u).
#pragma once

#include "InefficiencyPrior.h"
#include "StochasticFrontier.h"

// mu_u ~ N(location prior) and omega_u ~ Gamma(scaleShape, scaleRate) are conjugate given u; each
// log u_i moves by a random-walk step whose spread follows the local curvature of its conditional
// (with the Hastings correction that this asks for), one scale tuned during burn-in for all.
// Records mu_u, omega_u.
class SF_LNORM : public StochasticFrontier {
public:
  SF_LNORM(const Eigen::VectorXd& gibbs, const InefficiencyPrior& prior);
};
