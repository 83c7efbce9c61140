// String functions: concatenation, substrings, lengths, searches, and numbers as text.
#include <cmath>
#include <iomanip>
#include <sstream>

#include "BuiltinFamilies.h"
#include "ValueKind.h"

namespace {

// Argument i as a string; otherwise "Argument "{s}" passed to "{f}" is not a string.".
const std::string& StringArgument(const BuiltinCall& call, std::size_t i) {
  const TavixValue& value = call.Value(i);
  if (value.code != kind::STRING) {
    call.Fail("Argument \"" + call.Text(i) + "\" passed to \"" + call.Name() + "\" is not a string.");
  }
  return *value.string;
}

TavixValue Strcat(const BuiltinCall& call) {
  return TavixValue::FromString(StringArgument(call, 0) + StringArgument(call, 1));
}

TavixValue Strlength(const BuiltinCall& call) {
  return TavixValue::FromScalar(static_cast<double>(StringArgument(call, 0).size()));
}

// strfind gives the 1-based position of the first occurrence, strfindr of the last; 0 when
// there is none.
TavixValue Strfind(const BuiltinCall& call) {
  const std::string& s = StringArgument(call, 0);
  const std::string& t = StringArgument(call, 1);
  const std::size_t at = call.Name() == "strfindr" ? s.rfind(t) : s.find(t);
  return TavixValue::FromScalar(at == std::string::npos ? 0.0 : static_cast<double>(at + 1));
}

TavixValue Substr(const BuiltinCall& call) {
  const std::string& s = StringArgument(call, 0);
  const std::size_t from = CheckedStringRange(call, 1, s.size());
  const auto to = static_cast<std::size_t>((*call.MatrixOrNull(2))(0, 0));
  return TavixValue::FromString(s.substr(from - 1, to - from + 1));
}

// mat2str(x [, digits]): the number with `digits` significant digits (six by default).
TavixValue Mat2str(const BuiltinCall& call) {
  const auto x = call.MatrixOrNull(0);
  double value = 0.0;
  if (!x || !IntrCheck_Number(*x, value)) {
    call.Fail("The argument passed to \"mat2str\" must be a number.");
  }
  int digits = 6;
  if (call.Count() == 2) {
    const auto d = call.MatrixOrNull(1);
    if (!d || !IntrCheck_PositiveInteger(*d, digits)) {
      call.Fail("The optional argument passed to \"mat2str\" (number of digits) must be a positive "
                "integer.");
    }
  }
  std::ostringstream text;
  text << std::setprecision(std::min(digits, 17)) << value;
  return TavixValue::FromString(text.str());
}

const BuiltinRow kRows[] = {
    {"strcat", ArgCounts(2), false, Strcat},
    {"strlength", ArgCounts(1), false, Strlength},
    {"strfind", ArgCounts(2), false, Strfind},
    {"strfindr", ArgCounts(2), false, Strfind},
    {"substr", ArgCounts(2), false, Substr, nullptr, true},
    {"mat2str", ArgCounts(1, 2), false, Mat2str},
};

}  // namespace

std::span<const BuiltinRow> StringBuiltins() { return kRows; }

std::size_t CheckedStringRange(const BuiltinCall& call, std::size_t at, std::size_t length) {
  const auto a = call.MatrixOrNull(at);
  const auto b = call.MatrixOrNull(at + 1);
  int from = 0;
  int to = 0;
  if (!a || !b || !IntrCheck_PositiveInteger(*a, from) || !IntrCheck_PositiveInteger(*b, to)) {
    call.Fail("In range opetations, 'a:b', 'a' and 'b' must be positive integers.");
  }
  if (to < from) call.Fail("In range opetations, 'a:b', second index is smaller than first index.");
  if (static_cast<std::size_t>(to) > length) call.Fail("Index out of bounds.");
  return static_cast<std::size_t>(from);
}
