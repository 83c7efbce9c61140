// Running code: a program over one text, and a job as a front end submits it.
#pragma once

#include <functional>
#include <string>

#include "Session.h"

// Lexes `code`, then reads and runs it statement by statement on `session`. Errors are thrown
// (TavixError with the report, TavixInterrupted on a stop); what ran before them stays done.
// Used for jobs, for `run` and wherever code runs inside a running job.
void RunProgram(Session& session, std::string code, const std::string& inputName,
                long lineOffset);
// The same with names resolving in `workspace` (code that runs inside a function call).
void RunProgram(Session& session, Workspace& workspace, std::string code,
                const std::string& inputName, long lineOffset);

// How a job ended.
enum class JobOutcome { Completed, Failed, Interrupted };

// A job as a front end submits it: runs the code, prints an error report through the
// dispatcher, then tells the front end the job is over. With a window, it refreshes the panes
// and enables the run button; in a batch run it prints "\n\nTavix is exiting...\n" and asks the
// program to exit. An interrupted job only enables the run button with a window; in a batch run
// it says "Operation interrupted." before the exiting line.
// `beforeEnable`, when given, runs just before the run button is enabled again (a window clears
// its job-running flag there).
JobOutcome RunJob(Session& session, std::string code, const std::string& inputName,
                  long firstLine, const std::function<void()>& beforeEnable = {});

// The line printed when a batch run ends.
inline constexpr const char* kExitingLine = "\n\nTavix is exiting...\n";
