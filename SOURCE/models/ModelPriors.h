// ModelPriors: reading prior hyper-parameters and refusing options a family does not know.
#pragma once

#include <string>
#include <vector>

#include <Eigen/Dense>

#include "ModelFamily.h"

// A Normal prior on k coefficients from the options `meanName` (a scalar for every coefficient,
// or a vector of k) and `precisionName` (a positive scalar or a vector of k positive numbers for
// the diagonal, or a k x k symmetric positive-definite matrix). Absent options give mean 0 and
// the diagonal `defaultPrecision`. Returns "OK" or the message.
std::string ReadNormalPrior(const ModelRequest& request, const std::string& meanName,
                            const std::string& precisionName, Eigen::Index k,
                            double defaultPrecision, Eigen::VectorXd& mean,
                            Eigen::MatrixXd& precision);

// A Gamma prior (shape `shapeName`, rate `rateName`, both positive numbers), defaults given.
std::string ReadGammaPrior(const ModelRequest& request, const std::string& shapeName,
                           const std::string& rateName, double defaultShape, double defaultRate,
                           double& shape, double& rate);

// Refuses an option the family does not take (the Gibbs settings, "dataset" and "Xi" are taken
// by every family).
std::string CheckOptionNames(const ModelRequest& request, const std::vector<std::string>& numeric,
                             const std::vector<std::string>& logical = {},
                             const std::vector<std::string>& strings = {});

// The Gibbs settings and, when the statement has constraints, their precision "Xi" (checked; no
// rows when there are none). Returns "OK" or the message.
std::string ReadSamplerSettings(const ModelRequest& request, Eigen::VectorXd& gibbs, Eigen::MatrixXd& xi);

// A Wishart prior on the inverse of an m x m error covariance, Sigma ~ inverse Wishart(S, nu):
// "nu" a number above m - 1 and "S" a positive number (times the identity) or an m x m symmetric
// positive-definite matrix. Absent options give `defaultNu` and `defaultS` times the identity.
std::string ReadWishartPrior(const ModelRequest& request, Eigen::Index m, double defaultNu, double defaultS,
                             double& nu, Eigen::MatrixXd& S);
