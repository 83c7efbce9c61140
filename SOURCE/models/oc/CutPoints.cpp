// CutPoints: the map between free cut-points and the sampler's parameters, and their prior.
#include "CutPoints.h"

#include <cmath>
#include <limits>

#include "BinaryAugmentation.h"

CutPoints::CutPoints(int categories, bool firstFixed, const CutPointPrior& prior)
    : m_categories(categories), m_firstFixed(firstFixed), m_free(categories - (firstFixed ? 2 : 1)), m_prior(prior) {
  const double n = static_cast<double>(m_free);
  m_logNormaliser = -std::lgamma(n + 1.0);
  if (m_firstFixed) m_logNormaliser += n * LogNormalCdf(prior.mean * std::sqrt(prior.precision));
  m_logConstant = 0.5 * n * std::log(prior.precision / (2.0 * M_PI)) - m_logNormaliser;
}

Eigen::VectorXd CutPoints::FreeCuts(const Eigen::Ref<const Eigen::VectorXd>& theta) const {
  Eigen::VectorXd free(m_free);
  double c = 0.0;
  for (Eigen::Index m = 0; m < m_free; ++m) free(m) = c = IsLogGap(m) ? c + std::exp(theta(m)) : theta(m);
  return free;
}

Eigen::VectorXd CutPoints::Theta(const Eigen::VectorXd& free) const {
  Eigen::VectorXd theta(m_free);
  double previous = 0.0;
  for (Eigen::Index m = 0; m < m_free; ++m) {
    theta(m) = IsLogGap(m) ? std::log(free(m) - previous) : free(m);
    previous = free(m);
  }
  return theta;
}

bool CutPoints::Ordered(const Eigen::Ref<const Eigen::VectorXd>& free) const {
  double previous = m_firstFixed ? 0.0 : -std::numeric_limits<double>::infinity();
  for (Eigen::Index m = 0; m < m_free; ++m) {
    if (!(free(m) > previous)) return false;
    previous = free(m);
  }
  return true;
}

Eigen::MatrixXd CutPoints::Jacobian(const Eigen::Ref<const Eigen::VectorXd>& theta) const {
  Eigen::MatrixXd jacobian = Eigen::MatrixXd::Zero(m_free, m_free);
  for (Eigen::Index m = 0; m < m_free; ++m) {
    jacobian.col(m).tail(m_free - m).setConstant(IsLogGap(m) ? std::exp(theta(m)) : 1.0);
  }
  return jacobian;
}

double CutPoints::LogJacobian(const Eigen::Ref<const Eigen::VectorXd>& theta) const {
  double sum = 0.0;
  for (Eigen::Index m = 0; m < m_free; ++m) {
    if (IsLogGap(m)) sum += theta(m);
  }
  return sum;
}

double CutPoints::LogDensity(const Eigen::Ref<const Eigen::VectorXd>& free) const {
  if (!Ordered(free)) return -std::numeric_limits<double>::infinity();
  return m_logConstant - 0.5 * m_prior.precision * (free.array() - m_prior.mean).square().sum();
}

double CutPoints::AddLogDensityDerivatives(const Eigen::Ref<const Eigen::VectorXd>& free,
                                           Eigen::Ref<Eigen::VectorXd> gradient,
                                           Eigen::Ref<Eigen::MatrixXd> hessian) const {
  gradient.array() -= m_prior.precision * (free.array() - m_prior.mean);
  hessian.diagonal().array() -= m_prior.precision;
  return LogDensity(free);
}
