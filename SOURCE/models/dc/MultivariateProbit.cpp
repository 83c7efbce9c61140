// MultivariateProbit: the sweep, R's parameterisations and the marginal likelihood.
#include "MultivariateProbit.h"

#include <cmath>
#include <memory>

#include "CorrelatedUtilities.h"
#include "MarginalLikelihood.h"
#include "OrthantProbability.h"
#include "SliceStep.h"

namespace {

constexpr double kNegInf = -std::numeric_limits<double>::infinity();
// Initial bracket of the slice steps: about the posterior spread of a correlation from a few
// hundred observations, widened by stepping out when it is larger.
constexpr double kSliceWidth = 0.2;
constexpr Eigen::Index kOrthantPoints = 500;

// -n/2 log|R| - tr(R^-1 S)/2; -infinity when R is not positive definite.
double CorrelationLogLikelihood(const Eigen::MatrixXd& R, const Eigen::MatrixXd& S, double n) {
  const Eigen::LLT<Eigen::MatrixXd> factor(R);
  if (factor.info() != Eigen::Success) return kNegInf;
  const auto L = factor.matrixL();
  const double logDet = 2.0 * L.toDenseMatrix().diagonal().array().log().sum();
  if (!std::isfinite(logDet)) return kNegInf;
  return -0.5 * n * logDet - 0.5 * factor.solve(S).trace();
}

// The equations' regressors side by side: b = (b_1, ..., b_p), m_ie = x_ie'b_e.
class SystemDesign {
public:
  explicit SystemDesign(const std::vector<Eigen::MatrixXd>& X) : m_X(X) {
    Eigen::Index offset = 0;
    for (const auto& x : X) {
      m_offset.push_back(offset);
      offset += x.cols();
    }
    m_k = offset;
    const std::size_t p = X.size();
    for (std::size_t e = 0; e < p; ++e) {
      for (std::size_t f = 0; f < p; ++f) m_XtX.push_back(X[e].transpose() * X[f]);
    }
  }
  Eigen::Index Coefficients() const { return m_k; }
  Eigen::Index Equations() const { return static_cast<Eigen::Index>(m_X.size()); }
  void Means(const Eigen::VectorXd& b, Eigen::MatrixXd& M) const {
    for (std::size_t e = 0; e < m_X.size(); ++e) {
      M.col(static_cast<Eigen::Index>(e)).noalias() = m_X[e] * b.segment(m_offset[e], m_X[e].cols());
    }
  }
  // Omega = sum_i X_i'HX_i, c = sum_i X_i'H w_i, given WH = W H.
  void CrossProducts(const Eigen::MatrixXd& H, const Eigen::MatrixXd& WH, Eigen::MatrixXd& omega, Eigen::VectorXd& c) const {
    const std::size_t p = m_X.size();
    for (std::size_t e = 0; e < p; ++e) {
      for (std::size_t f = 0; f < p; ++f) {
        omega.block(m_offset[e], m_offset[f], m_X[e].cols(), m_X[f].cols()) =
            H(static_cast<Eigen::Index>(e), static_cast<Eigen::Index>(f)) * m_XtX[e * p + f];
      }
      c.segment(m_offset[e], m_X[e].cols()).noalias() = m_X[e].transpose() * WH.col(static_cast<Eigen::Index>(e));
    }
  }

private:
  const std::vector<Eigen::MatrixXd>& m_X;
  std::vector<Eigen::Index> m_offset;
  std::vector<Eigen::MatrixXd> m_XtX;
  Eigen::Index m_k = 0;
};

class MVProbitChain : public GibbsChain {
public:
  MVProbitChain(const Eigen::MatrixXd& Y, const SystemDesign& design, const LinearPrior& prior,
                CorrelationStructure structure, Eigen::VectorXd start)
      : m_Y(Y), m_design(design), m_prior(prior), m_structure(structure), m_b(std::move(start)) {
    const Eigen::Index n = Y.rows(), p = Y.cols(), k = design.Coefficients();
    m_theta = Eigen::VectorXd::Zero(MVProbit::CorrelationCount(structure, p));
    m_R = Eigen::MatrixXd::Identity(p, p);
    m_H = m_R;
    m_W = (2.0 * Y.array() - 1.0).matrix();  // inside each outcome's region
    m_M.resize(n, p);
    m_WH.resize(n, p);
    m_omega.resize(k, k);
    m_c.resize(k);
    m_mean.resize(k);
    m_z.resize(k);
  }

