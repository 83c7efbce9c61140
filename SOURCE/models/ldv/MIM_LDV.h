// MIM_TobitI, MIM_TobitII: the estimated censored regression and selection model as the workspace
// holds them.
#pragma once

#include <memory>
#include <mutex>

#include "PredictiveModel.h"

// Parameters: the coefficients, then the error precision tau; the limits are the members
// "lower_limit" and "upper_limit" (-inf or inf where there is none). Predicts through x'b: type 1
// the latent mean x'b, 2 E(y|x), 3 E(y | x, lower < y < upper), 4 Prob(lower < y < upper | x).
class MIM_TobitI : public PredictiveModel {
public:
  bool LayoutHolds() const override;

protected:
  const IndexLink& Link() const override;

private:
  // Made at first use from the limits (the model may have been read from a file).
  mutable std::once_flag m_linkMade;
  mutable std::unique_ptr<IndexLink> m_link;
};

// Parameters: the outcome coefficients (y$...), the selection coefficients (s$...), sigma (the
// outcome error's standard deviation) and rho (the errors' correlation). The rows used include
// those whose outcome was not observed. Predicts type 1, E(y*|x) = x'b, and type 2,
// Prob(selected|z) = Phi(z'g), through the selection list.
class MIM_TobitII : public PredictiveModel {
public:
  bool LayoutHolds() const override;

protected:
  const IndexLink& Link() const override;
  bool IndexOfSecondList(int type) const override { return type == 2; }
  MissingDependent DependentValues() const override { return MissingDependent::Keep; }
};
