// Gamma-related and discrete densities and cdfs against mpmath values, tails and edges included.
#include <cmath>
#include <functional>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "Beta.h"
#include "Binomial.h"
#include "Exponential.h"
#include "FisherF.h"
#include "Gamma.h"
#include "NegativeBinomial.h"
#include "Poisson.h"
#include "Weibull.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
// Relative tolerance: Boost.Math and the closed forms are good to a few ulps; a wrong formula or a
// tail computed as 1 - (1 - p) is off by far more.
constexpr double kRelTol = 1e-12;

// One point: x, up to two parameters (b unused by one-parameter families), density and cdf.
struct Row {
  double x;
  double a;
  double b;
  double pdf;
  double cdf;
};

using Function = std::function<double(double, double, double)>;

void CheckTable(const std::vector<Row>& rows, const Function& pdf, const Function& cdf) {
  for (const Row& r : rows) {
    SCOPED_TRACE(testing::Message() << "x = " << r.x << ", a = " << r.a << ", b = " << r.b);
    EXPECT_NEAR(pdf(r.x, r.a, r.b), r.pdf, kRelTol * r.pdf);
    EXPECT_NEAR(cdf(r.x, r.a, r.b), r.cdf, kRelTol * r.cdf);
  }
}

}  // namespace

// The reference values below come from mpmath at 50 digits on the exact doubles of the arguments,
// printed to 17 significant digits.
TEST(GammaAndDiscreteDensityReference, ContinuousFamilies) {
  {
    SCOPED_TRACE("gamma(shape, rate)");
    // pdf = b^a x^(a-1) exp(-b x) / gamma(a); cdf = gammainc(a, 0, b x, regularized=True)
    CheckTable({{0.1, 2.5, 3, 0.27471260835654697, 0.011996757205906268},
                {0.8, 2.5, 3, 0.76119365754526591, 0.55922703191333708},
                {5, 2.5, 3, 4.0105572021449394e-5, 0.99998525141896156},
                {0.01, 2.5, 3, 0.011379891008562491, 4.5912347097578532e-5},
                {1e-06, 0.3, 2, 6522.4252063605017, 0.021741450802898499},
                {10, 0.3, 2, 1.6924675015874931e-10, 0.99999999991811555},
                {12.5, 50, 4, 0.2253000253007633, 0.51880831547204328},
                {5, 50, 4, 7.6301885974400029e-8, 1.2458926079719379e-8},
                {30, 50, 4, 3.8238280188124094e-13, 0.99999999999983992},
                {2, 1, 0.5, 0.18393972058572116, 0.63212055882855768}},
               dist::GammaPdf, dist::GammaCdf);
  }
  {
    SCOPED_TRACE("beta(alpha, beta)");
    // pdf = x^(a-1) (1-x)^(b-1) / beta(a, b); cdf = betainc(a, b, 0, x, regularized=True)
    CheckTable({{0.3, 2, 5, 2.1609000000000001, 0.57982499999999998},
                {0.0001, 2, 5, 0.0029988001799880004, 1.4996000449976002e-7},
                {0.99, 2, 5, 2.9700000000000105e-7, 0.999999999405},
                {0.5, 0.5, 0.5, 0.63661977236758134, 0.5},
                {1e-08, 0.5, 0.5, 3183.0988777534011, 6.3661977342861431e-5},
                {1e-10, 0.2, 3, 2.6399999994720028e+7, 0.013199999999559997},
                {0.9, 0.2, 3, 0.0028721685295921975, 0.9999063076430295}},
               dist::BetaPdf, dist::BetaCdf);
  }
  {
    SCOPED_TRACE("exponential(rate)");
    // pdf = r exp(-r x); cdf = -expm1(-r x)
    CheckTable({{0.4, 2.5, 0, 0.91969860292860575, 0.6321205588285577},
                {20, 2.5, 0, 4.8218746199097945e-22, 1.0},
                {1e-10, 2.5, 0, 2.499999999375, 2.4999999996875001e-10}},
               [](double x, double r, double) { return dist::ExponentialPdf(x, r); },
               [](double x, double r, double) { return dist::ExponentialCdf(x, r); });
  }
  {
    SCOPED_TRACE("weibull(shape, scale)");
    // z = x / l: pdf = k / l z^(k-1) exp(-z^k); cdf = -expm1(-z^k)
    CheckTable({{1, 1.5, 2, 0.37239168821942198, 0.2978114986734404},
                {1e-06, 1.5, 2, 0.00053033008570241063, 3.5355339053077374e-10},
                {10, 1.5, 2, 2.3387637112670093e-5, 0.99998605430762213},
                {0.5, 0.7, 1.3, 0.42969524600555256, 0.4008799459852233},
                {30, 0.7, 1.3, 2.592464250378434e-5, 0.99987654421102691}},
               dist::WeibullPdf, dist::WeibullCdf);
  }
  {
    SCOPED_TRACE("F(d1, d2)");
    // pdf = sqrt((d1 x)^d1 d2^d2 / (d1 x + d2)^(d1+d2)) / (x beta(d1/2, d2/2));
    // cdf = betainc(d1/2, d2/2, 0, d1 x / (d1 x + d2), regularized=True)
    CheckTable({{1, 5, 12, 0.51059115319443894, 0.54180330048575329},
                {0.001, 5, 12, 0.00031067815692015472, 1.2439707168617859e-7},
                {20, 5, 12, 5.0128062405912549e-6, 0.99998080070838865},
                {0.5, 1.5, 20, 0.52162830899323961, 0.43852247027216007},
                {3, 1.5, 20, 0.055876927742005186, 0.91539303660389432}},
               dist::FisherPdf, dist::FisherCdf);
  }
}

