// MIM_Probit, MIM_Logit and their random-effects versions: the estimated binary choice models as
// the workspace holds them.
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

// The random-intercept models: their parameters are the coefficients, then the effects' variance
// var_re (the last column of the draws). They predict Prob(y = 1|x) with the effect integrated out,
// and store each observation's posterior mean effect, kept at estimation as the member "effects"
// (column 1 the group, column 2 the mean).
class MIM_BinaryRandomEffects : public PredictiveModel {
protected:
  std::vector<std::string> ExtraVariables(const Dataset& dataset) const override;
  std::vector<std::string> StoredSeries() const override { return {"effects"}; }
  std::vector<std::pair<std::string, Eigen::VectorXd>> StoreSeries(const std::string& name,
                                                                   const ActionData& data) const override;
};

// Prob(y = 1|x) = Phi(x'b / sqrt(1 + var_re)).
class MIM_Probit_RE : public MIM_BinaryRandomEffects {
protected:
  const IndexLink& Link() const override;
};

// Prob(y = 1|x) = E[1 / (1 + exp(-x'b - a))] over a ~ N(0, var_re), by Gauss-Hermite quadrature.
class MIM_Logit_RE : public MIM_BinaryRandomEffects {
protected:
  const IndexLink& Link() const override;
};
