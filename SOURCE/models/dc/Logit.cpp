// Logit: the posterior kernel, its mode, the independence chain and the marginal likelihoods.
#include "Logit.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "MarginalLikelihood.h"

namespace {

constexpr double kProposalDof = 10.0;

class LogitChain : public GibbsChain {
public:
  LogitChain(const Logit& model, const IndependenceProposal& proposal, Eigen::VectorXd start, int threads)
      : m_model(model), m_proposal(proposal), m_b(std::move(start)), m_trial(m_b.size()), m_z(m_b.size()),
        m_scratch(model.MakeScratch(threads)) {
    m_logWeight = m_model.LogPosteriorKernel(m_b, m_scratch) - m_proposal.LogDensity(m_b);
  }

  void Sweep(RandomEngine& rng) override {
    m_proposal.Draw(rng, m_z, m_trial);
    const double logWeight = m_model.LogPosteriorKernel(m_trial, m_scratch) - m_proposal.LogDensity(m_trial);
    const double logAccept = std::min(0.0, logWeight - m_logWeight);
    if (std::log(rng.Uniform()) < logAccept) {
      m_b.swap(m_trial);
      m_logWeight = logWeight;
      ++m_accepted;
    }
    ++m_sweeps;
  }

  // b, then the log of posterior kernel over proposal density at b (for Chib and Jeliazkov's
  // ordinate; dropped from what the model keeps).
  void Record(DrawRow row) const override {
    const Eigen::Index k = m_b.size();
    row.head(k) = m_b.transpose();
    row(k) = m_logWeight;
  }

  double Acceptance() const { return m_sweeps > 0 ? static_cast<double>(m_accepted) / static_cast<double>(m_sweeps) : 0.0; }

private:
  const Logit& m_model;
  const IndependenceProposal& m_proposal;
  Eigen::VectorXd m_b, m_trial, m_z;
  Logit::KernelScratch m_scratch;
  double m_logWeight = 0.0;
  long m_accepted = 0, m_sweeps = 0;
};

}  // namespace

bool FitLogitProposal(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const LinearPrior& prior,
                      IndependenceProposal& proposal) {
  auto derivatives = [&](const Eigen::VectorXd& b, Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian) {
    // p = 1 / (1 + exp(-index)) and log(1 + e^index), written to stay finite for large indices of
    // either sign.
    const Eigen::ArrayXd index = X * b;
    const Eigen::ArrayXd e = (-index.abs()).exp();
    const Eigen::ArrayXd prob = (index >= 0.0).select(1.0 / (1.0 + e), e / (1.0 + e));
    gradient.noalias() = X.transpose() * (y - prob.matrix()) - prior.precision * (b - prior.mean);
    const Eigen::ArrayXd w = prob * (1.0 - prob);
    hessian.noalias() = -(X.transpose() * (X.array().colwise() * w).matrix());
    hessian -= prior.precision;
    return (y.array() * index - index.max(0.0) - e.log1p()).sum() +
           mlik::LogNormalDensity(b, prior.mean, prior.precision);
  };
  return proposal.Fit(derivatives, prior.mean, kProposalDof);
}

double Logit::LogPosteriorKernel(const Eigen::VectorXd& b) const {
  KernelScratch scratch;
  return LogPosteriorKernel(b, scratch);
}

Logit::KernelScratch Logit::MakeScratch(int threads) const {
  KernelScratch scratch;
  RandomEngine unused;  // the kernel draws nothing
  scratch.blocks = std::make_unique<ObservationBlocks>(m_X->rows(), unused, threads);
  scratch.partial.resize(scratch.blocks->Count());
  return scratch;
}

