#include "norvane/text/text_finding.h"

#include <algorithm>

#include "norvane/text/chars.h"
#include "strings_internal.h"

namespace norvane::text {

bool containsSubstring(const String& s, const String& substring, bool caseSensitive) {
  return internal::findForward(s.data(), 0, s.length(), substring.view(), caseSensitive) != NotFound;
}

bool containsSubstrings(const String& s, std::initializer_list<String> substrings, bool caseSensitive) {
  for (const String& substring : substrings) {
    if (substring.isNull()) break;
    if (containsSubstring(s, substring, caseSensitive)) return true;
  }
  return false;
}

size_t countSubstring(const String& s, const String& substring, bool caseSensitive) {
  size_t count = 0;
  std::u16string_view needle = substring.view();
  for (size_t at = internal::findForward(s.data(), 0, s.length(), needle, caseSensitive); at != NotFound;
       at = internal::findForward(s.data(), at + needle.size(), s.length(), needle, caseSensitive)) {
    ++count;
  }
  return count;
}

Range findString(const String& s, const String& needle, Range range, bool caseSensitive, bool forward, bool wrap) {
  const unichar* text = s.data();
  size_t length = s.length();
  std::u16string_view wanted = needle.view();
  size_t begin = std::min(range.location, length);
  size_t end = begin + std::min(range.length, length - begin);
  size_t hit;
  if (forward) {
    hit = internal::findForward(text, end, length, wanted, caseSensitive);
    if (hit == NotFound && wrap && end != 0) hit = internal::findForward(text, 0, begin, wanted, caseSensitive);
  } else {
    hit = internal::findBackward(text, 0, begin, wanted, caseSensitive);
    if (hit == NotFound && wrap && end < length) hit = internal::findBackward(text, end, length, wanted, caseSensitive);
  }
  if (hit == NotFound) return NotFoundRange;
  return Range{hit, wanted.size()};
}

size_t indexOfStringEqualTo(const std::vector<String>& array, const String& s) {
  if (s.isEmpty()) return NotFound;
  auto found = std::find(array.begin(), array.end(), s);
  return found == array.end() ? NotFound : static_cast<size_t>(found - array.begin());
}

size_t indexOfStringEqualToNoCase(const std::vector<String>& array, const String& s) {
  if (s.isEmpty()) return NotFound;
  auto found =
      std::find_if(array.begin(), array.end(), [&](const String& item) { return isEqualToStringNoCase(item, s); });
  return found == array.end() ? NotFound : static_cast<size_t>(found - array.begin());
}

bool containsString(const std::vector<String>& array, const String& s) {
  return indexOfStringEqualTo(array, s) != NotFound;
}

bool containsStringNoCase(const std::vector<String>& array, const String& s) {
  return indexOfStringEqualToNoCase(array, s) != NotFound;
}

}  // namespace norvane::text
