// FastWordEnumerator: the word index of one text.
//
// The enumerator cuts a text into words once, when it is made, and keeps one
// type byte per code unit:
//
//   1  the unit is a word separator (see word_separators.h)
//   2  the unit begins a word
//   4  the unit ends a word
//
// A one-unit word has type 6, a unit inside a word type 0, and a separator is
// never part of a word. Every later question about word positions is then a
// bounds check and a byte load. All positions and lengths count code units.
//
// Runs of Chinese and Japanese text hold no separators; when
// `splitAsianWords()` is on, a word holding a unit of U+3000..U+30FF,
// U+3400..U+4DBF or U+4E00..U+9FFF is further cut by ICU's dictionary-based
// word break iterator for `locale()`. Latin letters beside Han letters are
// cut apart; a token with digits or punctuation stays attached to what stands
// before it.
//
// A wildcard text is indexed under the wildcard separators, which keep "*",
// "?", "[" and "]" inside words, and a bracket expression "[...]" is kept
// whole even when it holds separators ("a[b c]d" is one word).
//
// An enumerator is built by one thread; afterwards its read operations touch
// no shared mutable state and may run concurrently.
#pragma once

#include <unicode/locid.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <vector>

#include "norvane/core/string.h"
#include "norvane/core/types.h"

namespace norvane::query {

class FastWordEnumerator {
 public:
  static constexpr uint8_t kSeparator = 1;
  static constexpr uint8_t kWordBeginning = 2;
  static constexpr uint8_t kWordEnd = 4;

  // --- Creation. Each factory answers null for a null or empty text, or
  // when memory for the index cannot be had. ---

  // Indexes `s`. Without case folding the enumerator reads the string's own
  // units (nothing is copied, the string is retained); with `caseInsensitive`
  // it holds a copy folded through text::upperCharsTable(), so substrings
  // taken from it are upper case and queries must be folded the same way.
  static std::unique_ptr<FastWordEnumerator> enumeratorWithString(const String& s, bool caseInsensitive = false,
                                                                  bool wildcard = false);
  // Copies the units (upper-cased if asked) and indexes them as plain text.
  static std::unique_ptr<FastWordEnumerator> enumeratorWithCharacters(const unichar* units, size_t length,
                                                                      bool caseInsensitive = false);
  // Indexes the buffer as it stands, as plain text. The caller keeps it alive
  // unless `freeWhenDone`, in which case it must come from std::malloc and
  // the enumerator std::free()s it.
  static std::unique_ptr<FastWordEnumerator> enumeratorWithCharactersNoCopy(const unichar* units, size_t length,
                                                                            bool freeWhenDone);

  // An enumerator without text: every query answers as for the empty text.
  FastWordEnumerator() = default;
  ~FastWordEnumerator() { invalidate(); }
  FastWordEnumerator(const FastWordEnumerator&) = delete;
  FastWordEnumerator& operator=(const FastWordEnumerator&) = delete;

  // Re-targets the enumerator at another buffer, indexed as plain text and
  // owned as in enumeratorWithCharactersNoCopy. The same pointer and length
  // change nothing; otherwise the enumerator is invalidated first, and a null
  // buffer or length 0 leaves it empty. False if the index cannot be had.
  bool setCharacters(const unichar* units, size_t length, bool freeWhenDone);
  // Drops the text (freeing it if owned) and the index. Safe to call twice.
  void invalidate();

  // --- Process-wide settings ---

  // The current locale, from LC_ALL, LC_CTYPE or LANG (the first one set),
  // else ICU's default; fetched once.
  static const icu::Locale& locale();
  // Whether Asian runs are split into words; false at start. Read when an
  // index is built, so it governs enumerators made after the change.
  static bool splitAsianWords();
  static void setSplitAsianWords(bool split);

  // --- Accessors ---

  // The string the text came from; null for text given as raw units. A
  // case-insensitive enumerator reads its folded copy, not this string.
  const String& string() const { return string_; }
  const unichar* characters() const { return characters_; }
  size_t length() const { return length_; }
  bool isWildcard() const { return wildcard_; }
  // The type bytes, one per unit; null for an empty enumerator.
  const uint8_t* index() const { return index_; }
  size_t numberOfWords() const { return numWords_; }
  // The number of words of at least `minLength` units (every word for a
  // minimum below 2).
  size_t numberOfWords(size_t minLength) const;

