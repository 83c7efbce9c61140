// FrameDialogs: the dialogs of the main window's menus; each returns what the user chose.
#pragma once

#include <map>
#include <memory>
#include <string>

#include <wx/window.h>

#include "TavixSettings.h"

class Dataset;

// What the import dialog asks: the dataset's name and the delimiter as typed in a command.
struct ImportOptions {
  std::string name;
  std::string delimiterCode = "\",\"";
};

// A name for a dataset read from `path`: the file's stem made an identifier.
std::string DatasetNameFor(const wxString& path);
// Shows the file's first lines and asks for the name and the delimiter; false when cancelled.
bool AskImportOptions(wxWindow* parent, const wxString& path, ImportOptions& options);
// The statement of a linear model the user builds (variant 0 lm, 1 lm with a second list,
// 2 lm_re); empty when cancelled.
std::string AskLinearModel(wxWindow* parent, int variant,
                           const std::map<std::string, std::shared_ptr<Dataset>>& datasets);
// The nine preference flags; true when confirmed (the settings are then changed).
bool AskPreferences(wxWindow* parent, TavixSettings& settings);
// The seven directories of external programs; true when confirmed.
bool AskDirectories(wxWindow* parent, TavixSettings& settings);
void ShowAbout(wxWindow* parent);
