#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "norvane/text/strings.h"
#include "norvane/text/summarize.h"
#include "norvane/text/text_finding.h"

namespace norvane::text {
namespace {

String S(std::string_view utf8) {
  return String::fromUtf8(utf8);
}

TEST(Summaries, SentencesOnTheRecurringTopicWin) {
  String text =
      S("Rivers shape valleys over time. Rivers carry sediment and rivers deposit\n"
        "sediment in deltas. Deltas grow where sediment settles. Bakers open early.\n"
        "Markets close late. Painters like light.");
  EXPECT_EQ(summarizeInSentences(text, 1), u"Rivers carry sediment and rivers deposit sediment in deltas.");
  EXPECT_EQ(summarizeInSentences(text, 2),
            u"Rivers carry sediment and rivers deposit sediment in deltas. Deltas grow where sediment settles.");
  EXPECT_EQ(summarizeInSentences(text, 3),
            u"Rivers shape valleys over time. Rivers carry sediment and rivers deposit sediment in deltas. "
            u"Deltas grow where sediment settles.");
  String all = summarizeInSentences(text, 10);
  EXPECT_EQ(all, stringByRemovingMultipleWhiteSpaces(text));
}

TEST(Summaries, WordsInMostSentencesCarryNoWeight) {
  // "the" is in every sentence; without it the second sentence has the
  // recurring words.
  String text = S("The cat. The the the the dog. The dog barks loudly at the dog. The bird.");
  EXPECT_EQ(summarizeInSentences(text, 1), u"The dog barks loudly at the dog.");
}

TEST(Summaries, ParagraphsAreNonBlankLines) {
  String text =
      S("Rust and rivers.\n"
        "\n"
        "The river floods the river valley every river season.\n"
        "   \n"
        "Unrelated closing words.\r\n");
  EXPECT_EQ(summarizeInParagraphs(text, 1), u"The river floods the river valley every river season.");
  EXPECT_EQ(summarizeInParagraphs(text, 5),
            u"Rust and rivers.\nThe river floods the river valley every river season.\nUnrelated closing words.");
}

TEST(Summaries, NothingToSummarize) {
  EXPECT_TRUE(summarizeInSentences(String(), 3).isNull());
  EXPECT_TRUE(summarizeInSentences(S(""), 3).isNull());
  EXPECT_TRUE(summarizeInSentences(S("   \n\t "), 3).isNull());
  EXPECT_TRUE(summarizeInSentences(S("Some text."), 0).isNull());
  EXPECT_TRUE(summarizeInParagraphs(S("\n\n \n"), 2).isNull());
  EXPECT_TRUE(summarizeInParagraphs(S("text"), -1).isNull());
}

TEST(Summaries, RealLicenseTextGivesSentencesOfIt) {
  std::ifstream file("/usr/share/common-licenses/GPL-3");
  if (!file) GTEST_SKIP() << "no license text on this machine";
  std::stringstream buffer;
  buffer << file.rdbuf();
  String text = S(buffer.str());
  String summary = summarizeInSentences(text, 3);
  ASSERT_FALSE(summary.isEmpty());
  EXPECT_LT(summary.length(), text.length() / 10);
  String paragraphs = summarizeInParagraphs(text, 4);
  ASSERT_FALSE(paragraphs.isEmpty());
  std::vector<String> picked = lines(paragraphs);
  EXPECT_EQ(picked.size(), 4u);
  // The picks are lines of the text, in order, with runs of blanks collapsed.
  String flat = stringByRemovingMultipleWhiteSpaces(text);
  size_t previous = 0;
  for (const String& line : picked) {
    String paragraph = stringByTrimmingFeeds(line);
    Range at = findString(flat, paragraph, Range{previous, 0}, true, true, false);
    ASSERT_TRUE(at.found()) << paragraph.toUtf8();
    previous = at.end();
  }
}

}  // namespace
}  // namespace norvane::text
