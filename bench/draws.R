# The same draws with R's generators, for the ratio printed by tavix_draws_bench: 10^7 normal,
# truncated-normal (lower bound 5 sd above the mean, by inversion) and gamma(2.5, 1) draws; one
# line per case: the nanoseconds per draw, the median of five runs.
n <- 1e7
cases <- list(
  function() rnorm(n),
  function() qnorm(runif(n, pnorm(5), 1)),
  function() rgamma(n, shape = 2.5, rate = 1)
)
for (f in cases) {
  f()
  times <- sapply(1:5, function(i) system.time(f())[["elapsed"]])
  cat(median(times) * 1e9 / n, "\n")
}
