#include "norvane/text/strings.h"

#include <fcntl.h>
#include <sys/random.h>
#include <unicode/uchar.h>
#include <unicode/utf16.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>

#include "norvane/core/log.h"
#include "norvane/core/unicode.h"
#include "strings_internal.h"

namespace norvane::text {

using internal::slice;

namespace internal {

bool isTrimWhite(unichar u) {
  if ((u >= 0x09 && u <= 0x0D) || u == 0x85) return true;
  if (u < 0x80) return u == 0x20;
  int8_t type = u_charType(u);
  return type == U_SPACE_SEPARATOR || type == U_LINE_SEPARATOR || type == U_PARAGRAPH_SEPARATOR;
}

size_t findForward(const unichar* text, size_t from, size_t to, std::u16string_view needle, bool caseSensitive) {
  if (needle.empty() || from >= to || to - from < needle.size()) return NotFound;
  const unichar* hit = caseSensitive
                           ? fastContainsUnichars(text + from, to - from, needle.data(), needle.size())
                           : fastCaseInsensitiveContainsUnichars(text + from, to - from, needle.data(), needle.size());
  return hit ? static_cast<size_t>(hit - text) : NotFound;
}

size_t findBackward(const unichar* text, size_t from, size_t to, std::u16string_view needle, bool caseSensitive) {
  size_t n = needle.size();
  if (n == 0 || from >= to || to - from < n) return NotFound;
  ConversionTable upper = caseSensitive ? nullptr : upperCharsTable();
  for (size_t at = to - n + 1; at-- > from;) {
    size_t k = 0;
    if (upper) {
      while (k < n && upper[text[at + k]] == upper[needle[k]]) ++k;
    } else {
      while (k < n && text[at + k] == needle[k]) ++k;
    }
    if (k == n) return at;
  }
  return NotFound;
}

size_t replaceAll(std::u16string_view text, std::u16string_view target, std::u16string_view replacement,
                  bool caseSensitive, std::u16string& out) {
  size_t hit = findForward(text.data(), 0, text.size(), target, caseSensitive);
  if (hit == NotFound) return 0;
  std::u16string result;
  result.reserve(text.size());
  size_t count = 0;
  size_t copied = 0;
  while (hit != NotFound) {
    result.append(text.data() + copied, hit - copied);
    result.append(replacement);
    ++count;
    copied = hit + target.size();
    hit = findForward(text.data(), copied, text.size(), target, caseSensitive);
  }
  result.append(text.data() + copied, text.size() - copied);
  out = std::move(result);
  return count;
}

String stringIfChanged(const String& s, std::u16string&& out) {
  if (!s.isNull() && s.view() == out) return s;
  return String::fromU16(std::move(out));
}

}  // namespace internal

namespace {

bool isAsciiDigit(unichar u) {
  return u >= '0' && u <= '9';
}

// The run of units in `rep` starting at `lo`, or ending at `hi`.
size_t skipForward(const unichar* units, size_t lo, size_t hi, CharacterSetRep rep) {
  while (lo < hi && isInRep(rep, units[lo])) ++lo;
  return lo;
}
size_t skipBackward(const unichar* units, size_t lo, size_t hi, CharacterSetRep rep) {
  while (hi > lo && isInRep(rep, units[hi - 1])) --hi;
  return hi;
}

template <typename Trim>
String trimmingEnds(const String& s, Trim trim, bool left, bool right) {
  const unichar* units = s.data();
  size_t lo = 0;
  size_t hi = s.length();
  if (left) {
    while (lo < hi && trim(units[lo])) ++lo;
  }
  if (right) {
    while (hi > lo && trim(units[hi - 1])) --hi;
  }
  return slice(s, lo, hi);
}

bool equalsAsciiNoCase(std::u16string_view s, std::string_view ascii) {
  if (s.size() != ascii.size()) return false;
  for (size_t i = 0; i < s.size(); ++i) {
    unichar u = s[i];
    if (u >= 'A' && u <= 'Z') u |= 32;
    if (u != static_cast<unsigned char>(ascii[i])) return false;
  }
  return true;
}

unichar rotated(unichar u, int by) {
  if (u >= 'a' && u <= 'z') return static_cast<unichar>('a' + (u - 'a' + by) % 26);
  if (u >= 'A' && u <= 'Z') return static_cast<unichar>('A' + (u - 'A' + by) % 26);
  return u;
}

// The end of the line end that starts at `i` (a CR LF pair counts as one).
size_t endOfLineEnd(const unichar* units, size_t length, size_t i) {
  if (units[i] == '\r' && i + 1 < length && units[i + 1] == '\n') return i + 2;
  return i + 1;
}

std::atomic<NSStringEncoding> gDefaultEncoding{NSUTF8StringEncoding};

}  // namespace

// --- Making strings ---

CharacterSetRep defaultLineSeparators() {
  static const std::array<uint8_t, 8192> rep = [] {
    std::array<uint8_t, 8192> bits{};
    for (unichar u : {0x03, 0x0A, 0x0C, 0x0D, 0x2028, 0x2029, 0xFEFF, 0xFFFC}) bits[u >> 3] |= 1 << (u & 7);
    return bits;
  }();
  return rep.data();
}

String uniqueString() {
  int fd = ::open("/proc/sys/kernel/random/uuid", O_RDONLY | O_CLOEXEC);
  if (fd >= 0) {
    char text[36];
    ssize_t got = ::read(fd, text, sizeof text);
    ::close(fd);
    if (got == static_cast<ssize_t>(sizeof text)) return String::fromLatin1(std::string_view(text, sizeof text));
  }
  uint8_t bytes[16];
  if (::getrandom(bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes)) return String();
  bytes[6] = (bytes[6] & 0x0F) | 0x40;  // version 4
  bytes[8] = (bytes[8] & 0x3F) | 0x80;  // RFC 4122 variant
  std::string text;
  for (int i = 0; i < 16; ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text.push_back('-');
    text += fmt::format("{:02x}", bytes[i]);
  }
  return String::fromLatin1(text);
}

String stringWithComponents(std::initializer_list<String> components) {
  if (components.size() == 0 || components.begin()->isNull()) return String();
  std::u16string out;
  for (const String& component : components) {
    if (component.isNull()) break;
    if (&component != components.begin()) out.push_back('.');
    out.append(component.view());
  }
  return String::fromU16(std::move(out));
}

String stringWithCharacter(unichar u) {
  return String(&u, 1);
}

NSStringEncoding defaultEncoding() {
  return gDefaultEncoding.load(std::memory_order_relaxed);
}
void setDefaultEncoding(NSStringEncoding encoding) {
  gDefaultEncoding.store(encoding, std::memory_order_relaxed);
}

// --- Tests and counts ---

bool boolValue(const String& s) {
  const unichar* units = s.data();
  size_t length = s.length();
  size_t i = skipForward(units, 0, length, whiteCharacterSetRep());
  if (i < length && (units[i] == '+' || units[i] == '-')) ++i;
  for (; i < length && isAsciiDigit(units[i]); ++i) {
    if (units[i] != '0') return true;
  }
  return equalsAsciiNoCase(s.view(), "true") || equalsAsciiNoCase(s.view(), "yes") || equalsAsciiNoCase(s.view(), "on");
}

size_t countNumbers(const String& s) {
  const unichar* units = s.data();
  size_t count = 0;
  bool inRun = false;
  for (size_t i = 0; i < s.length(); ++i) {
    bool digit = isAsciiDigit(units[i]);
    if (digit && !inRun) ++count;
    inRun = digit;
  }
  return count;
}

bool containsNumber(const String& s, const String& digits) {
  if (digits.isEmpty()) return false;
  const unichar* units = s.data();
  size_t length = s.length();
  size_t n = digits.length();
  for (size_t at = internal::findForward(units, 0, length, digits.view(), true); at != NotFound;
       at = internal::findForward(units, at + 1, length, digits.view(), true)) {
    bool digitBefore = at > 0 && isAsciiDigit(units[at - 1]);
    bool digitBehind = at + n < length && isAsciiDigit(units[at + n]);
    if (!digitBefore && !digitBehind) return true;
  }
  return false;
}

bool containsNumberWithNDigits(const String& s, long n) {
  if (n < 1 || s.length() < static_cast<size_t>(n)) return false;
  const unichar* units = s.data();
  size_t run = 0;
  for (size_t i = 0; i < s.length(); ++i) {
    run = isAsciiDigit(units[i]) ? run + 1 : 0;
    if (run >= static_cast<size_t>(n)) return true;
  }
  return false;
}

bool containsCharacters(const String& s, unsigned mask) {
  if (mask == 0 || s.isEmpty()) return false;
  static constexpr char kMaskUnits[] = {'.', '@', '/', '?', ';', '_', '*', '$'};
  unsigned found = 0;
  for (unichar u : s.view()) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      if (u == static_cast<unichar>(kMaskUnits[bit])) found |= 1u << bit;
    }
    if ((found & mask) == mask) return true;
  }
  return false;
}

