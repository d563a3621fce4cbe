// The string-level scans, tag shapes, attribute readers and header fields.
// The scan loop itself is in tag_scanner_core.h.

#include "norvane/markup/tag_scanner.h"

#include <cxxabi.h>
#include <execinfo.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <typeinfo>

#include "norvane/core/log.h"
#include "norvane/text/chars.h"

namespace norvane::markup {

namespace detail {

ScanBuffer::ScanBuffer(const String& string, bool mutableBuffer) {
  const size_t length = string.length();
  if (length == 0) return;
  if (!mutableBuffer) {
    // The storage is only read: a handler of a read-only scan must not write.
    data_ = const_cast<unichar*>(string.data());
  } else {
    long pageSize = sysconf(_SC_PAGESIZE);
    const size_t page = pageSize > 0 ? static_cast<size_t>(pageSize) : 4096;
    if (length > (SIZE_MAX - page) / sizeof(unichar)) return;
    const size_t bytes = (length * sizeof(unichar) + page - 1) / page * page;
    auto* copy = static_cast<unichar*>(std::aligned_alloc(page, bytes));
    if (copy == nullptr) return;
    std::memcpy(copy, string.data(), length * sizeof(unichar));
    data_ = copy;
    owned_ = true;
  }
  length_ = length;
  // Handlers rely on the case tables without checking them.
  text::lowerCharsTable();
  text::upperCharsTable();
}

ScanBuffer::~ScanBuffer() {
  if (owned_) std::free(data_);
}

namespace {

std::string demangledName(const std::type_info& type) {
  int status = 0;
  std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status),
                                                   &std::free);
  return status == 0 && name ? std::string(name.get()) : std::string(type.name());
}

std::string currentCallStack() {
  void* frames[64];
  const int count = backtrace(frames, 64);
  std::unique_ptr<char*, decltype(&std::free)> symbols(backtrace_symbols(frames, count), &std::free);
  std::string stack;
  for (int k = 0; symbols && k < count; ++k) {
    if (k > 0) stack += '\n';
    stack += symbols.get()[k];
  }
  return stack;
}

}  // namespace

void logScanException(const char* operation, std::exception_ptr exception) {
  std::string name = "unknown exception";
  std::string reason;
  try {
    std::rethrow_exception(exception);
  } catch (const std::exception& e) {
    name = demangledName(typeid(e));
    reason = e.what();
  } catch (...) {
  }
  logMessage(formatException(operation, "String", name, reason, currentCallStack()));
}

}  // namespace detail

// ---------------------------------------------------------------------------
// Scans

bool GetTagsOfString(const String& string, TagHandler handler, void* context, bool mutableBuffer) {
  if (handler == nullptr) return false;
  detail::ScanBuffer buffer(string, mutableBuffer);
  if (!buffer.ok()) return false;
  return scanTags(buffer.data(), buffer.length(),
                  [&](unichar* characters, size_t nameLocation, size_t nameLength, size_t tagLocation, size_t tagLength,
                      size_t previousTagEnd, unsigned tagKind) {
                    return handler(string, characters, nameLocation, nameLength, tagLocation, tagLength, previousTagEnd,
                                   tagKind, context);
                  });
}

bool parseXmlWithHandler(const String& string, TagHandler handler, void* context, bool mutableBuffer) {
  if (handler == nullptr) return false;
  try {
    return GetTagsOfString(string, handler, context, mutableBuffer);
  } catch (...) {
    detail::logScanException("parseXmlWithHandler:context:mutable:", std::current_exception());
    return false;
  }
}

String optimizedXml(const String& string) {
  return string;
}

String fixedXml(const String& string) {
  const unichar* units = string.data();
  const size_t length = string.length();
  auto isControl = [](unichar c) { return c < 32 && c != 9 && c != 10 && c != 13; };
  size_t first = 0;
  while (first < length && !isControl(units[first])) ++first;
  if (first == length) return string;
  std::u16string fixed(units, length);
  for (size_t k = first; k < length; ++k) {
    if (isControl(fixed[k])) fixed[k] = ' ';
  }
  return String::fromU16(std::move(fixed));
}

