// ModelsInterpreter: option checks, Gibbs settings and the precision of linear constraints.
#include "ModelsInterpreter.h"

#include <cmath>
#include <set>

bool ModelsInterpreter::check_Integer(const Eigen::MatrixXd& value, std::int64_t& out) {
  out = 0;
  if (value.rows() != 1 || value.cols() != 1) return false;
  const double x = value(0, 0);
  if (!std::isfinite(x) || x != std::floor(x) || std::fabs(x) > 9.0e15) return false;
  out = static_cast<std::int64_t>(x);
  return true;
}

bool ModelsInterpreter::check_PositiveInteger(const Eigen::MatrixXd& value, std::int64_t& out) {
  if (!check_Integer(value, out) || out <= 0) {
    out = 0;
    return false;
  }
  return true;
}

bool ModelsInterpreter::check_PositiveNumber(const Eigen::MatrixXd& value, double& out) {
  out = 0.0;
  if (value.rows() != 1 || value.cols() != 1 || !(value(0, 0) > 0.0)) return false;
  out = value(0, 0);
  return true;
}

bool ModelsInterpreter::check_Binary(const Eigen::VectorXd& values) {
  for (Eigen::Index i = 0; i < values.size(); ++i) {
    if (values(i) != 0.0 && values(i) != 1.0) return false;
  }
  return true;
}

void ModelsInterpreter::check_Integral(const Eigen::VectorXd& values, int& error,
                                       Eigen::VectorXi& out) {
  error = 0;
  out.resize(values.size());
  std::set<long long> codes;
  for (Eigen::Index i = 0; i < values.size(); ++i) {
    const double x = values(i);
    if (!std::isfinite(x) || x != std::floor(x)) {
      error = 1;
      out.resize(0);
      return;
    }
    codes.insert(static_cast<long long>(x));
  }
  if (!codes.empty() && *codes.rbegin() - *codes.begin() + 1 != static_cast<long long>(codes.size())) {
    error = 2;
    out.resize(0);
    return;
  }
  const long long lowest = codes.empty() ? 0 : *codes.begin();
  for (Eigen::Index i = 0; i < values.size(); ++i) {
    out(i) = static_cast<int>(static_cast<long long>(values(i)) - lowest);
  }
}

std::vector<Eigen::Index> ModelsInterpreter::locs_Binaries(const Eigen::MatrixXd& data) {
  std::vector<Eigen::Index> columns;
  for (Eigen::Index j = 0; j < data.cols(); ++j) {
    if (check_Binary(data.col(j))) columns.push_back(j);
  }
  return columns;
}

std::vector<Eigen::Index> ModelsInterpreter::locs_Constants(const Eigen::MatrixXd& data) {
  std::vector<Eigen::Index> columns;
  for (Eigen::Index j = 0; j < data.cols(); ++j) {
    if (data.rows() > 0 && (data.col(j).array() == data(0, j)).all()) columns.push_back(j);
  }
  return columns;
}

std::string ModelsInterpreter::read_Gibbs(const std::map<std::string, Eigen::MatrixXd>& numeric,
                                          Eigen::VectorXd& gibbs) {
  static const char* const kNames[] = {"draws", "burnin", "chains", "thin", "seed"};
  gibbs.resize(5);
  gibbs << 20000, 10000, 1, 1, 42;
  for (int i = 0; i < 5; ++i) {
    const auto it = numeric.find(kNames[i]);
    if (it == numeric.end()) continue;
    std::int64_t value = 0;
    if (!check_PositiveInteger(it->second, value)) {
      return std::string("\"") + kNames[i] + "\" must be a positive integer.";
    }
    gibbs(i) = static_cast<double>(value);
  }
  if (gibbs(2) > kMaxChains) {
    return "\"chains\" must not exceed " + std::to_string(kMaxChains) + ".";
  }
  const double kept = std::floor(gibbs(0) / gibbs(3));
  if (kept < kMinKeptDraws) {
    return "With \"thin\" = " + std::to_string(static_cast<long long>(gibbs(3))) + ", only " +
           std::to_string(static_cast<long long>(kept)) + " of the " +
           std::to_string(static_cast<long long>(gibbs(0))) +
           " draws of each chain would be kept; at least " + std::to_string(kMinKeptDraws) +
           " are needed: raise \"draws\" or lower \"thin\".";
  }
  return "OK";
}

SymmetricPDCheck check_SymmetricPD(const Eigen::MatrixXd& m, Eigen::Index n) {
  SymmetricPDCheck result;
  result.sizeOK = m.rows() == n && m.cols() == n;
  if (!result.sizeOK || !m.allFinite()) return result;
  const double scale = std::max(1.0, m.cwiseAbs().maxCoeff());
  result.symmetric = (m - m.transpose()).cwiseAbs().maxCoeff() <= 1e-12 * scale;
  if (result.symmetric) result.positiveDefinite = Eigen::LLT<Eigen::MatrixXd>(m).info() == Eigen::Success;
  return result;
}

std::string ModelsInterpreter::CheckForRestrictions(
    const std::map<std::string, Eigen::MatrixXd>& numeric, Eigen::Index count, Eigen::MatrixXd& xi) {
  const auto it = numeric.find("Xi");
  if (it == numeric.end()) {
    xi = Eigen::MatrixXd::Identity(count, count) * kDefaultConstraintPrecision;
    return "OK";
  }
  const SymmetricPDCheck check = check_SymmetricPD(it->second, count);
  if (!check.sizeOK) {
    return "The number of rows and columns of \"Xi\" must be equal to the number of linear "
           "constraints.";
  }
  if (!check.symmetric) return "Prior precison matrix \"Xi\" is not symmetric.";
  if (!check.positiveDefinite) return "Prior precison matrix \"Xi\" is not positive definite.";
  xi = it->second;
  return "OK";
}

std::string ModelsInterpreter::CheckForRestrictions_LC(
    const std::map<std::string, Eigen::MatrixXd>& numeric, Eigen::Index count,
    const std::vector<int>& classOf, Eigen::MatrixXd& xi) {
  const std::string status = CheckForRestrictions(numeric, count, xi);
  if (status != "OK") return status;
  for (Eigen::Index i = 0; i < count; ++i) {
    for (Eigen::Index j = 0; j < count; ++j) {
      const bool sameClass = static_cast<std::size_t>(std::max(i, j)) < classOf.size() &&
                             classOf[static_cast<std::size_t>(i)] == classOf[static_cast<std::size_t>(j)];
      if (!sameClass && xi(i, j) != 0.0) {
        return "The precision matrix associated with the constraints (\"Xi\") in latent-class "
               "models must be block diagonal (constraints that involve coefficients in "
               "different classes must be independent).";
      }
    }
  }
  return "OK";
}
