// IndependenceSampler: the mode, the chains of the independence step and the marginal likelihoods.
#include "IndependenceSampler.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "IndependenceProposal.h"
#include "MarginalLikelihood.h"
#include "ObservationBlocks.h"

namespace {

// The log kernel summed block by block on the blocks' threads.
class BlockedKernel {
public:
  BlockedKernel(const IndependenceTarget& target, int threads) : m_target(target) {
    RandomEngine unused;  // the kernel draws nothing
    m_blocks = std::make_unique<ObservationBlocks>(target.Observations(), unused, threads);
    m_partial.resize(m_blocks->Count());
    const Eigen::Index n = target.Observations();
    m_workspace.index.resize(n);
    m_workspace.work.resize(n);
    m_workspace.extra.resize(n);
  }

  double operator()(const Eigen::VectorXd& theta) {
    m_blocks->Run([&](Eigen::Index block, Eigen::Index first, Eigen::Index end, RandomEngine&) {
      m_partial(block) = m_target.BlockLogLikelihood(theta, first, end, m_workspace);
    });
    return m_partial.sum() + m_target.LogPrior(theta);
  }

private:
  const IndependenceTarget& m_target;
  std::unique_ptr<ObservationBlocks> m_blocks;
  Eigen::VectorXd m_partial;
  IndependenceTarget::Workspace m_workspace;
};

class IndependenceChain : public GibbsChain {
public:
  IndependenceChain(const IndependenceTarget& target, const IndependenceProposal& proposal, Eigen::VectorXd start,
                    int threads)
      : m_target(target), m_proposal(proposal), m_kernel(target, threads), m_theta(std::move(start)),
        m_trial(m_theta.size()), m_z(m_theta.size()) {
    m_logWeight = m_kernel(m_theta) - m_proposal.LogDensity(m_theta);
  }

  void Sweep(RandomEngine& rng) override {
    m_proposal.Draw(rng, m_z, m_trial);
    const double logWeight = m_kernel(m_trial) - m_proposal.LogDensity(m_trial);
    if (std::log(rng.Uniform()) < logWeight - m_logWeight) {
      m_theta.swap(m_trial);
      m_logWeight = logWeight;
      ++m_accepted;
    }
    ++m_sweeps;
  }

  // The reported parameters, then theta and log(kernel / proposal) at theta (for the marginal
  // likelihoods; dropped from what the model keeps).
  void Record(DrawRow row) const override {
    const Eigen::Index r = m_target.ReportedCount(), k = m_theta.size();
    m_target.Report(m_theta, row.head(r));
    row.segment(r, k) = m_theta.transpose();
    row(r + k) = m_logWeight;
  }

  double Acceptance() const { return m_sweeps > 0 ? static_cast<double>(m_accepted) / static_cast<double>(m_sweeps) : 0.0; }

private:
  const IndependenceTarget& m_target;
  const IndependenceProposal& m_proposal;
  BlockedKernel m_kernel;
  Eigen::VectorXd m_theta, m_trial, m_z;
  double m_logWeight = 0.0;
  long m_accepted = 0, m_sweeps = 0;
};

}  // namespace

double IndependenceTarget::LogKernel(const Eigen::VectorXd& theta) const {
  Workspace workspace;
  const Eigen::Index n = Observations();
  workspace.index.resize(n);
  workspace.work.resize(n);
  workspace.extra.resize(n);
  return BlockLogLikelihood(theta, 0, n, workspace) + LogPrior(theta);
}

