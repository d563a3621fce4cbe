// Extracts around hits, for hit lists.
//
// Two kinds of operation, each in three variants by what is searched for:
// wildcard patterns (wildcards.h), query trees (evaluation.h) or one plain
// string.
//
//  - assemble...: glues the pieces of text around the hits (bounded by units
//    of `separators`, typically sentence ends) into one short summary of at
//    most `ellipsizeAfterNCharacters` units (0: no limit), each distinct piece
//    once, joined by `separator` (null: one blank). A piece cut at the limit
//    ends in "...".
//  - get...: one record per hit with its line number and its extract, widened
//    to whole sentences but to at least `minEnclosingWords` words on each side
//    of the hit.
//
// The wildcard and query variants work word-wise: pieces begin and end at
// word edges. The query variants use only bit 1 of `comparison` (case-
// insensitive) and only primary occurrences; the string variants use bit 1 as
// the case-insensitive option. Nothing here throws; null or empty inputs give
// null or an empty list.
#pragma once

#include <cstddef>
#include <vector>

#include "norvane/core/string.h"
#include "norvane/core/types.h"
#include "norvane/query/query_terms.h"
#include "norvane/text/chars.h"

namespace norvane::query {

struct OccurrenceRecord {
  Range range;        // the hit in the text
  size_t line = 0;    // line breaks in front of the hit; the first line is 0
  String string;      // the extract, with "..." in front or behind where cut
  Range stringRange;  // the extract in the text, the "..." not counted

  friend bool operator==(const OccurrenceRecord&, const OccurrenceRecord&) = default;
};

// With `onlyOccurrences` false, a text no longer than the limit is returned
// whole, and a text without any piece gives its beginning (ellipsized at the
// limit) instead of null. `singleWords` also takes a hit that stands alone
// between two separators.
String assembleOccurrencesOfWildcards(const String& text, const std::vector<String>& patterns, bool onlyOccurrences,
                                      bool singleWords, unsigned comparison, size_t minCharacters,
                                      text::CharacterSetRep separators, const String& separator,
                                      size_t ellipsizeAfterNCharacters);
String assembleOccurrencesOfQueryTerms(const String& text, const std::vector<QueryTerms>& trees, bool onlyOccurrences,
                                       bool singleWords, unsigned comparison, size_t minCharacters,
                                       text::CharacterSetRep separators, const String& separator,
                                       size_t ellipsizeAfterNCharacters);
String assembleOccurrencesOfString(const String& text, const String& needle, bool onlyOccurrences, bool singleWords,
                                   unsigned comparison, size_t minCharacters, text::CharacterSetRep separators,
                                   const String& separator, size_t ellipsizeAfterNCharacters);

std::vector<OccurrenceRecord> getOccurrencesOfWildcards(const String& text, const std::vector<String>& patterns,
                                                        unsigned comparison, size_t minCharacters,
                                                        text::CharacterSetRep separators, size_t minEnclosingWords);
std::vector<OccurrenceRecord> getOccurrencesOfQueryTerms(const String& text, const std::vector<QueryTerms>& trees,
                                                         unsigned comparison, size_t minCharacters,
                                                         text::CharacterSetRep separators, size_t minEnclosingWords);
std::vector<OccurrenceRecord> getOccurrencesOfString(const String& text, const String& needle, unsigned comparison,
                                                     size_t minCharacters, text::CharacterSetRep separators,
                                                     size_t minEnclosingWords);

// A rep of sentence ends for extracts: ".", "!", "?", ";", the ideographic
// and fullwidth full stops and marks, and the line-end units.
text::CharacterSetRep sentenceSeparators();

}  // namespace norvane::query
