// Reading delimited text (a header row of names, then one observation per line) into a dataset.
#pragma once

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

// Parses `text`: fields separated by `delimiter`, lines ended by LF, CRLF or CR; a field in double
// quotes may hold delimiters, line breaks and doubled quotes; a leading UTF-8 byte-order mark is
// skipped. Empty cells, "NA", "nan" and "." are missing values. A column with any other cell that
// is not a number becomes a string variable. Lines with another number of fields than the header
// are an error.
DelimitedImport ReadDelimited(std::string_view text, char delimiter);

// The identifier a header name becomes: letters, digits and "_", not starting with a digit.
std::string ToIdentifier(const std::string& name, std::size_t column);

// A dataset as delimited text: a header row of names, then one line per observation; numbers
// with all their digits, string variables as their texts (quoted when they hold the delimiter, a
// quote or a line break), missing values as empty cells.
std::string WriteDelimited(const Dataset& dataset, char delimiter);
// A matrix as delimited text, one line per row, missing values as empty cells.
std::string WriteDelimited(const Eigen::MatrixXd& matrix, char delimiter);
