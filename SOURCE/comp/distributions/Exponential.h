// The exponential distribution with rate λ (mean 1/λ).
#pragma once

#include "RandomEngine.h"

namespace dist {

double ExponentialPdf(double x, double rate);
double ExponentialCdf(double x, double rate);
// Inverse transform: log(1 - u) / (-rate).
double ExponentialDraw(RandomEngine& rng, double rate);

}  // namespace dist
