// Random draws from the univariate families, with the shape rule and the parameter checks.
#include <cmath>
#include <limits>

#include "Beta.h"
#include "Binomial.h"
#include "BuiltinFamilies.h"
#include "ChiSquared.h"
#include "DrawShape.h"
#include "Exponential.h"
#include "ExtremeValue.h"
#include "FisherF.h"
#include "Gamma.h"
#include "LogNormal.h"
#include "Logistic.h"
#include "LogitNormal.h"
#include "NegativeBinomial.h"
#include "Normal.h"
#include "Poisson.h"
#include "RandomEngine.h"
#include "StudentT.h"
#include "TruncatedNormal.h"
#include "ValueKind.h"
#include "Weibull.h"

namespace {

using Eigen::MatrixXd;

// Parameter i as a matrix whose every element passes `accept`; otherwise `message`.
template <typename Accept>
std::shared_ptr<const MatrixXd> Parameter(const BuiltinCall& call, std::size_t i,
                                          const std::string& message, Accept accept) {
  const auto m = call.MatrixOrNull(i);
  if (!m) call.Fail(message);
  for (double x : m->reshaped()) {
    if (!accept(x)) call.Fail(message);
  }
  return m;
}

bool AnyNumber(double x) { return !std::isnan(x); }
bool PositiveNumber(double x) { return x > 0.0 && std::isfinite(x); }
bool Probability(double x) { return x >= 0.0 && x <= 1.0; }

std::string Quoted(const BuiltinCall& call) { return "\"" + call.Name() + "\""; }

TavixValue Unifrnd(const BuiltinCall& call) {
  const auto m = call.MatrixOrNull(0);
  const auto n = call.MatrixOrNull(1);
  int rows = 0;
  int cols = 0;
  if (!m || !n || !IntrCheck_PositiveInteger(*m, rows) || !IntrCheck_PositiveInteger(*n, cols)) {
    call.Fail("Dimension arguments passed to \"unifrnd\" must be positive integers.");
  }
  DrawParameters shape;
  shape.rows = rows;
  shape.cols = cols;
  RandomEngine& rng = call.Random();
  return TavixValue::FromMatrix(FillDraws(call, shape, [&](Eigen::Index) { return rng.Uniform(); }));
}

// exprnd, poissonrnd, chi2rnd and trnd: one positive parameter, (p) or (p, m, n).
TavixValue OneParameterDraws(const BuiltinCall& call) {
  using Draw = double (*)(RandomEngine&, double);
  const std::string& f = call.Name();
  const Draw draw = f == "exprnd"       ? dist::ExponentialDraw
                    : f == "poissonrnd" ? dist::PoissonDraw
                    : f == "chi2rnd"    ? dist::ChiSquaredDraw
                                        : dist::StudentTDraw;
  DrawParameters parameters;
  parameters.values.push_back(Parameter(
      call, 0, "The parameter in " + Quoted(call) + " must be a matrix with positive entries.",
      PositiveNumber));
  ApplyShapeRule(call, parameters, 1, false);
  RandomEngine& rng = call.Random();
  return TavixValue::FromMatrix(
      FillDraws(call, parameters, [&](Eigen::Index i) { return draw(rng, parameters.At(0, i)); }));
}

using TwoParameterDraw = double (*)(RandomEngine&, double, double);

TavixValue TwoParameterDraws(const BuiltinCall& call, const DrawParameters& checked,
                             TwoParameterDraw draw) {
  DrawParameters parameters = checked;
  ApplyShapeRule(call, parameters, 2, true);
  RandomEngine& rng = call.Random();
  return TavixValue::FromMatrix(FillDraws(call, parameters, [&](Eigen::Index i) {
    return draw(rng, parameters.At(0, i), parameters.At(1, i));
  }));
}

// normrnd, lognrnd, logitnrnd, logisticrnd and evrnd: a location and a positive scale.
TavixValue LocationScaleDraws(const BuiltinCall& call) {
  const std::string& f = call.Name();
  const TwoParameterDraw draw = f == "normrnd"     ? dist::NormalDraw
                                : f == "lognrnd"   ? dist::LogNormalDraw
                                : f == "logitnrnd" ? dist::LogitNormalDraw
                                : f == "logisticrnd" ? dist::LogisticDraw
                                                     : dist::ExtremeValueDraw;
  DrawParameters parameters;
  parameters.values.push_back(
      Parameter(call, 0, "The first parameter in " + Quoted(call) + " must be a matrix.", AnyNumber));
  parameters.values.push_back(Parameter(
      call, 1, "The second parameter in " + Quoted(call) + " must be a matrix with positive entries.",
      PositiveNumber));
  return TwoParameterDraws(call, parameters, draw);
}

// gamrnd, betarnd, wblrnd and frnd: two positive parameters.
TavixValue PositivePairDraws(const BuiltinCall& call) {
  const std::string& f = call.Name();
  const TwoParameterDraw draw = f == "gamrnd"    ? dist::GammaDraw
                                : f == "betarnd" ? dist::BetaDraw
                                : f == "wblrnd"  ? dist::WeibullDraw
                                                 : dist::FisherDraw;
  DrawParameters parameters;
  parameters.values.push_back(Parameter(
      call, 0, "The first parameter in " + Quoted(call) + " must be a matrix with positive entries.",
      PositiveNumber));
  parameters.values.push_back(Parameter(
      call, 1, "The second parameter in " + Quoted(call) + " must be a matrix with positive entries.",
      PositiveNumber));
  return TwoParameterDraws(call, parameters, draw);
}

// binomrnd(n, p) with whole n >= 0, and nbinomrnd(r, p) with r > 0; p in [0, 1] (p > 0 for the
// negative binomial, whose number of failures is otherwise unbounded).
TavixValue CountDraws(const BuiltinCall& call) {
  const bool binomial = call.Name() == "binomrnd";
  DrawParameters parameters;
  if (binomial) {
    parameters.values.push_back(Parameter(
        call, 0,
        "The first parameter in " + Quoted(call) + " must be a matrix with non-negative entries.",
        [](double x) { return x >= 0.0 && std::isfinite(x) && x == std::floor(x); }));
    parameters.values.push_back(Parameter(
        call, 1,
        "The second parameter in " + Quoted(call) + " must be a matrix with entries between 0 and 1.",
        Probability));
  } else {
    parameters.values.push_back(Parameter(
        call, 0, "The first parameter in " + Quoted(call) + " must be a matrix with positive entries.",
        PositiveNumber));
    parameters.values.push_back(Parameter(
        call, 1, "The second parameter in " + Quoted(call) + " be a matrix with entries between 0 and 1.",
        [](double x) { return x > 0.0 && x <= 1.0; }));
  }
  return TwoParameterDraws(call, parameters,
                           binomial ? dist::BinomialDraw : dist::NegativeBinomialDraw);
}

// truncnrnd(a, s [, "lower" = l] [, "upper" = u]): normal draws truncated to [l, u].
TavixValue TruncatedNormalDraws(const BuiltinCall& call) {
  DrawParameters parameters;
  parameters.values.push_back(
      Parameter(call, 0, "The first parameter in " + Quoted(call) + " must be a matrix.", AnyNumber));
  parameters.values.push_back(Parameter(
      call, 1, "The second parameter in " + Quoted(call) + " must be a matrix with positive entries.",
      PositiveNumber));
  const double inf = std::numeric_limits<double>::infinity();
  auto lower = std::make_shared<const MatrixXd>(MatrixXd::Constant(1, 1, -inf));
  auto upper = std::make_shared<const MatrixXd>(MatrixXd::Constant(1, 1, inf));
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
    if (option.value.code != kind::MATRIX || option.value.matrix->hasNaN()) {
      call.Fail("Bound parameter in " + Quoted(call) + " must be a matrix of numbers.");
    }
    (isLower ? lower : upper) = option.value.matrix;
  }
  parameters.values.push_back(lower);
  parameters.values.push_back(upper);
  ApplyShapeRule(call, parameters, 2, true);
  const Eigen::Index count = parameters.rows * parameters.cols;
  for (Eigen::Index i = 0; i < count; ++i) {
    if (!(parameters.At(2, i) < parameters.At(3, i))) {
      call.Fail("Bound parameter in " + Quoted(call) +
                " is not valid: the lower bound must be smaller than the upper bound.");
    }
  }
  RandomEngine& rng = call.Random();
  return TavixValue::FromMatrix(FillDraws(call, parameters, [&](Eigen::Index i) {
    return dist::TruncatedNormalDraw(rng, parameters.At(0, i), parameters.At(1, i),
                                     parameters.At(2, i), parameters.At(3, i));
  }));
}

