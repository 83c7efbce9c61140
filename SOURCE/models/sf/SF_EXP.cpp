// SF_EXP: the exponential inefficiency's conditional draws.
#include "SF_EXP.h"

#include <cmath>
#include <limits>

#include "CompositeError.h"
#include "Gamma.h"
#include "MarginalLikelihood.h"
#include "TruncatedNormal.h"

namespace {

class ExponentialInefficiency : public Inefficiency {
public:
  explicit ExponentialInefficiency(const InefficiencyPrior& prior) : m_prior(prior) {}
  std::unique_ptr<Inefficiency> Clone() const override { return std::make_unique<ExponentialInefficiency>(*this); }
  std::vector<std::string> Labels() const override { return {"lambda"}; }
  std::vector<bool> Positive() const override { return {true}; }
  void Start(double meanU) override { m_lambda = 1.0 / meanU; }

  void DrawInefficiency(const Eigen::VectorXd& w, double tau, Eigen::Index first, Eigen::Index end, RandomEngine& rng,
                        Eigen::VectorXd& u) override {
    // u | w ~ N(w - lambda / tau, 1 / tau) truncated to u > 0.
    const double sd = 1.0 / std::sqrt(tau), shift = m_lambda / tau;
    for (Eigen::Index i = first; i < end; ++i) {
      const double mean = w(i) - shift;
      u(i) = mean + sd * dist::StandardNormalTailDraw(rng, -mean / sd);
    }
  }
  void DrawParameters(const Eigen::VectorXd& u, const Eigen::VectorXd&, double, RandomEngine& rng) override {
    // lambda | u ~ Gamma(a + n, b + sum u).
    m_lambda = dist::GammaDraw(rng, m_prior.scaleShape + static_cast<double>(u.size()), m_prior.scaleRate + u.sum());
  }
  double LogDensitySum(const Eigen::VectorXd& u, double shift) const override {
    if (u.minCoeff() + shift <= 0.0) return -std::numeric_limits<double>::infinity();
    return -m_lambda * (u.sum() + static_cast<double>(u.size()) * shift);
  }
  void Record(Eigen::Ref<Eigen::RowVectorXd> out) const override { out(0) = m_lambda; }
  bool HasConjugateOrdinate() const override { return true; }
  double SufficientStatistic(const Eigen::VectorXd& u) const override { return u.sum(); }
  double LogParameterOrdinate(const Eigen::VectorXd& theta, double statistic, Eigen::Index n) const override {
    return mlik::LogGammaDensity(theta(0), m_prior.scaleShape + static_cast<double>(n), m_prior.scaleRate + statistic);
  }
  void Fix(const Eigen::VectorXd& theta) override { m_lambda = theta(0); }
  double LogPrior(const Eigen::VectorXd& theta) const override {
    return mlik::LogGammaDensity(theta(0), m_prior.scaleShape, m_prior.scaleRate);
  }
  double LogConvolvedDensity(const Eigen::VectorXd& w, double tau, const Eigen::VectorXd& theta) const override {
    return SumLogCompositeDensity(InefficiencyDistribution::Exponential, w, tau, theta(0), 0.0);
  }

private:
  InefficiencyPrior m_prior;
  double m_lambda = 1.0;
};

}  // namespace

SF_EXP::SF_EXP(const Eigen::VectorXd& gibbs, const InefficiencyPrior& prior)
    : StochasticFrontier(gibbs, std::make_unique<ExponentialInefficiency>(prior)) {}