// ---------------------------------------------------------------------------
// Shapes

namespace {

bool rangeFits(const String& string, Range range) {
  return !string.isNull() && range.location <= string.length() && range.length <= string.length() - range.location;
}

bool isMarkedWith(const unichar* t, size_t length, unichar third) {
  return length >= 7 && t[1] == '!' && t[2] == third;
}

}  // namespace

bool isTagOpenCharacters(const unichar* characters, Range range) {
  return characters != nullptr && range.length >= 3 && characters[range.location + 1] != '/';
}

bool isTagClosedCharacters(const unichar* characters, Range range) {
  if (characters == nullptr || range.length < 4) return false;
  const unichar* t = characters + range.location;
  return t[1] == '/' || t[range.length - 2] == '/';
}

bool isTagOpen(const String& tag) {
  return isTagOpenCharacters(tag.data(), {0, tag.length()});
}
bool isTagOpenInRange(const String& string, Range range) {
  return rangeFits(string, range) && isTagOpenCharacters(string.data(), range);
}
bool isTagClosed(const String& tag) {
  return isTagClosedCharacters(tag.data(), {0, tag.length()});
}
bool isTagClosedInRange(const String& string, Range range) {
  return rangeFits(string, range) && isTagClosedCharacters(string.data(), range);
}
bool isMetaTag(const String& tag) {
  return isMarkedWith(tag.data(), tag.length(), '[');
}
bool isMetaTagInRange(const String& string, Range range) {
  return rangeFits(string, range) && isMarkedWith(string.data() + range.location, range.length, '[');
}
bool isRemarkTag(const String& tag) {
  return isMarkedWith(tag.data(), tag.length(), '-');
}
bool isRemarkTagInRange(const String& string, Range range) {
  return rangeFits(string, range) && isMarkedWith(string.data() + range.location, range.length, '-');
}

int tagDepthChange(const unichar* characters, Range tag) {
  if (characters == nullptr || tag.length < 3) return 0;
  const unichar* t = characters + tag.location;
  if (t[tag.length - 2] == '/') return 0;
  return t[1] == '/' ? -1 : 1;
}

// ---------------------------------------------------------------------------
// Attributes of a tag in a buffer

namespace {

// Index of the unit equal to t[from - 1]'s quote `quote` at or after `from`
// in [from, length), or length.
size_t findUnit(const unichar* t, size_t from, size_t length, unichar unit) {
  while (from < length && t[from] != unit) ++from;
  return from;
}

bool isQuote(unichar c) {
  return c == '"' || c == '\'';
}

// The end of a quoted CONTENT value that starts at `start`, quoted by
// `quote`: see contentAttributeOfTagCharacters.
size_t endOfContentValue(const unichar* t, size_t start, size_t length, unichar quote) {
  int depth = 0;
  for (size_t k = start; k < length; ++k) {
    const unichar c = t[k];
    if (c == quote) {
      if (depth == 1) {
        if (k - start >= 1 && t[k - 1] == '<') return k - 1;
        if (k - start >= 2 && t[k - 2] == '<' && t[k - 1] == '/') return k - 2;
      }
      return k;
    }
    if (c == '<') {
      if (k + 4 < length && (t[k + 1] | 32) == 'm' && (t[k + 2] | 32) == 'e' && (t[k + 3] | 32) == 't' &&
          (t[k + 4] | 32) == 'a') {
        return k;
      }
      ++depth;
    } else if (c == '>' && k != start) {
      if (depth == 0) return k;
      --depth;
    }
  }
  return length;
}

}  // namespace

