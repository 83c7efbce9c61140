// EventDispatcher: the one channel from the interpreter to whatever front end shows its output.
#pragma once

#include <memory>
#include <string>

#include "Colour.h"
#include "OutputSink.h"

// A cheap, copyable handle on a sink. Every print, error, progress report and window request of
// the interpreter goes through it; the sink decides how it is shown. A dispatcher without a sink
// drops everything (useful for reading code without running it).
class EventDispatcher {
public:
  EventDispatcher() = default;
  explicit EventDispatcher(std::shared_ptr<OutputSink> sink) : m_sink(std::move(sink)) {}

  // Plain text, bold when asked.
  void Print(const std::string& text, bool bold = false) const;
  // Text in a colour, bold when asked.
  void PrintColor(const std::string& text, const Colour& colour, bool bold = false) const;
  // Text on a coloured background.
  void PrintBG(const std::string& text, const Colour& background) const;
  // An error report, or a warning when `warning` is true.
  void PrintError(const std::string& text, bool warning = false) const;
  // "This is a Tavix internal error: (tag)" in the internal-error colour; the run goes on.
  void PrintInternalError(const std::string& tag) const;
  void PrintNewLine() const;
  void PrintLine() const;
  void ClearConsole() const;
  void UpdateGUI() const;
  void EnableRunButton() const;
  void DisableRunButton() const;
  // Progress gauge: ShowProgressBar, then SetProgress(0..100) and SetProgressMessage, then Hide.
  void ShowProgressBar() const;
  void SetProgress(int value) const;
  void SetProgressMessage(const std::string& message) const;
  void HideProgressBar() const;
  void Exit() const;

  const std::shared_ptr<OutputSink>& Sink() const { return m_sink; }

private:
  std::shared_ptr<OutputSink> m_sink;
};
