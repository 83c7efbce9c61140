// CheckID: the shape of a workspace name.
#include "CheckID.h"

namespace {
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
}  // namespace

bool CheckID(std::string_view name) {
  if (name.empty() || !IsLetter(name.front())) return false;
  for (char c : name.substr(1)) {
    if (!IsLetter(c) && !IsDigit(c)) return false;
  }
  return true;
}
