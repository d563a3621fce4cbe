// The charset a page declares, and the two-pass decoding of markup bytes.

#include "norvane/markup/decoding.h"

#include <fcntl.h>
#include <plist/plist.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>

#include "norvane/markup/entities.h"
#include "norvane/markup/tag_scanner.h"

namespace norvane::markup {
namespace {

using namespace text;

bool nameIs(const unichar* characters, size_t location, size_t length, std::string_view lower) {
  if (length != lower.size()) return false;
  for (size_t i = 0; i < length; ++i) {
    if ((characters[location + i] | 32) != lower[i]) return false;
  }
  return true;
}

// What the charset scan found: the value and the tag that holds it.
struct CharsetHit {
  String charset;
  Range tag = NotFoundRange;
};

// The CHARSET of a <meta> tag: in its CONTENT first, else its own attribute.
String charsetOfMetaTag(const unichar* characters, Range tag) {
  static const unichar kCharset[] = u"CHARSET";
  String content = contentAttributeOfTagCharacters(characters, tag);
  if (!content.isEmpty()) {
    String charset = copyOfAttributeOfString(content, kCharset, 7, '\'', true, ';');
    if (!charset.isEmpty()) return stringByConvertingEntitiesToCharacters(charset);
  }
  String charset = attributeOfTagCharacters(characters, tag, "CHARSET");
  if (!charset.isEmpty()) return stringByConvertingEntitiesToCharacters(charset);
  return String();
}

// Scans the markup ahead of its <body> for the tag that names a charset.
CharsetHit findCharset(std::u16string_view markup) {
  CharsetHit hit;
  scanTags(markup.data(), markup.size(),
           [&hit](const unichar* characters, size_t nameLocation, size_t nameLength, size_t tagLocation,
                  size_t tagLength, size_t, unsigned tagKind) {
             if (tagKind != kTagKindTag || nameLength < 3 || nameLength > 4) return false;
             if (nameIs(characters, nameLocation, nameLength, "body")) return true;
             Range tag{tagLocation, tagLength};
             if (nameIs(characters, nameLocation, nameLength, "meta")) {
               if (characters[tagLocation + 1] == '/') return false;
               String charset = charsetOfMetaTag(characters, tag);
               if (charset.isNull()) return false;
               hit = {charset, tag};
               return true;
             }
             if (nameIs(characters, nameLocation, nameLength, "xml") && nameLocation == tagLocation + 2 &&
                 characters[tagLocation + 1] == '?') {
               String encoding = attributeOfTagCharacters(characters, tag, "ENCODING");
               hit = {encoding.isNull() ? String::empty() : encoding, tag};
               return true;
             }
             return false;
           });
  return hit;
}

NSStringEncoding encodingOfMarkup(std::u16string_view markup) {
  String charset = findCharset(markup).charset;
  return charset2NSStringEncoding(charset.isNull() ? String::empty() : charset);
}

// One decoding pass into a buffer of the thread's own, so that a page costs
// one string allocation, for the reading that wins. A pass has text when
// units came out; it counts its U+FFFD.
class Pass {
 public:
  // Which of the thread's two buffers the pass uses.
  enum Slot { kFirst = 0, kSecond = 1 };

  explicit Pass(Slot slot) : buffer_(buffers()[slot]) {}
  ~Pass() {
    // Keep a page's worth of capacity for the next call, not a huge one.
    if (buffer_.capacity() > kKeptCapacity) std::u16string().swap(buffer_);
  }
  Pass(const Pass&) = delete;
  Pass& operator=(const Pass&) = delete;

  void decode(std::string_view data, NSStringEncoding encoding) {
    buffer_.clear();
    exists_ = false;
    replacements_ = 0;
    if (encoding == NSKamenickyStringEncoding || encoding == NSKoi8cs2StringEncoding) {
      buffer_ = encoding == NSKamenickyStringEncoding ? decodeKamenicky(data) : decodeKoi8cs2(data);
    } else if (decodeBytesAppending(data, encoding, false, buffer_)) {
      replacements_ = countReplacementCharacters(buffer_.data(), buffer_.size());
    } else {
      buffer_.clear();
    }
    exists_ = !buffer_.empty();
  }
  void drop() { exists_ = false; }

  bool exists() const { return exists_; }
  size_t replacements() const { return replacements_; }
  size_t length() const { return buffer_.size(); }
  std::u16string_view units() const { return buffer_; }
  String text() const { return String(units()); }

 private:
  static constexpr size_t kKeptCapacity = size_t{8} << 20;
  static std::u16string* buffers() {
    thread_local std::u16string slots[2];
    return slots;
  }

