// CompositeError: densities of the frontier's composed error and the inefficiency's moments.
#include "CompositeError.h"

#include <cmath>
#include <limits>

#include <boost/math/quadrature/exp_sinh.hpp>
#include <boost/math/quadrature/tanh_sinh.hpp>

#include "BinaryAugmentation.h"
#include "Decompositions.h"

namespace {

constexpr double kLogSqrt2Pi = 0.91893853320467274178;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

double LogNormalPdf(double x, double sd) { return -0.5 * (x / sd) * (x / sd) - std::log(sd) - kLogSqrt2Pi; }

// log of the integral over u > 0 of exp(logDensityOfU(u)) N(w - u; 0, sigma^2), scaled by the
// integrand's largest value on a coarse grid so that neither tail underflows.
template <class LogDensity>
double LogIntegral(double w, double sigma, const LogDensity& logDensityOfU) {
  auto logIntegrand = [&](double u) { return logDensityOfU(u) + LogNormalPdf(w - u, sigma); };
  // The scale: the integrand's largest value at the points where it can peak (near w, near 0,
  // and on a geometric grid).
  double top = -std::numeric_limits<double>::infinity();
  for (double u = 1e-8; u < 1e4; u *= 1.5) top = std::max(top, logIntegrand(u));
  if (w > 0) top = std::max(top, logIntegrand(w));
  if (!std::isfinite(top)) return top;
  auto scaled = [&](double u) {
    const double l = logIntegrand(u) - top;
    return std::isfinite(l) ? std::exp(l) : 0.0;
  };
  // Split where the Normal factor peaks, so that a narrow peak far from 0 is not stepped over:
  // [0, c] by tanh-sinh (which copes with a singular density at 0), [c, inf) by exp-sinh.
  const double c = std::max(w, 0.0);
  double value = 0.0;
  if (c > 0.0) {
    boost::math::quadrature::tanh_sinh<double> finite;
    value += finite.integrate(scaled, 0.0, c);
  }
  boost::math::quadrature::exp_sinh<double> infinite;
  value += infinite.integrate([&](double t) { return scaled(c + t); });
  return top + std::log(value);
}

}  // namespace

double LogCompositeDensity(InefficiencyDistribution d, double w, double sigma, double p1, double p2) {
  switch (d) {
    case InefficiencyDistribution::HalfNormal:
      return LogCompositeDensity(InefficiencyDistribution::TruncatedNormal, w, sigma, 0.0, p1);
    case InefficiencyDistribution::TruncatedNormal: {
      // N(w; mu, s^2) P(u > 0 | w) / P(u > 0): u | w ~ N((sigma^2 mu + su^2 w) / s^2, sigma^2 su^2 / s^2).
      const double mu = p1, su = 1.0 / std::sqrt(p2);
      const double s2 = sigma * sigma + su * su, s = std::sqrt(s2);
      const double meanGivenW = (sigma * sigma * mu + su * su * w) / s2;
      const double sdGivenW = sigma * su / s;
      return LogNormalPdf(w - mu, s) + LogNormalCdf(meanGivenW / sdGivenW) - LogNormalCdf(mu / su);
    }
    case InefficiencyDistribution::Exponential: {
      // lambda exp(-lambda w + lambda^2 sigma^2 / 2) Phi((w - lambda sigma^2) / sigma).
      const double lambda = p1;
      return std::log(lambda) - lambda * w + 0.5 * lambda * lambda * sigma * sigma +
             LogNormalCdf((w - lambda * sigma * sigma) / sigma);
    }
    case InefficiencyDistribution::Gamma: {
      const double shape = p1, rate = p2;
      const double logConstant = shape * std::log(rate) - std::lgamma(shape);
      return LogIntegral(w, sigma, [&](double u) { return logConstant + (shape - 1.0) * std::log(u) - rate * u; });
    }
    case InefficiencyDistribution::LogNormal: {
      const double mu = p1, sd = 1.0 / std::sqrt(p2);
      return LogIntegral(w, sigma, [&](double u) {
        const double l = std::log(u);
        return LogNormalPdf(l - mu, sd) - l;
      });
    }
  }
  return kNaN;
}

double MeanInefficiency(InefficiencyDistribution d, double p1, double p2) {
  switch (d) {
    case InefficiencyDistribution::HalfNormal: return std::sqrt(2.0 / (M_PI * p1));
    case InefficiencyDistribution::TruncatedNormal: {
      const double sd = 1.0 / std::sqrt(p2), a = p1 / sd;
      // mu + sd phi(a) / Phi(a), the ratio from logs so that it holds far in the lower tail.
      return p1 + sd * std::exp(-0.5 * a * a - kLogSqrt2Pi - LogNormalCdf(a));
    }
    case InefficiencyDistribution::Exponential: return 1.0 / p1;
    case InefficiencyDistribution::Gamma: return p1 / p2;
    case InefficiencyDistribution::LogNormal: return std::exp(p1 + 0.5 / p2);
  }
  return kNaN;
}

double MeanEfficiency(InefficiencyDistribution d, double p1, double p2) {
  switch (d) {
    case InefficiencyDistribution::HalfNormal: return MeanEfficiency(InefficiencyDistribution::TruncatedNormal, 0.0, p1);
    case InefficiencyDistribution::TruncatedNormal: {
      // exp(-mu + sd^2 / 2) Phi(mu / sd - sd) / Phi(mu / sd).
      const double sd = 1.0 / std::sqrt(p2);
      return std::exp(-p1 + 0.5 * sd * sd + LogNormalCdf(p1 / sd - sd) - LogNormalCdf(p1 / sd));
    }
    case InefficiencyDistribution::Exponential: return p1 / (p1 + 1.0);
    case InefficiencyDistribution::Gamma: return std::pow(p2 / (p2 + 1.0), p1);
    case InefficiencyDistribution::LogNormal: {
      // The integral of exp(-exp(mu + sd z)) phi(z) by 40-point Gauss-Hermite.
      static const auto rule = [] {
        Eigen::MatrixXd nodes, weights;
        numerics::HermiteQuad(40, nodes, weights);
        return std::pair<Eigen::VectorXd, Eigen::VectorXd>(nodes.col(0), weights.col(0));
      }();
      const double sd = 1.0 / std::sqrt(p2);
      double sum = 0.0;
      for (Eigen::Index j = 0; j < rule.first.size(); ++j) {
        sum += rule.second(j) * std::exp(-std::exp(p1 + sd * std::sqrt(2.0) * rule.first(j)));
      }
      return sum / std::sqrt(M_PI);
    }
  }
  return kNaN;
}

double SumLogCompositeDensity(InefficiencyDistribution d, const Eigen::VectorXd& w, double tau, double p1, double p2) {
  const double sigma = 1.0 / std::sqrt(tau);
  double sum = 0.0;
  for (Eigen::Index i = 0; i < w.size(); ++i) sum += LogCompositeDensity(d, w(i), sigma, p1, p2);
  return sum;
}
