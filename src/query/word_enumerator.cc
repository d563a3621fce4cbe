// FastWordEnumerator: building the type index and answering from it.

#include "norvane/query/word_enumerator.h"

#include <unicode/brkiter.h>
#include <unicode/utext.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "norvane/query/word_separators.h"
#include "norvane/text/chars.h"

namespace norvane::query {
namespace {

std::atomic<bool> gSplitAsianWords{false};

// The units whose words are handed to the dictionary-based splitter.
inline bool isAsianUnit(unichar u) {
  return (u >= 0x4E00 && u <= 0x9FFF) || (u >= 0x3000 && u <= 0x30FF) || (u >= 0x3400 && u <= 0x4DBF);
}

icu::Locale localeFromEnvironment() {
  for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const char* value = std::getenv(variable);
    if (!value || !*value) continue;
    std::string id(value);
    id = id.substr(0, id.find_first_of(".@"));  // de_DE.UTF-8@euro -> de_DE
    if (id.empty() || id == "C" || id == "POSIX") break;
    icu::Locale locale = icu::Locale::createCanonical(id.c_str());
    if (!locale.isBogus()) return locale;
    break;
  }
  return icu::Locale::getDefault();
}

}  // namespace

// Fills the index of one enumerator. The common case, plain text without the
// Asian split, is a single branch-free pass; wildcard texts and the split go
// through the general walk.
class WordIndexBuilder {
 public:
  explicit WordIndexBuilder(FastWordEnumerator& e) : e_(e), units_(e.characters_), index_(e.index_) {}
  ~WordIndexBuilder() {
    if (text_) utext_close(text_);
  }

  void buildPlain(text::CharacterSetRep separators) {
    const size_t n = e_.length_;
    unsigned previous = text::isInRep(separators, units_[0]);
    unsigned previousType = previous ? FastWordEnumerator::kSeparator : FastWordEnumerator::kWordBeginning;
    size_t words = previous ^ 1;
    for (size_t i = 1; i < n; ++i) {
      const unsigned current = text::isInRep(separators, units_[i]);
      const unsigned begins = previous & (current ^ 1);
      const unsigned ends = current & (previous ^ 1);
      index_[i - 1] = static_cast<uint8_t>(previousType | (ends << 2));
      previousType = current | (begins << 1);
      words += begins;
      previous = current;
    }
    index_[n - 1] = static_cast<uint8_t>(previousType | ((previous ^ 1) << 2));
    e_.numWords_ = words;
  }

  void buildGeneral(text::CharacterSetRep separators, bool wildcard, bool splitAsian) {
    const size_t n = e_.length_;
    std::memset(index_, 0, n);
    size_t wordStart = 0;
    bool split = false;
    for (size_t i = 0; i < n; ++i) {
      const unichar u = units_[i];
      if (text::isInRep(separators, u)) {
        index_[i] = FastWordEnumerator::kSeparator;
        if (wordStart < i) markWord(wordStart, i - wordStart, split);
        wordStart = i + 1;
        split = false;
      } else if (wildcard && u == u'[' && i + 1 < n && units_[i + 1] != u']') {
        // A bracket expression stays inside its word, separators and all.
        size_t close = i + 1;
        while (close < n && units_[close] != u']') ++close;
        i = close - 1;
      } else if (splitAsian && isAsianUnit(u)) {
        split = true;
      }
    }
    if (wordStart < n) markWord(wordStart, n - wordStart, split);
  }

 private:
  void markWord(size_t start, size_t length, bool split) {
    index_[start] |= FastWordEnumerator::kWordBeginning;
    index_[start + length - 1] |= FastWordEnumerator::kWordEnd;
    ++e_.numWords_;
    if (split) splitAsianRun(start, length);
  }

