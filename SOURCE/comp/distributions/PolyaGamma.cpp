// PolyaGamma: PG(1, c) draws by the alternating series of J*(1, z), with w = J* / 4 and z = |c| / 2.
#include "PolyaGamma.h"

#include <cmath>

namespace dist {

namespace {

constexpr double kPi = 3.14159265358979323846;
// Where the two expansions of J*'s density meet; the mixture proposal switches there too.
constexpr double kTruncation = 0.64;

double Exponential(RandomEngine& rng) { return -std::log1p(-rng.Uniform()); }

// The n-th term of J*(1)'s density series, a_n(x): from the left expansion below the truncation
// point, from the right one above it. Both are k_n c(x) e^((2n+1)^2 s(x)) with k_n = (n + 1/2) pi, so
// a draw takes one exponential, e = e^s(x), and the later terms powers of it.
struct Series {
  double factor;  // c(x): 1 above the truncation point, (2 / (pi x))^(3/2) below it
  double base;    // e^s(x): e^(-pi^2 x / 8) above, e^(-1 / (2x)) below

  explicit Series(double x) {
    if (x > kTruncation) {
      factor = 1.0;
      base = std::exp(-kPi * kPi * x / 8.0);
    } else {
      factor = std::pow(2.0 / (kPi * x), 1.5);
      base = std::exp(-0.5 / x);
    }
  }
  double Term(int n) const {
    const double k = (n + 0.5) * kPi;
    if (n == 0) return k * factor * base;
    if (n == 1) {
      const double b2 = base * base, b4 = b2 * b2;
      return k * factor * b4 * b4 * base;  // base^9
    }
    const double odd = 2.0 * n + 1.0;
    return k * factor * std::pow(base, odd * odd);
  }
};

// Phi(t) from erfc.
double NormalCdf(double t) { return 0.5 * std::erfc(-t / std::sqrt(2.0)); }

// The probability that the proposal comes from the exponential piece beyond the truncation point:
// p / (p + q) with q / p = 4/pi r e^(r t) (e^-z Phi(b) + e^z Phi(a)), r = pi^2/8 + z^2/2,
// b = (t z - 1) / sqrt(t), a = -(t z + 1) / sqrt(t). In logs where e^z would overflow.
double ExponentialShare(double z) {
  const double rate = kPi * kPi / 8.0 + z * z / 2.0;
  const double root = std::sqrt(1.0 / kTruncation);
  const double below = NormalCdf(root * (kTruncation * z - 1.0));
  const double above = NormalCdf(-root * (kTruncation * z + 1.0));
  double ratio = 0.0;
  if (z < 300.0) {
    const double ez = std::exp(z);
    ratio = 4.0 / kPi * rate * std::exp(rate * kTruncation) * (below / ez + above * ez);
  } else {
    const double base = std::log(rate) + rate * kTruncation;
    ratio = 4.0 / kPi * (std::exp(base - z + std::log(below)) + std::exp(base + z + std::log(above)));
  }
  return 1.0 / (1.0 + ratio);
}

// Inverse Gaussian with mean 1/z and shape 1, truncated to (0, kTruncation).
double TruncatedInverseGaussian(RandomEngine& rng, double z) {
  const double mu = z > 0.0 ? 1.0 / z : HUGE_VAL;
  if (mu > kTruncation) {
    // An inverse chi-square truncated to (0, t), tilted by exp(-z^2 x / 2) through rejection.
    for (;;) {
      double e1 = 0.0, e2 = 0.0;
      do {
        e1 = Exponential(rng);
        e2 = Exponential(rng);
      } while (e1 * e1 > 2.0 * e2 / kTruncation);
      const double root = 1.0 + kTruncation * e1;
      const double x = kTruncation / (root * root);
      if (rng.Uniform() <= std::exp(-0.5 * z * z * x)) return x;
    }
  }
  // The mean lies inside: draw the whole inverse Gaussian (Michael, Schucany and Haas) until a
  // draw falls below the truncation point.
  for (;;) {
    const double n = rng.Normal();
    const double y = n * n;
    double x = mu + 0.5 * mu * mu * y - 0.5 * mu * std::sqrt(4.0 * mu * y + mu * mu * y * y);
    if (rng.Uniform() > mu / (mu + x)) x = mu * mu / x;
    if (x < kTruncation) return x;
  }
}

}  // namespace

double PolyaGammaLaplace(double t, double c) {
  const double half = 0.5 * std::fabs(c);
  const double root = std::sqrt(half * half + 0.5 * t);
  // cosh(a) / cosh(b) as exp(a - b) (1 + e^-2a) / (1 + e^-2b), safe for large arguments.
  return std::exp(half - root) * (1.0 + std::exp(-2.0 * half)) / (1.0 + std::exp(-2.0 * root));
}

double PolyaGammaDraw(RandomEngine& rng, double c) {
  const double z = 0.5 * std::fabs(c);
  const double rate = kPi * kPi / 8.0 + z * z / 2.0;
  const double share = ExponentialShare(z);
  for (;;) {
    const double x = rng.Uniform() < share ? kTruncation + Exponential(rng) / rate : TruncatedInverseGaussian(rng, z);
    const Series series(x);
    double s = series.Term(0);
    const double y = rng.Uniform() * s;
    for (int n = 1;; ++n) {
      if (n % 2 == 1) {
        s -= series.Term(n);
        if (y <= s) return 0.25 * x;
      } else {
        s += series.Term(n);
        if (y > s) break;
      }
    }
  }
}

}  // namespace dist
