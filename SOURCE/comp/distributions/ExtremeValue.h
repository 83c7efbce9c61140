// The type I extreme-value (Gumbel) distribution of maxima, with location and scale: F(x) = exp(-exp(-(x - location) / scale)).
#pragma once

#include "RandomEngine.h"

namespace dist {

double ExtremeValuePdf(double x, double location, double scale);
double ExtremeValueCdf(double x, double location, double scale);
double ExtremeValueDraw(RandomEngine& rng, double location, double scale);

}  // namespace dist
