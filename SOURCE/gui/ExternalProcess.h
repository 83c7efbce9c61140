// ExternalProcess: a program started for a job, its output copied to the console as it comes.
#pragma once

#include <functional>
#include <string>

#include <wx/process.h>
#include <wx/timer.h>

// Started asynchronously as the leader of its own process group (so the whole group can be
// ended), with standard output and error read every 100 ms. `output` receives each piece of
// text; `finished` runs once, after the last output, when the program has ended.
class TavixASYNCProcess : public wxProcess {
public:
  TavixASYNCProcess(std::function<void(const std::string&)> output, std::function<void(int status)> finished);
  // Starts `command` with /bin/sh; returns the pid, or 0 when it could not be started (then
  // `finished` has run with status -1).
  long Start(const std::string& command);
  // Ends the process group: SIGTERM, then SIGKILL if it survives.
  static void Terminate(long pid);

private:
  void OnTerminate(int pid, int status) override;
  void ReadAvailable();
  std::function<void(const std::string&)> m_output;
  std::function<void(int)> m_finished;
  wxTimer m_timer;
  bool m_starting = false;  // inside wxExecute
  bool m_ended = false;     // ended while starting
};
