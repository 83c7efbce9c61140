// ARIMA: the sampler of the ARIMA model, its marginal likelihood, and its draws read back.
#include "ARIMA.h"

#include <cmath>
#include <cstdio>
#include <limits>

#include "EventDispatcher.h"
#include "DynamicModel.h"
#include "Gamma.h"
#include "MarginalLikelihood.h"
#include "RandomWalkStep.h"

namespace {

constexpr double kLog2Pi = 1.8378770664093454836;
// Draws from the prior that measure the mass of its stable and invertible region.
constexpr int kRegionDraws = 20000;

bool Stable(const Eigen::VectorXd& phi) {
  return phi.size() == 0 || dynamic::LargestModulus(phi.transpose(), 1) < 1.0;
}
bool Invertible(const Eigen::VectorXd& theta) {
  return theta.size() == 0 || dynamic::LargestModulus(-theta.transpose(), 1) < 1.0;
}

// Where each part sits in (c, phi, theta, b).
struct Layout {
  Eigen::Index c, p, q, kx;
  Eigen::Index Phi() const { return c; }
  Eigen::Index Theta() const { return c + p; }
  Eigen::Index Exogenous() const { return c + p + q; }
  Eigen::Index Size() const { return c + p + q + kx; }
  // The linear block (c, phi, b) taken out of the whole vector, and put back.
  Eigen::VectorXd Linear(const Eigen::VectorXd& all) const {
    Eigen::VectorXd out(c + p + kx);
    out << all.head(c + p), all.tail(kx);
    return out;
  }
};

// The regressors of the linear block over the fitted periods: [1] [w_{t-1} ... w_{t-p}] [x_t].
Eigen::MatrixXd LinearRegressors(const ARIMA::Setup& s, const Layout& l, Eigen::Index n) {
  Eigen::MatrixXd Z(n, l.c + l.p + l.kx);
  if (l.c == 1) Z.col(0).setOnes();
  for (Eigen::Index i = 1; i <= l.p; ++i) Z.col(l.c + i - 1) = s.w.segment(s.presample - i, n);
  if (l.kx > 0) Z.rightCols(l.kx) = s.X.bottomRows(n);
  return Z;
}

// f_t = z_t - theta_1 f_{t-1} - ... - theta_q f_{t-q}, zero before the first period: applies the
// inverse of the moving-average polynomial to every column.
void Filter(const Eigen::VectorXd& theta, const Eigen::MatrixXd& in, Eigen::MatrixXd& out) {
  out = in;
  for (Eigen::Index t = 1; t < in.rows(); ++t) {
    for (Eigen::Index j = 1; j <= theta.size() && j <= t; ++j) out.row(t) -= theta(j - 1) * out.row(t - j);
  }
}

// The sum of squared errors of the moving-average recursion driven by u.
double MovingAverageSSE(const Eigen::VectorXd& theta, const Eigen::VectorXd& u, Eigen::VectorXd& e) {
  double sum = 0.0;
  for (Eigen::Index t = 0; t < u.size(); ++t) {
    double value = u(t);
    for (Eigen::Index j = 1; j <= theta.size() && j <= t; ++j) value -= theta(j - 1) * e(t - j);
    e(t) = value;
    sum += value * value;
  }
  return sum;
}

double LogDiagonalNormal(const Eigen::VectorXd& x, const Eigen::VectorXd& mean, const Eigen::VectorXd& precision) {
  return 0.5 * (precision.array().log().sum() - static_cast<double>(x.size()) * kLog2Pi) -
         0.5 * (precision.array() * (x - mean).array().square()).sum();
}

// The log of theta's conditional density up to a constant, given the errors' driving series u =
// w - Z (c, phi, b) and tau; `e` is scratch space.
double ThetaLogTarget(const ARIMA::Setup& s, const Layout& l, const Eigen::VectorXd& theta, const Eigen::VectorXd& u,
                      double tau, Eigen::VectorXd& e) {
  return -0.5 * tau * MovingAverageSSE(theta, u, e) +
         LogDiagonalNormal(theta, s.mean.segment(l.Theta(), l.q), s.precision.segment(l.Theta(), l.q));
}

class ARIMAChain : public GibbsChain {
public:
  ARIMAChain(const ARIMA::Setup& s, const Layout& l, const Eigen::MatrixXd& Z, const Eigen::VectorXd& y,
             const LinearPrior& linearPrior, const Eigen::VectorXd& start, double tau)
      : m_s(s), m_l(l), m_Z(Z), m_y(y), m_prior(linearPrior), m_tau(tau),
        m_linear(l.Linear(start)), m_candidate(m_linear.size()), m_z(m_linear.size()),
        m_theta(start.segment(l.Theta(), l.q)), m_u(y.size()), m_e(y.size()), m_yf(y),
        m_Zf(Z), m_yMatrix(y),
        m_step(Eigen::MatrixXd::Identity(l.q, l.q), 0.1, l.q == 1 ? 0.44 : 0.3) {}

