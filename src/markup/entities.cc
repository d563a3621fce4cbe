// Entity references towards characters (in place) and characters towards
// entities.

#include "norvane/markup/entities.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <string>

#include "norvane/text/chars.h"

namespace norvane::markup {

namespace {

struct Entity {
  const char* name;
  unichar character;
};

// The HTML 4 Latin-1, symbol and special sets, without quot, amp, lt, gt
// (converted on their own) and without cedil and fnof.
constexpr Entity kEntities[] = {
    {"AElig", 0x00C6},  {"aelig", 0x00E6},  {"Aacute", 0x00C1},  {"aacute", 0x00E1},  {"Acirc", 0x00C2},
    {"acirc", 0x00E2},  {"Agrave", 0x00C0}, {"agrave", 0x00E0},  {"Aring", 0x00C5},   {"aring", 0x00E5},
    {"Atilde", 0x00C3}, {"atilde", 0x00E3}, {"Auml", 0x00C4},    {"auml", 0x00E4},    {"Ccedil", 0x00C7},
    {"ccedil", 0x00E7}, {"ETH", 0x00D0},    {"eth", 0x00F0},     {"Eacute", 0x00C9},  {"eacute", 0x00E9},
    {"Ecirc", 0x00CA},  {"ecirc", 0x00EA},  {"Egrave", 0x00C8},  {"egrave", 0x00E8},  {"Euml", 0x00CB},
    {"euml", 0x00EB},   {"Iacute", 0x00CD}, {"iacute", 0x00ED},  {"Icirc", 0x00CE},   {"icirc", 0x00EE},
    {"Igrave", 0x00CC}, {"igrave", 0x00EC}, {"Iuml", 0x00CF},    {"iuml", 0x00EF},    {"Ntilde", 0x00D1},
    {"ntilde", 0x00F1}, {"Oacute", 0x00D3}, {"oacute", 0x00F3},  {"Ocirc", 0x00D4},   {"ocirc", 0x00F4},
    {"Ograve", 0x00D2}, {"ograve", 0x00F2}, {"Oslash", 0x00D8},  {"oslash", 0x00F8},  {"Otilde", 0x00D5},
    {"otilde", 0x00F5}, {"Ouml", 0x00D6},   {"ouml", 0x00F6},    {"THORN", 0x00DE},   {"thorn", 0x00FE},
    {"Uacute", 0x00DA}, {"uacute", 0x00FA}, {"Ucirc", 0x00DB},   {"ucirc", 0x00FB},   {"Ugrave", 0x00D9},
    {"ugrave", 0x00F9}, {"Uuml", 0x00DC},   {"uuml", 0x00FC},    {"Yacute", 0x00DD},  {"yacute", 0x00FD},
    {"yuml", 0x00FF},   {"szlig", 0x00DF},  {"nbsp", 0x00A0},    {"iexcl", 0x00A1},   {"cent", 0x00A2},
    {"pound", 0x00A3},  {"curren", 0x00A4}, {"yen", 0x00A5},     {"brvbar", 0x00A6},  {"sect", 0x00A7},
    {"uml", 0x00A8},    {"copy", 0x00A9},   {"ordf", 0x00AA},    {"laquo", 0x00AB},   {"not", 0x00AC},
    {"shy", 0x00AD},    {"reg", 0x00AE},    {"macr", 0x00AF},    {"deg", 0x00B0},     {"plusmn", 0x00B1},
    {"sup2", 0x00B2},   {"sup3", 0x00B3},   {"acute", 0x00B4},   {"micro", 0x00B5},   {"para", 0x00B6},
    {"middot", 0x00B7}, {"sup1", 0x00B9},   {"ordm", 0x00BA},    {"raquo", 0x00BB},   {"frac14", 0x00BC},
    {"frac12", 0x00BD}, {"frac34", 0x00BE}, {"iquest", 0x00BF},  {"times", 0x00D7},   {"divide", 0x00F7},
    {"Alpha", 0x0391},  {"Beta", 0x0392},   {"Gamma", 0x0393},   {"Delta", 0x0394},   {"Epsilon", 0x0395},
    {"Zeta", 0x0396},   {"Eta", 0x0397},    {"Theta", 0x0398},   {"Iota", 0x0399},    {"Kappa", 0x039A},
    {"Lambda", 0x039B}, {"Mu", 0x039C},     {"Nu", 0x039D},      {"Xi", 0x039E},      {"Omicron", 0x039F},
    {"Pi", 0x03A0},     {"Rho", 0x03A1},    {"Sigma", 0x03A3},   {"Tau", 0x03A4},     {"Upsilon", 0x03A5},
    {"Phi", 0x03A6},    {"Chi", 0x03A7},    {"Psi", 0x03A8},     {"Omega", 0x03A9},   {"alpha", 0x03B1},
    {"beta", 0x03B2},   {"gamma", 0x03B3},  {"delta", 0x03B4},   {"epsilon", 0x03B5}, {"zeta", 0x03B6},
    {"eta", 0x03B7},    {"theta", 0x03B8},  {"iota", 0x03B9},    {"kappa", 0x03BA},   {"lambda", 0x03BB},
    {"mu", 0x03BC},     {"nu", 0x03BD},     {"xi", 0x03BE},      {"omicron", 0x03BF}, {"pi", 0x03C0},
    {"rho", 0x03C1},    {"sigmaf", 0x03C2}, {"sigma", 0x03C3},   {"tau", 0x03C4},     {"upsilon", 0x03C5},
    {"phi", 0x03C6},    {"chi", 0x03C7},    {"psi", 0x03C8},     {"omega", 0x03C9},   {"thetasym", 0x03D1},
    {"upsih", 0x03D2},  {"piv", 0x03D6},    {"bull", 0x2022},    {"hellip", 0x2026},  {"prime", 0x2032},
    {"Prime", 0x2033},  {"oline", 0x203E},  {"frasl", 0x2044},   {"weierp", 0x2118},  {"image", 0x2111},
    {"real", 0x211C},   {"trade", 0x2122},  {"alefsym", 0x2135}, {"larr", 0x2190},    {"uarr", 0x2191},
    {"rarr", 0x2192},   {"darr", 0x2193},   {"harr", 0x2194},    {"crarr", 0x21B5},   {"lArr", 0x21D0},
    {"uArr", 0x21D1},   {"rArr", 0x21D2},   {"dArr", 0x21D3},    {"hArr", 0x21D4},    {"forall", 0x2200},
    {"part", 0x2202},   {"exist", 0x2203},  {"empty", 0x2205},   {"nabla", 0x2207},   {"isin", 0x2208},
    {"notin", 0x2209},  {"ni", 0x220B},     {"prod", 0x220F},    {"sum", 0x2211},     {"minus", 0x2212},
    {"lowast", 0x2217}, {"radic", 0x221A},  {"prop", 0x221D},    {"infin", 0x221E},   {"ang", 0x2220},
    {"and", 0x2227},    {"or", 0x2228},     {"cap", 0x2229},     {"cup", 0x222A},     {"int", 0x222B},
    {"there4", 0x2234}, {"sim", 0x223C},    {"cong", 0x2245},    {"asymp", 0x2248},   {"ne", 0x2260},
    {"equiv", 0x2261},  {"le", 0x2264},     {"ge", 0x2265},      {"sub", 0x2282},     {"sup", 0x2283},
    {"nsub", 0x2284},   {"sube", 0x2286},   {"supe", 0x2287},    {"oplus", 0x2295},   {"otimes", 0x2297},
    {"perp", 0x22A5},   {"sdot", 0x22C5},   {"lceil", 0x2308},   {"rceil", 0x2309},   {"lfloor", 0x230A},
    {"rfloor", 0x230B}, {"lang", 0x2329},   {"rang", 0x232A},    {"loz", 0x25CA},     {"spades", 0x2660},
    {"clubs", 0x2663},  {"hearts", 0x2665}, {"diams", 0x2666},   {"OElig", 0x0152},   {"oelig", 0x0153},
    {"Scaron", 0x0160}, {"scaron", 0x0161}, {"Yuml", 0x0178},    {"circ", 0x02C6},    {"tilde", 0x02DC},
    {"ensp", 0x2002},   {"emsp", 0x2003},   {"thinsp", 0x2009},  {"zwnj", 0x200C},    {"zwj", 0x200D},
    {"lrm", 0x200E},    {"rlm", 0x200F},    {"ndash", 0x2013},   {"mdash", 0x2014},   {"lsquo", 0x2018},
    {"rsquo", 0x2019},  {"sbquo", 0x201A},  {"ldquo", 0x201C},   {"rdquo", 0x201D},   {"bdquo", 0x201E},
    {"dagger", 0x2020}, {"Dagger", 0x2021}, {"permil", 0x2030},  {"lsaquo", 0x2039},  {"rsaquo", 0x203A},
    {"euro", 0x20AC},
};

constexpr size_t kEntityCount = std::size(kEntities);

constexpr unichar minEntityCharacter() {
  unichar least = 0xFFFF;
  for (const Entity& e : kEntities) least = e.character < least ? e.character : least;
  return least;
}

constexpr unichar maxEntityCharacter() {
  unichar most = 0;
  for (const Entity& e : kEntities) most = e.character > most ? e.character : most;
  return most;
}

constexpr unichar kMinEntityCharacter = minEntityCharacter();
constexpr unichar kMaxEntityCharacter = maxEntityCharacter();

// For each unit from kMinEntityCharacter to kMaxEntityCharacter, its index
// in kEntities or -1.
struct ReverseTable {
  int16_t index[kMaxEntityCharacter - kMinEntityCharacter + 1];

