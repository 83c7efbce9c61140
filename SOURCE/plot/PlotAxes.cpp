// Data ranges of panels and nice tick marks for their axes.
#include "PlotAxes.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace plot {

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kMax = std::numeric_limits<double>::max();

// The smallest and largest finite values seen.
struct Extent {
  double lo = kInf;
  double hi = -kInf;
  void Add(double v) {
    if (!std::isfinite(v)) return;
    lo = std::min(lo, v);
    hi = std::max(hi, v);
  }
  bool Empty() const { return lo > hi; }
};

// `extent` grown by `fraction` of its span on each side (the low side only when `padLow`), or,
// when it is a single value, by 10% of that value (1 when it is 0).
AxisRange Widen(const Extent& extent, double fraction, bool padLow) {
  AxisRange range{extent.lo, extent.hi};
  if (range.lo == range.hi) {
    const double half = range.lo != 0.0 ? 0.1 * std::abs(range.lo) : 1.0;
    return {range.lo - half, range.hi + half};
  }
  // Halves first: the span itself may overflow for values near the largest double.
  const double pad = fraction * (0.5 * range.hi - 0.5 * range.lo) * 2.0;
  if (padLow) range.lo = std::max(-kMax, range.lo - pad);
  range.hi = std::min(kMax, range.hi + pad);
  return range;
}

}  // namespace

double SeriesX(const Series& series, Eigen::Index i) {
  return series.kind == SeriesKind::Lines ? static_cast<double>(i + 1) : series.x[i];
}

Eigen::Index SeriesPoints(const Series& series) {
  switch (series.kind) {
    case SeriesKind::Lines: return series.y.size();
    case SeriesKind::Histogram:
      return std::max<Eigen::Index>(0, std::min(series.y.size(), series.x.size() - 1));
    default: return std::min(series.x.size(), series.y.size());
  }
}

PanelRanges DataRanges(const Panel& panel) {
  Extent x;
  Extent y;
  bool xMargin = false;   // points and bars get room at the sides; lines end at the frame
  bool yFromZero = true;  // every series is a histogram or a density
  bool acf = false;
  for (const Series& series : panel.series) {
    const Eigen::Index n = SeriesPoints(series);
    xMargin = xMargin || series.kind == SeriesKind::Scatter || series.kind == SeriesKind::Histogram ||
              series.kind == SeriesKind::ACF;
    yFromZero = yFromZero && (series.kind == SeriesKind::Histogram || series.kind == SeriesKind::KDensity);
    for (Eigen::Index i = 0; i < n; ++i) {
      if (series.kind == SeriesKind::Histogram) {
        const double left = series.x[i];
        const double right = series.x[i + 1];
        if (!std::isfinite(left) || !std::isfinite(right) || !std::isfinite(series.y[i])) continue;
        x.Add(left);
        x.Add(right);
        y.Add(series.y[i]);
        y.Add(0.0);
        continue;
      }
      const double xi = SeriesX(series, i);
      if (!std::isfinite(xi) || !std::isfinite(series.y[i])) continue;
      x.Add(xi);
      y.Add(series.y[i]);
    }
    if (series.kind == SeriesKind::ACF) {
      acf = true;
      if (series.band > 0.0 && std::isfinite(series.band)) {
        y.Add(series.band);
        y.Add(-series.band);
      }
    }
  }
  PanelRanges ranges;
  if (x.Empty() || y.Empty()) return ranges;
  ranges.hasData = true;
  if (acf) y.Add(0.0);
  ranges.x = Widen(x, xMargin ? 0.04 : 0.0, true);
  const bool fromZero = yFromZero && y.lo >= 0.0 && y.hi > 0.0;
  ranges.y = Widen(y, 0.05, !fromZero);
  if (fromZero) ranges.y.lo = 0.0;
  return ranges;
}

AxisTicks NiceTicks(double lo, double hi, int target) {
  AxisTicks ticks;
  if (!std::isfinite(lo) || !std::isfinite(hi) || !(hi > lo)) return ticks;
  target = std::max(target, 2);
  // The step: 1, 2 or 5 times a power of ten, giving the most ticks inside the range without
  // exceeding target + 1; failing that, the largest step that still gives two.
  const double raw = hi / target - lo / target;  // halves first: the span may overflow
  const double power = std::pow(10.0, std::floor(std::log10(raw)));
  struct Choice {
    double step = 0.0;
    double first = 0.0;
    double last = -1.0;
    double Count() const { return last - first + 1.0; }
  };
  std::vector<Choice> choices;  // by increasing step
  for (double scale : {0.1, 1.0, 10.0}) {
    for (double multiple : {1.0, 2.0, 5.0}) {
      const double step = multiple * scale * power;
      choices.push_back({step, std::ceil(lo / step - 1e-9), std::floor(hi / step + 1e-9)});
    }
  }
  const Choice* best = nullptr;
  for (const Choice& choice : choices) {
    if (choice.Count() >= 2.0 && choice.Count() <= target + 1.0 &&
        (best == nullptr || choice.Count() > best->Count())) {
      best = &choice;
    }
  }
  for (auto it = choices.rbegin(); best == nullptr && it != choices.rend(); ++it) {
    if (it->Count() >= 2.0) best = &*it;
  }
  if (best == nullptr || best->Count() > 2.0 * target + 1.0) return ticks;
  const double step = best->step;
  const double first = best->first;
  const double last = best->last;

  for (double k = first; k <= last; k += 1.0) {
    double value = k * step;
    if (std::abs(value) < step * 1e-9) value = 0.0;
    ticks.values.push_back(value);
  }
  const double largest = std::max(std::abs(lo), std::abs(hi));
  char text[64];
  if (largest >= 1e6 || largest < 1e-4) {
    const int digits = std::clamp(
        static_cast<int>(std::floor(std::log10(largest)) - std::floor(std::log10(step) + 1e-9)), 0, 15);
    for (double v : ticks.values) {
      std::snprintf(text, sizeof text, "%.*e", digits, v);
      ticks.labels.emplace_back(text);
    }
  } else {
    const int decimals = std::clamp(static_cast<int>(-std::floor(std::log10(step) + 1e-9)), 0, 15);
    for (double v : ticks.values) {
      std::snprintf(text, sizeof text, "%.*f", decimals, v);
      ticks.labels.emplace_back(text);
    }
  }
  return ticks;
}

}  // namespace plot
