// The batch front end: runs one script headless and reports how it ended.
#pragma once

#include <string>

#include "Session.h"

// Exit statuses of a batch run.
enum BatchExitStatus {
  kBatchSuccess = 0,
  kBatchScriptFailed = 1,
  kBatchUnreadableScript = 2,
  kBatchInterrupted = 130,  // stopped by Ctrl+C, as shells report it
};

// Makes Ctrl+C (SIGINT) stop the session's running script at its next interruption point; a
// second Ctrl+C ends the program at once.
void InstallInterruptHandler(Session& session);

// Reads the settings file "Tavix.init" in `programDirectory` and sets up the working directory
// of a batch run: "launchDir.txt" in the current directory names it when present; otherwise the
// current directory stays. Warnings are printed through the session's dispatcher.
void InitializeBatch(Session& session, const std::string& programDirectory);

// Runs the script at `scriptPath` on `session` (whose dispatcher must be set) and returns the
// exit status: 0 when it ran to the end, 1 when it stopped on an error, 2 when the file could not
// be opened or read, 130 when it was interrupted.
int RunBatchScript(Session& session, const std::string& scriptPath);
