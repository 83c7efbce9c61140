// Delimited text: reading a header row of names and lines of observations into a dataset;
// writing datasets and matrices.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <Eigen/Dense>

class Dataset;

struct DelimitedImport {
  std::shared_ptr<Dataset> dataset;
  // Header names that were not identifiers, each with the name it was given ("x y" -> "x_y").
  std::vector<std::pair<std::string, std::string>> renamed;
  // Empty when the text was read; otherwise what was wrong and on which line (1-based).
  std::string error;
};

// Whether a word is reserved by the language (a keyword or constant), so that it cannot name a
// variable.
using ReservedWord = std::function<bool(const std::string&)>;

// Parses `text`: fields separated by `delimiter`, lines ended by LF, CRLF or CR; a leading UTF-8
// byte-order mark is skipped. A field in double quotes may hold delimiters, line breaks and doubled
// quotes, and is text as written (never a number: its column is a string variable, and "" a
// missing text); only blanks may follow its closing quote. Unquoted cells are trimmed; empty ones,
// "NA", "nan", "NaN" and "." are missing values; numbers too large for a double are infinite, too
// small ones zero. A column with any other cell that is not a number becomes a string variable.
// Empty lines are skipped, except in a file of one column, where each is a missing value (line
// breaks at the end of the file are not). Lines with another number of fields than the header, a
// quote that is never closed and text after a closing quote are errors that name their line.
// Header names that are not identifiers, or are `reserved` words, are renamed.
DelimitedImport ReadDelimited(std::string_view text, char delimiter, const ReservedWord& reserved = {});

// The identifier a header name becomes: letters, digits and "_", not starting with a digit, and
// followed by "_" while it is a reserved word.
std::string ToIdentifier(const std::string& name, std::size_t column, const ReservedWord& reserved = {});

// A dataset as delimited text: a header row of names, then one line per observation; numbers
// in the shortest form that reads back exactly, string variables as their texts (quoted when
// reading them back bare would change them; a missing text as ""), missing numbers as empty cells
// ("NA" in a dataset of one variable, so that no line is empty). ReadDelimited gives the same
// dataset back.
std::string WriteDelimited(const Dataset& dataset, char delimiter);
// A matrix as delimited text, one line per row, missing values as empty cells ("NA" in a matrix
// of one column).
std::string WriteDelimited(const Eigen::MatrixXd& matrix, char delimiter);
