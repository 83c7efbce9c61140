// MarginalLikelihood: normal and gamma log densities, Laplace-Metropolis.
#include "MarginalLikelihood.h"

#include <cmath>
#include <limits>

namespace mlik {

namespace {
constexpr double kLog2Pi = 1.8378770664093454836;
}

double LogNormalDensity(const Eigen::VectorXd& x, const Eigen::VectorXd& mean,
                        const Eigen::MatrixXd& precision) {
  const Eigen::LLT<Eigen::MatrixXd> llt(precision);
  if (llt.info() != Eigen::Success) return std::numeric_limits<double>::quiet_NaN();
  const Eigen::VectorXd d = x - mean;
  const Eigen::VectorXd u = llt.matrixU() * d;
  const double logDet = 2.0 * llt.matrixLLT().diagonal().array().log().sum();
  return 0.5 * logDet - 0.5 * static_cast<double>(x.size()) * kLog2Pi - 0.5 * u.squaredNorm();
}

double LogGammaDensity(double x, double shape, double rate) {
  if (!(x > 0.0)) return -std::numeric_limits<double>::infinity();
  return shape * std::log(rate) - std::lgamma(shape) + (shape - 1.0) * std::log(x) - rate * x;
}

Eigen::MatrixXd Covariance(const Eigen::MatrixXd& draws) {
  const Eigen::RowVectorXd mean = draws.colwise().mean();
  const Eigen::MatrixXd centred = draws.rowwise() - mean;
  const double n = static_cast<double>(draws.rows());
  return centred.transpose() * centred / std::max(1.0, n - 1.0);
}

double LaplaceMetropolis(double logKernelAtMean, const Eigen::MatrixXd& draws) {
  const Eigen::LLT<Eigen::MatrixXd> llt(Covariance(draws));
  if (llt.info() != Eigen::Success) return std::numeric_limits<double>::quiet_NaN();
  const double logDet = 2.0 * llt.matrixLLT().diagonal().array().log().sum();
  return logKernelAtMean + 0.5 * static_cast<double>(draws.cols()) * kLog2Pi + 0.5 * logDet;
}

double LogMeanExp(const Eigen::VectorXd& values) {
  if (values.size() == 0) return std::numeric_limits<double>::quiet_NaN();
  const double top = values.maxCoeff();
  if (!std::isfinite(top)) return top;
  return top + std::log((values.array() - top).exp().mean());
}

}  // namespace mlik
