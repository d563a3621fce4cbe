#include "norvane/markup/charsets.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "norvane/core/log.h"

namespace norvane::markup {
namespace {

using namespace text;

String s(const char* utf8) {
  return String::fromUtf8(utf8);
}

// The user's additional XML extensions, installed before any test reads them.
std::vector<String> testExtensions(std::string_view key) {
  if (key != "AdditionalXMLExtensions") return {};
  return {String::fromLatin1("svgz"), String::fromLatin1("Mxl")};
}
const bool kProviderInstalled = (setPathExtensionsProvider(testExtensions), true);

struct NameCase {
  const char* name;
  CFStringEncoding expected;
};

TEST(CharsetNames, NormalisedFormsOfOneName) {
  const NameCase cases[] = {
      {"ISO-8859-1", kCFStringEncodingISOLatin1}, {"iso_8859_1", kCFStringEncodingISOLatin1},
      {"Iso 8859 1", kCFStringEncodingISOLatin1}, {"ISO8859-1", kCFStringEncodingISOLatin1},
      {"Latin-1", kCFStringEncodingISOLatin1},    {"l a t i n 1", kCFStringEncodingISOLatin1},
      {"LATIN1", kCFStringEncodingISOLatin1},     {"\"iso-8859-1\"", kCFStringEncodingISOLatin1},
  };
  for (const NameCase& c : cases) EXPECT_EQ(charset2CFStringEncoding(s(c.name)), c.expected) << c.name;
}

TEST(CharsetNames, ByNumber) {
  const NameCase cases[] = {
      {"cp437", kCFStringEncodingDOSLatinUS},
      {"ibm-850", kCFStringEncodingDOSLatin1},
      {"cp866", kCFStringEncodingDOSRussian},
      {"windows-874", kCFStringEncodingDOSThai},
      {"cp932", kCFStringEncodingDOSJapanese},
      {"windows-1250", kCFStringEncodingWindowsLatin2},
      {"windows-1251", kCFStringEncodingWindowsCyrillic},
      {"windows-1252", kCFStringEncodingWindowsLatin1},
      {"cp1258", kCFStringEncodingWindowsVietnamese},
      {"windows-1361", kCFStringEncodingWindowsKoreanJohab},
      {"iso-646", kCFStringEncodingEUC_JP},
      {"asmo-708", kCFStringEncodingISOLatinArabic},
      {"iso-2022-jp", kCFStringEncodingISO_2022_JP},
      {"ISO-2022-JP-1", kCFStringEncodingISO_2022_JP_1},
      {"iso-2022-jp-2", kCFStringEncodingISO_2022_JP_2},
      {"iso-2022-jp-3", kCFStringEncodingISO_2022_JP_3},
      {"iso-2022-kr", kCFStringEncodingISO_2022_JP},
      {"iso-8859-2", kCFStringEncodingISOLatin2},
      {"iso-8959-9", kCFStringEncodingISOLatin5},
      {"iso-8859-9", kCFStringEncodingISOLatin5},
      {"iso-8859-10", kCFStringEncodingISOLatin6},
      {"iso-8859-11", kCFStringEncodingISOLatinThai},
      {"iso-8859-13", kCFStringEncodingISOLatin7},
      {"iso-8859-15", kCFStringEncodingISOLatin9},
      {"iso-8859-16", kCFStringEncodingISOLatin10},
      {"iso-88-591", kCFStringEncodingISOLatin1},
      {"8859", kCFStringEncodingISOLatin1},
      {"iso-8852-01", kCFStringEncodingISOLatin1},
      {"iso-8853-91", kCFStringEncodingISOLatin1},
      {"iso-8853-92", kInvalidEncoding},
      {"iso-8859-12", kInvalidEncoding},
      {"ISO_8859-1:1987", kInvalidEncoding},
  };
  for (const NameCase& c : cases) EXPECT_EQ(charset2CFStringEncoding(s(c.name)), c.expected) << c.name;
}

TEST(CharsetNames, ByNameInOrder) {
  const NameCase cases[] = {
      {"windows-foo", kCFStringEncodingWindowsLatin1},
      {"macintosh", kCFStringEncodingMacRoman},
      {"x-mac-roman", kCFStringEncodingMacRoman},
      {"mac", kCFStringEncodingMacRoman},
      {"x-mac-cyrillic", kCFStringEncodingMacCyrillic},
      {"mac-centraleurope", kCFStringEncodingMacCentralEurRoman},
      {"macedonian", kInvalidEncoding},  // "mac" decides, with an unknown rest
      {"latin10", kCFStringEncodingISOLatin10},
      {"latin", kCFStringEncodingISOLatin1},
      {"latin2", kCFStringEncodingISOLatin2},
      {"latin5", kCFStringEncodingISOLatin5},
      {"latin-9", kCFStringEncodingISOLatin9},
      {"latinx", kInvalidEncoding},
      {"iso", kCFStringEncodingISOLatin1},
      {"visual", kCFStringEncodingISOLatinHebrew},
      {"x-kam-cs", kCFStringEncodingKamenicky},
      {"kbkam", kCFStringEncodingKamenicky},
      {"KOI8-CS2", kCFStringEncodingKoi8cs2},
      {"csn_369103", kCFStringEncodingKoi8cs2},
      {"us-ascii", kCFStringEncodingASCII},
      {"utf-7", kCFStringEncodingASCII},
      {"gb2312", kCFStringEncodingEUC_CN},
      {"x-gb2312-80", kCFStringEncodingEUC_CN},
      {"GBK", kCFStringEncodingGBK_95},
      {"gb18030", kCFStringEncodingGB_18030_2000},
      {"UTF-8", kCFStringEncodingUTF8},
      {"utf8", kCFStringEncodingUTF8},
      {"utf08", kCFStringEncodingUTF8},
      {"uft-8", kCFStringEncodingUTF8},
      {"utf-2d8", kCFStringEncodingUTF8},
      {"utf", kCFStringEncodingUTF8},
      {"unicode", kCFStringEncodingUTF8},
      {"unicode-1-1", kInvalidEncoding},
      {"utf-16le", kCFStringEncodingUnicode},
      {"x-sjis", kCFStringEncodingShiftJIS},
      {"shift_jis", kCFStringEncodingShiftJIS},
      {"Shift-JIS", kCFStringEncodingShiftJIS},
      {"koi8-r", kCFStringEncodingKOI8_R},
      {"koi8-u", kCFStringEncodingKOI8_R},
      {"big5", kCFStringEncodingBig5},
      {"big5-hkscs", kCFStringEncodingBig5},
      {"euc-kr", kCFStringEncodingEUC_KR},
      {"x-euc-jp", kCFStringEncodingEUC_JP},
      {"euc-cn", kCFStringEncodingEUC_CN},
      {"euc-tw", kCFStringEncodingEUC_TW},
      {"ks_c_5601-1987", kCFStringEncodingKSC_5601_87},
      {"ksc5601-92-johab", kCFStringEncodingKSC_5601_92_Johab},
      {"en-us", kCFStringEncodingUTF8},
      {"en-GB", kCFStringEncodingUTF8},
      {"none", kCFStringEncodingASCII},
      {"foobar", kInvalidEncoding},
  };
  for (const NameCase& c : cases) EXPECT_EQ(charset2CFStringEncoding(s(c.name)), c.expected) << c.name;
}

TEST(CharsetNames, TooShortOrNull) {
  for (const char* name : {"en", "de", "", " - ", "8"}) EXPECT_EQ(charset2CFStringEncoding(s(name)), kInvalidEncoding);
  EXPECT_EQ(charset2CFStringEncoding(String()), kInvalidEncoding);
  EXPECT_EQ(charset2NSStringEncoding(String()), kInvalidEncoding);
}

TEST(CharsetNames, MacRests) {
  const NameCase cases[] = {
      {"", 0},
      {"roman", 0},
      {"osroman", 0},
      {"intosh", 0},
      {"romanlatin1", 2564},
      {"japanese", 1},
      {"chinesetrad", 2},
      {"xchinesetradx", 2},
      {"korean", 3},
      {"greek", 6},
      {"cyrillic", 7},
      {"thai", 21},
      {"chinesesimp", 25},
      {"ce", 29},
      {"centraleurope", 29},
      {"turkish", 35},
      {"icelandic", 37},
      {"farsi", 140},
      {"ukrainian", 152},
      {"inuit", 236},
      {"romanx", kInvalidEncoding},
      {"Roman", kInvalidEncoding},
  };
  for (const NameCase& c : cases) EXPECT_EQ(macEncoding(s(c.name)), c.expected) << c.name;
  EXPECT_EQ(macEncoding(String()), 0u);
}

TEST(CharsetNames, NSStringEncodings) {
  struct Case {
    const char* name;
    NSStringEncoding expected;
  } cases[] = {
      {"utf-8", NSUTF8StringEncoding},
      {"iso-8859-1", NSISOLatin1StringEncoding},
      {"windows-1251", NSWindowsCP1251StringEncoding},
      {"windows-1250", NSWindowsCP1250StringEncoding},
      {"shift_jis", NSShiftJISStringEncoding},
      {"us-ascii", NSASCIIStringEncoding},
      {"macintosh", NSMacOSRomanStringEncoding},
      {"euc-jp", NSJapaneseEUCStringEncoding},
      {"utf-16", NSUnicodeStringEncoding},
      {"x-kam-cs", NSKamenickyStringEncoding},
      {"koi8-cs2", NSKoi8cs2StringEncoding},
      {"koi8-r", 0x80000A02},
      {"gb2312", 0x80000930},
  };
  for (const auto& c : cases) EXPECT_EQ(charset2NSStringEncoding(s(c.name)), c.expected) << c.name;
  EXPECT_EQ(NSEncodingFromName(s("UTF-8")), NSUTF8StringEncoding);
  EXPECT_EQ(CFEncodingFromName(s("UTF-8")), kCFStringEncodingUTF8);
}

TEST(CharsetNames, UnknownNamesAreLoggedUnlessQuiet) {
  {
    LogCapture log;
    EXPECT_EQ(charset2NSStringEncoding(s("bogus-charset")), kInvalidEncoding);
    EXPECT_TRUE(log.contains("Unknown/Unsupported encoding: bogus-charset"));
  }
  {
    LogCapture log;  // a known name without a converter here
    EXPECT_EQ(charset2NSStringEncoding(s("x-mac-arabic")), kInvalidEncoding);
    EXPECT_TRUE(log.contains("Unknown/Unsupported encoding: x-mac-arabic"));
  }
  for (const char* quiet : {"%charset%", "/x", "0", "<?php echo $cs ?>", ">", "AUTO", "auto", ""}) {
    LogCapture log;
    EXPECT_EQ(charset2NSStringEncoding(s(quiet)), kInvalidEncoding) << quiet;
    EXPECT_TRUE(log.messages().empty()) << quiet;
  }
}

TEST(CharsetNames, FallbackLists) {
  ASSERT_EQ(japaneseFallbackEncodings().size(), 14u);
  EXPECT_EQ(japaneseFallbackEncodings().front(), 0x0A01u);
  EXPECT_EQ(japaneseFallbackEncodings()[9], 0x0920u);
  EXPECT_EQ(japaneseFallbackEncodings().back(), 0x0823u);
  ASSERT_EQ(chineseFallbackEncodings().size(), 7u);
  EXPECT_EQ(chineseFallbackEncodings().front(), 0x0931u);
  EXPECT_EQ(chineseFallbackEncodings().back(), 0x0A09u);
}

TEST(MarkupExtensions, ByExtension) {
  for (const char* e : {"html", "HTM", "Shtml", "php", "php?id=1", "aspx", "cgi", "jsp?x", "shtm"}) {
    EXPECT_TRUE(isHTMLExtension(s(e))) << e;
  }
  for (const char* e : {"txt", "ht", "phpx", "?html", "", "xml"}) EXPECT_FALSE(isHTMLExtension(s(e))) << e;
  EXPECT_TRUE(isMimeHTMLExtension(s("MHT")));
  EXPECT_TRUE(isMimeHTMLExtension(s("mhtml?a")));
  EXPECT_FALSE(isMimeHTMLExtension(s("html")));
  for (const char* e : {"xml", "XSLT", "rss", "opf", "ditamap", "xmloutline", "shtm", "svgz", "MXL"}) {
    EXPECT_TRUE(isXMLExtension(s(e))) << e;
  }
  EXPECT_FALSE(isXMLExtension(s("xml?x")));
  EXPECT_FALSE(isXMLExtension(s("html")));
  for (const char* e : {"plist", "PLIST", "strings", "scriptsuite", "ENTITLEMENTS", "scoutset"}) {
    EXPECT_TRUE(isPropertyListExtension(s(e))) << e;
  }
  EXPECT_TRUE(isMarkupExtension(s("dtd")));
  EXPECT_TRUE(isMarkupExtension(s("asp")));
  EXPECT_TRUE(isMarkupExtension(s("qfilter")));
  EXPECT_FALSE(isMarkupExtension(s("pdf")));
}

TEST(MarkupExtensions, ByPath) {
  EXPECT_TRUE(isHTMLFile(s("/var/www/index.HTML")));
  EXPECT_TRUE(isHTMLFile(s("page.php?id=1")));
  EXPECT_FALSE(isHTMLFile(s("/dir.html/readme")));
  EXPECT_FALSE(isHTMLFile(s("/home/user/.html")));
  EXPECT_TRUE(isMimeHTMLFile(s("saved.mht")));
  EXPECT_TRUE(isXMLFile(s("feed.rdf")));
  EXPECT_TRUE(isPropertyListFile(s("Info.plist")));
  EXPECT_TRUE(isMarkupFile(s("a.b.xsd")));
  EXPECT_FALSE(isMarkupFile(s("archive.tar")));
  EXPECT_FALSE(isMarkupFile(String()));
}

bool contains(const std::vector<String>& list, const char* e) {
  return std::find(list.begin(), list.end(), String::fromLatin1(e)) != list.end();
}

TEST(MarkupExtensions, Arrays) {
  std::vector<String> html = HTMLFileTypes();
  EXPECT_EQ(html.size(), 36u);
  EXPECT_TRUE(contains(html, "shtm") && contains(html, "SHTM") && contains(html, "php3"));

  EXPECT_EQ(MimeHTMLFileTypes().size(), 4u);

  std::vector<String> xml = XMLFileTypes();
  EXPECT_FALSE(contains(xml, "shtm"));
  EXPECT_FALSE(contains(xml, "SHTM"));
  for (const char* lowerOnly : {"xmloutline", "idata", "rss", "rsd", "rdf"}) {
    EXPECT_TRUE(contains(xml, lowerOnly));
    std::string upper(lowerOnly);
    for (char& c : upper) c = static_cast<char>(c & ~32);
    EXPECT_FALSE(contains(xml, upper.c_str())) << upper;
  }
  EXPECT_TRUE(contains(xml, "xsd") && contains(xml, "XSD"));
  // 23 built-in extensions, 5 of them lower case only, then 2 custom ones twice.
  EXPECT_EQ(xml.size(), 23u * 2 - 5 + 4);
  EXPECT_TRUE(contains(xml, "svgz") && contains(xml, "SVGZ") && contains(xml, "Mxl") && contains(xml, "MXL"));

  std::vector<String> plists = PropertyListFileTypes();
  ASSERT_EQ(plists.size(), 10u);
  EXPECT_EQ(plists[0], String::fromLatin1("plist"));
  EXPECT_EQ(plists[3], String::fromLatin1("scriptSuite"));
  EXPECT_EQ(plists[9], String::fromLatin1("scoutSet"));

  std::vector<String> markup = MarkupFileTypes();
  EXPECT_EQ(markup.size(), xml.size() + html.size() + plists.size());
  EXPECT_EQ(markup.front(), xml.front());
  EXPECT_EQ(markup[xml.size()], html.front());
  EXPECT_EQ(markup.back(), plists.back());
}

TEST(MarkupText, IsHTML) {
  EXPECT_TRUE(isHTML(s("<!DOCTYPE html><p>x</p>")));
  EXPECT_TRUE(isHTML(s("  \n<html><body>x</body></html>\n ")));
  EXPECT_TRUE(isHTML(s("<head><title>T</title></head>")));
  EXPECT_FALSE(isHTML(s("<html")));                          // too short
  EXPECT_FALSE(isHTML(s("x <html></html>")));                // text before the first '<'
  EXPECT_FALSE(isHTML(s("<html></html> x")));                // text after the last '>'
  EXPECT_FALSE(isHTML(s("<?xml version=\"1.0\"?><rss/>")));  // no HTML mark
  EXPECT_FALSE(isHTML(s("<head><title x>T</title></head>")));
  EXPECT_FALSE(isHTML(String()));
}

TEST(MarkupText, CountLTGT) {
  size_t lt = 99, gt = 99;
  EXPECT_TRUE(countLTGT(s("<a><b>"), &lt, &gt));
  EXPECT_EQ(lt, 2u);
  EXPECT_EQ(gt, 2u);
  EXPECT_FALSE(countLTGT(s("a < b"), &lt, &gt));
  EXPECT_EQ(lt, 1u);
  EXPECT_EQ(gt, 0u);
  EXPECT_FALSE(countLTGT(s("plain"), nullptr, nullptr));
  EXPECT_TRUE(countLTGT(s("><"), nullptr, &gt));
  EXPECT_FALSE(countLTGT(String(), &lt, nullptr));
  EXPECT_EQ(lt, 0u);
}

}  // namespace
}  // namespace norvane::markup
