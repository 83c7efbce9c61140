// Estimator: runs the chains of a Gibbs sampler in parallel threads, with burn-in, thinning,
// progress reports and interruption.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <Eigen/Dense>

#include "RandomEngine.h"

class EventDispatcher;

// The five sampler settings in their fixed order: draws, burn-in, chains, thinning, seed.
struct GibbsSettings {
  long draws = 20000;
  long burnin = 10000;
  long chains = 1;
  long thin = 1;
  std::uint64_t seed = 42;

  // From the vector of five numbers a model statement reads (already checked).
  static GibbsSettings FromVector(const Eigen::VectorXd& values);
  Eigen::VectorXd ToVector() const;
  // Draws kept per chain: one in every `thin` of `draws`.
  long KeptDraws() const { return draws / thin; }
};

// An estimation that cannot be carried out (its draws would not fit in memory, ...): the model
// statement reports the message.
class EstimationRefused : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

// Bytes of memory the system can still give without swapping (0 when it cannot be told).
double AvailableMemoryBytes();

// A row of a chain's draws matrix (column-major, so its elements are strided).
using DrawRow = Eigen::Ref<Eigen::RowVectorXd, 0, Eigen::InnerStride<>>;

// One chain of a sampler: its own state, advanced one sweep at a time.
class GibbsChain {
public:
  virtual ~GibbsChain() = default;
  // One full sweep of the sampler's conditionals, with the chain's own engine.
  virtual void Sweep(RandomEngine& rng) = 0;
  // Writes the current values of the recorded parameters.
  virtual void Record(DrawRow row) const = 0;
  // Called once when burn-in ends (samplers that tune their proposals stop tuning here).
  virtual void EndBurnin() {}
};

// Runs chains. Chain c draws from its own engine seeded from the settings' seed and c, so the
// same seed gives the same draws whatever the number of threads.
class Estimator {
public:
  explicit Estimator(const Eigen::VectorXd& gibbs) : m_settings(GibbsSettings::FromVector(gibbs)) {}
  virtual ~Estimator() = default;

  const GibbsSettings& Settings() const { return m_settings; }

  // Samples every chain: `makeChain(c)` builds chain c's state; each keeps its recorded
  // parameters in one preallocated matrix (rows: kept draws). Progress goes to `out` from the
  // calling thread; `userInterrupt`, when given, is watched and stops the threads. Returns false
  // when interrupted (the draws are then incomplete). Raises EstimationRefused, before
  // allocating anything, when the draws and the copies made of them would not fit in memory.
  bool RunChains(const std::function<std::unique_ptr<GibbsChain>(int)>& makeChain, int parameters,
                 const EventDispatcher& out, const std::atomic<bool>* userInterrupt);

  // Asks the sampler threads to stop at their next sweep.
  void InterruptThreads() { m_stop = true; }
  bool Interrupted() const { return m_stop; }

  // The kept draws of each chain, and the chains' final states (for samplers that need them).
  std::vector<Eigen::MatrixXd>& Draws() { return m_draws; }
  const std::vector<Eigen::MatrixXd>& Draws() const { return m_draws; }
  std::vector<std::unique_ptr<GibbsChain>>& Chains() { return m_chains; }

  // Every chain's draws, all their columns, one chain after the other; afterwards each chain keeps
  // only its first `shown` columns (samplers record working columns, such as conditional means
  // for Chib's method, that the model does not show).
  Eigen::MatrixXd PoolDraws(Eigen::Index shown);

  // The engine seed of chain c.
  static std::uint64_t ChainSeed(std::uint64_t seed, int chain);

private:
  GibbsSettings m_settings;
  std::atomic<bool> m_stop{false};
  std::vector<Eigen::MatrixXd> m_draws;
  std::vector<std::unique_ptr<GibbsChain>> m_chains;
};
