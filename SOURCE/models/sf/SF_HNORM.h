// SF_HNORM, SF_RE_HNORM: frontiers with half-normal inefficiency, u = |N(0, 1/omega_u)|.
#pragma once

#include "InefficiencyPrior.h"
#include "StochasticFrontier.h"

// omega_u ~ Gamma(scaleShape, scaleRate); u | w and omega_u | u are conjugate (a truncated Normal
// and a Gamma). Records omega_u after the frontier's parameters.
class SF_HNORM : public StochasticFrontier {
public:
  SF_HNORM(const Eigen::VectorXd& gibbs, const InefficiencyPrior& prior);
};

// With firm effects (sf_re).
class SF_RE_HNORM : public SF_HNORM {
public:
  using SF_HNORM::SF_HNORM;
};
