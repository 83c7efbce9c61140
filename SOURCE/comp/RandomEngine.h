// RandomEngine: the one random-number engine of a session, with its uniform and normal transforms.
#pragma once

#include <cmath>
#include <cstdint>
#include <random>

// A 64-bit Mersenne Twister (the standard MT19937-64, seeded with 42 until `Seed` is called) and
// the two transforms every draw is built from. The transforms are written here rather than taken
// from the standard library, whose distributions differ between implementations, so that a seed
// gives the same draws on every platform.
class RandomEngine {
public:
  // Re-seeds the engine and drops the cached normal variate, so the seed alone determines every
  // draw after it.
  void Seed(std::uint64_t seed) {
    m_engine.seed(seed);
    m_hasCachedNormal = false;
  }

  // Uniform on [0, 1): one engine output scaled by 2^-64; a result that rounds to 1 becomes the
  // largest double below 1.
  double Uniform() {
    const double u = static_cast<double>(m_engine()) * 5.421010862427522e-20;
    return u < 1.0 ? u : std::nextafter(1.0, 0.0);
  }

  // Standard normal by the polar method: each round makes two variates; the first is returned and
  // the second kept for the next call.
  double Normal() {
    if (m_hasCachedNormal) {
      m_hasCachedNormal = false;
      return m_cachedNormal;
    }
    double v1 = 0.0;
    double v2 = 0.0;
    double s = 0.0;
    do {
      v1 = 2.0 * Uniform() - 1.0;
      v2 = 2.0 * Uniform() - 1.0;
      s = v1 * v1 + v2 * v2;
    } while (s >= 1.0 || s == 0.0);
    const double factor = std::sqrt(-2.0 * std::log(s) / s);
    m_cachedNormal = v2 * factor;
    m_hasCachedNormal = true;
    return v1 * factor;
  }

  // The seed of stream `stream` of a family of engines seeded from `seed`: stream 0 uses the seed
  // itself, further streams are spread by a large odd constant.
  static std::uint64_t StreamSeed(std::uint64_t seed, std::uint64_t stream) {
    return seed + stream * 0x9E3779B97F4A7C15ull;
  }

  // The raw engine, for algorithms that need 64-bit outputs.
  std::mt19937_64& Engine() { return m_engine; }

private:
  std::mt19937_64 m_engine{42};
  double m_cachedNormal = 0.0;
  bool m_hasCachedNormal = false;
};
