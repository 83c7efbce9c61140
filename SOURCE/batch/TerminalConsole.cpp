// TerminalConsole: line editing through libedit, completeness of typed statements, running them.
#include "TerminalConsole.h"

#include <cctype>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include <editline/readline.h>

#include "Interpreter.h"
#include "SystemGlobals.h"
#include "TavixError.h"
#include "TavixSettings.h"

namespace {

Session* g_session = nullptr;

// Ctrl+C stops the running command; at the prompt it only drops the line being typed.
void OnInterrupt(int) {
  if (g_session) g_session->interruptRequested = true;
}

// Runs typed code, reporting its errors as the console does; false when it failed.
bool RunTyped(Session& session, const std::string& code) {
  try {
    RunProgram(session, code + "\n", "\"terminal\"", 0);
    return true;
  } catch (const TavixError& error) {
    session.dispatcher.PrintError(error.what());
  } catch (const TavixInterrupted&) {
    session.dispatcher.PrintError("Operation interrupted.\n");
  } catch (const std::exception& error) {
    session.dispatcher.PrintInternalError(error.what());
  }
  return false;
}

// Before the console ends with values in the workspace, asks whether to save them (as the window
// does when it closes). True to end, false to go on (cancelled, or the save failed).
bool ConfirmEnd(Session& session, const TavixSettings& settings) {
  if (!settings.flags[TavixSettings::PromptSaveWorkspace] || session.workspace.Names().empty()) return true;
  for (;;) {
    char* answer = readline("Save the workspace before exiting? (y: save, n: exit without saving, c: cancel) ");
    session.interruptRequested = false;
    if (!answer) {
      session.dispatcher.Print("\n");
      return false;
    }
    const std::string text(answer);
    std::free(answer);
    const auto at = text.find_first_not_of(" \t");
    const char choice = at == std::string::npos ? '\0' : static_cast<char>(std::tolower(text[at]));
    if (choice == 'n') return true;
    if (choice == 'c') return false;
    if (choice != 'y') continue;
    char* file = readline("Workspace file (workspace.tvw): ");
    session.interruptRequested = false;
    if (!file) {
      session.dispatcher.Print("\n");
      return false;
    }
    std::string path(file);
    std::free(file);
    const auto begin = path.find_first_not_of(" \t"), end = path.find_last_not_of(" \t");
    path = begin == std::string::npos ? "workspace.tvw" : path.substr(begin, end - begin + 1);
    std::string quoted = "\"";
    for (const char c : path) quoted += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    return RunTyped(session, "save(" + quoted + "\");");
  }
}

}  // namespace

int RunTerminalConsole(Session& session, const std::string& programDirectory) {
  Tavix_SYSTEM_NAMESPACE::RUN_GUI = false;
  const std::string folder = TavixSettings::Folder(programDirectory);
  TavixSettings settings;
  if (settings.Read((std::filesystem::path(folder) / "Tavix.init").string())) settings.ApplyToGlobals();
  const std::string history = (std::filesystem::path(folder) / "terminal_history").string();
  using_history();
  read_history(history.c_str());
  g_session = &session;
  std::signal(SIGINT, OnInterrupt);

  session.dispatcher.Print("Tavix console. Statements end with \";\"; a block waits for its \"end\". "
                           "Ctrl+C drops the line being typed; Ctrl+D or quit ends.\n");
  std::string pending;
  for (;;) {
    session.interruptRequested = false;
    char* line = readline(pending.empty() ? ">> " : ".. ");
    if (!line) {
      if (session.interruptRequested) {
        // Ctrl+C at the prompt drops what was typed, an unfinished block included.
        pending.clear();
        session.dispatcher.Print("\n");
        continue;
      }
      // Ctrl+D.
      session.dispatcher.Print("\n");
      if (ConfirmEnd(session, settings)) break;
      continue;
    }
    const std::string text(line);
    std::free(line);
    if (text.find_first_not_of(" \t") == std::string::npos && pending.empty()) continue;
    pending += (pending.empty() ? "" : "\n") + text;
    // An empty line under unfinished text runs it anyway, so a mistake never traps the user.
    if (!StatementsComplete(pending) && !text.empty()) continue;
    add_history(pending.c_str());
    write_history(history.c_str());
    const std::string code = std::move(pending);
    pending.clear();
    if (code.find_first_not_of(" \t\n") != std::string::npos && code.rfind("quit", 0) == 0 &&
        code.find_first_not_of(" \t\n;", 4) == std::string::npos) {
      if (ConfirmEnd(session, settings)) break;
      continue;
    }
    RunTyped(session, code);
    session.dispatcher.Print("\n");
  }
  session.dispatcher.Print("\n");
  g_session = nullptr;
  return 0;
}
