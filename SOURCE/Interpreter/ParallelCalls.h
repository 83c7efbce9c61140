// ParallelCalls: the calls of one user function on worker threads, each in a session of its own.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "TavixOrderStructure.h"
#include "TavixValue.h"

struct FunctionDefinition;
struct Session;

// What `mthread` hands over: the function, one list of argument values per call (in call order),
// how many calls may run at once, and the seed from which each call's engine is seeded.
struct ParallelCallsRequest {
  std::shared_ptr<const FunctionDefinition> function;
  std::vector<std::vector<TavixValue>> arguments;
  int threads = 1;
  std::uint64_t seed = 0;
};

// The outputs of every call, or the first call in call order that failed (from 0) and its error
// report (or message).
struct ParallelCallsOutcome {
  std::vector<TavixOrderStructure> outputs;
  int failedCall = -1;
  std::string failure;
  // A call that neither ended nor failed: an impossible state.
  bool incomplete = false;
};

// Runs the calls on up to `threads` threads. Call i runs in a fresh session of its own: a fresh
// workspace, its own parser and nodes, an engine seeded with RandomEngine::StreamSeed(seed, i),
// and its printing kept until calls 0 to i have ended, then shown through the caller's dispatcher
// in call order. When a call fails, the calls after it are stopped and those before it finish, so
// the outcome is the one a run of the calls one after another would give. A stop of the caller's
// session stops every call and throws TavixInterrupted; anything else a call throws besides a
// user error (running out of memory) is thrown again here.
ParallelCallsOutcome RunParallelCalls(Session& caller, const ParallelCallsRequest& request);

// The number of hardware threads (at least 1).
int HardwareThreads();
