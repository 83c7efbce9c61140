// Bandwidth, kernel density, autocorrelations and histogram bins of a sample.
#include "DensityEstimates.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>
#include <vector>

namespace numerics {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
// Kernels are cut at this many bandwidths: exp(-32) is about 1.3e-14.
constexpr double kKernelReach = 8.0;
// Exact sums up to this many kernel evaluations (finite values x grid points).
constexpr double kExactWork = 4194304.0;  // 2^22
// Binned estimates: cells per bandwidth, and the most cells the fine grid may hold.
constexpr double kCellsPerBandwidth = 32.0;
constexpr Eigen::Index kMaxCells = 4194304;  // 2^22
constexpr int kMaxBins = 1000;

// The finite values of x, sorted.
std::vector<double> SortedFinite(const Eigen::VectorXd& x) {
  std::vector<double> values;
  values.reserve(static_cast<std::size_t>(x.size()));
  for (double v : x) {
    if (std::isfinite(v)) values.push_back(v);
  }
  std::sort(values.begin(), values.end());
  return values;
}

// Quantile p of sorted values by linear interpolation between order statistics (type 7).
double SortedQuantile(const std::vector<double>& sorted, double p) {
  const double h = static_cast<double>(sorted.size() - 1) * p;
  const std::size_t lo = static_cast<std::size_t>(std::floor(h));
  const std::size_t hi = std::min(lo + 1, sorted.size() - 1);
  return sorted[lo] + (h - static_cast<double>(lo)) * (sorted[hi] - sorted[lo]);
}

double InterquartileRange(const std::vector<double>& sorted) {
  return SortedQuantile(sorted, 0.75) - SortedQuantile(sorted, 0.25);
}

// Sample standard deviation (n - 1 divisor); 0 for fewer than two values.
double StandardDeviation(const std::vector<double>& values) {
  if (values.size() < 2) return 0.0;
  double mean = 0.0;
  for (double v : values) mean += v;
  mean /= static_cast<double>(values.size());
  double sum = 0.0;
  for (double v : values) sum += (v - mean) * (v - mean);
  return std::sqrt(sum / static_cast<double>(values.size() - 1));
}

// Density at each grid point by direct sums over the values within kKernelReach bandwidths.
void ExactDensity(const std::vector<double>& sorted, double h, const Eigen::VectorXd& grid,
                  Eigen::VectorXd& density) {
  const double scale = 1.0 / (static_cast<double>(sorted.size()) * h * std::sqrt(2.0 * std::numbers::pi));
  for (Eigen::Index j = 0; j < grid.size(); ++j) {
    const double g = grid[j];
    auto first = std::lower_bound(sorted.begin(), sorted.end(), g - kKernelReach * h);
    auto last = std::upper_bound(first, sorted.end(), g + kKernelReach * h);
    double sum = 0.0;
    for (auto it = first; it != last; ++it) {
      const double u = (g - *it) / h;
      sum += std::exp(-0.5 * u * u);
    }
    density[j] = sum * scale;
  }
}

// Density by linear binning onto a fine grid whose every r-th cell is a grid point, then a
// truncated discrete convolution evaluated at the grid points only.
void BinnedDensity(const std::vector<double>& values, double h, const Eigen::VectorXd& grid,
                   Eigen::VectorXd& density) {
  const Eigen::Index points = grid.size();
  const double lo = grid[0];
  const double step = (grid[points - 1] - lo) / static_cast<double>(points - 1);
  const Eigen::Index maxRatio = std::max<Eigen::Index>(1, (kMaxCells - 1) / (points - 1));
  const Eigen::Index ratio = std::clamp<Eigen::Index>(
      static_cast<Eigen::Index>(std::ceil(step * kCellsPerBandwidth / h)), 1, maxRatio);
  const Eigen::Index cells = (points - 1) * ratio + 1;
  const double cell = step / static_cast<double>(ratio);

  std::vector<double> weight(static_cast<std::size_t>(cells), 0.0);
  for (double v : values) {
    const double pos = (v - lo) / cell;
    Eigen::Index k = std::clamp<Eigen::Index>(static_cast<Eigen::Index>(std::floor(pos)), 0, cells - 2);
    const double frac = std::clamp(pos - static_cast<double>(k), 0.0, 1.0);
    weight[static_cast<std::size_t>(k)] += 1.0 - frac;
    weight[static_cast<std::size_t>(k + 1)] += frac;
  }

  const Eigen::Index reach = static_cast<Eigen::Index>(std::ceil(kKernelReach * h / cell));
  std::vector<double> kernel(static_cast<std::size_t>(reach + 1));
  for (Eigen::Index d = 0; d <= reach; ++d) {
    const double u = static_cast<double>(d) * cell / h;
    kernel[static_cast<std::size_t>(d)] = std::exp(-0.5 * u * u);
  }
  const double scale = 1.0 / (static_cast<double>(values.size()) * h * std::sqrt(2.0 * std::numbers::pi));
  for (Eigen::Index j = 0; j < points; ++j) {
    const Eigen::Index center = j * ratio;
    const Eigen::Index from = std::max<Eigen::Index>(0, center - reach);
    const Eigen::Index to = std::min(cells - 1, center + reach);
    double sum = 0.0;
    for (Eigen::Index k = from; k <= to; ++k) {
      sum += weight[static_cast<std::size_t>(k)] * kernel[static_cast<std::size_t>(std::abs(k - center))];
    }
    density[j] = sum * scale;
  }
}

}  // namespace

