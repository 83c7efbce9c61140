// The batch front end: settings, launching directory and the run of one script.
#include "BatchRunner.h"

#include <csignal>
#include <filesystem>
#include <fstream>

#include "Interpreter.h"
#include "SystemGlobals.h"
#include "TavixSettings.h"

namespace fs = std::filesystem;

namespace {

std::atomic<bool>* g_interrupt = nullptr;

extern "C" void OnInterruptSignal(int) {
  if (g_interrupt) g_interrupt->store(true);
}

// The directory named in "launchDir.txt", when the file exists and the directory does.
bool ApplyLaunchDirectoryFile() {
  std::ifstream file("launchDir.txt");
  std::string directory;
  if (!file || !std::getline(file, directory)) return false;
  if (!directory.empty() && directory.back() == '\r') directory.pop_back();
  for (char& c : directory) {
    if (c == '\\') c = '/';
  }
  std::error_code error;
  if (directory.empty() || !fs::is_directory(directory, error)) return false;
  fs::current_path(directory, error);
  return !error;
}

bool CurrentDirectoryUsable() {
  std::error_code error;
  const fs::path current = fs::current_path(error);
  return !error && fs::is_directory(current, error);
}

}  // namespace

void InstallInterruptHandler(Session& session) {
  static_assert(std::atomic<bool>::is_always_lock_free);
  g_interrupt = &session.interruptRequested;
  struct sigaction action {};
  action.sa_handler = OnInterruptSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESETHAND;  // the next Ctrl+C is the default: the program ends
  sigaction(SIGINT, &action, nullptr);
}

void InitializeBatch(Session& session, const std::string& programDirectory) {
  Tavix_SYSTEM_NAMESPACE::RUN_GUI = false;
  TavixSettings settings;
  const fs::path file = fs::path(programDirectory) / "Tavix.init";
  if (!settings.Read(file.string())) {
    session.dispatcher.Print(std::string("\n\nWARNING: ") +
                             "The initialization file could not be found.\n" +
                             "         Some aspects of the program may not function properly.\n\n");
  }
  // A settings file that names no installation directory means the program's own.
  if (settings.installationDirectory.empty()) settings.installationDirectory = programDirectory;
  settings.ApplyToGlobals();
  session.installDir = settings.installationDirectory;

  if (!ApplyLaunchDirectoryFile() && !CurrentDirectoryUsable()) {
    session.dispatcher.Print(
        std::string("\n\nWARNING: ") +
        "Could not infer the launching directory. The current working directory is set to\n" +
        "         $TavixHOME/System Files/Libraries.\n\n");
  }
}

int RunBatchScript(Session& session, const std::string& scriptPath) {
  std::ifstream file(scriptPath, std::ios::binary);
  if (!file) {
    session.dispatcher.Print("Unable to open file " + scriptPath + ".\n");
    return kBatchUnreadableScript;
  }
  std::string text;
  char buffer[1 << 16];
  while (file.read(buffer, sizeof buffer) || file.gcount() > 0) {
    text.append(buffer, static_cast<std::size_t>(file.gcount()));
  }
  std::error_code error;
  if (file.bad() || fs::is_directory(scriptPath, error)) {
    session.dispatcher.Print("Unable to read from file '" + scriptPath + "'.\n");
    return kBatchUnreadableScript;
  }
  const JobOutcome outcome = RunJob(session, std::move(text), "\"" + scriptPath + "\"", 0);
  switch (outcome) {
    case JobOutcome::Completed: return kBatchSuccess;
    case JobOutcome::Interrupted: return kBatchInterrupted;
    case JobOutcome::Failed: break;
  }
  return kBatchScriptFailed;
}
