# The count models of bench/CountModelsBench.cpp through MCMCpack: reads the data file and the model
# ("poisson" or "nbinom") named on the command line, runs 10,000 burn-in and 20,000 draws, and prints
# the seconds taken and the smallest effective sample size over the coefficients.
suppressMessages(library(MCMCpack))
args <- commandArgs(trailingOnly = TRUE)
data <- read.csv(args[1])
# Coefficients' prior matched to Tavix's default: b ~ N(0, 1000 I). MCMCnegbin keeps its own
# default prior on its dispersion rho = 1 / alpha. It also keeps nine latent values per observation
# for every kept draw (20,000 kept draws of 10,000 observations need over 14 GB), so it keeps every
# 20th draw: the time is that of all 30,000 iterations, the effective sample size that of the 1,000
# kept draws, at most that of the whole chain.
elapsed <- system.time(
  draws <- if (args[2] == "poisson") {
    MCMCpoisson(y ~ . - 1, data = data, burnin = 10000, mcmc = 20000, seed = 42, b0 = 0, B0 = 0.001)
  } else {
    MCMCnegbin(y ~ . - 1, data = data, burnin = 10000, mcmc = 20000, thin = 20, seed = 42, b0 = 0, B0 = 0.001)
  }
)[["elapsed"]]
coefficients <- draws[, seq_len(ncol(data) - 1), drop = FALSE]
ess <- min(coda::effectiveSize(coefficients))
cat(elapsed, ess, "\n")
