// ModelsInterpreter: the checks every family applies to a model statement's options and data.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <Eigen/Dense>

#include "ModelFamily.h"

// Plain functions without side effects. The ones that can fail return "OK" or the message.
struct ModelsInterpreter {
  // 1x1 without a fractional part; the integer is written out (0 otherwise).
  static bool check_Integer(const Eigen::MatrixXd& value, std::int64_t& out);
  // As check_Integer, and greater than 0.
  static bool check_PositiveInteger(const Eigen::MatrixXd& value, std::int64_t& out);
  // 1x1 and strictly greater than 0 (0.0 written out otherwise).
  static bool check_PositiveNumber(const Eigen::MatrixXd& value, double& out);
  // Every element exactly 0 or 1 (an empty vector passes).
  static bool check_Binary(const Eigen::VectorXd& values);
  // Category codes to integers: error 1 for a fractional (or missing) code, 2 when the distinct
  // codes are not the consecutive integers from the smallest; 0 on success, with the codes
  // renumbered from 0 in `out`.
  static void check_Integral(const Eigen::VectorXd& values, int& error, Eigen::VectorXi& out);
  // Columns (0-based) whose elements are all 0 or 1; columns whose elements are all equal.
  static std::vector<Eigen::Index> locs_Binaries(const Eigen::MatrixXd& data);
  static std::vector<Eigen::Index> locs_Constants(const Eigen::MatrixXd& data);

  // The five Gibbs settings (draws, burnin, chains, thin, seed), defaults 20000, 10000, 1, 1, 42;
  // at most kMaxChains chains, and at least kMinKeptDraws draws kept per chain.
  static std::string read_Gibbs(const std::map<std::string, Eigen::MatrixXd>& numeric,
                                Eigen::VectorXd& gibbs);
  // The precision of `count` linear constraints: "Xi" checked for size, symmetry and positive
  // definiteness, or a diagonal of kDefaultConstraintPrecision.
  static std::string CheckForRestrictions(const std::map<std::string, Eigen::MatrixXd>& numeric,
                                          Eigen::Index count, Eigen::MatrixXd& xi);
  // As CheckForRestrictions; `classOf` gives the latent class of each constraint, and "Xi" must
  // be block diagonal by class.
  static std::string CheckForRestrictions_LC(const std::map<std::string, Eigen::MatrixXd>& numeric,
                                             Eigen::Index count, const std::vector<int>& classOf,
                                             Eigen::MatrixXd& xi);

  static constexpr long kMaxChains = 1000;
  // Fewer kept draws leave nothing to summarise: no spread, no diagnostics.
  static constexpr long kMinKeptDraws = 10;
  // Constraints hold practically exactly unless "Xi" says otherwise.
  static constexpr double kDefaultConstraintPrecision = 1e8;
};

// Size, symmetry and positive definiteness of a matrix expected to be n x n.
struct SymmetricPDCheck {
  bool sizeOK = false;
  bool symmetric = false;
  bool positiveDefinite = false;
};
SymmetricPDCheck check_SymmetricPD(const Eigen::MatrixXd& m, Eigen::Index n);
