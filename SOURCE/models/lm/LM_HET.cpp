// LM_HET: the sampler of the heteroskedastic linear model and its marginal likelihoods.
#include "LM_HET.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "MarginalLikelihood.h"

namespace {

constexpr double kLog2Pi = 1.8378770664093454836;
constexpr double kTargetAcceptance = 0.3;
// Mean and variance of log(chi-square with 1 degree of freedom), for the starting values.
constexpr double kLogChiSquareMean = -1.2703628454614782;
constexpr double kLogChiSquareVariance = 4.934802200544679;

double LogDeterminant(const Eigen::LLT<Eigen::MatrixXd>& factor) {
  return 2.0 * factor.matrixLLT().diagonal().array().log().sum();
}

// The acceptance probability's log from the log target at the current and proposed points
// (a proposal that cannot be evaluated is never accepted).
double LogAcceptance(double current, double proposed) {
  const double difference = proposed - current;
  if (std::isnan(difference)) return -std::numeric_limits<double>::infinity();
  return std::min(0.0, difference);
}

// One chain: a random-walk step on d | y, then b | d, y.
class HetChain : public GibbsChain {
public:
  HetChain(const LM_HET& model, Eigen::VectorXd startD, const Eigen::MatrixXd& proposalFactor,
           double startScale, bool tune, Eigen::Index k)
      : m_model(model), m_factor(proposalFactor), m_d(std::move(startD)),
        m_logScale(std::log(startScale)), m_tuning(tune), m_b(k), m_zb(k), m_step(m_d.size()),
        m_proposed(m_d.size()) {
    m_logKernel = m_model.LogKernelOfD(m_d, m_current);
  }

  void Sweep(RandomEngine& rng) override {
    for (Eigen::Index j = 0; j < m_step.size(); ++j) m_step(j) = rng.Normal();
    m_proposed.noalias() = m_d + std::exp(m_logScale) * (m_factor * m_step);
    const double logKernel = m_model.LogKernelOfD(m_proposed, m_trial);
    const double logAccept = LogAcceptance(m_logKernel, logKernel);
    if (std::log(rng.Uniform()) < logAccept) {
      std::swap(m_current, m_trial);
      m_d.swap(m_proposed);
      m_logKernel = logKernel;
    }
    if (m_tuning) {
      // Robbins-Monro on the log scale with a decreasing gain.
      ++m_tuned;
      const double gain = std::min(0.5, 5.0 / std::pow(static_cast<double>(m_tuned) + 10.0, 0.6));
      m_logScale += gain * (std::exp(logAccept) - kTargetAcceptance);
      m_logScale = std::clamp(m_logScale, -12.0, 4.0);
    }
    DrawCanonicalNormal(m_current.llt, m_current.c, rng, m_zb, m_b);
  }

  // b, d, then the log kernel of d (kept for Chib & Jeliazkov's ordinate, not shown).
  void Record(DrawRow row) const override {
    const Eigen::Index k = m_b.size();
    const Eigen::Index p = m_d.size();
    row.head(k) = m_b.transpose();
    row.segment(k, p) = m_d.transpose();
    row(k + p) = m_logKernel;
  }

  void EndBurnin() override { m_tuning = false; }

  double LogScale() const { return m_logScale; }

private:
  const LM_HET& m_model;
  const Eigen::MatrixXd& m_factor;
  Eigen::VectorXd m_d;
  double m_logScale;
  bool m_tuning;
  long m_tuned = 0;
  double m_logKernel = 0.0;
  Eigen::VectorXd m_b, m_zb, m_step, m_proposed;
  LM_HET::Conditional m_current, m_trial;
};

// The reduced run of Chib & Jeliazkov: draws from the proposal centred at d*, recording the log
// probability of moving there from d*.
class HetProposalChain : public GibbsChain {
public:
  HetProposalChain(const LM_HET& model, const Eigen::VectorXd& dStar,
                   const Eigen::MatrixXd& proposalFactor, double scale, double logKernelAtStar)
      : m_model(model), m_dStar(dStar), m_factor(proposalFactor), m_scale(scale),
        m_logKernelAtStar(logKernelAtStar), m_step(dStar.size()), m_d(dStar.size()) {}

  void Sweep(RandomEngine& rng) override {
    for (Eigen::Index j = 0; j < m_step.size(); ++j) m_step(j) = rng.Normal();
    m_d.noalias() = m_dStar + m_scale * (m_factor * m_step);
    m_logAccept = LogAcceptance(m_logKernelAtStar, m_model.LogKernelOfD(m_d, m_scratch));
  }

  void Record(DrawRow row) const override { row(0) = m_logAccept; }

private:
  const LM_HET& m_model;
  const Eigen::VectorXd& m_dStar;
  const Eigen::MatrixXd& m_factor;
  double m_scale, m_logKernelAtStar;
  double m_logAccept = 0.0;
  Eigen::VectorXd m_step, m_d;
  LM_HET::Conditional m_scratch;
};

}  // namespace

