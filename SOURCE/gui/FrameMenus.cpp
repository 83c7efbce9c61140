// TavixFrame: the layout, the menus and tool bar, and the commands behind them.
#include <filesystem>

#include <wx/artprov.h>
#include <wx/choicdlg.h>
#include <wx/filedlg.h>
#include <wx/menu.h>
#include <wx/msgdlg.h>
#include <wx/textdlg.h>
#include <wx/toolbar.h>

#include "DataViewer.h"
#include "FrameDialogs.h"
#include "TestDialogs.h"
#include "Icons.h"
#include "KeywordTable.h"
#include "MatrixViewer.h"
#include "ScriptEditor.h"
#include "TavixConsole.h"
#include "TavixFrame.h"
#include "TavixStatusBar.h"
#include "WorkspacePanes.h"

namespace fs = std::filesystem;

namespace {

// A path inside double quotes in a generated command (file names are taken as typed).
std::string Quoted(const wxString& text) { return "\"" + text.utf8_string() + "\""; }

}  // namespace

void TavixFrame::BuildPanes() {
  const std::string history = (fs::path(SettingsFolder()) / "console_history.txt").string();
  m_console = new TavixConsole(this,
                               {[this](const std::string& code) { PrintAndRun(code); },
                                [this] {
                                  std::vector<std::string> words = KeywordWords();
                                  if (!m_jobRunning) {
                                    for (const auto& name : m_session.workspace.Names()) words.push_back(name);
                                  }
                                  return words;
                                }},
                               history);
  ScriptEditor::Callbacks editorCallbacks;
  editorCallbacks.run = [this](const std::string& code, const std::string& inputName, long firstLine) {
    if (m_jobRunning) {
      CallTheParser(inputName);  // the busy warning
      return;
    }
    StartJob(code, inputName, firstLine);
  };
  editorCallbacks.stop = [this] {
    wxCommandEvent stop(wxEVT_STOP_EXECUTION, kFrameEventId);
    OnStopExecution(stop);
  };
  editorCallbacks.scriptFileUsed = [this](const wxString& path, bool saved) {
    FollowDirectory(path, saved ? TavixSettings::ChangeDirOnSaveScript : TavixSettings::ChangeDirOnLoadScript);
  };
  m_editor = new ScriptEditor(this, editorCallbacks);
  m_datasetsPane = new DatasetsPane(this, this);
  m_modelsPane = new ModelsPane(this, this);
  m_matricesPane = new MatricesPane(this, this);
  m_dataGrid = new DataGrid(this);
  m_matrixGrid = new MatrixGrid(this);

  m_aui.AddPane(m_console, wxAuiPaneInfo().Name("console").Caption("Console").CenterPane().PaneBorder(false));
  m_aui.AddPane(m_editor, wxAuiPaneInfo().Name("editor").Caption("Script Editor").Left().Layer(0)
                              .BestSize(560, 600).MinSize(300, 200).CloseButton(true).MaximizeButton(true));
  m_aui.AddPane(m_datasetsPane, wxAuiPaneInfo().Name("datasets").Caption("Datasests").Right().Layer(1)
                                    .Position(0).BestSize(300, 180).MinSize(200, 100));
  m_aui.AddPane(m_modelsPane, wxAuiPaneInfo().Name("models").Caption("Models").Right().Layer(1).Position(1)
                                  .BestSize(300, 180).MinSize(200, 100));
  m_aui.AddPane(m_matricesPane, wxAuiPaneInfo().Name("matrices").Caption("Matrices").Right().Layer(1)
                                    .Position(2).BestSize(300, 180).MinSize(200, 100));
  m_aui.AddPane(m_dataGrid, wxAuiPaneInfo().Name("dataviewer").Caption("Data Viewer").Bottom().Layer(0)
                                .BestSize(700, 260).MinSize(300, 120).Hide().MaximizeButton(true));
  m_aui.AddPane(m_matrixGrid, wxAuiPaneInfo().Name("matrixviewer").Caption("Matrix Viewer").Bottom()
                                  .Layer(0).BestSize(700, 260).MinSize(300, 120).Hide().MaximizeButton(true));
}

