// MultinomialProbit: the multinomial and conditional probit models (MNProbit, CProbit), sampled by
// data augmentation of the utility differences with marginal augmentation of their covariance.
#pragma once

#include <atomic>
#include <limits>
#include <string>
#include <vector>

#include <Eigen/Dense>

#include "Estimator.h"
#include "LinearPrior.h"
#include "UtilityDesign.h"

class EventDispatcher;

// The utilities of alternatives 1 ... p less the base's: w_i = X_i b + e_i, e_i ~ N(0, Sigma),
// Sigma_11 = 1 (the scale the choices cannot tell); the chosen alternative has the largest
// utility. Priors: b ~ N(m, P^-1) (constraints folded in); Sigma is Sigma~ / Sigma~_11 with
// Sigma~ ~ inverse Wishart(nu, S).
//
// Each sweep: (1) the utilities w | b, Sigma, one component at a time; (2) a working scale
// a^2 ~ tr(S Sigma^-1) / chi2(p nu), the draw of a^2 given Sigma under the joint prior of
// Sigma~ = a^2 Sigma, and w~ = a w; (3) with a prior centred at zero, (a^2, b~ = a b) jointly
// given w~ and Sigma, otherwise b given w and Sigma; (4) Sigma~ given w~ and b~ by a Metropolis-
// Hastings step whose proposal is the inverse-Wishart part of the conditional; then Sigma =
// Sigma~ / Sigma~_11, b = b~ / a, w = w~ / a with a^2 = Sigma~_11. Steps (2) to (4) move the
// scale that the data do not fix, which keeps b and Sigma from creeping. Records b, then the
// free elements of Sigma (lower triangle column by column, Sigma_11 left out).
class MNProbit : public Estimator {
public:
  explicit MNProbit(const Eigen::VectorXd& gibbs) : Estimator(gibbs) {}

  // `choice`: 0 the base, c the alternative of difference c; `available` (n x p of 0 and 1, or
  // empty when every alternative is available everywhere). False when interrupted.
  bool Sample(const UtilityDesign& design, const Eigen::VectorXi& choice, const Eigen::MatrixXd& available,
              const LinearPrior& prior, double nu, const Eigen::MatrixXd& S, const EventDispatcher& out,
              const std::atomic<bool>* interrupt);

  double acceptance = std::numeric_limits<double>::quiet_NaN();  // of the covariance step
  // Lewis & Raftery's estimate, the choice probabilities by the GHK simulator.
  double logML = std::numeric_limits<double>::quiet_NaN();

  // The labels of the recorded covariance elements, Sigma_j_l with the alternatives' names.
  static std::vector<std::string> CovarianceLabels(const std::vector<std::string>& names);
  static Eigen::Index CovarianceCount(Eigen::Index p) { return p * (p + 1) / 2 - 1; }
};
