// The encoding table and the dispatch to the converter of each encoding.

#include "norvane/text/encodings.h"

#include <iconv.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ucnv_err.h>

#include <algorithm>
#include <cerrno>
#include <mutex>

#include "text/encodings_internal.h"

namespace norvane::text {
namespace {

enum class Provider : uint8_t { None, Icu, Iconv, Utf8, Kamenicky, Koi8cs2, NonLossyAscii, JisX0201 };

struct EncodingRow {
  CFStringEncoding encoding;
  const char* name;       // shown to people
  const char* icuName;    // the ICU converter, or null
  const char* iconvName;  // the iconv name where ICU has none, or null
  Provider own = Provider::None;
};

// Every encoding that the name tables can produce, and the Unicode forms.
// Where neither ICU nor iconv has a converter the row stays unavailable.
const EncodingRow kRows[] = {
    {kCFStringEncodingMacRoman, "Mac Roman", "macos-0_2-10.2", "MACINTOSH"},
    {kCFStringEncodingMacJapanese, "Mac Japanese", "Shift_JIS", nullptr},
    {kCFStringEncodingMacChineseTrad, "Mac Traditional Chinese", "Big5", nullptr},
    {kCFStringEncodingMacKorean, "Mac Korean", "EUC-KR", nullptr},
    {kCFStringEncodingMacArabic, "Mac Arabic", nullptr, nullptr},
    {kCFStringEncodingMacHebrew, "Mac Hebrew", nullptr, nullptr},
    {kCFStringEncodingMacGreek, "Mac Greek", "x-mac-greek", nullptr},
    {kCFStringEncodingMacCyrillic, "Mac Cyrillic", "x-mac-cyrillic", "MAC-CYRILLIC"},
    {kCFStringEncodingMacDevanagari, "Mac Devanagari", nullptr, nullptr},
    {kCFStringEncodingMacGurmukhi, "Mac Gurmukhi", nullptr, nullptr},
    {kCFStringEncodingMacGujarati, "Mac Gujarati", nullptr, nullptr},
    {kCFStringEncodingMacOriya, "Mac Oriya", nullptr, nullptr},
    {kCFStringEncodingMacBengali, "Mac Bengali", nullptr, nullptr},
    {kCFStringEncodingMacTamil, "Mac Tamil", nullptr, nullptr},
    {kCFStringEncodingMacTelugu, "Mac Telugu", nullptr, nullptr},
    {kCFStringEncodingMacKannada, "Mac Kannada", nullptr, nullptr},
    {kCFStringEncodingMacMalayalam, "Mac Malayalam", nullptr, nullptr},
    {kCFStringEncodingMacSinhalese, "Mac Sinhalese", nullptr, nullptr},
    {kCFStringEncodingMacBurmese, "Mac Burmese", nullptr, nullptr},
    {kCFStringEncodingMacKhmer, "Mac Khmer", nullptr, nullptr},
    {kCFStringEncodingMacThai, "Mac Thai", nullptr, nullptr},
    {kCFStringEncodingMacLaotian, "Mac Laotian", nullptr, nullptr},
    {kCFStringEncodingMacGeorgian, "Mac Georgian", nullptr, nullptr},
    {kCFStringEncodingMacArmenian, "Mac Armenian", nullptr, nullptr},
    {kCFStringEncodingMacChineseSimp, "Mac Simplified Chinese", "GB2312", nullptr},
    {kCFStringEncodingMacTibetan, "Mac Tibetan", nullptr, nullptr},
    {kCFStringEncodingMacMongolian, "Mac Mongolian", nullptr, nullptr},
    {kCFStringEncodingMacEthiopic, "Mac Ethiopic", nullptr, nullptr},
    {kCFStringEncodingMacCentralEurRoman, "Mac Central European Roman", "x-mac-centraleurroman", "MAC-CENTRALEUROPE"},
    {kCFStringEncodingMacVietnamese, "Mac Vietnamese", nullptr, nullptr},
    {kCFStringEncodingMacExtArabic, "Mac Extended Arabic", nullptr, nullptr},
    {kCFStringEncodingMacSymbol, "Mac Symbol", nullptr, nullptr},
    {kCFStringEncodingMacDingbats, "Mac Dingbats", nullptr, nullptr},
    {kCFStringEncodingMacTurkish, "Mac Turkish", "x-mac-turkish", nullptr},
    {kCFStringEncodingMacCroatian, "Mac Croatian", nullptr, nullptr},
    {kCFStringEncodingMacIcelandic, "Mac Icelandic", nullptr, "MAC-IS"},
    {kCFStringEncodingMacRomanian, "Mac Romanian", nullptr, nullptr},
    {kCFStringEncodingMacCeltic, "Mac Celtic", nullptr, nullptr},
    {kCFStringEncodingMacGaelic, "Mac Gaelic", nullptr, nullptr},
    {kCFStringEncodingMacFarsi, "Mac Farsi", nullptr, nullptr},
    {kCFStringEncodingMacUkrainian, "Mac Ukrainian", nullptr, "MAC-UK"},
    {kCFStringEncodingMacInuit, "Mac Inuit", nullptr, nullptr},
    {kCFStringEncodingUnicode, "UTF-16", "UTF-16", nullptr},
    {kCFStringEncodingISOLatin1, "ISO-8859-1", "ISO-8859-1", nullptr},
    {kCFStringEncodingISOLatin2, "ISO-8859-2", "ISO-8859-2", nullptr},
    {kCFStringEncodingISOLatin3, "ISO-8859-3", "ISO-8859-3", nullptr},
    {kCFStringEncodingISOLatin4, "ISO-8859-4", "ISO-8859-4", nullptr},
    {kCFStringEncodingISOLatinCyrillic, "ISO-8859-5", "ISO-8859-5", nullptr},
    {kCFStringEncodingISOLatinArabic, "ISO-8859-6", "ISO-8859-6", nullptr},
    {kCFStringEncodingISOLatinGreek, "ISO-8859-7", "ISO-8859-7", nullptr},
    {kCFStringEncodingISOLatinHebrew, "ISO-8859-8", "ISO-8859-8", nullptr},
    {kCFStringEncodingISOLatin5, "ISO-8859-9", "ISO-8859-9", nullptr},
    {kCFStringEncodingISOLatin6, "ISO-8859-10", "ISO-8859-10", nullptr},
    {kCFStringEncodingISOLatinThai, "ISO-8859-11", "x-iso-8859-11", "ISO-8859-11"},
    {kCFStringEncodingISOLatin7, "ISO-8859-13", "ISO-8859-13", nullptr},
    {kCFStringEncodingISOLatin8, "ISO-8859-14", "ISO-8859-14", nullptr},
    {kCFStringEncodingISOLatin9, "ISO-8859-15", "ISO-8859-15", nullptr},
    {kCFStringEncodingISOLatin10, "ISO-8859-16", nullptr, "ISO-8859-16"},
    {kCFStringEncodingDOSLatinUS, "IBM437", "ibm-437", nullptr},
    {kCFStringEncodingDOSGreek, "IBM737", "ibm-737", nullptr},
    {kCFStringEncodingDOSBalticRim, "IBM775", "ibm-775", nullptr},
    {kCFStringEncodingDOSLatin1, "IBM850", "ibm-850", nullptr},
    {kCFStringEncodingDOSGreek1, "IBM851", "ibm-851", nullptr},
    {kCFStringEncodingDOSLatin2, "IBM852", "ibm-852", nullptr},
    {kCFStringEncodingDOSCyrillic, "IBM855", "ibm-855", nullptr},
    {kCFStringEncodingDOSTurkish, "IBM857", "ibm-857", nullptr},
    {kCFStringEncodingDOSPortuguese, "IBM860", "ibm-860", nullptr},
    {kCFStringEncodingDOSIcelandic, "IBM861", "ibm-861", nullptr},
    {kCFStringEncodingDOSHebrew, "IBM862", "ibm-862", nullptr},
    {kCFStringEncodingDOSCanadianFrench, "IBM863", "ibm-863", nullptr},
    {kCFStringEncodingDOSArabic, "IBM864", "ibm-864", nullptr},
    {kCFStringEncodingDOSNordic, "IBM865", "ibm-865", nullptr},
    {kCFStringEncodingDOSRussian, "IBM866", "ibm-866", nullptr},
    {kCFStringEncodingDOSGreek2, "IBM869", "ibm-869", nullptr},
    {kCFStringEncodingDOSThai, "Windows-874", "windows-874", nullptr},
    {kCFStringEncodingDOSJapanese, "Windows-932", "windows-932", nullptr},
    {kCFStringEncodingDOSChineseSimplif, "Windows-936", "windows-936", nullptr},
    {kCFStringEncodingDOSKorean, "Windows-949", "windows-949", nullptr},
    {kCFStringEncodingDOSChineseTrad, "Windows-950", "windows-950", nullptr},
    {kCFStringEncodingWindowsLatin1, "Windows-1252", "windows-1252", nullptr},
    {kCFStringEncodingWindowsLatin2, "Windows-1250", "windows-1250", nullptr},
    {kCFStringEncodingWindowsCyrillic, "Windows-1251", "windows-1251", nullptr},
    {kCFStringEncodingWindowsGreek, "Windows-1253", "windows-1253", nullptr},
    {kCFStringEncodingWindowsLatin5, "Windows-1254", "windows-1254", nullptr},
    {kCFStringEncodingWindowsHebrew, "Windows-1255", "windows-1255", nullptr},
    {kCFStringEncodingWindowsArabic, "Windows-1256", "windows-1256", nullptr},
    {kCFStringEncodingWindowsBalticRim, "Windows-1257", "windows-1257", nullptr},
    {kCFStringEncodingWindowsVietnamese, "Windows-1258", "windows-1258", nullptr},
    {kCFStringEncodingWindowsKoreanJohab, "Johab", nullptr, "JOHAB"},
    {kCFStringEncodingASCII, "US-ASCII", "US-ASCII", nullptr},
    {kCFStringEncodingJIS_X0201_76, "JIS X0201-76", nullptr, nullptr, Provider::JisX0201},
    {kCFStringEncodingJIS_X0208_83, "JIS X0208-83", nullptr, nullptr},
    {kCFStringEncodingJIS_X0208_90, "JIS X0208-90", nullptr, nullptr},
    {kCFStringEncodingJIS_X0212_90, "JIS X0212-90", nullptr, nullptr},
    {kCFStringEncodingJIS_C6226_78, "JIS C6226-78", nullptr, nullptr},
    {kCFStringEncodingShiftJIS_X0213, "Shift_JISX0213", nullptr, "SHIFT_JISX0213"},
    {kCFStringEncodingGB_2312_80, "GB 2312-80", "GB2312", nullptr},
    {kCFStringEncodingGBK_95, "GBK", "GBK", nullptr},
    {kCFStringEncodingGB_18030_2000, "GB18030", "GB18030", nullptr},
    {kCFStringEncodingKSC_5601_87, "KSC 5601-87", "KSC_5601", nullptr},
    {kCFStringEncodingKSC_5601_92_Johab, "KSC 5601-92 Johab", nullptr, "JOHAB"},
    {kCFStringEncodingISO_2022_JP, "ISO-2022-JP", "ISO-2022-JP", nullptr},
    {kCFStringEncodingISO_2022_JP_2, "ISO-2022-JP-2", "ISO-2022-JP-2", nullptr},
    {kCFStringEncodingISO_2022_JP_1, "ISO-2022-JP-1", "ISO-2022-JP-1", nullptr},
    {kCFStringEncodingISO_2022_JP_3, "ISO-2022-JP-3", nullptr, "ISO-2022-JP-3"},
    {kCFStringEncodingISO_2022_CN, "ISO-2022-CN", "ISO-2022-CN", nullptr},
    {kCFStringEncodingISO_2022_CN_EXT, "ISO-2022-CN-EXT", "ISO-2022-CN-EXT", nullptr},
    {kCFStringEncodingISO_2022_KR, "ISO-2022-KR", "ISO-2022-KR", nullptr},
    {kCFStringEncodingEUC_JP, "EUC-JP", "EUC-JP", nullptr},
    {kCFStringEncodingEUC_CN, "EUC-CN", "GB2312", nullptr},
    {kCFStringEncodingEUC_TW, "EUC-TW", "EUC-TW", nullptr},
    {kCFStringEncodingEUC_KR, "EUC-KR", "EUC-KR", nullptr},
    {kCFStringEncodingShiftJIS, "Shift_JIS", "Shift_JIS", nullptr},
    {kCFStringEncodingKOI8_R, "KOI8-R", "KOI8-R", nullptr},
    {kCFStringEncodingBig5, "Big5", "Big5", nullptr},
    {kCFStringEncodingMacRomanLatin1, "Mac Roman Latin-1", nullptr, nullptr},
    {kCFStringEncodingHZ_GB_2312, "HZ-GB-2312", "HZ-GB-2312", nullptr},
    {kCFStringEncodingBig5_HKSCS_1999, "Big5-HKSCS", "Big5-HKSCS", nullptr},
    {kCFStringEncodingVISCII, "VISCII", nullptr, "VISCII"},
    {kCFStringEncodingKOI8_U, "KOI8-U", "KOI8-U", nullptr},
    {kCFStringEncodingBig5_E, "Big5-E", "Big5", nullptr},
    {kCFStringEncodingNextStepLatin, "NeXTSTEP Latin", nullptr, nullptr},
    {kCFStringEncodingNonLossyASCII, "Non-lossy ASCII", nullptr, nullptr, Provider::NonLossyAscii},
    {kCFStringEncodingUTF7, "UTF-7", "UTF-7", nullptr},
    {kCFStringEncodingUTF8, "UTF-8", "UTF-8", nullptr, Provider::Utf8},
    {kCFStringEncodingUTF32, "UTF-32", "UTF-32", nullptr},
    {kCFStringEncodingUTF16BE, "UTF-16BE", "UTF-16BE", nullptr},
    {kCFStringEncodingUTF16LE, "UTF-16LE", "UTF-16LE", nullptr},
    {kCFStringEncodingUTF32BE, "UTF-32BE", "UTF-32BE", nullptr},
    {kCFStringEncodingUTF32LE, "UTF-32LE", "UTF-32LE", nullptr},
    {kCFStringEncodingKamenicky, "Kamenicky", nullptr, nullptr, Provider::Kamenicky},
    {kCFStringEncodingKoi8cs2, "KOI8-CS2", nullptr, nullptr, Provider::Koi8cs2},
};

constexpr size_t kRowCount = sizeof(kRows) / sizeof(kRows[0]);

// Which provider serves each row, settled once by opening the converters.
Provider gProviders[kRowCount];

void settleProviders() {
  for (size_t i = 0; i < kRowCount; ++i) {
    const EncodingRow& row = kRows[i];
    Provider provider = row.own;
    if (provider == Provider::None && row.icuName) {
      UErrorCode status = U_ZERO_ERROR;
      UConverter* converter = ucnv_open(row.icuName, &status);
      if (U_SUCCESS(status)) provider = Provider::Icu;
      ucnv_close(converter);
    }
    if (provider == Provider::None && row.iconvName) {
      iconv_t cd = iconv_open("UTF-16LE", row.iconvName);
      if (cd != reinterpret_cast<iconv_t>(-1)) {
        provider = Provider::Iconv;
        iconv_close(cd);
      }
    }
    gProviders[i] = provider;
  }
}

// The row of an encoding with its provider, or null.
const EncodingRow* findRow(CFStringEncoding encoding, Provider* provider) {
  static std::once_flag once;
  std::call_once(once, settleProviders);
  for (size_t i = 0; i < kRowCount; ++i) {
    if (kRows[i].encoding == encoding) {
      if (provider) *provider = gProviders[i];
      return &kRows[i];
    }
  }
  return nullptr;
}

struct ClassicPair {
  NSStringEncoding ns;
  CFStringEncoding cf;
};

const ClassicPair kClassic[] = {
    {NSASCIIStringEncoding, kCFStringEncodingASCII},
    {NSNEXTSTEPStringEncoding, kCFStringEncodingNextStepLatin},
    {NSJapaneseEUCStringEncoding, kCFStringEncodingEUC_JP},
    {NSUTF8StringEncoding, kCFStringEncodingUTF8},
    {NSISOLatin1StringEncoding, kCFStringEncodingISOLatin1},
    {NSSymbolStringEncoding, kCFStringEncodingMacSymbol},
    {NSNonLossyASCIIStringEncoding, kCFStringEncodingNonLossyASCII},
    {NSShiftJISStringEncoding, kCFStringEncodingDOSJapanese},
    {NSISOLatin2StringEncoding, kCFStringEncodingISOLatin2},
    {NSUnicodeStringEncoding, kCFStringEncodingUnicode},
    {NSWindowsCP1251StringEncoding, kCFStringEncodingWindowsCyrillic},
    {NSWindowsCP1252StringEncoding, kCFStringEncodingWindowsLatin1},
    {NSWindowsCP1253StringEncoding, kCFStringEncodingWindowsGreek},
    {NSWindowsCP1254StringEncoding, kCFStringEncodingWindowsLatin5},
    {NSWindowsCP1250StringEncoding, kCFStringEncodingWindowsLatin2},
    {NSISO2022JPStringEncoding, kCFStringEncodingISO_2022_JP},
    {NSMacOSRomanStringEncoding, kCFStringEncodingMacRoman},
    {NSKamenickyStringEncoding, kCFStringEncodingKamenicky},
    {NSKoi8cs2StringEncoding, kCFStringEncodingKoi8cs2},
};

bool isUnicodeEncoding(CFStringEncoding encoding) {
  return (encoding & 0xFF) == 0 && (encoding >> 8 & 0xFF) == 1;
}

// ---- ICU ----------------------------------------------------------------

// Writes one U+FFFD for each malformed or unmappable sequence.
void substituteReplacementCharacter(const void*, UConverterToUnicodeArgs* args, const char*, int32_t,
                                    UConverterCallbackReason reason, UErrorCode* status) {
  if (reason > UCNV_IRREGULAR) return;  // reset, close, clone: nothing to write
  static const UChar kReplacement = 0xFFFD;
  *status = U_ZERO_ERROR;
  ucnv_cbToUWriteUChars(args, &kReplacement, 1, 0, status);
}

bool decodeWithIcu(const char* converterName, std::string_view bytes, bool strict, std::u16string& out) {
  UErrorCode status = U_ZERO_ERROR;
  UConverter* converter = ucnv_open(converterName, &status);
  if (U_FAILURE(status)) return false;
  if (strict) {
    ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  } else {
    ucnv_setToUCallBack(converter, substituteReplacementCharacter, nullptr, nullptr, nullptr, &status);
  }
  size_t start = out.size();
  // Nearly every encoding yields at most one unit per byte; the buffer
  // grows for the few that yield more.
  size_t capacity = bytes.size() + 32;
  const char* source = bytes.data();
  const char* sourceLimit = source + bytes.size();
  size_t written = 0;
  bool ok = true;
  for (;;) {
    out.resize(start + capacity);
    UChar* target = out.data() + start + written;
    UChar* targetLimit = out.data() + start + capacity;
    status = U_ZERO_ERROR;
    ucnv_toUnicode(converter, &target, targetLimit, &source, sourceLimit, nullptr, true, &status);
    written = static_cast<size_t>(target - (out.data() + start));
    if (status == U_BUFFER_OVERFLOW_ERROR) {
      capacity *= 2;
      continue;
    }
    ok = U_SUCCESS(status);
    break;
  }
  ucnv_close(converter);
  if (!ok) {
    out.resize(start);
    return false;
  }
  out.resize(start + written);
  return true;
}

std::optional<std::string> encodeWithIcu(const char* converterName, std::u16string_view text, bool lossy) {
  UErrorCode status = U_ZERO_ERROR;
  UConverter* converter = ucnv_open(converterName, &status);
  if (U_FAILURE(status)) return std::nullopt;
  if (lossy) {
    UErrorCode ignored = U_ZERO_ERROR;
    ucnv_setSubstChars(converter, "?", 1, &ignored);
    ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_SUBSTITUTE, nullptr, nullptr, nullptr, &status);
  } else {
    ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  }
  std::string out;
  size_t capacity = std::max<size_t>(text.size() * 2 + 16, 32);
  const UChar* source = text.data();
  const UChar* sourceLimit = source + text.size();
  size_t written = 0;
  bool ok = true;
  for (;;) {
    out.resize(capacity);
    char* target = out.data() + written;
    status = U_ZERO_ERROR;
    ucnv_fromUnicode(converter, &target, out.data() + capacity, &source, sourceLimit, nullptr, true, &status);
    written = static_cast<size_t>(target - out.data());
    if (status == U_BUFFER_OVERFLOW_ERROR) {
      capacity *= 2;
      continue;
    }
    ok = U_SUCCESS(status);
    break;
  }
  ucnv_close(converter);
  if (!ok) return std::nullopt;
  out.resize(written);
  return out;
}

// ---- iconv --------------------------------------------------------------

// Decodes to UTF-16LE, which is the host's order here. A byte that starts
// no valid sequence becomes U+FFFD and decoding goes on behind it.
bool decodeWithIconv(const char* name, std::string_view bytes, bool strict, std::u16string& out) {
  iconv_t cd = iconv_open("UTF-16LE", name);
  if (cd == reinterpret_cast<iconv_t>(-1)) return false;
  size_t start = out.size();
  size_t capacity = std::max<size_t>(bytes.size() * 2, 32);
  out.resize(start + capacity);
  char* in = const_cast<char*>(bytes.data());
  size_t inLeft = bytes.size();
  size_t written = 0;
  bool ok = true;
  while (inLeft > 0) {
    char* target = reinterpret_cast<char*>(out.data() + start + written);
    size_t targetLeft = (capacity - written) * sizeof(char16_t);
    size_t result = iconv(cd, &in, &inLeft, &target, &targetLeft);
    written = capacity - targetLeft / sizeof(char16_t);
    if (result != static_cast<size_t>(-1)) break;
    if (errno == E2BIG) {
      capacity *= 2;
      out.resize(start + capacity);
      continue;
    }
    if (strict) {
      ok = false;
      break;
    }
    if (written == capacity) {
      capacity *= 2;
      out.resize(start + capacity);
    }
    out[start + written++] = 0xFFFD;
    if (errno == EINVAL) break;  // truncated sequence at the end
    ++in;
    --inLeft;
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
  }
  if (ok) {
    // Flush a stateful encoding's pending output.
    char* target = reinterpret_cast<char*>(out.data() + start + written);
    size_t targetLeft = (capacity - written) * sizeof(char16_t);
    iconv(cd, nullptr, nullptr, &target, &targetLeft);
    written = capacity - targetLeft / sizeof(char16_t);
  }
  iconv_close(cd);
  out.resize(ok ? start + written : start);
  return ok;
}

std::optional<std::string> encodeWithIconv(const char* name, std::u16string_view text, bool lossy) {
  iconv_t cd = iconv_open(name, "UTF-16LE");
  if (cd == reinterpret_cast<iconv_t>(-1)) return std::nullopt;
  std::string out(std::max<size_t>(text.size() * 4 + 16, 32), '\0');
  char* in = reinterpret_cast<char*>(const_cast<char16_t*>(text.data()));
  size_t inLeft = text.size() * sizeof(char16_t);
  size_t written = 0;
  bool ok = true;
  for (;;) {
    char* target = out.data() + written;
    size_t targetLeft = out.size() - written;
    // Once the input is used up, the last call returns a stateful encoding
    // to its initial shift state.
    bool flushing = inLeft == 0;
    size_t result =
        flushing ? iconv(cd, nullptr, nullptr, &target, &targetLeft) : iconv(cd, &in, &inLeft, &target, &targetLeft);
    written = out.size() - targetLeft;
    if (result != static_cast<size_t>(-1)) {
      if (flushing) break;
      continue;
    }
    if (errno == E2BIG) {
      out.resize(out.size() * 2);
      continue;
    }
    if (!lossy || errno == EINVAL) {
      ok = false;
      break;
    }
    // Skip the unit (or pair) that has no form in the encoding.
    char16_t unit = *reinterpret_cast<const char16_t*>(in);
    size_t skip = (unit >= 0xD800 && unit < 0xDC00 && inLeft >= 4) ? 4 : 2;
    in += skip;
    inLeft -= skip;
    if (written == out.size()) out.resize(out.size() * 2);
    out[written++] = '?';
  }
  iconv_close(cd);
  if (!ok) return std::nullopt;
  out.resize(written);
  return out;
}

// Drops a leading U+FEFF that a Unicode decoder left in place.
void dropByteOrderMark(std::u16string& out, size_t start, CFStringEncoding encoding) {
  if (isUnicodeEncoding(encoding) && out.size() > start && out[start] == 0xFEFF) out.erase(start, 1);
}

std::optional<std::string> encode(std::u16string_view text, NSStringEncoding nsEncoding, bool lossy) {
  Provider provider;
  CFStringEncoding encoding = cfEncodingFromNSEncoding(nsEncoding);
  const EncodingRow* row = findRow(encoding, &provider);
  if (!row) return std::nullopt;
  switch (provider) {
    case Provider::Utf8:
      return encodeUtf8(text, lossy);
    case Provider::Kamenicky:
      return encodeKamenicky(text, lossy);
    case Provider::Koi8cs2:
      return encodeKoi8cs2(text, lossy);
    case Provider::NonLossyAscii:
      return encodeNonLossyAscii(text);
    case Provider::JisX0201:
      return encodeJisX0201(text, lossy);
    case Provider::Icu:
      return encodeWithIcu(row->icuName, text, lossy);
    case Provider::Iconv:
      return encodeWithIconv(row->iconvName, text, lossy);
    case Provider::None:
      break;
  }
  return std::nullopt;
}

}  // namespace

