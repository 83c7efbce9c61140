// BinaryRandomEffects: the chain of the random-intercept probit and logit and their marginal
// likelihoods.
#include "BinaryRandomEffects.h"

#include <cmath>
#include <memory>

#include "BinaryAugmentation.h"
#include "Gamma.h"
#include "Logit.h"
#include "LogitRandomIntercepts.h"
#include "MarginalLikelihood.h"
#include "ObservationBlocks.h"
#include "PolyaGamma.h"

namespace {

// One chain over (b, a), omega and the augmented data: the probit's sampler, and for both links
// the reduced run of Chib's method, with omega fixed, which records the log ordinate of
// p(b* | data, omega*) instead of the parameters.
class RandomInterceptChain : public RandomEffectsChain {
public:
  RandomInterceptChain(const BinaryRandomEffects& model, Eigen::VectorXd start, double omega, bool omegaFixed,
                       const Eigen::VectorXd* bStar, int threads)
      : RandomEffectsChain(model.Groups().Count()), m_model(model), m_threads(threads), m_step(model.X(), model.Groups(), model.Prior()), m_b(std::move(start)),
        m_a(Eigen::VectorXd::Zero(model.Groups().Count())), m_omega(omega), m_omegaFixed(omegaFixed), m_bStar(bStar),
        m_rescale(model.Link() == BinaryLink::Probit && model.Prior().precisionTimesMean.cwiseAbs().maxCoeff() == 0.0),
        m_index(model.Y().size()), m_latent(model.Y().size()), m_kappa(model.Y().array() - 0.5) {}

  void Sweep(RandomEngine& rng) override {
    const Eigen::VectorXd& y = m_model.Y();
    const Eigen::MatrixXd& X = m_model.X();
    // The blocks' engines are seeded from the chain's own at its first sweep.
    if (!m_blocks) m_blocks = std::make_unique<ObservationBlocks>(y.size(), rng, m_threads);
    const bool probit = m_model.Link() == BinaryLink::Probit;
    // Block by block: the index x'b + a (after a rescaling, the last fit times its factor), then
    // the utilities or the Polya-Gamma weights given it.
    m_blocks->Run([&](Eigen::Index, Eigen::Index first, Eigen::Index end, RandomEngine& blockRng) {
      const Eigen::Index n = end - first;
      if (m_fitScale > 0.0) {
        m_index.segment(first, n) *= m_fitScale;
      } else {
        m_index.segment(first, n).noalias() = X.middleRows(first, n) * m_b;
        m_model.Groups().AddEffects(m_a, first, end, m_index);
      }
      if (probit) {
        DrawBinaryUtilities(y, m_index, first, end, blockRng, m_latent);
      } else {
        for (Eigen::Index i = first; i < end; ++i) m_latent(i) = dist::PolyaGammaDraw(blockRng, m_index(i));
      }
    });
    m_fitScale = 0.0;
    if (probit) {
      m_step.Draw(m_latent, m_omega, rng, m_b, m_a);
      if (m_rescale) Rescale(rng);
    } else {
      m_step.DrawWeighted(m_kappa, m_latent, m_omega, rng, m_b, m_a);
    }
    if (!m_omegaFixed) {
      const auto [shape, rate] = m_model.OmegaConditional(m_a.squaredNorm());
      m_omega = dist::GammaDraw(rng, shape, rate);
    }
  }

  // In the reduced run, the log ordinate of b*.
  void Record(DrawRow row) const override {
    if (m_omegaFixed) {
      row(0) = m_step.LogOrdinate(*m_bStar);
    } else {
      RecordState(row, m_b, m_omega, m_a);
    }
  }

private:
  // (z, b, a) -> g (z, b, a) along the scale group, the prior quadratic forms b'Pb and omega a'a
  // taking part; the fit X b + a is kept for the next sweep, which scales it by g.
  void Rescale(RandomEngine& rng) {
    m_index.noalias() = m_model.X() * m_b;
    m_model.Groups().AddEffects(m_a, 0, m_index.size(), m_index);
    const double quadratic = (m_latent - m_index).squaredNorm() + m_b.dot(m_model.Prior().precision * m_b) +
                             m_omega * m_a.squaredNorm();
    m_fitScale = ScaleGroupFactor(rng, quadratic, m_latent.size() + m_b.size() + m_a.size());
    m_b *= m_fitScale;
    m_a *= m_fitScale;
  }

  const BinaryRandomEffects& m_model;
  int m_threads;
  std::unique_ptr<ObservationBlocks> m_blocks;
  RandomInterceptStep m_step;
  Eigen::VectorXd m_b, m_a;
  double m_omega;
  bool m_omegaFixed;
  const Eigen::VectorXd* m_bStar;
  bool m_rescale;
  Eigen::VectorXd m_index, m_latent, m_kappa;
  double m_fitScale = 0.0;  // > 0: m_index holds the last fit X b + a, to be scaled by it
};

}  // namespace

double BinaryRandomEffects::LogKernel(const Eigen::VectorXd& b, double omega) const {
  return IntegratedBinaryLogLikelihood(*m_y, *m_X * b, m_groups, omega, m_link) +
         mlik::LogNormalDensity(b, m_prior.mean, m_prior.precision) + mlik::LogGammaDensity(omega, m_aRe, m_bRe);
}