  void Sweep(RandomEngine& rng) override {
    const Eigen::Index n = m_Y.rows(), p = m_Y.cols();
    m_design.Means(m_b, m_M);
    DrawCorrelatedBinaryUtilities(m_Y, m_M, m_H, 0, n, rng, m_W);
    // b given the utilities and R.
    m_WH.noalias() = m_W * m_H;
    m_design.CrossProducts(m_H, m_WH, m_omega, m_c);
    m_omega += m_prior.precision;
    m_c += m_prior.precisionTimesMean;
    m_factor.compute(m_omega);
    m_mean = m_factor.solve(m_c);
    for (Eigen::Index j = 0; j < m_z.size(); ++j) m_z(j) = rng.Normal();
    m_b = m_mean + m_factor.matrixU().solve(m_z);
    // R's parameters given the residuals' cross-products.
    m_design.Means(m_b, m_M);
    m_M = m_W - m_M;
    m_S.noalias() = m_M.transpose() * m_M;
    const double observations = static_cast<double>(n);
    double lower = -1.0;
    if (m_structure == CorrelationStructure::Common) lower = -1.0 / static_cast<double>(p - 1);
    for (Eigen::Index j = 0; j < m_theta.size(); ++j) {
      auto logDensity = [&](double value) {
        const double kept = m_theta(j);
        m_theta(j) = value;
        const double result = CorrelationLogLikelihood(MVProbit::Correlation(m_structure, m_theta, p), m_S, observations);
        m_theta(j) = kept;
        return result;
      };
      m_theta(j) = SliceStep(m_theta(j), lower, 1.0, kSliceWidth, logDensity, rng);
    }
    m_R = MVProbit::Correlation(m_structure, m_theta, p);
    m_H = m_R.llt().solve(Eigen::MatrixXd::Identity(p, p));
  }

  void Record(DrawRow row) const override {
    const Eigen::Index k = m_b.size();
    row.head(k) = m_b.transpose();
    const double sign = m_structure == CorrelationStructure::OneFactor && m_theta(0) < 0.0 ? -1.0 : 1.0;
    row.segment(k, m_theta.size()) = sign * m_theta.transpose();
  }

private:
  const Eigen::MatrixXd& m_Y;
  const SystemDesign& m_design;
  const LinearPrior& m_prior;
  CorrelationStructure m_structure;
  Eigen::VectorXd m_b, m_theta, m_c, m_mean, m_z;
  Eigen::MatrixXd m_R, m_H, m_W, m_M, m_WH, m_omega, m_S;
  Eigen::LLT<Eigen::MatrixXd> m_factor;
};

// log of the prior density of R's recorded parameters.
double LogCorrelationPrior(CorrelationStructure structure, Eigen::Index p) {
  const auto q = static_cast<double>(p);
  if (structure == CorrelationStructure::Common) return -std::log(1.0 + 1.0 / (q - 1.0));
  // Uniform loadings on (-1, 1), folded onto lambda_1 >= 0.
  if (structure == CorrelationStructure::OneFactor) return -(q - 1.0) * std::log(2.0);
  // Uniform over correlation matrices: minus the log of their volume,
  // 2^(sum_k (p-k)^2) prod_k B(b_k, b_k)^(p-k), b_k = (p - k + 1)/2.
  double logVolume = 0.0;
  for (Eigen::Index k = 1; k < p; ++k) {
    const auto m = static_cast<double>(p - k);
    const double b = 0.5 * (m + 1.0);
    logVolume += m * m * std::log(2.0) + m * (2.0 * std::lgamma(b) - std::lgamma(2.0 * b));
  }
  return -logVolume;
}

}  // namespace

