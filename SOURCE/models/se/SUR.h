// SUR: seemingly unrelated regressions, the system sampler under the estimator's own name.
#pragma once

#include "SystemRegression.h"

class SUR : public SystemRegression {
public:
  using SystemRegression::SystemRegression;
};
