// MIM_Poisson and MIM_NegBinom: the estimated count models as the workspace holds them.
#pragma once

#include <string>

#include "PredictiveModel.h"

// What the count models share: E(y|x) = exp(x'b), for mfx and predict (type 1, an exposure of
// one), and with an exposure variable E(y|x, exposure) = exposure exp(x'b) at the observations of
// the sample (type 2, predict only). The exposure variable is named in the title, so that a model
// read back from a file keeps it.
class MIM_CountModel : public PredictiveModel {
public:
  // The title of a count model whose exposure variable is `exposure` (empty for none).
  static std::string Title(const std::string& model, const std::string& exposure);
  // The exposure variable; empty when the model has none.
  std::string Exposure() const;
  bool LayoutHolds() const override;

protected:
  const IndexLink& Link() const override;
  int FurtherTypes() const override { return Exposure().empty() ? 0 : 1; }
  std::string DescribeFurther(int type) const override;
  void FurtherQuantity(int type, const ActionData& data, Eigen::Index first, Eigen::MatrixXd& index) const override;
  std::vector<std::string> ExtraVariables(const Dataset& dataset) const override;
  // The keyword, and the labels that follow the coefficients'.
  virtual const char* Keyword() const = 0;
  virtual std::vector<std::string> FurtherLabels() const { return {}; }
};

class MIM_Poisson : public MIM_CountModel {
protected:
  const char* Keyword() const override { return "poisson"; }
};

// The draws hold the coefficients, then the dispersion alpha.
class MIM_NegBinom : public MIM_CountModel {
protected:
  const char* Keyword() const override { return "nbinom"; }
  std::vector<std::string> FurtherLabels() const override { return {"alpha"}; }
};
