// OrthantProbability: the probability that a correlated Normal vector is positive in every
// component, by the GHK simulator, for the likelihoods of the multinomial and multivariate probits.
#pragma once

#include <Eigen/Dense>

#include "RandomEngine.h"

// log P(z > 0) for z ~ N(mean, L L') (L lower triangular, d x d), averaged over the columns of
// `uniforms` (d x R, each element in (0, 1)): component by component, the probability that z_j > 0
// given the earlier ones, times a draw of the standardised z_j from that truncation. The same
// uniforms for every evaluation make the estimate a smooth function of the parameters.
double LogOrthantProbability(const Eigen::VectorXd& mean, const Eigen::MatrixXd& L, const Eigen::MatrixXd& uniforms);

// R points for `d` components from the engine (a fixed seed gives fixed points).
Eigen::MatrixXd OrthantUniforms(Eigen::Index d, Eigen::Index R, RandomEngine& rng);
