// FormatMatrix: choosing one format for a matrix and writing its columns aligned.
#include "MatrixFormat.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

enum class Style { Integer, Fixed, Scientific };

struct Format {
  Style style = Style::Integer;
  int decimals = 0;
};

Format ChooseFormat(const Eigen::MatrixXd& m) {
  double largest = 0.0;
  double smallestNonZero = INFINITY;
  bool integers = true;
  for (double v : m.reshaped()) {
    if (!std::isfinite(v)) continue;
    const double a = std::fabs(v);
    largest = std::max(largest, a);
    if (a > 0.0) smallestNonZero = std::min(smallestNonZero, a);
    if (v != std::floor(v)) integers = false;
  }
  if (integers && largest < 1e15) return {Style::Integer, 0};
  if (integers || largest >= 1e5 || smallestNonZero < 1e-5) return {Style::Scientific, 5};
  // Six significant digits of the largest element, the same decimals for all; decimals that are
  // zero in every element are dropped, keeping at least one.
  const int magnitude = largest > 0.0 ? static_cast<int>(std::floor(std::log10(largest))) : 0;
  const int decimals = std::clamp(5 - magnitude, 1, 10);
  int needed = 1;
  char buffer[64];
  for (double v : m.reshaped()) {
    if (!std::isfinite(v)) continue;
    const int length = std::snprintf(buffer, sizeof buffer, "%.*f", decimals, v);
    int last = length - 1;
    while (buffer[last] == '0') --last;
    needed = std::max(needed, decimals - (length - 1 - last));
    if (needed == decimals) break;
  }
  return {Style::Fixed, needed};
}

std::string Cell(double v, const Format& format) {
  if (std::isnan(v)) return "nan";
  if (std::isinf(v)) return v > 0 ? "inf" : "-inf";
  if (v == 0.0) v = 0.0;  // no minus sign on negative zero
  char buffer[64];
  switch (format.style) {
    case Style::Integer:
      std::snprintf(buffer, sizeof buffer, "%.0f", v);
      break;
    case Style::Fixed:
      std::snprintf(buffer, sizeof buffer, "%.*f", format.decimals, v);
      break;
    case Style::Scientific:
      std::snprintf(buffer, sizeof buffer, "%.*e", format.decimals, v);
      break;
  }
  std::string text = buffer;
  if (text.size() > 1 && text[0] == '-' && text.find_first_not_of("-0.e+", 0) == std::string::npos) {
    text.erase(0, 1);  // a tiny negative that rounds to zero
  }
  return text;
}

std::string BlockHeading(Eigen::Index first, Eigen::Index last) {
  if (first == last) return "Column " + std::to_string(first + 1) + "\n";
  if (last == first + 1) {
    return "Columns " + std::to_string(first + 1) + " and " + std::to_string(last + 1) + "\n";
  }
  return "Columns " + std::to_string(first + 1) + " through " + std::to_string(last + 1) + "\n";
}

}  // namespace

std::string FormatMatrix(const Eigen::MatrixXd& matrix, int consoleWidth) {
  if (matrix.size() == 0) return {};
  const Format format = ChooseFormat(matrix);
  std::vector<std::string> cells;
  cells.reserve(static_cast<std::size_t>(matrix.size()));
  std::size_t width = 0;
  for (double v : matrix.reshaped()) {  // column order
    cells.push_back(Cell(v, format));
    width = std::max(width, cells.back().size());
  }
  const std::size_t columnWidth = width + 2;
  const Eigen::Index perBlock = std::max<Eigen::Index>(
      1, static_cast<Eigen::Index>(std::max(consoleWidth, 1)) / static_cast<Eigen::Index>(columnWidth));
  const bool blocks = perBlock < matrix.cols();

  std::string out;
  out.reserve(static_cast<std::size_t>(matrix.size()) * columnWidth + static_cast<std::size_t>(matrix.rows()) * 2 + 64);
  for (Eigen::Index first = 0; first < matrix.cols(); first += perBlock) {
    const Eigen::Index last = std::min(first + perBlock, matrix.cols()) - 1;
    if (blocks) out += BlockHeading(first, last) + "\n";
    for (Eigen::Index r = 0; r < matrix.rows(); ++r) {
      for (Eigen::Index c = first; c <= last; ++c) {
        const std::string& cell = cells[static_cast<std::size_t>(c * matrix.rows() + r)];
        out.append(columnWidth - cell.size(), ' ');
        out += cell;
      }
      out += '\n';
    }
    out += '\n';
  }
  return out;
}
