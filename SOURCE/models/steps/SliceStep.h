// SliceStep: one slice-sampling update of a scalar parameter on a bounded interval (stepping
// out and shrinkage), for one-dimensional conditionals that are cheap to evaluate but have no
// standard form (correlations, factor loadings).
#pragma once

#include <functional>

#include "RandomEngine.h"

// A draw that leaves the density exp(logDensity) on (lower, upper) invariant, from the current
// value x (inside the interval, logDensity(x) finite). `width` is the initial bracket's size;
// logDensity may return -infinity where the density is zero.
double SliceStep(double x, double lower, double upper, double width, const std::function<double(double)>& logDensity,
                 RandomEngine& rng);
