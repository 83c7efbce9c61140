// SF_LNORM: the log-normal inefficiency's conditional draws.
#include "SF_LNORM.h"

#include <cmath>

#include "CompositeError.h"
#include "Gamma.h"
#include "MarginalLikelihood.h"
#include "RandomWalkStep.h"

namespace {

class LogNormalInefficiency : public Inefficiency {
public:
  explicit LogNormalInefficiency(const InefficiencyPrior& prior) : m_prior(prior), m_scale(1.0, 0.44) {}
  std::unique_ptr<Inefficiency> Clone() const override { return std::make_unique<LogNormalInefficiency>(*this); }
  std::vector<std::string> Labels() const override { return {"mu_u", "omega_u"}; }
  std::vector<bool> Positive() const override { return {false, true}; }
  void Start(double meanU) override {
    m_omega = 2.0;
    m_mu = std::log(meanU) - 0.25;
  }

  void DrawInefficiency(const Eigen::VectorXd& w, double tau, RandomEngine& rng, Eigen::VectorXd& u) override {
    // t = log u: log p(t | w) = -tau/2 (w - e^t)^2 - omega/2 (t - mu)^2 (the log-normal's 1/u and
    // the Jacobian u cancel). The proposal's spread at t is 1 / sqrt(omega + tau e^2t), the
    // curvature of the first term's Gauss-Newton approximation.
    auto logTarget = [&](double t, double wi) {
      const double e = wi - std::exp(t), d = t - m_mu;
      return -0.5 * (tau * e * e + m_omega * d * d);
    };
    auto spread = [&](double t) { return 1.0 / std::sqrt(m_omega + tau * std::exp(2.0 * t)); };
    const double scale = m_scale.Scale();
    double probabilities = 0.0;
    long accepted = 0;
    for (Eigen::Index i = 0; i < w.size(); ++i) {
      const double t = std::log(u(i)), s = scale * spread(t);
      const double proposal = t + s * rng.Normal();
      const double sProposal = scale * spread(proposal);
      const double step = proposal - t;
      // log q(t | t') - log q(t' | t) for the Normal proposals of spreads s' and s.
      const double correction = std::log(s / sProposal) - 0.5 * step * step * (1.0 / (sProposal * sProposal) - 1.0 / (s * s));
      const double logAccept = LogAcceptanceProbability(logTarget(t, w(i)), logTarget(proposal, w(i)) + correction);
      probabilities += std::exp(logAccept);
      if (std::log(rng.Uniform()) < logAccept) {
        u(i) = std::exp(proposal);
        ++accepted;
      }
    }
    m_scale.UpdateBatch(probabilities / static_cast<double>(w.size()), accepted, static_cast<long>(w.size()));
  }
  void DrawParameters(const Eigen::VectorXd& u, RandomEngine& rng) override {
    // mu_u | omega_u, u ~ N((P m + omega sum t) / (P + n omega), 1 / (P + n omega)), then
    // omega_u | mu_u, u ~ Gamma(a + n/2, b + sum (t - mu)^2 / 2), t = log u.
    const auto n = static_cast<double>(u.size());
    const double sumT = u.array().log().sum();
    const double P = m_prior.locationPrecision(0, 0), precision = P + n * m_omega;
    m_mu = (P * m_prior.locationMean(0) + m_omega * sumT) / precision + rng.Normal() / std::sqrt(precision);
    const double squares = (u.array().log() - m_mu).square().sum();
    m_omega = dist::GammaDraw(rng, m_prior.scaleShape + 0.5 * n, m_prior.scaleRate + 0.5 * squares);
  }
  void Record(Eigen::Ref<Eigen::RowVectorXd> out) const override {
    out(0) = m_mu;
    out(1) = m_omega;
  }
  void EndBurnin() override { m_scale.EndTuning(); }
  double Acceptance() const override { return m_scale.AcceptanceRate(); }

  double LogPrior(const Eigen::VectorXd& theta) const override {
    const double d = theta(0) - m_prior.locationMean(0), P = m_prior.locationPrecision(0, 0);
    return 0.5 * (std::log(P) - std::log(2.0 * M_PI) - P * d * d) +
           mlik::LogGammaDensity(theta(1), m_prior.scaleShape, m_prior.scaleRate);
  }
  double LogConvolvedDensity(const Eigen::VectorXd& w, double tau, const Eigen::VectorXd& theta) const override {
    const double sigma = 1.0 / std::sqrt(tau);
    double sum = 0.0;
    for (Eigen::Index i = 0; i < w.size(); ++i) {
      sum += LogCompositeDensity(InefficiencyDistribution::LogNormal, w(i), sigma, theta(0), theta(1));
    }
    return sum;
  }

private:
  InefficiencyPrior m_prior;
  AdaptiveScale m_scale;
  double m_mu = 0.0, m_omega = 1.0;
};

}  // namespace

SF_LNORM::SF_LNORM(const Eigen::VectorXd& gibbs, const InefficiencyPrior& prior)
    : StochasticFrontier(gibbs, std::make_unique<LogNormalInefficiency>(prior)) {}
