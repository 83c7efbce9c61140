// ParserThread: starting, running and stopping jobs.
#include "ParserThread.h"

#include <memory>
#include <stdexcept>

#include "Interpreter.h"

namespace {
// Deeply nested user functions and scripts need more than a default thread stack.
constexpr std::size_t kStackBytes = 64u << 20;
}  // namespace

ParserThread::~ParserThread() { InterruptThread(); }

void* ParserThread::ThreadMainFunction(void* argument) {
  std::unique_ptr<Job> job(static_cast<Job*>(argument));
  RunJob(*job->session, std::move(job->code), job->inputName, job->firstLine,
         [&] { job->running->store(false); });
  job->running->store(false);
  return nullptr;
}

void ParserThread::RunThread(std::atomic<bool>* running, Session* session, std::string code,
                             std::string inputName, long firstLine) {
  Join();
  m_running = running;
  m_session = session;
  auto* job = new Job{running, session, std::move(code), std::move(inputName), firstLine};
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kStackBytes);
  const int failed = pthread_create(&m_thread, &attributes, &ThreadMainFunction, job);
  pthread_attr_destroy(&attributes);
  if (failed) {
    delete job;
    running->store(false);
    throw std::runtime_error("The interpreter's thread could not be started.");
  }
  m_started = true;
}

void ParserThread::Join() {
  if (!m_started) return;
  if (pthread_equal(pthread_self(), m_thread)) throw std::runtime_error("thread: trying joining itself");
  pthread_join(m_thread, nullptr);
  m_started = false;
}

void ParserThread::InterruptThread() {
  if (!m_started || !m_session) return;
  m_session->interruptRequested = true;
  {
    // Wake a job that waits for the window.
    std::lock_guard lock(m_session->externalMutex);
  }
  m_session->externalCondition.notify_all();
  Join();
  if (m_running) m_running->store(false);
}
