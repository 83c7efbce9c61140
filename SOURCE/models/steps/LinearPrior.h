// LinearPrior: the Normal prior of regression coefficients with linear constraints folded in,
// and draws from Normal conditionals given in canonical form.
#pragma once

#include <Eigen/Dense>

#include "RandomEngine.h"

// N(mean, precision^-1) times exp(-1/2 (R b - r)' Xi (R b - r)), normalised: again a Normal.
// The constraints therefore act as prior information of precision Xi.
struct LinearPrior {
  Eigen::VectorXd mean;
  Eigen::MatrixXd precision;
  Eigen::VectorXd precisionTimesMean;

  // The prior on its own when R has no rows.
  static LinearPrior Combine(const Eigen::VectorXd& mean, const Eigen::MatrixXd& precision,
                             const Eigen::MatrixXd& R, const Eigen::VectorXd& r,
                             const Eigen::MatrixXd& xi);
};

// A draw from N(A^-1 b, A^-1) with A symmetric positive definite (its Cholesky factor given),
// written into `out`; `z` is scratch space of the same size.
void DrawCanonicalNormal(const Eigen::LLT<Eigen::MatrixXd>& aFactor, const Eigen::VectorXd& b,
                         RandomEngine& rng, Eigen::VectorXd& z, Eigen::VectorXd& out);
