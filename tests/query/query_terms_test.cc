#include "norvane/query/query_terms.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "norvane/core/unicode.h"

namespace norvane::query {
namespace {

std::u16string u16(std::string_view s) {
  return utf8ToUtf16(s);
}
std::string u8(const String& s) {
  return s.toUtf8();
}

// The tree as fields, written independently of the library's writer: each
// term is [operator][!][~] text, operators as & | ^ N/d B/d A/d X/d O, a
// phrase in '...', a group in (...). The first child's operator is written
// too, since dissolved groups hand theirs on.
std::string shape(const QueryTerms& term) {
  static const char* const kOps[] = {"&", "|", "^", "N", "B", "A", "X", "O", "?"};
  std::string s = kOps[static_cast<int>(term.queryOperator())];
  if (term.queryOperator() >= QueryOperator::Near && term.queryOperator() <= QueryOperator::Next) {
    s += "/" + std::to_string(term.proximityDistance());
  }
  if (term.queryNot()) s += "!";
  if (term.querySubstring()) s += "~";
  if (term.isWord()) {
    if (term.queryPhrase()) return s + " '" + u8(term.word()) + "'";
    return s + " " + u8(term.word());
  }
  s += "(";
  for (size_t i = 0; i < term.children().size(); ++i) {
    if (i) s += " ";
    s += shape(term.children()[i]);
  }
  return s + ")";
}

std::string plainShape(std::string_view query) {
  return shape(QueryTerms::withString(u16(query)));
}
std::string wildShape(std::string_view query) {
  return shape(QueryTerms::withWildcard(u16(query)));
}

struct ShapeCase {
  const char* query;
  const char* expected;
};

TEST(QueryTermsParse, PlainModeShapes) {
  const ShapeCase cases[] = {
      {"a b", "&(& a & b)"},
      {"a OR b c", "&(& a | b & c)"},
      {"a or b", "&(& a | b)"},
      {"a | b", "&(& a | b)"},
      {"a|b", "&(& a | b)"},
      {"a&b", "&(& a & b)"},
      {"a^b", "&(& a ^ b)"},
      {"a EOR b", "&(& a ^ b)"},
      {"a BUT b", "&(& a & b)"},
      {"a XOR b", "&(& a ^ b)"},
      {"a OPT b", "&(& a O b)"},
      {"a NEAR b", "&(& a N/10 b)"},
      {"a NEAR/3 b", "&(& a N/3 b)"},
      {"a Near/3 b", "&(& a N/3 b)"},
      {"a near/0 b", "&(& a N/0 b)"},
      {"a NEAR/x b", "&(& a N/0 b)"},
      {"a NEXT b", "&(& a X/1 b)"},
      {"a NEXT/4 b", "&(& a X/4 b)"},
      {"a BEFORE b", "&(& a B/10 b)"},
      {"a BEFORE/2 b", "&(& a B/2 b)"},
      {"a AFTER b", "&(& a A/10 b)"},
      {"a AFTER/7 b", "&(& a A/7 b)"},
      // After each term the distance falls back to the default.
      {"a NEAR/3 b NEAR c", "&(& a N/3 b N/10 c)"},
      // NEAR keeps a distance set since the last term.
      {"a NEXT NEAR b", "&(& a N/1 b)"},
      {"a NEARBY b", "&(& a & NEARBY & b)"},
      {"a NEAR/ b", "&(& a & NEAR/ & b)"},
      {"a AFTERWARDS b", "&(& a & AFTERWARDS & b)"},
      {"a NOT b", "&(& a &! b)"},
      {"a NOT NOT b", "&(& a & b)"},
      {"tempor NOT NEAR labore", "&(& tempor N/10! labore)"},
      {"a NEAR NOT b", "&(& a N/10! b)"},
      {"a NEAR -b", "&(& a N/10! b)"},
      {"a!b", "&(& a &! b)"},
      {"a-b", "&(& a-b)"},
      {"e-mail", "&(& e-mail)"},
      {"-a", "&(&! a)"},
      {"+a", "&(& a)"},
      {"a -b +c", "&(& a &! b & c)"},
      {"a- b-", "&(& a & b)"},
      {"~abc", "&(&~ abc)"},
      {"[x] a", "&(& a)"},
      {"a]b", "&(& a & b)"},
      {"\"a b\"", "&(& 'a b')"},
      {"\"AND\"", "&(& 'AND')"},
      {"\u201ca b\u201d c", "&(& 'a b' & c)"},
      {"\"a b\u201f", "&(& 'a b')"},
      {"\"unterminated phrase", "&(& 'unterminated phrase')"},
      {"-\"\" a", "&(& a)"},
      {"(a)", "&(& a)"},
      {"NOT (NOT a)", "&(& a)"},
      {"(a b) c", "&(&(& a & b) & c)"},
      {"a OR (b c)", "&(& a |(& b & c))"},
      {"-(a b)", "&(&!(& a & b))"},
      {"a NEAR/2 (b)", "&(& a N/2 b)"},
      {"((a))", "&(& a)"},
      {"(a (b c)", "&(&(& a &(& b & c)))"},
      {"a ) b", "&(& a & b)"},
      {"() a", "&(& a)"},
      {"a NEAR", "&(& a)"},
      {"a\tb\nc", "&(& a & b & c)"},
  };
  for (const ShapeCase& c : cases) EXPECT_EQ(plainShape(c.query), c.expected) << c.query;
}

TEST(QueryTermsParse, WildcardModeShapes) {
  const ShapeCase cases[] = {
      {"~abc", "&(&~ *abc*)"},       {"~*abc*", "&(&~ *abc*)"},       {"~*abc", "&(&~ **abc*)"},
      {"[a b]c", "&(& [a b]c)"},     {"x[a OR b]", "&(& x[a OR b])"}, {"a]b", "&(& a]b)"},
      {"ab* c?d", "&(& ab* & c?d)"}, {"[open", "&(& [open)"},
  };
  for (const ShapeCase& c : cases) EXPECT_EQ(wildShape(c.query), c.expected) << c.query;
}

TEST(QueryTermsParse, InvalidTrees) {
  for (const char* query : {"", "AND", "NOT", "(", "()", " \t ", "\"\"", "[a b]", "OR NEAR/3", "+ -"}) {
    QueryTerms tree = QueryTerms::withString(u16(query));
    EXPECT_FALSE(tree.isValid()) << query;
    EXPECT_TRUE(tree.children().empty()) << query;
  }
  EXPECT_TRUE(QueryTerms::withString(u"a").isValid());
}

TEST(QueryTermsParse, CommonOperator) {
  struct Case {
    const char* query;
    QueryOperator common;
  } cases[] = {
      {"a", QueryOperator::Mixed},        {"a b", QueryOperator::And},
      {"a OR b OR c", QueryOperator::Or}, {"a b OR c", QueryOperator::Mixed},
      {"a OR b c", QueryOperator::Mixed}, {"a NEAR b NEAR/2 c", QueryOperator::Near},
      {"a XOR b", QueryOperator::Xor},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(QueryTerms::withString(u16(c.query)).commonOperator(), c.common) << c.query;
  }
}

TEST(QueryTermsParse, DefaultsGiven) {
  QueryTerms tree = QueryTerms::withString(u"a b NEAR c", QueryOperator::Or, 4);
  EXPECT_EQ(shape(tree), "|(| a | b N/4 c)");
  EXPECT_EQ(shape(QueryTerms::withWildcard(u"a BEFORE b", QueryOperator::And, 3)), "&(& a B/3 b)");
}

TEST(QueryTermsParse, ParenthesisedSameAsBare) {
  EXPECT_EQ(QueryTerms::withString(u"(a)"), QueryTerms::withString(u"a"));
  EXPECT_EQ(QueryTerms::withString(u"x NEAR/2 (y)"), QueryTerms::withString(u"x NEAR/2 y"));
  EXPECT_NE(QueryTerms::withString(u"a"), QueryTerms::withString(u"-a"));
}

TEST(QueryTermsParse, UsesProximity) {
  EXPECT_FALSE(QueryTerms::withString(u"a b OR c").usesProximity());
  EXPECT_TRUE(QueryTerms::withString(u"a NEAR b").usesProximity());
  EXPECT_TRUE(QueryTerms::withString(u"a (b NEXT c)").usesProximity());
  EXPECT_FALSE(QueryTerms::withString(u"a OPT b").usesProximity());
}

// Random queries of the whole syntax, lower case, one operator between two
// terms.
std::string randomQuery(std::mt19937& rng, int depth, bool withNext) {
  static const char* const kWords[] = {"ab", "cd", "e-f", "g.h", "ij*", "k?l", "mn", "x1"};
  static const char* const kJoins[] = {" ",     " and ",  " & ",      " or ",       "|",       " xor ",
                                       "^",     " near ", " near/3 ", " before/2 ", " after ", " after/1 ",
                                       " opt ", " but ",  " eor ",    " near/0 ",   " next ",  " next/4 "};
  std::string query;
  size_t terms = 1 + rng() % 4;
  for (size_t i = 0; i < terms; ++i) {
    if (i) {
      size_t join = rng() % (withNext ? 18 : 16);
      query += kJoins[join];
    }
    switch (rng() % 8) {
      case 0:
        query += "-";
        break;
      case 1:
        query += "not ";
        break;
      case 2:
        query += "!";
        break;
      case 3:
        query += "~";
        break;
      case 4:
        query += "+";
        break;
      default:
        break;
    }
    if (depth < 2 && rng() % 5 == 0) {
      query += "(" + randomQuery(rng, depth + 1, withNext) + ")";
    } else if (rng() % 6 == 0) {
      query += std::string("\"") + kWords[rng() % 8] + " " + kWords[rng() % 8] + "\"";
    } else {
      query += kWords[rng() % 8];
    }
  }
  return query;
}

TEST(QueryTermsWrite, NormalizedFormReparsesToTheSameTree) {
  std::mt19937 rng(7);
  for (int round = 0; round < 3000; ++round) {
    std::string query = randomQuery(rng, 0, false);
    for (bool wildcard : {false, true}) {
      QueryTerms tree = wildcard ? QueryTerms::withWildcard(u16(query)) : QueryTerms::withString(u16(query));
      String normalized = tree.normalizedQueryTerm();
      QueryTerms again =
          wildcard ? QueryTerms::withWildcard(normalized.view()) : QueryTerms::withString(normalized.view());
      ASSERT_EQ(shape(again), shape(tree)) << query << " -> " << u8(normalized);
    }
  }
}

TEST(QueryTermsWrite, WrittenFormsAreFixedPoints) {
  // Writing, parsing and writing again changes nothing under the two normal
  // forms, and settles after one pass under random flag sets.
  std::mt19937 rng(11);
  for (int round = 0; round < 3000; ++round) {
    QueryTerms tree = QueryTerms::withWildcard(u16(randomQuery(rng, 0, true)));
    uint32_t flags = rng() & 0x3FFFF;
    // "ANDNOT" is no keyword of the language, so it cannot parse back.
    flags &= ~static_cast<uint32_t>(kWriteAndNot);
    for (uint32_t f : {kStandardizedFlags, kNormalizedFlags}) {
      String once = tree.queryTermForOperators(f);
      String twice = QueryTerms::withWildcard(once.view()).queryTermForOperators(f);
      ASSERT_EQ(u8(twice), u8(once)) << "flags " << f;
    }
    // Terms left out can leave a group of one, which the next parse
    // dissolves; from the second pass on the text is stable.
    String once = QueryTerms::withWildcard(tree.queryTermForOperators(flags).view()).queryTermForOperators(flags);
    String twice = QueryTerms::withWildcard(once.view()).queryTermForOperators(flags);
    ASSERT_EQ(u8(twice), u8(once)) << "flags " << flags;
  }
}

struct WriteCase {
  const char* query;
  const char* standardized;
  const char* normalized;
};

TEST(QueryTermsWrite, StandardizedAndNormalized) {
  const WriteCase cases[] = {
      {"a AND b OR NOT c", "a b OR -c", "a b|-c"},
      {"a NEAR/3 b", "a b", "a NEAR/3 b"},
      {"Foo AND Bar", "Foo Bar", "foo bar"},
      {"a OR b", "a OR b", "a|b"},
      {"a   NEAR/3    b", "a b", "a NEAR/3 b"},
      {"x OPT y", "x OPT y", "x OPT y"},
      {"a XOR b", "a XOR b", "a XOR b"},
      {"a NEXT b", "a b", "a BEFORE/1 b"},
      {"a AFTER/2 b", "a b", "a AFTER/2 b"},
      {"a BEFORE b", "a b", "a BEFORE/10 b"},
      {"\"A b\" c", "\"A b\" c", "\"a b\" c"},
      {"~Abc", "Abc", "~abc"},
      {"a (b OR c)", "a (b OR c)", "a (b|c)"},
      {"-(a b) c", "-(a b) c", "-(a b) c"},
      {"", "", ""},
  };
  for (const WriteCase& c : cases) {
    QueryTerms tree = QueryTerms::withString(u16(c.query));
    EXPECT_EQ(u8(tree.standardizedQueryTerm()), c.standardized) << c.query;
    EXPECT_EQ(u8(tree.normalizedQueryTerm()), c.normalized) << c.query;
    EXPECT_EQ(u8(standardizedQueryTerm(String(u16(c.query)))), c.standardized) << c.query;
  }
}

TEST(QueryTermsWrite, StandardFormReparsesToSameTree) {
  // The standardized form keeps and, or, xor, negation, phrases, groups and
  // optional terms, so parsing it again gives the same tree when the query
  // uses nothing else.
  for (const char* query : {"a b OR -c", "a (b OR c) XOR d", "\"a b\" -(c OR d)", "x OPT y z", "a OR b OR (c d)"}) {
    QueryTerms tree = QueryTerms::withString(u16(query));
    EXPECT_EQ(QueryTerms::withString(tree.standardizedQueryTerm()), tree) << query;
  }
  // The description spells out every operator, proximity included.
  for (const char* query : {"a NEAR/3 b", "a BEFORE/2 (b OR c)", "a NEXT b AFTER c"}) {
    QueryTerms tree = QueryTerms::withString(u16(query));
    std::u16string text(tree.description().view());
    ASSERT_TRUE(text.starts_with(u"QueryTerms <") && text.ends_with(u">")) << query;
    EXPECT_EQ(QueryTerms::withString(text.substr(12, text.size() - 13)), tree) << query;
  }
}

TEST(QueryTermsWrite, FlagsOneByOne) {
  QueryTerms tree = QueryTerms::withString(u"a -b OR c NEAR/2 d OPT e");
  struct Case {
    uint32_t flags;
    const char* expected;
  } cases[] = {
      {0, "a c d"},
      {kWriteNegated, "a -b c d"},
      {kWriteNegated | kWriteNotKeyword, "a NOT b c d"},
      {kWriteNegated | kWriteNotKeyword | kWriteAndKeyword, "a NOT b c AND d"},
      {kWriteNegated | kWriteAndNot | kWriteNotKeyword, "a ANDNOT b c d"},
      {kWriteOr, "a OR c d"},
      {kWriteOr | kWriteOrBar, "a|c d"},
      {kWriteNear, "a c NEAR/2 d"},
      {kWriteOptional, "a c d OPT e"},
      {kWriteUpperCase | kWriteLowerCase, "A C D"},
      {kWritePlusForm, "+a c +d"},
      {kWritePlusForm | kWriteNegated, "+a -b c +d"},
      {kWritePlusForm | kWriteOr, "+a c +d"},
  };
  for (const Case& c : cases) EXPECT_EQ(u8(tree.queryTermForOperators(c.flags)), c.expected) << c.flags;
}

TEST(QueryTermsWrite, PhrasesAndGroups) {
  QueryTerms tree = QueryTerms::withString(u"\"a, b\" (c d)");
  EXPECT_EQ(u8(tree.queryTermForOperators(0)), "a, b c d");
  EXPECT_EQ(u8(tree.queryTermForOperators(kWritePhraseQuotes)), "\"a, b\" c d");
  EXPECT_EQ(u8(tree.queryTermForOperators(kWriteGroups)), "(a b) (c d)");
}

TEST(QueryTermsWrite, NextJoins) {
  EXPECT_EQ(u8(QueryTerms::withString(u"a NEXT b").queryTermForOperators(kWriteNext)), "a NEXT b");
  EXPECT_EQ(u8(QueryTerms::withString(u"a NEXT/3 b").queryTermForOperators(kWriteNext)), "a b");
  EXPECT_EQ(u8(QueryTerms::withString(u"a NEXT/3 b").queryTermForOperators(kWriteNext | kWriteBefore)), "a BEFORE/3 b");
}

TEST(QueryTermsWrite, OperatorWordsReplaceKeywords) {
  Dictionary words;
  words.set(u"OR", Value(u"ODER"));
  words.set(u"NEAR", Value(u"NAH"));
  words.set(u"-", Value(u"!"));
  words.set(u"AND", Value(u"UND"));
  QueryTerms tree = QueryTerms::withString(u"a OR b NEAR/4 -c d");
  EXPECT_EQ(u8(tree.queryTermForOperators(kWriteOr | kWriteNear | kWriteNegated, &words)), "a ODER b NAH/4 !c d");
  EXPECT_EQ(u8(tree.queryTermForOperators(kWriteAndKeyword | kWriteNotKeyword, &words)), "a b UND d");
  EXPECT_EQ(u8(queryTermForOperators(String(u"x y"), kWriteAndKeyword | kWriteNotKeyword, &words)), "x UND y");
}

TEST(QueryTermsLists, PlusStringsSkipNegated) {
  QueryTerms tree = QueryTerms::withString(u"alpha -beta (gamma NOT delta) -(eps zeta) \"eta theta\"");
  EXPECT_EQ(u8(tree.plusString()), "alpha gamma eta theta");
  std::vector<String> parts = tree.plusParts();
  ASSERT_EQ(parts.size(), 3u);
  EXPECT_EQ(u8(parts[0]), "alpha");
  EXPECT_EQ(u8(parts[2]), "eta theta");
  std::vector<const QueryTerms*> terms = tree.plusTerms();
  ASSERT_EQ(terms.size(), 3u);
  EXPECT_TRUE(terms[2]->queryPhrase());
  EXPECT_EQ(u8(plusString(String(u"a -b c"))), "a c");
}

std::vector<std::string> utf8All(const std::vector<String>& strings) {
  std::vector<std::string> out;
  for (const String& s : strings) out.push_back(u8(s));
  return out;
}

TEST(QueryTermsLists, WordsAndWildcards) {
  QueryTerms tree = QueryTerms::withWildcard(u"e-mail \"big house\" -x a.b.c");
  EXPECT_EQ(utf8All(tree.plusWords()), (std::vector<std::string>{"e", "mail", "big", "house", "a", "b", "c"}));
  // Each leaf whole, its words joined by a blank, and compounds written
  // solid; shortest first.
  EXPECT_EQ(utf8All(tree.plusWildcards()),
            (std::vector<std::string>{"abc", "a b c", "a.b.c", "email", "e mail", "e-mail", "big house"}));
  // A phrase is no compound, so it is not written solid.
  EXPECT_EQ(utf8All(QueryTerms::withWildcard(u"\"e-mail\"").plusWildcards()),
            (std::vector<std::string>{"e mail", "e-mail"}));
  EXPECT_TRUE(QueryTerms::withWildcard(u"NOT").plusWildcards().empty());
  EXPECT_EQ(utf8All(plusWildcards(String(u"b* a"))), (std::vector<std::string>{"a", "b*"}));
  // The string forms parse in wildcard mode: the bracket stays in its word.
  EXPECT_EQ(u8(plusWildcardString(String(u"[a b]c -d"))), "[a b]c");
  EXPECT_EQ(u8(plusString(String(u"[a b]c -d"))), "c");
  EXPECT_EQ(utf8All(plusWildcardParts(String(u"~ab x"))), (std::vector<std::string>{"*ab*", "x"}));
  EXPECT_EQ(utf8All(plusWildcardWords(String(u"a-b* \"c d\""))), (std::vector<std::string>{"a", "b*", "c", "d"}));
}

TEST(QueryTermsLists, ExtendedWildcardsAddNeighbourPairs) {
  QueryTerms tree = QueryTerms::withWildcard(u"alpha beta OR gamma NEAR delta -eps");
  EXPECT_EQ(utf8All(tree.extendedPlusWildcards()),
            (std::vector<std::string>{"beta", "alpha", "delta", "gamma", "alpha beta", "gamma delta"}));
  // No pair forms across a group, and the whole text of a compound leaf is
  // left out.
  EXPECT_EQ(utf8All(QueryTerms::withWildcard(u"x-y (p q)").extendedPlusWildcards()),
            (std::vector<std::string>{"p", "q", "xy", "p q", "x y"}));
  EXPECT_TRUE(QueryTerms::withWildcard(u"").extendedPlusWildcards().empty());
}

TEST(QueryTermsLists, UnionOverSeveralTrees) {
  std::vector<QueryTerms> trees = {QueryTerms::withString(u"a b"), QueryTerms::withString(u"b -c d")};
  EXPECT_EQ(utf8All(plusParts(trees)), (std::vector<std::string>{"a", "b", "d"}));
  EXPECT_EQ(utf8All(plusWords(trees)), (std::vector<std::string>{"a", "b", "d"}));
  EXPECT_TRUE(plusParts(std::vector<QueryTerms>{}).empty());
  EXPECT_TRUE(plusParts(std::vector<QueryTerms>{QueryTerms::withString(u"-x")}).empty());
}

TEST(QueryTermsSite, DropsSiteComponents) {
  EXPECT_EQ(u8(queryTermWithoutSiteOperator(String(u"apple site:example.com  pie"))), "apple pie");
  EXPECT_EQ(u8(queryTermWithoutSiteOperator(String(u"site:a.org"))), "");
  // "Site:" is no site operator: the prefix is compared exactly.
  EXPECT_EQ(u8(queryTermWithoutSiteOperator(String(u"Site:a.org b"))), "Site:a.org b");
  String unchanged(u"apple pie");
  EXPECT_TRUE(queryTermWithoutSiteOperator(unchanged).isSameObject(unchanged));
  EXPECT_TRUE(queryTermWithoutSiteOperator(String()).isEmpty());
}

}  // namespace
}  // namespace norvane::query