void TavixFrame::BuildMenus() {
  auto* file = new wxMenu;
  file->Append(ids::ImportData, "&Import Data\tCtrl+I");
  file->Append(ids::ExportData, "&Export Data\tCtrl+E");
  file->AppendSeparator();
  file->Append(ids::LoadWS, "&Load Workspace\tCtrl+O");
  file->Append(ids::SaveWS, "&Save Workspace\tCtrl+S");
  file->Append(ids::SaveWSAs, "Save Workspace &As...\tShift+Ctrl+S");
  file->Append(ids::ClearWS, "&Clear Workspace\tShift+Ctrl+C");
  file->AppendSeparator();
  file->Append(ids::Quit, "E&xit Tavix\tCtrl+Q");

  auto* data = new wxMenu;
  data->Append(ids::SummarizeData, "&Summarize Data");
  data->Append(ids::SortData, "So&rt Data");
  data->Append(ids::PlotData, "&Plot Data");
  data->Append(ids::CreateVariables, "C&reate Variables");
  data->Append(ids::DeleteVariables, "De&lete Variables");
  data->Append(ids::MarkDataset, "Se&t Dataset Structure");
  data->Append(ids::ClearDataset, "&Clear Dataset");

  auto* models = new wxMenu;
  auto* linear = new wxMenu;
  linear->Append(ids::LMDialog, "Linear model");
  linear->Append(ids::LMHETDialog, "Heteroskedastic linear model");
  linear->Append(ids::LMREDialog, "Random effects linear model");
  models->AppendSubMenu(linear, "Linear models");
  // Families whose estimators are not part of this version are listed, greyed.
  const std::pair<const char*, std::vector<std::pair<int, const char*>>> later[] = {
      {"Stochastic frontier", {{6094, "Stochastic frontier"}, {6096, "Random effects"}}},
      {"Discrete choice", {{6101, "Probit"}, {6102, "Logit"}, {6107, "Multinomial Logit"}}},
      {"Count data models", {{6111, "Poisson model"}, {6112, "Negative-Binomial model"}}},
      {"Tobit models", {{6117, "Type I Tobit"}, {6118, "Type II Tobit"}}},
      {"Ordered choice", {{6121, "Ordered Probit"}, {6122, "Ordered Logit"}}},
      {"Time series", {{6127, "Vector autoregression"}}},
      {"Linear systems", {{6133, "Simple SUR"}}},
  };
  for (const auto& [caption, items] : later) {
    auto* sub = new wxMenu;
    for (const auto& [id, label] : items) sub->Append(id, label)->Enable(false);
    models->AppendSubMenu(sub, caption);
  }

  auto* tests = new wxMenu;
  tests->Append(ids::TestParameters, "&Parameter Restrictions");
  tests->Append(ids::CompareModels, "&Model Comparison");

  auto* interfaces = new wxMenu;
  const std::pair<int, const char*> engines[] = {{6067, "&JAGS"}, {6068, "&OpenBUGS"}, {6069, "&Stan"},
                                                 {6070, "&MATLAB"}, {6071, "GNU &Octave"}, {6072, "&R project"},
                                                 {6073, "S&tata"}};
  for (const auto& [id, label] : engines) interfaces->Append(id, label)->Enable(false);

  auto* view = new wxMenu;
  view->Append(ids::ShowScriptWindow, "&Script Editor");
  view->Append(ids::ViewDatasetsPane, "&Datasets Pane");
  view->Append(ids::ViewModelsPane, "&Models Pane");
  view->Append(ids::ViewMatricesPane, "Matri&ces Pane");
  view->Append(ids::ViewDataGrid, "Data &Viewer");
  view->Append(ids::ViewMatrixGrid, "Ma&trix Viewer");

  auto* help = new wxMenu;
  help->Append(ids::Documentation, "&User's Guide (pdf)")->Enable(false);
  help->Append(ids::Textbook, "&Textbook (pdf)")->Enable(false);
  help->AppendSeparator();
  help->AppendCheckItem(ids::HelpOnStartup, "&Show Help on Startup");
  help->Append(ids::Options, "&Preferences");
  help->Append(ids::Directories, "&External Binaries");
  help->AppendSeparator();
  help->Append(ids::About, "&About");

  auto* bar = new wxMenuBar;
  bar->Append(file, "&File   ");
  bar->Append(data, "&Data   ");
  bar->Append(models, "&Models  ");
  bar->Append(tests, "&Tests   ");
  bar->Append(interfaces, "&Interfaces  ");
  bar->Append(view, "&View   ");
  bar->Append(help, "&Help   ");
  SetMenuBar(bar);
  for (int id : {ids::SortData, ids::PlotData, ids::CreateVariables, ids::DeleteVariables, ids::MarkDataset}) {
    bar->Enable(id, false);
  }

  Bind(wxEVT_MENU, &TavixFrame::OnImportData, this, ids::ImportData);
  Bind(wxEVT_MENU, &TavixFrame::OnExportData, this, ids::ExportData);
  Bind(wxEVT_MENU, &TavixFrame::OnLoadWS, this, ids::LoadWS);
  Bind(wxEVT_MENU, &TavixFrame::OnSaveWS, this, ids::SaveWS);
  Bind(wxEVT_MENU, &TavixFrame::OnSaveWSAs, this, ids::SaveWSAs);
  Bind(wxEVT_MENU, &TavixFrame::OnClearWS, this, ids::ClearWS);
  Bind(wxEVT_MENU, &TavixFrame::OnQuit, this, ids::Quit);
  Bind(wxEVT_MENU, &TavixFrame::OnSummarizeData, this, ids::SummarizeData);
  Bind(wxEVT_MENU, &TavixFrame::OnClearDataset, this, ids::ClearDataset);
  Bind(wxEVT_MENU, &TavixFrame::OnLinearModelDialog, this, ids::LMDialog, ids::LMREDialog);
  Bind(wxEVT_MENU, &TavixFrame::OnTestDialog, this, ids::TestParameters, ids::CompareModels);
  Bind(wxEVT_MENU, &TavixFrame::OnShowPane, this, ids::ShowScriptWindow, ids::ViewMatrixGrid);
  Bind(wxEVT_MENU, &TavixFrame::OnOptions, this, ids::Options);
  Bind(wxEVT_MENU, &TavixFrame::OnDirectories, this, ids::Directories);
  Bind(wxEVT_MENU, &TavixFrame::OnAbout, this, ids::About);
  Bind(wxEVT_MENU, &TavixFrame::OnShowHelpOnStartup, this, ids::HelpOnStartup);
}

