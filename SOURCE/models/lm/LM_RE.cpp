// LM_RE: the sampler of the linear model with individual effects and its marginal likelihoods.
#include "LM_RE.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>

#include "Gamma.h"
#include "MarginalLikelihood.h"

namespace {

constexpr double kLog2Pi = 1.8378770664093454836;

// One chain over (b, a), tau and omega; with omega fixed it is the reduced run of Chib's method
// and records the log ordinate of p(tau* | b, a, omega*, y) instead of the parameters.
class RandomEffectsChain : public GibbsChain {
public:
  RandomEffectsChain(const LM_RE& model, Eigen::Index k, Eigen::Index groups, double tau,
                     double omega, bool omegaFixed, double tauStar)
      : m_model(model), m_tau(tau), m_omega(omega), m_omegaFixed(omegaFixed), m_tauStar(tauStar),
        m_coefficients(k), m_effects(groups) {
    m_scratch.z.resize(k);
  }

  void Sweep(RandomEngine& rng) override {
    m_model.DrawCoefficientsAndEffects(m_tau, m_omega, rng, m_scratch, m_coefficients, m_effects);
    m_sumOfSquares = m_model.SumOfSquares(m_coefficients, m_effects, m_scratch.groupResidual);
    const auto [shape, rate] = m_model.TauConditional(m_sumOfSquares);
    m_tau = dist::GammaDraw(rng, shape, rate);
    if (!m_omegaFixed) {
      m_sumOfSquaredEffects = m_effects.squaredNorm();
      const auto [shapeRe, rateRe] = m_model.OmegaConditional(m_sumOfSquaredEffects);
      m_omega = dist::GammaDraw(rng, shapeRe, rateRe);
    }
  }

  // b, tau, omega and the sum of squared effects (kept for omega's ordinate, not shown); or, in
  // the reduced run, the log ordinate of tau*.
  void Record(DrawRow row) const override {
    if (m_omegaFixed) {
      const auto [shape, rate] = m_model.TauConditional(m_sumOfSquares);
      row(0) = mlik::LogGammaDensity(m_tauStar, shape, rate);
      return;
    }
    const Eigen::Index k = m_coefficients.size();
    row.head(k) = m_coefficients.transpose();
    row(k) = m_tau;
    row(k + 1) = m_omega;
    row(k + 2) = m_sumOfSquaredEffects;
  }

private:
  const LM_RE& m_model;
  double m_tau, m_omega;
  bool m_omegaFixed;
  double m_tauStar;
  double m_sumOfSquares = 0.0;
  double m_sumOfSquaredEffects = 0.0;
  Eigen::VectorXd m_coefficients, m_effects;
  LM_RE::Scratch m_scratch;
};

}  // namespace

void LM_RE::CoefficientConditional(double tau, double omega, Eigen::MatrixXd& M,
                                   Eigen::VectorXd& v) const {
  M = m_withinXX;
  v = m_withinXy;
  for (std::size_t j = 0; j < m_sizes.size(); ++j) {
    const double f = omega / (omega + tau * m_sizes[j]);
    M.noalias() += f * m_sizeSS[j];
    v.noalias() += f * m_sizeSY[j];
  }
  M *= tau;
  v *= tau;
  M += m_prior.precision;
  v += m_prior.precisionTimesMean;
}

void LM_RE::DrawCoefficientsAndEffects(double tau, double omega, RandomEngine& rng,
                                       Scratch& scratch, Eigen::VectorXd& coefficients,
                                       Eigen::VectorXd& effects) const {
  CoefficientConditional(tau, omega, scratch.M, scratch.v);
  scratch.factor.compute(scratch.M);
  DrawCanonicalNormal(scratch.factor, scratch.v, rng, scratch.z, coefficients);
  // a_i | b, tau, omega ~ N(tau (sy_i - s_i'b) / (tau T_i + omega), 1 / (tau T_i + omega)).
  scratch.groupResidual.noalias() = m_groupY - m_groupX.transpose() * coefficients;
  for (Eigen::Index g = 0; g < effects.size(); ++g) {
    const double precision = tau * m_groupSize(g) + omega;
    effects(g) = tau * scratch.groupResidual(g) / precision + rng.Normal() / std::sqrt(precision);
  }
}

double LM_RE::SumOfSquares(const Eigen::VectorXd& coefficients, const Eigen::VectorXd& effects,
                           const Eigen::VectorXd& groupResidual) const {
  const double regression = m_stats.SumOfSquares(coefficients);
  const double withEffects = regression - 2.0 * effects.dot(groupResidual) +
                             (m_groupSize.array() * effects.array().square()).sum();
  return std::max(0.0, withEffects);
}