  ReverseTable() {
    for (int16_t& k : index) k = -1;
    for (size_t k = kEntityCount; k-- > 0;)
      index[kEntities[k].character - kMinEntityCharacter] = static_cast<int16_t>(k);
  }
};

const ReverseTable& reverseTable() {
  static const ReverseTable table;
  return table;
}

int entityIndexOf(const ReverseTable& table, unichar c) {
  if (c < kMinEntityCharacter || c > kMaxEntityCharacter) return -1;
  return table.index[c - kMinEntityCharacter];
}

// The unit of the name in units [from, to), or 0. Only ASCII names can be in
// the table.
unichar lookUpName(const unichar* units, size_t from, size_t to) {
  const size_t length = to - from;
  char name[32];
  if (length == 0 || length >= sizeof name) return 0;
  for (size_t k = 0; k < length; ++k) {
    if (units[from + k] >= 128) return 0;
    name[k] = static_cast<char>(units[from + k]);
  }
  return characterOfEntityName(name, length);
}

bool matchesAt(const unichar* s, size_t at, const char* word) {
  for (size_t k = 0; word[k] != 0; ++k) {
    if (s[at + k] != static_cast<unichar>(word[k])) return false;
  }
  return true;
}

bool isHexDigit(unichar c) {
  return (c >= '0' && c <= '9') || ((c | 32) >= 'a' && (c | 32) <= 'f');
}
bool isDecimalDigit(unichar c) {
  return c >= '0' && c <= '9';
}
uint32_t hexValue(unichar c) {
  return c <= '9' ? c - '0' : (c | 32) - 'a' + 10;
}

}  // namespace

unichar characterOfEntityName(const char* name, size_t nameLength) {
  if (name == nullptr || nameLength == 0) return 0;
  for (const Entity& e : kEntities) {
    if (e.name[0] != name[0]) continue;
    if (nameLength > 1 && e.name[1] != name[1]) continue;
    if (std::strlen(e.name) == nameLength && std::memcmp(e.name, name, nameLength) == 0) return e.character;
  }
  return 0;
}

const char* entityNameOfCharacter(unichar c) {
  const int index = entityIndexOf(reverseTable(), c);
  return index < 0 ? nullptr : kEntities[index].name;
}

size_t entityTableCount() {
  return kEntityCount;
}
const char* entityTableName(size_t index) {
  return index < kEntityCount ? kEntities[index].name : nullptr;
}
unichar entityTableCharacter(size_t index) {
  return index < kEntityCount ? kEntities[index].character : 0;
}

void initConversionTables() {
  reverseTable();
  text::alphaNumCharacterSetRep();
}

// ---------------------------------------------------------------------------
// Towards characters

size_t convertEntities2Characters(const unichar* characters, unichar* destination, size_t location, size_t length,
                                  bool convertStandard, bool onlyNumeric, bool nonUmlauted) {
  if (characters == nullptr || destination == nullptr) return 0;
  const unichar* s = characters + location;
  const text::ConversionTable umlauts = nonUmlauted ? text::umlautsCharsTable() : nullptr;
  const text::CharacterSetRep alphaNum = text::alphaNumCharacterSetRep();
  unichar* out = destination;
  auto put = [&](unichar c) { *out++ = umlauts != nullptr ? umlauts[c] : c; };
  // A quick form of `word` (behind the '&') that fits in the range; its ';'
  // is optional.
  auto quick = [&](size_t i, const char* word, size_t wordLength, unichar value) {
    if (i + wordLength >= length || !matchesAt(s, i + 1, word)) return size_t{0};
    *out++ = value;
    size_t next = i + 1 + wordLength;
    if (next < length && s[next] == ';') ++next;
    return next;
  };

  size_t i = 0;
  while (i < length) {
    const unichar c = s[i];
    if (c != '&' || i + 1 >= length) {
      put(c);
      ++i;
      continue;
    }
    const unichar next = s[i + 1];
    size_t after = 0;
    if (next == 'a') {
      after = quick(i, "apos", 4, '\'');
      if (after == 0 && convertStandard) after = quick(i, "amp", 3, '&');
    } else if (next == 'n') {
      after = quick(i, "nbsp", 4, 0x00A0);
    } else if (convertStandard) {
      if (next == 'q') after = quick(i, "quot", 4, '"');
      if (next == 'l') after = quick(i, "lt", 2, '<');
      if (next == 'g') after = quick(i, "gt", 2, '>');
    }
    if (after != 0) {
      i = after;
      continue;
    }

    // Numbers and names: the reference runs to its terminator, the first
    // unit behind the digits or the name; the end of the range also ends it.
    const bool numeric = next == '#';
    const bool hex = numeric && i + 2 < length && (s[i + 2] | 32) == 'x';
    size_t start, end;
    if (numeric) {
      start = i + (hex ? 3 : 2);
      end = start;
      if (hex) {
        while (end < length && isHexDigit(s[end])) ++end;
      } else {
        while (end < length && isDecimalDigit(s[end])) ++end;
      }
    } else if (onlyNumeric || !text::isInRep(alphaNum, next)) {
      put('&');
      ++i;
      continue;
    } else {
      start = i + 1;
      end = start;
      while (end < length && text::isInRep(alphaNum, s[end])) ++end;
    }
    const size_t scanned = end - i;  // behind the '&', terminator included
    if (scanned < 2 || scanned > 31 || end == start) {
      put('&');
      ++i;
      continue;
    }

    unichar units[2];
    size_t count = 0;
    if (numeric) {
      uint32_t value = 0;
      for (size_t k = start; k < end; ++k) value = value * (hex ? 16 : 10) + hexValue(s[k]);
      if (value <= 0xFFFF) {
        units[count++] = static_cast<unichar>(value);
      } else if (value <= 0x10FFFF) {
        units[count++] = static_cast<unichar>(0xD800 + ((value - 0x10000) >> 10));
        units[count++] = static_cast<unichar>(0xDC00 + ((value - 0x10000) & 0x3FF));
      }
    } else if (unichar found = lookUpName(s, start, end)) {
      units[count++] = found;
    }
    if (count == 0 || (!convertStandard && count == 1 &&
                       (units[0] == '"' || units[0] == '&' || units[0] == '<' || units[0] == '>'))) {
      put('&');
      ++i;
      continue;
    }
    for (size_t k = 0; k < count; ++k) put(units[k]);
    i = end < length && s[end] == ';' ? end + 1 : end;
  }
  return static_cast<size_t>(out - destination);
}

size_t convertStdEntities2Characters(unichar* characters, size_t length) {
  if (characters == nullptr) return 0;
  unichar* s = characters;
  size_t out = 0;
  size_t i = 0;
  while (i < length) {
    const unichar c = s[i];
    if (c == '&') {
      unichar value = 0;
      size_t formLength = 0;
      if (i + 5 < length && s[i + 5] == ';') {
        if (matchesAt(s, i, "&quot;")) value = '"', formLength = 6;
      } else if (i + 4 < length && s[i + 4] == ';') {
        if (matchesAt(s, i, "&amp;") || matchesAt(s, i, "&#38;")) value = '&';
        if (matchesAt(s, i, "&#60;")) value = '<';
        if (matchesAt(s, i, "&#62;")) value = '>';
        if (matchesAt(s, i, "&#34;")) value = '"';
        formLength = 5;
      } else if (i + 3 < length && s[i + 3] == ';') {
        if (matchesAt(s, i, "&lt;")) value = '<';
        if (matchesAt(s, i, "&gt;")) value = '>';
        formLength = 4;
      }
      if (value != 0) {
        s[out++] = value;
        i += formLength;
        continue;
      }
    }
    s[out++] = c;
    ++i;
  }
  return out;
}

// ---------------------------------------------------------------------------
// String forms towards characters

namespace {

// A copy of a string's units to work on in place: on the stack up to 256
// units, else on the heap. `data()` is null if the allocation failed.
class WorkingCopy {
 public:
  explicit WorkingCopy(const String& string) : length_(string.length()) {
    if (length_ > std::size(stack_)) heap_.reset(new (std::nothrow) unichar[length_]);
    units_ = length_ > std::size(stack_) ? heap_.get() : stack_;
    if (units_ != nullptr) std::memcpy(units_, string.data(), length_ * sizeof(unichar));
  }
  unichar* data() { return units_; }

