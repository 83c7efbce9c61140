// Speed of the random draws: 10^7 normal, truncated-normal (lower bound 5 sd above the mean) and
// gamma(2.5, 1) draws from one seeded engine, printed as the median nanoseconds per draw.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <limits>
#include <vector>

#include "Gamma.h"
#include "Normal.h"
#include "RandomEngine.h"
#include "TruncatedNormal.h"

namespace {

constexpr long kDraws = 10000000;

// The median over `runs` timed runs (after one untimed run) of kDraws draws, in ns per draw. The
// draws are summed into `sink` so that none of them can be optimised away.
double MedianNanosecondsPerDraw(int runs, RandomEngine& rng, const std::function<double(RandomEngine&)>& draw,
                                double& sink) {
  const auto work = [&] {
    double sum = 0.0;
    for (long i = 0; i < kDraws; ++i) {
      sum += draw(rng);
    }
    sink += sum;
  };
  work();
  std::vector<double> perDraw;
  for (int r = 0; r < runs; ++r) {
    const auto start = std::chrono::steady_clock::now();
    work();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    perDraw.push_back(seconds * 1e9 / static_cast<double>(kDraws));
  }
  std::sort(perDraw.begin(), perDraw.end());
  return perDraw[perDraw.size() / 2];
}

}  // namespace

// R's figures for the same cases, from bench/draws.R, when Rscript is installed; empty otherwise.
std::vector<double> RFigures(const char* program) {
  std::vector<double> figures;
  std::string script = program;
  const auto slash = script.rfind('/');
  script = (slash == std::string::npos ? std::string(".") : script.substr(0, slash)) +
           "/../../bench/draws.R";
  if (std::system("command -v Rscript >/dev/null 2>&1") != 0) return figures;
  const std::string command = "Rscript --vanilla \"" + script + "\" 2>/dev/null";
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return figures;
  double x = 0.0;
  while (std::fscanf(pipe, "%lf", &x) == 1) figures.push_back(x);
  pclose(pipe);
  return figures;
}

// Usage: tavix_draws_bench [runs] (default 5 timed runs per case). With R installed, R's figures
// for the same draws come from bench/draws.R in the same run, with the ratio of the two.
int main(int argc, char** argv) {
  const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
  RandomEngine rng;
  rng.Seed(20240601);
  double sink = 0.0;

  struct Case {
    const char* name;
    std::function<double(RandomEngine&)> draw;
  };
  const std::vector<Case> cases = {
      {"normal(0, 1)", [](RandomEngine& r) { return dist::NormalDraw(r, 0.0, 1.0); }},
      {"truncated normal(0, 1) on [5, inf)",
       [](RandomEngine& r) {
         return dist::TruncatedNormalDraw(r, 0.0, 1.0, 5.0, std::numeric_limits<double>::infinity());
       }},
      {"gamma(shape 2.5, rate 1)", [](RandomEngine& r) { return dist::GammaDraw(r, 2.5, 1.0); }},
  };
  const std::vector<double> r = RFigures(argv[0]);
  std::printf("| draw | ns per draw (median of %d runs of %ld) | R (ns) | R / Tavix |\n|---|---|---|---|\n",
              runs, kDraws);
  for (std::size_t k = 0; k < cases.size(); ++k) {
    const double ns = MedianNanosecondsPerDraw(runs, rng, cases[k].draw, sink);
    if (k < r.size()) {
      std::printf("| %s | %.1f | %.1f | %.2f |\n", cases[k].name, ns, r[k], r[k] / ns);
    } else {
      std::printf("| %s | %.1f | not installed | |\n", cases[k].name, ns);
    }
  }
  // Printing the sum keeps the draws observable.
  std::fprintf(stderr, "checksum %.6g\n", sink);
  return 0;
}
