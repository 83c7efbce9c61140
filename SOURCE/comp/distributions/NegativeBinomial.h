// The negative binomial distribution: failures x before the r-th success, success probability p; P(x) = C(x + r - 1, x) p^r (1 - p)^x.
#pragma once

#include "RandomEngine.h"

namespace dist {

double NegativeBinomialPdf(double x, double r, double p);
double NegativeBinomialCdf(double x, double r, double p);
// A Poisson draw whose mean is a gamma draw with shape r and rate p / (1 - p).
double NegativeBinomialDraw(RandomEngine& rng, double r, double p);

}  // namespace dist