void TavixFrame::BuildToolBar() {
  m_toolBar = CreateToolBar(wxTB_HORIZONTAL | wxTB_FLAT | wxTB_TEXT);
  const std::string icons = IconFolder(m_programDirectory);
  m_toolBar->AddTool(ids::ImportData, "Import", ToolIcon(icons, "i_importData.png", wxART_FILE_OPEN),
                     "Import Data\tCtrl+I");
  m_toolBar->AddTool(ids::ExportData, "Export", ToolIcon(icons, "i_exportData.png", wxART_FILE_SAVE_AS),
                     "Export Data\tCtrl+E");
  m_toolBar->AddSeparator();
  m_toolBar->AddTool(ids::LoadWS, "Load", ToolIcon(icons, "i_open.png", wxART_FOLDER_OPEN), "Load Workspace\tCtrl+O");
  m_toolBar->AddTool(ids::SaveWS, "Save", ToolIcon(icons, "i_save.png", wxART_FILE_SAVE), "Save Workspace\tCtrl+S");
  m_toolBar->AddSeparator();
  m_toolBar->AddTool(ids::ShowScriptWindow, "Script", ToolIcon(icons, "i_script.png", wxART_NEW),
                     "Show the script editor");
  m_toolBar->AddTool(ids::ViewDataGrid, "Data", ToolIcon(icons, "i_data.png", wxART_REPORT_VIEW),
                     "Show the data viewer");
  m_toolBar->AddSeparator();
  m_toolBar->AddTool(ids::Stop, "Stop", ToolIcon(icons, "i_stop.png", wxART_CROSS_MARK), "Interrupt \tAlt+Ctrl+I");
  m_toolBar->Realize();
  Bind(wxEVT_TOOL, [this](wxCommandEvent& event) { OnStopExecution(event); }, ids::Stop);
  wxAcceleratorEntry stop(wxACCEL_ALT | wxACCEL_CTRL, 'I', ids::Stop);
  SetAcceleratorTable(wxAcceleratorTable(1, &stop));
  SetIcons(LogoBundle(icons));
}

void TavixFrame::FollowDirectory(const wxString& file, TavixSettings::Flag flag) {
  if (!m_settings.flags[flag]) return;
  std::error_code error;
  fs::current_path(fs::path(file.utf8_string()).parent_path(), error);
  wxCommandEvent update(wxEVT_UPDATE_DATA, kFrameEventId);
  OnUpdateData(update);
}

