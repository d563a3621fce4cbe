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

TEST(Summaries, SentenceWithTheMostFrequentWordsWins) {
  String text =
      S("Cats are great pets. Cats love to sleep. Cats hunt mice at night. "
        "The weather today is mild.");
  EXPECT_EQ(summarizeInSentences(text, 1), u"Cats love to sleep.");
  EXPECT_EQ(summarizeInSentences(text, 2), u"Cats are great pets. Cats love to sleep.");
  String all = summarizeInSentences(text, 10);
  EXPECT_EQ(all, u"Cats are great pets. Cats love to sleep. Cats hunt mice at night. The weather today is mild.");
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
  size_t previous = 0;
  for (const String& line : picked) {
    String paragraph = stringByTrimmingFeeds(line);
    Range at = findString(text, paragraph, Range{previous, 0}, true, true, false);
    ASSERT_TRUE(at.found()) << paragraph.toUtf8();
    previous = at.end();
  }
}

}  // namespace
}  // namespace norvane::text
