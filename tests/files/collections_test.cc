#include "norvane/files/collections.h"

#include <gtest/gtest.h>

#include "norvane/core/log.h"

namespace norvane::files {
namespace {

String S(const char16_t* s) {
  return String(s);
}

TEST(ArrayHelpersTest, SetOperationsByEqualityAndIdentity) {
  String a = S(u"a"), b = S(u"b"), c = S(u"c");
  String otherA = S(u"a");  // equal, not identical
  std::vector<String> array = {a, b, c};

  std::vector<String> joined = array;
  joinWithObjectsFromArray(joined, {otherA, c});
  EXPECT_EQ(joined, (std::vector<String>{a, c}));
  std::vector<String> joinedIdentical = array;
  joinWithIdenticalObjectsFromArray(joinedIdentical, {otherA, c});
  EXPECT_EQ(joinedIdentical, (std::vector<String>{c}));

  std::vector<String> removed = array;
  removeObjectsFromArray(removed, {otherA});
  EXPECT_EQ(removed, (std::vector<String>{b, c}));
  std::vector<String> removedIdentical = array;
  removeIdenticalObjectsFromArray(removedIdentical, {otherA});
  EXPECT_EQ(removedIdentical.size(), 3u);

  std::vector<String> united = {a};
  unionWithObjects(united, {otherA, b});
  EXPECT_EQ(united.size(), 2u);
  std::vector<String> unitedIdentical = {a};
  unionWithIdenticalObjects(unitedIdentical, {otherA, a});
  EXPECT_EQ(unitedIdentical.size(), 2u);

  EXPECT_TRUE(containsObjectIdenticalTo(array, b));
  EXPECT_FALSE(containsObjectIdenticalTo(array, otherA));
}

TEST(ArrayHelpersTest, CountsMovesAndRanges) {
  std::vector<int> v = {0, 1, 2, 3, 4};
  EXPECT_EQ(setCount(v, 9), 5u);  // never grows
  EXPECT_EQ(subarrayWithoutObjectAtIndex(v, 1), (std::vector<int>{0, 2, 3, 4}));
  EXPECT_EQ(subarrayWithoutObjectAtIndex(v, 7), v);

  struct Move {
    size_t from, to;
    bool ok;
    std::vector<int> result;
  };
  const Move moves[] = {
      {1, 1, true, {0, 1, 2, 3, 4}}, {0, 3, true, {1, 2, 0, 3, 4}},  {4, 0, true, {4, 0, 1, 2, 3}},
      {0, 5, true, {1, 2, 3, 4, 0}}, {5, 0, false, {0, 1, 2, 3, 4}}, {0, 6, false, {0, 1, 2, 3, 4}},
  };
  for (const auto& m : moves) {
    std::vector<int> w = v;
    EXPECT_EQ(moveObjectAtIndex(w, m.from, m.to), m.ok) << m.from << "->" << m.to;
    EXPECT_EQ(w, m.result) << m.from << "->" << m.to;
  }

  std::vector<int> seen;
  applyFunction(
      v, [&](int x) { seen.push_back(x); }, Range{3, 10});
  EXPECT_EQ(seen, (std::vector<int>{3, 4}));
  seen.clear();
  applyFunction(
      v, [&](int x) { seen.push_back(x); }, Range{9, 1});
  EXPECT_TRUE(seen.empty());
  EXPECT_EQ(setCount(v, 2), 2u);
}

TEST(ArrayHelpersTest, SortAndBinarySearch) {
  std::vector<String> words = {S(u"pear"), S(u"Apple"), S(u"fig"), S(u"apple"), S(u"Banana")};
  quickSortUsingFunction(words, sortCaseInsensitiveAscending);
  EXPECT_EQ(words[0].toUtf8().size(), 5u);
  EXPECT_EQ(words[2], S(u"Banana"));
  EXPECT_EQ(words.back(), S(u"pear"));
  quickSortUsingFunction(words, [](const String& a, const String& b) { return sortAscending(a, b); });
  EXPECT_EQ(words.front(), S(u"Apple"));  // upper case sorts first by code unit
  quickSortUsingFunction(words, sortDescendingByLength);
  EXPECT_EQ(words.front(), S(u"Banana"));
  EXPECT_EQ(words.back(), S(u"fig"));
  quickSortUsingFunction(words, sortAscendingByLength);
  EXPECT_EQ(words.front(), S(u"fig"));

  std::vector<int> partly = {5, 4, 3, 2, 1};
  quickSortUsingFunction(
      partly, [](int a, int b) { return a - b; }, Range{1, 3});
  EXPECT_EQ(partly, (std::vector<int>{5, 2, 3, 4, 1}));
  quickSortUsingFunction(
      partly, [](int a, int b) { return a - b; }, Range{3, 5});  // does not fit
  EXPECT_EQ(partly, (std::vector<int>{5, 2, 3, 4, 1}));

  std::vector<int> sorted = {1, 3, 5, 7};
  auto cmp = [](int a, int b) { return a - b; };
  EXPECT_EQ(indexOfObjectUsingBinarySearch(sorted, 5, Range{0, 4}, cmp), 2u);
  EXPECT_EQ(indexOfObjectUsingBinarySearch(sorted, 4, Range{0, 4}, cmp), 2u);
  EXPECT_EQ(indexOfObjectUsingBinarySearch(sorted, 9, Range{0, 4}, cmp), 4u);
  EXPECT_EQ(indexOfObjectUsingBinarySearch(sorted, 1, Range{1, 3}, cmp), 1u);

  EXPECT_LT(sortAscending(1.0, 2.0), 0);
  EXPECT_GT(sortDescending(1.0, 2.0), 0);
  EXPECT_EQ(sortLocalizedCaseInsensitiveAscending(S(u"abc"), S(u"ABC")), 0);
  EXPECT_LT(sortLocalizedCaseInsensitiveAscending(S(u"a"), S(u"B")), 0);
}

TEST(DictionaryHelpersTest, TypedReadsWithDefaults) {
  Dictionary d;
  setBool(d, S(u"flag"), true);
  setInteger(d, S(u"count"), -7);
  setDouble(d, S(u"ratio"), 2.75);
  setString(d, S(u"name"), S(u"Ann"));
  setString(d, S(u"number"), S(u"42"));
  setString(d, S(u"yes"), S(u"YES"));
  EXPECT_TRUE(boolForKey(d, u"flag"));
  EXPECT_TRUE(boolForKey(d, u"missing", true));
  EXPECT_TRUE(boolForKey(d, u"yes"));
  EXPECT_EQ(intForKey(d, u"count"), -7);
  EXPECT_EQ(integerForKey(d, u"number"), 42);
  EXPECT_EQ(intForKey(d, u"missing", 5), 5);
  EXPECT_EQ(doubleForKey(d, u"ratio"), 2.75);
  EXPECT_EQ(floatForKey(d, u"count"), -7.0f);
  EXPECT_EQ(stringForKey(d, u"name"), S(u"Ann"));
  EXPECT_EQ(stringForKey(d, u"count"), S(u"-7"));
  EXPECT_TRUE(stringForKey(d, u"missing").isNull());
  EXPECT_EQ(stringForKey(d, u"missing", S(u"x")), S(u"x"));
  EXPECT_EQ(objectForKey(d, u"missing", Value(3)).asInteger(), 3);
  setString(d, S(u"name"), String());
  EXPECT_FALSE(d.contains(u"name"));

  Dictionary codes;
  codes.set(S(u"1346651680"), Value(S(u"by code")));  // 'PDF '
  codes.set(S(u"kind"), Value(S(u"by key")));
  EXPECT_EQ(objectForCode(codes, 0x50444620).asString(), S(u"by code"));
  EXPECT_EQ(objectForKeyCode(codes, u"kind", 0x50444620).asString(), S(u"by code"));
  EXPECT_EQ(objectForKeyCode(codes, u"kind", 1).asString(), S(u"by key"));
}

TEST(DictionaryHelpersTest, LocalizedStrings) {
  Dictionary names;
  names.set(S(u"de"), Value(S(u"Hallo")));
  names.set(S(u"English"), Value(S(u"Hello")));
  Dictionary d;
  d.set(S(u"greeting"), Value(names));
  d.set(S(u"plain"), Value(S(u"Plain")));
  d.set(S(u"number"), Value(3));

  setenv("LANGUAGE", "fr:de_AT", 1);
  EXPECT_EQ(preferredLocalizations(), (std::vector<std::string>{"fr", "de_AT", "de"}));
  EXPECT_EQ(localizedStringForKey(d, u"greeting"), S(u"Hallo"));
  setenv("LANGUAGE", "ja", 1);
  EXPECT_EQ(localizedStringForKey(d, u"greeting"), S(u"Hello"));
  unsetenv("LANGUAGE");
  EXPECT_EQ(localizedStringForKey(d, u"plain"), S(u"Plain"));
  EXPECT_EQ(localizedStringForKey(d, u"number", S(u"dflt")), S(u"dflt"));
  EXPECT_EQ(localizedStringForKey(d, u"missing", S(u"dflt")), S(u"dflt"));
}

TEST(KeyPathTest, IndexesAndFailures) {
  Dictionary author;
  author.set(S(u"name"), Value(S(u"Ann")));
  Dictionary item;
  item.set(S(u"authors"), Value(Array{Value(author)}));
  item.set(S(u"tags"), Value(Array{Value(S(u"only"))}));
  Dictionary root;
  root.set(S(u"items"), Value(Array{Value(S(u"first")), Value(item)}));
  Value r(root);

  EXPECT_EQ(valueForKeyPathWithIndexes(r, u"items[1].authors[0].name").asString(), S(u"Ann"));
  EXPECT_EQ(valueForKeyPathWithIndexes(r, u"items[0]").asString(), S(u"first"));
  EXPECT_TRUE(valueForKeyPathWithIndexes(r, u"items[2]").isNull());
  EXPECT_TRUE(valueForKeyPathWithIndexes(r, u"items[0].name").isNull());
  EXPECT_TRUE(valueForKeyPathWithIndexes(r, u"missing.x").isNull());
  EXPECT_TRUE(valueForKeyPathWithIndexes(r, u"items[1].authors.name").asString().isNull());
  EXPECT_EQ(stringValueForKeyPathWithIndexes(r, u"items[1].tags"), S(u"only"));
  EXPECT_TRUE(stringValueForKeyPathWithIndexes(r, u"items").isNull());
}

TEST(OptionalOperationTest, LogsOncePerToken) {
  LogCapture log;
  bool token = false;
  EXPECT_TRUE(safeRespondsToSelector(true, "Importer", "importFile:"));
  EXPECT_FALSE(safeRespondsToSelector(false, "Importer", "preview:", &token));
  EXPECT_FALSE(safeRespondsToSelector(false, "Importer", "preview:", &token));
  EXPECT_FALSE(safeRespondsToSelector(false, "Importer", "thumb:"));
  EXPECT_EQ(log.messages(), (std::vector<std::string>{"Class Importer does not respond to selector preview:.",
                                                      "Class Importer does not respond to selector thumb:."}));
}

}  // namespace
}  // namespace norvane::files
