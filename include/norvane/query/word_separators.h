// The process-wide word separators: which code units divide words.
//
// Two character set reps (see text/chars.h) decide what a word is for the
// whole library. The word separators hold the white units, control units,
// the zero-width space, and every unit of the Unicode punctuation and symbol
// categories (so "-", ".", "\"", "'", "*", "?", "[" and "]" are all
// separators); a letter, a mark or a digit is never one. The wildcard
// separators are the same set without "*", "?", "[" and "]", so that a
// wildcard pattern stays one word.
//
// Both reps are built once, on first use, and are read without a lock
// afterwards. `removeSymbolsFromWordSeparators` changes them in place and is
// meant for set-up time, before any enumerator is made.
#pragma once

#include <cstddef>
#include <vector>

#include "norvane/core/string.h"
#include "norvane/text/chars.h"

namespace norvane::query {

// Builds the word separators (once; later calls do nothing).
void initSeparators();
// Builds the wildcard separators from the word separators as they stand at
// that moment (once; later calls do nothing).
void initWildcardSeparators();

text::CharacterSetRep defaultWordSeparators();
text::CharacterSetRep defaultWildcardSeparators();

// Every unit of `symbols` becomes a word character, in both reps, for the
// rest of the process. A null or empty string changes nothing.
void removeSymbolsFromWordSeparators(const String& symbols);

// The words of `s` as a case-sensitive word enumerator cuts them (so Asian
// runs are split when FastWordEnumerator::splitAsianWords() is on). Empty
// for a null or empty string.
std::vector<String> wordsUsingDefaultSeparation(const String& s);
size_t numberOfWordsUsingDefaultSeparation(const String& s);

}  // namespace norvane::query
