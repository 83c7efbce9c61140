// MultinomialProbit: the sweep of the multinomial and conditional probits.
#include "MultinomialProbit.h"

#include <cmath>
#include <memory>

#include "ChiSquared.h"
#include "CorrelatedUtilities.h"
#include "MarginalLikelihood.h"
#include "OrthantProbability.h"
#include "Wishart.h"

namespace {

class MultinomialProbitChain : public GibbsChain {
public:
  MultinomialProbitChain(const UtilityDesign& design, const Eigen::VectorXi& choice, const Eigen::MatrixXd& available,
                         const LinearPrior& prior, double nu, const Eigen::MatrixXd& S, Eigen::VectorXd start)
      : m_design(design), m_choice(choice), m_available(available), m_prior(prior), m_nu(nu), m_S(S),
        m_centred(prior.precisionTimesMean.cwiseAbs().maxCoeff() == 0.0), m_b(std::move(start)) {
    const Eigen::Index n = design.Observations(), p = design.Differences(), k = design.Coefficients();
    m_sigma = Eigen::MatrixXd::Identity(p, p);
    m_H = m_sigma;
    m_M.resize(n, p);
    m_WH.resize(n, p);
    m_XtHX.resize(k, k);
    m_XtHw.resize(k);
    m_mean.resize(k);
    m_z.resize(k);
    m_scaledMean.resize(k);
    m_bTilde.resize(k);
    // Utilities inside the region of each choice: the chosen one at 1, the others at -1.
    m_W = Eigen::MatrixXd::Constant(n, p, -1.0);
    for (Eigen::Index i = 0; i < n; ++i) {
      if (choice(i) > 0) m_W(i, choice(i) - 1) = 1.0;
    }
  }

  void Sweep(RandomEngine& rng) override {
    const Eigen::Index n = m_design.Observations(), p = m_design.Differences(), k = m_design.Coefficients();
    // (1) Utilities given b and Sigma.
    m_design.Means(m_b, m_M);
    DrawChoiceUtilities(m_choice, m_available, m_M, m_H, 0, n, rng, m_W);
    if (!m_centred) DrawCoefficients(rng);
    // (2) The working scale from its prior given Sigma.
    const double traceSH = (m_S.cwiseProduct(m_H)).sum();
    double a2 = traceSH / dist::ChiSquaredDraw(rng, static_cast<double>(p) * m_nu);
    m_W *= std::sqrt(a2);
    // (3) Centred prior: (a^2, b~) given w~ and Sigma; b~ | a^2 ~ N(bhat, a^2 Omega^-1).
    if (m_centred) {
      m_WH.noalias() = m_W * m_H;
      m_design.CrossProducts(m_H, m_WH, m_XtHX, m_XtHw);
      m_XtHX += m_prior.precision;
      m_factor.compute(m_XtHX);
      m_mean = m_factor.solve(m_XtHw);
      const double quadratic = traceSH + m_WH.cwiseProduct(m_W).sum() - m_mean.dot(m_XtHw);
      a2 = quadratic / dist::ChiSquaredDraw(rng, static_cast<double>(p) * (m_nu + static_cast<double>(n)));
      for (Eigen::Index j = 0; j < k; ++j) m_z(j) = rng.Normal();
      m_bTilde = m_mean + std::sqrt(a2) * m_factor.matrixU().solve(m_z);
    } else {
      m_bTilde = std::sqrt(a2) * m_b;
    }
    // (4) Sigma~ given w~ and b~: the inverse-Wishart part proposes, the rest of the
    // conditional, f(s) with s = Sigma~_11, accepts.
    m_design.Means(m_bTilde, m_M);
    m_M = m_W - m_M;
    m_scatter.noalias() = m_M.transpose() * m_M;
    m_scatter += m_S;
    const Eigen::MatrixXd proposal = dist::InverseWishartDraw(rng, m_scatter.llt().matrixL(), m_nu + static_cast<double>(n));
    const double s = proposal(0, 0);
    if (std::log(rng.Uniform()) < LogScaleFactor(s) - LogScaleFactor(a2)) {
      m_sigma = proposal / s;
      m_H = m_sigma.llt().solve(Eigen::MatrixXd::Identity(p, p));
      a2 = s;
      ++m_accepted;
    }
    ++m_sweeps;
    const double a = std::sqrt(a2);
    m_b = m_bTilde / a;
    m_W /= a;
  }

