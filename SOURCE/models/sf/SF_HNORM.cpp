// SF_HNORM: the half-normal inefficiency's conditional draws.
#include "SF_HNORM.h"

#include <cmath>
#include <limits>

#include "CompositeError.h"
#include "Gamma.h"
#include "MarginalLikelihood.h"
#include "TruncatedNormal.h"

namespace {

class HalfNormalInefficiency : public Inefficiency {
public:
  explicit HalfNormalInefficiency(const InefficiencyPrior& prior) : m_prior(prior) {}
  std::unique_ptr<Inefficiency> Clone() const override { return std::make_unique<HalfNormalInefficiency>(*this); }
  std::vector<std::string> Labels() const override { return {"omega_u"}; }
  std::vector<bool> Positive() const override { return {true}; }
  void Start(double meanU) override { m_omega = 2.0 / (M_PI * meanU * meanU); }

  void DrawInefficiency(const Eigen::VectorXd& w, double tau, Eigen::Index first, Eigen::Index end, RandomEngine& rng,
                        Eigen::VectorXd& u) override {
    // u | w ~ N(tau w / (tau + omega_u), 1 / (tau + omega_u)) truncated to u > 0.
    const double precision = tau + m_omega, sd = 1.0 / std::sqrt(precision);
    for (Eigen::Index i = first; i < end; ++i) {
      const double mean = tau * w(i) / precision;
      u(i) = mean + sd * dist::StandardNormalTailDraw(rng, -mean / sd);
    }
  }
  void DrawParameters(const Eigen::VectorXd& u, const Eigen::VectorXd&, double, RandomEngine& rng) override {
    // omega_u | u ~ Gamma(a + n/2, b + u'u/2).
    m_omega = dist::GammaDraw(rng, m_prior.scaleShape + 0.5 * static_cast<double>(u.size()),
                              m_prior.scaleRate + 0.5 * u.squaredNorm());
  }
  double LogDensitySum(const Eigen::VectorXd& u, double shift) const override {
    if (u.minCoeff() + shift <= 0.0) return -std::numeric_limits<double>::infinity();
    return -0.5 * m_omega * (u.array() + shift).square().sum();
  }
  void Record(Eigen::Ref<Eigen::RowVectorXd> out) const override { out(0) = m_omega; }
  bool HasConjugateOrdinate() const override { return true; }
  double SufficientStatistic(const Eigen::VectorXd& u) const override { return u.squaredNorm(); }
  double LogParameterOrdinate(const Eigen::VectorXd& theta, double statistic, Eigen::Index n) const override {
    return mlik::LogGammaDensity(theta(0), m_prior.scaleShape + 0.5 * static_cast<double>(n),
                                 m_prior.scaleRate + 0.5 * statistic);
  }
  void Fix(const Eigen::VectorXd& theta) override { m_omega = theta(0); }
  double LogPrior(const Eigen::VectorXd& theta) const override {
    return mlik::LogGammaDensity(theta(0), m_prior.scaleShape, m_prior.scaleRate);
  }
  double LogConvolvedDensity(const Eigen::VectorXd& w, double tau, const Eigen::VectorXd& theta) const override {
    return SumLogCompositeDensity(InefficiencyDistribution::HalfNormal, w, tau, theta(0), 0.0);
  }

private:
  InefficiencyPrior m_prior;
  double m_omega = 1.0;
};

}  // namespace

SF_HNORM::SF_HNORM(const Eigen::VectorXd& gibbs, const InefficiencyPrior& prior)
    : StochasticFrontier(gibbs, std::make_unique<HalfNormalInefficiency>(prior)) {}
