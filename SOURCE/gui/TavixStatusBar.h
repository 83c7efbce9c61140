// TavixStatusBar: the working directory on the left, a progress gauge with its message on the right.
#pragma once

#include <wx/gauge.h>
#include <wx/statusbr.h>

class TavixStatusBar : public wxStatusBar {
public:
  explicit TavixStatusBar(wxWindow* parent);
  void SetDirectory(const wxString& directory) { SetStatusText(directory, 0); }
  void ShowGauge();
  void SetGaugeValue(int value);
  void SetGaugeMessage(const wxString& message) { SetStatusText(message, 1); }
  void HideGauge();
  bool GaugeShown() const { return m_gauge->IsShown(); }
  int GaugeValue() const { return m_gauge->GetValue(); }

private:
  void OnSize(wxSizeEvent& event);
  void PlaceGauge();
  wxGauge* m_gauge;
};
