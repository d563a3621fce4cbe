// Unit walkers shared by the string, mutable string and text-finding
// operations. Not installed; include only from src/text.
#pragma once

#include <string>
#include <string_view>

#include "norvane/core/string.h"
#include "norvane/core/types.h"
#include "norvane/text/chars.h"

namespace norvane::text::internal {

// Unicode white space and line breaks: Z*, U+0009 to U+000D and U+0085.
bool isTrimWhite(unichar u);

// The first hit of `needle` lying wholly inside [from, to), or NotFound.
size_t findForward(const unichar* text, size_t from, size_t to, std::u16string_view needle, bool caseSensitive);
// The last such hit, or NotFound.
size_t findBackward(const unichar* text, size_t from, size_t to, std::u16string_view needle, bool caseSensitive);

// Writes `text` with every non-overlapping `target` replaced into `out` and
// answers the number of replacements; `out` is untouched when it is 0.
size_t replaceAll(std::u16string_view text, std::u16string_view target, std::u16string_view replacement,
                  bool caseSensitive, std::u16string& out);

// Writes `text` with each run of units for which inSet() holds replaced by
// `replacement` into `out`.
template <typename InSet>
void collapseRuns(std::u16string_view text, InSet inSet, unichar replacement, std::u16string& out) {
  out.clear();
  out.reserve(text.size());
  for (size_t i = 0; i < text.size();) {
    if (!inSet(text[i])) {
      out.push_back(text[i++]);
      continue;
    }
    while (i < text.size() && inSet(text[i])) ++i;
    out.push_back(replacement);
  }
}

// The receiver without the units for which remove() holds; the receiver
// itself when there are none.
template <typename Remove>
String removingUnits(const String& s, Remove remove) {
  const unichar* units = s.data();
  size_t length = s.length();
  size_t i = 0;
  while (i < length && !remove(units[i])) ++i;
  if (i == length) return s;
  std::u16string out;
  out.reserve(length - 1);
  out.append(units, i);
  for (++i; i < length; ++i) {
    if (!remove(units[i])) out.push_back(units[i]);
  }
  return String::fromU16(std::move(out));
}

// The receiver with every unit passed through map(); the receiver itself when
// no unit changed.
template <typename Map>
String mappingUnits(const String& s, Map map) {
  const unichar* units = s.data();
  size_t length = s.length();
  size_t i = 0;
  while (i < length && map(units[i]) == units[i]) ++i;
  if (i == length) return s;
  std::u16string out(units, length);
  for (; i < length; ++i) out[i] = map(units[i]);
  return String::fromU16(std::move(out));
}

// The receiver if `out` has the same units, else a new string of them.
String stringIfChanged(const String& s, std::u16string&& out);

// The units [lo, hi) of the receiver; the receiver itself when that is all
// of it.
inline String slice(const String& s, size_t lo, size_t hi) {
  if (lo == 0 && hi == s.length()) return s;
  return String(s.data() + lo, hi - lo);
}

}  // namespace norvane::text::internal
