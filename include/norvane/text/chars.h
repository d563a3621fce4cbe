// Character set reps, conversion tables and fast compares and searches over
// raw code-unit buffers.
//
// A character set rep is an 8,192-byte bitmap of the first Unicode plane:
// unit u is a member when bit (u & 7) of byte (u >> 3) is set. A conversion
// table maps each of the 65,536 code units to exactly one unit. Both are
// built once, on first use, from the Unicode data in ICU; afterwards they are
// read-only and shared by all threads without a lock.
//
// "White", "letter" and "case-insensitive" throughout the library mean these
// reps and tables. Nothing here allocates after the tables exist.
#pragma once

#include <cstdint>
#include <string_view>

#include "norvane/core/string.h"
#include "norvane/core/types.h"

namespace norvane::text {

using CharacterSetRep = const uint8_t*;
using ConversionTable = const unichar*;

inline bool isInRep(CharacterSetRep rep, unichar u) {
  return (rep[u >> 3] >> (u & 7)) & 1;
}

// The reps. "White" holds Unicode white space and line ends plus U+0000,
// U+0003, U+00A0, U+FEFF and U+FFFC; "space" holds Zs, tab and U+0000 but no
// line ends. Alpha is L* and M*, alphaNum adds N*, digit is Nd, lower is Ll,
// upper is Lu and Lt.
CharacterSetRep emptyCharacterSetRep();
CharacterSetRep spaceCharacterSetRep();
CharacterSetRep whiteCharacterSetRep();
CharacterSetRep alphaCharacterSetRep();
CharacterSetRep alphaNumCharacterSetRep();
CharacterSetRep digitCharacterSetRep();
CharacterSetRep lowerCharacterSetRep();
CharacterSetRep upperCharacterSetRep();

// The tables. A unit whose image would not be exactly one unit maps to
// itself; units outside the letter sets are identities in all five.
// "Umlauts" folds diacritics off letters (NFD, drop marks, NFC).
ConversionTable lowerCharsTable();
ConversionTable upperCharsTable();
ConversionTable umlautsCharsTable();
ConversionTable lowerUmlautsCharsTable();  // lower[umlauts[u]]
ConversionTable upperUmlautsCharsTable();  // upper[umlauts[u]]

// Single-unit conversions.
unichar toLower(unichar u);
unichar toUpper(unichar u);
unichar toAscii(unichar u);       // umlauts entry if below 128, else U+0020
unichar toUpperAscii(unichar u);  // umlauts entry, ASCII upper-cased, if <= 127, else U+0020
unichar toLowerAscii(unichar u);
unichar umlautsToAscii(unichar u);  // umlauts entry, whatever its value
unichar umlautsToUpperAscii(unichar u);
unichar umlautsToLowerAscii(unichar u);

// Encoding conversions. Status 0 is success; anything else is the error of
// the converter. `convertEncodingToUnicode` takes an ICU converter name (see
// markup/charsets for the encoding numbers) and answers 1 for a clean
// conversion, 0 for a failed one and -1 when no converter exists; `written`
// counts the units produced, also up to an error.
int convertUTF8ToUnicode(const char* bytes, size_t byteCount, unichar* units, size_t capacity, size_t* written);
int convertUnicodeToUTF8(const unichar* units, size_t unitCount, char* bytes, size_t capacity, size_t* written);
int convertEncodingToUnicode(const char* bytes, size_t byteCount, const char* converterName, unichar* units,
                             size_t capacity, size_t* written);

// Raw searches: a pointer to the first occurrence, or null. Every position at
// which the needle fits is tried, the whole haystack included. An empty
// needle, or one longer than the haystack, gives null. Byte needles are
// widened with their sign (0x80..0xFF become 0xFF80..0xFFFF).
const unichar* fastContainsUnichars(const unichar* haystack, size_t haystackLength, const unichar* needle,
                                    size_t needleLength);
const unichar* fastCaseInsensitiveContainsUnichars(const unichar* haystack, size_t haystackLength,
                                                   const unichar* needle, size_t needleLength);
const unichar* fastUnicharsContainChars(const unichar* haystack, size_t haystackLength, const char* needle,
                                        size_t needleLength);
const unichar* fastCaseInsensitiveUnicharsContainChars(const unichar* haystack, size_t haystackLength,
                                                       const char* needle, size_t needleLength);
// The byte needle first, the unit haystack second.
const unichar* positionOfCharacters(const char* needle, size_t needleLength, const unichar* haystack,
                                    size_t haystackLength, bool caseSensitive);

// True if any of the null-terminated byte strings of the null-terminated
// array `rows` occurs in the text. With a table the text is mapped through
// it and the rows are compared as stored.
bool fastContainsSubCStrings(const unichar* text, size_t length, const char* const* rows,
                             ConversionTable table = nullptr);
bool containsSubCStrings(const String& s, const char* const* rows);
bool containsSubCStrings(const String& s, const char* const* rows, bool caseSensitive);

// Raw compares: at the first difference, first side minus second side;
// with an equal common part, first length minus second length.
int64_t fastCompareUnichars(const unichar* a, size_t aLength, const unichar* b, size_t bLength);
int64_t fastCompareUnicharsWithChars(const unichar* a, size_t aLength, const char* b, size_t bLength);
int64_t fastCompareChars(const char* a, size_t aLength, const char* b, size_t bLength);  // bytes as signed
int64_t fastCompareUnicharsUsingConversionTable(const unichar* a, size_t aLength, const unichar* b, size_t bLength,
                                                ConversionTable table);
int64_t fastCaseInsensitiveCompareUnichars(const unichar* a, size_t aLength, const unichar* b, size_t bLength);
int64_t fastCaseInsensitiveCompareUnicharsWithChars(const unichar* a, size_t aLength, const char* b, size_t bLength);
int64_t fastCaseInsensitiveCompareChars(const char* a, size_t aLength, const char* b, size_t bLength);

// Convenience forms for literals.
inline int64_t fastCompareUnicharsWithChars(std::u16string_view a, std::string_view b) {
  return fastCompareUnicharsWithChars(a.data(), a.size(), b.data(), b.size());
}
inline int64_t fastCaseInsensitiveCompareUnicharsWithChars(std::u16string_view a, std::string_view b) {
  return fastCaseInsensitiveCompareUnicharsWithChars(a.data(), a.size(), b.data(), b.size());
}

// Whole-string compares. A null string counts as empty; a null table means
// exact comparison.
bool equalStringsUsingConversionTable(const String& a, const String& b, ConversionTable table);
// Equal once every unit outside `rep` is dropped from both sides.
bool equalCharsOfCharacterSetRep(const unichar* a, size_t aLength, const unichar* b, size_t bLength,
                                 CharacterSetRep rep);
bool equalCharsNoCaseOfCharacterSetRep(const unichar* a, size_t aLength, const unichar* b, size_t bLength,
                                       CharacterSetRep rep);
bool equalStringsUsingCharacterSetRep(const String& a, const String& b, CharacterSetRep rep);
bool equalStringsNoCaseUsingCharacterSetRep(const String& a, const String& b, CharacterSetRep rep);
// The second text's filtered units are a prefix of the first's.
bool hasPrefixCharsOfCharacterSetRep(const unichar* a, size_t aLength, const unichar* b, size_t bLength,
                                     CharacterSetRep rep);
bool hasPrefixCharsNoCaseOfCharacterSetRep(const unichar* a, size_t aLength, const unichar* b, size_t bLength,
                                           CharacterSetRep rep);
bool hasPrefixUsingCharacterSetRep(const String& a, const String& b, CharacterSetRep rep);
bool hasPrefixNoCaseUsingCharacterSetRep(const String& a, const String& b, CharacterSetRep rep);

// String predicates.
bool isStringEmpty(const String& s);  // null counts as empty
bool isStringNotEmpty(const String& s);
bool containsCharacterPartOfCharacterSetRep(const String& s, CharacterSetRep rep);
bool containsAlphaNumCharacter(const String& s);
bool containsAlphaCharacter(const String& s);
bool containsWhiteCharacter(const String& s);
bool containsDigitCharacter(const String& s);
size_t countCharactersPartOfCharacterSetRep(const String& s, CharacterSetRep rep);
size_t countAlphaNumCharacters(const String& s);
size_t countAlphaCharacters(const String& s);
size_t countWhiteCharacters(const String& s);
size_t countDigitCharacters(const String& s);
bool isSpaceString(const String& s);                            // empty: true
bool isWhiteString(const String& s);                            // empty: true
bool isDigitString(const String& s);                            // empty: false
bool isAlphaString(const String& s);                            // empty: false
bool isAlphaNumString(const String& s);                         // empty: false
bool onlyWhiteCharacters(const unichar* units, size_t length);  // length 0: true
bool containsCJKCharacter(const String& s);
bool isAsciiString(const String& s);      // empty: true
bool isUmlautedString(const String& s);   // empty: false
bool isLowerCaseString(const String& s);  // empty: true
bool isUpperCaseString(const String& s);  // empty: true
// Full case folding over the whole length; false for a null side.
bool isEqualToStringNoCase(const String& s, const String& other);
bool hasPrefixNoCase(const String& s, const String& prefix);
bool hasSuffixNoCase(const String& s, const String& suffix);
bool rangeIsEqualTo(const String& s, Range range, const String& other);
bool rangeIsEqualToNoCase(const String& s, Range range, const String& other);
// Unit by unit through the upper umlauts table.
bool isNonUmlautedEqualToStringNoCase(const String& s, const String& other);
bool rangeIsNonUmlautedEqualToNoCase(const String& s, Range range, const String& other);
unichar firstCharacter(const String& s);  // 0 for the empty string
unichar lastCharacter(const String& s);

// Conversions. Each returns the receiver itself when nothing changed.
String stringByApplyingConversionTable(const String& s, ConversionTable table);
String stringByRemovingCharactersInRep(const String& s, CharacterSetRep rep);
String stringByRemovingNonAlphaNumericCharactersAndApplyingConversionTable(const String& s, ConversionTable table);
String nonUmlautedString(const String& s);
String lowercaseNonUmlautedString(const String& s);
String uppercaseNonUmlautedString(const String& s);
// Normal form C first, then the table.
String nonUmlautedNormalizedString(const String& s);
String lowercaseNonUmlautedNormalizedString(const String& s);
String uppercaseNonUmlautedNormalizedString(const String& s);

enum class NormalizationForm { D = 0, KD = 1, C = 2, KC = 3 };
String normalizedString(const String& s, NormalizationForm form = NormalizationForm::C);
String normalizedLowercaseString(const String& s);  // form C, then full lower case
String normalizedUppercaseString(const String& s);
void normalizeString(std::u16string& s, NormalizationForm form = NormalizationForm::C);
void normalizeLowercaseString(std::u16string& s);
void normalizeUppercaseString(std::u16string& s);
// Replaces the Latin ligatures U+FB00..U+FB06, U+0132 and U+0133 by their
// letters.
void convertLigaturesToCharacters(std::u16string& s);

// Full case mappings and folding with the root locale (not the tables).
std::u16string lowercaseString(std::u16string_view s);
std::u16string uppercaseString(std::u16string_view s);
std::u16string foldCaseString(std::u16string_view s);

// A checksum over all reps and tables, to notice a Unicode data change.
uint32_t characterTablesChecksum();

}  // namespace norvane::text