Eigen::Index MVProbit::CorrelationCount(CorrelationStructure structure, Eigen::Index p) {
  switch (structure) {
    case CorrelationStructure::Common: return 1;
    case CorrelationStructure::OneFactor: return p;
    default: return p * (p - 1) / 2;
  }
}

Eigen::MatrixXd MVProbit::Correlation(CorrelationStructure structure, const Eigen::VectorXd& theta, Eigen::Index p) {
  Eigen::MatrixXd R = Eigen::MatrixXd::Identity(p, p);
  if (structure == CorrelationStructure::Common) {
    R.setConstant(theta(0));
    R.diagonal().setOnes();
  } else if (structure == CorrelationStructure::OneFactor) {
    R = theta * theta.transpose();
    R.diagonal().setOnes();
  } else {
    Eigen::Index c = 0;
    for (Eigen::Index f = 0; f < p; ++f) {
      for (Eigen::Index e = f + 1; e < p; ++e) R(e, f) = R(f, e) = theta(c++);
    }
  }
  return R;
}

std::vector<std::string> MVProbit::CorrelationLabels(CorrelationStructure structure, const std::vector<std::string>& names) {
  std::vector<std::string> labels;
  if (structure == CorrelationStructure::Common) return {"rho"};
  if (structure == CorrelationStructure::OneFactor) {
    for (const auto& name : names) labels.push_back("lambda_" + name);
    return labels;
  }
  for (std::size_t f = 0; f < names.size(); ++f) {
    for (std::size_t e = f + 1; e < names.size(); ++e) labels.push_back("rho_" + names[e] + "_" + names[f]);
  }
  return labels;
}

bool MVProbit::Sample(const Eigen::MatrixXd& Y, const std::vector<Eigen::MatrixXd>& X, const LinearPrior& prior,
                      const EventDispatcher& out, const std::atomic<bool>* interrupt) {
  const SystemDesign design(X);
  const Eigen::Index k = design.Coefficients(), p = Y.cols(), r = CorrelationCount(m_structure, p);
  const long chains = Settings().chains;
  auto make = [&](int c) -> std::unique_ptr<GibbsChain> {
    const double offset = chains > 1 ? (2.0 * c / static_cast<double>(chains - 1) - 1.0) * 0.5 : 0.0;
    return std::make_unique<MVProbitChain>(Y, design, prior, m_structure, Eigen::VectorXd(prior.mean.array() + offset));
  };
  if (!RunChains(make, static_cast<int>(k + r), out, interrupt)) return false;

  // Lewis & Raftery: P(y_i | b, R) is the probability of an orthant, sign_e w_ie > 0.
  const Eigen::MatrixXd draws = PoolDraws(k + r);
  const Eigen::VectorXd mean = draws.colwise().mean().transpose();
  const Eigen::MatrixXd R = Correlation(m_structure, mean.tail(r), p);
  if (Eigen::LLT<Eigen::MatrixXd>(R).info() != Eigen::Success) return true;
  Eigen::MatrixXd M(Y.rows(), p);
  design.Means(mean.head(k), M);
  RandomEngine rng;
  rng.Seed(20260102);
  const Eigen::MatrixXd uniforms = OrthantUniforms(p, kOrthantPoints, rng);
  double logLikelihood = 0.0;
  Eigen::VectorXd sign(p);
  for (Eigen::Index i = 0; i < Y.rows(); ++i) {
    sign = (2.0 * Y.row(i).array() - 1.0).matrix().transpose();
    const Eigen::MatrixXd L = (sign.asDiagonal() * R * sign.asDiagonal()).llt().matrixL();
    logLikelihood += LogOrthantProbability(sign.cwiseProduct(M.row(i).transpose()), L, uniforms);
  }
  logML = mlik::LaplaceMetropolis(
      logLikelihood + mlik::LogNormalDensity(mean.head(k), prior.mean, prior.precision) + LogCorrelationPrior(m_structure, p),
      draws);
  return true;
}
