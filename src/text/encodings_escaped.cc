// Non-lossy ASCII: ASCII text in which every other character is escaped.
// A backslash is written "\\", a unit from 0x80 to 0xFF as three octal
// digits ("\351"), any other unit above 0x7F as "\u" and four lower-case hex
// digits ("\u65e5"). Decoding reads the same escapes; a byte above 0x7F is
// malformed, and a backslash that starts no escape stands for itself.

#include "text/encodings_internal.h"

namespace norvane::text {
namespace {

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool isOctal(char c) {
  return c >= '0' && c <= '7';
}

}  // namespace

bool decodeNonLossyAscii(std::string_view bytes, bool strict, std::u16string& out) {
  size_t start = out.size();
  for (size_t i = 0; i < bytes.size(); ++i) {
    char c = bytes[i];
    if (static_cast<unsigned char>(c) > 0x7F) {
      if (strict) {
        out.resize(start);
        return false;
      }
      out += u'\uFFFD';
      continue;
    }
    if (c != '\\' || i + 1 >= bytes.size()) {
      out += static_cast<char16_t>(c);
      continue;
    }
    char next = bytes[i + 1];
    if (next == '\\') {
      out += u'\\';
      i += 1;
    } else if (next == 'u' && i + 5 < bytes.size() && hexValue(bytes[i + 2]) >= 0 && hexValue(bytes[i + 3]) >= 0 &&
               hexValue(bytes[i + 4]) >= 0 && hexValue(bytes[i + 5]) >= 0) {
      out += static_cast<char16_t>(hexValue(bytes[i + 2]) << 12 | hexValue(bytes[i + 3]) << 8 |
                                   hexValue(bytes[i + 4]) << 4 | hexValue(bytes[i + 5]));
      i += 5;
    } else if (i + 3 < bytes.size() && isOctal(next) && isOctal(bytes[i + 2]) && isOctal(bytes[i + 3]) && next <= '3') {
      out += static_cast<char16_t>((next - '0') << 6 | (bytes[i + 2] - '0') << 3 | (bytes[i + 3] - '0'));
      i += 3;
    } else {
      out += u'\\';
    }
  }
  return true;
}

std::string encodeNonLossyAscii(std::u16string_view text) {
  static const char kHex[] = "0123456789abcdef";
  std::string out;
  out.reserve(text.size());
  for (char16_t unit : text) {
    if (unit == '\\') {
      out += "\\\\";
    } else if (unit < 0x80) {
      out += static_cast<char>(unit);
    } else if (unit < 0x100) {
      out += '\\';
      out += static_cast<char>('0' + (unit >> 6));
      out += static_cast<char>('0' + (unit >> 3 & 7));
      out += static_cast<char>('0' + (unit & 7));
    } else {
      out += "\\u";
      for (int shift = 12; shift >= 0; shift -= 4) out += kHex[unit >> shift & 0xF];
    }
  }
  return out;
}

}  // namespace norvane::text
