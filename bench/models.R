# The linear regression of bench/ModelsBench.cpp through MCMCpack's sampler: reads the data file
# named on the command line, runs 10,000 burn-in and 20,000 draws, and prints the seconds taken
# and the smallest effective sample size over the coefficients.
suppressMessages(library(MCMCpack))
args <- commandArgs(trailingOnly = TRUE)
data <- read.csv(args[1])
# Priors matched to Tavix's defaults: b ~ N(0, 1000 I), precision ~ Gamma(0.001, 0.001).
elapsed <- system.time(
  draws <- MCMCregress(y ~ . - 1, data = data, burnin = 10000, mcmc = 20000, seed = 42,
                       b0 = 0, B0 = 0.001, c0 = 0.002, d0 = 0.002)
)[["elapsed"]]
ess <- min(coda::effectiveSize(draws[, seq_len(ncol(data) - 1)]))
cat(elapsed, ess, "\n")
