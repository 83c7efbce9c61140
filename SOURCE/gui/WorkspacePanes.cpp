// WorkspacePanes: the sortable list behind the three workspace panes, and each pane's columns
// and commands.
#include "WorkspacePanes.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <vector>

#include <wx/filedlg.h>
#include <wx/listctrl.h>
#include <wx/menu.h>
#include <wx/msgdlg.h>
#include <wx/settings.h>
#include <wx/sizer.h>

#include "DataViewer.h"
#include "Dataset.h"
#include "GuiEvents.h"
#include "Model.h"

namespace {

// One column of a workspace list: its title, width in DIPs, alignment, and whether it sorts by
// number.
struct ListColumn {
  wxString title;
  int width;
  wxListColumnFormat align;
  bool numeric;
};

// One entry of a workspace list: the workspace name, the text of each column and, for numeric
// columns, the number it sorts by.
struct ListRow {
  std::string name;
  std::vector<wxString> cells;
  std::vector<double> keys;
};

}  // namespace

// A report-mode list of workspace entries, sorted by a column the user clicks (again to reverse),
// that keeps its selection and scroll position across updates. The last column takes the room
// left over.
class WorkspaceList : public wxListCtrl {
public:
  WorkspaceList(wxWindow* parent, std::vector<ListColumn> columns)
      : wxListCtrl(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                   wxLC_REPORT | wxLC_SINGLE_SEL | wxBORDER_NONE),
        m_columns(std::move(columns)) {
    for (const ListColumn& column : m_columns) {
      // The sort arrow is drawn at the header's right end, over a right-aligned title unless
      // the title leaves it room.
      const wxString title =
          column.align == wxLIST_FORMAT_RIGHT ? column.title + "     " : column.title;
      AppendColumn(title, column.align, FromDIP(column.width));
    }
    ShowSortIndicator(m_sortColumn, m_ascending);
    Bind(wxEVT_LIST_COL_CLICK, &WorkspaceList::OnColumnClick, this);
    Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
      StretchLastColumn();
      event.Skip();
    });
  }

  // Shows `rows` in the current order. The same names as before only refresh the texts; other
  // names rebuild the list, reselecting the selected name and keeping the top entry in view.
  void SetRows(std::vector<ListRow> rows) {
    Sort(rows);
    const bool sameNames =
        std::equal(rows.begin(), rows.end(), m_rows.begin(), m_rows.end(),
                   [](const ListRow& a, const ListRow& b) { return a.name == b.name; });
    if (sameNames) {
      for (std::size_t i = 0; i < rows.size(); ++i) {
        for (std::size_t c = 0; c < rows[i].cells.size(); ++c) {
          if (rows[i].cells[c] != m_rows[i].cells[c]) {
            SetItem(static_cast<long>(i), static_cast<int>(c), rows[i].cells[c]);
          }
        }
      }
      m_rows = std::move(rows);
      return;
    }
    Rebuild(std::move(rows), true);
  }

  // The workspace name of a list entry, "" when there is none at `item`.
  std::string NameAt(long item) const {
    return item >= 0 && item < static_cast<long>(m_rows.size())
               ? m_rows[static_cast<std::size_t>(item)].name
               : std::string();
  }
  // The names listed, in the order shown.
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const ListRow& row : m_rows) names.push_back(row.name);
    return names;
  }
  // The selected entry's name, "" when nothing is selected.
  std::string SelectedName() const {
    return NameAt(GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED));
  }

