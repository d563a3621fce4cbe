#include "norvane/text/chars.h"

#include <emmintrin.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>
#include <unicode/ustring.h>

#include <array>
#include <cstring>
#include <memory>
#include <vector>

namespace norvane::text {
namespace {

constexpr size_t kRepBytes = 8192;
constexpr size_t kUnits = 65536;

struct Reps {
  uint8_t empty[kRepBytes];
  uint8_t space[kRepBytes];
  uint8_t white[kRepBytes];
  uint8_t alpha[kRepBytes];
  uint8_t alphaNum[kRepBytes];
  uint8_t digit[kRepBytes];
  uint8_t lower[kRepBytes];
  uint8_t upper[kRepBytes];
};

void addToRep(uint8_t* rep, unichar u) {
  rep[u >> 3] |= static_cast<uint8_t>(1u << (u & 7));
}

const Reps& reps() {
  static const Reps* built = [] {
    auto* r = new Reps();  // zeroed
    for (uint32_t c = 0; c < kUnits; ++c) {
      unichar u = static_cast<unichar>(c);
      int32_t mask = U_MASK(u_charType(c));
      bool separator = mask & U_GC_Z_MASK;
      if ((mask & U_GC_ZS_MASK) || c == 0x09) addToRep(r->space, u);
      if (separator || (c >= 0x0A && c <= 0x0D) || c == 0x85) addToRep(r->white, u);
      if (mask & (U_GC_L_MASK | U_GC_M_MASK)) addToRep(r->alpha, u);
      if (mask & (U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK)) addToRep(r->alphaNum, u);
      if (mask & U_GC_ND_MASK) addToRep(r->digit, u);
      if (mask & U_GC_LL_MASK) addToRep(r->lower, u);
      if (mask & (U_GC_LU_MASK | U_GC_LT_MASK)) addToRep(r->upper, u);
    }
    addToRep(r->space, 0x0000);
    for (unichar u : {0x0000, 0x000C, 0x000A, 0x000D, 0x2028, 0x2029, 0x0003, 0xFFFC, 0x0009, 0xFEFF, 0x00A0}) {
      addToRep(r->white, u);
    }
    return r;
  }();
  return *built;
}

// The case tables are built on their own: most callers never need the
// diacritic fold, whose construction normalises every letter.
struct CaseTables {
  unichar lower[kUnits];
  unichar upper[kUnits];
  // For each ASCII unit, every unit whose upper-table image it is (at most
  // four, counted in `preimageCount`). Lets the case-insensitive search scan
  // for candidates with SIMD.
  std::array<std::array<unichar, 4>, 128> upperPreimages;
  std::array<uint8_t, 128> preimageCount;
};

struct FoldTables {
  unichar umlauts[kUnits];
  unichar lowerUmlauts[kUnits];
  unichar upperUmlauts[kUnits];
};

using CaseMapping = int32_t (*)(UChar*, int32_t, const UChar*, int32_t, const char*, UErrorCode*);

// The image of one unit under a full mapping, or the unit itself when the
// image is not exactly one unit long.
unichar mapOneUnit(unichar u, CaseMapping mapping) {
  UChar out[8];
  UErrorCode status = U_ZERO_ERROR;
  int32_t length = mapping(out, 8, &u, 1, "", &status);
  return (U_SUCCESS(status) && length == 1) ? out[0] : u;
}

// Diacritic folding: decompose, drop non-spacing and enclosing marks,
// recompose. A result that is not one unit keeps the unit.
unichar foldDiacritics(unichar u, const icu::Normalizer2& nfd, const icu::Normalizer2& nfc) {
  UErrorCode status = U_ZERO_ERROR;
  icu::UnicodeString decomposed = nfd.normalize(icu::UnicodeString(static_cast<UChar>(u)), status);
  if (U_FAILURE(status)) return u;
  icu::UnicodeString stripped;
  for (int32_t i = 0; i < decomposed.length(); ++i) {
    UChar32 c = decomposed.char32At(i);
    if (c > 0xFFFF) ++i;
    int8_t type = u_charType(c);
    if (type == U_NON_SPACING_MARK || type == U_ENCLOSING_MARK) continue;
    stripped.append(c);
  }
  icu::UnicodeString composed = nfc.normalize(stripped, status);
  if (U_FAILURE(status) || composed.length() != 1) return u;
  return composed.charAt(0);
}

const CaseTables& caseTables() {
  static const CaseTables* built = [] {
    auto* t = new CaseTables();
    const Reps& r = reps();
    for (uint32_t c = 0; c < kUnits; ++c) {
      unichar u = static_cast<unichar>(c);
      t->lower[c] = isInRep(r.upper, u) ? mapOneUnit(u, u_strToLower) : u;
      t->upper[c] = isInRep(r.lower, u) ? mapOneUnit(u, u_strToUpper) : u;
    }
    for (auto& list : t->upperPreimages) list.fill(0xFFFF);
    t->preimageCount.fill(0);
    for (uint32_t c = 0; c < kUnits; ++c) {
      unichar image = t->upper[c];
      if (image < 128) {
        uint8_t& count = t->preimageCount[image];
        // More than four preimages never happens with Unicode data; mark the
        // entry unusable if it ever does.
        if (count < 4) t->upperPreimages[image][count] = static_cast<unichar>(c);
        if (count < 255) ++count;
      }
    }
    return t;
  }();
  return *built;
}

const FoldTables& foldTables() {
  static const FoldTables* built = [] {
    auto* t = new FoldTables();
    const Reps& r = reps();
    const CaseTables& cases = caseTables();
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* nfd = icu::Normalizer2::getNFDInstance(status);
    const icu::Normalizer2* nfc = icu::Normalizer2::getNFCInstance(status);
    for (uint32_t c = 0; c < kUnits; ++c) {
      unichar u = static_cast<unichar>(c);
      t->umlauts[c] = (U_SUCCESS(status) && isInRep(r.alpha, u)) ? foldDiacritics(u, *nfd, *nfc) : u;
      t->lowerUmlauts[c] = cases.lower[t->umlauts[c]];
      t->upperUmlauts[c] = cases.upper[t->umlauts[c]];
    }
    return t;
  }();
  return *built;
}

inline unichar widen(char byte) {
  return static_cast<unichar>(static_cast<int16_t>(static_cast<signed char>(byte)));
}

// Position of the first unit equal to one of `count` candidates (1 to 4),
// from `from`; `end` when none.
const unichar* findAnyOf(const unichar* from, const unichar* end, const unichar* candidates, int count) {
  __m128i c0 = _mm_set1_epi16(static_cast<short>(candidates[0]));
  __m128i c1 = _mm_set1_epi16(static_cast<short>(candidates[count > 1 ? 1 : 0]));
  __m128i c2 = _mm_set1_epi16(static_cast<short>(candidates[count > 2 ? 2 : 0]));
  __m128i c3 = _mm_set1_epi16(static_cast<short>(candidates[count > 3 ? 3 : 0]));
  const unichar* p = from;
  for (; end - p >= 8; p += 8) {
    __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    __m128i hits = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi16(block, c0), _mm_cmpeq_epi16(block, c1)),
                                _mm_or_si128(_mm_cmpeq_epi16(block, c2), _mm_cmpeq_epi16(block, c3)));
    int mask = _mm_movemask_epi8(hits);
    if (mask) return p + (__builtin_ctz(mask) >> 1);
  }
  for (; p < end; ++p) {
    for (int i = 0; i < count; ++i) {
      if (*p == candidates[i]) return p;
    }
  }
  return end;
}

