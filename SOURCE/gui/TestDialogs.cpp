// TestDialogs: parameter restrictions and model comparison, written as statements.
#include "TestDialogs.h"

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/checklst.h>
#include <wx/choice.h>
#include <wx/dialog.h>
#include <wx/msgdlg.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include "Model.h"

namespace {

wxArrayString Names(const std::map<std::string, std::shared_ptr<Model>>& models) {
  wxArrayString names;
  for (const auto& [name, model] : models) names.Add(wxString::FromUTF8(name));
  return names;
}

// The model's parameter labels on one line, as a reminder of what conditions may name.
wxString LabelsOf(const std::map<std::string, std::shared_ptr<Model>>& models, const wxString& name) {
  const auto it = models.find(name.utf8_string());
  if (it == models.end() || !it->second) return {};
  wxString text = "Parameters:";
  for (const auto& label : it->second->Labels()) text += " " + wxString::FromUTF8(label);
  return text;
}

}  // namespace

std::string AskParameterTest(wxWindow* parent, const std::map<std::string, std::shared_ptr<Model>>& models,
                             const std::string& selected) {
  if (models.empty()) {
    wxMessageBox("The workspace holds no model to test.", "Parameter Restrictions", wxOK | wxICON_INFORMATION, parent);
    return {};
  }
  wxDialog dialog(parent, wxID_ANY, "Parameter Restrictions");
  auto* sizer = new wxBoxSizer(wxVERTICAL);
  auto* choice = new wxChoice(&dialog, wxID_ANY, wxDefaultPosition, wxDefaultSize, Names(models));
  const int at = choice->FindString(wxString::FromUTF8(selected));
  choice->SetSelection(at == wxNOT_FOUND ? 0 : at);
  auto* labels = new wxStaticText(&dialog, wxID_ANY, LabelsOf(models, choice->GetStringSelection()));
  choice->Bind(wxEVT_CHOICE, [&](wxCommandEvent&) {
    labels->SetLabel(LabelsOf(models, choice->GetStringSelection()));
    dialog.Layout();
  });
  auto* conditions = new wxTextCtrl(&dialog, wxID_ANY, "", wxDefaultPosition, wxSize(460, -1));
  conditions->SetHint("y$x > 0, y$x + y$z < 1");
  sizer->Add(new wxStaticText(&dialog, wxID_ANY, "Model:"), 0, wxLEFT | wxRIGHT | wxTOP, 10);
  sizer->Add(choice, 0, wxEXPAND | wxLEFT | wxRIGHT, 10);
  sizer->Add(labels, 0, wxALL, 10);
  sizer->Add(new wxStaticText(&dialog, wxID_ANY, "Conditions, separated by commas (& and | combine them):"), 0,
             wxLEFT | wxRIGHT, 10);
  sizer->Add(conditions, 0, wxEXPAND | wxALL, 10);
  sizer->Add(dialog.CreateStdDialogButtonSizer(wxOK | wxCANCEL), 0, wxEXPAND | wxALL, 10);
  dialog.SetSizerAndFit(sizer);
  conditions->SetFocus();
  if (dialog.ShowModal() != wxID_OK) return {};
  const std::string typed = conditions->GetValue().Trim().Trim(false).utf8_string();
  if (typed.empty()) return {};
  return "test(" + typed + ", \"model\" = " + choice->GetStringSelection().utf8_string() + ");";
}

std::string AskModelComparison(wxWindow* parent, const std::map<std::string, std::shared_ptr<Model>>& models) {
  if (models.size() < 2) {
    wxMessageBox("Comparing models needs at least two models in the workspace.", "Model Comparison",
                 wxOK | wxICON_INFORMATION, parent);
    return {};
  }
  wxDialog dialog(parent, wxID_ANY, "Model Comparison");
  auto* sizer = new wxBoxSizer(wxVERTICAL);
  auto* list = new wxCheckListBox(&dialog, wxID_ANY, wxDefaultPosition, wxSize(300, 160), Names(models));
  for (unsigned i = 0; i < list->GetCount(); ++i) list->Check(i);
  auto* chib = new wxCheckBox(&dialog, wxID_ANY, "Also with Chib && Jeliazkov's log-marginal likelihoods");
  sizer->Add(new wxStaticText(&dialog, wxID_ANY, "Models to compare (equal prior probabilities):"), 0,
             wxLEFT | wxRIGHT | wxTOP, 10);
  sizer->Add(list, 1, wxEXPAND | wxALL, 10);
  sizer->Add(chib, 0, wxLEFT | wxRIGHT, 10);
  sizer->Add(dialog.CreateStdDialogButtonSizer(wxOK | wxCANCEL), 0, wxEXPAND | wxALL, 10);
  dialog.SetSizerAndFit(sizer);
  if (dialog.ShowModal() != wxID_OK) return {};
  std::string listed;
  for (unsigned i = 0; i < list->GetCount(); ++i) {
    if (list->IsChecked(i)) listed += (listed.empty() ? "" : ", ") + list->GetString(i).utf8_string();
  }
  if (listed.empty()) return {};
  return "pmp({" + listed + "}" + (chib->GetValue() ? ", \"logML_CJ\" = true" : "") + ");";
}