TEST(GammaAndDiscreteDensityReference, DiscreteFamilies) {
  {
    SCOPED_TRACE("poisson(mean)");
    // pmf = exp(-m) m^k / factorial(k); cdf = gammainc(k + 1, m, inf, regularized=True)
    CheckTable({{0, 0.5, 0, 0.60653065971263342, 0.60653065971263342},
                {3, 0.5, 0, 0.012636055410679863, 0.99824837744370918},
                {20, 0.5, 0, 2.3775421711883458e-25, 1.0},
                {500, 500, 0, 0.017838267869511779, 0.51189112169875142},
                {400, 500, 0, 4.3087034560338219e-7, 2.0780896100121019e-6},
                {620, 500, 0, 2.503507379937226e-8, 0.99999989974893962}},
               [](double x, double m, double) { return dist::PoissonPdf(x, m); },
               [](double x, double m, double) { return dist::PoissonCdf(x, m); });
  }
  {
    SCOPED_TRACE("binomial(n, p)");
    // pmf = binomial(n, k) p^k (1-p)^(n-k); cdf = sum of the pmf over 0 ... k
    CheckTable({{7, 10, 0.7, 0.266827932, 0.61721721360000012},
                {0, 10, 0.7, 5.9049000000000087e-6, 5.9049000000000087e-6},
                {10, 10, 0.7, 0.028247524899999982, 1.0},
                {2, 10, 0.7, 0.0014467005000000015, 0.0015903864000000017},
                {30, 1000, 0.01, 1.4179959906581919e-7, 0.99999993580071397},
                {0, 1000, 0.01, 4.3171247410658242e-5, 4.3171247410658242e-5}},
               dist::BinomialPdf, dist::BinomialCdf);
  }
  {
    SCOPED_TRACE("negative binomial(r, p)");
    // pmf = binomial(k + r - 1, k) p^r (1-p)^k; cdf = betainc(r, k + 1, 0, p, regularized=True)
    CheckTable({{0, 3, 0.4, 0.064000000000000011, 0.064000000000000011},
                {4, 3, 0.4, 0.124416, 0.58009600000000005},
                {40, 3, 0.4, 7.3660241906844415e-8, 0.99999987555397284},
                {2, 0.5, 0.8, 0.013416407864998733, 0.99728631796490621},
                {0, 0.5, 0.8, 0.8944271909999159, 0.8944271909999159}},
               dist::NegativeBinomialPdf, dist::NegativeBinomialCdf);
  }
  // Discrete cdfs take floor(x): between the integers they hold the value of the integer below.
  EXPECT_NEAR(dist::PoissonCdf(3.9, 0.5), 0.99824837744370918, kRelTol);
  EXPECT_NEAR(dist::BinomialCdf(7.5, 10, 0.7), 0.61721721360000012, kRelTol);
  EXPECT_NEAR(dist::NegativeBinomialCdf(4.99, 3, 0.4), 0.58009600000000005, kRelTol);
}

