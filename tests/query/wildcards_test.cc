#include "norvane/query/wildcards.h"

#include <fnmatch.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "norvane/text/chars.h"

namespace norvane::query {
namespace {

std::u16string widen(const std::string& ascii) {
  return std::u16string(ascii.begin(), ascii.end());
}

WildcardType typeOf(std::u16string pattern, size_t minCharacters = 1) {
  size_t offset = 0;
  size_t length = 0;
  return optimizeWildcard(pattern.data(), pattern.data() + pattern.size(), &offset, &length, minCharacters);
}

TEST(Wildcards, OptimizeClassifies) {
  using T = WildcardType;
  struct Case {
    const char16_t* pattern;
    size_t minCharacters;
    T type;
    const char16_t* part;  // the part that offset and length name
  } cases[] = {
      {u"abc", 1, T::kPlain, u"abc"},         {u"a?c", 1, T::kQuestionMarks, u"a?c"},
      {u"abc*", 1, T::kPrefix, u"abc"},       {u"*abc", 1, T::kSuffix, u"abc"},
      {u"*abc*", 1, T::kInfix, u"abc"},       {u"**abc***", 1, T::kInfix, u"abc"},
      {u"a*c", 1, T::kWildcard, u"a*c"},      {u"a**b", 1, T::kWildcard, u"a*b"},
      {u"a*?", 1, T::kWildcard, u"a*?"},      {u"*a*b*", 1, T::kWildcard, u"*a*b*"},
      {u"ab*", 3, T::kNoMatch, u""},          {u"ab", 3, T::kPlain, u"ab"},  // no star: the minimum does not apply
      {u"abc*", 3, T::kPrefix, u"abc"},       {u"[ab]c", 1, T::kUnixFixed, u"[ab]c"},
      {u"[a|b]", 1, T::kUnixFixed, u"[ab]"},  {u"[ab]*", 1, T::kUnixPrefix, u"[ab]"},
      {u"*[ab]", 1, T::kUnixSuffix, u"[ab]"}, {u"*[ab]*", 1, T::kUnix, u"*[ab]*"},
      {u"a*[b]c", 1, T::kUnix, u"a*[b]c"},    {u"[^a-c]x", 1, T::kUnixFixed, u"[^a-c]x"},
      {u"a[]", 1, T::kPlain, u"a"},           {u"[^]x", 1, T::kPlain, u"x"},
      {u"a*[]*b", 1, T::kWildcard, u"a*b"},  // the star before "[]" absorbs the one behind
  };
  for (const Case& c : cases) {
    const WildcardType type = typeOf(c.pattern, c.minCharacters);
    EXPECT_EQ(type, c.type) << String(c.pattern).toUtf8();
    if (type != T::kNoMatch) {
      std::u16string rewritten(c.pattern);
      size_t offset = 0;
      size_t length = 0;
      optimizeWildcard(rewritten.data(), rewritten.data() + rewritten.size(), &offset, &length, c.minCharacters);
      EXPECT_EQ(rewritten.substr(offset, length), std::u16string(c.part)) << String(c.pattern).toUtf8();
    }
  }
  for (const char16_t* hopeless :
       {u"*", u"***", u"?", u"??", u"*?*", u"a]", u"a[b", u"[", u"ab[", u"a[b[c]", u"[]", u"]"}) {
    EXPECT_EQ(typeOf(hopeless), T::kNoMatch) << String(hopeless).toUtf8();
  }
}

TEST(Wildcards, PatternMeasures) {
  auto min = [](std::u16string_view p) { return minWildcardLen(p.data(), p.data() + p.size()); };
  auto max = [](std::u16string_view p) { return maxWildcardLen(p.data(), p.data() + p.size()); };
  EXPECT_EQ(min(u"a*b?"), 3u);
  EXPECT_EQ(min(u"[abc]d"), 2u);
  EXPECT_EQ(min(u"[ab"), 1u);  // stops at the pattern's end
  EXPECT_EQ(max(u"a?[xy]"), 3u);
  EXPECT_EQ(max(u"a*"), NotFound);
  EXPECT_EQ(max(u""), 0u);
  EXPECT_EQ(wildcardLength(String(u"*ab[cd]*")), 3u);
  EXPECT_EQ(wildcardLength(String()), 0u);
  EXPECT_EQ(wildcardType(String(u"abc*")), WildcardType::kPrefix);
  EXPECT_EQ(wildcardType(String(u"*")), WildcardType::kNoMatch);
  EXPECT_EQ(wildcardType(String()), WildcardType::kPlain);
}

bool matches(std::u16string_view text, std::u16string_view pattern, bool unix) {
  const unichar* t = text.data();
  const unichar* p = pattern.data();
  return unix ? stringMatchesUnixWildcard(t, t + text.size(), p, p + pattern.size())
              : stringMatchesWildcard(t, t + text.size(), p, p + pattern.size());
}

TEST(Wildcards, Matchers) {
  struct Case {
    const char16_t* text;
    const char16_t* pattern;
    bool wildcard;
    bool unix;
  } cases[] = {
      {u"", u"", true, true},
      {u"a", u"", false, false},
      {u"", u"*", true, true},
      {u"", u"**", true, true},
      {u"", u"?", false, false},
      {u"abc", u"abc", true, true},
      {u"abc", u"ab", false, false},
      {u"abc", u"a?c", true, true},
      {u"abc", u"*c", true, true},
      {u"abc", u"a*", true, true},
      {u"abc", u"*b*", true, true},
      {u"abc", u"*d*", false, false},
      {u"abcbc", u"a*bc", true, true},
      {u"mississippi", u"m*iss*pi", true, true},
      {u"mississippi", u"m*iss*ppi?", false, false},
      {u"a[b]", u"a[b]", true, false},  // "[" is literal in the plain dialect
      {u"ab", u"a[b]", false, true},
      {u"dx", u"[^a-c]x", false, true},
      {u"bx", u"[^a-c]x", false, false},
      {u"a", u"[a|b]", false, true},
      {u"b", u"[a|b]", false, true},
      {u"|", u"[a|b]", false, false},
      {u"-", u"[a-]", false, true},
      {u"-", u"[-a]", false, true},
      {u"q", u"[a-z]", false, true},
      {u"Q", u"[a-z]", false, false},
      {u"b", u"[a-", false, false},  // unterminated, "-" at the very end holds nothing
      {u"a", u"[a", false, true},    // unterminated, but an item held
      {u"x", u"[^a", false, true},
      {u"a", u"[", false, false},  // "[" needs a further pattern unit
      {u"xaby", u"x*[ab]*y", false, true},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(matches(c.text, c.pattern, false), c.wildcard)
        << String(c.text).toUtf8() << " / " << String(c.pattern).toUtf8();
    EXPECT_EQ(matches(c.text, c.pattern, true), c.unix)
        << String(c.text).toUtf8() << " / " << String(c.pattern).toUtf8();
  }
}

TEST(Wildcards, MatchersWithTable) {
  const text::ConversionTable upper = text::upperCharsTable();
  std::u16string pattern = u"STR?SSE*[A-Z]";
  prepareWildcardUsingUnicharTable(pattern.data(), pattern.size(), upper);
  const std::u16string text = u"strasse-x";
  EXPECT_TRUE(stringMatchesUnixWildcardUsingUnicharTable(text.data(), text.data() + text.size(), pattern.data(),
                                                         pattern.data() + pattern.size(), upper));
  EXPECT_FALSE(stringMatchesUnixWildcard(text.data(), text.data() + text.size(), pattern.data(),
                                         pattern.data() + pattern.size()));
  EXPECT_TRUE(
      stringMatchesWildcardUsingUnicharTable(text.data(), text.data() + text.size(), u"STRA*", u"STRA*" + 5, upper));
}

TEST(Wildcards, WholeStringFront) {
  EXPECT_FALSE(isLikeWildcard(String(), String(u"*")));
  EXPECT_FALSE(isLikeWildcard(String::empty(), String(u"*")));
  EXPECT_FALSE(isLikeWildcard(String(u"abc"), String()));
  EXPECT_FALSE(isLikeWildcard(String(u"abc"), String::empty()));
  EXPECT_TRUE(isLikeWildcard(String(u"anything at all"), String(u"*")));
  EXPECT_TRUE(isLikeWildcard(String(u"report.pdf"), String(u"*.pdf")));
  EXPECT_FALSE(isLikeWildcard(String(u"report.PDF"), String(u"*.pdf")));
  EXPECT_TRUE(isCaseInsensitiveLikeWildcard(String(u"report.PDF"), String(u"*.pdf")));
  EXPECT_TRUE(isCaseInsensitiveLikeWildcard(String(u"\u00c4rger"), String(u"\u00e4r*")));
  EXPECT_FALSE(isLikeUnixWildcard(String(u"file7"), String(u"file[a-c]")));
  EXPECT_TRUE(isLikeUnixWildcard(String(u"file7"), String(u"file[0-9]")));
  EXPECT_TRUE(isCaseInsensitiveLikeUnixWildcard(String(u"FILEB"), String(u"file[a-c]")));
  EXPECT_FALSE(isLikeUnixWildcard(String(u"FILEB"), String(u"file[a-c]")));
  // Past the 256-unit stack buffer.
  const String longText(std::u16string(1000, u'x') + u"END");
  EXPECT_TRUE(isCaseInsensitiveLikeWildcard(longText, String(std::u16string(300, u'X') + u"*end")));
}

TEST(Wildcards, HostilePatternsFinish) {
  const std::u16string as(20000, u'a');
  const std::u16string pattern = u"*a*a*a*a*a*a*a*a*b";
  EXPECT_FALSE(matches(as, pattern, false));
  EXPECT_FALSE(matches(as, pattern, true));
  EXPECT_TRUE(matches(as + u"b", pattern, false));
  EXPECT_FALSE(matches(as + u"bc", pattern, false));
  const std::u16string brackets = u"*[a]*[a]*[a]*[a]*[ab]*[b]";
  EXPECT_FALSE(matches(as, brackets, true));
  EXPECT_TRUE(matches(as + u"ab", brackets, true));
  std::u16string questions = u"*";
  for (int i = 0; i < 200; ++i) questions += u"?*";
  questions += u"c";
  EXPECT_FALSE(matches(as, questions, false));
  EXPECT_TRUE(isLikeWildcard(String(as + u"c"), String(questions)));
}

// glibc's fnmatch, without escapes, agrees with our Unix dialect on this
// subset: units from a small ASCII alphabet in the C locale; "*", "?";
// bracket expressions that are closed, hold at least one member, start
// neither with "]" nor with "!", use no "[", "|" or "\" inside, and have
// ranges only in ascending order. Outside it the dialects differ on purpose
// ("[!a]", "[]a]", "|" and unterminated brackets).
std::string randomPattern(std::mt19937& random) {
  static const char kUnits[] = "abcd*?-";
  std::string pattern;
  const int size = std::uniform_int_distribution<int>(0, 8)(random);
  for (int i = 0; i < size; ++i) {
    if (std::uniform_int_distribution<int>(0, 5)(random) == 0) {
      pattern += '[';
      if (std::uniform_int_distribution<int>(0, 2)(random) == 0) pattern += '^';
      const int items = std::uniform_int_distribution<int>(1, 3)(random);
      for (int k = 0; k < items; ++k) {
        char lo = static_cast<char>('a' + std::uniform_int_distribution<int>(0, 3)(random));
        pattern += lo;
        if (std::uniform_int_distribution<int>(0, 2)(random) == 0) {
          pattern += '-';
          pattern += static_cast<char>(lo + std::uniform_int_distribution<int>(0, 'd' - lo)(random));
        }
      }
      pattern += ']';
    } else {
      pattern += kUnits[std::uniform_int_distribution<int>(0, sizeof(kUnits) - 2)(random)];
    }
  }
  return pattern;
}

std::string randomText(std::mt19937& random) {
  static const char kUnits[] = "abcd-";
  std::string text;
  const int size = std::uniform_int_distribution<int>(0, 10)(random);
  for (int i = 0; i < size; ++i) text += kUnits[std::uniform_int_distribution<int>(0, sizeof(kUnits) - 2)(random)];
  return text;
}

TEST(Wildcards, UnixMatcherAgreesWithFnmatch) {
  std::mt19937 random(20261122);
  size_t matched = 0;
  for (int round = 0; round < 60000; ++round) {
    const std::string pattern = randomPattern(random);
    const std::string text = randomText(random);
    const bool expected = fnmatch(pattern.c_str(), text.c_str(), FNM_NOESCAPE) == 0;
    ASSERT_EQ(matches(widen(text), widen(pattern), true), expected) << "'" << text << "' / '" << pattern << "'";
    if (pattern.find('[') == std::string::npos)
      ASSERT_EQ(matches(widen(text), widen(pattern), false), expected) << "'" << text << "' / '" << pattern << "'";
    matched += expected;
  }
  EXPECT_GT(matched, 2000u);  // the comparison saw both answers often
}

TEST(Wildcards, FuzzyScores) {
  auto score = [](std::u16string_view a, std::u16string_view b) {
    return stringMatchesUnixWildcardFuzzy(a.data(), a.size(), b.data(), b.size());
  };
  EXPECT_DOUBLE_EQ(score(u"house", u"mouse"), 0.8);
  EXPECT_DOUBLE_EQ(score(u"color", u"colour"), 25.0 / 36.0);
  EXPECT_DOUBLE_EQ(score(u"colour", u"color"), 25.0 / 36.0);
  EXPECT_DOUBLE_EQ(score(u"abcdefgh", u"abcdefhg"), 0.75);
  EXPECT_DOUBLE_EQ(score(u"same", u"same"), 1.0);
  EXPECT_DOUBLE_EQ(score(u"abc", u"xyz"), 0.0);
  EXPECT_DOUBLE_EQ(score(u"", u""), 0.0);
  EXPECT_DOUBLE_EQ(score(u"", u"abc"), 0.0);
  // A shifted word: positions all differ, but the units follow in order with one jump.
  EXPECT_DOUBLE_EQ(score(u"xabcd", u"abcd"), 4.0 * (1.0 - 0.0 / 5.0) / 5.0);
  const std::u16string a = u"HOUSE";
  const std::u16string b = u"mouse";
  EXPECT_DOUBLE_EQ(
      stringMatchesUnixWildcardFuzzyUsingUnicharTable(a.data(), a.size(), b.data(), b.size(), text::upperCharsTable()),
      0.8);
  EXPECT_DOUBLE_EQ(stringMatchesUnixWildcardFuzzy(a.data(), a.size(), b.data(), b.size()), 0.0);
  // Past the 512-flag stack block.
  const std::u16string longA(700, u'q');
  const std::u16string longB = std::u16string(699, u'q') + u"r";
  EXPECT_NEAR(score(longA, longB), 699.0 / 700.0, 1e-12);
}

TEST(Wildcards, Tables) {
  EXPECT_EQ(unicharTableForWildcardComparison(0), nullptr);
  EXPECT_EQ(unicharTableForWildcardComparison(kComparisonFuzzy), nullptr);
  EXPECT_EQ(unicharTableForWildcardComparison(1), text::upperCharsTable());
  EXPECT_EQ(unicharTableForWildcardComparison(2), text::umlautsCharsTable());
  EXPECT_EQ(unicharTableForWildcardComparison(3 | 4), text::upperUmlautsCharsTable());
  EXPECT_TRUE(isUnicharTablePartOfConversionTable(text::upperCharsTable(), text::upperCharsTable()));
  EXPECT_TRUE(isUnicharTablePartOfConversionTable(text::upperCharsTable(), text::upperUmlautsCharsTable()));
  EXPECT_TRUE(isUnicharTablePartOfConversionTable(text::lowerCharsTable(), text::lowerUmlautsCharsTable()));
  EXPECT_TRUE(isUnicharTablePartOfConversionTable(text::umlautsCharsTable(), text::lowerUmlautsCharsTable()));
  EXPECT_TRUE(isUnicharTablePartOfConversionTable(text::umlautsCharsTable(), text::upperUmlautsCharsTable()));
  EXPECT_FALSE(isUnicharTablePartOfConversionTable(text::upperCharsTable(), text::lowerUmlautsCharsTable()));
  EXPECT_FALSE(isUnicharTablePartOfConversionTable(nullptr, nullptr));
  EXPECT_FALSE(isUnicharTablePartOfConversionTable(text::upperCharsTable(), nullptr));
}

TEST(Wildcards, PatternWords) {
  bool hyphenated = false;
  EXPECT_TRUE(wordsUsingWildcardSeparation(String(), &hyphenated).empty());
  EXPECT_FALSE(hyphenated);
  const auto words = wordsUsingWildcardSeparation(String(u"ab* [c d]e, f?"), &hyphenated);
  ASSERT_EQ(words.size(), 3u);
  EXPECT_EQ(words[0], String(u"ab*"));
  EXPECT_EQ(words[1], String(u"[c d]e"));
  EXPECT_EQ(words[2], String(u"f?"));
  EXPECT_FALSE(hyphenated);
  wordsUsingWildcardSeparation(String(u"e-mail"), &hyphenated);
  EXPECT_TRUE(hyphenated);
  EXPECT_EQ(numberOfWordsUsingWildcardSeparation(String(u"a b*c ?")), 3u);
  EXPECT_EQ(numberOfWordsUsingWildcardSeparation(String()), 0u);
}

// --- Search in text ---

Range find(const char16_t* text, const char16_t* pattern, unsigned comparison = 0, size_t minCharacters = 1) {
  return rangeOfWildcard(String(text), String(pattern), comparison, minCharacters);
}

TEST(Wildcards, SearchByWordForms) {
  struct Case {
    const char16_t* text;
    const char16_t* pattern;
    unsigned comparison;
    Range expected;
  } cases[] = {
      {u"xx abcdef", u"abc*", 0, {3, 6}},  // the whole word, not the prefix
      {u"xx abcdef", u"*def", 0, {3, 6}},
      {u"xx abcdef", u"*cd*", 0, {3, 6}},
      {u"xx abcdef", u"*abcdef*", 0, {3, 6}},
      {u"xx abcdef", u"*abcdefg*", 0, NotFoundRange},
      {u"xx abcdef", u"bcd", 0, NotFoundRange},  // words are whole
      {u"xx abcdef", u"a?c*", 0, {3, 6}},
      {u"xx abcdef", u"a*e?", 0, {3, 6}},
      {u"xx abcdef", u"a*e", 0, NotFoundRange},
      {u"one two", u"t?o", 0, {4, 3}},
      {u"one two", u"t??o", 0, NotFoundRange},
      {u"The Quick", u"quick", 0, NotFoundRange},
      {u"The Quick", u"quick", kComparisonCaseInsensitive, {4, 5}},
      {u"ein M\u00fcller", u"muller", kComparisonCaseInsensitive, NotFoundRange},
      {u"ein M\u00fcller", u"muller", 3, {4, 6}},
      {u"ein M\u00fcller", u"Muller", kComparisonDiacriticInsensitive, {4, 6}},
      {u"ab bx dx", u"[^a-c]x", 0, {6, 2}},
      {u"zz b a", u"[a|b]", 0, {3, 1}},
      {u"x1 x7 xz", u"x[5-9]", 0, {3, 2}},
      {u"hello x7 xz", u"[w-z]*", 0, {6, 2}},
      {u"hello x7 xz", u"*[z]", 0, {9, 2}},
      {u"hello x7 xz", u"*[7-9]*", 0, {6, 2}},
      {u"a mouse", u"house", kComparisonFuzzy, {2, 5}},
      {u"a colour", u"color", kComparisonFuzzy, NotFoundRange},
      {u"a abcdefhg", u"abcdefgh", kComparisonFuzzy, {2, 8}},
      {u"a MOUSE", u"house", kComparisonFuzzy | kComparisonCaseInsensitive, {2, 5}},
      {u"a mouse", u"house", 0, NotFoundRange},
      {u"a[]b ab a", u"a[]", 0, {0, 1}},  // "[]" vanishes: the plain word a
      {u"a b", u"a]", 0, NotFoundRange},
      {u"a b", u"a[b", 0, NotFoundRange},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(find(c.text, c.pattern, c.comparison), c.expected)
        << String(c.text).toUtf8() << " / " << String(c.pattern).toUtf8();
  }
}

TEST(Wildcards, MinimumCharacters) {
  EXPECT_EQ(find(u"xx abcd", u"ab*", 0, 3), NotFoundRange);
  EXPECT_EQ(find(u"xx abcd", u"ab*", 0, 2), (Range{3, 4}));
  EXPECT_EQ(find(u"xx ab", u"ab", 0, 3), (Range{3, 2}));
}

TEST(Wildcards, FuzzyThresholdIsProcessWide) {
  EXPECT_DOUBLE_EQ(minWildcardFuzzyAnalogy(), 0.75);
  setMinWildcardFuzzyAnalogy(0.6);
  EXPECT_EQ(find(u"a colour", u"color", kComparisonFuzzy), (Range{2, 6}));
  setMinWildcardFuzzyAnalogy(0.75);
  EXPECT_EQ(find(u"a colour", u"color", kComparisonFuzzy), NotFoundRange);
}

TEST(Wildcards, LoneStar) {
  const String text(u" one, two three ");
  auto e = FastWordEnumerator::enumeratorWithString(text);
  const std::u16string star = u"*";
  auto findStar = [&](size_t start, size_t end, bool lone, bool selects, bool forward) {
    return FindWildcardInCharacters(*e, start, end, star.data(), 1, 0, 1, false, forward, lone, selects);
  };
  EXPECT_EQ(findStar(0, 16, false, false, true), NotFoundRange);
  EXPECT_EQ(findStar(2, 12, true, false, true), (Range{2, 10}));
  EXPECT_EQ(findStar(2, 12, true, true, true), (Range{6, 3}));
  EXPECT_EQ(findStar(2, 12, true, true, false), (Range{6, 3}));
  EXPECT_EQ(findStar(0, 16, true, true, false), (Range{10, 5}));
  const std::u16string stars = u"***";  // reduced to one star
  EXPECT_EQ(FindWildcardInCharacters(*e, 0, 16, stars.data(), 3, 0, 1, false, true, true, true), (Range{1, 3}));
  EXPECT_EQ(find(u"one two", u"*"), NotFoundRange);
  EXPECT_EQ(find(u"one two", u"**"), NotFoundRange);
}

TEST(Wildcards, AnchoredAndBackward) {
  //                   0123456789012345678901
  const String text(u"cat dog cart cow coat");
  auto e = FastWordEnumerator::enumeratorWithString(text);
  auto search = [&](std::u16string_view pattern, size_t start, size_t end, bool anchored, bool forward) {
    return FindWildcardInCharacters(*e, start, end, pattern.data(), pattern.size(), 0, 1, anchored, forward, false,
                                    false);
  };
  EXPECT_EQ(search(u"c*t", 0, 21, false, true), (Range{0, 3}));
  EXPECT_EQ(search(u"c*t", 1, 21, false, true), (Range{8, 4}));
  EXPECT_EQ(search(u"c*t", 0, 21, false, false), (Range{17, 4}));
  EXPECT_EQ(search(u"c*t", 0, 17, false, false), (Range{8, 4}));
  EXPECT_EQ(search(u"c*t", 0, 8, false, false), (Range{0, 3}));
  EXPECT_EQ(search(u"c*t", 9, 12, false, false), (Range{8, 4}));  // its end lies in the span
  EXPECT_EQ(search(u"c*t", 3, 8, false, false), NotFoundRange);
  EXPECT_EQ(search(u"c*t", 3, 21, true, true), NotFoundRange);  // the first word is dog
  EXPECT_EQ(search(u"d?g", 3, 21, true, true), (Range{4, 3}));
  EXPECT_EQ(search(u"cow", 0, 21, true, false), NotFoundRange);  // the last word is coat
  EXPECT_EQ(search(u"c*", 5, 5, false, true), NotFoundRange);
  EXPECT_EQ(search(u"cat", 0, 100, false, true), (Range{0, 3}));
  EXPECT_EQ(search(u"coat", 0, 100, false, false), (Range{17, 4}));
  const std::u16string longPattern = std::u16string(300, u'x') + u"*";
  EXPECT_EQ(search(longPattern, 0, 21, false, true), NotFoundRange);
}

TEST(Wildcards, Phrases) {
  struct Case {
    const char16_t* text;
    const char16_t* pattern;
    Range expected;
  } cases[] = {
      {u"x a, b", u"a b", {2, 4}},  // separators between words do not matter
      {u"the quick brown fox", u"quick brown", {4, 11}},
      {u"the quick brown fox", u"qu* br*", {4, 11}},
      {u"the quick brown fox", u"quick * fox", {4, 15}},  // "*" stands for one word
      {u"the quick fox", u"quick * fox", NotFoundRange},
      {u"the quick brown red fox", u"quick * fox", NotFoundRange},
      {u"quick dog, quick brown fox", u"quick brown", {11, 11}},
      {u"the quick brown fox", u"brown quick", NotFoundRange},
      {u"send email now", u"e-mail", {5, 5}},  // the hyphen compound written solid
      {u"send e - mail now", u"e-mail", {5, 8}},
      {u"send e mail now", u"E-MAIL", NotFoundRange},
      {u"the u.s.a. and usa", u"u.s.a", {4, 5}},
      {u"only usa here", u"u.s.a", {5, 3}},
      {u"\"quoted\" words", u"\"words\"", {9, 5}},  // one word: its quotes fall away
  };
  for (const Case& c : cases) {
    EXPECT_EQ(find(c.text, c.pattern), c.expected) << String(c.text).toUtf8() << " / " << String(c.pattern).toUtf8();
  }
  EXPECT_EQ(find(u"send e mail now", u"E-MAIL", kComparisonCaseInsensitive), (Range{5, 6}));
}

TEST(Wildcards, PhrasesBackward) {
  //                   0123456789012345678901234567
  const String text(u"red fox, red dog, red fox end");
  auto e = FastWordEnumerator::enumeratorWithString(text);
  EXPECT_EQ(FindWildcardStringInCharacters(*e, 0, text.length(), String(u"red fox"), 0, 1, false, false),
            (Range{18, 7}));
  EXPECT_EQ(FindWildcardStringInCharacters(*e, 0, 17, String(u"red fox"), 0, 1, false, false), (Range{0, 7}));
  EXPECT_EQ(FindWildcardStringInCharacters(*e, 0, text.length(), String(u"red fox"), 0, 1, true, false), (Range{0, 7}));
  EXPECT_EQ(FindWildcardStringInCharacters(*e, 1, text.length(), String(u"red fox"), 0, 1, true, false),
            (Range{18, 7}));
  EXPECT_EQ(FindWildcardStringInCharacters(*e, 0, text.length(), String(), 0, 1, true, false), NotFoundRange);
  EXPECT_EQ(FindWildcardStringInCharacters(*e, 0, text.length(), String(u"*"), 0, 1, true, true), (Range{0, 29}));
}

TEST(Wildcards, SeveralPatterns) {
  //                   0123456789012345678901234
  const String text(u"alpha beta gamma beta end");
  const std::vector<String> patterns{String(u"gam*"), String(u"be?a"), String(u"nothing")};
  EXPECT_EQ(findNextWildcard(text, patterns, 0, 1), (Range{6, 4}));
  EXPECT_EQ(findNextWildcard(text, {String(u"be?a"), String(u"gam*")}, 0, 1), (Range{6, 4}));
  EXPECT_EQ(findNextWildcard(text, patterns, Range{7, 100}, 0, 1), (Range{11, 5}));
  EXPECT_EQ(findPreviousWildcard(text, patterns, 0, 1), (Range{17, 4}));
  EXPECT_EQ(findPreviousWildcard(text, {String(u"gam*"), String(u"alpha")}, 0, 1), (Range{11, 5}));
  EXPECT_EQ(findPreviousWildcard(text, patterns, Range{0, 16}, 0, 1), (Range{11, 5}));
  // At the same location the earlier pattern's hit stands.
  EXPECT_EQ(findNextWildcard(text, {String(u"beta"), String(u"beta gamma")}, 0, 1), (Range{6, 4}));
  EXPECT_EQ(findNextWildcard(text, {String(u"beta gamma"), String(u"beta")}, 0, 1), (Range{6, 10}));
  EXPECT_EQ(findNextWildcard(String(), patterns, 0, 1), NotFoundRange);
  EXPECT_EQ(findNextWildcard(text, {}, 0, 1), NotFoundRange);
  EXPECT_EQ(rangeOfWildcard(text, String(), 0, 1), NotFoundRange);
  EXPECT_EQ(rangeOfWildcard(text, String(u"beta"), Range{8, 100}, 0, 1), (Range{17, 4}));

  EXPECT_TRUE(containsAnyWildcard(text, patterns, 0, 1));
  EXPECT_FALSE(containsAnyWildcard(text, {String(u"zeta"), String(u"*")}, 0, 1));
  EXPECT_FALSE(containsAnyWildcard(String(), patterns, 0, 1));
  auto e = FastWordEnumerator::enumeratorWithString(text);
  EXPECT_FALSE(containsAnyWildcard(*e, {String(u"end")}, 22, 0, 1));
  EXPECT_TRUE(containsAnyWildcard(*e, {String(u"end")}, 25, 0, 1));
  EXPECT_FALSE(containsAnyWildcard(*e, {String(u"end")}, 0, 0, 1));
}

TEST(Wildcards, WordListsAndMatchedStrings) {
  const String text(u"The quick brown fox; QUICK Brown cat, quick BROWN fox");
  EXPECT_EQ(rangeOfWildcardWords(text, {String(u"brown"), String(u"fox")}, 0, 1), (Range{10, 9}));
  EXPECT_EQ(rangeOfWildcardWords(text, {String(u"quick")}, 0, 1), (Range{4, 5}));
  EXPECT_EQ(rangeOfWildcardWords(text, {String(u"brown"), String(u"cat")}, kComparisonCaseInsensitive, 1),
            (Range{27, 9}));
  EXPECT_EQ(rangeOfWildcardWords(text, {}, 0, 1), NotFoundRange);

  const auto exact = findStringsMatchingWildcards(text, {String(u"quick b*")}, 0, 1);
  ASSERT_EQ(exact.size(), 1u);
  EXPECT_EQ(exact[0], String(u"quick brown"));  // the later "quick BROWN" differs
  const auto folded =
      findStringsMatchingWildcards(text, {String(u"quick b*"), String(u"c?t")}, kComparisonCaseInsensitive, 1);
  ASSERT_EQ(folded.size(), 2u);
  EXPECT_EQ(folded[0], String(u"quick brown"));
  EXPECT_EQ(folded[1], String(u"cat"));
  EXPECT_TRUE(findStringsMatchingWildcards(String(), {String(u"a")}, 0, 1).empty());
  EXPECT_TRUE(findStringsMatchingWildcards(text, {String(u"zebra")}, 0, 1).empty());
}

}  // namespace
}  // namespace norvane::query

