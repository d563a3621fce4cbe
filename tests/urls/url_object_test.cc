#include "norvane/urls/url_object.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "test_support.h"

namespace norvane::urls {
namespace {

using testing::S;
using testing::U;

Url url(const char* text) {
  return Url{S(text)};
}
std::string str(std::u16string_view v) {
  return String(v).toUtf8();
}

TEST(ParseUrl, SplitsAllComponents) {
  std::optional<UrlParts> p = parseUrl(u"http://u:p@Host.com:8080/a/b?q=1#f");
  ASSERT_TRUE(p);
  EXPECT_EQ(str(p->scheme), "http");
  EXPECT_EQ(str(p->user), "u");
  EXPECT_EQ(str(p->password), "p");
  EXPECT_EQ(str(p->host), "Host.com");
  EXPECT_EQ(str(p->port), "8080");
  EXPECT_EQ(str(p->path), "/a/b");
  EXPECT_EQ(str(p->query), "q=1");
  EXPECT_EQ(str(p->fragment), "f");
  EXPECT_TRUE(p->hasUser && p->hasPassword && p->hasQuery && p->hasFragment);

  p = parseUrl(u"mailto:a@b");
  ASSERT_TRUE(p);
  EXPECT_FALSE(p->hasAuthority);
  EXPECT_EQ(str(p->path), "a@b");

  p = parseUrl(u"http://[::1]:80/");
  ASSERT_TRUE(p);
  EXPECT_EQ(str(p->host), "::1");

  p = parseUrl(u"/rel/path?x");
  ASSERT_TRUE(p);
  EXPECT_TRUE(p->scheme.empty());
  EXPECT_EQ(str(p->path), "/rel/path");

  for (const char16_t* bad : {u"http://x:8a/", u"http://a b/", u"http://[::1/", u"http://[::1]x/", u"a\tb"}) {
    EXPECT_FALSE(parseUrl(bad)) << str(bad);
  }
}

TEST(UrlObject, SchemePredicates) {
  EXPECT_TRUE(isHTTPURL(url("HTTPS://x")));
  EXPECT_FALSE(isHTTPURL(url("httpx://x")));
  EXPECT_FALSE(isHTTPURL(Url{}));
  EXPECT_TRUE(isFTPURL(url("ftps://x")));
  EXPECT_TRUE(isNewsURL(url("nntp://x")));
  EXPECT_TRUE(isDownloadableURL(url("ftp://x")));
  EXPECT_FALSE(isDownloadableURL(url("feed://x")));
  EXPECT_TRUE(isSafariReaderURL(url("reading-list:x")));
  EXPECT_TRUE(isDataURL(url("DATA:x")));
  EXPECT_TRUE(isMailURL(url("mailto:a@b")));
  EXPECT_TRUE(isBookendsURL(url("bookends://sonnysoftware.com/x")));
  EXPECT_FALSE(isBookendsURL(url("bookends://SonnySoftware.com/x")));

  EXPECT_TRUE(isRemoteWebKitURL(url("http://a.b/")));
  EXPECT_TRUE(isRemoteWebKitURL(url("feed://a.b/")));
  EXPECT_FALSE(isRemoteWebKitURL(url("http://.../x")));
  EXPECT_FALSE(isRemoteWebKitURL(url("http://a...b/")));
  EXPECT_FALSE(isRemoteWebKitURL(url("http:///x")));
  EXPECT_TRUE(isWebKitURL(url("file:///tmp")));
  EXPECT_FALSE(isWebKitURL(url("mailto:a@b")));
  EXPECT_TRUE(isUsableURL(url("applescript://x")));
  EXPECT_TRUE(isUsableURL(url("javascript:x")));
  EXPECT_FALSE(isUsableURL(url("mailto:x")));
}

TEST(UrlObject, LoadableFilesMustExistAndNotBeFolders) {
  std::filesystem::path dir = std::filesystem::temp_directory_path() / ("urls_test_" + std::to_string(getpid()));
  std::filesystem::create_directories(dir);
  std::ofstream(dir / "a file.txt") << "x";
  std::string base = "file://" + dir.string();
  EXPECT_TRUE(isLoadableURL(Url{S((base + "/a%20file.txt").c_str())}));
  EXPECT_FALSE(isLoadableURL(Url{S((base + "/missing.txt").c_str())}));
  EXPECT_FALSE(isLoadableURL(Url{S(base.c_str())}));
  EXPECT_TRUE(isLoadableURL(url("feed://x")));
  EXPECT_FALSE(isLoadableURL(url("news://x")));
  std::filesystem::remove_all(dir);
}

TEST(UrlObject, PathExtensions) {
  EXPECT_EQ(U(pathExtension(url("http://x.com/a.b/c.PDF?x=y.z"))), "PDF");
  EXPECT_EQ(U(pathExtension(url("http://x.com"))), "");
  EXPECT_EQ(U(pathExtension(url("http://x.com/dir/"))), "");
  EXPECT_EQ(U(pathExtension(url("file:///tmp/a.txt"))), "txt");
}

TEST(UrlObject, DisplayAndHostForms) {
  EXPECT_EQ(U(displayString(url("http://www.x.com/a/"))), "x.com/a");
  EXPECT_EQ(U(displayString(url("http://u@www.x.com/"))), "x.com");
  EXPECT_EQ(U(displayString(url("mailto:a@b.com"))), "a@b.com");
  EXPECT_EQ(U(displayString(url("data:text/plain,x"))), "data:text/plain,x");
  EXPECT_EQ(U(displayString(url("http:///"))), "http:///");  // no host: not a web URL
  EXPECT_EQ(U(displayString(url("mailto:/"))), "mailto:/");
  const char* home = getenv("HOME");
  if (home && std::string(home) != "/") {
    EXPECT_EQ(U(displayString(Url{S(("file://" + std::string(home) + "/x/./y").c_str())})), "~/x/y");
  }
  EXPECT_EQ(U(absoluteStringWithoutUserAndPassword(url("http://u:p@h.com:80/a?b#c"))), "http://h.com/a?b#c");
  Url plain = url("http://h.com/a");
  EXPECT_TRUE(absoluteStringWithoutUserAndPassword(plain).isSameObject(plain.string));
  EXPECT_EQ(U(absoluteStringWithHostAndPath(url("http://u@h.com/a"))), "h.com/a");
  EXPECT_EQ(U(absoluteStringWithHostAndPath(url("mailto:x@y"))), "x@y");
  EXPECT_EQ(U(URLWithoutCredentials(url("http://u:p@h.com/")).string), "http://h.com/");
  EXPECT_EQ(U(invertedHost(url("http://www.A.com/"))), "com.a.www");
  EXPECT_EQ(invertedHostComponents(url("http://a.b.c/"), 2).size(), 2u);

  EXPECT_TRUE(isHostEqualTo(url("http://A.com/x"), url("https://a.COM/y")));
  EXPECT_TRUE(isHostEqualTo(url("file:///a"), url("file:///b")));
  EXPECT_FALSE(isHostEqualTo(url("file:///a"), url("http://a/")));
  EXPECT_FALSE(isHostEqualTo(url("http://a.com"), url("http://b.com")));
  EXPECT_FALSE(isHostEqualTo(url("http://a.com"), Url{}));
}

TEST(UrlObject, FormsUseThePathOfFileURLs) {
  EXPECT_EQ(U(simplifiedStringURL(url("file:///tmp//a/./b/"))), "/tmp/a/b");
  EXPECT_EQ(U(standardizedStringURL(url("file:///tmp/a/../b"))), "/tmp/b");
  EXPECT_EQ(U(simplifiedStringURL(url("https://www.X.com/"))), "http://x.com");
  EXPECT_EQ(U(stringURLWithoutAnchor(url("file:///a#b"))), "file:///a");
  EXPECT_EQ(U(stringURLByRemovingQueryParam(url("http://x/?a=1&b=2"), u"b=")), "http://x/?a=1");
}

TEST(SearchEngines, HostRules) {
  const std::pair<const char*, bool> kCases[] = {{"http://www.google.com/search?q=x", true},
                                                 {"http://mail.google.com/x", false},
                                                 {"http://picasaweb.google.com/lh/view?x", true},
                                                 {"http://picasaweb.google.com/user", false},
                                                 {"http://groups.google.com/group/x", false},
                                                 {"http://groups.google.com/", true},
                                                 {"http://bing.com/x", true},
                                                 {"http://www.bing.com/search?q=x", true},
                                                 {"http://ask.com/web?q=x", true},
                                                 {"http://search.yahoo.com/search?p=x", true},
                                                 {"http://news.yahoo.com/news?tmpl=story&u=x", false},
                                                 {"http://news.yahoo.com/", true},
                                                 {"http://finance.yahoo.com/", true},
                                                 {"http://finance.yahoo.com/q?s=x", false},
                                                 {"http://reuters.yahoo.com/x", false},
                                                 {"http://de.yahoo.de/x", true},
                                                 {"http://rds.yahoo.com/_ylt=1/**http%3a//x", false},
                                                 {"http://search.blogspot.com/x", false},
                                                 {"http://en.wikipedia.org/wiki/Special:Search?search=x", true},
                                                 {"http://en.wikipedia.org/wiki/Foo", false},
                                                 {"http://www.amazon.com/s/ref=x", true},
                                                 {"http://www.amazon.com/dp/x", false},
                                                 {"http://technorati.com/", true},
                                                 {"http://technorati.com/tag/x", false},
                                                 {"http://web.archive.org/web/2000/http://x", true},
                                                 {"http://example.com/", false},
                                                 {"file:///x", false},
                                                 {"mailto:a@b", false}};
  for (auto [text, expected] : kCases) EXPECT_EQ(isSearchEngine(url(text)), expected) << text;
}

class FakeReachability : public Reachability {
 public:
  explicit FakeReachability(uint32_t flags) : flags_(flags) {}
  uint32_t connectionFlagsForHost(const char* host) override {
    asked_ = host ? host : "<null>";
    return flags_;
  }
  const std::string& asked() const { return asked_; }

