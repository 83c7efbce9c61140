// ModelDiagnostics: the MCMC diagnostics report of a model's draws, per parameter, per chain and
// pooled.
#pragma once

#include <string>
#include <vector>

#include <Eigen/Dense>

// The report of draws held one matrix per chain (rows: draws; columns: the parameters named by
// `labels`; every chain of the same shape). Per parameter one row per chain and, with several
// chains, a row "all": effective sample size, Monte Carlo standard error of the mean, Geweke's z
// (first 10% against last 50% of a chain; in the row "all" the chains' z-scores summed over the
// square root of their number) and its two-sided p-value, split R-hat (row "all") and the
// autocorrelations at lags 1, 5, 10 and 50 (averaged over the chains in the row "all"). Figures
// that cannot be computed, such as a lag the chains do not reach, show as "-". A closing line names
// the parameters whose R-hat exceeds 1.01, whose effective sample size is below 400 or whose draws
// are not all finite, or says that every parameter passes.
std::string FormatDiagnostics(const std::vector<Eigen::MatrixXd>& chains, const std::vector<std::string>& labels);