bool isMashedWord(const String& s) {
  const unichar* units = s.data();
  size_t length = s.length();
  if (length < 3 || !isInRep(upperCharacterSetRep(), units[0])) return false;
  CharacterSetRep lower = lowerCharacterSetRep();
  size_t i = skipForward(units, 1, length, lower);
  return i >= 2 && i + 1 < length && isInRep(upperCharacterSetRep(), units[i]) && isInRep(lower, units[i + 1]);
}

size_t numberOfLines(const String& s) {
  const unichar* units = s.data();
  size_t length = s.length();
  size_t count = 0;
  for (size_t i = 0; i < length;) {
    ++count;
    while (i < length && !isFeedCharacter(units[i])) ++i;
    if (i < length) i = endOfLineEnd(units, length, i);
  }
  return count;
}

bool hasFeedOfLine(const String& s) {
  return !s.isEmpty() && isFeedCharacter(s[s.length() - 1]);
}

size_t lengthOfFeedOfLine(const String& s) {
  return s.length() - skipBackward(s.data(), 0, s.length(), defaultLineSeparators());
}

// --- Unit search and counting ---

size_t findCharacter(const String& s, unichar u, size_t start, bool caseInsensitive) {
  const unichar* units = s.data();
  size_t length = s.length();
  if (!caseInsensitive) {
    for (size_t i = start; i < length; ++i) {
      if (units[i] == u) return i;
    }
    return NotFound;
  }
  ConversionTable upper = upperCharsTable();
  unichar wanted = upper[u];
  for (size_t i = start; i < length; ++i) {
    if (upper[units[i]] == wanted) return i;
  }
  return NotFound;
}

