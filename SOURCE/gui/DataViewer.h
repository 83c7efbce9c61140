// DataViewer: a read-only grid over one of the workspace's datasets, and what it shares with the
// matrix viewer (number format, grid set-up, copying).
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <wx/panel.h>

class Dataset;
class wxChoice;
class wxGrid;
class wxStaticText;

// The id of the viewer's choice of dataset.
inline constexpr int kDatasetChoiceId = 6079;

// A number as the viewers and panes show it, the same in every locale: an integer below 1e15 in
// magnitude without decimals ("-12"), others with up to six significant digits ("0.333333",
// "1.5e+07"); "inf" and "-inf"; "" for NaN, which each caller shows in its own way.
std::string FormatGridNumber(double value);

// A count with its thousands grouped by commas ("1,000,000"), the same in every locale.
std::string FormatCount(long long count);

namespace gridview {

// Lays out a viewer: `label`, a choice (`choiceId`) and an information text on one line above a
// read-only grid.
void BuildViewer(wxPanel* panel, const wxString& label, int choiceId, wxChoice*& choice, wxStaticText*& info,
                 wxGrid*& grid);
// A grid for the viewers: read-only, no row resizing, no text overflowing into neighbours, and
// Ctrl+C copying the selection.
wxGrid* CreateReadOnlyGrid(wxWindow* parent);
// Fills `choice` with `names` (only when they changed) and selects `keep` when it is among them,
// else the first; returns the selected name, "" when there is none.
std::string ResetChoice(wxChoice* choice, const std::vector<std::string>& names,
                        const std::string& keep);
// Sizes the row labels to the widest row number and each column to its label and the values of
// its first rows, without reading the rest of the table.
void FitColumns(wxGrid* grid);
// What the user arranged in a grid, kept across a change of its table.
struct GridView {
  int viewX = 0;
  int viewY = 0;
  int cursorRow = -1;
  int cursorCol = -1;
  std::map<std::string, int> widths;  // by column label
};
// Records the scroll position, the cursor and the column widths of `grid`.
GridView SaveView(wxGrid* grid);
// Restores what SaveView recorded, for the rows and columns the new table still has.
void RestoreView(wxGrid* grid, const GridView& view);
// Copies the selected cells, or the current one, to the clipboard as tab-separated lines.
void CopySelection(wxGrid* grid);

}  // namespace gridview

// A choice of dataset above a virtual grid of its values: the grid reads cells on demand from
// the dataset, so that a million observations open at once. Variables are columns (the time and
// group variables of a structure marked), observations rows; missing values show as a grey ".".
class DataGrid : public wxPanel {
public:
  // An empty viewer; Update fills it.
  explicit DataGrid(wxWindow* parent);
  // Offers `datasets`, keeps the chosen one when it still exists (else the first) and shows it
  // afresh, keeping the scroll position, cursor and column widths when it is the same dataset.
  void Update(const std::map<std::string, std::shared_ptr<Dataset>>& datasets);

private:
  // Builds the grid's table over the chosen dataset.
  void ShowChosen(bool keepView);

  std::map<std::string, std::weak_ptr<Dataset>> m_datasets;
  std::string m_chosen;
  wxChoice* m_choice;
  wxStaticText* m_info;
  wxGrid* m_grid;
};
