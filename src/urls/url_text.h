// Small searches over URL text shared by the urls sources. Literals are
// ASCII byte strings; positions count code units.
#pragma once

#include <string>
#include <string_view>

#include "norvane/core/string.h"
#include "norvane/text/chars.h"
#include "urls/row_matcher.h"

namespace norvane::urls::detail {

using View = std::u16string_view;

inline bool isAsciiLetter(unichar u) {
  return (u | 32) >= 'a' && (u | 32) <= 'z';
}
inline bool isAsciiDigit(unichar u) {
  return u >= '0' && u <= '9';
}
inline bool isAsciiAlnum(unichar u) {
  return isAsciiLetter(u) || isAsciiDigit(u);
}
inline bool isQueryDelimiter(unichar u) {
  return u == '&' || u == ';' || u == '?';
}
inline unichar asciiLower(unichar u) {
  return u >= 'A' && u <= 'Z' ? unichar(u | 32) : u;
}

// First occurrence of `literal` at or after `from`, exactly or ignoring case.
inline size_t find(View s, std::string_view literal, size_t from = 0) {
  if (from >= s.size()) return NotFound;
  const unichar* hit = text::fastUnicharsContainChars(s.data() + from, s.size() - from, literal.data(), literal.size());
  return hit ? size_t(hit - s.data()) : NotFound;
}
inline size_t findNoCase(View s, std::string_view literal, size_t from = 0) {
  if (from >= s.size()) return NotFound;
  const unichar* hit =
      text::fastCaseInsensitiveUnicharsContainChars(s.data() + from, s.size() - from, literal.data(), literal.size());
  return hit ? size_t(hit - s.data()) : NotFound;
}
inline bool contains(View s, std::string_view literal) {
  return find(s, literal) != NotFound;
}
inline bool containsNoCase(View s, std::string_view literal) {
  return findNoCase(s, literal) != NotFound;
}

inline bool hasPrefix(View s, std::string_view literal) {
  return s.size() >= literal.size() && text::fastCompareUnicharsWithChars(s.substr(0, literal.size()), literal) == 0;
}
inline bool hasPrefixNoCase(View s, std::string_view literal) {
  return s.size() >= literal.size() &&
         text::fastCaseInsensitiveCompareUnicharsWithChars(s.substr(0, literal.size()), literal) == 0;
}
inline bool hasSuffix(View s, std::string_view literal) {
  return s.size() >= literal.size() &&
         text::fastCompareUnicharsWithChars(s.substr(s.size() - literal.size()), literal) == 0;
}
inline bool hasSuffixNoCase(View s, std::string_view literal) {
  return s.size() >= literal.size() &&
         text::fastCaseInsensitiveCompareUnicharsWithChars(s.substr(s.size() - literal.size()), literal) == 0;
}
inline bool equalsNoCase(View s, std::string_view literal) {
  return s.size() == literal.size() && text::fastCaseInsensitiveCompareUnicharsWithChars(s, literal) == 0;
}

// First unit at or after `from` that `set` holds, or NotFound.
inline size_t findFirstOf(View s, std::string_view set, size_t from = 0) {
  for (size_t i = from; i < s.size(); ++i) {
    if (s[i] < 128 && set.find(char(s[i])) != std::string_view::npos) return i;
  }
  return NotFound;
}

// The last component of a path, trailing "/" ignored ("/" alone stays).
inline View lastPathComponent(View path) {
  while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
  size_t slash = path.size() > 1 ? path.rfind(u'/') : View::npos;
  return slash == View::npos ? path : path.substr(slash + 1);
}

// The part of the last path component behind its last ".", empty when the
// component has no "." or only a leading one.
inline View pathExtensionOf(View path) {
  View last = lastPathComponent(path);
  size_t dot = last.rfind(u'.');
  if (dot == View::npos || dot == 0) return {};
  return last.substr(dot + 1);
}

inline std::u16string widen(std::string_view ascii) {
  return std::u16string(ascii.begin(), ascii.end());
}

// The receiver when `work` has the same units, otherwise a new string.
inline String sameOrNew(const String& receiver, std::u16string&& work) {
  if (work == receiver.view()) return receiver;
  return String::fromU16(std::move(work));
}

// The URL text mapped through the lower table, on the stack when short, for
// the table tests.
class LoweredText {
 public:
  explicit LoweredText(View s);
  const unichar* data() const { return data_; }
  size_t size() const { return size_; }
  View view() const { return {data_, size_}; }
  // True if any row of the matcher's table occurs in the text.
  bool matches(const RowMatcher& rows) const { return rows.matches(data_, size_); }

 private:
  unichar buffer_[256];
  std::u16string heap_;
  const unichar* data_;
  size_t size_;
};

}  // namespace norvane::urls::detail
