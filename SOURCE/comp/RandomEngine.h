// RandomEngine: the one random-number engine of a session, seeded with 42.
#pragma once

#include <cstdint>
#include <random>

struct RandomEngine {
  std::mt19937_64 engine{42};
  void Seed(std::uint64_t seed) { engine.seed(seed); }
};
