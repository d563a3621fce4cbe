#include "norvane/query/extracts.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "norvane/core/unicode.h"
#include "norvane/text/strings.h"

namespace norvane::query {
namespace {

std::string u8(const String& s) {
  return s.toUtf8();
}

std::vector<String> patterns(std::initializer_list<const char16_t*> list) {
  std::vector<String> out;
  for (const char16_t* p : list) out.emplace_back(p);
  return out;
}

String assembleWildcards(const String& text, const char16_t* pattern, size_t limit, bool onlyOccurrences = true,
                         bool singleWords = false) {
  return assembleOccurrencesOfWildcards(text, patterns({pattern}), onlyOccurrences, singleWords, 1, 1,
                                        sentenceSeparators(), String(), limit);
}

TEST(Extracts, ShortTextIsItsOwnSummary) {
  String text(u"No hit in here.");
  String result = assembleWildcards(text, u"cat", 100, false);
  EXPECT_TRUE(result.isSameObject(text));
  EXPECT_TRUE(assembleWildcards(text, u"cat", 100, true).isNull());
}

TEST(Extracts, WithoutHitsGivesNullOrTheBeginning) {
  String text(u"A rather long text without the word that is looked for in it.");
  EXPECT_TRUE(assembleWildcards(text, u"cat", 20, true).isNull());
  EXPECT_EQ(assembleWildcards(text, u"cat", 20, false), text::stringByEllipsizingAfterNCharacters(text, 20));
  EXPECT_EQ(assembleOccurrencesOfWildcards(text, {}, false, false, 1, 1, sentenceSeparators(), String(), 20),
            text::stringByEllipsizingAfterNCharacters(text, 20));
  EXPECT_TRUE(
      assembleOccurrencesOfWildcards(text, patterns({u"text"}), true, false, 1, 1, nullptr, String(), 0).isNull());
  EXPECT_TRUE(assembleWildcards(String(), u"cat", 0).isNull());
}

TEST(Extracts, PiecesAreTakenOnce) {
  // Two hits in one sentence give one piece; a second sentence of the same
  // words is not repeated.
  EXPECT_EQ(u8(assembleWildcards(String(u"cat and cat. Dog."), u"cat", 0)), "cat and cat");
  EXPECT_EQ(u8(assembleWildcards(String(u"The cat sat. A dog ran. The cat sat."), u"cat", 0)), "The cat sat");
  EXPECT_EQ(u8(assembleOccurrencesOfString(String(u"cat and cat. Dog."), String(u"cat"), true, false, 0, 0,
                                           sentenceSeparators(), String(), 0)),
            "cat and cat");
}

TEST(Extracts, PiecesAreJoinedBySeparator) {
  String text(u"One cat here. Nothing. Two cats there.");
  std::vector<String> cats = patterns({u"cat*"});
  EXPECT_EQ(u8(assembleOccurrencesOfWildcards(text, cats, true, false, 1, 1, sentenceSeparators(), String(u" | "), 0)),
            "One cat here | Two cats there");
  EXPECT_EQ(u8(assembleOccurrencesOfWildcards(text, cats, true, false, 1, 1, sentenceSeparators(), String(u""), 0)),
            "One cat hereTwo cats there");
}

TEST(Extracts, LoneHitsNeedSingleWords) {
  String text(u"Intro here. Cat. More text here.");
  EXPECT_TRUE(assembleWildcards(text, u"cat", 0).isNull());
  EXPECT_EQ(u8(assembleWildcards(text, u"cat", 0, true, true)), "Cat");
}

TEST(Extracts, LimitCutsWithEllipsisOrStopsExactly) {
  String text(u"Alpha beta gamma. Delta alpha epsilon. Zeta eta alpha theta iota kappa.");
  EXPECT_EQ(u8(assembleWildcards(text, u"alpha", 30)), "Alpha beta gamma Delta alpha e...");
  EXPECT_EQ(u8(assembleWildcards(text, u"alpha", 36)), "Alpha beta gamma Delta alpha epsilon");
  EXPECT_EQ(u8(assembleWildcards(text, u"alpha", 0)),
            "Alpha beta gamma Delta alpha epsilon Zeta eta alpha theta iota kappa");
}

TEST(Extracts, HitFarInsideLongSentenceSurvivesTheCut) {
  String text(u"one two three four five six seven eight nine target ten.");
  EXPECT_EQ(u8(assembleWildcards(text, u"target", 20)), "seven eight nine target...");
}

TEST(Extracts, QueryVariantUsesPrimaryOccurrences) {
  String text(u"The dog barks. A cat sleeps. The bird sings.");
  std::vector<QueryTerms> trees = {QueryTerms::withWildcard(u"cat OR bird")};
  EXPECT_EQ(u8(assembleOccurrencesOfQueryTerms(text, trees, true, false, 1, 0, sentenceSeparators(), String(), 0)),
            "A cat sleeps The bird sings");
  // "sings" anchors the window and is not primary; the piece is that of "bird".
  std::vector<QueryTerms> near = {QueryTerms::withWildcard(u"bird NEAR/1 sings")};
  EXPECT_EQ(u8(assembleOccurrencesOfQueryTerms(text, near, true, false, 1, 0, sentenceSeparators(), String(), 0)),
            "The bird sings");
  std::vector<QueryTerms> none = {QueryTerms::withWildcard(u"cat AND missing")};
  EXPECT_TRUE(
      assembleOccurrencesOfQueryTerms(text, none, true, false, 1, 0, sentenceSeparators(), String(), 0).isNull());
}

TEST(ExtractRecords, SentenceWithClosingSeparator) {
  String text(u"First one here. The cat sat down. Last.");
  std::vector<OccurrenceRecord> records =
      getOccurrencesOfWildcards(text, patterns({u"cat"}), 1, 1, sentenceSeparators(), 0);
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].range, (Range{20, 3}));
  EXPECT_EQ(records[0].line, 0u);
  EXPECT_EQ(u8(records[0].string), "The cat sat down.");
  EXPECT_EQ(records[0].stringRange, (Range{16, 17}));
}