size_t findLastCharacter(const String& s, unichar u, size_t start, bool caseInsensitive) {
  const unichar* units = s.data();
  ConversionTable upper = caseInsensitive ? upperCharsTable() : nullptr;
  unichar wanted = upper ? upper[u] : u;
  for (size_t i = s.length(); i-- > start;) {
    if ((upper ? upper[units[i]] : units[i]) == wanted) return i;
  }
  return NotFound;
}

bool containsCharacter(const String& s, unichar u, size_t start, bool caseInsensitive) {
  return findCharacter(s, u, start, caseInsensitive) != NotFound;
}

size_t countCharacter(const String& s, unichar u, size_t start, bool caseInsensitive) {
  const unichar* units = s.data();
  ConversionTable upper = caseInsensitive ? upperCharsTable() : nullptr;
  unichar wanted = upper ? upper[u] : u;
  size_t count = 0;
  for (size_t i = start; i < s.length(); ++i) {
    if ((upper ? upper[units[i]] : units[i]) == wanted) ++count;
  }
  return count;
}

size_t findOneOf(const String& s, const String& set, size_t start, bool caseInsensitive) {
  if (set.isEmpty()) return NotFound;
  const unichar* units = s.data();
  std::u16string_view members = set.view();
  if (!caseInsensitive) {
    for (size_t i = start; i < s.length(); ++i) {
      if (members.find(units[i]) != members.npos) return i;
    }
    return NotFound;
  }
  ConversionTable upper = upperCharsTable();
  for (size_t i = start; i < s.length(); ++i) {
    for (unichar member : members) {
      if (upper[member] == upper[units[i]]) return i;
    }
  }
  return NotFound;
}

// --- Lines ---

std::vector<String> lines(const String& s) {
  std::vector<String> result;
  const unichar* units = s.data();
  size_t length = s.length();
  for (size_t i = 0; i < length;) {
    size_t begin = i;
    while (i < length && !isFeedCharacter(units[i])) ++i;
    if (i < length) i = endOfLineEnd(units, length, i);
    result.push_back(slice(s, begin, i));
  }
  return result;
}

String firstLine(const String& s) {
  const unichar* units = s.data();
  size_t i = 0;
  while (i < s.length() && !isFeedCharacter(units[i])) ++i;
  return slice(s, 0, i);
}

String feedOfLine(const String& s) {
  if (s.isNull()) return s;
  return slice(s, skipBackward(s.data(), 0, s.length(), defaultLineSeparators()), s.length());
}

// --- Replacing and removing ---

