// SystemRegression: the cross-products of a system, its two samplers and marginal likelihoods.
#include "SystemRegression.h"

#include <cmath>
#include <limits>

#include "MarginalLikelihood.h"
#include "Wishart.h"

namespace {

constexpr double kLog2Pi = 1.8378770664093454836;
constexpr double kLogPi = 1.1447298858494002;

double LogDeterminant(const Eigen::LLT<Eigen::MatrixXd>& llt) {
  return 2.0 * llt.matrixLLT().diagonal().array().log().sum();
}

Eigen::MatrixXd InverseOf(const Eigen::MatrixXd& spd) {
  return spd.llt().solve(Eigen::MatrixXd::Identity(spd.rows(), spd.cols()));
}

// Writes b, the variances of Sigma, then its correlations (i < j) into a draw row.
void RecordSystem(const Eigen::VectorXd& b, const Eigen::MatrixXd& sigma, DrawRow row) {
  const Eigen::Index k = b.size();
  const Eigen::Index m = sigma.rows();
  row.head(k) = b.transpose();
  Eigen::Index at = k;
  for (Eigen::Index j = 0; j < m; ++j) row(at++) = sigma(j, j);
  for (Eigen::Index i = 0; i < m; ++i) {
    for (Eigen::Index j = i + 1; j < m; ++j) row(at++) = sigma(i, j) / std::sqrt(sigma(i, i) * sigma(j, j));
  }
}

// b | Sigma^-1 Normal and Sigma^-1 | b Wishart.
class IndependentSystemChain : public GibbsChain {
public:
  IndependentSystemChain(const SystemStatistics& stats, const SystemPriors& priors, const Eigen::MatrixXd& startPrecision)
      : m_stats(stats), m_priors(priors), m_W(startPrecision), m_A(stats.Coefficients(), stats.Coefficients()),
        m_c(stats.Coefficients()), m_b(stats.Coefficients()), m_z(stats.Coefficients()) {}

  void Sweep(RandomEngine& rng) override {
    // b | Sigma: precision sum s^ij X_i'X_j + P, moment sum s^ij X_i'y_j + P m.
    m_stats.Conditional(m_W, m_A, m_c);
    m_A += m_priors.coefficients.precision;
    m_c += m_priors.coefficients.precisionTimesMean;
    m_llt.compute(m_A);
    DrawCanonicalNormal(m_llt, m_c, rng, m_z, m_b);
    // Sigma^-1 | b ~ Wishart((S + E'E)^-1, nu + n).
    m_stats.ResidualCrossProducts(m_b, m_EtE, m_scratch);
    m_EtE += m_priors.S;
    m_scale.compute(InverseOf(m_EtE));
    m_W = dist::WishartDraw(rng, m_scale.matrixL(), m_priors.nu + m_stats.Observations());
  }

  void Record(DrawRow row) const override { RecordSystem(m_b, InverseOf(m_W), row); }

private:
  const SystemStatistics& m_stats;
  const SystemPriors& m_priors;
  Eigen::MatrixXd m_W, m_A, m_EtE;
  Eigen::VectorXd m_c, m_b, m_z;
  Eigen::LLT<Eigen::MatrixXd> m_llt, m_scale;
  SystemStatistics::Scratch m_scratch;
};

// The conjugate posterior: Sigma ~ inverse Wishart(S1, nu1), B | Sigma ~ N(B1, Sigma (x) V1).
struct ConjugatePosterior {
  Eigen::MatrixXd B1, S1;
  Eigen::LLT<Eigen::MatrixXd> V1inverse, S1factor;
  double nu1 = 0.0;

  ConjugatePosterior(const SystemStatistics& stats, const SystemPriors& priors) {
    const Eigen::MatrixXd precision = priors.V0inverse + stats.XtX();
    V1inverse.compute(precision);
    B1 = V1inverse.solve(priors.V0inverse * priors.B0 + stats.XtY());
    S1 = priors.S + stats.YtY() + priors.B0.transpose() * priors.V0inverse * priors.B0 -
         B1.transpose() * precision * B1;
    S1 = 0.5 * (S1 + S1.transpose());
    S1factor.compute(S1);
    nu1 = priors.nu + stats.Observations();
  }
};

class ConjugateSystemChain : public GibbsChain {
public:
  explicit ConjugateSystemChain(const ConjugatePosterior& posterior)
      : m_posterior(posterior), m_Z(posterior.B1.rows(), posterior.B1.cols()),
        m_b(posterior.B1.size()) {}

