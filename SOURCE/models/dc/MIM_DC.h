// MIM_Probit: an estimated binary probit model as the workspace holds it.
#pragma once

#include "PredictiveModel.h"

// P(y = 1 | x) = Phi(x'b): mfx and predict through the Normal distribution function.
class MIM_Probit : public PredictiveModel {
protected:
  const IndexLink& Link() const override;
};
