// FigureWindow: the figure drawn into an image at the window's size by the renderer.
#include "FigureWindow.h"

#include <vector>

#include <wx/artprov.h>
#include <wx/dcbuffer.h>
#include <wx/filedlg.h>
#include <wx/sizer.h>
#include <wx/toolbar.h>

#include "PlotRenderer.h"

namespace {
const int kExportId = wxWindow::NewControlId();
}

FigureWindow::FigureWindow(wxWindow* parent, std::shared_ptr<const Figure> figure, Callbacks callbacks)
    : wxFrame(parent, wxID_ANY, wxString::FromUTF8(figure->title), wxDefaultPosition, wxSize(720, 540),
              wxDEFAULT_FRAME_STYLE | wxFRAME_FLOAT_ON_PARENT),
      m_figure(std::move(figure)), m_callbacks(std::move(callbacks)) {
  auto* tools = CreateToolBar(wxTB_HORIZONTAL | wxTB_FLAT | wxTB_TEXT);
  tools->AddTool(kExportId, "Export", wxArtProvider::GetBitmap(wxART_FILE_SAVE_AS, wxART_TOOLBAR),
                 "Export the figure (PNG, JPEG, SVG, EPS or PDF)");
  tools->Realize();
  Bind(wxEVT_TOOL, &FigureWindow::OnExport, this, kExportId);

  m_canvas = new wxWindow(this, wxID_ANY);
  m_canvas->SetBackgroundStyle(wxBG_STYLE_PAINT);
  m_canvas->Bind(wxEVT_PAINT, &FigureWindow::OnPaint, this);
  m_canvas->Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
    m_canvas->Refresh();
    event.Skip();
  });
  Bind(wxEVT_CLOSE_WINDOW, [this](wxCloseEvent& event) {
    if (m_callbacks.closed) m_callbacks.closed(m_figure->title);
    event.Skip();
  });
}

void FigureWindow::SetFigure(std::shared_ptr<const Figure> figure) {
  m_figure = std::move(figure);
  m_drawnSize = wxSize();
  m_canvas->Refresh();
}

void FigureWindow::Redraw() {
  const wxSize size = m_canvas->GetClientSize();
  if (size.x < 20 || size.y < 20) return;
  std::vector<unsigned char> rgb;
  if (!RenderFigureToRGB(*m_figure, size.x, size.y, rgb).empty()) return;
  // wxImage takes ownership of a malloc'd buffer.
  auto* data = static_cast<unsigned char*>(malloc(rgb.size()));
  std::copy(rgb.begin(), rgb.end(), data);
  m_picture = wxBitmap(wxImage(size.x, size.y, data, false));
  m_drawnSize = size;
}

void FigureWindow::OnPaint(wxPaintEvent&) {
  wxAutoBufferedPaintDC dc(m_canvas);
  if (m_canvas->GetClientSize() != m_drawnSize) Redraw();
  dc.SetBackground(*wxWHITE_BRUSH);
  dc.Clear();
  if (m_picture.IsOk()) dc.DrawBitmap(m_picture, 0, 0);
}

void FigureWindow::OnExport(wxCommandEvent&) {
  wxFileDialog save(this, "Export " + wxString::FromUTF8(m_figure->title), wxEmptyString, "figure.png",
                    "PNG image (*.png)|*.png|JPEG image (*.jpeg)|*.jpeg|SVG drawing (*.svg)|*.svg|"
                    "EPS drawing (*.eps)|*.eps|PDF document (*.pdf)|*.pdf",
                    wxFD_SAVE | wxFD_OVERWRITE_PROMPT);
  if (save.ShowModal() != wxID_OK || !m_callbacks.run) return;
  const wxSize size = m_canvas->GetClientSize();
  m_callbacks.run("export(\"" + m_figure->title + "\", \"" + save.GetPath().utf8_string() + "\", \"width\" = " +
                  std::to_string(size.x) + ", \"height\" = " + std::to_string(size.y) + ");");
}
