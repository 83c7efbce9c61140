# The count models of bench/CountModelsBench.cpp through MCMCpack: reads the data file and the model
# ("poisson" or "nbinom") named on the command line, runs 10,000 burn-in and 20,000 draws, and prints
# the seconds taken and the smallest effective sample size over the coefficients.
suppressMessages(library(MCMCpack))
args <- commandArgs(trailingOnly = TRUE)
data <- read.csv(args[1])
# Coefficients' prior matched to Tavix's default: b ~ N(0, 1000 I). MCMCnegbin keeps its own
# default prior on its dispersion rho = 1 / alpha.
elapsed <- system.time(
  draws <- if (args[2] == "poisson") {
    MCMCpoisson(y ~ . - 1, data = data, burnin = 10000, mcmc = 20000, seed = 42, b0 = 0, B0 = 0.001)
  } else {
    MCMCnegbin(y ~ . - 1, data = data, burnin = 10000, mcmc = 20000, seed = 42, b0 = 0, B0 = 0.001)
  }
)[["elapsed"]]
coefficients <- draws[, seq_len(ncol(data) - 1), drop = FALSE]
ess <- min(coda::effectiveSize(coefficients))
cat(elapsed, ess, "\n")
