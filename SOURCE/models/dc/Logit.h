// Logit: the binary logit model, sampled by an independence Metropolis-Hastings step.
#pragma once

#include <atomic>
#include <limits>
#include <memory>

#include <Eigen/Dense>

#include "Estimator.h"
#include "IndependenceProposal.h"
#include "LinearPrior.h"
#include "ObservationBlocks.h"

class EventDispatcher;

// P(y = 1 | x) = 1 / (1 + exp(-x'b)), b ~ N(m, P^-1) (constraints folded in). The proposal is a
// multivariate t with 10 degrees of freedom centred at the posterior mode with the inverse
// curvature there as its scale: the logit posterior is close to it, so nearly every proposal is
// accepted and the draws are nearly independent. Records b.
class Logit : public Estimator {
public:
  explicit Logit(const Eigen::VectorXd& gibbs) : Estimator(gibbs) {}

  // Samples the posterior; false when interrupted or when the posterior has no mode (its
  // curvature is not negative definite anywhere the search went: separated data under a flat
  // prior). Afterwards logML (Lewis & Raftery), logML_CJ (Chib & Jeliazkov) and the acceptance
  // rate are set.
  bool Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const LinearPrior& prior,
              const EventDispatcher& out, const std::atomic<bool>* interrupt);

  // log p(y | b) + log p(b).
  double LogPosteriorKernel(const Eigen::VectorXd& b) const;
  // The same with working space kept by the caller (a chain evaluates it every sweep); with
  // `blocks`, the sum over the observations is taken block by block on the blocks' threads.
  struct KernelScratch {
    Eigen::ArrayXd index, work;
    Eigen::VectorXd partial;
    std::unique_ptr<ObservationBlocks> blocks;
  };
  // Working space whose blocks use `threads` threads.
  KernelScratch MakeScratch(int threads) const;
  double LogPosteriorKernel(const Eigen::VectorXd& b, KernelScratch& scratch) const;

  double logML = std::numeric_limits<double>::quiet_NaN();
  double logML_CJ = std::numeric_limits<double>::quiet_NaN();
  double acceptance = std::numeric_limits<double>::quiet_NaN();
  bool noMode = false;

private:
  const Eigen::VectorXd* m_y = nullptr;
  const Eigen::MatrixXd* m_X = nullptr;
  LinearPrior m_prior;
  IndependenceProposal m_proposal;
};

// The t proposal (10 degrees of freedom) at the logit posterior's mode, with the inverse curvature
// there as its scale; false when the posterior has no mode that Newton's method finds.
bool FitLogitProposal(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const LinearPrior& prior,
                      IndependenceProposal& proposal);
