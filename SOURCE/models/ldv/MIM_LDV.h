// MIM_TobitI: the estimated censored regression as the workspace holds it.
#pragma once

#include <memory>
#include <mutex>

#include "PredictiveModel.h"

// Parameters: the coefficients, then the error precision tau; the limits are the members "lower"
// and "upper" (-inf or inf where there is none). Predicts through x'b: type 1 the latent mean x'b,
// 2 E(y|x), 3 E(y | x, lower < y < upper), 4 Prob(lower < y < upper | x).
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
