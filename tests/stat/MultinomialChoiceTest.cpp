// The samplers of choices among several alternatives: recovery of simulated coefficients, and the
// multinomial logit's intercepts against two-dimensional quadrature.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "ConditionalLogit.h"
#include "EventDispatcher.h"
#include "MarginalLikelihood.h"
#include "MultinomialLogit.h"
#include "MultinomialProbit.h"
#include "MultivariateProbit.h"
#include "PooledDraws.h"
#include "RandomEngine.h"

namespace {

Eigen::VectorXd Gibbs(long draws, long burnin, long chains) {
  Eigen::VectorXd g(5);
  g << static_cast<double>(draws), static_cast<double>(burnin), static_cast<double>(chains), 1, 42;
  return g;
}

LinearPrior Prior(Eigen::Index k, double precision) {
  return LinearPrior::Combine(Eigen::VectorXd::Zero(k), Eigen::MatrixXd::Identity(k, k) * precision,
                              Eigen::MatrixXd(0, k), Eigen::VectorXd(0), Eigen::MatrixXd(0, 0));
}

double Gumbel(RandomEngine& rng) { return -std::log(-std::log(rng.Uniform())); }

// X = [1, normal, binary]; the choice maximises x'b_j + Gumbel noise (b_0 = 0): a multinomial logit.
struct ChoiceSample {
  Eigen::VectorXi choice;
  Eigen::MatrixXd X;
};

ChoiceSample SimulateLogit(int n, const Eigen::MatrixXd& B, std::uint64_t seed) {
  RandomEngine rng;
  rng.Seed(seed);
  ChoiceSample s;
  s.X.resize(n, B.rows());
  s.choice.resize(n);
  for (int i = 0; i < n; ++i) {
    s.X.row(i) << 1.0, rng.Normal(), rng.Uniform() < 0.5 ? 1.0 : 0.0;
    double best = Gumbel(rng);
    s.choice(i) = 0;
    for (Eigen::Index j = 0; j < B.cols(); ++j) {
      const double u = s.X.row(i).dot(B.col(j)) + Gumbel(rng);
      if (u > best) {
        best = u;
        s.choice(i) = static_cast<int>(j) + 1;
      }
    }
  }
  return s;
}

}  // namespace

TEST(MNLogit, RecoversSimulatedCoefficientsOfFourAlternatives) {
  Eigen::MatrixXd B(3, 3);  // columns: alternatives 1 to 3 against the base
  B << 0.5, -0.3, 0.2,
       1.0, -0.8, 0.4,
       -0.5, 0.6, 0.0;
  const ChoiceSample s = SimulateLogit(2000, B, 31);
  MNLogit model(Gibbs(1500, 200, 2));
  ASSERT_TRUE(model.Sample(s.choice, 4, s.X, Prior(9, 1e-3), EventDispatcher(), nullptr));
  const Eigen::MatrixXd draws = Pooled(model);
  ASSERT_EQ(draws.cols(), 9);
  const Eigen::RowVectorXd mean = draws.colwise().mean();
  const Eigen::MatrixXd cov = mlik::Covariance(draws);
  const Eigen::VectorXd truth = B.reshaped();
  for (Eigen::Index j = 0; j < 9; ++j) EXPECT_NEAR(mean(j), truth(j), 4.0 * std::sqrt(cov(j, j))) << j;
  EXPECT_GT(model.acceptance, 0.6);

  // The analytic derivatives agree with the independence step's central differences.
  const Eigen::VectorXd b = 0.5 * truth;
  Eigen::VectorXd gradient, numericGradient;
  Eigen::MatrixXd hessian, numericHessian;
  const double kernel = model.Derivatives(b, gradient, hessian);
  EXPECT_NEAR(model.IndependenceTarget::Derivatives(b, numericGradient, numericHessian), kernel, 1e-9 * std::fabs(kernel));
  EXPECT_LT((numericGradient - gradient).norm(), 1e-4 * gradient.norm());
  EXPECT_LT((numericHessian - hessian).norm(), 1e-4 * hessian.norm());
}

