// NegBinom: the log-likelihood block by block, the priors, the starting point and what is reported.
#include "NegBinomRegression.h"

#include <cmath>

#include "IndependenceProposal.h"
#include "MarginalLikelihood.h"
#include "PoissonRegression.h"

namespace {

// Counts up to this take a sum of logs; larger ones Stirling's series.
constexpr double kSmallCount = 32.0;

// log Gamma(x) - ((x - 1/2) log x - x + 1/2 log 2 pi): the tail of Stirling's series, for x >= 10
// (the next term is below 1e-12 there).
double StirlingTail(double x) {
  const double x2 = x * x;
  return (1.0 / 12.0 - (1.0 / 360.0 - (1.0 / 1260.0 - 1.0 / (1680.0 * x2)) / x2) / x2) / x;
}

// The first two derivatives in r of log Gamma(count + r) - log Gamma(r): digamma(count + r) -
// digamma(r) and trigamma(count + r) - trigamma(r), as sums for small counts, otherwise after the
// shift of r to x >= 10 from the asymptotic series (their next terms are below 1e-12 there).
void GammaRatioDerivatives(double count, double r, double& first, double& second) {
  first = second = 0.0;
  if (count <= kSmallCount) {
    for (double j = 0.0; j < count; j += 1.0) {
      const double inverse = 1.0 / (r + j);
      first += inverse;
      second -= inverse * inverse;
    }
    return;
  }
  double x = r;
  for (; x < 10.0; x += 1.0) {
    first += 1.0 / x;
    second -= 1.0 / (x * x);
  }
  const double d = count - (x - r), z = x + d;
  // digamma(z) - log z and trigamma(z) for z >= 10.
  auto digammaTail = [](double z) {
    const double z2 = 1.0 / (z * z);
    return -0.5 / z - z2 * (1.0 / 12.0 - z2 * (1.0 / 120.0 - z2 * (1.0 / 252.0 - z2 / 240.0)));
  };
  auto trigamma = [](double z) {
    const double z2 = 1.0 / (z * z);
    return (1.0 + (0.5 + (1.0 / 6.0 - z2 * (1.0 / 30.0 - z2 * (1.0 / 42.0 - z2 / 30.0))) / z) / z) / z;
  };
  first += std::log1p(d / x) + digammaTail(z) - digammaTail(x);
  second += trigamma(z) - trigamma(x);
}

}  // namespace

double LogGammaRatio(double count, double r) {
  if (count <= kSmallCount) {
    double sum = 0.0;
    for (double j = 0.0; j < count; j += 1.0) sum += std::log(r + j);
    return sum;
  }
  // Shift r to x >= 10 by Gamma(r + 1) = r Gamma(r), then log Gamma(x + d) - log Gamma(x) from
  // Stirling's series, written without the difference of two large logarithms.
  double sum = 0.0, x = r;
  for (; x < 10.0; x += 1.0) sum += std::log(x);
  const double d = count - (x - r);
  return sum + d * std::log(x + d) + (x - 0.5) * std::log1p(d / x) - d + StirlingTail(x + d) - StirlingTail(x);
}

double NegBinom::BlockLogLikelihood(const Eigen::VectorXd& theta, Eigen::Index first, Eigen::Index end,
                                    Workspace& workspace) const {
  // With r = 1/alpha and t = x'b + log exposure + log alpha, observation i contributes
  // log Gamma(y + r) - log Gamma(r) - log y! + y t - (y + r) log(1 + e^t). The Gamma ratio depends
  // on the count alone, so it is summed over the runs of equal counts; log(1 + e^t) is written to
  // stay finite for any t.
  const Eigen::Index n = end - first, k = m_data->X.cols();
  const double logAlpha = theta(k), r = std::exp(-logAlpha);
  auto index = workspace.index.segment(first, n);
  auto work = workspace.work.segment(first, n);
  auto sum1 = workspace.extra.segment(first, n);
  index.matrix().noalias() = m_data->X.middleRows(first, n) * theta.head(k);
  if (m_data->offset.size() > 0) index += m_data->offset.array().segment(first, n);
  index += logAlpha;
  // log(1 + e^t) = max(t, 0) + log1p(e) with e = e^-|t| in (0, 1]. Eigen's log1p is not
  // vectorised, so log1p(e) is log(u) + (e - (u - 1)) / u with u = 1 + e rounded: the second term
  // puts back what the rounding of u lost, which keeps tiny e exact.
  work = (-index.abs()).exp();
  sum1 = 1.0 + work;
  work = index.max(0.0) + sum1.log() + (work - (sum1 - 1.0)) / sum1;
  const auto y = m_data->y.array().segment(first, n);
  double sum = (y * index - (y + r) * work).sum() - m_data->LogFactorials(first, end);
  m_data->ForEachRun(first, end, [&](double count, double observations) {
    if (count > 0.0) sum += observations * LogGammaRatio(count, r);
  });
  return sum;
}

double NegBinom::LogPrior(const Eigen::VectorXd& theta) const {
  const Eigen::Index k = m_data->X.cols();
  const double logAlpha = theta(k);
  // The Gamma density of alpha times the Jacobian d alpha / d log alpha = alpha.
  return mlik::LogNormalDensity(theta.head(k), m_prior.mean, m_prior.precision) + m_alphaPriorConstant +
         m_shape * logAlpha - m_rate * std::exp(logAlpha);
}

