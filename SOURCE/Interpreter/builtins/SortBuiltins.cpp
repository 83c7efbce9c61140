// Built-ins that sort: the elements of each column or row, and whole rows by key columns.
#include <vector>

#include "BuiltinFamilies.h"
#include "MatrixStatistics.h"
#include "ValueKind.h"

namespace {

using Eigen::MatrixXd;

constexpr const char* kUseSortd =
    " Consider using the \"sortd\" function to sort datasets with string variables.";

// The matrix to sort; a dataset with string variables is pointed to sortd.
std::shared_ptr<const MatrixXd> SortTarget(const BuiltinCall& call, const std::string& notMatrix) {
  const int code = call.Value(0).code;
  if (code != kind::MATRIX && code != kind::DATASET) call.Fail(notMatrix);
  return call.Numeric(0, notMatrix,
                      "Dataset \"" + call.Text(0) +
                          "\" contains string variables and cannot be used in mathematical "
                          "expressions." +
                          kUseSortd);
}

// sort(A) sorts each column; sort(A, 2) each row.
TavixValue Sort(const BuiltinCall& call) {
  const auto a = SortTarget(call, "Function \"sort\" is defined only for matrices and datasets.");
  int direction = 1;
  if (call.Count() == 2) {
    const auto d = call.MatrixOrNull(1);
    if (!d || !IntrCheck_Integer(*d, direction) || (direction != 1 && direction != 2)) {
      call.Fail("The second argument passed to the \"sort\" function must be either 1 or 2.");
    }
  }
  return TavixValue::FromMatrix(direction == 1 ? numerics::matrixSort(a)
                                               : numerics::matrixSortRowwise(a));
}

// sortrows(A) orders the rows by every column in turn; sortrows(A, v) by the columns listed in v.
TavixValue SortRows(const BuiltinCall& call) {
  const bool withColumns = call.Count() == 2;
  const auto a = SortTarget(call, withColumns
                                      ? "The first argument passed to \"sortrows\" is not a "
                                        "matrix or dataset."
                                      : "The argument passed to \"sortrows\" is not a matrix or "
                                        "dataset.");
  std::vector<int> columns;
  if (!withColumns) {
    for (int j = 0; j < a->cols(); ++j) columns.push_back(j);
    return TavixValue::FromMatrix(numerics::SortMatrixVarIndex(a, columns));
  }
  const std::string refusal =
      "The second argument passed to \"sortrows\" must be a vector of positive integers.";
  const auto v = call.Numeric(1, refusal,
                              "Dataset \"" + call.Text(1) +
                                  "\" contains string variables and their values cannot be used "
                                  "as a vector of integers.");
  if ((v->rows() != 1 && v->cols() != 1) || v->size() == 0 || !IntrCheck_Integers(*v) ||
      v->minCoeff() < 1.0) {
    call.Fail(refusal);
  }
  if (v->maxCoeff() > static_cast<double>(a->cols())) {
    call.Fail("The column indices contained in \"" + call.Text(1) +
              "\" go beyond the number of\ncolumns of \"" + call.Text(0) + "\".");
  }
  for (double c : v->reshaped()) columns.push_back(static_cast<int>(c) - 1);
  return TavixValue::FromMatrix(numerics::SortMatrixVarIndex(a, columns));
}

const BuiltinRow kRows[] = {
    {"sort", ArgCounts(1, 2), false, Sort},
    {"sortrows", ArgCounts(1, 2), false, SortRows},
};

}  // namespace

std::span<const BuiltinRow> SortBuiltins() { return kRows; }
