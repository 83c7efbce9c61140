// MIM_LinearFamily, MIM_LM_RE: the estimated linear models as the workspace holds them, with what
// they offer after estimation.
#pragma once

#include <string>
#include <vector>

#include "Estimator.h"
#include "PredictiveModel.h"

// An estimated model of the linear family (LM, LM_HET): its draws under their labels and the
// two log-marginal likelihoods. It predicts E(y|x) = x'b and stores fitted values and residuals.
class MIM_LinearFamily : public PredictiveModel {
public:
  MIM_LinearFamily() = default;
  // Takes the draws and marginal likelihoods of a finished estimator.
  void SetEstimates(const Estimator& estimator, const std::string& typeName, const std::string& title,
                    std::vector<std::string> labels, double logML, double logML_CJ);
  // The coefficients of the main list first, labelled dependent$regressor, then those of the second
  // list (LM_HET) or the precision tau (LM).
  bool LayoutHolds() const override;

protected:
  const IndexLink& Link() const override;
  std::vector<std::string> StoredSeries() const override;
  std::vector<std::pair<std::string, Eigen::VectorXd>> StoreSeries(const std::string& name,
                                                                   const ActionData& data) const override;
};

// The model with individual effects (LM_RE): predictions also with the effects (type 2: each
// draw of b, tau and omega with a draw of the observation's effect from its conditional), and the
// effects' posterior means among the stored series.
class MIM_LM_RE : public MIM_LinearFamily {
public:
  // The coefficients, then tau and omega.
  bool LayoutHolds() const override;

protected:
  int FurtherTypes() const override { return 1; }
  std::string DescribeFurther(int type) const override;
  void FurtherQuantity(int type, const ActionData& data, Eigen::Index first, Eigen::MatrixXd& index) const override;
  std::vector<std::string> ExtraVariables(const Dataset& dataset) const override;
  std::vector<std::string> StoredSeries() const override;
  std::vector<std::pair<std::string, Eigen::VectorXd>> StoreSeries(const std::string& name,
                                                                   const ActionData& data) const override;

private:
  // Per group of the sample (numbered by first appearance): the sums of y and of X and the sizes;
  // `group` gives each observation's group.
  struct GroupSums {
    std::vector<int> group;
    Eigen::MatrixXd X;  // k x G
    Eigen::VectorXd y, size;
  };
  static GroupSums SumByGroup(const ActionData& data);
};
