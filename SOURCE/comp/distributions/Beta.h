// The beta distribution with shape parameters alpha and beta.
#pragma once

#include "RandomEngine.h"

namespace dist {

double BetaPdf(double x, double alpha, double beta);
double BetaCdf(double x, double alpha, double beta);
double BetaDraw(RandomEngine& rng, double alpha, double beta);

}  // namespace dist
