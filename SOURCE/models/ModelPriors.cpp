// ModelPriors: prior hyper-parameters with their shape and value checks.
#include "ModelPriors.h"

#include <algorithm>
#include <cmath>

#include "ModelsInterpreter.h"

std::string ReadNormalPrior(const ModelRequest& request, const std::string& meanName,
                            const std::string& precisionName, Eigen::Index k,
                            double defaultPrecision, Eigen::VectorXd& mean,
                            Eigen::MatrixXd& precision) {
  const auto& numeric = request.options.numeric;
  mean = Eigen::VectorXd::Zero(k);
  precision = Eigen::MatrixXd::Identity(k, k) * defaultPrecision;
  const std::string count = std::to_string(k);
  if (const auto it = numeric.find(meanName); it != numeric.end()) {
    const Eigen::MatrixXd& m = it->second;
    const bool vector = (m.cols() == 1 || m.rows() == 1) && m.size() == k;
    if (!(m.size() == 1 || vector) || !m.allFinite()) {
      return "The prior mean \"" + meanName + "\" must be a number or a vector of " + count +
             " numbers (one for each coefficient).";
    }
    mean = m.size() == 1 ? Eigen::VectorXd::Constant(k, m(0, 0)) : Eigen::VectorXd(m.reshaped());
  }
  if (const auto it = numeric.find(precisionName); it != numeric.end()) {
    const Eigen::MatrixXd& p = it->second;
    const std::string message =
        "The prior precision \"" + precisionName + "\" must be a positive number, a vector of " +
        count + " positive numbers or a symmetric positive-definite " + count + " by " + count +
        " matrix.";
    const bool vector = (p.cols() == 1 || p.rows() == 1) && p.size() == k;
    if (p.size() == 1 || (vector && k > 1)) {
      if (!p.allFinite() || (p.array() <= 0.0).any()) return message;
      precision = p.size() == 1 ? Eigen::MatrixXd(Eigen::MatrixXd::Identity(k, k) * p(0, 0))
                                : Eigen::MatrixXd(Eigen::VectorXd(p.reshaped()).asDiagonal());
    } else {
      const SymmetricPDCheck check = check_SymmetricPD(p, k);
      if (!check.sizeOK || !check.symmetric || !check.positiveDefinite) return message;
      precision = p;
    }
  }
  return "OK";
}

std::string ReadGammaPrior(const ModelRequest& request, const std::string& shapeName,
                           const std::string& rateName, double defaultShape, double defaultRate,
                           double& shape, double& rate) {
  shape = defaultShape;
  rate = defaultRate;
  const auto& numeric = request.options.numeric;
  if (const auto it = numeric.find(shapeName); it != numeric.end()) {
    if (!ModelsInterpreter::check_PositiveNumber(it->second, shape) || !std::isfinite(shape)) {
      return "The shape \"" + shapeName + "\" of the Gamma prior must be a positive number.";
    }
  }
  if (const auto it = numeric.find(rateName); it != numeric.end()) {
    if (!ModelsInterpreter::check_PositiveNumber(it->second, rate) || !std::isfinite(rate)) {
      return "The rate \"" + rateName + "\" of the Gamma prior must be a positive number.";
    }
  }
  return "OK";
}

std::string CheckOptionNames(const ModelRequest& request, const std::vector<std::string>& numeric,
                             const std::vector<std::string>& logical,
                             const std::vector<std::string>& strings) {
  static const std::vector<std::string> kCommon = {"draws", "burnin", "chains", "thin", "seed", "Xi"};
  auto known = [](const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
  };
  auto refuse = [&](const std::string& name) {
    return "Model \"" + request.keyword + "\" does not take an option called \"" + name + "\".";
  };
  for (const auto& [name, value] : request.options.numeric) {
    if (!known(kCommon, name) && !known(numeric, name)) return refuse(name);
  }
  for (const auto& [name, value] : request.options.logical) {
    if (!known(logical, name)) return refuse(name);
  }
  for (const auto& [name, value] : request.options.strings) {
    if (!known(strings, name)) return refuse(name);
  }
  return "OK";
}

std::string ReadSamplerSettings(const ModelRequest& request, Eigen::VectorXd& gibbs, Eigen::MatrixXd& xi) {
  const std::string status = ModelsInterpreter::read_Gibbs(request.options.numeric, gibbs);
  if (status != "OK") return status;
  xi.resize(0, 0);
  if (request.constraints.Count() == 0) return "OK";
  return ModelsInterpreter::CheckForRestrictions(request.options.numeric, request.constraints.Count(), xi);
}

std::string ReadWishartPrior(const ModelRequest& request, Eigen::Index m, double defaultNu, double defaultS,
                             double& nu, Eigen::MatrixXd& S) {
  nu = defaultNu;
  S = defaultS * Eigen::MatrixXd::Identity(m, m);
  const auto& numeric = request.options.numeric;
  if (const auto it = numeric.find("nu"); it != numeric.end()) {
    if (it->second.size() != 1 || !std::isfinite(it->second(0, 0)) || !(it->second(0, 0) > static_cast<double>(m - 1))) {
      return "The degrees of freedom \"nu\" of the Wishart prior must be a number above " + std::to_string(m - 1) +
             " (the number of equations less one).";
    }
    nu = it->second(0, 0);
  }
  if (const auto it = numeric.find("S"); it != numeric.end()) {
    const Eigen::MatrixXd& value = it->second;
    double scale = 0.0;
    if (value.size() == 1 && ModelsInterpreter::check_PositiveNumber(value, scale) && std::isfinite(scale)) {
      S = scale * Eigen::MatrixXd::Identity(m, m);
    } else if (value.rows() == m && value.cols() == m && value.isApprox(value.transpose()) &&
               value.llt().info() == Eigen::Success && value.allFinite()) {
      S = 0.5 * (value + value.transpose());
    } else {
      return "The scale \"S\" of the Wishart prior must be a positive number or a symmetric positive-definite " +
             std::to_string(m) + " x " + std::to_string(m) + " matrix.";
    }
  }
  return "OK";
}
