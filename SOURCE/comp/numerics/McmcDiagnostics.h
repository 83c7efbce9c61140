// Convergence diagnostics and posterior summaries of MCMC draws: effective sample size, split
// R-hat, Geweke's z-score, quantiles, and the per-parameter table every estimated model prints.
//
// A chain is a matrix whose rows are the kept draws and whose columns are the parameters; several
// chains come as a vector of such matrices. None of these functions throws, whatever the input:
//  - The parameters are the columns of the first chain. When the chains differ in their number of
//    columns every result is NaN; when they differ only in length, each chain is cut to its last
//    n draws, n being the length of the shortest.
//  - A column holding a NaN or an infinity in any chain gives NaN in every result for it.
//  - Zero draws: mean, sd, median and quantiles are NaN, the effective sample size is 0, the
//    standard error, z-scores and R-hat are NaN. No chains at all: empty results.
//  - A constant column (at least two draws, all equal): sd 0, effective sample size equal to the
//    number of draws, standard error 0, Geweke z NaN (0 / 0), R-hat 1 where it is defined (the
//    chains agree exactly).
//  - Too few draws to estimate autocorrelations (fewer than 4 per chain, column not constant):
//    effective sample size and standard error NaN. Split R-hat needs 2 draws in each half
//    (4 per chain); Geweke's z needs 4 draws in each of its two segments.
#pragma once

#include <vector>

#include <Eigen/Dense>

namespace numerics {

// Per-parameter summary of the draws of all chains pooled (every vector has one entry per column).
struct DrawSummary {
  Eigen::VectorXd mean, sd, median, lower, upper;  // lower/upper: 2.5% and 97.5% quantiles
  Eigen::VectorXd ess;     // effective sample size over all chains
  Eigen::VectorXd mcse;    // Monte Carlo standard error of the mean: sd / sqrt(ess)
  Eigen::MatrixXd geweke;  // Geweke z-score, one column per chain (first 10% against last 50%)
  Eigen::VectorXd rhat;    // split potential scale reduction factor; NaN when there is one chain
};

// The summary table of the draws: pooled moments (sd with the N - 1 divisor) and quantiles, the
// effective sample size and standard error of the mean, each chain's Geweke z-score and the split
// R-hat, with the conventions for degenerate input given at the top of this file.
DrawSummary SummarizeDraws(const std::vector<Eigen::MatrixXd>& chains);

// Effective sample size of each column over all chains (autocorrelations averaged across chains,
// Geyer's initial monotone positive sequence).
//
// With W the mean within-chain variance (divisor n) and var+ = W + (variance of the chain means),
// the autocorrelation at lag t is 1 - (W - mean autocovariance at t) / var+, which for one chain
// is its own autocorrelation. The autocorrelations are summed in adjacent pairs while the pair
// sums stay positive, each pair sum cut to at most the previous one. The first lags come from
// direct sums, enough for a well-mixing chain; beyond them an FFT of the zero-padded chain gives
// the rest, so the cost is O(n log n) per chain and column. The result, N / (-1 + 2 sum of
// pairs) with N the number of draws of all chains, exceeds N for antithetic chains; it is capped
// at N log10(N) (and at N when N < 10), which also covers a sum too negative to give a positive
// denominator.
Eigen::VectorXd EffectiveSampleSize(const std::vector<Eigen::MatrixXd>& chains);

// Geweke's z-score of each column of one chain: mean of the first `first` fraction against the mean
// of the last `last` fraction, each variance from the spectral density at zero (long-run variance).
//
// The segments hold floor(first n) and floor(last n) draws; z = (mean of first - mean of last) /
// sqrt(S_first / n_first + S_last / n_last), where S is the segment's long-run variance estimated
// by the same initial monotone sequence as the effective sample size. Fractions that are not in
// (0, 1) or that overlap (first + last > 1) give NaN. Two constant segments give NaN when they
// hold the same value and an infinity of the sign of the difference otherwise.
Eigen::VectorXd GewekeZ(const Eigen::MatrixXd& chain, double first = 0.1, double last = 0.5);

// Split R-hat of each column (each chain cut in halves); NaN entries when fewer than 2 chains.
//
// A chain of odd length loses its middle draw. With W the mean variance within the 2m halves of
// h draws and B/h the variance of their means, R-hat = sqrt(((h-1)/h W + B/h) / W). When every
// half is constant, R-hat is 1 if all halves hold the same value and +infinity otherwise.
Eigen::VectorXd SplitRHat(const std::vector<Eigen::MatrixXd>& chains);

// Quantile p of a column by linear interpolation between order statistics (R's type 7).
//
// With the values sorted as x[0] <= ... <= x[n-1] and h = (n-1) p, the result is
// x[floor(h)] + (h - floor(h)) (x[floor(h)+1] - x[floor(h)]). NaN when the values are empty or
// hold a NaN, or when p is outside [0, 1].
double Quantile(std::vector<double> values, double p);

}  // namespace numerics
