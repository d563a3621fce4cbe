#include "norvane/text/mutable_strings.h"

#include <unicode/ustring.h>

#include <algorithm>

#include "norvane/text/chars.h"
#include "norvane/text/strings.h"
#include "strings_internal.h"

namespace norvane::text {

namespace {

template <typename Remove>
void eraseUnits(std::u16string& s, Remove remove) {
  std::erase_if(s, remove);
}

void eraseRep(std::u16string& s, CharacterSetRep rep) {
  eraseUnits(s, [=](unichar u) { return isInRep(rep, u); });
}

template <typename InSet>
void collapseInPlace(std::u16string& s, InSet inSet, unichar replacement) {
  std::u16string out;
  internal::collapseRuns(s, inSet, replacement, out);
  s.swap(out);
}

template <typename Trim>
void trimEnds(std::u16string& s, Trim trim, bool left, bool right) {
  if (right) {
    size_t hi = s.size();
    while (hi > 0 && trim(s[hi - 1])) --hi;
    s.resize(hi);
  }
  if (left) {
    size_t lo = 0;
    while (lo < s.size() && trim(s[lo])) ++lo;
    s.erase(0, lo);
  }
}

}  // namespace

void appendSubstring(std::u16string& s, const String& other, Range range) {
  if (range.length < 1 || range.location >= other.length()) return;
  s.append(other.data() + range.location, std::min(range.length, other.length() - range.location));
}

void appendUnichar(std::u16string& s, unichar u) {
  s.push_back(u);
}

void appendUnichars(std::u16string& s, const unichar* units, size_t length) {
  if (units && length > 0) s.append(units, length);
}

void appendTrimmedString(std::u16string& s, const String& other) {
  s.append(stringByTrimmingWhiteSpaces(other).view());
}

void insertCharacter(std::u16string& s, unichar u, size_t index) {
  if (index <= s.size()) s.insert(s.begin() + index, u);
}

void removeCharacterAtIndex(std::u16string& s, size_t index) {
  if (index < s.size()) s.erase(index, 1);
}

size_t deleteString(std::u16string& s, const String& target) {
  return replaceString(s, target, String::empty());
}

size_t replaceString(std::u16string& s, const String& target, const String& replacement, bool caseSensitive) {
  if (target.isEmpty()) return 0;
  std::u16string out;
  size_t count = internal::replaceAll(s, target.view(), replacement.view(), caseSensitive, out);
  if (count > 0) s.swap(out);
  return count;
}

size_t replaceCharacter(std::u16string& s, unichar from, unichar to, bool caseSensitive) {
  size_t count = 0;
  ConversionTable upper = caseSensitive ? nullptr : upperCharsTable();
  unichar wanted = upper ? upper[from] : from;
  for (unichar& u : s) {
    if ((upper ? upper[u] : u) == wanted) {
      u = to;
      ++count;
    }
  }
  return count;
}

void removeCharacters(std::u16string& s, unichar u) {
  eraseUnits(s, [=](unichar c) { return c == u; });
}

void removeCharactersOfString(std::u16string& s, const String& set) {
  std::u16string_view members = set.view();
  if (members.empty()) return;
  eraseUnits(s, [=](unichar c) { return members.find(c) != members.npos; });
}

void removeFeeds(std::u16string& s) {
  eraseUnits(s, isFeedCharacter);
}
void removeTabs(std::u16string& s) {
  removeCharacters(s, '\t');
}
void removeSpaces(std::u16string& s) {
  eraseRep(s, spaceCharacterSetRep());
}
void removeWhiteSpaces(std::u16string& s) {
  eraseRep(s, whiteCharacterSetRep());
}
void removeDigits(std::u16string& s) {
  eraseRep(s, digitCharacterSetRep());
}

void removeMultipleSpaces(std::u16string& s) {
  CharacterSetRep rep = spaceCharacterSetRep();
  collapseInPlace(
      s, [=](unichar u) { return isInRep(rep, u); }, ' ');
}

void removeMultipleWhiteSpaces(std::u16string& s) {
  CharacterSetRep rep = whiteCharacterSetRep();
  collapseInPlace(
      s, [=](unichar u) { return isInRep(rep, u); }, ' ');
}

void removeMultipleFeeds(std::u16string& s) {
  collapseInPlace(s, isFeedCharacter, '\n');
}

void trimWhiteSpaces(std::u16string& s) {
  trimEnds(s, internal::isTrimWhite, true, true);
}

void trimCharacter(std::u16string& s, unichar u) {
  trimEnds(
      s, [=](unichar c) { return c == u; }, true, true);
}

void trimPrefixCharacter(std::u16string& s, unichar u) {
  trimEnds(
      s, [=](unichar c) { return c == u; }, true, false);
}

void trimSuffixCharacter(std::u16string& s, unichar u) {
  trimEnds(
      s, [=](unichar c) { return c == u; }, false, true);
}

void trimFeeds(std::u16string& s) {
  trimEnds(s, isFeedCharacter, false, true);
}

void decodeTabs(std::u16string& s, long tabWidth) {
  if (tabWidth < 1 || s.find(u'\t') == s.npos) return;
  size_t width = static_cast<size_t>(tabWidth);
  std::u16string out;
  out.reserve(s.size() + s.size() / 4);
  size_t column = 0;
  for (unichar u : s) {
    if (u == '\t') {
      size_t blanks = width - column % width;
      out.append(blanks, u' ');
      column += blanks;
    } else {
      out.push_back(u);
      column = isFeedCharacter(u) ? 0 : column + 1;
    }
  }
  s.swap(out);
}

void encodeTabs(std::u16string& s, long tabWidth) {
  if (tabWidth < 1) return;
  size_t width = static_cast<size_t>(tabWidth);
  CharacterSetRep space = spaceCharacterSetRep();
  std::u16string out;
  out.reserve(s.size());
  size_t column = 0;
  size_t runStart = NotFound;  // where in `out` the current run of space units began
  for (unichar u : s) {
    if (isInRep(space, u)) {
      if (runStart == NotFound) runStart = out.size();
      column = u == '\t' ? (column / width + 1) * width : column + 1;
      out.push_back(u);
      if (column % width == 0) {
        out.resize(runStart);
        out.push_back('\t');
        runStart = NotFound;
      }
    } else {
      out.push_back(u);
      runStart = NotFound;
      column = isFeedCharacter(u) ? 0 : column + 1;
    }
  }
  s.swap(out);
}

void lowercase(std::u16string& s) {
  s = lowercaseString(s);
}

void uppercase(std::u16string& s) {
  s = uppercaseString(s);
}

void capitalize(std::u16string& s) {
  if (s.empty()) return;
  UErrorCode status = U_ZERO_ERROR;
  int32_t needed = u_strToTitle(nullptr, 0, s.data(), static_cast<int32_t>(s.size()), nullptr, "", &status);
  if (status != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(status)) return;
  std::u16string out(static_cast<size_t>(needed), u'\0');
  status = U_ZERO_ERROR;
  u_strToTitle(out.data(), needed, s.data(), static_cast<int32_t>(s.size()), nullptr, "", &status);
  if (U_SUCCESS(status)) s.swap(out);
}

}  // namespace norvane::text
