#include "norvane/query/word_enumerator.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "norvane/query/word_separators.h"
#include "norvane/text/chars.h"

namespace norvane::query {
namespace {

using Enumerator = std::unique_ptr<FastWordEnumerator>;

Enumerator make(const char16_t* text, bool caseInsensitive = false, bool wildcard = false) {
  return FastWordEnumerator::enumeratorWithString(String(text), caseInsensitive, wildcard);
}

// The type bytes as a string of digits, one per unit.
std::string types(const FastWordEnumerator& e) {
  std::string out;
  for (size_t i = 0; i < e.length(); ++i) out += static_cast<char>('0' + e.typeAtIndex(i));
  return out;
}

std::vector<std::u16string> words(const FastWordEnumerator& e, size_t minLength = 1, bool* hyphenated = nullptr) {
  std::vector<String> found;
  e.addWordsTo(&found, minLength, hyphenated);
  std::vector<std::u16string> out;
  for (const String& s : found) out.push_back(s.toU16());
  return out;
}

// Restores the process-wide split flag when a test ends.
class SplitAsianWords {
 public:
  explicit SplitAsianWords(bool on) : saved_(FastWordEnumerator::splitAsianWords()) {
    FastWordEnumerator::setSplitAsianWords(on);
  }
  ~SplitAsianWords() { FastWordEnumerator::setSplitAsianWords(saved_); }

