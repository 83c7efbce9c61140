// SF_GAMMA: the gamma inefficiency's conditional draws.
#include "SF_GAMMA.h"

#include <cmath>
#include <limits>

#include "CompositeError.h"
#include "Gamma.h"
#include "MarginalLikelihood.h"
#include "RandomWalkStep.h"
#include "TruncatedNormal.h"

namespace {

class GammaInefficiency : public Inefficiency {
public:
  explicit GammaInefficiency(const InefficiencyPrior& prior)
      : m_prior(prior), m_shapeStep(Eigen::MatrixXd::Identity(1, 1), 0.1, 0.44), m_logShape(1) {}
  std::unique_ptr<Inefficiency> Clone() const override { return std::make_unique<GammaInefficiency>(*this); }
  std::vector<std::string> Labels() const override { return {"shape", "lambda"}; }
  std::vector<bool> Positive() const override { return {true, true}; }
  void Start(double meanU) override {
    m_logShape(0) = 0.0;
    m_lambda = 1.0 / meanU;
  }

  void DrawInefficiency(const Eigen::VectorXd& w, double tau, Eigen::Index first, Eigen::Index end, RandomEngine& rng,
                        Eigen::VectorXd& u) override {
    // Proposal N(w - lambda / tau, 1 / tau) truncated to u > 0 (the target without u^(shape - 1)),
    // accepted with probability min(1, (u' / u)^(shape - 1)).
    const double sd = 1.0 / std::sqrt(tau), shift = m_lambda / tau, power = std::exp(m_logShape(0)) - 1.0;
    for (Eigen::Index i = first; i < end; ++i) {
      const double mean = w(i) - shift;
      const double proposal = mean + sd * dist::StandardNormalTailDraw(rng, -mean / sd);
      if (proposal > 0.0 && std::log(rng.Uniform()) < power * (std::log(proposal) - std::log(u(i)))) u(i) = proposal;
    }
  }
  void DrawParameters(const Eigen::VectorXd& u, const Eigen::VectorXd&, double, RandomEngine& rng) override {
    // shape | u with lambda integrated out (a random walk on its log; shape and lambda are
    // strongly correlated given u), then lambda | shape, u ~ Gamma(a + n shape, b + sum u).
    m_sumLogU = u.array().log().sum();
    m_sumU = u.sum();
    m_n = static_cast<double>(u.size());
    double logTarget = ShapeTarget(m_logShape);
    m_shapeStep.Step(m_logShape, logTarget, [this](const Eigen::VectorXd& l) { return ShapeTarget(l); }, rng);
    m_lambda = dist::GammaDraw(rng, m_prior.scaleShape + m_n * std::exp(m_logShape(0)), m_prior.scaleRate + m_sumU);
  }
  double LogDensitySum(const Eigen::VectorXd& u, double shift) const override {
    if (u.minCoeff() + shift <= 0.0) return -std::numeric_limits<double>::infinity();
    const Eigen::ArrayXd shifted = u.array() + shift;
    return (std::exp(m_logShape(0)) - 1.0) * shifted.log().sum() - m_lambda * shifted.sum();
  }
  void Record(Eigen::Ref<Eigen::RowVectorXd> out) const override {
    out(0) = std::exp(m_logShape(0));
    out(1) = m_lambda;
  }
  void EndBurnin() override { m_shapeStep.EndBurnin(); }
  double Acceptance() const override { return m_shapeStep.AcceptanceRate(); }

  double LogPrior(const Eigen::VectorXd& theta) const override {
    return mlik::LogGammaDensity(theta(0), m_prior.shapeShape, m_prior.shapeRate) +
           mlik::LogGammaDensity(theta(1), m_prior.scaleShape, m_prior.scaleRate);
  }
  double LogConvolvedDensity(const Eigen::VectorXd& w, double tau, const Eigen::VectorXd& theta) const override {
    return SumLogCompositeDensity(InefficiencyDistribution::Gamma, w, tau, theta(0), theta(1));
  }

private:
  // log p(log shape | u), lambda integrated out, the Jacobian included:
  // p(shape) Gamma(a + n shape) / (b + sum u)^(a + n shape) prod u^(shape - 1) / Gamma(shape)^n.
  double ShapeTarget(const Eigen::VectorXd& logShape) const {
    const double shape = std::exp(logShape(0)), a = m_prior.scaleShape + m_n * shape;
    return m_prior.shapeShape * logShape(0) - m_prior.shapeRate * shape + std::lgamma(a) -
           a * std::log(m_prior.scaleRate + m_sumU) - m_n * std::lgamma(shape) + (shape - 1.0) * m_sumLogU;
  }

  InefficiencyPrior m_prior;
  RandomWalkStep m_shapeStep;
  Eigen::VectorXd m_logShape;
  double m_lambda = 1.0;
  double m_sumLogU = 0.0, m_sumU = 0.0, m_n = 0.0;
};

}  // namespace

SF_GAMMA::SF_GAMMA(const Eigen::VectorXd& gibbs, const InefficiencyPrior& prior)
    : StochasticFrontier(gibbs, std::make_unique<GammaInefficiency>(prior)) {}
