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
// x ~ N(0, 1) given x > a, for the many one-sided draws of data augmentation: rejection from
// ziggurat normals when a <= 0 (at least half the proposals accepted) and from their absolute
// values when 0 < a < 0.8, otherwise the shifted exponential of rate (a + sqrt(a^2 + 4)) / 2
// (Robert, 1995), which accepts at least 76% of proposals however far out a is.
double StandardNormalTailDraw(RandomEngine& rng, double a);

}  // namespace dist