// The search shared by all four raw forms. `Needle` is unichar or char;
// `kFolded` compares through the upper table.
template <bool kFolded, typename Needle>
const unichar* search(const unichar* haystack, size_t haystackLength, const Needle* needle, size_t needleLength) {
  if (needleLength == 0 || needleLength > haystackLength || !haystack || !needle) return nullptr;
  const unichar* upper = kFolded ? caseTables().upper : nullptr;
  auto unit = [&](Needle n) -> unichar {
    unichar u = std::is_same_v<Needle, char> ? widen(static_cast<char>(n)) : static_cast<unichar>(n);
    return kFolded ? upper[u] : u;
  };
  auto same = [&](unichar h, unichar n) { return (kFolded ? upper[h] : h) == n; };

  unichar first = unit(needle[0]);
  unichar candidates[4] = {first, first, first, first};
  int candidateCount = 1;
  if (kFolded) {
    const CaseTables& t = caseTables();
    if (first < 128 && t.preimageCount[first] <= 4) {
      candidateCount = t.preimageCount[first];
      for (int i = 0; i < candidateCount; ++i) candidates[i] = t.upperPreimages[first][i];
    } else {
      candidateCount = 0;  // no SIMD filter: scan unit by unit
    }
  }

  const unichar* last = haystack + (haystackLength - needleLength);
  const unichar* p = haystack;
  while (p <= last) {
    if (candidateCount > 0) {
      p = findAnyOf(p, last + 1, candidates, candidateCount);
      if (p > last) return nullptr;
    } else if (!same(*p, first)) {
      ++p;
      continue;
    }
    size_t i = 1;
    while (i < needleLength && same(p[i], unit(needle[i]))) ++i;
    if (i == needleLength) return p;
    ++p;
  }
  return nullptr;
}