private:
  // Orders rows by the sort column, numbers numerically (missing last) and texts without regard
  // to case; ties go by name.
  void Sort(std::vector<ListRow>& rows) const {
    const std::size_t c = static_cast<std::size_t>(m_sortColumn);
    const bool numeric = m_columns[c].numeric;
    std::stable_sort(rows.begin(), rows.end(), [&](const ListRow& a, const ListRow& b) {
      int order = 0;
      if (numeric) {
        const double x = a.keys[c];
        const double y = b.keys[c];
        if (std::isnan(x) != std::isnan(y)) return std::isnan(y);  // missing last either way
        order = x < y ? -1 : (y < x ? 1 : 0);
      } else {
        order = a.cells[c].CmpNoCase(b.cells[c]);
      }
      if (order == 0) order = a.name < b.name ? -1 : (b.name < a.name ? 1 : 0);
      return m_ascending ? order < 0 : order > 0;
    });
  }

  // Replaces the entries by `rows`, already sorted, reselecting the selected name; keeps the top
  // entry at the top when `keepTop`, else brings the selection into view.
  void Rebuild(std::vector<ListRow> rows, bool keepTop) {
    const std::string selected = SelectedName();
    const std::string top = NameAt(GetTopItem());
    const long oldTop = GetTopItem();
    m_rows = std::move(rows);
    Freeze();
    DeleteAllItems();
    long keepSelected = -1;
    long topItem = -1;
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
      const long item = InsertItem(static_cast<long>(i), m_rows[i].cells[0]);
      for (std::size_t c = 1; c < m_rows[i].cells.size(); ++c) {
        SetItem(item, static_cast<int>(c), m_rows[i].cells[c]);
      }
      if (m_rows[i].name == selected) keepSelected = item;
      if (m_rows[i].name == top) topItem = item;
    }
    const long count = GetItemCount();
    if (topItem < 0) topItem = std::min(oldTop, count - 1);
    if (keepTop && topItem > 0) {
      // Scrolling to the end first makes the second call bring the entry to the top.
      EnsureVisible(count - 1);
      EnsureVisible(topItem);
    }
    if (keepSelected >= 0) {
      SetItemState(keepSelected, wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED,
                   wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED);
      if (!keepTop) EnsureVisible(keepSelected);
    }
    Thaw();
  }

  void OnColumnClick(wxListEvent& event) {
    const int column = event.GetColumn();
    if (column < 0) return;
    m_ascending = column == m_sortColumn ? !m_ascending : true;
    m_sortColumn = column;
    ShowSortIndicator(m_sortColumn, m_ascending);
    std::vector<ListRow> rows = m_rows;
    Sort(rows);
    Rebuild(std::move(rows), false);
  }

  void StretchLastColumn() {
    const int last = GetColumnCount() - 1;
    if (last < 0) return;
    int used = 0;
    for (int c = 0; c < last; ++c) used += GetColumnWidth(c);
    // Less the room a vertical scroll bar may take, so no horizontal one appears.
    const int room = GetClientSize().x - used - wxSystemSettings::GetMetric(wxSYS_VSCROLL_X, this);
    SetColumnWidth(last, std::max(room, FromDIP(m_columns.back().width)));
  }

  std::vector<ListColumn> m_columns;
  std::vector<ListRow> m_rows;
  int m_sortColumn = 0;
  bool m_ascending = true;
};

