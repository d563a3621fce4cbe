// Bridges between UTF-8 and UTF-16, strict and lossy.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace norvane {

// Strict: nullopt on any malformed sequence, overlong form or surrogate
// code point.
std::optional<std::u16string> utf8ToUtf16Strict(std::string_view utf8);
// Lossy: each malformed sequence becomes one U+FFFD.
std::u16string utf8ToUtf16(std::string_view utf8);

// Strict: nullopt when the text has an unpaired surrogate.
std::optional<std::string> utf16ToUtf8Strict(std::u16string_view utf16);
// Lossy: each unpaired surrogate becomes U+FFFD.
std::string utf16ToUtf8(std::u16string_view utf16);

// Appends UTF-8 to `out` (lossy); for hot paths that reuse a buffer.
void appendUtf16AsUtf8(std::u16string_view utf16, std::string& out);

}  // namespace norvane
