// BinaryAugmentation: latent utilities of binary outcomes, drawn from Normals truncated to the
// side of zero that each outcome says.
#pragma once

#include <Eigen/Dense>

#include "RandomEngine.h"

// z_i ~ N(mean_i, 1) truncated to (0, inf) where y_i = 1 and to (-inf, 0] where y_i = 0, for the
// observations [first, end).
void DrawBinaryUtilities(const Eigen::VectorXd& y, const Eigen::VectorXd& mean, Eigen::Index first, Eigen::Index end,
                         RandomEngine& rng, Eigen::VectorXd& z);

// The scale-group move of the augmented binary models with a prior centred at zero: the factor g
// that multiplies the utilities and everything they are regressed on, g^2 ~ Gamma(dimension/2,
// quadratic/2), where `quadratic` is the utilities' sum of squared residuals plus the prior quadratic
// forms of what is rescaled and `dimension` the count of rescaled values, utilities included. A
// generalised Gibbs step: it leaves the posterior invariant and frees the scale that the data fix
// weakly.
double ScaleGroupFactor(RandomEngine& rng, double quadratic, Eigen::Index dimension);

// log Phi(t): from erfc, accurate far into the lower tail, and from the tail's asymptotic series
// where erfc underflows.
double LogNormalCdf(double t);

// log P(y_i | index_i) = log Phi(index_i) for y_i = 1, log Phi(-index_i) for y_i = 0, summed;
// exact in the tails.
double ProbitLogLikelihood(const Eigen::VectorXd& y, const Eigen::VectorXd& index);