namespace {

// Double quotes end a string literal of the language, and a backslash starts an escape pair that
// the literal keeps as typed; neither can stand in a path given to a command.
std::string PathForCommand(wxString path, wxWindow* parent) {
#ifdef __WXMSW__
  path.Replace("\\", "/");
#endif
  if (path.Contains("\"") || path.Contains("\\")) {
    wxMessageBox("The path\n" + path + "\ncontains a double quote or a backslash, which a command "
                 "cannot hold. Please choose another name or folder.",
                 "Export", wxOK | wxICON_WARNING, parent);
    return {};
  }
  return path.utf8_string();
}

// Asks for a file and posts the command exporting `name` there; a .tsv file is tab-separated,
// any other comma-separated.
void ExportTo(wxWindow* parent, wxEvtHandler* commands, const std::string& name,
              const wxString& what) {
  wxFileDialog dialog(parent, "Export the " + what + " " + wxString::FromUTF8(name), wxEmptyString,
                      wxString::FromUTF8(name) + ".csv",
                      "Comma-separated values (*.csv)|*.csv|Tab-separated values (*.tsv)|*.tsv|"
                      "All files (*)|*",
                      wxFD_SAVE | wxFD_OVERWRITE_PROMPT);
  if (dialog.ShowModal() != wxID_OK) return;
  const std::string path = PathForCommand(dialog.GetPath(), parent);
  if (path.empty()) return;
  const bool tabs = dialog.GetPath().Lower().EndsWith(".tsv");
  const std::string delimiter = tabs ? ", \"\\t\"" : "";
  PostPrintAndRun(commands, "export(" + name + ", \"" + path + "\"" + delimiter + ");");
}

// Asks before clearing `name`, then posts the command.
void ConfirmClear(wxWindow* parent, wxEvtHandler* commands, const std::string& name,
                  const wxString& what) {
  wxMessageDialog dialog(parent,
                         "Clear the " + what + " \"" + wxString::FromUTF8(name) +
                             "\" from the workspace?",
                         "Clear " + what, wxYES_NO | wxNO_DEFAULT | wxICON_QUESTION);
  dialog.SetYesNoLabels("Clear", "Cancel");
  if (dialog.ShowModal() == wxID_YES) PostPrintAndRun(commands, "clear(" + name + ");");
}

// A count as a user reads it, thousands grouped.
wxString Count(long long n) { return FormatCount(n); }

// Puts `list` in `pane` and wires its mouse and keys: double-click or Enter runs `activate`,
// Delete runs `remove`, a right click or the menu key offers `menu` for the entry (built by
// `fill`) and runs the chosen id through `choose`.
void Wire(wxPanel* pane, WorkspaceList* list, int activate, int remove,
          std::function<void(wxMenu&)> fill, std::function<void(int, const std::string&)> choose) {
  auto* sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(list, 1, wxEXPAND);
  pane->SetSizer(sizer);

  // The menu opens at the pointer, or below the entry when `atItem` (the keyboard's menu key).
  auto offerMenu = [pane, list, fill, choose](long item, bool atItem) {
    const std::string name = list->NameAt(item);
    if (name.empty()) return;
    list->SetItemState(item, wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED,
                       wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED);
    wxPoint at = wxDefaultPosition;
    wxRect rect;
    if (atItem && list->GetItemRect(item, rect)) {
      const wxPoint below = rect.GetBottomLeft() + wxPoint(rect.height, 0);
      at = pane->ScreenToClient(list->ClientToScreen(below));
    }
    wxMenu menu;
    fill(menu);
    const int id = pane->GetPopupMenuSelectionFromUser(menu, at);
    if (id != wxID_NONE) choose(id, name);
  };
  list->Bind(wxEVT_LIST_ITEM_RIGHT_CLICK,
             [offerMenu](wxListEvent& event) { offerMenu(event.GetIndex(), false); });
  list->Bind(wxEVT_CONTEXT_MENU, [list, offerMenu](wxContextMenuEvent& event) {
    // A right click was handled above; this is the keyboard's menu key.
    if (event.GetPosition() != wxDefaultPosition) return;
    offerMenu(list->GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED), true);
  });
  list->Bind(wxEVT_LIST_ITEM_ACTIVATED, [list, activate, choose](wxListEvent& event) {
    const std::string name = list->NameAt(event.GetIndex());
    if (!name.empty()) choose(activate, name);
  });
  list->Bind(wxEVT_LIST_KEY_DOWN, [list, remove, choose](wxListEvent& event) {
    const std::string name = list->SelectedName();
    if ((event.GetKeyCode() == WXK_DELETE || event.GetKeyCode() == WXK_NUMPAD_DELETE) &&
        !name.empty()) {
      choose(remove, name);
    } else {
      event.Skip();
    }
  });
}

}  // namespace