TEST(ExtractRecords, MinimumWordsReachIntoTheSentenceBefore) {
  String text(u"Alpha beta gamma. Cat sat. Omega.");
  std::vector<OccurrenceRecord> records =
      getOccurrencesOfWildcards(text, patterns({u"cat"}), 1, 1, sentenceSeparators(), 2);
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].range, (Range{18, 3}));
  // The whole sentence before is taken; the scan forward passes "sat." with
  // one word and ends behind "Omega.".
  EXPECT_EQ(u8(records[0].string), "...Alpha beta gamma. Cat sat. Omega....");
  EXPECT_EQ(records[0].stringRange, (Range{0, 33}));
}

TEST(ExtractRecords, LinesCountCarriageReturnLineFeedOnce) {
  String text(u"one\r\ntwo\nthree cat\r\nfour cat");
  std::vector<OccurrenceRecord> records =
      getOccurrencesOfWildcards(text, patterns({u"cat"}), 1, 1, sentenceSeparators(), 0);
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].range, (Range{15, 3}));
  EXPECT_EQ(records[0].line, 2u);
  EXPECT_EQ(u8(records[0].string), "three cat\r");
  EXPECT_EQ(records[1].range, (Range{25, 3}));
  EXPECT_EQ(records[1].line, 3u);
  EXPECT_EQ(u8(records[1].string), "four cat");
}

TEST(ExtractRecords, StringAndQueryVariants) {
  String text(u"The cat sat. Nobody else.");
  std::vector<OccurrenceRecord> records = getOccurrencesOfString(text, String(u"AT"), 1, 0, sentenceSeparators(), 0);
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].range, (Range{5, 2}));
  EXPECT_EQ(u8(records[0].string), "The cat sat.");
  EXPECT_TRUE(getOccurrencesOfString(text, String(u"AT"), 0, 0, sentenceSeparators(), 0).empty());

  std::vector<QueryTerms> trees = {QueryTerms::withWildcard(u"cat OR nobody")};
  records = getOccurrencesOfQueryTerms(text, trees, 1, 0, sentenceSeparators(), 0);
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(u8(records[1].string), "Nobody else.");
  EXPECT_EQ(records[1].stringRange, (Range{13, 12}));
  EXPECT_TRUE(getOccurrencesOfQueryTerms(text, {}, 1, 0, sentenceSeparators(), 0).empty());
  EXPECT_TRUE(getOccurrencesOfQueryTerms(String(), trees, 1, 0, sentenceSeparators(), 0).empty());
}

TEST(ExtractRecords, RealDocumentRecordsPointAtTheirHits) {
  // Every record's extract holds its hit and lies where it says.
  std::string text;
  for (int i = 0; i < 200; ++i) {
    text += "Sentence " + std::to_string(i) + (i % 7 == 0 ? " mentions a kettle" : " is plain") + ".\n";
  }
  String s = String::fromUtf8(text);
  std::vector<OccurrenceRecord> records =
      getOccurrencesOfWildcards(s, patterns({u"kettle"}), 1, 1, sentenceSeparators(), 1);
  ASSERT_EQ(records.size(), 29u);
  for (size_t i = 0; i < records.size(); ++i) {
    const OccurrenceRecord& r = records[i];
    EXPECT_EQ(s.view().substr(r.range.location, r.range.length), u"kettle");
    EXPECT_TRUE(r.stringRange.location <= r.range.location && r.range.end() <= r.stringRange.end());
    EXPECT_NE(std::u16string(r.string.view()).find(s.view().substr(r.stringRange.location, r.stringRange.length)),
              std::u16string::npos);
    EXPECT_EQ(r.line, 7 * i);
  }
}

}  // namespace
}  // namespace norvane::query
