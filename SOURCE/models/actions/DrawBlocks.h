// DrawBlocks: quantities over posterior draws and observations, computed a block of observations
// at a time on every core and reduced as they come (per-observation summaries, sums over the
// observations).
#pragma once

#include <atomic>
#include <functional>
#include <vector>

#include <Eigen/Dense>

// Fills `out` (rows: the draws; column c: observation first + c) with a quantity. Called from
// several threads at once, each with its own `out`.
using DrawBlockFunction = std::function<void(Eigen::Index first, Eigen::Index count, Eigen::MatrixXd& out)>;

// Adds the block's sums over its observations of several quantities to `sums` (rows: the draws;
// one column per quantity). Called from several threads at once, each with its own `sums`.
using DrawSumsFunction = std::function<void(Eigen::Index first, Eigen::Index count, Eigen::MatrixXd& sums)>;

// Per observation: the posterior mean, standard deviation and 95% interval of its quantity.
struct RowSummaries {
  Eigen::VectorXd mean, sd, lower, upper;
};

// Summarises the quantity of each of `observations` observations over `draws` draws. False when
// the user interrupted (the summaries are then incomplete).
bool SummarizeObservations(Eigen::Index observations, Eigen::Index draws, const DrawBlockFunction& block,
                           const std::atomic<bool>* interrupt, RowSummaries& out);

// The averages over `observations` observations of `quantities` quantities, per draw (rows: the
// draws). The blocks are added in a fixed order, so the result does not depend on the threads.
// False when the user interrupted.
bool AverageOverObservations(Eigen::Index observations, Eigen::Index draws, Eigen::Index quantities,
                             const DrawSumsFunction& block, const std::atomic<bool>* interrupt,
                             Eigen::MatrixXd& out);

// The mean, standard deviation (N - 1 divisor) and 2.5% and 97.5% quantiles (linear
// interpolation between order statistics) of draws; `scratch` is overwritten.
void SummarizeDraws(const double* draws, Eigen::Index n, std::vector<double>& scratch, double& mean,
                    double& sd, double& lower, double& upper);
