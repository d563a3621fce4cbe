// Wildcard search in a word-indexed text: one pattern word by word, phrases
// of patterns, and the searches over several patterns.

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <unordered_set>

#include "norvane/query/wildcards.h"

namespace norvane::query {
namespace {

// One rewritten pattern and the test of one word against it.
class WordTest {
 public:
  WordTest(const unichar* pattern, size_t size, WildcardType type, size_t offset, size_t length, unsigned comparison,
           text::ConversionTable table)
      : pattern_(pattern),
        patternEnd_(pattern + size),
        literal_(pattern + offset),
        literalLength_(length),
        type_(type),
        table_(table),
        fuzzy_(comparison & kComparisonFuzzy),
        minLength_(minWildcardLen(pattern, pattern + size)),
        maxLength_(maxWildcardLen(pattern, pattern + size)) {
    const unichar first = size ? pattern[0] : u'*';
    hasFirstUnit_ = !fuzzy_ && first != u'*' && first != u'?' && first != u'[';
    firstUnit_ = first;
  }

  // A cheap test before the word's end is even looked up: whether a word
  // that begins with this unit cannot match.
  bool rejectsFirstUnit(unichar u) const { return hasFirstUnit_ && (table_ ? table_[u] : u) != firstUnit_; }

  bool matches(const unichar* word, size_t length) const {
    switch (type_) {
      case WildcardType::kPlain:
        if (fuzzy_) return fuzzyMatches(word, length);
        return length == literalLength_ && equalUnits(word, literal_, length);
      case WildcardType::kQuestionMarks:
        return length == literalLength_ && equalUnitsOrQuestionMarks(word, length);
      case WildcardType::kPrefix:
        return length >= literalLength_ && equalUnits(word, literal_, literalLength_);
      case WildcardType::kSuffix:
        return length >= literalLength_ && equalUnits(word + length - literalLength_, literal_, literalLength_);
      case WildcardType::kInfix:
        return length >= literalLength_ && containsLiteral(word, length);
      case WildcardType::kWildcard:
        return length >= minLength_ && length <= maxLength_ &&
               stringMatchesWildcardUsingUnicharTable(word, word + length, pattern_, patternEnd_, table_);
      case WildcardType::kUnix:
        return length >= minLength_ && length <= maxLength_ &&
               stringMatchesUnixWildcardUsingUnicharTable(word, word + length, pattern_, patternEnd_, table_);
      case WildcardType::kUnixPrefix:
        return length >= minLength_ && stringMatchesUnixWildcardUsingUnicharTable(word, word + minLength_, literal_,
                                                                                  literal_ + literalLength_, table_);
      case WildcardType::kUnixSuffix:
        return length >= minLength_ &&
               stringMatchesUnixWildcardUsingUnicharTable(word + length - minLength_, word + length, literal_,
                                                          literal_ + literalLength_, table_);
      case WildcardType::kUnixFixed:
        return length == minLength_ &&
               stringMatchesUnixWildcardUsingUnicharTable(word, word + length, pattern_, patternEnd_, table_);
      case WildcardType::kNoMatch:
        break;
    }
    return false;
  }

 private:
  bool equalUnits(const unichar* word, const unichar* literal, size_t length) const {
    if (!table_) return std::memcmp(word, literal, length * sizeof(unichar)) == 0;
    for (size_t i = 0; i < length; ++i) {
      if (table_[word[i]] != literal[i]) return false;
    }
    return true;
  }

  bool equalUnitsOrQuestionMarks(const unichar* word, size_t length) const {
    for (size_t i = 0; i < length; ++i) {
      const unichar p = literal_[i];
      if (p != u'?' && p != (table_ ? table_[word[i]] : word[i])) return false;
    }
    return true;
  }

  bool containsLiteral(const unichar* word, size_t length) const {
    for (size_t at = 0; at + literalLength_ <= length; ++at) {
      if (equalUnits(word + at, literal_, literalLength_)) return true;
    }
    return false;
  }

  // The length gate first, so that most words never reach the score.
  bool fuzzyMatches(const unichar* word, size_t length) const {
    const double analogy = minWildcardFuzzyAnalogy();
    const size_t shorter = std::min(length, literalLength_);
    const size_t longer = std::max(length, literalLength_);
    if (static_cast<double>(shorter) / static_cast<double>(longer) < analogy) return false;
    return stringMatchesUnixWildcardFuzzyUsingUnicharTable(word, length, literal_, literalLength_, table_) >= analogy;
  }

