// An RGB colour for console text, independent of any GUI toolkit.
#pragma once

#include <cstdint>

struct Colour {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  bool operator==(const Colour&) const = default;
};

namespace colours {
inline constexpr Colour Black{0, 0, 0};
// Internal (impossible-state) errors are printed in this colour.
inline constexpr Colour InternalError{200, 50, 0};
}  // namespace colours
