// ParallelCalls: worker threads taking calls in order, each call in a session of its own.
#include "ParallelCalls.h"

#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "AstFunctions.h"
#include "RecordingSink.h"
#include "Session.h"
#include "TavixError.h"

int HardwareThreads() { return std::max(1, static_cast<int>(std::thread::hardware_concurrency())); }

namespace {

// A call's code may nest as deeply as a job's, which runs with this stack in a window.
constexpr std::size_t kStackBytes = 64u << 20;
// How often the caller looks at its stop flag while calls run.
constexpr auto kStopPoll = std::chrono::milliseconds(2);

struct CallSlot {
  enum class State { Waiting, Running, Done, Failed };
  State state = State::Waiting;
  // The call's session while it runs, so that a stop reaches it.
  Session* session = nullptr;
  bool stopRequested = false;
  std::shared_ptr<RecordingSink> printed = std::make_shared<RecordingSink>();
  TavixOrderStructure outputs;
  std::string failure;
  std::exception_ptr exception;  // anything other than a user error or a stop
};

class CallRunner {
public:
  CallRunner(Session& caller, const ParallelCallsRequest& request)
      : m_caller(caller), m_request(request), m_functions(caller.functions),
        m_slots(request.arguments.size()), m_limit(request.arguments.size()) {
    m_functions[request.function->name] = request.function;
  }

  ParallelCallsOutcome Run();

private:
  static void* ThreadMain(void* runner);
  void Work();
  void RunCall(std::size_t i);
  // Stops the calls from `first` on: those running at their next interruption point, the others
  // before they start. Called with the lock held.
  void StopFrom(std::size_t first);
  // Shows what finished calls printed, in call order, up to the first call still running.
  void ShowPrinted(std::unique_lock<std::mutex>& lock);