template <typename A, typename B, typename Map>
int64_t compare(const A* a, size_t aLength, const B* b, size_t bLength, Map map) {
  size_t common = aLength < bLength ? aLength : bLength;
  for (size_t i = 0; i < common; ++i) {
    int64_t x = map(a[i]);
    int64_t y = map(b[i]);
    if (x != y) return x - y;
  }
  return static_cast<int64_t>(aLength) - static_cast<int64_t>(bLength);
}

// The filtered walk behind the equal and prefix compares: units outside
// `rep` are skipped on both sides. `whenSecondEndsFirst` is the answer when
// the second text runs out while the first has units left.
bool filteredEqual(const unichar* a, size_t aLength, const unichar* b, size_t bLength, CharacterSetRep rep, bool noCase,
                   bool whenSecondEndsFirst) {
  const unichar* upper = noCase ? upperCharsTable() : nullptr;
  size_t i = 0, j = 0;
  for (;;) {
    while (i < aLength && !isInRep(rep, a[i])) ++i;
    while (j < bLength && !isInRep(rep, b[j])) ++j;
    if (j == bLength) return i == aLength || whenSecondEndsFirst;
    if (i == aLength) return false;
    unichar x = noCase ? upper[a[i]] : a[i];
    unichar y = noCase ? upper[b[j]] : b[j];
    if (x != y) return false;
    ++i;
    ++j;
  }
}

bool _equalStringsUsingCharacterSetRep(const String& a, const String& b, CharacterSetRep rep, bool noCase,
                                       bool whenSecondEndsFirst) {
  if (!rep) return false;
  return filteredEqual(a.data(), a.length(), b.data(), b.length(), rep, noCase, whenSecondEndsFirst);
}

template <typename Predicate>
bool anyUnit(const String& s, Predicate predicate) {
  const unichar* p = s.data();
  for (size_t i = 0, n = s.length(); i < n; ++i) {
    if (predicate(p[i])) return true;
  }
  return false;
}

template <typename Predicate>
bool everyUnit(const String& s, Predicate predicate) {
  return !anyUnit(s, [&](unichar u) { return !predicate(u); });
}

// Full case folding compare of two spans.
bool foldedEqual(const unichar* a, size_t aLength, const unichar* b, size_t bLength) {
  UErrorCode status = U_ZERO_ERROR;
  int32_t order = u_strCaseCompare(a, static_cast<int32_t>(aLength), b, static_cast<int32_t>(bLength),
                                   U_FOLD_CASE_DEFAULT, &status);
  return U_SUCCESS(status) && order == 0;
}

// Copies `s` through `table` unless that changes nothing.
String mapped(const String& s, ConversionTable table) {
  if (!table || s.isEmpty()) return s;
  const unichar* p = s.data();
  size_t n = s.length();
  size_t i = 0;
  while (i < n && table[p[i]] == p[i]) ++i;
  if (i == n) return s;
  std::u16string out(p, n);
  for (; i < n; ++i) out[i] = table[p[i]];
  return String(out);
}

String normalizeForm(const String& s, NormalizationForm form) {
  if (s.isEmpty()) return s;
  std::u16string text(s.view());
  normalizeString(text, form);
  return text == s.view() ? s : String(text);
}

}  // namespace

CharacterSetRep emptyCharacterSetRep() {
  return reps().empty;
}
CharacterSetRep spaceCharacterSetRep() {
  return reps().space;
}
CharacterSetRep whiteCharacterSetRep() {
  return reps().white;
}
CharacterSetRep alphaCharacterSetRep() {
  return reps().alpha;
}
CharacterSetRep alphaNumCharacterSetRep() {
  return reps().alphaNum;
}
CharacterSetRep digitCharacterSetRep() {
  return reps().digit;
}
CharacterSetRep lowerCharacterSetRep() {
  return reps().lower;
}
CharacterSetRep upperCharacterSetRep() {
  return reps().upper;
}

ConversionTable lowerCharsTable() {
  return caseTables().lower;
}
ConversionTable upperCharsTable() {
  return caseTables().upper;
}
ConversionTable umlautsCharsTable() {
  return foldTables().umlauts;
}
ConversionTable lowerUmlautsCharsTable() {
  return foldTables().lowerUmlauts;
}
ConversionTable upperUmlautsCharsTable() {
  return foldTables().upperUmlauts;
}

