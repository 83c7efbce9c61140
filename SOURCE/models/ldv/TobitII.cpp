// TobitII: the sampler of the sample-selection model and its marginal likelihood.
#include "TobitII.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "BinaryAugmentation.h"
#include "Gamma.h"
#include "MarginalLikelihood.h"
#include "ObservationBlocks.h"
#include "TruncatedNormal.h"

namespace {

constexpr double kLog2Pi = 1.8378770664093454836;

// What a run of Chib's method holds fixed, and the point whose ordinate it records.
struct ReducedRun {
  bool fixPrecision = false;   // 1/xi^2 at its value from the start
  bool fixSelection = false;   // g at its value from the start
  Eigen::VectorXd ordinateAt;  // g* (first run) or (b*, w*) (second run)
};

// One chain over (b, w), g, 1/xi^2 and the selection utilities; in Chib's reduced runs, some of
// them fixed.
class SelectionChain : public GibbsChain {
public:
  SelectionChain(const TobitII::Data& data, const TobitII::Priors& priors, Eigen::VectorXd bw, Eigen::VectorXd g,
                 double xiPrecision, int threads, const ReducedRun* reduced = nullptr)
      : m_data(data), m_priors(priors), m_reduced(reduced), m_threads(threads), m_k(data.Xs.cols()), m_bw(std::move(bw)),
        m_g(std::move(g)), m_xiPrecision(xiPrecision) {
    const Eigen::Index ns = data.y.size(), nn = data.Zn.rows();
    m_utility.resize(ns);
    m_otherUtility.resize(nn);
    m_selectionIndex.resize(ns);
    m_otherIndex.resize(nn);
    m_outcomeIndex.resize(ns);
    m_u.resize(ns);
    m_residual.resize(ns);
    m_WtW.resize(m_k + 1, m_k + 1);
    m_Wty.resize(m_k + 1);
    m_z1.resize(m_k + 1);
    m_z2.resize(m_g.size());
  }

