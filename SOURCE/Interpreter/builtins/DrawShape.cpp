#include "DrawShape.h"

bool DrawParameters::AllScalar() const {
  for (const auto& m : values) {
    if (m->size() != 1) return false;
  }
  return true;
}

void ApplyShapeRule(const BuiltinCall& call, DrawParameters& parameters, std::size_t dimensionsAt,
                    bool plural) {
  const bool dimensionsGiven = call.Count() > dimensionsAt;
  if (parameters.AllScalar()) {
    parameters.rows = 1;
    parameters.cols = 1;
    if (!dimensionsGiven) return;
    const auto m = call.MatrixOrNull(dimensionsAt);
    const auto n = call.MatrixOrNull(dimensionsAt + 1);
    int rows = 0;
    int cols = 0;
    if (!m || !n || !IntrCheck_PositiveInteger(*m, rows) || !IntrCheck_PositiveInteger(*n, cols)) {
      call.Fail("Dimension arguments passed to \"" + call.Name() + "\" must be positive integers.");
    }
    parameters.rows = rows;
    parameters.cols = cols;
    return;
  }
  bool first = true;
  for (const auto& m : parameters.values) {
    if (m->size() == 1) continue;
    if (!first && (m->rows() != parameters.rows || m->cols() != parameters.cols)) {
      call.Fail("Parameter dimensions in \"" + call.Name() + "\" do not match.");
    }
    parameters.rows = m->rows();
    parameters.cols = m->cols();
    first = false;
  }
  if (dimensionsGiven) {
    call.Fail("Dimension arguments may be provided to \"" + call.Name() + "\" only if the " +
              (plural ? "distribution's parameters are scalars." : "distribution's parameter is a scalar."));
  }
}
