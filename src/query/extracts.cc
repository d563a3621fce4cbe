// Extracts around hits: the assembled summary and the per-hit records.
//
// Both walk outward from a hit over the word index of the text: the summary
// takes the piece between the separators around the hit, a record widens
// its extract until enough words stand on each side.

#include "norvane/query/extracts.h"

#include <algorithm>
#include <array>
#include <memory>
#include <set>
#include <string>

#include "norvane/query/evaluation.h"
#include "norvane/query/wildcards.h"
#include "norvane/query/word_enumerator.h"
#include "norvane/text/strings.h"

namespace norvane::query {

namespace {

constexpr std::u16string_view kEllipsis = u"...";

// What the wildcard and string variants search for.
struct Search {
  const std::vector<String>* patterns = nullptr;  // wildcard variant
  const String* needle = nullptr;                 // string variant
  unsigned comparison = 0;
  size_t minCharacters = 0;

  bool isEmpty() const { return patterns ? patterns->empty() : needle->isEmpty(); }
};

Range findPlain(const FastWordEnumerator& e, const String& needle, size_t position, bool caseInsensitive) {
  std::u16string_view text(e.characters(), e.length());
  std::u16string_view word = needle.view();
  if (!caseInsensitive) {
    size_t at = text.find(word, position);
    return at == std::u16string_view::npos ? NotFoundRange : Range{at, word.size()};
  }
  text::ConversionTable upper = text::upperCharsTable();
  for (size_t i = position; i + word.size() <= text.size(); ++i) {
    size_t k = 0;
    while (k < word.size() && upper[text[i + k]] == upper[word[k]]) ++k;
    if (k == word.size()) return {i, word.size()};
  }
  return NotFoundRange;
}

// The next hit from `position` to the end of the text.
Range nextHit(const FastWordEnumerator& e, const Search& search, size_t position) {
  size_t length = e.length();
  if (position >= length) return NotFoundRange;
  if (search.patterns) {
    return rangeOfNextWildcard(e, *search.patterns, {position, length - position}, search.comparison,
                               search.minCharacters);
  }
  return findPlain(e, *search.needle, position, search.comparison & kComparisonCaseInsensitive);
}

// --- Assembling ---

struct Assembly {
  const FastWordEnumerator& e;
  text::CharacterSetRep separators;
  bool wordWise;
  bool singleWords;
  size_t limit;
  std::u16string_view separator;
  bool started = false;
  std::u16string result;
  std::set<std::u16string, std::less<>> pieces;

