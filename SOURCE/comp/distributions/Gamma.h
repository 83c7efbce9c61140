// The gamma distribution with shape a and rate b (mean a / b).
#pragma once

#include "RandomEngine.h"

namespace dist {

double GammaPdf(double x, double shape, double rate);
double GammaCdf(double x, double shape, double rate);
// Marsaglia and Tsang's method; shapes below 1 through the boost u^(1/shape).
double GammaDraw(RandomEngine& rng, double shape, double rate);

}  // namespace dist
