// Effective sample size, split R-hat, Geweke's z-score and the posterior summary of MCMC draws.
#include "McmcDiagnostics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <limits>
#include <span>

#include <unsupported/Eigen/FFT>

namespace numerics {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

using Span = std::span<const double>;
using Index = Eigen::Index;

// The shape shared by the chains: parameter count, draws per chain after cutting every chain to
// the shortest, and whether all chains have the same columns.
struct Layout {
  Index cols = 0;
  Index draws = 0;
  bool consistent = true;
};

Layout LayoutOf(const std::vector<Eigen::MatrixXd>& chains) {
  Layout layout;
  if (chains.empty()) return layout;
  layout.cols = chains.front().cols();
  layout.draws = chains.front().rows();
  for (const Eigen::MatrixXd& chain : chains) {
    if (chain.cols() != layout.cols) layout.consistent = false;
    layout.draws = std::min(layout.draws, chain.rows());
  }
  return layout;
}

// The last `draws` values of column j of every chain (columns are contiguous in Eigen's layout).
std::vector<Span> ColumnOf(const std::vector<Eigen::MatrixXd>& chains, Index j, Index draws) {
  std::vector<Span> column;
  column.reserve(chains.size());
  for (const Eigen::MatrixXd& chain : chains) {
    if (draws == 0) {
      column.emplace_back();
    } else {
      column.emplace_back(chain.col(j).data() + (chain.rows() - draws),
                          static_cast<std::size_t>(draws));
    }
  }
  return column;
}

// Whether every value of a column is finite, and whether it holds at least two values, all equal.
struct ColumnState {
  bool finite = true;
  bool constant = false;
};

ColumnState Inspect(const std::vector<Span>& column) {
  ColumnState state;
  std::size_t count = 0;
  bool allEqual = true;
  double firstValue = 0.0;
  for (Span chain : column) {
    for (double v : chain) {
      if (!std::isfinite(v)) {
        state.finite = false;
        return state;
      }
      if (count == 0) firstValue = v;
      allEqual = allEqual && v == firstValue;
      ++count;
    }
  }
  state.constant = allEqual && count >= 2;
  return state;
}

// Mean and variance (n - 1 divisor) of finite values by the corrected two-pass algorithm; values
// all equal give that value and 0 exactly, since a computed mean of equal values may be off by
// an ulp.
struct Moments {
  double mean = kNaN;
  double variance = kNaN;
  bool constant = false;
};

Moments MomentsOf(Span x) {
  Moments m;
  if (x.empty()) return m;
  const double n = static_cast<double>(x.size());
  m.constant = std::all_of(x.begin(), x.end(), [&](double v) { return v == x.front(); });
  if (m.constant) {
    m.mean = x.front();
    m.variance = x.size() > 1 ? 0.0 : kNaN;
    return m;
  }
  double sum = 0.0;
  for (double v : x) sum += v;
  const double mean = sum / n;
  double squares = 0.0;
  double deviations = 0.0;
  for (double v : x) {
    const double d = v - mean;
    squares += d * d;
    deviations += d;
  }
  m.mean = mean + deviations / n;
  m.variance =
      x.size() > 1 ? std::max(0.0, squares - deviations * deviations / n) / (n - 1.0) : kNaN;
  return m;
}

// Type-7 quantiles at the nondecreasing probabilities `ps` (each in [0, 1]) of values without
// NaN, partially ordering them: each search starts where the previous one left the values
// partitioned. Interpolation within 4 ulps of an order statistic returns that order statistic,
// so p = k / (n - 1) is exact.
void SortedQuantiles(std::vector<double>& v, std::span<const double> ps, double* out) {
  const std::size_t n = v.size();
  std::size_t start = 0;  // v[0 ... start) are the smallest values, in order
  for (std::size_t q = 0; q < ps.size(); ++q) {
    const double h = static_cast<double>(n - 1) * ps[q];
    const double fuzz = 4.0 * std::numeric_limits<double>::epsilon() * std::max(1.0, h);
    double whole = std::floor(h);
    double frac = h - whole;
    if (1.0 - frac < fuzz) {
      whole += 1.0;
      frac = 0.0;
    } else if (frac < fuzz) {
      frac = 0.0;
    }
    const std::size_t lo = std::max(start, std::min(static_cast<std::size_t>(whole), n - 1));
    const auto at = [&](std::size_t i) { return v.begin() + static_cast<std::ptrdiff_t>(i); };
    std::nth_element(at(start), at(lo), v.end());
    const double low = v[lo];
    start = lo;
    if (frac == 0.0 || lo + 1 >= n) {
      out[q] = low;
      continue;
    }
    std::iter_swap(at(lo + 1), std::min_element(at(lo + 1), v.end()));
    const double high = v[lo + 1];
    start = lo + 1;
    if (high == low) {
      out[q] = low;
    } else if (std::isfinite(low) && std::isfinite(high)) {
      out[q] = low + frac * (high - low);
    } else {
      out[q] = (1.0 - frac) * low + frac * high;
    }
  }
}

// The smallest multiple of 4 that is at least `minimum` and has no prime factor above 5: a
// multiple of 4 takes the FFT's real-input path, and small prime factors keep it fast.
std::size_t FftSize(std::size_t minimum) {
  auto smooth = [](std::size_t k) {
    for (std::size_t p : {2, 3, 5}) {
      while (k % p == 0) k /= p;
    }
    return k == 1;
  };
  std::size_t size = std::max<std::size_t>(4, (minimum + 3) / 4 * 4);
  while (!smooth(size)) size += 4;
  return size;
}

// The cap on N / tau, as a factor of N: log10(N), but never below 1.
double CapFactor(double total) { return std::max(1.0, std::log10(total)); }

// Geyer's initial monotone positive sequence over the autocorrelations rho(0 ... known-1):
// tau = -1 + 2 sum_k P_k with P_k = rho(2k) + rho(2k+1), summed while positive (P_0 always
// counts), each P_k cut to at most P_(k-1). The result is kept at or above 1 / CapFactor(total)
// so that total / tau respects the cap. `settled` tells whether a non-positive pair ended the sum
// within the known lags, so that more lags could not change it.
struct Sequence {
  double tau = kNaN;
  bool settled = false;
};

template <typename Rho>
Sequence InitialMonotoneTime(Rho rho, std::size_t known, double total) {
  Sequence sequence;
  double tau = -1.0;
  double previous = kInf;
  for (std::size_t k = 0; 2 * k + 1 < known; ++k) {
    double pair = rho(2 * k) + rho(2 * k + 1);
    if (std::isnan(pair)) {
      sequence.settled = true;
      return sequence;
    }
    if (k > 0 && pair <= 0.0) {
      sequence.settled = true;
      break;
    }
    pair = std::min(pair, previous);
    tau += 2.0 * pair;
    previous = pair;
  }
  sequence.tau = std::max(tau, 1.0 / CapFactor(total));
  return sequence;
}

// The integrated autocorrelation time of a column and its variance estimate var+.
struct Mixing {
  double tau = kNaN;
  double varPlus = kNaN;
};

// Estimates the mixing of columns, keeping the transform plans and the buffers between them.
class MixingEstimator {
public:
  MixingEstimator() { m_fft.SetFlag(Eigen::FFT<double>::HalfSpectrum); }

