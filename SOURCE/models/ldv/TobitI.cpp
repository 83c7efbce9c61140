// TobitI: the sampler of the censored regression and its marginal likelihoods.
#include "TobitI.h"

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

// One chain over b, tau and the censored outcomes' latent values. With b fixed it is the reduced
// run of Chib's method and records the sum of squared residuals at b* instead of the parameters.
class TobitChain : public GibbsChain {
public:
  TobitChain(const TobitI::Data& data, const LinearPrior& prior, double a, double b, Eigen::VectorXd start,
             double tau, bool bFixed, int threads)
      : m_data(data), m_prior(prior), m_a(a), m_b(b), m_threads(threads), m_bFixed(bFixed),
        m_coefficients(std::move(start)), m_tau(tau), m_z(m_coefficients.size()),
        m_index(data.censoredX.rows()), m_latent(data.censoredX.rows()), m_Xtz(m_coefficients.size()) {}

  void Sweep(RandomEngine& rng) override {
    const Eigen::Index censored = m_data.censoredX.rows();
    if (!m_blocks && censored > 0) {
      m_blocks = std::make_unique<ObservationBlocks>(censored, rng, m_threads);
      m_partialXtz.resize(m_coefficients.size(), m_blocks->Count());
      m_partialSquares.resize(m_blocks->Count());
    }
    // The latent values below a lower limit or above an upper one, block by block, with the
    // blocks' shares of X'z and z'z.
    m_Xtz = m_data.uncensoredXty;
    double ztz = m_data.uncensoredYty;
    if (censored > 0) {
      const double sd = 1.0 / std::sqrt(m_tau);
      m_blocks->Run([&](Eigen::Index block, Eigen::Index first, Eigen::Index end, RandomEngine& blockRng) {
        const Eigen::Index n = end - first;
        m_index.segment(first, n).noalias() = m_data.censoredX.middleRows(first, n) * m_coefficients;
        for (Eigen::Index i = first; i < end; ++i) {
          const double mean = m_index(i), limit = m_data.limit(i);
          m_latent(i) = m_data.below(i) > 0.5 ? mean - sd * dist::StandardNormalTailDraw(blockRng, (mean - limit) / sd)
                                              : mean + sd * dist::StandardNormalTailDraw(blockRng, (limit - mean) / sd);
        }
        m_partialXtz.col(block).noalias() =
            m_data.censoredX.middleRows(first, n).transpose() * m_latent.segment(first, n);
        m_partialSquares(block) = m_latent.segment(first, n).squaredNorm();
      });
      m_Xtz += m_partialXtz.rowwise().sum();
      ztz += m_partialSquares.sum();
    }
    // b | z, tau ~ N(A^-1 c, A^-1), A = tau X'X + P, c = tau X'z + P m.
    m_tauUsed = m_tau;
    if (!m_bFixed) {
      m_llt.compute(m_tau * m_data.XtX + m_prior.precision);
      DrawCanonicalNormal(m_llt, m_tau * m_Xtz + m_prior.precisionTimesMean, rng, m_z, m_coefficients);
    }
    // tau | b, z ~ Gamma(a + n/2, b + |z - X b|^2 / 2), the squares from the cross-products.
    m_squares = std::max(0.0, ztz - 2.0 * m_coefficients.dot(m_Xtz) + m_coefficients.dot(m_data.XtX * m_coefficients));
    m_tau = dist::GammaDraw(rng, m_a + 0.5 * static_cast<double>(m_data.observations), m_b + 0.5 * m_squares);
  }

  // b and tau; then, for Chib's ordinate of b, the tau that b was drawn with and X'z (dropped from
  // what the model keeps). In the reduced run, the squared residuals at b*.
  void Record(DrawRow row) const override {
    if (m_bFixed) {
      row(0) = m_squares;
      return;
    }
    const Eigen::Index k = m_coefficients.size();
    row.head(k) = m_coefficients.transpose();
    row(k) = m_tau;
    row(k + 1) = m_tauUsed;
    row.segment(k + 2, k) = m_Xtz.transpose();
  }

private:
  const TobitI::Data& m_data;
  const LinearPrior& m_prior;
  double m_a, m_b;
  int m_threads;
  bool m_bFixed;
  std::unique_ptr<ObservationBlocks> m_blocks;
  Eigen::VectorXd m_coefficients;
  double m_tau, m_tauUsed = 0.0, m_squares = 0.0;
  Eigen::VectorXd m_z, m_index, m_latent, m_Xtz;
  Eigen::MatrixXd m_partialXtz;  // k x blocks
  Eigen::VectorXd m_partialSquares;
  Eigen::LLT<Eigen::MatrixXd> m_llt;
};

}  // namespace

double TobitI::LogLikelihood(const Eigen::VectorXd& b, double tau) const {
  const Eigen::VectorXd index = *m_X * b;
  const double root = std::sqrt(tau);
  double sum = 0.0;
  for (Eigen::Index i = 0; i < index.size(); ++i) {
    const double y = (*m_y)(i);
    if (y <= m_lower) {
      sum += LogNormalCdf(root * (m_lower - index(i)));
    } else if (y >= m_upper) {
      sum += LogNormalCdf(root * (index(i) - m_upper));
    } else {
      const double e = y - index(i);
      sum += 0.5 * (std::log(tau) - kLog2Pi - tau * e * e);
    }
  }
  return sum;
}

