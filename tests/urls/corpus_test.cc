// Properties over real URLs found in Debian's documentation.

#include <gtest/gtest.h>

#include "norvane/urls/classification.h"
#include "norvane/urls/normal_forms.h"
#include "norvane/urls/url_object.h"
#include "test_support.h"
#include "url_corpus.h"

namespace norvane::urls {
namespace testing {

const std::vector<String>& corpusURLs() {
  static const std::vector<String> urls = [] {
    std::vector<String> out;
    for (const std::string& u : corpus::gatherURLs()) out.push_back(String::fromUtf8(u));
    return out;
  }();
  return urls;
}

}  // namespace testing

namespace {

using testing::corpusURLs;
using testing::U;

class Corpus : public ::testing::Test {
 protected:
  void SetUp() override {
    if (corpusURLs().size() < 100) GTEST_SKIP() << "no documentation corpus installed";
  }
};

TEST_F(Corpus, SimplifiedFormIsIdempotent) {
  size_t changed = 0;
  for (const String& url : corpusURLs()) {
    String once = simplifiedStringURL(url);
    String twice = simplifiedStringURL(once);
    EXPECT_TRUE(twice.isSameObject(once)) << U(url) << " -> " << U(once) << " -> " << U(twice);
    if (!once.isSameObject(url)) ++changed;
  }
  EXPECT_GT(changed, corpusURLs().size() / 2);  // at least the https:// and www. forms change
}

TEST_F(Corpus, UnchangedResultsAreTheReceiver) {
  using Form = String (*)(const String&);
  const std::pair<const char*, Form> kForms[] = {{"standardEscapes", stringByReplacingStandardPercentEscapesOfURL},
                                                 {"asciiEscapes", stringByReplacingASCIIPercentEscapesOfURL},
                                                 {"format", stringByFormattingURL},
                                                 {"standardized", standardizedStringURL},
                                                 {"anchor", stringURLWithoutAnchor},
                                                 {"credentials", stringURLWithoutCredentials},
                                                 {"display", displayStringURL},
                                                 {"session", stringURLByRemovingSessionIDs},
                                                 {"analytics", stringURLByRemovingAnalytics},
                                                 {"index", stringURLByRemovingIndexPages},
                                                 {"empty", stringURLByRemovingEmptyParams},
                                                 {"addStandard", stringByAddingStandardPercentEscapesToURL},
                                                 {"webkit", WebKitStringURL}};
  for (const String& url : corpusURLs()) {
    for (auto [name, form] : kForms) {
      String result = form(url);
      if (result == url) {
        EXPECT_TRUE(result.isSameObject(url)) << name << ": " << U(url);
      }
    }
    String utf8 = stringByReplacingPercentEscapesOfURL(url);
    if (utf8 == url) {
      EXPECT_TRUE(utf8.isSameObject(url)) << U(url);
    }
  }
}

TEST_F(Corpus, EscapingRoundTrips) {
  for (const String& url : corpusURLs()) {
    EXPECT_EQ(stringByReplacingPercentEscapesOfURL(stringByAddingStandardPercentEscapesToURL(url)), url) << U(url);
    EXPECT_EQ(stringByReplacingASCIIPercentEscapesOfURL(stringByAddingASCIIPercentEscapesToURL(url)), url) << U(url);
  }
}

TEST_F(Corpus, ClassificationAgreesWithTheScan) {
  size_t topics = 0;
  for (const String& url : corpusURLs()) {
    EXPECT_TRUE(isHTTPStringURL(url)) << U(url);
    EXPECT_TRUE(isWebKitStringURL(url)) << U(url);
    EXPECT_FALSE(isMailStringURL(url)) << U(url);
    EXPECT_TRUE(isEqualToStringURL(url, url)) << U(url);
    EXPECT_FALSE(stringURLScheme(url).isNull()) << U(url);
    std::optional<UrlParts> parts = parseUrl(url.view());
    if (parts) {
      EXPECT_TRUE(parts->hasAuthority) << U(url);
    }
    // Touch every predicate: none may fault on real input.
    topics += stringURLIsTopicOrThread(url);
    (void)stringURLIsAdvertisement(url);
    (void)stringURLIsBookmarklet(url);
    (void)stringURLIsRecaptcha(url);
    (void)stringURLIsTranslation(url);
    (void)stringURLIsForum(url);
    (void)stringURLIsCached(url);
    (void)isSearchEngine(Url{url});
  }
  EXPECT_LT(topics, corpusURLs().size());
}

}  // namespace
}  // namespace norvane::urls