unichar toLower(unichar u) {
  return caseTables().lower[u];
}
unichar toUpper(unichar u) {
  return caseTables().upper[u];
}
unichar toAscii(unichar u) {
  unichar folded = foldTables().umlauts[u];
  return folded < 128 ? folded : u' ';
}
unichar toUpperAscii(unichar u) {
  unichar folded = foldTables().umlauts[u];
  if (folded > 127) return u' ';
  return (folded >= u'a' && folded <= u'z') ? folded - 32 : folded;
}
unichar toLowerAscii(unichar u) {
  unichar folded = foldTables().umlauts[u];
  if (folded > 127) return u' ';
  return (folded >= u'A' && folded <= u'Z') ? folded + 32 : folded;
}
unichar umlautsToAscii(unichar u) {
  return foldTables().umlauts[u];
}
unichar umlautsToUpperAscii(unichar u) {
  return foldTables().upperUmlauts[u];
}
unichar umlautsToLowerAscii(unichar u) {
  return foldTables().lowerUmlauts[u];
}

int convertUTF8ToUnicode(const char* bytes, size_t byteCount, unichar* units, size_t capacity, size_t* written) {
  UErrorCode status = U_ZERO_ERROR;
  int32_t length = 0;
  u_strFromUTF8(units, static_cast<int32_t>(capacity), &length, bytes, static_cast<int32_t>(byteCount), &status);
  if (written) *written = U_SUCCESS(status) ? static_cast<size_t>(length) : 0;
  return U_SUCCESS(status) && status != U_STRING_NOT_TERMINATED_WARNING ? 0 : status;
}

int convertUnicodeToUTF8(const unichar* units, size_t unitCount, char* bytes, size_t capacity, size_t* written) {
  UErrorCode status = U_ZERO_ERROR;
  int32_t length = 0;
  u_strToUTF8(bytes, static_cast<int32_t>(capacity), &length, units, static_cast<int32_t>(unitCount), &status);
  if (written) *written = U_SUCCESS(status) ? static_cast<size_t>(length) : 0;
  return U_SUCCESS(status) && status != U_STRING_NOT_TERMINATED_WARNING ? 0 : status;
}

int convertEncodingToUnicode(const char* bytes, size_t byteCount, const char* converterName, unichar* units,
                             size_t capacity, size_t* written) {
  *written = 0;
  UErrorCode status = U_ZERO_ERROR;
  UConverter* converter = ucnv_open(converterName, &status);
  if (U_FAILURE(status)) return -1;
  ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  UChar* target = units;
  const char* source = bytes;
  ucnv_toUnicode(converter, &target, units + capacity, &source, bytes + byteCount, nullptr, true, &status);
  *written = static_cast<size_t>(target - units);
  ucnv_close(converter);
  return U_SUCCESS(status) ? 1 : 0;
}

const unichar* fastContainsUnichars(const unichar* haystack, size_t haystackLength, const unichar* needle,
                                    size_t needleLength) {
  return search<false>(haystack, haystackLength, needle, needleLength);
}
const unichar* fastCaseInsensitiveContainsUnichars(const unichar* haystack, size_t haystackLength,
                                                   const unichar* needle, size_t needleLength) {
  return search<true>(haystack, haystackLength, needle, needleLength);
}
const unichar* fastUnicharsContainChars(const unichar* haystack, size_t haystackLength, const char* needle,
                                        size_t needleLength) {
  return search<false>(haystack, haystackLength, needle, needleLength);
}
const unichar* fastCaseInsensitiveUnicharsContainChars(const unichar* haystack, size_t haystackLength,
                                                       const char* needle, size_t needleLength) {
  return search<true>(haystack, haystackLength, needle, needleLength);
}
const unichar* positionOfCharacters(const char* needle, size_t needleLength, const unichar* haystack,
                                    size_t haystackLength, bool caseSensitive) {
  return caseSensitive ? fastUnicharsContainChars(haystack, haystackLength, needle, needleLength)
                       : fastCaseInsensitiveUnicharsContainChars(haystack, haystackLength, needle, needleLength);
}

bool fastContainsSubCStrings(const unichar* text, size_t length, const char* const* rows, ConversionTable table) {
  if (length < 1 || !rows || !text) return false;
  std::vector<unichar> converted;
  if (table) {
    converted.resize(length);
    for (size_t i = 0; i < length; ++i) converted[i] = table[text[i]];
    text = converted.data();
  }
  for (const char* const* row = rows; *row; ++row) {
    if (fastUnicharsContainChars(text, length, *row, std::strlen(*row))) return true;
  }
  return false;
}

