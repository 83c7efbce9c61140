// ParserThread: the one worker of the main window; runs one job at a time on its own thread.
#pragma once

#include <pthread.h>

#include <atomic>
#include <string>

#include "Session.h"

// Runs jobs on a thread of their own (a large stack, as deeply nested scripts need), so the
// window stays responsive. Only the job touches the session while it runs; the window reads
// the workspace after the job has posted its last event.
class ParserThread {
public:
  ParserThread() = default;
  ParserThread(const ParserThread&) = delete;
  ParserThread& operator=(const ParserThread&) = delete;
  // Stops a running job and waits for it.
  ~ParserThread();

  // Starts `code` as a job on `session` under `inputName`, its first line numbered from
  // `firstLine`; `*running` must already be set and is cleared by the job when it ends. A
  // previous thread that has ended is released first.
  void RunThread(std::atomic<bool>* running, Session* session, std::string code, std::string inputName,
                 long firstLine);
  // Asks the job to stop at its next interruption point (waking it if it waits for the window),
  // waits for it to end and clears the running flag. Nothing happens without a job.
  void InterruptThread();
  // Waits for the current job, if any, to end by itself.
  void Join();

private:
  struct Job {
    std::atomic<bool>* running;
    Session* session;
    std::string code;
    std::string inputName;
    long firstLine;
  };
  static void* ThreadMainFunction(void* job);

  pthread_t m_thread{};
  bool m_started = false;
  std::atomic<bool>* m_running = nullptr;
  Session* m_session = nullptr;
};
