// Icons: the tool-bar icons and the logo, read from the program's icon folder.
#pragma once

#include <string>

#include <wx/artprov.h>
#include <wx/bitmap.h>
#include <wx/iconbndl.h>

// "System Files/Icons" beside the executable.
std::string IconFolder(const std::string& programDirectory);
// The PNG `file` of the folder, or the toolkit's `fallback` art when it is missing.
wxBitmap ToolIcon(const std::string& folder, const std::string& file, const wxArtID& fallback);
// The logo in every size the folder has ("Logo16.png" to "Logo256.png").
wxIconBundle LogoBundle(const std::string& folder);
