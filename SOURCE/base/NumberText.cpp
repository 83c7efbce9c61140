// NumberText: std::from_chars, with out-of-range results turned into infinities and zeros.
#include "NumberText.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace {

// The decimal exponent of the text's leading significant digit: 2 for "123.4", -3 for "0.0012",
// -400 for "1e-400". Only called on text from_chars has accepted as a number.
long LeadingExponent(std::string_view digits) {
  std::size_t i = 0;
  long integerDigits = 0;
  long firstNonzero = -1;  // its position among the integer digits
  for (; i < digits.size() && std::isdigit(static_cast<unsigned char>(digits[i])); ++i, ++integerDigits) {
    if (firstNonzero < 0 && digits[i] != '0') firstNonzero = integerDigits;
  }
  long leading = 0;
  if (firstNonzero >= 0) {
    leading = integerDigits - 1 - firstNonzero;
    if (i < digits.size() && digits[i] == '.') ++i;
    while (i < digits.size() && std::isdigit(static_cast<unsigned char>(digits[i]))) ++i;
  } else {
    if (i < digits.size() && digits[i] == '.') ++i;
    long place = 0;
    for (; i < digits.size() && std::isdigit(static_cast<unsigned char>(digits[i])); ++i) {
      --place;
      if (firstNonzero < 0 && digits[i] != '0') {
        firstNonzero = 0;
        leading = place;
      }
    }
    if (firstNonzero < 0) return std::numeric_limits<long>::min() / 2;  // all zeros
  }
  long exponent = 0;
  if (i < digits.size() && (digits[i] == 'e' || digits[i] == 'E')) {
    ++i;
    bool negative = false;
    if (i < digits.size() && (digits[i] == '+' || digits[i] == '-')) negative = digits[i++] == '-';
    for (; i < digits.size() && std::isdigit(static_cast<unsigned char>(digits[i])); ++i) {
      if (exponent < 100000000) exponent = exponent * 10 + (digits[i] - '0');
    }
    if (negative) exponent = -exponent;
  }
  return leading + exponent;
}

}  // namespace

bool TextToDouble(std::string_view text, double& out) {
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  if (text.empty() || text.front() == '+') return false;
  const char* end = text.data() + text.size();
  double value = 0.0;
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (stop != end) return false;
  if (error == std::errc()) {
    out = value;
    return true;
  }
  if (error != std::errc::result_out_of_range) return false;
  const bool negative = text.front() == '-';
  const std::string_view digits = negative ? text.substr(1) : text;
  const double magnitude = LeadingExponent(digits) > 0 ? std::numeric_limits<double>::infinity() : 0.0;
  out = negative ? -magnitude : magnitude;
  return true;
}
