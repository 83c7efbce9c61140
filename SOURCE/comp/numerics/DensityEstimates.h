// Density estimates of a sample for plots: kernel bandwidth and density, autocorrelations and histograms.
//
// Conventions shared by these functions: quartiles are R's type 7 (linear interpolation between
// order statistics), standard deviations use the n - 1 divisor. None of them throws.
#pragma once

#include <Eigen/Dense>

namespace numerics {

// Silverman's rule-of-thumb bandwidth for a Gaussian kernel: 0.9 min(sd, IQR / 1.34) n^(-1/5).
//
// The input is meant to be free of NaN; non-finite values are left out rather than trusted to a
// sort. Degenerate samples still get a positive bandwidth so that a density can be drawn: when the
// IQR is 0 but the sd is not (more than half the values tied), the sd alone is the scale; when the
// sd is 0 too (a single value or all values equal to v), the scale is 0.1 |v|, or 1 when v is 0.
// A sample without finite values gives NaN.
double SilvermanBandwidth(const Eigen::VectorXd& x);

// Gaussian kernel density of `x` on `points` evenly spaced values from min - 3h to max + 3h
// (h = `bandwidth`), normalised by the number of finite values so that it integrates to about 1.
//
// Non-finite values are left out. Small problems (finite values times points up to 2^22) are summed
// exactly, each kernel cut at 8h where it is below 1e-14 of its peak. Larger ones bin the sample
// linearly onto a grid 32 times finer than h (at most 2^22 cells, each grid point a cell) and
// convolve the bin weights with the kernel: the density then differs from the exact sum by at
// most (cell / h)^2 / 8 times the kernel's peak 1 / (sqrt(2 pi) h), about 1.2e-4 of the peak
// when the cell limit does not bind. The cost is O(n + points x h / cell).
//
// `grid` and `density` come back empty when no value is finite, when `points` < 2, or when the
// bandwidth is not positive and finite.
void KernelDensity(const Eigen::VectorXd& x, double bandwidth, int points, Eigen::VectorXd& grid,
                   Eigen::VectorXd& density);

// Sample autocorrelations at lags 0..lags: r_k = sum_t (x_t - m)(x_(t+k) - m) / sum_t (x_t - m)^2,
// both sums over the n values (the usual biased estimator, so r_0 = 1).
//
// Lags at or beyond n give 0. A NaN anywhere, or a constant sample (zero denominator), gives NaN
// at every lag; an empty sample gives NaN as well. Negative `lags` gives an empty vector. The cost
// is O(n x lags).
Eigen::VectorXd Autocorrelations(const Eigen::VectorXd& x, int lags);

// Number of histogram bins by the Freedman–Diaconis rule: ceil(range / (2 IQR n^(-1/3))), with
// Sturges' ceil(log2 n) + 1 when the IQR is 0.
//
// Only finite values count. The result is at least 1 and at most 1000 (a few far outliers can
// ask for millions of bins); fewer than two finite values, or all of them equal, give 1.
int HistogramBins(const Eigen::VectorXd& x);

// Counts of the finite values of `x` in `bins` equal-width bins spanning [min, max].
//
// `edges` holds the bins + 1 boundaries; bin i counts the values in [edges[i], edges[i+1]), the
// last bin also its right edge. When all finite values are equal to v the bins span [v - d, v + d]
// with d = max(0.5, 1e-9 |v|); when there is none they span [0, 1] and count nothing. `bins` below
// 1 counts as 1.
void HistogramCounts(const Eigen::VectorXd& x, int bins, Eigen::VectorXd& edges, Eigen::VectorXd& counts);

}  // namespace numerics
