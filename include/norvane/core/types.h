// Basic vocabulary shared by every subsystem: the code unit, positions,
// ranges and the "not found" marker.
#pragma once

#include <cstddef>
#include <cstdint>

namespace norvane {

// One UTF-16 code unit; the same type as ICU's UChar.
using unichar = char16_t;

// Positions and lengths count code units.
inline constexpr size_t NotFound = 0x7fffffffffffffffULL;

// A span of code units. A failed search answers {NotFound, 0}.
struct Range {
  size_t location = NotFound;
  size_t length = 0;

  constexpr size_t end() const { return location + length; }
  constexpr bool found() const { return location != NotFound; }
  constexpr bool contains(size_t position) const { return position >= location && position - location < length; }
  friend constexpr bool operator==(const Range&, const Range&) = default;
};

inline constexpr Range NotFoundRange{NotFound, 0};

}  // namespace norvane
