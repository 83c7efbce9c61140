// StochasticFrontier: the frontier's Gibbs sampler and its marginal likelihood.
#include "StochasticFrontier.h"

#include <cmath>

#include "Gamma.h"
#include "Decompositions.h"
#include "MarginalLikelihood.h"
#include "ObservationBlocks.h"
#include "RandomIntercepts.h"
#include "RandomWalkStep.h"

namespace {

// What every chain reads: the data, their cross-products and the firms.
struct FrontierData {
  const Eigen::VectorXd& y;
  const Eigen::MatrixXd& X;
  Eigen::MatrixXd XtX;
  double sign;  // 1 production, -1 cost
  const PanelGroups* groups;  // null without firm effects
  const StochasticFrontier::Priors& priors;
  Eigen::Index constant;  // the column of ones among the regressors, -1 when there is none
};

// The main run, and the reduced runs of Chib's method: the inefficiency's parameters fixed, then
// tau fixed too.
enum class FrontierRun { Main, FixedInefficiency, FixedInefficiencyAndTau };

class FrontierChain : public GibbsChain {
public:
  FrontierChain(const FrontierData& data, std::unique_ptr<Inefficiency> inefficiency, Eigen::VectorXd b, double tau,
                double startU, int threads, FrontierRun run = FrontierRun::Main)
      : m_data(data), m_threads(threads), m_run(run), m_ineff(std::move(inefficiency)), m_b(std::move(b)), m_tau(tau),
        m_u(Eigen::VectorXd::Constant(data.y.size(), startU)), m_index(data.y.size()), m_w(data.y.size()),
        m_ystar(data.y.size()), m_Xtz(m_b.size()), m_z(m_b.size()), m_thetaRow(m_ineff->Count()),
        m_effSum(Eigen::VectorXd::Zero(data.y.size())), m_uSum(Eigen::VectorXd::Zero(data.y.size())),
        m_shiftStep(Eigen::MatrixXd::Identity(1, 1), 0.1 * startU, 0.44), m_shift(1) {
    if (run == FrontierRun::Main) m_ineff->Start(startU);  // the reduced runs' copies come fixed
    if (data.groups) {
      m_effects = Eigen::VectorXd::Zero(data.groups->Count());
      m_weights.resize(data.y.size());
      m_kappa.resize(data.y.size());
      m_effectStep = std::make_unique<RandomInterceptStep>(data.X, *data.groups, data.priors.coefficients);
    }
  }

  void Sweep(RandomEngine& rng) override {
    const Eigen::Index n = m_data.y.size();
    // theta | u (or | b, a, tau with u integrated out), then u | b, a, tau, theta, both through
    // w = s (x'b + a - y) = u - s v.
    m_index.noalias() = m_data.X * m_b;
    if (m_data.groups) m_data.groups->AddEffects(m_effects, 0, n, m_index);
    m_w = m_data.sign * (m_index - m_data.y);
    if (m_run == FrontierRun::Main) m_ineff->DrawParameters(m_u, m_w, m_tau, rng);
    if (!m_blocks) m_blocks = std::make_unique<ObservationBlocks>(n, rng, m_threads);
    m_blocks->Run([&](Eigen::Index, Eigen::Index first, Eigen::Index end, RandomEngine& blockRng) {
      m_ineff->DrawInefficiency(m_w, m_tau, first, end, blockRng, m_u);
    });
    // b (and a) | u, tau: the regression of y + s u on x.
    m_ystar = m_data.y + m_data.sign * m_u;
    double squares = 0.0;
    if (!m_data.groups) {
      m_Xtz.noalias() = m_data.X.transpose() * m_ystar;
      m_llt.compute(m_tau * m_data.XtX + m_data.priors.coefficients.precision);
      DrawCanonicalNormal(m_llt, m_tau * m_Xtz + m_data.priors.coefficients.precisionTimesMean, rng, m_z, m_b);
      squares = std::max(0.0, m_ystar.squaredNorm() - 2.0 * m_b.dot(m_Xtz) + m_b.dot(m_data.XtX * m_b));
    } else {
      m_weights.setConstant(m_tau);
      m_kappa = m_tau * m_ystar;
      m_effectStep->DrawWeighted(m_kappa, m_weights, m_omega, rng, m_b, m_effects);
      m_index.noalias() = m_data.X * m_b;
      m_data.groups->AddEffects(m_effects, 0, n, m_index);
      squares = (m_ystar - m_index).squaredNorm();
      // omega | a ~ Gamma(a_re + G/2, b_re + a'a/2).
      m_omega = dist::GammaDraw(rng, m_data.priors.aRe + 0.5 * static_cast<double>(m_effects.size()),
                                m_data.priors.bRe + 0.5 * m_effects.squaredNorm());
    }
    if (m_data.constant >= 0) ShiftInefficiency(rng);
    // tau | b, a, u ~ Gamma(a + n/2, b + |y + s u - x'b - a|^2 / 2).
    m_squares = squares;
    if (m_run != FrontierRun::FixedInefficiencyAndTau) {
      m_tau = dist::GammaDraw(rng, m_data.priors.a + 0.5 * static_cast<double>(n), m_data.priors.b + 0.5 * squares);
    }
    if (m_keeping) {
      m_effSum += (-m_u).array().exp().matrix();
      m_uSum += m_u;
      ++m_kept;
    }
  }

