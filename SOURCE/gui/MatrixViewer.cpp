// MatrixViewer: the matrix viewer's virtual table and panel.
#include "MatrixViewer.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <vector>

#include <wx/choice.h>
#include <wx/grid.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include "DataViewer.h"

namespace {

// The elements of a matrix, read on demand and formatted; NaN as a grey "nan". The shape is
// fixed when the table is made; elements outside the matrix's present shape show empty.
class MatrixTable : public wxGridTableBase {
public:
  explicit MatrixTable(std::shared_ptr<Eigen::MatrixXd> matrix) : m_matrix(std::move(matrix)) {
    m_number = new wxGridCellAttr;
    m_number->SetAlignment(wxALIGN_RIGHT, wxALIGN_CENTRE);
    m_number->SetReadOnly();
    m_missing = new wxGridCellAttr;
    m_missing->SetAlignment(wxALIGN_RIGHT, wxALIGN_CENTRE);
    m_missing->SetReadOnly();
    m_missing->SetTextColour(wxSystemSettings::GetColour(wxSYS_COLOUR_GRAYTEXT));
    if (!m_matrix) return;
    m_rows = static_cast<int>(std::min<Eigen::Index>(m_matrix->rows(), INT_MAX));
    m_cols = static_cast<int>(std::min<Eigen::Index>(m_matrix->cols(), INT_MAX));
  }
  ~MatrixTable() override {
    m_number->DecRef();
    m_missing->DecRef();
  }

  int GetNumberRows() override { return m_rows; }
  int GetNumberCols() override { return m_cols; }
  bool IsEmptyCell(int, int) override { return false; }
  void SetValue(int, int, const wxString&) override {}

  wxString GetValue(int row, int col) override {
    if (row >= m_matrix->rows() || col >= m_matrix->cols()) return {};
    const double value = (*m_matrix)(row, col);
    if (std::isnan(value)) return "nan";
    return wxString::FromAscii(FormatGridNumber(value).c_str());
  }

  wxString GetColLabelValue(int col) override { return wxString::Format("%d", col + 1); }

  bool CanHaveAttributes() override { return true; }
  wxGridCellAttr* GetAttr(int row, int col, wxGridCellAttr::wxAttrKind) override {
    const bool missing = row < m_matrix->rows() && col < m_matrix->cols() &&
                         std::isnan((*m_matrix)(row, col));
    wxGridCellAttr* attr = missing ? m_missing : m_number;
    attr->IncRef();
    return attr;
  }

private:
  std::shared_ptr<Eigen::MatrixXd> m_matrix;
  int m_rows = 0;
  int m_cols = 0;
  wxGridCellAttr* m_number;
  wxGridCellAttr* m_missing;
};

}  // namespace

MatrixGrid::MatrixGrid(wxWindow* parent) : wxPanel(parent, wxID_ANY) {
  gridview::BuildViewer(this, "Matrix:", kMatrixChoiceId, m_choice, m_info, m_grid);
  m_grid->SetTable(new MatrixTable(nullptr), true, wxGrid::wxGridSelectCells);

  m_choice->Bind(wxEVT_CHOICE, [this](wxCommandEvent&) {
    m_chosen = m_choice->GetStringSelection().utf8_string();
    ShowChosen(false);
  });
  Update({});
}

void MatrixGrid::Update(const std::map<std::string, std::shared_ptr<Eigen::MatrixXd>>& matrices) {
  std::vector<std::string> names;
  m_matrices.clear();
  for (const auto& [name, matrix] : matrices) {
    if (!matrix) continue;
    names.push_back(name);
    m_matrices[name] = matrix;
  }
  const std::string previous = m_chosen;
  m_chosen = gridview::ResetChoice(m_choice, names, m_chosen);
  ShowChosen(!m_chosen.empty() && m_chosen == previous);
}

void MatrixGrid::ShowChosen(bool keepView) {
  const auto found = m_matrices.find(m_chosen);
  std::shared_ptr<Eigen::MatrixXd> matrix =
      found == m_matrices.end() ? nullptr : found->second.lock();
  const gridview::GridView view = gridview::SaveView(m_grid);
  m_grid->BeginBatch();
  m_grid->SetTable(new MatrixTable(matrix), true, wxGrid::wxGridSelectCells);
  gridview::FitColumns(m_grid);
  m_grid->EndBatch();
  if (keepView) gridview::RestoreView(m_grid, view);
  m_grid->ForceRefresh();

  if (!matrix) {
    m_info->SetLabel(m_matrices.empty() ? "No matrices in the workspace." : "");
  } else {
    m_info->SetLabel(wxString::Format("%lld %s %lld", static_cast<long long>(matrix->rows()),
                                      wxString::FromUTF8("\u00d7"),
                                      static_cast<long long>(matrix->cols())));
  }
  Layout();
}
