// TavixFrame: construction, the submission of jobs and the bridge's handlers.
#include "TavixFrame.h"

#include <filesystem>

#include <wx/msgdlg.h>
#include <wx/toolbar.h>
#include <wx/utils.h>

#include "DataViewer.h"
#include "EventDispatcher.h"
#include "ExternalProcess.h"
#include "FigureExport.h"
#include "FigureWindow.h"
#include "GuiSink.h"
#include "KeywordTable.h"
#include "MatrixViewer.h"
#include "ScriptEditor.h"
#include "SystemGlobals.h"
#include "TavixConsole.h"
#include "TavixStatusBar.h"
#include "WorkspacePanes.h"

namespace {

wxDEFINE_EVENT(wxEVT_FRONT_END_REQUEST, wxThreadEvent);

constexpr const char* kBusyWarning =
    "Tavix is already running a job.\n\nPlease wait for the current job to finish\nbefore "
    "requesting a new one or\ninterrupt the current job.";

wxString CurrentDirectory() {
  std::error_code error;
  return wxString::FromUTF8(std::filesystem::current_path(error).string());
}

}  // namespace

TavixFrame::TavixFrame(wxWindow* parent, const std::string& programDirectory)
    : wxFrame(parent, wxID_ANY, "Tavix", wxDefaultPosition, wxSize(1280, 820)),
      m_programDirectory(programDirectory) {
  m_aui.SetManagedWindow(this);
  m_statusBar = new TavixStatusBar(this);
  SetStatusBar(m_statusBar);
  BuildPanes();
  BuildMenus();
  BuildToolBar();
  BindBridge();
  m_aui.Update();

  Tavix_SYSTEM_NAMESPACE::RUN_GUI = true;
  m_session.dispatcher = EventDispatcher(std::make_shared<GuiSink>(this));
  m_session.plotErrorMessage.clear();
  m_session.maxFigures = 20;
  m_session.random.Seed(42);
  m_session.postToFrontEnd = [this](const FrontEndRequest& request) {
    auto* event = new wxThreadEvent(wxEVT_FRONT_END_REQUEST);
    event->SetPayload(request);
    wxQueueEvent(this, event);
  };
  m_session.exportFigure = FileFigureExporter();
  Initialize(SettingsFolder());
  m_currentDirectory = CurrentDirectory();
  m_statusBar->SetDirectory(m_currentDirectory);
  SetRunning(false);
  m_console->PrintOnConsoleBF("Tavix", Colour{20, 70, 160});
  m_console->PrintOnConsole(" - Bayesian econometrics. Type commands below, or write scripts in the editor.\n");
  m_console->FocusInput();
}

TavixFrame::~TavixFrame() {
  m_worker.InterruptThread();
  for (long pid : m_runningProcesses) TavixASYNCProcess::Terminate(pid);
  m_aui.UnInit();
}

void TavixFrame::BindBridge() {
  Bind(wxEVT_PRINT_STRING, &TavixFrame::OnPrintString, this, kDispatcherId);
  Bind(wxEVT_PRINT_STRING_BG, &TavixFrame::OnPrintString, this, kDispatcherId);
  Bind(wxEVT_PRINT_STRING_COLOR, &TavixFrame::OnPrintString, this, kDispatcherId);
  Bind(wxEVT_PRINT_ERROR, &TavixFrame::OnPrintError, this, kDispatcherId);
  Bind(wxEVT_PRINT_LINE, &TavixFrame::OnPrintLine, this, kDispatcherId);
  Bind(wxEVT_PRINT_NEW_LINE, &TavixFrame::OnPrintNewLine, this, kDispatcherId);
  Bind(wxEVT_CLEAR_CONSOLE, &TavixFrame::OnClearConsole, this, kDispatcherId);
  Bind(wxEVT_UPDATE_GUI, &TavixFrame::OnUpdateGUI, this, kDispatcherId);
  Bind(wxEVT_PROGRESS_BAR, &TavixFrame::OnProgressBar, this, kDispatcherId);
  Bind(wxEVT_ENABLE_RUN, &TavixFrame::OnEnableRun, this, kDispatcherId);
  Bind(wxEVT_DISABLE_RUN, &TavixFrame::OnDisableRun, this, kDispatcherId);
  Bind(wxEVT_EXIT_TAVIX, &TavixFrame::OnExitTavix, this, kDispatcherId);
  Bind(wxEVT_PRINT_AND_RUN, &TavixFrame::OnPrintAndRun, this);
  Bind(wxEVT_RUN_CODE, &TavixFrame::OnRunCode, this, kFrameEventId);
  Bind(wxEVT_STOP_EXECUTION, &TavixFrame::OnStopExecution, this, kFrameEventId);
  Bind(wxEVT_UPDATE_DATA, &TavixFrame::OnUpdateData, this, kFrameEventId);
  Bind(wxEVT_FRONT_END_REQUEST, &TavixFrame::OnFrontEndRequest, this);
  Bind(wxEVT_CLOSE_WINDOW, &TavixFrame::OnClose, this);
}

