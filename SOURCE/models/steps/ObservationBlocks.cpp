// ObservationBlocks: fixed blocks of observations with their own engines, run on up to a few threads.
#include "ObservationBlocks.h"

#include <algorithm>

namespace {

// Observations per block: large enough that handing a block to another thread pays.
constexpr Eigen::Index kBlockSize = 2048;

}  // namespace

ObservationBlocks::ObservationBlocks(Eigen::Index observations, RandomEngine& seeds, int threads) {
  for (Eigen::Index first = 0; first < observations; first += kBlockSize) m_start.push_back(first);
  m_start.push_back(observations);
  const auto blocks = static_cast<int>(m_start.size()) - 1;
  m_engines.resize(static_cast<std::size_t>(std::max(blocks, 0)));
  for (RandomEngine& engine : m_engines) engine.Seed(seeds.Engine()());
  m_shares = std::clamp(std::min(threads, blocks), 1, 64);
  for (int h = 1; h < m_shares; ++h) m_helpers.emplace_back([this, h] { Help(h); });
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

void ObservationBlocks::RunShare(int share) {
  for (std::size_t b = static_cast<std::size_t>(share); b + 1 < m_start.size(); b += static_cast<std::size_t>(m_shares)) {
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
    m_pending = static_cast<int>(m_helpers.size());
    ++m_generation;
  }
  m_wake.notify_all();
  RunShare(0);
  std::unique_lock<std::mutex> lock(m_mutex);
  m_done.wait(lock, [this] { return m_pending == 0; });
  m_work = nullptr;
}

void ObservationBlocks::Help(int helper) {
  long seen = 0;
  for (;;) {
    {
      std::unique_lock<std::mutex> lock(m_mutex);
      m_wake.wait(lock, [&] { return m_stop || m_generation != seen; });
      if (m_stop) return;
      seen = m_generation;
    }
    RunShare(helper);
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      --m_pending;
    }
    m_done.notify_one();
  }
}