String stringByReplacingCharacter(const String& s, unichar from, unichar to, bool caseSensitive) {
  if (from == to) return s;
  if (caseSensitive) return internal::mappingUnits(s, [=](unichar u) { return u == from ? to : u; });
  ConversionTable upper = upperCharsTable();
  unichar wanted = upper[from];
  return internal::mappingUnits(s, [=](unichar u) { return upper[u] == wanted ? to : u; });
}

String stringByReplacingString(const String& s, const String& target, const String& replacement, bool caseSensitive) {
  if (target.isEmpty() || replacement.isNull()) return s;
  std::u16string out;
  if (internal::replaceAll(s.view(), target.view(), replacement.view(), caseSensitive, out) == 0) return s;
  return String::fromU16(std::move(out));
}

String stringByRemovingCharacters(const String& s, unichar u) {
  return internal::removingUnits(s, [=](unichar c) { return c == u; });
}

String stringByRemovingCharactersOfString(const String& s, const String& set) {
  if (set.isEmpty()) return s;
  std::u16string_view members = set.view();
  return internal::removingUnits(s, [=](unichar c) { return members.find(c) != members.npos; });
}

String stringByRemovingFeeds(const String& s) {
  return internal::removingUnits(s, isFeedCharacter);
}

String stringByRemovingTabs(const String& s) {
  return internal::removingUnits(s, [](unichar c) { return c == '\t'; });
}

String stringByRemovingSpaces(const String& s) {
  return stringByRemovingCharactersInRep(s, spaceCharacterSetRep());
}

String stringByRemovingWhiteSpaces(const String& s) {
  return stringByRemovingCharactersInRep(s, whiteCharacterSetRep());
}

String stringByRemovingDigits(const String& s) {
  return stringByRemovingCharactersInRep(s, digitCharacterSetRep());
}

String lowercaseStringByRemovingDigits(const String& s) {
  return stringByApplyingConversionTable(stringByRemovingDigits(s), lowerCharsTable());
}

String uppercaseStringByRemovingDigits(const String& s) {
  return stringByApplyingConversionTable(stringByRemovingDigits(s), upperCharsTable());
}

String stringByRemovingNonIPCharacters(const String& s) {
  return internal::removingUnits(s, [](unichar c) { return !isAsciiDigit(c) && c != '.'; });
}

String stringByRotating13(const String& s) {
  return stringByRotating(s, 13);
}

String stringByRotating(const String& s, long n) {
  int by = static_cast<int>((n % 26 + 26) % 26);
  if (by == 0) return s;
  return internal::mappingUnits(s, [=](unichar u) { return rotated(u, by); });
}

namespace {

template <typename InSet>
String collapsing(const String& s, InSet inSet, unichar replacement) {
  if (s.isEmpty()) return s;
  std::u16string out;
  internal::collapseRuns(s.view(), inSet, replacement, out);
  return internal::stringIfChanged(s, std::move(out));
}

}  // namespace

String stringByRemovingMultipleSpaces(const String& s) {
  CharacterSetRep rep = spaceCharacterSetRep();
  return collapsing(
      s, [=](unichar u) { return isInRep(rep, u); }, ' ');
}

String stringByRemovingMultipleWhiteSpaces(const String& s) {
  CharacterSetRep rep = whiteCharacterSetRep();
  return collapsing(
      s, [=](unichar u) { return isInRep(rep, u); }, ' ');
}

String stringByRemovingMultipleFeeds(const String& s) {
  return collapsing(s, isFeedCharacter, '\n');
}

// --- Trimming ---

String stringByTrimmingWhiteSpaces(const String& s) {
  return trimmingEnds(s, internal::isTrimWhite, true, true);
}

namespace {

String trimmingRep(const String& s, CharacterSetRep rep, bool left, bool right) {
  return trimmingEnds(
      s, [=](unichar u) { return isInRep(rep, u); }, left, right);
}

CharacterSetRep spacesAndFeeds(bool andFeeds) {
  return andFeeds ? whiteCharacterSetRep() : spaceCharacterSetRep();
}

}  // namespace

String stringByTrimmingSpacesOfLeftSideAndFeeds(const String& s, bool andFeeds) {
  return trimmingRep(s, spacesAndFeeds(andFeeds), true, false);
}

String stringByTrimmingSpacesOfRightSideAndFeeds(const String& s, bool andFeeds) {
  return trimmingRep(s, spacesAndFeeds(andFeeds), false, true);
}

String stringByTrimmingSpacesAndFeeds(const String& s, bool andFeeds) {
  return trimmingRep(s, spacesAndFeeds(andFeeds), true, true);
}

