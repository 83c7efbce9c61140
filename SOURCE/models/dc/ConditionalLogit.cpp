// ConditionalLogit: the log-likelihood by blocks of situations, its derivatives, the sampler's call.
#include "ConditionalLogit.h"

#include <cmath>

#include "MarginalLikelihood.h"

double CLogit::BlockLogLikelihood(const Eigen::VectorXd& b, Eigen::Index first, Eigen::Index end,
                                  Workspace&) const {
  // Per situation: x_chosen'b - log sum e^(x'b), the sum taken relative to its largest term.
  const ChoiceSituations& s = *m_situations;
  double total = 0.0;
  for (Eigen::Index g = first; g < end; ++g) {
    const auto from = s.start[static_cast<std::size_t>(g)], to = s.start[static_cast<std::size_t>(g) + 1];
    double top = m_Xt.col(from).dot(b), sum = 1.0;
    for (Eigen::Index r = from + 1; r < to; ++r) {
      const double t = m_Xt.col(r).dot(b);
      if (t > top) {
        sum = sum * std::exp(top - t) + 1.0;
        top = t;
      } else {
        sum += std::exp(t - top);
      }
    }
    total += m_Xt.col(s.chosen[static_cast<std::size_t>(g)]).dot(b) - top - std::log(sum);
  }
  return total;
}

double CLogit::LogPrior(const Eigen::VectorXd& b) const {
  return mlik::LogNormalDensity(b, m_prior.mean, m_prior.precision);
}

double CLogit::Derivatives(const Eigen::VectorXd& b, Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian) const {
  const ChoiceSituations& s = *m_situations;
  const Eigen::Index k = m_Xt.rows();
  gradient = -m_prior.precision * (b - m_prior.mean);
  hessian = -m_prior.precision;
  const Eigen::VectorXd index = m_Xt.transpose() * b;
  double logLikelihood = 0.0;
  Eigen::VectorXd mean(k);
  for (Eigen::Index g = 0; g < s.Count(); ++g) {
    const auto from = s.start[static_cast<std::size_t>(g)], to = s.start[static_cast<std::size_t>(g) + 1];
    const Eigen::VectorXd t = index.segment(from, to - from);
    const double top = t.maxCoeff();
    const Eigen::VectorXd e = (t.array() - top).exp();
    const double sum = e.sum();
    const Eigen::VectorXd p = e / sum;
    const auto X = m_Xt.middleCols(from, to - from);
    mean.noalias() = X * p;
    const Eigen::Index chosen = s.chosen[static_cast<std::size_t>(g)];
    logLikelihood += index(chosen) - top - std::log(sum);
    gradient += m_Xt.col(chosen) - mean;
    const Eigen::MatrixXd centred = X.colwise() - mean;
    hessian.noalias() -= centred * p.asDiagonal() * centred.transpose();
  }
  return logLikelihood + LogPrior(b);
}

bool CLogit::Sample(const ChoiceSituations& situations, const Eigen::MatrixXd& X, const LinearPrior& prior,
                    const EventDispatcher& out, const std::atomic<bool>* interrupt) {
  m_situations = &situations;
  m_Xt = X.transpose();
  m_prior = prior;
  IndependenceResult result;
  const bool sampled = SampleIndependence(*this, *this, out, interrupt, result);
  noMode = result.noMode;
  acceptance = result.acceptance;
  logML = result.logML;
  logML_CJ = result.logML_CJ;
  return sampled;
}
