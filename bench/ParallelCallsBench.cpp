// Speed of mthread: 8 calls of a function that draws 10^6 standard normals and sums them, with 1
// and with 2 threads, timed alternately; prints the medians, the speed-up and the load average.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <stdlib.h>

#include "Interpreter.h"
#include "ParallelCalls.h"
#include "Session.h"

namespace {

constexpr const char* kFunction =
    "function s = total(i)\n"
    "  s = sum(normrnd(0, 1, 1000000, 1));\n"
    "end\n";

// Seconds for one run of the 8 calls with `threads` threads.
double TimedRun(Session& session, int threads) {
  const std::string code = "seed(1);\nr = mthread(@total, ones(8, 1), \"threads\" = " + std::to_string(threads) + ");\n";
  const auto start = std::chrono::steady_clock::now();
  RunProgram(session, code, "\"bench\"", 0);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> x) {
  std::sort(x.begin(), x.end());
  return x[x.size() / 2];
}

void PrintLoad(const char* when) {
  double load[3] = {0.0, 0.0, 0.0};
  if (getloadavg(load, 3) == 3) std::printf("load average %s: %.2f %.2f %.2f\n", when, load[0], load[1], load[2]);
}

}  // namespace

int main(int argc, char** argv) {
  const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 7;
  Session session;
  RunProgram(session, kFunction, "\"bench\"", 0);
  PrintLoad("before");
  TimedRun(session, 1);
  TimedRun(session, 2);
  std::vector<double> one;
  std::vector<double> two;
  for (int r = 0; r < runs; ++r) {
    one.push_back(TimedRun(session, 1));
    two.push_back(TimedRun(session, 2));
  }
  PrintLoad("after");
  const double m1 = Median(one);
  const double m2 = Median(two);
  std::printf("8 calls, 10^6 normals each, %d runs, %d hardware threads\n", runs, HardwareThreads());
  std::printf("1 thread:  median %.1f ms (min %.1f)\n", m1 * 1e3, *std::min_element(one.begin(), one.end()) * 1e3);
  std::printf("2 threads: median %.1f ms (min %.1f)\n", m2 * 1e3, *std::min_element(two.begin(), two.end()) * 1e3);
  std::printf("speed-up: %.2f (goal at least 1.8)\n", m1 / m2);
  return 0;
}
