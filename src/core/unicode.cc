#include "norvane/core/unicode.h"

#include <cstdint>

namespace norvane {
namespace {

// Decodes one scalar value at `p`, advancing it. Answers -1 for a malformed
// sequence, after consuming its maximal valid prefix (at least one byte), so
// that each malformed sequence yields exactly one replacement.
int32_t decodeUtf8(const unsigned char*& p, const unsigned char* end) {
  unsigned char lead = *p++;
  if (lead < 0x80) return lead;
  int needed;
  int32_t value;
  unsigned char lower = 0x80, upper = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    needed = 1;
    value = lead & 0x1F;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    needed = 2;
    value = lead & 0x0F;
    if (lead == 0xE0) lower = 0xA0;
    if (lead == 0xED) upper = 0x9F;  // no surrogates
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    needed = 3;
    value = lead & 0x07;
    if (lead == 0xF0) lower = 0x90;
    if (lead == 0xF4) upper = 0x8F;
  } else {
    return -1;
  }
  for (int i = 0; i < needed; ++i) {
    if (p == end || *p < lower || *p > upper) return -1;
    value = (value << 6) | (*p++ & 0x3F);
    lower = 0x80;
    upper = 0xBF;
  }
  return value;
}

void appendScalar(std::u16string& out, int32_t value) {
  if (value < 0x10000) {
    out.push_back(static_cast<char16_t>(value));
  } else {
    value -= 0x10000;
    out.push_back(static_cast<char16_t>(0xD800 + (value >> 10)));
    out.push_back(static_cast<char16_t>(0xDC00 + (value & 0x3FF)));
  }
}

template <bool kStrict>
bool decode(std::string_view utf8, std::u16string& out) {
  out.reserve(utf8.size());
  auto p = reinterpret_cast<const unsigned char*>(utf8.data());
  auto end = p + utf8.size();
  while (p < end) {
    if (*p < 0x80) {
      out.push_back(*p++);
      continue;
    }
    int32_t value = decodeUtf8(p, end);
    if (value < 0) {
      if (kStrict) return false;
      out.push_back(0xFFFD);
    } else {
      appendScalar(out, value);
    }
  }
  return true;
}

template <bool kStrict>
bool encode(std::u16string_view utf16, std::string& out) {
  out.reserve(out.size() + utf16.size());
  for (size_t i = 0; i < utf16.size(); ++i) {
    uint32_t u = utf16[i];
    if (u < 0x80) {
      out.push_back(static_cast<char>(u));
      continue;
    }
    if (u >= 0xD800 && u <= 0xDFFF) {
      if (u <= 0xDBFF && i + 1 < utf16.size() && utf16[i + 1] >= 0xDC00 && utf16[i + 1] <= 0xDFFF) {
        u = 0x10000 + ((u - 0xD800) << 10) + (utf16[++i] - 0xDC00);
      } else {
        if (kStrict) return false;
        u = 0xFFFD;
      }
    }
    if (u < 0x800) {
      out.push_back(static_cast<char>(0xC0 | (u >> 6)));
    } else if (u < 0x10000) {
      out.push_back(static_cast<char>(0xE0 | (u >> 12)));
      out.push_back(static_cast<char>(0x80 | ((u >> 6) & 0x3F)));
    } else {
      out.push_back(static_cast<char>(0xF0 | (u >> 18)));
      out.push_back(static_cast<char>(0x80 | ((u >> 12) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | ((u >> 6) & 0x3F)));
    }
    out.push_back(static_cast<char>(0x80 | (u & 0x3F)));
  }
  return true;
}

}  // namespace

std::optional<std::u16string> utf8ToUtf16Strict(std::string_view utf8) {
  std::u16string out;
  if (!decode<true>(utf8, out)) return std::nullopt;
  return out;
}

std::u16string utf8ToUtf16(std::string_view utf8) {
  std::u16string out;
  decode<false>(utf8, out);
  return out;
}

std::optional<std::string> utf16ToUtf8Strict(std::u16string_view utf16) {
  std::string out;
  if (!encode<true>(utf16, out)) return std::nullopt;
  return out;
}

std::string utf16ToUtf8(std::u16string_view utf16) {
  std::string out;
  encode<false>(utf16, out);
  return out;
}

void appendUtf16AsUtf8(std::u16string_view utf16, std::string& out) {
  encode<false>(utf16, out);
}

}  // namespace norvane
