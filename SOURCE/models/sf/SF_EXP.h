// SF_EXP, SF_RE_EXP: frontiers with exponential inefficiency of rate lambda (mean 1/lambda).
#pragma once

#include "InefficiencyPrior.h"
#include "StochasticFrontier.h"

// lambda ~ Gamma(scaleShape, scaleRate); u | w and lambda | u are conjugate (a truncated Normal
// and a Gamma). Records lambda after the frontier's parameters.
class SF_EXP : public StochasticFrontier {
public:
  SF_EXP(const Eigen::VectorXd& gibbs, const InefficiencyPrior& prior);
};

// With firm effects (sf_re).
class SF_RE_EXP : public SF_EXP {
public:
  using SF_EXP::SF_EXP;
};