  void Sweep(RandomEngine& rng) override {
    const Eigen::Index ns = m_utility.size();
    if (!m_blocks) {
      // The blocks' engines are seeded from the chain's at its first sweep; the indices are kept
      // from one sweep to the next as the draws change them.
      m_blocks = std::make_unique<ObservationBlocks>(ns + m_otherUtility.size(), rng, m_threads);
      m_selectionIndex.noalias() = m_data.Zs * m_g;
      m_outcomeIndex.noalias() = m_data.Xs * m_bw.head(m_k);
    }
    const double w = m_bw(m_k), xi2 = 1.0 / m_xiPrecision;
    // The selection utilities: above zero where y is observed, given y; below zero elsewhere.
    m_otherIndex.noalias() = m_data.Zn * m_g;
    const double total = w * w + xi2;
    const double sd = std::sqrt(xi2 / total);
    m_blocks->Run([&](Eigen::Index, Eigen::Index first, Eigen::Index end, RandomEngine& blockRng) {
      for (Eigen::Index i = first; i < std::min(end, ns); ++i) {
        const double mean = m_selectionIndex(i) + w * (m_data.y(i) - m_outcomeIndex(i)) / total;
        m_utility(i) = mean + sd * dist::StandardNormalTailDraw(blockRng, -mean / sd);
      }
      for (Eigen::Index i = std::max(first, ns); i < end; ++i) {
        m_otherUtility(i - ns) = m_otherIndex(i - ns) - dist::StandardNormalTailDraw(blockRng, m_otherIndex(i - ns));
      }
    });
    // (b, w): the regression of y on [x, u] with u = s - z'g and error precision 1/xi^2.
    m_u = m_utility - m_selectionIndex;
    m_WtW.topLeftCorner(m_k, m_k) = m_data.XstXs;
    m_WtW.col(m_k).head(m_k).noalias() = m_data.Xs.transpose() * m_u;
    m_WtW.row(m_k).head(m_k) = m_WtW.col(m_k).head(m_k).transpose();
    m_WtW(m_k, m_k) = m_u.squaredNorm();
    m_Wty.head(m_k) = m_data.Xsty;
    m_Wty(m_k) = m_u.dot(m_data.y);
    // The prior of (b, w) given g: precision P11, canonical mean (P m)_1 - P12 g.
    const LinearPrior& prior = m_priors.coefficients;
    const Eigen::Index kw = m_k + 1, ks = m_g.size();
    m_precision1 = m_xiPrecision * m_WtW + prior.precision.topLeftCorner(kw, kw);
    m_llt.compute(m_precision1);
    m_c1 = m_xiPrecision * m_Wty + prior.precisionTimesMean.head(kw);
    m_c1.noalias() -= prior.precision.topRightCorner(kw, ks) * m_g;
    if (m_reduced && m_reduced->fixSelection) {
      m_ordinate = mlik::LogNormalDensity(m_reduced->ordinateAt, m_llt.solve(m_c1), m_precision1);
    }
    DrawCanonicalNormal(m_llt, m_c1, rng, m_z1, m_bw);
    // g: every utility is z'g + u with u ~ N(0, 1), and where y is observed
    // y - x'b - w s = -w z'g + v, v ~ N(0, xi^2).
    const double wNew = m_bw(m_k);
    m_outcomeIndex.noalias() = m_data.Xs * m_bw.head(m_k);
    m_residual = m_data.y - m_outcomeIndex - wNew * m_utility;
    if (!m_reduced || !m_reduced->fixSelection) {
      m_precision2 = m_data.ZtZ + (wNew * wNew * m_xiPrecision) * m_data.ZstZs + prior.precision.bottomRightCorner(ks, ks);
      m_gllt.compute(m_precision2);
      m_c.noalias() = m_data.Zs.transpose() * m_utility;
      m_c.noalias() += m_data.Zn.transpose() * m_otherUtility;
      m_c.noalias() -= (wNew * m_xiPrecision) * (m_data.Zs.transpose() * m_residual);
      m_c += prior.precisionTimesMean.tail(ks);
      m_c.noalias() -= prior.precision.bottomLeftCorner(ks, kw) * m_bw;
      if (m_reduced) m_ordinate = mlik::LogNormalDensity(m_reduced->ordinateAt, m_gllt.solve(m_c), m_precision2);
      DrawCanonicalNormal(m_gllt, m_c, rng, m_z2, m_g);
      m_selectionIndex.noalias() = m_data.Zs * m_g;
    }
    // 1/xi^2 given the outcome errors' parts v = y - x'b - w (s - z'g).
    m_residual += wNew * m_selectionIndex;
    m_squares = m_residual.squaredNorm();
    if (!m_reduced || !m_reduced->fixPrecision) {
      m_xiPrecision = dist::GammaDraw(rng, m_priors.a + 0.5 * static_cast<double>(m_data.y.size()), m_priors.b + 0.5 * m_squares);
    }
  }

  // b, g, sigma and rho; then w, 1/xi^2 and the squares its draw was given (for the marginal
  // likelihoods; dropped from what the model keeps). In a reduced run, the log ordinate.
  void Record(DrawRow row) const override {
    if (m_reduced) {
      row(0) = m_ordinate;
      return;
    }
    const Eigen::Index ks = m_g.size();
    const double w = m_bw(m_k), sigma = std::sqrt(w * w + 1.0 / m_xiPrecision);
    row.head(m_k) = m_bw.head(m_k).transpose();
    row.segment(m_k, ks) = m_g.transpose();
    row(m_k + ks) = sigma;
    row(m_k + ks + 1) = w / sigma;
    row(m_k + ks + 2) = w;
    row(m_k + ks + 3) = m_xiPrecision;
    row(m_k + ks + 4) = m_squares;
  }

private:
  const TobitII::Data& m_data;
  const TobitII::Priors& m_priors;
  const ReducedRun* m_reduced;
  int m_threads;
  std::unique_ptr<ObservationBlocks> m_blocks;
  Eigen::Index m_k;
  Eigen::VectorXd m_bw, m_g;
  double m_xiPrecision;
  double m_squares = 0.0, m_ordinate = 0.0;
  Eigen::MatrixXd m_precision1, m_precision2;
  Eigen::VectorXd m_utility, m_otherUtility, m_selectionIndex, m_otherIndex, m_outcomeIndex, m_u, m_residual;
  Eigen::MatrixXd m_WtW;
  Eigen::VectorXd m_Wty, m_z1, m_z2, m_c, m_c1;
  Eigen::LLT<Eigen::MatrixXd> m_llt, m_gllt;
};

}  // namespace