// End points of the support, where the density has a closed form, and points outside it.
TEST(GammaAndDiscreteDensityReference, SupportEdges) {
  EXPECT_EQ(dist::GammaPdf(0, 0.5, 2), kInf);
  EXPECT_EQ(dist::GammaPdf(0, 1, 2), 2.0);
  EXPECT_EQ(dist::GammaPdf(0, 3, 2), 0.0);
  EXPECT_EQ(dist::GammaPdf(-1, 3, 2), 0.0);
  EXPECT_EQ(dist::GammaCdf(-1, 3, 2), 0.0);
  EXPECT_EQ(dist::GammaCdf(kInf, 3, 2), 1.0);

  EXPECT_EQ(dist::BetaPdf(0, 0.5, 3), kInf);
  EXPECT_EQ(dist::BetaPdf(0, 1, 3), 3.0);
  EXPECT_EQ(dist::BetaPdf(1, 2, 1), 2.0);
  EXPECT_EQ(dist::BetaPdf(1, 2, 3), 0.0);
  EXPECT_EQ(dist::BetaPdf(1.5, 2, 3), 0.0);
  EXPECT_EQ(dist::BetaCdf(-0.5, 2, 3), 0.0);
  EXPECT_EQ(dist::BetaCdf(1, 2, 3), 1.0);

  EXPECT_EQ(dist::ExponentialPdf(0, 2.5), 2.5);
  EXPECT_EQ(dist::ExponentialPdf(-0.1, 2.5), 0.0);
  EXPECT_EQ(dist::ExponentialCdf(-0.1, 2.5), 0.0);
  EXPECT_EQ(dist::WeibullPdf(0, 1, 2), 0.5);
  EXPECT_EQ(dist::WeibullPdf(0, 0.5, 2), kInf);
  EXPECT_EQ(dist::WeibullPdf(-1, 1.5, 2), 0.0);
  EXPECT_EQ(dist::WeibullCdf(kInf, 1.5, 2), 1.0);
  EXPECT_EQ(dist::FisherPdf(0, 2, 7), 1.0);
  EXPECT_EQ(dist::FisherPdf(0, 1, 7), kInf);
  EXPECT_EQ(dist::FisherPdf(0, 3, 7), 0.0);
  EXPECT_EQ(dist::FisherCdf(kInf, 3, 7), 1.0);

  // Discrete families: no mass off the non-negative integers of the support.
  EXPECT_EQ(dist::PoissonPdf(2.5, 3), 0.0);
  EXPECT_EQ(dist::PoissonPdf(-1, 3), 0.0);
  EXPECT_EQ(dist::PoissonPdf(kInf, 3), 0.0);
  EXPECT_EQ(dist::PoissonCdf(-0.5, 3), 0.0);
  EXPECT_EQ(dist::PoissonPdf(0, 0), 1.0);
  EXPECT_EQ(dist::PoissonCdf(0, 0), 1.0);
  EXPECT_EQ(dist::BinomialPdf(11, 10, 0.7), 0.0);
  EXPECT_EQ(dist::BinomialPdf(2.5, 10, 0.7), 0.0);
  EXPECT_EQ(dist::BinomialCdf(-1, 10, 0.7), 0.0);
  EXPECT_EQ(dist::BinomialCdf(10.5, 10, 0.7), 1.0);
  EXPECT_EQ(dist::BinomialPdf(0, 0, 0.3), 1.0);
  EXPECT_EQ(dist::BinomialPdf(0, 5, 0), 1.0);
  EXPECT_EQ(dist::BinomialPdf(5, 5, 1), 1.0);
  EXPECT_EQ(dist::BinomialCdf(4, 5, 1), 0.0);
  EXPECT_EQ(dist::NegativeBinomialPdf(1.5, 3, 0.4), 0.0);
  EXPECT_EQ(dist::NegativeBinomialPdf(-1, 3, 0.4), 0.0);
  EXPECT_EQ(dist::NegativeBinomialPdf(0, 3, 1), 1.0);
  EXPECT_EQ(dist::NegativeBinomialCdf(kInf, 3, 0.4), 1.0);
}

// Parameters outside the family and NaN arguments give NaN, never an exception.
TEST(GammaAndDiscreteDensityReference, InvalidInputGivesNaN) {
  EXPECT_TRUE(std::isnan(dist::GammaPdf(1, 0, 1)));
  EXPECT_TRUE(std::isnan(dist::GammaCdf(1, 1, -1)));
  EXPECT_TRUE(std::isnan(dist::GammaCdf(kNaN, 1, 1)));
  EXPECT_TRUE(std::isnan(dist::BetaPdf(0.5, -1, 1)));
  EXPECT_TRUE(std::isnan(dist::BetaCdf(0.5, 1, kInf)));
  EXPECT_TRUE(std::isnan(dist::ExponentialCdf(1, 0)));
  EXPECT_TRUE(std::isnan(dist::ExponentialPdf(kNaN, 1)));
  EXPECT_TRUE(std::isnan(dist::WeibullPdf(1, 1, kInf)));
  EXPECT_TRUE(std::isnan(dist::WeibullCdf(1, -2, 1)));
  EXPECT_TRUE(std::isnan(dist::FisherCdf(1, 0, 3)));
  EXPECT_TRUE(std::isnan(dist::FisherPdf(1, 3, kNaN)));
  EXPECT_TRUE(std::isnan(dist::PoissonPdf(1, -1)));
  EXPECT_TRUE(std::isnan(dist::PoissonCdf(kNaN, 1)));
  EXPECT_TRUE(std::isnan(dist::BinomialPdf(1, 2.5, 0.5)));
  EXPECT_TRUE(std::isnan(dist::BinomialCdf(1, 3, 1.5)));
  EXPECT_TRUE(std::isnan(dist::BinomialPdf(1, -3, 0.5)));
  EXPECT_TRUE(std::isnan(dist::NegativeBinomialPdf(1, 0, 0.5)));
  EXPECT_TRUE(std::isnan(dist::NegativeBinomialCdf(1, 2, 0)));
}
