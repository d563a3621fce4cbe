#include "norvane/text/encodings.h"

#include <gtest/gtest.h>
#include <iconv.h>
#include <unicode/ucnv.h>

#include <random>
#include <string>

#include "norvane/core/unicode.h"

namespace norvane::text {
namespace {

// Bytes of `utf8` in the encoding ICU knows as `converter`, made without
// the code under test.
std::string icuEncode(const char* converter, std::string_view utf8) {
  std::u16string units = utf8ToUtf16(utf8);
  UErrorCode status = U_ZERO_ERROR;
  UConverter* cnv = ucnv_open(converter, &status);
  EXPECT_TRUE(U_SUCCESS(status)) << converter;
  std::string out(units.size() * 4 + 16, '\0');
  int32_t length = ucnv_fromUChars(cnv, out.data(), static_cast<int32_t>(out.size()), units.data(),
                                   static_cast<int32_t>(units.size()), &status);
  ucnv_close(cnv);
  EXPECT_TRUE(U_SUCCESS(status)) << converter << " " << u_errorName(status);
  out.resize(static_cast<size_t>(length));
  return out;
}

std::string iconvEncode(const char* name, std::string_view utf8) {
  iconv_t cd = iconv_open(name, "UTF-8");
  EXPECT_NE(cd, reinterpret_cast<iconv_t>(-1)) << name;
  std::string out(utf8.size() * 4 + 16, '\0');
  char* in = const_cast<char*>(utf8.data());
  size_t inLeft = utf8.size();
  char* target = out.data();
  size_t targetLeft = out.size();
  EXPECT_NE(iconv(cd, &in, &inLeft, &target, &targetLeft), static_cast<size_t>(-1)) << name;
  iconv(cd, nullptr, nullptr, &target, &targetLeft);
  iconv_close(cd);
  out.resize(out.size() - targetLeft);
  return out;
}

std::u16string icuDecodeUtf8Lossy(std::string_view bytes) {
  UErrorCode status = U_ZERO_ERROR;
  UConverter* cnv = ucnv_open("UTF-8", &status);
  std::u16string out(bytes.size() + 1, u'\0');
  int32_t length = ucnv_toUChars(cnv, out.data(), static_cast<int32_t>(out.size()), bytes.data(),
                                 static_cast<int32_t>(bytes.size()), &status);
  ucnv_close(cnv);
  out.resize(static_cast<size_t>(length));
  return out;
}

TEST(EncodingNumbers, ClassicListAndGeneralRule) {
  struct Case {
    CFStringEncoding cf;
    NSStringEncoding ns;
  } cases[] = {
      {kCFStringEncodingASCII, 1},
      {kCFStringEncodingUTF8, 4},
      {kCFStringEncodingISOLatin1, 5},
      {kCFStringEncodingDOSJapanese, 8},
      {kCFStringEncodingWindowsCyrillic, 11},
      {kCFStringEncodingWindowsLatin2, 15},
      {kCFStringEncodingMacRoman, 30},
      {kCFStringEncodingUnicode, 10},
      {kCFStringEncodingUTF16BE, 0x90000100},
      {kCFStringEncodingUTF16LE, 0x94000100},
      {kCFStringEncodingShiftJIS, 0x80000A01},
      {kCFStringEncodingBig5_HKSCS_1999, 0x80000A06},
      {kCFStringEncodingKOI8_R, 0x80000A02},
      {kCFStringEncodingKamenicky, 0xFFFFFFF0},
      {kCFStringEncodingKoi8cs2, 0xFFFFFFF1},
      {kInvalidEncoding, kInvalidEncoding},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(nsEncodingFromCFEncoding(c.cf), c.ns) << std::hex << c.cf;
    EXPECT_EQ(cfEncodingFromNSEncoding(c.ns), c.cf) << std::hex << c.ns;
  }
  // No counterpart for small NSStringEncodings outside the classic list.
  EXPECT_EQ(cfEncodingFromNSEncoding(16), kInvalidEncoding);
  EXPECT_EQ(cfEncodingFromNSEncoding(0), kInvalidEncoding);
}

TEST(EncodingNames, ReadableNames) {
  EXPECT_EQ(nameOfNSEncoding(NSUTF8StringEncoding), "UTF-8");
  EXPECT_EQ(nameOfNSEncoding(NSWindowsCP1251StringEncoding), "Windows-1251");
  EXPECT_EQ(nameOfNSEncoding(NSKamenickyStringEncoding), "Kamenicky");
  EXPECT_EQ(nameOfNSEncoding(0x12345), "unknown");
}

// Text in each encoding is made by ICU or iconv from UTF-8 samples and must
// decode back to the sample; encoding the sample must give the same bytes.
struct RoundTrip {
  NSStringEncoding encoding;
  const char* maker;  // ICU converter, or "iconv:" and an iconv name
  const char* sample;
};

const RoundTrip kRoundTrips[] = {
    {NSISOLatin1StringEncoding, "ISO-8859-1", "Größe, café, naïve façade"},
    {NSWindowsCP1252StringEncoding, "windows-1252", "“Quotes” – and € sign"},
    {NSWindowsCP1250StringEncoding, "windows-1250", "Příliš žluťoučký kůň úpěl ďábelské ódy"},
    {NSWindowsCP1251StringEncoding, "windows-1251", "Съешь же ещё этих мягких французских булок"},
    {NSISOLatin2StringEncoding, "ISO-8859-2", "Zażółć gęślą jaźń"},
    {nsEncodingFromCFEncoding(kCFStringEncodingKOI8_R), "KOI8-R", "Широкая электрификация"},
    {nsEncodingFromCFEncoding(kCFStringEncodingShiftJIS), "Shift_JIS", "いろはにほへと 日本語のテキスト"},
    {NSJapaneseEUCStringEncoding, "EUC-JP", "いろはにほへと 日本語のテキスト"},
    {NSISO2022JPStringEncoding, "ISO-2022-JP", "いろはにほへと 日本語"},
    {nsEncodingFromCFEncoding(kCFStringEncodingEUC_CN), "GB2312", "中文文本，简体字"},
    {nsEncodingFromCFEncoding(kCFStringEncodingGBK_95), "GBK", "中文文本，简体字"},
    {nsEncodingFromCFEncoding(kCFStringEncodingGB_18030_2000), "GB18030", "中文文本 😀"},
    {nsEncodingFromCFEncoding(kCFStringEncodingBig5), "Big5", "中文文本，繁體字"},
    {nsEncodingFromCFEncoding(kCFStringEncodingEUC_KR), "EUC-KR", "한국어 텍스트"},
    {NSUTF16BigEndianStringEncoding, "UTF-16BE", "Ünïcödé 😀 text"},
    {NSUTF16LittleEndianStringEncoding, "UTF-16LE", "Ünïcödé 😀 text"},
    {NSUTF32LittleEndianStringEncoding, "UTF-32LE", "Ünïcödé 😀 text"},
    {NSMacOSRomanStringEncoding, "macos-0_2-10.2", "Mac “Roman” ƒ ∂"},
    {nsEncodingFromCFEncoding(kCFStringEncodingDOSLatin2), "ibm-852", "Příliš žluťoučký kůň"},
    {nsEncodingFromCFEncoding(kCFStringEncodingMacIcelandic), "iconv:MAC-IS", "Þetta er íslenska"},
    {nsEncodingFromCFEncoding(kCFStringEncodingVISCII), "iconv:VISCII", "Tiếng Việt"},
    {nsEncodingFromCFEncoding(kCFStringEncodingWindowsKoreanJohab), "iconv:JOHAB", "한국어"},
    {nsEncodingFromCFEncoding(kCFStringEncodingISOLatin10), "iconv:ISO-8859-16", "Românește Șș Țț"},
    {nsEncodingFromCFEncoding(kCFStringEncodingEUC_TW), "EUC-TW", "中文文本，繁體字"},
    {nsEncodingFromCFEncoding(kCFStringEncodingHZ_GB_2312), "HZ-GB-2312", "中文 text 简体字"},
    {nsEncodingFromCFEncoding(kCFStringEncodingISO_2022_JP_3), "iconv:ISO-2022-JP-3", "いろは 日本語"},
    {nsEncodingFromCFEncoding(kCFStringEncodingShiftJIS_X0213), "iconv:SHIFT_JISX0213", "いろは 日本語"},
    {nsEncodingFromCFEncoding(kCFStringEncodingMacUkrainian), "iconv:MAC-UK", "Українська мова"},
};

TEST(EncodingRoundTrip, DecodesTextMadeByIcuAndIconv) {
  for (const RoundTrip& c : kRoundTrips) {
    SCOPED_TRACE(c.maker);
    std::string_view maker = c.maker;
    std::string bytes = maker.starts_with("iconv:") ? iconvEncode(c.maker + 6, c.sample) : icuEncode(c.maker, c.sample);
    ASSERT_TRUE(isNSEncodingAvailable(c.encoding));
    std::optional<std::u16string> decoded = decodeBytesStrict(bytes, c.encoding);
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(utf16ToUtf8(*decoded), c.sample);
    std::optional<std::string> encoded = encodeString(utf8ToUtf16(c.sample), c.encoding);
    ASSERT_TRUE(encoded.has_value());
    EXPECT_EQ(*encoded, bytes);
  }
}

TEST(EncodingUtf8, AgreesWithIcuOnMalformedInput) {
  const char* cases[] = {
      "\x80",
      "\xC0\xAF",
      "\xE2\x82",
      "\xE2\x82\xACx",
      "\xF0\x80\x80",
      "\xED\xA0\x80",
      "a\xF4\x90\x80\x80z",
      "\xF5\xFF\xFE",
      "\xE0\x9F\x80",
      "\xF0\x9F\x98\x80",
      "\xC2",
      "ok \xE4\xB8\xAD \xE4\xB8 end",
  };
  for (const char* c : cases) {
    std::optional<std::u16string> ours = decodeBytes(c, NSUTF8StringEncoding);
    ASSERT_TRUE(ours.has_value());
    EXPECT_EQ(*ours, icuDecodeUtf8Lossy(c)) << c;
  }
  EXPECT_EQ(*decodeBytes("\xF0\x80\x80", NSUTF8StringEncoding), u"\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(*decodeBytes("\xE2\x82", NSUTF8StringEncoding), u"\uFFFD");
}

TEST(EncodingUtf8, AgreesWithIcuOnRandomBytesAcrossBlockBoundaries) {
  std::mt19937 random(1234);
  for (int round = 0; round < 500; ++round) {
    std::string bytes;
    size_t length = random() % 100;
    for (size_t i = 0; i < length; ++i) {
      // Mostly ASCII runs, so the 16-byte blocks are exercised too.
      bytes += static_cast<char>(random() % 4 ? 'a' + random() % 26 : random() % 256);
    }
    if (bytes.starts_with("\xEF\xBB\xBF")) continue;
    EXPECT_EQ(*decodeBytes(bytes, NSUTF8StringEncoding), icuDecodeUtf8Lossy(bytes));
  }
}

TEST(EncodingUtf8, StrictStopsAtMalformedInput) {
  EXPECT_FALSE(decodeBytesStrict("abc\xC3", NSUTF8StringEncoding).has_value());
  EXPECT_FALSE(decodeBytesStrict(std::string(40, 'a') + "\xED\xA0\x80", NSUTF8StringEncoding).has_value());
  EXPECT_EQ(*decodeBytesStrict("abc\xC3\xA9", NSUTF8StringEncoding), u"abcé");
  EXPECT_TRUE(stringWithBytesStrict("\xFF", NSUTF8StringEncoding).isNull());
  EXPECT_EQ(stringWithBytes("\xFF", NSUTF8StringEncoding), u"\uFFFD");
}

TEST(EncodingUtf8, LongTextThroughTheFastPath) {
  std::string text;
  for (int i = 0; i < 300; ++i) text += i % 7 ? "plain ascii words " : "ünïcödé ";
  EXPECT_EQ(utf16ToUtf8(*decodeBytes(text, NSUTF8StringEncoding)), text);
}

TEST(EncodingByteOrderMark, IsNotPartOfTheText) {
  EXPECT_EQ(*decodeBytes("\xEF\xBB\xBFhi", NSUTF8StringEncoding), u"hi");
  EXPECT_EQ(*decodeBytes(std::string("\xFF\xFEh\0i\0", 6), NSUnicodeStringEncoding), u"hi");
  EXPECT_EQ(*decodeBytes(std::string("\xFE\xFF\0h\0i", 6), NSUnicodeStringEncoding), u"hi");
  EXPECT_EQ(*decodeBytes(std::string("\0h\0i", 4), NSUnicodeStringEncoding), u"hi");
  EXPECT_EQ(*decodeBytes(std::string("\xFF\xFEh\0i\0", 6), NSUTF16LittleEndianStringEncoding), u"hi");
  EXPECT_EQ(*decodeBytes(std::string("\xFE\xFF\0h\0i", 6), NSUTF16BigEndianStringEncoding), u"hi");
  // A mark inside the text stays.
  EXPECT_EQ(*decodeBytes("a\xEF\xBB\xBF", NSUTF8StringEncoding), u"a\uFEFF");
}

TEST(EncodingCzech, KamenickyUpperPartIsTheDosCodePage) {
  std::string high;
  for (int b = 0xB0; b <= 0xFF; ++b) high += static_cast<char>(b);
  std::optional<std::u16string> dos = decodeBytes(high, nsEncodingFromCFEncoding(kCFStringEncodingDOSLatinUS));
  ASSERT_TRUE(dos.has_value());
  // ICU reads 0xE6 as the Greek mu, the usual tables as the micro sign.
  ASSERT_EQ((*dos)[0xE6 - 0xB0], u'\u03BC');
  (*dos)[0xE6 - 0xB0] = u'\u00B5';
  EXPECT_EQ(decodeKamenicky(high), *dos);
}

TEST(EncodingCzech, RoundTripsCzechAndSlovakLetters) {
  std::u16string pangram =
      u"Příliš žluťoučký kůň úpěl ďábelské ódy. PŘÍLIŠ ŽLUŤOUČKÝ KŮŇ ÚPĚL ĎÁBELSKÉ ÓDY. Ĺ ĺ Ľ ľ Ŕ ŕ Ô ô Ä ä";
  for (NSStringEncoding encoding : {NSKamenickyStringEncoding, NSKoi8cs2StringEncoding}) {
    std::optional<std::string> bytes = encodeString(pangram, encoding);
    ASSERT_TRUE(bytes.has_value()) << std::hex << encoding;
    EXPECT_EQ(bytes->size(), pangram.size());
    EXPECT_EQ(*decodeBytesStrict(*bytes, encoding), pangram);
  }
  EXPECT_EQ(decodeKamenicky("\x80\x87\xA8\x9B"), u"ČčšŠ");
  EXPECT_EQ(decodeKoi8cs2("\xC3\xE3 ok"), u"čČ ok");
  EXPECT_EQ(decodeKoi8cs2("\x80"), u"\uFFFD");
  EXPECT_FALSE(decodeBytesStrict("\x80", NSKoi8cs2StringEncoding).has_value());
}

TEST(EncodingNonLossyAscii, EscapesEverythingOutsideAscii) {
  std::u16string text = u"a\\b é 日本 \u00FF\u0100";
  std::optional<std::string> bytes = encodeString(text, NSNonLossyASCIIStringEncoding);
  ASSERT_TRUE(bytes.has_value());
  EXPECT_EQ(*bytes, "a\\\\b \\351 \\u65e5\\u672c \\377\\u0100");
  EXPECT_EQ(*decodeBytesStrict(*bytes, NSNonLossyASCIIStringEncoding), text);
  // Upper-case hex digits read too; what starts no escape stays as it is.
  EXPECT_EQ(*decodeBytes("\\u65E5 \\x \\u12 \\400 end\\", NSNonLossyASCIIStringEncoding), u"日 \\x \\u12 \\400 end\\");
  EXPECT_EQ(*decodeBytes("a\xE9"
                         "b",
                         NSNonLossyASCIIStringEncoding),
            u"a\uFFFDb");
  EXPECT_FALSE(decodeBytesStrict("a\xE9"
                                 "b",
                                 NSNonLossyASCIIStringEncoding)
                   .has_value());
}

TEST(EncodingJisX0201, RomanAndHalfWidthKatakana) {
  NSStringEncoding jis = nsEncodingFromCFEncoding(kCFStringEncodingJIS_X0201_76);
  EXPECT_EQ(*decodeBytesStrict("a\x5C\x7E\xA1\xB1\xDF", jis), u"a\u00A5\u203E\uFF61\uFF71\uFF9F");
  EXPECT_EQ(*decodeBytes("\x80\xE0", jis), u"\uFFFD\uFFFD");
  EXPECT_FALSE(decodeBytesStrict("\xE0", jis).has_value());
  std::u16string text = u"Price \u00A5100 \uFF76\uFF80\uFF76\uFF85";
  EXPECT_EQ(*decodeBytesStrict(*encodeString(text, jis), jis), text);
  EXPECT_FALSE(encodeString(u"back\\slash", jis).has_value());
  EXPECT_EQ(*encodeStringLossy(u"~", jis), "?");
}

TEST(EncodingEncode, StrictFailsWhereLossySubstitutes) {
  EXPECT_FALSE(encodeString(u"price: €5", NSISOLatin1StringEncoding).has_value());
  EXPECT_EQ(*encodeStringLossy(u"price: €5", NSISOLatin1StringEncoding), "price: ?5");
  EXPECT_EQ(*encodeStringLossy(u"ř€", NSKamenickyStringEncoding), "\xA9?");
  EXPECT_FALSE(encodeString(u"a\xD800", NSUTF8StringEncoding).has_value());
  EXPECT_EQ(*encodeStringLossy(u"a\xD800", NSUTF8StringEncoding), "a\xEF\xBF\xBD");
  EXPECT_EQ(*encodeString(u"é😀", NSUTF8StringEncoding), "\xC3\xA9\xF0\x9F\x98\x80");
  // The Unicode form is written in the host's order behind a mark.
  EXPECT_EQ(*encodeString(u"A", NSUnicodeStringEncoding), std::string("\xFF\xFE"
                                                                      "A\0",
                                                                      4));
  EXPECT_EQ(*decodeBytes(*encodeString(u"Aé😀", NSUnicodeStringEncoding), NSUnicodeStringEncoding), u"Aé😀");
}

TEST(EncodingAvailability, UnprovidedEncodingsAnswerUnavailable) {
  for (CFStringEncoding encoding :
       {CFStringEncoding{kCFStringEncodingMacArabic}, CFStringEncoding{kCFStringEncodingMacSymbol},
        CFStringEncoding{kCFStringEncodingNextStepLatin}, CFStringEncoding{0x7777}}) {
    NSStringEncoding ns = nsEncodingFromCFEncoding(encoding);
    EXPECT_FALSE(isCFEncodingAvailable(encoding)) << encoding;
    EXPECT_FALSE(decodeBytes("abc", ns).has_value());
    EXPECT_FALSE(encodeString(u"abc", ns).has_value());
    EXPECT_TRUE(stringWithBytes("abc", ns).isNull());
  }
  EXPECT_FALSE(decodeBytes("abc", kInvalidEncoding).has_value());
  EXPECT_TRUE(isCFEncodingAvailable(kCFStringEncodingEUC_TW));
  EXPECT_STREQ(icuConverterNameOfNSEncoding(NSWindowsCP1251StringEncoding), "windows-1251");
  EXPECT_EQ(icuConverterNameOfNSEncoding(NSKamenickyStringEncoding), nullptr);
}

TEST(EncodingLossy, MalformedMultiByteInputGivesReplacements) {
  // A Shift JIS lead byte with a trail that cannot follow it, then text.
  std::optional<std::u16string> sjis = decodeBytes("\x82\x20ok", NSShiftJISStringEncoding);
  ASSERT_TRUE(sjis.has_value());
  EXPECT_NE(sjis->find(u'\uFFFD'), std::u16string::npos);
  EXPECT_NE(sjis->find(u"ok"), std::u16string::npos);
  EXPECT_FALSE(decodeBytesStrict("\x82\x20ok", NSShiftJISStringEncoding).has_value());
  // An iconv-provided encoding keeps going after a bad byte.
  std::optional<std::u16string> johab = decodeBytes(
      "ab\xFF"
      "cd",
      nsEncodingFromCFEncoding(kCFStringEncodingWindowsKoreanJohab));
  ASSERT_TRUE(johab.has_value());
  EXPECT_EQ(*johab, u"ab\uFFFDcd");
}

TEST(EncodingCount, CountsReplacementCharacters) {
  for (size_t length : {0, 1, 7, 8, 9, 31, 100}) {
    std::u16string text(length, u'x');
    size_t expected = 0;
    for (size_t i = 0; i < length; i += 3) {
      text[i] = 0xFFFD;
      ++expected;
    }
    EXPECT_EQ(countReplacementCharacters(text.data(), text.size()), expected) << length;
  }
  // More matches than one 16-bit lane can hold before it is flushed.
  std::u16string all(8 * 0xFFFF * 2 + 5, u'\uFFFD');
  EXPECT_EQ(countReplacementCharacters(all.data(), all.size()), all.size());
}

}  // namespace
}  // namespace norvane::text
