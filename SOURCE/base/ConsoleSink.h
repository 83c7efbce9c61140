// ConsoleSink: shows the interpreter's output on a terminal or a pipe (the batch front end).
#pragma once

#include <iosfwd>
#include <mutex>

#include "OutputSink.h"

// Writes text, errors and warnings to one stream (standard output by default) in the order they
// come. Colours and bold are drawn with terminal escape codes only when the stream is a terminal,
// so piped output is exactly the program's text. Progress goes to standard error when that is a
// terminal, and nowhere otherwise.
class ConsoleSink : public OutputSink {
public:
  ConsoleSink();  // standard output, colours when it is a terminal
  ConsoleSink(std::ostream& out, bool useColour);

  void Text(const std::string& text, const TextStyle& style) override;
  void Error(const std::string& text, bool warning) override;
  void Action(ConsoleAction action) override;
  void Progress(const ProgressUpdate& update) override;

  // Whether the Exit action has been received.
  bool ExitRequested() const { return m_exitRequested; }

private:
  void Write(const std::string& text, const char* escape);

  std::ostream& m_out;
  bool m_useColour;
  bool m_progressOnTerminal;
  bool m_exitRequested = false;
  std::mutex m_mutex;
};