std::string MatrixPreview(const Eigen::MatrixXd& matrix, int maxElements, int maxChars) {
  if (matrix.size() == 0 || matrix.size() > maxElements) return {};
  auto element = [](double value) {
    return std::isnan(value) ? std::string("nan") : FormatGridNumber(value);
  };
  std::string text;
  if (matrix.size() == 1) {
    text = element(matrix(0, 0));
  } else {
    text = "[";
    for (Eigen::Index i = 0; i < matrix.rows(); ++i) {
      if (i > 0) text += "; ";
      for (Eigen::Index j = 0; j < matrix.cols(); ++j) {
        if (j > 0) text += ", ";
        text += element(matrix(i, j));
      }
    }
    text += "]";
  }
  return static_cast<int>(text.size()) <= maxChars ? text : std::string();
}

DatasetsPane::DatasetsPane(wxWindow* parent, wxEvtHandler* commands)
    : wxPanel(parent, wxID_ANY), m_commands(commands) {
  m_list = new WorkspaceList(this, {{"Name", 110, wxLIST_FORMAT_LEFT, false},
                                    {"Observations", 95, wxLIST_FORMAT_RIGHT, true},
                                    {"Variables", 70, wxLIST_FORMAT_RIGHT, true},
                                    {"Structure", 150, wxLIST_FORMAT_LEFT, false}});
  Wire(
      this, m_list, kPrintDatasetId, kClearDatasetId,
      [](wxMenu& menu) {
        menu.Append(kPrintDatasetId, "&Print");
        menu.Append(kSummaryDatasetId, "&Summary");
        menu.Append(kExportDatasetId, "&Export...");
        menu.AppendSeparator();
        menu.Append(kClearDatasetId, "&Clear...");
      },
      [this](int id, const std::string& name) { OnMenu(id, name); });
}

void DatasetsPane::Update(const std::map<std::string, std::shared_ptr<Dataset>>& datasets) {
  std::vector<ListRow> rows;
  for (const auto& [name, dataset] : datasets) {
    if (!dataset) continue;
    const auto observations = dataset->NumberOfObservations();
    const auto variables = dataset->NumberOfVariables();
    const double none = std::numeric_limits<double>::quiet_NaN();
    rows.push_back({name,
                    {wxString::FromUTF8(name), Count(observations), Count(variables),
                     wxString::FromUTF8(dataset->DescribeStructure())},
                    {none, static_cast<double>(observations), static_cast<double>(variables),
                     none}});
  }
  m_list->SetRows(std::move(rows));
}

void DatasetsPane::OnMenu(int id, const std::string& name) {
  switch (id) {
    case kPrintDatasetId: PostPrintAndRun(m_commands, "print(" + name + ");"); break;
    case kSummaryDatasetId:
      PostPrintAndRun(m_commands, "summary(\"dataset\" = " + name + ");");
      break;
    case kExportDatasetId: ExportTo(this, m_commands, name, "dataset"); break;
    case kClearDatasetId: ConfirmClear(this, m_commands, name, "dataset"); break;
    default: break;
  }
}

ModelsPane::ModelsPane(wxWindow* parent, wxEvtHandler* commands)
    : wxPanel(parent, wxID_ANY), m_commands(commands) {
  m_list = new WorkspaceList(this, {{"Name", 110, wxLIST_FORMAT_LEFT, false},
                                    {"Kind", 70, wxLIST_FORMAT_LEFT, false},
                                    {"Dataset", 120, wxLIST_FORMAT_LEFT, false},
                                    {"Observations", 95, wxLIST_FORMAT_RIGHT, true}});
  Wire(
      this, m_list, kPrintModelId, kClearModelId,
      [](wxMenu& menu) {
        menu.Append(kPrintModelId, "&Print");
        menu.Append(kDiagnosticsId, "&Diagnostics");
        menu.Append(kPlotDrawsId, "Plot &Draws");
        menu.Append(kMarginalEffectsId, "&Marginal Effects");
        menu.Append(kPredictionsId, "P&redictions");
        menu.AppendSeparator();
        menu.Append(kClearModelId, "&Clear...");
      },
      [this](int id, const std::string& name) { OnMenu(id, name); });
}

