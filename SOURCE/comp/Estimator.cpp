// Estimator: parallel chains, burn-in and thinning, progress and interruption.
#include "Estimator.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>

#include <unistd.h>

#include "EventDispatcher.h"

GibbsSettings GibbsSettings::FromVector(const Eigen::VectorXd& values) {
  GibbsSettings s;
  if (values.size() >= 5) {
    s.draws = static_cast<long>(values(0));
    s.burnin = static_cast<long>(values(1));
    s.chains = static_cast<long>(values(2));
    s.thin = static_cast<long>(values(3));
    s.seed = static_cast<std::uint64_t>(values(4));
  }
  return s;
}

Eigen::VectorXd GibbsSettings::ToVector() const {
  Eigen::VectorXd v(5);
  v << static_cast<double>(draws), static_cast<double>(burnin), static_cast<double>(chains),
      static_cast<double>(thin), static_cast<double>(seed);
  return v;
}

double AvailableMemoryBytes() {
  std::ifstream meminfo("/proc/meminfo");
  std::string key;
  double kilobytes = 0.0;
  std::string unit;
  while (meminfo >> key >> kilobytes >> unit) {
    if (key == "MemAvailable:") return kilobytes * 1024.0;
  }
  const long pages = sysconf(_SC_AVPHYS_PAGES);
  const long size = sysconf(_SC_PAGESIZE);
  return pages > 0 && size > 0 ? static_cast<double>(pages) * static_cast<double>(size) : 0.0;
}

namespace {

// The draws are held by the estimator, pooled once for the marginal likelihoods and once more by
// the model, and transformed once for the summaries: about four copies at the peak.
constexpr double kCopiesOfDraws = 4.0;

std::string Gigabytes(double bytes) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.1f GB", bytes / 1e9);
  return buffer;
}

void CheckMemory(const GibbsSettings& settings, int parameters) {
  const double needed = kCopiesOfDraws * static_cast<double>(settings.KeptDraws()) *
                        static_cast<double>(settings.chains) * static_cast<double>(parameters) *
                        static_cast<double>(sizeof(double));
  const double available = AvailableMemoryBytes();
  if (available > 0.0 && needed > available) {
    throw EstimationRefused("The draws of this model would need about " + Gigabytes(needed) +
                            " of memory, but only " + Gigabytes(available) +
                            " are available: lower \"draws\" or \"chains\", or raise \"thin\".");
  }
}

}  // namespace

std::uint64_t Estimator::ChainSeed(std::uint64_t seed, int chain) {
  return RandomEngine::StreamSeed(seed, static_cast<std::uint64_t>(chain));
}

bool Estimator::RunChains(const std::function<std::unique_ptr<GibbsChain>(int)>& makeChain,
                          int parameters, const EventDispatcher& out,
                          const std::atomic<bool>* userInterrupt) {
  const int chains = static_cast<int>(m_settings.chains);
  const long kept = m_settings.KeptDraws();
  const long sweeps = m_settings.burnin + kept * m_settings.thin;
  CheckMemory(m_settings, parameters);
  m_stop = false;
  m_draws.assign(chains, Eigen::MatrixXd(kept, parameters));
  m_chains.clear();
  for (int c = 0; c < chains; ++c) m_chains.push_back(makeChain(c));

  std::vector<std::atomic<long>> done(chains);
  for (auto& d : done) d = 0;
  std::atomic<int> nextChain{0};
  std::atomic<int> running{0};

  auto work = [&] {
    for (int c = nextChain++; c < chains; c = nextChain++) {
      RandomEngine rng;
      rng.Seed(ChainSeed(m_settings.seed, c));
      GibbsChain& chain = *m_chains[c];
      Eigen::MatrixXd& draws = m_draws[c];
      long row = 0;
      for (long s = 0; s < sweeps; ++s) {
        if (m_stop.load(std::memory_order_relaxed)) return;
        chain.Sweep(rng);
        if (s + 1 == m_settings.burnin) chain.EndBurnin();
        if (s >= m_settings.burnin && (s - m_settings.burnin + 1) % m_settings.thin == 0) {
          chain.Record(draws.row(row++));
        }
        if ((s & 63) == 0) done[c].store(s, std::memory_order_relaxed);
      }
      if (m_settings.burnin == 0) chain.EndBurnin();
      done[c] = sweeps;
    }
  };

  const unsigned hardware = std::max(1u, std::thread::hardware_concurrency());
  const int threads = std::min<int>(chains, static_cast<int>(hardware));
  std::vector<std::thread> pool;
  running = threads;
  for (int t = 0; t < threads; ++t) {
    pool.emplace_back([&] {
      work();
      --running;
    });
  }

  // The calling thread reports progress and watches for the user's interrupt.
  out.ShowProgressBar();
  int shown = -1;
  while (running > 0) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    if (userInterrupt && userInterrupt->load()) m_stop = true;
    long total = 0;
    for (const auto& d : done) total += d.load(std::memory_order_relaxed);
    const double all = static_cast<double>(sweeps) * chains;
    const int percent = all > 0 ? static_cast<int>(100.0 * static_cast<double>(total) / all) : 100;
    if (percent != shown) {
      shown = percent;
      out.SetProgress(percent);
    }
  }
  for (auto& t : pool) t.join();
  out.HideProgressBar();
  return !m_stop;
}

Eigen::MatrixXd Estimator::PoolDraws(Eigen::Index shown) {
  Eigen::Index rows = 0;
  for (const Eigen::MatrixXd& chain : m_draws) rows += chain.rows();
  Eigen::MatrixXd pooled(rows, m_draws.empty() ? 0 : m_draws.front().cols());
  Eigen::Index at = 0;
  for (Eigen::MatrixXd& chain : m_draws) {
    pooled.middleRows(at, chain.rows()) = chain;
    at += chain.rows();
    chain.conservativeResize(Eigen::NoChange, shown);
  }
  return pooled;
}