namespace norvane::query {
namespace {

// Python manual pages, tags stripped crudely; empty if the package is absent.
String pythonDocText(size_t files) {
  const std::filesystem::path root = "/usr/share/doc/python3.11/html/library";
  std::error_code error;
  if (!std::filesystem::is_directory(root, error)) return String();
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::directory_iterator(root, error))
    if (entry.path().extension() == ".html") paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  std::string text;
  for (size_t i = 0; i < paths.size() && i < files; ++i) {
    std::ifstream in(paths[i], std::ios::binary);
    std::stringstream buffer;
    buffer << in.rdbuf();
    bool inTag = false;
    for (char c : buffer.str()) {
      if (c == '<') inTag = true;
      if (!inTag) text += c;
      if (c == '>') inTag = false;
    }
  }
  return String::fromUtf8(text);
}

// The word-wise search, with its shortcuts per pattern form, against the
// general matcher applied to every word of a real text, in both directions.
TEST(Wildcards, SearchAgreesWithMatcherOnRealText) {
  const String text = pythonDocText(8);
  if (text.isEmpty()) GTEST_SKIP() << "python3.11-doc is not installed";
  auto e = FastWordEnumerator::enumeratorWithString(text);
  const char16_t* patterns[] = {u"return", u"inter*", u"*tion",   u"*ing*",   u"f?le",           u"py*n",  u"*e?",
                                u"[a-c]*", u"*[0-9]", u"[^a-z]*", u"s[a-z]?", u"*[aeiou]*[xyz]", u"i*n*g", u"RETURN"};
  size_t total = 0;
  for (const char16_t* p : patterns) {
    const String pattern(p);
    for (unsigned comparison : {0u, kComparisonCaseInsensitive}) {
      const bool insensitive = comparison & kComparisonCaseInsensitive;
      std::vector<Range> expected;
      e->enumerateWordsInRange({0, text.length()}, [&](const FastWordEnumerator& en, size_t l, size_t n) {
        const String word = en.substringWithRange({l, n});
        if (insensitive ? isCaseInsensitiveLikeUnixWildcard(word, pattern) : isLikeUnixWildcard(word, pattern))
          expected.push_back({l, n});
        return false;
      });
      std::vector<Range> forward;
      for (size_t from = 0;;) {
        const Range hit = FindWildcardInCharacters(*e, from, text.length(), pattern.data(), pattern.length(),
                                                   comparison, 1, false, true, false, false);
        if (!hit.found()) break;
        forward.push_back(hit);
        from = hit.end();
      }
      std::vector<Range> backward;
      for (size_t to = text.length();;) {
        const Range hit = FindWildcardInCharacters(*e, 0, to, pattern.data(), pattern.length(), comparison, 1, false,
                                                   false, false, false);
        if (!hit.found()) break;
        backward.insert(backward.begin(), hit);
        to = hit.location;
      }
      EXPECT_EQ(forward, expected) << pattern.toUtf8() << " comparison " << comparison;
      EXPECT_EQ(backward, expected) << pattern.toUtf8() << " comparison " << comparison;
      total += expected.size();
    }
  }
  EXPECT_GT(total, 1000u);
}

}  // namespace
}  // namespace norvane::query
