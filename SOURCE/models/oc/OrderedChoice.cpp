// OrderedChoice: the prior, the derivatives and the search start of the ordered models' posterior.
#include "OrderedChoice.h"

#include <cmath>

#include "MarginalLikelihood.h"

double OrderedChoice::LogPrior(const Eigen::VectorXd& theta) const {
  // Element by element: this runs at every draw, and allocates nothing.
  const Eigen::Index k = m_X->cols();
  double quadratic = 0.0;
  for (Eigen::Index j = 0; j < k; ++j) {
    double row = 0.0;
    for (Eigen::Index i = 0; i < k; ++i) row += m_prior.precision(i, j) * (theta(i) - m_prior.mean(i));
    quadratic += (theta(j) - m_prior.mean(j)) * row;
  }
  return m_priorLogConstant - 0.5 * quadratic + m_cuts.LogDensityOfTheta(theta.tail(m_cuts.Free()));
}

double OrderedChoice::DerivativesInCuts(const Eigen::VectorXd& b, const Eigen::VectorXd& free,
                                        Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian) const {
  const Eigen::MatrixXd& X = *m_X;
  const Eigen::Index n = X.rows(), k = X.cols(), q = m_cuts.Free();
  const int J = m_cuts.Categories();
  // All cut-points; cut j (0-based) is free cut-point j - shift, none when below 0.
  const Eigen::Index shift = m_cuts.FirstFixed() ? 1 : 0;
  Eigen::VectorXd all(J - 1);
  if (m_cuts.FirstFixed()) all(0) = 0.0;
  all.tail(q) = free;
  const Eigen::VectorXd index = X * b;
  // Per observation: d/dt and d2/dt2 of its term (t = x'b), and its derivatives in the two
  // cut-points around its category, gathered by cut-point.
  Eigen::VectorXd dt(n), dtt(n);
  Eigen::VectorXd gc = Eigen::VectorXd::Zero(q);
  Eigen::MatrixXd hcc = Eigen::MatrixXd::Zero(q, q), hbc = Eigen::MatrixXd::Zero(k, q);
  double value = 0.0;
  for (Eigen::Index i = 0; i < n; ++i) {
    const int j = (*m_y)(i);
    const double t = index(i);
    const double l = j > 0 ? all(j - 1) - t : -oc::kInf;
    const double u = j < J - 1 ? all(j) - t : oc::kInf;
    const oc::IntervalScores s = Scores(l, u);
    value += s.logProbability;
    // l and u both fall by t.
    dt(i) = -(s.l + s.u);
    dtt(i) = s.ll + 2.0 * s.lu + s.uu;
    const Eigen::Index upper = j - shift, lower = j - 1 - shift;
    if (j < J - 1 && upper >= 0) {
      gc(upper) += s.u;
      hcc(upper, upper) += s.uu;
      hbc.col(upper) -= (s.uu + s.lu) * X.row(i).transpose();
    }
    if (j > 0 && lower >= 0) {
      gc(lower) += s.l;
      hcc(lower, lower) += s.ll;
      hbc.col(lower) -= (s.ll + s.lu) * X.row(i).transpose();
      if (j < J - 1 && upper >= 0) {
        hcc(upper, lower) += s.lu;
        hcc(lower, upper) += s.lu;
      }
    }
  }
  gradient.resize(k + q);
  hessian.resize(k + q, k + q);
  gradient.head(k).noalias() = X.transpose() * dt - m_prior.precision * (b - m_prior.mean);
  hessian.topLeftCorner(k, k).noalias() = X.transpose() * (X.array().colwise() * dtt.array()).matrix();
  hessian.topLeftCorner(k, k) -= m_prior.precision;
  hessian.topRightCorner(k, q) = hbc;
  hessian.bottomLeftCorner(q, k) = hbc.transpose();
  gradient.tail(q) = gc;
  hessian.bottomRightCorner(q, q) = hcc;
  value += mlik::LogNormalDensity(b, m_prior.mean, m_prior.precision);
  return value + m_cuts.AddLogDensityDerivatives(free, gradient.tail(q), hessian.bottomRightCorner(q, q));
}

