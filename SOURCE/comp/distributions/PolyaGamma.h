// The Polya-Gamma distribution PG(1, c): the weights that make a logistic likelihood conditionally
// Normal (Polson, Scott and Windle, 2013).
#pragma once

#include "RandomEngine.h"

namespace dist {

// E[exp(-t w)] for w ~ PG(1, c): cosh(c/2) / cosh(sqrt(c^2/4 + t/2)), for t >= 0.
double PolyaGammaLaplace(double t, double c);
// An exact draw of PG(1, c) by Devroye's alternating-series method on J*(1, |c|/2): a mixture of
// a truncated exponential and a truncated inverse Gaussian proposal, accepted by the partial
// sums of the density's series. About 1.0003 proposals per draw, whatever c.
double PolyaGammaDraw(RandomEngine& rng, double c);

}  // namespace dist
