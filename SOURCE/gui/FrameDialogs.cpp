// FrameDialogs: import options, the linear-model builder, preferences, directories, about.
#include "FrameDialogs.h"

#include <cctype>
#include <filesystem>
#include <fstream>

#include <wx/aboutdlg.h>
#include <wx/checkbox.h>
#include <wx/checklst.h>
#include <wx/choice.h>
#include <wx/dialog.h>
#include <wx/filepicker.h>
#include <wx/msgdlg.h>
#include <wx/sizer.h>
#include <wx/spinctrl.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include "Dataset.h"
#include "SystemGlobals.h"

namespace {

wxStaticText* Label(wxWindow* parent, const wxString& text) { return new wxStaticText(parent, wxID_ANY, text); }

}  // namespace

std::string DatasetNameFor(const wxString& path) {
  std::string stem = std::filesystem::path(path.utf8_string()).stem().string();
  std::string name;
  for (char c : stem) name += (std::isalnum(static_cast<unsigned char>(c)) || c == '_') ? c : '_';
  if (name.empty() || std::isdigit(static_cast<unsigned char>(name[0]))) name = "data_" + name;
  return name;
}

bool AskImportOptions(wxWindow* parent, const wxString& path, ImportOptions& options) {
  wxDialog dialog(parent, wxID_ANY, "Import Data", wxDefaultPosition, wxDefaultSize,
                  wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER);
  auto* grid = new wxFlexGridSizer(2, 8, 8);
  grid->AddGrowableCol(1);
  auto* name = new wxTextCtrl(&dialog, wxID_ANY, wxString::FromUTF8(options.name));
  const wxString delimiters[] = {"Comma ( , )", "Semicolon ( ; )", "Tab"};
  auto* delimiter = new wxChoice(&dialog, wxID_ANY, wxDefaultPosition, wxDefaultSize, 3, delimiters);
  std::ifstream in(path.utf8_string());
  std::string preview, line;
  for (int i = 0; i < 8 && std::getline(in, line); ++i) preview += line.substr(0, 200) + "\n";
  delimiter->SetSelection(preview.find('\t') != std::string::npos && preview.find(',') == std::string::npos ? 2
                          : preview.find(';') != std::string::npos && preview.find(',') == std::string::npos ? 1
                                                                                                             : 0);
  grid->Add(Label(&dialog, "Dataset name:"), 0, wxALIGN_CENTER_VERTICAL);
  grid->Add(name, 1, wxEXPAND);
  grid->Add(Label(&dialog, "Delimiter:"), 0, wxALIGN_CENTER_VERTICAL);
  grid->Add(delimiter, 1, wxEXPAND);
  auto* shown = new wxTextCtrl(&dialog, wxID_ANY, wxString::FromUTF8(preview), wxDefaultPosition, wxSize(520, 160),
                               wxTE_MULTILINE | wxTE_READONLY | wxTE_DONTWRAP);
  shown->SetFont(wxFont(wxFontInfo(9).Family(wxFONTFAMILY_TELETYPE)));
  auto* sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(grid, 0, wxEXPAND | wxALL, 10);
  sizer->Add(Label(&dialog, "First lines of " + path + ":"), 0, wxLEFT | wxRIGHT, 10);
  sizer->Add(shown, 1, wxEXPAND | wxALL, 10);
  sizer->Add(dialog.CreateSeparatedButtonSizer(wxOK | wxCANCEL), 0, wxEXPAND | wxALL, 10);
  dialog.SetSizerAndFit(sizer);
  for (;;) {
    if (dialog.ShowModal() != wxID_OK) return false;
    const std::string chosen = name->GetValue().utf8_string();
    bool valid = !chosen.empty() && (std::isalpha(static_cast<unsigned char>(chosen[0])) || chosen[0] == '_');
    for (char c : chosen) valid = valid && (std::isalnum(static_cast<unsigned char>(c)) || c == '_');
    if (!valid) {
      wxMessageBox("A dataset name starts with a letter and holds letters, digits and \"_\".", "Import Data",
                   wxOK | wxICON_EXCLAMATION, &dialog);
      continue;
    }
    options.name = chosen;
    static const char* const kCodes[] = {"\",\"", "\";\"", "\"\\t\""};
    options.delimiterCode = kCodes[delimiter->GetSelection()];
    return true;
  }
}

