// The Weibull distribution with shape k and scale λ: F(x) = 1 - exp(-(x / λ)^k).
#pragma once

#include "RandomEngine.h"

namespace dist {

double WeibullPdf(double x, double shape, double scale);
double WeibullCdf(double x, double shape, double scale);
double WeibullDraw(RandomEngine& rng, double shape, double scale);

}  // namespace dist