void TavixFrame::CallTheParser(std::string name) {
  if (m_jobRunning) {
    ++m_busyWarnings;
    if (m_quietWarnings) {
      m_console->PrintOnConsoleWarning(kBusyWarning);
    } else {
      wxMessageBox(kBusyWarning, "Warning", wxOK | wxICON_EXCLAMATION, this);
    }
    return;
  }
  m_jobRunning = true;
  long firstLine = 0;
  if (name == "UNKNOWN INPUT" && m_editor && m_editor->HasPages()) {
    name = "\"" + m_editor->CurrentPageName().utf8_string() + "\"";
    firstLine = m_editor->SelectionStartLine();
  }
  std::string code;
  code.swap(m_codeBuffer);  // the buffer is free for the next submission at once
  StartJob(std::move(code), std::move(name), firstLine);
}

void TavixFrame::StartJob(std::string code, std::string name, long firstLine) {
  m_jobRunning = true;
  SetRunning(true);
  m_session.installDir = m_settings.installationDirectory;
  m_worker.RunThread(&m_jobRunning, &m_session, std::move(code), std::move(name), firstLine);
}

void TavixFrame::PrintAndRun(const std::string& code) {
  m_console->PrintOnConsoleNewLine();
  m_console->PrintOnConsoleCode(code);
  JustRun(code);
}

void TavixFrame::JustRun(const std::string& code) {
  if (m_jobRunning) {
    CallTheParser("from the GUI");  // shows the busy warning
    return;
  }
  m_codeBuffer = code;
  CallTheParser("from the GUI");
}

void TavixFrame::OnPrintString(ConsoleEvent& event) {
  if (event.background) {
    m_console->PrintOnConsoleBG(event.text, *event.background);
  } else if (event.bold) {
    m_console->PrintOnConsoleBF(event.text, event.colour.value_or(Colour{0, 0, 0}));
  } else {
    m_console->PrintOnConsole(event.text, event.colour);
  }
}

void TavixFrame::OnPrintError(ConsoleEvent& event) {
  if (event.warning) {
    m_console->PrintOnConsoleWarning(event.text);
  } else {
    m_console->PrintOnConsoleError(event.text);
  }
}

void TavixFrame::OnPrintLine(ConsoleEvent&) { m_console->PrintOnConsoleLine(); }
void TavixFrame::OnPrintNewLine(ConsoleEvent&) { m_console->PrintOnConsole("\n"); }
void TavixFrame::OnClearConsole(ConsoleEvent&) { m_console->ClearConsole(); }

void TavixFrame::OnUpdateGUI(ConsoleEvent&) {
  m_currentDirectory = CurrentDirectory();
  m_statusBar->SetDirectory(m_currentDirectory);
  m_statusBar->SetGaugeValue(0);
  m_statusBar->HideGauge();
  const Workspace& ws = m_session.workspace;
  m_datasetsPane->Update(ws.datasets);
  m_modelsPane->Update(ws.models);
  m_matricesPane->Update(ws.matrices);
  m_dataGrid->Update(ws.datasets);
  m_matrixGrid->Update(ws.matrices);
}

void TavixFrame::OnProgressBar(ConsoleEvent& event) {
  switch (event.progressAction) {
    case 0: m_statusBar->ShowGauge(); m_statusBar->SetGaugeValue(0); break;
    case 1: m_statusBar->SetGaugeValue(event.progressValue); break;
    case 2: m_statusBar->SetGaugeMessage(wxString::FromUTF8(event.text)); break;
    default: m_statusBar->HideGauge(); break;
  }
}

void TavixFrame::SetRunning(bool running) {
  if (m_editor) m_editor->SetRunning(running);
  if (m_toolBar) m_toolBar->EnableTool(ids::Stop, running);
  // The viewers read the workspace's data when they paint; while a job may change it, they
  // keep their last picture.
  if (running != m_viewersFrozen && m_dataGrid && m_matrixGrid) {
    m_viewersFrozen = running;
    if (running) {
      m_dataGrid->Freeze();
      m_matrixGrid->Freeze();
    } else {
      m_dataGrid->Thaw();
      m_matrixGrid->Thaw();
    }
  }
}

