// MIM_Probit, MIM_Logit: the estimated binary choice models as the workspace holds them.
#pragma once

#include "PredictiveModel.h"

// P(y = 1 | x) = Phi(x'b): mfx and predict through the Normal distribution function.
class MIM_Probit : public PredictiveModel {
protected:
  const IndexLink& Link() const override;
};

// P(y = 1 | x) = 1 / (1 + exp(-x'b)).
class MIM_Logit : public PredictiveModel {
protected:
  const IndexLink& Link() const override;
};