bool BinaryRandomEffects::Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const std::vector<int>& groups,
                                 const LinearPrior& prior, double aRe, double bRe, bool chib, const EventDispatcher& out,
                                 const std::atomic<bool>* interrupt) {
  m_y = &y;
  m_X = &X;
  m_groups = PanelGroups::FromCodes(groups);
  m_prior = prior;
  m_aRe = aRe;
  m_bRe = bRe;
  const Eigen::Index k = X.cols();
  // Chains start at the prior mean shifted by -0.5 ... +0.5 and at effect variances between 1/4
  // and 4, so that R-hat can reveal slow mixing.
  const long chains = Settings().chains;
  auto position = [chains](int c) { return chains > 1 ? 2.0 * c / static_cast<double>(chains - 1) - 1.0 : 0.0; };
  const bool logit = m_link == BinaryLink::Logit;
  if (logit) {
    const auto order = Eigen::Map<const Eigen::Matrix<Eigen::Index, Eigen::Dynamic, 1>>(
        m_groups.members.data(), static_cast<Eigen::Index>(m_groups.members.size()));
    m_sortedY = y(order);
    m_sortedX = X(order, Eigen::all);
  }
  // The logit's chains start at draws from the pooled model's t proposal where it has a mode: its
  // Newton proposal moves the coefficients little while far from the posterior.
  std::vector<Eigen::VectorXd> starts;
  for (int c = 0; c < chains; ++c) starts.emplace_back(m_prior.mean.array() + 0.5 * position(c));
  IndependenceProposal pooledProposal;
  if (logit && FitLogitProposal(y, X, m_prior, pooledProposal)) {
    RandomEngine engine;
    engine.Seed(Settings().seed + 7);
    Eigen::VectorXd z(k);
    for (auto& start : starts) pooledProposal.Draw(engine, z, start);
  }
  auto make = [&](int c) -> std::unique_ptr<GibbsChain> {
    Eigen::VectorXd start = starts[static_cast<std::size_t>(c)];
    const double omega = std::pow(4.0, position(c));
    const int threads = ObservationBlocks::ThreadsPerChain(chains);
    if (logit) return MakeLogitRandomInterceptChain(*this, std::move(start), omega, threads);
    return std::make_unique<RandomInterceptChain>(*this, std::move(start), omega, false, nullptr, threads);
  };
  if (!RunChains(make, static_cast<int>(k + 2), out, interrupt)) return false;

  effects = Eigen::VectorXd::Zero(m_groups.Count());
  coefficientAcceptance = effectAcceptance = logit ? 0.0 : std::numeric_limits<double>::quiet_NaN();
  for (const auto& chain : Chains()) {
    const auto& randomEffectsChain = static_cast<const RandomEffectsChain&>(*chain);
    effects += randomEffectsChain.EffectMeans();
    if (logit) {
      const auto [coefficients, effect] = LogitRandomInterceptAcceptance(randomEffectsChain);
      coefficientAcceptance += coefficients / static_cast<double>(Chains().size());
      effectAcceptance += effect / static_cast<double>(Chains().size());
    }
  }
  effects /= static_cast<double>(Chains().size());

  // The sums of squared effects are kept for Chib's method only.
  const Eigen::MatrixXd pooled = PoolDraws(k + 1);
  // Lewis & Raftery on (b, log omega): the kernel gains the Jacobian omega.
  Eigen::MatrixXd transformed = pooled.leftCols(k + 1);
  transformed.col(k) = -transformed.col(k).array().log();
  const Eigen::VectorXd centre = transformed.colwise().mean().transpose();
  const double omegaBar = std::exp(centre(k));
  logML = mlik::LaplaceMetropolis(LogKernel(centre.head(k), omegaBar) + std::log(omegaBar), transformed);
  logML_CJ = std::numeric_limits<double>::quiet_NaN();
  if (!chib) return true;
  return Chib(pooled, out, interrupt);
}

bool BinaryRandomEffects::Chib(const Eigen::MatrixXd& pooled, const EventDispatcher& out,
                               const std::atomic<bool>* interrupt) {
  // p(y) = p(y | b*, omega*) p(b*) p(omega*) / (p(omega* | y) p(b* | omega*, y)).
  const Eigen::Index k = m_X->cols();
  const Eigen::VectorXd bStar = pooled.leftCols(k).colwise().mean().transpose();
  const double omegaStar = pooled.col(k).array().inverse().mean();
  // p(omega* | y): omega's Gamma conditional given the effects, averaged over the main draws.
  Eigen::VectorXd omegaOrdinates(pooled.rows());
  for (Eigen::Index d = 0; d < pooled.rows(); ++d) {
    const auto [shape, rate] = OmegaConditional(pooled(d, k + 1));
    omegaOrdinates(d) = mlik::LogGammaDensity(omegaStar, shape, rate);
  }
  // p(b* | omega*, y): b's Normal conditional given the augmented data, averaged over a second run
  // with omega fixed.
  GibbsSettings reducedSettings = Settings();
  reducedSettings.seed = Settings().seed + 1;
  Estimator reduced(reducedSettings.ToVector());
  auto make = [&](int) -> std::unique_ptr<GibbsChain> {
    return std::make_unique<RandomInterceptChain>(*this, bStar, omegaStar, true, &bStar,
                                                  ObservationBlocks::ThreadsPerChain(Settings().chains));
  };
  if (!reduced.RunChains(make, 1, out, interrupt)) return false;
  Eigen::VectorXd bOrdinates(pooled.rows());
  Eigen::Index at = 0;
  for (const Eigen::MatrixXd& draws : reduced.Draws()) {
    bOrdinates.segment(at, draws.rows()) = draws.col(0);
    at += draws.rows();
  }
  logML_CJ = LogKernel(bStar, omegaStar) - mlik::LogMeanExp(omegaOrdinates) - mlik::LogMeanExp(bOrdinates);
  return true;
}
