// Converters of our own, shared by the files of the encoding layer.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace norvane::text {

// UTF-8 with an ASCII fast path; lossy decoding writes one U+FFFD for each
// maximal ill-formed subpart. Appends to `out`; false (with `out` as it was)
// when strict and malformed.
bool decodeUtf8(std::string_view bytes, bool strict, std::u16string& out);
std::optional<std::string> encodeUtf8(std::u16string_view text, bool lossy);

// Non-lossy ASCII: escapes for everything outside ASCII; every text has a
// form, so encoding never fails.
bool decodeNonLossyAscii(std::string_view bytes, bool strict, std::u16string& out);
std::string encodeNonLossyAscii(std::u16string_view text);

// JIS X0201 (Roman and half-width katakana).
bool decodeJisX0201(std::string_view bytes, bool strict, std::u16string& out);
std::optional<std::string> encodeJisX0201(std::u16string_view text, bool lossy);

bool decodeKoi8cs2Appending(std::string_view bytes, bool strict, std::u16string& out);
std::optional<std::string> encodeKamenicky(std::u16string_view text, bool lossy);
std::optional<std::string> encodeKoi8cs2(std::u16string_view text, bool lossy);

}  // namespace norvane::text