const BuiltinRow kRows[] = {
    {"unifrnd", ArgCounts(2), false, Unifrnd},
    {"exprnd", ArgCounts(1, 3), false, OneParameterDraws},
    {"poissonrnd", ArgCounts(1, 3), false, OneParameterDraws},
    {"chi2rnd", ArgCounts(1, 3), false, OneParameterDraws},
    {"trnd", ArgCounts(1, 3), false, OneParameterDraws},
    {"normrnd", ArgCounts(2, 4), false, LocationScaleDraws},
    {"lognrnd", ArgCounts(2, 4), false, LocationScaleDraws},
    {"logitnrnd", ArgCounts(2, 4), false, LocationScaleDraws},
    {"logisticrnd", ArgCounts(2, 4), false, LocationScaleDraws},
    {"evrnd", ArgCounts(2, 4), false, LocationScaleDraws},
    {"gamrnd", ArgCounts(2, 4), false, PositivePairDraws},
    {"betarnd", ArgCounts(2, 4), false, PositivePairDraws},
    {"wblrnd", ArgCounts(2, 4), false, PositivePairDraws},
    {"frnd", ArgCounts(2, 4), false, PositivePairDraws},
    {"binomrnd", ArgCounts(2, 4), false, CountDraws},
    {"nbinomrnd", ArgCounts(2, 4), false, CountDraws},
    {"truncnrnd", ArgCounts(2), true, TruncatedNormalDraws},
};

}  // namespace

std::span<const BuiltinRow> RandomBuiltins() { return kRows; }
