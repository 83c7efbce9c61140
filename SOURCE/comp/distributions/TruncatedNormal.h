// The normal distribution (mean, sd) truncated to [lower, upper]; either bound may be infinite.
#pragma once

#include "RandomEngine.h"

namespace dist {

double TruncatedNormalPdf(double x, double mean, double sd, double lower, double upper);
double TruncatedNormalCdf(double x, double mean, double sd, double lower, double upper);
// Exact for any bounds, far tails included: rejection from the normal where the interval holds
// enough mass, otherwise exponential-proposal rejection in the tail (Robert's method) or uniform
// proposals on short intervals.
double TruncatedNormalDraw(RandomEngine& rng, double mean, double sd, double lower, double upper);

}  // namespace dist
