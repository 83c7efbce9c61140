// GuiSink: one queued event per call of the dispatcher.
#include "GuiSink.h"

#include "GuiEvents.h"

void GuiSink::Text(const std::string& text, const TextStyle& style) {
  const wxEventType type = style.background ? wxEVT_PRINT_STRING_BG
                           : style.colour   ? wxEVT_PRINT_STRING_COLOR
                                            : wxEVT_PRINT_STRING;
  auto* event = new ConsoleEvent(type, kDispatcherId);
  event->text = text;
  event->bold = style.bold;
  event->colour = style.colour;
  event->background = style.background;
  wxQueueEvent(m_target, event);
}

void GuiSink::Error(const std::string& text, bool warning) {
  auto* event = new ConsoleEvent(wxEVT_PRINT_ERROR, kDispatcherId);
  event->text = text;
  event->warning = warning;
  wxQueueEvent(m_target, event);
}

void GuiSink::Action(ConsoleAction action) {
  wxEventType type = wxEVT_NULL;
  switch (action) {
    case ConsoleAction::NewLine: type = wxEVT_PRINT_NEW_LINE; break;
    case ConsoleAction::Rule: type = wxEVT_PRINT_LINE; break;
    case ConsoleAction::Clear: type = wxEVT_CLEAR_CONSOLE; break;
    case ConsoleAction::UpdateGUI: type = wxEVT_UPDATE_GUI; break;
    case ConsoleAction::EnableRun: type = wxEVT_ENABLE_RUN; break;
    case ConsoleAction::DisableRun: type = wxEVT_DISABLE_RUN; break;
    case ConsoleAction::Exit: type = wxEVT_EXIT_TAVIX; break;
  }
  wxQueueEvent(m_target, new ConsoleEvent(type, kDispatcherId));
}

void GuiSink::Progress(const ProgressUpdate& update) {
  auto* event = new ConsoleEvent(wxEVT_PROGRESS_BAR, kDispatcherId);
  event->progressAction = update.action;
  event->progressValue = update.value;
  event->text = update.message;
  wxQueueEvent(m_target, event);
}
