// EventDispatcher: forwards the interpreter's output to the sink, if there is one.
#include "EventDispatcher.h"

void EventDispatcher::Print(const std::string& text, bool bold) const {
  if (m_sink) m_sink->Text(text, TextStyle{bold, std::nullopt, std::nullopt});
}

void EventDispatcher::PrintColor(const std::string& text, const Colour& colour, bool bold) const {
  if (m_sink) m_sink->Text(text, TextStyle{bold, colour, std::nullopt});
}

void EventDispatcher::PrintBG(const std::string& text, const Colour& background) const {
  if (m_sink) m_sink->Text(text, TextStyle{false, std::nullopt, background});
}

void EventDispatcher::PrintError(const std::string& text, bool warning) const {
  if (m_sink) m_sink->Error(text, warning);
}

void EventDispatcher::PrintInternalError(const std::string& tag) const {
  PrintColor("This is a Tavix internal error: (" + tag + ")", colours::InternalError);
}

void EventDispatcher::PrintNewLine() const {
  if (m_sink) m_sink->Action(ConsoleAction::NewLine);
}

void EventDispatcher::PrintLine() const {
  if (m_sink) m_sink->Action(ConsoleAction::Rule);
}

void EventDispatcher::ClearConsole() const {
  if (m_sink) m_sink->Action(ConsoleAction::Clear);
}

void EventDispatcher::UpdateGUI() const {
  if (m_sink) m_sink->Action(ConsoleAction::UpdateGUI);
}

void EventDispatcher::EnableRunButton() const {
  if (m_sink) m_sink->Action(ConsoleAction::EnableRun);
}

void EventDispatcher::DisableRunButton() const {
  if (m_sink) m_sink->Action(ConsoleAction::DisableRun);
}

void EventDispatcher::ShowProgressBar() const {
  if (m_sink) m_sink->Progress(ProgressUpdate{0, 0, {}});
}

void EventDispatcher::SetProgress(int value) const {
  if (m_sink) m_sink->Progress(ProgressUpdate{1, value, {}});
}

void EventDispatcher::SetProgressMessage(const std::string& message) const {
  if (m_sink) m_sink->Progress(ProgressUpdate{2, 0, message});
}

void EventDispatcher::HideProgressBar() const {
  if (m_sink) m_sink->Progress(ProgressUpdate{3, 0, {}});
}

void EventDispatcher::Exit() const {
  if (m_sink) m_sink->Action(ConsoleAction::Exit);
}
