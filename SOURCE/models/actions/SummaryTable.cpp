// SummaryTable: fixed-width cells of the action tables.
#include "SummaryTable.h"

#include <cmath>
#include <cstdio>

namespace table {

std::string Cell(double x) {
  char buffer[64];
  if (std::isnan(x)) {
    std::snprintf(buffer, sizeof buffer, " %10s", "-");
  } else {
    std::snprintf(buffer, sizeof buffer, " %10.5g", x);
  }
  return buffer;
}

std::string Padded(const std::string& text, std::size_t width) {
  return text.size() >= width ? text + " " : text + std::string(width - text.size(), ' ');
}

std::string Header(const std::string& first, std::size_t width) {
  std::string header = Padded(first, width);
  for (const char* column : {"Mean", "Sd", "2.5%", "97.5%"}) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, " %10s", column);
    header += buffer;
  }
  return header + "\n";
}

std::string Row(const std::string& name, std::size_t width, double mean, double sd, double lower, double upper) {
  return Padded(name, width) + Cell(mean) + Cell(sd) + Cell(lower) + Cell(upper) + "\n";
}

std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

}  // namespace table
