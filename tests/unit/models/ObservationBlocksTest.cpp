// Blocks of observations drawn on several threads give the draws of one thread, every sweep.
#include <gtest/gtest.h>

#include "ObservationBlocks.h"

namespace {

// Three sweeps of one uniform per observation, with `threads` threads.
Eigen::MatrixXd Sweeps(Eigen::Index n, int threads) {
  RandomEngine seeds;
  seeds.Seed(9);
  ObservationBlocks blocks(n, seeds, threads);
  Eigen::MatrixXd out(n, 3);
  for (int sweep = 0; sweep < 3; ++sweep) {
    blocks.Run([&](Eigen::Index, Eigen::Index first, Eigen::Index end, RandomEngine& rng) {
      for (Eigen::Index i = first; i < end; ++i) out(i, sweep) = rng.Uniform();
    });
  }
  return out;
}

}  // namespace

TEST(ObservationBlocks, ThreadsChangeNothingButTheSpeed) {
  for (Eigen::Index n : {Eigen::Index{1}, Eigen::Index{1024}, Eigen::Index{10001}}) {
    const Eigen::MatrixXd alone = Sweeps(n, 1);
    EXPECT_EQ(Sweeps(n, 2), alone) << n;
    EXPECT_EQ(Sweeps(n, 5), alone) << n;
    // Every observation drawn, and the sweeps differ.
    EXPECT_TRUE((alone.array() >= 0.0).all() && (alone.array() < 1.0).all());
    if (n > 1) {
      EXPECT_NE(alone.col(0), alone.col(1));
    }
  }
}
