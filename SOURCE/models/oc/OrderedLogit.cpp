// OrderedLogit: the logistic distribution's terms of the ordered model.
#include "OrderedLogit.h"

#include <cmath>

double OrderedLogit::BlockLogLikelihood(const Eigen::VectorXd& theta, Eigen::Index first, Eigen::Index end,
                                        Workspace& workspace) const {
  return BlockSum<oc::LogisticInterval>(theta, first, end, workspace);
}

oc::IntervalScores OrderedLogit::Scores(double l, double u) const { return oc::Scores<oc::LogisticInterval>(l, u); }

double OrderedLogit::Quantile(double p) const { return std::log(p / (1.0 - p)); }
