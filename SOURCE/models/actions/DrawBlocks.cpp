// DrawBlocks: blocks of observations over all draws, on threads, with interruption between blocks.
#include "DrawBlocks.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <thread>

namespace {

// Observations per block: 64 observations over 20,000 draws is 10 MB.
constexpr Eigen::Index kBlock = 64;
// Sums are kept per stripe of consecutive blocks and added in stripe order at the end.
constexpr Eigen::Index kStripes = 16;

// Runs `work(task)` for tasks 0 ... tasks - 1 on the machine's cores. False when interrupted.
template <typename Work>
bool ForEachTask(Eigen::Index tasks, const std::atomic<bool>* interrupt, const Work& work) {
  std::atomic<Eigen::Index> next{0};
  std::atomic<bool> stopped{false};
  auto worker = [&] {
    for (Eigen::Index t = next++; t < tasks; t = next++) {
      if (stopped || (interrupt && interrupt->load())) {
        stopped = true;
        return;
      }
      work(t);
    }
  };
  const unsigned hardware = std::max(1u, std::thread::hardware_concurrency());
  const auto workers = static_cast<int>(std::min<Eigen::Index>(tasks, static_cast<Eigen::Index>(hardware)));
  std::vector<std::thread> pool;
  for (int t = 1; t < workers; ++t) pool.emplace_back(worker);
  worker();
  for (auto& t : pool) t.join();
  return !stopped;
}

// The order statistics lo and lo + 1 (0-based) of v[0, n), found among the values between two
// bounds read off a sorted sample of the draws: one pass counts the values below the lower bound
// and keeps those between, and only these few are then ordered. False when the bounds missed
// (the caller then selects among all the values).
bool BoundedOrderStatistics(const double* v, std::size_t n, const std::vector<double>& sample, double p,
                            std::size_t lo, std::vector<double>& kept, double& low, double& high) {
  const double m = static_cast<double>(sample.size());
  const double margin = 4.0 * std::sqrt(m * p * (1.0 - p)) + 2.0;
  const double rank = p * (m - 1.0);
  const double a = sample[static_cast<std::size_t>(std::max(0.0, std::floor(rank - margin)))];
  const double b = sample[static_cast<std::size_t>(std::min(m - 1.0, std::ceil(rank + margin)))];
  std::size_t below = 0;
  kept.clear();
  for (std::size_t i = 0; i < n; ++i) {
    if (v[i] < a) {
      ++below;
    } else if (v[i] <= b) {
      kept.push_back(v[i]);
    }
  }
  const std::size_t top = std::min(lo + 1, n - 1);
  if (below > lo || below + kept.size() <= top) return false;
  const auto at = [&](std::size_t i) { return kept.begin() + static_cast<std::ptrdiff_t>(i - below); };
  std::nth_element(kept.begin(), at(lo), kept.end());
  low = *at(lo);
  high = top == lo ? low : *std::min_element(at(lo) + 1, kept.end());
  return true;
}

// The p-quantile of v[0, n) by linear interpolation between order statistics (h = (n - 1) p).
double Quantile(const double* v, std::size_t n, const std::vector<double>& sample, double p,
                std::vector<double>& scratch) {
  const double h = static_cast<double>(n - 1) * p;
  const auto lo = static_cast<std::size_t>(std::floor(h));
  const double frac = h - static_cast<double>(lo);
  double low = 0.0, high = 0.0;
  if (sample.empty() || !BoundedOrderStatistics(v, n, sample, p, lo, scratch, low, high)) {
    scratch.assign(v, v + n);
    const auto at = [&](std::size_t i) { return scratch.begin() + static_cast<std::ptrdiff_t>(i); };
    std::nth_element(scratch.begin(), at(lo), scratch.end());
    low = scratch[lo];
    high = lo + 1 < n ? *std::min_element(at(lo) + 1, scratch.end()) : low;
  }
  return frac <= 0.0 ? low : low + frac * (high - low);
}

}  // namespace

void SummarizeDraws(const double* draws, Eigen::Index n, std::vector<double>& scratch, double& mean,
                    double& sd, double& lower, double& upper) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  const Eigen::Map<const Eigen::ArrayXd> x(draws, n);
  if (n == 0 || !x.isFinite().all()) {
    mean = sd = lower = upper = kNaN;
    return;
  }
  mean = x.mean();
  sd = n > 1 ? std::sqrt((x - mean).square().sum() / static_cast<double>(n - 1)) : kNaN;
  // A sorted sample of every (n / 512)-th draw bounds where the quantiles lie.
  thread_local std::vector<double> sample;
  sample.clear();
  const auto size = static_cast<std::size_t>(n);
  if (size >= 4096) {
    for (std::size_t i = 0; i < size; i += size / 512) sample.push_back(draws[i]);
    std::sort(sample.begin(), sample.end());
  }
  lower = Quantile(draws, size, sample, 0.025, scratch);
  upper = Quantile(draws, size, sample, 0.975, scratch);
}

bool SummarizeObservations(Eigen::Index observations, Eigen::Index draws, const DrawBlockFunction& block,
                           const std::atomic<bool>* interrupt, RowSummaries& out) {
  out.mean.resize(observations);
  out.sd.resize(observations);
  out.lower.resize(observations);
  out.upper.resize(observations);
  const Eigen::Index blocks = (observations + kBlock - 1) / kBlock;
  return ForEachTask(blocks, interrupt, [&](Eigen::Index b) {
    thread_local Eigen::MatrixXd values;
    thread_local std::vector<double> scratch;
    const Eigen::Index first = b * kBlock;
    const Eigen::Index count = std::min(kBlock, observations - first);
    values.resize(draws, count);
    block(first, count, values);
    for (Eigen::Index c = 0; c < count; ++c) {
      const Eigen::Index i = first + c;
      SummarizeDraws(values.col(c).data(), draws, scratch, out.mean(i), out.sd(i), out.lower(i), out.upper(i));
    }
  });
}

bool AverageOverObservations(Eigen::Index observations, Eigen::Index draws, Eigen::Index quantities,
                             const DrawSumsFunction& block, const std::atomic<bool>* interrupt,
                             Eigen::MatrixXd& out) {
  const Eigen::Index blocks = (observations + kBlock - 1) / kBlock;
  const Eigen::Index stripes = std::min(kStripes, std::max<Eigen::Index>(blocks, 1));
  std::vector<Eigen::MatrixXd> sums(static_cast<std::size_t>(stripes), Eigen::MatrixXd::Zero(draws, quantities));
  const bool complete = ForEachTask(stripes, interrupt, [&](Eigen::Index s) {
    for (Eigen::Index b = s * blocks / stripes; b < (s + 1) * blocks / stripes; ++b) {
      if (interrupt && interrupt->load()) return;
      const Eigen::Index first = b * kBlock;
      block(first, std::min(kBlock, observations - first), sums[static_cast<std::size_t>(s)]);
    }
  });
  out = Eigen::MatrixXd::Zero(draws, quantities);
  for (const Eigen::MatrixXd& s : sums) out += s;
  if (observations > 0) out /= static_cast<double>(observations);
  return complete && !(interrupt && interrupt->load());
}
