// Random draws from the multivariate families: multivariate normal, Wishart and inverse
// Wishart, categorical and Dirichlet.
#include <algorithm>
#include <cmath>
#include <vector>

#include <Eigen/Cholesky>

#include "BuiltinFamilies.h"
#include "Categorical.h"
#include "Dirichlet.h"
#include "DrawShape.h"
#include "MultivariateNormal.h"
#include "RandomEngine.h"
#include "Wishart.h"

namespace {

using Eigen::MatrixXd;


// The lower Cholesky factor of a covariance or scale matrix: taken from the optional argument
// `factorAt` when given (a matrix of the same size), otherwise computed; `notPd` when the
// factorisation fails.
MatrixXd CholeskyFactor(const BuiltinCall& call, const MatrixXd& sigma, std::size_t factorAt,
                        const std::string& notMatrix, const std::string& wrongSize,
                        const std::string& notPd) {
  if (call.Count() > factorAt) {
    const auto factor = call.MatrixOrNull(factorAt);
    if (!factor) call.Fail(notMatrix);
    if (factor->rows() != sigma.rows() || factor->cols() != sigma.cols()) call.Fail(wrongSize);
    return factor->triangularView<Eigen::Lower>();
  }
  const Eigen::LLT<MatrixXd> llt(sigma);
  if (llt.info() != Eigen::Success) call.Fail(notPd);
  return llt.matrixL();
}

// mvnrnd(mu, Sigma [, k [, L]]): k draws (one per row) of N(mu, Sigma); L, when given, is the
// lower Cholesky factor of Sigma, which saves the factorisation in loops.
TavixValue Mvnrnd(const BuiltinCall& call) {
  const auto mu = call.MatrixOrNull(0);
  if (!mu || (mu->rows() != 1 && mu->cols() != 1) || mu->size() == 0 || !mu->allFinite()) {
    call.Fail("The mean parameter passed to \"mvnrnd\" must be a vector.");
  }
  const auto sigma = call.MatrixOrNull(1);
  if (!sigma) {
    call.Fail("The covariance matrix passed to \"mvrnd\" must be a symmetric and positive "
              "definite matrix.");
  }
  if (sigma->rows() != sigma->cols() || !sigma->allFinite() || !IsSymmetric(*sigma)) {
    call.Fail("The covariance matrix passed to \"mvnrnd\" must be symmetric and positive definite.");
  }
  if (sigma->rows() != mu->size()) call.Fail("Dimension mismatch between the mean and variance dimensions.");
  int draws = 1;
  if (call.Count() > 2) {
    const auto k = call.MatrixOrNull(2);
    if (!k || !IntrCheck_PositiveInteger(*k, draws)) {
      call.Fail("Dimension argument passed to \"mvnrnd\" must be a positive integer.");
    }
  }
  call.CheckSize(draws, static_cast<double>(mu->size()));
  const std::string fourth = "The fourth argument passed to \"mvnrnd\" must be a matrix.";
  const MatrixXd L = CholeskyFactor(
      call, *sigma, 3, fourth, fourth,
      "The covariance matrix passed to \"mvnrnd\" is not positive definite to machine precision.");
  return TavixValue::FromMatrix(
      dist::MultivariateNormalDraws(call.Random(), mu->reshaped(), L, draws));
}

// wishrnd(S, nu [, L]) and iwishrnd(S, nu [, L]): L, when given, is the lower Cholesky factor of S.
TavixValue WishartDraws(const BuiltinCall& call) {
  const std::string f = "\"" + call.Name() + "\"";
  const auto s = call.MatrixOrNull(0);
  if (!s || s->rows() != s->cols() || s->size() == 0 || !s->allFinite() || !IsSymmetric(*s)) {
    call.Fail("The scale matrix passed to " + f + " must be square and positive definite.");
  }
  const auto nuArgument = call.MatrixOrNull(1);
  double nu = 0.0;
  if (!nuArgument || !IntrCheck_Number(*nuArgument, nu) || !std::isfinite(nu)) {
    call.Fail("The degrees-of-freedom parameter passed to " + f + " must be a scalar.");
  }
  const auto p = static_cast<double>(s->rows());
  if (!(nu > p - 1.0)) {
    call.Fail("The degrees-of-freedom parameter passed to " + f + " must be greater than p-1.");
  }
  const MatrixXd L = CholeskyFactor(
      call, *s, 2, "The third argument passed to " + f + " must be a matrix.",
      "The third argument passed to " + f +
          " must be a matrix with dimensions equal to those of the scale matrix.",
      "The scale matrix passed to " + f + " is not positive definite to machine precision.");
  double whole = 0.0;
  const bool integer = std::modf(nu, &whole) == 0.0 && whole <= 1e6;
  RandomEngine& rng = call.Random();
  const bool inverse = call.Name() == "iwishrnd";
  if (integer) {
    const int dof = static_cast<int>(whole);
    return TavixValue::FromMatrix(inverse ? dist::InverseWishartDrawIntegerDof(rng, L, dof)
                                          : dist::WishartDrawIntegerDof(rng, L, dof));
  }
  return TavixValue::FromMatrix(inverse ? dist::InverseWishartDraw(rng, L, nu)
                                        : dist::WishartDraw(rng, L, nu));
}

// catrnd(P) draws one category per row of P; catrnd(p, m, n) an m x n matrix from one row p.
TavixValue Catrnd(const BuiltinCall& call) {
  const auto p = call.MatrixOrNull(0);
  const std::string refusal =
      "The parameter passed to \"catrnd\" must be a matrix with non-negative entries which sum to "
      "unity across rows.";
  if (!p || p->size() == 0 || !p->allFinite() || p->minCoeff() < 0.0) call.Fail(refusal);
  for (Eigen::Index i = 0; i < p->rows(); ++i) {
    if (std::fabs(p->row(i).sum() - 1.0) > 1e-8) call.Fail(refusal);
  }
  RandomEngine& rng = call.Random();
  if (call.Count() == 1) {
    MatrixXd out(p->rows(), 1);
    for (Eigen::Index i = 0; i < p->rows(); ++i) {
      if (i % 1024 == 0) call.CheckInterrupt();
      out(i, 0) = dist::CategoricalDraw(rng, p->row(i));
    }
    return TavixValue::FromMatrix(std::move(out));
  }
  if (p->rows() != 1) {
    call.Fail("Dimension arguments may be provided to \"catrnd\" only if the distribution's "
              "parameter is a row vector.");
  }
  const auto m = call.MatrixOrNull(1);
  const auto n = call.MatrixOrNull(2);
  int rows = 0;
  int cols = 0;
  if (!m || !n || !IntrCheck_PositiveInteger(*m, rows) || !IntrCheck_PositiveInteger(*n, cols)) {
    call.Fail("Dimension arguments passed to \"catrnd\" must be positive integers.");
  }
  // Many draws from one row: the cumulative probabilities once, then a binary search per draw,
  // which gives the category the scan of CategoricalDraw would give for the same uniform.
  const std::vector<double> cumulative = dist::CumulativeProbabilities(p->row(0));
  DrawParameters shape;
  shape.rows = rows;
  shape.cols = cols;
  return TavixValue::FromMatrix(FillDraws(
      call, shape, [&](Eigen::Index) { return dist::CategoricalDrawFromCumulative(rng, cumulative); }));
}

// drchrnd(alpha) draws once per row of alpha; drchrnd(alpha, k) k times from one row alpha.
TavixValue Drchrnd(const BuiltinCall& call) {
  const auto alpha = call.MatrixOrNull(0);
  if (!alpha || alpha->size() == 0 || !alpha->allFinite() || !(alpha->minCoeff() > 0.0)) {
    call.Fail("The parameter passed to \"drchrnd\" must be a matrix with positive entries.");
  }
  if (alpha->cols() < 2) {
    call.Fail("The parameter passed to \"drchrnd\" must be a matrix with at least two columns.");
  }
  RandomEngine& rng = call.Random();
  if (call.Count() == 1) {
    MatrixXd out(alpha->rows(), alpha->cols());
    for (Eigen::Index i = 0; i < alpha->rows(); ++i) {
      if (i % 1024 == 0) call.CheckInterrupt();
      out.row(i) = dist::DirichletDraws(rng, alpha->row(i), 1);
    }
    return TavixValue::FromMatrix(std::move(out));
  }
  const auto k = call.MatrixOrNull(1);
  int draws = 0;
  if (!k || !IntrCheck_PositiveInteger(*k, draws)) {
    call.Fail("The dimension argument passed to \"drchrnd\" must be a positive integer.");
  }
  if (alpha->rows() != 1) {
    call.Fail("A dimension argument may be provided to \"drchrnd\" only if the distribution's "
              "parameter is a row vector.");
  }
  call.CheckSize(draws, static_cast<double>(alpha->cols()));
  // In pieces, so that an interrupt is seen between them; the draws are those of one call.
  MatrixXd out(draws, alpha->cols());
  const int piece = std::max<int>(1, static_cast<int>(kDrawsPerInterruptCheck / alpha->cols()));
  for (int first = 0; first < draws; first += piece) {
    call.CheckInterrupt();
    const int count = std::min(piece, draws - first);
    out.middleRows(first, count) = dist::DirichletDraws(rng, alpha->row(0), count);
  }
  return TavixValue::FromMatrix(std::move(out));
}

const BuiltinRow kRows[] = {
    {"mvnrnd", ArgCounts(2, 3, 4), false, Mvnrnd},
    {"wishrnd", ArgCounts(2, 3), false, WishartDraws},
    {"iwishrnd", ArgCounts(2, 3), false, WishartDraws},
    {"catrnd", ArgCounts(1, 3), false, Catrnd},
    {"drchrnd", ArgCounts(1, 2), false, Drchrnd},
};

}  // namespace

std::span<const BuiltinRow> MultivariateRandomBuiltins() { return kRows; }
