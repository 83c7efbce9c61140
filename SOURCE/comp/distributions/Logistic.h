// The logistic distribution with location and scale.
#pragma once

#include "RandomEngine.h"

namespace dist {

double LogisticPdf(double x, double location, double scale);
double LogisticCdf(double x, double location, double scale);
// location + scale * (log(u) - log(1 - u)).
double LogisticDraw(RandomEngine& rng, double location, double scale);

}  // namespace dist