String attributeOfTagCharactersWithName(const unichar* characters, size_t location, size_t length, const char* name,
                                        bool contentMode, Range* outRange) {
  if (characters == nullptr || name == nullptr) return {};
  const size_t n = std::strlen(name);
  if (n == 0 || n + 5 >= length) return {};
  const unichar* t = characters + location;
  const text::ConversionTable upper = text::upperCharsTable();
  const text::CharacterSetRep white = text::whiteCharacterSetRep();
  const text::CharacterSetRep alphaNum = text::alphaNumCharacterSetRep();
  const unichar first = upper[static_cast<unsigned char>(name[0])];

  for (size_t p = 0; p + n + 1 <= length; ++p) {
    const unichar c = t[p];
    if (isQuote(c)) {
      p = findUnit(t, p + 1, length, c);
      if (p >= length) return {};
      continue;
    }
    if (upper[c] != first) continue;
    if (p > 0) {
      const unichar before = t[p - 1];
      if (text::isInRep(alphaNum, before) || before == '-' || before == '_') continue;
    }
    size_t k = 1;
    while (k < n && upper[t[p + k]] == upper[static_cast<unsigned char>(name[k])]) ++k;
    if (k < n) continue;

    size_t q = p + n;
    while (q < length && text::isInRep(white, t[q])) ++q;
    if (q >= length || t[q] != '=') continue;
    while (q < length && t[q] == '=') ++q;
    while (q < length && text::isInRep(white, t[q])) ++q;
    if (q >= length) return {};

    size_t start, end;
    const unichar opening = t[q];
    if (isQuote(opening)) {
      start = q + 1;
      if (contentMode) {
        end = endOfContentValue(t, start, length, opening);
      } else {
        end = start;
        while (end < length && t[end] != opening && t[end] != '>') ++end;
      }
    } else {
      start = q;
      end = start;
      while (end < length && t[end] != '>' && !text::isInRep(white, t[end])) ++end;
    }
    while (end > start && text::isInRep(white, t[end - 1])) --end;
    if (end == start) return {};
    if (outRange != nullptr) {
      *outRange = {location + start, end - start};
      return {};
    }
    return String(t + start, end - start);
  }
  return {};
}

String attributeOfTagCharacters(const unichar* characters, size_t length, const char* name) {
  return attributeOfTagCharactersWithName(characters, 0, length, name, false, nullptr);
}

String attributeOfTagCharacters(const unichar* characters, Range range, const char* name) {
  return attributeOfTagCharactersWithName(characters, range.location, range.length, name, false, nullptr);
}

String contentAttributeOfTagCharacters(const unichar* characters, Range range) {
  return attributeOfTagCharactersWithName(characters, range.location, range.length, "CONTENT", true, nullptr);
}

Range rangeOfAttributeOfTagCharacters(const unichar* characters, size_t length, const char* name) {
  Range found = NotFoundRange;
  attributeOfTagCharactersWithName(characters, 0, length, name, false, &found);
  return found;
}

Range rangeOfAttributeOfTagCharacters(const unichar* characters, Range range, const char* name) {
  Range found = NotFoundRange;
  attributeOfTagCharactersWithName(characters, range.location, range.length, name, false, &found);
  return found;
}

// ---------------------------------------------------------------------------
// Attributes of a tag or style in a string

String attributeOfStringWithName(const String& string, Range range, const String& name, size_t minimumExtra,
                                 unichar separator, unichar terminator) {
  const size_t n = name.length();
  if (n == 0 || !rangeFits(string, range) || n + minimumExtra >= range.length) return {};
  const unichar* t = string.data() + range.location;
  const size_t length = range.length;
  const text::ConversionTable upper = text::upperCharsTable();
  const text::CharacterSetRep white = text::whiteCharacterSetRep();
  const text::CharacterSetRep alphaNum = text::alphaNumCharacterSetRep();

  // The name, upper-cased once.
  unichar stackName[64];
  std::unique_ptr<unichar[]> heapName;
  unichar* upperName = stackName;
  if (n > std::size(stackName)) {
    heapName.reset(new (std::nothrow) unichar[n]);
    if (!heapName) return {};
    upperName = heapName.get();
  }
  for (size_t k = 0; k < n; ++k) upperName[k] = upper[name[k]];

  for (size_t p = 0; p + n + 1 <= length; ++p) {
    const unichar c = t[p];
    if (isQuote(c)) {
      p = findUnit(t, p + 1, length, c);
      if (p >= length) return {};
      continue;
    }
    if (upper[c] != upperName[0]) continue;
    if (p > 0 && (text::isInRep(alphaNum, t[p - 1]) || t[p - 1] == '-')) continue;
    size_t k = 1;
    while (k < n && upper[t[p + k]] == upperName[k]) ++k;
    if (k < n) continue;

    size_t q = p + n;
    while (q < length && text::isInRep(white, t[q])) ++q;
    if (q >= length || t[q] != separator) continue;
    ++q;
    while (q < length && text::isInRep(white, t[q])) ++q;
    if (q >= length) return {};

    size_t start, end;
    const unichar opening = t[q];
    if (isQuote(opening)) {
      start = q + 1;
      end = start;
      while (end < length && t[end] != opening && t[end] != terminator) ++end;
    } else {
      start = q;
      end = start;
      while (end < length && t[end] != terminator && !text::isInRep(white, t[end])) ++end;
    }
    while (end > start && text::isInRep(white, t[end - 1])) --end;
    if (end == start) return {};
    return String(t + start, end - start);
  }
  return {};
}

