// Text encodings: their two numberings, the conversion between them, and
// decoding bytes to UTF-16 and encoding text to bytes.
//
// An encoding has two numbers. A `CFStringEncoding` is what the tables of
// character-set names produce; an `NSStringEncoding` is what the string
// operations take. 0xFFFFFFFF means "no encoding" in both. The two Czech
// encodings Kamenicky and KOI8-CS2 are the library's own and have numbers of
// their own in both schemes (see docs/encodings.md).
//
// Each encoding is converted by ICU where ICU has a converter, otherwise by
// the C library's iconv, and Kamenicky and KOI8-CS2 by tables of our own.
// An encoding that none of them provides is unavailable: decoding and
// encoding in it answer nullopt (or a null String).
//
// Decoding is lossy or strict. Lossy decoding turns each malformed or
// unmappable byte sequence into one U+FFFD and never fails on content;
// strict decoding answers nullopt at the first such sequence. A leading
// byte-order mark of a Unicode encoding is not part of the text: it is
// dropped, and for UTF-16 and UTF-32 without a stated byte order it chooses
// the byte order (big-endian without a mark).
//
// Everything here is reentrant and thread-safe.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "norvane/core/string.h"

namespace norvane::text {

using CFStringEncoding = uint32_t;
using NSStringEncoding = uint32_t;

inline constexpr uint32_t kInvalidEncoding = 0xFFFFFFFF;

// NSStringEncoding values.
inline constexpr NSStringEncoding NSASCIIStringEncoding = 1;
inline constexpr NSStringEncoding NSNEXTSTEPStringEncoding = 2;
inline constexpr NSStringEncoding NSJapaneseEUCStringEncoding = 3;
inline constexpr NSStringEncoding NSUTF8StringEncoding = 4;
inline constexpr NSStringEncoding NSISOLatin1StringEncoding = 5;
inline constexpr NSStringEncoding NSSymbolStringEncoding = 6;
inline constexpr NSStringEncoding NSNonLossyASCIIStringEncoding = 7;
inline constexpr NSStringEncoding NSShiftJISStringEncoding = 8;
inline constexpr NSStringEncoding NSISOLatin2StringEncoding = 9;
inline constexpr NSStringEncoding NSUnicodeStringEncoding = 10;  // UTF-16, byte order by mark
inline constexpr NSStringEncoding NSWindowsCP1251StringEncoding = 11;
inline constexpr NSStringEncoding NSWindowsCP1252StringEncoding = 12;
inline constexpr NSStringEncoding NSWindowsCP1253StringEncoding = 13;
inline constexpr NSStringEncoding NSWindowsCP1254StringEncoding = 14;
inline constexpr NSStringEncoding NSWindowsCP1250StringEncoding = 15;
inline constexpr NSStringEncoding NSISO2022JPStringEncoding = 21;
inline constexpr NSStringEncoding NSMacOSRomanStringEncoding = 30;
inline constexpr NSStringEncoding NSUTF16BigEndianStringEncoding = 0x90000100;
inline constexpr NSStringEncoding NSUTF16LittleEndianStringEncoding = 0x94000100;
inline constexpr NSStringEncoding NSUTF32StringEncoding = 0x8c000100;
inline constexpr NSStringEncoding NSUTF32BigEndianStringEncoding = 0x98000100;
inline constexpr NSStringEncoding NSUTF32LittleEndianStringEncoding = 0x9c000100;
inline constexpr NSStringEncoding NSKamenickyStringEncoding = 0xFFFFFFF0;
inline constexpr NSStringEncoding NSKoi8cs2StringEncoding = 0xFFFFFFF1;

// CFStringEncoding values.
enum : CFStringEncoding {
  kCFStringEncodingMacRoman = 0,
  kCFStringEncodingMacJapanese = 1,
  kCFStringEncodingMacChineseTrad = 2,
  kCFStringEncodingMacKorean = 3,
  kCFStringEncodingMacArabic = 4,
  kCFStringEncodingMacHebrew = 5,
  kCFStringEncodingMacGreek = 6,
  kCFStringEncodingMacCyrillic = 7,
  kCFStringEncodingMacDevanagari = 9,
  kCFStringEncodingMacGurmukhi = 10,
  kCFStringEncodingMacGujarati = 11,
  kCFStringEncodingMacOriya = 12,
  kCFStringEncodingMacBengali = 13,
  kCFStringEncodingMacTamil = 14,
  kCFStringEncodingMacTelugu = 15,
  kCFStringEncodingMacKannada = 16,
  kCFStringEncodingMacMalayalam = 17,
  kCFStringEncodingMacSinhalese = 18,
  kCFStringEncodingMacBurmese = 19,
  kCFStringEncodingMacKhmer = 20,
  kCFStringEncodingMacThai = 21,
  kCFStringEncodingMacLaotian = 22,
  kCFStringEncodingMacGeorgian = 23,
  kCFStringEncodingMacArmenian = 24,
  kCFStringEncodingMacChineseSimp = 25,
  kCFStringEncodingMacTibetan = 26,
  kCFStringEncodingMacMongolian = 27,
  kCFStringEncodingMacEthiopic = 28,
  kCFStringEncodingMacCentralEurRoman = 29,
  kCFStringEncodingMacVietnamese = 30,
  kCFStringEncodingMacExtArabic = 31,
  kCFStringEncodingMacSymbol = 33,
  kCFStringEncodingMacDingbats = 34,
  kCFStringEncodingMacTurkish = 35,
  kCFStringEncodingMacCroatian = 36,
  kCFStringEncodingMacIcelandic = 37,
  kCFStringEncodingMacRomanian = 38,
  kCFStringEncodingMacCeltic = 39,
  kCFStringEncodingMacGaelic = 40,
  kCFStringEncodingMacFarsi = 0x8C,
  kCFStringEncodingMacUkrainian = 0x98,
  kCFStringEncodingMacInuit = 0xEC,
  kCFStringEncodingUnicode = 0x0100,  // UTF-16, byte order by mark
  kCFStringEncodingISOLatin1 = 0x0201,
  kCFStringEncodingISOLatin2 = 0x0202,
  kCFStringEncodingISOLatin3 = 0x0203,
  kCFStringEncodingISOLatin4 = 0x0204,
  kCFStringEncodingISOLatinCyrillic = 0x0205,
  kCFStringEncodingISOLatinArabic = 0x0206,
  kCFStringEncodingISOLatinGreek = 0x0207,
  kCFStringEncodingISOLatinHebrew = 0x0208,
  kCFStringEncodingISOLatin5 = 0x0209,
  kCFStringEncodingISOLatin6 = 0x020A,
  kCFStringEncodingISOLatinThai = 0x020B,
  kCFStringEncodingISOLatin7 = 0x020D,
  kCFStringEncodingISOLatin8 = 0x020E,
  kCFStringEncodingISOLatin9 = 0x020F,
  kCFStringEncodingISOLatin10 = 0x0210,
  kCFStringEncodingDOSLatinUS = 0x0400,
  kCFStringEncodingDOSGreek = 0x0405,
  kCFStringEncodingDOSBalticRim = 0x0406,
  kCFStringEncodingDOSLatin1 = 0x0410,
  kCFStringEncodingDOSGreek1 = 0x0411,
  kCFStringEncodingDOSLatin2 = 0x0412,
  kCFStringEncodingDOSCyrillic = 0x0413,
  kCFStringEncodingDOSTurkish = 0x0414,
  kCFStringEncodingDOSPortuguese = 0x0415,
  kCFStringEncodingDOSIcelandic = 0x0416,
  kCFStringEncodingDOSHebrew = 0x0417,
  kCFStringEncodingDOSCanadianFrench = 0x0418,
  kCFStringEncodingDOSArabic = 0x0419,
  kCFStringEncodingDOSNordic = 0x041A,
  kCFStringEncodingDOSRussian = 0x041B,
  kCFStringEncodingDOSGreek2 = 0x041C,
  kCFStringEncodingDOSThai = 0x041D,
  kCFStringEncodingDOSJapanese = 0x0420,
  kCFStringEncodingDOSChineseSimplif = 0x0421,
  kCFStringEncodingDOSKorean = 0x0422,
  kCFStringEncodingDOSChineseTrad = 0x0423,
  kCFStringEncodingWindowsLatin1 = 0x0500,
  kCFStringEncodingWindowsLatin2 = 0x0501,
  kCFStringEncodingWindowsCyrillic = 0x0502,
  kCFStringEncodingWindowsGreek = 0x0503,
  kCFStringEncodingWindowsLatin5 = 0x0504,
  kCFStringEncodingWindowsHebrew = 0x0505,
  kCFStringEncodingWindowsArabic = 0x0506,
  kCFStringEncodingWindowsBalticRim = 0x0507,
  kCFStringEncodingWindowsVietnamese = 0x0508,
  kCFStringEncodingWindowsKoreanJohab = 0x0510,
  kCFStringEncodingASCII = 0x0600,
  kCFStringEncodingJIS_X0201_76 = 0x0620,
  kCFStringEncodingJIS_X0208_83 = 0x0621,
  kCFStringEncodingJIS_X0208_90 = 0x0622,
  kCFStringEncodingJIS_X0212_90 = 0x0623,
  kCFStringEncodingJIS_C6226_78 = 0x0624,
  kCFStringEncodingShiftJIS_X0213 = 0x0628,
  kCFStringEncodingGB_2312_80 = 0x0630,
  kCFStringEncodingGBK_95 = 0x0631,
  kCFStringEncodingGB_18030_2000 = 0x0632,
  kCFStringEncodingKSC_5601_87 = 0x0640,
  kCFStringEncodingKSC_5601_92_Johab = 0x0641,
  kCFStringEncodingISO_2022_JP = 0x0820,
  kCFStringEncodingISO_2022_JP_2 = 0x0821,
  kCFStringEncodingISO_2022_JP_1 = 0x0822,
  kCFStringEncodingISO_2022_JP_3 = 0x0823,
  kCFStringEncodingISO_2022_CN = 0x0830,
  kCFStringEncodingISO_2022_CN_EXT = 0x0831,
  kCFStringEncodingISO_2022_KR = 0x0840,
  kCFStringEncodingEUC_JP = 0x0920,
  kCFStringEncodingEUC_CN = 0x0930,
  kCFStringEncodingEUC_TW = 0x0931,
  kCFStringEncodingEUC_KR = 0x0940,
  kCFStringEncodingShiftJIS = 0x0A01,
  kCFStringEncodingKOI8_R = 0x0A02,
  kCFStringEncodingBig5 = 0x0A03,
  kCFStringEncodingMacRomanLatin1 = 0x0A04,
  kCFStringEncodingHZ_GB_2312 = 0x0A05,
  kCFStringEncodingBig5_HKSCS_1999 = 0x0A06,
  kCFStringEncodingVISCII = 0x0A07,
  kCFStringEncodingKOI8_U = 0x0A08,
  kCFStringEncodingBig5_E = 0x0A09,
  kCFStringEncodingNextStepLatin = 0x0B01,
  kCFStringEncodingNonLossyASCII = 0x0BFF,
  kCFStringEncodingUTF7 = 0x04000100,
  kCFStringEncodingUTF8 = 0x08000100,
  kCFStringEncodingUTF32 = 0x0c000100,
  kCFStringEncodingUTF16BE = 0x10000100,
  kCFStringEncodingUTF16LE = 0x14000100,
  kCFStringEncodingUTF32BE = 0x18000100,
  kCFStringEncodingUTF32LE = 0x1c000100,
  kCFStringEncodingKamenicky = 0xA001,
  kCFStringEncodingKoi8cs2 = 0xA002,
  kCFStringEncodingInvalidId = 0xFFFFFFFF,
};

// The conversions between the two numberings. An encoding of the classic
// NSStringEncoding list (1..15, 21, 30) maps to its own CFStringEncoding;
// any other CFStringEncoding c is the NSStringEncoding 0x80000000 | c. The
// two Czech encodings map to each other's numbers. kInvalidEncoding maps to
// kInvalidEncoding, as does an NSStringEncoding with no counterpart.
NSStringEncoding nsEncodingFromCFEncoding(CFStringEncoding encoding);
CFStringEncoding cfEncodingFromNSEncoding(NSStringEncoding encoding);

// True when some converter decodes and encodes the encoding here.
bool isCFEncodingAvailable(CFStringEncoding encoding);
bool isNSEncodingAvailable(NSStringEncoding encoding);

// A readable name ("UTF-8", "Windows-1251", "Kamenicky"); "unknown" for a
// number that no table knows.
std::string_view nameOfCFEncoding(CFStringEncoding encoding);
std::string_view nameOfNSEncoding(NSStringEncoding encoding);

// The ICU converter used for an encoding, or null when ICU is not the one
// that converts it.
const char* icuConverterNameOfNSEncoding(NSStringEncoding encoding);

// Decoding. The lossy forms answer nullopt only for an unavailable
// encoding; the strict forms also at the first malformed sequence.
// `decodeBytesAppending` appends to `out` (reusing its capacity) and answers
// false, leaving `out` as it was, where the others answer nullopt.
std::optional<std::u16string> decodeBytes(std::string_view bytes, NSStringEncoding encoding);
std::optional<std::u16string> decodeBytesStrict(std::string_view bytes, NSStringEncoding encoding);
bool decodeBytesAppending(std::string_view bytes, NSStringEncoding encoding, bool strict, std::u16string& out);

// The same as Strings: null where the forms above answer nullopt.
String stringWithBytes(std::string_view bytes, NSStringEncoding encoding);
String stringWithBytesStrict(std::string_view bytes, NSStringEncoding encoding);

// Decoders of the two Czech encodings. Every byte gives one unit, so they
// never fail; a byte that stands for no character gives U+FFFD.
std::u16string decodeKamenicky(std::string_view bytes);
std::u16string decodeKoi8cs2(std::string_view bytes);

// Encoding. The strict form answers nullopt when a unit cannot be expressed
// in the encoding (or a surrogate is unpaired); the lossy form writes the
// encoding's substitute ('?' where it has one) instead. Both answer nullopt
// for an unavailable encoding. No byte-order mark is written, except for
// NSUnicodeStringEncoding and NSUTF32StringEncoding, which are written
// in the host's order (little-endian) behind a mark.
std::optional<std::string> encodeString(std::u16string_view text, NSStringEncoding encoding);
std::optional<std::string> encodeStringLossy(std::u16string_view text, NSStringEncoding encoding);

// Counts the units U+FFFD.
size_t countReplacementCharacters(const unichar* units, size_t length);

}  // namespace norvane::text
