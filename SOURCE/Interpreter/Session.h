// Session: what outlives every parser: the workspace, the random engine, the output channel.
#pragma once

#include <atomic>
#include <string>

#include "EventDispatcher.h"
#include "RandomEngine.h"
#include "Workspace.h"

// Owned by a front end for the life of the program; every job and every parser borrows it.
// Only the job that runs touches it; the front end reads it when no job runs.
struct Session {
  Workspace workspace;
  RandomEngine random;  // one engine for the whole session, seeded with 42
  EventDispatcher dispatcher;
  std::string installDir;
  int maxFigures = 20;
  bool plotError = false;
  std::string plotErrorMessage;
  // Set by the front end to stop the running job at its next interruption point.
  std::atomic<bool> interruptRequested{false};
};
