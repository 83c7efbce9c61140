// NormalLinearStep: fixed-precision Normal draws of regression coefficients.
#include "NormalLinearStep.h"

NormalLinearStep::NormalLinearStep(const Eigen::MatrixXd& X, const LinearPrior& prior)
    : m_X(X), m_priorTerm(prior.precisionTimesMean), m_A(X.transpose() * X + prior.precision),
      m_factor(m_A), m_c(X.cols()), m_z(X.cols()) {}

void NormalLinearStep::Mean(const Eigen::VectorXd& z, Eigen::VectorXd& mean) const {
  MeanFromCrossProduct(m_X.transpose() * z, mean);
}

void NormalLinearStep::MeanFromCrossProduct(const Eigen::VectorXd& Xtz, Eigen::VectorXd& mean) const {
  mean = Xtz + m_priorTerm;
  m_factor.solveInPlace(mean);
}

void NormalLinearStep::Draw(const Eigen::VectorXd& mean, RandomEngine& rng, Eigen::VectorXd& out) {
  for (Eigen::Index j = 0; j < m_z.size(); ++j) m_z(j) = rng.Normal();
  out = mean;
  out += m_factor.matrixU().solve(m_z);
}
