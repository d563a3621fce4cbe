#include "norvane/query/evaluation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "norvane/core/log.h"
#include "norvane/core/unicode.h"
#include "norvane/query/query_terms.h"

namespace norvane::query {
namespace {

std::u16string u16(std::string_view s) {
  return utf8ToUtf16(s);
}

const char kSample[] =
    "Lorem ipsum dolor sit amet, consetetur sadipscing elitr, sed diam nonumy eirmod tempor invidunt ut labore et "
    "dolore magna aliquyam erat. At vero eos et accusam et justo duo dolores et ea rebum.";

struct TableRow {
  const char* query;
  bool expected;
};

// Queries on the sample text, wildcard mode, case-insensitive.
const TableRow kTable[] = {
    {"tempor AND duo", true},
    {"tempor AND NOT duo", false},
    {"tempor AND missing", false},
    {"tempor AND NOT missing", true},
    {"tempor OR duo", true},
    {"tempor OR NOT duo", true},
    {"tempor OR missing", true},
    {"tempor OR NOT missing", true},
    {"tempor XOR duo", false},
    {"tempor XOR NOT duo", true},
    {"tempor XOR missing", true},
    {"tempor XOR NOT missing", false},
    {"tempor NEAR labore", true},
    {"tempor NEAR/2 labore", false},
    {"tempor BEFORE labore", true},
    {"tempor BEFORE/2 labore", false},
    {"tempor AFTER labore", false},
    {"tempor AFTER/2 labore", false},
    {"labore AFTER tempor", true},
    {"labore AFTER/2 tempor", false},
    {"tempor NEXT invidunt", true},
    {"tempor NEXT NOT invidunt", false},
    {"tempor NEXT missing", false},
    {"tempor NEXT NOT missing", true},
    {"tempor NOT NEAR labore", false},
    {"tempor NOT NEAR/2 labore", true},
    {"tempor NOT BEFORE labore", false},
    {"tempor NOT BEFORE/2 labore", true},
    {"tempor NOT AFTER labore", true},
    {"tempor NOT AFTER/2 labore", true},
    {"labore NOT AFTER tempor", false},
    {"labore NOT AFTER/2 tempor", true},
    {"tempor NEAR missing", false},
    {"tempor NEAR/2 missing", false},
    {"tempor BEFORE missing", false},
    {"tempor BEFORE/2 missing", false},
    {"tempor AFTER missing", false},
    {"tempor AFTER/2 missing", false},
    {"labore AFTER missing", false},
    {"labore AFTER/2 missing", false},
    {"tempor NOT NEAR missing", true},
    {"tempor NOT NEAR/2 missing", true},
    {"tempor NOT BEFORE missing", true},
    {"tempor NOT BEFORE/2 missing", true},
    {"tempor NOT AFTER missing", true},
    {"tempor NOT AFTER/2 missing", true},
    {"labore NOT AFTER missing", true},
    {"labore NOT AFTER/2 missing", true},
};

struct Delivered {
  std::string term;
  size_t location;
  size_t length;
  bool primary;
  friend bool operator==(const Delivered&, const Delivered&) = default;
};

std::vector<Delivered> occurrences(const QueryTerms& tree, const String& text, bool caseSensitive = false) {
  std::vector<Delivered> out;
  enumerateString(tree, text, {0, text.length()}, caseSensitive,
                  [&](const FastWordEnumerator&, const String& term, Range range, bool primary) {
                    out.push_back({term.toUtf8(), range.location, range.length, primary});
                  });
  return out;
}

TEST(QueryEvaluation, SampleTableThroughEvaluation) {
  String text = String::fromUtf8(kSample);
  for (const TableRow& row : kTable) {
    QueryTerms tree = QueryTerms::withWildcard(u16(row.query));
    EXPECT_EQ(matchesStringWithComparison(tree, text, 1), row.expected) << row.query;
    // The words of the table are whole words, so word mode agrees.
    EXPECT_EQ(matchesString(QueryTerms::withString(u16(row.query)), text, false), row.expected) << row.query;
  }
}

TEST(QueryEvaluation, SampleTableThroughEnumeration) {
  // A matching tree of the table always has a term of its own to report;
  // one that does not match reports nothing.
  String text = String::fromUtf8(kSample);
  for (const TableRow& row : kTable) {
    std::vector<Delivered> found = occurrences(QueryTerms::withWildcard(u16(row.query)), text);
    EXPECT_EQ(!found.empty(), row.expected) << row.query;
    for (const Delivered& d : found) {
      EXPECT_NE(d.term, "missing") << row.query;
      std::u16string_view hit = text.view().substr(d.location, d.length);
      EXPECT_TRUE(hit == u16(d.term) || d.term == "tempor" || d.term == "labore" || d.term == "duo" ||
                  d.term == "invidunt")
          << row.query;
    }
  }
}

TEST(QueryEvaluation, SelfCheckAgreesWithTheTable) {
  // The library's own table is the one above, and its self-check passes.
  ASSERT_EQ(queryTestCases().size(), std::size(kTable));
  for (size_t i = 0; i < std::size(kTable); ++i) {
    EXPECT_STREQ(queryTestCases()[i].query, kTable[i].query);
    EXPECT_EQ(queryTestCases()[i].expected, kTable[i].expected) << kTable[i].query;
  }
  EXPECT_EQ(queryTestString(), String::fromUtf8(kSample));
  LogCapture capture;
  EXPECT_TRUE(testQueryTerms());
  std::vector<std::string> messages = capture.messages();
  ASSERT_EQ(messages.size(), 48u);
  EXPECT_EQ(messages[0], "Success: tempor AND duo => Yes");
  EXPECT_EQ(messages[1], "Success: tempor AND NOT duo => No");
}

TEST(QueryEvaluation, ProximityDistances) {
  String text = String::fromUtf8(kSample);
  struct Case {
    const char* query;
    bool expected;
  } cases[] = {
      {"tempor NEXT invidunt", true},
      {"invidunt NEXT tempor", false},
      {"tempor BEFORE/3 labore", true},
      {"tempor BEFORE/2 labore", false},
      {"tempor NEAR/0 rebum", true},
      {"rebum NEAR/0 lorem", true},
      {"lorem NEAR/0 missing", false},
      {"labore NEAR/3 tempor", true},
      {"labore NEAR/2 tempor", false},
      {"ea AFTER/1 rebum", false},
      {"rebum AFTER/1 ea", true},
      {"ea NEXT rebum", true},
      {"lorem OPT missing", true},
      {"missing OPT lorem", false},
      {"tempor (invidunt OR missing)", true},
      // A group right of a proximity operator hands the operator on.
      {"tempor NEXT (invidunt OR missing)", true},
      {"tempor NEXT (missing OR ut)", false},
      // Only the term directly before a proximity operator is looked at.
      {"rebum OR tempor NEXT invidunt", true},
      {"rebum OR lorem NEXT invidunt", false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(matchesStringWithComparison(QueryTerms::withWildcard(u16(c.query)), text, 1), c.expected) << c.query;
  }
}

TEST(QueryEvaluation, WordModeAnchoringAndSubstrings) {
  String text(u"The temporal lobe; tempo.");
  EXPECT_FALSE(matchesString(QueryTerms::withString(u"tempor"), text, true));
  EXPECT_TRUE(matchesString(QueryTerms::withString(u"~tempor"), text, true));
  EXPECT_TRUE(matchesString(QueryTerms::withString(u"TEMPO"), text, false));
  EXPECT_FALSE(matchesString(QueryTerms::withString(u"TEMPO"), text, true));
  EXPECT_TRUE(matchesString(QueryTerms::withString(u"\"temporal lobe\""), text, true));
  EXPECT_FALSE(matchesString(QueryTerms::withString(u"\"temporal  lobe\""), text, true));
  // Wildcard mode: ~tempor becomes *tempor*.
  EXPECT_TRUE(matchesStringWithComparison(QueryTerms::withWildcard(u"~empor"), text, 0));
  EXPECT_TRUE(matchesStringWithComparison(QueryTerms::withWildcard(u"temp*"), text, 0));
  EXPECT_FALSE(matchesStringWithComparison(QueryTerms::withWildcard(u"tempor"), text, 0));
}

TEST(QueryEvaluation, EmptyInputs) {
  QueryTerms empty = QueryTerms::withString(u"");
  EXPECT_FALSE(matchesString(empty, String(u"anything"), false));
  QueryTerms notA = QueryTerms::withString(u"NOT a");
  EXPECT_TRUE(matchesString(notA, String(u"b c"), false));
  EXPECT_FALSE(matchesString(notA, String(u""), false));
  EXPECT_FALSE(matchesString(notA, String(), false));
  EXPECT_FALSE(matchesStringWithComparison(notA, String(), 1));
  EXPECT_FALSE(containsString(QueryTerms::withString(u"a"), String(), false));
}

TEST(QueryEvaluation, AnyTermTest) {
  String text(u"red green blue");
  EXPECT_TRUE(containsString(QueryTerms::withString(u"yellow OR green"), text, true));
  EXPECT_TRUE(containsString(QueryTerms::withString(u"yellow AND green"), text, true));
  EXPECT_FALSE(containsString(QueryTerms::withString(u"yellow -green"), text, true));
  EXPECT_FALSE(containsString(QueryTerms::withString(u"gree"), text, true));
  EXPECT_TRUE(containsString(QueryTerms::withString(u"~gree"), text, true));
  EXPECT_TRUE(containsStringWithComparison(QueryTerms::withWildcard(u"BL?E"), text, 1));
  EXPECT_FALSE(containsStringWithComparison(QueryTerms::withWildcard(u"BL?E"), text, 0));
}

TEST(QueryEvaluation, MinTermLen) {
  EXPECT_EQ(minTermLen(QueryTerms::withString(u"alpha be -c (d e) -(f g)")), 1u);
  EXPECT_EQ(minTermLen(QueryTerms::withString(u"alpha be -c")), 2u);
  EXPECT_EQ(minTermLen(QueryTerms::withString(u"-alpha")), 0u);
  EXPECT_EQ(minTermLen(QueryTerms::withString(u"")), 0u);
}

TEST(QueryOccurrences, OrReportsBothTerms) {
  String text(u"one two three two");
  std::vector<Delivered> found = occurrences(QueryTerms::withWildcard(u"two OR one"), text);
  std::vector<Delivered> expected = {{"one", 0, 3, true}, {"two", 4, 3, true}, {"two", 14, 3, true}};
  EXPECT_EQ(found, expected);
}

TEST(QueryOccurrences, NearReportsAnchorsAsSecondary) {
  String text(u"a x b y y y y b a");
  // b at 4 has a (0) within one word; b at 14 has a (16) beside it.
  std::vector<Delivered> found = occurrences(QueryTerms::withWildcard(u"a NEAR/2 b"), text);
  std::vector<Delivered> expected = {{"a", 0, 1, true}, {"b", 4, 1, false}, {"b", 14, 1, false}, {"a", 16, 1, true}};
  EXPECT_EQ(found, expected);
  // A b without an a in its window is not reported.
  String lonely(u"a x y y y y y b");
  expected = {};
  EXPECT_EQ(occurrences(QueryTerms::withWildcard(u"a NEAR/2 b"), lonely), expected);
}

TEST(QueryOccurrences, FailingTreesReportNothing) {
  String text(u"alpha beta gamma");
  EXPECT_TRUE(occurrences(QueryTerms::withWildcard(u"alpha AND missing"), text).empty());
  EXPECT_TRUE(occurrences(QueryTerms::withWildcard(u"alpha -beta"), text).empty());
  std::vector<Delivered> expected = {{"gamma", 11, 5, true}};
  EXPECT_EQ(occurrences(QueryTerms::withWildcard(u"(alpha missing) OR gamma"), text), expected);
}

TEST(QueryOccurrences, OverlapsGoToTheFirst) {
  // The phrase covers both later hits; the one inside it must not let the
  // last one through.
  String text(u"aa bb cc");
  std::vector<Delivered> expected = {{"aa * cc", 0, 8, true}};
  EXPECT_EQ(occurrences(QueryTerms::withWildcard(u"\"aa * cc\" OR bb OR cc"), text), expected);
}

TEST(QueryOccurrences, CaseAndRange) {
  String text(u"Alpha alpha ALPHA");
  EXPECT_EQ(occurrences(QueryTerms::withWildcard(u"alpha"), text).size(), 3u);
  EXPECT_EQ(occurrences(QueryTerms::withWildcard(u"alpha"), text, true).size(), 1u);
  size_t count = 0;
  enumerateString(QueryTerms::withWildcard(u"alpha"), text, {6, 5}, false,
                  [&](const FastWordEnumerator&, const String&, Range range, bool) {
                    EXPECT_EQ(range, (Range{6, 5}));
                    ++count;
                  });
  EXPECT_EQ(count, 1u);
  enumerateString(QueryTerms::withWildcard(u"alpha"), text, {40, 5}, false,
                  [&](const FastWordEnumerator&, const String&, Range, bool) { ++count; });
  EXPECT_EQ(count, 1u);
}

TEST(QueryOccurrences, SeveralTreesDeliveredOnce) {
  String text(u"red green blue green");
  std::vector<QueryTerms> trees = {QueryTerms::withWildcard(u"green"), QueryTerms::withWildcard(u"blue OR gr*")};
  std::vector<std::pair<size_t, bool>> seen;
  enumerateQueryTerms(text, trees, {0, NotFound}, false,
                      [&](const FastWordEnumerator&, const String&, Range range, bool primary) {
                        seen.push_back({range.location, primary});
                      });
  std::vector<std::pair<size_t, bool>> expected = {{4, true}, {10, true}, {15, true}};
  EXPECT_EQ(seen, expected);
}

TEST(QuerySearch, FindWordInStringAnchoring) {
  auto e = FastWordEnumerator::enumeratorWithString(String(u"xtempor tempor temporal"));
  ASSERT_TRUE(e);
  EXPECT_EQ(FindWordInString(*e, 0, e->length(), u"tempor", 6, 0, true), 8u);
  EXPECT_EQ(FindWordInString(*e, 0, e->length(), u"tempor", 6, 0, false), 1u);
  EXPECT_EQ(FindWordInString(*e, 0, e->length(), u"TEMPOR", 6, kSearchCaseInsensitive, true), 8u);
  EXPECT_EQ(FindWordInString(*e, 0, e->length(), u"TEMPOR", 6, 0, true), NotFound);
  EXPECT_EQ(FindWordInString(*e, 0, e->length(), u"tempor", 6, kSearchBackwards, false), 15u);
  EXPECT_EQ(FindWordInString(*e, 0, e->length(), u"tempor", 6, kSearchBackwards, true), 8u);
  // The edges of the span count as word edges: the span cuts "temporal".
  EXPECT_EQ(FindWordInString(*e, 15, 6, u"tempor", 6, 0, true), 15u);
  EXPECT_EQ(FindWordInString(*e, 1, 6, u"tempor", 6, 0, true), 1u);
  EXPECT_EQ(FindWordInString(*e, 3, 40, u"*", 1, 0, true), 3u);
  EXPECT_EQ(FindWordInString(*e, 0, 3, u"tempor", 6, 0, false), NotFound);
  EXPECT_EQ(FindWordInString(*e, 0, e->length(), u"", 0, 0, false), NotFound);
}

TEST(QuerySearch, NonExactPhraseFindsWordsWrittenSolid) {
  // With the Asian split on, Latin letters beside Han letters are cut into
  // words of their own with no separator between them.
  FastWordEnumerator::setSplitAsianWords(true);
  auto e = FastWordEnumerator::enumeratorWithString(String(u"x \u6f22\u5b57abc y"));
  FastWordEnumerator::setSplitAsianWords(false);
  ASSERT_TRUE(e);
  std::vector<String> words = {String(u"\u6f22\u5b57"), String(u"abc")};
  EXPECT_EQ(FindNonExactPhraseInString(*e, words, 0, e->length(), 0, true), (Range{2, 5}));
  std::vector<String> upper = {String(u"\u6f22\u5b57"), String(u"ABC")};
  EXPECT_FALSE(FindNonExactPhraseInString(*e, upper, 0, e->length(), 0, true).found());
  EXPECT_EQ(FindNonExactPhraseInString(*e, upper, 0, e->length(), kSearchCaseInsensitive, true), (Range{2, 5}));
  // A separator between the words breaks the phrase.
  auto spaced = FastWordEnumerator::enumeratorWithString(String(u"\u6f22\u5b57 abc"));
  ASSERT_TRUE(spaced);
  EXPECT_FALSE(FindNonExactPhraseInString(*spaced, words, 0, spaced->length(), 0, false).found());
  // The multi-string search takes this road for strings of several words.
  std::vector<String> strings = {String(u"\u6f22\u5b57 abc")};
  EXPECT_EQ(findNextQueryTerm(*e, strings, false, {0, e->length()}, true, true, false), (Range{2, 5}));
  EXPECT_FALSE(findNextQueryTerm(*e, strings, false, {0, e->length()}, true, true, true).found());
}

TEST(QuerySearch, NextAndPreviousOfSeveralStrings) {
  String text(u"gamma beta alpha beta gamma");
  std::vector<String> strings = {String(u"beta"), String(u"alpha"), String(u"missing")};
  EXPECT_EQ(findNextQueryTerm(text, strings, false, {0, text.length()}, true, true, true), (Range{6, 4}));
  EXPECT_EQ(strings.size(), 3u);
  EXPECT_EQ(findPreviousQueryTerm(text, strings, false, {0, text.length()}, true, true, true), (Range{17, 4}));
  EXPECT_EQ(findNextQueryTerm(text, strings, false, {8, 100}, true, true, true), (Range{11, 5}));
  // Two strings at the same location: the earlier in the array wins.
  std::vector<String> same = {String(u"gam"), String(u"gamma")};
  EXPECT_EQ(findNextQueryTerm(text, same, false, {0, text.length()}, true, false, true), (Range{0, 3}));
  EXPECT_FALSE(findNextQueryTerm(text, strings, false, {text.length(), 3}, true, true, true).found());
}

TEST(QuerySearch, PruningRemovesOnlyStringsThatDoNotOccur) {
  String text(u"one two three");
  // "missing" has no occurrence before any hit and goes; "three" is searched
  // only up to the hit of "two" and stays.
  std::vector<String> strings = {String(u"missing"), String(u"two"), String(u"three")};
  EXPECT_EQ(findNextQueryTerm(text, strings, true, {0, text.length()}, false, true, true), (Range{4, 3}));
  ASSERT_EQ(strings.size(), 2u);
  EXPECT_EQ(strings[0], String(u"two"));
  EXPECT_EQ(strings[1], String(u"three"));
}

TEST(QuerySearch, ContainsAndCountWords) {
  auto e = FastWordEnumerator::enumeratorWithString(String(u"Apple pie, apple tart and apples"));
  ASSERT_TRUE(e);
  EXPECT_TRUE(containsWord(*e, String(u"apple"), true));
  EXPECT_FALSE(containsWord(*e, String(u"APPLE"), true));
  EXPECT_TRUE(containsWord(*e, String(u"APPLE"), false));
  EXPECT_FALSE(containsWord(*e, String(u"appl"), false));
  EXPECT_EQ(countPrimaryWord(*e, String(u"apple"), {String(u"tart"), String(), String(u"pie")}, false), 4u);
  EXPECT_EQ(countPrimaryWord(*e, String(u"apple"), {}, true), 1u);
}

// ---------------------------------------------------------------------------
// Differential test: a reference evaluator over token lists.
//
// The texts are words of a small vocabulary with random separators; a query
// leaf is a plain word or a prefix pattern "xy*". The reference knows nothing
// of units: it places word i at slot 2i+1 and the separators between words at
// the even slots, so a span [a, b) of slots may hold words or only the
// separators between them, as a span of units can. A window of distance d
// around word i runs from word i-d to word i+d (in front only for BEFORE and
// NEXT, behind only for AFTER), reaching the span's edge where fewer words
// stand there.

const char* const kVocabulary[] = {"ant", "bee", "cat", "dog", "eel", "antelope"};

struct Token {
  std::string word;
  size_t location;
};

std::vector<Token> tokenize(const std::string& text) {
  std::vector<Token> tokens;
  for (size_t i = 0; i < text.size();) {
    if (!isalpha(static_cast<unsigned char>(text[i]))) {
      ++i;
      continue;
    }
    size_t begin = i;
    while (i < text.size() && isalpha(static_cast<unsigned char>(text[i]))) ++i;
    tokens.push_back({text.substr(begin, i - begin), begin});
  }
  return tokens;
}

bool leafMatches(const std::string& pattern, const std::string& word) {
  std::string lower;
  for (char c : word) lower += static_cast<char>(tolower(c));
  if (!pattern.empty() && pattern.back() == '*') return lower.starts_with(pattern.substr(0, pattern.size() - 1));
  return lower == pattern;
}

using Found = std::map<size_t, bool>;  // word index -> primary

struct Reference {
  const std::vector<Token>& tokens;

  static size_t slot(size_t word) { return 2 * word + 1; }
  // Word indices whose slot lies in [a, b).
  size_t firstWord(size_t a) const { return a / 2; }
  size_t endWord(size_t b) const { return std::min(tokens.size(), b / 2); }
  bool occurs(const QueryTerms& leaf, size_t i) const { return leafMatches(leaf.word().toUtf8(), tokens[i].word); }

  bool eval(const QueryTerms& t, const QueryTerms* left, QueryOperator op, uint64_t d, size_t a, size_t b, Found* map) {
    if (!t.isWord()) return group(t, left, op, d, a, b, map);
    if (!left) {
      bool any = false;
      for (size_t i = firstWord(a); i < endWord(b); ++i) {
        if (!occurs(t, i)) continue;
        any = true;
        if (map && !t.queryNot()) (*map)[i] = true;
      }
      return any != t.queryNot();
    }
    if (b <= a) return false;
    bool success = false;
    size_t last = a;
    for (size_t i = firstWord(a); i < endWord(b); ++i) {
      if (!occurs(t, i)) continue;
      size_t wa = op == QueryOperator::After ? slot(i) : (i >= d && slot(i - d) >= a ? slot(i - d) : a);
      size_t wb = slot(i) + 1;
      if (op == QueryOperator::Near || op == QueryOperator::After) wb = std::min(b, slot(i + d) + 1);
      if (!t.queryNot()) {
        Found inner;
        if (eval(*left, nullptr, QueryOperator::Mixed, 0, wa, wb, map ? &inner : nullptr)) {
          success = true;
          if (map) {
            for (auto& [k, v] : inner) (*map)[k] = v;
            (*map)[i] = false;
          }
        }
      } else {
        if (wa > last && eval(*left, nullptr, QueryOperator::Mixed, 0, last, wa, map)) success = true;
        last = std::max(last, wb);
      }
    }
    if (t.queryNot() && last < b && eval(*left, nullptr, QueryOperator::Mixed, 0, last, b, map)) success = true;
    return success;
  }

  // Groups: children left to right; in enumeration every child is visited,
  // and a child before a proximity child is visited only as its left term.
  bool group(const QueryTerms& g, const QueryTerms* left, QueryOperator op, uint64_t d, size_t a, size_t b,
             Found* map) {
    const auto& kids = g.children();
    if (kids.empty()) return g.queryNot();
    auto isProx = [](const QueryTerms& k) {
      return k.queryOperator() >= QueryOperator::Near && k.queryOperator() <= QueryOperator::Next &&
             k.proximityDistance() > 0;
    };
    Found own;
    auto mapFor = [&](size_t i) -> Found* {
      if (!map) return nullptr;
      return i + 1 < kids.size() && isProx(kids[i + 1]) ? nullptr : &own;
    };
    QueryOperator common = g.commonOperator();
    bool strict = common == QueryOperator::And || (common >= QueryOperator::Near && common <= QueryOperator::Next);
    bool result = eval(kids[0], left, op, d, a, b, mapFor(0));
    for (size_t i = 1; i < kids.size(); ++i) {
      if (!result && strict) return g.queryNot();
      const QueryTerms& k = kids[i];
      QueryOperator kop = k.queryOperator();
      if (kop == QueryOperator::Optional) continue;
      bool r = isProx(k) ? eval(k, &kids[i - 1], kop, k.proximityDistance(), a, b, mapFor(i))
                         : eval(k, left, op, d, a, b, mapFor(i));
      if (kop == QueryOperator::Or) {
        result = result || r;
      } else if (kop == QueryOperator::Xor) {
        result = result != r;
      } else {
        result = result && r;
      }
      if (!result) own.clear();
    }
    if (!result && strict) return g.queryNot();
    result = result != g.queryNot();
    if (result && map) {
      for (auto& [k, v] : own) (*map)[k] = v;
    }
    return result;
  }
};

std::string randomText(std::mt19937& rng) {
  static const char* const kSeparators[] = {" ", " ", " ", ", ", ". ", " - "};
  size_t words = 1 + rng() % 14;
  std::string text;
  for (size_t i = 0; i < words; ++i) {
    if (i) text += kSeparators[rng() % 6];
    std::string w = kVocabulary[rng() % 6];
    if (rng() % 5 == 0) w[0] = static_cast<char>(toupper(w[0]));
    text += w;
  }
  return text;
}

std::string randomQuery(std::mt19937& rng, int depth) {
  static const char* const kWords[] = {"ant", "bee", "cat", "dog", "eel", "fox", "an*", "antelope"};
  static const char* const kOps[] = {"",        "AND ",    "OR ",       "XOR ",      "NEAR ",    "NEAR/1 ",
                                     "NEAR/2 ", "NEAR/0 ", "BEFORE/1 ", "BEFORE/3 ", "AFTER/1 ", "AFTER/2 ",
                                     "NEXT ",   "NEXT/2 ", "OPT ",      "BEFORE "};
  size_t terms = 1 + rng() % 4;
  std::string query;
  for (size_t i = 0; i < terms; ++i) {
    if (i) query += kOps[rng() % 16];
    if (rng() % 4 == 0) query += "NOT ";
    if (depth < 2 && rng() % 6 == 0) {
      query += "(" + randomQuery(rng, depth + 1) + ") ";
    } else {
      query += std::string(kWords[rng() % 8]) + " ";
    }
  }
  return query;
}

TEST(QueryDifferential, MatchesAndOccurrencesAgreeWithReference) {
  std::mt19937 rng(20261122);
  int matched = 0;
  for (int round = 0; round < 4000; ++round) {
    std::string text = randomText(rng);
    std::string query = randomQuery(rng, 0);
    std::vector<Token> tokens = tokenize(text);
    QueryTerms tree = QueryTerms::withWildcard(u16(query));
    String s = String::fromUtf8(text);

    Reference reference{tokens};
    size_t spanEnd = 2 * tokens.size();
    bool expected = reference.eval(tree, nullptr, QueryOperator::Mixed, 0, 1, spanEnd, nullptr);
    ASSERT_EQ(matchesStringWithComparison(tree, s, 1), expected) << "query: " << query << "\ntext: " << text;
    if (query.find('*') == std::string::npos) {
      ASSERT_EQ(matchesString(QueryTerms::withString(u16(query)), s, false), expected)
          << "word mode, query: " << query << "\ntext: " << text;
    }
    matched += expected;

    Found referenceFound;
    bool enumerated = reference.eval(tree, nullptr, QueryOperator::Mixed, 0, 1, spanEnd, &referenceFound);
    if (!enumerated) referenceFound.clear();
    Found found;
    enumerateString(
        tree, s, {0, s.length()}, false, [&](const FastWordEnumerator&, const String&, Range range, bool primary) {
          auto at =
              std::find_if(tokens.begin(), tokens.end(), [&](const Token& t) { return t.location == range.location; });
          ASSERT_NE(at, tokens.end());
          EXPECT_EQ(range.length, at->word.size());
          found[static_cast<size_t>(at - tokens.begin())] = primary;
        });
    ASSERT_EQ(found, referenceFound) << "query: " << query << "\ntext: " << text;
  }
  // The generator must give both outcomes often enough to mean something.
  EXPECT_GT(matched, 800);
  EXPECT_LT(matched, 3200);
}

}  // namespace
}  // namespace norvane::query
