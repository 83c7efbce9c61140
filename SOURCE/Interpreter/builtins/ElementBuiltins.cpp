// Element-wise built-ins: elementary functions, rounding, and the gamma and beta families.
#include <cmath>

#include "BuiltinFamilies.h"
#include "SpecialFunctions.h"

namespace {

using Eigen::MatrixXd;

std::string OutsideDomain(const BuiltinCall& call, std::size_t i, const std::string& name) {
  return "Argument \"" + call.Text(i) + "\" passed to \"" + name +
         "\" contains element(s) outside the domain of \"" + name + "\".";
}

// An elementary function with the elements it accepts (NaN is always accepted and gives NaN).
struct Elementary {
  const char* name;
  double (*apply)(double);
  bool (*inDomain)(double);
};

bool Anywhere(double) { return true; }
bool NonNegative(double x) { return !(x < 0.0); }
bool UnitInterval(double x) { return !(x < -1.0 || x > 1.0); }

const Elementary kElementary[] = {
    {"exp", [](double x) { return std::exp(x); }, Anywhere},
    {"log", [](double x) { return std::log(x); }, NonNegative},
    {"sqrt", [](double x) { return std::sqrt(x); }, NonNegative},
    {"abs", [](double x) { return std::fabs(x); }, Anywhere},
    {"sin", [](double x) { return std::sin(x); }, Anywhere},
    {"cos", [](double x) { return std::cos(x); }, Anywhere},
    {"tan", [](double x) { return std::tan(x); }, Anywhere},
    {"asin", [](double x) { return std::asin(x); }, UnitInterval},
    {"acos", [](double x) { return std::acos(x); }, UnitInterval},
    {"atan", [](double x) { return std::atan(x); }, Anywhere},
    {"erf", [](double x) { return std::erf(x); }, Anywhere},
    {"erfc", [](double x) { return std::erfc(x); }, Anywhere},
};

// exp, log, sqrt, abs, the trigonometric functions, erf and erfc: the keyword selects which.
TavixValue ElementaryFunction(const BuiltinCall& call) {
  const auto a = call.Numeric(0);
  for (const Elementary& f : kElementary) {
    if (call.Name() != f.name) continue;
    if (!a->unaryExpr(f.inDomain).all()) call.Fail(OutsideDomain(call, 0, f.name));
    return TavixValue::FromMatrix(MatrixXd(a->unaryExpr(f.apply)));
  }
  call.Fail("Function \"" + call.Name() + "\" is not available.");
}

// ceil, floor and round.
TavixValue Rounding(const BuiltinCall& call) {
  const auto a = call.Numeric(0, "Function \"" + call.Name() + "\" is not defined for ",
                              "Dataset \"" + call.Text(0) +
                                  "\" contains string variables and cannot be used as the "
                                  "argument of the \"" +
                                  call.Name() + "\" function.");
  if (call.Name() == "ceil") return TavixValue::FromMatrix(numerics::ceil(a));
  if (call.Name() == "floor") return TavixValue::FromMatrix(numerics::floor(a));
  return TavixValue::FromMatrix(numerics::round(a));
}

// Argument i of a special function: a matrix or a dataset's data.
std::shared_ptr<const MatrixXd> SpecialArgument(const BuiltinCall& call, std::size_t i,
                                                const char* position) {
  const auto m = call.MatrixOrNull(i);
  if (!m) call.Fail(std::string(position) + " passed to \"" + call.Name() + "\" must be a matrix.");
  return m;
}

void SameDimensions(const BuiltinCall& call, const MatrixXd& a, const MatrixXd& b) {
  if (a.rows() != b.rows() || a.cols() != b.cols()) {
    call.Fail("The dimensions of the arguments passed to \"" + call.Name() + "\" do not match.");
  }
}

// Fails with the domain message for argument i when some element is not accepted.
template <typename Accept>
void CheckDomain(const BuiltinCall& call, std::size_t i, const MatrixXd& m, Accept accept,
                 const std::string& name) {
  for (double x : m.reshaped()) {
    if (!std::isnan(x) && !accept(x)) call.Fail(OutsideDomain(call, i, name));
  }
}

bool Positive(double x) { return x > 0.0; }

TavixValue GammaFunction(const BuiltinCall& call) {
  const auto a = SpecialArgument(call, 0, "The argument");
  const bool log = call.Name() == "lgammafunc";
  MatrixXd out;
  const bool done = log ? numerics::lgamma(*a, out) : numerics::gamma(*a, out);
  if (!done) call.Fail(OutsideDomain(call, 0, log ? "lgamma" : call.Name()));
  return TavixValue::FromMatrix(std::move(out));
}

TavixValue BetaFunction(const BuiltinCall& call) {
  const auto a = SpecialArgument(call, 0, "The first argument");
  const auto b = SpecialArgument(call, 1, "The second argument");
  SameDimensions(call, *a, *b);
  CheckDomain(call, 0, *a, Positive, call.Name());
  CheckDomain(call, 1, *b, Positive, call.Name());
  MatrixXd out;
  const bool done = call.Name() == "lbetafunc" ? numerics::lbeta(a, b, out) : numerics::beta(a, b, out);
  if (!done) call.Fail(OutsideDomain(call, 0, call.Name()));
  return TavixValue::FromMatrix(std::move(out));
}

TavixValue MultivariateGamma(const BuiltinCall& call) {
  const auto a = SpecialArgument(call, 0, "The first argument");
  const auto p = call.MatrixOrNull(1);
  int dimension = 0;
  if (!p || !IntrCheck_PositiveInteger(*p, dimension)) {
    call.Fail("The second argument passed to \"" + call.Name() + "\" must be a positive integer.");
  }
  const double least = (dimension - 1) / 2.0;
  CheckDomain(call, 0, *a, [least](double x) { return x > least; }, call.Name());
  MatrixXd out;
  const bool done = call.Name() == "lmvgammafunc" ? numerics::lmvgamma(a, dimension, out)
                                                  : numerics::mvgamma(a, dimension, out);
  if (!done) call.Fail(OutsideDomain(call, 0, call.Name()));
  return TavixValue::FromMatrix(std::move(out));
}

TavixValue GammaInc(const BuiltinCall& call) {
  const auto x = SpecialArgument(call, 0, "The first argument");
  const auto a = SpecialArgument(call, 1, "The second argument");
  SameDimensions(call, *x, *a);
  CheckDomain(call, 0, *x, NonNegative, "gammainc");
  CheckDomain(call, 1, *a, Positive, "gammainc");
  MatrixXd out;
  if (!numerics::gammainc(*x, *a, out)) call.Fail(OutsideDomain(call, 0, "gammainc"));
  return TavixValue::FromMatrix(std::move(out));
}

TavixValue BetaInc(const BuiltinCall& call) {
  const auto x = SpecialArgument(call, 0, "The first argument");
  const auto a = SpecialArgument(call, 1, "The second argument");
  const auto b = SpecialArgument(call, 2, "The third argument");
  SameDimensions(call, *x, *a);
  SameDimensions(call, *x, *b);
  CheckDomain(call, 0, *x, [](double v) { return v >= 0.0 && v <= 1.0; }, "betainc");
  CheckDomain(call, 1, *a, Positive, "betainc");
  CheckDomain(call, 2, *b, Positive, "betainc");
  MatrixXd out;
  if (!numerics::betainc(*x, *a, *b, out)) call.Fail(OutsideDomain(call, 0, "betainc"));
  return TavixValue::FromMatrix(std::move(out));
}

const BuiltinRow kRows[] = {
    {"exp", ArgCounts(1), false, ElementaryFunction},
    {"log", ArgCounts(1), false, ElementaryFunction},
    {"sqrt", ArgCounts(1), false, ElementaryFunction},
    {"abs", ArgCounts(1), false, ElementaryFunction},
    {"sin", ArgCounts(1), false, ElementaryFunction},
    {"cos", ArgCounts(1), false, ElementaryFunction},
    {"tan", ArgCounts(1), false, ElementaryFunction},
    {"asin", ArgCounts(1), false, ElementaryFunction},
    {"acos", ArgCounts(1), false, ElementaryFunction},
    {"atan", ArgCounts(1), false, ElementaryFunction},
    {"erf", ArgCounts(1), false, ElementaryFunction},
    {"erfc", ArgCounts(1), false, ElementaryFunction},
    {"ceil", ArgCounts(1), false, Rounding},
    {"floor", ArgCounts(1), false, Rounding},
    {"round", ArgCounts(1), false, Rounding},
    {"gammafunc", ArgCounts(1), false, GammaFunction},
    {"lgammafunc", ArgCounts(1), false, GammaFunction},
    {"betafunc", ArgCounts(2), false, BetaFunction},
    {"lbetafunc", ArgCounts(2), false, BetaFunction},
    {"mvgammafunc", ArgCounts(2), false, MultivariateGamma},
    {"lmvgammafunc", ArgCounts(2), false, MultivariateGamma},
    {"gammainc", ArgCounts(2), false, GammaInc},
    {"betainc", ArgCounts(3), false, BetaInc},
};

}  // namespace

std::span<const BuiltinRow> ElementBuiltins() { return kRows; }