Eigen::VectorXd NegBinom::SearchStart() const {
  const Eigen::Index k = m_data->X.cols();
  Eigen::VectorXd theta(k + 1);
  theta.head(k) = m_data->LogLinearStart(m_prior);
  IndependenceProposal poisson;
  auto derivatives = [&](const Eigen::VectorXd& b, Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian) {
    return PoissonPosteriorDerivatives(*m_data, m_prior, b, gradient, hessian);
  };
  if (poisson.Fit(derivatives, theta.head(k), kIndependenceProposalDof)) theta.head(k) = poisson.Mode();
  // alpha from e^-6 to e^3: the Newton steps from there stay where the curvature is negative.
  double best = -std::numeric_limits<double>::infinity(), bestLogAlpha = 0.0;
  for (double logAlpha = -6.0; logAlpha <= 3.0; logAlpha += 0.5) {
    theta(k) = logAlpha;
    const double value = LogKernel(theta);
    if (value > best) {
      best = value;
      bestLogAlpha = logAlpha;
    }
  }
  theta(k) = bestLogAlpha;
  return theta;
}

double NegBinom::Derivatives(const Eigen::VectorXd& theta, Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian) const {
  // In t = x'b + log exposure + log alpha, with s = 1 / (1 + e^-t) and r = 1/alpha, observation i
  // gives d/dt = y - (y + r) s and d2/dt2 = -(y + r) s (1 - s); log alpha moves t and r = e^-log alpha
  // both, which adds r log(1 + e^t) and the Gamma ratio's -r digamma difference to its derivative.
  const Eigen::Index k = m_data->X.cols(), n = m_data->Size();
  const double logAlpha = theta(k), r = std::exp(-logAlpha);
  Eigen::ArrayXd t = m_data->X * theta.head(k);
  if (m_data->offset.size() > 0) t += m_data->offset.array();
  t += logAlpha;
  const Eigen::ArrayXd e = (-t.abs()).exp();
  const Eigen::ArrayXd softplus = t.max(0.0) + e.log1p();
  const Eigen::ArrayXd s = (t >= 0.0).select(1.0 / (1.0 + e), e / (1.0 + e));
  const Eigen::ArrayXd y = m_data->y.array();
  const Eigen::ArrayXd dt = y - (y + r) * s;
  const Eigen::ArrayXd dtt = -(y + r) * e / (1.0 + e).square();
  double logLikelihood = (y * t - (y + r) * softplus).sum() - m_data->LogFactorials(0, n);
  double dAlpha = (dt + r * softplus).sum();
  double dAlphaAlpha = (dtt + 2.0 * r * s - r * softplus).sum();
  m_data->ForEachRun(0, n, [&](double count, double observations) {
    if (count == 0.0) return;
    double first = 0.0, second = 0.0;
    GammaRatioDerivatives(count, r, first, second);
    logLikelihood += observations * LogGammaRatio(count, r);
    dAlpha -= observations * r * first;
    dAlphaAlpha += observations * (r * first + r * r * second);
  });
  gradient.resize(k + 1);
  hessian.resize(k + 1, k + 1);
  gradient.head(k).noalias() = m_data->X.transpose() * dt.matrix() - m_prior.precision * (theta.head(k) - m_prior.mean);
  gradient(k) = dAlpha + m_shape - m_rate * std::exp(logAlpha);
  Eigen::MatrixXd block = -m_prior.precision;
  block.selfadjointView<Eigen::Lower>().rankUpdate((m_data->X.array().colwise() * (-dtt).sqrt()).matrix().transpose(), -1.0);
  hessian.topLeftCorner(k, k) = block.selfadjointView<Eigen::Lower>();
  hessian.col(k).head(k).noalias() = m_data->X.transpose() * (dtt + r * s).matrix();
  hessian.row(k).head(k) = hessian.col(k).head(k).transpose();
  hessian(k, k) = dAlphaAlpha - m_rate * std::exp(logAlpha);
  return logLikelihood + LogPrior(theta);
}

void NegBinom::Report(const Eigen::VectorXd& theta, DrawRow out) const {
  const Eigen::Index k = m_data->X.cols();
  out.head(k) = theta.head(k).transpose();
  out(k) = std::exp(theta(k));
}

bool NegBinom::Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const Eigen::VectorXd& exposure,
                      const LinearPrior& prior, double alphaShape, double alphaRate, const EventDispatcher& out,
                      const std::atomic<bool>* interrupt) {
  m_data.emplace(y, X, exposure, true);
  m_prior = prior;
  m_shape = alphaShape;
  m_rate = alphaRate;
  m_alphaPriorConstant = m_shape * std::log(m_rate) - std::lgamma(m_shape);
  IndependenceResult result;
  const bool sampled = SampleIndependence(*this, *this, out, interrupt, result);
  noMode = result.noMode;
  acceptance = result.acceptance;
  logML = result.logML;
  logML_CJ = result.logML_CJ;
  return sampled;
}
