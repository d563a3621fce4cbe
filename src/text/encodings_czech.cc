// The two Czech encodings that no library here provides: Kamenicky (the DOS
// code page of the Kamenicky brothers) and KOI8-CS2. Both keep ASCII in the
// lower half; the tables give the upper half.

#include <optional>

#include "norvane/text/encodings.h"
#include "text/encodings_internal.h"

namespace norvane::text {
namespace {

// Kamenicky: Czech and Slovak letters in 0x80..0xAF, then the box drawing,
// Greek and mathematical signs of the US DOS code page.
const char16_t kKamenickyHigh[128] = {
    0x010C, 0x00FC, 0x00E9, 0x010F, 0x00E4, 0x010E, 0x0164, 0x010D,  // 80
    0x011B, 0x011A, 0x0139, 0x00CD, 0x013E, 0x013A, 0x00C4, 0x00C1,  // 88
    0x00C9, 0x017E, 0x017D, 0x00F4, 0x00F6, 0x00D3, 0x016F, 0x00DA,  // 90
    0x00FD, 0x00D6, 0x00DC, 0x0160, 0x013D, 0x00DD, 0x0158, 0x0165,  // 98
    0x00E1, 0x00ED, 0x00F3, 0x00FA, 0x0148, 0x0147, 0x016E, 0x00D4,  // A0
    0x0161, 0x0159, 0x0155, 0x0154, 0x00BC, 0x00A7, 0x00AB, 0x00BB,  // A8
    0x2591, 0x2592, 0x2593, 0x2502, 0x2524, 0x2561, 0x2562, 0x2556,  // B0
    0x2555, 0x2563, 0x2551, 0x2557, 0x255D, 0x255C, 0x255B, 0x2510,  // B8
    0x2514, 0x2534, 0x252C, 0x251C, 0x2500, 0x253C, 0x255E, 0x255F,  // C0
    0x255A, 0x2554, 0x2569, 0x2566, 0x2560, 0x2550, 0x256C, 0x2567,  // C8
    0x2568, 0x2564, 0x2565, 0x2559, 0x2558, 0x2552, 0x2553, 0x256B,  // D0
    0x256A, 0x2518, 0x250C, 0x2588, 0x2584, 0x258C, 0x2590, 0x2580,  // D8
    0x03B1, 0x00DF, 0x0393, 0x03C0, 0x03A3, 0x03C3, 0x00B5, 0x03C4,  // E0
    0x03A6, 0x0398, 0x03A9, 0x03B4, 0x221E, 0x03C6, 0x03B5, 0x2229,  // E8
    0x2261, 0x00B1, 0x2265, 0x2264, 0x2320, 0x2321, 0x00F7, 0x2248,  // F0
    0x00B0, 0x2219, 0x00B7, 0x221A, 0x207F, 0x00B2, 0x25A0, 0x00A0,  // F8
};

// KOI8-CS2 after the KOI8 rule: a letter with a diacritic stands where its
// base letter stands in ASCII, moved up by 0x80, small letters in
// 0xC0..0xDF and capitals in 0xE0..0xFF; a second letter on the same base
// takes a free place nearby. 0xA0 is the no-break space. Places without a
// character are U+FFFD.
constexpr char16_t X = 0xFFFD;
const char16_t kKoi8cs2High[128] = {
    X,      X,      X,      X,      X,      X,      X,      X,       // 80
    X,      X,      X,      X,      X,      X,      X,      X,       // 88
    X,      X,      X,      X,      X,      X,      X,      X,       // 90
    X,      X,      X,      X,      X,      X,      X,      X,       // 98
    0x00A0, X,      X,      X,      X,      X,      X,      X,       // A0
    X,      X,      X,      X,      X,      X,      X,      X,       // A8
    X,      X,      X,      X,      X,      X,      X,      X,       // B0
    X,      X,      X,      X,      X,      X,      X,      X,       // B8
    0x00F4, 0x00E1, 0x00E4, 0x010D, 0x010F, 0x00E9, 0x011B, 0x00F6,  // C0 ô á ä č ď é ě ö
    0x00FC, 0x00ED, 0x013A, 0x0155, 0x013E, 0x016F, 0x0148, 0x00F3,  // C8 ü í ĺ ŕ ľ ů ň ó
    0x0151, 0x0171, 0x0159, 0x0161, 0x0165, 0x00FA, X,      X,       // D0 ő ű ř š ť ú
    X,      0x00FD, 0x017E, X,      X,      X,      X,      X,       // D8    ý ž
    0x00D4, 0x00C1, 0x00C4, 0x010C, 0x010E, 0x00C9, 0x011A, 0x00D6,  // E0 Ô Á Ä Č Ď É Ě Ö
    0x00DC, 0x00CD, 0x0139, 0x0154, 0x013D, 0x016E, 0x0147, 0x00D3,  // E8 Ü Í Ĺ Ŕ Ľ Ů Ň Ó
    0x0150, 0x0170, 0x0158, 0x0160, 0x0164, 0x00DA, X,      X,       // F0 Ő Ű Ř Š Ť Ú
    X,      0x00DD, 0x017D, X,      X,      X,      X,      X,       // F8    Ý Ž
};

std::optional<std::string> encodeWithTable(std::u16string_view text, const char16_t* high, bool lossy) {
  std::string out;
  out.reserve(text.size());
  for (char16_t unit : text) {
    if (unit < 0x80) {
      out += static_cast<char>(unit);
      continue;
    }
    int found = -1;
    for (int k = 0; k < 128 && unit != 0xFFFD; ++k) {
      if (high[k] == unit) {
        found = k;
        break;
      }
    }
    if (found < 0) {
      if (!lossy) return std::nullopt;
      out += '?';
    } else {
      out += static_cast<char>(0x80 + found);
    }
  }
  return out;
}

void decodeWithTable(std::string_view bytes, const char16_t* high, std::u16string& out) {
  size_t start = out.size();
  out.resize(start + bytes.size());
  for (size_t i = 0; i < bytes.size(); ++i) {
    auto byte = static_cast<uint8_t>(bytes[i]);
    out[start + i] = byte < 0x80 ? byte : high[byte - 0x80];
  }
}

}  // namespace

std::u16string decodeKamenicky(std::string_view bytes) {
  std::u16string out;
  decodeWithTable(bytes, kKamenickyHigh, out);
  return out;
}

std::u16string decodeKoi8cs2(std::string_view bytes) {
  std::u16string out;
  decodeWithTable(bytes, kKoi8cs2High, out);
  return out;
}

bool decodeKoi8cs2Appending(std::string_view bytes, bool strict, std::u16string& out) {
  size_t start = out.size();
  decodeWithTable(bytes, kKoi8cs2High, out);
  if (strict && out.find(char16_t(0xFFFD), start) != std::u16string::npos) {
    out.resize(start);
    return false;
  }
  return true;
}

std::optional<std::string> encodeKamenicky(std::u16string_view text, bool lossy) {
  return encodeWithTable(text, kKamenickyHigh, lossy);
}

std::optional<std::string> encodeKoi8cs2(std::u16string_view text, bool lossy) {
  return encodeWithTable(text, kKoi8cs2High, lossy);
}

}  // namespace norvane::text
