// GuiEvents: the event types of the bridge.
#include "GuiEvents.h"

wxDEFINE_EVENT(wxEVT_PRINT_STRING, ConsoleEvent);
wxDEFINE_EVENT(wxEVT_PRINT_STRING_BG, ConsoleEvent);
wxDEFINE_EVENT(wxEVT_PRINT_STRING_COLOR, ConsoleEvent);
wxDEFINE_EVENT(wxEVT_PRINT_ERROR, ConsoleEvent);
wxDEFINE_EVENT(wxEVT_PRINT_LINE, ConsoleEvent);
wxDEFINE_EVENT(wxEVT_PRINT_NEW_LINE, ConsoleEvent);
wxDEFINE_EVENT(wxEVT_CLEAR_CONSOLE, ConsoleEvent);
wxDEFINE_EVENT(wxEVT_UPDATE_GUI, ConsoleEvent);
wxDEFINE_EVENT(wxEVT_PROGRESS_BAR, ConsoleEvent);
wxDEFINE_EVENT(wxEVT_ENABLE_RUN, ConsoleEvent);
wxDEFINE_EVENT(wxEVT_DISABLE_RUN, ConsoleEvent);
wxDEFINE_EVENT(wxEVT_EXIT_TAVIX, ConsoleEvent);
wxDEFINE_EVENT(wxEVT_PRINT_AND_RUN, wxCommandEvent);
wxDEFINE_EVENT(wxEVT_RUN_CODE, wxCommandEvent);
wxDEFINE_EVENT(wxEVT_STOP_EXECUTION, wxCommandEvent);
wxDEFINE_EVENT(wxEVT_UPDATE_DATA, wxCommandEvent);

void PostPrintAndRun(wxEvtHandler* target, const std::string& code) {
  auto* event = new wxCommandEvent(wxEVT_PRINT_AND_RUN);
  event->SetString(wxString::FromUTF8(code));
  wxQueueEvent(target, event);
}
