// CorrelatedUtilities: latent utilities with correlated Normal errors, drawn one component at a
// time from their truncated conditionals (the augmentation step of the multinomial and
// multivariate probits).
#pragma once

#include <Eigen/Dense>

#include "RandomEngine.h"

// w_i ~ N(m_i, Sigma) for the rows [first, end) of W (n x p), H = Sigma^-1. Component j given the
// others is N(m_ij - sum_{l != j} H_jl (w_il - m_il) / H_jj, 1 / H_jj), truncated to what the
// outcome says; each component is redrawn once, in order.

// Choices among p + 1 alternatives, w_i the utilities of alternatives 1 ... p less the base's:
// choice 0 (the base) means every w_ij < 0; choice c > 0 means w_i,c-1 > max(0, the other
// available w_il). `available` (n x p of 0 and 1, or empty when all are) marks the alternatives a
// situation offers; an unavailable one is drawn without truncation and bounds no other.
void DrawChoiceUtilities(const Eigen::VectorXi& choice, const Eigen::MatrixXd& available, const Eigen::MatrixXd& M,
                         const Eigen::MatrixXd& H, Eigen::Index first, Eigen::Index end, RandomEngine& rng,
                         Eigen::MatrixXd& W);

// p binary outcomes: w_ij > 0 where Y_ij = 1, w_ij <= 0 where Y_ij = 0.
void DrawCorrelatedBinaryUtilities(const Eigen::MatrixXd& Y, const Eigen::MatrixXd& M, const Eigen::MatrixXd& H,
                                   Eigen::Index first, Eigen::Index end, RandomEngine& rng, Eigen::MatrixXd& W);