String attributeOfTagWithName(const String& tag, const String& name) {
  return attributeOfStringWithName(tag, {0, tag.length()}, name, 5, '=', '>');
}

String attributeOfTagInRange(const String& string, Range range, const String& name) {
  return attributeOfStringWithName(string, range, name, 5, '=', '>');
}

String attributeOfStyleWithName(const String& style, const String& name) {
  return attributeOfStringWithName(style, {0, style.length()}, name, 1, ':', ';');
}

String attributeOfStyleInRange(const String& string, Range range, const String& name) {
  return attributeOfStringWithName(string, range, name, 1, ':', ';');
}

// ---------------------------------------------------------------------------
// Header fields

String copyOfAttributeOfString(const String& line, const unichar* name, size_t nameLength, unichar quotation,
                               bool tolerant, unichar separator) {
  const size_t n = nameLength;
  const size_t length = line.length();
  if (name == nullptr || n == 0 || length <= n) return {};
  const unichar* t = line.data();
  const text::ConversionTable upper = text::upperCharsTable();
  const text::CharacterSetRep white = text::whiteCharacterSetRep();

  for (size_t i = 0; i + n < length; ++i) {
    size_t k = 0;
    while (k < n && upper[t[i + k]] == name[k]) ++k;
    if (k < n) continue;
    size_t q = i + n;
    while (q < length && text::isInRep(white, t[q])) ++q;
    if (q >= length || t[q] != '=') continue;
    ++q;
    if (tolerant) {
      while (q < length && text::isInRep(white, t[q])) ++q;
    }
    if (q < length && (t[q] == quotation || (tolerant && isQuote(t[q])))) {
      const unichar quote = t[q];
      const size_t start = q + 1;
      const size_t end = findUnit(t, start, length, quote);
      if (end == start) continue;
      return String(t + start, end - start);
    }
    size_t end = q;
    if (tolerant || separator != 0) {
      while (end < length) {
        const unichar c = t[end];
        if (separator != 0 && c == separator) break;
        if (tolerant && (text::isInRep(white, c) || isQuote(c) || c == '>')) break;
        ++end;
      }
    } else {
      end = length;
    }
    return String(t + q, end - q);
  }
  return {};
}

namespace {

String headerField(const String& line, const String& name, unichar quotation, bool tolerant, unichar separator) {
  if (name.isEmpty()) return {};
  return copyOfAttributeOfString(line, name.data(), name.length(), quotation, tolerant, separator);
}

}  // namespace

String headerFieldNamed(const String& line, const String& name) {
  return headerField(line, name, '\'', false, ';');
}

String headerFieldNamed(const String& line, const String& name, unichar quotation) {
  return headerField(line, name, quotation, false, ';');
}

String headerFieldNamed(const String& line, const String& name, unichar quotation, unichar separator) {
  return headerField(line, name, quotation, false, separator);
}

String HTTPHeaderFieldNamed(const String& line, const String& name) {
  return headerField(line, name, '"', false, ',');
}

String headerCharset(const String& line) {
  static constexpr unichar kName[] = u"CHARSET";
  return copyOfAttributeOfString(line, kName, 7, '\'', true, ';');
}

