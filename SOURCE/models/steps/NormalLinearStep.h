// NormalLinearStep: the draw of regression coefficients given a working response with unit
// precision, the step that probit, tobit and frontier samplers end in.
#pragma once

#include <Eigen/Dense>

#include "LinearPrior.h"
#include "RandomEngine.h"

// b | z ~ N(A^-1 (X'z + P m), A^-1) with A = X'X + P fixed: A's Cholesky factor is computed
// once, so a draw costs one product X'z and two triangular solves.
class NormalLinearStep {
public:
  NormalLinearStep(const Eigen::MatrixXd& X, const LinearPrior& prior);

  // The conditional mean A^-1 (X'z + P m) of the coefficients, into `mean`.
  void Mean(const Eigen::VectorXd& z, Eigen::VectorXd& mean) const;
  // The same from X'z computed by the caller (in blocks, say).
  void MeanFromCrossProduct(const Eigen::VectorXd& Xtz, Eigen::VectorXd& mean) const;
  // A draw given the conditional mean (from Mean), into `out`.
  void Draw(const Eigen::VectorXd& mean, RandomEngine& rng, Eigen::VectorXd& out);
  // The precision A of the conditional.
  const Eigen::MatrixXd& Precision() const { return m_A; }

private:
  const Eigen::MatrixXd& m_X;
  Eigen::VectorXd m_priorTerm;
  Eigen::MatrixXd m_A;
  Eigen::LLT<Eigen::MatrixXd> m_factor;
  Eigen::VectorXd m_c, m_z;
};
