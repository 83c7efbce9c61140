// Alternatives: the alternatives of a multinomial choice read from the codes of its dependent
// variable, the base among them, and the coefficient labels they give.
#pragma once

#include <string>
#include <vector>

#include <Eigen/Dense>

#include "ModelFamily.h"

// The codes of the alternatives (consecutive integers, in increasing order) and the base one.
// Each observation's choice is numbered 0 for the base and 1 ... J-1 for the others in the order
// of their codes.
struct Alternatives {
  std::vector<long long> codes;  // every alternative, in increasing order
  long long base = 0;
  Eigen::VectorXi choice;  // per observation: 0 base, 1 ... J-1 the others

  Eigen::Index Count() const { return static_cast<Eigen::Index>(codes.size()); }
  // The codes of the alternatives other than the base, in order.
  std::vector<long long> Others() const;
  // The label prefix of an alternative's coefficients: dependent_code ("m" for a minus sign, so
  // that the prefix is a name constraints can use: y_m1 for code -1).
  static std::string Prefix(const std::string& dependent, long long code);
};

// Reads the alternatives of `y` for model `keyword` with dependent variable `dependent`: integer
// codes, consecutive, at least two of them, and the option "base" (one of them; the lowest when
// absent). Returns "OK" or the message.
std::string ReadAlternatives(const ModelRequest& request, const Eigen::VectorXd& y, Alternatives& out);

// The labels of mnlogit and mnprobit: for every alternative but the base, dependent_code$regressor
// for each regressor (alternatives in the order of their codes).
std::string LabelPerAlternative(ModelRequest& request);