  // Mixing of a column over chains of equal length n >= 2, finite and not constant. With W the
  // mean within-chain variance (divisor n) and var+ = W + (variance of the chain means), the
  // autocorrelation at lag t is 1 - (W - mean autocovariance at t) / var+: 1 at lag 0, and the
  // chain's own autocorrelation when there is one chain. The first lags come from direct sums;
  // when the sequence is still positive beyond them, an FFT supplies the first eighth of the lags
  // (a transform a little longer than the chain), and only when that is not enough all of them
  // (a transform of twice its length).
  Mixing Estimate(const std::vector<Span>& column) {
    const std::size_t m = column.size();
    const std::size_t n = column.front().size();
    const double total = static_cast<double>(m * n);
    std::vector<double> means(m);
    m_centred.resize(m);
    for (std::size_t c = 0; c < m; ++c) {
      means[c] = MomentsOf(column[c]).mean;
      m_centred[c].resize(n);
      for (std::size_t i = 0; i < n; ++i) m_centred[c][i] = column[c][i] - means[c];
    }
    const double betweenVariance = m > 1 ? MomentsOf(means).variance : 0.0;
    m_acov.assign(n, 0.0);

    Mixing mixing;
    Sequence sequence;
    // The sequence over lags [0, known) of the summed autocovariances; false when var+ is not
    // positive (possible only through underflow, as the column is not constant).
    auto settle = [&](std::size_t known) {
      const double within = m_acov[0] / static_cast<double>(m);
      mixing.varPlus = within + betweenVariance;
      if (!(mixing.varPlus > 0.0)) return false;
      auto rho = [&](std::size_t t) {
        return t == 0 ? 1.0 : 1.0 - (within - m_acov[t] / static_cast<double>(m)) / mixing.varPlus;
      };
      sequence = InitialMonotoneTime(rho, known, total);
      return true;
    };

    const std::size_t direct = std::min(n, kDirectLags);
    for (std::size_t from = 0; from < direct; from += kLagBlock) {
      const std::size_t to = std::min(from + kLagBlock, direct);
      for (std::size_t c = 0; c < m; ++c) AddDirect(m_centred[c], from, to);
      if (!settle(to)) return mixing;
      if (sequence.settled || to == n) {
        mixing.tau = sequence.tau;
        return mixing;
      }
    }
    for (std::size_t lags : {std::max(direct, n / 8), n}) {
      if (lags <= direct) continue;
      std::fill(m_acov.begin(), m_acov.end(), 0.0);
      for (std::size_t c = 0; c < m; ++c) AddByFft(m_centred[c], lags);
      if (!settle(lags)) return mixing;
      if (sequence.settled || lags == n) break;
    }
    mixing.tau = sequence.tau;
    return mixing;
  }

private:
  // Lags computed by direct sums before the FFT takes over: a well-mixing chain settles its
  // sequence within them at a fraction of the cost of a transform. They go in blocks, the
  // sequence being checked after each.
  static constexpr std::size_t kLagBlock = 16;
  static constexpr std::size_t kDirectLags = 2 * kLagBlock;