bool containsSubCStrings(const String& s, const char* const* rows) {
  return rows && fastContainsSubCStrings(s.data(), s.length(), rows, nullptr);
}

bool containsSubCStrings(const String& s, const char* const* rows, bool caseSensitive) {
  return rows && fastContainsSubCStrings(s.data(), s.length(), rows, caseSensitive ? nullptr : lowerCharsTable());
}

int64_t fastCompareUnichars(const unichar* a, size_t aLength, const unichar* b, size_t bLength) {
  return compare(a, aLength, b, bLength, [](unichar u) { return u; });
}
int64_t fastCompareUnicharsWithChars(const unichar* a, size_t aLength, const char* b, size_t bLength) {
  size_t common = aLength < bLength ? aLength : bLength;
  for (size_t i = 0; i < common; ++i) {
    int64_t x = a[i], y = widen(b[i]);
    if (x != y) return x - y;
  }
  return static_cast<int64_t>(aLength) - static_cast<int64_t>(bLength);
}
int64_t fastCompareChars(const char* a, size_t aLength, const char* b, size_t bLength) {
  return compare(a, aLength, b, bLength, [](char c) { return static_cast<signed char>(c); });
}
int64_t fastCompareUnicharsUsingConversionTable(const unichar* a, size_t aLength, const unichar* b, size_t bLength,
                                                ConversionTable table) {
  if (!table) return fastCompareUnichars(a, aLength, b, bLength);
  return compare(a, aLength, b, bLength, [table](unichar u) { return table[u]; });
}
int64_t fastCaseInsensitiveCompareUnichars(const unichar* a, size_t aLength, const unichar* b, size_t bLength) {
  return fastCompareUnicharsUsingConversionTable(a, aLength, b, bLength, upperCharsTable());
}
int64_t fastCaseInsensitiveCompareUnicharsWithChars(const unichar* a, size_t aLength, const char* b, size_t bLength) {
  const unichar* upper = upperCharsTable();
  size_t common = aLength < bLength ? aLength : bLength;
  for (size_t i = 0; i < common; ++i) {
    int64_t x = upper[a[i]], y = upper[widen(b[i])];
    if (x != y) return x - y;
  }
  return static_cast<int64_t>(aLength) - static_cast<int64_t>(bLength);
}
int64_t fastCaseInsensitiveCompareChars(const char* a, size_t aLength, const char* b, size_t bLength) {
  const unichar* upper = upperCharsTable();
  return compare(a, aLength, b, bLength, [upper](char c) { return upper[widen(c)]; });
}

bool equalStringsUsingConversionTable(const String& a, const String& b, ConversionTable table) {
  if (a.length() != b.length()) return false;
  return fastCompareUnicharsUsingConversionTable(a.data(), a.length(), b.data(), b.length(), table) == 0;
}

bool equalCharsOfCharacterSetRep(const unichar* a, size_t aLength, const unichar* b, size_t bLength,
                                 CharacterSetRep rep) {
  return rep && filteredEqual(a, aLength, b, bLength, rep, false, false);
}
bool equalCharsNoCaseOfCharacterSetRep(const unichar* a, size_t aLength, const unichar* b, size_t bLength,
                                       CharacterSetRep rep) {
  return rep && filteredEqual(a, aLength, b, bLength, rep, true, false);
}
bool equalStringsUsingCharacterSetRep(const String& a, const String& b, CharacterSetRep rep) {
  return _equalStringsUsingCharacterSetRep(a, b, rep, false, false);
}
bool equalStringsNoCaseUsingCharacterSetRep(const String& a, const String& b, CharacterSetRep rep) {
  return _equalStringsUsingCharacterSetRep(a, b, rep, true, false);
}
bool hasPrefixCharsOfCharacterSetRep(const unichar* a, size_t aLength, const unichar* b, size_t bLength,
                                     CharacterSetRep rep) {
  return rep && filteredEqual(a, aLength, b, bLength, rep, false, true);
}
bool hasPrefixCharsNoCaseOfCharacterSetRep(const unichar* a, size_t aLength, const unichar* b, size_t bLength,
                                           CharacterSetRep rep) {
  return rep && filteredEqual(a, aLength, b, bLength, rep, true, true);
}
bool hasPrefixUsingCharacterSetRep(const String& a, const String& b, CharacterSetRep rep) {
  return _equalStringsUsingCharacterSetRep(a, b, rep, false, true);
}
bool hasPrefixNoCaseUsingCharacterSetRep(const String& a, const String& b, CharacterSetRep rep) {
  return _equalStringsUsingCharacterSetRep(a, b, rep, true, true);
}