double OrderedChoice::Derivatives(const Eigen::VectorXd& theta, Eigen::VectorXd& gradient,
                                  Eigen::MatrixXd& hessian) const {
  const Eigen::Index k = m_X->cols(), q = m_cuts.Free();
  const auto cuts = theta.tail(q);
  Eigen::VectorXd g;
  Eigen::MatrixXd h;
  const double value = DerivativesInCuts(theta.head(k), m_cuts.FreeCuts(cuts), g, h);
  // free = c(theta): the chain rule, plus the second derivative of each e^theta_m (which moves
  // every free cut-point from m on), plus log|d free / d theta|, which adds 1 per log gap.
  const Eigen::MatrixXd jacobian = m_cuts.Jacobian(cuts);
  gradient.resize(k + q);
  hessian.resize(k + q, k + q);
  gradient.head(k) = g.head(k);
  gradient.tail(q).noalias() = jacobian.transpose() * g.tail(q);
  hessian.topLeftCorner(k, k) = h.topLeftCorner(k, k);
  hessian.topRightCorner(k, q).noalias() = h.topRightCorner(k, q) * jacobian;
  hessian.bottomLeftCorner(q, k) = hessian.topRightCorner(k, q).transpose();
  hessian.bottomRightCorner(q, q).noalias() = jacobian.transpose() * h.bottomRightCorner(q, q) * jacobian;
  for (Eigen::Index m = 0; m < q; ++m) {
    if (!m_cuts.IsLogGap(m)) continue;
    hessian(k + m, k + m) += std::exp(cuts(m)) * g.tail(q - m).sum();
    gradient(k + m) += 1.0;
  }
  return value + m_cuts.LogJacobian(cuts);
}

Eigen::VectorXd OrderedChoice::SearchStart() const {
  const Eigen::MatrixXd& X = *m_X;
  const Eigen::Index n = X.rows(), k = X.cols(), q = m_cuts.Free();
  const int J = m_cuts.Categories();
  // With b = 0, c_j = F^-1(share of categories up to j) fits the shares exactly. With c_1 fixed,
  // the intercept takes -c_1 and the cut-points shift by it.
  Eigen::VectorXd counts = Eigen::VectorXd::Zero(J);
  for (Eigen::Index i = 0; i < n; ++i) counts((*m_y)(i)) += 1.0;
  Eigen::VectorXd all(J - 1);
  double below = 0.0;
  for (int j = 0; j < J - 1; ++j) {
    below += counts(j);
    // Every category is present, so each share lies strictly between 0 and 1.
    all(j) = Quantile(below / static_cast<double>(n));
  }
  Eigen::VectorXd b = Eigen::VectorXd::Zero(k);
  if (m_cuts.FirstFixed()) {
    b(m_intercept) = -all(0) / X(0, m_intercept);
    all.array() -= all(0);
  }
  Eigen::VectorXd free = all.tail(q);

  // Newton's method with step halving, kept inside the ordered region.
  Eigen::VectorXd gradient, trialGradient;
  Eigen::MatrixXd hessian, trialHessian;
  double value = DerivativesInCuts(b, free, gradient, hessian);
  for (int iteration = 0; iteration < 100 && std::isfinite(value); ++iteration) {
    const Eigen::LLT<Eigen::MatrixXd> negative(-hessian);
    if (negative.info() != Eigen::Success) break;
    const Eigen::VectorXd step = negative.solve(gradient);
    double scale = 1.0, trialValue = -oc::kInf;
    Eigen::VectorXd trialB, trialFree;
    for (; scale > 1e-10; scale *= 0.5) {
      trialB = b + scale * step.head(k);
      trialFree = free + scale * step.tail(q);
      if (!m_cuts.Ordered(trialFree)) continue;
      trialValue = DerivativesInCuts(trialB, trialFree, trialGradient, trialHessian);
      if (trialValue >= value) break;
    }
    if (!(trialValue >= value)) break;
    const bool converged = trialValue - value < 1e-10 * (1.0 + std::fabs(value));
    b.swap(trialB);
    free.swap(trialFree);
    value = trialValue;
    gradient.swap(trialGradient);
    hessian.swap(trialHessian);
    if (converged) break;
  }
  Eigen::VectorXd theta(k + q);
  theta << b, m_cuts.Theta(free);
  return theta;
}

void OrderedChoice::Report(const Eigen::VectorXd& theta, DrawRow out) const {
  const Eigen::Index k = m_X->cols(), q = m_cuts.Free();
  out.head(k) = theta.head(k).transpose();
  double c = 0.0;
  for (Eigen::Index m = 0; m < q; ++m) out(k + m) = c = m_cuts.IsLogGap(m) ? c + std::exp(theta(k + m)) : theta(k + m);
}

bool OrderedChoice::Sample(const Eigen::VectorXi& y, int categories, const Eigen::MatrixXd& X,
                           Eigen::Index interceptColumn, const LinearPrior& prior, const CutPointPrior& cutPrior,
                           const EventDispatcher& out, const std::atomic<bool>* interrupt) {
  m_y = &y;
  m_X = &X;
  m_intercept = interceptColumn;
  m_prior = prior;
  m_cuts = CutPoints(categories, interceptColumn >= 0, cutPrior);
  m_priorLogConstant = mlik::LogNormalDensity(prior.mean, prior.mean, prior.precision);
  IndependenceResult result;
  const bool sampled = SampleIndependence(*this, *this, out, interrupt, result);
  noMode = result.noMode;
  acceptance = result.acceptance;
  logML = result.logML;
  logML_CJ = result.logML_CJ;
  return sampled;
}
