// SliceStep: Neal's slice sampler with stepping out, bounded.
#include "SliceStep.h"

#include <algorithm>
#include <cmath>

double SliceStep(double x, double lower, double upper, double width, const std::function<double(double)>& logDensity,
                 RandomEngine& rng) {
  const double level = logDensity(x) + std::log(rng.Uniform());
  double left = x - width * rng.Uniform(), right = left + width;
  // Step out at most a few widths each way; the bounds stop it anyway.
  for (int step = 0; step < 8 && left > lower && logDensity(left) > level; ++step) left -= width;
  for (int step = 0; step < 8 && right < upper && logDensity(right) > level; ++step) right += width;
  left = std::max(left, lower);
  right = std::min(right, upper);
  for (int tries = 0; tries < 200; ++tries) {
    const double candidate = left + (right - left) * rng.Uniform();
    if (candidate > lower && candidate < upper && logDensity(candidate) > level) return candidate;
    if (candidate < x) {
      left = candidate;
    } else {
      right = candidate;
    }
  }
  return x;  // the bracket shrank onto x: staying is a valid update
}
