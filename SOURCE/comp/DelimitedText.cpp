// Delimited text: the field reader, type detection of columns, and the writers.
#include "DelimitedText.h"


#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>
#include <set>
#include <unordered_map>

#include "NumberText.h"
#include "Dataset.h"

namespace {

// Walks the fields of the text, one line at a time.
class FieldReader {
public:
  FieldReader(std::string_view text, char delimiter) : m_text(text), m_delimiter(delimiter) {}

  bool AtEnd() const { return m_pos >= m_text.size(); }
  long Line() const { return m_line; }

  // Reads the next field into `field` (a view into the text, or into `scratch` for a quoted field
  // with doubled quotes); returns true when the field ended its line. `Quoted()` then tells
  // whether it was in quotes, `Unterminated()` whether its quote was never closed.
  bool Next(std::string_view& field, std::string& scratch) {
    m_quoted = m_pos < m_text.size() && m_text[m_pos] == '"';
    if (m_quoted) {
      m_quoteLine = m_line;
      ++m_pos;
      const std::size_t start = m_pos;
      bool doubled = false;
      while (m_pos < m_text.size()) {
        if (m_text[m_pos] == '"') {
          if (m_pos + 1 < m_text.size() && m_text[m_pos + 1] == '"') {
            doubled = true;
            m_pos += 2;
            continue;
          }
          break;
        }
        if (m_text[m_pos] == '\n') ++m_line;
        ++m_pos;
      }
      field = m_text.substr(start, m_pos - start);
      if (doubled) {
        scratch.clear();
        for (std::size_t i = 0; i < field.size(); ++i) {
          scratch += field[i];
          if (field[i] == '"') ++i;
        }
        field = scratch;
      }
      if (m_pos < m_text.size()) {
        ++m_pos;  // the closing quote
      } else {
        m_unterminated = true;
      }
      // Blanks may follow the closing quote; anything else there is an error, not dropped.
      while (m_pos < m_text.size() && m_text[m_pos] != m_delimiter && m_text[m_pos] != '\n' &&
             m_text[m_pos] != '\r') {
        if (m_text[m_pos] != ' ' && m_text[m_pos] != '\t') m_textAfterQuote = true;
        ++m_pos;
      }
    } else {
      const std::size_t start = m_pos;
      while (m_pos < m_text.size() && m_text[m_pos] != m_delimiter && m_text[m_pos] != '\n' &&
             m_text[m_pos] != '\r') {
        ++m_pos;
      }
      field = m_text.substr(start, m_pos - start);
    }
    if (m_pos < m_text.size() && m_text[m_pos] == m_delimiter) {
      ++m_pos;
      return false;
    }
    if (m_pos < m_text.size() && m_text[m_pos] == '\r') ++m_pos;
    if (m_pos < m_text.size() && m_text[m_pos] == '\n') ++m_pos;
    ++m_line;
    return true;
  }

  bool Quoted() const { return m_quoted; }
  bool Unterminated() const { return m_unterminated; }
  bool TextAfterQuote() const { return m_textAfterQuote; }
  long QuoteLine() const { return m_quoteLine; }

  // Whether only line breaks remain.
  bool OnlyLineBreaksLeft() const {
    return m_text.find_first_not_of("\r\n", m_pos) == std::string_view::npos;
  }
  // Skips one empty line (a missing value in a file of one column).
  void SkipLineBreak() {
    if (m_pos < m_text.size() && m_text[m_pos] == '\r') ++m_pos;
    if (m_pos < m_text.size() && m_text[m_pos] == '\n') ++m_pos;
    ++m_line;
  }
  bool AtLineBreak() const { return m_pos < m_text.size() && (m_text[m_pos] == '\n' || m_text[m_pos] == '\r'); }

  // Skips lines that hold nothing (trailing line breaks); LF, CRLF and a lone CR each end a line.
  void SkipEmptyLines() {
    while (AtLineBreak()) SkipLineBreak();
  }

