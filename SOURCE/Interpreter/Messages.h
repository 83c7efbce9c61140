// The catalogue of user-facing message texts, exactly as they are printed.
#pragma once

namespace msg {

// Names
inline constexpr const char* kSymbolNotDefined = "Symbol \"{}\" is not defined.";

// Operators
inline constexpr const char* kSummandsNotComformable =
    "Summands are not comformable for element-wise operations.";
inline constexpr const char* kMatricesNotComformable =
    "Matrices are not comformable for multiplication.";
inline constexpr const char* kDivisionNotDefined =
    "The \"/\" operator is not defined for matrices or datasets.";
inline constexpr const char* kFactorsNotComformable =
    "Factors are not comformable for element-wise operations.";
inline constexpr const char* kScalarExponent = "The exponents of scalars must be scalars.";
inline constexpr const char* kSquareBase = "The base must be a square matrix.";
inline constexpr const char* kMatrixExponent =
    "The exponents of matrices must be positive integers.";
inline constexpr const char* kElementPowerNotComformable =
    "The matrices are not comformable for element-wise operations.";
inline constexpr const char* kExponentKind = "The exponent must be a matrix or dataset.";
// printf form: rows, columns, gigabytes needed, gigabytes available.
inline constexpr const char* kMatrixTooLarge =
    "A %.0f by %.0f matrix would need %.1f GB of memory, but only %.1f GB are available.";
inline constexpr const char* kNoReturnValue =
    "The function cannot be used in an expression because it does not have a return value.";

// Parallel calls of user functions
inline constexpr const char* kFiguresInParallelCall =
    "Figures cannot be drawn inside calls of \"mthread\": return the values from the function and "
    "draw them after \"mthread\".";
// The statement's keyword is put in front: "\"setwd\" cannot be used ...".
inline constexpr const char* kRefusedInParallelCall = " cannot be used inside calls of \"mthread\".";

// Block matrices and ranges
inline constexpr const char* kBlockElements = "The elements of block matrices must be matrices.";
inline constexpr const char* kInconsistentSubmatrices = "Inconsistent dimensions of submatrices.";
inline constexpr const char* kRangePositive =
    "In range operations, 'a:b', 'a' and 'b' must be positive integers.";
inline constexpr const char* kRangeOrder =
    "In range operations, 'a:b', second index is smaller than first index.";
inline constexpr const char* kIndexOutOfBounds = "Index out of bounds.";

}  // namespace msg

namespace msg {

// Assignment
inline constexpr const char* kRangeRightNotMatrix =
    "Right-side expression in range assignment is not a matrix.";
inline constexpr const char* kInconsistentElements =
    "Inconsistent left- and right-side number of elements.";
inline constexpr const char* kInconsistentDimensions =
    "Inconsistent left- and right-side dimensions.";
inline constexpr const char* kDatasetVariableNotMatrix =
    "Right-side expression in assignment to dataset variable is not a matrix.";
inline constexpr const char* kDatasetVariableOneColumn =
    "Right-side expression in assignment to dataset variable must have one column.";
inline constexpr const char* kDimensionMismatch =
    "Dimension mismatch between left- and right-side expressions.";

// Printing
inline constexpr const char* kPrintColour =
    "The second argument passed to \"print\" must be a 1x3 vector with elements between 0 and 1.";
inline constexpr const char* kPrintStructure =
    "The \"print\" function cannot take a structure as its argument. Use the \"who\" function to "
    "list a structure's elements.";

}  // namespace msg
