#include "norvane/markup/entities.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "norvane/core/unicode.h"

namespace norvane::markup {
namespace {

String S(const char* utf8) {
  return String::fromUtf8(utf8);
}

std::u16string U(const char* utf8) {
  return utf8ToUtf16(utf8);
}

// Converts the whole text in place and returns the result as UTF-8.
std::string convert(const char* utf8, bool convertStandard = true, bool onlyNumeric = false, bool nonUmlauted = false) {
  std::u16string text = U(utf8);
  const size_t written =
      convertEntities2Characters(text.data(), text.data(), 0, text.size(), convertStandard, onlyNumeric, nonUmlauted);
  EXPECT_LE(written, text.size());
  return utf16ToUtf8(std::u16string_view(text.data(), written));
}

struct ConversionCase {
  const char* input;
  const char* expected;
  bool convertStandard = true;
  bool onlyNumeric = false;
  bool nonUmlauted = false;
};

class Conversions : public testing::TestWithParam<ConversionCase> {};

TEST_P(Conversions, InPlace) {
  const ConversionCase& c = GetParam();
  EXPECT_EQ(convert(c.input, c.convertStandard, c.onlyNumeric, c.nonUmlauted), c.expected) << c.input;
}

INSTANTIATE_TEST_SUITE_P(
    Entities, Conversions,
    testing::Values(ConversionCase{"AT&T", "AT&T"}, ConversionCase{"a & b", "a & b"}, ConversionCase{"&eacute;", "é"},
                    ConversionCase{"&eacute x", "é x"}, ConversionCase{"&eacutex;", "&eacutex;"},
                    ConversionCase{"&EACUTE;", "&EACUTE;"}, ConversionCase{"&Eacute;", "É"},
                    ConversionCase{"&#233;", "é"}, ConversionCase{"&#xE9;", "é"}, ConversionCase{"&#XE9;x", "éx"},
                    ConversionCase{"&#128512;", "😀"}, ConversionCase{"&#1114112;", "&#1114112;"},
                    ConversionCase{"&#;", "&#;"}, ConversionCase{"&#x;", "&#x;"}, ConversionCase{"&#a", "&#a"},
                    ConversionCase{"&amplifier", "&lifier"}, ConversionCase{"&amp;&lt;&gt;&quot;", "&<>\""},
                    ConversionCase{"&ltx &gt", "<x >"}, ConversionCase{"&apos;&nbsp;", "'\u00a0"},
                    ConversionCase{"&cedil;&fnof;", "&cedil;&fnof;"},
                    ConversionCase{"&thetasym;&euro;&diams;", "\u03d1\u20ac\u2666"},
                    // The end of the range ends a reference.
                    ConversionCase{"caf&eacute", "café"}, ConversionCase{"&#65", "A"}, ConversionCase{"x&", "x&"},
                    ConversionCase{"&a", "&a"},
                    // 30 units of name are the most.
                    ConversionCase{"&aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa;", "&aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa;"},
                    ConversionCase{"&#00000000000000000000000000065;", "A"},
                    ConversionCase{"&#000000000000000000000000000065;", "&#000000000000000000000000000065;"},
                    // Without the standard forms the text stays valid markup.
                    ConversionCase{"&lt;&#60;&#x3c;&amp;&quot;&#39;&apos;", "&lt;&#60;&#x3c;&amp;&quot;''", false},
                    ConversionCase{"&nbsp&#233;&eacute;", "\u00a0é&eacute;", true, true},
                    ConversionCase{"&Eacute;t&eacute; ü &#252;", "Ete u u", true, false, true},
                    // The quick forms are not passed through the umlauts table.
                    ConversionCase{"&nbsp;", "\u00a0", true, false, true}));

TEST(Entities, NumericZeroIsAUnit) {
  std::u16string text = u"&#0;x";
  const size_t written = convertEntities2Characters(text.data(), text.data(), 0, text.size(), true, false, false);
  EXPECT_EQ(std::u16string(text.data(), written), std::u16string(u"\0x", 2));
}

TEST(Entities, ConvertsARangeToAnotherBufferAndLeavesTheTail) {
  const std::u16string source = u"xx&lt;b&gt;yy";
  std::u16string destination(20, u'#');
  const size_t written = convertEntities2Characters(source.data(), destination.data(), 2, 9, true, false, false);
  EXPECT_EQ(destination.substr(0, written), u"<b>");
  EXPECT_EQ(destination.substr(written), std::u16string(20 - written, u'#'));

  std::u16string inPlace = u"a&amp;b rest";
  const size_t kept = convertEntities2Characters(inPlace.data(), inPlace.data(), 0, 7, true, false, false);
  EXPECT_EQ(inPlace, u"a&bmp;b rest");  // units behind the new end stay
  EXPECT_EQ(kept, 3u);
}

TEST(Entities, StandardFormsOnly) {
  struct Case {
    const char16_t* input;
    const char16_t* expected;
  };
  const Case cases[] = {
      {u"&quot;&amp;&#38;&#60;&#62;&#34;&lt;&gt;", u"\"&&<>\"<>"},
      {u"&lt;b;", u"&lt;b;"},  // the ';' at i + 5 decides first
      {u"&lt", u"&lt"},
      {u"&amp", u"&amp"},
      {u"&eacute;&#39;", u"&eacute;&#39;"},
      {u"a&&lt;", u"a&<"},
  };
  for (const Case& c : cases) {
    std::u16string text = c.input;
    text.resize(convertStdEntities2Characters(text.data(), text.size()));
    EXPECT_EQ(text, c.expected);
  }
}

TEST(Entities, StringFormsReturnTheReceiverWhenUnchanged) {
  const String plain = S("no references here");
  EXPECT_TRUE(stringByConvertingEntitiesToCharacters(plain).isSameObject(plain));
  const String unknown = S("AT&T &bogus;");
  EXPECT_TRUE(stringByConvertingEntitiesToCharacters(unknown).isSameObject(unknown));
  const String shortOne = S("&lt");
  EXPECT_TRUE(stringByConvertingEntitiesToCharacters(shortOne).isSameObject(shortOne));
  const String ascii = S("plain");
  EXPECT_TRUE(stringByConvertingEntitiesToCharactersNonUmlauted(ascii, true).isSameObject(ascii));
  EXPECT_TRUE(stringByConvertingStandardEntitiesToCharacters(unknown).isSameObject(unknown));

  EXPECT_EQ(stringByConvertingEntitiesToCharacters(S("Caf&eacute; &amp; cr&egrave;me")), S("Café & crème"));
  EXPECT_EQ(stringByConvertingEntitiesToCharacters(S("&lt;&eacute;"), false, false, false), S("&lt;é"));
  EXPECT_EQ(stringByConvertingEntitiesToCharacters(S("&eacute;&#233;"), true, true, false), S("&eacute;é"));
  EXPECT_EQ(stringByConvertingEntitiesToCharactersNonUmlauted(S("Crème"), true), S("Creme"));
  EXPECT_EQ(stringByConvertingStandardEntitiesToCharacters(S("&lt;p&gt; &eacute;")), S("<p> &eacute;"));
  EXPECT_TRUE(stringByConvertingEntitiesToCharacters(String()).isNull());

  // Longer than the stack buffer.
  std::string longText, longExpected;
  for (int k = 0; k < 100; ++k) longText += "x&lt;&eacute;&#65;", longExpected += "x<éA";
  EXPECT_EQ(stringByConvertingEntitiesToCharacters(S(longText.c_str())), S(longExpected.c_str()));
  const String longPlain = S(std::string(1000, 'y').append("&bogus;").c_str());
  EXPECT_TRUE(stringByConvertingEntitiesToCharacters(longPlain).isSameObject(longPlain));
  EXPECT_EQ(stringByConvertingStandardEntitiesToCharacters(S((longText + "&gt;").c_str())).length(),
            S((longText + "&gt;").c_str()).length() - 303);
}

TEST(Entities, TowardsEntities) {
  EXPECT_EQ(stringByConvertingCharactersToEntities(S("é<")), S("&eacute;<"));
  EXPECT_EQ(stringByConvertingCharactersToEntities(S("\u00b8\u0192")), S("&#184;&#402;"));
  EXPECT_EQ(stringByConvertingCharactersToEntities(S("a😀")), S("a&#55357;&#56832;"));
  EXPECT_EQ(stringByConvertingCharactersToEntities(S("\u03d1\u20ac\uffff")), S("&thetasym;&euro;&#65535;"));
  const String empty = String::empty();
  EXPECT_TRUE(stringByConvertingCharactersToEntities(empty).isSameObject(empty));

  EXPECT_EQ(stringByConvertingHighCharactersToEntities(S("aé<😀")), S("a&#233;<&#55357;&#56832;"));
  const String ascii = S("a<b>&'\"");
  EXPECT_TRUE(stringByConvertingHighCharactersToEntities(ascii).isSameObject(ascii));
  EXPECT_TRUE(stringByConvertingHighCharactersToEntities(String()).isNull());

  EXPECT_EQ(stringByConvertingCharactersToStandardEntities(S("\"a&b<c>'é")), S("&quot;a&amp;b&lt;c&gt;'é"));
  const String clean = S("it's fine");
  EXPECT_TRUE(stringByConvertingCharactersToStandardEntities(clean).isSameObject(clean));
  EXPECT_TRUE(stringByConvertingCharactersToStandardEntities(String()).isNull());
}

// The conversion to entities never writes more than the bound, and the bound
// is reached by a text of named entities of maximal length.
TEST(Entities, BoundHoldsAndIsTight) {
  std::u16string all;
  for (size_t k = 0; k < entityTableCount(); ++k) all += entityTableCharacter(k);
  for (unichar c = 0; c < 0x3000; c += 7) all += c;
  all += u"\U0001F600\uffff";
  const String text(all);
  EXPECT_LE(stringByConvertingCharactersToEntities(text).length(), entitiesBufferBound(all.data(), all.size()));
  const std::u16string theta(5, u'\u03d1');
  EXPECT_EQ(stringByConvertingCharactersToEntities(String(theta)).length(),
            entitiesBufferBound(theta.data(), theta.size()));
  const std::u16string high(3, u'\uffff');
  EXPECT_EQ(stringByConvertingCharactersToEntities(String(high)).length(), entitiesBufferBound(high.data(), 3));
}

// Every name converts to its unit and back.
TEST(Entities, RoundTripOfTheWholeTable) {
  initConversionTables();
  for (size_t k = 0; k < entityTableCount(); ++k) {
    const std::string name = entityTableName(k);
    const std::string reference = "&" + name + ";";
    const String converted = stringByConvertingEntitiesToCharacters(S(reference.c_str()));
    ASSERT_EQ(converted.length(), 1u) << name;
    EXPECT_EQ(converted[0], entityTableCharacter(k)) << name;
    EXPECT_STREQ(entityNameOfCharacter(entityTableCharacter(k)), name.c_str());
    EXPECT_EQ(stringByConvertingCharactersToEntities(converted), S(reference.c_str()));
  }
  EXPECT_EQ(entityNameOfCharacter('a'), nullptr);
  EXPECT_EQ(characterOfEntityName("eacut", 5), 0);
}

// The named table is the HTML 4 entity sets, minus the names that are handled
// on their own (quot, amp, lt, gt) or not at all (cedil, fnof).
TEST(Entities, TableMatchesTheHtml4EntitySets) {
  const std::filesystem::path root = "/usr/share/xml/w3c-sgml-lib";
  if (!std::filesystem::exists(root)) GTEST_SKIP() << "w3c-sgml-lib is not installed";
  std::map<std::string, unichar> standard;
  size_t files = 0;
  const std::regex declaration(R"(<!ENTITY\s+(\w+)\s+CDATA\s+"&#(\d+);")");
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    const std::string name = entry.path().filename().string();
    if (name != "HTMLlat1.ent" && name != "HTMLsymbol.ent" && name != "HTMLspecial.ent") continue;
    if (entry.path().string().find("html401") == std::string::npos &&
        entry.path().string().find("HTML4") == std::string::npos)
      continue;
    std::ifstream in(entry.path());
    std::stringstream content;
    content << in.rdbuf();
    const std::string text = content.str();
    for (std::sregex_iterator m(text.begin(), text.end(), declaration), last; m != last; ++m) {
      standard[(*m)[1].str()] = static_cast<unichar>(std::stoul((*m)[2].str()));
    }
    ++files;
  }
  if (files == 0) GTEST_SKIP() << "no HTML 4.01 entity sets found";
  ASSERT_EQ(standard.size(), 252u);

  std::set<std::string> ours;
  for (size_t k = 0; k < entityTableCount(); ++k) {
    const std::string name = entityTableName(k);
    ASSERT_TRUE(standard.count(name)) << name << " is not an HTML 4 entity";
    EXPECT_EQ(entityTableCharacter(k), standard[name]) << name;
    EXPECT_TRUE(ours.insert(name).second) << name << " twice";
  }
  EXPECT_EQ(entityTableCount(), 246u);
  for (const auto& [name, unit] : standard) {
    const bool excluded =
        name == "quot" || name == "amp" || name == "lt" || name == "gt" || name == "cedil" || name == "fnof";
    EXPECT_EQ(ours.count(name) == 0, excluded) << name;
  }
}

}  // namespace
}  // namespace norvane::markup