bool isStringEmpty(const String& s) {
  return s.isEmpty();
}
bool isStringNotEmpty(const String& s) {
  return !s.isEmpty();
}

bool containsCharacterPartOfCharacterSetRep(const String& s, CharacterSetRep rep) {
  return rep && anyUnit(s, [rep](unichar u) { return isInRep(rep, u); });
}
bool containsAlphaNumCharacter(const String& s) {
  return containsCharacterPartOfCharacterSetRep(s, alphaNumCharacterSetRep());
}
bool containsAlphaCharacter(const String& s) {
  return containsCharacterPartOfCharacterSetRep(s, alphaCharacterSetRep());
}
bool containsWhiteCharacter(const String& s) {
  return containsCharacterPartOfCharacterSetRep(s, whiteCharacterSetRep());
}
bool containsDigitCharacter(const String& s) {
  return containsCharacterPartOfCharacterSetRep(s, digitCharacterSetRep());
}

size_t countCharactersPartOfCharacterSetRep(const String& s, CharacterSetRep rep) {
  if (!rep) return 0;
  size_t count = 0;
  const unichar* p = s.data();
  for (size_t i = 0, n = s.length(); i < n; ++i) count += isInRep(rep, p[i]);
  return count;
}
size_t countAlphaNumCharacters(const String& s) {
  return countCharactersPartOfCharacterSetRep(s, alphaNumCharacterSetRep());
}
size_t countAlphaCharacters(const String& s) {
  return countCharactersPartOfCharacterSetRep(s, alphaCharacterSetRep());
}
size_t countWhiteCharacters(const String& s) {
  return countCharactersPartOfCharacterSetRep(s, whiteCharacterSetRep());
}
size_t countDigitCharacters(const String& s) {
  return countCharactersPartOfCharacterSetRep(s, digitCharacterSetRep());
}

bool isSpaceString(const String& s) {
  CharacterSetRep rep = spaceCharacterSetRep();
  return everyUnit(s, [rep](unichar u) { return isInRep(rep, u); });
}
bool isWhiteString(const String& s) {
  return onlyWhiteCharacters(s.data(), s.length());
}
bool isDigitString(const String& s) {
  CharacterSetRep rep = digitCharacterSetRep();
  return !s.isEmpty() && everyUnit(s, [rep](unichar u) { return isInRep(rep, u); });
}
bool isAlphaString(const String& s) {
  CharacterSetRep rep = alphaCharacterSetRep();
  return !s.isEmpty() && everyUnit(s, [rep](unichar u) { return isInRep(rep, u); });
}
bool isAlphaNumString(const String& s) {
  CharacterSetRep rep = alphaNumCharacterSetRep();
  return !s.isEmpty() && everyUnit(s, [rep](unichar u) { return isInRep(rep, u); });
}
bool onlyWhiteCharacters(const unichar* units, size_t length) {
  CharacterSetRep rep = whiteCharacterSetRep();
  for (size_t i = 0; i < length; ++i) {
    if (!isInRep(rep, units[i])) return false;
  }
  return true;
}
bool containsCJKCharacter(const String& s) {
  return anyUnit(s, [](unichar u) {
    return (u >= 0x4E00 && u <= 0x9FFF) || (u >= 0x3000 && u <= 0x30FF) || (u >= 0x3400 && u <= 0x4DBF) ||
           (u >= 0xA700 && u <= 0xEBEF);
  });
}
bool isAsciiString(const String& s) {
  return everyUnit(s, [](unichar u) { return u <= 127; });
}
bool isUmlautedString(const String& s) {
  const unichar* umlauts = umlautsCharsTable();
  return anyUnit(s, [umlauts](unichar u) { return umlauts[u] != u; });
}
bool isLowerCaseString(const String& s) {
  const unichar* lower = lowerCharsTable();
  return everyUnit(s, [lower](unichar u) { return lower[u] == u; });
}
bool isUpperCaseString(const String& s) {
  const unichar* upper = upperCharsTable();
  return everyUnit(s, [upper](unichar u) { return upper[u] == u; });
}

