// LinearPrior: constraints as prior information; canonical Normal draws.
#include "LinearPrior.h"

LinearPrior LinearPrior::Combine(const Eigen::VectorXd& mean, const Eigen::MatrixXd& precision,
                                 const Eigen::MatrixXd& R, const Eigen::VectorXd& r,
                                 const Eigen::MatrixXd& xi) {
  LinearPrior prior;
  prior.precision = precision;
  prior.precisionTimesMean = precision * mean;
  if (R.rows() > 0) {
    prior.precision += R.transpose() * xi * R;
    prior.precisionTimesMean += R.transpose() * xi * r;
  }
  prior.mean = prior.precision.llt().solve(prior.precisionTimesMean);
  return prior;
}

void DrawCanonicalNormal(const Eigen::LLT<Eigen::MatrixXd>& aFactor, const Eigen::VectorXd& b,
                         RandomEngine& rng, Eigen::VectorXd& z, Eigen::VectorXd& out) {
  // A = L L': the mean solves A m = b, and m + L'^-1 z has covariance A^-1.
  for (Eigen::Index i = 0; i < z.size(); ++i) z(i) = rng.Normal();
  out = aFactor.solve(b);
  out += aFactor.matrixU().solve(z);
}
