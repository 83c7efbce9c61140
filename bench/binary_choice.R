# The binary choice models of bench/BinaryChoiceBench.cpp through MCMCpack: reads the data file and
# the model ("probit" or "logit") named on the command line, runs 10,000 burn-in and 20,000 draws,
# and prints the seconds taken and the smallest effective sample size over the coefficients.
suppressMessages(library(MCMCpack))
args <- commandArgs(trailingOnly = TRUE)
data <- read.csv(args[1])
# Priors matched to Tavix's defaults: b ~ N(0, 1000 I).
elapsed <- system.time(
  draws <- if (args[2] == "probit") {
    MCMCprobit(y ~ . - 1, data = data, burnin = 10000, mcmc = 20000, seed = 42, b0 = 0, B0 = 0.001)
  } else {
    MCMClogit(y ~ . - 1, data = data, burnin = 10000, mcmc = 20000, seed = 42, b0 = 0, B0 = 0.001)
  }
)[["elapsed"]]
ess <- min(coda::effectiveSize(draws))
cat(elapsed, ess, "\n")
