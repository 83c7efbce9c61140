// Axis ranges of a panel's data and their tick marks and labels, independent of any drawing library.
#pragma once

#include <string>
#include <vector>

#include "Figure.h"

namespace plot {

struct AxisRange {
  double lo = 0.0;
  double hi = 1.0;
};

// The ranges a panel's axes show.
struct PanelRanges {
  AxisRange x;
  AxisRange y;
  bool hasData = false;  // false: no series holds a finite point; the ranges are then [0, 1]
};

// The ranges that show every finite point of the panel's series, with room around them: lines and
// densities span their x values exactly, scatter and bars get a margin; y gets 5% on each side,
// except that histograms and densities (when nothing is negative) start at 0 and ACF panels
// include 0 and the bands. A range whose values are all equal to v becomes v +/- 10% of |v| (or
// +/- 1 when v is 0), so a constant series still has an axis.
PanelRanges DataRanges(const Panel& panel);

// The x value of point i (0-based) of a series, as drawn: i + 1 for Lines, x[i] otherwise.
double SeriesX(const Series& series, Eigen::Index i);

// The number of (x, y) points a series draws: y's size for Lines, otherwise the common length of
// x and y (histograms: the bins that have both edges).
Eigen::Index SeriesPoints(const Series& series);

struct AxisTicks {
  std::vector<double> values;
  std::vector<std::string> labels;
};

// Ticks at multiples of 1, 2 or 5 times a power of ten inside [lo, hi]: as many as possible up to
// target + 1 (at least two whenever the range allows), labelled with as many decimals as the step needs, or
// in exponent notation for very large or very small numbers.
AxisTicks NiceTicks(double lo, double hi, int target);

}  // namespace plot
