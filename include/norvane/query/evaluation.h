// Matching query trees against texts, finding occurrences, and the plain
// multi-string searches that hit lists and find panels use.
//
// Two modes:
//   word mode      a leaf is found by FindWordInString: its units as they
//                  stand (a phrase with its blanks), at word edges unless the
//                  leaf is a substring term ("~word");
//   wildcard mode  a leaf is a wildcard pattern found word by word with
//                  FindWildcardStringInCharacters (comparison as given, at
//                  least 1 literal, a lone "*" matching anything).
//
// Proximity: for `L op/d R` every occurrence of R opens a window of d words
// on one side or both (NEAR both, BEFORE and NEXT in front, AFTER behind; the
// word holding R is not counted, so d = 1 is the word directly beside it),
// and L is looked for inside a window, or, when R is negated, in the gaps
// between the windows. A distance of 0 makes the join an and-join. A
// proximity join looks only at the term directly before it: `a OR b NEAR c`
// means (a or b) and (b near c). Optional terms never decide a match.
//
// No function here throws, allocates per unit, or keeps state between calls;
// all of them may run on many threads at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "norvane/core/string.h"
#include "norvane/core/types.h"
#include "norvane/query/query_terms.h"
#include "norvane/query/word_enumerator.h"

namespace norvane::query {

// --- Evaluation of a tree ---

// Word mode over the whole string; false for a null or empty string.
bool matchesString(const QueryTerms& terms, const String& s, bool caseSensitive);
// Wildcard mode over the whole string, with a comparison value of
// wildcards.h; false for a null or empty string.
bool matchesStringWithComparison(const QueryTerms& terms, const String& s, unsigned comparison);
// Wildcard mode over an enumerator the caller made (plain, not case-folded),
// in `span`.
bool matchesEnumerator(const QueryTerms& terms, const FastWordEnumerator& enumerator, Range span, unsigned comparison);

// Whether the text holds any non-negated leaf, operators aside: something
// worth highlighting. Word mode finds words at word edges unless they are
// substring terms.
bool containsString(const QueryTerms& terms, const String& s, bool caseSensitive);
bool containsStringWithComparison(const QueryTerms& terms, const String& s, unsigned comparison);

// The length of the shortest non-negated leaf text; 0 if there is none.
size_t minTermLen(const QueryTerms& terms);

// --- Occurrences ---

// Receives one occurrence: the leaf text that found it, its range, and
// whether it is primary (a hit of the term itself, not the anchor of a
// proximity window).
using OccurrenceHandler =
    std::function<void(const FastWordEnumerator& enumerator, const String& term, Range range, bool primary)>;

// Enumerates the occurrences that make the tree match in `range` (wildcard
// mode, comparison 1 when case-insensitive, else 0), and delivers them in
// ascending order; of overlapping occurrences the one that starts first
// wins (at equal starts, the longer). Nothing is delivered when the tree does
// not match. Does nothing for a null or empty string, a null handler or a
// range that starts past the end.
void enumerateString(const QueryTerms& terms, const String& s, Range range, bool caseSensitive,
                     const OccurrenceHandler& handler);
// Every tree into one set of occurrences, delivered once.
void enumerateQueryTerms(const String& s, const std::vector<QueryTerms>& trees, Range range, bool caseSensitive,
                         const OccurrenceHandler& handler);
// The same over an enumerator of the caller's.
void enumerateQueryTerms(const FastWordEnumerator& enumerator, const std::vector<QueryTerms>& trees, Range range,
                         bool caseSensitive, const OccurrenceHandler& handler);

// --- Raw searches ---

// Options of FindWordInString, as bits.
inline constexpr unsigned kSearchCaseInsensitive = 1;
inline constexpr unsigned kSearchBackwards = 4;
inline constexpr unsigned kSearchLocalized = 32;  // accepted; compares as the plain search
inline constexpr unsigned kSearchNumeric = 64;    // accepted; compares as the plain search

// The location of `word` in [start, start + length) of the enumerator's text,
// or NotFound. Case-insensitive compares both sides through
// text::upperCharsTable(). Anchored, a hit must begin at the span's start or
// at a word beginning, and end at the span's end or at a word end. The word
// "*" is found at `start` at once. Backward finds the last hit.
size_t FindWordInString(const FastWordEnumerator& enumerator, size_t start, size_t length, const unichar* word,
                        size_t wordLength, unsigned options, bool anchored);
// Words that follow one another with no unit between them (as in text
// without separators, such as Chinese): the first word is found anchored,
// each further one must stand directly behind it. Anchored, the last one
// must end at a word end or at the span's end.
Range FindNonExactPhraseInString(const FastWordEnumerator& enumerator, const std::vector<String>& words, size_t start,
                                 size_t length, unsigned options, bool anchored);

// Anchored search of the whole text; false for a null or empty word or one
// longer than the text.
bool containsWord(const FastWordEnumerator& enumerator, const String& word, bool caseSensitive);
// Anchored occurrences of the primary word plus those of each secondary word.
size_t countPrimaryWord(const FastWordEnumerator& enumerator, const String& primary,
                        const std::vector<String>& secondary, bool caseSensitive);

// The first occurrence in `range` of any string of `strings`; at equal
// locations the earlier string wins. A string of several words (by
// wordsUsingDefaultSeparation) is found by FindNonExactPhraseInString unless
// `exactPhrase`. With `isMutable`, a string that does not occur in front of
// any hit is removed from `strings`, so later calls that move on through the
// text skip it.
Range findNextQueryTerm(const FastWordEnumerator& enumerator, std::vector<String>& strings, bool isMutable, Range range,
                        bool caseSensitive, bool anchored, bool exactPhrase);
// The last occurrence in `range`.
Range findPreviousQueryTerm(const FastWordEnumerator& enumerator, std::vector<String>& strings, bool isMutable,
                            Range range, bool caseSensitive, bool anchored, bool exactPhrase);
// The same on a string, indexed for the call; NotFoundRange for a range that
// starts at or past the end.
Range findNextQueryTerm(const String& s, std::vector<String>& strings, bool isMutable, Range range, bool caseSensitive,
                        bool anchored, bool exactPhrase);
Range findPreviousQueryTerm(const String& s, std::vector<String>& strings, bool isMutable, Range range,
                            bool caseSensitive, bool anchored, bool exactPhrase);

// --- Self-check ---

// A row of the built-in table of queries and whether each matches the test
// string (wildcard mode, case-insensitive).
struct QueryTestCase {
  bool expected;
  const char* query;
};
// "Lorem ipsum dolor sit amet, ..." with "tempor invidunt ut labore" in it.
const String& queryTestString();
// The 48 rows of the table.
std::span<const QueryTestCase> queryTestCases();
// Parses and matches every row and logs "Success: <query> => Yes" (or
// "Failed: ...", with the result found, "Yes" or "No"); true when all hold.
bool testQueryTerms();

}  // namespace norvane::query
