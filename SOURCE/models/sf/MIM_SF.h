// MIM_SF: an estimated stochastic frontier as the workspace holds it.
#pragma once

#include <memory>
#include <mutex>

#include "CompositeError.h"
#include "PredictiveModel.h"

// Parameters: the frontier's coefficients (y$...), then the determinants' coefficients (u$...,
// models with a second list), tau, omega (models with firm effects), then the inefficiency's
// parameters. Members "efficiency" and "inefficiency" hold each observation's posterior mean of
// exp(-u) and of u; "cost" is 1 for a cost frontier. The results table ends with a summary of
// the efficiency scores. Predicts type 1 the frontier x'b, 2 E(y|x) = x'b - s E(u), 3 the
// expected efficiency E(exp(-u)) (types 2 and 3 through z'd, for the sample's observations, when
// u has determinants); stores "eff" and "u". With determinants, mfx gives the effects of z on
// E(u) (type 1) and on E(exp(-u)) (type 2).
class MIM_SF : public PredictiveModel {
public:
  void PrintResults(const EventDispatcher& out) const override;
  bool LayoutHolds() const override;

  // The distribution of the model's class, and whether it has determinants of u.
  InefficiencyDistribution Distribution() const;
  bool HasDeterminants() const { return !Description().secondList.empty(); }
  double Sign() const { return ScalarResult("cost") == 1.0 ? -1.0 : 1.0; }
  // The column of the first inefficiency parameter among the draws.
  Eigen::Index FirstInefficiencyColumn() const;

protected:
  const IndexLink& Link() const override;
  int FurtherTypes() const override { return HasDeterminants() ? 2 : 0; }
  std::string DescribeFurther(int type) const override;
  void FurtherQuantity(int type, const ActionData& data, Eigen::Index first, Eigen::MatrixXd& index) const override;
  const IndexLink& EffectsLink() const override;
  bool EffectsOfSecondList(int) const override { return HasDeterminants(); }
  std::vector<std::string> StoredSeries() const override { return {"eff", "u"}; }
  std::vector<std::pair<std::string, Eigen::VectorXd>> StoreSeries(const std::string& name,
                                                                   const ActionData& data) const override;

private:
  mutable std::once_flag m_linkMade;
  mutable std::unique_ptr<IndexLink> m_link, m_effectsLink;
};
