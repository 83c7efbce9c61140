// The binomial distribution: successes in n trials with success probability p.
#pragma once

#include "RandomEngine.h"

namespace dist {

double BinomialPdf(double x, double trials, double p);
double BinomialCdf(double x, double trials, double p);
// While n min(p, 1 - p) < 10, the waiting-time method: for p < 0.5, add log(u) / (n - k) for
// k = 0, 1, ... until the sum falls below log(1 - p); the draw is k. For p >= 0.5 the same with
// log(p), and the draw is n - k. From 10 on, transformed rejection, at a cost independent of n.
double BinomialDraw(RandomEngine& rng, double trials, double p);

}  // namespace dist
