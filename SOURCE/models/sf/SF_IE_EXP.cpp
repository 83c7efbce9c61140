// SF_IE_EXP: the conditional draws of exponential inefficiency with determinants.
#include "SF_IE_EXP.h"

#include <cmath>
#include <limits>

#include "CompositeError.h"
#include "MarginalLikelihood.h"
#include "RandomWalkStep.h"
#include "TruncatedNormal.h"

namespace {

class ExponentialDeterminants : public Inefficiency {
public:
  ExponentialDeterminants(const InefficiencyPrior& prior, Eigen::MatrixXd Z)
      : m_prior(prior), m_Z(std::move(Z)), m_d(Eigen::VectorXd::Zero(m_Z.cols())), m_rate(m_Z.rows()),
        m_index(m_Z.rows()),
        m_step(Eigen::MatrixXd((m_Z.transpose() * m_Z + prior.locationPrecision).inverse().llt().matrixL()), 1.0) {}
  std::unique_ptr<Inefficiency> Clone() const override { return std::make_unique<ExponentialDeterminants>(*this); }
  Eigen::Index DeterminantCount() const override { return m_Z.cols(); }
  std::vector<std::string> Labels() const override { return {}; }
  std::vector<bool> Positive() const override { return std::vector<bool>(static_cast<std::size_t>(m_Z.cols()), false); }
  void Start(double meanU) override {
    // The constant mean where the determinants hold a constant term, else d = 0.
    m_d.setZero();
    for (Eigen::Index j = 0; j < m_Z.cols(); ++j) {
      if ((m_Z.col(j).array() == 1.0).all()) {
        m_d(j) = std::log(meanU);
        break;
      }
    }
    m_rate = (-(m_Z * m_d)).array().exp().matrix();
  }

  void DrawInefficiency(const Eigen::VectorXd& w, double tau, Eigen::Index first, Eigen::Index end, RandomEngine& rng,
                        Eigen::VectorXd& u) override {
    // u_i | w_i ~ N(w_i - lambda_i / tau, 1 / tau) truncated to u > 0, lambda_i = exp(-z_i'd).
    const double sd = 1.0 / std::sqrt(tau);
    for (Eigen::Index i = first; i < end; ++i) {
      const double mean = w(i) - m_rate(i) / tau;
      u(i) = mean + sd * dist::StandardNormalTailDraw(rng, -mean / sd);
    }
  }
  void DrawParameters(const Eigen::VectorXd& u, const Eigen::VectorXd&, double, RandomEngine& rng) override {
    m_u = &u;
    double logTarget = Target(m_d);
    if (m_step.Step(m_d, logTarget, [this](const Eigen::VectorXd& d) { return Target(d); }, rng)) {
      m_rate = (-(m_Z * m_d)).array().exp().matrix();
    }
  }
  double LogDensitySum(const Eigen::VectorXd& u, double shift) const override {
    if (u.minCoeff() + shift <= 0.0) return -std::numeric_limits<double>::infinity();
    return -(m_rate.array() * (u.array() + shift)).sum();
  }
  void Record(Eigen::Ref<Eigen::RowVectorXd> out) const override { out = m_d.transpose(); }
  void EndBurnin() override { m_step.EndBurnin(); }
  double Acceptance() const override { return m_step.AcceptanceRate(); }

  double LogPrior(const Eigen::VectorXd& theta) const override {
    return mlik::LogNormalDensity(theta, m_prior.locationMean, m_prior.locationPrecision);
  }
  double LogConvolvedDensity(const Eigen::VectorXd& w, double tau, const Eigen::VectorXd& theta) const override {
    const Eigen::VectorXd index = m_Z * theta;
    const double sigma = 1.0 / std::sqrt(tau);
    double sum = 0.0;
    for (Eigen::Index i = 0; i < w.size(); ++i) {
      sum += LogCompositeDensity(InefficiencyDistribution::Exponential, w(i), sigma, std::exp(-index(i)), 0.0);
    }
    return sum;
  }

private:
  // log p(d | u) = log prior + sum_i (-z_i'd - u_i exp(-z_i'd)).
  double Target(const Eigen::VectorXd& d) {
    m_index.noalias() = m_Z * d;
    double sum = mlik::LogNormalDensity(d, m_prior.locationMean, m_prior.locationPrecision);
    for (Eigen::Index i = 0; i < m_index.size(); ++i) sum -= m_index(i) + (*m_u)(i) * std::exp(-m_index(i));
    return sum;
  }

  InefficiencyPrior m_prior;
  Eigen::MatrixXd m_Z;
  Eigen::VectorXd m_d, m_rate, m_index;
  RandomWalkStep m_step;
  const Eigen::VectorXd* m_u = nullptr;
};

}  // namespace

SF_IE_EXP::SF_IE_EXP(const Eigen::VectorXd& gibbs, const InefficiencyPrior& prior, const Eigen::MatrixXd& Z)
    : StochasticFrontier(gibbs, std::make_unique<ExponentialDeterminants>(prior, Z)) {}
