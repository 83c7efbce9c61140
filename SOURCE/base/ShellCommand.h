// ShellCommand: a command run by /bin/sh for the language's `system`, its output collected, and
// the whole of what it started ended when the user stops the job.
#pragma once

#include <atomic>
#include <string>

struct ShellCommandResult {
  std::string output;        // standard output and standard error, interleaved as written
  bool started = false;      // false when no shell could be started
  bool interrupted = false;  // the interrupt flag was seen; the command's process group was ended
};

// Runs `command` with /bin/sh -c as the leader of a process group of its own, standard input from
// /dev/null. `interrupt` is looked at ten times a second while the command runs; once set, the
// group gets SIGTERM, then SIGKILL if anything in it outlives half a second of grace, so that a stop ends
// `sleep 1000` and whatever else the command started.
ShellCommandResult RunShellCommand(const std::string& command, const std::atomic<bool>& interrupt);
