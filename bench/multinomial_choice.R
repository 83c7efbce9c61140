# The models of bench/MultinomialChoiceBench.cpp through R: reads the data file and the model named
# on the command line ("mnl": MCMCpack's MCMCmnl; "mnp": bayesm's rmnpGibbs; "mvp": bayesm's
# rmvpGibbs, whose file holds the four outcomes, then the regressors, after a column of zeros), runs
# 10,000 burn-in and 20,000 draws, and prints the seconds taken and the smallest effective sample
# size over the parameters (for the probits the identified ones: coefficients over sqrt(Sigma_11),
# correlations).
args <- commandArgs(trailingOnly = TRUE)
data <- read.csv(args[1])
model <- args[2]
k <- 5
if (model == "mnl") {
  suppressMessages(library(MCMCpack))
  data$y <- factor(data$y)
  elapsed <- system.time(
    draws <- MCMCmnl(y ~ x1 + x2 + x3 + x4, data = data, baseline = "0", mcmc.method = "IndMH",
                     burnin = 10000, mcmc = 20000, seed = 42, b0 = 0, B0 = 0.001, verbose = 0)
  )[["elapsed"]]
  ess <- min(coda::effectiveSize(draws))
} else if (model == "mnp") {
  suppressMessages(library(bayesm))
  p <- 4
  X <- createX(p = p, na = NULL, nd = k - 1, Xa = NULL, Xd = as.matrix(data[, 3:(k + 1)]), INT = TRUE, base = 1)
  elapsed <- system.time(
    out <- rmnpGibbs(Data = list(p = p, y = data$y + 1, X = X),
                     Mcmc = list(R = 30000, keep = 1, nprint = 0))
  )[["elapsed"]]
  keep <- 10001:30000
  scale <- sqrt(out$sigmadraw[keep, 1])
  identified <- cbind(out$betadraw[keep, ] / scale, out$sigmadraw[keep, -1] / scale^2)
  ess <- min(coda::effectiveSize(identified))
} else {
  suppressMessages(library(bayesm))
  p <- 4
  Y <- as.matrix(data[, 2:(p + 1)])
  Xd <- as.matrix(data[, (p + 2):(p + 1 + k)])
  n <- nrow(Y)
  # One row per chooser and outcome; each outcome's own five coefficients.
  X <- matrix(0, n * p, p * k)
  for (j in 1:p) X[seq(j, n * p, by = p), ((j - 1) * k + 1):(j * k)] <- Xd
  elapsed <- system.time(
    out <- rmvpGibbs(Data = list(p = p, y = as.vector(t(Y)), X = X), Mcmc = list(R = 30000, keep = 1, nprint = 0))
  )[["elapsed"]]
  keep <- 10001:30000
  s <- out$sigmadraw[keep, ]
  d <- sqrt(s[, c(1, 6, 11, 16)])
  beta <- out$betadraw[keep, ] / d[, rep(1:p, each = k)]
  corr <- s[, c(2, 3, 4, 7, 8, 12)] / (d[, c(1, 1, 1, 2, 2, 3)] * d[, c(2, 3, 4, 3, 4, 4)])
  ess <- min(coda::effectiveSize(cbind(beta, corr)))
}
cat(elapsed, ess, "\n")