bool TobitI::Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, double lower, double upper,
                    const LinearPrior& prior, double a, double b, bool chib, const EventDispatcher& out,
                    const std::atomic<bool>* interrupt) {
  m_y = &y;
  m_X = &X;
  m_lower = lower;
  m_upper = upper;
  m_prior = prior;
  m_a = a;
  m_b = b;
  const Eigen::Index n = y.size(), k = X.cols();
  Eigen::Index censored = 0;
  for (Eigen::Index i = 0; i < n; ++i) censored += (y(i) <= lower || y(i) >= upper) ? 1 : 0;
  m_data = Data();
  m_data.observations = n;
  m_data.XtX = X.transpose() * X;
  m_data.censoredX.resize(censored, k);
  m_data.limit.resize(censored);
  m_data.below.resize(censored);
  m_data.uncensoredXty = Eigen::VectorXd::Zero(k);
  for (Eigen::Index i = 0, c = 0; i < n; ++i) {
    if (y(i) <= lower || y(i) >= upper) {
      m_data.censoredX.row(c) = X.row(i);
      m_data.below(c) = y(i) <= lower ? 1.0 : 0.0;
      m_data.limit(c) = y(i) <= lower ? lower : upper;
      ++c;
    } else {
      m_data.uncensoredXty += X.row(i).transpose() * y(i);
      m_data.uncensoredYty += y(i) * y(i);
    }
  }

  // Chains start at the prior-weighted least-squares fit of y as observed, with the residuals'
  // precision spread by a factor between 1/4 and 4 across chains so that R-hat can reveal slow
  // mixing.
  const Eigen::VectorXd fit =
      (m_data.XtX + m_prior.precision).llt().solve(X.transpose() * y + m_prior.precisionTimesMean);
  const double baseTau = (static_cast<double>(n) + 1.0) / ((y - X * fit).squaredNorm() + 1.0);
  const long chains = Settings().chains;
  const int threads = ObservationBlocks::ThreadsPerChain(chains);
  auto make = [&](int c) -> std::unique_ptr<GibbsChain> {
    const double spread = chains > 1 ? std::pow(4.0, 2.0 * c / static_cast<double>(chains - 1) - 1.0) : 1.0;
    return std::make_unique<TobitChain>(m_data, m_prior, m_a, m_b, fit, baseTau * spread, false, threads);
  };
  if (!RunChains(make, static_cast<int>(2 * k + 2), out, interrupt)) return false;
  const Eigen::MatrixXd pooled = PoolDraws(k + 1);

  // Lewis & Raftery on (b, log tau): the kernel gains the Jacobian tau.
  Eigen::MatrixXd transformed = pooled.leftCols(k + 1);
  transformed.col(k) = transformed.col(k).array().log();
  const Eigen::VectorXd centre = transformed.colwise().mean().transpose();
  const Eigen::VectorXd bStar = centre.head(k);
  const double tauStar = std::exp(centre(k));
  const double kernel = LogLikelihood(bStar, tauStar) + mlik::LogNormalDensity(bStar, m_prior.mean, m_prior.precision) +
                        mlik::LogGammaDensity(tauStar, m_a, m_b);
  logML = mlik::LaplaceMetropolis(kernel + std::log(tauStar), transformed);
  logML_CJ = std::numeric_limits<double>::quiet_NaN();
  if (!chib) return true;

  // Chib: p(y) = p(y | b*, tau*) p(b*) p(tau*) / (p(b* | y) p(tau* | b*, y)). p(b* | y) averages
  // b's Normal conditional over the main run's (tau, z); p(tau* | b*, y) averages tau's Gamma
  // conditional over a second run with b fixed at b*.
  Eigen::VectorXd bOrdinates(pooled.rows());
  Eigen::LLT<Eigen::MatrixXd> llt;
  for (Eigen::Index g = 0; g < pooled.rows(); ++g) {
    const double tau = pooled(g, k + 1);
    const Eigen::MatrixXd precision = tau * m_data.XtX + m_prior.precision;
    llt.compute(precision);
    const Eigen::VectorXd mean = llt.solve(tau * pooled.row(g).segment(k + 2, k).transpose() + m_prior.precisionTimesMean);
    bOrdinates(g) = mlik::LogNormalDensity(bStar, mean, precision);
  }
  GibbsSettings reducedSettings = Settings();
  reducedSettings.seed = Settings().seed + 1;
  Estimator reduced(reducedSettings.ToVector());
  auto makeReduced = [&](int) -> std::unique_ptr<GibbsChain> {
    return std::make_unique<TobitChain>(m_data, m_prior, m_a, m_b, bStar, tauStar, true, threads);
  };
  if (!reduced.RunChains(makeReduced, 1, out, interrupt)) return false;
  std::vector<double> tauOrdinates;
  const double shape = m_a + 0.5 * static_cast<double>(n);
  for (const Eigen::MatrixXd& draws : reduced.Draws()) {
    for (Eigen::Index g = 0; g < draws.rows(); ++g) {
      tauOrdinates.push_back(mlik::LogGammaDensity(tauStar, shape, m_b + 0.5 * draws(g, 0)));
    }
  }
  logML_CJ = kernel - mlik::LogMeanExp(bOrdinates) -
             mlik::LogMeanExp(Eigen::Map<const Eigen::VectorXd>(tauOrdinates.data(), static_cast<Eigen::Index>(tauOrdinates.size())));
  return true;
}
