#include "norvane/text/versions.h"

#include <algorithm>
#include <climits>

#include "norvane/core/log.h"
#include "norvane/text/chars.h"
#include "norvane/text/strings.h"
#include "strings_internal.h"

namespace norvane::text {

namespace {

// The leading integer after white units and a sign, clamped to 32 bits; 0
// when there is none.
int64_t integerValue(std::u16string_view units) {
  CharacterSetRep white = whiteCharacterSetRep();
  size_t i = 0;
  while (i < units.size() && isInRep(white, units[i])) ++i;
  bool negative = false;
  if (i < units.size() && (units[i] == '-' || units[i] == '+')) negative = units[i++] == '-';
  int64_t value = 0;
  for (; i < units.size() && units[i] >= '0' && units[i] <= '9'; ++i) {
    value = std::min<int64_t>(value * 10 + (units[i] - '0'), int64_t{INT_MAX} + 1);
  }
  value = negative ? -value : std::min<int64_t>(value, INT_MAX);
  return value;
}

}  // namespace

std::vector<String> comparableComponentsOfVersionNumber(const String& s) {
  std::vector<String> components;
  if (s.isNull()) return components;
  std::u16string text(stringByTrimmingSpacesAndFeeds(s, true).view());
  static constexpr std::pair<std::u16string_view, std::u16string_view> kPreReleases[] = {
      {u"alpha", u".-5."}, {u"build", u".-4."}, {u"beta", u".-3."}, {u"rc", u".-2."}, {u"pb", u".-1."}};
  for (const auto& [word, replacement] : kPreReleases) {
    std::u16string replaced;
    if (internal::replaceAll(text, word, replacement, false, replaced) > 0) text.swap(replaced);
  }
  size_t begin = 0;
  for (size_t dot = text.find(u'.'); dot != text.npos; dot = text.find(u'.', begin)) {
    components.emplace_back(std::u16string_view(text).substr(begin, dot - begin));
    begin = dot + 1;
  }
  components.emplace_back(std::u16string_view(text).substr(begin));
  return components;
}

int compareToVersionNumber(const String& s, const String& other) {
  std::vector<String> mine = comparableComponentsOfVersionNumber(s);
  std::vector<String> theirs = comparableComponentsOfVersionNumber(other);
  for (size_t i = 0; i < std::max(mine.size(), theirs.size()); ++i) {
    int64_t a = i < mine.size() ? integerValue(mine[i].view()) : 0;
    int64_t b = i < theirs.size() ? integerValue(theirs[i].view()) : 0;
    if (a != b) return a < b ? -1 : 1;
  }
  return 0;
}

bool testVersionNumberComparison() {
  struct Case {
    const char* newer;
    const char* older;
    int expected;
  };
  static constexpr Case kCases[] = {
      {"1.1", "1.0.4", 1},           {"1.0.4", "1.0.3", 1},
      {"1.0", "1.0build1", 1},       {"1.0.1build1", "1.0build1", 1},
      {"1.0beta1", "1.0build1", 1},  {"1.0.4", "1.0build1", 1},
      {"2.9.2", "2.9.2build1", 1},   {"2.9.2build1", "2.9.1", 1},
      {"2.9.2", "2.9.1", 1},         {"1.0.4", "1.0.4", 0},
      {"1.0build1", "1.0build1", 0},
  };
  bool allHeld = true;
  for (const Case& c : kCases) {
    int result = compareToVersionNumber(String::fromLatin1(c.newer), String::fromLatin1(c.older));
    if (result != c.expected) {
      logFormat("Version number comparison of {} to {} gave {}, expected {}", c.newer, c.older, result, c.expected);
      allHeld = false;
    }
  }
  return allHeld;
}

}  // namespace norvane::text