Range trimSpacesInRange(const String& s, Range range, bool andFeeds) {
  size_t length = s.length();
  size_t lo = std::min(range.location, length);
  size_t hi = lo + std::min(range.length, length - lo);
  CharacterSetRep rep = spacesAndFeeds(andFeeds);
  lo = skipForward(s.data(), lo, hi, rep);
  if (lo == hi) return Range{hi, 0};
  hi = skipBackward(s.data(), lo, hi, rep);
  return Range{lo, hi - lo};
}

Range trimWhiteSpacesInRange(const String& s, Range range) {
  return trimSpacesInRange(s, range, true);
}

String stringByTrimmingSpacesInRange(const String& s, Range range, bool andFeeds) {
  if (s.isNull()) return s;
  Range trimmed = trimSpacesInRange(s, range, andFeeds);
  return slice(s, trimmed.location, trimmed.end());
}

String stringByTrimmingFeeds(const String& s) {
  return trimmingEnds(s, isFeedCharacter, false, true);
}

String stringByTrimmingCharactersNotInRep(const String& s, CharacterSetRep rep) {
  if (!rep) return s;
  return trimmingEnds(
      s, [=](unichar u) { return !isInRep(rep, u); }, true, true);
}

String stringByTrimmingCharacter(const String& s, unichar u) {
  return trimmingEnds(
      s, [=](unichar c) { return c == u; }, true, true);
}

String stringByTrimmingPrefixCharacter(const String& s, unichar u) {
  return trimmingEnds(
      s, [=](unichar c) { return c == u; }, true, false);
}

String stringByTrimmingSuffixCharacter(const String& s, unichar u) {
  return trimmingEnds(
      s, [=](unichar c) { return c == u; }, false, true);
}

String stringByTrimmingEnclosingCharacter(const String& s, unichar u) {
  const unichar* units = s.data();
  size_t lo = 0;
  size_t hi = s.length();
  while (hi - lo >= 2 && units[lo] == u && units[hi - 1] == u) {
    ++lo;
    --hi;
  }
  return slice(s, lo, hi);
}

String stringByTrimmingQuotes(const String& s) {
  return trimmingEnds(
      s, [](unichar c) { return c == '\'' || c == '"'; }, true, true);
}

String stringByTrimmingEllipsis(const String& s) {
  return trimmingEnds(
      s, [](unichar c) { return c == '.' || c == 0x2026; }, false, true);
}

String stringByTrimmingDigits(const String& s) {
  return trimmingRep(s, digitCharacterSetRep(), true, true);
}

// --- Configuration text ---

std::vector<String> configLines(const String& s) {
  std::vector<String> result;
  const unichar* units = s.data();
  size_t length = s.length();
  CharacterSetRep white = whiteCharacterSetRep();
  for (size_t begin = 0; begin <= length;) {
    size_t end = begin;
    while (end < length && !isFeedCharacter(units[end])) ++end;
    size_t lo = skipForward(units, begin, end, white);
    size_t hi = skipBackward(units, lo, end, white);
    if (hi - lo >= 2 && units[lo] != '#') result.push_back(slice(s, lo, hi));
    begin = end + 1;
  }
  return result;
}

String configValueForKey(const String& line, const String& key) {
  size_t keyLength = key.length();
  if (key.isNull() || keyLength >= line.length()) return String();
  const unichar* units = line.data();
  ConversionTable upper = upperCharsTable();
  for (size_t i = 0; i < keyLength; ++i) {
    if (upper[units[i]] != upper[key[i]]) return String();
  }
  CharacterSetRep white = whiteCharacterSetRep();
  if (!isInRep(white, units[keyLength])) return String();
  size_t lo = skipForward(units, keyLength, line.length(), white);
  size_t hi = skipBackward(units, lo, line.length(), white);
  if (lo == hi) return String();
  return slice(line, lo, hi);
}

size_t typedValueForKeys(const String& s, std::initializer_list<String> keys) {
  size_t index = 0;
  for (const String& key : keys) {
    if (key.isNull()) break;
    if (isEqualToStringNoCase(s, key)) return index;
    ++index;
  }
  return NotFound;
}

// --- Reformatting ---

