// DataViewer: the dataset viewer's virtual table and panel, and the grid helpers both viewers use.
#include "DataViewer.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>

#include <wx/choice.h>
#include <wx/clipbrd.h>
#include <wx/grid.h>
#include <wx/msgdlg.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include "Dataset.h"

std::string FormatGridNumber(double value) {
  if (std::isnan(value)) return {};
  if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
  char buffer[64];
  std::to_chars_result written;
  if (value == std::floor(value) && std::fabs(value) < 1e15) {
    written = std::to_chars(buffer, buffer + sizeof buffer, static_cast<long long>(value));
  } else {
    written = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, 6);
  }
  return std::string(buffer, written.ptr);
}

std::string FormatCount(long long count) {
  const std::string digits = std::to_string(count < 0 ? -count : count);
  std::string text = count < 0 ? "-" : "";
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (i > 0 && (digits.size() - i) % 3 == 0) text += ',';
    text += digits[i];
  }
  return text;
}

namespace gridview {

void BuildViewer(wxPanel* panel, const wxString& label, int choiceId, wxChoice*& choice, wxStaticText*& info,
                 wxGrid*& grid) {
  auto* caption = new wxStaticText(panel, wxID_ANY, label);
  choice = new wxChoice(panel, choiceId, wxDefaultPosition, wxSize(panel->FromDIP(180), -1));
  info = new wxStaticText(panel, wxID_ANY, wxEmptyString);
  info->SetForegroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_GRAYTEXT));
  grid = CreateReadOnlyGrid(panel);
  auto* bar = new wxBoxSizer(wxHORIZONTAL);
  bar->Add(caption, 0, wxALIGN_CENTRE_VERTICAL | wxRIGHT, panel->FromDIP(6));
  bar->Add(choice, 0, wxALIGN_CENTRE_VERTICAL | wxRIGHT, panel->FromDIP(12));
  bar->Add(info, 1, wxALIGN_CENTRE_VERTICAL);
  auto* sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(bar, 0, wxEXPAND | wxALL, panel->FromDIP(4));
  sizer->Add(grid, 1, wxEXPAND);
  panel->SetSizer(sizer);
}

namespace {

// Cells beyond this count are not copied: the text would be too large to be of use.
constexpr long long kMaxCopiedCells = 5'000'000;
// Columns past this one are sized by their label alone, so that very wide tables open quickly.
constexpr int kMaxMeasuredColumns = 400;
// How many leading rows decide a column's width.
constexpr int kMeasuredRows = 100;

}  // namespace

wxGrid* CreateReadOnlyGrid(wxWindow* parent) {
  auto* grid = new wxGrid(parent, wxID_ANY);
  grid->EnableEditing(false);
  grid->DisableDragRowSize();
  grid->SetDefaultCellOverflow(false);
  grid->SetDefaultRowSize(grid->GetCharHeight() + 8, true);
  grid->SetColLabelSize(grid->GetCharHeight() + 10);
  grid->SetRowLabelAlignment(wxALIGN_RIGHT, wxALIGN_CENTRE);
  grid->Bind(wxEVT_KEY_DOWN, [grid](wxKeyEvent& event) {
    if (event.GetModifiers() == wxMOD_CONTROL &&
        (event.GetKeyCode() == 'C' || event.GetKeyCode() == WXK_INSERT)) {
      CopySelection(grid);
    } else {
      event.Skip();
    }
  });
  return grid;
}

std::string ResetChoice(wxChoice* choice, const std::vector<std::string>& names,
                        const std::string& keep) {
  bool same = choice->GetCount() == names.size();
  for (unsigned i = 0; same && i < names.size(); ++i) {
    same = choice->GetString(i).utf8_string() == names[i];
  }
  if (!same) {
    wxArrayString items;
    for (const auto& name : names) items.Add(wxString::FromUTF8(name));
    choice->Set(items);
  }
  choice->Enable(!names.empty());
  if (names.empty()) return {};
  const auto found = std::find(names.begin(), names.end(), keep);
  const int index = found == names.end() ? 0 : static_cast<int>(found - names.begin());
  choice->SetSelection(index);
  return names[static_cast<std::size_t>(index)];
}

void FitColumns(wxGrid* grid) {
  wxGridTableBase* table = grid->GetTable();
  const int rows = table->GetNumberRows();
  const int cols = table->GetNumberCols();
  const wxFont labelFont = grid->GetLabelFont();
  const wxFont cellFont = grid->GetDefaultCellFont();
  int width = 0;
  int height = 0;
  grid->GetTextExtent(wxString::Format("%d", std::max(rows, 100)), &width, &height, nullptr,
                      nullptr, &labelFont);
  grid->SetRowLabelSize(width + 16);
  const int measured = std::min(rows, kMeasuredRows);
  for (int col = 0; col < cols; ++col) {
    grid->GetTextExtent(table->GetColLabelValue(col), &width, &height, nullptr, nullptr,
                        &labelFont);
    int fit = width + 18;
    if (col < kMaxMeasuredColumns) {
      // The longest text stands for the widest: one measurement per column.
      wxString longest;
      for (int row = 0; row < measured; ++row) {
        wxString value = table->GetValue(row, col);
        if (value.length() > longest.length()) longest = std::move(value);
      }
      grid->GetTextExtent(longest, &width, &height, nullptr, nullptr, &cellFont);
      fit = std::max(fit, width + 14);
    }
    grid->SetColSize(col, std::clamp(fit, 56, 320));
  }
}

