// Densities and distribution functions of the continuous families against mpmath reference
// values, tails included, and their answers outside the support and on bad parameters.
#include <cmath>
#include <functional>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "ChiSquared.h"
#include "ExtremeValue.h"
#include "LogNormal.h"
#include "Logistic.h"
#include "LogitNormal.h"
#include "MultivariateNormal.h"
#include "Normal.h"
#include "StudentT.h"
#include "TruncatedNormal.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// A point with its density and distribution function.
struct Reference {
  double x;
  double pdf;
  double cdf;
};

// Compares both functions at every point within a relative tolerance.
void ExpectMatches(const std::vector<Reference>& table, const std::function<double(double)>& pdf,
                   const std::function<double(double)>& cdf, double relativeTolerance) {
  for (const Reference& r : table) {
    EXPECT_NEAR(pdf(r.x), r.pdf, relativeTolerance * r.pdf) << "pdf at " << r.x;
    EXPECT_NEAR(cdf(r.x), r.cdf, relativeTolerance * r.cdf) << "cdf at " << r.x;
  }
}

}  // namespace

// Reference values from mpmath at 60 digits, z = (x - m) / s:
//   normal(m, s):        pdf npdf(x, m, s), cdf erfc(-z / sqrt(2)) / 2
//   lognormal(m, s):     pdf exp(-(log(x) - m)^2 / (2 s^2)) / (x s sqrt(2 pi)),
//                        cdf erfc(-(log(x) - m) / (s sqrt(2))) / 2
//   logitnormal(m, s):   as log-normal with g = log(x / (1 - x)) for log(x) and x (1 - x) for x
//   logistic(m, s):      pdf exp(-z) / (s (1 + exp(-z))^2), cdf 1 / (1 + exp(-z))
//   extremevalue(m, s):  pdf exp(-z - exp(-z)) / s, cdf exp(-exp(-z))
TEST(ContinuousDensityReference, ClosedFormFamiliesIncludingTails) {
  const std::vector<Reference> normal = {
      {-60, 9.4100525305828516e-207, 6.1139070798232622e-208},
      {-20, 1.6062089358107199e-26, 2.9630808780943587e-27},
      {-3, 0.015869825917833709, 0.012224472655044703},
      {1.5, 0.19947114020071635, 0.5},
      {4, 0.091324542694510957, 0.89435022633314476},
      {12, 2.0642354943149992e-07, 0.99999992395039483},
  };
  ExpectMatches(normal, [](double x) { return dist::NormalPdf(x, 1.5, 2.0); },
                [](double x) { return dist::NormalCdf(x, 1.5, 2.0); }, 1e-13);

  const std::vector<Reference> logNormal = {
      {0.0001, 1.0232225099299844e-27, 6.8380691190967684e-33},
      {0.5, 0.46152135211339379, 0.10722273723483376},
      {1.3, 0.38317409121688289, 0.48123881293712911},
      {5, 0.026127007144044735, 0.94916359441259068},
      {50, 3.7342064257871564e-07, 0.99999683459127187},
  };
  ExpectMatches(logNormal, [](double x) { return dist::LogNormalPdf(x, 0.3, 0.8); },
                [](double x) { return dist::LogNormalCdf(x, 0.3, 0.8); }, 1e-13);

  // The last point is 1 - 2^-30.
  const std::vector<Reference> logitNormal = {
      {1e-09, 8.9982833809776291e-36, 9.4926398318691129e-46},
      {0.01, 0.083900245546467134, 0.00034096045614171008},
      {0.3, 0.84608433985147791, 0.18453984686076286},
      {0.7, 1.2329881272628178, 0.59154919969777919},
      {0.999, 0.029097767785159691, 0.99999027748834635},
      {0.99999999906867743, 5.0914243537745282e-32, 1},
  };
  ExpectMatches(logitNormal, [](double x) { return dist::LogitNormalPdf(x, 0.5, 1.5); },
                [](double x) { return dist::LogitNormalCdf(x, 0.5, 1.5); }, 1e-13);

  const std::vector<Reference> logistic = {
      {-40, 9.0885606789651547e-25, 6.3619924752756083e-25},
      {-2, 0.22278316825723957, 0.19332136980230868},
      {-1, 0.35714285714285715, 0.5},
      {0.5, 0.1342506602366671, 0.89499941497973523},
      {30, 8.3533488480400613e-20, 1},
  };
  ExpectMatches(logistic, [](double x) { return dist::LogisticPdf(x, -1.0, 0.7); },
                [](double x) { return dist::LogisticCdf(x, -1.0, 0.7); }, 1e-13);

  const std::vector<Reference> extremeValue = {
      {-3, 1.2519212278346102e-11, 6.69915443295839e-13},
      {-1, 0.0030441876134186105, 0.00061797898933109354},
      {2, 0.24525296078096154, 0.36787944117144233},
      {5, 0.078803301062095432, 0.87342301849311665},
      {40, 6.6340977457592406e-12, 0.99999999999004885},
  };
  ExpectMatches(extremeValue, [](double x) { return dist::ExtremeValuePdf(x, 2.0, 1.5); },
                [](double x) { return dist::ExtremeValueCdf(x, 2.0, 1.5); }, 1e-13);
}

