// Lexing and parsing speed: reads a script, then lexes it and reads every statement without
// running anything, several times; prints tokens per second (median of the runs).
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <vector>

#include "Session.h"
#include "TavixParser.h"
#include "TokenStream.h"

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: tavix_parse_bench script.tvx [runs]\n");
    return 2;
  }
  std::ifstream file(argv[1], std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  const std::string source = text.str();
  const int runs = argc > 2 ? std::max(1, std::atoi(argv[2])) : 5;

  Session session;
  std::vector<double> seconds;
  std::size_t onChannel = 0;
  std::size_t statements = 0;
  for (int run = 0; run < runs; ++run) {
    const auto start = std::chrono::steady_clock::now();
    TokenStream stream(source, "\"bench\"");
    TavixParser parser(stream, session, "\"bench\"", 0);
    statements = parser.statement_list(false)->statements.size();
    seconds.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    if (stream.LA(1) != tok::END_OF_INPUT) {
      std::fprintf(stderr, "the script was not read to its end\n");
      return 1;
    }
    onChannel = 0;
    for (int i = 0; i < stream.Size(); ++i) {
      if (stream.Get(i).channel == tok::DEFAULT_CHANNEL) ++onChannel;
    }
  }
  std::sort(seconds.begin(), seconds.end());
  const double median = seconds[seconds.size() / 2];
  std::printf("%zu bytes, %zu statements, %zu tokens (on channel), median %.4f s over %d runs: "
              "%.2f million tokens/s\n",
              source.size(), statements, onChannel, median, runs, onChannel / median / 1e6);
  return 0;
}