std::string TavixFrame::ChooseDataset(const wxString& title) {
  if (m_jobRunning) {
    CallTheParser("from the GUI");
    return {};
  }
  wxArrayString names;
  for (const auto& [name, dataset] : m_session.workspace.datasets) names.Add(wxString::FromUTF8(name));
  if (names.empty()) {
    wxMessageBox("The current workspace does not contain any datasets.", title, wxOK | wxICON_INFORMATION, this);
    return {};
  }
  if (names.size() == 1) return names[0].utf8_string();
  wxSingleChoiceDialog dialog(this, "Dataset:", title, names);
  return dialog.ShowModal() == wxID_OK ? dialog.GetStringSelection().utf8_string() : std::string();
}

void TavixFrame::OnImportData(wxCommandEvent&) {
  wxFileDialog open(this, "Import Data", wxEmptyString, wxEmptyString,
                    "Delimited text (*.csv;*.txt;*.tsv)|*.csv;*.txt;*.tsv|All files|*", wxFD_OPEN | wxFD_FILE_MUST_EXIST);
  if (open.ShowModal() != wxID_OK) return;
  ImportOptions options;
  options.name = DatasetNameFor(open.GetPath());
  if (!AskImportOptions(this, open.GetPath(), options)) return;
  FollowDirectory(open.GetPath(), TavixSettings::ChangeDirOnImport);
  PrintAndRun(options.name + " = import(" + Quoted(open.GetPath()) + ", " + options.delimiterCode + ");");
}

void TavixFrame::OnExportData(wxCommandEvent&) {
  const std::string name = ChooseDataset("Export Data");
  if (name.empty()) return;
  wxFileDialog save(this, "Export Data", wxEmptyString, wxString::FromUTF8(name) + ".csv",
                    "Comma-separated values (*.csv)|*.csv|All files|*", wxFD_SAVE | wxFD_OVERWRITE_PROMPT);
  if (save.ShowModal() != wxID_OK) return;
  FollowDirectory(save.GetPath(), TavixSettings::ChangeDirOnExport);
  PrintAndRun("export(" + name + ", " + Quoted(save.GetPath()) + ");");
}

void TavixFrame::OnLoadWS(wxCommandEvent&) {
  wxFileDialog open(this, "Load Workspace", wxEmptyString, wxEmptyString,
                    "Tavix workspace (*.tvw)|*.tvw|All files|*", wxFD_OPEN | wxFD_FILE_MUST_EXIST);
  if (open.ShowModal() != wxID_OK) return;
  std::string code = "load(" + Quoted(open.GetPath()) + ");";
  if (!m_jobRunning && !m_session.workspace.Names().empty()) {
    if (wxMessageBox("Loading a workspace replaces the current one, which will be cleared.\nContinue?",
                     "Load Workspace", wxYES_NO | wxICON_QUESTION, this) != wxYES) {
      return;
    }
    code = "clear(all);\n" + code;
  }
  m_workspaceFile = open.GetPath();
  FollowDirectory(open.GetPath(), TavixSettings::ChangeDirOnLoadWorkspace);
  PrintAndRun(code);
}

void TavixFrame::OnSaveWS(wxCommandEvent& event) {
  if (m_workspaceFile.empty()) {
    OnSaveWSAs(event);
    return;
  }
  PrintAndRun("save(" + Quoted(m_workspaceFile) + ");");
}

void TavixFrame::OnSaveWSAs(wxCommandEvent&) {
  wxFileDialog save(this, "Save Workspace As", wxEmptyString, "workspace.tvw",
                    "Tavix workspace (*.tvw)|*.tvw|All files|*", wxFD_SAVE | wxFD_OVERWRITE_PROMPT);
  if (save.ShowModal() != wxID_OK) return;
  m_workspaceFile = save.GetPath();
  FollowDirectory(save.GetPath(), TavixSettings::ChangeDirOnSaveWorkspace);
  PrintAndRun("save(" + Quoted(m_workspaceFile) + ");");
}

void TavixFrame::OnClearWS(wxCommandEvent&) {
  if (wxMessageBox("Remove every matrix, dataset, model, structure and string from the workspace?",
                   "Clear Workspace", wxYES_NO | wxICON_QUESTION, this) == wxYES) {
    PrintAndRun("clear(all);");
  }
}

