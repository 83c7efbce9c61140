// Interpreter overhead on matrix arithmetic: the same operations run as script statements and as
// plain Eigen, in one run, on the same matrices. Prints the median times and their ratio.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include <Eigen/Dense>

#include "Interpreter.h"
#include "Session.h"

namespace {

double MedianSeconds(int runs, const std::function<void()>& work) {
  std::vector<double> seconds;
  work();  // warm up
  for (int i = 0; i < runs; ++i) {
    const auto start = std::chrono::steady_clock::now();
    work();
    seconds.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  std::sort(seconds.begin(), seconds.end());
  return seconds[seconds.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 9;
  Session session;  // no sink: nothing is printed
  const Eigen::MatrixXd a = Eigen::MatrixXd::Random(1000, 1000);
  const Eigen::MatrixXd b = Eigen::MatrixXd::Random(1000, 1000);
  const Eigen::MatrixXd p = Eigen::MatrixXd::Random(500, 500);
  const Eigen::MatrixXd q = Eigen::MatrixXd::Random(500, 500);
  session.workspace.Store("A", TavixValue::FromMatrix(a));
  session.workspace.Store("B", TavixValue::FromMatrix(b));
  session.workspace.Store("P", TavixValue::FromMatrix(p));
  session.workspace.Store("Q", TavixValue::FromMatrix(q));

  struct Case {
    const char* name;
    std::string script;
    std::function<void()> eigen;
  };
  Eigen::MatrixXd out;
  const std::vector<Case> cases = {
      {"C = A + B (1000x1000)", "C = A + B;", [&] { out = a + b; }},
      {"C = A .* B (1000x1000)", "C = A .* B;", [&] { out = (a.array() * b.array()).matrix(); }},
      {"C = A * 2 - B (1000x1000)", "C = A * 2 - B;", [&] { out = a * 2 - b; }},
      {"C = P * Q (500x500)", "C = P * Q;", [&] { out.noalias() = p * q; }},
  };
  std::printf("| operation | Tavix (ms) | plain Eigen (ms) | ratio |\n|---|---|---|---|\n");
  for (const Case& c : cases) {
    const double script = MedianSeconds(runs, [&] { RunProgram(session, c.script, "\"bench\"", 0); });
    const double eigen = MedianSeconds(runs, c.eigen);
    std::printf("| `%s` | %.2f | %.2f | %.2f |\n", c.name, script * 1e3, eigen * 1e3, script / eigen);
  }
  return 0;
}
