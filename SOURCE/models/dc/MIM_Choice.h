// MIM_MNLogit and the other models of a choice among several alternatives, as the workspace holds
// them.
#pragma once

#include <vector>

#include "PredictiveModel.h"

// The multinomial choice models: the member "alternatives" holds the codes of the alternatives
// (increasing) and "base" the base's code; the parameters begin with one coefficient vector per
// alternative other than the base, in the order of their codes. mfx and predict of type t give
// the probability of the t-th alternative (in the order of the codes).
class MultinomialChoiceModel : public PredictiveModel {
public:
  // The codes of the alternatives and the position of the base among them.
  std::vector<long long> Codes() const;
  Eigen::Index BasePosition() const;

protected:
  const IndexLink& Link() const override;
  bool SeveralIndices() const override { return true; }
  void QuantityOfRegressors(int type, const Eigen::Ref<const Eigen::MatrixXd>& X, const Eigen::MatrixXd& draws,
                            Eigen::MatrixXd& out) const override;
  // The probability of alternative `alternative` (0 the base, 1 ... J-1 the others in the order of
  // their codes) given the indices of the other alternatives (one D x n matrix each).
  virtual void Probability(Eigen::Index alternative, const std::vector<Eigen::MatrixXd>& indices,
                           const Eigen::MatrixXd& draws, Eigen::MatrixXd& out) const = 0;

private:
  mutable std::unique_ptr<IndexLink> m_link;
};

// P(y = j | x) = e^(x'b_j) / sum_l e^(x'b_l), b_base = 0.
class MIM_MNLogit : public MultinomialChoiceModel {
protected:
  void Probability(Eigen::Index alternative, const std::vector<Eigen::MatrixXd>& indices, const Eigen::MatrixXd& draws,
                   Eigen::MatrixXd& out) const override;
};

// The conditional logit: one coefficient per regressor, common to every alternative. Its draws
// and results are those of every model; it has no post-estimation actions of its own.
class MIM_CLogit : public Model {};

// The probits: coefficients, then the free elements of the utility differences' covariance
// (Sigma_11 = 1). "alternatives" and "base" as for the multinomial logit.
class MIM_MNProbit : public Model {};
class MIM_CProbit : public Model {};

// The multivariate probits: every equation's coefficients, then the parameters of the errors'
// correlation (correlations, the common rho, or the loadings).
class MIM_MVProbit : public Model {};
