// Wildcard patterns and texts from fuzzed bytes: classification, the
// whole-string matchers, word-wise search and the fuzzy score must neither
// crash nor disagree with each other.
//
// Input: pattern bytes, a 0 byte, text bytes. Each byte is one code unit;
// bytes 0xF0..0xFF become Han and Latin-1 letters so that the Asian split and
// the case tables are reached.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "norvane/query/wildcards.h"
#include "norvane/query/word_enumerator.h"

using namespace norvane;
using namespace norvane::query;

namespace {

std::u16string unitsFromBytes(const uint8_t* data, size_t size) {
  std::u16string units;
  units.reserve(size);
  for (size_t i = 0; i < size; ++i) {
    const uint8_t b = data[i];
    units.push_back(b >= 0xF8 ? static_cast<char16_t>(0x4E2D + (b & 7)) : static_cast<char16_t>(b));
  }
  return units;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const uint8_t* split = static_cast<const uint8_t*>(std::memchr(data, 0, size));
  const size_t patternSize = split ? static_cast<size_t>(split - data) : size / 2;
  const size_t textStart = split ? patternSize + 1 : patternSize;
  const std::u16string pattern = unitsFromBytes(data, patternSize);
  const std::u16string text = unitsFromBytes(data + textStart, size - textStart);
  const unichar* p = pattern.data();
  const unichar* pEnd = p + pattern.size();
  const unichar* t = text.data();
  const unichar* tEnd = t + text.size();

  // Without brackets the two dialects are the same language.
  const bool plain = stringMatchesWildcard(t, tEnd, p, pEnd);
  const bool unix = stringMatchesUnixWildcard(t, tEnd, p, pEnd);
  if (pattern.find(u'[') == std::u16string::npos && plain != unix) std::abort();
  // A pattern matches itself when it holds no symbol.
  if (pattern.find_first_of(u"*?[") == std::u16string::npos && !stringMatchesWildcard(p, pEnd, p, pEnd)) std::abort();

  std::u16string rewritten = pattern;
  size_t offset = 0;
  size_t length = 0;
  const WildcardType type =
      optimizeWildcard(rewritten.data(), rewritten.data() + rewritten.size(), &offset, &length, size & 3);
  if (type != WildcardType::kNoMatch && offset + length > pattern.size()) std::abort();
  minWildcardLen(p, pEnd);
  maxWildcardLen(p, pEnd);

  const String patternString(pattern);
  const String textString(text);
  isCaseInsensitiveLikeUnixWildcard(textString, patternString);
  isCaseInsensitiveLikeWildcard(textString, patternString);
  stringMatchesUnixWildcardFuzzy(t, text.size(), p, pattern.size());

  FastWordEnumerator::setSplitAsianWords(size & 4);
  if (auto e = FastWordEnumerator::enumeratorWithString(textString, size & 8, false)) {
    const unsigned comparison = static_cast<unsigned>(size >> 4) & 7;
    for (bool forward : {true, false}) {
      const Range hit = FindWildcardStringInCharacters(*e, 0, e->length(), patternString, comparison, 1, forward, true);
      if (hit.found() && hit.end() > e->length()) std::abort();
    }
    e->stringBySeparatingWords();
  }
  wordsUsingWildcardSeparation(patternString);
  return 0;
}
