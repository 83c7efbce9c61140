# The ordered probit of bench/OrderedChoiceBench.cpp through MCMCpack: reads the data file (y, then
# the constant x0 and the other regressors), runs 10,000 burn-in and 20,000 draws, and prints the
# seconds taken and the smallest effective sample size over the coefficients and cut-points.
suppressMessages(library(MCMCpack))
args <- commandArgs(trailingOnly = TRUE)
data <- read.csv(args[1])
data$x0 <- NULL
# Priors matched to Tavix's defaults: b ~ N(0, 1000 I); MCMCpack's cut-points have a flat prior
# (Tavix's: N(0, 1000) each, restricted to their order). Its default scale of the cut-points'
# Metropolis step; its intercept is Tavix's coefficient of the constant, both with the first
# cut-point at 0.
elapsed <- system.time(
  draws <- MCMCoprobit(y ~ ., data = data, burnin = 10000, mcmc = 20000, seed = 42, b0 = 0, B0 = 0.001)
)[["elapsed"]]
ess <- min(coda::effectiveSize(draws))
cat(elapsed, ess, "\n")