  // Keeps theta at `theta` from now on (the reduced run of Chib and Jeliazkov's method).
  void FixTheta(const Eigen::VectorXd& theta) {
    m_theta = theta;
    Filter(m_theta, m_Z, m_Zf);
    Filter(m_theta, m_yMatrix, m_yfMatrix);
    m_yf = m_yfMatrix.col(0);
    m_thetaFixed = true;
  }
  const Eigen::VectorXd& Linear() const { return m_linear; }
  double Tau() const { return m_tau; }
  const RandomWalkStep& Step() const { return m_step; }

  void Sweep(RandomEngine& rng) override {
    // The series and regressors filtered by theta: a regression with independent errors.
    if (m_l.q > 0 && !m_thetaFixed) {
      Filter(m_theta, m_Z, m_Zf);
      Filter(m_theta, m_yMatrix, m_yfMatrix);
      m_yf = m_yfMatrix.col(0);
    }
    // (c, phi, b) | theta, tau: the Normal conditional, kept when stable.
    m_llt.compute(m_tau * m_Zf.transpose() * m_Zf + m_prior.precision);
    DrawCanonicalNormal(m_llt, m_tau * m_Zf.transpose() * m_yf + m_prior.precisionTimesMean, rng, m_z, m_candidate);
    ++m_linearTries;
    if (Stable(m_candidate.segment(m_l.Phi(), m_l.p))) {
      m_linear = m_candidate;
      ++m_linearKept;
    }
    // tau | rest ~ Gamma(a + n/2, b + SSE/2).
    const double sse = (m_yf - m_Zf * m_linear).squaredNorm();
    m_tau = dist::GammaDraw(rng, m_s.a + 0.5 * static_cast<double>(m_y.size()), m_s.b + 0.5 * sse);
    // theta | rest: random walk, invertible proposals only.
    if (m_l.q > 0 && !m_thetaFixed) {
      m_u = m_y - m_Z * m_linear;
      double current = ThetaLogTarget(m_s, m_l, m_theta, m_u, m_tau, m_e);
      m_step.Step(m_theta, current, [&](const Eigen::VectorXd& theta) {
        return Invertible(theta) ? ThetaLogTarget(m_s, m_l, theta, m_u, m_tau, m_e)
                                 : -std::numeric_limits<double>::infinity();
      }, rng);
    }
  }

  void Record(DrawRow row) const override {
    const Eigen::Index linearHead = m_l.c + m_l.p;
    row.head(linearHead) = m_linear.head(linearHead).transpose();
    row.segment(m_l.Theta(), m_l.q) = m_theta.transpose();
    row.segment(m_l.Exogenous(), m_l.kx) = m_linear.tail(m_l.kx).transpose();
    row(m_l.Size()) = 1.0 / m_tau;
  }

  void EndBurnin() override {
    m_step.EndBurnin();
    m_linearTries = m_linearKept = 0;
  }

  double LinearAcceptance() const { return m_linearTries > 0 ? static_cast<double>(m_linearKept) / static_cast<double>(m_linearTries) : 0.0; }
  double MovingAverageAcceptance() const { return m_step.AcceptanceRate(); }

private:

