// GuiSink: the dispatcher's output as events queued to the main window.
#pragma once

#include <wx/event.h>

#include "OutputSink.h"

// Safe to call from the interpreter's thread: every call queues one event to `target`, which
// handles them in order on the GUI thread.
class GuiSink : public OutputSink {
public:
  explicit GuiSink(wxEvtHandler* target) : m_target(target) {}
  void Text(const std::string& text, const TextStyle& style) override;
  void Error(const std::string& text, bool warning) override;
  void Action(ConsoleAction action) override;
  void Progress(const ProgressUpdate& update) override;

private:
  wxEvtHandler* m_target;
};
