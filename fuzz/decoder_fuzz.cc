// The markup decoder on arbitrary bytes. The first bytes choose the default
// encoding and a charset name from outside; the rest is the data. Whatever
// comes back must be well-formed UTF-16 (or null), and the charset scan and
// re-encoding of the result must hold up as well.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "norvane/core/log.h"
#include "norvane/markup/charsets.h"
#include "norvane/markup/decoding.h"
#include "norvane/text/encodings.h"

namespace {

using namespace norvane;
using namespace norvane::text;

const NSStringEncoding kDefaults[] = {
    NSUTF8StringEncoding,          NSISOLatin1StringEncoding, NSShiftJISStringEncoding,
    NSWindowsCP1251StringEncoding, NSUnicodeStringEncoding,   NSUTF16LittleEndianStringEncoding,
    NSKamenickyStringEncoding,     NSISO2022JPStringEncoding, 0x80000A03 /* Big5 */,
    0x80000930 /* EUC-CN */,       0x80000931 /* EUC-TW */,   0x80000510 /* Johab, iconv */,
    NSNonLossyASCIIStringEncoding, NSKoi8cs2StringEncoding,
};

const char* const kNames[] = {"", "utf-8", "x-sjis", "koi8-cs2", "gb2312", "utf-16", "windows-1251", "hz-gb-2312"};

// Well-formed: no unpaired surrogate.
bool isWellFormed(const String& s) {
  const unichar* units = s.data();
  size_t length = s.length();
  for (size_t i = 0; i < length; ++i) {
    unichar u = units[i];
    if (u >= 0xD800 && u < 0xDC00) {
      if (i + 1 >= length || units[i + 1] < 0xDC00 || units[i + 1] >= 0xE000) return false;
      ++i;
    } else if (u >= 0xDC00 && u < 0xE000) {
      return false;
    }
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  LogCapture quiet;  // unknown charset names are logged; keep the run's output readable
  NSStringEncoding defaultEncoding = kDefaults[data[0] % std::size(kDefaults)];
  String name = String::fromLatin1(kNames[(data[0] >> 4) % std::size(kNames)]);
  std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);

  NSStringEncoding used = 0;
  String text = markup::stringWithMarkupData(bytes, name, defaultEncoding, String(), &used);
  if (!text.isNull()) {
    if (!isWellFormed(text)) abort();
    markup::markupCharsetRange(text);
    NSStringEncoding declared = 0;
    markup::markupData(text, &declared);
    markup::isHTML(text);
  } else if (bytes.empty()) {
    abort();  // empty data gives an empty string, never null
  }

  // Each decoder on its own: lossy never fails for an available encoding.
  std::optional<std::u16string> lossy = decodeBytes(bytes, defaultEncoding);
  if (isNSEncodingAvailable(defaultEncoding) && !lossy) abort();
  std::optional<std::u16string> strict = decodeBytesStrict(bytes, defaultEncoding);
  if (strict && lossy && defaultEncoding == NSUTF8StringEncoding && *strict != *lossy) abort();

  markup::charset2NSStringEncoding(
      String::fromLatin1(std::string_view(bytes.data(), std::min<size_t>(bytes.size(), 40))));
  return 0;
}