  Session& m_caller;
  const ParallelCallsRequest& m_request;
  std::map<std::string, std::shared_ptr<const FunctionDefinition>> m_functions;

  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::vector<CallSlot> m_slots;
  std::size_t m_next = 0;   // the next call to start
  std::size_t m_limit;      // calls from here on are not started
  int m_working = 0;        // worker threads still taking calls
  std::size_t m_shown = 0;  // calls whose printing has been shown
  bool m_showingDone = false;
};

void* CallRunner::ThreadMain(void* runner) {
  static_cast<CallRunner*>(runner)->Work();
  return nullptr;
}

void CallRunner::Work() {
  for (;;) {
    std::size_t i = 0;
    {
      std::lock_guard lock(m_mutex);
      if (m_next >= m_limit) break;
      i = m_next++;
      m_slots[i].state = CallSlot::State::Running;
    }
    RunCall(i);
  }
  std::lock_guard lock(m_mutex);
  --m_working;
  m_changed.notify_all();
}

void CallRunner::RunCall(std::size_t i) {
  CallSlot& slot = m_slots[i];
  Session session;
  session.dispatcher = EventDispatcher(slot.printed);
  session.random.Seed(RandomEngine::StreamSeed(m_request.seed, i));
  session.installDir = m_caller.installDir;
  session.maxFigures = m_caller.maxFigures;
  session.nesting = m_caller.nesting;
  session.parallelCall = true;
  session.callerFunctions = &m_functions;
  {
    std::lock_guard lock(m_mutex);
    slot.session = &session;
    if (slot.stopRequested) session.interruptRequested = true;
  }
  TavixOrderStructure outputs;
  std::string failure;
  std::exception_ptr exception;
  bool stopped = false;
  try {
    const auto function = ReadFunctionAgain(session, *m_request.function);
    session.functions[function->name] = function;
    outputs = RunFunction(session, *function, m_request.arguments[i], failure);
  } catch (const TavixError& error) {
    failure = error.what();
  } catch (const TavixInterrupted&) {
    stopped = true;
  } catch (...) {
    exception = std::current_exception();
  }

  std::lock_guard lock(m_mutex);
  slot.session = nullptr;
  if (stopped) {
    // Stopped by the caller: another call failed or the user stopped the job.
    slot.state = CallSlot::State::Waiting;
  } else if (!failure.empty() || exception) {
    slot.state = CallSlot::State::Failed;
    slot.failure = std::move(failure);
    slot.exception = exception;
    StopFrom(i + 1);
  } else {
    slot.state = CallSlot::State::Done;
    slot.outputs = std::move(outputs);
  }
  m_changed.notify_all();
}

void CallRunner::StopFrom(std::size_t first) {
  m_limit = std::min(m_limit, first);
  for (std::size_t j = first; j < m_slots.size(); ++j) {
    m_slots[j].stopRequested = true;
    if (m_slots[j].session) m_slots[j].session->interruptRequested = true;
  }
}

void CallRunner::ShowPrinted(std::unique_lock<std::mutex>& lock) {
  const std::shared_ptr<OutputSink>& out = m_caller.dispatcher.Sink();
  while (!m_showingDone && m_shown < m_slots.size()) {
    const CallSlot& slot = m_slots[m_shown];
    if (slot.state != CallSlot::State::Done && slot.state != CallSlot::State::Failed) return;
    // A failed call shows what it printed before its error; nothing after it is shown.
    m_showingDone = slot.state == CallSlot::State::Failed;
    const auto printed = slot.printed;
    ++m_shown;
    lock.unlock();
    for (const RecordingSink::Entry& entry : printed->Entries()) {
      if (!out) break;
      switch (entry.kind) {
        case RecordingSink::Kind::Text: out->Text(entry.text, entry.style); break;
        case RecordingSink::Kind::Error: out->Error(entry.text, false); break;
        case RecordingSink::Kind::Warning: out->Error(entry.text, true); break;
        case RecordingSink::Kind::Action:
          // Console actions; the window's own (refresh, run button, exit) belong to the job.
          if (entry.action == ConsoleAction::NewLine || entry.action == ConsoleAction::Rule ||
              entry.action == ConsoleAction::Clear) {
            out->Action(entry.action);
          }
          break;
        case RecordingSink::Kind::Progress: break;  // a gauge per call would only flicker
      }
    }
    printed->Clear();
    lock.lock();
  }
}

ParallelCallsOutcome CallRunner::Run() {
  const std::size_t calls = m_slots.size();
  const int wanted = static_cast<int>(std::min<std::size_t>(static_cast<std::size_t>(m_request.threads), calls));
  std::vector<pthread_t> threads;
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kStackBytes);
  {
    std::lock_guard lock(m_mutex);
    for (int t = 0; t < wanted; ++t) {
      pthread_t thread;
      if (pthread_create(&thread, &attributes, &ThreadMain, this) != 0) break;
      threads.push_back(thread);
      ++m_working;
    }
  }
  pthread_attr_destroy(&attributes);
  if (threads.empty() && calls > 0) throw std::runtime_error("The threads of \"mthread\" could not be started.");

  bool interrupted = false;
  {
    std::unique_lock lock(m_mutex);
    for (;;) {
      ShowPrinted(lock);
      if (m_working == 0) break;
      if (!interrupted && m_caller.interruptRequested.load()) {
        interrupted = true;
        StopFrom(0);
      }
      m_changed.wait_for(lock, kStopPoll);
    }
  }
  for (pthread_t thread : threads) pthread_join(thread, nullptr);
  if (interrupted || m_caller.interruptRequested.load()) throw TavixInterrupted();

  ParallelCallsOutcome outcome;
  for (std::size_t i = 0; i < calls; ++i) {
    CallSlot& slot = m_slots[i];
    if (slot.state == CallSlot::State::Failed) {
      if (slot.exception) std::rethrow_exception(slot.exception);
      outcome.failedCall = static_cast<int>(i);
      outcome.failure = std::move(slot.failure);
      outcome.outputs.clear();
      return outcome;
    }
    if (slot.state != CallSlot::State::Done) outcome.incomplete = true;
    outcome.outputs.push_back(std::move(slot.outputs));
  }
  return outcome;
}

}  // namespace

ParallelCallsOutcome RunParallelCalls(Session& caller, const ParallelCallsRequest& request) {
  CallRunner runner(caller, request);
  return runner.Run();
}