  void Sweep(RandomEngine& rng) override {
    m_sigma = dist::InverseWishartDraw(rng, m_posterior.S1factor.matrixL(), m_posterior.nu1);
    for (Eigen::Index i = 0; i < m_Z.size(); ++i) m_Z(i) = rng.Normal();
    // B = B1 + U^-1 Z L', with V1^-1 = U'U and Sigma = L L': rows covary as V1, columns as Sigma.
    m_sigmaFactor.compute(m_sigma);
    const Eigen::MatrixXd rows = m_posterior.V1inverse.matrixU().solve(m_Z);
    Eigen::Map<Eigen::MatrixXd>(m_b.data(), m_Z.rows(), m_Z.cols()) =
        m_posterior.B1 + rows * m_sigmaFactor.matrixL().transpose();
  }

  void Record(DrawRow row) const override { RecordSystem(m_b, m_sigma, row); }

private:
  const ConjugatePosterior& m_posterior;
  Eigen::MatrixXd m_Z, m_sigma;
  Eigen::VectorXd m_b;
  Eigen::LLT<Eigen::MatrixXd> m_sigmaFactor;
};

// Log density of vec(B) ~ N(vec(B0), Sigma (x) V0) given V0^-1 and Sigma^-1.
double LogMatrixNormalDensity(const Eigen::MatrixXd& B, const Eigen::MatrixXd& B0, const Eigen::MatrixXd& V0inverse,
                              const Eigen::MatrixXd& sigmaInverse) {
  const double k = static_cast<double>(B.rows()), m = static_cast<double>(B.cols());
  const Eigen::MatrixXd D = B - B0;
  return -0.5 * k * m * kLog2Pi + 0.5 * k * LogDeterminant(sigmaInverse.llt()) +
         0.5 * m * LogDeterminant(V0inverse.llt()) - 0.5 * (sigmaInverse * D.transpose() * V0inverse * D).trace();
}

}  // namespace

namespace mlik {

double LogMultivariateGamma(double a, Eigen::Index p) {
  double value = 0.25 * static_cast<double>(p * (p - 1)) * kLogPi;
  for (Eigen::Index j = 0; j < p; ++j) value += std::lgamma(a - 0.5 * static_cast<double>(j));
  return value;
}

double LogWishartDensity(const Eigen::MatrixXd& W, const Eigen::MatrixXd& scaleInverse, double nu) {
  const Eigen::LLT<Eigen::MatrixXd> w(W);
  if (w.info() != Eigen::Success) return -std::numeric_limits<double>::infinity();
  const double p = static_cast<double>(W.rows());
  return 0.5 * (nu - p - 1.0) * LogDeterminant(w) - 0.5 * (scaleInverse * W).trace() - 0.5 * nu * p * std::log(2.0) +
         0.5 * nu * LogDeterminant(scaleInverse.llt()) - LogMultivariateGamma(0.5 * nu, W.rows());
}

double LogInverseWishartDensity(const Eigen::MatrixXd& sigma, const Eigen::MatrixXd& S, double nu) {
  const Eigen::LLT<Eigen::MatrixXd> s(sigma);
  if (s.info() != Eigen::Success) return -std::numeric_limits<double>::infinity();
  const double p = static_cast<double>(sigma.rows());
  return 0.5 * nu * LogDeterminant(S.llt()) - 0.5 * nu * p * std::log(2.0) -
         LogMultivariateGamma(0.5 * nu, sigma.rows()) - 0.5 * (nu + p + 1.0) * LogDeterminant(s) -
         0.5 * s.solve(S).trace();
}

}  // namespace mlik

