// GuiEvents: the events the interpreter's thread posts to the main window, and the command ids
// shared by the window's parts.
#pragma once

#include <optional>
#include <string>

#include <wx/event.h>

#include "Colour.h"

// What every bridge event carries: console text with its style, an error's warning flag, or a
// progress update; each event type reads the fields it needs.
class ConsoleEvent : public wxCommandEvent {
public:
  ConsoleEvent(wxEventType type = wxEVT_NULL, int id = 0) : wxCommandEvent(type, id) {}
  wxEvent* Clone() const override { return new ConsoleEvent(*this); }

  std::string text;
  bool bold = false;
  bool warning = false;
  std::optional<Colour> colour;
  std::optional<Colour> background;
  int progressAction = 0;
  int progressValue = 0;
};

// The id of events posted by the dispatcher, and of the frame's own run, stop and update events.
inline constexpr int kDispatcherId = 6018;
inline constexpr int kFrameEventId = 6000;

wxDECLARE_EVENT(wxEVT_PRINT_STRING, ConsoleEvent);
wxDECLARE_EVENT(wxEVT_PRINT_STRING_BG, ConsoleEvent);
wxDECLARE_EVENT(wxEVT_PRINT_STRING_COLOR, ConsoleEvent);
wxDECLARE_EVENT(wxEVT_PRINT_ERROR, ConsoleEvent);
wxDECLARE_EVENT(wxEVT_PRINT_LINE, ConsoleEvent);
wxDECLARE_EVENT(wxEVT_PRINT_NEW_LINE, ConsoleEvent);
wxDECLARE_EVENT(wxEVT_CLEAR_CONSOLE, ConsoleEvent);
wxDECLARE_EVENT(wxEVT_UPDATE_GUI, ConsoleEvent);
wxDECLARE_EVENT(wxEVT_PROGRESS_BAR, ConsoleEvent);
wxDECLARE_EVENT(wxEVT_ENABLE_RUN, ConsoleEvent);
wxDECLARE_EVENT(wxEVT_DISABLE_RUN, ConsoleEvent);
wxDECLARE_EVENT(wxEVT_EXIT_TAVIX, ConsoleEvent);
// Code to echo on the console and run as though typed (the event's string); panes and dialogs
// post it.
wxDECLARE_EVENT(wxEVT_PRINT_AND_RUN, wxCommandEvent);
// The frame's own events: run the code buffer, stop the job, show the working directory.
wxDECLARE_EVENT(wxEVT_RUN_CODE, wxCommandEvent);
wxDECLARE_EVENT(wxEVT_STOP_EXECUTION, wxCommandEvent);
wxDECLARE_EVENT(wxEVT_UPDATE_DATA, wxCommandEvent);

// Posts `code` to `target` as a wxEVT_PRINT_AND_RUN event (safe from any thread).
void PostPrintAndRun(wxEvtHandler* target, const std::string& code);