  std::u16string& buffer_;
  bool exists_ = false;
  size_t replacements_ = 0;
};

// Decoding of the whole data that fails on a malformed sequence.
String decodeWhole(std::string_view data, NSStringEncoding encoding) {
  return stringWithBytesStrict(data, encoding);
}

// The first of `encodings` that yields units; `used` receives it.
String decodeWithFallbacks(std::string_view data, std::span<const CFStringEncoding> encodings, NSStringEncoding& used) {
  Pass pass(Pass::kFirst);
  for (CFStringEncoding encoding : encodings) {
    pass.decode(data, nsEncodingFromCFEncoding(encoding));
    if (pass.exists()) {
      used = nsEncodingFromCFEncoding(encoding);
      return pass.text();
    }
  }
  return String();
}

// Reads a file with plain reads straight into the result.
std::optional<std::string> readWholeFile(const std::string& path) {
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return std::nullopt;
  std::string data;
  struct stat info;
  size_t expected = ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) ? static_cast<size_t>(info.st_size) : 0;
  data.resize(std::max<size_t>(expected + 1, 65536));
  size_t filled = 0;
  bool ok = true;
  for (;;) {
    if (filled == data.size()) data.resize(data.size() * 2);
    ssize_t got = ::read(fd, data.data() + filled, data.size() - filled);
    if (got < 0) {
      if (errno == EINTR) continue;
      ok = false;
      break;
    }
    if (got == 0) break;
    filled += static_cast<size_t>(got);
  }
  ::close(fd);
  if (!ok) return std::nullopt;
  data.resize(filled);
  return data;
}

// A property list, binary or XML, written out as XML property-list text;
// null if the data is not a property list.
String propertyListAsXml(std::string_view data) {
  if (data.size() > UINT32_MAX) return String();
  plist_t plist = nullptr;
  plist_from_memory(data.data(), static_cast<uint32_t>(data.size()), &plist);
  if (!plist) return String();
  char* xml = nullptr;
  uint32_t length = 0;
  plist_to_xml(plist, &xml, &length);
  plist_free(plist);
  if (!xml) return String();
  String text = stringWithBytes(std::string_view(xml, length), NSUTF8StringEncoding);
  plist_to_xml_free(xml);
  return text;
}

}  // namespace

String markupCharset(const String& s) {
  String charset = findCharset(s).charset;
  return charset.isNull() ? String::empty() : charset;
}

Range markupCharsetRange(const String& s) {
  return findCharset(s).tag;
}

NSStringEncoding markupEncoding(const String& s) {
  return charset2NSStringEncoding(markupCharset(s));
}

NSStringEncoding headerEncoding(const String& s) {
  return charset2NSStringEncoding(headerCharset(s));
}

NSStringEncoding defaultURLEncoding(const String& s) {
  return markupEncoding(s) == NSISOLatin1StringEncoding ? NSISOLatin1StringEncoding : NSUTF8StringEncoding;
}

std::vector<uint8_t> markupData(const String& s, NSStringEncoding* encoding) {
  if (encoding) *encoding = NSASCIIStringEncoding;
  if (s.isEmpty()) return std::vector<uint8_t>();
  NSStringEncoding declared = markupEncoding(s);
  if (declared != kInvalidEncoding) {
    std::optional<std::string> bytes = encodeString(s.view(), declared);
    if (bytes) {
      if (encoding) *encoding = declared;
      return std::vector<uint8_t>(bytes->begin(), bytes->end());
    }
  }
  std::string ascii = stringByConvertingCharactersToEntities(s).toUtf8();
  return std::vector<uint8_t>(ascii.begin(), ascii.end());
}

