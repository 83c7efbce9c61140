// ObservationBlocks: fixed blocks of observations with their own engines, run on up to a few threads.
#include "ObservationBlocks.h"

#include <algorithm>

namespace {

// Observations per block: large enough that handing a block to another thread pays.
constexpr Eigen::Index kBlockSize = 1024;
// Below this many observations a sweep's draws take less than the threads' hand-over: one thread.
constexpr Eigen::Index kThreadsFrom = 4096;
// How often a helper looks for the next sweep before it sleeps (a few tens of microseconds).
constexpr int kSpins = 2000;

}  // namespace

ObservationBlocks::ObservationBlocks(Eigen::Index observations, RandomEngine& seeds, int threads) {
  for (Eigen::Index first = 0; first < observations; first += kBlockSize) m_start.push_back(first);
  m_start.push_back(observations);
  const auto blocks = static_cast<int>(m_start.size()) - 1;
  m_engines.resize(static_cast<std::size_t>(std::max(blocks, 0)));
  for (RandomEngine& engine : m_engines) engine.Seed(seeds.Engine()());
  m_shares = observations < kThreadsFrom ? 1 : std::clamp(std::min(threads, blocks), 1, 64);
  for (int h = 1; h < m_shares; ++h) m_helpers.emplace_back([this] { Help(); });
}

ObservationBlocks::~ObservationBlocks() {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_stop = true;
  }
  m_wake.notify_all();
  for (std::thread& helper : m_helpers) helper.join();
}

int ObservationBlocks::ThreadsPerChain(long chains) {
  const long cores = std::max(1u, std::thread::hardware_concurrency());
  return static_cast<int>(std::max(1L, cores / std::max(1L, chains)));
}

void ObservationBlocks::RunShare() {
  // Blocks go to whichever thread is free: which thread draws a block changes nothing in it.
  for (std::size_t b = m_next.fetch_add(1); b + 1 < m_start.size(); b = m_next.fetch_add(1)) {
    (*m_work)(static_cast<Eigen::Index>(b), m_start[b], m_start[b + 1], m_engines[b]);
  }
}

void ObservationBlocks::Run(const Work& work) {
  if (m_helpers.empty()) {
    for (std::size_t b = 0; b + 1 < m_start.size(); ++b) {
      work(static_cast<Eigen::Index>(b), m_start[b], m_start[b + 1], m_engines[b]);
    }
    return;
  }
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_work = &work;
    m_next = 0;
    m_pending = static_cast<int>(m_helpers.size());
    m_generation.fetch_add(1, std::memory_order_release);
  }
  m_wake.notify_all();
  RunShare();
  // The helpers are at work on the last blocks: wait for them without sleeping.
  while (m_pending.load(std::memory_order_acquire) > 0) std::this_thread::yield();
  m_work = nullptr;
}

void ObservationBlocks::Help() {
  long seen = 0;
  for (;;) {
    // Sweeps follow each other within microseconds: look for the next one for a while before
    // sleeping, since a wake-up through the condition variable costs more than a block.
    bool ready = false;
    for (int spin = 0; spin < kSpins && !ready; ++spin) {
      ready = m_generation.load(std::memory_order_acquire) != seen;
      if (!ready) std::this_thread::yield();
    }
    if (!ready) {
      std::unique_lock<std::mutex> lock(m_mutex);
      m_wake.wait(lock, [&] { return m_stop || m_generation.load(std::memory_order_acquire) != seen; });
      if (m_stop) return;
    }
    seen = m_generation.load(std::memory_order_acquire);
    RunShare();
    m_pending.fetch_sub(1, std::memory_order_release);
  }
}
