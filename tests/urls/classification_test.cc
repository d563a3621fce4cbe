#include "norvane/urls/classification.h"

#include <gtest/gtest.h>

#include "test_support.h"

namespace norvane::urls {
namespace {

using testing::S;
using testing::U;

struct Expect {
  const char* url;
  bool result;
};

template <typename Predicate>
void expectAll(const char* name, Predicate predicate, std::initializer_list<Expect> cases) {
  for (const Expect& c : cases) EXPECT_EQ(predicate(S(c.url)), c.result) << name << "(" << c.url << ")";
}

TEST(Tables, HaveTheirRowCountsAndLowerCaseRows) {
  const std::pair<const char*, size_t> kCounts[] = {
      {"image-ad", 13}, {"text-ad", 36},     {"general-ad", 75},  {"ad-path", 13},     {"common-ad-host", 12},
      {"share", 61},    {"second-share", 5}, {"captcha", 3},      {"translation", 11}, {"topic", 5},
      {"forum", 5},     {"cache", 18},       {"search-host", 71}, {"ad-exception", 5}};
  for (auto [name, count] : kCounts) {
    std::vector<std::string_view> rows = urlTableRows(name);
    EXPECT_EQ(rows.size(), count) << name;
    for (std::string_view row : rows) {
      EXPECT_FALSE(row.empty()) << name;
      for (char c : row) EXPECT_FALSE(c >= 'A' && c <= 'Z') << name << ": " << row;
      EXPECT_EQ(std::count(rows.begin(), rows.end(), row), 1) << name << " repeats " << row;
    }
  }
  EXPECT_TRUE(urlTableRows("no-such-table").empty());
}

TEST(Tables, HoldTheKnownFragments) {
  auto holds = [](const char* table, std::string_view row) {
    std::vector<std::string_view> rows = urlTableRows(table);
    return std::find(rows.begin(), rows.end(), row) != rows.end();
  };
  EXPECT_TRUE(holds("image-ad", "/realmedia/ads/creatives/qc/"));
  EXPECT_TRUE(holds("text-ad", "/partner/overture/"));
  EXPECT_TRUE(holds("general-ad", "displayadbanner_tile.asp?showbanner="));
  EXPECT_TRUE(holds("general-ad", "/mgbanner/banner/"));
  EXPECT_TRUE(holds("ad-path", "/iframead/display.aspx"));
  EXPECT_TRUE(holds("share", "action/submitbookmark?url="));
  EXPECT_TRUE(holds("translation", "/translate?hl="));
  EXPECT_TRUE(holds("cache", "/search/srpcache?"));
  EXPECT_TRUE(holds("ad-exception", "/adsk/"));
}

TEST(Advertisements, PathsHostsAndWords) {
  expectAll("ad", stringURLIsAdvertisement,
            {{"http://example.com/ads/x.gif", true},
             {"http://ads.example.com/x", true},
             {"http://example.com/adsk/x", false},
             {"http://example.com/adsk/ads.js", true},
             {"http://example.com/leads.html", false},
             {"http://example.com/downloads.html", false},
             {"http://example.com/adstuff", true},
             {"http://example.com/ad_x", true},
             {"http://example.com/advice", false},
             {"http://example.com/img/banner.gif", true},
             {"http://example.com/img/mybanner.gif", false},
             {"http://example.com/counter.html", true},
             {"http://example.com/hitcounter.html", true},
             {"http://example.com/counter.js", false},
             {"http://example.com/count.html", false},
             {"http://example.com/leadserver/x", false},
             {"http://example.com/loadserver/x", false},
             {"http://adserver.example.com/", true},
             {"adserver", true},
             {"http://x.doubleclick.net/y", true},
             {"http://www.adsoftheworld.com/ads", false},
             {"/ad/", true},
             {"/ad", false},
             {"http://example.com/", false}});
}

TEST(Advertisements, CommonHostsOnlyWithTheFlag) {
  String url = S("http://imageshack.us/img.png");
  EXPECT_TRUE(stringURLIsAdvertisementIncludingCommonHosts(url, true));
  EXPECT_FALSE(stringURLIsAdvertisementIncludingCommonHosts(url, false));
  EXPECT_FALSE(stringURLIsAdvertisementIncludingCommonHosts(S("ask.com/"), true));  // under 9 units
}

TEST(Advertisements, TextAndImageAds) {
  expectAll("adsense", stringURLIsAdSense,
            {{"http://pagead2.googlesyndication.com/pagead/show_ads.js", true},
             {"http://x.com/realmedia/ads/creatives/qc/1.gif", true},
             {"http://x.com/", false},
             {"/overturead.", true},
             {"x/overturead", false}});
  expectAll("imagead", stringURLIsImageAd,
            {{"http://x.com/REALMEDIA/ads/creatives/qc/1.gif", true},
             {"http://pagead2.googlesyndication.com/pagead/show_ads.js", false}});
}

TEST(OtherKinds, SharingCaptchaTranslationForumCache) {
  expectAll("bookmarklet", stringURLIsBookmarklet,
            {{"http://digg.com/submit?url=x", true},
             {"http://digg.com/submit/x", false},
             {"digg.com/submit?", true},
             {"igg.com/submit?x", false},
             {"http://twitter.com/intent/tweet", true},
             {"twitter.com/intent", false}});
  expectAll("recaptcha", stringURLIsRecaptcha,
            {{"http://www.google.com/recaptcha/api/x", true}, {"https://hcaptcha.com/1", false}});
  expectAll("translation", stringURLIsTranslation,
            {{"http://x.com/translate_c?u=y", true}, {"http://x.com/translate", false}});
  expectAll("topic", stringURLIsTopicOrThread,
            {{"http://f.com/viewtopic.php?t=1", true},
             {"http://f.com/t-123-t-45.html", true},
             {"http://f.com/T-1-T-2.HTML", true},
             {"http://f.com/about-t-.html", false},
             {"http://f.com/12-t-.html", false}});
  expectAll("forum", stringURLIsForum,
            {{"http://Board.example.com", true}, {"http://x.com/Comments/1", true}, {"http://x.com/", false}});
  expectAll("cached", stringURLIsCached,
            {{"http://webcache.googleusercontent.com/search?q=cache:x", true},
             {"http://x.com/search?q=Cache:y", true},
             {"http://x.com/search?q=y", false}});
}

TEST(Schemes, PrefixesAndMinimumLengths) {
  expectAll("webkit", isWebKitStringURL,
            {{"www.x", true}, {"www.", false}, {"HTTP://x", true}, {"file://x", true}, {"mailto:x", false}});
  expectAll("remote", isRemoteWebKitStringURL, {{"file:///x", false}, {"ftp.x.org", true}});
  expectAll("loadable", isLoadableStringURL, {{"feed://x", true}, {"news://x", false}});
  expectAll("downloadable", isDownloadableStringURL, {{"feed://x", false}, {"ftps://x", true}});
  expectAll("http", isHTTPStringURL, {{"http:/", false}, {"https://", true}, {"HTTP://", true}});
  expectAll("ftp", isFTPStringURL, {{"ftps://", true}, {"ftp:/", false}});
  expectAll("news", isNewsStringURL, {{"news://x", true}, {"nntp://", true}, {"news:x", false}});
  expectAll("reader", isSafariReaderStringURL, {{"reading-list:x", true}, {"reading-list", false}});
  expectAll("feed", isFeedStringURL, {{"FEED:x", true}, {"fee", false}});
  expectAll("javascript", isJavaScriptStringURL, {{"JavaScript:void(0)", true}, {"java", false}});
  expectAll("applescript", isAppleScriptStringURL, {{"applescript://x", true}});
  expectAll("file", isFileStringURL,
            {{"/tmp", true}, {"~/x", true}, {"FILE://x", true}, {"http://x", false}, {"", false}});
  expectAll("data", isDataStringURL, {{"data:x", true}, {"DATA:x", false}});
  expectAll("about", isAboutStringURL, {{"about:blank", true}, {"About:blank", false}});
  expectAll("bookends", isBookendsStringURL,
            {{"bookends://sonnysoftware.com/x", true}, {"Bookends://sonnysoftware.com/x", false}});
  EXPECT_FALSE(isHTTPStringURL(String()));
}

TEST(Schemes, MailAddresses) {
  expectAll("mail", isMailStringURL,
            {{"john@example.com", true},
             {"a@b.co.uk", true},
             {"a@x.yaho.com", true},
             {"a@x.yahoo.com", false},
             {"a@mail.example.com", false},
             {"mailto:a@b.c", true},
             {"mailto:a@bc", false},
             {"MAILTO:someone", true},
             {"@x.com", false},
             {"-a@x.com", false},
             {"a-@x.com", false},
             {"a b@x.com", false},
             {"a@-x.com", false},
             {"a@x.1om", false},
             {"http://a@x.com", false},
             {"a@x.com?subject=1", true},
             {"a@x.com/path", false},
             {"a@x.comcom", false},
             {"a@x.com,b", false},
             {"first.last_1@x.org", true}});
}

TEST(Schemes, FeedAndFileForms) {
  auto expectForm = [](String (*form)(const String&), const char* in, const char* out) {
    String s = S(in);
    String result = form(s);
    if (out) {
      EXPECT_EQ(U(result), out) << in;
    } else {
      EXPECT_TRUE(result.isSameObject(s)) << in << " gave " << U(result);
    }
  };
  expectForm(WebKitStringURL, "feed://x.com/rss", "http://x.com/rss");
  expectForm(WebKitStringURL, "feed:http://x", "http://x");
  expectForm(WebKitStringURL, "FEED:https://x", "https://x");
  expectForm(WebKitStringURL, "http://x", nullptr);
  expectForm(validFeedStringURL, "feed:http://x", "http://x");
  expectForm(validFeedStringURL, "feed://x.com", nullptr);
  expectForm(validFeedStringURL, "feed:/x", nullptr);
  expectForm(validFeedStringURL, "feed:", nullptr);
  expectForm(validFeedStringURL, "feed:x.com/rss", "http://x.com/rss");
  expectForm(stringByAbbreviatingFileURL, "file://localhost/tmp/a", "/tmp/a");
  expectForm(stringByAbbreviatingFileURL, "file:///tmp/a", "/tmp/a");
  expectForm(stringByAbbreviatingFileURL, "FILE:///x", nullptr);
  EXPECT_TRUE(validFeedStringURL(String()).isNull());
}

TEST(HTTPResults, StatusCodesAndErrors) {
  for (int code : {0, 100, 200, 207, 250, 299}) EXPECT_TRUE(isHTTPStatusCodeOkay(code)) << code;
  for (int code : {201, 204, 206, 300, 301, 404, 500}) EXPECT_FALSE(isHTTPStatusCodeOkay(code)) << code;
  for (int code : {307, 408, 429, 500, 502, 503, 504, 507, 509, 510}) EXPECT_TRUE(isHTTPStatusCodeTemporaryError(code));
  for (int code : {200, 301, 404, 501, 505, 508}) EXPECT_FALSE(isHTTPStatusCodeTemporaryError(code)) << code;
  const std::pair<int, int> kMap[] = {{-1014, 204}, {-1013, 401}, {-1012, 401}, {-1010, 302}, {-1007, 302},
                                      {-1001, 408}, {-1102, 403}, {-1100, 404}, {-1009, 0},   {0, 0}};
  for (auto [error, status] : kMap) EXPECT_EQ(HTTPStatusCodeForNSURLError(error), status) << error;
  for (int error : {-1011, -1009, -1005, -1001}) EXPECT_TRUE(isTemporaryNSURLError(error));
  for (int error : {-1000, -1100, 0}) EXPECT_FALSE(isTemporaryNSURLError(error));
}

TEST(MIMETypes, Predicates) {
  expectAll("markup", isMarkupMIMEType,
            {{"text/plain", true},
             {"application/rss+xml", true},
             {"application/RSS", false},
             {"application/rss", true},
             {"application/RDF", false},
             {"application/XHTML", true},
             {"image/svg+xml", false}});
  expectAll("html", isHTMLMIMEType,
            {{"text/plain", true}, {"text/css", false}, {"TEXT/JavaScript", false}, {"application/xhtml+xml", true}});
  expectAll("xml", isXMLMIMEType, {{"text/XML", true}, {"application/rss+xml", true}, {"application/xml-dtd", false}});
  expectAll("json", isJSONMIMEType, {{"application/json", true}, {"text/x-json", true}, {"application/jsonp", false}});
  expectAll("js", isJavaScriptMIMEType, {{"application/x-javascript", true}, {"text/javascript1", false}});
  expectAll("webarchive", isWebArchiveMIMEType, {{"application/x-webarchive", true}, {"application/x-web", false}});
  expectAll("image", isImageMIMEType, {{"IMAGE/png", true}, {"text/image", false}});
  expectAll("text", isTextMIMEType, {{"Text/x", true}});
  expectAll("plain", isPlainTextMIMEType, {{"TEXT/PLAIN", true}, {"text/plain; charset=x", false}});
  expectAll("style", isStylesheetOrScriptMIMEType, {{"text/css", true}, {"x/pointplus", true}, {"text/plain", false}});
  expectAll("rtf", isRTFMIMEType, {{"text/rtf", true}, {"text/richtext", true}, {"text/RichText", false}});
  expectAll("pdf", isPDFMIMEType, {{"application/x-pdf", true}, {"application/pdfx", false}});
  expectAll("ps", isPostScriptMIMEType, {{"application/postscript", true}});
  expectAll("word", isMSWordMIMEType,
            {{"application/msword", true}, {"application/x-doc", true}, {"application/docs", false}});
  expectAll("ppt", isMSPowerPointMIMEType, {{"application/vnd.ms-powerpoint", true}, {"application/x-ppt", true}});
  expectAll("excel", isMSExcelMIMEType, {{"application/vnd.ms-excel", true}, {"application/xls", true}});
  expectAll("office", isMSOfficeMIMEType, {{"application/msword", true}, {"application/pdf", false}});
  expectAll("oo", isOpenOfficeMIMEType, {{"application/vnd.oasis.opendocument.text-template", true}});
  expectAll("so", isStarOfficeMIMEType, {{"application/vnd.sun.xml.writer", true}});
  expectAll("media", isMultimediaMIMEType,
            {{"audio/mpeg", true},
             {"application/x-msmetafile", true},
             {"application/x-wmf", true},
             {"application/pdf", false}});
  EXPECT_FALSE(isTextMIMEType(String()));
}

TEST(Extensions, ListsAndMembership) {
  EXPECT_EQ(imageTypes().size(), 21u);
  EXPECT_EQ(markupTypes().size(), 25u);
  EXPECT_EQ(richTextTypes().size(), 2u);
  EXPECT_EQ(executableTypes().size(), 2u);
  EXPECT_EQ(officeTypes().size(), 28u);
  EXPECT_EQ(officeTypesIncluding(false, false, false, false, false, false).size(), 11u);
  EXPECT_EQ(officeTypesIncluding(true, false, false, false, false, false).size(), 18u);
  EXPECT_EQ(multimediaTypes().size(), 92u);
  EXPECT_EQ(archiveTypes().size(), 27u);
  EXPECT_EQ(binaryFileTypes().size(), 21u + 92u + 27u + 2u + 28u + 2u + 1u);
  EXPECT_EQ(U(binaryFileTypes().back()), "dat");

  expectAll("image", isImageType, {{"JPG", true}, {"svg", false}});
  expectAll("markup", isMarkupType, {{"opf", true}, {"html", false}});
  expectAll("rich", isRichTextType, {{"RTFD", true}});
  expectAll("exe", isExecutableType, {{"exe", true}, {"sh", false}});
  expectAll("office", isOfficeType, {{"pptx", true}, {"wpd", true}, {"ai", true}, {"txt", false}});
  expectAll("media", [](const String& e) { return isMultimediaType(e); },
            {{"M4V", true}, {"movie", true}, {"webm", true}, {"ts", true}, {"xyz", false}, {"movies", false}});
  expectAll("archive", isArchiveType,
            {{"gz", true}, {"SparseImage", true}, {"torrent", true}, {"zipx", false}, {"g", false}});
  expectAll("binary", isBinaryFileType, {{"dat", true}, {"rtf", true}, {"png", true}, {"txt", false}});
  expectAll("email", isEmailExtension, {{"EML", true}, {"emlx", true}, {"mbox", false}});
  EXPECT_FALSE(isImageType(String()));
  EXPECT_FALSE(isMultimediaType(String()));
}

TEST(Extensions, MultimediaClasses) {
  EXPECT_TRUE(isMultimediaType(S("mp3"), true, false, false));
  EXPECT_FALSE(isMultimediaType(S("mp3"), false, true, true));
  EXPECT_TRUE(isMultimediaType(S("MOV"), false, true, false));
  EXPECT_TRUE(isMultimediaType(S("swf"), false, false, true));
  EXPECT_FALSE(isMultimediaType(S("swf"), true, true, false));
  EXPECT_FALSE(isMultimediaType(S("m3u"), false, true, false));
  EXPECT_TRUE(isMultimediaType(S("m3u8"), false, true, false));
}

}  // namespace
}  // namespace norvane::urls