double Logit::LogPosteriorKernel(const Eigen::VectorXd& b, KernelScratch& scratch) const {
  scratch.index.resize(m_X->rows());
  scratch.work.resize(m_X->rows());
  // sum of y t - log(1 + e^t) over [first, end), with log(1 + e^t) = max(t, 0) + log1p(e^-|t|):
  // finite for any t. In whole-array passes, which Eigen evaluates with vectorised exp and log1p.
  auto part = [&](Eigen::Index first, Eigen::Index end) {
    const Eigen::Index n = end - first;
    auto index = scratch.index.segment(first, n);
    auto work = scratch.work.segment(first, n);
    index.matrix().noalias() = m_X->middleRows(first, n) * b;
    work = (-index.abs()).exp();
    return (m_y->array().segment(first, n) * index).sum() - (index.max(0.0) + work.log1p()).sum();
  };
  double logLikelihood = 0.0;
  if (scratch.blocks) {
    scratch.blocks->Run([&](Eigen::Index block, Eigen::Index first, Eigen::Index end, RandomEngine&) {
      scratch.partial(block) = part(first, end);
    });
    logLikelihood = scratch.partial.sum();
  } else {
    logLikelihood = part(0, m_X->rows());
  }
  return logLikelihood + mlik::LogNormalDensity(b, m_prior.mean, m_prior.precision);
}

bool Logit::Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const LinearPrior& prior,
                   const EventDispatcher& out, const std::atomic<bool>* interrupt) {
  m_y = &y;
  m_X = &X;
  m_prior = prior;
  const Eigen::Index k = X.cols();
  if (!FitLogitProposal(y, X, prior, m_proposal)) {
    noMode = true;
    return false;
  }

  // Chains start at draws from the proposal, so that they begin apart.
  const long chains = Settings().chains;
  RandomEngine starts;
  starts.Seed(Settings().seed + 7);
  std::vector<Eigen::VectorXd> initial(static_cast<std::size_t>(chains), Eigen::VectorXd(k));
  Eigen::VectorXd z(k);
  for (auto& b : initial) m_proposal.Draw(starts, z, b);
  auto make = [&](int c) -> std::unique_ptr<GibbsChain> {
    return std::make_unique<LogitChain>(*this, m_proposal, initial[static_cast<std::size_t>(c)],
                                        ObservationBlocks::ThreadsPerChain(chains));
  };
  if (!RunChains(make, static_cast<int>(k + 1), out, interrupt)) return false;
  double accepted = 0.0;
  for (const auto& chain : Chains()) accepted += static_cast<const LogitChain&>(*chain).Acceptance();
  acceptance = accepted / static_cast<double>(chains);

  const Eigen::MatrixXd pooled = PoolDraws(k);
  const Eigen::MatrixXd draws = pooled.leftCols(k);
  const Eigen::VectorXd bStar = draws.colwise().mean().transpose();
  const double kernelAtStar = LogPosteriorKernel(bStar);
  logML = mlik::LaplaceMetropolis(kernelAtStar, draws);

  // Chib & Jeliazkov for an independence proposal q: p(b* | y) = E_post[a(b, b*)] q(b*) /
  // E_q[a(b*, b)], with a(b, b') = min(1, w(b') / w(b)) and w = kernel / q.
  const double logWeightAtStar = kernelAtStar - m_proposal.LogDensity(bStar);
  Eigen::VectorXd toStar(pooled.rows());
  for (Eigen::Index g = 0; g < pooled.rows(); ++g) toStar(g) = std::min(0.0, logWeightAtStar - pooled(g, k));
  RandomEngine reduced;
  reduced.Seed(Settings().seed + 1);
  Eigen::VectorXd fromStar(pooled.rows()), b(k);
  KernelScratch scratch = MakeScratch(ObservationBlocks::ThreadsPerChain(1));
  for (Eigen::Index j = 0; j < fromStar.size(); ++j) {
    if ((j & 1023) == 0 && interrupt && interrupt->load()) return false;
    m_proposal.Draw(reduced, z, b);
    fromStar(j) = std::min(0.0, LogPosteriorKernel(b, scratch) - m_proposal.LogDensity(b) - logWeightAtStar);
  }
  const double logOrdinate = mlik::LogMeanExp(toStar) + m_proposal.LogDensity(bStar) - mlik::LogMeanExp(fromStar);
  logML_CJ = kernelAtStar - logOrdinate;
  return true;
}
