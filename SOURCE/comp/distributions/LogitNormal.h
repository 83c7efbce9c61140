// The logit-normal distribution on (0, 1): log(x / (1 - x)) is normal with the location and scale as mean and sd.
#pragma once

#include "RandomEngine.h"

namespace dist {

double LogitNormalPdf(double x, double location, double scale);
double LogitNormalCdf(double x, double location, double scale);
// 1 / (1 + exp(-(location + scale * z))).
double LogitNormalDraw(RandomEngine& rng, double location, double scale);

}  // namespace dist
