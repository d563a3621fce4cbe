// Everyday string operations: lines, trimming, finding and counting units,
// replacing and removing, configuration lines, mail reformatting and a few
// small helpers.
//
// Every operation takes null and empty arguments without harm. Operations
// that rewrite a string return the receiver itself (the same String object,
// see String::isSameObject) when nothing changed; a null receiver gives a
// null result unless stated otherwise. "White" and "space" are the reps of
// chars.h; "case-insensitive" for single units means through
// upperCharsTable().
//
// A line-end unit ("feed") is one of U+0003, U+000A, U+000C, U+000D, U+2028,
// U+2029, U+FEFF and U+FFFC. A carriage return directly followed by a line
// feed is one line end of two units.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include "norvane/core/string.h"
#include "norvane/core/types.h"
#include "norvane/core/value.h"
#include "norvane/text/chars.h"
#include "norvane/text/encodings.h"

namespace norvane::text {

inline constexpr bool isFeedCharacter(unichar u) {
  return u == 0x0A || u == 0x0D || u == 0x03 || u == 0x0C || u == 0x2028 || u == 0x2029 || u == 0xFEFF || u == 0xFFFC;
}

// A rep holding exactly the line-end units.
CharacterSetRep defaultLineSeparators();

// --- Making strings ---

// The text form of a new random (version 4) UUID, lower case, e.g.
// "1b4e28ba-2fa1-41d2-883f-0016d3cca427"; null if no randomness is available.
String uniqueString();
// The components up to the first null one, joined with "."; null when the
// first is null or the list is empty.
String stringWithComponents(std::initializer_list<String> components);
String stringWithCharacter(unichar u);

// The process-wide string encoding (4, UTF-8, at start). Unguarded: set it
// at start.
NSStringEncoding defaultEncoding();
void setDefaultEncoding(NSStringEncoding encoding);

// Strings from bytes in an encoding (see encodings.h, whose stringWithBytes
// and stringWithBytesStrict take a byte view). Null when the bytes are not
// valid in the encoding or the encoding is unavailable. The C-string forms
// stop at the first 0 byte.
String stringWithData(const Data& data, NSStringEncoding encoding);
String stringWithCString(const char* bytes, size_t length, NSStringEncoding encoding);
String stringWithNullTerminatedCString(const char* bytes, NSStringEncoding encoding);

// Decodes bytes of unknown encoding: a byte-order mark (UTF-8, UTF-32,
// UTF-16), else valid UTF-8, else ASCII with U+FFFD for each byte above 0x7F.
// `usedEncoding` receives what was chosen.
String stringByDetectingEncoding(std::string_view bytes, NSStringEncoding* usedEncoding = nullptr);
// Reads a whole file. An encoding from 1 to 0xFFFFFFEF is used as given (the
// bytes must be valid in it) and stored in `usedEncoding`. Any other value
// detects the encoding as stringByDetectingEncoding does; `usedEncoding`
// receives what was chosen. Null when the file cannot be read or decoded.
String stringWithContentsOfFile(const std::string& path, NSStringEncoding encoding,
                                NSStringEncoding* usedEncoding = nullptr);
// Writes the text in the encoding; false when it cannot be expressed in it
// or the file cannot be written. Atomically writes a temporary file beside
// the target and renames it.
bool writeToFile(const String& s, const std::string& path, bool atomically, NSStringEncoding encoding);
bool writeToFileUsingDefaultEncoding(const String& s, const std::string& path, bool atomically,
                                     NSStringEncoding* usedEncoding = nullptr);
// The fastest encoding is UTF-8. The smallest is ASCII, else ISO Latin 1,
// else whichever of UTF-8 and UTF-16 (with its mark) takes fewer bytes.
NSStringEncoding fastestEncoding(const String& s);
NSStringEncoding smallestEncoding(const String& s);
bool writeToFileUsingFastestEncoding(const String& s, const std::string& path, bool atomically,
                                     NSStringEncoding* usedEncoding = nullptr);
bool writeToFileUsingSmallestEncoding(const String& s, const std::string& path, bool atomically,
                                      NSStringEncoding* usedEncoding = nullptr);

// --- Tests and counts ---

// True if the leading integer (after white space and a sign) is not 0, or the
// whole text is "true", "yes" or "on" ignoring case.
bool boolValue(const String& s);
// The number of runs of ASCII digits.
size_t countNumbers(const String& s);
// True if `digits` occurs with no ASCII digit directly before or behind it.
bool containsNumber(const String& s, const String& digits);
// True if a run of at least n ASCII digits exists.
bool containsNumberWithNDigits(const String& s, long n);

// The bits of containsCharacters().
enum CharacterMask : unsigned {
  kMaskPeriod = 1,       // "."
  kMaskAt = 2,           // "@"
  kMaskSlash = 4,        // "/"
  kMaskQuestion = 8,     // "?"
  kMaskSemicolon = 16,   // ";"
  kMaskUnderscore = 32,  // "_"
  kMaskStar = 64,        // "*"
  kMaskDollar = 128,     // "$"
};
// True if the text holds every unit named by `mask`; false for a mask of 0.
bool containsCharacters(const String& s, unsigned mask);

// A word of two capitalised parts, such as "MacBook": at least 3 units, an
// upper-case unit, one or more lower-case units, then an upper-case unit
// followed by a lower-case one. The rest is not looked at.
bool isMashedWord(const String& s);

size_t numberOfLines(const String& s);       // 0 for the empty text
bool hasFeedOfLine(const String& s);         // the last unit is a line end
size_t lengthOfFeedOfLine(const String& s);  // the run of line-end units at the end

// --- Unit search and counting ---
// Start positions at or past the end give NotFound (or 0, false). With
// caseInsensitive, both sides are compared through upperCharsTable().

size_t findCharacter(const String& s, unichar u, size_t start = 0, bool caseInsensitive = false);
// The last match at or behind `start`.
size_t findLastCharacter(const String& s, unichar u, size_t start = 0, bool caseInsensitive = false);
bool containsCharacter(const String& s, unichar u, size_t start = 0, bool caseInsensitive = false);
size_t countCharacter(const String& s, unichar u, size_t start = 0, bool caseInsensitive = false);
// The first position of any unit of `set`; NotFound for a null or empty set.
size_t findOneOf(const String& s, const String& set, size_t start = 0, bool caseInsensitive = false);

// --- Lines ---

// The lines in order, each with its line end. A text that ends in a line end
// has no empty line behind it; the empty text has no lines.
std::vector<String> lines(const String& s);
// The text in front of the first line-end unit; the receiver when there is
// none.
String firstLine(const String& s);
// The run of line-end units at the end; empty if there is none.
String feedOfLine(const String& s);

// --- Replacing and removing ---

String stringByReplacingCharacter(const String& s, unichar from, unichar to, bool caseSensitive = true);
// Every non-overlapping occurrence, left to right. A null or empty target, or
// a null replacement, gives the receiver. Case-insensitive matching compares
// unit by unit through upperCharsTable().
String stringByReplacingString(const String& s, const String& target, const String& replacement,
                               bool caseSensitive = true);
String stringByRemovingCharacters(const String& s, unichar u);
// Removes every unit that occurs in `set`.
String stringByRemovingCharactersOfString(const String& s, const String& set);
String stringByRemovingFeeds(const String& s);
String stringByRemovingTabs(const String& s);
String stringByRemovingSpaces(const String& s);           // spaceCharacterSetRep
String stringByRemovingWhiteSpaces(const String& s);      // whiteCharacterSetRep
String stringByRemovingDigits(const String& s);           // digitCharacterSetRep
String lowercaseStringByRemovingDigits(const String& s);  // and the rest through lowerCharsTable()
String uppercaseStringByRemovingDigits(const String& s);  // and the rest through upperCharsTable()
// Keeps only ASCII digits and ".".
String stringByRemovingNonIPCharacters(const String& s);
String stringByRotating13(const String& s);
// ASCII letters rotated by n (mod 26) within their case.
String stringByRotating(const String& s, long n);

// Collapsing runs: every run of one or more units of the set, a lone unit
// included, becomes one replacement unit. Spaces: spaceCharacterSetRep to a
// blank; white spaces: whiteCharacterSetRep to a blank; feeds: line-end units
// to "\n".
String stringByRemovingMultipleSpaces(const String& s);
String stringByRemovingMultipleWhiteSpaces(const String& s);
String stringByRemovingMultipleFeeds(const String& s);

// --- Trimming ---
// With andFeeds, the units of whiteCharacterSetRep, else those of
// spaceCharacterSetRep.

// Unicode white space and line breaks (Z*, U+0009 to U+000D, U+0085) at both
// ends; narrower than the white rep.
String stringByTrimmingWhiteSpaces(const String& s);
String stringByTrimmingSpacesOfLeftSideAndFeeds(const String& s, bool andFeeds);
String stringByTrimmingSpacesOfRightSideAndFeeds(const String& s, bool andFeeds);
String stringByTrimmingSpacesAndFeeds(const String& s, bool andFeeds);
// The range (clamped to the text) without white units at its ends; a range of
// nothing else gives an empty range at its end.
Range trimWhiteSpacesInRange(const String& s, Range range);
Range trimSpacesInRange(const String& s, Range range, bool andFeeds);
String stringByTrimmingSpacesInRange(const String& s, Range range, bool andFeeds);
// Line-end units at the end; the start is left alone.
String stringByTrimmingFeeds(const String& s);
String stringByTrimmingCharactersNotInRep(const String& s, CharacterSetRep rep);
String stringByTrimmingCharacter(const String& s, unichar u);
String stringByTrimmingPrefixCharacter(const String& s, unichar u);
String stringByTrimmingSuffixCharacter(const String& s, unichar u);
// While the first and the last remaining unit both equal u, both go.
String stringByTrimmingEnclosingCharacter(const String& s, unichar u);
String stringByTrimmingQuotes(const String& s);    // ' and " at both ends
String stringByTrimmingEllipsis(const String& s);  // "." and U+2026 at the end
String stringByTrimmingDigits(const String& s);

// --- Configuration text ---

// The lines (cut at every line-end unit) trimmed of white units, without
// comments ("#" first) and without lines shorter than two units.
std::vector<String> configLines(const String& s);
// For a line "key value": the value, trimmed, when `key` (ignoring case)
// begins the line and a white unit follows it; null otherwise.
String configValueForKey(const String& line, const String& key);
// The index of the first key (up to the first null one) equal to the
// receiver ignoring case, or NotFound.
size_t typedValueForKeys(const String& s, std::initializer_list<String> keys);

// --- Reformatting ---

// Undoes the hard wrapping of mail text: single line ends join lines with a
// blank unless the next line starts with a blank, "-", "/", ">" or "}" or the
// text so far ends in ":" or ">"; two or more line ends become "\n\n"; runs of
// spaces become one blank.
String reformattedMailing(const String& s);
// Joins the lines of each paragraph with blanks after removing the units of
// `set` (may be null); empty lines separate paragraphs.
String reformattedStringByRemovingCharactersOfString(const String& s, const String& set);

// --- Debug output to the log ---

// Rows of 12 units: "%04x " for each, ": ", then the units with "." for those
// below U+0021 and for U+2028, U+2029, U+FEFF and U+FFFC.
void dump(const String& s);
// The units as a C array initialiser, 8 a row.
void dumpAsArray(const String& s);

// --- Components ---

// The pieces between runs of white units; no empty pieces.
std::vector<String> componentsUsingWhiteSeparation(const String& s);
// Calls `block` for the pieces of the text in order, word pieces (units
// outside `separators`) and separator pieces (runs of units inside it)
// alternating, with the string, its units, the piece's range and whether it
// is a separator piece. A true result ends the walk.
using ComponentBlock = std::function<bool(const String& s, const unichar* units, Range piece, bool isSeparator)>;
void enumerateComponentsUsingBlock(const String& s, const ComponentBlock& block, CharacterSetRep separators);
// The first n units followed by "…" (U+2026) when the text is longer than n
// units; a surrogate pair is not split. The receiver when it fits.
String stringByEllipsizingAfterNCharacters(const String& s, size_t n);

}  // namespace norvane::text
