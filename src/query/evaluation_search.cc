// The plain searches of the query layer: a word at word edges, words written
// solid, and the first or last of several strings.

#include <algorithm>
#include <string_view>
#include <vector>

#include "norvane/query/evaluation.h"
#include "norvane/query/word_separators.h"
#include "norvane/text/chars.h"

namespace norvane::query {

namespace {

// A word folded through the upper table, on the stack when short.
class FoldedWord {
 public:
  FoldedWord(const unichar* word, size_t length, bool fold) {
    if (!fold) {
      units_ = word;
      return;
    }
    unichar* buffer = length <= kStackUnits ? stack_ : (heap_.resize(length), heap_.data());
    text::ConversionTable upper = text::upperCharsTable();
    for (size_t i = 0; i < length; ++i) buffer[i] = upper[word[i]];
    units_ = buffer;
  }
  const unichar* units() const { return units_; }

 private:
  static constexpr size_t kStackUnits = 256;
  const unichar* units_;
  unichar stack_[kStackUnits];
  std::vector<unichar> heap_;
};

bool isAnchoredHit(const FastWordEnumerator& e, size_t hit, size_t wordLength, size_t start, size_t end) {
  return (hit == start || e.isWordBeginningAtIndex(hit)) &&
         (hit + wordLength >= end || e.isWordEndAtIndex(hit + wordLength - 1));
}

bool equalAt(const unichar* text, const unichar* word, size_t length, text::ConversionTable table) {
  if (!table) return std::u16string_view(text, length) == std::u16string_view(word, length);
  for (size_t i = 0; i < length; ++i) {
    if (table[text[i]] != word[i]) return false;
  }
  return true;
}

}  // namespace

size_t FindWordInString(const FastWordEnumerator& e, size_t start, size_t length, const unichar* word,
                        size_t wordLength, unsigned options, bool anchored) {
  if (wordLength == 0 || !word) return NotFound;
  if (wordLength == 1 && word[0] == u'*') return start;
  if (start >= e.length()) return NotFound;
  size_t end = start + std::min(length, e.length() - start);
  if (end - start < wordLength) return NotFound;
  const unichar* text = e.characters();
  bool fold = options & kSearchCaseInsensitive;
  text::ConversionTable table = fold ? text::upperCharsTable() : nullptr;
  FoldedWord folded(word, wordLength, fold);
  const unichar* w = folded.units();
  size_t last = end - wordLength;

  if (options & kSearchBackwards) {
    for (size_t i = last + 1; i-- > start;) {
      unichar u = table ? table[text[i]] : text[i];
      if (u != w[0] || !equalAt(text + i + 1, w + 1, wordLength - 1, table)) continue;
      if (!anchored || isAnchoredHit(e, i, wordLength, start, end)) return i;
    }
    return NotFound;
  }
  if (!table) {
    std::u16string_view haystack(text + start, end - start);
    std::u16string_view needle(w, wordLength);
    for (size_t at = haystack.find(needle); at != std::u16string_view::npos; at = haystack.find(needle, at + 1)) {
      if (!anchored || isAnchoredHit(e, start + at, wordLength, start, end)) return start + at;
    }
    return NotFound;
  }
  unichar first = w[0];
  for (size_t i = start; i <= last; ++i) {
    if (table[text[i]] != first || !equalAt(text + i + 1, w + 1, wordLength - 1, table)) continue;
    if (!anchored || isAnchoredHit(e, i, wordLength, start, end)) return i;
  }
  return NotFound;
}

Range FindNonExactPhraseInString(const FastWordEnumerator& e, const std::vector<String>& words, size_t start,
                                 size_t length, unsigned options, bool anchored) {
  if (words.empty() || start >= e.length()) return NotFoundRange;
  size_t end = start + std::min(length, e.length() - start);
  text::ConversionTable table = (options & kSearchCaseInsensitive) ? text::upperCharsTable() : nullptr;
  bool backward = options & kSearchBackwards;
  size_t from = start;
  size_t to = end;
  while (from < to) {
    const String& first = words[0];
    size_t hit = FindWordInString(e, from, to - from, first.data(), first.length(), options, true);
    if (hit == NotFound) return NotFoundRange;
    size_t cursor = hit + first.length();
    bool matched = cursor < end || words.size() == 1;
    for (size_t k = 1; matched && k < words.size(); ++k) {
      const String& word = words[k];
      FoldedWord folded(word.data(), word.length(), table != nullptr);
      matched = cursor + word.length() <= end && !e.containsSeparatorInRange({cursor, word.length()}) &&
                equalAt(e.characters() + cursor, folded.units(), word.length(), table);
      cursor += word.length();
    }
    if (matched && anchored) matched = cursor >= end || e.isWordEndBeforeIndex(cursor);
    if (matched) return {hit, cursor - hit};
    if (backward) {
      to = hit;
    } else {
      from = hit + 1;
    }
  }
  return NotFoundRange;
}

bool containsWord(const FastWordEnumerator& e, const String& word, bool caseSensitive) {
  if (word.isEmpty() || word.length() > e.length()) return false;
  return FindWordInString(e, 0, e.length(), word.data(), word.length(), caseSensitive ? 0 : kSearchCaseInsensitive,
                          true) != NotFound;
}

size_t countPrimaryWord(const FastWordEnumerator& e, const String& primary, const std::vector<String>& secondary,
                        bool caseSensitive) {
  if (e.length() == 0) return 0;
  unsigned options = caseSensitive ? 0 : kSearchCaseInsensitive;
  auto count = [&](const String& word) -> size_t {
    if (word.isEmpty() || word.length() > e.length()) return 0;
    size_t n = 0;
    for (size_t at = 0; at < e.length();) {
      size_t hit = FindWordInString(e, at, e.length() - at, word.data(), word.length(), options, true);
      if (hit == NotFound) break;
      ++n;
      at = hit + std::max<size_t>(word.length(), 1);
    }
    return n;
  };
  size_t total = count(primary);
  for (const String& word : secondary) total += count(word);
  return total;
}

namespace {

// One step of the multi-string searches: the hit of `s` in [start, end), or
// NotFoundRange.
Range findQueryString(const FastWordEnumerator& e, const String& s, size_t start, size_t end, unsigned options,
                      bool anchored, bool exactPhrase) {
  size_t span = end > start ? end - start : 0;
  size_t length = s.length();
  if (length == 0) return NotFoundRange;
  if (length == 1 && (span == 0 || s[0] == u'*')) return NotFoundRange;
  if (length > span) return NotFoundRange;
  if (length >= 3 && !exactPhrase) {
    std::vector<String> words = wordsUsingDefaultSeparation(s);
    if (words.size() >= 2) return FindNonExactPhraseInString(e, words, start, span, options, anchored);
  }
  size_t hit = FindWordInString(e, start, span, s.data(), length, options, anchored);
  return hit == NotFound ? NotFoundRange : Range{hit, length};
}

size_t clippedEnd(const FastWordEnumerator& e, Range range) {
  return range.location + std::min(range.length, e.length() - std::min(range.location, e.length()));
}

}  // namespace

Range findNextQueryTerm(const FastWordEnumerator& e, std::vector<String>& strings, bool isMutable, Range range,
                        bool caseSensitive, bool anchored, bool exactPhrase) {
  if (range.location >= e.length()) return NotFoundRange;
  size_t end = clippedEnd(e, range);
  unsigned options = caseSensitive ? 0 : kSearchCaseInsensitive;
  Range best = NotFoundRange;
  for (size_t i = 0; i < strings.size();) {
    size_t spanEnd = best.found() ? best.location : end;
    Range hit = findQueryString(e, strings[i], range.location, spanEnd, options, anchored, exactPhrase);
    if (hit.found() && (!best.found() || hit.location < best.location)) best = hit;
    if (!hit.found() && isMutable && !best.found()) {
      strings.erase(strings.begin() + static_cast<std::ptrdiff_t>(i));
      continue;
    }
    ++i;
  }
  return best;
}

Range findPreviousQueryTerm(const FastWordEnumerator& e, std::vector<String>& strings, bool isMutable, Range range,
                            bool caseSensitive, bool anchored, bool exactPhrase) {
  if (range.location >= e.length()) return NotFoundRange;
  size_t end = clippedEnd(e, range);
  unsigned options = kSearchBackwards | (caseSensitive ? 0 : kSearchCaseInsensitive);
  Range best = NotFoundRange;
  for (size_t i = 0; i < strings.size();) {
    Range hit = findQueryString(e, strings[i], range.location, end, options, anchored, exactPhrase);
    if (hit.found() && (!best.found() || hit.location > best.location)) best = hit;
    if (!hit.found() && isMutable && !best.found()) {
      strings.erase(strings.begin() + static_cast<std::ptrdiff_t>(i));
      continue;
    }
    ++i;
  }
  return best;
}

Range findNextQueryTerm(const String& s, std::vector<String>& strings, bool isMutable, Range range, bool caseSensitive,
                        bool anchored, bool exactPhrase) {
  if (range.location >= s.length()) return NotFoundRange;
  auto enumerator = FastWordEnumerator::enumeratorWithString(s);
  if (!enumerator) return NotFoundRange;
  return findNextQueryTerm(*enumerator, strings, isMutable, range, caseSensitive, anchored, exactPhrase);
}

Range findPreviousQueryTerm(const String& s, std::vector<String>& strings, bool isMutable, Range range,
                            bool caseSensitive, bool anchored, bool exactPhrase) {
  if (range.location >= s.length()) return NotFoundRange;
  auto enumerator = FastWordEnumerator::enumeratorWithString(s);
  if (!enumerator) return NotFoundRange;
  return findPreviousQueryTerm(*enumerator, strings, isMutable, range, caseSensitive, anchored, exactPhrase);
}

}  // namespace norvane::query
