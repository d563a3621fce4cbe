#include "norvane/text/strings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "norvane/core/log.h"
#include "norvane/text/text_finding.h"

namespace norvane::text {
namespace {

String S(std::string_view utf8) {
  return String::fromUtf8(utf8);
}

std::vector<std::string> utf8(const std::vector<String>& strings) {
  std::vector<std::string> out;
  for (const String& s : strings) out.push_back(s.toUtf8());
  return out;
}

// --- Making strings ---

TEST(MakingStrings, UniqueStringIsAVersion4Uuid) {
  std::set<std::string> seen;
  for (int i = 0; i < 20; ++i) {
    String id = uniqueString();
    ASSERT_EQ(id.length(), 36u);
    std::string text = id.toUtf8();
    EXPECT_THAT(text, ::testing::MatchesRegex("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}"));
    seen.insert(text);
  }
  EXPECT_EQ(seen.size(), 20u);
}

TEST(MakingStrings, ComponentsJoinWithPeriodUpToFirstNull) {
  EXPECT_EQ(stringWithComponents({S("a"), S("b"), S("c")}), u"a.b.c");
  EXPECT_EQ(stringWithComponents({S("a"), String(), S("c")}), u"a");
  EXPECT_EQ(stringWithComponents({S("only")}), u"only");
  EXPECT_EQ(stringWithComponents({S(""), S("x")}), u".x");
  EXPECT_TRUE(stringWithComponents({String(), S("x")}).isNull());
  EXPECT_TRUE(stringWithComponents({}).isNull());
  EXPECT_EQ(stringWithCharacter(0x20AC), u"\u20AC");
}

TEST(MakingStrings, DefaultEncodingStartsAsUtf8AndCanBeSet) {
  EXPECT_EQ(defaultEncoding(), 4u);
  setDefaultEncoding(NSISOLatin1StringEncoding);
  EXPECT_EQ(defaultEncoding(), NSISOLatin1StringEncoding);
  setDefaultEncoding(NSUTF8StringEncoding);
}

// --- Tests and counts ---

TEST(TestsAndCounts, BoolValue) {
  struct Case {
    const char* text;
    bool expected;
  } cases[] = {{"YES", true},  {"NO", false},   {"12abc", true}, {"0", false},    {"000", false},
               {"007", true},  {"-3", true},    {" 1", true},    {"true", true},  {"On", true},
               {"off", false}, {"yes ", false}, {"", false},     {"+0x1", false}, {"tRUE", true}};
  for (const Case& c : cases) EXPECT_EQ(boolValue(S(c.text)), c.expected) << c.text;
  EXPECT_FALSE(boolValue(String()));
}

TEST(TestsAndCounts, NumbersAndDigitRuns) {
  EXPECT_EQ(countNumbers(S("a1b22c333")), 3u);
  EXPECT_EQ(countNumbers(S("123")), 1u);
  EXPECT_EQ(countNumbers(S("abc")), 0u);
  EXPECT_EQ(countNumbers(S("١٢")), 0u);  // only ASCII digits count

  struct Case {
    const char* text;
    const char* number;
    bool expected;
  } cases[] = {{"312", "12", false},   {"123", "12", false},   {"a-12-b", "12", true}, {"12", "12", true},
               {"x1212", "12", false}, {"112 12", "12", true}, {"abc", "", false},     {"", "1", false}};
  for (const Case& c : cases) EXPECT_EQ(containsNumber(S(c.text), S(c.number)), c.expected) << c.text;
  EXPECT_FALSE(containsNumber(S("12"), String()));

  EXPECT_TRUE(containsNumberWithNDigits(S("1234"), 3));
  EXPECT_TRUE(containsNumberWithNDigits(S("ab1234"), 4));
  EXPECT_FALSE(containsNumberWithNDigits(S("12a34"), 3));
  EXPECT_FALSE(containsNumberWithNDigits(S("12"), 3));
  EXPECT_FALSE(containsNumberWithNDigits(S("1234"), 0));
  EXPECT_FALSE(containsNumberWithNDigits(S("1234"), -2));
}

TEST(TestsAndCounts, ContainsCharactersOfMask) {
  String mail = S("user@example.org/path?q");
  EXPECT_TRUE(containsCharacters(mail, kMaskAt | kMaskPeriod));
  EXPECT_TRUE(containsCharacters(mail, kMaskSlash | kMaskQuestion));
  EXPECT_FALSE(containsCharacters(mail, kMaskAt | kMaskDollar));
  EXPECT_TRUE(containsCharacters(S("a_b*c$;"), kMaskUnderscore | kMaskStar | kMaskDollar | kMaskSemicolon));
  EXPECT_FALSE(containsCharacters(mail, 0));
  EXPECT_FALSE(containsCharacters(S(""), kMaskAt));
  EXPECT_FALSE(containsCharacters(mail, 256));
}

TEST(TestsAndCounts, MashedWords) {
  struct Case {
    const char* word;
    bool expected;
  } cases[] = {{"MacBook", true},   {"DevonThink", true}, {"Hello", false}, {"HTml", false}, {"HelloW", false},
               {"McD", false},      {"AbC", false},       {"AbCd", true},   {"abCd", false}, {"Ab", false},
               {"ÄpfelBaum", true}, {"Ab1Cd", false},     {"", false},      {"AbCdEF", true}};
  for (const Case& c : cases) EXPECT_EQ(isMashedWord(S(c.word)), c.expected) << c.word;
  EXPECT_FALSE(isMashedWord(String()));
}

TEST(TestsAndCounts, LineCountsAndFeeds) {
  struct Case {
    const char* text;
    size_t lines;
    bool hasFeed;
    size_t feedLength;
  } cases[] = {{"", 0, false, 0},
               {"a", 1, false, 0},
               {"a\n", 1, true, 1},
               {"a\r\nb", 2, false, 0},
               {"a\r\n", 1, true, 2},
               {"a\n\nb", 3, false, 0},
               {"\n", 1, true, 1},
               {"a\rb\u2028c", 3, false, 0},
               {"a\x03"
                "b",
                2, false, 0},
               {"x\n\r\n", 2, true, 3},
               {"a\uFEFF", 1, true, 1}};
  for (const Case& c : cases) {
    String s = S(c.text);
    EXPECT_EQ(numberOfLines(s), c.lines) << c.text;
    EXPECT_EQ(lines(s).size(), c.lines) << c.text;
    EXPECT_EQ(hasFeedOfLine(s), c.hasFeed) << c.text;
    EXPECT_EQ(lengthOfFeedOfLine(s), c.feedLength) << c.text;
  }
}

// --- Unit search ---

TEST(UnitSearch, FindsCountsAndStartPositions) {
  String s = S("Banana Bread");
  EXPECT_EQ(findCharacter(s, 'a'), 1u);
  EXPECT_EQ(findCharacter(s, 'a', 2), 3u);
  EXPECT_EQ(findCharacter(s, 'b'), NotFound);
  EXPECT_EQ(findCharacter(s, 'b', 0, true), 0u);
  EXPECT_EQ(findCharacter(s, 'b', 1, true), 7u);
  EXPECT_EQ(findCharacter(s, 'a', 100), NotFound);
  EXPECT_EQ(findLastCharacter(s, 'a'), 10u);
  EXPECT_EQ(findLastCharacter(s, 'B', 0, true), 7u);
  EXPECT_EQ(findLastCharacter(s, 'n', 5), NotFound);
  EXPECT_EQ(findLastCharacter(s, 'n', 4), 4u);
  EXPECT_EQ(countCharacter(s, 'a'), 4u);
  EXPECT_EQ(countCharacter(s, 'A', 0, true), 4u);
  EXPECT_EQ(countCharacter(s, 'a', 4), 2u);
  EXPECT_EQ(countCharacter(s, 'a', 12), 0u);
  EXPECT_TRUE(containsCharacter(s, 'R', 0, true));
  EXPECT_FALSE(containsCharacter(s, 'R'));
  EXPECT_EQ(findOneOf(s, S("xnr")), 2u);
  EXPECT_EQ(findOneOf(s, S("xnr"), 5), 8u);
  EXPECT_EQ(findOneOf(s, S("XR"), 0, true), 8u);
  EXPECT_EQ(findOneOf(s, S("")), NotFound);
  EXPECT_EQ(findOneOf(s, String()), NotFound);
  EXPECT_EQ(findOneOf(S(""), S("a")), NotFound);
  EXPECT_EQ(findCharacter(String(), 'a'), NotFound);
  // Case folding goes through the upper table: ä matches Ä, not A.
  EXPECT_EQ(findCharacter(S("xÄ"), u'ä', 0, true), 1u);
  EXPECT_EQ(findCharacter(S("xA"), u'ä', 0, true), NotFound);
}

// --- Lines ---

TEST(Lines, KeepTheirLineEnds) {
  EXPECT_THAT(utf8(lines(S("one\r\ntwo\nthree"))), ::testing::ElementsAre("one\r\n", "two\n", "three"));
  EXPECT_THAT(utf8(lines(S("a\n\nb\n"))), ::testing::ElementsAre("a\n", "\n", "b\n"));
  EXPECT_THAT(utf8(lines(S("\r\r\n"))), ::testing::ElementsAre("\r", "\r\n"));
  EXPECT_TRUE(lines(S("")).empty());
  EXPECT_TRUE(lines(String()).empty());
  String single = S("no end");
  ASSERT_EQ(lines(single).size(), 1u);
  EXPECT_TRUE(lines(single)[0].isSameObject(single));
}

TEST(Lines, FirstLineAndFeedOfLine) {
  EXPECT_EQ(firstLine(S("head\nbody")), u"head");
  EXPECT_EQ(firstLine(S("head\r\nbody")), u"head");
  EXPECT_EQ(firstLine(S("\nbody")), u"");
  EXPECT_FALSE(firstLine(S("\nbody")).isNull());
  String plain = S("plain");
  EXPECT_TRUE(firstLine(plain).isSameObject(plain));
  EXPECT_EQ(firstLine(S("")), u"");
  EXPECT_EQ(feedOfLine(S("text\r\n")), u"\r\n");
  EXPECT_EQ(feedOfLine(S("text\n\n")), u"\n\n");
  EXPECT_EQ(feedOfLine(S("text")), u"");
  EXPECT_TRUE(feedOfLine(String()).isNull());
}

// --- Replacing and removing ---

TEST(Replacing, CharactersReturnReceiverWhenUnchanged) {
  String s = S("a-b-c");
  EXPECT_EQ(stringByReplacingCharacter(s, '-', '+'), u"a+b+c");
  EXPECT_TRUE(stringByReplacingCharacter(s, '-', '-').isSameObject(s));
  EXPECT_TRUE(stringByReplacingCharacter(s, 'x', 'y').isSameObject(s));
  EXPECT_TRUE(stringByReplacingCharacter(s, 'A', 'x').isSameObject(s));
  EXPECT_EQ(stringByReplacingCharacter(s, 'A', 'x', false), u"x-b-c");
  EXPECT_TRUE(stringByReplacingCharacter(String(), 'a', 'b').isNull());
}

TEST(Replacing, Strings) {
  String s = S("one two one Two");
  EXPECT_EQ(stringByReplacingString(s, S("one"), S("1")), u"1 two 1 Two");
  EXPECT_EQ(stringByReplacingString(s, S("TWO"), S("2"), false), u"one 2 one 2");
  EXPECT_TRUE(stringByReplacingString(s, S("TWO"), S("2")).isSameObject(s));
  EXPECT_TRUE(stringByReplacingString(s, S("one"), String()).isSameObject(s));
  EXPECT_TRUE(stringByReplacingString(s, String(), S("x")).isSameObject(s));
  EXPECT_EQ(stringByReplacingString(S("aaaa"), S("aa"), S("b")), u"bb");
  EXPECT_EQ(stringByReplacingString(S("aaa"), S("aa"), S("")), u"a");
  EXPECT_EQ(stringByReplacingString(S("abc"), S("abc"), S("xyz!")), u"xyz!");
}

TEST(Removing, UnitsBySetAndKind) {
  struct Case {
    String (*op)(const String&);
    const char* input;
    const char* expected;
    const char* untouched;
  } cases[] = {
      {stringByRemovingFeeds, "a\nb\r\nc\u2028d", "abcd", "a b\t"},
      {stringByRemovingTabs, "a\tb\t", "ab", "a b\n"},
      {stringByRemovingSpaces, "a b\t\u00A0c\nd", "abc\nd", "ab\n"},
      {stringByRemovingWhiteSpaces, "a b\t\u00A0c\nd\uFEFF", "abcd", "a.b"},
      {stringByRemovingDigits, "a1b2٣c", "abc", "abc"},
      {lowercaseStringByRemovingDigits, "AB1ß2Ä", "abßä", "ab"},
      {uppercaseStringByRemovingDigits, "ab1ß2ä", "ABßÄ", "AB"},
      {stringByRemovingNonIPCharacters, " 192.168.0.1:80 ", "192.168.0.180", "10.0.0.1"},
      {stringByRotating13, "Hello, World!", "Uryyb, Jbeyq!", "12 ?!"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(c.op(S(c.input)).toUtf8(), c.expected) << c.input;
    String untouched = S(c.untouched);
    EXPECT_TRUE(c.op(untouched).isSameObject(untouched)) << c.untouched;
  }
  EXPECT_EQ(stringByRemovingCharacters(S("a.b.c"), '.'), u"abc");
  EXPECT_EQ(stringByRemovingCharactersOfString(S("a.b,c;d"), S(".,;")), u"abcd");
  String s = S("abc");
  EXPECT_TRUE(stringByRemovingCharactersOfString(s, String()).isSameObject(s));
  EXPECT_TRUE(stringByRemovingCharactersOfString(s, S("xyz")).isSameObject(s));
}

TEST(Removing, Rotation) {
  String s = S("Abz");
  EXPECT_EQ(stringByRotating(s, 1), u"Bca");
  EXPECT_EQ(stringByRotating(s, -1), u"Zay");
  EXPECT_EQ(stringByRotating(s, 27), u"Bca");
  EXPECT_TRUE(stringByRotating(s, 26).isSameObject(s));
  EXPECT_TRUE(stringByRotating(s, 0).isSameObject(s));
  EXPECT_EQ(stringByRotating13(stringByRotating13(S("Round Trip"))), u"Round Trip");
  EXPECT_EQ(stringByRotating13(S("äöü")), u"äöü");
}

TEST(Collapsing, RunsBecomeOneUnit) {
  struct Case {
    String (*op)(const String&);
    const char* input;
    const char* expected;
  } cases[] = {
      {stringByRemovingMultipleSpaces, "a  b\t\tc", "a b c"}, {stringByRemovingMultipleSpaces, "  lead", " lead"},
      {stringByRemovingMultipleSpaces, "a\u00A0b", "a b"},    {stringByRemovingMultipleSpaces, "a \n b", "a \n b"},
      {stringByRemovingMultipleWhiteSpaces, "a \n b", "a b"}, {stringByRemovingMultipleWhiteSpaces, "a\tb", "a b"},
      {stringByRemovingMultipleWhiteSpaces, "end  ", "end "}, {stringByRemovingMultipleFeeds, "a\r\n\r\nb", "a\nb"},
      {stringByRemovingMultipleFeeds, "a\rb", "a\nb"},        {stringByRemovingMultipleFeeds, "a \n\u2029b", "a \nb"},
  };
  for (const Case& c : cases) EXPECT_EQ(c.op(S(c.input)).toUtf8(), c.expected) << c.input;
}

TEST(Collapsing, ReceiverOnlyWhenNothingChanged) {
  String singles = S("one two three");
  EXPECT_TRUE(stringByRemovingMultipleWhiteSpaces(singles).isSameObject(singles));
  EXPECT_TRUE(stringByRemovingMultipleSpaces(singles).isSameObject(singles));
  String tab = S("one\ttwo");
  String collapsed = stringByRemovingMultipleWhiteSpaces(tab);
  EXPECT_FALSE(collapsed.isSameObject(tab));
  EXPECT_EQ(collapsed, u"one two");
  String newline = S("a\nb");
  EXPECT_TRUE(stringByRemovingMultipleFeeds(newline).isSameObject(newline));
  String empty = S("");
  EXPECT_TRUE(stringByRemovingMultipleFeeds(empty).isSameObject(empty));
  EXPECT_TRUE(stringByRemovingMultipleSpaces(String()).isNull());
}

// --- Trimming ---

TEST(Trimming, WhiteSpacesAndSpacesAndFeeds) {
  EXPECT_EQ(stringByTrimmingWhiteSpaces(S(" \t\n x y \r\n")), u"x y");
  EXPECT_EQ(stringByTrimmingWhiteSpaces(S("\u3000x\u00A0")), u"x");
  // NUL and the byte-order mark are not trimmed here, unlike the white rep.
  EXPECT_EQ(stringByTrimmingWhiteSpaces(S("\uFEFFx")), u"\uFEFFx");
  EXPECT_EQ(stringByTrimmingWhiteSpaces(S(" \n ")), u"");
  String s = S("x");
  EXPECT_TRUE(stringByTrimmingWhiteSpaces(s).isSameObject(s));

  String text = S(" \n a b \n ");
  EXPECT_EQ(stringByTrimmingSpacesAndFeeds(text, true), u"a b");
  EXPECT_EQ(stringByTrimmingSpacesAndFeeds(text, false), u"\n a b \n");
  EXPECT_EQ(stringByTrimmingSpacesOfLeftSideAndFeeds(text, true), u"a b \n ");
  EXPECT_EQ(stringByTrimmingSpacesOfLeftSideAndFeeds(text, false), u"\n a b \n ");
  EXPECT_EQ(stringByTrimmingSpacesOfRightSideAndFeeds(text, true), u" \n a b");
  EXPECT_EQ(stringByTrimmingSpacesOfRightSideAndFeeds(text, false), u" \n a b \n");
  EXPECT_EQ(stringByTrimmingSpacesAndFeeds(S(" \t "), false), u"");
  EXPECT_EQ(stringByTrimmingSpacesAndFeeds(S("\uFEFFx\u0003"), true), u"x");
}

TEST(Trimming, Ranges) {
  String s = S("ab  cd  ef");
  EXPECT_EQ(trimWhiteSpacesInRange(s, Range{2, 6}), (Range{4, 2}));
  EXPECT_EQ(trimWhiteSpacesInRange(s, Range{2, 2}), (Range{4, 0}));
  EXPECT_EQ(trimWhiteSpacesInRange(s, Range{0, 100}), (Range{0, 10}));
  EXPECT_EQ(trimWhiteSpacesInRange(s, Range{50, 3}), (Range{10, 0}));
  EXPECT_EQ(trimSpacesInRange(S("a \n b"), Range{1, 3}, false), (Range{2, 1}));
  EXPECT_EQ(trimSpacesInRange(S("a \n b"), Range{1, 3}, true), (Range{4, 0}));
  EXPECT_EQ(stringByTrimmingSpacesInRange(s, Range{1, 6}, true), u"b  cd");
  EXPECT_TRUE(stringByTrimmingSpacesInRange(s, Range{0, 10}, true).isSameObject(s));
}

TEST(Trimming, UnitsAtTheEnds) {
  struct Case {
    String (*op)(const String&);
    const char* input;
    const char* expected;
  } cases[] = {
      {stringByTrimmingFeeds, "\nline\r\n\n", "\nline"},
      {stringByTrimmingQuotes, "\"'quoted'\"", "quoted"},
      {stringByTrimmingQuotes, "it's", "it's"},
      {stringByTrimmingEllipsis, "wait...", "wait"},
      {stringByTrimmingEllipsis, "...wait\u2026.", "...wait"},
      {stringByTrimmingDigits, "12abc3d45", "abc3d"},
      {stringByTrimmingDigits, "٣x٤", "x"},
      {stringByTrimmingDigits, "123", ""},
  };
  for (const Case& c : cases) EXPECT_EQ(c.op(S(c.input)).toUtf8(), c.expected) << c.input;

  EXPECT_EQ(stringByTrimmingCharacter(S("--a-b--"), '-'), u"a-b");
  EXPECT_EQ(stringByTrimmingPrefixCharacter(S("--a-b--"), '-'), u"a-b--");
  EXPECT_EQ(stringByTrimmingSuffixCharacter(S("--a-b--"), '-'), u"--a-b");
  EXPECT_EQ(stringByTrimmingCharacter(S("---"), '-'), u"");
  EXPECT_EQ(stringByTrimmingCharactersNotInRep(S("..(abc1)!"), alphaNumCharacterSetRep()), u"abc1");
  String s = S("abc");
  EXPECT_TRUE(stringByTrimmingCharactersNotInRep(s, nullptr).isSameObject(s));
  EXPECT_TRUE(stringByTrimmingCharacter(s, '-').isSameObject(s));
}

TEST(Trimming, EnclosingCharacterGoesInPairs) {
  struct Case {
    const char* input;
    const char* expected;
  } cases[] = {{"\"a\"", "a"},   {"\"\"a\"\"", "a"}, {"\"\"a\"", "\"a"}, {"\"a", "\"a"},
               {"\"\"\"\"", ""}, {"\"\"\"", "\""},   {"\"\"", ""},       {"a\"", "a\""}};
  for (const Case& c : cases) EXPECT_EQ(stringByTrimmingEnclosingCharacter(S(c.input), '"').toUtf8(), c.expected);
  String one = S("\"");
  EXPECT_TRUE(stringByTrimmingEnclosingCharacter(one, '"').isSameObject(one));
}

// --- Configuration text ---

TEST(ConfigText, LinesDropCommentsAndShortLines) {
  String text =
      S("# comment\r\n"
        "  name  Alice  \r\n"
        "x\n"
        "   # indented comment\n"
        "\n"
        "port 80\u2028ab");
  EXPECT_THAT(utf8(configLines(text)), ::testing::ElementsAre("name  Alice", "port 80", "ab"));
  EXPECT_TRUE(configLines(S("")).empty());
  EXPECT_TRUE(configLines(String()).empty());
}

TEST(ConfigText, ValueForKey) {
  EXPECT_EQ(configValueForKey(S("Name  Alice Smith "), S("name")), u"Alice Smith");
  EXPECT_EQ(configValueForKey(S("name\tAlice"), S("NAME")), u"Alice");
  EXPECT_TRUE(configValueForKey(S("names Alice"), S("name")).isNull());
  EXPECT_TRUE(configValueForKey(S("name"), S("name")).isNull());
  EXPECT_TRUE(configValueForKey(S("name   "), S("name")).isNull());
  EXPECT_TRUE(configValueForKey(S("other value"), S("name")).isNull());
  EXPECT_TRUE(configValueForKey(S("name value"), String()).isNull());

  EXPECT_EQ(typedValueForKeys(S("Boolean"), {S("string"), S("boolean"), S("integer")}), 1u);
  EXPECT_EQ(typedValueForKeys(S("real"), {S("string"), S("boolean")}), NotFound);
  EXPECT_EQ(typedValueForKeys(S("integer"), {S("string"), String(), S("integer")}), NotFound);
}

// --- Reformatting ---

TEST(Reformatting, MailingJoinsWrappedLines) {
  struct Case {
    const char* input;
    const char* expected;
  } cases[] = {
      {"This is a\nwrapped line.", "This is a wrapped line."},
      {"Para one.\n\nPara two.", "Para one.\n\nPara two."},
      {"Para one.\r\n\r\nPara two.", "Para one.\n\nPara two."},
      {"He wrote:\nquote", "He wrote:\nquote"},
      {"Reply\n> quoted line\n> more", "Reply\n> quoted line\n> more"},
      {"Items\n- one\n- two", "Items\n- one\n- two"},
      {"a\r\nb", "a b"},
      {"trailing\n", "trailing"},
      {"many    spaces\there", "many spaces here"},
      {"\nstart", "start"},
      {"a \nb", "a b"},
  };
  for (const Case& c : cases) EXPECT_EQ(reformattedMailing(S(c.input)).toUtf8(), c.expected) << c.input;
  String empty = S("");
  EXPECT_TRUE(reformattedMailing(empty).isSameObject(empty));
  String plain = S("nothing to do");
  EXPECT_TRUE(reformattedMailing(plain).isSameObject(plain));
}

TEST(Reformatting, ParagraphsWithRemovedCharacters) {
  String text = S("> first line\n> second  line\n>\n> next para\n");
  EXPECT_EQ(reformattedStringByRemovingCharactersOfString(text, S(">")), u"first line second line\n\nnext para");
  EXPECT_EQ(reformattedStringByRemovingCharactersOfString(S("a\nb\n\n\nc"), String()), u"a b\n\nc");
  EXPECT_EQ(reformattedStringByRemovingCharactersOfString(S("a\n\n"), String()), u"a\n");
}

// --- Debug output ---

TEST(DebugOutput, DumpWritesRowsOfTwelve) {
  LogCapture capture;
  dump(S("Hello, world!\n"));
  std::vector<std::string> rows = capture.messages();
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0], "0048 0065 006c 006c 006f 002c 0020 0077 006f 0072 006c 0064 : Hello,.world");
  EXPECT_EQ(rows[1], "0021 000a " + std::string(50, ' ') + ": !.");
}

TEST(DebugOutput, DumpAsArray) {
  LogCapture capture;
  dumpAsArray(S("abcdefghi"));
  ASSERT_EQ(capture.messages().size(), 1u);
  EXPECT_EQ(capture.messages()[0],
            "unichar string[] = {\n\t0x0061, 0x0062, 0x0063, 0x0064, 0x0065, 0x0066, 0x0067, 0x0068, \n\t0x0069, \n};");
}

// --- Components ---

TEST(Components, WhiteSeparationAndEnumeration) {
  EXPECT_THAT(utf8(componentsUsingWhiteSeparation(S("  one\ttwo \n three "))),
              ::testing::ElementsAre("one", "two", "three"));
  EXPECT_TRUE(componentsUsingWhiteSeparation(S(" \n ")).empty());

  std::vector<std::pair<std::string, bool>> pieces;
  String s = S("a, b;c");
  String separators = S(", ;");
  std::vector<uint8_t> rep(8192);
  for (unichar u : separators.view()) rep[u >> 3] |= 1 << (u & 7);
  enumerateComponentsUsingBlock(
      s,
      [&](const String& text, const unichar* units, Range piece, bool isSeparator) {
        EXPECT_EQ(units, text.data());
        pieces.emplace_back(text.substring(piece).toUtf8(), isSeparator);
        return false;
      },
      rep.data());
  EXPECT_THAT(pieces,
              ::testing::ElementsAre(std::pair<std::string, bool>{"a", false}, std::pair<std::string, bool>{", ", true},
                                     std::pair<std::string, bool>{"b", false}, std::pair<std::string, bool>{";", true},
                                     std::pair<std::string, bool>{"c", false}));
  int calls = 0;
  enumerateComponentsUsingBlock(
      s, [&](const String&, const unichar*, Range, bool) { return ++calls == 2; }, rep.data());
  EXPECT_EQ(calls, 2);
}

TEST(Components, Ellipsizing) {
  String s = S("abcdef");
  EXPECT_EQ(stringByEllipsizingAfterNCharacters(s, 3), u"abc\u2026");
  EXPECT_TRUE(stringByEllipsizingAfterNCharacters(s, 6).isSameObject(s));
  EXPECT_EQ(stringByEllipsizingAfterNCharacters(S("a😀b"), 2), u"a\u2026");
  EXPECT_EQ(stringByEllipsizingAfterNCharacters(s, 0), u"\u2026");
}

TEST(LineSeparators, RepHoldsExactlyTheLineEnds) {
  CharacterSetRep rep = defaultLineSeparators();
  size_t members = 0;
  for (unsigned u = 0; u < 0x10000; ++u) {
    bool in = isInRep(rep, static_cast<unichar>(u));
    EXPECT_EQ(in, isFeedCharacter(static_cast<unichar>(u))) << u;
    members += in;
  }
  EXPECT_EQ(members, 8u);
}

}  // namespace
}  // namespace norvane::text