NSStringEncoding nsEncodingFromCFEncoding(CFStringEncoding encoding) {
  if (encoding == kInvalidEncoding) return kInvalidEncoding;
  for (const ClassicPair& pair : kClassic) {
    if (pair.cf == encoding) return pair.ns;
  }
  if (encoding & 0x80000000) return kInvalidEncoding;
  return 0x80000000 | encoding;
}

CFStringEncoding cfEncodingFromNSEncoding(NSStringEncoding encoding) {
  for (const ClassicPair& pair : kClassic) {
    if (pair.ns == encoding) return pair.cf;
  }
  if (encoding == kInvalidEncoding || !(encoding & 0x80000000)) return kInvalidEncoding;
  return encoding & 0x7FFFFFFF;
}

bool isCFEncodingAvailable(CFStringEncoding encoding) {
  Provider provider = Provider::None;
  return findRow(encoding, &provider) && provider != Provider::None;
}

bool isNSEncodingAvailable(NSStringEncoding encoding) {
  return isCFEncodingAvailable(cfEncodingFromNSEncoding(encoding));
}

std::string_view nameOfCFEncoding(CFStringEncoding encoding) {
  const EncodingRow* row = findRow(encoding, nullptr);
  return row ? row->name : "unknown";
}

std::string_view nameOfNSEncoding(NSStringEncoding encoding) {
  return nameOfCFEncoding(cfEncodingFromNSEncoding(encoding));
}

