// TavixApp: the window front end's entry point.
#pragma once

#include <string>

// Starts the toolkit, opens the main window and runs its event loop; returns the exit status.
int RunGui(int argc, char** argv, const std::string& programDirectory);