  // b, the determinants' coefficients, tau, [omega], the inefficiency's other parameters; then,
  // for Chib's ordinate of the inefficiency's parameters, the statistic of u their conditional
  // depends on (dropped from what the model keeps). The reduced runs record what the ordinates of
  // tau (the squared residuals) and of b (X'(y + s u)) need.
  void Record(DrawRow row) const override {
    if (m_run == FrontierRun::FixedInefficiency) {
      row(0) = m_squares;
      return;
    }
    if (m_run == FrontierRun::FixedInefficiencyAndTau) {
      row.head(m_Xtz.size()) = m_Xtz.transpose();
      return;
    }
    const Eigen::Index k = m_b.size(), p = m_ineff->DeterminantCount();
    m_ineff->Record(m_thetaRow);
    row.head(k) = m_b.transpose();
    row.segment(k, p) = m_thetaRow.head(p);
    Eigen::Index at = k + p;
    row(at++) = m_tau;
    if (m_data.groups) row(at++) = m_omega;
    row.segment(at, m_thetaRow.size() - p) = m_thetaRow.tail(m_thetaRow.size() - p);
    if (row.size() > at + m_thetaRow.size() - p) row(at + m_thetaRow.size() - p) = m_ineff->SufficientStatistic(m_u);
  }

  void EndBurnin() override {
    m_shiftStep.EndBurnin();
    m_ineff->EndBurnin();
    m_keeping = true;
  }

  const Eigen::VectorXd& EfficiencySum() const { return m_effSum; }
  const Eigen::VectorXd& InefficiencySum() const { return m_uSum; }
  long Kept() const { return m_kept; }
  const Inefficiency& Distribution() const { return *m_ineff; }

private:
  // The intercept and every u_i move together by the same amount (the residuals v stay as they
  // are): a Metropolis-Hastings step along the direction in which the intercept and the level of
  // u are confounded, which single-component Gibbs steps cross slowly. Its target is the
  // density of the shifted u times the coefficients' prior at the shifted intercept.
  void ShiftInefficiency(RandomEngine& rng) {
    const Eigen::Index c = m_data.constant;
    const LinearPrior& prior = m_data.priors.coefficients;
    const double slope = prior.precision.row(c).dot(m_b - prior.mean), curvature = prior.precision(c, c);
    auto logTarget = [&](const Eigen::VectorXd& shift) {
      const double s = m_data.sign * shift(0);  // the intercept moves by s times the shift of u
      return m_ineff->LogDensitySum(m_u, shift(0)) - s * slope - 0.5 * s * s * curvature;
    };
    m_shift(0) = 0.0;
    double current = logTarget(m_shift);
    if (m_shiftStep.Step(m_shift, current, logTarget, rng)) {
      m_u.array() += m_shift(0);
      m_b(c) += m_data.sign * m_shift(0);
    }
  }

  const FrontierData& m_data;
  int m_threads;
  FrontierRun m_run;
  double m_squares = 0.0;
  std::unique_ptr<ObservationBlocks> m_blocks;  // the draws of u, made at the first sweep
  std::unique_ptr<Inefficiency> m_ineff;
  Eigen::VectorXd m_b;
  double m_tau;
  double m_omega = 1.0;
  Eigen::VectorXd m_u, m_index, m_w, m_ystar, m_Xtz, m_z, m_effects, m_weights, m_kappa;
  mutable Eigen::RowVectorXd m_thetaRow;
  Eigen::LLT<Eigen::MatrixXd> m_llt;
  std::unique_ptr<RandomInterceptStep> m_effectStep;
  bool m_keeping = false;
  Eigen::VectorXd m_effSum, m_uSum;
  long m_kept = 0;
  RandomWalkStep m_shiftStep;
  Eigen::VectorXd m_shift;
};

}  // namespace

