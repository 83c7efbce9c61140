// Limits of the chain runner and of the Gibbs settings: too few kept draws, too many chains,
// draws that cannot fit in memory.
#include <gtest/gtest.h>

#include <string>

#include "EventDispatcher.h"
#include "Estimator.h"
#include "ModelsInterpreter.h"

namespace {

Eigen::MatrixXd Scalar(double x) { return Eigen::MatrixXd::Constant(1, 1, x); }

class ConstantChain : public GibbsChain {
public:
  void Sweep(RandomEngine&) override { ++sweeps; }
  void Record(DrawRow row) const override { row.setConstant(1.0); }
  long sweeps = 0;
};

}  // namespace

TEST(EstimatorLimits, KeptDrawsAndChainsAreBounded) {
  Eigen::VectorXd gibbs;
  // Ten kept draws per chain is the least accepted, whatever the thinning that gives them.
  EXPECT_EQ(ModelsInterpreter::read_Gibbs({{"draws", Scalar(100)}, {"thin", Scalar(10)}}, gibbs), "OK");
  EXPECT_EQ(ModelsInterpreter::read_Gibbs({{"draws", Scalar(109)}, {"thin", Scalar(11)}}, gibbs),
            "With \"thin\" = 11, only 9 of the 109 draws of each chain would be kept; at least 10 are "
            "needed: raise \"draws\" or lower \"thin\".");
  EXPECT_NE(ModelsInterpreter::read_Gibbs({{"draws", Scalar(5)}, {"thin", Scalar(10)}}, gibbs), "OK");
  EXPECT_EQ(ModelsInterpreter::read_Gibbs({{"chains", Scalar(1000)}}, gibbs), "OK");
  EXPECT_EQ(ModelsInterpreter::read_Gibbs({{"chains", Scalar(1001)}}, gibbs), "\"chains\" must not exceed 1000.");
}

TEST(EstimatorLimits, DrawsBeyondMemoryAreRefusedBeforeAnySweep) {
  ASSERT_GT(AvailableMemoryBytes(), 0.0);
  Eigen::VectorXd gibbs(5);
  gibbs << 9e14, 10, 2, 1, 42;
  Estimator estimator(gibbs);
  int built = 0;
  auto make = [&](int) -> std::unique_ptr<GibbsChain> {
    ++built;
    return std::make_unique<ConstantChain>();
  };
  try {
    estimator.RunChains(make, 3, EventDispatcher(), nullptr);
    FAIL() << "the draws of 9e14 sweeps were accepted";
  } catch (const EstimationRefused& refusal) {
    const std::string message = refusal.what();
    EXPECT_EQ(message.rfind("The draws of this model would need about ", 0), 0u) << message;
    EXPECT_NE(message.find(" GB are available: lower \"draws\" or \"chains\", or raise \"thin\"."),
              std::string::npos)
        << message;
  }
  EXPECT_EQ(built, 0);
  // A run that fits goes ahead.
  gibbs << 50, 10, 2, 1, 42;
  Estimator small(gibbs);
  EXPECT_TRUE(small.RunChains(make, 3, EventDispatcher(), nullptr));
  EXPECT_EQ(small.Draws().size(), 2u);
  EXPECT_EQ(small.Draws()[0].rows(), 50);
}
