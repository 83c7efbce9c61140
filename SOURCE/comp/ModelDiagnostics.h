// ModelDiagnostics: the MCMC diagnostics report of a model's draws, per parameter, per chain and
// pooled.
#pragma once

#include <string>
#include <vector>

#include <Eigen/Dense>

// The report of draws held one matrix per chain (rows: draws; columns: the parameters named by
// `labels`; every chain of the same shape): per parameter one row per chain and, with several
// chains, a pooled row, with the effective sample size, Monte Carlo standard error, Geweke's z and
// its two-sided p-value, split R-hat (pooled row) and autocorrelations at lags 1, 5, 10 and 50;
// then a line naming the parameters whose R-hat exceeds 1.01 or whose effective sample size is
// below 400. Figures that cannot be computed show as "-".
std::string FormatDiagnostics(const std::vector<Eigen::MatrixXd>& chains, const std::vector<std::string>& labels);
