#include "norvane/files/data.h"

#include <fcntl.h>
#include <unistd.h>
#include <zlib.h>

#include <cstring>

#include "norvane/core/log.h"
#include "norvane/core/unicode.h"
#include "norvane/markup/tag_scanner.h"
#include "norvane/text/encodings.h"

namespace norvane::files {
namespace {

constexpr size_t kChunk = 16384;
constexpr int64_t kLargestInput = 0xFFFFFFFF;
constexpr int kGzipWindowBits = 31;
constexpr int kZlibWindowBits = 15;
constexpr int kRawWindowBits = -15;
constexpr int kDetectingWindowBits = 47;

int clampLevel(int level) {
  if (level == Z_DEFAULT_COMPRESSION) return level;
  return level < 1 ? 1 : level > 9 ? 9 : level;
}

bool acceptableInput(const uint8_t* bytes, int64_t length) {
  return bytes && length >= 1 && length <= kLargestInput;
}

std::optional<Data> compress(const uint8_t* bytes, int64_t length, int level, int windowBits) {
  if (!acceptableInput(bytes, length)) return std::nullopt;
  z_stream stream{};
  if (deflateInit2(&stream, clampLevel(level), Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
    return std::nullopt;
  }
  Data result;
  result.reserve(static_cast<size_t>(length / 4));
  stream.next_in = const_cast<Bytef*>(bytes);
  stream.avail_in = static_cast<uInt>(length);
  uint8_t chunk[kChunk];
  int status;
  do {
    stream.next_out = chunk;
    stream.avail_out = kChunk;
    status = deflate(&stream, Z_FINISH);
    if (status == Z_STREAM_ERROR) break;
    result.insert(result.end(), chunk, chunk + (kChunk - stream.avail_out));
  } while (status != Z_STREAM_END);
  deflateEnd(&stream);
  if (status != Z_STREAM_END) return std::nullopt;
  return result;
}

bool inflateInto(Data& data, const uint8_t* bytes, int64_t length, int windowBits) {
  if (!acceptableInput(bytes, length)) return false;
  z_stream stream{};
  if (inflateInit2(&stream, windowBits) != Z_OK) return false;
  data.clear();
  stream.next_in = const_cast<Bytef*>(bytes);
  stream.avail_in = static_cast<uInt>(length);
  uint8_t chunk[kChunk];
  int status;
  do {
    stream.next_out = chunk;
    stream.avail_out = kChunk;
    status = inflate(&stream, Z_NO_FLUSH);
    data.insert(data.end(), chunk, chunk + (kChunk - stream.avail_out));
    // Errors, dictionary requests, and input that ends before the stream does.
    if (status == Z_NEED_DICT || status == Z_DATA_ERROR || status == Z_MEM_ERROR || status == Z_STREAM_ERROR ||
        (status == Z_BUF_ERROR && stream.avail_in == 0)) {
      inflateEnd(&stream);
      return false;
    }
  } while (status != Z_STREAM_END);
  bool consumedAll = stream.avail_in == 0;
  inflateEnd(&stream);
  return consumedAll;
}

std::optional<Data> inflated(const uint8_t* bytes, int64_t length, int windowBits) {
  Data data;
  if (!inflateInto(data, bytes, length, windowBits)) return std::nullopt;
  return data;
}

const uint8_t* find(const uint8_t* from, const uint8_t* end, const std::string& needle) {
  if (needle.empty() || end - from < static_cast<ptrdiff_t>(needle.size())) return nullptr;
  return static_cast<const uint8_t*>(memmem(from, static_cast<size_t>(end - from), needle.data(), needle.size()));
}

int hexValue(unichar u) {
  if (u >= u'0' && u <= u'9') return u - u'0';
  if (u >= u'a' && u <= u'f') return u - u'a' + 10;
  if (u >= u'A' && u <= u'F') return u - u'A' + 10;
  return 0;
}

}  // namespace

std::optional<Data> dataByCompressingBytes(const uint8_t* bytes, int64_t length, int level, bool useGzip) {
  return compress(bytes, length, level, useGzip ? kGzipWindowBits : kZlibWindowBits);
}
std::optional<Data> dataByGzippingBytes(const uint8_t* bytes, int64_t length, int level) {
  return dataByCompressingBytes(bytes, length, level, true);
}
std::optional<Data> dataByDeflatingBytes(const uint8_t* bytes, int64_t length, int level) {
  return dataByCompressingBytes(bytes, length, level, false);
}
std::optional<Data> dataByGzippingData(const Data& data, int level) {
  return dataByGzippingBytes(data.data(), static_cast<int64_t>(data.size()), level);
}
std::optional<Data> dataByDeflatingData(const Data& data, int level) {
  return dataByDeflatingBytes(data.data(), static_cast<int64_t>(data.size()), level);
}

bool setDataByInflatingBytes(Data& data, const uint8_t* bytes, int64_t length) {
  return inflateInto(data, bytes, length, kDetectingWindowBits);
}
bool setDataByInflating(Data& data, const Data& source) {
  return setDataByInflatingBytes(data, source.data(), static_cast<int64_t>(source.size()));
}
std::optional<Data> dataByInflatingBytes(const uint8_t* bytes, int64_t length) {
  return inflated(bytes, length, kDetectingWindowBits);
}
std::optional<Data> dataByInflatingData(const Data& data) {
  return dataByInflatingBytes(data.data(), static_cast<int64_t>(data.size()));
}

std::optional<Data> dataByRawDeflatingData(const Data& data, int level) {
  return compress(data.data(), static_cast<int64_t>(data.size()), level, kRawWindowBits);
}
std::optional<Data> dataByRawInflatingData(const Data& data) {
  return inflated(data.data(), static_cast<int64_t>(data.size()), kRawWindowBits);
}

String stringUsingUTF8Encoding(const Data& data) {
  auto text = utf8ToUtf16Strict(std::string_view(reinterpret_cast<const char*>(data.data()), data.size()));
  return text ? String(*text) : String();
}

String stringUsingEncoding(const Data& data, uint32_t nsStringEncoding) {
  return text::stringWithBytesStrict(std::string_view(reinterpret_cast<const char*>(data.data()), data.size()),
                                     nsStringEncoding);
}

std::optional<Dictionary> formDataUsingBoundary(const Data& body, const String& boundary) {
  if (boundary.isNull() || body.empty()) return std::nullopt;
  const std::string marker = "--" + boundary.toUtf8();
  static constexpr char kClosing[] = "--\r\n";
  if (body.size() <= marker.size() + 4 || std::memcmp(body.data() + body.size() - 4, kClosing, 4) != 0) {
    return std::nullopt;
  }
  static constexpr char kDisposition[] = "Content-Disposition: form-data;";
  constexpr size_t kDispositionLength = sizeof kDisposition - 1;  // 31
  static const std::string kBlankLine = "\r\n\r\n";
  static const String kName(u"NAME"), kFilename(u"FILENAME");

  Dictionary fields;
  const uint8_t* cursor = body.data();
  const uint8_t* workEnd = body.data() + body.size() - 4;
  while (cursor < workEnd) {
    const uint8_t* next = find(cursor, workEnd, marker);
    if (!next) break;
    size_t partLength = static_cast<size_t>(next - cursor);
    if (partLength >= 33 && std::memcmp(cursor, kDisposition, kDispositionLength) == 0 && next[-2] == '\r' &&
        next[-1] == '\n') {
      const uint8_t* contentEnd = next - 2;
      const uint8_t* header = cursor + kDispositionLength;
      while (header < contentEnd && *header == ' ') ++header;
      const uint8_t* blank = find(header, contentEnd, kBlankLine);
      if (blank && blank + 4 < contentEnd) {
        const uint8_t* valueStart = blank + 4;
        String headerText = String::fromUtf8(
            std::string_view(reinterpret_cast<const char*>(header), static_cast<size_t>(valueStart - header)));
        String name = markup::headerFieldNamed(headerText, kName, u'"');
        String filename = markup::headerFieldNamed(headerText, kFilename, u'"');
        if (!name.isNull()) fields.set(name, Value(Data(valueStart, contentEnd)));
        if (!filename.isNull()) {
          fields.set(String(name.toU16() + u"_filename"), Value(filename));
        }
      }
    }
    cursor = next + marker.size();
    if (workEnd - cursor >= 2 && cursor[0] == '\r' && cursor[1] == '\n') cursor += 2;
  }
  return fields;
}

Dictionary URLEncodedFormData(const Data& body) {
  Dictionary fields;
  std::u16string text = utf8ToUtf16(std::string_view(reinterpret_cast<const char*>(body.data()), body.size()));
  size_t start = 0;
  while (start <= text.size()) {
    size_t end = text.find(u'&', start);
    if (end == std::u16string::npos) end = text.size();
    std::u16string_view piece(text.data() + start, end - start);
    if (size_t equals = piece.find(u'='); equals != std::u16string_view::npos) {
      Data value;
      for (size_t i = equals + 1; i < piece.size(); ++i) {
        if (piece[i] == u'%' && piece.size() - i > 2) {
          value.push_back(static_cast<uint8_t>(hexValue(piece[i + 1]) * 16 + hexValue(piece[i + 2])));
          i += 2;
        } else {
          value.push_back(static_cast<uint8_t>(piece[i] & 0xFF));
        }
      }
      fields.set(String(piece.substr(0, equals)), Value(std::move(value)));
    }
    start = end + 1;
  }
  return fields;
}

bool isAsciiData(const Data& data) {
  if (data.empty()) return false;
  for (uint8_t byte : data) {
    if (byte >= 0x80) return false;
    if (byte < 0x20 && byte != 0x03 && byte != 0x08 && byte != 0x09 && byte != 0x0A && byte != 0x0C && byte != 0x0D) {
      return false;
    }
  }
  return true;
}

std::optional<Data> dataWithUncachedContentsOfFile(const std::string& path) {
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return std::nullopt;
  Data data;
  uint8_t buffer[1 << 16];
  for (;;) {
    ssize_t n = ::read(fd, buffer, sizeof buffer);
    if (n < 0) {
      if (errno == EINTR) continue;
      ::close(fd);
      return std::nullopt;
    }
    if (n == 0) break;
    data.insert(data.end(), buffer, buffer + n);
  }
  // Leave nothing of the file in the page cache.
  ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
  ::close(fd);
  return data;
}

void dump(const Data& data) {
  if (data.empty()) return;
  std::string listing;
  for (size_t line = 0; line < data.size(); line += 16) {
    size_t count = std::min<size_t>(16, data.size() - line);
    std::string characters, hex;
    for (size_t i = 0; i < count; ++i) {
      uint8_t byte = data[line + i];
      characters.push_back(byte < 0x20 ? ' ' : static_cast<char>(byte));
      hex += fmt::format("{:02x} ", byte);
    }
    characters.resize(16, ' ');
    listing += fmt::format("{}: {}\n", characters, hex);
  }
  if (data.size() <= 16) {
    logMessage(listing);
  } else {
    logFormat("\n{}\n", listing);
  }
}

void dumpAsArray(const Data& data) {
  if (data.empty()) return;
  std::string table = "const unsigned char data[] = {\n\t";
  for (size_t i = 0; i < data.size(); ++i) {
    if (i + 1 == data.size()) {
      table += fmt::format("0x{:02x}\n}};\n ", data[i]);
    } else if ((i + 1) % 16 == 0) {
      table += fmt::format("0x{:02x},\n\t", data[i]);
    } else {
      table += fmt::format("0x{:02x}, ", data[i]);
    }
  }
  logFormat("\n{}\n", table);
}

void appendString(Data& data, const String& string) {
  if (string.isNull()) return;
  std::string utf8 = string.toUtf8();
  data.insert(data.end(), utf8.begin(), utf8.end());
}

}  // namespace norvane::files
