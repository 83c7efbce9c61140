// CountObservations: the data of a count model as its samplers read them (counts, regressors, log
// exposure), with what depends on the counts alone worked out once.
#pragma once

#include <algorithm>
#include <vector>

#include <Eigen/Dense>

#include "LinearPrior.h"

struct CountObservations {
  Eigen::VectorXd y;
  Eigen::MatrixXd X;
  Eigen::VectorXd offset;  // log exposure; no elements when the model has no exposure

  // Observations [start, end) all hold `count`.
  struct Run {
    double count;
    Eigen::Index start, end;
  };
  std::vector<Run> runs;

  // `exposure` holds one positive value per observation, or nothing. With `sortByCount` the
  // observations are put in order of their counts, so that equal counts form few runs (terms that
  // depend on the count alone are then computed once per distinct count).
  CountObservations(const Eigen::VectorXd& counts, const Eigen::MatrixXd& regressors, const Eigen::VectorXd& exposure,
                    bool sortByCount);

  Eigen::Index Size() const { return y.size(); }
  // The sum of log(y_i!) over the observations [first, end).
  double LogFactorials(Eigen::Index first, Eigen::Index end) const {
    return m_logFactorialSums(end) - m_logFactorialSums(first);
  }
  // Calls f(count, observations) for the part of each run that lies in [first, end).
  template <typename F>
  void ForEachRun(Eigen::Index first, Eigen::Index end, F f) const {
    auto run = std::upper_bound(runs.begin(), runs.end(), first,
                                [](Eigen::Index i, const Run& r) { return i < r.end; });
    for (; run != runs.end() && run->start < end; ++run) {
      f(run->count, static_cast<double>(std::min(end, run->end) - std::max(first, run->start)));
    }
  }
  // Where the search for a mode starts: the coefficients of a regression of log(y + 1/2) minus the
  // offset on X, shrunk towards the prior (so that it exists whatever X).
  Eigen::VectorXd LogLinearStart(const LinearPrior& prior) const;

private:
  Eigen::VectorXd m_logFactorialSums;  // element i: the sum over the first i observations
};
