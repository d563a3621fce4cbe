// Wildcard patterns: classification, whole-string matching, word-wise search
// in an indexed text, and the fuzzy word score.
//
// Two dialects:
//   wildcard       "*" matches any run of units (also none), "?" one unit;
//   Unix wildcard  the same, plus bracket expressions "[...]" matching one
//                  unit: an optional leading "^" negates, items are single
//                  units or inclusive ranges lo-hi, and "|" between items
//                  stands for nothing. A "-" first or last in the brackets
//                  is an ordinary item.
// There is no escape character, and units are compared as code units.
//
// A search in a text always matches whole words as FastWordEnumerator cut
// them: a pattern never matches across a separator, and a pattern of several
// words is found as a sequence of words with any separators between them.
//
// The whole-string matchers run in O(text * pattern) time at worst, whatever
// the pattern: a failed attempt resumes only from the last "*" seen.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "norvane/core/string.h"
#include "norvane/core/types.h"
#include "norvane/query/word_enumerator.h"
#include "norvane/query/word_separators.h"
#include "norvane/text/chars.h"

namespace norvane::query {

// --- Comparison value: a bit set taken by every search ---

inline constexpr unsigned kComparisonCaseInsensitive = 1;
inline constexpr unsigned kComparisonDiacriticInsensitive = 2;
inline constexpr unsigned kComparisonFuzzy = 4;  // plain words only

// The table for the two low bits: null (exact), upper, umlauts or upper
// umlauts. Text units go through it when compared; patterns are folded once.
text::ConversionTable unicharTableForWildcardComparison(unsigned comparison);
// True if both are non-null and equal, or `candidate` is the composite of
// `table` (lower with lower umlauts, upper with upper umlauts, umlauts with
// either composite).
bool isUnicharTablePartOfConversionTable(text::ConversionTable table, text::ConversionTable candidate);
// Folds a pattern in place; a null table changes nothing.
void prepareWildcardUsingUnicharTable(unichar* pattern, size_t length, text::ConversionTable table);

// --- Set-up and process-wide values ---

// Builds the separators and the conversion tables the searches use.
void initSeparatorsAndTables();
void initWildcardTables();
// The threshold of the fuzzy test and of its length gate; 0.75 at start.
double minWildcardFuzzyAnalogy();
void setMinWildcardFuzzyAnalogy(double analogy);

// --- Classification ---

enum class WildcardType : int {
  kPlain = 0,          // no symbol: equal word (or the fuzzy test)
  kQuestionMarks = 1,  // "?" but no "*" or bracket: equal length, "?" any unit
  kPrefix = 2,         // abc*
  kSuffix = 3,         // *abc
  kInfix = 4,          // *abc*
  kWildcard = 5,       // any other form with "*" or "?" and no bracket
  kUnix = 6,           // brackets and "*" elsewhere than one end
  kUnixPrefix = 7,     // brackets and one trailing "*"
  kUnixSuffix = 8,     // brackets and one leading "*"
  kUnixFixed = 9,      // brackets, no "*"
  kNoMatch = 10,       // nothing can match
};

// Rewrites the pattern [begin, end) in place and classifies it: runs of "*"
// become one, bracket items "|" are dropped, and a bracket expression
// without a member (such as "[]" or "[^]") is removed. `*offset` and
// `*length` receive the part of the rewritten pattern that the type works
// on: the literal for kPrefix, kSuffix and kInfix, the pattern without its
// star for kUnixPrefix and kUnixSuffix, the whole rewritten pattern
// otherwise. A pattern with "*" and fewer than `minCharacters` literals (a
// bracket expression counts as one) is kNoMatch, as is one without any
// literal, one with a "]" outside brackets and one with an unbalanced "[".
WildcardType optimizeWildcard(unichar* begin, unichar* end, size_t* offset, size_t* length, size_t minCharacters);

// Units other than "*", a bracket expression counting as one.
size_t minWildcardLen(const unichar* begin, const unichar* end);
// The same if there is no "*", else NotFound; 0 for an empty pattern.
size_t maxWildcardLen(const unichar* begin, const unichar* end);
size_t wildcardLength(const String& pattern);
// optimizeWildcard on a copy, minimum 1; kPlain for an empty string.
WildcardType wildcardType(const String& pattern);

// --- Whole-string matching ---

// Text [text, textEnd) against pattern [pattern, patternEnd). An empty
// pattern matches only an empty text. The table forms pass each text unit
// through `table`; the pattern must already be folded with it.
bool stringMatchesWildcard(const unichar* text, const unichar* textEnd, const unichar* pattern,
                           const unichar* patternEnd);
bool stringMatchesWildcardUsingUnicharTable(const unichar* text, const unichar* textEnd, const unichar* pattern,
                                            const unichar* patternEnd, text::ConversionTable table);
bool stringMatchesUnixWildcard(const unichar* text, const unichar* textEnd, const unichar* pattern,
                               const unichar* patternEnd);
bool stringMatchesUnixWildcardUsingUnicharTable(const unichar* text, const unichar* textEnd, const unichar* pattern,
                                                const unichar* patternEnd, text::ConversionTable table);

// The text against the pattern. False for a null or empty pattern and for an
// empty text; the pattern "*" matches every non-empty text. The
// case-insensitive forms compare through text::upperCharsTable().
bool isLikeWildcard(const String& text, const String& pattern);
bool isCaseInsensitiveLikeWildcard(const String& text, const String& pattern);
bool isLikeUnixWildcard(const String& text, const String& pattern);
bool isCaseInsensitiveLikeUnixWildcard(const String& text, const String& pattern);

// --- Fuzzy score ---

// How alike two words are, from 0 to 1: the larger of the share of equal
// units at equal positions and a score of units found in order in the longer
// word, less a penalty for each jump. house / mouse 0.8, color / colour
// 25/36, abcdefgh / abcdefhg 0.75.
double stringMatchesUnixWildcardFuzzy(const unichar* a, size_t aLength, const unichar* b, size_t bLength);
double stringMatchesUnixWildcardFuzzyUsingUnicharTable(const unichar* a, size_t aLength, const unichar* b,
                                                       size_t bLength, text::ConversionTable table);

// --- Words of a pattern ---

// The words of a pattern, cut by a case-sensitive enumerator in wildcard
// mode (minimum length 1). `hyphenated` as in
// FastWordEnumerator::addWordsTo. Empty (and false) for an empty string.
std::vector<String> wordsUsingWildcardSeparation(const String& pattern, bool* hyphenated = nullptr);
size_t numberOfWordsUsingWildcardSeparation(const String& pattern);

// --- Search in an indexed text ---

// One pattern, one word at a time, in the span [start, end). Answers the
// range of the whole matching word. Forward, the words whose beginning lies
// in the span are tried in order; backward, the words whose end lies in it,
// from the last. `anchored` tries the first word only. With `loneStar`, a
// pattern that is just "*" matches: the whole span, or with
// `loneStarSelectsWord` the next (previous) word. Without it "*" finds
// nothing. `minCharacters` is the least number of literals of a pattern
// with "*".
Range FindWildcardInCharacters(const FastWordEnumerator& enumerator, size_t start, size_t end, const unichar* pattern,
                               size_t patternLength, unsigned comparison, size_t minCharacters, bool anchored,
                               bool forward, bool loneStar, bool loneStarSelectsWord);
// A pattern that may hold several words, found as a sequence of words with
// any separators between them; a "*" word stands for exactly one word. The
// range runs from the first word's beginning to the last one's end. If the
// pattern is a hyphen compound (e-mail) or dotted abbreviation and is not
// found, its words written solid (email) are searched as one word. A pattern
// of one word is searched as that word, without the separators around it.
Range FindWildcardStringInCharacters(const FastWordEnumerator& enumerator, size_t start, size_t end,
                                     const String& pattern, unsigned comparison, size_t minCharacters, bool forward,
                                     bool loneStar);

// Whether any pattern occurs in the first `length` units; false for length 0.
bool containsAnyWildcard(const FastWordEnumerator& enumerator, const std::vector<String>& patterns, size_t length,
                         unsigned comparison, size_t minCharacters);
// The first match in the range over all patterns; at equal locations the
// earlier pattern wins.
Range rangeOfNextWildcard(const FastWordEnumerator& enumerator, const std::vector<String>& patterns, Range range,
                          unsigned comparison, size_t minCharacters);
// The last match in the range over all patterns.
Range rangeOfPreviousWildcard(const FastWordEnumerator& enumerator, const std::vector<String>& patterns, Range range,
                              unsigned comparison, size_t minCharacters);

// --- The same on a string, which is indexed for the call. Ranges are
// clipped to the text; null or empty input finds nothing. ---

bool containsAnyWildcard(const String& text, const std::vector<String>& patterns, unsigned comparison,
                         size_t minCharacters);
Range findNextWildcard(const String& text, const std::vector<String>& patterns, unsigned comparison,
                       size_t minCharacters);
Range findNextWildcard(const String& text, const std::vector<String>& patterns, Range range, unsigned comparison,
                       size_t minCharacters);
Range findPreviousWildcard(const String& text, const std::vector<String>& patterns, unsigned comparison,
                           size_t minCharacters);
Range findPreviousWildcard(const String& text, const std::vector<String>& patterns, Range range, unsigned comparison,
                           size_t minCharacters);
Range rangeOfWildcard(const String& text, const String& pattern, unsigned comparison, size_t minCharacters);
Range rangeOfWildcard(const String& text, const String& pattern, Range range, unsigned comparison,
                      size_t minCharacters);
// The words joined by " " and searched as one quoted phrase.
Range rangeOfWildcardWords(const String& text, const std::vector<String>& words, unsigned comparison,
                           size_t minCharacters);
Range rangeOfWildcardWords(const String& text, const std::vector<String>& words, Range range, unsigned comparison,
                           size_t minCharacters);
// The distinct matched substrings in text order (lower-cased with comparison
// bit 1), found by repeated rangeOfNextWildcard from the end of the last
// match. Empty for null or empty input.
std::vector<String> findStringsMatchingWildcards(const String& text, const std::vector<String>& patterns,
                                                 unsigned comparison, size_t minCharacters);

}  // namespace norvane::query