  // Adds the autocovariances (divisor n) of the centred series d at lags [from, to).
  void AddDirect(const std::vector<double>& d, std::size_t from, std::size_t to) {
    const std::size_t n = d.size();
    for (std::size_t t = from; t < to; ++t) {
      const auto overlap = static_cast<Index>(n - t);
      const Eigen::Map<const Eigen::VectorXd> head(d.data(), overlap);
      const Eigen::Map<const Eigen::VectorXd> tail(d.data() + t, overlap);
      m_acov[t] += head.dot(tail) / static_cast<double>(n);
    }
  }

  // Adds the autocovariances of d at lags [0, lags) through the power spectrum of the series
  // padded with zeros; padding to n + lags - 1 keeps the circular correlation from wrapping onto
  // those lags.
  void AddByFft(const std::vector<double>& d, std::size_t lags) {
    const std::size_t n = d.size();
    const std::size_t size = FftSize(n + lags - 1);
    m_padded.assign(size, 0.0);
    std::copy(d.begin(), d.end(), m_padded.begin());
    m_spectrum.resize(size / 2 + 1);
    m_fft.fwd(m_spectrum.data(), m_padded.data(), static_cast<Index>(size));
    for (std::complex<double>& c : m_spectrum) c = std::norm(c);
    m_back.resize(size);
    m_fft.inv(m_back.data(), m_spectrum.data(), static_cast<Index>(size));
    const double scale = 1.0 / static_cast<double>(n);
    for (std::size_t t = 0; t < lags; ++t) m_acov[t] += m_back[t] * scale;
  }

  Eigen::FFT<double> m_fft;
  std::vector<std::vector<double>> m_centred;
  std::vector<double> m_acov;
  std::vector<double> m_padded;
  std::vector<std::complex<double>> m_spectrum;
  std::vector<double> m_back;
};

// Effective sample size of one column, with the conventions for degenerate columns.
double ColumnEss(const std::vector<Span>& column, const ColumnState& state,
                 MixingEstimator& estimator) {
  if (column.empty()) return kNaN;
  const std::size_t n = column.front().size();
  const double total = static_cast<double>(column.size() * n);
  if (!state.finite) return kNaN;
  if (n == 0 || state.constant) return total;
  if (n < 4) return kNaN;
  return total / estimator.Estimate(column).tau;
}

// Geweke's z-score of one chain's column.
double ColumnGeweke(Span x, double first, double last, MixingEstimator& estimator) {
  const bool validFractions =
      first > 0.0 && first < 1.0 && last > 0.0 && last < 1.0 && first + last <= 1.0;
  if (!validFractions) return kNaN;
  const double n = static_cast<double>(x.size());
  // The small allowance keeps fractions such as 0.1 of 100 from rounding down a whole draw.
  const auto countA = static_cast<std::size_t>(std::floor(first * n + 1e-9));
  const auto countB = static_cast<std::size_t>(std::floor(last * n + 1e-9));
  if (countA < 4 || countB < 4 || countA + countB > x.size()) return kNaN;
  if (!std::all_of(x.begin(), x.end(), [](double v) { return std::isfinite(v); })) return kNaN;
  const Span a = x.first(countA);
  const Span b = x.last(countB);
  // The long-run variance (spectral density at zero) of a segment: gamma_0 tau.
  auto longRun = [&](Span segment, const Moments& moments) {
    if (moments.constant) return 0.0;
    const Mixing mixing = estimator.Estimate({segment});
    return mixing.varPlus * mixing.tau;
  };
  const Moments ma = MomentsOf(a);
  const Moments mb = MomentsOf(b);
  const double variance =
      longRun(a, ma) / static_cast<double>(countA) + longRun(b, mb) / static_cast<double>(countB);
  return (ma.mean - mb.mean) / std::sqrt(variance);
}

// Split R-hat of one column over all chains.
double ColumnRHat(const std::vector<Span>& column, const ColumnState& state) {
  const std::size_t m = column.size();
  if (m < 2 || !state.finite) return kNaN;
  const std::size_t n = column.front().size();
  const std::size_t h = n / 2;
  if (h < 2) return kNaN;
  std::vector<double> means;
  means.reserve(2 * m);
  double within = 0.0;
  for (Span chain : column) {
    for (Span half : {chain.first(h), chain.last(h)}) {
      const Moments moments = MomentsOf(half);
      means.push_back(moments.mean);
      within += moments.variance;
    }
  }
  within /= static_cast<double>(2 * m);
  const double between = MomentsOf(means).variance;  // B / h
  if (within == 0.0) return between == 0.0 ? 1.0 : kInf;
  const double dh = static_cast<double>(h);
  return std::sqrt(((dh - 1.0) / dh * within + between) / within);
}

// The probabilities of the lower bound, median and upper bound of the summary, in order.
constexpr std::array<double, 3> kSummaryProbabilities{0.025, 0.5, 0.975};

}  // namespace

