// MultinomialLogit: the log-likelihood by blocks, its derivatives and the sampler's call.
#include "MultinomialLogit.h"

#include <cmath>

#include "MarginalLikelihood.h"

Eigen::MatrixXd MultinomialLogitProbabilities(const Eigen::MatrixXd& eta) {
  Eigen::MatrixXd p(eta.rows(), eta.cols() + 1);
  p.col(0).setZero();
  p.rightCols(eta.cols()) = eta;
  const Eigen::VectorXd top = p.rowwise().maxCoeff();
  p = (p.colwise() - top).array().exp().matrix();
  const Eigen::VectorXd total = p.rowwise().sum();
  return total.cwiseInverse().asDiagonal() * p;
}

double MNLogit::BlockLogLikelihood(const Eigen::VectorXd& b, Eigen::Index first, Eigen::Index end,
                                   Workspace& workspace) const {
  // sum_i eta_{i,choice} - log(1 + sum_j e^eta_ij), the log of the sum kept as top + log(scaled
  // sum) and updated one alternative at a time, so that nothing overflows.
  const Eigen::Index n = end - first, k = m_X->cols();
  auto index = workspace.index.segment(first, n);
  auto top = workspace.work.segment(first, n);
  auto sum = workspace.extra.segment(first, n);
  top.setZero();
  sum.setOnes();
  double chosen = 0.0;
  for (Eigen::Index j = 0; j < m_others; ++j) {
    index.matrix().noalias() = m_X->middleRows(first, n) * b.segment(j * k, k);
    chosen += (m_chose.col(j).segment(first, n).array() * index).sum();
    for (Eigen::Index i = 0; i < n; ++i) {
      const double t = index(i);
      if (t > top(i)) {
        sum(i) = sum(i) * std::exp(top(i) - t) + 1.0;
        top(i) = t;
      } else {
        sum(i) += std::exp(t - top(i));
      }
    }
  }
  return chosen - (top + sum.log()).sum();
}

double MNLogit::LogPrior(const Eigen::VectorXd& b) const {
  return mlik::LogNormalDensity(b, m_prior.mean, m_prior.precision);
}

double MNLogit::Derivatives(const Eigen::VectorXd& b, Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian) const {
  const Eigen::MatrixXd& X = *m_X;
  const Eigen::Index k = X.cols(), J1 = m_others;
  const Eigen::MatrixXd B = b.reshaped(k, J1);
  const Eigen::MatrixXd eta = X * B;
  const Eigen::MatrixXd p = MultinomialLogitProbabilities(eta);
  const Eigen::MatrixXd residual = m_chose - p.rightCols(J1);
  gradient = (X.transpose() * residual).reshaped() - m_prior.precision * (b - m_prior.mean);
  hessian.resize(k * J1, k * J1);
  for (Eigen::Index j = 0; j < J1; ++j) {
    for (Eigen::Index l = 0; l <= j; ++l) {
      // -sum_i p_ij (1[j = l] - p_il) x_i x_i'.
      Eigen::VectorXd w = -p.col(j + 1).cwiseProduct(p.col(l + 1));
      if (j == l) w += p.col(j + 1);
      const Eigen::MatrixXd block = -(X.transpose() * (X.array().colwise() * w.array()).matrix());
      hessian.block(j * k, l * k, k, k) = block;
      hessian.block(l * k, j * k, k, k) = block.transpose();
    }
  }
  hessian -= m_prior.precision;
  const Eigen::VectorXd top = eta.rowwise().maxCoeff().cwiseMax(0.0);
  const Eigen::VectorXd logSum =
      top.array() + ((-top).array().exp() + (eta.colwise() - top).array().exp().rowwise().sum()).log();
  const double logLikelihood = m_chose.cwiseProduct(eta).sum() - logSum.sum();
  return logLikelihood + LogPrior(b);
}

bool MNLogit::Sample(const Eigen::VectorXi& choice, Eigen::Index alternatives, const Eigen::MatrixXd& X,
                     const LinearPrior& prior, const EventDispatcher& out, const std::atomic<bool>* interrupt) {
  m_X = &X;
  m_others = alternatives - 1;
  m_prior = prior;
  m_chose = Eigen::MatrixXd::Zero(X.rows(), m_others);
  for (Eigen::Index i = 0; i < choice.size(); ++i) {
    if (choice(i) > 0) m_chose(i, choice(i) - 1) = 1.0;
  }
  IndependenceResult result;
  const bool sampled = SampleIndependence(*this, *this, out, interrupt, result);
  noMode = result.noMode;
  acceptance = result.acceptance;
  logML = result.logML;
  logML_CJ = result.logML_CJ;
  return sampled;
}