void TavixFrame::OnQuit(wxCommandEvent&) { Close(); }

void TavixFrame::OnClose(wxCloseEvent& event) {
  if (event.CanVeto()) {
    if (m_jobRunning && wxMessageBox("A job is running. Stop it and exit?", "Exit Tavix",
                                     wxYES_NO | wxICON_QUESTION, this) != wxYES) {
      event.Veto();
      return;
    }
    if (m_settings.flags[TavixSettings::PromptSaveWorkspace] && !m_jobRunning &&
        !m_session.workspace.Names().empty()) {
      const int answer = wxMessageBox("Save the workspace before exiting?", "Exit Tavix",
                                      wxYES_NO | wxCANCEL | wxICON_QUESTION, this);
      if (answer == wxCANCEL) {
        event.Veto();
        return;
      }
      if (answer == wxYES) {
        wxFileDialog save(this, "Save Workspace", wxEmptyString, "workspace.tvw",
                          "Tavix workspace (*.tvw)|*.tvw", wxFD_SAVE | wxFD_OVERWRITE_PROMPT);
        if (save.ShowModal() != wxID_OK) {
          event.Veto();
          return;
        }
        m_codeBuffer = "save(" + Quoted(save.GetPath()) + ");";
        CallTheParser("from the GUI");
        m_worker.Join();
      }
    }
    if (m_settings.flags[TavixSettings::PromptSaveScripts] && !m_editor->ConfirmClose()) {
      event.Veto();
      return;
    }
  }
  m_worker.InterruptThread();
  Finalize();
  Destroy();
}

void TavixFrame::OnSummarizeData(wxCommandEvent&) {
  const std::string name = ChooseDataset("Summarize Data");
  if (!name.empty()) PrintAndRun("summary(\"dataset\" = " + name + ");");
}

void TavixFrame::OnClearDataset(wxCommandEvent&) {
  const std::string name = ChooseDataset("Clear Dataset");
  if (!name.empty()) PrintAndRun("clear(" + name + ");");
}

void TavixFrame::OnLinearModelDialog(wxCommandEvent& event) {
  if (m_jobRunning) {
    CallTheParser("from the GUI");
    return;
  }
  const std::string code = AskLinearModel(this, event.GetId() - ids::LMDialog, m_session.workspace.datasets);
  if (!code.empty()) PrintAndRun(code);
}

void TavixFrame::OnTestDialog(wxCommandEvent& event) {
  if (m_jobRunning) {
    CallTheParser("from the GUI");
    return;
  }
  const auto& models = m_session.workspace.models;
  const std::string code = event.GetId() == ids::TestParameters
                               ? AskParameterTest(this, models, m_modelsPane->SelectedName())
                               : AskModelComparison(this, models);
  if (!code.empty()) PrintAndRun(code);
}

void TavixFrame::OnShowPane(wxCommandEvent& event) {
  const char* pane = nullptr;
  switch (event.GetId()) {
    case ids::ShowScriptWindow: pane = "editor"; break;
    case ids::ViewDatasetsPane: pane = "datasets"; break;
    case ids::ViewModelsPane: pane = "models"; break;
    case ids::ViewMatricesPane: pane = "matrices"; break;
    case ids::ViewDataGrid: pane = "dataviewer"; break;
    case ids::ViewMatrixGrid: pane = "matrixviewer"; break;
    default: return;
  }
  wxAuiPaneInfo& info = m_aui.GetPane(pane);
  if (!info.IsOk()) return;
  info.Show();
  m_aui.Update();
  if (event.GetId() == ids::ShowScriptWindow && !m_editor->HasPages()) m_editor->NewPage();
}

void TavixFrame::OnOptions(wxCommandEvent&) {
  if (AskPreferences(this, m_settings)) Finalize();
}

void TavixFrame::OnDirectories(wxCommandEvent&) {
  if (AskDirectories(this, m_settings)) {
    m_settings.ApplyToGlobals();
    Finalize();
  }
}

void TavixFrame::OnAbout(wxCommandEvent&) { ShowAbout(this); }

void TavixFrame::OnShowHelpOnStartup(wxCommandEvent& event) {
  m_settings.flags[TavixSettings::ShowHelpOnStartup] = event.IsChecked();
}
