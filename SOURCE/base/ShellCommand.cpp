// ShellCommand: /bin/sh -c in its own process group, read through a pipe polled for interrupts.
#include "ShellCommand.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

constexpr int kPollMilliseconds = 100;
// What a stopped command gets to end by itself before it is killed (well within the second a stop may
// take; orphans that nobody reaps yet count as alive, so the grace can run out for them).
constexpr auto kGrace = std::chrono::milliseconds(500);

// Waits for the shell itself; true once it has been reaped.
bool Reaped(pid_t pid, bool block) {
  for (;;) {
    int status = 0;
    const pid_t done = waitpid(pid, &status, block ? 0 : WNOHANG);
    if (done == pid) return true;
    if (done == 0) return false;
    if (errno != EINTR) return true;  // not our child any more: nothing left to wait for
  }
}

// Ends the process group led by `pid`: SIGTERM, a grace period, then SIGKILL.
void EndGroup(pid_t pid) {
  kill(-pid, SIGTERM);
  const auto until = std::chrono::steady_clock::now() + kGrace;
  bool shellGone = false;
  while (std::chrono::steady_clock::now() < until) {
    if (!shellGone) shellGone = Reaped(pid, false);
    // Signal 0 only asks whether anything of the group is alive.
    if (shellGone && kill(-pid, 0) != 0) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  kill(-pid, SIGKILL);
  if (!shellGone) Reaped(pid, true);
}

}  // namespace

ShellCommandResult RunShellCommand(const std::string& command, const std::atomic<bool>& interrupt) {
  ShellCommandResult result;
  int fds[2];
  if (pipe2(fds, O_CLOEXEC) != 0) return result;
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  posix_spawn_file_actions_init(&actions);
  posix_spawnattr_init(&attributes);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, fds[1], 1);
  posix_spawn_file_actions_adddup2(&actions, fds[1], 2);
  posix_spawnattr_setpgroup(&attributes, 0);
  // The command starts with the default handling of the signals a stop sends.
  sigset_t defaults;
  sigemptyset(&defaults);
  sigaddset(&defaults, SIGINT);
  sigaddset(&defaults, SIGTERM);
  sigaddset(&defaults, SIGPIPE);
  posix_spawnattr_setsigdefault(&attributes, &defaults);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF);
  std::string text = command;
  char shell[] = "/bin/sh";
  char dashC[] = "-c";
  char* argv[] = {shell, dashC, text.data(), nullptr};
  pid_t pid = 0;
  const int spawned = posix_spawn(&pid, "/bin/sh", &actions, &attributes, argv, environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  close(fds[1]);
  if (spawned != 0) {
    close(fds[0]);
    return result;
  }
  result.started = true;
  char buffer[4096];
  for (;;) {
    if (interrupt.load(std::memory_order_relaxed)) {
      result.interrupted = true;
      EndGroup(pid);
      close(fds[0]);
      return result;
    }
    pollfd readable{fds[0], POLLIN, 0};
    const int ready = poll(&readable, 1, kPollMilliseconds);
    if (ready < 0 && errno != EINTR) break;
    if (ready <= 0) continue;
    const ssize_t got = read(fds[0], buffer, sizeof buffer);
    if (got > 0) {
      result.output.append(buffer, static_cast<std::size_t>(got));
    } else if (got == 0 || errno != EINTR) {
      break;  // every writer has closed the pipe
    }
  }
  close(fds[0]);
  // The output is complete; the shell may still be finishing. Keep honouring a stop meanwhile.
  while (!Reaped(pid, false)) {
    if (interrupt.load(std::memory_order_relaxed)) {
      result.interrupted = true;
      EndGroup(pid);
      return result;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return result;
}