namespace norvane::text {
namespace {

// Laws that hold for any text, checked over the reST sources of the Python
// documentation.
class StringLawsOnCorpus : public ::testing::Test {
 protected:
  static std::vector<String> corpus() {
    std::vector<String> texts;
    const char* root = "/usr/share/doc/python3.11/html/_sources";
    std::error_code error;
    for (auto it = std::filesystem::recursive_directory_iterator(root, error);
         !error && it != std::filesystem::recursive_directory_iterator() && texts.size() < 60; it.increment(error)) {
      if (it->path().extension() != ".txt") continue;
      std::ifstream file(it->path(), std::ios::binary);
      std::string bytes((std::istreambuf_iterator<char>(file)), {});
      texts.push_back(String::fromUtf8(bytes));
    }
    return texts;
  }
};

TEST_F(StringLawsOnCorpus, LinesRebuildTheTextAndAgreeWithTheirCount) {
  std::vector<String> texts = corpus();
  if (texts.empty()) GTEST_SKIP() << "no documentation sources on this machine";
  for (const String& text : texts) {
    std::vector<String> all = lines(text);
    std::u16string joined;
    for (const String& line : all) {
      joined.append(line.view());
      // Only the last line may lack a line end, and no line holds one inside.
      String body = stringByTrimmingFeeds(line);
      EXPECT_EQ(findOneOf(body, S("\n\r")), NotFound);
    }
    EXPECT_EQ(joined, text.view());
    EXPECT_EQ(all.size(), numberOfLines(text));
    size_t feeds = countCharacter(text, '\n');
    EXPECT_EQ(numberOfLines(text), feeds + (hasFeedOfLine(text) ? 0 : 1) - (text.isEmpty() ? 1 : 0));
    EXPECT_EQ(firstLine(text), all.empty() ? String::empty() : stringByTrimmingFeeds(all[0]));
  }
}

TEST_F(StringLawsOnCorpus, CollapsingAndTrimmingAreIdempotent) {
  std::vector<String> texts = corpus();
  if (texts.empty()) GTEST_SKIP() << "no documentation sources on this machine";
  for (const String& text : texts) {
    String collapsed = stringByRemovingMultipleWhiteSpaces(text);
    EXPECT_TRUE(stringByRemovingMultipleWhiteSpaces(collapsed).isSameObject(collapsed));
    EXPECT_FALSE(containsSubstring(collapsed, S("  ")));
    String feeds = stringByRemovingMultipleFeeds(text);
    EXPECT_TRUE(stringByRemovingMultipleFeeds(feeds).isSameObject(feeds));
    EXPECT_EQ(countCharacter(feeds, '\n'), numberOfLines(feeds) - (hasFeedOfLine(feeds) ? 0 : 1));
    String trimmed = stringByTrimmingSpacesAndFeeds(text, true);
    EXPECT_TRUE(stringByTrimmingSpacesAndFeeds(trimmed, true).isSameObject(trimmed));
    String reflowed = reformattedMailing(text);
    EXPECT_FALSE(containsSubstring(reflowed, S("\n\n\n")));
    EXPECT_LE(reflowed.length(), text.length());
    EXPECT_EQ(stringByRemovingWhiteSpaces(reflowed), stringByRemovingWhiteSpaces(text));
  }
}

}  // namespace
}  // namespace norvane::text