SystemStatistics::SystemStatistics(const Eigen::MatrixXd& X, std::vector<std::vector<Eigen::Index>> columns,
                                   const Eigen::MatrixXd& Y)
    : m_columns(std::move(columns)), m_n(static_cast<double>(X.rows())) {
  const Eigen::Index K = X.cols(), m = Y.cols(), n = X.rows();
  m_offsets.push_back(0);
  for (const auto& c : m_columns) m_offsets.push_back(m_offsets.back() + static_cast<Eigen::Index>(c.size()));
  Eigen::MatrixXd XY(n, K + m);
  XY << X, Y;
  const Eigen::HouseholderQR<Eigen::MatrixXd> qr(XY);
  Eigen::MatrixXd R = Eigen::MatrixXd::Zero(K + m, K + m);
  const Eigen::Index rows = std::min(n, K + m);
  R.topRows(rows) = qr.matrixQR().topRows(rows).triangularView<Eigen::Upper>();
  m_R11 = R.topLeftCorner(K, K);
  m_R12 = R.topRightCorner(K, m);
  m_R22 = R.bottomRightCorner(m, m);
  const Eigen::MatrixXd XtX = m_R11.transpose() * m_R11;
  const Eigen::MatrixXd XtY = m_R11.transpose() * m_R12;
  m_XitXj.resize(static_cast<std::size_t>(m * m));
  m_XitYj.resize(static_cast<std::size_t>(m * m));
  for (Eigen::Index i = 0; i < m; ++i) {
    const auto& ci = m_columns[static_cast<std::size_t>(i)];
    for (Eigen::Index j = 0; j < m; ++j) {
      const auto& cj = m_columns[static_cast<std::size_t>(j)];
      Eigen::MatrixXd block(ci.size(), cj.size());
      for (std::size_t r = 0; r < ci.size(); ++r) {
        for (std::size_t s = 0; s < cj.size(); ++s) block(static_cast<Eigen::Index>(r), static_cast<Eigen::Index>(s)) = XtX(ci[r], cj[s]);
      }
      Eigen::VectorXd moment(ci.size());
      for (std::size_t r = 0; r < ci.size(); ++r) moment(static_cast<Eigen::Index>(r)) = XtY(ci[r], j);
      m_XitXj[static_cast<std::size_t>(i * m + j)] = std::move(block);
      m_XitYj[static_cast<std::size_t>(i * m + j)] = std::move(moment);
    }
  }
}

Eigen::MatrixXd SystemStatistics::XtX() const { return m_R11.transpose() * m_R11; }
Eigen::MatrixXd SystemStatistics::XtY() const { return m_R11.transpose() * m_R12; }
Eigen::MatrixXd SystemStatistics::YtY() const { return m_R12.transpose() * m_R12 + m_R22.transpose() * m_R22; }

void SystemStatistics::Conditional(const Eigen::MatrixXd& sigmaInverse, Eigen::MatrixXd& A, Eigen::VectorXd& c) const {
  const Eigen::Index m = Equations();
  c.setZero();
  for (Eigen::Index i = 0; i < m; ++i) {
    for (Eigen::Index j = 0; j < m; ++j) {
      const std::size_t at = static_cast<std::size_t>(i * m + j);
      A.block(Offset(i), Offset(j), Size(i), Size(j)) = sigmaInverse(i, j) * m_XitXj[at];
      c.segment(Offset(i), Size(i)) += sigmaInverse(i, j) * m_XitYj[at];
    }
  }
}

void SystemStatistics::ResidualCrossProducts(const Eigen::VectorXd& b, Eigen::MatrixXd& out, Scratch& scratch) const {
  // E = Y - sum_j X_j b_j, so Q'E = [R12 - R11 B; R22] with B holding b_j in column j.
  Eigen::MatrixXd& B = scratch.B;
  Eigen::MatrixXd& E = scratch.E;
  if (B.rows() != m_R11.rows() || B.cols() != Equations()) B = Eigen::MatrixXd::Zero(m_R11.rows(), Equations());
  for (Eigen::Index j = 0; j < Equations(); ++j) {
    const auto& cj = m_columns[static_cast<std::size_t>(j)];
    for (std::size_t r = 0; r < cj.size(); ++r) B(cj[r], j) = b(Offset(j) + static_cast<Eigen::Index>(r));
  }
  E.noalias() = m_R12 - m_R11.triangularView<Eigen::Upper>() * B;
  out.noalias() = E.transpose() * E;
  out.noalias() += m_R22.transpose() * m_R22;
}