const char* icuConverterNameOfNSEncoding(NSStringEncoding encoding) {
  Provider provider = Provider::None;
  const EncodingRow* row = findRow(cfEncodingFromNSEncoding(encoding), &provider);
  return row && provider == Provider::Icu ? row->icuName : nullptr;
}

bool decodeBytesAppending(std::string_view bytes, NSStringEncoding nsEncoding, bool strict, std::u16string& out) {
  Provider provider = Provider::None;
  CFStringEncoding encoding = cfEncodingFromNSEncoding(nsEncoding);
  const EncodingRow* row = findRow(encoding, &provider);
  if (!row) return false;
  size_t start = out.size();
  bool ok = false;
  switch (provider) {
    case Provider::Utf8:
      ok = decodeUtf8(bytes, strict, out);
      break;
    case Provider::Kamenicky:
      out += decodeKamenicky(bytes);
      ok = true;
      break;
    case Provider::NonLossyAscii:
      ok = decodeNonLossyAscii(bytes, strict, out);
      break;
    case Provider::JisX0201:
      ok = decodeJisX0201(bytes, strict, out);
      break;
    case Provider::Koi8cs2:
      ok = decodeKoi8cs2Appending(bytes, strict, out);
      break;
    case Provider::Icu:
      ok = decodeWithIcu(row->icuName, bytes, strict, out);
      break;
    case Provider::Iconv:
      ok = decodeWithIconv(row->iconvName, bytes, strict, out);
      break;
    case Provider::None:
      break;
  }
  if (ok) dropByteOrderMark(out, start, encoding);
  return ok;
}

std::optional<std::u16string> decodeBytes(std::string_view bytes, NSStringEncoding encoding) {
  std::u16string out;
  if (!decodeBytesAppending(bytes, encoding, false, out)) return std::nullopt;
  return out;
}

std::optional<std::u16string> decodeBytesStrict(std::string_view bytes, NSStringEncoding encoding) {
  std::u16string out;
  if (!decodeBytesAppending(bytes, encoding, true, out)) return std::nullopt;
  return out;
}

String stringWithBytes(std::string_view bytes, NSStringEncoding encoding) {
  std::u16string out;
  if (!decodeBytesAppending(bytes, encoding, false, out)) return String();
  return String::fromU16(std::move(out));
}

String stringWithBytesStrict(std::string_view bytes, NSStringEncoding encoding) {
  std::u16string out;
  if (!decodeBytesAppending(bytes, encoding, true, out)) return String();
  return String::fromU16(std::move(out));
}

std::optional<std::string> encodeString(std::u16string_view text, NSStringEncoding encoding) {
  return encode(text, encoding, false);
}

std::optional<std::string> encodeStringLossy(std::u16string_view text, NSStringEncoding encoding) {
  return encode(text, encoding, true);
}

}  // namespace norvane::text
