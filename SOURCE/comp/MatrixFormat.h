// FormatMatrix: the one text form of a matrix on every console.
#pragma once

#include <string>

#include <Eigen/Dense>

// The rows of `matrix` as console text, each row ending in a line feed and the block followed by
// an empty line. One format holds for the whole matrix, columns right-aligned, two blanks before
// each column:
// - every finite element an integer (below 1e15 in magnitude): no decimals;
// - otherwise six significant digits: fixed notation with the decimals that the largest
//   magnitude needs, or scientific notation ("1.23457e+08") when the largest magnitude is at
//   least 1e5 or the smallest non-zero one below 1e-5; in fixed notation, decimals that are zero in
//   every element are left out (at least one stays);
// - NaN, infinity and minus infinity print as "nan", "inf" and "-inf" and do not affect the
//   choice; negative zero prints as zero.
// A matrix wider than `consoleWidth` characters is printed in blocks of columns, each headed by
// "Columns a through b", "Columns a and b" or "Column a". Empty matrices give "".
std::string FormatMatrix(const Eigen::MatrixXd& matrix, int consoleWidth = 80);