double SystemStatistics::LogLikelihood(const Eigen::VectorXd& b, const Eigen::MatrixXd& sigmaInverse) const {
  Eigen::MatrixXd EtE(Equations(), Equations());
  ResidualCrossProducts(b, EtE);
  const Eigen::LLT<Eigen::MatrixXd> w(sigmaInverse);
  if (w.info() != Eigen::Success) return -std::numeric_limits<double>::infinity();
  const double m = static_cast<double>(Equations());
  return 0.5 * m_n * LogDeterminant(w) - 0.5 * m_n * m * kLog2Pi - 0.5 * (sigmaInverse * EtE).trace();
}

std::vector<std::string> SystemRegression::CovarianceLabels(const std::vector<std::string>& names) {
  std::vector<std::string> labels;
  for (const auto& name : names) labels.push_back("sigma2$" + name);
  for (std::size_t i = 0; i < names.size(); ++i) {
    for (std::size_t j = i + 1; j < names.size(); ++j) labels.push_back("rho$" + names[i] + "_" + names[j]);
  }
  return labels;
}

Eigen::MatrixXd SystemRegression::CovarianceFromDraw(const Eigen::Ref<const Eigen::RowVectorXd>& row, Eigen::Index at,
                                                     Eigen::Index m) {
  Eigen::MatrixXd sigma(m, m);
  for (Eigen::Index j = 0; j < m; ++j) sigma(j, j) = row(at + j);
  Eigen::Index r = at + m;
  for (Eigen::Index i = 0; i < m; ++i) {
    for (Eigen::Index j = i + 1; j < m; ++j) {
      sigma(i, j) = sigma(j, i) = row(r++) * std::sqrt(sigma(i, i) * sigma(j, j));
    }
  }
  return sigma;
}

bool SystemRegression::Sample(const SystemStatistics& stats, const SystemPriors& priors, const EventDispatcher& out,
                              const std::atomic<bool>* interrupt) {
  const Eigen::Index K = stats.Coefficients(), m = stats.Equations();
  const int parameters = static_cast<int>(K + m + m * (m - 1) / 2);
  const long chains = Settings().chains;
  std::unique_ptr<ConjugatePosterior> posterior;
  if (priors.conjugate) posterior = std::make_unique<ConjugatePosterior>(stats, priors);

  // The independent prior's chains start from Sigma^-1 at the residuals of the generalised least
  // squares fit with unit weights, spread by a factor between 1/4 and 4 across chains.
  Eigen::MatrixXd start;
  if (!priors.conjugate) {
    Eigen::MatrixXd A(K, K), EtE(m, m);
    Eigen::VectorXd c(K);
    stats.Conditional(Eigen::MatrixXd::Identity(m, m), A, c);
    const Eigen::VectorXd fit = (A + priors.coefficients.precision).llt().solve(c + priors.coefficients.precisionTimesMean);
    stats.ResidualCrossProducts(fit, EtE);
    start = (stats.Observations() + priors.nu) * InverseOf(EtE + priors.S);
  }
  auto make = [&](int c) -> std::unique_ptr<GibbsChain> {
    if (posterior) return std::make_unique<ConjugateSystemChain>(*posterior);
    const double spread = chains > 1 ? std::pow(4.0, 2.0 * c / static_cast<double>(chains - 1) - 1.0) : 1.0;
    return std::make_unique<IndependentSystemChain>(stats, priors, start * spread);
  };
  if (!RunChains(make, parameters, out, interrupt)) return false;
  Eigen::MatrixXd pooled(Settings().KeptDraws() * chains, parameters);
  for (long c = 0; c < chains; ++c) pooled.middleRows(c * Settings().KeptDraws(), Settings().KeptDraws()) = Draws()[c];
  MarginalLikelihoods(stats, priors, pooled);
  return true;
}