namespace norvane::text {
namespace {

// Every rewriting operation hands back a null or empty receiver itself.
TEST(Stance, NullAndEmptyReceiversComeBackAsThemselves) {
  using Rewrite = String (*)(const String&);
  const std::pair<const char*, Rewrite> rewrites[] = {
      {"firstLine", firstLine},
      {"feedOfLine", feedOfLine},
      {"stringByRemovingFeeds", stringByRemovingFeeds},
      {"stringByRemovingTabs", stringByRemovingTabs},
      {"stringByRemovingSpaces", stringByRemovingSpaces},
      {"stringByRemovingWhiteSpaces", stringByRemovingWhiteSpaces},
      {"stringByRemovingDigits", stringByRemovingDigits},
      {"lowercaseStringByRemovingDigits", lowercaseStringByRemovingDigits},
      {"uppercaseStringByRemovingDigits", uppercaseStringByRemovingDigits},
      {"stringByRemovingNonIPCharacters", stringByRemovingNonIPCharacters},
      {"stringByRotating13", stringByRotating13},
      {"stringByRemovingMultipleSpaces", stringByRemovingMultipleSpaces},
      {"stringByRemovingMultipleWhiteSpaces", stringByRemovingMultipleWhiteSpaces},
      {"stringByRemovingMultipleFeeds", stringByRemovingMultipleFeeds},
      {"stringByTrimmingWhiteSpaces", stringByTrimmingWhiteSpaces},
      {"stringByTrimmingFeeds", stringByTrimmingFeeds},
      {"stringByTrimmingQuotes", stringByTrimmingQuotes},
      {"stringByTrimmingEllipsis", stringByTrimmingEllipsis},
      {"stringByTrimmingDigits", stringByTrimmingDigits},
      {"reformattedMailing", reformattedMailing},
      {"spaces and feeds", [](const String& s) { return stringByTrimmingSpacesAndFeeds(s, true); }},
      {"left side", [](const String& s) { return stringByTrimmingSpacesOfLeftSideAndFeeds(s, false); }},
      {"right side", [](const String& s) { return stringByTrimmingSpacesOfRightSideAndFeeds(s, true); }},
      {"in range",
       [](const String& s) {
         return stringByTrimmingSpacesInRange(s, Range{0, 5}, true);
       }},
      {"not in rep", [](const String& s) { return stringByTrimmingCharactersNotInRep(s, alphaCharacterSetRep()); }},
      {"character", [](const String& s) { return stringByTrimmingCharacter(s, 'x'); }},
      {"prefix", [](const String& s) { return stringByTrimmingPrefixCharacter(s, 'x'); }},
      {"suffix", [](const String& s) { return stringByTrimmingSuffixCharacter(s, 'x'); }},
      {"enclosing", [](const String& s) { return stringByTrimmingEnclosingCharacter(s, 'x'); }},
      {"replace unit", [](const String& s) { return stringByReplacingCharacter(s, 'a', 'b', false); }},
      {"replace string", [](const String& s) { return stringByReplacingString(s, S("a"), S("b"), false); }},
      {"remove unit", [](const String& s) { return stringByRemovingCharacters(s, 'a'); }},
      {"remove units", [](const String& s) { return stringByRemovingCharactersOfString(s, S("ab")); }},
      {"rotate", [](const String& s) { return stringByRotating(s, 3); }},
      {"reformat", [](const String& s) { return reformattedStringByRemovingCharactersOfString(s, S(">")); }},
      {"ellipsize", [](const String& s) { return stringByEllipsizingAfterNCharacters(s, 3); }},
  };
  for (const auto& [name, rewrite] : rewrites) {
    String null;
    EXPECT_TRUE(rewrite(null).isNull()) << name;
    String empty = String::empty();
    EXPECT_TRUE(rewrite(empty).isSameObject(empty)) << name;
  }
}

}  // namespace
}  // namespace norvane::text
