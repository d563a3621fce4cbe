// UTF-8 to UTF-16 and back, with an SSE2 path for runs of ASCII.

#include <emmintrin.h>

#include <algorithm>
#include <cstdint>

#include "norvane/text/encodings.h"
#include "text/encodings_internal.h"

namespace norvane::text {
namespace {

// Widens ASCII bytes to units as long as whole 16-byte blocks are ASCII,
// then the ASCII prefix of the first block that is not. Answers how many
// bytes were copied.
size_t widenAscii(const uint8_t* source, size_t length, char16_t* target) {
  size_t i = 0;
  const __m128i zero = _mm_setzero_si128();
  while (length - i >= 16) {
    __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + i));
    int nonAscii = _mm_movemask_epi8(block);
    if (nonAscii != 0) {
      size_t prefix = static_cast<size_t>(__builtin_ctz(nonAscii));
      for (size_t k = 0; k < prefix; ++k) target[i + k] = source[i + k];
      return i + prefix;
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(target + i), _mm_unpacklo_epi8(block, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(target + i + 8), _mm_unpackhi_epi8(block, zero));
    i += 16;
  }
  while (i < length && source[i] < 0x80) {
    target[i] = source[i];
    ++i;
  }
  return i;
}

bool isTrail(uint8_t b) {
  return (b & 0xC0) == 0x80;
}

// Decodes the multi-byte sequence at `p` (p[0] >= 0x80). Answers the bytes
// taken; sets `codePoint` to the character, or to -1 for an ill-formed
// subpart (of the answered length, at least 1).
size_t decodeSequence(const uint8_t* p, size_t available, int32_t& codePoint) {
  uint8_t lead = p[0];
  size_t needed;
  uint8_t low = 0x80, high = 0xBF;  // bounds of the second byte
  int32_t value;
  if (lead >= 0xC2 && lead <= 0xDF) {
    needed = 1;
    value = lead & 0x1F;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    needed = 2;
    value = lead & 0x0F;
    if (lead == 0xE0) low = 0xA0;
    if (lead == 0xED) high = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    needed = 3;
    value = lead & 0x07;
    if (lead == 0xF0) low = 0x90;
    if (lead == 0xF4) high = 0x8F;
  } else {
    codePoint = -1;
    return 1;
  }
  size_t taken = 1;
  for (size_t k = 0; k < needed; ++k) {
    if (taken >= available) break;
    uint8_t b = p[taken];
    bool fits = k == 0 ? (b >= low && b <= high) : isTrail(b);
    if (!fits) break;
    value = (value << 6) | (b & 0x3F);
    ++taken;
  }
  codePoint = taken == needed + 1 ? value : -1;
  return taken;
}

}  // namespace

bool decodeUtf8(std::string_view bytes, bool strict, std::u16string& out) {
  const auto* p = reinterpret_cast<const uint8_t*>(bytes.data());
  size_t length = bytes.size();
  size_t i = 0;
  if (length >= 3 && p[0] == 0xEF && p[1] == 0xBB && p[2] == 0xBF) i = 3;
  size_t start = out.size();
  // Never more units than bytes: each sequence of n bytes gives at most n
  // units, and a replacement stands for at least one byte.
  out.resize(start + (length - i));
  char16_t* target = out.data() + start;
  size_t written = 0;
  while (i < length) {
    uint8_t lead = p[i];
    if (lead < 0x80) {
      size_t ascii = widenAscii(p + i, length - i, target + written);
      i += ascii;
      written += ascii;
      continue;
    }
    // Two-byte sequences, the common case of European and Cyrillic text.
    if (lead >= 0xC2 && lead <= 0xDF && i + 1 < length && isTrail(p[i + 1])) {
      target[written++] = static_cast<char16_t>((lead & 0x1F) << 6 | (p[i + 1] & 0x3F));
      i += 2;
      continue;
    }
    int32_t codePoint;
    i += decodeSequence(p + i, length - i, codePoint);
    if (codePoint < 0) {
      if (strict) {
        out.resize(start);
        return false;
      }
      target[written++] = 0xFFFD;
    } else if (codePoint < 0x10000) {
      target[written++] = static_cast<char16_t>(codePoint);
    } else {
      codePoint -= 0x10000;
      target[written++] = static_cast<char16_t>(0xD800 + (codePoint >> 10));
      target[written++] = static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF));
    }
  }
  out.resize(start + written);
  return true;
}

std::optional<std::string> encodeUtf8(std::u16string_view text, bool lossy) {
  std::string out;
  out.reserve(text.size() + text.size() / 2);
  for (size_t i = 0; i < text.size(); ++i) {
    uint32_t c = text[i];
    if (c >= 0xD800 && c < 0xE000) {
      bool paired = c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
      if (!paired) {
        if (!lossy) return std::nullopt;
        c = 0xFFFD;
      } else {
        c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
      }
    }
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c < 0x800) {
      out += static_cast<char>(0xC0 | c >> 6);
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      out += static_cast<char>(0xE0 | c >> 12);
      out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | c >> 18);
      out += static_cast<char>(0x80 | (c >> 12 & 0x3F));
      out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return out;
}

size_t countReplacementCharacters(const unichar* units, size_t length) {
  const __m128i replacement = _mm_set1_epi16(static_cast<short>(0xFFFD));
  const __m128i zero = _mm_setzero_si128();
  const size_t whole = length & ~size_t{7};
  size_t count = 0;
  size_t i = 0;
  while (i < whole) {
    // Each 16-bit lane counts its matches (0xFFFF is -1); flush before a
    // lane can overflow.
    __m128i lanes = zero;
    size_t end = std::min(whole, i + size_t{8} * 0xFFFF);
    for (; i < end; i += 8) {
      __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units + i));
      lanes = _mm_sub_epi16(lanes, _mm_cmpeq_epi16(block, replacement));
    }
    __m128i sum = _mm_add_epi32(_mm_unpacklo_epi16(lanes, zero), _mm_unpackhi_epi16(lanes, zero));
    sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, 0x4E));
    sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, 0xB1));
    count += static_cast<uint32_t>(_mm_cvtsi128_si32(sum));
  }
  for (; i < length; ++i) count += units[i] == 0xFFFD;
  return count;
}

}  // namespace norvane::text
