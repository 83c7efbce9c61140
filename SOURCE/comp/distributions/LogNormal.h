// The log-normal distribution: log(x) is normal with the location and scale as mean and sd.
#pragma once

#include "RandomEngine.h"

namespace dist {

double LogNormalPdf(double x, double location, double scale);
double LogNormalCdf(double x, double location, double scale);
// exp(location + scale * z).
double LogNormalDraw(RandomEngine& rng, double location, double scale);

}  // namespace dist
