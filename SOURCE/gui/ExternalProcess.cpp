// ExternalProcess: asynchronous start, output polling, ending a process group.
#include "ExternalProcess.h"

#include <chrono>
#include <thread>

#include <wx/stream.h>
#include <wx/utils.h>

namespace {

std::string Drain(wxInputStream* stream) {
  std::string text;
  if (!stream) return text;
  char buffer[4096];
  while (stream->CanRead()) {
    stream->Read(buffer, sizeof buffer);
    const size_t n = stream->LastRead();
    if (n == 0) break;
    text.append(buffer, n);
  }
  return text;
}

}  // namespace

TavixASYNCProcess::TavixASYNCProcess(std::function<void(const std::string&)> output,
                                     std::function<void(int)> finished)
    : wxProcess(wxPROCESS_REDIRECT), m_output(std::move(output)), m_finished(std::move(finished)) {
  m_timer.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { ReadAvailable(); });
}

long TavixASYNCProcess::Start(const std::string& command) {
  wxString quoted = wxString::FromUTF8(command);
  const char* argv[] = {"/bin/sh", "-c", nullptr, nullptr};
  const wxScopedCharBuffer utf8 = quoted.utf8_str();
  argv[2] = utf8.data();
  // A new process group, and the window stays usable while the program runs. A program that ends
  // at once may be reported ended before wxExecute returns: OnTerminate then leaves the object to
  // be deleted here.
  m_starting = true;
  const long pid = wxExecute(const_cast<char**>(argv), wxEXEC_ASYNC | wxEXEC_MAKE_GROUP_LEADER, this);
  m_starting = false;
  if (pid <= 0) {
    m_finished(-1);
    delete this;
    return 0;
  }
  if (m_ended) {
    delete this;
    return pid;
  }
  m_timer.Start(100);
  return pid;
}

void TavixASYNCProcess::ReadAvailable() {
  const std::string text = Drain(GetInputStream()) + Drain(GetErrorStream());
  if (!text.empty()) m_output(text);
}

void TavixASYNCProcess::OnTerminate(int, int status) {
  m_timer.Stop();
  ReadAvailable();
  m_finished(status);
  if (m_starting) {
    m_ended = true;
    return;
  }
  delete this;
}

void TavixASYNCProcess::Terminate(long pid) {
  if (!wxProcess::Exists(static_cast<int>(pid))) return;
  if (wxProcess::Kill(static_cast<int>(pid), wxSIGTERM, wxKILL_CHILDREN) != wxKILL_OK) {
    if (wxProcess::Exists(static_cast<int>(pid))) wxProcess::Kill(static_cast<int>(pid), wxSIGKILL, wxKILL_CHILDREN);
    return;
  }
  // A program that ignores SIGTERM gets SIGKILL after a short grace period.
  for (int i = 0; i < 20 && wxProcess::Exists(static_cast<int>(pid)); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(25));
  }
  if (wxProcess::Exists(static_cast<int>(pid))) wxProcess::Kill(static_cast<int>(pid), wxSIGKILL, wxKILL_CHILDREN);
}
