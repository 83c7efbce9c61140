// TavixFrame: the main window: menus and tool bar, console, script editor, workspace panes and
// viewers, and the bridge to the interpreter's thread.
#pragma once

#include <atomic>
#include <list>
#include <map>
#include <vector>
#include <memory>
#include <string>

#include <wx/aui/aui.h>
#include <wx/frame.h>

#include "GuiEvents.h"
#include "ParserThread.h"
#include "Session.h"
#include "TavixSettings.h"

class DataGrid;
class FigureWindow;
class DatasetsPane;
class MatricesPane;
class MatrixGrid;
class ModelsPane;
class ScriptEditor;
class TavixConsole;
class TavixStatusBar;

class TavixFrame : public wxFrame {
public:
  // `programDirectory` holds the executable and the settings file "Tavix.init".
  TavixFrame(wxWindow* parent, const std::string& programDirectory);
  ~TavixFrame() override;

  // The gate of every job: refuses with the busy warning while a job runs; otherwise runs the
  // code buffer under `name` ("UNKNOWN INPUT" takes the editor page's name and first line).
  void CallTheParser(std::string name);
  // Echoes `code` on the console, then runs it (or shows the busy warning).
  void PrintAndRun(const std::string& code);
  // Runs `code` without the echo.
  void JustRun(const std::string& code);
  bool JobRunning() const { return m_jobRunning; }

  Session& GetSession() { return m_session; }
  TavixConsole* Console() const { return m_console; }
  ScriptEditor* Editor() const { return m_editor; }
  TavixStatusBar* StatusBarWidget() const { return m_statusBar; }
  // The window of a figure, null when it has none.
  FigureWindow* FigureWindowOf(const std::string& title) const;
  DatasetsPane* Datasets() const { return m_datasetsPane; }
  MatricesPane* Matrices() const { return m_matricesPane; }
  ModelsPane* Models() const { return m_modelsPane; }
  const TavixSettings& Settings() const { return m_settings; }
  // When set, the busy warning is printed on the console instead of a message box (tests).
  void SetQuietWarnings(bool quiet) { m_quietWarnings = quiet; }
  int BusyWarnings() const { return m_busyWarnings; }

private:
  // Construction (FrameMenus.cpp).
  void BuildMenus();
  void BuildToolBar();
  void BuildPanes();
  void BindBridge();

  // Settings (FrameSettings.cpp).
  void Initialize(const std::string& directory);
  void Finalize();
  std::string SettingsFolder() const;

  // The bridge's handlers (TavixFrame.cpp).
  void OnPrintString(ConsoleEvent& event);
  void OnPrintError(ConsoleEvent& event);
  void OnPrintLine(ConsoleEvent& event);
  void OnPrintNewLine(ConsoleEvent& event);
  void OnClearConsole(ConsoleEvent& event);
  void OnUpdateGUI(ConsoleEvent& event);
  void OnProgressBar(ConsoleEvent& event);
  void OnEnableRun(ConsoleEvent& event);
  void OnDisableRun(ConsoleEvent& event);
  void OnExitTavix(ConsoleEvent& event);
  void OnPrintAndRun(wxCommandEvent& event);
  void OnRunCode(wxCommandEvent& event);
  void OnStopExecution(wxCommandEvent& event);
  void OnUpdateData(wxCommandEvent& event);
  void OnFrontEndRequest(wxThreadEvent& event);
  void CompleteRequest(const std::string& refusal = {});
  // Starts a job (the running flag set, the run tools disabled at once).
  void StartJob(std::string code, std::string name, long firstLine);
  void SetRunning(bool running);

  // Menu commands (FrameMenus.cpp).
  void OnImportData(wxCommandEvent& event);
  void OnExportData(wxCommandEvent& event);
  void OnLoadWS(wxCommandEvent& event);
  void OnSaveWS(wxCommandEvent& event);
  void OnSaveWSAs(wxCommandEvent& event);
  void OnClearWS(wxCommandEvent& event);
  void OnQuit(wxCommandEvent& event);
  void OnClose(wxCloseEvent& event);
  void OnSummarizeData(wxCommandEvent& event);
  void OnClearDataset(wxCommandEvent& event);
  void OnLinearModelDialog(wxCommandEvent& event);
  void OnTestDialog(wxCommandEvent& event);
  void OnShowPane(wxCommandEvent& event);
  void OnOptions(wxCommandEvent& event);
  void OnDirectories(wxCommandEvent& event);
  void OnAbout(wxCommandEvent& event);
  void OnShowHelpOnStartup(wxCommandEvent& event);
  // The name of a dataset the user picks (empty when cancelled or there is none).
  std::string ChooseDataset(const wxString& title);
  // Sets the working directory to that of `file` when the flag says so.
  void FollowDirectory(const wxString& file, TavixSettings::Flag flag);

  Session m_session;
  ParserThread m_worker;
  std::atomic<bool> m_jobRunning{false};
  std::string m_codeBuffer;
  std::list<long> m_runningProcesses;
  std::string m_programDirectory;
  TavixSettings m_settings;
  wxString m_workspaceFile;  // the file of the last save or load
  wxString m_currentDirectory;

  wxAuiManager m_aui;
  TavixConsole* m_console = nullptr;
  ScriptEditor* m_editor = nullptr;
  DatasetsPane* m_datasetsPane = nullptr;
  ModelsPane* m_modelsPane = nullptr;
  MatricesPane* m_matricesPane = nullptr;
  DataGrid* m_dataGrid = nullptr;
  MatrixGrid* m_matrixGrid = nullptr;
  TavixStatusBar* m_statusBar = nullptr;
  wxToolBar* m_toolBar = nullptr;
  // Figure windows by title; figures the user closed while a job ran, removed when it ends.
  std::map<std::string, FigureWindow*> m_figureWindows;
  std::vector<std::string> m_closedFigures;
  void ShowFigure(std::shared_ptr<const Figure> figure);
  void CloseFigureWindows(const std::string& title);
  void OnFigureWindowClosed(const std::string& title);
  bool m_quietWarnings = false;
  bool m_viewersFrozen = false;
  int m_busyWarnings = 0;
};

// Command ids of the main window.
namespace ids {
inline constexpr int ImportData = 6052, ExportData = 6053, SaveWS = 6054, SaveWSAs = 6055, LoadWS = 6056,
                     ClearWS = 6057, Quit = 5006, SummarizeData = 6058, SortData = 6059, PlotData = 6060,
                     CreateVariables = 6061, DeleteVariables = 6062, MarkDataset = 6063, ClearDataset = 6064,
                     TestParameters = 6065, CompareModels = 6066, Stop = 6005, ShowScriptWindow = 6074,
                     ViewDatasetsPane = 6075, ViewModelsPane = 6076, ViewMatricesPane = 6077,
                     ViewDataGrid = 6078, ViewMatrixGrid = 6080, Documentation = 5009, Textbook = 6082,
                     HelpOnStartup = 6084, Options = 5022, Directories = 6083, About = 5014,
                     LMDialog = 6085, LMHETDialog = 6086, LMREDialog = 6087;
}  // namespace ids
