// DynamicModel: residual recursions, impulse responses, simulated futures, companion roots.
#include "DynamicModel.h"

#include <algorithm>

namespace dynamic {

Eigen::MatrixXd Companion(const Eigen::MatrixXd& A, Eigen::Index m) {
  const Eigen::Index mp = A.cols();
  Eigen::MatrixXd C = Eigen::MatrixXd::Zero(mp, mp);
  C.topRows(m) = A;
  if (mp > m) C.bottomLeftCorner(mp - m, mp - m).setIdentity();
  return C;
}

double LargestModulus(const Eigen::MatrixXd& A, Eigen::Index m) {
  if (A.cols() == 0) return 0.0;
  if (A.cols() == 1) return std::abs(A(0, 0));
  const Eigen::EigenSolver<Eigen::MatrixXd> solver(Companion(A, m), false);
  return solver.eigenvalues().cwiseAbs().maxCoeff();
}

Eigen::MatrixXd Residuals(const DynamicParameters& p, const Eigen::MatrixXd& W, const Eigen::MatrixXd& X,
                          Eigen::Index start) {
  const Eigen::Index m = p.Series(), lags = p.Lags(), q = p.MovingAverage();
  Eigen::MatrixXd E = Eigen::MatrixXd::Zero(W.rows(), m);
  for (Eigen::Index t = start; t < W.rows(); ++t) {
    Eigen::VectorXd e = W.row(t).transpose() - p.c;
    if (p.B.cols() > 0) e -= p.B * X.row(t).transpose();
    for (Eigen::Index i = 1; i <= lags; ++i) e -= p.A.middleCols((i - 1) * m, m) * W.row(t - i).transpose();
    for (Eigen::Index j = 1; j <= q && t - j >= start; ++j) e -= p.Theta.middleCols((j - 1) * m, m) * E.row(t - j).transpose();
    E.row(t) = e.transpose();
  }
  return E;
}

Eigen::MatrixXd ImpulseResponses(const DynamicParameters& p, Eigen::Index horizon, const Eigen::MatrixXd& impact) {
  const Eigen::Index m = p.Series(), lags = p.Lags(), q = p.MovingAverage();
  Eigen::MatrixXd psi = Eigen::MatrixXd::Zero((horizon + 1) * m, m);
  psi.topRows(m).setIdentity();
  for (Eigen::Index h = 1; h <= horizon; ++h) {
    auto block = psi.middleRows(h * m, m);
    for (Eigen::Index i = 1; i <= std::min(h, lags); ++i) {
      block.noalias() += p.A.middleCols((i - 1) * m, m) * psi.middleRows((h - i) * m, m);
    }
    if (h <= q) block += p.Theta.middleCols((h - 1) * m, m);
  }
  Eigen::MatrixXd out((horizon + 1) * m, impact.cols());
  for (Eigen::Index h = 0; h <= horizon; ++h) out.middleRows(h * m, m).noalias() = psi.middleRows(h * m, m) * impact;
  return out;
}

Eigen::MatrixXd SimulateFuture(const DynamicParameters& p, const Eigen::MatrixXd& W, const Eigen::MatrixXd& E,
                               const Eigen::MatrixXd& Xf, const Eigen::MatrixXd& sigmaFactor,
                               const Eigen::MatrixXd& shocks) {
  const Eigen::Index m = p.Series(), lags = p.Lags(), q = p.MovingAverage(), horizon = shocks.rows();
  const Eigen::Index T = W.rows();
  // Past and future side by side: rows 0..T-1 the sample, T.. the future.
  Eigen::MatrixXd w(T + horizon, m), e(T + horizon, m);
  w.topRows(T) = W;
  e.topRows(T) = E;
  for (Eigen::Index h = 0; h < horizon; ++h) {
    const Eigen::Index t = T + h;
    Eigen::VectorXd error = sigmaFactor * shocks.row(h).transpose();
    Eigen::VectorXd value = p.c + error;
    if (p.B.cols() > 0) value += p.B * Xf.row(h).transpose();
    for (Eigen::Index i = 1; i <= lags; ++i) value += p.A.middleCols((i - 1) * m, m) * w.row(t - i).transpose();
    for (Eigen::Index j = 1; j <= q; ++j) value += p.Theta.middleCols((j - 1) * m, m) * e.row(t - j).transpose();
    w.row(t) = value.transpose();
    e.row(t) = error.transpose();
  }
  return w.bottomRows(horizon);
}

Eigen::MatrixXd Difference(const Eigen::MatrixXd& Y, int d) {
  Eigen::MatrixXd out = Y;
  for (int k = 0; k < d; ++k) out = (out.bottomRows(out.rows() - 1) - out.topRows(out.rows() - 1)).eval();
  return out;
}

Eigen::MatrixXd Integrate(const Eigen::MatrixXd& future, const Eigen::MatrixXd& Y, int d) {
  if (d == 0) return future;
  // First the (d - 1)-th differences of the future, then one cumulative sum from the last level.
  const Eigen::MatrixXd lower = Integrate(future, Difference(Y, 1), d - 1);
  Eigen::MatrixXd out(lower.rows(), lower.cols());
  Eigen::RowVectorXd level = Y.bottomRows(1);
  for (Eigen::Index h = 0; h < lower.rows(); ++h) {
    level += lower.row(h);
    out.row(h) = level;
  }
  return out;
}

}  // namespace dynamic
