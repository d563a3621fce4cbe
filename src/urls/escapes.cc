// Adding and replacing percent escapes.

#include <array>
#include <optional>
#include <string>

#include "norvane/text/encodings.h"
#include "norvane/text/mutable_strings.h"
#include "norvane/urls/normal_forms.h"
#include "urls/url_text.h"

namespace norvane::urls {
namespace {

using detail::View;

int hexValue(unichar u) {
  if (u >= '0' && u <= '9') return u - '0';
  if ((u | 32) >= 'a' && (u | 32) <= 'f') return (u | 32) - 'a' + 10;
  return -1;
}

// The value of the escape at `i`, or -1 when there is none.
int escapeAt(const unichar* units, size_t length, size_t i) {
  if (units[i] != '%' || i + 2 >= length) return -1;
  int high = hexValue(units[i + 1]);
  int low = hexValue(units[i + 2]);
  return high < 0 || low < 0 ? -1 : high * 16 + low;
}

bool inStandardReplaceSet(int value, bool urlHasQuestionMark) {
  switch (value) {
    case '\t':
    case '\n':
    case '\r':
    case ' ':
    case '$':
    case '%':
    case '&':
    case '\'':
    case '+':
    case '/':
    case ':':
    case ';':
    case '=':
    case '@':
    case '~':
      return true;
    case '?':
      return !urlHasQuestionMark;
    default:
      return false;
  }
}

bool isKnownEncoding(uint32_t encoding) {
  return text::isNSEncodingAvailable(encoding);
}

// Decodes one UTF-8 character from `bytes` at `i`: shortest forms only, no
// surrogate code points. Answers the number of bytes used, 0 when the bytes
// there are not valid.
size_t decodeUTF8Character(std::string_view bytes, size_t i, std::u16string& out) {
  uint8_t b = uint8_t(bytes[i]);
  if (b < 0x80) {
    out.push_back(b);
    return 1;
  }
  size_t count;
  uint32_t cp;
  uint32_t minimum;
  if ((b & 0xE0) == 0xC0) {
    count = 2, cp = b & 0x1F, minimum = 0x80;
  } else if ((b & 0xF0) == 0xE0) {
    count = 3, cp = b & 0x0F, minimum = 0x800;
  } else if ((b & 0xF8) == 0xF0) {
    count = 4, cp = b & 0x07, minimum = 0x10000;
  } else {
    return 0;
  }
  if (i + count > bytes.size()) return 0;
  for (size_t k = 1; k < count; ++k) {
    uint8_t next = uint8_t(bytes[i + k]);
    if ((next & 0xC0) != 0x80) return 0;
    cp = (cp << 6) | (next & 0x3F);
  }
  if (cp < minimum || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return 0;
  if (cp >= 0x10000) {
    out.push_back(char16_t(0xD800 + ((cp - 0x10000) >> 10)));
    out.push_back(char16_t(0xDC00 + ((cp - 0x10000) & 0x3FF)));
  } else {
    out.push_back(char16_t(cp));
  }
  return count;
}

// Appends the bytes of `units[i]` (with its low surrogate) in the encoding;
// answers the units consumed, 0 when the encoding cannot represent it.
size_t encodeCharacter(View units, size_t i, uint32_t encoding, std::string& bytes) {
  size_t used = 1;
  if (units[i] >= 0xD800 && units[i] <= 0xDBFF && i + 1 < units.size() && units[i + 1] >= 0xDC00 &&
      units[i + 1] <= 0xDFFF) {
    used = 2;
  }
  std::optional<std::string> encoded = text::encodeString(units.substr(i, used), encoding);
  if (!encoded) return 0;
  bytes += *encoded;
  return used;
}

void appendEscape(std::u16string& out, uint8_t byte, bool upperCase) {
  const char* digits = upperCase ? "0123456789ABCDEF" : "0123456789abcdef";
  out.push_back('%');
  out.push_back(digits[byte >> 4]);
  out.push_back(digits[byte & 15]);
}

bool isLegalURLCharacter(unichar u) {
  if (detail::isAsciiAlnum(u)) return true;
  if (u >= 128) return false;
  return std::string_view("!#$%&'()*+,-./:;=?@[]_~").find(char(u)) != std::string_view::npos;
}

String replaceEscapes(const String& url, bool standard) {
  if (url.isNull() || detail::find(url.view(), "%") == NotFound) return url;
  std::u16string work = url.toU16();
  size_t length = convertPercentEscapesOfURL(work.data(), work.size(), standard);
  if (length == work.size()) return url;
  work.resize(length);
  return String::fromU16(std::move(work));
}

// Escapes each unit for which `escape` answers true as "%xx".
template <typename Predicate>
String addLowerCaseEscapes(const String& url, Predicate escape) {
  if (url.isNull()) return url;
  View s = url.view();
  std::u16string out;
  bool changed = false;
  for (unichar u : s) {
    if (escape(u)) {
      appendEscape(out, uint8_t(u), false);
      changed = true;
    } else {
      out.push_back(u);
    }
  }
  return changed ? String::fromU16(std::move(out)) : url;
}

}  // namespace

size_t convertPercentEscapesOfURL(unichar* units, size_t length, bool standard) {
  if (length < 3) return length;
  bool hasQuestionMark = false;
  if (standard) {
    for (size_t i = 0; i < length && !hasQuestionMark; ++i) hasQuestionMark = units[i] == '?';
  }
  size_t write = 0;
  size_t read = 0;
  while (read < length) {
    int value = escapeAt(units, length, read);
    bool decode = value >= 0 && (standard ? inStandardReplaceSet(value, hasQuestionMark) : value < 128);
    if (decode) {
      units[write++] = unichar(value);
      read += 3;
    } else {
      units[write++] = units[read++];
    }
  }
  return write;
}

String stringByReplacingStandardPercentEscapesOfURL(const String& url) {
  return replaceEscapes(url, true);
}

String stringByReplacingASCIIPercentEscapesOfURL(const String& url) {
  return replaceEscapes(url, false);
}

String stringByReplacingPercentEscapesOfURL(const String& url, uint32_t encoding) {
  if (url.isNull() || !isKnownEncoding(encoding) || detail::find(url.view(), "%") == NotFound) return url;
  View s = url.view();
  std::u16string out;
  std::string bytes;
  size_t i = 0;
  while (i < s.size()) {
    if (escapeAt(s.data(), s.size(), i) < 0) {
      out.push_back(s[i++]);
      continue;
    }
    // A run of escapes decodes as one byte sequence.
    bytes.clear();
    size_t runStart = i;
    for (int value; i < s.size() && (value = escapeAt(s.data(), s.size(), i)) >= 0; i += 3) {
      bytes.push_back(char(value));
    }
    if (encoding != kUTF8Encoding) {
      // Other encodings decode the run as a whole or not at all.
      if (!text::decodeBytesAppending(bytes, encoding, true, out)) out.append(s.substr(runStart, i - runStart));
      continue;
    }
    for (size_t b = 0; b < bytes.size();) {
      size_t used = decodeUTF8Character(bytes, b, out);
      if (used == 0) {
        out.append(s.substr(runStart + 3 * b, 3));
        used = 1;
      }
      b += used;
    }
  }
  return detail::sameOrNew(url, std::move(out));
}

String stringByAddingStandardPercentEscapesToURL(const String& url) {
  return addLowerCaseEscapes(url, [](unichar u) {
    return u < 128 && std::string_view(" #$%&+/:;=?@").find(char(u)) != std::string_view::npos;
  });
}

String stringByAddingASCIIPercentEscapesToURL(const String& url) {
  return addLowerCaseEscapes(url, [](unichar u) { return u < 128 && !detail::isAsciiAlnum(u); });
}

String stringByAddingPercentEscapesToURL(const String& url, uint32_t encoding) {
  return stringByAddingPercentEscapesToURL(url, encoding, View(), String::empty());
}

String stringByAddingPercentEscapesToURL(const String& url, uint32_t encoding, View leaveUnescaped) {
  return stringByAddingPercentEscapesToURL(url, encoding, leaveUnescaped, String::empty());
}

String stringByAddingPercentEscapesToURL(const String& url, uint32_t encoding, View leaveUnescaped,
                                         const String& toBeEscaped) {
  if (url.isNull() || !isKnownEncoding(encoding)) return url;
  View extra = toBeEscaped.isNull() ? View(u":?&;@") : toBeEscaped.view();
  View s = url.view();
  std::u16string out;
  std::string bytes;
  bool changed = false;
  for (size_t i = 0; i < s.size();) {
    unichar u = s[i];
    bool escape = (!isLegalURLCharacter(u) || extra.find(u) != View::npos) && leaveUnescaped.find(u) == View::npos;
    if (!escape) {
      out.push_back(u);
      ++i;
      continue;
    }
    bytes.clear();
    size_t used = encodeCharacter(s, i, encoding, bytes);
    if (used == 0) return String();
    for (char b : bytes) appendEscape(out, uint8_t(b), true);
    i += used;
    changed = true;
  }
  return changed ? String::fromU16(std::move(out)) : url;
}

String stringByFormattingQueryTerm(const String& term, uint32_t encoding, bool defaultPercentEscapes) {
  if (term.isNull()) return term;
  std::u16string collapsed = term.toU16();
  text::removeMultipleWhiteSpaces(collapsed);
  String escaped = stringByAddingPercentEscapesToURL(detail::sameOrNew(term, std::move(collapsed)), encoding);
  if (escaped.isNull() || !defaultPercentEscapes) return escaped;
  std::u16string out;
  View s = escaped.view();
  for (size_t i = 0; i < s.size(); ++i) {
    if (s[i] == '+') {
      out += u"%2B";
    } else if (s[i] == '%' && i + 2 < s.size() && s[i + 1] == '2' && s[i + 2] == '0') {
      out.push_back('+');
      i += 2;
    } else {
      out.push_back(s[i]);
    }
  }
  return detail::sameOrNew(escaped, std::move(out));
}

}  // namespace norvane::urls