// Reference values from mpmath at 60 digits, with Q(t) = erfc(t / sqrt(2)) / 2,
// a = (lower - m) / s, b = (upper - m) / s, z = (x - m) / s, Z = Q(a) - Q(b):
//   pdf npdf(z) / (s Z), cdf (Q(a) - Q(z)) / Z
// The bounds cover an interval around the mean, a one-sided tail 8 sd out, an interval 40 sd out
// (where Z itself is below the smallest double), a lower tail, and two short intervals.
TEST(ContinuousDensityReference, TruncatedNormalFromCentreToFarTails) {
  struct Case {
    double mean, sd, lower, upper;
    std::vector<Reference> table;
  };
  const std::vector<Case> cases = {
      {0, 1, -1, 2,
       {{-0.5, 0.4300850759232247, 0.18309708152134457},
        {0, 0.48735023846953063, 0.41698875142898584},
        {1.5, 0.15821945738681326, 0.94617962473645001}}},
      {1, 2, 17, kInf,
       {{17.1, 2.7185576016727855, 0.33455585084499057},
        {18, 0.065634844765315656, 0.98476194357924707},
        {20, 8.0999833337472295e-06, 0.99999831303944942},
        {30, 7.0927591239620063e-32, 1}}},
      {0, 1, 40, 41,
       {{40.01, 26.82819751682549, 0.32988079019628447},
        {40.5, 7.2803884878574215e-08, 0.99999999820346719}}},
      {0, 1, -kInf, -12,
       {{-14, 6.1729107877502841e-11, 4.3870618038916779e-12},
        {-12.5, 0.0264297361963521, 0.0021010987239901361}}},
      {2, 0.5, 2.1, 2.15, {{2.12, 20.056892052035838, 0.40296176160404412}}},
      {0, 1, -0.001, 0.002,
       {{-0.0005, 333.33345833330674, 0.16666670138886849},
        {0.001, 333.33333333328335, 0.6666668888888333}}},
      {0, 1, -3, -2.5,
       {{-2.9, 1.2248595579763939, 0.10616048825535394},
        {-2.6, 2.794983465576085, 0.68136801448854456}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "bounds " << c.lower << ", " << c.upper);
    ExpectMatches(
        c.table, [&c](double x) { return dist::TruncatedNormalPdf(x, c.mean, c.sd, c.lower, c.upper); },
        [&c](double x) { return dist::TruncatedNormalCdf(x, c.mean, c.sd, c.lower, c.upper); }, 1e-12);
  }
}

// Reference values from mpmath at 60 digits:
//   t(n):    pdf gamma((n + 1) / 2) / (sqrt(n pi) gamma(n / 2)) (1 + x^2 / n)^(-(n + 1) / 2),
//            cdf for x < 0 betainc(n / 2, 1 / 2, 0, n / (n + x^2), regularized=True) / 2, else 1 minus it
//   chi2(k): pdf x^(k / 2 - 1) exp(-x / 2) / (2^(k / 2) gamma(k / 2)),
//            cdf gammainc(k / 2, 0, x / 2, regularized=True)
TEST(ContinuousDensityReference, StudentTAndChiSquaredIncludingTails) {
  const std::vector<std::pair<double, std::vector<Reference>>> studentT = {
      {3,
       {{-1000, 3.3079535247798321e-12, 1.1026538212882963e-09},
        {-2, 0.067509660663892898, 0.069662984279421594},
        {0.5, 0.31318091100882861, 0.67427601757592448},
        {30, 4.0568271536501956e-06, 0.99995932359786421}}},
      {0.7,
       {{-100000, 6.8804933378696419e-10, 9.8292761973898488e-05},
        {0.2, 0.28104289920097791, 0.55800233072904037}}},
      {30,
       {{-8, 8.113146755218015e-09, 3.1329112378503795e-09},
        {2, 0.056852275047197962, 0.97268747751850848}}},
      {2.5, {{0.001, 0.36180847076359751, 0.50036180863960755}}},
  };
  for (const auto& [dof, table] : studentT) {
    SCOPED_TRACE(testing::Message() << "t dof " << dof);
    ExpectMatches(table, [dof](double x) { return dist::StudentTPdf(x, dof); },
                  [dof](double x) { return dist::StudentTCdf(x, dof); }, 1e-12);
  }

  const std::vector<std::pair<double, std::vector<Reference>>> chiSquared = {
      {0.5,
       {{1e-08, 231932.4009850882, 0.0092772960765127119},
        {0.3, 0.49246606879378135, 0.66682819768464341}}},
      {4,
       {{0.01, 0.002487531197981706, 1.2458411354275082e-05},
        {3, 0.16734762011132237, 0.44217459962892541},
        {60, 1.4036434453260263e-12, 0.9999999999970991}}},
      {100,
       {{50, 3.6021642652022015e-06, 6.9533052476160988e-06},
        {150, 0.00016625736749919078, 0.99909606795764594},
        {300, 2.5070589415277745e-22, 1}}},
  };
  for (const auto& [dof, table] : chiSquared) {
    SCOPED_TRACE(testing::Message() << "chi-squared dof " << dof);
    ExpectMatches(table, [dof](double x) { return dist::ChiSquaredPdf(x, dof); },
                  [dof](double x) { return dist::ChiSquaredCdf(x, dof); }, 1e-12);
  }
  // Infinite dof is the standard normal: 1 / sqrt(2 pi) and erfc(1 / sqrt(2)) / 2.
  EXPECT_NEAR(dist::StudentTPdf(0.0, kInf), 0.3989422804014327, 1e-15);
  EXPECT_NEAR(dist::StudentTCdf(-1.0, kInf), 0.15865525393145705, 1e-15);
}

// The bivariate normal density against the closed form with sd s1, s2 and correlation rho,
//   exp(-(u^2 - 2 rho u v + v^2) / (2 (1 - rho^2))) / (2 pi s1 s2 sqrt(1 - rho^2)),
// u, v the standardised coordinates, from mpmath at 40 digits; the last point is far enough out
// that the density is near 1e-245.
TEST(ContinuousDensityReference, MultivariateNormalAgainstBivariateClosedForm) {
  // s1 = 2, s2 = 0.5, rho = 0.6: L = [[2, 0], [0.3, 0.4]].
  Eigen::MatrixXd L(2, 2);
  L << 2.0, 0.0, 0.3, 0.4;
  Eigen::VectorXd mean(2);
  mean << 1.0, -1.0;
  // (u, v) = (0, 0), (0.5, 2), (15, -15).
  Eigen::MatrixXd X(3, 2);
  X << 1.0, -1.0, 2.0, 0.0, 31.0, -8.5;
  const Eigen::VectorXd density = dist::MultivariateNormalPdf(X, mean, L);
  ASSERT_EQ(density.size(), 3);
  const double expected[] = {0.19894367886486917, 0.018360640384001715, 1.0187885939080119e-245};
  for (int i = 0; i < 3; ++i) {
    EXPECT_NEAR(density(i), expected[i], 1e-13 * expected[i]) << "row " << i;
  }
}

// Outside the support the densities are zero and the distribution functions 0 or 1; bad
// parameters and NaN arguments give NaN rather than a number or an exception.
TEST(ContinuousDensityReference, SupportEdgesAndBadParameters) {
  EXPECT_EQ(dist::LogNormalPdf(0.0, 0.0, 1.0), 0.0);
  EXPECT_EQ(dist::LogNormalCdf(-1.0, 0.0, 1.0), 0.0);
  EXPECT_EQ(dist::LogNormalCdf(kInf, 0.0, 1.0), 1.0);
  EXPECT_EQ(dist::LogitNormalPdf(1.0, 0.0, 1.0), 0.0);
  EXPECT_EQ(dist::LogitNormalCdf(0.0, 0.0, 1.0), 0.0);
  EXPECT_EQ(dist::LogitNormalCdf(1.0, 0.0, 1.0), 1.0);
  EXPECT_EQ(dist::ChiSquaredPdf(-0.5, 3.0), 0.0);
  EXPECT_EQ(dist::ChiSquaredPdf(0.0, 1.0), kInf);
  EXPECT_EQ(dist::ChiSquaredPdf(0.0, 2.0), 0.5);
  EXPECT_EQ(dist::ChiSquaredPdf(0.0, 3.0), 0.0);
  EXPECT_EQ(dist::ChiSquaredCdf(0.0, 3.0), 0.0);
  EXPECT_EQ(dist::ExtremeValuePdf(-kInf, 0.0, 1.0), 0.0);
  EXPECT_EQ(dist::ExtremeValueCdf(-kInf, 0.0, 1.0), 0.0);
  EXPECT_EQ(dist::LogisticCdf(kInf, 0.0, 1.0), 1.0);
  EXPECT_EQ(dist::StudentTCdf(-kInf, 4.0), 0.0);
  EXPECT_EQ(dist::TruncatedNormalPdf(-0.5, 0.0, 1.0, 0.0, 1.0), 0.0);
  EXPECT_EQ(dist::TruncatedNormalCdf(-0.5, 0.0, 1.0, 0.0, 1.0), 0.0);
  EXPECT_EQ(dist::TruncatedNormalCdf(1.5, 0.0, 1.0, 0.0, 1.0), 1.0);

  EXPECT_TRUE(std::isnan(dist::NormalPdf(0.0, 0.0, 0.0)));
  EXPECT_TRUE(std::isnan(dist::NormalCdf(0.0, 0.0, -1.0)));
  EXPECT_TRUE(std::isnan(dist::NormalCdf(kNaN, 0.0, 1.0)));
  EXPECT_TRUE(std::isnan(dist::LogNormalPdf(1.0, kInf, 1.0)));
  EXPECT_TRUE(std::isnan(dist::LogitNormalCdf(0.5, 0.0, 0.0)));
  EXPECT_TRUE(std::isnan(dist::LogisticPdf(0.0, 0.0, -2.0)));
  EXPECT_TRUE(std::isnan(dist::ExtremeValueCdf(0.0, 0.0, kNaN)));
  EXPECT_TRUE(std::isnan(dist::StudentTPdf(0.0, 0.0)));
  EXPECT_TRUE(std::isnan(dist::StudentTCdf(0.0, -3.0)));
  EXPECT_TRUE(std::isnan(dist::ChiSquaredPdf(1.0, 0.0)));
  EXPECT_TRUE(std::isnan(dist::ChiSquaredCdf(kNaN, 2.0)));
  // Reversed, empty and unreachable intervals.
  EXPECT_TRUE(std::isnan(dist::TruncatedNormalPdf(0.5, 0.0, 1.0, 1.0, 0.0)));
  EXPECT_TRUE(std::isnan(dist::TruncatedNormalCdf(0.5, 0.0, 1.0, 0.5, 0.5)));
  EXPECT_TRUE(std::isnan(dist::TruncatedNormalPdf(0.5, 0.0, 1.0, kInf, kInf)));

  Eigen::MatrixXd L = Eigen::MatrixXd::Identity(2, 2);
  const Eigen::VectorXd mean = Eigen::VectorXd::Zero(2);
  Eigen::MatrixXd X(2, 2);
  X << kNaN, 0.0, kInf, 0.0;
  const Eigen::VectorXd edge = dist::MultivariateNormalPdf(X, mean, L);
  EXPECT_TRUE(std::isnan(edge(0)));
  EXPECT_EQ(edge(1), 0.0);
  L(1, 1) = 0.0;
  EXPECT_TRUE(dist::MultivariateNormalPdf(Eigen::MatrixXd::Zero(2, 2), mean, L).array().isNaN().all());
  EXPECT_TRUE(dist::MultivariateNormalPdf(Eigen::MatrixXd::Zero(2, 3), mean, Eigen::MatrixXd::Identity(2, 2))
                  .array()
                  .isNaN()
                  .all());
}