// Three alternatives and intercepts only: the likelihood depends on the counts alone, so the
// posterior of (b_1, b_2) and its normalising constant follow by quadrature on a grid.
TEST(MNLogit, InterceptsAgreeWithQuadrature) {
  const int n = 240;
  Eigen::VectorXi choice(n);
  RandomEngine rng;
  rng.Seed(8);
  double counts[3] = {0, 0, 0};
  for (int i = 0; i < n; ++i) {
    const double u = rng.Uniform();
    choice(i) = u < 0.5 ? 0 : (u < 0.8 ? 1 : 2);
    counts[choice(i)] += 1.0;
  }
  const Eigen::MatrixXd X = Eigen::MatrixXd::Ones(n, 1);
  const double precision = 0.5;
  const int steps = 600;
  const double lo = -2.5, hi = 1.5, h = (hi - lo) / steps;
  Eigen::MatrixXd logKernel(steps + 1, steps + 1);
  for (int a = 0; a <= steps; ++a) {
    for (int c = 0; c <= steps; ++c) {
      const double b1 = lo + a * h, b2 = lo + c * h;
      logKernel(a, c) = counts[1] * b1 + counts[2] * b2 - n * std::log(1.0 + std::exp(b1) + std::exp(b2)) +
                        std::log(precision / (2.0 * M_PI)) - 0.5 * precision * (b1 * b1 + b2 * b2);
    }
  }
  const double top = logKernel.maxCoeff();
  const Eigen::ArrayXXd w = (logKernel.array() - top).exp();
  const double mass = w.sum() * h * h;
  const Eigen::ArrayXd grid = Eigen::ArrayXd::LinSpaced(steps + 1, lo, hi);
  const Eigen::ArrayXd marginal1 = w.rowwise().sum() * h / mass, marginal2 = w.colwise().sum().transpose() * h / mass;
  const double mean1 = (marginal1 * grid).sum() * h, mean2 = (marginal2 * grid).sum() * h;
  const double sd1 = std::sqrt((marginal1 * (grid - mean1).square()).sum() * h);
  const double sd2 = std::sqrt((marginal2 * (grid - mean2).square()).sum() * h);

  MNLogit model(Gibbs(6000, 200, 1));
  ASSERT_TRUE(model.Sample(choice, 3, X, Prior(2, precision), EventDispatcher(), nullptr));
  const Eigen::MatrixXd draws = Pooled(model);
  const Eigen::RowVectorXd mean = draws.colwise().mean();
  const Eigen::MatrixXd cov = mlik::Covariance(draws);
  EXPECT_NEAR(mean(0), mean1, 0.08 * sd1);
  EXPECT_NEAR(mean(1), mean2, 0.08 * sd2);
  EXPECT_NEAR(std::sqrt(cov(0, 0)), sd1, 0.06 * sd1);
  EXPECT_NEAR(std::sqrt(cov(1, 1)), sd2, 0.06 * sd2);
  EXPECT_NEAR(model.logML_CJ, top + std::log(mass), 0.05);
  EXPECT_NEAR(model.logML, top + std::log(mass), 0.1);
}

// Situations of three or four alternatives, each described by two regressors; the chosen one
// maximises x'b + Gumbel noise.
TEST(CLogit, RecoversSimulatedCoefficients) {
  const Eigen::Vector2d truth(1.0, -0.5);
  RandomEngine rng;
  rng.Seed(12);
  const int S = 1000;
  ChoiceSituations situations;
  std::vector<Eigen::RowVector2d> rows;
  situations.start.push_back(0);
  for (int s = 0; s < S; ++s) {
    const int J = rng.Uniform() < 0.5 ? 3 : 4;
    double best = -1e300;
    Eigen::Index chosen = 0;
    for (int j = 0; j < J; ++j) {
      const Eigen::RowVector2d x(rng.Normal(), rng.Normal());
      const double u = x.dot(truth) + Gumbel(rng);
      if (u > best) {
        best = u;
        chosen = static_cast<Eigen::Index>(rows.size());
      }
      rows.push_back(x);
    }
    situations.chosen.push_back(chosen);
    situations.start.push_back(static_cast<Eigen::Index>(rows.size()));
  }
  Eigen::MatrixXd X(static_cast<Eigen::Index>(rows.size()), 2);
  for (std::size_t r = 0; r < rows.size(); ++r) X.row(static_cast<Eigen::Index>(r)) = rows[r];
  CLogit model(Gibbs(1500, 200, 2));
  ASSERT_TRUE(model.Sample(situations, X, Prior(2, 1e-3), EventDispatcher(), nullptr));
  const Eigen::MatrixXd draws = Pooled(model);
  const Eigen::RowVectorXd mean = draws.colwise().mean();
  const Eigen::MatrixXd cov = mlik::Covariance(draws);
  for (Eigen::Index j = 0; j < 2; ++j) EXPECT_NEAR(mean(j), truth(j), 4.0 * std::sqrt(cov(j, j))) << j;
  EXPECT_GT(model.acceptance, 0.7);
  const Eigen::VectorXd b = 0.5 * truth;
  Eigen::VectorXd gradient, numericGradient;
  Eigen::MatrixXd hessian, numericHessian;
  const double kernel = model.Derivatives(b, gradient, hessian);
  EXPECT_NEAR(model.IndependenceTarget::Derivatives(b, numericGradient, numericHessian), kernel, 1e-9 * std::fabs(kernel));
  EXPECT_LT((numericGradient - gradient).norm(), 1e-4 * gradient.norm());
  EXPECT_LT((numericHessian - hessian).norm(), 1e-4 * hessian.norm());
}