bool isEqualToStringNoCase(const String& s, const String& other) {
  if (s.isNull() || other.isNull() || s.length() != other.length()) return false;
  return foldedEqual(s.data(), s.length(), other.data(), other.length());
}
bool hasPrefixNoCase(const String& s, const String& prefix) {
  if (prefix.isEmpty() || s.length() < prefix.length()) return false;
  return foldedEqual(s.data(), prefix.length(), prefix.data(), prefix.length());
}
bool hasSuffixNoCase(const String& s, const String& suffix) {
  if (suffix.isEmpty() || s.length() < suffix.length()) return false;
  return foldedEqual(s.data() + s.length() - suffix.length(), suffix.length(), suffix.data(), suffix.length());
}

namespace {
bool rangeInside(const String& s, Range range) {
  return range.location <= s.length() && range.length <= s.length() - range.location;
}
}  // namespace

bool rangeIsEqualTo(const String& s, Range range, const String& other) {
  if (range.length != other.length()) return false;
  if (range.length == 0) return true;
  if (!rangeInside(s, range)) return false;
  return std::memcmp(s.data() + range.location, other.data(), range.length * sizeof(unichar)) == 0;
}
bool rangeIsEqualToNoCase(const String& s, Range range, const String& other) {
  if (range.length != other.length()) return false;
  if (range.length == 0) return true;
  if (!rangeInside(s, range)) return false;
  return foldedEqual(s.data() + range.location, range.length, other.data(), other.length());
}
bool isNonUmlautedEqualToStringNoCase(const String& s, const String& other) {
  if (s.isNull() || other.isNull() || s.length() != other.length()) return false;
  return fastCompareUnicharsUsingConversionTable(s.data(), s.length(), other.data(), other.length(),
                                                 upperUmlautsCharsTable()) == 0;
}
bool rangeIsNonUmlautedEqualToNoCase(const String& s, Range range, const String& other) {
  if (other.isNull() || range.length != other.length() || !rangeInside(s, range)) return false;
  return fastCompareUnicharsUsingConversionTable(s.data() + range.location, range.length, other.data(), other.length(),
                                                 upperUmlautsCharsTable()) == 0;
}
unichar firstCharacter(const String& s) {
  return s.isEmpty() ? 0 : s[0];
}
unichar lastCharacter(const String& s) {
  return s.isEmpty() ? 0 : s[s.length() - 1];
}

String stringByApplyingConversionTable(const String& s, ConversionTable table) {
  return mapped(s, table);
}

String stringByRemovingCharactersInRep(const String& s, CharacterSetRep rep) {
  if (!rep || s.isEmpty()) return s;
  std::u16string out;
  out.reserve(s.length());
  for (unichar u : s.view()) {
    if (!isInRep(rep, u)) out.push_back(u);
  }
  return out.size() == s.length() ? s : String(out);
}

String stringByRemovingNonAlphaNumericCharactersAndApplyingConversionTable(const String& s, ConversionTable table) {
  if (s.isEmpty()) return s;
  CharacterSetRep rep = alphaNumCharacterSetRep();
  std::u16string out;
  out.reserve(s.length());
  for (unichar u : s.view()) {
    if (isInRep(rep, u)) out.push_back(table ? table[u] : u);
  }
  return out == s.view() ? s : String(out);
}

String nonUmlautedString(const String& s) {
  return mapped(s, umlautsCharsTable());
}
String lowercaseNonUmlautedString(const String& s) {
  return mapped(s, lowerUmlautsCharsTable());
}
String uppercaseNonUmlautedString(const String& s) {
  return mapped(s, upperUmlautsCharsTable());
}

String nonUmlautedNormalizedString(const String& s) {
  return mapped(normalizeForm(s, NormalizationForm::C), umlautsCharsTable());
}
String lowercaseNonUmlautedNormalizedString(const String& s) {
  return mapped(normalizeForm(s, NormalizationForm::C), lowerUmlautsCharsTable());
}
String uppercaseNonUmlautedNormalizedString(const String& s) {
  return mapped(normalizeForm(s, NormalizationForm::C), upperUmlautsCharsTable());
}

String normalizedString(const String& s, NormalizationForm form) {
  return normalizeForm(s, form);
}
String normalizedLowercaseString(const String& s) {
  if (s.isEmpty()) return s;
  std::u16string text(s.view());
  normalizeLowercaseString(text);
  return text == s.view() ? s : String(text);
}
String normalizedUppercaseString(const String& s) {
  if (s.isEmpty()) return s;
  std::u16string text(s.view());
  normalizeUppercaseString(text);
  return text == s.view() ? s : String(text);
}

