# The tobit of bench/LimitedDependentBench.cpp through MCMCpack: reads the data file, runs 10,000
# burn-in and 20,000 draws of MCMCtobit (censored from below at 0), and prints the seconds taken and
# the smallest effective sample size over the coefficients and the error variance.
suppressMessages(library(MCMCpack))
args <- commandArgs(trailingOnly = TRUE)
data <- read.csv(args[1])
# Priors matched to Tavix's defaults: b ~ N(0, 1000 I), a vague prior on the error variance.
elapsed <- system.time(
  draws <- MCMCtobit(y ~ . - 1, data = data, below = 0, above = Inf, burnin = 10000, mcmc = 20000, seed = 42,
                     b0 = 0, B0 = 0.001, c0 = 0.002, d0 = 0.002)
)[["elapsed"]]
ess <- min(coda::effectiveSize(draws))
cat(elapsed, ess, "\n")
