// The tavix executable: without arguments the window; `tavix script.tvx` runs a script headless;
// `tavix --terminal` is a console in the terminal.
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>

#include "BatchRunner.h"
#include "ConsoleSink.h"
#include "FigureExport.h"
#ifdef TAVIX_WITH_GUI
#include "TavixApp.h"
#endif
#include "TerminalConsole.h"

namespace {

// The directory of the executable, absolute and normalised.
std::string ProgramDirectory(const char* argv0) {
  std::error_code error;
  std::filesystem::path exe = std::filesystem::canonical("/proc/self/exe", error);
  if (error) exe = std::filesystem::absolute(argv0, error).lexically_normal();
  return exe.parent_path().string();
}

}  // namespace

int main(int argc, char** argv) {
  const std::string programDirectory = ProgramDirectory(argv[0]);
  if (argc < 2) {
#ifdef TAVIX_WITH_GUI
    return RunGui(argc, argv, programDirectory);
#else
    std::cout << "This build of Tavix has no window: run \"tavix script.tvx\" or \"tavix --terminal\".\n";
    return 2;
#endif
  }
  if (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0) {
    std::cout << "Usage: tavix                 opens the window\n"
                 "       tavix script.tvx      runs the script without a window and prints its output\n"
                 "       tavix --terminal      a console in the terminal\n";
    return 0;
  }
  Session session;
  session.dispatcher = EventDispatcher(std::make_shared<ConsoleSink>());
  // Without windows, figures still exist and can be exported.
  session.exportFigure = FileFigureExporter();
  if (std::strcmp(argv[1], "--terminal") == 0) return RunTerminalConsole(session, programDirectory);
  // A batch run never starts the window toolkit.
  InitializeBatch(session, programDirectory);
  InstallInterruptHandler(session);
  return RunBatchScript(session, argv[1]);
}
