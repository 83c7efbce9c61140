// TobitI: the censored regression model.
#pragma once

#include <atomic>
#include <limits>

#include <Eigen/Dense>

#include "Estimator.h"
#include "LinearPrior.h"

class EventDispatcher;

// y* = x'b + e, e ~ N(0, 1/tau), observed y = y* inside (lower, upper), y = lower when y* <= lower
// and y = upper when y* >= upper (either limit may be infinite); b ~ N(m, P^-1) (constraints
// folded in), tau ~ Gamma(a, b). Each sweep draws the censored outcomes' latent values from their
// truncated Normals, then b given them and tau, then tau. Only the censored observations cost
// anything per sweep: the uncensored ones enter through cross-products computed once. Records b,
// then tau.
class TobitI : public Estimator {
public:
  explicit TobitI(const Eigen::VectorXd& gibbs) : Estimator(gibbs) {}

  // Samples the posterior; false when interrupted. Afterwards logML (Lewis & Raftery on
  // (b, log tau)) and, when `chib` is true, logML_CJ (Chib's method, with a second run that holds
  // b fixed) are set.
  bool Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, double lower, double upper,
              const LinearPrior& prior, double a, double b, bool chib, const EventDispatcher& out,
              const std::atomic<bool>* interrupt);

  double logML = std::numeric_limits<double>::quiet_NaN();
  double logML_CJ = std::numeric_limits<double>::quiet_NaN();

  // log p(y | b, tau).
  double LogLikelihood(const Eigen::VectorXd& b, double tau) const;

  // What a chain needs.
  struct Data {
    Eigen::MatrixXd censoredX;     // the censored observations' rows
    Eigen::VectorXd limit;         // each censored observation's limit
    Eigen::VectorXd below;         // 1 where censored from below, 0 from above
    Eigen::MatrixXd XtX;           // over all observations
    Eigen::VectorXd uncensoredXty;  // X'y over the uncensored observations
    double uncensoredYty = 0.0;
    Eigen::Index observations = 0;
  };

private:
  const Eigen::VectorXd* m_y = nullptr;
  const Eigen::MatrixXd* m_X = nullptr;
  double m_lower = -std::numeric_limits<double>::infinity();
  double m_upper = std::numeric_limits<double>::infinity();
  Data m_data;
  LinearPrior m_prior;
  double m_a = 0.0, m_b = 0.0;
};