void normalizeString(std::u16string& s, NormalizationForm form) {
  if (s.empty()) return;
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* normalizer = nullptr;
  switch (form) {
    case NormalizationForm::D:
      normalizer = icu::Normalizer2::getNFDInstance(status);
      break;
    case NormalizationForm::KD:
      normalizer = icu::Normalizer2::getNFKDInstance(status);
      break;
    case NormalizationForm::C:
      normalizer = icu::Normalizer2::getNFCInstance(status);
      break;
    case NormalizationForm::KC:
      normalizer = icu::Normalizer2::getNFKCInstance(status);
      break;
  }
  if (U_FAILURE(status)) return;
  icu::UnicodeString source(false, s.data(), static_cast<int32_t>(s.size()));
  if (normalizer->isNormalized(source, status) && U_SUCCESS(status)) return;
  status = U_ZERO_ERROR;
  icu::UnicodeString result = normalizer->normalize(source, status);
  if (U_SUCCESS(status)) s.assign(result.getBuffer(), static_cast<size_t>(result.length()));
}

void normalizeLowercaseString(std::u16string& s) {
  normalizeString(s);
  s = lowercaseString(s);
}
void normalizeUppercaseString(std::u16string& s) {
  normalizeString(s);
  s = uppercaseString(s);
}

void convertLigaturesToCharacters(std::u16string& s) {
  auto expansion = [](unichar u) -> const char16_t* {
    switch (u) {
      case 0xFB00:
        return u"ff";
      case 0xFB01:
        return u"fi";
      case 0xFB02:
        return u"fl";
      case 0xFB03:
        return u"ffi";
      case 0xFB04:
        return u"ffl";
      case 0xFB05:
        return u"ft";
      case 0xFB06:
        return u"st";
      case 0x0132:
        return u"IJ";
      case 0x0133:
        return u"ij";
      default:
        return nullptr;
    }
  };
  size_t i = 0;
  while (i < s.size() && !expansion(s[i])) ++i;
  if (i == s.size()) return;
  std::u16string out(s, 0, i);
  for (; i < s.size(); ++i) {
    if (const char16_t* letters = expansion(s[i])) {
      out += letters;
    } else {
      out.push_back(s[i]);
    }
  }
  s = std::move(out);
}

namespace {
std::u16string mapCase(std::u16string_view s, CaseMapping mapping) {
  if (s.empty()) return {};
  std::u16string out(s.size() + 8, u'\0');
  for (int attempt = 0; attempt < 2; ++attempt) {
    UErrorCode status = U_ZERO_ERROR;
    int32_t length =
        mapping(out.data(), static_cast<int32_t>(out.size()), s.data(), static_cast<int32_t>(s.size()), "", &status);
    if (status == U_BUFFER_OVERFLOW_ERROR) {
      out.resize(static_cast<size_t>(length));
      continue;
    }
    if (U_FAILURE(status)) return std::u16string(s);
    out.resize(static_cast<size_t>(length));
    return out;
  }
  return std::u16string(s);
}

int32_t foldCaseAdapter(UChar* dest, int32_t capacity, const UChar* src, int32_t length, const char*,
                        UErrorCode* status) {
  return u_strFoldCase(dest, capacity, src, length, U_FOLD_CASE_DEFAULT, status);
}
}  // namespace

std::u16string lowercaseString(std::u16string_view s) {
  return mapCase(s, u_strToLower);
}
std::u16string uppercaseString(std::u16string_view s) {
  return mapCase(s, u_strToUpper);
}
std::u16string foldCaseString(std::u16string_view s) {
  return mapCase(s, foldCaseAdapter);
}

uint32_t characterTablesChecksum() {
  // FNV-1a over every rep and table, in a fixed order.
  uint32_t hash = 2166136261u;
  auto mix = [&hash](const void* data, size_t size) {
    auto bytes = static_cast<const uint8_t*>(data);
    for (size_t i = 0; i < size; ++i) hash = (hash ^ bytes[i]) * 16777619u;
  };
  const Reps& r = reps();
  mix(&r, sizeof(Reps));
  const CaseTables& cases = caseTables();
  mix(cases.lower, sizeof cases.lower);
  mix(cases.upper, sizeof cases.upper);
  const FoldTables& folds = foldTables();
  mix(folds.umlauts, sizeof folds.umlauts);
  mix(folds.lowerUmlauts, sizeof folds.lowerUmlauts);
  mix(folds.upperUmlauts, sizeof folds.upperUmlauts);
  return hash;
}

}  // namespace norvane::text