  // Cuts one word at the token boundaries of the dictionary-based word break
  // iterator where two letter tokens meet and one side is Asian. If ICU
  // cannot give an iterator, the run stays one word.
  void splitAsianRun(size_t start, size_t length) {
    if (!openTokenizer(start, length)) return;
    bool previousHasNonLetters = true;
    bool previousEndsAsian = false;
    int32_t from = tokenizer_->first();
    for (int32_t to = tokenizer_->next(); to != icu::BreakIterator::DONE; from = to, to = tokenizer_->next()) {
      const size_t tokenStart = start + static_cast<size_t>(from);
      const size_t tokenEnd = start + static_cast<size_t>(to);
      const bool hasNonLetters =
          tokenizer_->getRuleStatus() < UBRK_WORD_LETTER || containsNonLetter(tokenStart, tokenEnd);
      if (!hasNonLetters && !previousHasNonLetters && (previousEndsAsian || isAsianUnit(units_[tokenStart]))) {
        if (tokenStart != start) index_[tokenStart - 1] |= FastWordEnumerator::kWordEnd;
        if (!(index_[tokenStart] & FastWordEnumerator::kWordBeginning)) {
          index_[tokenStart] |= FastWordEnumerator::kWordBeginning;
          ++e_.numWords_;
        }
        index_[tokenEnd - 1] |= FastWordEnumerator::kWordEnd;
      }
      previousHasNonLetters = hasNonLetters;
      previousEndsAsian = isAsianUnit(units_[tokenEnd - 1]);
    }
  }

  // One iterator serves all runs of the text.
  bool openTokenizer(size_t start, size_t length) {
    UErrorCode status = U_ZERO_ERROR;
    if (!tokenizer_) {
      if (tokenizerFailed_) return false;
      tokenizer_.reset(icu::BreakIterator::createWordInstance(FastWordEnumerator::locale(), status));
      if (U_FAILURE(status) || !tokenizer_) {
        tokenizer_.reset();
        tokenizerFailed_ = true;
        return false;
      }
    }
    status = U_ZERO_ERROR;
    text_ = utext_openUChars(text_, units_ + start, static_cast<int64_t>(length), &status);
    if (U_FAILURE(status)) return false;
    tokenizer_->setText(text_, status);
    return U_SUCCESS(status);
  }

  bool containsNonLetter(size_t from, size_t to) const {
    const text::CharacterSetRep letters = text::alphaCharacterSetRep();
    for (size_t i = from; i < to; ++i) {
      const unichar u = units_[i];
      if (!text::isInRep(letters, u) && (u < 0xD800 || u > 0xDFFF)) return true;
    }
    return false;
  }

  FastWordEnumerator& e_;
  const unichar* units_;
  uint8_t* index_;
  std::unique_ptr<icu::BreakIterator> tokenizer_;
  bool tokenizerFailed_ = false;
  UText* text_ = nullptr;
};

// --- Creation ---

std::unique_ptr<FastWordEnumerator> FastWordEnumerator::enumeratorWithString(const String& s, bool caseInsensitive,
                                                                             bool wildcard) {
  if (s.isEmpty()) return nullptr;
  std::unique_ptr<FastWordEnumerator> e(new (std::nothrow) FastWordEnumerator);
  if (!e) return nullptr;
  e->string_ = s;
  e->length_ = s.length();
  if (caseInsensitive) {
    auto* copy = static_cast<unichar*>(std::malloc(s.length() * sizeof(unichar)));
    if (!copy) return nullptr;
    const text::ConversionTable upper = text::upperCharsTable();
    const unichar* units = s.data();
    for (size_t i = 0; i < s.length(); ++i) copy[i] = upper[units[i]];
    e->characters_ = copy;
    e->freeCharacters_ = true;
  } else {
    e->characters_ = s.data();
  }
  if (!e->buildIndex(wildcard)) return nullptr;
  return e;
}

std::unique_ptr<FastWordEnumerator> FastWordEnumerator::enumeratorWithCharacters(const unichar* units, size_t length,
                                                                                 bool caseInsensitive) {
  if (!units || length == 0) return nullptr;
  auto* copy = static_cast<unichar*>(std::malloc(length * sizeof(unichar)));
  if (!copy) return nullptr;
  if (caseInsensitive) {
    const text::ConversionTable upper = text::upperCharsTable();
    for (size_t i = 0; i < length; ++i) copy[i] = upper[units[i]];
  } else {
    std::memcpy(copy, units, length * sizeof(unichar));
  }
  return enumeratorWithCharactersNoCopy(copy, length, true);
}

