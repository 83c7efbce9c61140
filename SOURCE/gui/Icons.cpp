// Icons: PNG files with a fallback to the toolkit's own art.
#include "Icons.h"

#include <filesystem>

#include <wx/image.h>

std::string IconFolder(const std::string& programDirectory) {
  return (std::filesystem::path(programDirectory) / "System Files" / "Icons").string();
}

wxBitmap ToolIcon(const std::string& folder, const std::string& file, const wxArtID& fallback) {
  const std::string path = (std::filesystem::path(folder) / file).string();
  wxImage image;
  if (std::filesystem::exists(path) && image.LoadFile(wxString::FromUTF8(path), wxBITMAP_TYPE_PNG)) {
    return wxBitmap(image);
  }
  return wxArtProvider::GetBitmap(fallback, wxART_TOOLBAR, wxSize(24, 24));
}

wxIconBundle LogoBundle(const std::string& folder) {
  wxIconBundle bundle;
  for (int size : {16, 32, 48, 64, 128, 256}) {
    const std::string path = (std::filesystem::path(folder) / ("Logo" + std::to_string(size) + ".png")).string();
    if (std::filesystem::exists(path)) bundle.AddIcon(wxString::FromUTF8(path), wxBITMAP_TYPE_PNG);
  }
  return bundle;
}
