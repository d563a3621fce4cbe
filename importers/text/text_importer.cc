// The plain-text importer: decodes a text file and reports its text and a
// title.
//
// Encoding: a byte-order mark (UTF-8, UTF-16 and UTF-32 in either byte
// order) decides; without one the bytes are taken as UTF-8 when they are
// valid UTF-8, else as Windows-1252. The title is the first line that is
// not white space only, trimmed, cut to at most kTitleLength code units
// without splitting a surrogate pair.
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "importer_object.h"
#include "norvane/importer.h"

namespace {

constexpr size_t kTitleLength = 256;
// Larger files are read up to this size; the rest is left out.
constexpr size_t kMaxBytes = 64u << 20;

struct Encoding {
  const char* converter;
  size_t bomLength;
};

Encoding encodingOf(const std::string& bytes) {
  auto starts = [&](const char* bom, size_t n) { return bytes.size() >= n && std::memcmp(bytes.data(), bom, n) == 0; };
  if (starts("\xEF\xBB\xBF", 3)) return {"UTF-8", 3};
  if (starts("\xFF\xFE\x00\x00", 4)) return {"UTF-32LE", 4};
  if (starts("\x00\x00\xFE\xFF", 4)) return {"UTF-32BE", 4};
  if (starts("\xFF\xFE", 2)) return {"UTF-16LE", 2};
  if (starts("\xFE\xFF", 2)) return {"UTF-16BE", 2};
  return {nullptr, 0};
}

// Converts with ICU; `strict` stops at the first malformed sequence.
bool decode(const char* converterName, const char* bytes, size_t length, bool strict, std::u16string& out) {
  UErrorCode status = U_ZERO_ERROR;
  UConverter* converter = ucnv_open(converterName, &status);
  if (U_FAILURE(status)) return false;
  if (strict) ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  out.resize(length * 2 + 2);
  int32_t n = ucnv_toUChars(converter, out.data(), static_cast<int32_t>(out.size()), bytes,
                            static_cast<int32_t>(length), &status);
  ucnv_close(converter);
  if (U_FAILURE(status)) return false;
  out.resize(static_cast<size_t>(n));
  return true;
}

std::u16string decodeText(const std::string& bytes) {
  std::u16string text;
  Encoding bom = encodingOf(bytes);
  if (bom.converter) {
    decode(bom.converter, bytes.data() + bom.bomLength, bytes.size() - bom.bomLength, false, text);
  } else if (!decode("UTF-8", bytes.data(), bytes.size(), true, text)) {
    decode("windows-1252", bytes.data(), bytes.size(), false, text);
  }
  return text;
}

bool isLineEnd(char16_t u) {
  return u == u'\n' || u == u'\r' || u == 0x2028 || u == 0x2029 || u == 0x0C;
}
bool isWhite(char16_t u) {
  return u_isUWhiteSpace(u) || u == 0xFEFF;
}

std::u16string titleOf(const std::u16string& text) {
  size_t start = 0;
  while (start < text.size()) {
    size_t end = start;
    while (end < text.size() && !isLineEnd(text[end])) ++end;
    size_t first = start, last = end;
    while (first < last && isWhite(text[first])) ++first;
    while (last > first && isWhite(text[last - 1])) --last;
    if (first < last) {
      size_t length = std::min(last - first, kTitleLength);
      if (length < last - first && U16_IS_LEAD(text[first + length - 1])) --length;
      return text.substr(first, length);
    }
    start = end + 1;
  }
  return {};
}

std::string toUtf8(const std::u16string& s) {
  std::string out(s.size() * 3, '\0');
  int32_t n = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strToUTF8WithSub(out.data(), static_cast<int32_t>(out.size()), &n, s.data(), static_cast<int32_t>(s.size()), 0xFFFD,
                     nullptr, &status);
  out.resize(U_SUCCESS(status) ? static_cast<size_t>(n) : 0);
  return out;
}

int32_t importFile(void*, NorvaneAttributes* attributes, const char*, const char* path) {
  std::ifstream in(path, std::ios::binary | std::ios::ate);
  if (!in) return 0;
  std::streamoff size = in.tellg();
  if (size < 0) return 0;
  in.seekg(0);
  std::string bytes(std::min(static_cast<size_t>(size), kMaxBytes), '\0');
  in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<size_t>(in.gcount()));
  std::u16string text = decodeText(bytes);
  std::string utf8 = toUtf8(text);
  norvane_set_string(attributes, "kMDItemTextContent", utf8.data(), utf8.size());
  std::string title = toUtf8(titleOf(text));
  if (!title.empty()) norvane_set_string(attributes, "kMDItemTitle", title.data(), title.size());
  return 1;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void* NorvaneTextImporterFactory(const char* typeID) {
  return norvane::importers::PathImporter<importFile>::create(typeID);
}