 private:
  bool saved_;
};

TEST(WordEnumerator, EmptyInputGivesNoEnumerator) {
  EXPECT_EQ(FastWordEnumerator::enumeratorWithString(String()), nullptr);
  EXPECT_EQ(FastWordEnumerator::enumeratorWithString(String::empty()), nullptr);
  EXPECT_EQ(FastWordEnumerator::enumeratorWithCharacters(nullptr, 3), nullptr);
  const unichar unit = u'a';
  EXPECT_EQ(FastWordEnumerator::enumeratorWithCharacters(&unit, 0), nullptr);
  EXPECT_EQ(FastWordEnumerator::enumeratorWithCharactersNoCopy(&unit, 0, false), nullptr);
}

TEST(WordEnumerator, TypeBytes) {
  struct Case {
    const char16_t* text;
    const char* types;
    size_t words;
  } cases[] = {
      {u"a", "6", 1},
      {u"ab c", "2416", 2},
      {u"  hello,  world ", "1120004111200041", 2},
      {u" ,.;\t\n", "111111", 0},
      {u"e-mail", "612004", 2},
      {u"3.14", "6124", 2},
      {u"x*y?z[w]", "61616161", 4},
      {u"caf\u00e9 na\u00efve", "2004120004", 2},
      {u"\"quoted\"", "12000041", 1},
  };
  for (const Case& c : cases) {
    auto e = make(c.text);
    ASSERT_NE(e, nullptr);
    EXPECT_EQ(types(*e), c.types) << String(c.text).toUtf8();
    EXPECT_EQ(e->numberOfWords(), c.words) << String(c.text).toUtf8();
  }
}

TEST(WordEnumerator, SeparatorsOnlyText) {
  auto e = make(u" - ... ");
  ASSERT_NE(e, nullptr);
  EXPECT_EQ(e->numberOfWords(), 0u);
  EXPECT_EQ(types(*e), "1111111");
  EXPECT_TRUE(words(*e).empty());
}

TEST(WordEnumerator, SeparatorSetKeepsLettersAndDigits) {
  const text::CharacterSetRep separators = defaultWordSeparators();
  const text::CharacterSetRep alphaNum = text::alphaNumCharacterSetRep();
  const text::CharacterSetRep white = text::whiteCharacterSetRep();
  size_t count = 0;
  for (unsigned u = 0; u < 0x10000; ++u) {
    const unichar unit = static_cast<unichar>(u);
    if (text::isInRep(alphaNum, unit)) EXPECT_FALSE(text::isInRep(separators, unit)) << std::hex << u;
    if (text::isInRep(white, unit)) EXPECT_TRUE(text::isInRep(separators, unit)) << std::hex << u;
    count += text::isInRep(separators, unit);
  }
  EXPECT_GT(count, 500u);
  for (unichar u :
       std::u16string_view(u"!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~\u00a7\u00ab\u00bb\u2013\u2014\u2018\u201c\u3001\u3002"))
    EXPECT_TRUE(text::isInRep(separators, u)) << std::hex << static_cast<unsigned>(u);
}

TEST(WordEnumerator, WildcardSeparatorsDropTheFourSymbols) {
  const text::CharacterSetRep words = defaultWordSeparators();
  const text::CharacterSetRep wildcards = defaultWildcardSeparators();
  for (unsigned u = 0; u < 0x10000; ++u) {
    const unichar unit = static_cast<unichar>(u);
    const bool symbol = unit == u'*' || unit == u'?' || unit == u'[' || unit == u']';
    if (symbol) {
      EXPECT_TRUE(text::isInRep(words, unit));
      EXPECT_FALSE(text::isInRep(wildcards, unit));
    } else {
      EXPECT_EQ(text::isInRep(words, unit), text::isInRep(wildcards, unit)) << std::hex << u;
    }
  }
}

TEST(WordEnumerator, RemovingSymbolsMakesThemWordUnits) {
  // U+2042 (asterism) is used by nothing else in the tests.
  auto before = make(u"a\u2042b");
  EXPECT_EQ(before->numberOfWords(), 2u);
  removeSymbolsFromWordSeparators(String(u"\u2042"));
  removeSymbolsFromWordSeparators(String());  // changes nothing
  auto after = make(u"a\u2042b");
  EXPECT_EQ(after->numberOfWords(), 1u);
  EXPECT_EQ(types(*after), "204");
  auto wildcard = make(u"a\u2042b", false, true);
  EXPECT_EQ(wildcard->numberOfWords(), 1u);
  EXPECT_FALSE(text::isInRep(defaultWordSeparators(), u'\u2042'));
  EXPECT_FALSE(text::isInRep(defaultWildcardSeparators(), u'\u2042'));
  EXPECT_TRUE(text::isInRep(defaultWordSeparators(), u','));
}

TEST(WordEnumerator, WildcardTextKeepsBracketsWhole) {
  struct Case {
    const char16_t* text;
    const char* types;
  } cases[] = {
      {u"a[b c]d", "2000004"},                     // the blank inside the brackets does not divide
      {u"ab*c? d", "2000416"}, {u"ab [", "2416"},  // "[" as the last unit is ordinary
      {u"x[]y", "2004"},                           // "[]" is two ordinary units
      {u"[a, b", "20004"},                         // no "]": the rest is skipped untested
      {u"a [x] b", "6120416"},
  };
  for (const Case& c : cases) {
    auto e = make(c.text, false, true);
    ASSERT_NE(e, nullptr);
    EXPECT_EQ(types(*e), c.types) << String(c.text).toUtf8();
    EXPECT_TRUE(e->isWildcard());
  }
  // The same texts as plain text cut at the brackets.
  EXPECT_EQ(types(*make(u"a[b c]d")), "6161616");
}

TEST(WordEnumerator, CaseInsensitiveHoldsUpperCase) {
  auto e = make(u"Hello w\u00f6rld", true);
  ASSERT_NE(e, nullptr);
  EXPECT_EQ(e->substringWithRange({0, 5}), String(u"HELLO"));
  EXPECT_EQ(e->substringWithRange({6, 5}), String(u"W\u00d6RLD"));
  EXPECT_EQ(e->lowercaseSubstringWithRange({0, 5}), String(u"hello"));
  EXPECT_EQ(e->string(), String(u"Hello w\u00f6rld"));

  const String original(u"Mixed Case");
  auto plain = FastWordEnumerator::enumeratorWithString(original);
  EXPECT_EQ(plain->characters(), original.data());  // no copy without folding
  EXPECT_TRUE(plain->string().isSameObject(original));

  const std::u16string units = u"abc Def";
  auto copied = FastWordEnumerator::enumeratorWithCharacters(units.data(), units.size(), true);
  EXPECT_NE(copied->characters(), units.data());
  EXPECT_EQ(copied->substringWithRange({0, 7}), String(u"ABC DEF"));
  EXPECT_TRUE(copied->string().isNull());
}

TEST(WordEnumerator, Substrings) {
  auto e = make(u"Stra\u00dfe und Weg");
  EXPECT_TRUE(e->substringWithRange({0, 0}).isNull());
  EXPECT_TRUE(e->substringWithRange({10, 5}).isNull());
  EXPECT_TRUE(e->substringWithRange({NotFound, 1}).isNull());
  EXPECT_EQ(e->substringWithRange({10, 4}), String(u" Weg"));
  EXPECT_EQ(e->uppercaseSubstringWithRange({11, 3}), String(u"WEG"));
  EXPECT_EQ(e->lowercaseSubstringWithRange({0, 6}), String(u"stra\u00dfe"));
}

TEST(WordEnumerator, PositionQueries) {
  //                      0123456789012345678
  auto e = make(u"  The quick, brown");
  ASSERT_NE(e, nullptr);
  const size_t n = e->length();
  EXPECT_EQ(n, 18u);
  EXPECT_TRUE(e->isWordSeparatorAtIndex(0));
  EXPECT_TRUE(e->isWordBeginningAtIndex(2));
  EXPECT_TRUE(e->isWordEndAtIndex(4));
  EXPECT_TRUE(e->isWordAnchoredAtIndex(2));
  EXPECT_TRUE(e->isWordAnchoredAtIndex(4));
  EXPECT_FALSE(e->isWordAnchoredAtIndex(3));
  EXPECT_EQ(e->typeAtIndex(n), 0);
  EXPECT_FALSE(e->isWordSeparatorAtIndex(n + 5));
  EXPECT_FALSE(e->isWordBeginningAtIndex(NotFound));

  EXPECT_FALSE(e->isWordEndBeforeIndex(0));
  EXPECT_TRUE(e->isWordEndBeforeIndex(5));
  EXPECT_FALSE(e->isWordEndBeforeIndex(6));
  EXPECT_TRUE(e->isWordEndBeforeIndex(n));  // the text ends in a word
  EXPECT_FALSE(e->isWordEndBeforeIndex(n + 1));

  EXPECT_TRUE(e->containsSeparatorInRange({4, 2}));
  EXPECT_FALSE(e->containsSeparatorInRange({6, 5}));
  EXPECT_TRUE(e->containsSeparatorInRange({11, 100}));
  EXPECT_FALSE(e->containsSeparatorInRange({13, 100}));
  EXPECT_FALSE(e->containsSeparatorInRange({100, 3}));

  EXPECT_EQ(e->locationOfNextWordFromIndex(0, n), 2u);
  EXPECT_EQ(e->locationOfNextWordFromIndex(3, n), 6u);
  EXPECT_EQ(e->locationOfNextWordFromIndex(3, 6), NotFound);
  EXPECT_EQ(e->locationOfNextWordFromIndex(14, 1000), NotFound);

  EXPECT_EQ(e->locationOfPreviousWordFromIndex(10, 0), 6u);
  EXPECT_EQ(e->locationOfPreviousWordFromIndex(6, 0), 6u);
  EXPECT_EQ(e->locationOfPreviousWordFromIndex(10, 7), NotFound);
  EXPECT_EQ(e->locationOfPreviousWordFromIndex(1, 0), NotFound);  // text opens with separators
  EXPECT_EQ(e->locationOfPreviousWordFromIndex(n, 0), NotFound);
  EXPECT_EQ(e->locationOfPreviousWordFromIndex(3, 4), NotFound);

  EXPECT_EQ(e->rangeOfWordAtIndex(8), (Range{6, 5}));
  EXPECT_EQ(e->rangeOfWordAtIndex(2), (Range{2, 3}));
  EXPECT_EQ(e->rangeOfWordAtIndex(17), (Range{13, 5}));
  EXPECT_EQ(e->rangeOfWordAtIndex(11), NotFoundRange);  // the comma
  EXPECT_EQ(e->rangeOfWordAtIndex(n), NotFoundRange);

  EXPECT_EQ(e->rangeOfNextWordFromIndex(5, 8), (Range{6, 5}));  // passes the end
  EXPECT_EQ(e->rangeOfNextWordFromIndex(7, 13), NotFoundRange);
  EXPECT_EQ(e->enumerateNextWordAtIndex(7), (Range{13, 5}));

  EXPECT_EQ(e->rangeOfPreviousWordFromIndex(12, 0), (Range{6, 5}));
  EXPECT_EQ(e->rangeOfPreviousWordFromIndex(12, 8), (Range{6, 5}));  // begins before start
  EXPECT_EQ(e->rangeOfPreviousWordFromIndex(12, 11), NotFoundRange);
  EXPECT_EQ(e->rangeOfPreviousWordFromIndex(1, 0), NotFoundRange);
  EXPECT_EQ(e->rangeOfPreviousWordFromIndex(100, 0), (Range{13, 5}));
}

struct Collected {
  std::vector<Range> words;
  size_t stopAfter = NotFound;
};

bool collect(const FastWordEnumerator&, size_t location, size_t length, void* context) {
  auto* c = static_cast<Collected*>(context);
  c->words.push_back({location, length});
  return c->words.size() >= c->stopAfter;
}

TEST(WordEnumerator, Enumeration) {
  //                       0123456789012345
  auto e = make(u"one two, three");
  Collected all;
  EXPECT_EQ(e->enumerateWordsInRange({0, 100}, collect, &all), 3u);
  EXPECT_EQ(all.words, (std::vector<Range>{{0, 3}, {4, 3}, {9, 5}}));

  Collected tail;  // starts inside "two", ends inside "three"
  EXPECT_EQ(e->enumerateWordsInRange({5, 7}, collect, &tail), 2u);
  EXPECT_EQ(tail.words, (std::vector<Range>{{5, 2}, {9, 3}}));

  Collected stopAtOnce;
  stopAtOnce.stopAfter = 1;
  EXPECT_EQ(e->enumerateWordsInRange({0, 14}, collect, &stopAtOnce), 0u);
  EXPECT_EQ(stopAtOnce.words.size(), 1u);

  Collected stopSecond;
  stopSecond.stopAfter = 2;
  EXPECT_EQ(e->enumerateWordsInRange({0, 14}, collect, &stopSecond), 1u);

  EXPECT_EQ(e->enumerateWordsInRange({14, 3}, collect, &all), 0u);
  EXPECT_EQ(e->enumerateWordsInRange({0, 14}, nullptr, nullptr), 0u);

  std::vector<std::u16string> seen;
  const size_t count = e->enumerateWordsInRange({0, 14}, [&](const FastWordEnumerator& en, size_t l, size_t n) {
    seen.push_back(en.substringWithRange({l, n}).toU16());
    return false;
  });
  EXPECT_EQ(count, 3u);
  EXPECT_EQ(seen, (std::vector<std::u16string>{u"one", u"two", u"three"}));
}

TEST(WordEnumerator, NumberOfWordsWithMinimum) {
  auto e = make(u"a bb ccc dddd a");
  EXPECT_EQ(e->numberOfWords(), 5u);
  EXPECT_EQ(e->numberOfWords(0), 5u);
  EXPECT_EQ(e->numberOfWords(1), 5u);
  EXPECT_EQ(e->numberOfWords(2), 3u);
  EXPECT_EQ(e->numberOfWords(4), 1u);
  EXPECT_EQ(e->numberOfWords(5), 0u);
}

TEST(WordEnumerator, AddWordsAndCompounds) {
  struct Case {
    const char16_t* text;
    size_t minLength;
    std::vector<std::u16string> words;
    bool hyphenated;
  } cases[] = {
      {u"a-b-c", 1, {u"a", u"b", u"c"}, true},
      {u"e-mail", 1, {u"e", u"mail"}, true},
      {u"u.s.a", 1, {u"u", u"s", u"a"}, true},
      {u"u.s.a.", 1, {u"u", u"s", u"a"}, true},  // what follows the last word is not looked at
      {u"a-b.c", 1, {u"a", u"b", u"c"}, false},
      {u"a - b", 1, {u"a", u"b"}, false},
      {u"a--b", 1, {u"a", u"b"}, false},
      {u"ab.cd", 1, {u"ab", u"cd"}, false},  // dotted words must be single letters
      {u"1.2", 1, {u"1", u"2"}, false},      // ... and letters
      {u"u.s.a", 2, {}, true},               // words under the minimum are not looked at
      {u"word", 1, {u"word"}, false},
      {u"-a-b", 1, {u"a", u"b"}, true},
      {u"one two three", 4, {u"three"}, false},
  };
  for (const Case& c : cases) {
    auto e = make(c.text);
    bool hyphenated = !c.hyphenated;
    EXPECT_EQ(words(*e, c.minLength, &hyphenated), c.words) << String(c.text).toUtf8();
    EXPECT_EQ(hyphenated, c.hyphenated) << String(c.text).toUtf8();
  }
  bool hyphenated = true;
  make(u"a-b")->addWordsTo(nullptr, 1, &hyphenated);
  EXPECT_FALSE(hyphenated);
}

TEST(WordEnumerator, AsianRunIsOneWordWithoutSplitting) {
  SplitAsianWords off(false);
  auto e = make(u"\u6211\u4eec\u662f\u4e2d\u56fd\u4eba\u548c\u65e5\u672c\u4eba");
  EXPECT_EQ(e->numberOfWords(), 1u);
  EXPECT_TRUE(e->stringBySeparatingWords().isSameObject(e->string()));
}

TEST(WordEnumerator, AsianRunSplitByDictionary) {
  SplitAsianWords on(true);
  const String text(u"\u6211\u4eec\u662f\u4e2d\u56fd\u4eba\u548c\u65e5\u672c\u4eba");
  auto e = FastWordEnumerator::enumeratorWithString(text);
  ASSERT_NE(e, nullptr);
  EXPECT_GT(e->numberOfWords(), 2u);
  // Every unit belongs to a word; the words tile the run.
  std::u16string joined;
  for (const std::u16string& w : words(*e)) joined += w;
  EXPECT_EQ(joined, text.view());
  const String separated = e->stringBySeparatingWords();
  EXPECT_EQ(separated.length(), text.length() + e->numberOfWords() - 1);
  std::u16string withoutBlanks;
  for (unichar u : separated.view())
    if (u != u' ') withoutBlanks += u;
  EXPECT_EQ(withoutBlanks, text.view());
  // The sentence starts with the pronoun, a word of two units.
  EXPECT_EQ(e->rangeOfWordAtIndex(0), (Range{0, 2}));
}

TEST(WordEnumerator, AsianSplitCutsLatinFromHanButKeepsDigits) {
  SplitAsianWords on(true);
  auto latin = make(u"\u4e2d\u56fdabc");
  EXPECT_EQ(words(*latin), (std::vector<std::u16string>{u"\u4e2d\u56fd", u"abc"}));
  EXPECT_EQ(latin->stringBySeparatingWords(), String(u"\u4e2d\u56fd abc"));
  auto digits = make(u"\u4e2d\u56fd123");
  EXPECT_EQ(digits->numberOfWords(), 1u);
  auto plainLatin = make(u"abc def");  // no Asian unit: the tokenizer is never asked
  EXPECT_EQ(types(*plainLatin), "2041204");
}

TEST(WordEnumerator, JapaneseSplitAndCompounds) {
  SplitAsianWords on(true);
  // Kanji and kana: "I live in Tokyo", then a Latin word after a blank.
  auto e = make(u"\u6771\u4eac\u306b\u4f4f\u3093\u3067\u3044\u307e\u3059 Tokyo");
  ASSERT_NE(e, nullptr);
  EXPECT_GT(e->numberOfWords(), 3u);
  EXPECT_EQ(e->rangeOfWordAtIndex(0), (Range{0, 2}));  // the place name
  EXPECT_EQ(e->rangeOfWordAtIndex(11), (Range{10, 5}));
  bool hyphenated = true;
  words(*e, 1, &hyphenated);
  EXPECT_FALSE(hyphenated);  // neighbours without a gap are no compound
}

TEST(WordEnumerator, SplitFlagIsReadWhenIndexing) {
  const String text(u"\u4e2d\u56fdabc");
  std::unique_ptr<FastWordEnumerator> before;
  {
    SplitAsianWords on(true);
    before = FastWordEnumerator::enumeratorWithString(text);
  }
  EXPECT_EQ(before->numberOfWords(), 2u);  // built while the flag was on
  EXPECT_EQ(FastWordEnumerator::enumeratorWithString(text)->numberOfWords(), 1u);
}

TEST(WordEnumerator, LocaleIsFetchedOnce) {
  const icu::Locale& first = FastWordEnumerator::locale();
  EXPECT_FALSE(first.isBogus());
  EXPECT_EQ(&first, &FastWordEnumerator::locale());
}

TEST(WordEnumerator, RetargetAndInvalidate) {
  FastWordEnumerator e;
  EXPECT_EQ(e.length(), 0u);
  EXPECT_EQ(e.typeAtIndex(0), 0);
  EXPECT_EQ(e.rangeOfWordAtIndex(0), NotFoundRange);
  EXPECT_EQ(e.rangeOfPreviousWordFromIndex(0, 0), NotFoundRange);

  const std::u16string first = u"one two";
  ASSERT_TRUE(e.setCharacters(first.data(), first.size(), false));
  EXPECT_EQ(e.numberOfWords(), 2u);
  const uint8_t* index = e.index();
  ASSERT_TRUE(e.setCharacters(first.data(), first.size(), false));
  EXPECT_EQ(e.index(), index);  // same buffer: nothing happens

  const size_t length = 9;
  auto* owned = static_cast<unichar*>(std::malloc(length * sizeof(unichar)));
  std::memcpy(owned, u"a b c d e", length * sizeof(unichar));
  ASSERT_TRUE(e.setCharacters(owned, length, true));  // freed by the enumerator
  EXPECT_EQ(e.numberOfWords(), 5u);
  EXPECT_TRUE(e.string().isNull());

  e.invalidate();
  e.invalidate();
  EXPECT_EQ(e.length(), 0u);
  EXPECT_EQ(e.numberOfWords(), 0u);
  EXPECT_FALSE(e.isWordBeginningAtIndex(0));
  EXPECT_TRUE(e.setCharacters(nullptr, 0, false));
  EXPECT_EQ(e.length(), 0u);
}

TEST(WordEnumerator, NoCopyBufferIsUsedAsIs) {
  const std::u16string units = u"left right";
  auto e = FastWordEnumerator::enumeratorWithCharactersNoCopy(units.data(), units.size(), false);
  ASSERT_NE(e, nullptr);
  EXPECT_EQ(e->characters(), units.data());
  EXPECT_EQ(e->numberOfWords(), 2u);
  EXPECT_EQ(e->stringBySeparatingWords(), String(u"left right"));
}

TEST(WordEnumerator, WordsUsingDefaultSeparation) {
  EXPECT_TRUE(wordsUsingDefaultSeparation(String()).empty());
  EXPECT_EQ(numberOfWordsUsingDefaultSeparation(String()), 0u);
  const auto found = wordsUsingDefaultSeparation(String(u"Hello, wide-world!"));
  ASSERT_EQ(found.size(), 3u);
  EXPECT_EQ(found[2], String(u"world"));
  EXPECT_EQ(numberOfWordsUsingDefaultSeparation(String(u"a*b [c]")), 3u);
}

// --- Real text ---

// A crude tag stripper, enough to get prose out of the Python manual.
std::u16string stripTags(const std::string& html) {
  std::string text;
  bool inTag = false;
  for (char c : html) {
    if (c == '<') inTag = true;
    if (!inTag) text += c;
    if (c == '>') inTag = false;
  }
  return String::fromUtf8(text).toU16();
}

std::vector<std::u16string> pythonDocTexts(size_t limit) {
  std::vector<std::u16string> texts;
  const std::filesystem::path root = "/usr/share/doc/python3.11/html/library";
  std::error_code error;
  if (!std::filesystem::is_directory(root, error)) return texts;
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(root, error))
    if (entry.path().extension() == ".html") files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  for (const auto& file : files) {
    if (texts.size() == limit) break;
    std::ifstream in(file, std::ios::binary);
    std::stringstream buffer;
    buffer << in.rdbuf();
    texts.push_back(stripTags(buffer.str()));
  }
  return texts;
}

// The single-pass index of plain text against the general walk, which a
// wildcard text takes: on text without "*", "?", "[" and "]" both must
// agree unit by unit. Also checks that words never hold separators and that
// enumeration and counting see the same words.
TEST(WordEnumerator, RealTextIndexesAgree) {
  const auto texts = pythonDocTexts(25);
  if (texts.empty()) GTEST_SKIP() << "python3.11-doc is not installed";
  size_t totalWords = 0;
  for (std::u16string text : texts) {
    for (unichar& u : text)
      if (u == u'*' || u == u'?' || u == u'[' || u == u']') u = u' ';
    const String s = String::fromU16(std::move(text));
    auto plain = FastWordEnumerator::enumeratorWithString(s);
    auto general = FastWordEnumerator::enumeratorWithString(s, false, true);
    ASSERT_NE(plain, nullptr);
    ASSERT_EQ(plain->numberOfWords(), general->numberOfWords());
    ASSERT_EQ(std::memcmp(plain->index(), general->index(), s.length()), 0);
    const size_t enumerated =
        plain->enumerateWordsInRange({0, s.length()}, [&](const FastWordEnumerator& e, size_t l, size_t n) {
          EXPECT_FALSE(e.containsSeparatorInRange({l, n}));
          EXPECT_TRUE(e.isWordBeginningAtIndex(l));
          EXPECT_TRUE(e.isWordEndAtIndex(l + n - 1));
          return false;
        });
    EXPECT_EQ(enumerated, plain->numberOfWords());
    totalWords += enumerated;
  }
  EXPECT_GT(totalWords, 10000u);
}

}  // namespace
}  // namespace norvane::query
