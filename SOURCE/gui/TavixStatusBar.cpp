// TavixStatusBar: fields and the gauge kept in place on resizing.
#include "TavixStatusBar.h"

TavixStatusBar::TavixStatusBar(wxWindow* parent) : wxStatusBar(parent, wxID_ANY) {
  const int widths[] = {-3, -1, 180};
  SetFieldsCount(3, widths);
  m_gauge = new wxGauge(this, wxID_ANY, 100, wxDefaultPosition, wxDefaultSize, wxGA_HORIZONTAL | wxGA_SMOOTH);
  m_gauge->Hide();
  Bind(wxEVT_SIZE, &TavixStatusBar::OnSize, this);
}

void TavixStatusBar::PlaceGauge() {
  wxRect field;
  if (GetFieldRect(2, field)) m_gauge->SetSize(field.Deflate(2));
}

void TavixStatusBar::OnSize(wxSizeEvent& event) {
  PlaceGauge();
  event.Skip();
}

void TavixStatusBar::ShowGauge() {
  PlaceGauge();
  m_gauge->SetValue(0);
  m_gauge->Show();
}

void TavixStatusBar::SetGaugeValue(int value) {
  if (!m_gauge->IsShown()) ShowGauge();
  m_gauge->SetValue(std::max(0, std::min(100, value)));
}

void TavixStatusBar::HideGauge() {
  m_gauge->SetValue(0);
  m_gauge->Hide();
  SetStatusText(wxEmptyString, 1);
}
