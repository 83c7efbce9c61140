// MIM_OrderedProbit and MIM_OrderedLogit: the estimated ordered-choice models as the workspace holds
// them.
#pragma once

#include "PredictiveModel.h"

// Their parameters are the coefficients, then the free cut-points (cut2, cut3, ... when cut1 is
// fixed at 0, cut1, cut2, ... otherwise); the member "categories" holds the codes of y in order.
// mfx and predict give the probability of each category: "type" k is the k-th code.
class MIM_OrderedChoice : public PredictiveModel {
public:
  MIM_OrderedChoice();
  MIM_OrderedChoice(const MIM_OrderedChoice&) = delete;
  MIM_OrderedChoice& operator=(const MIM_OrderedChoice&) = delete;
  ~MIM_OrderedChoice() override;

  void PrintResults(const EventDispatcher& out) const override;
  bool LayoutHolds() const override;

  // The distribution of the latent error: F and its density.
  virtual double Cdf(double x) const = 0;
  virtual double Density(double x) const = 0;

protected:
  const IndexLink& Link() const override;

private:
  std::unique_ptr<IndexLink> m_link;  // reads the model's categories and draws when it is used
};

class MIM_OrderedProbit : public MIM_OrderedChoice {
public:
  double Cdf(double x) const override;
  double Density(double x) const override;
};

class MIM_OrderedLogit : public MIM_OrderedChoice {
public:
  double Cdf(double x) const override;
  double Density(double x) const override;
};
