// TavixFrame: reading and writing the settings file "Tavix.init".
#include <filesystem>

#include <wx/msgdlg.h>

#include "TavixFrame.h"

namespace fs = std::filesystem;

std::string TavixFrame::SettingsFolder() const { return TavixSettings::Folder(m_programDirectory); }

void TavixFrame::Initialize(const std::string& directory) {
  const std::string file = (fs::path(directory) / "Tavix.init").string();
  if (!m_settings.Read(file)) {
    wxMessageBox("The initialization file could not be found.\nSome aspects of the program may not "
                 "function properly.",
                 "Warning", wxOK | wxICON_EXCLAMATION, this);
  }
  m_settings.ApplyToGlobals();
  std::error_code error;
  if (!m_settings.lastWorkingDirectory.empty() && fs::is_directory(m_settings.lastWorkingDirectory, error)) {
    fs::current_path(m_settings.lastWorkingDirectory, error);
  }
}

void TavixFrame::Finalize() {
  std::error_code error;
  m_settings.lastWorkingDirectory = fs::current_path(error).string();
  m_settings.Write((fs::path(SettingsFolder()) / "Tavix.init").string());
}