std::unique_ptr<FastWordEnumerator> FastWordEnumerator::enumeratorWithCharactersNoCopy(const unichar* units,
                                                                                       size_t length,
                                                                                       bool freeWhenDone) {
  if (!units || length == 0) {
    if (freeWhenDone) std::free(const_cast<unichar*>(units));
    return nullptr;
  }
  std::unique_ptr<FastWordEnumerator> e(new (std::nothrow) FastWordEnumerator);
  if (!e) {
    if (freeWhenDone) std::free(const_cast<unichar*>(units));
    return nullptr;
  }
  if (!e->setCharacters(units, length, freeWhenDone)) return nullptr;
  return e;
}

bool FastWordEnumerator::setCharacters(const unichar* units, size_t length, bool freeWhenDone) {
  if (units == characters_ && length == length_) return true;
  invalidate();
  if (!units || length == 0) return true;
  characters_ = units;
  length_ = length;
  freeCharacters_ = freeWhenDone;
  return buildIndex(false);
}

bool FastWordEnumerator::buildIndex(bool wildcard) {
  index_ = new (std::nothrow) uint8_t[length_];
  if (!index_) {
    invalidate();
    return false;
  }
  numWords_ = 0;
  wildcard_ = wildcard;
  const bool splitAsian = splitAsianWords();
  WordIndexBuilder builder(*this);
  if (!wildcard && !splitAsian) {
    builder.buildPlain(defaultWordSeparators());
  } else {
    builder.buildGeneral(wildcard ? defaultWildcardSeparators() : defaultWordSeparators(), wildcard, splitAsian);
  }
  return true;
}

void FastWordEnumerator::invalidate() {
  delete[] index_;
  index_ = nullptr;
  if (freeCharacters_) std::free(const_cast<unichar*>(characters_));
  characters_ = nullptr;
  freeCharacters_ = false;
  string_ = String();
  length_ = 0;
  numWords_ = 0;
  wildcard_ = false;
}

// --- Process-wide settings ---

const icu::Locale& FastWordEnumerator::locale() {
  static const icu::Locale locale = localeFromEnvironment();
  return locale;
}

bool FastWordEnumerator::splitAsianWords() {
  return gSplitAsianWords.load(std::memory_order_relaxed);
}
void FastWordEnumerator::setSplitAsianWords(bool split) {
  gSplitAsianWords.store(split, std::memory_order_relaxed);
}

// --- Counting and substrings ---

size_t FastWordEnumerator::numberOfWords(size_t minLength) const {
  if (minLength < 2) return numWords_;
  size_t count = 0;
  for (size_t i = 0; i < length_; ++i) {
    if (!(index_[i] & kWordBeginning)) continue;
    size_t last = i;
    while (!(index_[last] & kWordEnd)) ++last;
    if (last - i + 1 >= minLength) ++count;
    i = last;
  }
  return count;
}

namespace {

bool isWithin(Range range, size_t length) {
  return range.length != 0 && range.location <= length && range.length <= length - range.location;
}

}  // namespace

String FastWordEnumerator::substringWithRange(Range range) const {
  if (!isWithin(range, length_)) return String();
  return String(characters_ + range.location, range.length);
}

String FastWordEnumerator::lowercaseSubstringWithRange(Range range) const {
  if (!isWithin(range, length_)) return String();
  std::u16string units(characters_ + range.location, range.length);
  for (unichar& u : units) u = text::toLower(u);
  return String::fromU16(std::move(units));
}

String FastWordEnumerator::uppercaseSubstringWithRange(Range range) const {
  if (!isWithin(range, length_)) return String();
  std::u16string units(characters_ + range.location, range.length);
  for (unichar& u : units) u = text::toUpper(u);
  return String::fromU16(std::move(units));
}

// --- Position queries ---

bool FastWordEnumerator::containsSeparatorInRange(Range range) const {
  const size_t from = std::min(range.location, length_);
  const size_t to = from + std::min(range.length, length_ - from);
  for (size_t i = from; i < to; ++i) {
    if (index_[i] & kSeparator) return true;
  }
  return false;
}

size_t FastWordEnumerator::locationOfNextWordFromIndex(size_t index, size_t end) const {
  const size_t limit = std::min(end, length_);
  for (size_t i = index; i < limit; ++i) {
    if (index_[i] & kWordBeginning) return i;
  }
  return NotFound;
}

size_t FastWordEnumerator::locationOfPreviousWordFromIndex(size_t index, size_t start) const {
  if (index >= length_ || index < start) return NotFound;
  for (size_t i = index + 1; i-- > start;) {
    if (index_[i] & kWordBeginning) return i;
  }
  return NotFound;
}

