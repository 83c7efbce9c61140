// Import speed: writes a delimited file of numbers of about the given size (100 MB by default),
// then reads it into a dataset and prints the time and the throughput.
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <sstream>
#include <string>

#include "Dataset.h"
#include "DelimitedText.h"

int main(int argc, char** argv) {
  const double megabytes = argc > 1 ? std::stod(argv[1]) : 100.0;
  const std::filesystem::path file =
      std::filesystem::temp_directory_path() / "tavix_import_bench.csv";
  {
    std::ofstream out(file, std::ios::binary);
    const int columns = 10;
    for (int j = 0; j < columns; ++j) out << (j ? "," : "") << "v" << j;
    out << "\n";
    std::mt19937_64 engine(1);
    std::normal_distribution<double> normal(0.0, 100.0);
    char cell[32];
    while (out.tellp() < static_cast<std::streamoff>(megabytes * 1e6)) {
      for (int j = 0; j < columns; ++j) {
        std::snprintf(cell, sizeof cell, j ? ",%.6g" : "%.6g", normal(engine));
        out << cell;
      }
      out << "\n";
    }
  }
  const auto start = std::chrono::steady_clock::now();
  std::ifstream in(file, std::ios::binary);
  std::ostringstream buffer;
  buffer << in.rdbuf();
  const std::string text = buffer.str();
  const DelimitedImport imported = ReadDelimited(text, ',');
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  std::filesystem::remove(file);
  if (!imported.error.empty()) {
    std::cerr << "import failed: " << imported.error << "\n";
    return 1;
  }
  std::printf("%.1f MB, %lld observations of %lld variables read in %.2f s (%.0f MB/s)\n",
              static_cast<double>(text.size()) / 1e6,
              static_cast<long long>(imported.dataset->NumberOfObservations()),
              static_cast<long long>(imported.dataset->NumberOfVariables()), seconds,
              static_cast<double>(text.size()) / 1e6 / seconds);
  return 0;
}