  // Adds the piece around the hit; answers where the search goes on, or
  // NotFound when no further piece can fit.
  size_t add(Range hit) {
    const unichar* units = e.characters();
    size_t length = e.length();
    bool lone = true;
    size_t start = hit.location;
    for (size_t i = hit.location; i-- > 0;) {
      if (text::isInRep(separators, units[i])) break;
      if (wordWise && !e.isWordBeginningAtIndex(i)) continue;
      start = i;
      lone = false;
    }
    size_t hitEnd = hit.end();
    size_t end = hitEnd;
    size_t stop = hitEnd;
    for (; stop < length; ++stop) {
      if (text::isInRep(separators, units[stop])) break;
      if (wordWise && !e.isWordEndAtIndex(stop)) continue;
      end = stop + 1;
      lone = false;
    }
    if (end <= start || (lone && !singleWords)) return stop;
    end = std::min(end, length);
    std::u16string_view piece(units + start, end - start);
    size_t used = 0;
    if (started) {
      if (pieces.find(piece) != pieces.end()) return stop;
      result.append(separator);
      used = result.size();
    }
    started = true;
    if (limit == 0 || used + piece.size() <= limit) {
      result.append(piece);
      pieces.emplace(piece);
      if (limit && used + piece.size() + separator.size() >= limit) return NotFound;
      return stop;
    }
    // The piece does not fit: keep what is left of the limit, ending with
    // the hit if cutting at the limit would lose it.
    size_t room = limit > used ? limit - used : 0;
    size_t from = start;
    if (start + room < hitEnd) {
      from = hitEnd > room ? hitEnd - room : 0;
      if (wordWise) {
        while (from > 0 && !e.isWordBeginningAtIndex(from)) --from;
      }
      room = hitEnd - from;
    }
    result.append(units + from, std::min(room, length - from));
    result.append(kEllipsis);
    pieces.emplace(piece);
    return NotFound;
  }
};

String finishAssembly(const String& text, Assembly* assembly, bool onlyOccurrences, size_t limit) {
  if (assembly && assembly->started) return String::fromU16(std::move(assembly->result));
  if (onlyOccurrences) return String();
  return text::stringByEllipsizingAfterNCharacters(text, limit);
}

// Exactly one of `search` and `trees` is given.
String assemble(const String& text, const Search* search, const std::vector<QueryTerms>* trees, bool onlyOccurrences,
                bool singleWords, unsigned comparison, text::CharacterSetRep separators, const String& separator,
                size_t limit) {
  if (!separators || text.isEmpty()) return String();
  if (!onlyOccurrences && limit && text.length() <= limit) return text;
  if (trees ? trees->empty() : search->isEmpty()) return finishAssembly(text, nullptr, onlyOccurrences, limit);
  std::unique_ptr<FastWordEnumerator> enumerator = FastWordEnumerator::enumeratorWithString(text);
  if (!enumerator) return finishAssembly(text, nullptr, onlyOccurrences, limit);
  std::u16string_view joint = separator.isNull() ? std::u16string_view(u" ") : separator.view();
  bool wordWise = trees || search->patterns;
  Assembly assembly{*enumerator, separators, wordWise, singleWords, limit, joint, false, {}, {}};
  if (trees) {
    bool full = false;
    enumerateQueryTerms(*enumerator, *trees, {0, text.length()}, !(comparison & kComparisonCaseInsensitive),
                        [&](const FastWordEnumerator&, const String&, Range range, bool primary) {
                          if (full || !primary) return;
                          full = assembly.add(range) == NotFound;
                        });
  } else {
    for (size_t position = 0; position < text.length();) {
      Range hit = nextHit(*enumerator, *search, position);
      if (!hit.found()) break;
      size_t next = assembly.add(hit);
      if (next == NotFound) break;
      position = std::max(next, hit.location + 1);
    }
  }
  return finishAssembly(text, &assembly, onlyOccurrences, limit);
}

// --- Records ---

struct RecordMaker {
  const FastWordEnumerator& e;
  text::CharacterSetRep separators;
  text::CharacterSetRep lineSeparators;
  text::CharacterSetRep white;
  bool stringVariant;
  size_t minWords;
  size_t linesCountedTo = 0;
  size_t lines = 0;
  std::vector<OccurrenceRecord> records;

  size_t lineOf(size_t location) {
    const unichar* units = e.characters();
    size_t i = linesCountedTo;
    for (; i < location; ++i) {
      if (!text::isInRep(lineSeparators, units[i])) continue;
      if (units[i] == u'\r' && i + 1 < location && units[i + 1] == u'\n') ++i;
      ++lines;
      linesCountedTo = i + 1;
    }
    return lines;
  }

