// LogitRandomIntercepts: the sampler of the random-intercept logit.
#pragma once

#include <memory>

#include <Eigen/Dense>

#include "BinaryRandomEffects.h"

// Metropolis-Hastings within Gibbs on the data sorted group by group, each sweep:
// - every effect a_g given b and omega: a Normal proposal one Newton step ahead of a_g with the
//   curvature at a_g (all groups proposed at once, accepted group by group);
// - b given a: the Newton proposal with a curvature X'WX + P tuned during burn-in;
// - the shift (b_0 + c, a - c) along the constant, which leaves the likelihood unchanged: c is
//   drawn from its Normal conditional, so that the intercept and the effects' level do not mix
//   slowly against each other;
// - omega given a from its Gamma conditional.
// Each step needs one logistic evaluation per observation, taken block by block on the blocks'
// threads; the group sums of log-likelihood, gradient and curvature are kept for the current state.
std::unique_ptr<RandomEffectsChain> MakeLogitRandomInterceptChain(const BinaryRandomEffects& model,
                                                                  Eigen::VectorXd start, double omega, int threads);

// The acceptance rates of a chain made above: coefficients, effects.
std::pair<double, double> LogitRandomInterceptAcceptance(const RandomEffectsChain& chain);