GridView SaveView(wxGrid* grid) {
  GridView view;
  grid->GetViewStart(&view.viewX, &view.viewY);
  view.cursorRow = grid->GetGridCursorRow();
  view.cursorCol = grid->GetGridCursorCol();
  for (int col = 0; col < grid->GetNumberCols(); ++col) {
    view.widths[grid->GetColLabelValue(col).utf8_string()] = grid->GetColSize(col);
  }
  return view;
}

void RestoreView(wxGrid* grid, const GridView& view) {
  grid->BeginBatch();
  for (int col = 0; col < grid->GetNumberCols(); ++col) {
    const auto found = view.widths.find(grid->GetColLabelValue(col).utf8_string());
    if (found != view.widths.end()) grid->SetColSize(col, found->second);
  }
  if (view.cursorRow >= 0 && view.cursorRow < grid->GetNumberRows() && view.cursorCol >= 0 &&
      view.cursorCol < grid->GetNumberCols()) {
    grid->SetGridCursor(view.cursorRow, view.cursorCol);
  }
  // The scroll range is known only once the batch ends.
  grid->EndBatch();
  grid->Scroll(view.viewX, view.viewY);
}

void CopySelection(wxGrid* grid) {
  if (grid->GetNumberRows() == 0 || grid->GetNumberCols() == 0) return;
  // The rectangle around every selected block; the current cell when nothing is selected.
  int top = grid->GetNumberRows();
  int left = grid->GetNumberCols();
  int bottom = -1;
  int right = -1;
  for (const wxGridBlockCoords& block : grid->GetSelectedBlocks()) {
    top = std::min(top, block.GetTopRow());
    left = std::min(left, block.GetLeftCol());
    bottom = std::max(bottom, block.GetBottomRow());
    right = std::max(right, block.GetRightCol());
  }
  if (bottom < 0) {
    top = bottom = grid->GetGridCursorRow();
    left = right = grid->GetGridCursorCol();
    if (top < 0 || left < 0) return;
  }
  const long long cells = (static_cast<long long>(bottom) - top + 1) * (right - left + 1);
  if (cells > kMaxCopiedCells) {
    wxMessageBox(wxString::Format("The selection has %s cells, too many to copy; export the data "
                                  "instead.",
                                  FormatCount(cells)),
                 "Copy", wxOK | wxICON_INFORMATION, grid);
    return;
  }
  wxGridTableBase* table = grid->GetTable();
  wxString text;
  text.reserve(static_cast<std::size_t>(cells) * 8);
  for (int row = top; row <= bottom; ++row) {
    for (int col = left; col <= right; ++col) {
      if (col > left) text += '\t';
      if (grid->IsInSelection(row, col) || cells == 1) text += table->GetValue(row, col);
    }
    text += '\n';
  }
  if (wxTheClipboard->Open()) {
    wxTheClipboard->SetData(new wxTextDataObject(text));
    wxTheClipboard->Close();
  }
}

}  // namespace gridview

namespace {

// The cells of a dataset, read on demand: numbers formatted, string variables as their texts,
// missing values as a grey ".". The shape is fixed when the table is made; values are read live
// and anything outside the dataset's present shape shows empty.
class DatasetTable : public wxGridTableBase {
public:
  explicit DatasetTable(std::shared_ptr<Dataset> dataset) : m_dataset(std::move(dataset)) {
    const wxColour grey = wxSystemSettings::GetColour(wxSYS_COLOUR_GRAYTEXT);
    m_number = MakeAttr(wxALIGN_RIGHT, wxNullColour);
    m_text = MakeAttr(wxALIGN_LEFT, wxNullColour);
    m_missingNumber = MakeAttr(wxALIGN_RIGHT, grey);
    m_missingText = MakeAttr(wxALIGN_LEFT, grey);
    if (!m_dataset) return;
    m_rows = static_cast<int>(std::min<Eigen::Index>(m_dataset->NumberOfObservations(), INT_MAX));
    m_names = m_dataset->VariableNames();
    const DatasetStructure& structure = m_dataset->Structure();
    for (const std::string& name : m_names) {
      m_isString.push_back(m_dataset->IsStringVariable(name));
      wxString label = wxString::FromUTF8(name);
      if (structure.kind != DatasetKind::CrossSection && name == structure.timeVariable) {
        label += " (time)";
      } else if (structure.kind == DatasetKind::Panel && name == structure.groupVariable) {
        label += " (group)";
      }
      m_labels.push_back(label);
    }
  }
  ~DatasetTable() override {
    for (wxGridCellAttr* attr : {m_number, m_text, m_missingNumber, m_missingText}) attr->DecRef();
  }