  // The receiver if the first `length` units equal all of it, else a new
  // string of them.
  String result(const String& receiver, size_t length) const {
    if (length == length_ && std::memcmp(units_, receiver.data(), length * sizeof(unichar)) == 0) return receiver;
    return String(units_, length);
  }

 private:
  size_t length_;
  unichar stack_[256];
  std::unique_ptr<unichar[]> heap_;
  unichar* units_;
};

}  // namespace

String stringByConvertingEntitiesToCharacters(const String& string, bool convertStandard, bool onlyNumericEntities,
                                              bool nonUmlauted) {
  const size_t length = string.length();
  if (length < 4) return string;
  if (!nonUmlauted && std::char_traits<unichar>::find(string.data(), length, '&') == nullptr) return string;
  WorkingCopy copy(string);
  if (copy.data() == nullptr) return string;
  const size_t written = convertEntities2Characters(copy.data(), copy.data(), 0, length, convertStandard,
                                                    onlyNumericEntities, nonUmlauted);
  return copy.result(string, written);
}

String stringByConvertingEntitiesToCharacters(const String& string) {
  return stringByConvertingEntitiesToCharacters(string, true, false, false);
}

String stringByConvertingEntitiesToCharactersNonUmlauted(const String& string, bool nonUmlauted) {
  return stringByConvertingEntitiesToCharacters(string, true, false, nonUmlauted);
}

String stringByConvertingStandardEntitiesToCharacters(const String& string) {
  const size_t length = string.length();
  if (length < 4 || std::char_traits<unichar>::find(string.data(), length, '&') == nullptr) return string;
  WorkingCopy copy(string);
  if (copy.data() == nullptr) return string;
  const size_t written = convertStdEntities2Characters(copy.data(), length);
  return written == length ? string : String(copy.data(), written);
}

// ---------------------------------------------------------------------------
// Towards entities

size_t entitiesBufferBound(const unichar* characters, size_t length) {
  if (characters == nullptr) return 0;
  const ReverseTable& table = reverseTable();
  size_t bound = 0;
  for (size_t k = 0; k < length; ++k) {
    const unichar c = characters[k];
    bound += entityIndexOf(table, c) >= 0 ? 10 : c < 128 ? 1 : 8;
  }
  return bound;
}

String stringByConvertingCharactersToEntities(const String& string) {
  if (string.isEmpty()) return string;
  initConversionTables();
  const ReverseTable& table = reverseTable();
  const unichar* units = string.data();
  const size_t length = string.length();
  const size_t bound = entitiesBufferBound(units, length);
  std::string bytes;
  bytes.resize(bound);
  char* out = bytes.data();
  for (size_t k = 0; k < length; ++k) {
    const unichar c = units[k];
    const int index = entityIndexOf(table, c);
    if (index >= 0) {
      *out++ = '&';
      for (const char* n = kEntities[index].name; *n != 0; ++n) *out++ = *n;
      *out++ = ';';
    } else if (c < 128) {
      *out++ = static_cast<char>(c);
    } else {
      out += std::snprintf(out, 9, "&#%u;", static_cast<unsigned>(c));
    }
  }
  bytes.resize(static_cast<size_t>(out - bytes.data()));
  return String::fromLatin1(bytes);
}

namespace {

// '"', '&', '<' and '>' as standard entities, or with `high` each unit above
// 127 as a numeric reference. The output is made at the first unit to
// replace and filled with stretches of unchanged units.
String convertCharactersToEntities(const String& string, bool high) {
  if (string.isNull()) return string;
  const unichar* units = string.data();
  const size_t length = string.length();
  auto needsReplacing = [high](unichar c) { return high ? c > 127 : c == '"' || c == '&' || c == '<' || c == '>'; };
  size_t k = 0;
  while (k < length && !needsReplacing(units[k])) ++k;
  if (k == length) return string;

  std::u16string converted;
  converted.reserve(length + 16);
  size_t stretch = 0;
  for (; k < length; ++k) {
    const unichar c = units[k];
    if (!needsReplacing(c)) continue;
    converted.append(units + stretch, k - stretch);
    stretch = k + 1;
    if (high) {
      char reference[12];
      const int written = std::snprintf(reference, sizeof reference, "&#%u;", static_cast<unsigned>(c));
      converted.append(reference, reference + written);
    } else {
      converted += c == '"' ? u"&quot;" : c == '&' ? u"&amp;" : c == '<' ? u"&lt;" : u"&gt;";
    }
  }
  converted.append(units + stretch, length - stretch);
  return String::fromU16(std::move(converted));
}

}  // namespace

String stringByConvertingHighCharactersToEntities(const String& string) {
  return convertCharactersToEntities(string, true);
}

String stringByConvertingCharactersToStandardEntities(const String& string) {
  return convertCharactersToEntities(string, false);
}

}  // namespace norvane::markup
