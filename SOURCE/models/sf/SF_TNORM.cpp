// SF_TNORM: the truncated-normal inefficiency's conditional draws.
#include "SF_TNORM.h"

#include <cmath>
#include <limits>

#include "BinaryAugmentation.h"
#include "CompositeError.h"
#include "MarginalLikelihood.h"
#include "RandomWalkStep.h"
#include "TruncatedNormal.h"

namespace {

// A random walk for the location with the covariance (Z'Z + P)^-1 (the Normal part's curvature
// at omega = 1; the tuned scale absorbs omega).
RandomWalkStep LocationStep(const Eigen::MatrixXd& Z, const InefficiencyPrior& prior) {
  const Eigen::MatrixXd covariance = (Z.transpose() * Z + prior.locationPrecision).inverse();
  return RandomWalkStep(Eigen::MatrixXd(covariance.llt().matrixL()), 1.0);
}

class TruncatedNormalInefficiency : public Inefficiency {
public:
  // Z: the determinants (a column of ones for a single mu_u); `determinants` tells which.
  TruncatedNormalInefficiency(const InefficiencyPrior& prior, Eigen::MatrixXd Z, bool determinants)
      : m_prior(prior), m_Z(std::move(Z)), m_determinants(determinants), m_d(Eigen::VectorXd::Zero(m_Z.cols())),
        m_locationStep(LocationStep(m_Z, prior)), m_scaleStep(Eigen::MatrixXd::Identity(1, 1), 1.0, 0.44),
        m_logOmega(1) {}
  std::unique_ptr<Inefficiency> Clone() const override {
    return std::make_unique<TruncatedNormalInefficiency>(*this);
  }
  void Prepare(Eigen::Index observations) override {
    // A single mu_u is the coefficient of a column of ones.
    if (!m_determinants) m_Z = Eigen::MatrixXd::Ones(observations, 1);
    m_mu = Eigen::VectorXd::Zero(observations);
    m_residual.resize(observations);
    m_locationStep = LocationStep(m_Z, m_prior);
    m_scaleStep = RandomWalkStep(Eigen::MatrixXd::Identity(1, 1), 1.0 / std::sqrt(static_cast<double>(observations)), 0.44);
  }
  Eigen::Index DeterminantCount() const override { return m_determinants ? m_Z.cols() : 0; }
  std::vector<std::string> Labels() const override {
    if (m_determinants) return {"omega_u"};
    return {"mu_u", "omega_u"};
  }
  std::vector<bool> Positive() const override {
    std::vector<bool> positive(static_cast<std::size_t>(m_Z.cols()), false);
    positive.push_back(true);
    return positive;
  }
  void Start(double meanU) override {
    // mu = 0: the half-normal with this mean.
    m_d.setZero();
    m_mu.setZero();
    m_logOmega(0) = std::log(2.0 / (M_PI * meanU * meanU));
  }

  void DrawInefficiency(const Eigen::VectorXd& w, double tau, Eigen::Index first, Eigen::Index end, RandomEngine& rng,
                        Eigen::VectorXd& u) override {
    // u | w ~ N((tau w + omega mu) / (tau + omega), 1 / (tau + omega)) truncated to u > 0.
    const double omega = std::exp(m_logOmega(0));
    const double precision = tau + omega, sd = 1.0 / std::sqrt(precision);
    for (Eigen::Index i = first; i < end; ++i) {
      const double mean = (tau * w(i) + omega * m_mu(i)) / precision;
      u(i) = mean + sd * dist::StandardNormalTailDraw(rng, -mean / sd);
    }
  }
  void DrawParameters(const Eigen::VectorXd& u, const Eigen::VectorXd&, double, RandomEngine& rng) override {
    m_u = &u;
    double logTarget = LocationTarget(m_d);
    if (m_locationStep.Step(m_d, logTarget, [this](const Eigen::VectorXd& d) { return LocationTarget(d); }, rng)) {
      m_mu.noalias() = m_Z * m_d;
    }
    logTarget = ScaleTarget(m_logOmega);
    m_scaleStep.Step(m_logOmega, logTarget, [this](const Eigen::VectorXd& l) { return ScaleTarget(l); }, rng);
  }
  double LogDensitySum(const Eigen::VectorXd& u, double shift) const override {
    if (u.minCoeff() + shift <= 0.0) return -std::numeric_limits<double>::infinity();
    return -0.5 * std::exp(m_logOmega(0)) * (u.array() + shift - m_mu.array()).square().sum();
  }
  void Record(Eigen::Ref<Eigen::RowVectorXd> out) const override {
    out.head(m_d.size()) = m_d.transpose();
    out(m_d.size()) = std::exp(m_logOmega(0));
  }
  void EndBurnin() override {
    m_locationStep.EndBurnin();
    m_scaleStep.EndBurnin();
  }
  double Acceptance() const override { return 0.5 * (m_locationStep.AcceptanceRate() + m_scaleStep.AcceptanceRate()); }

