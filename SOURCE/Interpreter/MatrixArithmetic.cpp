// Matrix arithmetic with the language's rules.
#include "MatrixArithmetic.h"

#include <cmath>

#include "Messages.h"

namespace arithmetic {

namespace {

bool IsScalar(const Eigen::MatrixXd& m) { return m.rows() == 1 && m.cols() == 1; }
bool SameSize(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b) {
  return a.rows() == b.rows() && a.cols() == b.cols();
}

}  // namespace

std::string AddSubtract(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, bool subtract,
                        Eigen::MatrixXd& out) {
  const double sign = subtract ? -1.0 : 1.0;
  if (SameSize(a, b)) {
    if (subtract) {
      out = a - b;
    } else {
      out = a + b;
    }
  } else if (IsScalar(b)) {
    out = (a.array() + sign * b(0, 0)).matrix();
  } else if (IsScalar(a)) {
    out = (a(0, 0) + sign * b.array()).matrix();
  } else {
    return msg::kSummandsNotComformable;
  }
  return {};
}

std::string Multiply(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, Eigen::MatrixXd& out) {
  if (IsScalar(a)) {
    out = a(0, 0) * b;
  } else if (IsScalar(b)) {
    out = a * b(0, 0);
  } else if (a.cols() == b.rows()) {
    if (&out == &a || &out == &b) {
      out = a * b;  // Eigen goes through a temporary when the result is an operand
    } else {
      out.noalias() = a * b;
    }
  } else {
    return msg::kMatricesNotComformable;
  }
  return {};
}

std::string Divide(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, Eigen::MatrixXd& out) {
  if (!IsScalar(b)) return msg::kDivisionNotDefined;
  out = a / b(0, 0);
  return {};
}

std::string ElementWise(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, bool divide,
                        Eigen::MatrixXd& out) {
  if (SameSize(a, b)) {
    if (divide) {
      out = (a.array() / b.array()).matrix();
    } else {
      out = (a.array() * b.array()).matrix();
    }
  } else if (IsScalar(b)) {
    if (divide) {
      out = a / b(0, 0);
    } else {
      out = a * b(0, 0);
    }
  } else if (IsScalar(a)) {
    if (divide) {
      out = (a(0, 0) / b.array()).matrix();
    } else {
      out = (a(0, 0) * b.array()).matrix();
    }
  } else {
    return msg::kFactorsNotComformable;
  }
  return {};
}

std::string Power(const Eigen::MatrixXd& base, const Eigen::MatrixXd& exponent,
                  Eigen::MatrixXd& out) {
  if (IsScalar(base)) {
    if (!IsScalar(exponent)) return msg::kScalarExponent;
    out = Eigen::MatrixXd::Constant(1, 1, std::pow(base(0, 0), exponent(0, 0)));
    return {};
  }
  if (base.rows() != base.cols()) return msg::kSquareBase;
  const double p = IsScalar(exponent) ? exponent(0, 0) : 0.0;
  if (!IsScalar(exponent) || !(p >= 1.0) || p != std::floor(p) || !std::isfinite(p)) {
    return msg::kMatrixExponent;
  }
  // Repeated squaring: log2(p) products instead of p - 1.
  auto n = static_cast<unsigned long long>(p);
  Eigen::MatrixXd result = Eigen::MatrixXd::Identity(base.rows(), base.cols());
  Eigen::MatrixXd square = base;
  Eigen::MatrixXd scratch;
  while (n > 0) {
    if (n & 1ULL) {
      scratch.noalias() = result * square;
      result.swap(scratch);
    }
    n >>= 1U;
    if (n > 0) {
      scratch.noalias() = square * square;
      square.swap(scratch);
    }
  }
  out = std::move(result);
  return {};
}

std::string ElementPower(const Eigen::MatrixXd& base, const Eigen::MatrixXd& exponent,
                         Eigen::MatrixXd& out) {
  if (SameSize(base, exponent)) {
    out = base.array().pow(exponent.array()).matrix();
  } else if (IsScalar(exponent)) {
    out = base.array().pow(exponent(0, 0)).matrix();
  } else if (IsScalar(base)) {
    out = exponent.unaryExpr([b = base(0, 0)](double e) { return std::pow(b, e); });
  } else {
    return msg::kElementPowerNotComformable;
  }
  return {};
}

}  // namespace arithmetic
