// JIS X0201: the Japanese single-byte set. Below 0x80 it is ASCII with the
// yen sign at 0x5C and the overline at 0x7E; 0xA1..0xDF are the half-width
// katakana U+FF61..U+FF9F. Other bytes are malformed.

#include "text/encodings_internal.h"

namespace norvane::text {

bool decodeJisX0201(std::string_view bytes, bool strict, std::u16string& out) {
  size_t start = out.size();
  out.reserve(start + bytes.size());
  for (char c : bytes) {
    auto byte = static_cast<unsigned char>(c);
    char16_t unit;
    if (byte == 0x5C) {
      unit = 0x00A5;
    } else if (byte == 0x7E) {
      unit = 0x203E;
    } else if (byte < 0x80) {
      unit = byte;
    } else if (byte >= 0xA1 && byte <= 0xDF) {
      unit = static_cast<char16_t>(0xFF61 + (byte - 0xA1));
    } else if (strict) {
      out.resize(start);
      return false;
    } else {
      unit = 0xFFFD;
    }
    out += unit;
  }
  return true;
}

std::optional<std::string> encodeJisX0201(std::u16string_view text, bool lossy) {
  std::string out;
  out.reserve(text.size());
  for (char16_t unit : text) {
    if (unit == 0x00A5) {
      out += '\x5C';
    } else if (unit == 0x203E) {
      out += '\x7E';
    } else if (unit < 0x80 && unit != 0x5C && unit != 0x7E) {
      out += static_cast<char>(unit);
    } else if (unit >= 0xFF61 && unit <= 0xFF9F) {
      out += static_cast<char>(0xA1 + (unit - 0xFF61));
    } else if (lossy) {
      out += '?';
    } else {
      return std::nullopt;
    }
  }
  return out;
}

}  // namespace norvane::text
