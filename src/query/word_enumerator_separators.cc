// The process-wide word and wildcard separators.

#include <unicode/uchar.h>

#include <cstring>
#include <mutex>

#include "norvane/query/word_enumerator.h"
#include "norvane/query/word_separators.h"

namespace norvane::query {
namespace {

constexpr size_t kRepSize = 8192;

uint8_t gWordSeparators[kRepSize];
uint8_t gWildcardSeparators[kRepSize];
std::once_flag gWordSeparatorsOnce;
std::once_flag gWildcardSeparatorsOnce;

void addUnit(uint8_t* rep, unichar u) {
  rep[u >> 3] |= static_cast<uint8_t>(1u << (u & 7));
}
void removeUnit(uint8_t* rep, unichar u) {
  rep[u >> 3] &= static_cast<uint8_t>(~(1u << (u & 7)));
}

bool isPunctuationOrSymbol(UChar32 c) {
  switch (u_charType(c)) {
    case U_DASH_PUNCTUATION:
    case U_START_PUNCTUATION:
    case U_END_PUNCTUATION:
    case U_CONNECTOR_PUNCTUATION:
    case U_OTHER_PUNCTUATION:
    case U_INITIAL_PUNCTUATION:
    case U_FINAL_PUNCTUATION:
    case U_MATH_SYMBOL:
    case U_CURRENCY_SYMBOL:
    case U_MODIFIER_SYMBOL:
    case U_OTHER_SYMBOL:
    case U_CONTROL_CHAR:
      return true;
    default:
      return false;
  }
}

void buildWordSeparators() {
  const text::CharacterSetRep white = text::whiteCharacterSetRep();
  std::memcpy(gWordSeparators, white, kRepSize);
  for (UChar32 c = 0; c < 0x10000; ++c) {
    if (c >= 0xD800 && c <= 0xDFFF) continue;  // halves of supplementary characters stay inside words
    if (isPunctuationOrSymbol(c)) addUnit(gWordSeparators, static_cast<unichar>(c));
  }
  addUnit(gWordSeparators, 0x200B);  // zero-width space
}

void buildWildcardSeparators() {
  initSeparators();
  std::memcpy(gWildcardSeparators, gWordSeparators, kRepSize);
  for (unichar u : {u'*', u'?', u'[', u']'}) removeUnit(gWildcardSeparators, u);
}

}  // namespace

void initSeparators() {
  std::call_once(gWordSeparatorsOnce, buildWordSeparators);
}
void initWildcardSeparators() {
  std::call_once(gWildcardSeparatorsOnce, buildWildcardSeparators);
}

text::CharacterSetRep defaultWordSeparators() {
  initSeparators();
  return gWordSeparators;
}

text::CharacterSetRep defaultWildcardSeparators() {
  initWildcardSeparators();
  return gWildcardSeparators;
}

void removeSymbolsFromWordSeparators(const String& symbols) {
  if (symbols.isEmpty()) return;
  initWildcardSeparators();  // builds both, so neither is derived again later
  for (unichar u : symbols.view()) {
    removeUnit(gWordSeparators, u);
    removeUnit(gWildcardSeparators, u);
  }
}

std::vector<String> wordsUsingDefaultSeparation(const String& s) {
  std::vector<String> words;
  if (auto enumerator = FastWordEnumerator::enumeratorWithString(s)) enumerator->addWordsTo(&words, 1);
  return words;
}

size_t numberOfWordsUsingDefaultSeparation(const String& s) {
  auto enumerator = FastWordEnumerator::enumeratorWithString(s);
  return enumerator ? enumerator->numberOfWords() : 0;
}

}  // namespace norvane::query
