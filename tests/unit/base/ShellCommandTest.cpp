#include <atomic>
#include <chrono>
#include <fstream>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "ShellCommand.h"

namespace {

// Whether process `pid` runs (exists and is not a zombie waiting to be reaped).
bool Running(long pid) {
  std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
  std::string line;
  if (!std::getline(stat, line)) return false;
  const std::size_t close = line.rfind(')');
  return close != std::string::npos && close + 2 < line.size() && line[close + 2] != 'Z';
}

}  // namespace

TEST(ShellCommand, CollectsBothStreamsAndReadsNothingFromTheTerminal) {
  const std::atomic<bool> never{false};
  const ShellCommandResult run = RunShellCommand("echo out; echo err 1>&2; cat; printf 'x%.0s' $(seq 5000)", never);
  EXPECT_TRUE(run.started);
  EXPECT_FALSE(run.interrupted);
  ASSERT_EQ(run.output.size(), 8 + 5000u);
  EXPECT_EQ(run.output.substr(0, 8), "out\nerr\n");
}

TEST(ShellCommand, AStopEndsTheCommandAndEverythingItStarted) {
  std::atomic<bool> stop{false};
  std::thread stopper([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    stop = true;
  });
  const auto start = std::chrono::steady_clock::now();
  // A background sleep, whose number is written first, and a shell that ignores SIGTERM.
  const ShellCommandResult run =
      RunShellCommand("sleep 1000 & echo $!; trap '' TERM; sleep 1000; wait", stop);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  stopper.join();
  EXPECT_TRUE(run.interrupted);
  EXPECT_LT(seconds, 3.0);
  const long background = std::stol(run.output);
  // The orphaned sleep is reaped by whoever adopts it; give that a moment.
  for (int i = 0; i < 100 && Running(background); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_FALSE(Running(background));
}