double LM_HET::LogLikelihood(const Eigen::VectorXd& b, const Eigen::VectorXd& d) const {
  const Eigen::ArrayXd logTau = (m_Z * d).array();
  const Eigen::ArrayXd residual = (m_y - m_X * b).array();
  return -0.5 * static_cast<double>(m_y.size()) * kLog2Pi + 0.5 * logTau.sum() -
         0.5 * (logTau.exp() * residual.square()).sum();
}

double LM_HET::LogKernelOfD(const Eigen::VectorXd& d, Conditional& out) const {
  constexpr double kMinusInfinity = -std::numeric_limits<double>::infinity();
  out.w.noalias() = m_Z * d;
  out.w = out.w.array().exp();
  out.Xw = m_X.array().colwise() * out.w.array();
  out.A.noalias() = m_X.transpose() * out.Xw;
  out.A += m_Qbb;
  out.c.noalias() = out.Xw.transpose() * m_y;
  out.c += m_hb;
  out.c.noalias() -= m_Qbd * d;
  out.llt.compute(out.A);
  if (out.llt.info() != Eigen::Success) return kMinusInfinity;

  // y | d ~ N(X E[b | d], W^-1 + X Q_bb^-1 X'), written with the canonical forms of the prior
  // of b given d (Q_bb, h) and of its posterior (A, c):
  // log p(y | d) = -n/2 log 2pi + 1/2 log|W| + 1/2 log|Q_bb| - 1/2 log|A| - 1/2 S, where
  // S = y'Wy + h'Q_bb^-1 h - c'A^-1 c is the minimum over b of
  // (y - Xb)'W(y - Xb) + (b - Q_bb^-1 h)'Q_bb(b - Q_bb^-1 h), reached at b = A^-1 c. S is
  // computed from the residuals at that b: the three-term form cancels when y's level is large.
  out.priorMean = m_QbbFactor.solve(m_hb - m_Qbd * d);
  out.mean = out.llt.solve(out.c);
  out.residual.noalias() = m_y - m_X * out.mean;
  out.priorMean -= out.mean;  // now the shift of the mean from the prior's
  const double S = (out.w.array() * out.residual.array().square()).sum() +
                   out.priorMean.dot(m_Qbb * out.priorMean);
  const double n = static_cast<double>(m_y.size());
  const double logLikelihood = -0.5 * n * kLog2Pi + 0.5 * m_zSum.dot(d) + 0.5 * m_QbbLogDet -
                               0.5 * LogDeterminant(out.llt) - 0.5 * S;
  const Eigen::VectorXd dev = d - m_dMean;
  const double logPrior = -0.5 * static_cast<double>(d.size()) * kLog2Pi +
                          0.5 * m_dPrecisionLogDet - 0.5 * dev.dot(m_dPrecision * dev);
  const double result = logLikelihood + logPrior;
  return std::isfinite(result) ? result : kMinusInfinity;
}

bool LM_HET::Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const Eigen::MatrixXd& Z,
                    const LinearPrior& prior, const EventDispatcher& out,
                    const std::atomic<bool>* interrupt) {
  const Eigen::Index k = X.cols();
  const Eigen::Index p = Z.cols();
  m_y = y;
  m_X = X;
  m_Z = Z;
  m_zSum = Z.colwise().sum().transpose();
  m_prior = prior;
  m_Qbb = prior.precision.topLeftCorner(k, k);
  m_Qbd = prior.precision.topRightCorner(k, p);
  m_hb = prior.precisionTimesMean.head(k);
  m_QbbFactor.compute(m_Qbb);
  m_QbbLogDet = LogDeterminant(m_QbbFactor);
  m_dMean = prior.mean.tail(p);
  m_dPrecision =
      prior.precision.bottomRightCorner(p, p) - m_Qbd.transpose() * m_QbbFactor.solve(m_Qbd);
  m_dPrecision = 0.5 * (m_dPrecision + m_dPrecision.transpose()).eval();
  m_dPrecisionLogDet = LogDeterminant(Eigen::LLT<Eigen::MatrixXd>(m_dPrecision));

  // Start from a regression of log(1 / squared residual) on Z at the prior-weighted least-squares
  // fit (log chi-square noise), shrunk toward the prior of d.
  const Eigen::VectorXd fit = (X.transpose() * X + m_Qbb).llt().solve(X.transpose() * y + m_hb);
  const Eigen::ArrayXd squared = (y - X * fit).array().square();
  const double floor = 1e-8 * squared.mean() + 1e-300;
  const Eigen::VectorXd logTau = -(squared + floor).log() - kLogChiSquareMean;
  const Eigen::VectorXd dStart =
      (Z.transpose() * Z / kLogChiSquareVariance + m_dPrecision)
          .llt()
          .solve(Z.transpose() * logTau / kLogChiSquareVariance + m_dPrecision * m_dMean);

  // Proposal: the inverse of d's expected information, 1/2 Z'Z plus prior precision, after b is
  // integrated out at the starting precisions (this matters only when constraints tie b to d).
  const Eigen::VectorXd w0 = (Z * dStart).array().exp();
  const Eigen::MatrixXd infoB = X.transpose() * (X.array().colwise() * w0.array()).matrix() + m_Qbb;
  Eigen::MatrixXd infoD = 0.5 * Z.transpose() * Z + prior.precision.bottomRightCorner(p, p) -
                          m_Qbd.transpose() * infoB.llt().solve(m_Qbd);
  infoD = 0.5 * (infoD + infoD.transpose()).eval();
  const Eigen::MatrixXd proposalCovariance = infoD.llt().solve(Eigen::MatrixXd::Identity(p, p));
  m_proposalFactor = proposalCovariance.llt().matrixL();

  // Chains start spread over +-2 proposal standard deviations so that R-hat can reveal slow mixing.
  const long chains = Settings().chains;
  const bool tune = Settings().burnin > 0;
  const Eigen::VectorXd sd = proposalCovariance.diagonal().array().sqrt();
  auto make = [&](int c) -> std::unique_ptr<GibbsChain> {
    const double offset =
        chains > 1 ? 2.0 * (2.0 * c / static_cast<double>(chains - 1) - 1.0) : 0.0;
    return std::make_unique<HetChain>(*this, dStart + offset * sd, m_proposalFactor,
                                      2.38 / std::sqrt(static_cast<double>(p)), tune, k);
  };
  if (!RunChains(make, static_cast<int>(k + p + 1), out, interrupt)) return false;

  double logScales = 0.0;
  for (const auto& chain : Chains()) logScales += static_cast<const HetChain&>(*chain).LogScale();
  m_scale = std::exp(logScales / static_cast<double>(chains));

  // Pool the draws, then drop the log-kernel column from what the model keeps.
  const Eigen::MatrixXd pooled = PoolDraws(k + p);
  return MarginalLikelihoods(pooled.leftCols(k + p), pooled.col(k + p), out, interrupt);
}

