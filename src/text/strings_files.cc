// Strings from bytes and files, and strings written to files.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <optional>

#include "norvane/core/unicode.h"
#include "norvane/text/strings.h"

namespace norvane::text {

namespace {

constexpr NSStringEncoding kLastExplicitEncoding = 0xFFFFFFEF;

std::optional<std::string> readWholeFile(const std::string& path) {
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return std::nullopt;
  std::string bytes;
  char buffer[65536];
  ssize_t got;
  while ((got = ::read(fd, buffer, sizeof buffer)) > 0) bytes.append(buffer, static_cast<size_t>(got));
  ::close(fd);
  if (got < 0) return std::nullopt;
  return bytes;
}

bool writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    ssize_t put = ::write(fd, bytes.data(), bytes.size());
    if (put < 0) return false;
    bytes.remove_prefix(static_cast<size_t>(put));
  }
  return true;
}

bool writeWholeFile(const std::string& path, std::string_view bytes, bool atomically) {
  if (!atomically) {
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0) return false;
    bool written = writeAll(fd, bytes);
    return ::close(fd) == 0 && written;
  }
  std::string temporary = path + ".XXXXXX";
  int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
  if (fd < 0) return false;
  // mkostemp creates the file 0600; give it the permissions a new file gets.
  mode_t mask = ::umask(0);
  ::umask(mask);
  bool written = ::fchmod(fd, 0666 & ~mask) == 0 && writeAll(fd, bytes) && ::fsync(fd) == 0;
  written = ::close(fd) == 0 && written;
  if (!written || ::rename(temporary.c_str(), path.c_str()) != 0) {
    ::unlink(temporary.c_str());
    return false;
  }
  return true;
}

// A byte-order mark's encoding, or kInvalidEncoding.
NSStringEncoding encodingOfByteOrderMark(std::string_view bytes) {
  auto startsWith = [&](std::string_view mark) { return bytes.substr(0, mark.size()) == mark; };
  using namespace std::string_view_literals;
  if (startsWith("\xEF\xBB\xBF"sv)) return NSUTF8StringEncoding;
  if (startsWith("\x00\x00\xFE\xFF"sv) || startsWith("\xFF\xFE\x00\x00"sv)) return NSUTF32StringEncoding;
  if (startsWith("\xFE\xFF"sv) || startsWith("\xFF\xFE"sv)) return NSUnicodeStringEncoding;
  return kInvalidEncoding;
}

String fromDecoded(std::optional<std::u16string>&& units) {
  if (!units) return String();
  return String::fromU16(std::move(*units));
}

}  // namespace

String stringWithData(const Data& data, NSStringEncoding encoding) {
  std::string_view bytes(reinterpret_cast<const char*>(data.data()), data.size());
  return stringWithBytesStrict(bytes, encoding);
}

String stringWithCString(const char* bytes, size_t length, NSStringEncoding encoding) {
  if (!bytes) return String();
  return stringWithBytesStrict(std::string_view(bytes, strnlen(bytes, length)), encoding);
}

String stringWithNullTerminatedCString(const char* bytes, NSStringEncoding encoding) {
  if (!bytes) return String();
  return stringWithBytesStrict(std::string_view(bytes), encoding);
}

String stringWithContentsOfFile(const std::string& path, NSStringEncoding encoding, NSStringEncoding* usedEncoding) {
  std::optional<std::string> bytes = readWholeFile(path);
  if (encoding >= 1 && encoding <= kLastExplicitEncoding) {
    if (usedEncoding) *usedEncoding = encoding;
    if (!bytes) return String();
    return fromDecoded(decodeBytesStrict(*bytes, encoding));
  }
  if (!bytes) return String();
  return stringByDetectingEncoding(*bytes, usedEncoding);
}

String stringByDetectingEncoding(std::string_view bytes, NSStringEncoding* usedEncoding) {
  NSStringEncoding detected = encodingOfByteOrderMark(bytes);
  std::optional<std::u16string> units;
  if (detected != kInvalidEncoding) units = decodeBytesStrict(bytes, detected);
  if (!units) {
    detected = NSUTF8StringEncoding;
    units = utf8ToUtf16Strict(bytes);
  }
  if (!units) {
    detected = NSASCIIStringEncoding;
    units = decodeBytes(bytes, NSASCIIStringEncoding);
  }
  if (usedEncoding) *usedEncoding = detected;
  return fromDecoded(std::move(units));
}

bool writeToFile(const String& s, const std::string& path, bool atomically, NSStringEncoding encoding) {
  if (s.isNull()) return false;
  std::optional<std::string> bytes = encodeString(s.view(), encoding);
  return bytes && writeWholeFile(path, *bytes, atomically);
}

bool writeToFileUsingDefaultEncoding(const String& s, const std::string& path, bool atomically,
                                     NSStringEncoding* usedEncoding) {
  NSStringEncoding encoding = defaultEncoding();
  if (usedEncoding) *usedEncoding = encoding;
  return writeToFile(s, path, atomically, encoding);
}

NSStringEncoding fastestEncoding(const String&) {
  return NSUTF8StringEncoding;
}

NSStringEncoding smallestEncoding(const String& s) {
  unichar highest = 0;
  size_t utf8Bytes = 0;
  for (unichar u : s.view()) {
    highest = std::max(highest, u);
    // A surrogate pair takes 4 bytes in UTF-8: 2 for each half.
    utf8Bytes += u < 0x80 ? 1 : u < 0x800 ? 2 : (u >= 0xD800 && u <= 0xDFFF) ? 2 : 3;
  }
  if (highest < 0x80) return NSASCIIStringEncoding;
  if (highest < 0x100) return NSISOLatin1StringEncoding;
  size_t utf16Bytes = 2 + 2 * s.length();
  return utf8Bytes <= utf16Bytes ? NSUTF8StringEncoding : NSUnicodeStringEncoding;
}

bool writeToFileUsingFastestEncoding(const String& s, const std::string& path, bool atomically,
                                     NSStringEncoding* usedEncoding) {
  NSStringEncoding encoding = fastestEncoding(s);
  if (usedEncoding) *usedEncoding = encoding;
  return writeToFile(s, path, atomically, encoding);
}

bool writeToFileUsingSmallestEncoding(const String& s, const std::string& path, bool atomically,
                                      NSStringEncoding* usedEncoding) {
  NSStringEncoding encoding = smallestEncoding(s);
  if (usedEncoding) *usedEncoding = encoding;
  return writeToFile(s, path, atomically, encoding);
}

}  // namespace norvane::text
