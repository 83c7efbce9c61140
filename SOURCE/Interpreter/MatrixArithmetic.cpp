// Matrix arithmetic with the language's rules.
#include "MatrixArithmetic.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "Estimator.h"
#include "Messages.h"
#include "TavixError.h"

namespace arithmetic {

namespace {

bool IsScalar(const Eigen::MatrixXd& m) { return m.rows() == 1 && m.cols() == 1; }
bool SameSize(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b) {
  return a.rows() == b.rows() && a.cols() == b.cols();
}

// About this many multiply-adds go into one block of a large product (a fraction of a second),
// so that an interrupt is seen between blocks.
constexpr double kProductBlockWork = 2e8;

// out = a b, out distinct from a and b: at once when small, otherwise in blocks of b's columns
// with an interrupt check before each.
void Product(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, Eigen::MatrixXd& out,
             const std::atomic<bool>* interrupt) {
  const double perColumn = static_cast<double>(a.rows()) * static_cast<double>(a.cols());
  if (!interrupt || perColumn * static_cast<double>(b.cols()) <= kProductBlockWork) {
    out.noalias() = a * b;
    return;
  }
  const auto width = static_cast<Eigen::Index>(std::max(1.0, std::floor(kProductBlockWork / perColumn)));
  out.resize(a.rows(), b.cols());
  for (Eigen::Index j = 0; j < b.cols(); j += width) {
    if (interrupt->load(std::memory_order_relaxed)) throw TavixInterrupted();
    const Eigen::Index w = std::min(width, b.cols() - j);
    out.middleCols(j, w).noalias() = a * b.middleCols(j, w);
  }
}

// Matrices below this many bytes are made without asking the system what is available.
constexpr double kCheckedFromBytes = 64.0 * 1024.0 * 1024.0;

}  // namespace

std::string SizeRefusal(double rows, double cols) {
  const double bytes = rows * cols * static_cast<double>(sizeof(double));
  if (bytes < kCheckedFromBytes) return {};
  const double available = AvailableMemoryBytes();
  // Without the system's figure only sizes no allocation could ever meet are refused.
  if (available > 0.0 ? bytes <= available : bytes < 0x1p62) return {};
  char text[200];
  std::snprintf(text, sizeof text, msg::kMatrixTooLarge, rows, cols, bytes / 1e9, available / 1e9);
  return text;
}

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

std::string Multiply(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, Eigen::MatrixXd& out,
                     const std::atomic<bool>* interrupt) {
  if (IsScalar(a)) {
    out = a(0, 0) * b;
  } else if (IsScalar(b)) {
    out = a * b(0, 0);
  } else if (a.cols() == b.rows()) {
    std::string refusal = SizeRefusal(static_cast<double>(a.rows()), static_cast<double>(b.cols()));
    if (!refusal.empty()) return refusal;
    if (&out == &a || &out == &b) {
      Eigen::MatrixXd product;
      Product(a, b, product, interrupt);
      out.swap(product);
    } else {
      Product(a, b, out, interrupt);
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
                  Eigen::MatrixXd& out, const std::atomic<bool>* interrupt) {
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
  // Repeated squaring: log2(p) products instead of p - 1. The exponent is halved as a double,
  // which is exact for whole numbers of any size (1e30 included), where an integer type would
  // overflow.
  Eigen::MatrixXd result = Eigen::MatrixXd::Identity(base.rows(), base.cols());
  Eigen::MatrixXd square = base;
  Eigen::MatrixXd scratch;
  double n = p;
  while (n > 0.0) {
    const double half = std::floor(n / 2.0);
    if (n != 2.0 * half) {
      Product(result, square, scratch, interrupt);
      result.swap(scratch);
    }
    n = half;
    if (n > 0.0) {
      Product(square, square, scratch, interrupt);
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