  const ARIMA::Setup& m_s;
  Layout m_l;
  const Eigen::MatrixXd& m_Z;
  const Eigen::VectorXd& m_y;
  const LinearPrior& m_prior;
  double m_tau;
  Eigen::VectorXd m_linear, m_candidate, m_z, m_theta, m_u, m_e, m_yf;
  Eigen::MatrixXd m_Zf, m_yMatrix, m_yfMatrix;
  Eigen::LLT<Eigen::MatrixXd> m_llt;
  RandomWalkStep m_step;
  long m_linearTries = 0, m_linearKept = 0;
  bool m_thetaFixed = false;
};

// The prior mass of the stable (or invertible) region of a diagonal Normal prior, by simulation.
double RegionMass(const Eigen::VectorXd& mean, const Eigen::VectorXd& precision, bool movingAverage) {
  if (mean.size() == 0) return 1.0;
  RandomEngine rng;
  rng.Seed(20261125);
  Eigen::VectorXd x(mean.size());
  int inside = 0;
  for (int r = 0; r < kRegionDraws; ++r) {
    for (Eigen::Index i = 0; i < x.size(); ++i) x(i) = mean(i) + rng.Normal() / std::sqrt(precision(i));
    inside += (movingAverage ? Invertible(x) : Stable(x)) ? 1 : 0;
  }
  return std::max(1, inside) / static_cast<double>(kRegionDraws);
}

// Chib and Jeliazkov's estimate at (gamma*, theta*, tau*), gamma = (c, phi, b), with `logKernel`
// the log of likelihood times prior there, from the pooled draws (log tau in the last column), a
// reduced run with theta held at theta*, and the random walk of a chain (`step`; none without
// theta).
double ChibJeliazkov(const ARIMA::Setup& s, const Layout& l, const Eigen::MatrixXd& Z, const Eigen::VectorXd& y,
                     const LinearPrior& prior, const Eigen::MatrixXd& pooled, const Eigen::VectorXd& gammaStar,
                     const Eigen::VectorXd& thetaStar, double tauStar, double logKernel, const RandomWalkStep* step,
                     std::uint64_t seed) {
  const Eigen::Index n = y.size();
  const double shape = s.a + 0.5 * static_cast<double>(n);
  // At theta*, the filtered data give the Normal conditional of (c, phi, b) for any tau.
  Eigen::MatrixXd Zf, yf;
  Filter(thetaStar, Z, Zf);
  Filter(thetaStar, Eigen::MatrixXd(y), yf);
  const Eigen::MatrixXd ZtZ = Zf.transpose() * Zf;
  const Eigen::VectorXd Zty = Zf.transpose() * yf.col(0);
  Eigen::LLT<Eigen::MatrixXd> llt;
  Eigen::VectorXd mean;
  auto conditional = [&](double t) {
    llt.compute(t * ZtZ + prior.precision);
    mean = llt.solve(t * Zty + prior.precisionTimesMean);
  };
  auto logNormalAt = [&](const Eigen::VectorXd& x) {
    const Eigen::VectorXd u = llt.matrixU() * (x - mean);
    return llt.matrixLLT().diagonal().array().log().sum() - 0.5 * static_cast<double>(x.size()) * kLog2Pi -
           0.5 * u.squaredNorm();
  };
  // tau's ordinate is a Gamma density.
  const double sseStar = (yf.col(0) - Zf * gammaStar).squaredNorm();
  const double logTau = mlik::LogGammaDensity(tauStar, shape, s.b + 0.5 * sseStar);

  // The reduced run: theta held at theta*, from the posterior means.
  const Eigen::Index draws = std::min<Eigen::Index>(pooled.rows(), 10000);
  RandomEngine rng;
  rng.Seed(seed);
  Eigen::VectorXd start = Eigen::VectorXd::Zero(l.Size());
  start.head(l.c + l.p) = gammaStar.head(l.c + l.p);
  start.segment(l.Theta(), l.q) = thetaStar;
  start.tail(l.kx) = gammaStar.tail(l.kx);
  ARIMAChain reduced(s, l, Z, y, prior, start, tauStar);
  reduced.FixTheta(thetaStar);
  for (int b = 0; b < 200; ++b) reduced.Sweep(rng);
  Eigen::MatrixXd gammas(draws, gammaStar.size());
  Eigen::VectorXd taus(draws);
  for (Eigen::Index j = 0; j < draws; ++j) {
    reduced.Sweep(rng);
    gammas.row(j) = reduced.Linear().transpose();
    taus(j) = reduced.Tau();
  }
  // (c, phi, b)'s ordinate: the step's proposal density at gamma* averaged over the reduced run
  // (gamma* is stable, so always accepted), over the share of proposals from the conditional
  // given gamma* that are stable.
  Eigen::VectorXd numerator(draws);
  int stable = 0;
  Eigen::VectorXd z(gammaStar.size()), proposal(gammaStar.size());
  for (Eigen::Index j = 0; j < draws; ++j) {
    conditional(taus(j));
    numerator(j) = logNormalAt(gammaStar);
    conditional(dist::GammaDraw(rng, shape, s.b + 0.5 * sseStar));
    for (Eigen::Index i = 0; i < z.size(); ++i) z(i) = rng.Normal();
    proposal = mean + llt.matrixU().solve(z);
    stable += Stable(proposal.segment(l.Phi(), l.p)) ? 1 : 0;
  }
  const double logGamma = mlik::LogMeanExp(numerator) - std::log(std::max(1, stable) / static_cast<double>(draws));

  // theta's ordinate: moves into theta* from the posterior draws over moves out of it from the
  // reduced run's draws, with the random walk's proposal of the first chain.
  double logTheta = 0.0;
  if (l.q > 0) {
    Eigen::VectorXd u(n), e(n), moveIn(pooled.rows()), moveOut(draws), thetaG(l.q), gammaG(gammaStar.size());
    for (Eigen::Index g = 0; g < pooled.rows(); ++g) {
      thetaG = pooled.row(g).segment(l.Theta(), l.q).transpose();
      gammaG = l.Linear(pooled.row(g).head(l.Size()).transpose());
      const double t = std::exp(pooled(g, l.Size()));  // the pooled draws hold log tau
      u = y - Z * gammaG;
      const double ratio = ThetaLogTarget(s, l, thetaStar, u, t, e) - ThetaLogTarget(s, l, thetaG, u, t, e);
      moveIn(g) = std::min(0.0, ratio) + step->LogProposalDensity(thetaG, thetaStar);
    }
    RandomWalkStep proposer = *step;
    Eigen::VectorXd thetaNew(l.q);
    for (Eigen::Index j = 0; j < draws; ++j) {
      proposer.Propose(thetaStar, rng, thetaNew);
      if (!Invertible(thetaNew)) {
        moveOut(j) = -std::numeric_limits<double>::infinity();
        continue;
      }
      u = y - Z * gammas.row(j).transpose();
      moveOut(j) = std::min(0.0, ThetaLogTarget(s, l, thetaNew, u, taus(j), e) - ThetaLogTarget(s, l, thetaStar, u, taus(j), e));
    }
    logTheta = mlik::LogMeanExp(moveIn) - mlik::LogMeanExp(moveOut);
  }
  return logKernel - logTau - logGamma - logTheta;
}

}  // namespace

