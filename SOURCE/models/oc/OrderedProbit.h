// OrderedProbit: the ordered probit model, P(y = j | x) = Phi(c_j - x'b) - Phi(c_(j-1) - x'b).
#pragma once

#include "OrderedChoice.h"

class OrderedProbit : public OrderedChoice {
public:
  using OrderedChoice::OrderedChoice;
  double BlockLogLikelihood(const Eigen::VectorXd& theta, Eigen::Index first, Eigen::Index end,
                            Workspace& workspace) const override;

protected:
  oc::IntervalScores Scores(double l, double u) const override;
  double Quantile(double p) const override;
};
