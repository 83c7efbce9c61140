// Matrix arithmetic with the language's rules: scalar broadcasting and its conformability messages.
#pragma once

#include <string>

#include <Eigen/Dense>

// Each operation writes its result into `out` and returns "" on success, or the message of the
// failure (the operands are left alone). `out` may be one of the operands. A 1 by 1 operand stands for every element where the
// operation allows it.
namespace arithmetic {

// "+" and "-": same size element by element, or one operand 1 by 1.
std::string AddSubtract(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, bool subtract,
                        Eigen::MatrixXd& out);
// "*": either operand 1 by 1 scales the other; otherwise the matrix product.
std::string Multiply(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, Eigen::MatrixXd& out);
// "/": the right operand must be 1 by 1.
std::string Divide(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, Eigen::MatrixXd& out);
// ".*" and "./": same size element by element, or one operand 1 by 1.
std::string ElementWise(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, bool divide,
                        Eigen::MatrixXd& out);
// "^": a scalar to a scalar power, or a square matrix to a positive integer power.
std::string Power(const Eigen::MatrixXd& base, const Eigen::MatrixXd& exponent,
                  Eigen::MatrixXd& out);
// ".^": element by element; a 1 by 1 operand applies to every element of the other.
std::string ElementPower(const Eigen::MatrixXd& base, const Eigen::MatrixXd& exponent,
                         Eigen::MatrixXd& out);

}  // namespace arithmetic
