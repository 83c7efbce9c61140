// Matrix arithmetic with the language's rules: scalar broadcasting and its conformability messages.
#pragma once

#include <atomic>
#include <string>

#include <Eigen/Dense>

// Each operation writes its result into `out` and returns "" on success, or the message of the
// failure (the operands are left alone). `out` may be one of the operands. A 1 by 1 operand stands for every element where the
// operation allows it.
namespace arithmetic {

// "+" and "-": same size element by element, or one operand 1 by 1.
std::string AddSubtract(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, bool subtract,
                        Eigen::MatrixXd& out);
// "*": either operand 1 by 1 scales the other; otherwise the matrix product. A large product is
// formed in blocks of columns; between blocks, a set `interrupt` ends it with TavixInterrupted.
std::string Multiply(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, Eigen::MatrixXd& out,
                     const std::atomic<bool>* interrupt = nullptr);
// "/": the right operand must be 1 by 1.
std::string Divide(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, Eigen::MatrixXd& out);
// ".*" and "./": same size element by element, or one operand 1 by 1.
std::string ElementWise(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, bool divide,
                        Eigen::MatrixXd& out);
// "^": a scalar to a scalar power, or a square matrix to a positive integer power (by repeated
// squaring, with the products of Multiply).
std::string Power(const Eigen::MatrixXd& base, const Eigen::MatrixXd& exponent,
                  Eigen::MatrixXd& out, const std::atomic<bool>* interrupt = nullptr);
// "" when a rows x cols matrix of doubles fits in the memory now available; otherwise the message
// giving what it would need and what there is. Asked before making any matrix whose size the user
// chooses (dimension arguments, products, tiling), so that a request that cannot be met is
// refused at once rather than failing, or pushing the system into swap, once half made.
std::string SizeRefusal(double rows, double cols);

// ".^": element by element; a 1 by 1 operand applies to every element of the other.
std::string ElementPower(const Eigen::MatrixXd& base, const Eigen::MatrixXd& exponent,
                         Eigen::MatrixXd& out);

}  // namespace arithmetic
