// TavixApp: the application object and the start of the window front end.
#include "TavixApp.h"

#include <wx/app.h>
#include <wx/image.h>

#include "TavixFrame.h"

namespace {

std::string g_programDirectory;

class TavixApp : public wxApp {
public:
  bool OnInit() override {
    SetAppName("Tavix");
    wxImage::AddHandler(new wxPNGHandler);
    auto* frame = new TavixFrame(nullptr, g_programDirectory);
    frame->Show();
    return true;
  }
};

}  // namespace

wxIMPLEMENT_APP_NO_MAIN(TavixApp);

int RunGui(int argc, char** argv, const std::string& programDirectory) {
  g_programDirectory = programDirectory;
  return wxEntry(argc, argv);
}
