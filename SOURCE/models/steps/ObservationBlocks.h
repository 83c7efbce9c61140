// ObservationBlocks: the per-observation draws of a sweep (augmented data, Polya-Gamma weights)
// split into fixed blocks, each with an engine of its own, and spread over the idle cores.
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include <Eigen/Dense>

#include "RandomEngine.h"

// The blocks and their engines depend only on the number of observations and on the engine that
// seeds them, never on the threads, so a seed gives the same draws on any machine. The calling
// thread works on blocks too; helper threads, when there are any, wait between sweeps.
class ObservationBlocks {
public:
  // `seeds` gives each block's engine its seed; `threads` (at least 1) is how many threads may
  // work at once (one for fewer than 4,096 observations).
  ObservationBlocks(Eigen::Index observations, RandomEngine& seeds, int threads);
  ~ObservationBlocks();
  ObservationBlocks(const ObservationBlocks&) = delete;
  ObservationBlocks& operator=(const ObservationBlocks&) = delete;

  // What a sweep does to one block: work(block, first, end, rng) for block number `block`, the
  // observations [first, end).
  using Work = std::function<void(Eigen::Index, Eigen::Index, Eigen::Index, RandomEngine&)>;
  // Runs `work` on every block, returning once all are done.
  void Run(const Work& work);
  Eigen::Index Count() const { return static_cast<Eigen::Index>(m_engines.size()); }

  // The threads a chain's blocks may use when `chains` chains run at once on this machine.
  static int ThreadsPerChain(long chains);

private:
  void Help();
  void RunShare();

  std::vector<Eigen::Index> m_start;  // block b is [m_start[b], m_start[b + 1])
  std::vector<RandomEngine> m_engines;
  int m_shares = 1;  // the calling thread and the helpers
  std::vector<std::thread> m_helpers;
  std::mutex m_mutex;
  std::condition_variable m_wake;
  const Work* m_work = nullptr;
  std::atomic<std::size_t> m_next{0};  // the next block to hand out
  std::atomic<long> m_generation{0};  // counts the sweeps handed out
  std::atomic<int> m_pending{0};      // helpers still at work on this one
  bool m_stop = false;
};
