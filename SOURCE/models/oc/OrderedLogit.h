// OrderedLogit: the ordered logit model, P(y = j | x) = F(c_j - x'b) - F(c_(j-1) - x'b) with
// F(t) = 1 / (1 + exp(-t)).
#pragma once

#include "OrderedChoice.h"

class OrderedLogit : public OrderedChoice {
public:
  using OrderedChoice::OrderedChoice;
  double BlockLogLikelihood(const Eigen::VectorXd& theta, Eigen::Index first, Eigen::Index end,
                            Workspace& workspace) const override;

protected:
  oc::IntervalScores Scores(double l, double u) const override;
  double Quantile(double p) const override;
};