Range FastWordEnumerator::rangeOfWordAtIndex(size_t index) const {
  if (index >= length_ || (index_[index] & kSeparator)) return NotFoundRange;
  size_t first = index;
  while (first > 0 && !(index_[first] & kWordBeginning)) --first;
  size_t last = index;
  while (last + 1 < length_ && !(index_[last] & kWordEnd)) ++last;
  return {first, last - first + 1};
}

Range FastWordEnumerator::rangeOfNextWordFromIndex(size_t index, size_t end) const {
  const size_t first = locationOfNextWordFromIndex(index, end);
  if (first == NotFound) return NotFoundRange;
  size_t last = first;
  while (last + 1 < length_ && !(index_[last] & kWordEnd)) ++last;
  return {first, last - first + 1};
}

Range FastWordEnumerator::rangeOfPreviousWordFromIndex(size_t index, size_t start) const {
  if (length_ == 0) return NotFoundRange;
  index = std::min(index, length_ - 1);
  for (size_t last = index + 1; last-- > start;) {
    if (!(index_[last] & kWordEnd)) continue;
    size_t first = last;
    while (first > 0 && !(index_[first] & kWordBeginning)) --first;
    return {first, last - first + 1};
  }
  return NotFoundRange;
}

// --- Enumeration ---

size_t FastWordEnumerator::enumerateWordsInRange(Range range, WordHandler handler, void* context) const {
  const size_t end = range.location + std::min(range.length, length_ - std::min(range.location, length_));
  if (!handler || range.location >= end) return 0;
  size_t count = 0;
  size_t wordStart = range.location;
  for (size_t i = range.location; i < end; ++i) {
    const uint8_t type = index_[i];
    if (!(type & (kSeparator | kWordEnd))) continue;
    const size_t length = i - wordStart + ((type & kWordEnd) ? 1 : 0);
    if (length != 0) {
      if (handler(*this, wordStart, length, context)) return count;
      ++count;
    }
    wordStart = i + 1;
  }
  if (wordStart < end) {
    if (handler(*this, wordStart, end - wordStart, context)) return count;
    ++count;
  }
  return count;
}

// --- Bulk operations ---

void FastWordEnumerator::addWordsTo(std::vector<String>* words, size_t minLength, bool* hyphenated) const {
  if (!words) {
    if (hyphenated) *hyphenated = false;
    return;
  }
  bool hyphenCompound = numWords_ > 1;
  bool dottedAbbreviation = numWords_ > 1;
  const text::CharacterSetRep letters = text::alphaCharacterSetRep();
  size_t gapStart = 0;
  for (size_t i = 0; i < length_; ++i) {
    if (!(index_[i] & kWordBeginning)) continue;
    size_t last = i;
    while (!(index_[last] & kWordEnd)) ++last;
    if (i != 0) {
      const bool oneUnitGap = i - gapStart == 1;
      hyphenCompound = hyphenCompound && oneUnitGap && characters_[i - 1] == u'-';
      dottedAbbreviation = dottedAbbreviation && oneUnitGap && characters_[i - 1] == u'.';
    }
    const size_t length = last - i + 1;
    if (length >= minLength) {
      words->emplace_back(characters_ + i, length);
      dottedAbbreviation = dottedAbbreviation && length == 1 && text::isInRep(letters, characters_[i]);
    }
    gapStart = last + 1;
    i = last;
  }
  if (hyphenated) *hyphenated = hyphenCompound || dottedAbbreviation;
}

String FastWordEnumerator::stringBySeparatingWords() const {
  if (length_ == 0) return String();
  size_t cuts = 0;
  for (size_t i = 1; i < length_; ++i) {
    if ((index_[i] & kWordBeginning) && !(index_[i - 1] & kSeparator)) ++cuts;
  }
  if (cuts == 0 && !freeCharacters_ && !string_.isNull()) return string_;
  std::u16string result;
  result.reserve(length_ + cuts);
  for (size_t i = 0; i < length_; ++i) {
    if (i > 0 && (index_[i] & kWordBeginning) && !(index_[i - 1] & kSeparator)) result.push_back(u' ');
    result.push_back(characters_[i]);
  }
  return String::fromU16(std::move(result));
}

}  // namespace norvane::query