double IndependenceTarget::Derivatives(const Eigen::VectorXd& theta, Eigen::VectorXd& gradient,
                                       Eigen::MatrixXd& hessian) const {
  const Eigen::Index k = theta.size();
  const double centre = LogKernel(theta);
  const Eigen::VectorXd h = 1e-4 * (1.0 + theta.array().abs());
  Eigen::VectorXd point = theta;
  auto at = [&](Eigen::Index i, double si, Eigen::Index j, double sj) {
    point = theta;
    point(i) += si * h(i);
    point(j) += sj * h(j);
    return LogKernel(point);
  };
  gradient.resize(k);
  hessian.resize(k, k);
  for (Eigen::Index i = 0; i < k; ++i) {
    const double up = at(i, 1.0, i, 0.0), down = at(i, -1.0, i, 0.0);
    gradient(i) = (up - down) / (2.0 * h(i));
    hessian(i, i) = (up - 2.0 * centre + down) / (h(i) * h(i));
    for (Eigen::Index j = 0; j < i; ++j) {
      hessian(i, j) = hessian(j, i) =
          (at(i, 1.0, j, 1.0) - at(i, 1.0, j, -1.0) - at(i, -1.0, j, 1.0) + at(i, -1.0, j, -1.0)) / (4.0 * h(i) * h(j));
    }
  }
  return centre;
}

bool SampleIndependence(Estimator& estimator, const IndependenceTarget& target, const EventDispatcher& out,
                        const std::atomic<bool>* interrupt, IndependenceResult& result) {
  IndependenceProposal proposal;
  auto derivatives = [&](const Eigen::VectorXd& theta, Eigen::VectorXd& gradient, Eigen::MatrixXd& hessian) {
    return target.Derivatives(theta, gradient, hessian);
  };
  if (!proposal.Fit(derivatives, target.SearchStart(), kIndependenceProposalDof)) {
    result.noMode = true;
    return false;
  }
  const Eigen::Index k = target.Dimension(), r = target.ReportedCount();

  // Chains start at draws from the proposal, so that they begin apart.
  const long chains = estimator.Settings().chains;
  RandomEngine starts;
  starts.Seed(estimator.Settings().seed + 7);
  std::vector<Eigen::VectorXd> initial(static_cast<std::size_t>(chains), Eigen::VectorXd(k));
  Eigen::VectorXd z(k);
  for (auto& theta : initial) proposal.Draw(starts, z, theta);
  auto make = [&](int c) -> std::unique_ptr<GibbsChain> {
    return std::make_unique<IndependenceChain>(target, proposal, initial[static_cast<std::size_t>(c)],
                                               ObservationBlocks::ThreadsPerChain(chains));
  };
  if (!estimator.RunChains(make, static_cast<int>(r + k + 1), out, interrupt)) return false;
  double accepted = 0.0;
  for (const auto& chain : estimator.Chains()) accepted += static_cast<const IndependenceChain&>(*chain).Acceptance();
  result.acceptance = accepted / static_cast<double>(chains);

  const Eigen::MatrixXd pooled = estimator.PoolDraws(r);
  const Eigen::MatrixXd draws = pooled.middleCols(r, k);
  const Eigen::VectorXd thetaStar = draws.colwise().mean().transpose();
  BlockedKernel kernel(target, ObservationBlocks::ThreadsPerChain(1));
  const double kernelAtStar = kernel(thetaStar);
  result.logML = mlik::LaplaceMetropolis(kernelAtStar, draws);

  // Chib & Jeliazkov for an independence proposal q: p(t* | y) = E_post[a(t, t*)] q(t*) /
  // E_q[a(t*, t)], with a(t, t') = min(1, w(t') / w(t)) and w = kernel / q.
  const double logWeightAtStar = kernelAtStar - proposal.LogDensity(thetaStar);
  Eigen::VectorXd toStar(pooled.rows());
  for (Eigen::Index g = 0; g < pooled.rows(); ++g) toStar(g) = std::min(0.0, logWeightAtStar - pooled(g, r + k));
  RandomEngine reduced;
  reduced.Seed(estimator.Settings().seed + 1);
  Eigen::VectorXd fromStar(pooled.rows()), theta(k);
  for (Eigen::Index j = 0; j < fromStar.size(); ++j) {
    if ((j & 1023) == 0 && interrupt && interrupt->load()) return false;
    proposal.Draw(reduced, z, theta);
    fromStar(j) = std::min(0.0, kernel(theta) - proposal.LogDensity(theta) - logWeightAtStar);
  }
  const double logOrdinate = mlik::LogMeanExp(toStar) + proposal.LogDensity(thetaStar) - mlik::LogMeanExp(fromStar);
  result.logML_CJ = kernelAtStar - logOrdinate;
  return true;
}