namespace {

// The decoding of stringWithMarkupData; `used` receives the encoding of the
// result.
String decodeMarkupData(std::string_view data, const String& encodingName, NSStringEncoding defaultEncoding,
                        NSStringEncoding& used) {
  used = NSASCIIStringEncoding;
  if (data.empty()) return String::empty();
  NSStringEncoding first = defaultEncoding;
  bool named = false;
  if (data.size() >= 3) {
    auto b0 = static_cast<uint8_t>(data[0]), b1 = static_cast<uint8_t>(data[1]);
    if (b0 == 0xFE && b1 == 0xFF) first = NSUTF16BigEndianStringEncoding;
    if (b0 == 0xFF && b1 == 0xFE) first = NSUTF16LittleEndianStringEncoding;
  }
  if (!encodingName.isEmpty()) {
    NSStringEncoding byName = NSEncodingFromName(encodingName);
    if (byName != 0 && byName != kInvalidEncoding) {
      first = byName;
      named = true;
    }
  }

  Pass a(Pass::kFirst);
  a.decode(data, first);
  NSStringEncoding declared = 0;
  if (a.exists()) {
    declared = encodingOfMarkup(a.units());
    if (declared == first || declared == NSASCIIStringEncoding || declared == kInvalidEncoding) {
      used = first;
      return a.text();
    }
  }

  const NSStringEncoding big5 = nsEncodingFromCFEncoding(kCFStringEncodingBig5);
  if (declared == NSWindowsCP1251StringEncoding) {
    if (!(first == NSUTF8StringEncoding && named)) {
      a.drop();
      first = NSWindowsCP1250StringEncoding;
    }
  } else if (declared == big5) {
    a.drop();
    first = nsEncodingFromCFEncoding(kCFStringEncodingBig5_HKSCS_1999);
  }

  Pass b(Pass::kSecond);
  if (declared != 0) b.decode(data, declared);
  if (b.exists()) {
    if (a.exists() && named && first == NSUTF8StringEncoding &&
        (declared == NSWindowsCP1251StringEncoding || declared == NSISOLatin1StringEncoding) && a.replacements() == 0 &&
        b.replacements() == 0 && b.length() > a.length()) {
      used = first;
      return a.text();
    }
    if (!named || !a.exists() || b.replacements() <= a.replacements()) {
      used = declared;
      return b.text();
    }
    used = first;
    return a.text();
  }

  if (declared == NSShiftJISStringEncoding) {
    String text = decodeWithFallbacks(data, japaneseFallbackEncodings(), used);
    if (!text.isNull()) return text;
  } else if (declared == nsEncodingFromCFEncoding(kCFStringEncodingEUC_CN)) {
    String text = decodeWithFallbacks(data, chineseFallbackEncodings(), used);
    if (!text.isNull()) return text;
  } else if (a.exists()) {
    used = first;
    return a.text();
  }

  used = kInvalidEncoding;
  if (first != declared) {
    String text = decodeWhole(data, first);
    if (!text.isNull()) {
      used = first;
      return text;
    }
    if (defaultEncoding != declared && defaultEncoding != first) {
      text = decodeWhole(data, defaultEncoding);
      if (!text.isNull()) used = defaultEncoding;
    }
    return text;
  }
  return String();
}

}  // namespace

String stringWithMarkupData(std::string_view data, const String& encodingName, NSStringEncoding defaultEncoding,
                            const String&, NSStringEncoding* usedEncoding) {
  NSStringEncoding used;
  String text = decodeMarkupData(data, encodingName, defaultEncoding, used);
  if (usedEncoding) *usedEncoding = used;
  return text;
}

String stringWithMarkupData(std::string_view data, NSStringEncoding defaultEncoding) {
  return stringWithMarkupData(data, String(), defaultEncoding, String());
}

String stringWithMarkupDataAndContentType(std::string_view data, const String& contentType,
                                          NSStringEncoding defaultEncoding) {
  String name = contentType.isEmpty() ? String() : headerCharset(contentType);
  return stringWithMarkupData(data, name, defaultEncoding, String());
}

String stringWithMarkupContentsOfFile(const std::string& path, NSStringEncoding defaultEncoding,
                                      NSStringEncoding* usedEncoding) {
  NSStringEncoding used = kInvalidEncoding;
  String result = [&]() -> String {
    if (path.empty()) return String();
    std::optional<std::string> data = readWholeFile(path);
    if (!data) return String();

    if ((data->size() >= 6 && data->compare(0, 6, "bplist") == 0) || isPropertyListFile(String::fromUtf8(path))) {
      String xml = propertyListAsXml(*data);
      if (!xml.isNull()) return xml;
    }

    Pass first(Pass::kFirst);
    first.decode(*data, defaultEncoding);
    used = defaultEncoding;
    if (!first.exists()) return String();
    NSStringEncoding declared = encodingOfMarkup(first.units());
    if (declared == defaultEncoding || declared == NSASCIIStringEncoding || declared == kInvalidEncoding) {
      return first.text();
    }

    Pass second(Pass::kSecond);
    second.decode(*data, declared);
    if (second.exists()) {
      if (second.replacements() > first.replacements()) return first.text();
      if (defaultEncoding == NSUTF8StringEncoding && first.replacements() == 0 && second.replacements() == 0 &&
          (declared == NSWindowsCP1251StringEncoding || declared == NSISOLatin1StringEncoding) &&
          second.length() > first.length()) {
        used = NSUTF8StringEncoding;
        return first.text();
      }
      used = declared;
      return second.text();
    }
    if (declared != NSUTF8StringEncoding) {
      used = declared;
      return first.text();
    }
    used = NSMacOSRomanStringEncoding;
    String macRoman = decodeWhole(*data, NSMacOSRomanStringEncoding);
    return macRoman.isNull() ? first.text() : macRoman;
  }();
  if (usedEncoding) *usedEncoding = used;
  return result;
}

}  // namespace norvane::markup