double SilvermanBandwidth(const Eigen::VectorXd& x) {
  const std::vector<double> sorted = SortedFinite(x);
  if (sorted.empty()) return kNaN;
  const double sd = StandardDeviation(sorted);
  double scale = std::min(sd, InterquartileRange(sorted) / 1.34);
  if (scale <= 0.0) scale = sd;
  if (scale <= 0.0) scale = sorted[0] != 0.0 ? 0.1 * std::abs(sorted[0]) : 1.0;
  return 0.9 * scale * std::pow(static_cast<double>(sorted.size()), -0.2);
}

void KernelDensity(const Eigen::VectorXd& x, double bandwidth, int points, Eigen::VectorXd& grid,
                   Eigen::VectorXd& density) {
  grid.resize(0);
  density.resize(0);
  if (points < 2 || !(bandwidth > 0.0) || !std::isfinite(bandwidth)) return;
  const std::vector<double> sorted = SortedFinite(x);
  if (sorted.empty()) return;

  const double lo = sorted.front() - 3.0 * bandwidth;
  const double hi = sorted.back() + 3.0 * bandwidth;
  grid = Eigen::VectorXd::LinSpaced(points, lo, hi);
  density.resize(points);
  if (static_cast<double>(sorted.size()) * points <= kExactWork) {
    ExactDensity(sorted, bandwidth, grid, density);
  } else {
    BinnedDensity(sorted, bandwidth, grid, density);
  }
}

Eigen::VectorXd Autocorrelations(const Eigen::VectorXd& x, int lags) {
  if (lags < 0) return Eigen::VectorXd();
  Eigen::VectorXd result = Eigen::VectorXd::Constant(lags + 1, kNaN);
  const Eigen::Index n = x.size();
  if (n == 0 || x.hasNaN()) return result;
  const Eigen::VectorXd centered = x.array() - x.mean();
  const double denominator = centered.squaredNorm();
  if (!(denominator > 0.0) || !std::isfinite(denominator)) return result;
  for (Eigen::Index k = 0; k <= lags; ++k) {
    if (k >= n) {
      result[k] = 0.0;
      continue;
    }
    result[k] = centered.head(n - k).dot(centered.tail(n - k)) / denominator;
  }
  return result;
}

int HistogramBins(const Eigen::VectorXd& x) {
  const std::vector<double> sorted = SortedFinite(x);
  if (sorted.size() < 2) return 1;
  const double range = sorted.back() - sorted.front();
  if (!(range > 0.0)) return 1;
  const double n = static_cast<double>(sorted.size());
  const double iqr = InterquartileRange(sorted);
  double bins = 0.0;
  if (iqr > 0.0) {
    bins = std::ceil(range / (2.0 * iqr * std::pow(n, -1.0 / 3.0)));
  } else {
    bins = std::ceil(std::log2(n)) + 1.0;
  }
  // Also catches an infinite count when the range overflows.
  if (!(bins <= kMaxBins)) return kMaxBins;
  return std::max(1, static_cast<int>(bins));
}

void HistogramCounts(const Eigen::VectorXd& x, int bins, Eigen::VectorXd& edges, Eigen::VectorXd& counts) {
  bins = std::max(bins, 1);
  double lo = std::numeric_limits<double>::infinity();
  double hi = -lo;
  for (double v : x) {
    if (!std::isfinite(v)) continue;
    lo = std::min(lo, v);
    hi = std::max(hi, v);
  }
  if (lo > hi) {
    lo = 0.0;
    hi = 1.0;
  } else if (lo == hi) {
    // Half a unit on each side, more when v is so large that half a unit would not show.
    const double half = std::max(0.5, 1e-9 * std::abs(lo));
    lo -= half;
    hi += half;
  }
  // Weighted means rather than lo + i (hi - lo) / bins, which overflows for extreme ranges.
  edges.resize(bins + 1);
  for (int i = 0; i <= bins; ++i) {
    const double t = static_cast<double>(i) / bins;
    edges[i] = (1.0 - t) * lo + t * hi;
  }
  edges[0] = lo;
  edges[bins] = hi;
  counts = Eigen::VectorXd::Zero(bins);
  for (double v : x) {
    if (!std::isfinite(v)) continue;
    // The last edge not above v names the bin, so a value on an edge goes to the bin it opens.
    const auto above = std::upper_bound(edges.data(), edges.data() + bins + 1, v);
    const int i = std::clamp(static_cast<int>(above - edges.data()) - 1, 0, bins - 1);
    counts[i] += 1.0;
  }
}

}  // namespace numerics