double TobitII::LogLikelihood(const Eigen::VectorXd& b, const Eigen::VectorXd& g, double w, double xi2) const {
  const double variance = w * w + xi2, sigma = std::sqrt(variance), xi = std::sqrt(xi2);
  const Eigen::VectorXd e = m_data.y - m_data.Xs * b;
  const Eigen::VectorXd selectionIndex = m_data.Zs * g;
  double sum = -0.5 * static_cast<double>(e.size()) * (kLog2Pi + std::log(variance)) - 0.5 * e.squaredNorm() / variance;
  // P(s > 0 | e) = Phi((z'g + w e / sigma^2) / (xi / sigma)).
  for (Eigen::Index i = 0; i < e.size(); ++i) sum += LogNormalCdf((selectionIndex(i) + w * e(i) / variance) * sigma / xi);
  const Eigen::VectorXd otherIndex = m_data.Zn * g;
  for (Eigen::Index i = 0; i < otherIndex.size(); ++i) sum += LogNormalCdf(-otherIndex(i));
  return sum;
}

bool TobitII::Sample(const Eigen::VectorXd& y, const Eigen::VectorXd& selected, const Eigen::MatrixXd& X,
                     const Eigen::MatrixXd& Z, const Priors& priors, bool chib, const EventDispatcher& out,
                     const std::atomic<bool>* interrupt) {
  m_priors = priors;
  std::vector<Eigen::Index> in, outside;
  for (Eigen::Index i = 0; i < y.size(); ++i) (selected(i) > 0.5 ? in : outside).push_back(i);
  m_data = Data();
  m_data.y = y(in);
  m_data.Xs = X(in, Eigen::all);
  m_data.Zs = Z(in, Eigen::all);
  m_data.Zn = Z(outside, Eigen::all);
  m_data.XstXs = m_data.Xs.transpose() * m_data.Xs;
  m_data.ZtZ = Z.transpose() * Z;
  m_data.ZstZs = m_data.Zs.transpose() * m_data.Zs;
  m_data.Xsty = m_data.Xs.transpose() * m_data.y;
  const Eigen::Index k = X.cols(), ks = Z.cols();

  // Chains start at the least-squares fit on the observed outcomes with no correlation, the
  // residuals' precision spread by a factor between 1/4 and 4 across chains.
  const LinearPrior& prior = m_priors.coefficients;
  const Eigen::VectorXd fit = (m_data.XstXs + prior.precision.topLeftCorner(k, k))
                                  .llt()
                                  .solve(m_data.Xsty + prior.precisionTimesMean.head(k));
  const double baseTau =
      (static_cast<double>(m_data.y.size()) + 1.0) / ((m_data.y - m_data.Xs * fit).squaredNorm() + 1.0);
  const long chains = Settings().chains;
  auto make = [&](int c) -> std::unique_ptr<GibbsChain> {
    const double spread = chains > 1 ? std::pow(4.0, 2.0 * c / static_cast<double>(chains - 1) - 1.0) : 1.0;
    Eigen::VectorXd bw = Eigen::VectorXd::Zero(k + 1);
    bw.head(k) = fit;
    return std::make_unique<SelectionChain>(m_data, m_priors, bw, Eigen::VectorXd::Zero(ks), baseTau * spread,
                                            ObservationBlocks::ThreadsPerChain(chains));
  };
  if (!RunChains(make, static_cast<int>(k + ks + 5), out, interrupt)) return false;
  const Eigen::MatrixXd pooled = PoolDraws(k + ks + 2);

  // Lewis & Raftery on (b, g, w, log(1/xi^2)): the kernel gains the Jacobian 1/xi^2.
  Eigen::MatrixXd transformed(pooled.rows(), k + ks + 2);
  transformed.leftCols(k + ks) = pooled.leftCols(k + ks);
  transformed.col(k + ks) = pooled.col(k + ks + 2);
  transformed.col(k + ks + 1) = pooled.col(k + ks + 3).array().log();
  const Eigen::VectorXd centre = transformed.colwise().mean().transpose();
  Eigen::VectorXd coefficients(k + 1 + ks);
  coefficients << centre.head(k), centre(k + ks), centre.segment(k, ks);
  const double xiPrecision = std::exp(centre(k + ks + 1));
  const double kernel = LogLikelihood(centre.head(k), centre.segment(k, ks), centre(k + ks), 1.0 / xiPrecision) +
                        mlik::LogNormalDensity(coefficients, prior.mean, prior.precision) +
                        mlik::LogGammaDensity(xiPrecision, m_priors.a, m_priors.b);
  logML = mlik::LaplaceMetropolis(kernel + std::log(xiPrecision), transformed);
  logML_CJ = std::numeric_limits<double>::quiet_NaN();
  if (!chib) return true;

  // Chib: p(theta* | y) = p(1/xi^2* | y) p(g* | 1/xi^2*, y) p(b*, w* | g*, 1/xi^2*, y): the first
  // ordinate from the main run's Gamma conditionals, the others from two runs with 1/xi^2, then
  // also g, held at theta*.
  const double shape = m_priors.a + 0.5 * static_cast<double>(m_data.y.size());
  Eigen::VectorXd precisionOrdinates(pooled.rows());
  for (Eigen::Index d = 0; d < pooled.rows(); ++d) {
    precisionOrdinates(d) = mlik::LogGammaDensity(xiPrecision, shape, m_priors.b + 0.5 * pooled(d, k + ks + 4));
  }
  double logOrdinate = mlik::LogMeanExp(precisionOrdinates);
  const Eigen::VectorXd bwStar = coefficients.head(k + 1), gStar = coefficients.tail(ks);
  for (int run = 0; run < 2; ++run) {
    ReducedRun reducedRun;
    reducedRun.fixPrecision = true;
    reducedRun.fixSelection = run == 1;
    reducedRun.ordinateAt = run == 0 ? gStar : bwStar;
    GibbsSettings settings = Settings();
    settings.seed = Settings().seed + 1 + static_cast<std::uint64_t>(run);
    Estimator reduced(settings.ToVector());
    auto makeReduced = [&](int) -> std::unique_ptr<GibbsChain> {
      return std::make_unique<SelectionChain>(m_data, m_priors, bwStar, gStar, xiPrecision,
                                              ObservationBlocks::ThreadsPerChain(1), &reducedRun);
    };
    if (!reduced.RunChains(makeReduced, 1, out, interrupt)) return false;
    std::vector<double> ordinates;
    for (const Eigen::MatrixXd& draws : reduced.Draws()) {
      for (Eigen::Index d = 0; d < draws.rows(); ++d) ordinates.push_back(draws(d, 0));
    }
    logOrdinate += mlik::LogMeanExp(Eigen::Map<const Eigen::VectorXd>(ordinates.data(), static_cast<Eigen::Index>(ordinates.size())));
  }
  logML_CJ = kernel - logOrdinate;
  return true;
}
