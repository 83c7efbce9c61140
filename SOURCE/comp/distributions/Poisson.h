// The Poisson distribution with its mean; x a non-negative integer.
#pragma once

#include "RandomEngine.h"

namespace dist {

double PoissonPdf(double x, double mean);
double PoissonCdf(double x, double mean);
double PoissonDraw(RandomEngine& rng, double mean);

}  // namespace dist