DrawSummary SummarizeDraws(const std::vector<Eigen::MatrixXd>& chains) {
  const Layout layout = LayoutOf(chains);
  const Index k = layout.cols;
  const auto chainCount = static_cast<Index>(chains.size());
  DrawSummary s;
  for (Eigen::VectorXd* v :
       {&s.mean, &s.sd, &s.median, &s.lower, &s.upper, &s.ess, &s.mcse, &s.rhat}) {
    v->setConstant(k, kNaN);
  }
  s.geweke.setConstant(k, chainCount, kNaN);
  if (!layout.consistent) return s;

  MixingEstimator estimator;
  std::vector<double> pooled;
  for (Index j = 0; j < k; ++j) {
    const std::vector<Span> column = ColumnOf(chains, j, layout.draws);
    const ColumnState state = Inspect(column);
    if (!state.finite) continue;
    pooled.clear();
    for (Span chain : column) pooled.insert(pooled.end(), chain.begin(), chain.end());
    const Moments moments = MomentsOf(pooled);
    s.mean(j) = moments.mean;
    s.sd(j) = std::sqrt(moments.variance);
    if (!pooled.empty()) {
      std::array<double, 3> quantiles{};
      SortedQuantiles(pooled, kSummaryProbabilities, quantiles.data());
      s.lower(j) = quantiles[0];
      s.median(j) = quantiles[1];
      s.upper(j) = quantiles[2];
    }
    s.ess(j) = ColumnEss(column, state, estimator);
    s.mcse(j) = s.sd(j) / std::sqrt(s.ess(j));
    for (Index c = 0; c < chainCount; ++c) {
      s.geweke(j, c) = ColumnGeweke(column[static_cast<std::size_t>(c)], 0.1, 0.5, estimator);
    }
    s.rhat(j) = ColumnRHat(column, state);
  }
  return s;
}

Eigen::VectorXd EffectiveSampleSize(const std::vector<Eigen::MatrixXd>& chains) {
  const Layout layout = LayoutOf(chains);
  Eigen::VectorXd ess = Eigen::VectorXd::Constant(layout.cols, kNaN);
  if (!layout.consistent) return ess;
  MixingEstimator estimator;
  for (Index j = 0; j < layout.cols; ++j) {
    const std::vector<Span> column = ColumnOf(chains, j, layout.draws);
    ess(j) = ColumnEss(column, Inspect(column), estimator);
  }
  return ess;
}

Eigen::VectorXd GewekeZ(const Eigen::MatrixXd& chain, double first, double last) {
  Eigen::VectorXd z = Eigen::VectorXd::Constant(chain.cols(), kNaN);
  MixingEstimator estimator;
  for (Index j = 0; j < chain.cols() && chain.rows() > 0; ++j) {
    const Span x(chain.col(j).data(), static_cast<std::size_t>(chain.rows()));
    z(j) = ColumnGeweke(x, first, last, estimator);
  }
  return z;
}

Eigen::VectorXd SplitRHat(const std::vector<Eigen::MatrixXd>& chains) {
  const Layout layout = LayoutOf(chains);
  Eigen::VectorXd rhat = Eigen::VectorXd::Constant(layout.cols, kNaN);
  if (!layout.consistent) return rhat;
  for (Index j = 0; j < layout.cols; ++j) {
    const std::vector<Span> column = ColumnOf(chains, j, layout.draws);
    rhat(j) = ColumnRHat(column, Inspect(column));
  }
  return rhat;
}

double Quantile(std::vector<double> values, double p) {
  if (values.empty() || !(p >= 0.0 && p <= 1.0)) return kNaN;
  if (std::any_of(values.begin(), values.end(), [](double v) { return std::isnan(v); }))
    return kNaN;
  double result = kNaN;
  SortedQuantiles(values, {&p, 1}, &result);
  return result;
}

}  // namespace numerics