namespace {

// Utilities u_a = x_a'b + e_a with independent errors of standard deviations `sd` over three
// alternatives; the identified parameters are those of the differences from alternative 0, scaled
// so that the first difference's variance is 1.
struct ProbitSample {
  std::vector<Eigen::MatrixXd> D;  // per alternative 1, 2: its regressors less alternative 0's
  Eigen::VectorXi choice;
};

ProbitSample SimulateConditionalProbit(int n, const Eigen::Vector2d& b, const Eigen::Vector3d& sd, std::uint64_t seed) {
  RandomEngine rng;
  rng.Seed(seed);
  ProbitSample s;
  s.D.assign(2, Eigen::MatrixXd(n, 2));
  s.choice.resize(n);
  for (int i = 0; i < n; ++i) {
    Eigen::Matrix<double, 3, 2> x;
    Eigen::Vector3d u;
    for (int a = 0; a < 3; ++a) {
      x.row(a) << rng.Normal(), rng.Normal();
      u(a) = x.row(a).dot(b) + sd(a) * rng.Normal();
    }
    for (int j = 0; j < 2; ++j) s.D[static_cast<std::size_t>(j)].row(i) = x.row(j + 1) - x.row(0);
    Eigen::Index best = 0;
    u.maxCoeff(&best);
    s.choice(i) = static_cast<int>(best);
  }
  return s;
}

}  // namespace

TEST(CProbit, RecoversIdentifiedCoefficientsAndCovariance) {
  const Eigen::Vector2d b(1.0, -0.5);
  const Eigen::Vector3d sd(std::sqrt(0.5), 1.0, std::sqrt(1.5));
  ProbitSample s = SimulateConditionalProbit(1000, b, sd, 4);
  // Differences: var(e1 - e0) = 1.5, var(e2 - e0) = 2, cov = 0.5; scaled by 1.5.
  Eigen::VectorXd truth(4);
  truth << b / std::sqrt(1.5), 0.5 / 1.5, 2.0 / 1.5;
  const AlternativeDesign design(s.D);
  // A prior centred at zero (joint draw of the scale and b) and one centred elsewhere (b drawn on
  // the identified scale).
  for (double centre : {0.0, 0.2}) {
    MNProbit model(Gibbs(1000, 200, 2));
    const LinearPrior prior = LinearPrior::Combine(Eigen::VectorXd::Constant(2, centre), Eigen::MatrixXd::Identity(2, 2) * 1e-3,
                                                   Eigen::MatrixXd(0, 2), Eigen::VectorXd(0), Eigen::MatrixXd(0, 0));
    ASSERT_TRUE(model.Sample(design, s.choice, Eigen::MatrixXd(), prior, 5.0, Eigen::MatrixXd::Identity(2, 2),
                             EventDispatcher(), nullptr));
    const Eigen::MatrixXd draws = Pooled(model);
    ASSERT_EQ(draws.cols(), 4);
    const Eigen::RowVectorXd mean = draws.colwise().mean();
    const Eigen::MatrixXd cov = mlik::Covariance(draws);
    for (Eigen::Index j = 0; j < 4; ++j) {
      EXPECT_NEAR(mean(j), truth(j), 4.0 * std::sqrt(cov(j, j))) << "parameter " << j << ", prior centre " << centre;
    }
    EXPECT_GT(model.acceptance, 0.5);
    EXPECT_TRUE(std::isfinite(model.logML));
  }
}

