// Charset names to encodings: normalising, the number table, the name tests.

#include "norvane/markup/charsets.h"

#include <cstdint>

#include "norvane/core/log.h"
#include "norvane/text/chars.h"

namespace norvane::markup {
namespace {

using namespace text;

// A normalised name: lower-case letters and digits only.
using Name = std::u16string_view;

bool is(Name name, std::string_view ascii) {
  if (name.size() != ascii.size()) return false;
  for (size_t i = 0; i < ascii.size(); ++i) {
    if (name[i] != static_cast<unichar>(ascii[i])) return false;
  }
  return true;
}

bool startsWith(Name name, std::string_view ascii) {
  return name.size() >= ascii.size() && is(name.substr(0, ascii.size()), ascii);
}

bool has(Name name, std::string_view ascii) {
  if (name.size() < ascii.size()) return false;
  for (size_t i = 0; i + ascii.size() <= name.size(); ++i) {
    if (is(name.substr(i, ascii.size()), ascii)) return true;
  }
  return false;
}

bool isDigit(unichar u) {
  return u >= '0' && u <= '9';
}

// The value of the digits from the first run of three digits on, or -1
// when the name has no such run. Huge values saturate; no row is that big.
int64_t numberInName(Name name) {
  for (size_t i = 0; i + 3 <= name.size(); ++i) {
    if (!isDigit(name[i]) || !isDigit(name[i + 1]) || !isDigit(name[i + 2])) continue;
    int64_t value = 0;
    for (size_t k = i; k < name.size() && isDigit(name[k]); ++k) {
      if (value < 1'000'000'000'000) value = value * 10 + (name[k] - '0');
    }
    return value;
  }
  return -1;
}

struct NumberRow {
  int64_t number;
  CFStringEncoding encoding;
};

const NumberRow kNumbers[] = {
    {437, kCFStringEncodingDOSLatinUS},
    {646, kCFStringEncodingEUC_JP},
    {6461, kCFStringEncodingEUC_JP},
    {708, kCFStringEncodingISOLatinArabic},
    {737, kCFStringEncodingDOSGreek},
    {775, kCFStringEncodingDOSBalticRim},
    {850, kCFStringEncodingDOSLatin1},
    {851, kCFStringEncodingDOSGreek1},
    {852, kCFStringEncodingDOSLatin2},
    {855, kCFStringEncodingDOSCyrillic},
    {857, kCFStringEncodingDOSTurkish},
    {860, kCFStringEncodingDOSPortuguese},
    {861, kCFStringEncodingDOSIcelandic},
    {862, kCFStringEncodingDOSHebrew},
    {863, kCFStringEncodingDOSCanadianFrench},
    {864, kCFStringEncodingDOSArabic},
    {865, kCFStringEncodingDOSNordic},
    {866, kCFStringEncodingDOSRussian},
    {869, kCFStringEncodingDOSGreek2},
    {874, kCFStringEncodingDOSThai},
    {932, kCFStringEncodingDOSJapanese},
    {936, kCFStringEncodingDOSChineseSimplif},
    {949, kCFStringEncodingDOSKorean},
    {950, kCFStringEncodingDOSChineseTrad},
    {1250, kCFStringEncodingWindowsLatin2},
    {1251, kCFStringEncodingWindowsCyrillic},
    {1252, kCFStringEncodingWindowsLatin1},
    {1253, kCFStringEncodingWindowsGreek},
    {1254, kCFStringEncodingWindowsLatin5},
    {1255, kCFStringEncodingWindowsHebrew},
    {1256, kCFStringEncodingWindowsArabic},
    {1257, kCFStringEncodingWindowsBalticRim},
    {1258, kCFStringEncodingWindowsVietnamese},
    {1361, kCFStringEncodingWindowsKoreanJohab},
    // Forms of ISO 8859-1, misspelt ones included.
    {8591, kCFStringEncodingISOLatin1},
    {8859, kCFStringEncodingISOLatin1},
    {80591, kCFStringEncodingISOLatin1},
    {85591, kCFStringEncodingISOLatin1},
    {88191, kCFStringEncodingISOLatin1},
    {88391, kCFStringEncodingISOLatin1},
    {88511, kCFStringEncodingISOLatin1},
    {88571, kCFStringEncodingISOLatin1},
    {88581, kCFStringEncodingISOLatin1},
    {88591, kCFStringEncodingISOLatin1},
    {88611, kCFStringEncodingISOLatin1},
    {88691, kCFStringEncodingISOLatin1},
    {88791, kCFStringEncodingISOLatin1},
    {89091, kCFStringEncodingISOLatin1},
    {99591, kCFStringEncodingISOLatin1},
    {100591, kCFStringEncodingISOLatin1},
    {810091, kCFStringEncodingISOLatin1},
    {85922, kCFStringEncodingISOLatin2},
    {88582, kCFStringEncodingISOLatin2},
    {88592, kCFStringEncodingISOLatin2},
    {88593, kCFStringEncodingISOLatin3},
    {88594, kCFStringEncodingISOLatin4},
    {88595, kCFStringEncodingISOLatinCyrillic},
    {88596, kCFStringEncodingISOLatinArabic},
    {88597, kCFStringEncodingISOLatinGreek},
    {88598, kCFStringEncodingISOLatinHebrew},
    {88599, kCFStringEncodingISOLatin5},
    {89599, kCFStringEncodingISOLatin5},
    {885910, kCFStringEncodingISOLatin6},
    {885911, kCFStringEncodingISOLatinThai},
    {885913, kCFStringEncodingISOLatin7},
    {885914, kCFStringEncodingISOLatin8},
    {885915, kCFStringEncodingISOLatin9},
    {885916, kCFStringEncodingISOLatin10},
};

CFStringEncoding encodingOfNumber(int64_t number, Name name) {
  if (number == 2022) {
    if (is(name, "iso2022jp1")) return kCFStringEncodingISO_2022_JP_1;
    if (is(name, "iso2022jp2")) return kCFStringEncodingISO_2022_JP_2;
    if (is(name, "iso2022jp3")) return kCFStringEncodingISO_2022_JP_3;
    return kCFStringEncodingISO_2022_JP;
  }
  if (number >= 885101 && number <= 885391 && number % 10 == 1) return kCFStringEncodingISOLatin1;
  for (const NumberRow& row : kNumbers) {
    if (row.number == number) return row.encoding;
  }
  return kInvalidEncoding;
}

struct MacRow {
  const char* rest;
  CFStringEncoding encoding;
};

const MacRow kMacNames[] = {
    {"roman", 0},       {"osroman", 0},    {"intosh", 0},   {"romanlatin1", 2564}, {"japanese", 1},   {"korean", 3},
    {"arabic", 4},      {"hebrew", 5},     {"greek", 6},    {"cyrillic", 7},       {"devanagari", 9}, {"gurmukhi", 10},
    {"gujarati", 11},   {"oriya", 12},     {"bengali", 13}, {"tamil", 14},         {"telugu", 15},    {"kannada", 16},
    {"malayalam", 17},  {"sinhalese", 18}, {"burmese", 19}, {"khmer", 20},         {"thai", 21},      {"laotian", 22},
    {"georgian", 23},   {"armenian", 24},  {"tibetan", 26}, {"mongolian", 27},     {"ethiopic", 28},  {"ce", 29},
    {"vietnamese", 30}, {"extarabic", 31}, {"turkish", 35}, {"croatian", 36},      {"icelandic", 37}, {"romanian", 38},
    {"celtic", 39},     {"gaelic", 40},    {"farsi", 140},  {"ukrainian", 152},    {"inuit", 236},
};

CFStringEncoding macEncodingOfName(Name rest) {
  if (rest.empty()) return kCFStringEncodingMacRoman;
  if (has(rest, "chinesetrad")) return kCFStringEncodingMacChineseTrad;
  if (has(rest, "chinesesimp")) return kCFStringEncodingMacChineseSimp;
  if (has(rest, "centraleur")) return kCFStringEncodingMacCentralEurRoman;
  for (const MacRow& row : kMacNames) {
    if (is(rest, row.rest)) return row.encoding;
  }
  return kInvalidEncoding;
}

CFStringEncoding encodingOfLatinName(Name name) {
  if (has(name, "latin10")) return kCFStringEncodingISOLatin10;
  if (has(name, "latin1") || is(name, "latin")) return kCFStringEncodingISOLatin1;
  static const struct {
    const char* form;
    CFStringEncoding encoding;
  } kForms[] = {
      {"latin2", kCFStringEncodingISOLatin2}, {"latin3", kCFStringEncodingISOLatin3},
      {"latin4", kCFStringEncodingISOLatin4}, {"latin5", kCFStringEncodingISOLatin5},
      {"latin6", kCFStringEncodingISOLatin6}, {"latin7", kCFStringEncodingISOLatin7},
      {"latin8", kCFStringEncodingISOLatin8}, {"latin9", kCFStringEncodingISOLatin9},
  };
  for (const auto& form : kForms) {
    if (has(name, form.form)) return form.encoding;
  }
  return kInvalidEncoding;
}

// The name tests, in order; the first that holds decides.
CFStringEncoding encodingOfName(Name n) {
  if (startsWith(n, "windows")) return kCFStringEncodingWindowsLatin1;
  if (startsWith(n, "mac")) return macEncodingOfName(n.substr(3));
  if (startsWith(n, "xmac")) return macEncodingOfName(n.substr(4));
  if (has(n, "latin")) {
    CFStringEncoding latin = encodingOfLatinName(n);
    if (latin != kInvalidEncoding) return latin;
  }
  if (is(n, "iso")) return kCFStringEncodingISOLatin1;
  if (is(n, "visual")) return kCFStringEncodingISOLatinHebrew;
  if (is(n, "xkamcs") || is(n, "kamcs") || is(n, "kbkam")) return kCFStringEncodingKamenicky;
  if (is(n, "koi8cs2") || is(n, "csn369103")) return kCFStringEncodingKoi8cs2;
  if (is(n, "usascii") || is(n, "ascii") || has(n, "utf7")) return kCFStringEncodingASCII;
  if (has(n, "gb2312")) return kCFStringEncodingEUC_CN;
  if (startsWith(n, "gbk")) return kCFStringEncodingGBK_95;
  if (has(n, "gb18030")) return kCFStringEncodingGB_18030_2000;
  if (is(n, "utf") || has(n, "utf8") || has(n, "utf08") || has(n, "uft8") || has(n, "utf2d8") || is(n, "utf9") ||
      is(n, "unicode")) {
    return kCFStringEncodingUTF8;
  }
  if (has(n, "utf16")) return kCFStringEncodingUnicode;
  if (has(n, "shiftj") || has(n, "sjis")) return kCFStringEncodingShiftJIS;
  if (startsWith(n, "koi8")) return kCFStringEncodingKOI8_R;
  if (has(n, "big5")) return kCFStringEncodingBig5;
  if (has(n, "euckr")) return kCFStringEncodingEUC_KR;
  if (has(n, "eucj")) return kCFStringEncodingEUC_JP;
  if (has(n, "euccn")) return kCFStringEncodingEUC_CN;
  if (has(n, "euctw")) return kCFStringEncodingEUC_TW;
  if (is(n, "ksc56011987") || is(n, "ksc560187")) return kCFStringEncodingKSC_5601_87;
  if (startsWith(n, "ksc560192")) return kCFStringEncodingKSC_5601_92_Johab;
  if (is(n, "enus") || is(n, "engb")) return kCFStringEncodingUTF8;
  if (is(n, "none")) return kCFStringEncodingASCII;
  return kInvalidEncoding;
}

String normalisedName(const String& name) {
  return stringByRemovingNonAlphaNumericCharactersAndApplyingConversionTable(name, lowerCharsTable());
}

bool isQuietName(const String& name) {
  unichar first = name[0];
  if (first == '%' || first == '/' || first == '0' || first == '<' || first == '>') return true;
  return name.length() == 4 && fastCaseInsensitiveCompareUnicharsWithChars(name.view(), "auto") == 0;
}

const CFStringEncoding kJapaneseFallbacks[] = {
    kCFStringEncodingShiftJIS,      kCFStringEncodingShiftJIS_X0213, kCFStringEncodingMacJapanese,
    kCFStringEncodingDOSJapanese,   kCFStringEncodingJIS_X0201_76,   kCFStringEncodingJIS_X0208_83,
    kCFStringEncodingJIS_X0208_90,  kCFStringEncodingJIS_X0212_90,   kCFStringEncodingJIS_C6226_78,
    kCFStringEncodingEUC_JP,        kCFStringEncodingISO_2022_JP,    kCFStringEncodingISO_2022_JP_1,
    kCFStringEncodingISO_2022_JP_2, kCFStringEncodingISO_2022_JP_3,
};

const CFStringEncoding kChineseFallbacks[] = {
    kCFStringEncodingEUC_TW, kCFStringEncodingGB_2312_80,      kCFStringEncodingHZ_GB_2312, kCFStringEncodingGBK_95,
    kCFStringEncodingBig5,   kCFStringEncodingBig5_HKSCS_1999, kCFStringEncodingBig5_E,
};

}  // namespace

CFStringEncoding charset2CFStringEncoding(const String& name) {
  if (name.isNull()) return kInvalidEncoding;
  String normal = normalisedName(name);
  Name n = normal.view();
  if (n.size() < 3) return kInvalidEncoding;
  int64_t number = numberInName(n);
  if (number >= 0) {
    CFStringEncoding byNumber = encodingOfNumber(number, n);
    if (byNumber != kInvalidEncoding) return byNumber;
  }
  return encodingOfName(n);
}

NSStringEncoding charset2NSStringEncoding(const String& name) {
  CFStringEncoding encoding = charset2CFStringEncoding(name);
  if (encoding == kCFStringEncodingKamenicky) return NSKamenickyStringEncoding;
  if (encoding == kCFStringEncodingKoi8cs2) return NSKoi8cs2StringEncoding;
  if (encoding == kCFStringEncodingShiftJIS) return NSShiftJISStringEncoding;
  if (encoding != kInvalidEncoding && isCFEncodingAvailable(encoding)) {
    NSStringEncoding converted = nsEncodingFromCFEncoding(encoding);
    if (converted != kInvalidEncoding) return converted;
  }
  if (!name.isEmpty() && !isQuietName(name)) logFormat("Unknown/Unsupported encoding: {}", name.toUtf8());
  return kInvalidEncoding;
}

CFStringEncoding macEncoding(const String& rest) {
  return macEncodingOfName(rest.view());
}

std::span<const CFStringEncoding> japaneseFallbackEncodings() {
  return kJapaneseFallbacks;
}
std::span<const CFStringEncoding> chineseFallbackEncodings() {
  return kChineseFallbacks;
}

}  // namespace norvane::markup
