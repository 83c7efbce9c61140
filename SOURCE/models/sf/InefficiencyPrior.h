// InefficiencyPrior: the prior hyper-parameters of a frontier's inefficiency distribution.
#pragma once

#include <Eigen/Dense>

// scaleShape, scaleRate: the Gamma prior of the scale parameter (omega_u for the half-normal,
// truncated-normal and log-normal, lambda for the exponential and gamma). location: the Normal
// prior of mu_u (truncated-normal, log-normal) or of the determinants' coefficients (mean and
// precision). shapeShape, shapeRate: the Gamma prior of the gamma distribution's shape.
struct InefficiencyPrior {
  double scaleShape = 1.0;
  double scaleRate = 1.0;
  Eigen::VectorXd locationMean;
  Eigen::MatrixXd locationPrecision;
  double shapeShape = 1.0;
  double shapeRate = 1.0;
};
