#include <gtest/gtest.h>

#include "norvane/text/text_finding.h"

namespace norvane::text {
namespace {

String S(std::string_view utf8) {
  return String::fromUtf8(utf8);
}

TEST(TextFinding, ContainsAndCounts) {
  String s = S("The cat sat on the Mat");
  EXPECT_TRUE(containsSubstring(s, S("cat")));
  EXPECT_FALSE(containsSubstring(s, S("CAT")));
  EXPECT_TRUE(containsSubstring(s, S("CAT"), false));
  EXPECT_TRUE(containsSubstring(s, S("Mat")));
  EXPECT_TRUE(containsSubstring(s, s));
  EXPECT_FALSE(containsSubstring(s, S("")));
  EXPECT_FALSE(containsSubstring(s, String()));
  EXPECT_FALSE(containsSubstring(S(""), S("a")));
  EXPECT_FALSE(containsSubstring(String(), S("a")));
  EXPECT_TRUE(containsSubstring(S("GRÜN"), S("grün"), false));

  EXPECT_TRUE(containsSubstrings(s, {S("dog"), S("sat")}));
  EXPECT_FALSE(containsSubstrings(s, {S("dog"), S("SAT")}));
  EXPECT_TRUE(containsSubstrings(s, {S("dog"), S("SAT")}, false));
  EXPECT_FALSE(containsSubstrings(s, {S("dog"), String(), S("sat")}));
  EXPECT_FALSE(containsSubstrings(s, {}));

  EXPECT_EQ(countSubstring(s, S("at")), 3u);
  EXPECT_EQ(countSubstring(s, S("the")), 1u);
  EXPECT_EQ(countSubstring(s, S("the"), false), 2u);
  EXPECT_EQ(countSubstring(S("aaaa"), S("aa")), 2u);
  EXPECT_EQ(countSubstring(S("aaa"), S("aa")), 1u);
  EXPECT_EQ(countSubstring(s, String()), 0u);
  EXPECT_EQ(countSubstring(String(), S("a")), 0u);
}

TEST(TextFinding, FindStringAroundTheSelection) {
  //                0123456789012345678
  String s = S("ab xx ab yy ab zz");  // hits at 0, 6, 12
  struct Case {
    Range selection;
    bool forward;
    bool wrap;
    size_t expected;
  } cases[] = {
      {{0, 0}, true, false, 0},         {{0, 2}, true, false, 6},  {{6, 2}, true, false, 12},
      {{12, 2}, true, false, NotFound}, {{12, 2}, true, true, 0},  {{13, 0}, true, true, 0},
      {{7, 0}, true, false, 12},        {{6, 2}, false, false, 0}, {{12, 2}, false, false, 6},
      {{0, 2}, false, false, NotFound}, {{0, 2}, false, true, 12}, {{17, 0}, false, false, 12},
      {{100, 5}, false, false, 12},     {{100, 5}, true, true, 0}, {{5, 0}, false, false, 0},
  };
  for (const Case& c : cases) {
    Range found = findString(s, S("ab"), c.selection, true, c.forward, c.wrap);
    EXPECT_EQ(found.location, c.expected)
        << c.selection.location << "+" << c.selection.length << (c.forward ? " fwd" : " back") << c.wrap;
    if (found.found()) EXPECT_EQ(found.length, 2u);
  }
}

TEST(TextFinding, SelectionOnTheOnlyHitIsNeverFound) {
  String s = S("one needle here");
  Range hit = findString(s, S("needle"), Range{0, 0}, true, true, true);
  ASSERT_EQ(hit, (Range{4, 6}));
  EXPECT_EQ(findString(s, S("needle"), hit, true, true, true), NotFoundRange);
  EXPECT_EQ(findString(s, S("needle"), hit, true, false, true), NotFoundRange);
  // A hit that straddles the selection's edge lies in neither half.
  EXPECT_EQ(findString(s, S("needle"), Range{6, 0}, true, true, true), NotFoundRange);
}

TEST(TextFinding, FindStringCaseAndNulls) {
  String s = S("Alpha beta ALPHA");
  EXPECT_EQ(findString(s, S("alpha"), Range{0, 0}, true, true, true), NotFoundRange);
  EXPECT_EQ(findString(s, S("alpha"), Range{0, 0}, false, true, false), (Range{0, 5}));
  EXPECT_EQ(findString(s, S("alpha"), Range{0, 5}, false, true, false), (Range{11, 5}));
  EXPECT_EQ(findString(s, S("alpha"), Range{11, 5}, false, false, false), (Range{0, 5}));
  EXPECT_EQ(findString(String(), S("a"), Range{0, 0}, true, true, true), NotFoundRange);
  EXPECT_EQ(findString(s, String(), Range{0, 0}, true, true, true), NotFoundRange);
  EXPECT_EQ(findString(s, S(""), Range{0, 0}, true, true, true), NotFoundRange);
}

TEST(ArrayFinding, ExactAndNoCase) {
  std::vector<String> array = {S("Apple"), String(), S("pear"), S("ÉCOLE"), S("pear")};
  EXPECT_EQ(indexOfStringEqualTo(array, S("pear")), 2u);
  EXPECT_EQ(indexOfStringEqualTo(array, S("apple")), NotFound);
  EXPECT_EQ(indexOfStringEqualToNoCase(array, S("apple")), 0u);
  EXPECT_EQ(indexOfStringEqualToNoCase(array, S("école")), 3u);
  EXPECT_EQ(indexOfStringEqualTo(array, S("")), NotFound);
  EXPECT_EQ(indexOfStringEqualTo(array, String()), NotFound);
  EXPECT_EQ(indexOfStringEqualToNoCase(array, String()), NotFound);
  EXPECT_TRUE(containsString(array, S("Apple")));
  EXPECT_FALSE(containsString(array, S("APPLE")));
  EXPECT_TRUE(containsStringNoCase(array, S("APPLE")));
  EXPECT_FALSE(containsStringNoCase({}, S("APPLE")));
}

}  // namespace
}  // namespace norvane::text
