// The tavix executable: `tavix script.tvx` runs a script headless.
#include <filesystem>
#include <iostream>
#include <memory>

#include "BatchRunner.h"
#include "ConsoleSink.h"

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
  if (argc < 2) {
    std::cout << "Usage: tavix script.tvx\n"
                 "Runs the script without a window and prints its output.\n";
    return 2;
  }
  Session session;
  session.dispatcher = EventDispatcher(std::make_shared<ConsoleSink>());
  InitializeBatch(session, ProgramDirectory(argv[0]));
  InstallInterruptHandler(session);
  return RunBatchScript(session, argv[1]);
}
