// Session: what outlives every parser: the workspace, the random engine, the output channel.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <ctime>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "EventDispatcher.h"
#include "FigureRegistry.h"
#include "RandomEngine.h"
#include "Workspace.h"

struct FunctionDefinition;

// Something a running job asks of a window front end and waits for: the Continue dialog of
// `pause`, or an external program whose output goes to the console while it runs.
struct FrontEndRequest {
  enum class Kind { Pause, RunExternal, ShowFigure, CloseFigure } kind = Kind::Pause;
  std::string command;  // the command line of an external program; the title of a figure to close
  std::shared_ptr<const Figure> figure;  // the figure to show (a new window, or new content)
};

// Writes a figure to a file in a format ("png", "jpeg", "svg", "eps", "pdf") with a size in pixels
// or points and optional resolutions (0: the default); returns "" or the reason it failed.
using FigureExporter = std::function<std::string(const Figure& figure, const std::string& path,
                                                 const std::string& format, int width, int height,
                                                 int dpiX, int dpiY)>;

// Owned by a front end for the life of the program; every job and every parser borrows it.
// Only the job that runs touches it; the front end reads it when no job runs.
struct Session {
  Workspace workspace;
  RandomEngine random;  // one engine for the whole session, seeded with 42
  EventDispatcher dispatcher;
  std::string installDir;
  int maxFigures = 20;
  // The figures of the session; a window front end shows each in a window.
  FigureRegistry figures;
  // Set by every front end that can draw figures; empty when this build cannot.
  FigureExporter exportFigure;
  bool plotError = false;
  std::string plotErrorMessage;
  // Set by the front end to stop the running job at its next interruption point.
  std::atomic<bool> interruptRequested{false};
  // The latest timer that tic (wall clock) or ctic (processor time) started.
  enum class Timer { None, Wall, Processor } timer = Timer::None;
  std::chrono::steady_clock::time_point wallStart;
  std::clock_t processorStart = 0;
  // How deeply scripts run inside scripts (eval, run, user functions), to stop runaway recursion.
  int nesting = 0;
  static constexpr int kMaxNesting = 100;
  // A window front end sets this to receive requests (on its own thread, by queueing them); a
  // batch run leaves it empty. The job waits on `externalCondition` while `externalBusy` is set;
  // the front end clears it (under `externalMutex`) and notifies when the request is done,
  // setting `plotError` and `plotErrorMessage` when it refused.
  std::function<void(const FrontEndRequest&)> postToFrontEnd;
  std::mutex externalMutex;
  std::condition_variable externalCondition;
  bool externalBusy = false;
  // User functions defined in the session, by name.
  std::map<std::string, std::shared_ptr<const FunctionDefinition>> functions;

  // Set in the session of one call of `mthread`, which runs on a worker thread: figures,
  // waiting for the user, nested `mthread` and changes to what the whole program shares are
  // refused there.
  bool parallelCall = false;
  // In such a session: the caller's functions. Their nodes belong to the caller's thread, so a
  // call reads a function's text again into its own nodes the first time it uses it.
  const std::map<std::string, std::shared_ptr<const FunctionDefinition>>* callerFunctions = nullptr;
};
