// Wildcard patterns on their own: comparison tables, classification and the
// whole-string matchers.

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <new>

#include "norvane/query/wildcards.h"

namespace norvane::query {
namespace {

std::atomic<double> gMinWildcardFuzzyAnalogy{0.75};

// Small texts and patterns live on the stack; larger ones on the heap.
template <size_t N>
class UnitBuffer {
 public:
  explicit UnitBuffer(size_t size) : heap_(size > N ? new (std::nothrow) unichar[size] : nullptr) {}
  unichar* data() { return heap_ ? heap_.get() : stack_; }
  bool ok(size_t size) const { return size <= N || heap_; }

 private:
  unichar stack_[N];
  std::unique_ptr<unichar[]> heap_;
};

// --- The matchers ---

// Unit access with and without folding, so that an exact match has no table
// load in its loop.
struct Exact {
  unichar operator()(unichar u) const { return u; }
};
struct Folded {
  text::ConversionTable table;
  unichar operator()(unichar u) const { return table[u]; }
};

// Tests one bracket expression at p (on "[") against the folded text unit u.
// Answers the pattern position behind it, or null if it does not match.
const unichar* matchBracket(const unichar* p, const unichar* pEnd, unichar u) {
  ++p;  // "["
  bool negated = false;
  if (p < pEnd && *p == u'^') {
    negated = true;
    ++p;
  }
  const unichar* first = p;
  bool held = false;
  for (; p < pEnd && *p != u']'; ++p) {
    const unichar item = *p;
    if (item == u'|') continue;
    if (item == u'-' && p + 1 == pEnd) {
      held = false;  // an unterminated expression ending in "-"
    } else if (item == u'-' && p > first && p[1] != u']') {
      held = p[-1] <= u && u <= p[1];  // a range: the units around the "-"
    } else {
      held = item == u;
    }
    if (held) break;
  }
  if (held) {
    while (p < pEnd && *p != u']') ++p;
  }
  if (p < pEnd) ++p;  // "]"
  return held != negated ? p : nullptr;
}

// Greedy matching that remembers only the last "*": when a later part
// fails, the star takes one more text unit and the rest is tried again. Every
// pattern element other than "*" consumes exactly one unit, so this finds a
// match whenever one exists, in O(text * pattern) steps.
template <bool kUnix, class Fold>
bool matchPattern(const unichar* t, const unichar* tEnd, const unichar* p, const unichar* pEnd, Fold fold) {
  const unichar* starPattern = nullptr;
  const unichar* starText = nullptr;
  while (t < tEnd) {
    if (p < pEnd) {
      const unichar c = *p;
      if (c == u'*') {
        starPattern = ++p;
        starText = t;
        continue;
      }
      if (c == u'?') {
        ++p;
        ++t;
        continue;
      }
      if (kUnix && c == u'[') {
        if (p + 1 < pEnd) {
          if (const unichar* next = matchBracket(p, pEnd, fold(*t))) {
            p = next;
            ++t;
            continue;
          }
        }
      } else if (fold(*t) == c) {
        ++p;
        ++t;
        continue;
      }
    }
    if (!starPattern) return false;
    p = starPattern;
    t = ++starText;
  }
  while (p < pEnd && *p == u'*') ++p;
  return p == pEnd;
}

// --- Fuzzy score ---

template <class Fold>
double fuzzyScore(const unichar* a, size_t aLength, const unichar* b, size_t bLength, Fold fold) {
  const unichar* longer = b;
  const unichar* shorter = a;
  size_t n = bLength;
  size_t m = aLength;
  if (aLength > bLength) {
    std::swap(longer, shorter);
    std::swap(n, m);
  }
  if (n == 0) return 0.0;

  size_t samePlace = 0;
  for (size_t i = 0; i < m; ++i) samePlace += fold(longer[i]) == fold(shorter[i]);
  const double positional = static_cast<double>(samePlace) / static_cast<double>(n);

  constexpr size_t kStackFlags = 512;
  bool stackFlags[kStackFlags];
  std::unique_ptr<bool[]> heapFlags;
  bool* used = stackFlags;
  if (n > kStackFlags) {
    heapFlags.reset(new (std::nothrow) bool[n]);
    if (!heapFlags) return 0.0;
    used = heapFlags.get();
  }
  std::fill(used, used + n, false);

  // shift: how far the last found unit lay left of its place in the shorter
  // word; a unit found elsewhere than shift predicts counts as a move.
  ptrdiff_t shift = 0;
  size_t matched = 0;
  size_t moves = 0;
  for (size_t i = 0; i < m; ++i) {
    const unichar wanted = fold(shorter[i]);
    const ptrdiff_t predicted = static_cast<ptrdiff_t>(i) - shift;
    ptrdiff_t found = -1;
    if (predicted >= 0 && predicted < static_cast<ptrdiff_t>(n) && !used[predicted] &&
        fold(longer[predicted]) == wanted) {
      found = predicted;
    } else {
      for (size_t j = 0; j < n; ++j) {
        if (!used[j] && fold(longer[j]) == wanted) {
          found = static_cast<ptrdiff_t>(j);
          break;
        }
      }
    }
    if (found < 0) continue;
    used[found] = true;
    ++matched;
    if (i != 0 && shift + found != static_cast<ptrdiff_t>(i)) ++moves;
    shift = static_cast<ptrdiff_t>(i) - found;
  }
  const double displacement = static_cast<double>(matched) *
                              (1.0 - static_cast<double>(moves) / static_cast<double>(n)) / static_cast<double>(n);
  return std::max(positional, displacement);
}

// The shared front of the four whole-string operations.
template <bool kUnix>
bool isLike(const String& text, const String& pattern, text::ConversionTable table) {
  if (pattern.isEmpty() || text.isEmpty()) return false;
  if (pattern.length() == 1 && pattern[0] == u'*') return true;
  const unichar* t = text.data();
  const unichar* tEnd = t + text.length();
  if (!table) return matchPattern<kUnix>(t, tEnd, pattern.data(), pattern.data() + pattern.length(), Exact{});
  const size_t length = pattern.length();
  UnitBuffer<256> folded(length);
  if (!folded.ok(length)) return false;
  std::memcpy(folded.data(), pattern.data(), length * sizeof(unichar));
  prepareWildcardUsingUnicharTable(folded.data(), length, table);
  return matchPattern<kUnix>(t, tEnd, folded.data(), folded.data() + length, Folded{table});
}

}  // namespace

// --- Tables and settings ---

text::ConversionTable unicharTableForWildcardComparison(unsigned comparison) {
  switch (comparison & 3) {
    case 1:
      return text::upperCharsTable();
    case 2:
      return text::umlautsCharsTable();
    case 3:
      return text::upperUmlautsCharsTable();
    default:
      return nullptr;
  }
}

bool isUnicharTablePartOfConversionTable(text::ConversionTable table, text::ConversionTable candidate) {
  if (!table || !candidate) return false;
  if (table == candidate) return true;
  if (table == text::lowerCharsTable()) return candidate == text::lowerUmlautsCharsTable();
  if (table == text::upperCharsTable()) return candidate == text::upperUmlautsCharsTable();
  if (table == text::umlautsCharsTable())
    return candidate == text::lowerUmlautsCharsTable() || candidate == text::upperUmlautsCharsTable();
  return false;
}

void prepareWildcardUsingUnicharTable(unichar* pattern, size_t length, text::ConversionTable table) {
  if (!table || !pattern) return;
  for (size_t i = 0; i < length; ++i) pattern[i] = table[pattern[i]];
}

void initWildcardTables() {
  text::upperUmlautsCharsTable();
}

void initSeparatorsAndTables() {
  initSeparators();
  initWildcardSeparators();
  initWildcardTables();
}

double minWildcardFuzzyAnalogy() {
  return gMinWildcardFuzzyAnalogy.load(std::memory_order_relaxed);
}
void setMinWildcardFuzzyAnalogy(double analogy) {
  gMinWildcardFuzzyAnalogy.store(analogy, std::memory_order_relaxed);
}

// --- Classification ---

WildcardType optimizeWildcard(unichar* begin, unichar* end, size_t* offset, size_t* length, size_t minCharacters) {
  size_t literals = 0;
  size_t questionMarks = 0;
  size_t stars = 0;
  bool brackets = false;
  unichar* out = begin;
  for (const unichar* p = begin; p < end; ++p) {
    const unichar u = *p;
    if (u == u']') return WildcardType::kNoMatch;
    if (u == u'*') {
      if (out > begin && out[-1] == u'*') continue;
      *out++ = u;
      ++stars;
    } else if (u == u'?') {
      *out++ = u;
      ++questionMarks;
    } else if (u == u'[') {
      if (p + 1 == end) return WildcardType::kNoMatch;
      unichar* open = out;
      *out++ = *p++;
      size_t members = 0;
      for (; p < end && *p != u']'; ++p) {
        if (*p == u'[') return WildcardType::kNoMatch;
        if (*p == u'|') continue;
        if (*p != u'^' && *p != u'-') ++members;
        *out++ = *p;
      }
      if (p == end) return WildcardType::kNoMatch;
      if (members == 0) {
        out = open;  // "[]" and the like stand for nothing
        continue;
      }
      *out++ = u']';
      ++literals;
      brackets = true;
    } else {
      *out++ = u;
      ++literals;
    }
  }
  const size_t size = static_cast<size_t>(out - begin);
  *offset = 0;
  *length = size;
  if (literals == 0) return WildcardType::kNoMatch;
  if (stars > 0 && literals < minCharacters) return WildcardType::kNoMatch;
  const bool starFirst = begin[0] == u'*';
  const bool starLast = begin[size - 1] == u'*';
  if (!brackets) {
    if (stars == 0) return questionMarks ? WildcardType::kQuestionMarks : WildcardType::kPlain;
    if (questionMarks) return WildcardType::kWildcard;
    if (stars == 2 && starFirst && starLast) {
      *offset = 1;
      *length = literals;
      return WildcardType::kInfix;
    }
    if (stars == 1 && starLast) {
      *length = literals;
      return WildcardType::kPrefix;
    }
    if (stars == 1 && starFirst) {
      *offset = 1;
      *length = literals;
      return WildcardType::kSuffix;
    }
    return WildcardType::kWildcard;
  }
  if (stars == 0) return WildcardType::kUnixFixed;
  if (stars == 1 && starLast) {
    *length = size - 1;
    return WildcardType::kUnixPrefix;
  }
  if (stars == 1 && starFirst) {
    *offset = 1;
    *length = size - 1;
    return WildcardType::kUnixSuffix;
  }
  return WildcardType::kUnix;
}

size_t minWildcardLen(const unichar* begin, const unichar* end) {
  size_t count = 0;
  for (const unichar* p = begin; p < end; ++p) {
    if (*p == u'*') continue;
    if (*p == u'[') {
      while (p + 1 < end && p[1] != u']') ++p;
      if (p + 1 < end) ++p;  // "]"
    }
    ++count;
  }
  return count;
}

size_t maxWildcardLen(const unichar* begin, const unichar* end) {
  if (std::find(begin, end, u'*') != end) return NotFound;
  return minWildcardLen(begin, end);
}

size_t wildcardLength(const String& pattern) {
  return minWildcardLen(pattern.data(), pattern.data() + pattern.length());
}

WildcardType wildcardType(const String& pattern) {
  if (pattern.isEmpty()) return WildcardType::kPlain;
  std::u16string copy(pattern.view());
  size_t offset = 0;
  size_t length = 0;
  return optimizeWildcard(copy.data(), copy.data() + copy.size(), &offset, &length, 1);
}

// --- Whole-string matching ---

bool stringMatchesWildcard(const unichar* text, const unichar* textEnd, const unichar* pattern,
                           const unichar* patternEnd) {
  return matchPattern<false>(text, textEnd, pattern, patternEnd, Exact{});
}

bool stringMatchesWildcardUsingUnicharTable(const unichar* text, const unichar* textEnd, const unichar* pattern,
                                            const unichar* patternEnd, text::ConversionTable table) {
  if (!table) return stringMatchesWildcard(text, textEnd, pattern, patternEnd);
  return matchPattern<false>(text, textEnd, pattern, patternEnd, Folded{table});
}

bool stringMatchesUnixWildcard(const unichar* text, const unichar* textEnd, const unichar* pattern,
                               const unichar* patternEnd) {
  return matchPattern<true>(text, textEnd, pattern, patternEnd, Exact{});
}

bool stringMatchesUnixWildcardUsingUnicharTable(const unichar* text, const unichar* textEnd, const unichar* pattern,
                                                const unichar* patternEnd, text::ConversionTable table) {
  if (!table) return stringMatchesUnixWildcard(text, textEnd, pattern, patternEnd);
  return matchPattern<true>(text, textEnd, pattern, patternEnd, Folded{table});
}

bool isLikeWildcard(const String& text, const String& pattern) {
  return isLike<false>(text, pattern, nullptr);
}
bool isCaseInsensitiveLikeWildcard(const String& text, const String& pattern) {
  return isLike<false>(text, pattern, text::upperCharsTable());
}
bool isLikeUnixWildcard(const String& text, const String& pattern) {
  return isLike<true>(text, pattern, nullptr);
}
bool isCaseInsensitiveLikeUnixWildcard(const String& text, const String& pattern) {
  return isLike<true>(text, pattern, text::upperCharsTable());
}

// --- Fuzzy score ---

double stringMatchesUnixWildcardFuzzy(const unichar* a, size_t aLength, const unichar* b, size_t bLength) {
  return fuzzyScore(a, aLength, b, bLength, Exact{});
}

double stringMatchesUnixWildcardFuzzyUsingUnicharTable(const unichar* a, size_t aLength, const unichar* b,
                                                       size_t bLength, text::ConversionTable table) {
  if (!table) return stringMatchesUnixWildcardFuzzy(a, aLength, b, bLength);
  return fuzzyScore(a, aLength, b, bLength, Folded{table});
}

}  // namespace norvane::query
