// Densities and distribution functions, element-wise on the first argument with scalar
// parameters, and the multivariate normal density.
#include <cmath>
#include <limits>

#include <Eigen/Cholesky>

#include "Beta.h"
#include "Binomial.h"
#include "BuiltinFamilies.h"
#include "ChiSquared.h"
#include "Exponential.h"
#include "ExtremeValue.h"
#include "FisherF.h"
#include "Gamma.h"
#include "LogNormal.h"
#include "Logistic.h"
#include "LogitNormal.h"
#include "MultivariateNormal.h"
#include "NegativeBinomial.h"
#include "Normal.h"
#include "Poisson.h"
#include "StudentT.h"
#include "TruncatedNormal.h"
#include "ValueKind.h"
#include "Weibull.h"

namespace {

using Eigen::MatrixXd;

// A scalar parameter: the start of its message ("The rate parameter") and its end after the
// function's name, with the values it accepts.
struct ParameterRule {
  const char* what;
  const char* mustBe;
  bool (*accept)(double);
};

bool Finite(double x) { return std::isfinite(x); }
bool Positive(double x) { return std::isfinite(x) && x > 0.0; }
bool Count(double x) { return std::isfinite(x) && x >= 0.0 && x == std::floor(x); }
bool Probability(double x) { return x >= 0.0 && x <= 1.0; }

constexpr ParameterRule kRate{"The rate parameter", " must be a positive number.", Positive};
constexpr ParameterRule kDof{"The degrees-of-freedom parameter", " must be a positive number.", Positive};
constexpr ParameterRule kMean{"The mean parameter", " must be a number.", Finite};
constexpr ParameterRule kLocation{"The location parameter", " must be a number.", Finite};
constexpr ParameterRule kScale{"The scale parameter", " must be a postive number.", Positive};
constexpr ParameterRule kSd{"The standard-deviation parameter", " must be a positive number.", Positive};
constexpr ParameterRule kShape{"The shape parameter", " must be a positive number.", Positive};
constexpr ParameterRule kAlpha{"The first shape parameter (\"alpha\")", " must be a positive number.",
                               Positive};
constexpr ParameterRule kBeta{"The second shape parameter (\"beta\")", " must be a positive number.",
                              Positive};
constexpr ParameterRule kNumerator{"The numerator degrees-of-freedom parameter",
                                   " must be a positive number.", Positive};
constexpr ParameterRule kDenominator{"The denominator degrees-of-freedom parameter",
                                     " must be a positive number.", Positive};
constexpr ParameterRule kTrials{"The number-of-trials parameter", " must be a non-negative number.",
                                Count};
constexpr ParameterRule kFailures{"The number-of-failures parameter", " must be a positive number",
                                  Positive};
constexpr ParameterRule kSuccess{"The probability-of-success parameter",
                                 " must be a number between zero and one.", Probability};

enum class Support { RealLine, NonNegative, UnitInterval, Counts };

// One family: its two names, its parameters, where x may lie, and its functions (one-parameter
// families ignore the second parameter).
struct Family {
  const char* pdfName;
  const char* cdfName;
  int parameterCount;
  ParameterRule parameters[2];
  Support support;
  double (*pdf)(double, double, double);
  double (*cdf)(double, double, double);
};

const Family kFamilies[] = {
    {"poissonpdf", "poissoncdf", 1, {kRate, kRate}, Support::Counts,
     [](double x, double m, double) { return dist::PoissonPdf(x, m); },
     [](double x, double m, double) { return dist::PoissonCdf(x, m); }},
    {"exppdf", "expcdf", 1, {kRate, kRate}, Support::NonNegative,
     [](double x, double r, double) { return dist::ExponentialPdf(x, r); },
     [](double x, double r, double) { return dist::ExponentialCdf(x, r); }},
    {"chi2pdf", "chi2cdf", 1, {kDof, kDof}, Support::NonNegative,
     [](double x, double k, double) { return dist::ChiSquaredPdf(x, k); },
     [](double x, double k, double) { return dist::ChiSquaredCdf(x, k); }},
    {"tpdf", "tcdf", 1, {kDof, kDof}, Support::RealLine,
     [](double x, double k, double) { return dist::StudentTPdf(x, k); },
     [](double x, double k, double) { return dist::StudentTCdf(x, k); }},
    {"binompdf", "binomcdf", 2, {kTrials, kSuccess}, Support::Counts, dist::BinomialPdf,
     dist::BinomialCdf},
    {"nbinompdf", "nbinomcdf", 2, {kFailures, kSuccess}, Support::Counts,
     dist::NegativeBinomialPdf, dist::NegativeBinomialCdf},
    {"normpdf", "normcdf", 2, {kMean, kSd}, Support::RealLine, dist::NormalPdf, dist::NormalCdf},
    {"lognpdf", "logncdf", 2, {kLocation, kScale}, Support::NonNegative, dist::LogNormalPdf,
     dist::LogNormalCdf},
    {"logitnpdf", "logitncdf", 2, {kLocation, kScale}, Support::UnitInterval,
     dist::LogitNormalPdf, dist::LogitNormalCdf},
    {"logisticpdf", "logisticcdf", 2, {kLocation, kScale}, Support::RealLine, dist::LogisticPdf,
     dist::LogisticCdf},
    {"evpdf", "evcdf", 2, {kLocation, kScale}, Support::RealLine, dist::ExtremeValuePdf,
     dist::ExtremeValueCdf},
    {"gampdf", "gamcdf", 2, {kShape, kRate}, Support::NonNegative, dist::GammaPdf, dist::GammaCdf},
    {"betapdf", "betacdf", 2, {kAlpha, kBeta}, Support::UnitInterval, dist::BetaPdf,
     dist::BetaCdf},
    {"wblpdf", "wblcdf", 2, {kShape, kScale}, Support::NonNegative, dist::WeibullPdf,
     dist::WeibullCdf},
    {"fpdf", "fcdf", 2, {kNumerator, kDenominator}, Support::NonNegative, dist::FisherPdf,
     dist::FisherCdf},
};

// Whether x lies where the function is defined; densities of counts need whole numbers.
bool InSupport(Support support, double x, bool density) {
  switch (support) {
    case Support::RealLine: return true;
    case Support::NonNegative: return x >= 0.0;
    case Support::UnitInterval: return x >= 0.0 && x <= 1.0;
    case Support::Counts: return x >= 0.0 && (!density || std::isinf(x) || x == std::floor(x));
  }
  return false;
}

std::shared_ptr<const MatrixXd> FirstArgument(const BuiltinCall& call) {
  const auto x = call.MatrixOrNull(0);
  if (!x) call.Fail("The first argument passed to \"" + call.Name() + "\" must be a matrix.");
  return x;
}

double ScalarParameter(const BuiltinCall& call, std::size_t i, const ParameterRule& rule) {
  const auto m = call.MatrixOrNull(i);
  double value = 0.0;
  if (!m || !IntrCheck_Number(*m, value) || !rule.accept(value)) {
    call.Fail(std::string(rule.what) + " passed to \"" + call.Name() + "\"" + rule.mustBe);
  }
  return value;
}

// Evaluates `f` at every element of x: NaN stays NaN, infinite x gives the limits (0 for a
// density, 0 or 1 for a distribution function), other elements outside the support are refused.
template <typename InSupport, typename F>
MatrixXd Elementwise(const BuiltinCall& call, const MatrixXd& x, bool density, InSupport inSupport,
                     F f) {
  MatrixXd out(x.rows(), x.cols());
  for (Eigen::Index i = 0; i < x.size(); ++i) {
    if (i % 256 == 0) call.CheckInterrupt();
    const double v = x(i);
    if (std::isnan(v)) {
      out(i) = v;
      continue;
    }
    if (!inSupport(v)) {
      call.Fail("The first argument passed to \"" + call.Name() +
                "\" contains element(s) outside the domain of \"" + call.Name() + "\".");
    }
    if (std::isinf(v)) {
      out(i) = density ? 0.0 : (v > 0.0 ? 1.0 : 0.0);
      continue;
    }
    out(i) = f(v);
  }
  return out;
}

TavixValue FamilyFunction(const BuiltinCall& call) {
  for (const Family& family : kFamilies) {
    const bool density = call.Name() == family.pdfName;
    if (!density && call.Name() != family.cdfName) continue;
    const auto x = FirstArgument(call);
    const double a = ScalarParameter(call, 1, family.parameters[0]);
    const double b = family.parameterCount == 2 ? ScalarParameter(call, 2, family.parameters[1]) : 0.0;
    const auto f = density ? family.pdf : family.cdf;
    return TavixValue::FromMatrix(Elementwise(
        call, *x, density, [&](double v) { return InSupport(family.support, v, density); },
        [&](double v) { return f(v, a, b); }));
  }
  call.Fail("Function \"" + call.Name() + "\" is not available.");
}

// truncnpdf and truncncdf: (x, mean, sd [, "lower" = l] [, "upper" = u]), scalar bounds.
TavixValue TruncatedNormalFunction(const BuiltinCall& call) {
  const auto x = FirstArgument(call);
  const double mean = ScalarParameter(call, 1, kMean);
  const double sd = ScalarParameter(call, 2, kSd);
  double lower = -std::numeric_limits<double>::infinity();
  double upper = std::numeric_limits<double>::infinity();
  bool seenLower = false;
  bool seenUpper = false;
  for (const auto& option : call.Options()) {
    const bool isLower = option.name == "lower";
    if (!isLower && option.name != "upper") {
      call.Fail("Unknown optional argument \"" + option.name + "\"");
    }
    bool& seen = isLower ? seenLower : seenUpper;
    if (seen) call.Fail("Optional argument \"" + option.name + "\" was defined multiple times.");
    seen = true;
    double bound = 0.0;
    if (option.value.code != kind::MATRIX || !IntrCheck_Number(*option.value.matrix, bound) ||
        std::isnan(bound)) {
      call.Fail("Bound parameter in \"" + call.Name() + "\" must be a number.");
    }
    (isLower ? lower : upper) = bound;
  }
  if (!(lower < upper)) {
    call.Fail("Bound parameter in \"" + call.Name() +
              "\" is not valid: the lower bound must be smaller than the upper bound.");
  }
  const bool density = call.Name() == "truncnpdf";
  const auto anywhere = [](double) { return true; };
  return TavixValue::FromMatrix(Elementwise(call, *x, density, anywhere, [&](double v) {
    return density ? dist::TruncatedNormalPdf(v, mean, sd, lower, upper)
                   : dist::TruncatedNormalCdf(v, mean, sd, lower, upper);
  }));
}

// mvnormpdf(X, mu, Sigma [, L]): the density at each row of X; L, when given, is the lower
// Cholesky factor of Sigma.
TavixValue MultivariateNormalDensity(const BuiltinCall& call) {
  const std::string f = "\"" + call.Name() + "\"";
  const auto x = FirstArgument(call);
  const auto mu = call.MatrixOrNull(1);
  if (!mu || (mu->rows() != 1 && mu->cols() != 1) || mu->size() == 0 || !mu->allFinite()) {
    call.Fail("The mean parameter passed to " + f + " must be a vector.");
  }
  const auto sigma = call.MatrixOrNull(2);
  if (!sigma || !sigma->allFinite() || !IsSymmetric(*sigma)) {
    call.Fail("The covariance matrix passed to " + f + " must be a symmetric and positive definite.");
  }
  if (sigma->rows() != mu->size() || x->cols() != mu->size()) {
    call.Fail("Dimension mismatch between the mean and variance dimensions.");
  }
  MatrixXd L;
  if (call.Count() > 3) {
    const auto factor = call.MatrixOrNull(3);
    if (!factor || factor->rows() != sigma->rows() || factor->cols() != sigma->cols()) {
      call.Fail("The fourth argument passed to " + f + " must be a matrix.");
    }
    L = factor->triangularView<Eigen::Lower>();
  } else {
    const Eigen::LLT<MatrixXd> llt(*sigma);
    if (llt.info() != Eigen::Success) {
      call.Fail("The covariance matrix passed to " + f +
                " is not positive definite to machine precision.");
    }
    L = llt.matrixL();
  }
  return TavixValue::FromMatrix(MatrixXd(dist::MultivariateNormalPdf(*x, mu->reshaped(), L)));
}

const BuiltinRow kRows[] = {
    {"poissonpdf", ArgCounts(2), false, FamilyFunction},
    {"poissoncdf", ArgCounts(2), false, FamilyFunction},
    {"exppdf", ArgCounts(2), false, FamilyFunction},
    {"expcdf", ArgCounts(2), false, FamilyFunction},
    {"chi2pdf", ArgCounts(2), false, FamilyFunction},
    {"chi2cdf", ArgCounts(2), false, FamilyFunction},
    {"tpdf", ArgCounts(2), false, FamilyFunction},
    {"tcdf", ArgCounts(2), false, FamilyFunction},
    {"binompdf", ArgCounts(3), false, FamilyFunction},
    {"binomcdf", ArgCounts(3), false, FamilyFunction},
    {"nbinompdf", ArgCounts(3), false, FamilyFunction},
    {"nbinomcdf", ArgCounts(3), false, FamilyFunction},
    {"normpdf", ArgCounts(3), false, FamilyFunction},
    {"normcdf", ArgCounts(3), false, FamilyFunction},
    {"lognpdf", ArgCounts(3), false, FamilyFunction},
    {"logncdf", ArgCounts(3), false, FamilyFunction},
    {"logitnpdf", ArgCounts(3), false, FamilyFunction},
    {"logitncdf", ArgCounts(3), false, FamilyFunction},
    {"logisticpdf", ArgCounts(3), false, FamilyFunction},
    {"logisticcdf", ArgCounts(3), false, FamilyFunction},
    {"evpdf", ArgCounts(3), false, FamilyFunction},
    {"evcdf", ArgCounts(3), false, FamilyFunction},
    {"gampdf", ArgCounts(3), false, FamilyFunction},
    {"gamcdf", ArgCounts(3), false, FamilyFunction},
    {"betapdf", ArgCounts(3), false, FamilyFunction},
    {"betacdf", ArgCounts(3), false, FamilyFunction},
    {"wblpdf", ArgCounts(3), false, FamilyFunction},
    {"wblcdf", ArgCounts(3), false, FamilyFunction},
    {"fpdf", ArgCounts(3), false, FamilyFunction},
    {"fcdf", ArgCounts(3), false, FamilyFunction},
    {"truncnpdf", ArgCounts(3), true, TruncatedNormalFunction},
    {"truncncdf", ArgCounts(3), true, TruncatedNormalFunction},
    {"mvnormpdf", ArgCounts(3, 4), false, MultivariateNormalDensity},
};

}  // namespace

std::span<const BuiltinRow> DistributionBuiltins() { return kRows; }