 private:
  uint32_t flags_;
  std::string asked_;
};

TEST(Reachability, FlagsDecideLocalAndOnline) {
  FakeReachability local(kReachabilityReachable | kReachabilityIsLocalAddress);
  EXPECT_TRUE(isLocalURL(url("http://h.example:81/x"), local));
  EXPECT_EQ(local.asked(), "h.example");
  EXPECT_TRUE(isURLOnline(url("http://h.example/"), local));

  FakeReachability direct(kReachabilityIsDirect);
  EXPECT_TRUE(isLocalURL(url("http://h.example/"), direct));
  EXPECT_FALSE(isURLOnline(url("http://h.example/"), direct));

  FakeReachability remote(kReachabilityReachable);
  EXPECT_FALSE(isLocalURL(url("http://h.example/"), remote));
  EXPECT_TRUE(isURLOnline(url("http://h.example/"), remote));

  FakeReachability dialUp(kReachabilityReachable | kReachabilityConnectionRequired);
  EXPECT_FALSE(isURLOnline(url("http://h.example/"), dialUp));
  FakeReachability intervention(kReachabilityReachable | kReachabilityInterventionRequired);
  EXPECT_FALSE(isURLOnline(url("http://h.example/"), intervention));

  FakeReachability none(0);
  EXPECT_TRUE(isLocalURL(url("file:///tmp"), none));
  EXPECT_TRUE(isURLOnline(url("mailto:a@b"), none));
  EXPECT_EQ(none.asked(), "");
}

TEST(Reachability, LoopbackIsLocalAndReachable) {
  SystemReachability system(std::chrono::milliseconds(5000));
  for (const char* host : {"localhost", "127.0.0.1"}) {
    uint32_t flags = system.connectionFlagsForHost(host);
    EXPECT_TRUE(flags & kReachabilityReachable) << host;
    EXPECT_TRUE(flags & kReachabilityIsLocalAddress) << host;
  }
  EXPECT_EQ(system.connectionFlagsForHost(nullptr), 0u);
  EXPECT_EQ(system.connectionFlagsForHost(""), 0u);
  EXPECT_TRUE(isLocalURL(url("http://localhost:8080/"), system));
  EXPECT_TRUE(isURLOnline(url("http://127.0.0.1/"), system));
}

}  // namespace
}  // namespace norvane::urls