  void Record(DrawRow row) const override {
    const Eigen::Index k = m_b.size(), p = m_sigma.rows();
    row.head(k) = m_b.transpose();
    Eigen::Index c = k;
    for (Eigen::Index l = 0; l < p; ++l) {
      for (Eigen::Index j = l; j < p; ++j) {
        if (j > 0) row(c++) = m_sigma(j, l);
      }
    }
  }

  double Acceptance() const { return m_sweeps > 0 ? static_cast<double>(m_accepted) / static_cast<double>(m_sweeps) : 0.0; }

private:
  // b | w, Sigma on the identified scale (any prior).
  void DrawCoefficients(RandomEngine& rng) {
    m_WH.noalias() = m_W * m_H;
    m_design.CrossProducts(m_H, m_WH, m_XtHX, m_XtHw);
    m_XtHX += m_prior.precision;
    m_XtHw += m_prior.precisionTimesMean;
    m_factor.compute(m_XtHX);
    m_mean = m_factor.solve(m_XtHw);
    for (Eigen::Index j = 0; j < m_z.size(); ++j) m_z(j) = rng.Normal();
    m_b = m_mean + m_factor.matrixU().solve(m_z);
  }

  // log f(s): the part of Sigma~'s conditional outside the inverse Wishart, from b~'s prior
  // N(sqrt(s) m, s P^-1): -k/2 log s - (b~ - sqrt(s) m)' P (b~ - sqrt(s) m) / (2 s).
  double LogScaleFactor(double s) {
    m_scaledMean = m_bTilde - std::sqrt(s) * m_prior.mean;
    return -0.5 * static_cast<double>(m_bTilde.size()) * std::log(s) -
           0.5 * m_scaledMean.dot(m_prior.precision * m_scaledMean) / s;
  }

  const UtilityDesign& m_design;
  const Eigen::VectorXi& m_choice;
  const Eigen::MatrixXd& m_available;
  const LinearPrior& m_prior;
  double m_nu;
  const Eigen::MatrixXd& m_S;
  bool m_centred;
  Eigen::VectorXd m_b, m_mean, m_z, m_XtHw, m_scaledMean, m_bTilde;
  Eigen::MatrixXd m_sigma, m_H, m_W, m_M, m_WH, m_XtHX, m_scatter;
  Eigen::LLT<Eigen::MatrixXd> m_factor;
  long m_accepted = 0, m_sweeps = 0;
};

// GHK points per observation for the likelihood at the posterior mean.
constexpr Eigen::Index kOrthantPoints = 500;

// log P(choices | b, Sigma): per observation the probability that the chosen alternative's
// utility exceeds the others' and the base's (0): with v = A w, v_0 = w_c and v_l = w_c - w_l,
// P(v > 0); for the base, P(-w > 0). Alternatives a situation does not offer are left out.
double ChoiceLogLikelihood(const UtilityDesign& design, const Eigen::VectorXi& choice, const Eigen::MatrixXd& available,
                           const Eigen::VectorXd& b, const Eigen::MatrixXd& sigma) {
  const Eigen::Index n = design.Observations(), p = design.Differences();
  Eigen::MatrixXd M(n, p);
  design.Means(b, M);
  RandomEngine rng;
  rng.Seed(20260101);
  const Eigen::MatrixXd uniforms = OrthantUniforms(p, kOrthantPoints, rng);
  double total = 0.0;
  for (Eigen::Index i = 0; i < n; ++i) {
    std::vector<Eigen::Index> offered;
    for (Eigen::Index j = 0; j < p; ++j) {
      if (available.size() == 0 || available(i, j) != 0.0) offered.push_back(j);
    }
    const auto d = static_cast<Eigen::Index>(offered.size());
    if (d == 0) continue;  // only the base was offered
    Eigen::MatrixXd A = Eigen::MatrixXd::Zero(d, p);
    const int c = choice(i);
    for (Eigen::Index r = 0; r < d; ++r) {
      const Eigen::Index j = offered[static_cast<std::size_t>(r)];
      if (c == 0) {
        A(r, j) = -1.0;
      } else {
        A(r, c - 1) += 1.0;
        if (j != c - 1) A(r, j) -= 1.0;
      }
    }
    const Eigen::MatrixXd L = (A * sigma * A.transpose()).llt().matrixL();
    total += LogOrthantProbability(A * M.row(i).transpose(), L, uniforms.topRows(d));
  }
  return total;
}

// log p(Sigma) with Sigma = Sigma~ / Sigma~_11, Sigma~ ~ inverse Wishart(nu, S), as a density of
// Sigma's free elements: the scale integrated out, c |Sigma|^-(nu+p+1)/2 Gamma(p nu/2)
// (tr(S Sigma^-1)/2)^(-p nu/2), c the inverse Wishart's constant.
double LogInducedCovariancePrior(const Eigen::MatrixXd& sigma, double nu, const Eigen::MatrixXd& S) {
  const auto p = static_cast<double>(sigma.rows());
  const double logPi = std::log(3.14159265358979323846);
  double logMultiGamma = 0.25 * p * (p - 1.0) * logPi;
  for (int j = 1; j <= static_cast<int>(p); ++j) logMultiGamma += std::lgamma(0.5 * nu + 0.5 * (1.0 - j));
  const Eigen::LLT<Eigen::MatrixXd> sigmaFactor(sigma), scaleFactor(S);
  const double logDetSigma = 2.0 * sigmaFactor.matrixL().toDenseMatrix().diagonal().array().log().sum();
  const double logDetS = 2.0 * scaleFactor.matrixL().toDenseMatrix().diagonal().array().log().sum();
  const double trace = (S * sigmaFactor.solve(Eigen::MatrixXd::Identity(sigma.rows(), sigma.rows()))).trace();
  return 0.5 * nu * logDetS - 0.5 * nu * p * std::log(2.0) - logMultiGamma - 0.5 * (nu + p + 1.0) * logDetSigma +
         std::lgamma(0.5 * p * nu) - 0.5 * p * nu * std::log(0.5 * trace);
}

}  // namespace

