// FormatMatrix: the one text form of a matrix on every console.
#pragma once

#include <string>

#include <Eigen/Dense>

// The rows of `matrix` as console text: every row ends in a line feed and the block is followed
// by an empty line. Each column is two blanks followed by the element right-aligned to the width
// of the widest element of the matrix. One format holds for the whole matrix; NaN, infinity and
// minus infinity print as "nan", "inf" and "-inf" and take no part in choosing it:
// - every finite element an integer below 1e15 in magnitude: no decimals ("3", "-12");
// - otherwise six significant digits. The exponent of a magnitude is the one it shows written
//   with six significant digits (99999.96 counts as 1.00000e+05). With L the largest and S the
//   smallest non-zero finite magnitude, scientific notation ("1.23457e+08") is used when the
//   exponent of L is 5 or more, the exponent of S is -6 or less, or the exponent of L exceeds that
//   of S by 5 or more (fixed notation would keep fewer than two significant digits of S); an
//   integer matrix reaching 1e15 is scientific as well;
// - else fixed notation with 5 minus the exponent of L decimals (six significant digits of L, so
//   between 1 and 10 decimals), from which the trailing decimals that are zero in every element
//   are dropped, keeping at least one ("1.5" and "2.0", not "1.50000" and "2.00000").
// Negative zero prints as zero. Numbers are written the same way whatever the locale.
// When the rows are longer than `consoleWidth` characters, the columns come in blocks as many as
// fit (at least one), each block opened by "Columns a through b", "Columns a and b" or "Column a"
// and an empty line. A matrix without elements gives "".
std::string FormatMatrix(const Eigen::MatrixXd& matrix, int consoleWidth = 80);
