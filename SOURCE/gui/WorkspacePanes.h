// WorkspacePanes: the lists of the workspace's datasets, models and matrices, with their commands.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <Eigen/Dense>
#include <wx/panel.h>

class Dataset;
class Model;
class WorkspaceList;

// The ids of the panes' context menus. A chosen command is posted to the pane's command target,
// which echoes and runs it as though typed.
inline constexpr int kPrintMatrixId = 6030;
inline constexpr int kExportMatrixId = 6031;
inline constexpr int kClearMatrixId = 6032;
inline constexpr int kPrintModelId = 6033;
inline constexpr int kPlotDrawsId = 6035;
inline constexpr int kClearModelId = 6037;
inline constexpr int kDiagnosticsId = 6038;
inline constexpr int kMarginalEffectsId = 6039;
inline constexpr int kPredictionsId = 6040;
inline constexpr int kPrintDatasetId = 6040;
inline constexpr int kSummaryDatasetId = 6041;
inline constexpr int kExportDatasetId = 6042;
inline constexpr int kClearDatasetId = 6043;

// The workspace's datasets: name, observations, variables and structure. Double-click or Enter
// prints one; the context menu prints, summarises, exports or clears it; Delete clears it.
class DatasetsPane : public wxPanel {
public:
  // A pane posting its commands to `commands` (the main frame).
  DatasetsPane(wxWindow* parent, wxEvtHandler* commands);
  // Shows `datasets`, keeping the selection, the sort order and the scroll position.
  void Update(const std::map<std::string, std::shared_ptr<Dataset>>& datasets);
  // The names listed, in the order shown.
  std::vector<std::string> Names() const;

private:
  void OnMenu(int id, const std::string& name);

  wxEvtHandler* m_commands;
  WorkspaceList* m_list;
};

// The workspace's models: name, kind, the dataset estimated on and the observations used.
// Double-click or Enter prints one; the context menu prints or clears it.
class ModelsPane : public wxPanel {
public:
  // A pane posting its commands to `commands` (the main frame).
  ModelsPane(wxWindow* parent, wxEvtHandler* commands);
  // Shows `models`, keeping the selection, the sort order and the scroll position.
  void Update(const std::map<std::string, std::shared_ptr<Model>>& models);
  // The names listed, in the order shown.
  std::vector<std::string> Names() const;
  // The model chosen in the list ("" when none is).
  std::string SelectedName() const;

private:
  void OnMenu(int id, const std::string& name);

  wxEvtHandler* m_commands;
  WorkspaceList* m_list;
};

// The workspace's matrices: name, size and, for small ones, their values. Double-click or Enter
// prints one; the context menu prints, exports or clears it.
class MatricesPane : public wxPanel {
public:
  // A pane posting its commands to `commands` (the main frame).
  MatricesPane(wxWindow* parent, wxEvtHandler* commands);
  // Shows `matrices`, keeping the selection, the sort order and the scroll position.
  void Update(const std::map<std::string, std::shared_ptr<Eigen::MatrixXd>>& matrices);
  // The names listed, in the order shown.
  std::vector<std::string> Names() const;

private:
  void OnMenu(int id, const std::string& name);

  wxEvtHandler* m_commands;
  WorkspaceList* m_list;
};

// The values of a small matrix on one line ("[1, 2; 3, 4]", a scalar bare), or "" when it has
// more than `maxElements` elements or the text would exceed `maxChars` characters.
std::string MatrixPreview(const Eigen::MatrixXd& matrix, int maxElements = 12, int maxChars = 60);