  // Null for a zero-length range or one that passes the end. The lower and
  // upper forms pass each unit through text::toLower / text::toUpper.
  String substringWithRange(Range range) const;
  String lowercaseSubstringWithRange(Range range) const;
  String uppercaseSubstringWithRange(Range range) const;

  // --- Position queries; all false (type 0) at or past the end ---

  uint8_t typeAtIndex(size_t i) const { return i < length_ ? index_[i] : 0; }
  bool isWordSeparatorAtIndex(size_t i) const { return typeAtIndex(i) & kSeparator; }
  bool isWordBeginningAtIndex(size_t i) const { return typeAtIndex(i) & kWordBeginning; }
  bool isWordEndAtIndex(size_t i) const { return typeAtIndex(i) & kWordEnd; }
  bool isWordAnchoredAtIndex(size_t i) const { return typeAtIndex(i) & (kWordBeginning | kWordEnd); }
  // Whether unit i - 1 ends a word; i == length() is allowed, i == 0 is false.
  bool isWordEndBeforeIndex(size_t i) const { return i > 0 && i <= length_ && (index_[i - 1] & kWordEnd); }
  // Whether some unit of the range, clipped to the text, is a separator.
  bool containsSeparatorInRange(Range range) const;

  // The first word beginning at or after `index` and before min(end,
  // length()); NotFound if none.
  size_t locationOfNextWordFromIndex(size_t index, size_t end) const;
  // Walking back from `index` (inclusive) to `start` (inclusive), the first
  // word beginning; NotFound if none, or if `index` is past the text or
  // before `start`.
  size_t locationOfPreviousWordFromIndex(size_t index, size_t start) const;
  // The word holding unit `index`; NotFoundRange for a separator or an index
  // past the text.
  Range rangeOfWordAtIndex(size_t index) const;
  // The word found by locationOfNextWordFromIndex; its end is looked up
  // without regard to `end`, so the range may pass it.
  Range rangeOfNextWordFromIndex(size_t index, size_t end) const;
  Range enumerateNextWordAtIndex(size_t index) const { return rangeOfNextWordFromIndex(index, length_); }
  // Walking back from `index` (inclusive; clamped to the last unit) to the
  // first word end at or after `start`, the word that ends there. Its
  // beginning may lie before `start`. NotFoundRange if there is none.
  Range rangeOfPreviousWordFromIndex(size_t index, size_t start) const;

  // --- Enumeration ---

  // Answers true to stop.
  using WordHandler = bool (*)(const FastWordEnumerator& enumerator, size_t location, size_t length, void* context);
  // Delivers the words of `range` (clipped to the text) in order and answers
  // how many were delivered, not counting the one at which the callback said
  // stop. Words are closed by separators and end bits, so a range that starts
  // inside a word delivers the word's tail, one that ends inside a word its
  // front. A null handler or an empty range gives 0.
  size_t enumerateWordsInRange(Range range, WordHandler handler, void* context) const;
  // The same with any callable bool(const FastWordEnumerator&, size_t
  // location, size_t length).
  template <class Block>
  size_t enumerateWordsInRange(Range range, Block&& block) const {
    using B = std::remove_reference_t<Block>;
    return enumerateWordsInRange(
        range,
        [](const FastWordEnumerator& e, size_t location, size_t length, void* context) -> bool {
          return (*static_cast<B*>(context))(e, location, length);
        },
        const_cast<void*>(static_cast<const void*>(std::addressof(block))));
  }

  // --- Bulk operations ---

  // Appends every word of at least `minLength` units, in text order. If
  // `hyphenated` is given it tells whether the whole text is one compound:
  // two or more words with exactly one "-" between neighbours (a-b-c), or
  // two or more one-letter words with exactly one "." between neighbours
  // (u.s.a). A null `words` sets the flag to false and does nothing else.
  void addWordsTo(std::vector<String>* words, size_t minLength, bool* hyphenated = nullptr) const;
  // The text with one U+0020 put in front of every word that follows the
  // previous word without a separator between (the cuts of the Asian split).
  // The source string itself when there is no such word.
  String stringBySeparatingWords() const;

 private:
  friend class WordIndexBuilder;
  // Allocates and fills the index for characters_ / length_.
  bool buildIndex(bool wildcard);

  uint8_t* index_ = nullptr;
  const unichar* characters_ = nullptr;
  size_t length_ = 0;
  String string_;
  size_t numWords_ = 0;
  bool freeCharacters_ = false;
  bool wildcard_ = false;
};

}  // namespace norvane::query
