// TerminalConsole: a console in the terminal for machines without a display.
#pragma once

#include <string>

#include "Session.h"
#include "StatementsComplete.h"

// Reads commands with line editing and a history kept across sessions, runs each statement as
// soon as it is complete (a statement of several lines, such as a loop, waits for its "end"),
// and prints through the session's dispatcher. Ctrl+C stops the running command; Ctrl+D or
// "quit;" ends. Returns the exit status.
int RunTerminalConsole(Session& session, const std::string& programDirectory);