TEST(MNProbit, RecoversSimulatedCoefficients) {
  // Chooser regressors only: w_i = B'x_i + e_i over two differences, Sigma = [1 0.5; 0.5 1.5].
  Eigen::MatrixXd B(3, 2);
  B << 0.5, -0.3,
       1.5, -1.2,
       -1.0, 1.0;
  Eigen::Matrix2d sigma;
  sigma << 1.0, 0.5, 0.5, 1.5;
  const Eigen::Matrix2d L = sigma.llt().matrixL();
  RandomEngine rng;
  rng.Seed(21);
  const int n = 1500;
  Eigen::MatrixXd X(n, 3);
  Eigen::VectorXi choice(n);
  for (int i = 0; i < n; ++i) {
    X.row(i) << 1.0, rng.Normal(), rng.Normal();
    const Eigen::Vector2d w = B.transpose() * X.row(i).transpose() + L * Eigen::Vector2d(rng.Normal(), rng.Normal());
    Eigen::Index best = 0;
    choice(i) = w.maxCoeff(&best) < 0.0 ? 0 : static_cast<int>(best) + 1;
  }
  const ChooserDesign design(X, 2);
  MNProbit model(Gibbs(1500, 300, 2));
  ASSERT_TRUE(model.Sample(design, choice, Eigen::MatrixXd(), Prior(6, 1e-3), 5.0, Eigen::MatrixXd::Identity(2, 2),
                           EventDispatcher(), nullptr));
  const Eigen::MatrixXd draws = Pooled(model);
  ASSERT_EQ(draws.cols(), 8);
  Eigen::VectorXd truth(8);
  truth << B.reshaped(), 0.5, 1.5;
  const Eigen::RowVectorXd mean = draws.colwise().mean();
  const Eigen::MatrixXd cov = mlik::Covariance(draws);
  for (Eigen::Index j = 0; j < 8; ++j) EXPECT_NEAR(mean(j), truth(j), 4.0 * std::sqrt(cov(j, j))) << j;
}

// Three binary outcomes with correlated errors, R = [1 .5 .3; .5 1 .4; .3 .4 1] (close to one
// factor); every structure recovers the coefficients, and the correlations that it can express.
TEST(MVProbit, RecoversCoefficientsAndCorrelations) {
  Eigen::Matrix3d R;
  R << 1.0, 0.5, 0.3, 0.5, 1.0, 0.4, 0.3, 0.4, 1.0;
  const Eigen::Matrix3d L = R.llt().matrixL();
  const Eigen::Vector3d intercept(0.3, -0.2, 0.1), slope(1.0, 0.8, -0.6);
  RandomEngine rng;
  rng.Seed(14);
  const int n = 800;
  Eigen::MatrixXd Y(n, 3);
  std::vector<Eigen::MatrixXd> X(3, Eigen::MatrixXd(n, 2));
  for (int i = 0; i < n; ++i) {
    const Eigen::Vector3d e = L * Eigen::Vector3d(rng.Normal(), rng.Normal(), rng.Normal());
    for (int j = 0; j < 3; ++j) {
      X[static_cast<std::size_t>(j)].row(i) << 1.0, rng.Normal();
      Y(i, j) = intercept(j) + slope(j) * X[static_cast<std::size_t>(j)](i, 1) + e(j) > 0.0 ? 1.0 : 0.0;
    }
  }
  Eigen::VectorXd coefficients(6);
  coefficients << intercept(0), slope(0), intercept(1), slope(1), intercept(2), slope(2);
  for (auto structure : {CorrelationStructure::Unrestricted, CorrelationStructure::Common, CorrelationStructure::OneFactor}) {
    MVProbit model(Gibbs(600, 150, 1), structure);
    ASSERT_TRUE(model.Sample(Y, X, Prior(6, 1e-3), EventDispatcher(), nullptr));
    const Eigen::MatrixXd draws = Pooled(model);
    const Eigen::RowVectorXd mean = draws.colwise().mean();
    const Eigen::MatrixXd cov = mlik::Covariance(draws);
    for (Eigen::Index j = 0; j < 6; ++j) {
      EXPECT_NEAR(mean(j), coefficients(j), 4.0 * std::sqrt(cov(j, j))) << static_cast<int>(structure) << " " << j;
    }
    const Eigen::VectorXd theta = mean.tail(draws.cols() - 6).transpose();
    const Eigen::MatrixXd estimated = MVProbit::Correlation(structure, theta, 3);
    if (structure == CorrelationStructure::Unrestricted) {
      for (Eigen::Index j = 0; j < 3; ++j) EXPECT_NEAR(theta(j), Eigen::Vector3d(0.5, 0.3, 0.4)(j), 4.0 * std::sqrt(cov(6 + j, 6 + j)));
    } else if (structure == CorrelationStructure::Common) {
      EXPECT_NEAR(theta(0), 0.4, 4.0 * std::sqrt(cov(6, 6)));  // the average correlation
    } else {
      EXPECT_GT(theta.minCoeff(), 0.0);  // lambda_1 >= 0, and the others share its sign here
      EXPECT_LT((estimated - R).cwiseAbs().maxCoeff(), 0.15);
    }
    EXPECT_TRUE(std::isfinite(model.logML));
  }
}