void ModelsPane::Update(const std::map<std::string, std::shared_ptr<Model>>& models) {
  std::vector<ListRow> rows;
  for (const auto& [name, model] : models) {
    if (!model) continue;
    wxString dataset = wxString::FromUTF8(model->DatasetName());
    if (model->DatasetWasDeleted()) dataset += " (cleared)";
    const long observations = model->Description().observations;
    const double none = std::numeric_limits<double>::quiet_NaN();
    rows.push_back({name,
                    {wxString::FromUTF8(name), wxString::FromUTF8(model->TypeName()), dataset,
                     Count(observations)},
                    {none, none, none, static_cast<double>(observations)}});
  }
  m_list->SetRows(std::move(rows));
}

void ModelsPane::OnMenu(int id, const std::string& name) {
  switch (id) {
    case kPrintModelId: PostPrintAndRun(m_commands, "print(" + name + ");"); break;
    case kDiagnosticsId: PostPrintAndRun(m_commands, "diagnostics(\"model\" = " + name + ");"); break;
    case kPlotDrawsId: PostPrintAndRun(m_commands, "plotdraws(\"model\" = " + name + ");"); break;
    case kMarginalEffectsId: PostPrintAndRun(m_commands, "mfx(\"model\" = " + name + ");"); break;
    case kPredictionsId: PostPrintAndRun(m_commands, "predict(\"model\" = " + name + ", \"stats\" = true);"); break;
    case kClearModelId: ConfirmClear(this, m_commands, name, "model"); break;
    default: break;
  }
}

MatricesPane::MatricesPane(wxWindow* parent, wxEvtHandler* commands)
    : wxPanel(parent, wxID_ANY), m_commands(commands) {
  m_list = new WorkspaceList(this, {{"Name", 110, wxLIST_FORMAT_LEFT, false},
                                    {"Size", 90, wxLIST_FORMAT_RIGHT, true},
                                    {"Values", 160, wxLIST_FORMAT_LEFT, false}});
  Wire(
      this, m_list, kPrintMatrixId, kClearMatrixId,
      [](wxMenu& menu) {
        menu.Append(kPrintMatrixId, "&Print");
        menu.Append(kExportMatrixId, "&Export...");
        menu.AppendSeparator();
        menu.Append(kClearMatrixId, "&Clear...");
      },
      [this](int id, const std::string& name) { OnMenu(id, name); });
}

void MatricesPane::Update(const std::map<std::string, std::shared_ptr<Eigen::MatrixXd>>& matrices) {
  std::vector<ListRow> rows;
  for (const auto& [name, matrix] : matrices) {
    if (!matrix) continue;
    const wxString size = wxString::Format("%lld %s %lld", static_cast<long long>(matrix->rows()),
                                           wxString::FromUTF8("\u00d7"),
                                           static_cast<long long>(matrix->cols()));
    // By element count, then by rows, so 2 x 3 comes before 3 x 2.
    const double height = static_cast<double>(matrix->rows());
    const double key = static_cast<double>(matrix->size()) + 0.5 * height / (height + 1.0);
    const double none = std::numeric_limits<double>::quiet_NaN();
    const wxString values =
        matrix->size() == 0 ? wxString("(empty)") : wxString::FromUTF8(MatrixPreview(*matrix));
    rows.push_back({name, {wxString::FromUTF8(name), size, values}, {none, key, none}});
  }
  m_list->SetRows(std::move(rows));
}

void MatricesPane::OnMenu(int id, const std::string& name) {
  switch (id) {
    case kPrintMatrixId: PostPrintAndRun(m_commands, "print(" + name + ");"); break;
    case kExportMatrixId: ExportTo(this, m_commands, name, "matrix"); break;
    case kClearMatrixId: ConfirmClear(this, m_commands, name, "matrix"); break;
    default: break;
  }
}

std::vector<std::string> DatasetsPane::Names() const { return m_list->Names(); }
std::vector<std::string> ModelsPane::Names() const { return m_list->Names(); }
std::string ModelsPane::SelectedName() const { return m_list->SelectedName(); }
std::vector<std::string> MatricesPane::Names() const { return m_list->Names(); }