String reformattedMailing(const String& s) {
  if (s.isEmpty()) return s;
  const unichar* units = s.data();
  size_t length = s.length();
  CharacterSetRep space = spaceCharacterSetRep();
  CharacterSetRep white = whiteCharacterSetRep();
  std::u16string out;
  out.reserve(length);
  for (size_t i = 0; i < length;) {
    unichar u = units[i];
    if (isFeedCharacter(u)) {
      size_t count = 0;
      while (i < length && isFeedCharacter(units[i])) {
        i = endOfLineEnd(units, length, i);
        ++count;
      }
      if (count >= 2) {
        out.append(u"\n\n");
      } else if (i < length) {
        unichar next = units[i];
        if (next == ' ' || next == '-' || next == '/' || next == '>' || next == '}') {
          out.push_back('\n');
        } else if (!out.empty() && !isInRep(white, out.back())) {
          out.push_back(out.back() == ':' || out.back() == '>' ? '\n' : ' ');
        }
      }
    } else if (isInRep(space, u)) {
      while (i < length && isInRep(space, units[i])) ++i;
      out.push_back(' ');
    } else {
      out.push_back(u);
      ++i;
    }
  }
  return internal::stringIfChanged(s, std::move(out));
}

String reformattedStringByRemovingCharactersOfString(const String& s, const String& set) {
  if (s.isEmpty()) return s;
  std::vector<String> all = lines(s);
  std::u16string out;
  out.reserve(s.length());
  bool inParagraph = false;
  for (size_t k = 0; k < all.size(); ++k) {
    String text = stringByTrimmingSpacesAndFeeds(stringByRemovingCharactersOfString(all[k], set), true);
    if (!text.isEmpty()) {
      if (inParagraph) out.push_back(' ');
      out.append(text.view());
      inParagraph = true;
    } else if (inParagraph) {
      String feed = feedOfLine(all[k]);
      out.append(feed.view());
      if (k + 1 < all.size()) out.append(feed.view());
      inParagraph = false;
    }
  }
  std::u16string collapsed;
  CharacterSetRep space = spaceCharacterSetRep();
  internal::collapseRuns(
      out, [=](unichar u) { return isInRep(space, u); }, ' ', collapsed);
  return internal::stringIfChanged(s, std::move(collapsed));
}

// --- Debug output ---

namespace {

bool isHiddenInDump(unichar u) {
  return u < 0x21 || u == 0x2028 || u == 0x2029 || u == 0xFEFF || u == 0xFFFC;
}

}  // namespace

void dump(const String& s) {
  constexpr size_t kRow = 12;
  std::u16string_view units = s.view();
  for (size_t row = 0; row < units.size(); row += kRow) {
    std::u16string_view part = units.substr(row, kRow);
    std::string line;
    for (unichar u : part) line += fmt::format("{:04x} ", static_cast<unsigned>(u));
    line.append((kRow - part.size()) * 5, ' ');
    line += ": ";
    std::u16string shown(part);
    for (unichar& u : shown) {
      if (isHiddenInDump(u)) u = '.';
    }
    appendUtf16AsUtf8(shown, line);
    logMessage(line);
  }
}

void dumpAsArray(const String& s) {
  std::string text = "unichar string[] = {\n\t";
  std::u16string_view units = s.view();
  for (size_t i = 0; i < units.size(); ++i) {
    if (i > 0 && i % 8 == 0) text += "\n\t";
    text += fmt::format("0x{:04x}, ", static_cast<unsigned>(units[i]));
  }
  text += "\n};";
  logMessage(text);
}

// --- Components ---

std::vector<String> componentsUsingWhiteSeparation(const String& s) {
  std::vector<String> result;
  enumerateComponentsUsingBlock(
      s,
      [&](const String& text, const unichar*, Range piece, bool isSeparator) {
        if (!isSeparator) result.push_back(slice(text, piece.location, piece.end()));
        return false;
      },
      whiteCharacterSetRep());
  return result;
}

void enumerateComponentsUsingBlock(const String& s, const ComponentBlock& block, CharacterSetRep separators) {
  if (!block) return;
  const unichar* units = s.data();
  size_t length = s.length();
  for (size_t i = 0; i < length;) {
    size_t begin = i;
    bool isSeparator = separators && isInRep(separators, units[i]);
    while (i < length && (separators && isInRep(separators, units[i])) == isSeparator) ++i;
    if (block(s, units, Range{begin, i - begin}, isSeparator)) return;
  }
}

String stringByEllipsizingAfterNCharacters(const String& s, size_t n) {
  if (s.length() <= n) return s;
  size_t cut = n;
  if (cut > 0 && U16_IS_LEAD(s[cut - 1]) && U16_IS_TRAIL(s[cut])) --cut;
  std::u16string out(s.data(), cut);
  out.push_back(0x2026);
  return String::fromU16(std::move(out));
}

}  // namespace norvane::text