std::vector<std::string> ARIMA::Labels(const std::string& series, const std::vector<std::string>& exogenous,
                                       Eigen::Index p, Eigen::Index q, bool constant) {
  std::vector<std::string> labels;
  if (constant) labels.push_back(series + "$constant");
  for (Eigen::Index i = 1; i <= p; ++i) labels.push_back(series + "$ar" + std::to_string(i));
  for (Eigen::Index j = 1; j <= q; ++j) labels.push_back(series + "$ma" + std::to_string(j));
  for (const std::string& x : exogenous) labels.push_back(series + "$" + x);
  labels.push_back("sigma2$" + series);
  return labels;
}

bool ARIMA::Sample(const Setup& s, const EventDispatcher& out, const std::atomic<bool>* interrupt) {
  const Layout l{s.constant ? 1 : 0, s.p, s.q, s.X.cols()};
  const Eigen::Index n = s.w.size() - s.presample;
  const Eigen::MatrixXd Z = LinearRegressors(s, l, n);
  const Eigen::VectorXd y = s.w.tail(n);
  const Eigen::VectorXd linearMean = l.Linear(s.mean), linearPrecision = l.Linear(s.precision);
  const LinearPrior prior = LinearPrior::Combine(linearMean, linearPrecision.asDiagonal(), Eigen::MatrixXd(0, linearMean.size()),
                                                 Eigen::VectorXd(0), Eigen::MatrixXd(0, 0));
  // Start at the least-squares fit without moving-average terms, its autoregressive part pulled
  // inside the stable region when it is not there.
  Eigen::VectorXd fit = (Z.transpose() * Z + prior.precision).llt().solve(Z.transpose() * y + prior.precisionTimesMean);
  while (!Stable(fit.segment(l.Phi(), l.p))) fit.segment(l.Phi(), l.p) *= 0.5;
  Eigen::VectorXd start = Eigen::VectorXd::Zero(l.Size());
  start.head(l.c + l.p) = fit.head(l.c + l.p);
  start.tail(l.kx) = fit.tail(l.kx);
  const double baseTau = (static_cast<double>(n) + 1.0) / ((y - Z * fit).squaredNorm() + 1.0);
  const long chains = Settings().chains;
  auto make = [&](int c) -> std::unique_ptr<GibbsChain> {
    const double spread = chains > 1 ? std::pow(4.0, 2.0 * c / static_cast<double>(chains - 1) - 1.0) : 1.0;
    return std::make_unique<ARIMAChain>(s, l, Z, y, prior, start, baseTau * spread);
  };
  const int parameters = static_cast<int>(l.Size() + 1);
  if (!RunChains(make, parameters, out, interrupt)) return false;

  stableAcceptance = movingAverageAcceptance = 0.0;
  for (const auto& chain : Chains()) {
    const auto& c = static_cast<const ARIMAChain&>(*chain);
    stableAcceptance += c.LinearAcceptance() / static_cast<double>(chains);
    movingAverageAcceptance += c.MovingAverageAcceptance() / static_cast<double>(chains);
  }

  // Lewis & Raftery on (c, phi, theta, b, log tau); the prior is normalised over its region.
  Eigen::MatrixXd pooled(Settings().KeptDraws() * chains, parameters);
  for (long c = 0; c < chains; ++c) pooled.middleRows(c * Settings().KeptDraws(), Settings().KeptDraws()) = Draws()[c];
  pooled.col(l.Size()) = -pooled.col(l.Size()).array().log();
  const Eigen::RowVectorXd centre = pooled.colwise().mean();
  const Eigen::VectorXd all = centre.head(l.Size()).transpose();
  const double tau = std::exp(centre(l.Size()));
  Eigen::VectorXd linear = l.Linear(all), e(n);
  const Eigen::VectorXd theta = all.segment(l.Theta(), l.q);
  const double sse = MovingAverageSSE(theta, y - Z * linear, e);
  const double logLikelihood = 0.5 * static_cast<double>(n) * (std::log(tau) - kLog2Pi) - 0.5 * tau * sse;
  const double logPrior = LogDiagonalNormal(all, s.mean, s.precision) -
                          std::log(RegionMass(s.mean.segment(l.Phi(), l.p), s.precision.segment(l.Phi(), l.p), false)) -
                          std::log(RegionMass(s.mean.segment(l.Theta(), l.q), s.precision.segment(l.Theta(), l.q), true)) +
                          mlik::LogGammaDensity(tau, s.a, s.b) + std::log(tau);
  const bool inside = Stable(all.segment(l.Phi(), l.p)) && Invertible(theta);
  logML = inside ? mlik::LaplaceMetropolis(logLikelihood + logPrior, pooled) : std::nan("");
  const RandomWalkStep* step = l.q > 0 ? &static_cast<const ARIMAChain&>(*Chains().front()).Step() : nullptr;
  logML_CJ = inside ? ChibJeliazkov(s, l, Z, y, prior, pooled, linear, theta, tau, logLikelihood + logPrior - std::log(tau),
                                    step, ChainSeed(Settings().seed, 1000))
                    : std::nan("");
  return true;
}

