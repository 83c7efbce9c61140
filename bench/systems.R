# The SUR of bench/SystemsBench.cpp through bayesm: reads the data file (y1, y2, y3, then the
# regressors of each equation in turn, `k` per equation), runs rsurGibbs for 30,000 iterations and
# keeps the last 20,000, and prints the seconds taken and the smallest effective sample size over
# the coefficients and the error covariance.
suppressMessages(library(bayesm))
args <- commandArgs(trailingOnly = TRUE)
data <- as.matrix(read.csv(args[1]))
k <- as.integer(args[2])
m <- 3
regdata <- lapply(seq_len(m), function(j) {
  list(y = data[, j], X = data[, m + (j - 1) * k + seq_len(k)])
})
# Priors matched to Tavix's defaults: b ~ N(0, 1000 I); Sigma ~ inverse Wishart(0.001 I, m + 1).
Prior <- list(betabar = rep(0, m * k), A = diag(0.001, m * k), nu = m + 1, V = diag(0.001, m))
elapsed <- system.time(
  out <- rsurGibbs(Data = list(regdata = regdata), Prior = Prior, Mcmc = list(R = 30000, keep = 1, nprint = 0))
)[["elapsed"]]
keep <- 10001:30000
draws <- cbind(out$betadraw[keep, ], out$Sigmadraw[keep, ])
ess <- min(coda::effectiveSize(coda::mcmc(draws)))
cat(elapsed, ess, "\n")
