// SF_LNORM: the log-normal inefficiency's conditional draws.
#include "SF_LNORM.h"

#include <atomic>
#include <cmath>
#include <limits>

#include "CompositeError.h"
#include "Gamma.h"
#include "MarginalLikelihood.h"
#include "BinaryAugmentation.h"
#include "TruncatedNormal.h"

namespace {

constexpr double kLogSqrt2Pi = 0.91893853320467274178;

class LogNormalInefficiency : public Inefficiency {
public:
  explicit LogNormalInefficiency(const InefficiencyPrior& prior) : m_prior(prior) {}
  std::unique_ptr<Inefficiency> Clone() const override {
    auto copy = std::make_unique<LogNormalInefficiency>(m_prior);
    copy->m_mu = m_mu;
    copy->m_omega = m_omega;
    return copy;
  }
  std::vector<std::string> Labels() const override { return {"mu_u", "omega_u"}; }
  std::vector<bool> Positive() const override { return {false, true}; }
  void Start(double meanU) override {
    m_omega = 2.0;
    m_mu = std::log(meanU) - 0.25;
  }

  void DrawInefficiency(const Eigen::VectorXd& w, double tau, Eigen::Index first, Eigen::Index end, RandomEngine& rng,
                        Eigen::VectorXd& u) override {
    // An independence step per observation whose proposal mixes, half and half, the log-normal
    // itself (right where the noise hides u) and N(w, 1/tau) truncated to u > 0 (right where
    // w pins u down). Target: exp(-tau/2 (w - u)^2) LN(u; mu, 1/omega).
    const double sigma = 1.0 / std::sqrt(tau), sd = 1.0 / std::sqrt(m_omega);
    const double logHalf = std::log(0.5);
    auto logLogNormal = [&](double x) {
      const double d = (std::log(x) - m_mu) / sd;
      return -0.5 * d * d - std::log(x * sd) - kLogSqrt2Pi;
    };
    long accepted = 0;
    for (Eigen::Index i = first; i < end; ++i) {
      const double logMass = LogNormalCdf(w(i) / sigma);  // of the truncated Normal
      auto logNoise = [&](double x) {
        const double d = (w(i) - x) / sigma;
        return -0.5 * d * d;
      };
      auto logProposal = [&](double x) {
        const double a = logHalf + logLogNormal(x);
        const double b = logHalf + logNoise(x) - std::log(sigma) - kLogSqrt2Pi - logMass;
        const double top = std::max(a, b);
        return top + std::log(std::exp(a - top) + std::exp(b - top));
      };
      const double proposal = rng.Uniform() < 0.5
                                  ? std::exp(m_mu + sd * rng.Normal())
                                  : w(i) + sigma * dist::StandardNormalTailDraw(rng, -w(i) / sigma);
      if (!(proposal > 0.0)) continue;
      const double logAccept = (logNoise(proposal) + logLogNormal(proposal) - logProposal(proposal)) -
                               (logNoise(u(i)) + logLogNormal(u(i)) - logProposal(u(i)));
      if (std::log(rng.Uniform()) < logAccept) {
        u(i) = proposal;
        ++accepted;
      }
    }
    if (m_keeping) {
      m_accepted += accepted;
      m_proposed += end - first;
    }
  }
  void DrawParameters(const Eigen::VectorXd& u, const Eigen::VectorXd&, double, RandomEngine& rng) override {
    // mu_u | omega_u, u ~ N((P m + omega sum t) / (P + n omega), 1 / (P + n omega)), then
    // omega_u | mu_u, u ~ Gamma(a + n/2, b + sum (t - mu)^2 / 2), t = log u.
    const auto n = static_cast<double>(u.size());
    const double sumT = u.array().log().sum();
    const double P = m_prior.locationPrecision(0, 0), precision = P + n * m_omega;
    m_mu = (P * m_prior.locationMean(0) + m_omega * sumT) / precision + rng.Normal() / std::sqrt(precision);
    const double squares = (u.array().log() - m_mu).square().sum();
    m_omega = dist::GammaDraw(rng, m_prior.scaleShape + 0.5 * n, m_prior.scaleRate + 0.5 * squares);
  }
  double LogDensitySum(const Eigen::VectorXd& u, double shift) const override {
    if (u.minCoeff() + shift <= 0.0) return -std::numeric_limits<double>::infinity();
    const Eigen::ArrayXd t = (u.array() + shift).log();
    return -t.sum() - 0.5 * m_omega * (t - m_mu).square().sum();
  }
  void Record(Eigen::Ref<Eigen::RowVectorXd> out) const override {
    out(0) = m_mu;
    out(1) = m_omega;
  }
  void EndBurnin() override { m_keeping = true; }
  double Acceptance() const override {
    return m_proposed > 0 ? static_cast<double>(m_accepted) / static_cast<double>(m_proposed)
                          : std::numeric_limits<double>::quiet_NaN();
  }

  double LogPrior(const Eigen::VectorXd& theta) const override {
    const double d = theta(0) - m_prior.locationMean(0), P = m_prior.locationPrecision(0, 0);
    return 0.5 * (std::log(P) - std::log(2.0 * M_PI) - P * d * d) +
           mlik::LogGammaDensity(theta(1), m_prior.scaleShape, m_prior.scaleRate);
  }
  double LogConvolvedDensity(const Eigen::VectorXd& w, double tau, const Eigen::VectorXd& theta) const override {
    return SumLogCompositeDensity(InefficiencyDistribution::LogNormal, w, tau, theta(0), theta(1));
  }

private:
  InefficiencyPrior m_prior;
  bool m_keeping = false;
  std::atomic<long> m_accepted{0}, m_proposed{0};  // blocks of observations add to them at once
  double m_mu = 0.0, m_omega = 1.0;
};

}  // namespace

SF_LNORM::SF_LNORM(const Eigen::VectorXd& gibbs, const InefficiencyPrior& prior)
    : StochasticFrontier(gibbs, std::make_unique<LogNormalInefficiency>(prior)) {}
