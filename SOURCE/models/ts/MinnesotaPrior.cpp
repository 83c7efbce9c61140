// MinnesotaPrior: scales from univariate autoregressions, prior means and precisions.
#include "MinnesotaPrior.h"

#include <cmath>

Eigen::VectorXd AutoregressiveScales(const Eigen::MatrixXd& Y, Eigen::Index lags, Eigen::Index start) {
  const Eigen::Index m = Y.cols(), n = Y.rows() - start;
  Eigen::VectorXd scales(m);
  for (Eigen::Index i = 0; i < m; ++i) {
    Eigen::MatrixXd X(n, lags + 1);
    X.col(0).setOnes();
    for (Eigen::Index l = 1; l <= lags; ++l) X.col(l) = Y.col(i).segment(start - l, n);
    const Eigen::VectorXd y = Y.col(i).tail(n);
    const Eigen::VectorXd residuals = y - X * X.colPivHouseholderQr().solve(y);
    const double dof = std::max<double>(1.0, static_cast<double>(n - lags - 1));
    scales(i) = std::sqrt(residuals.squaredNorm() / dof);
    if (!(scales(i) > 0.0)) scales(i) = 1.0;  // a constant series: any scale
  }
  return scales;
}

void MinnesotaIndependent(const MinnesotaSettings& s, const Eigen::VectorXd& scales, Eigen::Index lags, bool constant,
                          Eigen::Index exogenous, Eigen::VectorXd& mean, Eigen::VectorXd& precision) {
  const Eigen::Index m = scales.size(), c = constant ? 1 : 0, k = c + m * lags + exogenous;
  mean = Eigen::VectorXd::Zero(m * k);
  precision.resize(m * k);
  for (Eigen::Index i = 0; i < m; ++i) {
    const Eigen::Index base = i * k;
    const double deterministic = s.lambda4 * scales(i);
    if (constant) precision(base) = 1.0 / (deterministic * deterministic);
    for (Eigen::Index l = 1; l <= lags; ++l) {
      const double decay = std::pow(static_cast<double>(l), s.lambda3);
      for (Eigen::Index j = 0; j < m; ++j) {
        const Eigen::Index at = base + c + (l - 1) * m + j;
        const double sd = i == j ? s.lambda1 / decay : s.lambda1 * s.lambda2 * scales(i) / (scales(j) * decay);
        precision(at) = 1.0 / (sd * sd);
        if (i == j && l == 1) mean(at) = s.delta;
      }
    }
    for (Eigen::Index x = 0; x < exogenous; ++x) precision(base + c + m * lags + x) = 1.0 / (deterministic * deterministic);
  }
}

void MinnesotaConjugate(const MinnesotaSettings& s, const Eigen::VectorXd& scales, Eigen::Index lags, bool constant,
                        Eigen::Index exogenous, Eigen::MatrixXd& B0, Eigen::MatrixXd& V0inverse) {
  const Eigen::Index m = scales.size(), c = constant ? 1 : 0, k = c + m * lags + exogenous;
  B0 = Eigen::MatrixXd::Zero(k, m);
  Eigen::VectorXd diagonal(k);
  if (constant) diagonal(0) = 1.0 / (s.lambda4 * s.lambda4);
  for (Eigen::Index l = 1; l <= lags; ++l) {
    const double decay = std::pow(static_cast<double>(l), s.lambda3);
    for (Eigen::Index j = 0; j < m; ++j) {
      const double sd = s.lambda1 / (decay * scales(j));
      diagonal(c + (l - 1) * m + j) = 1.0 / (sd * sd);
      if (l == 1) B0(c + j, j) = s.delta;
    }
  }
  for (Eigen::Index x = 0; x < exogenous; ++x) diagonal(c + m * lags + x) = 1.0 / (s.lambda4 * s.lambda4);
  V0inverse = diagonal.asDiagonal();
}