String headerRefresh(const String& line) {
  static constexpr unichar kName[] = u"URL";
  return copyOfAttributeOfString(line, kName, 3, '\'', true, 0);
}

int refreshInterval(const String& line) {
  return integerValueOfCharacters(line.data(), line.length());
}

int integerValueOfCharacters(const unichar* characters, size_t length) {
  if (characters == nullptr) return 0;
  const text::CharacterSetRep white = text::whiteCharacterSetRep();
  size_t k = 0;
  while (k < length && text::isInRep(white, characters[k])) ++k;
  bool negative = false;
  if (k < length && (characters[k] == '-' || characters[k] == '+')) negative = characters[k++] == '-';
  long long value = 0;
  for (; k < length && characters[k] >= '0' && characters[k] <= '9'; ++k) {
    value = value * 10 + (characters[k] - '0');
    if (value > static_cast<long long>(INT_MAX) + 1) break;
  }
  if (negative) value = -value;
  if (value > INT_MAX) return INT_MAX;
  if (value < INT_MIN) return INT_MIN;
  return static_cast<int>(value);
}

// ---------------------------------------------------------------------------
// Size and background of a tag

namespace {

int integerValue(const String& s) {
  return integerValueOfCharacters(s.data(), s.length());
}

}  // namespace

bool getTagWidth(int* width, int* height, const unichar* characters, Range range) {
  int w = 0, h = 0;
  if (characters != nullptr && range.length >= 10) {
    w = integerValue(attributeOfTagCharacters(characters, range, "WIDTH"));
    if (w != 0) {
      h = integerValue(attributeOfTagCharacters(characters, range, "HEIGHT"));
      if (h == 0) h = integerValue(attributeOfTagCharacters(characters, range, "HEIGH"));
    } else {
      const String style = attributeOfTagCharacters(characters, range, "STYLE");
      if (!style.isNull()) {
        w = integerValue(attributeOfStyleWithName(style, String::fromLatin1("WIDTH")));
        if (w != 0) h = integerValue(attributeOfStyleWithName(style, String::fromLatin1("HEIGHT")));
      }
    }
  }
  if (width != nullptr) *width = w;
  if (height != nullptr) *height = h;
  return w > 0;
}

bool getTagWidth(int* width, int* height, const unichar* characters, size_t length) {
  return getTagWidth(width, height, characters, Range{0, length});
}

bool getTagWidth(int* width, int* height, const String& string, Range range) {
  if (!rangeFits(string, range)) range = {0, 0};
  return getTagWidth(width, height, string.data(), range);
}

bool getTagWidth(int* width, int* height, const String& tag) {
  return getTagWidth(width, height, tag.data(), Range{0, tag.length()});
}

String backgroundStyleURLOfTagCharacters(const unichar* characters, Range range) {
  if (!isTagOpenCharacters(characters, range)) return {};
  const String style = attributeOfTagCharacters(characters, range, "STYLE");
  if (style.isNull()) return {};
  const unichar* s = style.data();
  const size_t length = style.length();
  if (!text::fastCaseInsensitiveUnicharsContainChars(s, length, "background:", 11) &&
      !text::fastCaseInsensitiveUnicharsContainChars(s, length, "background-image:", 17)) {
    return {};
  }
  if (!text::fastCaseInsensitiveUnicharsContainChars(s, length, "no-repeat", 9)) return {};
  const unichar* url = text::fastCaseInsensitiveUnicharsContainChars(s, length, "url(", 4);
  if (url == nullptr) return {};
  size_t start = static_cast<size_t>(url - s) + 4;
  size_t end = findUnit(s, start, length, ')');
  if (end >= length) return {};
  while (end - start >= 2 && s[start] == '\'' && s[end - 1] == '\'') {
    ++start;
    --end;
  }
  if (end == start) return {};
  return String(s + start, end - start);
}

String backgroundStyleURLOfTagCharacters(const unichar* characters, size_t length) {
  return backgroundStyleURLOfTagCharacters(characters, Range{0, length});
}

}  // namespace norvane::markup