  // Makes the record of one hit; answers where the search goes on.
  size_t add(Range hit) {
    const unichar* units = e.characters();
    size_t length = e.length();
    size_t start = hit.location;
    bool frontEllipsis = false;
    bool separatorSeen = false;
    size_t words = 0;
    for (size_t i = hit.location; i-- > 0;) {
      if (text::isInRep(separators, units[i])) {
        separatorSeen = true;
        if (words >= minWords) break;
      } else if (e.isWordBeginningAtIndex(i)) {
        ++words;
        start = i;
      } else if (stringVariant && !text::isInRep(white, units[i])) {
        start = i;
      } else if (separatorSeen) {
        frontEllipsis = true;
      }
    }
    size_t end = hit.end();
    bool rearEllipsis = false;
    separatorSeen = false;
    words = 0;
    size_t stop = hit.end();
    for (; stop < length; ++stop) {
      if (text::isInRep(separators, units[stop])) {
        separatorSeen = true;
        if (words >= minWords) {
          end = stop + 1;
          break;
        }
      } else if (e.isWordEndAtIndex(stop)) {
        end = stop + 1;
        ++words;
      } else if (stringVariant && !text::isInRep(white, units[stop])) {
        end = stop + 1;
      } else if (separatorSeen) {
        rearEllipsis = true;
      }
    }
    if (end <= start) return stop;
    end = std::min(end, length);
    std::u16string extract;
    if (frontEllipsis) extract.append(kEllipsis);
    extract.append(units + start, end - start);
    if (rearEllipsis) extract.append(kEllipsis);
    records.push_back({hit, lineOf(hit.location), String::fromU16(std::move(extract)), {start, end - start}});
    return stop;
  }
};

// Exactly one of `search` and `trees` is given.
std::vector<OccurrenceRecord> collect(const String& text, const Search* search, const std::vector<QueryTerms>* trees,
                                      unsigned comparison, text::CharacterSetRep separators, size_t minEnclosingWords) {
  if (text.isEmpty() || !separators || (trees ? trees->empty() : search->isEmpty())) return {};
  std::unique_ptr<FastWordEnumerator> enumerator = FastWordEnumerator::enumeratorWithString(text);
  if (!enumerator) return {};
  RecordMaker maker{*enumerator,
                    separators,
                    text::defaultLineSeparators(),
                    text::whiteCharacterSetRep(),
                    !trees && !search->patterns,
                    minEnclosingWords,
                    0,
                    0,
                    {}};
  if (trees) {
    size_t resume = 0;
    enumerateQueryTerms(*enumerator, *trees, {0, text.length()}, !(comparison & kComparisonCaseInsensitive),
                        [&](const FastWordEnumerator&, const String&, Range range, bool primary) {
                          if (!primary || range.location < resume) return;
                          resume = maker.add(range);
                        });
  } else {
    for (size_t position = 0; position < text.length();) {
      Range hit = nextHit(*enumerator, *search, position);
      if (!hit.found()) break;
      position = std::max(maker.add(hit), hit.location + 1);
    }
  }
  return std::move(maker.records);
}

}  // namespace

String assembleOccurrencesOfWildcards(const String& text, const std::vector<String>& patterns, bool onlyOccurrences,
                                      bool singleWords, unsigned comparison, size_t minCharacters,
                                      text::CharacterSetRep separators, const String& separator, size_t limit) {
  Search search{&patterns, nullptr, comparison, minCharacters};
  return assemble(text, &search, nullptr, onlyOccurrences, singleWords, comparison, separators, separator, limit);
}

String assembleOccurrencesOfQueryTerms(const String& text, const std::vector<QueryTerms>& trees, bool onlyOccurrences,
                                       bool singleWords, unsigned comparison, size_t, text::CharacterSetRep separators,
                                       const String& separator, size_t limit) {
  return assemble(text, nullptr, &trees, onlyOccurrences, singleWords, comparison, separators, separator, limit);
}

String assembleOccurrencesOfString(const String& text, const String& needle, bool onlyOccurrences, bool singleWords,
                                   unsigned comparison, size_t, text::CharacterSetRep separators,
                                   const String& separator, size_t limit) {
  Search search{nullptr, &needle, comparison, 0};
  return assemble(text, &search, nullptr, onlyOccurrences, singleWords, comparison, separators, separator, limit);
}

std::vector<OccurrenceRecord> getOccurrencesOfWildcards(const String& text, const std::vector<String>& patterns,
                                                        unsigned comparison, size_t minCharacters,
                                                        text::CharacterSetRep separators, size_t minEnclosingWords) {
  Search search{&patterns, nullptr, comparison, minCharacters};
  return collect(text, &search, nullptr, comparison, separators, minEnclosingWords);
}

std::vector<OccurrenceRecord> getOccurrencesOfQueryTerms(const String& text, const std::vector<QueryTerms>& trees,
                                                         unsigned comparison, size_t, text::CharacterSetRep separators,
                                                         size_t minEnclosingWords) {
  return collect(text, nullptr, &trees, comparison, separators, minEnclosingWords);
}

std::vector<OccurrenceRecord> getOccurrencesOfString(const String& text, const String& needle, unsigned comparison,
                                                     size_t, text::CharacterSetRep separators,
                                                     size_t minEnclosingWords) {
  Search search{nullptr, &needle, comparison, 0};
  return collect(text, &search, nullptr, comparison, separators, minEnclosingWords);
}

text::CharacterSetRep sentenceSeparators() {
  static const std::array<uint8_t, 8192> rep = [] {
    std::array<uint8_t, 8192> bits{};
    auto set = [&](unichar u) { bits[u >> 3] |= static_cast<uint8_t>(1 << (u & 7)); };
    for (unichar u : {u'.', u'!', u'?', u';', u'\u3002', u'\uFF01', u'\uFF0E', u'\uFF1F', u'\uFF1B'}) set(u);
    for (unichar u : {u'\n', u'\r', u'\x03', u'\f', u'\u2028', u'\u2029', u'\uFEFF', u'\uFFFC'}) set(u);
    return bits;
  }();
  return rep.data();
}

}  // namespace norvane::query
