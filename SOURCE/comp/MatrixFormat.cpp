// FormatMatrix: choosing one format for a matrix and writing its columns aligned.
#include "MatrixFormat.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace {

// Six significant digits: one before the point and five after it in scientific notation.
constexpr int kSignificant = 6;
constexpr int kMantissaDecimals = kSignificant - 1;

enum class Style { Integer, Fixed, Scientific };

struct Format {
  Style style = Style::Integer;
  int decimals = 0;
};

// What one pass over the elements learns: enough to choose the format and, since the texts grow
// with the magnitude on each side of zero, the elements whose texts are the widest.
struct Survey {
  bool integers = true;
  bool zero = false;
  bool nan = false;
  bool inf = false;
  bool minusInf = false;
  double maxPositive = 0.0;
  double minPositive = INFINITY;
  double minNegative = 0.0;
  double maxNegative = -INFINITY;

  double Largest() const { return std::max(maxPositive, -minNegative); }
  double SmallestNonZero() const { return std::min(minPositive, -maxNegative); }
};

Survey SurveyElements(const Eigen::MatrixXd& matrix) {
  Survey s;
  for (const double v : matrix.reshaped()) {
    if (std::isnan(v)) {
      s.nan = true;
    } else if (std::isinf(v)) {
      (v > 0 ? s.inf : s.minusInf) = true;
    } else {
      if (s.integers && v != std::trunc(v)) s.integers = false;
      if (v > 0) {
        s.maxPositive = std::max(s.maxPositive, v);
        s.minPositive = std::min(s.minPositive, v);
      } else if (v < 0) {
        s.minNegative = std::min(s.minNegative, v);
        s.maxNegative = std::max(s.maxNegative, v);
      } else {
        s.zero = true;
      }
    }
  }
  return s;
}

// The decimal exponent of a positive finite magnitude once rounded to six significant digits.
int DecimalExponent(double magnitude) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, magnitude,
                                    std::chars_format::scientific, kMantissaDecimals);
  const char* e = std::find(buffer, result.ptr, 'e');
  int exponent = 0;
  std::from_chars(e + 1 + (e[1] == '+'), result.ptr, exponent);
  return exponent;
}

// The fewest of `decimals` that still show every finite element in full: trailing decimals that
// are zero in all of them go, at least one stays. Stops at the first element that needs them all.
int NeededDecimals(const Eigen::MatrixXd& matrix, int decimals) {
  int needed = 1;
  char buffer[64];
  for (const double v : matrix.reshaped()) {
    if (!std::isfinite(v)) continue;
    const char* end =
        std::to_chars(buffer, buffer + sizeof buffer, v, std::chars_format::fixed, decimals).ptr;
    const char* last = end - 1;
    while (*last == '0') --last;
    needed = std::max(needed, decimals - static_cast<int>(end - 1 - last));
    if (needed == decimals) break;
  }
  return needed;
}

Format ChooseFormat(const Survey& s, const Eigen::MatrixXd& matrix) {
  const double largest = s.Largest();
  if (s.integers && largest < 1e15) return {Style::Integer, 0};
  // Some finite element is non-zero from here on, so the smallest non-zero magnitude exists.
  const int top = DecimalExponent(largest);
  const int bottom = DecimalExponent(s.SmallestNonZero());
  if (s.integers || top >= 5 || bottom <= -6 || top - bottom >= 5) {
    return {Style::Scientific, kMantissaDecimals};
  }
  return {Style::Fixed, NeededDecimals(matrix, kMantissaDecimals - top)};
}

// Writes the text of one element into `buffer` (at least 32 characters) and returns its length.
std::size_t WriteCell(char* buffer, double v, const Format& format) {
  if (std::isnan(v)) return std::strlen(std::strcpy(buffer, "nan"));
  if (std::isinf(v)) return std::strlen(std::strcpy(buffer, v > 0 ? "inf" : "-inf"));
  if (v == 0.0) v = 0.0;  // no minus sign on negative zero
  char* const end = buffer + 32;
  switch (format.style) {
    case Style::Integer:
      return static_cast<std::size_t>(
          std::to_chars(buffer, end, v, std::chars_format::fixed, 0).ptr - buffer);
    case Style::Fixed:
      return static_cast<std::size_t>(
          std::to_chars(buffer, end, v, std::chars_format::fixed, format.decimals).ptr - buffer);
    case Style::Scientific:
      break;
  }
  return static_cast<std::size_t>(
      std::to_chars(buffer, end, v, std::chars_format::scientific, format.decimals).ptr - buffer);
}

// The width of the widest element: the extremes on each side of zero give the longest integer
// parts and, in scientific notation, the longest exponents.
std::size_t CellWidth(const Survey& s, const Format& format) {
  std::size_t width = s.minusInf ? 4 : (s.nan || s.inf ? 3 : 0);
  char buffer[32];
  const auto widen = [&](double v) { width = std::max(width, WriteCell(buffer, v, format)); };
  if (s.zero) widen(0.0);
  if (s.maxPositive > 0) {
    widen(s.maxPositive);
    widen(s.minPositive);
  }
  if (s.minNegative < 0) {
    widen(s.minNegative);
    widen(s.maxNegative);
  }
  return width;
}

std::string BlockHeading(Eigen::Index first, Eigen::Index last) {
  const std::string a = std::to_string(first + 1);
  const std::string b = std::to_string(last + 1);
  if (first == last) return "Column " + a + "\n\n";
  if (last == first + 1) return "Columns " + a + " and " + b + "\n\n";
  return "Columns " + a + " through " + b + "\n\n";
}

}  // namespace

std::string FormatMatrix(const Eigen::MatrixXd& matrix, int consoleWidth) {
  if (matrix.size() == 0) return {};
  const Survey survey = SurveyElements(matrix);
  const Format format = ChooseFormat(survey, matrix);
  const auto columnWidth = static_cast<Eigen::Index>(CellWidth(survey, format) + 2);
  const Eigen::Index rows = matrix.rows();
  const Eigen::Index cols = matrix.cols();
  const Eigen::Index perBlock = std::clamp<Eigen::Index>(consoleWidth / columnWidth, 1, cols);
  const bool inBlocks = perBlock < cols;

  const Eigen::Index blocks = (cols + perBlock - 1) / perBlock;
  std::string out;
  out.reserve(static_cast<std::size_t>(rows * cols * columnWidth + blocks * (rows + 1) +
                                       (inBlocks ? blocks * 40 : 0)));
  char buffer[32];
  for (Eigen::Index first = 0; first < cols; first += perBlock) {
    const Eigen::Index last = std::min(first + perBlock, cols) - 1;
    if (inBlocks) out += BlockHeading(first, last);
    for (Eigen::Index r = 0; r < rows; ++r) {
      for (Eigen::Index c = first; c <= last; ++c) {
        const std::size_t length = WriteCell(buffer, matrix(r, c), format);
        out.append(static_cast<std::size_t>(columnWidth) - length, ' ');
        out.append(buffer, length);
      }
      out += '\n';
    }
    out += '\n';
  }
  return out;
}