std::vector<std::string> MNProbit::CovarianceLabels(const std::vector<std::string>& names) {
  std::vector<std::string> labels;
  const std::size_t p = names.size();
  for (std::size_t l = 0; l < p; ++l) {
    for (std::size_t j = l; j < p; ++j) {
      if (j > 0) labels.push_back("Sigma_" + names[j] + "_" + names[l]);
    }
  }
  return labels;
}

bool MNProbit::Sample(const UtilityDesign& design, const Eigen::VectorXi& choice, const Eigen::MatrixXd& available,
                      const LinearPrior& prior, double nu, const Eigen::MatrixXd& S, const EventDispatcher& out,
                      const std::atomic<bool>* interrupt) {
  const Eigen::Index k = design.Coefficients(), p = design.Differences();
  const long chains = Settings().chains;
  auto make = [&](int c) -> std::unique_ptr<GibbsChain> {
    const double offset = chains > 1 ? (2.0 * c / static_cast<double>(chains - 1) - 1.0) * 0.5 : 0.0;
    return std::make_unique<MultinomialProbitChain>(design, choice, available, prior, nu, S,
                                                    Eigen::VectorXd(prior.mean.array() + offset));
  };
  if (!RunChains(make, static_cast<int>(k + CovarianceCount(p)), out, interrupt)) return false;
  double accepted = 0.0;
  for (const auto& chain : Chains()) accepted += static_cast<const MultinomialProbitChain&>(*chain).Acceptance();
  acceptance = accepted / static_cast<double>(chains);

  const Eigen::MatrixXd draws = PoolDraws(k + CovarianceCount(p));
  const Eigen::VectorXd mean = draws.colwise().mean().transpose();
  Eigen::MatrixXd sigma(p, p);
  Eigen::Index c = k;
  for (Eigen::Index l = 0; l < p; ++l) {
    for (Eigen::Index j = l; j < p; ++j) {
      sigma(j, l) = sigma(l, j) = j > 0 ? mean(c++) : 1.0;
    }
  }
  const Eigen::VectorXd bStar = mean.head(k);
  if (Eigen::LLT<Eigen::MatrixXd>(sigma).info() == Eigen::Success) {
    const double kernel = ChoiceLogLikelihood(design, choice, available, bStar, sigma) +
                          mlik::LogNormalDensity(bStar, prior.mean, prior.precision) + LogInducedCovariancePrior(sigma, nu, S);
    logML = mlik::LaplaceMetropolis(kernel, draws);
  }
  return true;
}
