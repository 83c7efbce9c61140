// FigureWindow: a window showing one figure, redrawn at its size, with an export tool.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <wx/bitmap.h>
#include <wx/frame.h>

#include "Figure.h"

class FigureWindow : public wxFrame {
public:
  struct Callbacks {
    // Run a command as though typed (the export tool writes an export statement).
    std::function<void(const std::string& code)> run;
    // The user closed the window.
    std::function<void(const std::string& title)> closed;
  };
  FigureWindow(wxWindow* parent, std::shared_ptr<const Figure> figure, Callbacks callbacks);

  // Shows new content (the same title).
  void SetFigure(std::shared_ptr<const Figure> figure);
  const std::string& Title() const { return m_figure->title; }
  // The picture as last drawn (for tests).
  const wxBitmap& Picture() const { return m_picture; }

private:
  void OnPaint(wxPaintEvent& event);
  void OnExport(wxCommandEvent& event);
  void Redraw();

  std::shared_ptr<const Figure> m_figure;
  Callbacks m_callbacks;
  wxWindow* m_canvas;
  wxBitmap m_picture;
  wxSize m_drawnSize;
};
