// Operations that change a string in place. The text is a std::u16string;
// each operation behaves as the string operation of the same meaning in
// strings.h. Indexes out of range are ignored.
#pragma once

#include <fmt/format.h>

#include <string>

#include "norvane/core/string.h"
#include "norvane/core/types.h"

namespace norvane::text {

// Appends the units of `range` of `other`, clamped; a length under 1 does
// nothing.
void appendSubstring(std::u16string& s, const String& other, Range range);
void appendUnichar(std::u16string& s, unichar u);
void appendUnichars(std::u16string& s, const unichar* units, size_t length);
// Appends `other` trimmed as by stringByTrimmingWhiteSpaces; null does
// nothing.
void appendTrimmedString(std::u16string& s, const String& other);
void insertCharacter(std::u16string& s, unichar u, size_t index);
void removeCharacterAtIndex(std::u16string& s, size_t index);

// Deletes every non-overlapping occurrence; answers the count.
size_t deleteString(std::u16string& s, const String& target);
// Replaces every non-overlapping occurrence and answers the count. A null or
// empty target gives 0; a null replacement counts as empty.
size_t replaceString(std::u16string& s, const String& target, const String& replacement, bool caseSensitive = true);
// The same with a replacement made by fmt.
template <typename... Args>
size_t replaceStringWithFormat(std::u16string& s, const String& target, fmt::format_string<Args...> format,
                               Args&&... args) {
  if (target.isEmpty()) return 0;
  return replaceString(s, target, String::fromUtf8(fmt::format(format, std::forward<Args>(args)...)));
}
size_t replaceCharacter(std::u16string& s, unichar from, unichar to, bool caseSensitive = true);

void removeCharacters(std::u16string& s, unichar u);
void removeCharactersOfString(std::u16string& s, const String& set);
void removeFeeds(std::u16string& s);
void removeTabs(std::u16string& s);
void removeSpaces(std::u16string& s);
void removeWhiteSpaces(std::u16string& s);
void removeDigits(std::u16string& s);
void removeMultipleSpaces(std::u16string& s);
void removeMultipleWhiteSpaces(std::u16string& s);
void removeMultipleFeeds(std::u16string& s);

void trimWhiteSpaces(std::u16string& s);
void trimCharacter(std::u16string& s, unichar u);
void trimPrefixCharacter(std::u16string& s, unichar u);
void trimSuffixCharacter(std::u16string& s, unichar u);
void trimFeeds(std::u16string& s);

// Expands each tab to the blanks up to the next multiple of `tabWidth`; a
// line-end unit starts column 0 again. A width under 1 does nothing.
void decodeTabs(std::u16string& s, long tabWidth);
// The inverse: a run of space units that reaches a tab stop becomes one tab.
// Blanks that reach no tab stop stay.
void encodeTabs(std::u16string& s, long tabWidth);

// Full Unicode case mappings (root locale); capitalize upper-cases the first
// letter of each word and lower-cases the rest.
void lowercase(std::u16string& s);
void uppercase(std::u16string& s);
void capitalize(std::u16string& s);

}  // namespace norvane::text
