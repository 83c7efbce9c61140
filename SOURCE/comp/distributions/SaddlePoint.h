// Saddle-point terms for the log-probabilities of counts (Loader's method): accurate for counts of
// any size, where differences of log-factorials of large numbers would lose every digit.
#pragma once

namespace dist {

// The remainder of Stirling's formula at a whole k >= 1: log k! - (k + 1/2) log k + k - log(2 pi) / 2.
double StirlingRemainder(double k);

// x log(x / mean) + mean - x for x >= 0 and mean > 0, without cancellation when x is near mean.
double DevianceTerm(double x, double mean);

// log P(X = k) of a Poisson count of the given mean > 0, for a whole k >= 0.
double PoissonLogProbability(double k, double mean);

// log P(X = k) of a binomial count of n trials with probability q in (0, 1), for a whole k in
// 0 ... n.
double BinomialLogProbability(double k, double trials, double q);

}  // namespace dist
