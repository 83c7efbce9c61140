// The option checks every model family uses: Gibbs settings, scalars, codes, constraint precision.
#include <gtest/gtest.h>

#include <cmath>

#include "ModelsInterpreter.h"

namespace {

Eigen::MatrixXd Scalar(double x) { return Eigen::MatrixXd::Constant(1, 1, x); }

}  // namespace

TEST(ModelsInterpreter, GibbsSettingsDefaultsOrderAndRefusals) {
  Eigen::VectorXd gibbs;
  EXPECT_EQ(ModelsInterpreter::read_Gibbs({}, gibbs), "OK");
  EXPECT_EQ(gibbs, (Eigen::VectorXd(5) << 20000, 10000, 1, 1, 42).finished());
  EXPECT_EQ(ModelsInterpreter::read_Gibbs({{"thin", Scalar(5)}, {"seed", Scalar(7)}}, gibbs), "OK");
  EXPECT_EQ(gibbs, (Eigen::VectorXd(5) << 20000, 10000, 1, 5, 7).finished());
  for (const Eigen::MatrixXd& bad : {Scalar(0), Scalar(-5), Scalar(2.5), Eigen::MatrixXd(Eigen::RowVector2d(1, 2)),
                                     Scalar(NAN)}) {
    EXPECT_EQ(ModelsInterpreter::read_Gibbs({{"draws", bad}}, gibbs), "\"draws\" must be a positive integer.");
  }
  EXPECT_EQ(ModelsInterpreter::read_Gibbs({{"seed", Scalar(0)}}, gibbs), "\"seed\" must be a positive integer.");
  // Only the first bad name in the order draws, burnin, chains, thin, seed is reported.
  EXPECT_EQ(ModelsInterpreter::read_Gibbs({{"seed", Scalar(0)}, {"thin", Scalar(0)}, {"burnin", Scalar(-1)}}, gibbs),
            "\"burnin\" must be a positive integer.");
}

TEST(ModelsInterpreter, ScalarChecksWriteZeroOnFailure) {
  std::int64_t n = 99;
  EXPECT_TRUE(ModelsInterpreter::check_Integer(Scalar(-3), n));
  EXPECT_EQ(n, -3);
  EXPECT_FALSE(ModelsInterpreter::check_Integer(Scalar(1.5), n));
  EXPECT_EQ(n, 0);
  EXPECT_FALSE(ModelsInterpreter::check_PositiveInteger(Scalar(-3), n));
  EXPECT_EQ(n, 0);
  EXPECT_TRUE(ModelsInterpreter::check_PositiveInteger(Scalar(4), n));
  EXPECT_EQ(n, 4);
  double x = 9.0;
  EXPECT_TRUE(ModelsInterpreter::check_PositiveNumber(Scalar(0.25), x));
  EXPECT_EQ(x, 0.25);
  EXPECT_FALSE(ModelsInterpreter::check_PositiveNumber(Scalar(0.0), x));
  EXPECT_EQ(x, 0.0);
  EXPECT_FALSE(ModelsInterpreter::check_PositiveNumber(Eigen::MatrixXd::Ones(2, 1), x));
}

TEST(ModelsInterpreter, BinariesConstantsAndCategoryCodes) {
  EXPECT_TRUE(ModelsInterpreter::check_Binary(Eigen::VectorXd(0)));
  EXPECT_TRUE(ModelsInterpreter::check_Binary(Eigen::Vector3d(0, 1, 1)));
  EXPECT_FALSE(ModelsInterpreter::check_Binary(Eigen::Vector3d(0, 1, NAN)));
  EXPECT_FALSE(ModelsInterpreter::check_Binary(Eigen::Vector3d(0, 1, 0.5)));

  Eigen::MatrixXd data(3, 3);
  data << 1, 0, 2, 1, 1, 3, 1, 0, 2;
  EXPECT_EQ(ModelsInterpreter::locs_Binaries(data), (std::vector<Eigen::Index>{0, 1}));
  EXPECT_EQ(ModelsInterpreter::locs_Constants(data), (std::vector<Eigen::Index>{0}));

  int error = -1;
  Eigen::VectorXi codes;
  ModelsInterpreter::check_Integral(Eigen::Vector4d(3, 1, 2, 1), error, codes);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(codes, Eigen::Vector4i(2, 0, 1, 0));
  ModelsInterpreter::check_Integral(Eigen::Vector3d(1, 2.5, 3), error, codes);
  EXPECT_EQ(error, 1);
  ModelsInterpreter::check_Integral(Eigen::Vector3d(1, 3, 4), error, codes);
  EXPECT_EQ(error, 2);
}

TEST(ModelsInterpreter, ConstraintPrecisionChecksInOrder) {
  Eigen::MatrixXd xi;
  EXPECT_EQ(ModelsInterpreter::CheckForRestrictions({}, 2, xi), "OK");
  EXPECT_EQ(xi, Eigen::MatrixXd::Identity(2, 2) * ModelsInterpreter::kDefaultConstraintPrecision);
  EXPECT_EQ(ModelsInterpreter::CheckForRestrictions({{"Xi", Eigen::MatrixXd::Identity(3, 3)}}, 2, xi),
            "The number of rows and columns of \"Xi\" must be equal to the number of linear constraints.");
  Eigen::MatrixXd both(2, 2);
  both << 1, 2, 0, -1;  // neither symmetric nor positive definite: symmetry is reported
  EXPECT_EQ(ModelsInterpreter::CheckForRestrictions({{"Xi", both}}, 2, xi),
            "Prior precison matrix \"Xi\" is not symmetric.");
  Eigen::MatrixXd indefinite(2, 2);
  indefinite << 1, 2, 2, 1;
  EXPECT_EQ(ModelsInterpreter::CheckForRestrictions({{"Xi", indefinite}}, 2, xi),
            "Prior precison matrix \"Xi\" is not positive definite.");
  Eigen::MatrixXd good(2, 2);
  good << 2, 0.5, 0.5, 1;
  EXPECT_EQ(ModelsInterpreter::CheckForRestrictions({{"Xi", good}}, 2, xi), "OK");
  EXPECT_EQ(xi, good);
  // Latent classes: constraints of different classes must be independent.
  EXPECT_EQ(ModelsInterpreter::CheckForRestrictions_LC({{"Xi", good}}, 2, {0, 0}, xi), "OK");
  EXPECT_EQ(ModelsInterpreter::CheckForRestrictions_LC({{"Xi", good}}, 2, {0, 1}, xi),
            "The precision matrix associated with the constraints (\"Xi\") in latent-class models must "
            "be block diagonal (constraints that involve coefficients in different classes must be "
            "independent).");
}
