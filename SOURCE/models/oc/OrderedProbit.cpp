// OrderedProbit: the Normal distribution's terms of the ordered model.
#include "OrderedProbit.h"

#include <cmath>

double OrderedProbit::BlockLogLikelihood(const Eigen::VectorXd& theta, Eigen::Index first, Eigen::Index end,
                                         Workspace& workspace) const {
  return BlockSum<oc::NormalInterval>(theta, first, end, workspace);
}

oc::IntervalScores OrderedProbit::Scores(double l, double u) const { return oc::Scores<oc::NormalInterval>(l, u); }

double OrderedProbit::Quantile(double p) const {
  // In the lower half: from the logistic quantile scaled to the Normal's slope, then Newton steps
  // on log Phi(x) = log p, which is concave and nearly linear in the tail.
  const double s = p > 0.5 ? 1.0 - p : p;
  double x = std::log(s / (1.0 - s)) / 1.702;
  for (int step = 0; step < 6; ++step) {
    x -= (LogNormalCdf(x) - std::log(s)) * oc::NormalInterval::Cdf(x) / oc::NormalInterval::Density(x);
  }
  return p > 0.5 ? -x : x;
}