void TavixFrame::OnEnableRun(ConsoleEvent&) {
  SetRunning(false);
  // Figures whose windows the user closed during the job leave the session now that it is free.
  if (!m_jobRunning) {
    for (const auto& title : m_closedFigures) m_session.figures.Remove(title);
    m_closedFigures.clear();
  }
}
void TavixFrame::OnDisableRun(ConsoleEvent&) { SetRunning(true); }
void TavixFrame::OnExitTavix(ConsoleEvent&) { Close(true); }

void TavixFrame::OnPrintAndRun(wxCommandEvent& event) { PrintAndRun(event.GetString().utf8_string()); }

void TavixFrame::OnRunCode(wxCommandEvent&) { CallTheParser("UNKNOWN INPUT"); }

void TavixFrame::OnStopExecution(wxCommandEvent&) {
  if (!m_jobRunning) return;
  m_worker.InterruptThread();
  for (long pid : m_runningProcesses) TavixASYNCProcess::Terminate(pid);
  m_runningProcesses.clear();
  m_console->PrintOnConsoleWarning("Operation interrupted.");
  m_statusBar->HideGauge();
}

void TavixFrame::OnUpdateData(wxCommandEvent&) {
  m_currentDirectory = CurrentDirectory();
  // Shown as the shell would, with the home folder as "~".
  wxString shown = m_currentDirectory;
  const wxString home = wxGetHomeDir();
  if (!home.empty() && shown.StartsWith(home)) shown = "~" + shown.Mid(home.length());
  m_statusBar->SetDirectory(shown);
}

void TavixFrame::CompleteRequest(const std::string& refusal) {
  {
    std::lock_guard lock(m_session.externalMutex);
    m_session.plotError = !refusal.empty();
    m_session.plotErrorMessage = refusal;
    m_session.externalBusy = false;
  }
  m_session.externalCondition.notify_one();
}

void TavixFrame::OnFrontEndRequest(wxThreadEvent& event) {
  const auto request = event.GetPayload<FrontEndRequest>();
  switch (request.kind) {
    case FrontEndRequest::Kind::Pause: {
      wxMessageDialog dialog(this, "The script is paused.", "Tavix", wxOK | wxICON_INFORMATION);
      dialog.SetOKLabel("Continue");
      if (!m_quietWarnings) dialog.ShowModal();
      CompleteRequest();
      return;
    }
    case FrontEndRequest::Kind::ShowFigure:
      ShowFigure(request.figure);
      CompleteRequest();
      return;
    case FrontEndRequest::Kind::CloseFigure:
      CloseFigureWindows(request.command);
      CompleteRequest();
      return;
    case FrontEndRequest::Kind::RunExternal: {
      auto* process = new TavixASYNCProcess(
          [this](const std::string& text) { m_console->PrintOnConsole(text); },
          [this](int) {
            m_runningProcesses.remove_if([](long pid) { return !wxProcess::Exists(static_cast<int>(pid)); });
            CompleteRequest();
          });
      const long pid = process->Start(request.command);
      if (pid > 0) m_runningProcesses.push_back(pid);
      return;
    }
  }
  CompleteRequest();
}

FigureWindow* TavixFrame::FigureWindowOf(const std::string& title) const {
  const auto it = m_figureWindows.find(title);
  return it == m_figureWindows.end() ? nullptr : it->second;
}

void TavixFrame::ShowFigure(std::shared_ptr<const Figure> figure) {
  if (FigureWindow* window = FigureWindowOf(figure->title)) {
    window->SetFigure(std::move(figure));
    window->Raise();
    return;
  }
  FigureWindow::Callbacks callbacks;
  callbacks.run = [this](const std::string& code) { PrintAndRun(code); };
  callbacks.closed = [this](const std::string& title) { OnFigureWindowClosed(title); };
  const std::string title = figure->title;
  auto* window = new FigureWindow(this, std::move(figure), callbacks);
  // Each new window a little below and to the right of the previous one.
  const int offset = 30 * static_cast<int>(m_figureWindows.size() % 8);
  window->SetPosition(GetPosition() + wxPoint(200 + offset, 120 + offset));
  m_figureWindows[title] = window;
  window->Show();
}

void TavixFrame::CloseFigureWindows(const std::string& title) {
  for (auto it = m_figureWindows.begin(); it != m_figureWindows.end();) {
    if (title.empty() || it->first == title) {
      FigureWindow* window = it->second;
      it = m_figureWindows.erase(it);
      window->Destroy();
    } else {
      ++it;
    }
  }
}

void TavixFrame::OnFigureWindowClosed(const std::string& title) {
  m_figureWindows.erase(title);
  if (m_jobRunning) {
    m_closedFigures.push_back(title);
  } else {
    m_session.figures.Remove(title);
  }
}