double LM_RE::LogIntegratedLikelihood(const Eigen::VectorXd& coefficients, double tau,
                                      double omega) const {
  // Per group, V_i = tau^-1 I + omega^-1 11' has |V_i| = tau^-T_i (1 + tau T_i / omega) and
  // V_i^-1 = tau I - tau^2 / (omega + tau T_i) 11' (Sherman-Morrison), so each group needs only
  // its residuals' sum of squares and sum.
  const double squares = m_stats.SumOfSquares(coefficients);
  const Eigen::VectorXd sums = m_groupY - m_groupX.transpose() * coefficients;
  double logDet = 0.0;
  double between = 0.0;
  for (Eigen::Index g = 0; g < sums.size(); ++g) {
    const double T = m_groupSize(g);
    logDet += std::log1p(tau * T / omega);
    between += tau * tau / (omega + tau * T) * sums(g) * sums(g);
  }
  return -0.5 * m_n * kLog2Pi + 0.5 * m_n * std::log(tau) - 0.5 * logDet -
         0.5 * (tau * squares - between);
}

bool LM_RE::Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X,
                   const std::vector<int>& groups, const LinearPrior& prior, double a, double b,
                   double aRe, double bRe, bool chib, const EventDispatcher& out,
                   const std::atomic<bool>* interrupt) {
  const Eigen::Index k = X.cols();
  const Eigen::Index N = groups.empty() ? 0 : *std::max_element(groups.begin(), groups.end()) + 1;
  m_prior = prior;
  m_a = a;
  m_b = b;
  m_aRe = aRe;
  m_bRe = bRe;
  m_n = static_cast<double>(y.size());
  m_stats = RegressionStatistics(X, y);
  m_groupX = Eigen::MatrixXd::Zero(k, N);
  m_groupY = Eigen::VectorXd::Zero(N);
  m_groupSize = Eigen::VectorXd::Zero(N);
  for (Eigen::Index i = 0; i < y.size(); ++i) {
    const int g = groups[static_cast<std::size_t>(i)];
    m_groupX.col(g) += X.row(i).transpose();
    m_groupY(g) += y(i);
    m_groupSize(g) += 1.0;
  }
  std::map<double, std::size_t> sizeIndex;
  m_sizes.clear();
  m_sizeSS.clear();
  m_sizeSY.clear();
  m_withinXX = m_stats.XtX();
  m_withinXy = m_stats.Xty();
  for (Eigen::Index g = 0; g < N; ++g) {
    const double T = m_groupSize(g);
    auto [it, added] = sizeIndex.try_emplace(T, m_sizes.size());
    if (added) {
      m_sizes.push_back(T);
      m_sizeSS.push_back(Eigen::MatrixXd::Zero(k, k));
      m_sizeSY.push_back(Eigen::VectorXd::Zero(k));
    }
    const Eigen::VectorXd s = m_groupX.col(g);
    m_sizeSS[it->second].noalias() += s * s.transpose() / T;
    m_sizeSY[it->second].noalias() += s * (m_groupY(g) / T);
  }
  for (std::size_t j = 0; j < m_sizes.size(); ++j) {
    m_withinXX -= m_sizeSS[j];
    m_withinXy -= m_sizeSY[j];
  }

  // Start from the prior-weighted least-squares fit: tau from its residuals, omega from the
  // spread of the group means of the residuals beyond what tau explains. Chains are spread by a
  // factor between 1/4 and 4 (tau up, omega down) so that R-hat can reveal slow mixing.
  const Eigen::VectorXd fit =
      (m_stats.XtX() + prior.precision).llt().solve(m_stats.Xty() + prior.precisionTimesMean);
  const double squares = m_stats.SumOfSquares(fit);
  const double tau0 = (m_n + 1.0) / (squares + 1.0);
  const Eigen::ArrayXd groupMeans =
      (m_groupY - m_groupX.transpose() * fit).array() / m_groupSize.array();
  const double effectVariance =
      groupMeans.square().mean() - (1.0 / m_groupSize.array()).mean() / tau0;
  const double omega0 = 1.0 / std::max(effectVariance, 0.01 / tau0);
  const long chains = Settings().chains;
  auto spread = [chains](int c) {
    return chains > 1 ? std::pow(4.0, 2.0 * c / static_cast<double>(chains - 1) - 1.0) : 1.0;
  };
  auto make = [&](int c) -> std::unique_ptr<GibbsChain> {
    return std::make_unique<RandomEffectsChain>(*this, k, N, tau0 * spread(c), omega0 / spread(c),
                                                false, 0.0);
  };
  if (!RunChains(make, static_cast<int>(k + 3), out, interrupt)) return false;

  // Pool the draws, then drop the column of squared effects from what the model keeps.
  const Eigen::MatrixXd pooled = PoolDraws(k + 2);

  // Lewis & Raftery on (b, log tau, log omega): the kernel gains the Jacobian tau omega.
  Eigen::MatrixXd transformed = pooled.leftCols(k + 2);
  transformed.rightCols(2) = transformed.rightCols(2).array().log();
  const Eigen::VectorXd centre = transformed.colwise().mean().transpose();
  const Eigen::VectorXd bBar = centre.head(k);
  const double tauBar = std::exp(centre(k));
  const double omegaBar = std::exp(centre(k + 1));
  const double kernel = LogIntegratedLikelihood(bBar, tauBar, omegaBar) +
                        mlik::LogNormalDensity(bBar, m_prior.mean, m_prior.precision) +
                        mlik::LogGammaDensity(tauBar, m_a, m_b) + std::log(tauBar) +
                        mlik::LogGammaDensity(omegaBar, m_aRe, m_bRe) + std::log(omegaBar);
  logML = mlik::LaplaceMetropolis(kernel, transformed);
  logML_CJ = std::numeric_limits<double>::quiet_NaN();
  if (!chib) return true;
  return ChibJeliazkov(pooled.leftCols(k + 2), pooled.col(k + 2), out, interrupt);
}

