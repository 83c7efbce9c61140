// MatrixViewer: a read-only grid over one of the workspace's matrices, chosen from a list.
#pragma once

#include <map>
#include <memory>
#include <string>

#include <Eigen/Dense>
#include <wx/panel.h>

class wxChoice;
class wxGrid;
class wxStaticText;

// The id of the viewer's choice of matrix.
inline constexpr int kMatrixChoiceId = 6081;

// A choice of matrix above a virtual grid of its elements, read on demand from the matrix; rows
// and columns are numbered from 1, NaN shows as a grey "nan" as print shows it.
class MatrixGrid : public wxPanel {
public:
  // An empty viewer; Update fills it.
  explicit MatrixGrid(wxWindow* parent);
  // Offers `matrices`, keeps the chosen one when it still exists (else the first) and shows it
  // afresh, keeping the scroll position, cursor and column widths when it is the same matrix.
  void Update(const std::map<std::string, std::shared_ptr<Eigen::MatrixXd>>& matrices);

private:
  // Builds the grid's table over the chosen matrix.
  void ShowChosen(bool keepView);

  std::map<std::string, std::weak_ptr<Eigen::MatrixXd>> m_matrices;
  std::string m_chosen;
  wxChoice* m_choice;
  wxStaticText* m_info;
  wxGrid* m_grid;
};
