#include "norvane/text/chars.h"

#include <gtest/gtest.h>

#include <random>
#include <thread>
#include <vector>

namespace norvane::text {
namespace {

TEST(CharacterSetRepTest, Membership) {
  struct Case {
    const char* rep;
    CharacterSetRep (*get)();
    std::vector<unichar> in;
    std::vector<unichar> out;
  };
  const Case cases[] = {
      {"empty", emptyCharacterSetRep, {}, {0, u'a', u' ', 0xFFFF}},
      {"space", spaceCharacterSetRep, {0, u'\t', u' ', 0x00A0, 0x3000, 0x2003}, {u'\n', u'\r', 0x2028, u'a', 0xFEFF}},
      {"white",
       whiteCharacterSetRep,
       {0, 3, u'\t', u'\n', 0x0B, 0x0C, u'\r', u' ', 0x85, 0xA0, 0x2028, 0x2029, 0xFEFF, 0xFFFC, 0x3000},
       {u'a', u'.', 1, 0x200B}},
      {"alpha", alphaCharacterSetRep, {u'a', u'Z', 0xE9, 0x0301, 0x4E00, 0x05D0}, {u'1', u' ', u'_', 0x0660}},
      {"alphaNum", alphaNumCharacterSetRep, {u'a', u'7', 0x0660, 0x00B2, 0x2160}, {u' ', u'-', u'.'}},
      {"digit", digitCharacterSetRep, {u'0', u'9', 0x0660, 0xFF10}, {u'a', 0x00B2, 0x2160}},
      {"lower", lowerCharacterSetRep, {u'a', 0xDF, 0xE9, 0x03B1}, {u'A', 0x01C5, u'1'}},
      {"upper", upperCharacterSetRep, {u'A', 0xC9, 0x01C5, 0x0391}, {u'a', u'1'}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.rep);
    CharacterSetRep rep = c.get();
    for (unichar u : c.in) EXPECT_TRUE(isInRep(rep, u)) << std::hex << unsigned(u);
    for (unichar u : c.out) EXPECT_FALSE(isInRep(rep, u)) << std::hex << unsigned(u);
  }
}

TEST(ConversionTableTest, Entries) {
  struct Case {
    const char* table;
    ConversionTable (*get)();
    unichar from, to;
  };
  const Case cases[] = {
      {"lower", lowerCharsTable, u'A', u'a'},
      {"lower", lowerCharsTable, 0xC4, 0xE4},
      {"lower", lowerCharsTable, u'a', u'a'},
      {"lower keeps U+0130 (two-unit image)", lowerCharsTable, 0x0130, 0x0130},
      {"upper", upperCharsTable, u'z', u'Z'},
      {"upper keeps sharp s", upperCharsTable, 0xDF, 0xDF},
      {"upper of final sigma", upperCharsTable, 0x03C2, 0x03A3},
      {"upper leaves digits", upperCharsTable, u'1', u'1'},
      {"umlauts folds e acute", umlautsCharsTable, 0xE9, u'e'},
      {"umlauts folds A diaeresis", umlautsCharsTable, 0xC4, u'A'},
      {"umlauts keeps o slash", umlautsCharsTable, 0xF8, 0xF8},
      {"umlauts keeps ae", umlautsCharsTable, 0xE6, 0xE6},
      {"umlauts leaves punctuation", umlautsCharsTable, 0xBF, 0xBF},
      {"lower umlauts", lowerUmlautsCharsTable, 0xC9, u'e'},
      {"upper umlauts", upperUmlautsCharsTable, 0xE4, u'A'},
      {"surrogate identity", upperCharsTable, 0xD83D, 0xD83D},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.table);
    EXPECT_EQ(unsigned(c.get()[c.from]), unsigned(c.to));
  }
  for (auto get :
       {lowerCharsTable, upperCharsTable, umlautsCharsTable, lowerUmlautsCharsTable, upperUmlautsCharsTable}) {
    EXPECT_EQ(get()[0xFFFF], 0xFFFF);
  }
}

TEST(ConversionTableTest, TablesNeverTouchNonLetters) {
  CharacterSetRep alpha = alphaCharacterSetRep();
  for (uint32_t c = 0; c < 65536; ++c) {
    unichar u = static_cast<unichar>(c);
    if (isInRep(alpha, u)) continue;
    ASSERT_EQ(umlautsCharsTable()[u], u) << std::hex << c;
    ASSERT_EQ(lowerCharsTable()[u], u) << std::hex << c;
    ASSERT_EQ(upperCharsTable()[u], u) << std::hex << c;
  }
}

// An ICU upgrade that changes the Unicode data shows up here first: look at
// what changed, then update the pinned value.
TEST(ConversionTableTest, ChecksumIsPinned) {
  EXPECT_EQ(characterTablesChecksum(), 264728157u);
}

TEST(ConversionTableTest, BuiltOnceAcrossThreads) {
  std::vector<std::thread> threads;
  std::vector<ConversionTable> seen(8);
  for (int i = 0; i < 8; ++i) threads.emplace_back([&seen, i] { seen[i] = upperUmlautsCharsTable(); });
  for (auto& t : threads) t.join();
  for (auto table : seen) EXPECT_EQ(table, seen[0]);
}

TEST(UnitConversionTest, AsciiForms) {
  EXPECT_EQ(toAscii(0xE9), u'e');
  EXPECT_EQ(toAscii(0x4E2D), u' ');
  EXPECT_EQ(umlautsToAscii(0x4E2D), 0x4E2D);
  EXPECT_EQ(toUpperAscii(0xE9), u'E');
  EXPECT_EQ(toLowerAscii(0xC9), u'e');
  EXPECT_EQ(toUpperAscii(0x03B1), u' ');
  EXPECT_EQ(umlautsToUpperAscii(0xE4), u'A');
  EXPECT_EQ(umlautsToLowerAscii(0xC4), u'a');
  EXPECT_EQ(toLower(u'Q'), u'q');
  EXPECT_EQ(toUpper(u'q'), u'Q');
}

TEST(RawSearchTest, Positions) {
  const std::u16string hay = u"Hello World";
  struct Case {
    const char* name;
    std::u16string needle;
    bool caseInsensitive;
    size_t expected;  // NotFound for none
  };
  const Case cases[] = {
      {"start", u"Hello", false, 0},           {"end", u"rld", false, 8},
      {"whole", u"Hello World", false, 0},     {"longer than haystack", u"Hello World!", false, NotFound},
      {"empty needle", u"", false, NotFound},  {"case differs", u"world", false, NotFound},
      {"case-insensitive", u"WORLD", true, 6}, {"case-insensitive end", u"D", true, 10},
      {"repeated prefix", u"lo W", false, 3},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    auto f = c.caseInsensitive ? fastCaseInsensitiveContainsUnichars : fastContainsUnichars;
    const unichar* hit = f(hay.data(), hay.size(), c.needle.data(), c.needle.size());
    EXPECT_EQ(hit ? size_t(hit - hay.data()) : NotFound, c.expected);
  }
}

TEST(RawSearchTest, ByteNeedlesWidenWithSign) {
  std::u16string hay = u"caf\u00E9";
  EXPECT_EQ(fastUnicharsContainChars(hay.data(), hay.size(), "caf\xE9", 4), nullptr);
  hay.push_back(0xFFE9);
  const unichar* hit = fastUnicharsContainChars(hay.data(), hay.size(), "\xE9", 1);
  ASSERT_NE(hit, nullptr);
  EXPECT_EQ(hit - hay.data(), 4);
  std::u16string text = u"Some TEXT";
  EXPECT_NE(fastCaseInsensitiveUnicharsContainChars(text.data(), text.size(), "text", 4), nullptr);
  EXPECT_NE(positionOfCharacters("TEXT", 4, text.data(), text.size(), true), nullptr);
  EXPECT_EQ(positionOfCharacters("text", 4, text.data(), text.size(), true), nullptr);
}

// Long haystacks take the SIMD path; a naive search is the reference.
TEST(RawSearchTest, AgreesWithNaiveSearchOnRandomText) {
  std::mt19937 random(42);
  const std::u16string alphabet = u"aAbB\u0131iIsS\u017F\u00E9\u00C9 ";
  auto naive = [](const std::u16string& h, const std::u16string& n, bool folded) -> size_t {
    ConversionTable upper = upperCharsTable();
    if (n.empty() || n.size() > h.size()) return NotFound;
    for (size_t i = 0; i + n.size() <= h.size(); ++i) {
      size_t j = 0;
      while (j < n.size() && (folded ? upper[h[i + j]] == upper[n[j]] : h[i + j] == n[j])) ++j;
      if (j == n.size()) return i;
    }
    return NotFound;
  };
  for (int round = 0; round < 3000; ++round) {
    std::u16string h(random() % 40, u' '), n(1 + random() % 3, u' ');
    for (auto& u : h) u = alphabet[random() % alphabet.size()];
    for (auto& u : n) u = alphabet[random() % alphabet.size()];
    for (bool folded : {false, true}) {
      auto f = folded ? fastCaseInsensitiveContainsUnichars : fastContainsUnichars;
      const unichar* hit = f(h.data(), h.size(), n.data(), n.size());
      ASSERT_EQ(hit ? size_t(hit - h.data()) : NotFound, naive(h, n, folded)) << "round " << round;
    }
  }
}

TEST(RawSearchTest, SubCStrings) {
  const char* const rows[] = {"doubleclick", "adserver", nullptr};
  const char* const capitalRow[] = {"AdServer", nullptr};
  String url(u"http://AdServer.example.com/x");
  EXPECT_FALSE(containsSubCStrings(url, rows));
  EXPECT_TRUE(containsSubCStrings(url, rows, false));
  EXPECT_FALSE(containsSubCStrings(url, capitalRow, false));  // rows compare as stored
  EXPECT_TRUE(containsSubCStrings(url, capitalRow, true));
  EXPECT_FALSE(containsSubCStrings(String(u""), rows, false));
  EXPECT_FALSE(containsSubCStrings(url, nullptr, false));
}

TEST(RawCompareTest, Results) {
  EXPECT_EQ(fastCompareChars("a", 1, "ab", 2), -1);
  EXPECT_EQ(fastCompareChars("b", 1, "a", 1), 1);
  EXPECT_EQ(fastCompareChars("", 0, "", 0), 0);
  EXPECT_EQ(fastCompareChars(nullptr, 0, nullptr, 0), 0);
  EXPECT_LT(fastCompareChars("\xE9", 1, "a", 1), 0);  // bytes as signed
  EXPECT_EQ(fastCompareUnicharsWithChars(u"\uFFE9", "\xE9"), 0);
  EXPECT_NE(fastCompareUnicharsWithChars(u"\u00E9", "\xE9"), 0);
  std::u16string sharp = u"\u00DF", ss = u"SS";
  EXPECT_NE(fastCaseInsensitiveCompareUnichars(sharp.data(), 1, ss.data(), 2), 0);
  EXPECT_EQ(fastCaseInsensitiveCompareUnicharsWithChars(u"MiXeD", "mixed"), 0);
  EXPECT_EQ(fastCaseInsensitiveCompareChars("ABC", 3, "abc", 3), 0);
  std::u16string a = u"\u00E4", upperA = u"A";
  EXPECT_EQ(fastCompareUnicharsUsingConversionTable(a.data(), 1, upperA.data(), 1, upperUmlautsCharsTable()), 0);
  EXPECT_NE(fastCompareUnicharsUsingConversionTable(a.data(), 1, upperA.data(), 1, nullptr), 0);
  std::u16string x = u"abc", y = u"abd";
  EXPECT_EQ(fastCompareUnichars(x.data(), 3, y.data(), 3), -1);
  EXPECT_EQ(fastCompareUnichars(x.data(), 3, y.data(), 2), 1);
}

TEST(FilteredCompareTest, EqualAndPrefix) {
  CharacterSetRep alnum = alphaNumCharacterSetRep();
  EXPECT_TRUE(equalStringsNoCaseUsingCharacterSetRep(String(u"The Title, Part 1"), String(u"the title part-1"), alnum));
  EXPECT_FALSE(equalStringsUsingCharacterSetRep(String(u"The Title"), String(u"the title"), alnum));
  EXPECT_TRUE(equalStringsUsingCharacterSetRep(String(), String(u""), alnum));
  EXPECT_TRUE(hasPrefixUsingCharacterSetRep(String(u"a-b-c"), String(u"ab"), alnum));
  EXPECT_FALSE(hasPrefixUsingCharacterSetRep(String(u"ab"), String(u"abc"), alnum));
  EXPECT_TRUE(hasPrefixUsingCharacterSetRep(String(u"abc"), String(u""), alnum));
  EXPECT_TRUE(hasPrefixUsingCharacterSetRep(String(u"abc"), String(u"--"), alnum));
  EXPECT_FALSE(equalStringsUsingCharacterSetRep(String(u"abc"), String(u"ab"), alnum));
  EXPECT_TRUE(equalStringsUsingConversionTable(String(u"ABC"), String(u"abc"), lowerCharsTable()));
  EXPECT_FALSE(equalStringsUsingConversionTable(String(u"ABC"), String(u"abc"), nullptr));
  EXPECT_TRUE(equalStringsUsingConversionTable(String(), String(u""), nullptr));
}

TEST(PredicateTest, EmptyAndNullAnswers) {
  String empty(u"");
  struct Case {
    const char* name;
    bool (*predicate)(const String&);
    bool onEmpty;
  };
  const Case cases[] = {
      {"isDigitString", isDigitString, false},        {"isAlphaString", isAlphaString, false},
      {"isAlphaNumString", isAlphaNumString, false},  {"isWhiteString", isWhiteString, true},
      {"isSpaceString", isSpaceString, true},         {"isLowerCaseString", isLowerCaseString, true},
      {"isUpperCaseString", isUpperCaseString, true}, {"isAsciiString", isAsciiString, true},
      {"isUmlautedString", isUmlautedString, false},  {"containsCJKCharacter", containsCJKCharacter, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(c.predicate(empty), c.onEmpty);
    EXPECT_EQ(c.predicate(String()), c.onEmpty);
  }
}

TEST(PredicateTest, Values) {
  EXPECT_TRUE(isDigitString(String(u"0123")));
  EXPECT_FALSE(isDigitString(String(u"01a")));
  EXPECT_TRUE(isLowerCaseString(String(u"123")));
  EXPECT_TRUE(isUpperCaseString(String(u"123")));
  EXPECT_TRUE(isUmlautedString(String(u"caf\u00E9")));
  EXPECT_TRUE(containsCJKCharacter(String(u"x\uA800")));  // the wider test
  EXPECT_EQ(countDigitCharacters(String(u"a1b22")), 3u);
  EXPECT_EQ(countCharactersPartOfCharacterSetRep(String(u"abc"), nullptr), 0u);
  EXPECT_FALSE(containsCharacterPartOfCharacterSetRep(String(u"abc"), nullptr));
  EXPECT_TRUE(containsWhiteCharacter(String(u"a\u00A0")));
  EXPECT_TRUE(onlyWhiteCharacters(nullptr, 0));
  EXPECT_EQ(firstCharacter(String(u"")), 0);
  EXPECT_EQ(lastCharacter(String(u"xy")), u'y');
}

TEST(PredicateTest, NoCaseEquality) {
  EXPECT_FALSE(isEqualToStringNoCase(String(), String(u"")));
  EXPECT_FALSE(isEqualToStringNoCase(String(u""), String()));
  EXPECT_TRUE(isEqualToStringNoCase(String(u""), String(u"")));
  EXPECT_TRUE(isEqualToStringNoCase(String(u"Stra\u00DFe"), String(u"STRA\u00DFE")));
  EXPECT_FALSE(isEqualToStringNoCase(String(u"Stra\u00DFe"), String(u"STRASSE")));  // lengths differ
  EXPECT_FALSE(hasPrefixNoCase(String(u"abc"), String(u"")));
  EXPECT_TRUE(hasPrefixNoCase(String(u"Abc"), String(u"aB")));
  EXPECT_TRUE(hasSuffixNoCase(String(u"file.PDF"), String(u".pdf")));
  EXPECT_FALSE(hasSuffixNoCase(String(u"f"), String(u".pdf")));
  EXPECT_TRUE(rangeIsEqualTo(String(u"abcdef"), Range{2, 2}, String(u"cd")));
  EXPECT_TRUE(rangeIsEqualTo(String(u"abc"), Range{1, 0}, String()));
  EXPECT_FALSE(rangeIsEqualTo(String(u"abc"), Range{1, 3}, String(u"bcd")));
  EXPECT_TRUE(rangeIsEqualToNoCase(String(u"abcdef"), Range{2, 2}, String(u"CD")));
  EXPECT_TRUE(isNonUmlautedEqualToStringNoCase(String(u"\u00E4rger"), String(u"ARGER")));
  EXPECT_FALSE(isNonUmlautedEqualToStringNoCase(String(u"x"), String()));
  EXPECT_TRUE(rangeIsNonUmlautedEqualToNoCase(String(u"x\u00E9y"), Range{1, 1}, String(u"E")));
}

TEST(ConversionTest, ReceiverReturnedWhenUnchanged) {
  String plain(u"plain text");
  EXPECT_TRUE(nonUmlautedString(plain).isSameObject(plain));
  EXPECT_TRUE(lowercaseNonUmlautedString(plain).isSameObject(plain));
  EXPECT_TRUE(stringByApplyingConversionTable(plain, nullptr).isSameObject(plain));
  EXPECT_TRUE(stringByRemovingCharactersInRep(plain, digitCharacterSetRep()).isSameObject(plain));
  EXPECT_TRUE(normalizedString(plain).isSameObject(plain));
  EXPECT_TRUE(normalizedString(String()).isNull());
  EXPECT_EQ(nonUmlautedString(String(u"Cr\u00E8me Br\u00FBl\u00E9e")), u"Creme Brulee");
  EXPECT_EQ(uppercaseNonUmlautedString(String(u"\u00E4b")), u"AB");
  EXPECT_EQ(stringByRemovingCharactersInRep(String(u"a1b2"), digitCharacterSetRep()), u"ab");
  EXPECT_EQ(
      stringByRemovingNonAlphaNumericCharactersAndApplyingConversionTable(String(u"ISO-8859_1"), lowerCharsTable()),
      u"iso88591");
}

TEST(ConversionTest, NormalFormC) {
  String decomposed(u"e\u0301t\u00E9");
  EXPECT_EQ(normalizedString(decomposed), u"\u00E9t\u00E9");
  EXPECT_EQ(nonUmlautedNormalizedString(decomposed), u"ete");
  EXPECT_EQ(nonUmlautedString(decomposed), u"e\u0301te");  // the mark alone is no letter to fold
  EXPECT_EQ(uppercaseNonUmlautedNormalizedString(decomposed), u"ETE");
  EXPECT_EQ(normalizedUppercaseString(String(u"stra\u00DFe")), u"STRASSE");
  EXPECT_EQ(normalizedString(String(u"\u00E9"), NormalizationForm::D), u"e\u0301");
}

TEST(ConversionTest, Ligatures) {
  struct Case {
    std::u16string in, out;
  };
  const Case cases[] = {
      {u"\uFB05", u"ft"},         {u"o\uFB03ce", u"office"}, {u"\u0132ssel", u"IJssel"},
      {u"\uFB00\uFB06", u"ffst"}, {u"plain", u"plain"},
  };
  for (const auto& c : cases) {
    std::u16string s = c.in;
    convertLigaturesToCharacters(s);
    EXPECT_EQ(s, c.out);
  }
}

TEST(EncodingConversionTest, Utf8AndNamedConverters) {
  unichar units[16];
  size_t written = 0;
  EXPECT_EQ(convertUTF8ToUnicode("h\xC3\xA9", 3, units, 16, &written), 0);
  EXPECT_EQ(std::u16string(units, written), u"h\u00E9");
  char bytes[16];
  EXPECT_EQ(convertUnicodeToUTF8(units, written, bytes, 16, &written), 0);
  EXPECT_EQ(std::string(bytes, written), "h\xC3\xA9");
  EXPECT_NE(convertUTF8ToUnicode("\xFF", 1, units, 16, &written), 0);

  EXPECT_EQ(convertEncodingToUnicode("caf\xE9", 4, "ISO-8859-1", units, 16, &written), 1);
  EXPECT_EQ(std::u16string(units, written), u"caf\u00E9");
  // Stops at the first malformed sequence but counts what came before.
  EXPECT_EQ(convertEncodingToUnicode("ab\xFF", 3, "UTF-8", units, 16, &written), 0);
  EXPECT_EQ(written, 2u);
  EXPECT_EQ(convertEncodingToUnicode("ab", 2, "no-such-encoding", units, 16, &written), -1);
  EXPECT_EQ(written, 0u);
}

}  // namespace
}  // namespace norvane::text
