// MIM_SUR: an estimated system of seemingly unrelated regressions, with marginal effects,
// predictions and stored series per equation.
#pragma once

#include <string>
#include <vector>

#include "Model.h"

class MIM_LinearFamily;

class MIM_SUR : public Model {
public:
  // One equation as the labels of the coefficients give it (dependent$regressor, in order).
  struct Equation {
    std::string dependent;
    std::vector<std::string> regressors;
    Eigen::Index offset = 0;  // where its coefficients start among the parameters
  };
  std::vector<Equation> Equations() const;

  bool LayoutHolds() const override;
  bool ProvidesAction(const std::string& action) const override;
  // mfx and predict act on equation "type"; store adds each series asked for, for every equation
  // (fitted_y1, residuals_y1, ...).
  std::string RunAction(const std::string& action, const ActionOptions& options, const ActionContext& context,
                        ActionResult& result) const override;

private:
  // Equation j as a linear model over the rows the system used.
  std::shared_ptr<MIM_LinearFamily> EquationModel(const std::vector<Equation>& equations, std::size_t j) const;
};