std::string AskLinearModel(wxWindow* parent, int variant,
                           const std::map<std::string, std::shared_ptr<Dataset>>& datasets) {
  static const char* const kTitles[] = {"Linear model", "Heteroskedastic linear model",
                                        "Random effects linear model"};
  const wxString title = kTitles[std::clamp(variant, 0, 2)];
  if (datasets.empty()) {
    wxMessageBox("The current workspace does not contain any datasets.", title, wxOK | wxICON_INFORMATION, parent);
    return {};
  }
  wxDialog dialog(parent, wxID_ANY, title, wxDefaultPosition, wxDefaultSize, wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER);
  wxArrayString datasetNames;
  for (const auto& [n, d] : datasets) datasetNames.Add(wxString::FromUTF8(n));
  auto* datasetChoice = new wxChoice(&dialog, wxID_ANY, wxDefaultPosition, wxDefaultSize, datasetNames);
  datasetChoice->SetSelection(0);
  auto* dependent = new wxChoice(&dialog, wxID_ANY);
  auto* regressors = new wxCheckListBox(&dialog, wxID_ANY, wxDefaultPosition, wxSize(220, 200));
  auto* second = new wxCheckListBox(&dialog, wxID_ANY, wxDefaultPosition, wxSize(220, 200));
  auto* modelName = new wxTextCtrl(&dialog, wxID_ANY, "m");
  auto* chains = new wxSpinCtrl(&dialog, wxID_ANY, "1", wxDefaultPosition, wxDefaultSize, wxSP_ARROW_KEYS, 1, 64, 1);
  auto* draws = new wxSpinCtrl(&dialog, wxID_ANY, "20000", wxDefaultPosition, wxDefaultSize, wxSP_ARROW_KEYS, 1,
                               100000000, 20000);
  auto* burnin = new wxSpinCtrl(&dialog, wxID_ANY, "10000", wxDefaultPosition, wxDefaultSize, wxSP_ARROW_KEYS, 1,
                                100000000, 10000);
  auto fill = [&] {
    const auto& d = *datasets.at(datasetChoice->GetStringSelection().utf8_string());
    wxArrayString variables;
    variables.Add("constant");
    for (const auto& v : d.VariableNames()) {
      if (!d.IsStringVariable(v)) variables.Add(wxString::FromUTF8(v));
    }
    dependent->Set(variables);
    dependent->SetSelection(variables.size() > 1 ? 1 : 0);
    regressors->Set(variables);
    regressors->Check(0);
    second->Set(variables);
    second->Check(0);
  };
  fill();
  datasetChoice->Bind(wxEVT_CHOICE, [&](wxCommandEvent&) { fill(); });

  auto* grid = new wxFlexGridSizer(2, 8, 8);
  grid->Add(Label(&dialog, "Dataset:"), 0, wxALIGN_CENTER_VERTICAL);
  grid->Add(datasetChoice, 1, wxEXPAND);
  grid->Add(Label(&dialog, "Dependent variable:"), 0, wxALIGN_CENTER_VERTICAL);
  grid->Add(dependent, 1, wxEXPAND);
  grid->Add(Label(&dialog, "Store the model as:"), 0, wxALIGN_CENTER_VERTICAL);
  grid->Add(modelName, 1, wxEXPAND);
  grid->Add(Label(&dialog, "Chains:"), 0, wxALIGN_CENTER_VERTICAL);
  grid->Add(chains, 1, wxEXPAND);
  grid->Add(Label(&dialog, "Draws:"), 0, wxALIGN_CENTER_VERTICAL);
  grid->Add(draws, 1, wxEXPAND);
  grid->Add(Label(&dialog, "Burn-in:"), 0, wxALIGN_CENTER_VERTICAL);
  grid->Add(burnin, 1, wxEXPAND);
  auto* lists = new wxBoxSizer(wxHORIZONTAL);
  auto* left = new wxBoxSizer(wxVERTICAL);
  left->Add(Label(&dialog, "Regressors:"));
  left->Add(regressors, 1, wxEXPAND | wxTOP, 4);
  lists->Add(left, 1, wxEXPAND);
  if (variant == 1) {
    auto* right = new wxBoxSizer(wxVERTICAL);
    right->Add(Label(&dialog, "Variables of the error precision:"));
    right->Add(second, 1, wxEXPAND | wxTOP, 4);
    lists->Add(right, 1, wxEXPAND | wxLEFT, 10);
  } else {
    second->Hide();
  }
  auto* sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(grid, 0, wxEXPAND | wxALL, 10);
  sizer->Add(lists, 1, wxEXPAND | wxLEFT | wxRIGHT, 10);
  sizer->Add(dialog.CreateSeparatedButtonSizer(wxOK | wxCANCEL), 0, wxEXPAND | wxALL, 10);
  dialog.SetSizerAndFit(sizer);
  for (;;) {
    if (dialog.ShowModal() != wxID_OK) return {};
    auto checked = [](wxCheckListBox* list) {
      std::string names;
      for (unsigned i = 0; i < list->GetCount(); ++i) {
        if (list->IsChecked(i)) names += (names.empty() ? "" : " ") + list->GetString(i).utf8_string();
      }
      return names;
    };
    const std::string x = checked(regressors);
    const std::string z = variant == 1 ? checked(second) : std::string();
    if (x.empty() || (variant == 1 && z.empty())) {
      wxMessageBox("Choose at least one variable for each list.", title, wxOK | wxICON_EXCLAMATION, &dialog);
      continue;
    }
    std::string code = modelName->GetValue().utf8_string();
    code += (code.empty() ? "" : " = ") + std::string(variant == 2 ? "lm_re(" : "lm(") +
            dependent->GetStringSelection().utf8_string() + " ~ " + x + (z.empty() ? "" : " | " + z);
    code += ", \"dataset\" = " + datasetChoice->GetStringSelection().utf8_string();
    if (chains->GetValue() != 1) code += ", \"chains\" = " + std::to_string(chains->GetValue());
    if (draws->GetValue() != 20000) code += ", \"draws\" = " + std::to_string(draws->GetValue());
    if (burnin->GetValue() != 10000) code += ", \"burnin\" = " + std::to_string(burnin->GetValue());
    return code + ");";
  }
}

