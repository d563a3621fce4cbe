// The one-walk table matcher must answer as fastContainsSubCStrings does.

#include "urls/row_matcher.h"

#include <gtest/gtest.h>

#include "norvane/text/chars.h"
#include "norvane/urls/classification.h"
#include "test_support.h"

namespace norvane::urls {
namespace {

const char* const kTables[] = {"image-ad", "text-ad",      "general-ad", "ad-path",     "common-ad-host",
                               "share",    "second-share", "captcha",    "translation", "topic",
                               "forum",    "cache",        "search-host"};

// The rows of a table as the null-terminated array both matchers take.
std::vector<const char*> rowsOf(const char* table) {
  std::vector<const char*> rows;
  for (std::string_view row : urlTableRows(table)) rows.push_back(row.data());
  rows.push_back(nullptr);
  return rows;
}

std::u16string lowered(const String& s) {
  std::u16string out = s.toU16();
  for (unichar& u : out) u = text::lowerCharsTable()[u];
  return out;
}

void expectSameAnswers(const char* table, const std::vector<std::u16string>& texts) {
  std::vector<const char*> rows = rowsOf(table);
  detail::RowMatcher matcher(rows.data());
  for (const std::u16string& t : texts) {
    bool reference = text::fastContainsSubCStrings(t.data(), t.size(), rows.data());
    EXPECT_EQ(matcher.matches(t.data(), t.size()), reference) << table << ": " << String(t).toUtf8();
  }
}

TEST(RowMatcher, AgreesOnEveryRowInContext) {
  for (const char* table : kTables) {
    std::vector<std::u16string> texts;
    for (std::string_view row : urlTableRows(table)) {
      std::u16string r(row.begin(), row.end());
      texts.push_back(r);
      texts.push_back(u"http://x.example/" + r + u"?tail");
      texts.push_back(r.substr(0, r.size() - 1));  // one unit short
      texts.push_back(r.substr(1));
      texts.push_back(u"\u00e9" + r.substr(0, r.size() / 2) + u"\u00e9" + r.substr(r.size() / 2));
    }
    texts.push_back(u"");
    texts.push_back(u"x");
    expectSameAnswers(table, texts);
  }
}

TEST(RowMatcher, RowsOfOneAndTwoUnits) {
  const char* const rows[] = {"q", "ab", "xyz", nullptr};
  detail::RowMatcher matcher(rows);
  for (const char16_t* t : {u"q", u"-q", u"ab", u"-ab", u"xy", u"-xyz", u"a", u"b", u"yz", u"", u"\u00e9q"}) {
    std::u16string_view v(t);
    EXPECT_EQ(matcher.matches(v.data(), v.size()), text::fastContainsSubCStrings(v.data(), v.size(), rows))
        << String(v).toUtf8();
  }
}

TEST(RowMatcher, TellsWhichOfSeveralTablesMatch) {
  std::vector<const char*> ads = rowsOf("general-ad");
  std::vector<const char*> paths = rowsOf("ad-path");
  std::vector<const char*> forums = rowsOf("forum");
  detail::RowMatcher matcher({ads.data(), paths.data(), forums.data()});
  std::vector<std::u16string> texts = {u"http://x.doubleclick.net/ads/forum", u"http://x/ad_y", u"board",
                                       u"http://x.example/", u"http://x/-ads.comment"};
  for (const String& url : testing::corpusURLs()) texts.push_back(lowered(url));
  for (const std::u16string& t : texts) {
    uint32_t expected = 0;
    const std::vector<const char*>* tables[] = {&ads, &paths, &forums};
    for (uint32_t i = 0; i < 3; ++i) {
      if (text::fastContainsSubCStrings(t.data(), t.size(), tables[i]->data())) expected |= 1u << i;
    }
    EXPECT_EQ(matcher.matchingTables(t.data(), t.size()), expected) << String(t).toUtf8();
    EXPECT_EQ(matcher.matchingTables(t.data(), t.size(), 2), expected & 2) << String(t).toUtf8();
  }
}

TEST(RowMatcher, AgreesOverRealURLs) {
  const std::vector<String>& urls = testing::corpusURLs();
  if (urls.size() < 100) GTEST_SKIP() << "no documentation corpus installed";
  std::vector<std::u16string> texts;
  for (const String& url : urls) texts.push_back(lowered(url));
  for (const char* table : kTables) expectSameAnswers(table, texts);
}

}  // namespace
}  // namespace norvane::urls