bool LM_RE::ChibJeliazkov(const Eigen::MatrixXd& pooled,
                          const Eigen::VectorXd& sumsOfSquaredEffects, const EventDispatcher& out,
                          const std::atomic<bool>* interrupt) {
  // p(y) = p(y | b*, tau*, omega*) p(b*) p(tau*) p(omega*) /
  //        (p(omega* | y) p(tau* | omega*, y) p(b* | tau*, omega*, y)).
  const Eigen::Index k = m_stats.Xty().size();
  const Eigen::VectorXd bStar = pooled.leftCols(k).colwise().mean().transpose();
  const double tauStar = pooled.col(k).mean();
  const double omegaStar = pooled.col(k + 1).mean();

  // p(omega* | y): its Gamma conditional given the effects, averaged over the main draws.
  Eigen::VectorXd omegaOrdinates(pooled.rows());
  for (Eigen::Index g = 0; g < pooled.rows(); ++g) {
    const auto [shape, rate] = OmegaConditional(sumsOfSquaredEffects(g));
    omegaOrdinates(g) = mlik::LogGammaDensity(omegaStar, shape, rate);
  }

  // p(tau* | omega*, y): tau's Gamma conditional averaged over a second run with omega fixed.
  GibbsSettings reducedSettings = Settings();
  reducedSettings.seed = Settings().seed + 1;
  Estimator reduced(reducedSettings.ToVector());
  const Eigen::Index groups = m_groupSize.size();
  auto make = [&](int) -> std::unique_ptr<GibbsChain> {
    return std::make_unique<RandomEffectsChain>(*this, k, groups, tauStar, omegaStar, true,
                                                tauStar);
  };
  if (!reduced.RunChains(make, 1, out, interrupt)) return false;
  Eigen::VectorXd tauOrdinates(pooled.rows());
  for (std::size_t c = 0; c < reduced.Draws().size(); ++c) {
    const Eigen::Index rows = reduced.Draws()[c].rows();
    tauOrdinates.segment(static_cast<Eigen::Index>(c) * rows, rows) = reduced.Draws()[c].col(0);
  }

  // p(b* | tau*, omega*, y): Normal, by GLS.
  Eigen::MatrixXd M;
  Eigen::VectorXd v;
  CoefficientConditional(tauStar, omegaStar, M, v);
  const Eigen::VectorXd conditionalMean = M.llt().solve(v);

  logML_CJ = LogIntegratedLikelihood(bStar, tauStar, omegaStar) +
             mlik::LogNormalDensity(bStar, m_prior.mean, m_prior.precision) +
             mlik::LogGammaDensity(tauStar, m_a, m_b) +
             mlik::LogGammaDensity(omegaStar, m_aRe, m_bRe) - mlik::LogMeanExp(omegaOrdinates) -
             mlik::LogMeanExp(tauOrdinates) - mlik::LogNormalDensity(bStar, conditionalMean, M);
  return true;
}