bool MIM_ARIMA::LayoutHolds() const {
  const double p = ScalarResult("lags"), q = ScalarResult("ma"), constant = ScalarResult("constant");
  if (std::isnan(p) || std::isnan(q) || std::isnan(constant) || SeriesNames().size() != 1) return false;
  return ARIMA::Labels(SeriesNames().front(), ExogenousNames(), static_cast<Eigen::Index>(p),
                       static_cast<Eigen::Index>(q), constant != 0.0) == Labels();
}

DynamicParameters MIM_ARIMA::ParametersOfDraw(const Eigen::Ref<const Eigen::RowVectorXd>& row) const {
  const Eigen::Index c = ScalarResult("constant") != 0.0 ? 1 : 0;
  const auto p = static_cast<Eigen::Index>(ScalarResult("lags"));
  const auto q = static_cast<Eigen::Index>(ScalarResult("ma"));
  const auto kx = static_cast<Eigen::Index>(ExogenousNames().size());
  DynamicParameters out;
  out.c = Eigen::VectorXd::Constant(1, c == 1 ? row(0) : 0.0);
  out.A = row.segment(c, p);
  out.Theta = row.segment(c + p, q);
  out.B = row.segment(c + p + q, kx);
  out.Sigma = Eigen::MatrixXd::Constant(1, 1, row(c + p + q + kx));
  return out;
}

void MIM_ARIMA::PrintResults(const EventDispatcher& out) const {
  Model::PrintResults(out);
  const std::shared_ptr<Eigen::MatrixXd> acceptance = GetpMatrix("acceptance");
  if (!acceptance || acceptance->size() != 2) return;
  char text[320];
  std::string lines;
  if (ScalarResult("lags") > 0) {
    std::snprintf(text, sizeof text,
                "\nStationarity imposed: the draws of the regression block are kept only when the autoregressive "
                "part is stable (%.1f%% kept).\n",
                100.0 * (*acceptance)(0));
    lines += text;
  }
  if (ScalarResult("ma") > 0) {
    std::snprintf(text, sizeof text,
                  "%sInvertibility imposed: moving-average proposals outside the invertible region are refused "
                  "(random-walk acceptance rate %.1f%%).\n",
                  lines.empty() ? "\n" : "", 100.0 * (*acceptance)(1));
    lines += text;
  }
  out.Print(lines);
}
