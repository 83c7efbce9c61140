// ARIMA: the Bayesian ARIMA(p, d, q) model of one series with a constant and exogenous variables,
// stationary and invertible.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include <Eigen/Dense>

#include "Estimator.h"
#include "LinearPrior.h"
#include "MIM_TS.h"

class EventDispatcher;

// After d differences, w_t = c + x_t'b + phi_1 w_{t-1} + ... + phi_p w_{t-p} + e_t + theta_1
// e_{t-1} + ... + theta_q e_{t-q}, e_t ~ N(0, 1/tau), for the periods after the presample, the
// errors before it taken as zero. Priors: (c, phi, theta, b) Normal, restricted to the region where
// the autoregressive polynomial is stable and the moving-average one invertible; tau Gamma.
// Gibbs sampling: given theta the model is a regression of the theta-filtered series on the
// theta-filtered regressors, so (c, phi, b) is drawn from its Normal conditional (kept only when
// stable, which is the Metropolis-Hastings step whose proposal is that conditional) and tau from
// its Gamma; theta by an adaptive random walk. Records c, phi, theta, b, then sigma2 = 1/tau.
class ARIMA : public Estimator {
public:
  explicit ARIMA(const Eigen::VectorXd& gibbs) : Estimator(gibbs) {}

  struct Setup {
    Eigen::VectorXd w;  // the differenced series
    Eigen::MatrixXd X;  // exogenous variables on the same rows
    Eigen::Index presample = 0, p = 0, q = 0;
    bool constant = true;
    Eigen::VectorXd mean, precision;  // prior of (c, phi, theta, b), a diagonal precision
    double a = 0.0, b = 0.0;          // Gamma prior of tau
  };

  // Samples the posterior; false when interrupted. Afterwards logML (Lewis & Raftery) and logML_CJ
  // (Chib & Jeliazkov, with a reduced run at the posterior mean of theta) are set, both with the
  // prior's normalising constant over the stable and invertible region, and the acceptance rates
  // of the two Metropolis-Hastings steps.
  bool Sample(const Setup& setup, const EventDispatcher& out, const std::atomic<bool>* interrupt);

  double logML = 0.0;
  double logML_CJ = 0.0;
  double stableAcceptance = 0.0;      // share of the linear block's draws kept
  double movingAverageAcceptance = 0.0;

  // The labels y$constant, y$ar1, ..., y$ma1, ..., y$x, sigma2$y.
  static std::vector<std::string> Labels(const std::string& series, const std::vector<std::string>& exogenous,
                                         Eigen::Index p, Eigen::Index q, bool constant);
};

// An estimated ARIMA model.
class MIM_ARIMA : public MIM_TimeSeries {
public:
  bool LayoutHolds() const override;
  // The results, then how stationarity and invertibility were imposed.
  void PrintResults(const EventDispatcher& out) const override;

protected:
  DynamicParameters ParametersOfDraw(const Eigen::Ref<const Eigen::RowVectorXd>& row) const override;
};
