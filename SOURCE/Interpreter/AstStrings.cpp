#include "AstStrings.h"

#include <cmath>

#include "ExecContext.h"
#include "ValueKind.h"

namespace {

const std::string& TextOf(ExecContext& context, const Node& at, const Expression& argument,
                          const TavixValue& value) {
  if (value.code != kind::STRING) {
    context.Fail(at, "Argument \"" + context.stream().Text(argument.first, argument.last) +
                         "\" passed to \"strreplace\" is not a string.");
  }
  return *value.string;
}

// A position of the range form: a positive integer.
bool PositiveInteger(const TavixValue& value, std::size_t& out) {
  if (value.code != kind::MATRIX || value.matrix->size() != 1) return false;
  const double x = (*value.matrix)(0, 0);
  if (!(x >= 1.0) || x != std::floor(x) || x > 1e15) return false;
  out = static_cast<std::size_t>(x);
  return true;
}

}  // namespace

void StringReplaceStatement::Execute(ExecContext& context) const {
  Workspace& ws = context.workspace();
  const auto found = ws.strings.find(name);
  if (found == ws.strings.end() || ws.ID_code(name) != kind::STRING) {
    context.Fail(*this, "Argument \"" + name + "\" passed to \"strreplace\" is not a string.");
  }
  std::string text = *found->second;
  const TavixValue secondValue = second->Evaluate(context);
  const TavixValue thirdValue = third->Evaluate(context);
  if (rangeEnd) {
    const std::string& replacement = TextOf(context, *this, *second, secondValue);
    const TavixValue endValue = rangeEnd->Evaluate(context);
    std::size_t from = 0;
    std::size_t to = 0;
    if (!PositiveInteger(thirdValue, from) || !PositiveInteger(endValue, to)) {
      context.Fail(*this, "In range opetations, 'a:b', 'a' and 'b' must be positive integers.");
    }
    if (to < from) {
      context.Fail(*this, "In range opetations, 'a:b', second index is smaller than first index.");
    }
    if (to > text.size()) context.Fail(*this, "Index out of bounds.");
    text.replace(from - 1, to - from + 1, replacement);
  } else {
    std::string find = TextOf(context, *this, *second, secondValue);
    const std::string& replacement = TextOf(context, *this, *third, thirdValue);
    // A doubled backslash in the searched text stands for one.
    for (std::size_t at = find.find("\\\\"); at != std::string::npos; at = find.find("\\\\", at + 1)) {
      find.erase(at, 1);
    }
    if (!find.empty()) {
      std::string replaced;
      std::size_t from = 0;
      for (std::size_t at = text.find(find); at != std::string::npos; at = text.find(find, from)) {
        replaced.append(text, from, at - from);
        replaced += replacement;
        from = at + find.size();
      }
      replaced.append(text, from);
      text = std::move(replaced);
    }
  }
  // Values are shared on copy: the variable gets a new string rather than a changed one.
  found->second = std::make_shared<std::string>(std::move(text));
}