std::vector<std::string> StochasticFrontier::ParameterLabels(bool firmEffects) const {
  std::vector<std::string> labels = {"tau"};
  if (firmEffects) labels.push_back("omega");
  for (const std::string& label : m_inefficiency->Labels()) labels.push_back(label);
  return labels;
}

double StochasticFrontier::LogLikelihood(const Eigen::VectorXd& b, double tau, const Eigen::VectorXd& theta) const {
  const Eigen::VectorXd w = m_sign * (*m_X * b - *m_y);
  return m_inefficiency->LogConvolvedDensity(w, tau, theta);
}

double StochasticFrontier::LogLikelihoodWithEffects(const Eigen::VectorXd& b, double tau, double omega,
                                                    const Eigen::VectorXd& theta, const PanelGroups& groups) const {
  // Per firm, the integral over a of prod_t f(w_t + s a) N(a; 0, 1/omega), w_t = s (x'b - y), by
  // Gauss-Hermite quadrature centred at the integrand's mode and scaled by its curvature there.
  static const auto rule = [] {
    Eigen::MatrixXd nodes, weights;
    numerics::HermiteQuad(24, nodes, weights);
    return std::pair<Eigen::VectorXd, Eigen::VectorXd>(nodes.col(0), weights.col(0));
  }();
  const Eigen::VectorXd w = m_sign * (*m_X * b - *m_y);
  double total = 0.0;
  Eigen::VectorXd firm, shifted;
  for (Eigen::Index g = 0; g < groups.Count(); ++g) {
    const Eigen::Index first = groups.start[static_cast<std::size_t>(g)];
    const Eigen::Index size = groups.start[static_cast<std::size_t>(g) + 1] - first;
    firm.resize(size);
    for (Eigen::Index t = 0; t < size; ++t) firm(t) = w(groups.members[static_cast<std::size_t>(first + t)]);
    auto logIntegrand = [&](double a) {
      shifted = firm.array() + m_sign * a;
      return m_inefficiency->LogConvolvedDensity(shifted, tau, theta) - 0.5 * omega * a * a +
             0.5 * std::log(omega / (2.0 * M_PI));
    };
    // Newton's method on the mode with difference quotients, from a = 0.
    double mode = 0.0, curvature = -omega;
    const double h = 1e-4 / std::sqrt(omega + tau * static_cast<double>(size));
    for (int iteration = 0; iteration < 30; ++iteration) {
      const double lo = logIntegrand(mode - h), mid = logIntegrand(mode), hi = logIntegrand(mode + h);
      const double slope = (hi - lo) / (2.0 * h);
      curvature = std::min((hi - 2.0 * mid + lo) / (h * h), -1e-8);
      const double step = -slope / curvature;
      mode += step;
      if (std::fabs(step) < 1e-10 * (1.0 + std::fabs(mode))) break;
    }
    const double scale = std::sqrt(2.0 / -curvature);
    Eigen::VectorXd terms(rule.first.size());
    for (Eigen::Index j = 0; j < terms.size(); ++j) {
      const double x = rule.first(j);
      terms(j) = std::log(rule.second(j)) + x * x + logIntegrand(mode + scale * x);
    }
    total += std::log(scale) + mlik::LogMeanExp(terms) + std::log(static_cast<double>(terms.size()));
  }
  return total;
}

