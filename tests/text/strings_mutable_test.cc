#include <gtest/gtest.h>

#include <random>

#include "norvane/text/mutable_strings.h"
#include "norvane/text/strings.h"

namespace norvane::text {
namespace {

String S(std::string_view utf8) {
  return String::fromUtf8(utf8);
}

TEST(MutableStrings, AppendingAndInserting) {
  std::u16string s = u"ab";
  appendSubstring(s, S("0123456"), Range{2, 3});
  EXPECT_EQ(s, u"ab234");
  appendSubstring(s, S("0123"), Range{2, 0});
  appendSubstring(s, S("0123"), Range{9, 2});
  appendSubstring(s, S("0123"), Range{3, 10});
  EXPECT_EQ(s, u"ab2343");
  appendUnichar(s, u'!');
  appendUnichars(s, u"xyz", 2);
  appendUnichars(s, nullptr, 3);
  EXPECT_EQ(s, u"ab2343!xy");
  appendTrimmedString(s, S("  t \n"));
  appendTrimmedString(s, String());
  EXPECT_EQ(s, u"ab2343!xyt");
  insertCharacter(s, u'_', 0);
  insertCharacter(s, u'_', s.size());
  insertCharacter(s, u'_', 100);
  EXPECT_EQ(s, u"_ab2343!xyt_");
  removeCharacterAtIndex(s, 0);
  removeCharacterAtIndex(s, 100);
  EXPECT_EQ(s, u"ab2343!xyt_");
}

TEST(MutableStrings, ReplacingCounts) {
  std::u16string s = u"one two one Two";
  EXPECT_EQ(replaceString(s, S("one"), S("1")), 2u);
  EXPECT_EQ(s, u"1 two 1 Two");
  EXPECT_EQ(replaceString(s, S("TWO"), S("2"), false), 2u);
  EXPECT_EQ(s, u"1 2 1 2");
  EXPECT_EQ(replaceString(s, String(), S("x")), 0u);
  EXPECT_EQ(replaceString(s, S(" "), String()), 3u);
  EXPECT_EQ(s, u"1212");
  EXPECT_EQ(deleteString(s, S("12")), 2u);
  EXPECT_EQ(s, u"");

  std::u16string t = u"price: X, X";
  EXPECT_EQ(replaceStringWithFormat(t, S("X"), "{} {}", 42, "EUR"), 2u);
  EXPECT_EQ(t, u"price: 42 EUR, 42 EUR");
  EXPECT_EQ(replaceStringWithFormat(t, String(), "{}", 1), 0u);

  std::u16string u = u"aAbA";
  EXPECT_EQ(replaceCharacter(u, u'a', u'x'), 1u);
  EXPECT_EQ(u, u"xAbA");
  EXPECT_EQ(replaceCharacter(u, u'a', u'y', false), 2u);
  EXPECT_EQ(u, u"xyby");
  std::u16string empty;
  EXPECT_EQ(replaceCharacter(empty, u'a', u'b'), 0u);
}

TEST(MutableStrings, RemovingMatchesTheStringForms) {
  struct Case {
    void (*inPlace)(std::u16string&);
    String (*copying)(const String&);
  } cases[] = {
      {removeFeeds, stringByRemovingFeeds},
      {removeTabs, stringByRemovingTabs},
      {removeSpaces, stringByRemovingSpaces},
      {removeWhiteSpaces, stringByRemovingWhiteSpaces},
      {removeDigits, stringByRemovingDigits},
      {removeMultipleSpaces, stringByRemovingMultipleSpaces},
      {removeMultipleWhiteSpaces, stringByRemovingMultipleWhiteSpaces},
      {removeMultipleFeeds, stringByRemovingMultipleFeeds},
      {trimWhiteSpaces, stringByTrimmingWhiteSpaces},
      {trimFeeds, stringByTrimmingFeeds},
  };
  const char* inputs[] = {"", "plain", "  a\t\tb 1 2\r\n\r\nc \u00A0\u2028 d\n\n", "\n\t\n", "x\uFEFF0y\u0003"};
  for (const Case& c : cases) {
    for (const char* input : inputs) {
      std::u16string s = S(input).toU16();
      c.inPlace(s);
      EXPECT_EQ(s, c.copying(S(input)).view()) << input;
    }
  }
  std::u16string s = u"a.b,c";
  removeCharacters(s, u'.');
  EXPECT_EQ(s, u"ab,c");
  removeCharactersOfString(s, S(",b"));
  EXPECT_EQ(s, u"ac");
  removeCharactersOfString(s, String());
  EXPECT_EQ(s, u"ac");
}

TEST(MutableStrings, TrimmingUnits) {
  std::u16string s = u"**a*b**";
  trimPrefixCharacter(s, u'*');
  EXPECT_EQ(s, u"a*b**");
  trimSuffixCharacter(s, u'*');
  EXPECT_EQ(s, u"a*b");
  std::u16string t = u"--x--";
  trimCharacter(t, u'-');
  EXPECT_EQ(t, u"x");
  std::u16string all = u"----";
  trimCharacter(all, u'-');
  EXPECT_EQ(all, u"");
}

TEST(Tabs, DecodeExpandsToTabStops) {
  struct Case {
    const char16_t* input;
    long width;
    const char16_t* expected;
  } cases[] = {
      {u"\tx", 4, u"    x"},           {u"ab\tx", 4, u"ab  x"},
      {u"abcd\tx", 4, u"abcd    x"},   {u"a\tb\tc", 3, u"a  b  c"},
      {u"abc\n\tx", 4, u"abc\n    x"}, {u"ab\r\n\tx", 2, u"ab\r\n  x"},
      {u"\t\t", 2, u"    "},           {u"a\tb", 1, u"a b"},
      {u"a\tb", 0, u"a\tb"},
  };
  for (const Case& c : cases) {
    std::u16string s = c.input;
    decodeTabs(s, c.width);
    EXPECT_EQ(s, c.expected) << c.width;
  }
}

TEST(Tabs, EncodeReplacesRunsThatReachATabStop) {
  struct Case {
    const char16_t* input;
    long width;
    const char16_t* expected;
  } cases[] = {
      {u"    x", 4, u"\tx"},       {u"ab  x", 4, u"ab\tx"},   {u"abc x", 4, u"abc\tx"}, {u"ab x", 4, u"ab x"},
      {u"        x", 4, u"\t\tx"}, {u"      x", 4, u"\t  x"}, {u"a \tx", 4, u"a\tx"},   {u"ab\n    x", 4, u"ab\n\tx"},
      {u"x  ", 3, u"x\t"},         {u"a b", 0, u"a b"},
  };
  for (const Case& c : cases) {
    std::u16string s = c.input;
    encodeTabs(s, c.width);
    EXPECT_EQ(s, c.expected) << c.width;
  }
}

TEST(Tabs, RoundTripsOnRandomText) {
  std::mt19937 random(7);
  const char16_t alphabet[] = u"ab \t\n";
  for (int round = 0; round < 500; ++round) {
    std::u16string text;
    size_t length = random() % 40;
    for (size_t i = 0; i < length; ++i) text.push_back(alphabet[random() % 5]);
    long width = 1 + static_cast<long>(random() % 8);
    std::u16string decoded = text;
    decodeTabs(decoded, width);
    ASSERT_EQ(decoded.find(u'\t'), decoded.npos);
    std::u16string encoded = decoded;
    encodeTabs(encoded, width);
    std::u16string again = encoded;
    decodeTabs(again, width);
    EXPECT_EQ(again, decoded) << "width " << width;
    EXPECT_LE(encoded.size(), decoded.size());
  }
}

TEST(CaseMappings, FullMappings) {
  std::u16string s = u"straße ǅ";
  uppercase(s);
  EXPECT_EQ(s, u"STRASSE Ǆ");
  lowercase(s);
  EXPECT_EQ(s, u"strasse ǆ");
  std::u16string t = u"hello wORLD, it's ß";
  capitalize(t);
  EXPECT_EQ(t, u"Hello World, It's Ss");
  std::u16string empty;
  capitalize(empty);
  EXPECT_EQ(empty, u"");
}

}  // namespace
}  // namespace norvane::text