  const unichar* pattern_;
  const unichar* patternEnd_;
  const unichar* literal_;
  size_t literalLength_;
  WildcardType type_;
  text::ConversionTable table_;
  bool fuzzy_;
  size_t minLength_;
  size_t maxLength_;
  bool hasFirstUnit_;
  unichar firstUnit_;
};

Range clipRange(Range range, size_t length) {
  const size_t location = std::min(range.location, length);
  return {location, std::min(range.length, length - location)};
}

// Whether the pattern is one word as it stands, without indexing it: no
// separator, and no unit that the Asian split could cut at.
bool isSingleWordPattern(const String& pattern) {
  const text::CharacterSetRep separators = defaultWildcardSeparators();
  const bool splitAsian = FastWordEnumerator::splitAsianWords();
  for (unichar u : pattern.view()) {
    if (text::isInRep(separators, u) || (splitAsian && u >= 0x3000)) return false;
  }
  return true;
}

std::unique_ptr<FastWordEnumerator> enumeratorForSearch(const String& text) {
  return FastWordEnumerator::enumeratorWithString(text);
}

}  // namespace

// --- Words of a pattern ---

std::vector<String> wordsUsingWildcardSeparation(const String& pattern, bool* hyphenated) {
  std::vector<String> words;
  if (hyphenated) *hyphenated = false;
  auto enumerator = FastWordEnumerator::enumeratorWithString(pattern, false, true);
  if (!enumerator) return words;
  words.reserve(pattern.length() / 8);
  enumerator->addWordsTo(&words, 1, hyphenated);
  return words;
}

size_t numberOfWordsUsingWildcardSeparation(const String& pattern) {
  auto enumerator = FastWordEnumerator::enumeratorWithString(pattern, false, true);
  return enumerator ? enumerator->numberOfWords() : 0;
}

// --- One pattern ---

Range FindWildcardInCharacters(const FastWordEnumerator& enumerator, size_t start, size_t end, const unichar* pattern,
                               size_t patternLength, unsigned comparison, size_t minCharacters, bool anchored,
                               bool forward, bool loneStar, bool loneStarSelectsWord) {
  if (end <= start || patternLength == 0 || !pattern) return NotFoundRange;
  constexpr size_t kStackUnits = 256;
  unichar stackUnits[kStackUnits];
  std::unique_ptr<unichar[]> heapUnits;
  unichar* units = stackUnits;
  if (patternLength > kStackUnits) {
    heapUnits.reset(new (std::nothrow) unichar[patternLength]);
    if (!heapUnits) return NotFoundRange;
    units = heapUnits.get();
  }
  std::memcpy(units, pattern, patternLength * sizeof(unichar));
  const text::ConversionTable table = unicharTableForWildcardComparison(comparison);
  prepareWildcardUsingUnicharTable(units, patternLength, table);
  size_t offset = 0;
  size_t length = 0;
  const WildcardType type = optimizeWildcard(units, units + patternLength, &offset, &length, minCharacters);

  const size_t textLength = enumerator.length();
  if (loneStar && type == WildcardType::kNoMatch && length == 1 && units[0] == u'*') {
    if (!loneStarSelectsWord) {
      const size_t stop = std::min(end, textLength);
      return start < stop ? Range{start, stop - start} : NotFoundRange;
    }
    return forward ? enumerator.rangeOfNextWordFromIndex(start, end)
                   : enumerator.rangeOfPreviousWordFromIndex(end - 1, start);
  }
  if (type == WildcardType::kNoMatch) return NotFoundRange;

  const bool trailingStar =
      type == WildcardType::kPrefix || type == WildcardType::kInfix || type == WildcardType::kUnixPrefix;
  const size_t size = offset + length + (trailingStar ? 1 : 0);
  const WordTest test(units, size, type, offset, length, comparison, table);
  const unichar* characters = enumerator.characters();

  if (forward) {
    const uint8_t* index = enumerator.index();
    const size_t limit = std::min(end, textLength);
    for (size_t i = start; i < limit; ++i) {
      if (!(index[i] & FastWordEnumerator::kWordBeginning)) continue;
      if (!test.rejectsFirstUnit(characters[i])) {
        size_t last = i;
        while (last + 1 < textLength && !(index[last] & FastWordEnumerator::kWordEnd)) ++last;
        if (test.matches(characters + i, last - i + 1)) return {i, last - i + 1};
        i = last;
      }
      if (anchored) return NotFoundRange;
    }
    return NotFoundRange;
  }
  if (textLength == 0) return NotFoundRange;
  for (size_t from = std::min(end, textLength) - 1;;) {
    const Range word = enumerator.rangeOfPreviousWordFromIndex(from, start);
    if (!word.found()) return NotFoundRange;
    if (test.matches(characters + word.location, word.length)) return word;
    if (anchored || word.location <= start) return NotFoundRange;
    from = word.location - 1;
  }
}

// --- Phrases of patterns ---

Range FindWildcardStringInCharacters(const FastWordEnumerator& enumerator, size_t start, size_t end,
                                     const String& pattern, unsigned comparison, size_t minCharacters, bool forward,
                                     bool loneStar) {
  if (pattern.isEmpty()) return NotFoundRange;
  if (isSingleWordPattern(pattern)) {
    return FindWildcardInCharacters(enumerator, start, end, pattern.data(), pattern.length(), comparison, minCharacters,
                                    false, forward, loneStar, false);
  }
  bool hyphenated = false;
  const std::vector<String> words = wordsUsingWildcardSeparation(pattern, &hyphenated);
  if (words.empty()) return NotFoundRange;
  auto findWord = [&](const String& word, size_t from, size_t to, bool anchored, bool searchForward, bool lone,
                      bool selects) {
    return FindWildcardInCharacters(enumerator, from, to, word.data(), word.length(), comparison, minCharacters,
                                    anchored, searchForward, lone, selects);
  };
  // One word is searched without the separators around it, so that a quoted
  // word ("\"word\"") is found like the bare word.
  if (words.size() == 1) return findWord(words[0], start, end, false, forward, loneStar, false);
  if (pattern.length() < 3) return findWord(pattern, start, end, false, forward, loneStar, false);

  size_t searchStart = start;
  size_t searchEnd = end;
  for (;;) {
    const Range first = findWord(words[0], searchStart, searchEnd, false, forward, true, true);
    if (!first.found()) break;
    size_t cursor = first.end();
    bool complete = true;
    for (size_t k = 1; k < words.size() && complete; ++k) {
      const Range next = findWord(words[k], cursor, end, true, true, true, true);
      complete = next.found();
      if (complete) cursor = next.end();
    }
    if (complete) return {first.location, cursor - first.location};
    if (forward) {
      searchStart = first.end();
    } else {
      searchEnd = first.location;
    }
  }

  if (!hyphenated) return NotFoundRange;
  std::u16string solid;
  for (const String& word : words) solid += word.view();
  return FindWildcardInCharacters(enumerator, start, end, solid.data(), solid.size(), comparison, minCharacters, false,
                                  forward, loneStar, false);
}

// --- Several patterns in an enumerator ---

bool containsAnyWildcard(const FastWordEnumerator& enumerator, const std::vector<String>& patterns, size_t length,
                         unsigned comparison, size_t minCharacters) {
  if (length == 0 || enumerator.length() == 0) return false;
  for (const String& pattern : patterns) {
    if (FindWildcardStringInCharacters(enumerator, 0, length, pattern, comparison, minCharacters, true, false).found())
      return true;
  }
  return false;
}

Range rangeOfNextWildcard(const FastWordEnumerator& enumerator, const std::vector<String>& patterns, Range range,
                          unsigned comparison, size_t minCharacters) {
  Range best = NotFoundRange;
  const size_t start = range.location;
  size_t end = range.location + std::min(range.length, NotFound - range.location);
  for (const String& pattern : patterns) {
    if (end <= start) break;
    const Range hit =
        FindWildcardStringInCharacters(enumerator, start, end, pattern, comparison, minCharacters, true, false);
    if (!hit.found()) continue;
    best = hit;
    end = hit.location;
  }
  return best;
}

Range rangeOfPreviousWildcard(const FastWordEnumerator& enumerator, const std::vector<String>& patterns, Range range,
                              unsigned comparison, size_t minCharacters) {
  Range best = NotFoundRange;
  size_t start = range.location;
  const size_t end = range.location + std::min(range.length, NotFound - range.location);
  for (const String& pattern : patterns) {
    if (end <= start) break;
    const Range hit =
        FindWildcardStringInCharacters(enumerator, start, end, pattern, comparison, minCharacters, false, false);
    if (!hit.found()) continue;
    best = hit;
    start = hit.end();
  }
  return best;
}

// --- The same on strings ---

bool containsAnyWildcard(const String& text, const std::vector<String>& patterns, unsigned comparison,
                         size_t minCharacters) {
  if (patterns.empty()) return false;
  auto enumerator = enumeratorForSearch(text);
  return enumerator && containsAnyWildcard(*enumerator, patterns, enumerator->length(), comparison, minCharacters);
}

Range findNextWildcard(const String& text, const std::vector<String>& patterns, unsigned comparison,
                       size_t minCharacters) {
  return findNextWildcard(text, patterns, Range{0, text.length()}, comparison, minCharacters);
}

Range findNextWildcard(const String& text, const std::vector<String>& patterns, Range range, unsigned comparison,
                       size_t minCharacters) {
  if (patterns.empty()) return NotFoundRange;
  auto enumerator = enumeratorForSearch(text);
  if (!enumerator) return NotFoundRange;
  return rangeOfNextWildcard(*enumerator, patterns, clipRange(range, text.length()), comparison, minCharacters);
}

Range findPreviousWildcard(const String& text, const std::vector<String>& patterns, unsigned comparison,
                           size_t minCharacters) {
  return findPreviousWildcard(text, patterns, Range{0, text.length()}, comparison, minCharacters);
}

Range findPreviousWildcard(const String& text, const std::vector<String>& patterns, Range range, unsigned comparison,
                           size_t minCharacters) {
  if (patterns.empty()) return NotFoundRange;
  auto enumerator = enumeratorForSearch(text);
  if (!enumerator) return NotFoundRange;
  return rangeOfPreviousWildcard(*enumerator, patterns, clipRange(range, text.length()), comparison, minCharacters);
}

Range rangeOfWildcard(const String& text, const String& pattern, unsigned comparison, size_t minCharacters) {
  return rangeOfWildcard(text, pattern, Range{0, text.length()}, comparison, minCharacters);
}

Range rangeOfWildcard(const String& text, const String& pattern, Range range, unsigned comparison,
                      size_t minCharacters) {
  if (pattern.isEmpty()) return NotFoundRange;
  return findNextWildcard(text, {pattern}, range, comparison, minCharacters);
}

Range rangeOfWildcardWords(const String& text, const std::vector<String>& words, unsigned comparison,
                           size_t minCharacters) {
  return rangeOfWildcardWords(text, words, Range{0, text.length()}, comparison, minCharacters);
}

Range rangeOfWildcardWords(const String& text, const std::vector<String>& words, Range range, unsigned comparison,
                           size_t minCharacters) {
  if (words.empty()) return NotFoundRange;
  std::u16string phrase = u"\"";
  for (size_t i = 0; i < words.size(); ++i) {
    if (i > 0) phrase += u' ';
    phrase += words[i].view();
  }
  phrase += u'"';
  return rangeOfWildcard(text, String::fromU16(std::move(phrase)), range, comparison, minCharacters);
}

std::vector<String> findStringsMatchingWildcards(const String& text, const std::vector<String>& patterns,
                                                 unsigned comparison, size_t minCharacters) {
  std::vector<String> found;
  if (patterns.empty()) return found;
  auto enumerator = enumeratorForSearch(text);
  if (!enumerator) return found;
  std::unordered_set<String, StringHash> seen;
  const size_t length = enumerator->length();
  for (size_t from = 0; from < length;) {
    const Range hit = rangeOfNextWildcard(*enumerator, patterns, Range{from, length - from}, comparison, minCharacters);
    if (!hit.found() || hit.length == 0) break;
    String match = (comparison & kComparisonCaseInsensitive) ? enumerator->lowercaseSubstringWithRange(hit)
                                                             : enumerator->substringWithRange(hit);
    if (seen.insert(match).second) found.push_back(std::move(match));
    from = hit.end();
  }
  return found;
}

}  // namespace norvane::query