  void Rewind(std::size_t pos, long line) {
    m_pos = pos;
    m_line = line;
  }
  std::size_t Position() const { return m_pos; }

private:
  std::string_view m_text;
  char m_delimiter;
  std::size_t m_pos = 0;
  long m_line = 1;
  bool m_quoted = false;
  bool m_unterminated = false;
  bool m_textAfterQuote = false;
  long m_quoteLine = 0;
};

std::string_view Trimmed(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
  return s;
}

bool IsMissing(std::string_view cell) {
  return cell.empty() || cell == "NA" || cell == "nan" || cell == "NaN" || cell == ".";
}

// The number a cell holds; false when it is not a number.
bool ParseNumber(std::string_view cell, double& out) { return TextToDouble(cell, out); }

// What is wrong with the quoting of the field just read, or "".
std::string QuotingError(const FieldReader& reader) {
  if (reader.Unterminated()) {
    return "the quoted field that starts on line " + std::to_string(reader.QuoteLine()) + " is never closed.";
  }
  if (reader.TextAfterQuote()) {
    return "the quoted field that starts on line " + std::to_string(reader.QuoteLine()) +
           " has text after its closing quote.";
  }
  return {};
}

}  // namespace

std::string ToIdentifier(const std::string& name, std::size_t column, const ReservedWord& reserved) {
  std::string id;
  for (unsigned char c : name) id += (std::isalnum(c) || c == '_') ? static_cast<char>(c) : '_';
  if (id.empty()) return "_V" + std::to_string(column + 1);
  if (std::isdigit(static_cast<unsigned char>(id.front()))) id.insert(id.begin(), '_');
  // A word of the language cannot name a variable: "if" becomes "if_".
  while (reserved && reserved(id)) id += '_';
  return id;
}

DelimitedImport ReadDelimited(std::string_view text, char delimiter, const ReservedWord& reserved) {
  DelimitedImport result;
  if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
  FieldReader reader(text, delimiter);
  std::string scratch;
  std::string_view field;

  // The header: names made into distinct identifiers.
  std::vector<std::string> names;
  std::set<std::string> taken;
  reader.SkipEmptyLines();
  if (reader.AtEnd()) {
    result.dataset = std::make_shared<Dataset>();
    return result;
  }
  for (bool lineEnd = false; !lineEnd;) {
    lineEnd = reader.Next(field, scratch);
    result.error = QuotingError(reader);
    if (!result.error.empty()) return result;
    const std::string original(Trimmed(field));
    std::string name = ToIdentifier(original, names.size(), reserved);
    for (int k = 2; taken.count(name) > 0; ++k) {
      name = ToIdentifier(original, names.size(), reserved) + "_" + std::to_string(k);
    }
    if (name != original) result.renamed.emplace_back(original, name);
    taken.insert(name);
    names.push_back(std::move(name));
  }
  const std::size_t columns = names.size();
  const std::size_t dataStart = reader.Position();
  const long dataLine = reader.Line();

  // First pass: numbers, and which columns hold text.
  std::vector<std::vector<double>> numbers(columns);
  std::vector<bool> isString(columns, false);
  std::size_t rows = 0;
  // In a file of one column an empty line is a missing value; in others it is skipped. Line
  // breaks at the end of the file end it in both.
  const bool oneColumn = columns == 1;
  auto nextRow = [&] {
    if (!oneColumn) reader.SkipEmptyLines();
    return !reader.AtEnd() && !reader.OnlyLineBreaksLeft();
  };
  while (nextRow()) {
    const long line = reader.Line();
    std::size_t column = 0;
    if (oneColumn && reader.AtLineBreak()) {
      reader.SkipLineBreak();
      numbers[0].push_back(std::numeric_limits<double>::quiet_NaN());
      ++rows;
      continue;
    }
    for (bool lineEnd = false; !lineEnd; ++column) {
      lineEnd = reader.Next(field, scratch);
      result.error = QuotingError(reader);
      if (!result.error.empty()) return result;
      if (column >= columns) continue;
      // A quoted cell is text as written; an unquoted one is trimmed and may be a number.
      const bool quoted = reader.Quoted();
      const std::string_view cell = quoted ? field : Trimmed(field);
      double value = std::numeric_limits<double>::quiet_NaN();
      if (quoted || (!IsMissing(cell) && !ParseNumber(cell, value))) isString[column] = true;
      numbers[column].push_back(value);
    }
    if (column != columns) {
      result.error = "line " + std::to_string(line) + " has " + std::to_string(column) +
                     " fields where the header has " + std::to_string(columns) + ".";
      return result;
    }
    ++rows;
  }

  // Second pass, only when some column holds text: the texts of those columns.
  std::vector<std::vector<std::string>> texts(columns);
  if (std::find(isString.begin(), isString.end(), true) != isString.end()) {
    reader.Rewind(dataStart, dataLine);
    while (nextRow()) {
      if (oneColumn && reader.AtLineBreak()) {
        reader.SkipLineBreak();
        texts[0].emplace_back();
        continue;
      }
      std::size_t column = 0;
      for (bool lineEnd = false; !lineEnd; ++column) {
        lineEnd = reader.Next(field, scratch);
        if (!isString[column]) continue;
        if (reader.Quoted()) {
          texts[column].emplace_back(field);
          continue;
        }
        const std::string_view cell = Trimmed(field);
        texts[column].emplace_back(IsMissing(cell) ? std::string_view() : cell);
      }
    }
  }

  Eigen::MatrixXd data(static_cast<Eigen::Index>(rows), static_cast<Eigen::Index>(columns));
  for (std::size_t j = 0; j < columns; ++j) {
    data.col(static_cast<Eigen::Index>(j)) =
        Eigen::Map<const Eigen::VectorXd>(numbers[j].data(), static_cast<Eigen::Index>(rows));
    std::vector<double>().swap(numbers[j]);  // free each column once copied
  }
  auto dataset = std::make_shared<Dataset>(names, data);
  for (std::size_t j = 0; j < columns; ++j) {
    if (isString[j]) dataset->SetStringVariable(names[j], texts[j]);
  }
  result.dataset = std::move(dataset);
  return result;
}

