// OrthantProbability: the GHK simulator.
#include "OrthantProbability.h"

#include <cmath>

#include <boost/math/special_functions/erf.hpp>

namespace {

constexpr double kInvSqrt2 = 0.70710678118654752440;

// P(e > t) for e ~ N(0, 1).
double Upper(double t) { return 0.5 * std::erfc(t * kInvSqrt2); }
// The x whose upper probability P(e > x) is q.
double UpperQuantile(double q) { return std::sqrt(2.0) * boost::math::erfc_inv(2.0 * q); }

}  // namespace

double LogOrthantProbability(const Eigen::VectorXd& mean, const Eigen::MatrixXd& L, const Eigen::MatrixXd& uniforms) {
  const Eigen::Index d = mean.size(), R = uniforms.cols();
  Eigen::VectorXd e(d);
  double sum = 0.0;
  for (Eigen::Index r = 0; r < R; ++r) {
    double weight = 1.0;
    for (Eigen::Index j = 0; j < d; ++j) {
      // z_j = mean_j + sum_{l<j} L_jl e_l + L_jj e_j > 0 means e_j > t.
      const double t = -(mean(j) + L.row(j).head(j).dot(e.head(j))) / L(j, j);
      const double q = Upper(t);
      weight *= q;
      if (weight == 0.0) break;
      e(j) = UpperQuantile(q * uniforms(j, r));
    }
    sum += weight;
  }
  return std::log(sum / static_cast<double>(R));
}

Eigen::MatrixXd OrthantUniforms(Eigen::Index d, Eigen::Index R, RandomEngine& rng) {
  Eigen::MatrixXd u(d, R);
  for (Eigen::Index r = 0; r < R; ++r) {
    for (Eigen::Index j = 0; j < d; ++j) {
      double v = 0.0;
      while (v == 0.0) v = rng.Uniform();  // 0 would put the draw at infinity
      u(j, r) = v;
    }
  }
  return u;
}
