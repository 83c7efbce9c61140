// The Dirichlet distribution: draws as independent gamma draws normalised to sum to one.
#include "Dirichlet.h"

#include <cmath>
#include <limits>

#include "Gamma.h"

namespace dist {

namespace {

// The log of a Gamma(shape, 1) draw. It consumes the engine exactly as GammaDraw does, but keeps
// the u^(1 / shape) boost of small shapes in logs, where GammaDraw's result would underflow to 0.
double LogStandardGammaDraw(RandomEngine& rng, double shape) {
  if (shape < 1.0) {
    const double g = GammaDraw(rng, shape + 1.0, 1.0);
    return std::log(g) + std::log(rng.Uniform()) / shape;
  }
  return std::log(GammaDraw(rng, shape, 1.0));
}

}  // namespace

// A k x K matrix, one draw per row: Gamma(alpha_j, 1) draws, j = 1 ... K in order, divided by
// their sum. The normalisation is done on the logs of the draws, so that small parameters whose
// gamma draws all underflow still give a point of the simplex. An empty matrix (0 x K) for k <= 0;
// a matrix of NaN (no uniform used) for an empty alpha or a parameter that is not positive and
// finite.
Eigen::MatrixXd DirichletDraws(RandomEngine& rng, const Eigen::RowVectorXd& alpha, int k) {
  const Eigen::Index rows = k > 0 ? k : 0;
  const Eigen::Index categories = alpha.size();
  if (categories == 0 || !alpha.allFinite() || (alpha.array() <= 0.0).any()) {
    return Eigen::MatrixXd::Constant(rows, categories, std::numeric_limits<double>::quiet_NaN());
  }
  Eigen::MatrixXd draws(rows, categories);
  Eigen::RowVectorXd logs(categories);
  for (Eigen::Index i = 0; i < rows; ++i) {
    double top = -std::numeric_limits<double>::infinity();
    // All logs are -inf only when every boost uniform was exactly 0: draw the row again.
    while (top == -std::numeric_limits<double>::infinity()) {
      for (Eigen::Index j = 0; j < categories; ++j) {
        logs(j) = LogStandardGammaDraw(rng, alpha(j));
      }
      top = logs.maxCoeff();
    }
    const Eigen::RowVectorXd scaled = (logs.array() - top).exp().matrix();
    draws.row(i) = scaled / scaled.sum();
  }
  return draws;
}

}  // namespace dist