  double LogPrior(const Eigen::VectorXd& theta) const override {
    const Eigen::Index p = m_Z.cols();
    return mlik::LogNormalDensity(theta.head(p), m_prior.locationMean, m_prior.locationPrecision) +
           mlik::LogGammaDensity(theta(p), m_prior.scaleShape, m_prior.scaleRate);
  }
  double LogConvolvedDensity(const Eigen::VectorXd& w, double tau, const Eigen::VectorXd& theta) const override {
    const Eigen::Index p = m_Z.cols();
    const Eigen::VectorXd mu = m_Z * theta.head(p);
    const double sigma = 1.0 / std::sqrt(tau);
    double sum = 0.0;
    for (Eigen::Index i = 0; i < w.size(); ++i) {
      sum += LogCompositeDensity(InefficiencyDistribution::TruncatedNormal, w(i), sigma, mu(i), theta(p));
    }
    return sum;
  }

private:
  // log p(d | u, omega): prior times prod N(u_i; z_i'd, 1/omega) / Phi(z_i'd sqrt(omega)).
  double LocationTarget(const Eigen::VectorXd& d) {
    const double omega = std::exp(m_logOmega(0)), root = std::sqrt(omega);
    m_residual.noalias() = m_Z * d;
    double sum = mlik::LogNormalDensity(d, m_prior.locationMean, m_prior.locationPrecision);
    for (Eigen::Index i = 0; i < m_residual.size(); ++i) {
      const double e = (*m_u)(i) - m_residual(i);
      sum -= 0.5 * omega * e * e + LogNormalCdf(m_residual(i) * root);
    }
    return sum;
  }
  // log p(log omega | u, d), the Jacobian omega included.
  double ScaleTarget(const Eigen::VectorXd& logOmega) const {
    const double omega = std::exp(logOmega(0)), root = std::sqrt(omega);
    const auto n = static_cast<double>(m_mu.size());
    double sum = (m_prior.scaleShape + 0.5 * n) * logOmega(0) - m_prior.scaleRate * omega;
    for (Eigen::Index i = 0; i < m_mu.size(); ++i) {
      const double e = (*m_u)(i) - m_mu(i);
      sum -= 0.5 * omega * e * e + LogNormalCdf(m_mu(i) * root);
    }
    return sum;
  }

  InefficiencyPrior m_prior;
  Eigen::MatrixXd m_Z;
  bool m_determinants;
  Eigen::VectorXd m_d, m_mu, m_residual;
  RandomWalkStep m_locationStep, m_scaleStep;
  Eigen::VectorXd m_logOmega;
  const Eigen::VectorXd* m_u = nullptr;
};

}  // namespace

SF_TNORM::SF_TNORM(const Eigen::VectorXd& gibbs, const InefficiencyPrior& prior)
    : StochasticFrontier(gibbs, std::make_unique<TruncatedNormalInefficiency>(prior, Eigen::MatrixXd::Ones(1, 1), false)) {}

SF_IE_TNORM::SF_IE_TNORM(const Eigen::VectorXd& gibbs, const InefficiencyPrior& prior, const Eigen::MatrixXd& Z)
    : StochasticFrontier(gibbs, std::make_unique<TruncatedNormalInefficiency>(prior, Z, true)) {}