bool StochasticFrontier::Sample(const Eigen::VectorXd& y, const Eigen::MatrixXd& X, const std::vector<int>& groups,
                                bool cost, const Priors& priors, bool chib, const EventDispatcher& out,
                                const std::atomic<bool>* interrupt) {
  m_y = &y;
  m_X = &X;
  m_sign = cost ? -1.0 : 1.0;
  m_priors = priors;
  const Eigen::Index n = y.size(), k = X.cols();
  const bool firmEffects = !groups.empty();
  PanelGroups panel;
  if (firmEffects) panel = PanelGroups::FromCodes(groups);
  m_inefficiency->Prepare(n);
  Eigen::Index constant = -1;
  for (Eigen::Index j = 0; j < k && constant < 0; ++j) {
    if ((X.col(j).array() == 1.0).all()) constant = j;
  }
  const FrontierData data{y, X, X.transpose() * X, m_sign, firmEffects ? &panel : nullptr, m_priors, constant};

  // Chains start at the least-squares fit, with u at a share of the residuals' spread (spread
  // across chains by a factor between 1/2 and 2 so that R-hat can reveal slow mixing) and the
  // intercept shifted by it where the regressors have one.
  const Eigen::VectorXd fit = (data.XtX + m_priors.coefficients.precision)
                                  .llt()
                                  .solve(X.transpose() * y + m_priors.coefficients.precisionTimesMean);
  // A perfect fit leaves no residual spread: start from a small one.
  const double variance =
      std::max((y - X * fit).squaredNorm() / static_cast<double>(std::max<Eigen::Index>(1, n - k)), 1e-12);
  const double sd = std::sqrt(variance);
  const long chains = Settings().chains;
  const int threads = ObservationBlocks::ThreadsPerChain(chains);
  auto make = [&](int c) -> std::unique_ptr<GibbsChain> {
    const double spread = chains > 1 ? std::pow(2.0, 2.0 * c / static_cast<double>(chains - 1) - 1.0) : 1.0;
    return std::make_unique<FrontierChain>(data, m_inefficiency->Clone(), fit, 2.0 / variance, 0.5 * sd * spread,
                                           threads);
  };
  const Eigen::Index shown = k + 1 + (firmEffects ? 1 : 0) + m_inefficiency->Count();
  chib = chib && !firmEffects && m_inefficiency->HasConjugateOrdinate();
  if (!RunChains(make, static_cast<int>(shown + (chib ? 1 : 0)), out, interrupt)) return false;

  efficiency = Eigen::VectorXd::Zero(n);
  inefficiency = Eigen::VectorXd::Zero(n);
  long kept = 0;
  double accepted = 0.0;
  for (const auto& chain : Chains()) {
    const auto& c = static_cast<const FrontierChain&>(*chain);
    efficiency += c.EfficiencySum();
    inefficiency += c.InefficiencySum();
    kept += c.Kept();
    accepted += c.Distribution().Acceptance();
  }
  efficiency /= static_cast<double>(std::max(1L, kept));
  inefficiency /= static_cast<double>(std::max(1L, kept));
  acceptance = accepted / static_cast<double>(Chains().size());

  // Lewis & Raftery on (b, log tau, [log omega], theta with positive parameters in logs), u (and
  // the firm effects) integrated out; the kernel gains the Jacobian of every log. Columns: b,
  // theta's determinants, tau, [omega], the rest of theta.
  const Eigen::MatrixXd pooled = PoolDraws(shown);
  const std::vector<bool> positive = m_inefficiency->Positive();
  const Eigen::Index p = m_inefficiency->DeterminantCount(), effects = firmEffects ? 1 : 0;
  auto columnOfTheta = [&](std::size_t j) {
    const auto i = static_cast<Eigen::Index>(j);
    return i < p ? k + i : k + 1 + effects + i;
  };
  Eigen::MatrixXd transformed = pooled;
  for (Eigen::Index j = k + p; j <= k + p + effects; ++j) transformed.col(j) = pooled.col(j).array().log();
  for (std::size_t j = 0; j < positive.size(); ++j) {
    if (positive[j]) transformed.col(columnOfTheta(j)) = pooled.col(columnOfTheta(j)).array().log();
  }
  const Eigen::VectorXd centre = transformed.colwise().mean().transpose();
  const Eigen::VectorXd bStar = centre.head(k);
  const double tauStar = std::exp(centre(k + p));
  const double omegaStar = firmEffects ? std::exp(centre(k + p + 1)) : 0.0;
  Eigen::VectorXd theta(m_inefficiency->Count());
  double logJacobian = std::log(tauStar) + (firmEffects ? std::log(omegaStar) : 0.0);
  for (std::size_t j = 0; j < positive.size(); ++j) {
    const auto i = static_cast<Eigen::Index>(j);
    theta(i) = centre(columnOfTheta(j));
    if (!positive[j]) continue;
    logJacobian += theta(i);
    theta(i) = std::exp(theta(i));
  }
  const double likelihood = firmEffects ? LogLikelihoodWithEffects(bStar, tauStar, omegaStar, theta, panel)
                                        : LogLikelihood(bStar, tauStar, theta);
  const double kernel = likelihood +
                        mlik::LogNormalDensity(bStar, m_priors.coefficients.mean, m_priors.coefficients.precision) +
                        mlik::LogGammaDensity(tauStar, m_priors.a, m_priors.b) +
                        (firmEffects ? mlik::LogGammaDensity(omegaStar, m_priors.aRe, m_priors.bRe) : 0.0) +
                        m_inefficiency->LogPrior(theta) + logJacobian;
  logML = mlik::LaplaceMetropolis(kernel, transformed.leftCols(shown));
  if (!chib) return true;

  // Chib: p(y) = p(y | b*, tau*, theta*) p(b*) p(tau*) p(theta*) / (p(theta* | y) p(tau* | theta*, y)
  // p(b* | tau*, theta*, y)): theta's ordinate averaged over the main run's u, tau's over a run with
  // theta fixed, b's over a run with theta and tau fixed (u integrated out in the likelihood).
  const Eigen::VectorXd bC = pooled.leftCols(k).colwise().mean().transpose();
  const double tauC = pooled.col(k).mean();
  const Eigen::VectorXd thetaC = pooled.middleCols(k + 1, m_inefficiency->Count()).colwise().mean().transpose();
  Eigen::VectorXd thetaOrdinates(pooled.rows());
  for (Eigen::Index g = 0; g < pooled.rows(); ++g) {
    thetaOrdinates(g) = m_inefficiency->LogParameterOrdinate(thetaC, pooled(g, shown), n);
  }
  std::unique_ptr<Inefficiency> fixed = m_inefficiency->Clone();
  fixed->Fix(thetaC);
  GibbsSettings reducedSettings = Settings();
  reducedSettings.seed = Settings().seed + 1;
  auto reducedRun = [&](FrontierRun run, int columns, std::vector<Eigen::MatrixXd>& draws) {
    Estimator reduced(reducedSettings.ToVector());
    auto makeReduced = [&](int) -> std::unique_ptr<GibbsChain> {
      return std::make_unique<FrontierChain>(data, fixed->Clone(), bC, tauC, 0.5 * sd, threads, run);
    };
    if (!reduced.RunChains(makeReduced, columns, out, interrupt)) return false;
    draws = reduced.Draws();
    return true;
  };
  std::vector<Eigen::MatrixXd> tauRun, bRun;
  if (!reducedRun(FrontierRun::FixedInefficiency, 1, tauRun)) return false;
  if (!reducedRun(FrontierRun::FixedInefficiencyAndTau, static_cast<int>(k), bRun)) return false;
  std::vector<double> tauOrdinates, bOrdinates;
  const double shape = m_priors.a + 0.5 * static_cast<double>(n);
  for (const Eigen::MatrixXd& draws : tauRun) {
    for (Eigen::Index g = 0; g < draws.rows(); ++g) {
      tauOrdinates.push_back(mlik::LogGammaDensity(tauC, shape, m_priors.b + 0.5 * draws(g, 0)));
    }
  }
  const Eigen::MatrixXd A = tauC * data.XtX + m_priors.coefficients.precision;
  const Eigen::LLT<Eigen::MatrixXd> factor(A);
  for (const Eigen::MatrixXd& draws : bRun) {
    for (Eigen::Index g = 0; g < draws.rows(); ++g) {
      const Eigen::VectorXd mean =
          factor.solve(tauC * draws.row(g).transpose() + m_priors.coefficients.precisionTimesMean);
      bOrdinates.push_back(mlik::LogNormalDensity(bC, mean, A));
    }
  }
  auto logMean = [](const std::vector<double>& values) {
    return mlik::LogMeanExp(Eigen::Map<const Eigen::VectorXd>(values.data(), static_cast<Eigen::Index>(values.size())));
  };
  logML_CJ = LogLikelihood(bC, tauC, thetaC) +
             mlik::LogNormalDensity(bC, m_priors.coefficients.mean, m_priors.coefficients.precision) +
             mlik::LogGammaDensity(tauC, m_priors.a, m_priors.b) + m_inefficiency->LogPrior(thetaC) -
             mlik::LogMeanExp(thetaOrdinates) - logMean(tauOrdinates) - logMean(bOrdinates);
  return true;
}