bool AskPreferences(wxWindow* parent, TavixSettings& settings) {
  static const char* const kLabels[TavixSettings::FlagCount] = {
      "Prompt to save the workspace on exit", "Prompt to save scripts on exit",
      "Change the working directory on importing data", "Change the working directory on exporting",
      "Change the working directory on loading a workspace", "Change the working directory on saving a workspace",
      "Change the working directory on loading a script", "Change the working directory on saving a script",
      "Show help on startup"};
  wxDialog dialog(parent, wxID_ANY, "Preferences");
  auto* sizer = new wxBoxSizer(wxVERTICAL);
  std::array<wxCheckBox*, TavixSettings::FlagCount> boxes{};
  for (int i = 0; i < TavixSettings::FlagCount; ++i) {
    boxes[i] = new wxCheckBox(&dialog, wxID_ANY, kLabels[i]);
    boxes[i]->SetValue(settings.flags[i]);
    sizer->Add(boxes[i], 0, wxLEFT | wxRIGHT | wxTOP, 10);
  }
  sizer->Add(dialog.CreateSeparatedButtonSizer(wxOK | wxCANCEL), 0, wxEXPAND | wxALL, 10);
  dialog.SetSizerAndFit(sizer);
  if (dialog.ShowModal() != wxID_OK) return false;
  for (int i = 0; i < TavixSettings::FlagCount; ++i) settings.flags[i] = boxes[i]->GetValue();
  return true;
}

bool AskDirectories(wxWindow* parent, TavixSettings& settings) {
  std::string* directories[] = {&settings.directoryJAGS,   &settings.directoryBUGS,   &settings.directorySTAN,
                                &settings.directoryR,      &settings.directoryOCTAVE, &settings.directoryMATLAB,
                                &settings.directorySTATA};
  static const char* const kNames[] = {"JAGS", "OpenBUGS", "Stan", "R", "GNU Octave", "MATLAB", "Stata"};
  wxDialog dialog(parent, wxID_ANY, "External Binaries", wxDefaultPosition, wxDefaultSize,
                  wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER);
  auto* grid = new wxFlexGridSizer(2, 8, 8);
  grid->AddGrowableCol(1);
  std::array<wxDirPickerCtrl*, 7> pickers{};
  for (int i = 0; i < 7; ++i) {
    const std::string& value = *directories[i];
    const bool unset = value == Tavix_SYSTEM_NAMESPACE::DEFAULT_STRING;
    pickers[i] = new wxDirPickerCtrl(&dialog, wxID_ANY, unset ? wxString() : wxString::FromUTF8(value),
                                     wxString("Folder of ") + kNames[i], wxDefaultPosition, wxSize(380, -1),
                                     wxDIRP_USE_TEXTCTRL | wxDIRP_DIR_MUST_EXIST);
    grid->Add(Label(&dialog, wxString(kNames[i]) + ":"), 0, wxALIGN_CENTER_VERTICAL);
    grid->Add(pickers[i], 1, wxEXPAND);
  }
  auto* sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(Label(&dialog, "Folders holding the programs Tavix can run (leave empty when not installed):"), 0,
             wxALL, 10);
  sizer->Add(grid, 1, wxEXPAND | wxLEFT | wxRIGHT, 10);
  sizer->Add(dialog.CreateSeparatedButtonSizer(wxOK | wxCANCEL), 0, wxEXPAND | wxALL, 10);
  dialog.SetSizerAndFit(sizer);
  if (dialog.ShowModal() != wxID_OK) return false;
  for (int i = 0; i < 7; ++i) {
    const std::string chosen = pickers[i]->GetPath().utf8_string();
    *directories[i] = chosen.empty() ? Tavix_SYSTEM_NAMESPACE::DEFAULT_STRING : chosen;
  }
  return true;
}

void ShowAbout(wxWindow* parent) {
  wxAboutDialogInfo info;
  info.SetName("Tavix");
  info.SetVersion("0.1");
  info.SetDescription("A desktop environment for Bayesian econometrics:\na matrix language, datasets, and models "
                      "estimated by Markov chain Monte Carlo.");
  wxAboutBox(info, parent);
}
