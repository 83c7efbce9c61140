// The draws of every chain of an estimator, one after the other, for the samplers' tests.
#pragma once

#include <Eigen/Dense>

#include "Estimator.h"

inline Eigen::MatrixXd Pooled(const Estimator& estimator) {
  const auto& draws = estimator.Draws();
  Eigen::MatrixXd all(draws[0].rows() * static_cast<Eigen::Index>(draws.size()), draws[0].cols());
  for (std::size_t c = 0; c < draws.size(); ++c) {
    all.middleRows(static_cast<Eigen::Index>(c) * draws[0].rows(), draws[0].rows()) = draws[c];
  }
  return all;
}