namespace {

// A number in its shortest form that reads back as the same double ("0.1", "1e+300", "-0",
// "inf"), whatever the locale; a missing value as `missing`.
std::string Cell(double x, const std::string& missing) {
  if (std::isnan(x)) return missing;
  char text[32];
  const auto [end, error] = std::to_chars(text, text + sizeof text, x);
  return error == std::errc() ? std::string(text, end) : missing;
}

// A string cell as written: in quotes when reading it back bare would change it (a delimiter,
// quote or line break inside; blanks at either end, which are trimmed; a text that reads as a
// number or a missing value, such as "007" or "NA").
std::string Quoted(const std::string& text, char delimiter) {
  double number = 0.0;
  const bool plain = text.find_first_of(std::string{delimiter, '"', '\n', '\r'}) == std::string::npos &&
                     Trimmed(text).size() == text.size() && (text.empty() || !IsMissing(text)) &&
                     !ParseNumber(text, number);
  if (plain && !text.empty()) return text;
  std::string quoted = "\"";
  for (char c : text) {
    quoted += c;
    if (c == '"') quoted += '"';
  }
  return quoted + "\"";
}

}  // namespace

std::string WriteDelimited(const Dataset& dataset, char delimiter) {
  std::string out;
  const auto& names = dataset.VariableNames();
  // An empty line would read back as a missing value only in a file of one column, and not at
  // its end: there missing numbers are written "NA".
  const std::string missing = names.size() == 1 ? "NA" : "";
  for (std::size_t j = 0; j < names.size(); ++j) out += (j ? std::string(1, delimiter) : "") + names[j];
  out += "\n";
  for (Eigen::Index i = 0; i < dataset.NumberOfObservations(); ++i) {
    for (std::size_t j = 0; j < names.size(); ++j) {
      if (j) out += delimiter;
      const double x = dataset.Data()(i, static_cast<Eigen::Index>(j));
      out += dataset.IsStringVariable(names[j]) ? Quoted(dataset.StringValue(names[j], i), delimiter)
                                                 : Cell(x, missing);
    }
    out += "\n";
  }
  return out;
}

std::string WriteDelimited(const Eigen::MatrixXd& matrix, char delimiter) {
  std::string out;
  // As for datasets, a line of one column is never left empty.
  const std::string missing = matrix.cols() == 1 ? "NA" : "";
  for (Eigen::Index i = 0; i < matrix.rows(); ++i) {
    for (Eigen::Index j = 0; j < matrix.cols(); ++j) {
      if (j) out += delimiter;
      out += Cell(matrix(i, j), missing);
    }
    out += "\n";
  }
  return out;
}
