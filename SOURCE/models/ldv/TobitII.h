// TobitII: the sample-selection model.
#pragma once

#include <atomic>
#include <limits>

#include <Eigen/Dense>

#include "Estimator.h"
#include "LinearPrior.h"

class EventDispatcher;

// y_i = x_i'b + e_i is observed only where s_i = z_i'g + u_i > 0; (e, u) are bivariate Normal with
// Var(u) = 1, Var(e) = sigma^2 and correlation rho. The sampler works with the covariance
// w = rho sigma and the conditional variance xi^2 = sigma^2 (1 - rho^2) of e given u, so that every
// step is a conjugate draw and rho mixes well: e = w u + v, v ~ N(0, xi^2). Priors: (b, w, g)
// jointly Normal (b ~ N(m, P^-1), w ~ N(0, 1/p_w), g ~ N(mz, Pz^-1), constraints folded in, which
// may tie b and g), 1/xi^2 ~ Gamma(a, b). Each
// sweep draws the selection utilities s from their truncated Normals, then (b, w) as one
// regression of the observed y on [x, s - z'g], then g, then 1/xi^2. Records b, g, sigma, rho.
class TobitII : public Estimator {
public:
  explicit TobitII(const Eigen::VectorXd& gibbs) : Estimator(gibbs) {}

  struct Priors {
    LinearPrior coefficients;  // (b, w, g)
    double a = 0.0, b = 0.0;
  };

  // `selected` holds 1 where y is observed (y is read only there). Samples the posterior; false
  // when interrupted. Afterwards logML (Lewis & Raftery on (b, g, w, log(1/xi^2))) and, when
  // `chib` is true, logML_CJ (Chib's method, with two more runs that hold blocks fixed) are set.
  bool Sample(const Eigen::VectorXd& y, const Eigen::VectorXd& selected, const Eigen::MatrixXd& X,
              const Eigen::MatrixXd& Z, const Priors& priors, bool chib, const EventDispatcher& out,
              const std::atomic<bool>* interrupt);

  double logML = std::numeric_limits<double>::quiet_NaN();
  double logML_CJ = std::numeric_limits<double>::quiet_NaN();

  // log p(y, selection | b, g, w, xi^2).
  double LogLikelihood(const Eigen::VectorXd& b, const Eigen::VectorXd& g, double w, double xi2) const;

  // The data as a chain reads them: the selected observations' outcomes and regressors apart.
  struct Data {
    Eigen::VectorXd y;        // selected observations
    Eigen::MatrixXd Xs, Zs;   // selected observations' rows
    Eigen::MatrixXd Zn;       // the other observations' rows of Z
    Eigen::MatrixXd XstXs, ZtZ, ZstZs;
    Eigen::VectorXd Xsty;
  };

private:
  Data m_data;
  Priors m_priors;
};