bool LM_HET::MarginalLikelihoods(const Eigen::MatrixXd& pooled, const Eigen::VectorXd& logKernels,
                                 const EventDispatcher& out, const std::atomic<bool>* interrupt) {
  const Eigen::Index k = m_X.cols();
  const Eigen::Index p = m_Z.cols();
  const Eigen::VectorXd centre = pooled.colwise().mean().transpose();
  const Eigen::VectorXd bStar = centre.head(k);
  const Eigen::VectorXd dStar = centre.tail(p);
  const double logPrior = mlik::LogNormalDensity(centre, m_prior.mean, m_prior.precision);
  logML = mlik::LaplaceMetropolis(LogLikelihood(bStar, dStar) + logPrior, pooled);

  // Chib & Jeliazkov: p(d* | y) = E_post[alpha(d, d*) q(d, d*)] / E_q(d*, .)[alpha(d*, d)], for
  // any proposal q, here the random walk at the chains' average scale. The step targets d with b
  // integrated out, so alpha involves no b and the reduced run needs only proposal draws.
  Conditional atStar;
  const double logKernelAtStar = LogKernelOfD(dStar, atStar);
  if (!std::isfinite(logKernelAtStar)) {
    logML_CJ = std::numeric_limits<double>::quiet_NaN();
    return true;
  }
  const double logProposalConstant = -0.5 * static_cast<double>(p) * kLog2Pi -
                                     static_cast<double>(p) * std::log(m_scale) -
                                     m_proposalFactor.diagonal().array().log().sum();
  const auto factor = m_proposalFactor.triangularView<Eigen::Lower>();
  Eigen::VectorXd toStar(pooled.rows());
  for (Eigen::Index g = 0; g < pooled.rows(); ++g) {
    const Eigen::VectorXd u = factor.solve((dStar - pooled.row(g).tail(p).transpose()) / m_scale);
    toStar(g) =
        LogAcceptance(logKernels(g), logKernelAtStar) + logProposalConstant - 0.5 * u.squaredNorm();
  }

  GibbsSettings reducedSettings = Settings();
  reducedSettings.draws = Settings().KeptDraws();
  reducedSettings.burnin = 0;
  reducedSettings.thin = 1;
  reducedSettings.seed = Settings().seed + 1;
  Estimator reduced(reducedSettings.ToVector());
  auto make = [&](int) -> std::unique_ptr<GibbsChain> {
    return std::make_unique<HetProposalChain>(*this, dStar, m_proposalFactor, m_scale,
                                              logKernelAtStar);
  };
  if (!reduced.RunChains(make, 1, out, interrupt)) return false;
  Eigen::VectorXd fromStar(pooled.rows());
  for (std::size_t c = 0; c < reduced.Draws().size(); ++c) {
    const Eigen::Index rows = reduced.Draws()[c].rows();
    fromStar.segment(static_cast<Eigen::Index>(c) * rows, rows) = reduced.Draws()[c].col(0);
  }
  const double logPosteriorD = mlik::LogMeanExp(toStar) - mlik::LogMeanExp(fromStar);

  // p(b* | d*, y) is Normal with precision A and mean A^-1 c.
  const Eigen::VectorXd conditionalMean = atStar.llt.solve(atStar.c);
  logML_CJ = LogLikelihood(bStar, dStar) + logPrior - logPosteriorD -
             mlik::LogNormalDensity(bStar, conditionalMean, atStar.A);
  return true;
}
