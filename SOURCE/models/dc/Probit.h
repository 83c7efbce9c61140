// Probit: the binary probit model, sampled by data augmentation with a rescaling step.
#pragma once

#include <atomic>
#include <limits>

#include <Eigen/Dense>

#include "Estimator.h"
#include "LinearPrior.h"

class EventDispatcher;

// P(y = 1 | x) = Phi(x'b), b ~ N(m, P^-1) (constraints folded in). Each sweep draws the latent
// utilities z | b (truncated Normals), then b | z (the Normal-linear step), then, when the prior
// is centred at zero, moves (z, b) along the scale group: b <- g b with g^2 ~ Gamma((n + k)/2,
// (|z - Xb|^2 + b'Pb)/2), a generalised Gibbs step that leaves the posterior invariant and keeps
// the coefficients (the intercept above all) from creeping when the utilities' scale is uncertain.
// Records b.
class Probit : public Estimator {
public:
  explicit Probit(const Eigen::VectorXd& gibbs) : Estimator(gibbs) {}

  // Samples the posterior; false when interrupted. Afterwards logML (Lewis & Raftery) and
  // logML_CJ (Chib's Rao-Blackwellised ordinate of b) are set.
  bool Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const LinearPrior& prior,
              const EventDispatcher& out, const std::atomic<bool>* interrupt);

  double logML = std::numeric_limits<double>::quiet_NaN();
  double logML_CJ = std::numeric_limits<double>::quiet_NaN();
};
