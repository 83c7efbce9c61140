// The shape rule shared by parameterised random draws and element-wise densities: scalar
// parameters with optional dimensions, or matrix parameters of one common size.
#pragma once

#include <string>
#include <vector>

#include <Eigen/Dense>

#include "BuiltinCall.h"

// The parameters of one draw call, each a matrix; `At(k, i)` is parameter k for element i
// (a scalar parameter stands for every element).
struct DrawParameters {
  std::vector<std::shared_ptr<const Eigen::MatrixXd>> values;
  Eigen::Index rows = 1;
  Eigen::Index cols = 1;

  double At(std::size_t k, Eigen::Index i) const {
    const Eigen::MatrixXd& m = *values[k];
    return m.size() == 1 ? m(0, 0) : m(i);
  }
  bool AllScalar() const;
};

// Works out the result's size from the parameters and, when present, the dimension arguments
// at positions `dimensionsAt` and `dimensionsAt + 1` of the call. `plural` chooses the wording
// of the refusal of dimensions with matrix parameters ("parameters are scalars" or "parameter
// is a scalar").
void ApplyShapeRule(const BuiltinCall& call, DrawParameters& parameters, std::size_t dimensionsAt,
                    bool plural);

// How many draws are made between two looks at the interrupt flag.
inline constexpr Eigen::Index kDrawsPerInterruptCheck = 1 << 14;

// Fills a rows x cols matrix column by column with draw(i) for each element i, after checking that
// it fits in memory, and looking for an interrupt as it goes.
template <typename Draw>
Eigen::MatrixXd FillDraws(const BuiltinCall& call, const DrawParameters& parameters, Draw draw) {
  call.CheckSize(static_cast<double>(parameters.rows), static_cast<double>(parameters.cols));
  Eigen::MatrixXd out(parameters.rows, parameters.cols);
  double* data = out.data();
  for (Eigen::Index i = 0; i < out.size(); ++i) {
    if (i % kDrawsPerInterruptCheck == 0) call.CheckInterrupt();
    data[i] = draw(i);
  }
  return out;
}