  int GetNumberRows() override { return m_rows; }
  int GetNumberCols() override { return static_cast<int>(m_names.size()); }
  bool IsEmptyCell(int, int) override { return false; }
  void SetValue(int, int, const wxString&) override {}

  wxString GetValue(int row, int col) override {
    const Eigen::MatrixXd& data = m_dataset->Data();
    if (row >= data.rows() || col >= data.cols()) return {};
    const double value = data(row, col);
    if (std::isnan(value)) return ".";
    if (m_isString[static_cast<std::size_t>(col)]) {
      const auto& texts = m_dataset->Labels(m_names[static_cast<std::size_t>(col)]);
      const auto index = static_cast<std::size_t>(value) - 1;
      if (value >= 1 && index < texts.size()) return wxString::FromUTF8(texts[index]);
    }
    return wxString::FromAscii(FormatGridNumber(value).c_str());
  }

  wxString GetColLabelValue(int col) override { return m_labels[static_cast<std::size_t>(col)]; }

  bool CanHaveAttributes() override { return true; }
  wxGridCellAttr* GetAttr(int row, int col, wxGridCellAttr::wxAttrKind) override {
    const bool text = m_isString[static_cast<std::size_t>(col)];
    const Eigen::MatrixXd& data = m_dataset->Data();
    const bool missing = row < data.rows() && col < data.cols() && std::isnan(data(row, col));
    wxGridCellAttr* attr = missing ? (text ? m_missingText : m_missingNumber)
                                   : (text ? m_text : m_number);
    attr->IncRef();
    return attr;
  }

private:
  static wxGridCellAttr* MakeAttr(int align, const wxColour& colour) {
    auto* attr = new wxGridCellAttr;
    attr->SetAlignment(align, wxALIGN_CENTRE);
    attr->SetReadOnly();
    if (colour.IsOk()) attr->SetTextColour(colour);
    return attr;
  }

  std::shared_ptr<Dataset> m_dataset;
  int m_rows = 0;
  std::vector<std::string> m_names;
  std::vector<wxString> m_labels;
  std::vector<bool> m_isString;
  wxGridCellAttr* m_number;
  wxGridCellAttr* m_text;
  wxGridCellAttr* m_missingNumber;
  wxGridCellAttr* m_missingText;
};

}  // namespace

DataGrid::DataGrid(wxWindow* parent) : wxPanel(parent, wxID_ANY) {
  gridview::BuildViewer(this, "Dataset:", kDatasetChoiceId, m_choice, m_info, m_grid);
  m_grid->SetTable(new DatasetTable(nullptr), true, wxGrid::wxGridSelectCells);

  m_choice->Bind(wxEVT_CHOICE, [this](wxCommandEvent&) {
    m_chosen = m_choice->GetStringSelection().utf8_string();
    ShowChosen(false);
  });
  Update({});
}

void DataGrid::Update(const std::map<std::string, std::shared_ptr<Dataset>>& datasets) {
  std::vector<std::string> names;
  m_datasets.clear();
  for (const auto& [name, dataset] : datasets) {
    if (!dataset) continue;
    names.push_back(name);
    m_datasets[name] = dataset;
  }
  const std::string previous = m_chosen;
  m_chosen = gridview::ResetChoice(m_choice, names, m_chosen);
  ShowChosen(!m_chosen.empty() && m_chosen == previous);
}

void DataGrid::ShowChosen(bool keepView) {
  const auto found = m_datasets.find(m_chosen);
  std::shared_ptr<Dataset> dataset = found == m_datasets.end() ? nullptr : found->second.lock();
  const gridview::GridView view = gridview::SaveView(m_grid);
  m_grid->BeginBatch();
  m_grid->SetTable(new DatasetTable(dataset), true, wxGrid::wxGridSelectCells);
  gridview::FitColumns(m_grid);
  m_grid->EndBatch();
  if (keepView) gridview::RestoreView(m_grid, view);
  m_grid->ForceRefresh();

  if (!dataset) {
    m_info->SetLabel(m_datasets.empty() ? "No datasets in the workspace." : "");
  } else {
    const auto observations = dataset->NumberOfObservations();
    const auto variables = dataset->NumberOfVariables();
    m_info->SetLabel(wxString::Format("%s observation%s, %s variable%s; %s",
                                      FormatCount(observations), observations == 1 ? "" : "s",
                                      FormatCount(variables), variables == 1 ? "" : "s",
                                      wxString::FromUTF8(dataset->DescribeStructure())));
  }
  Layout();
}