void SystemRegression::MarginalLikelihoods(const SystemStatistics& stats, const SystemPriors& priors,
                                           const Eigen::MatrixXd& pooled) {
  const Eigen::Index K = stats.Coefficients(), m = stats.Equations();
  const double n = stats.Observations();
  auto logPrior = [&](const Eigen::VectorXd& b, const Eigen::MatrixXd& sigma) {
    const Eigen::MatrixXd sigmaInverse = InverseOf(sigma);
    double value = mlik::LogInverseWishartDensity(sigma, priors.S, priors.nu);
    if (priors.conjugate) {
      value += LogMatrixNormalDensity(Eigen::Map<const Eigen::MatrixXd>(b.data(), priors.B0.rows(), m), priors.B0,
                                      priors.V0inverse, sigmaInverse);
    } else {
      value += mlik::LogNormalDensity(b, priors.coefficients.mean, priors.coefficients.precision);
    }
    return value;
  };

  // Lewis & Raftery on b and the distinct elements of Sigma.
  const Eigen::Index distinct = m * (m + 1) / 2;
  Eigen::MatrixXd coordinates(pooled.rows(), K + distinct);
  for (Eigen::Index g = 0; g < pooled.rows(); ++g) {
    const Eigen::MatrixXd sigma = CovarianceFromDraw(pooled.row(g), K, m);
    coordinates.row(g).head(K) = pooled.row(g).head(K);
    Eigen::Index at = K;
    for (Eigen::Index i = 0; i < m; ++i) {
      for (Eigen::Index j = i; j < m; ++j) coordinates(g, at++) = sigma(i, j);
    }
  }
  const Eigen::RowVectorXd centre = coordinates.colwise().mean();
  const Eigen::VectorXd bStar = centre.head(K).transpose();
  Eigen::MatrixXd sigmaStar(m, m);
  Eigen::Index at = K;
  for (Eigen::Index i = 0; i < m; ++i) {
    for (Eigen::Index j = i; j < m; ++j) sigmaStar(i, j) = sigmaStar(j, i) = centre(at++);
  }
  const Eigen::MatrixXd wStar = InverseOf(sigmaStar);
  const double kernel = stats.LogLikelihood(bStar, wStar) + logPrior(bStar, sigmaStar);
  logML = mlik::LaplaceMetropolis(kernel, coordinates);

  if (priors.conjugate) {
    // p(Y) = pi^(-nm/2) |V1|^(m/2) / |V0|^(m/2) |S|^(nu/2) / |S1|^(nu1/2) G_m(nu1/2) / G_m(nu/2).
    const ConjugatePosterior posterior(stats, priors);
    const double md = static_cast<double>(m);
    logML_CJ = -0.5 * n * md * kLogPi + 0.5 * md * (LogDeterminant(priors.V0inverse.llt()) - LogDeterminant(posterior.V1inverse)) +
               0.5 * priors.nu * LogDeterminant(priors.S.llt()) - 0.5 * posterior.nu1 * LogDeterminant(posterior.S1factor) +
               mlik::LogMultivariateGamma(0.5 * posterior.nu1, m) - mlik::LogMultivariateGamma(0.5 * priors.nu, m);
    return;
  }
  // Chib: the ordinate of Sigma^-1 averaged over the draws of b, then b | Sigma^-1 Normal.
  Eigen::VectorXd ordinates(pooled.rows());
  Eigen::MatrixXd EtE(m, m);
  SystemStatistics::Scratch scratch;
  for (Eigen::Index g = 0; g < pooled.rows(); ++g) {
    stats.ResidualCrossProducts(pooled.row(g).head(K).transpose(), EtE, scratch);
    ordinates(g) = mlik::LogWishartDensity(wStar, EtE + priors.S, priors.nu + n);
  }
  Eigen::MatrixXd A(K, K);
  Eigen::VectorXd c(K);
  stats.Conditional(wStar, A, c);
  A += priors.coefficients.precision;
  c += priors.coefficients.precisionTimesMean;
  const Eigen::VectorXd conditionalMean = A.llt().solve(c);
  logML_CJ = stats.LogLikelihood(bStar, wStar) + mlik::LogNormalDensity(bStar, priors.coefficients.mean, priors.coefficients.precision) +
             mlik::LogWishartDensity(wStar, priors.S, priors.nu) - mlik::LogMeanExp(ordinates) -
             mlik::LogNormalDensity(bStar, conditionalMean, A);
}
