#include "norvane/urls/normal_forms.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include "test_support.h"

namespace norvane::urls {
namespace {

using testing::S;
using testing::U;

struct Case {
  const char* in;
  const char* out;  // null: the receiver itself comes back
};

// Runs `operation` over the cases; a null `out` demands the very same object.
template <typename Operation>
void expectCases(const char* name, Operation operation, std::initializer_list<Case> cases) {
  for (const Case& c : cases) {
    String in = S(c.in);
    String result = operation(in);
    if (c.out) {
      EXPECT_EQ(U(result), c.out) << name << "(" << c.in << ")";
    } else {
      EXPECT_TRUE(result.isSameObject(in)) << name << "(" << c.in << ") gave " << U(result);
    }
  }
}

TEST(PercentEscapes, StandardSetIsReplacedAndOthersStay) {
  expectCases("standard", stringByReplacingStandardPercentEscapesOfURL,
              {{"http://a.com/%41", nullptr},
               {"http://a.com/b%2Fc", "http://a.com/b/c"},
               {"http://a.com/b%2fc", "http://a.com/b/c"},
               {"http://a.com/%7Euser", "http://a.com/~user"},
               {"http://a.com/x?b%3Fc", nullptr},
               {"http://a.com/b%3Fc", "http://a.com/b?c"},
               {"http://a.com/a%20b%0A", "http://a.com/a b\n"},
               {"http://a.com/%252F", "http://a.com/%2F"},
               {"http://a.com/%C3%A9", nullptr},
               {"http://a.com/%", nullptr},
               {"http://a.com/%2", nullptr},
               {"http://a.com/%zz%2", nullptr},
               {"%2", nullptr},
               {"%2F", "/"}});
}

TEST(PercentEscapes, ASCIIEscapesAreReplacedBelow128Only) {
  expectCases("ascii", stringByReplacingASCIIPercentEscapesOfURL,
              {{"a%C3b", nullptr}, {"a%41%7e", "aA~"}, {"%3F?", "??"}, {"%4", nullptr}, {"%7F", "\x7f"}});
}

TEST(PercentEscapes, PlatformReplacementDecodesValidTextOnly) {
  expectCases("utf8", [](const String& s) { return stringByReplacingPercentEscapesOfURL(s); },
              {{"a%C3%A9b", "aéb"},
               {"a%C3b", nullptr},
               {"%41%C3%A9%FF", "Aé%FF"},
               {"%F0%9F%98%80", "\xF0\x9F\x98\x80"},
               {"%ED%A0%80", nullptr},
               {"%C0%AF", nullptr}});
  EXPECT_EQ(U(stringByReplacingPercentEscapesOfURL(S("caf%E9"), 5)), "café");
  String ascii = S("caf%E9");
  EXPECT_TRUE(stringByReplacingPercentEscapesOfURL(ascii, 1).isSameObject(ascii));
  EXPECT_TRUE(stringByReplacingPercentEscapesOfURL(ascii, 0xDEAD).isSameObject(ascii));
  EXPECT_TRUE(stringByReplacingPercentEscapesOfURL(String()).isNull());
}

TEST(PercentEscapes, ConversionWorksInPlaceAndKeepsShortTexts) {
  std::u16string text = u"%4";
  EXPECT_EQ(convertPercentEscapesOfURL(text.data(), text.size(), false), 2u);
  text = u"x%41%2F%3F?";
  size_t length = convertPercentEscapesOfURL(text.data(), text.size(), true);
  EXPECT_EQ(text.substr(0, length), u"x%41/%3F?");
  text = u"x%41%2F%3F?";
  length = convertPercentEscapesOfURL(text.data(), text.size(), false);
  EXPECT_EQ(text.substr(0, length), u"xA/??");
}

TEST(PercentEscapes, AddingStandardAndASCIISets) {
  expectCases(
      "addStandard", stringByAddingStandardPercentEscapesToURL,
      {{"a b#c$d%e&f+g/h:i;j=k?l@m", "a%20b%23c%24d%25e%26f%2bg%2fh%3ai%3bj%3dk%3fl%40m"}, {"abc-é.~", nullptr}});
  expectCases("addASCII", stringByAddingASCIIPercentEscapesToURL,
              {{"a.b-c_d", "a%2eb%2dc%5fd"}, {"Az09é", nullptr}, {"\t", "%09"}});
}

TEST(PercentEscapes, AddingWithAnEncoding) {
  expectCases("add", [](const String& s) { return stringByAddingPercentEscapesToURL(s); },
              {{"http://a.com/x?y=1&z", nullptr},
               {"a b", "a%20b"},
               {"é", "%C3%A9"},
               {"\xF0\x9F\x98\x80", "%F0%9F%98%80"},
               {"a\"<>^`{|}b", "a%22%3C%3E%5E%60%7B%7C%7Db"}});
  EXPECT_EQ(U(stringByAddingPercentEscapesToURL(S("café"), 5)), "caf%E9");
  EXPECT_TRUE(stringByAddingPercentEscapesToURL(S("café"), 1).isNull());
  EXPECT_EQ(U(stringByAddingPercentEscapesToURL(S("a b<c"), 4, u" ")), "a b%3Cc");
  EXPECT_EQ(U(stringByAddingPercentEscapesToURL(S("a:b?c&d;e@f/g"), 4, u"", String())), "a%3Ab%3Fc%26d%3Be%40f/g");
  EXPECT_EQ(U(stringByAddingPercentEscapesToURL(S("a/b:c"), 4, u"", S("/"))), "a%2Fb:c");
}

TEST(PercentEscapes, QueryTerms) {
  EXPECT_EQ(U(stringByFormattingQueryTerm(S("rock \t and  roll"), 4)), "rock+and+roll");
  EXPECT_EQ(U(stringByFormattingQueryTerm(S("c++ é"), 4)), "c%2B%2B+%C3%A9");
  EXPECT_EQ(U(stringByFormattingQueryTerm(S("c++ é"), 4, false)), "c++%20%C3%A9");
  String plain = S("plain");
  EXPECT_TRUE(stringByFormattingQueryTerm(plain, 4).isSameObject(plain));
}

TEST(Cleaning, FormattingPastedAddresses) {
  expectCases("format", stringByFormattingURL,
              {{"http://x.com", nullptr},
               {"  http://x.com/a \n", "http://x.com/a"},
               {" message:<abc@def> ", "message:<abc@def>"},
               {"message:<abc@def>", nullptr},
               {"John <john@example.com>", "john@example.com"},
               {"<http://x.com/>", "http://x.com/"},
               {"see <http://x.com/> now", "see http://x.com/ now"},
               {"a<b>c", "abc"},
               {"<a@b", "a@b"},
               {"http://x.com/a\xE2\x80\xA8"
                "b\xEF\xBF\xBC",
                "http://x.com/ab"}});
}

TEST(Cleaning, StandardizedURL) {
  expectCases("standardized", standardizedStringURL,
              {{"http://host/a/b", nullptr},
               {"http://host//a///b", "http://host/a/b"},
               {"http://host/a?x=//y", nullptr},
               {"http://host//a;b//c", "http://host/a;b//c"},
               {"http://host/a/.", "http://host/a"},
               {"http://host/a/..", "http://host/a"},
               {"http://host/a/./..", "http://host/a"},
               {"http://host/a/.?x", nullptr},
               {"http://host/file.", nullptr},
               {"http://host/a..", nullptr},
               {"..", ""},
               {".", ""},
               {"a///b", "a/b"}});
}

TEST(Cleaning, AnchorsAndRoutes) {
  expectCases("anchor", stringURLWithoutAnchor,
              {{"http://a/b", nullptr},
               {"http://a/b#x", "http://a/b"},
               {"http://a/#!/x", nullptr},
               {"http://a/#/x", nullptr},
               {"http://a/#!", "http://a/"},
               {"http://a/#/", "http://a/"},
               {"#", ""}});
}

TEST(Cleaning, Credentials) {
  expectCases("credentials", stringURLWithoutCredentials,
              {{"http://user:pw@host/p", "http://host/p"},
               {"http://user@host", "http://host"},
               {"ftp://u:p@h:21/x?y#z", "ftp://h:21/x?y#z"},
               {"http://host/a@b", nullptr},
               {"/path@x", nullptr},
               {"~user@x", nullptr},
               {"http://bad host@x", nullptr},
               {"http://u@[::1]:8/", "http://[::1]:8/"},
               {"", nullptr}});
}

TEST(Cleaning, SchemeParts) {
  expectCases(
      "scheme", stringURLScheme,
      {{"http://x", "http"}, {"mailto:a@b", "mailto"}, {"/a:b", "<null>"}, {"a?b:c", "<null>"}, {"abc", "<null>"}});
  expectCases(
      "withoutScheme", stringURLWithoutScheme,
      {{"http://x/y", "x/y"}, {"mailto:a", "a"}, {"x/y", nullptr}, {"http://", ""}, {"http://www.x.com", "www.x.com"}});
}

TEST(Cleaning, PathExtensions) {
  expectCases("extension", stringURLPathExtension,
              {{"http://x.com/a/b.html?x=1", "html"},
               {"http://x.com", "<null>"},
               {"http://x.com/", "<null>"},
               {"http://x.com/a.d/file", "<null>"},
               {"/a/b.tar.gz", "gz"},
               {"http://x.com/a.php?f=b.pdf", "pdf"},
               {"http://x.com/a.?x", "<null>"},
               {"http://x.com/a.js#top", "js"},
               {"x", "<null>"},
               {"http://x.com/.profile", "<null>"}});
  EXPECT_TRUE(stringURLMatchingExtensions(S("http://x/a.PDF"), {S("txt"), S("pdf")}));
  EXPECT_FALSE(stringURLMatchingExtensions(S("http://x/a.PDF"), {S("txt")}));
  EXPECT_FALSE(stringURLMatchingExtensions(S("http://x/a"), {S("")}));
}

TEST(Cleaning, DisplayForms) {
  expectCases("display", displayStringURL,
              {{"http://user:pw@www.Example.com/a/", "Example.com/a"},
               {"https://WWW.x.org", "x.org"},
               {"x.org", nullptr},
               {"www.x.org//", "x.org"}});
}

TEST(Cleaning, EqualURLs) {
  EXPECT_TRUE(isEqualToStringURL(S("http://X.com/a#top"), S("http://x.com/a/")));
  EXPECT_TRUE(isEqualToStringURL(S("http://x.com//a"), S("HTTP://x.com/a")));
  EXPECT_TRUE(isEqualToStringURL(S("http://x.com/#!/r"), S("http://x.com/#!/R")));
  EXPECT_FALSE(isEqualToStringURL(S("http://x.com/a"), S("http://x.com/b")));
  EXPECT_FALSE(isEqualToStringURL(S("http://x.com/a"), String()));
  EXPECT_FALSE(isEqualToStringURL(String(), String()));
  EXPECT_TRUE(isEqualToStringURL(S("/"), S("")));
}

TEST(Removing, QueryParameter) {
  auto removeVed = [](const String& s) { return stringURLByRemovingQueryParam(s, u"ved="); };
  expectCases("ved", removeVed,
              {{"http://p.com/x?q=1&ved=abc&z=2", "http://p.com/x?q=1&z=2"},
               {"http://p.com/x?VED=1", "http://p.com/x"},
               {"http://p.com/x?ved=1&ved=2", "http://p.com/x"},
               {"http://p.com/ved=1?ved=2", nullptr},
               {"ved=1", nullptr},
               {"http://p.com/x?q=1", nullptr},
               {"http://p.com/x?ved=1&", "http://p.com/x"},
               {"http://p.com/x;ved=1;q", "http://p.com/x;q"},
               {"http://p.com/x;ved=1?q", "http://p.com/x;q"},
               {"http://p.com/x?ved=1;q", "http://p.com/x"}});
}

TEST(Removing, SessionIdentifiers) {
  expectCases("session", stringURLByRemovingSessionIDs,
              {{"http://x.com/a.php?sid=abc1&x=1", "http://x.com/a.php?x=1"},
               {"http://x.com/a.php?sid=123", nullptr},
               {"http://x.com/a.php?sid=abc&", "http://x.com/a.php"},  // terminator at the very end
               {"http://x.com/a.php?x=1&sid=abc&", "http://x.com/a.php?x=1"},
               {"http://x.com/a.php?p_sid=123", "http://x.com/a.php"},
               {"http://x.com/a.php?cid=12&cid=ab", nullptr},
               {"http://x.com/a.php?cid=1a", "http://x.com/a.php"},
               {"http://x.com/sid=abc/a", nullptr},
               {"sid=abc", nullptr},
               {"http://x.com/a.jsp;jsessionid=ABC123?x=1", "http://x.com/a.jsp;x=1"},
               {"http://x.com/a.jsp;jsessionid=ABC", "http://x.com/a.jsp"},
               {"http://x.com/a.html?PHPSESSID=abc&page=2", "http://x.com/a.html?page=2"},
               {"http://x.com/a?cfid=1&cftoken=2&q=3", "http://x.com/a?cftoken=2&q=3"},  // no "id=" left
               {"http://x.com/a.html?pid=3&random=5", "http://x.com/a.html?pid=3"},
               {"http://x.com/a.html?random=5", nullptr},
               {"http://x.com/a.html?sessid=1&random=5", "http://x.com/a.html"},
               {"http://x.com/p.html?CMP=abc", "http://x.com/p.html"},
               {"http://x.com/p.html?cmp=abc", nullptr},
               {"http://x.com/p.php?CMP=abc", nullptr},
               {"http://x.com/p.php?pi=1&q=2", "http://x.com/p.php?q=2"},
               {"http://x.com/p.asp?LSRC=1&a=2", "http://x.com/p.asp?a=2"},
               {"http://x.com/p.html?LSRC=1", nullptr},
               {"http://f.com/viewtopic.php?t=5&highlight=foo", "http://f.com/viewtopic.php?t=5"},
               {"http://f.com/viewtopic.php?t=5&p=7&s=abc", "http://f.com/viewtopic.php?t=5&p=7"},
               {"http://f.com/index.php?t=5&p=7&s=abc", nullptr},
               {"http://groups.google.com/g/x?ei=abc&hl=en", "http://groups.google.com/g/x?hl=en"},
               {"http://other.com/g/x?ei=abc&hl=en", nullptr},
               {"http://x.com/a?ccbill=12", "http://x.com/a"},
               {"http://x.com/login?next=/a", "http://x.com/login"},
               {"http://x.com/register?a=1", "http://x.com/register"},
               {"http://x.com/w.html?widgetType=b&c=1", "http://x.com/w.html"}});
}

TEST(Removing, Analytics) {
  expectCases("analytics", stringURLByRemovingAnalytics,
              {{"http://x.com/a?utm_source=tw&utm_foo=1&utm_medium=m", "http://x.com/a?utm_foo=1"},
               {"http://x.com/a?utm_source=x", "http://x.com/a"},
               {"http://x.com/a?b=1&UTM_CAMPAIGN=y&c=2", "http://x.com/a?b=1&c=2"},
               {"http://x.com/a?b=1", nullptr},
               {"http://x.com/utm_source=1", nullptr}});
}

TEST(Removing, EmptyParameters) {
  expectCases("empty", stringURLByRemovingEmptyParams,
              {{"http://x.com/p?a=&b=1", "http://x.com/p?b=1"},
               {"http://x.com/p?x=1&a=", "http://x.com/p?x=1&"},
               {"http://x.com/p?a=&b=&c=3", "http://x.com/p?c=3"},
               {"http://x.com/p?x=1&a=&b=", "http://x.com/p?x=1&"},
               {"http://x.com/p?q=a=", nullptr},
               {"a=", nullptr},
               {"http://x.com/p?x=1&a=;b=2", "http://x.com/p?x=1&b=2"},
               {"http://x.com/p?x=1", nullptr}});
}

TEST(Removing, IndexPages) {
  expectCases("index", stringURLByRemovingIndexPages,
              {{"http://x.com/index.html", "http://x.com"},
               {"http://x.com/a/INDEX.PHP", "http://x.com/a"},
               {"http://x.com/a/index.shtml", "http://x.com/a"},
               {"http://x.com/index.html?x=1", nullptr},
               {"http://x.com/index.jsp", nullptr},
               {"/index.ht", nullptr}});
}

TEST(Simplified, OneKeyForOnePage) {
  String a = simplifiedStringURL(S("https://www.Example.com/"));
  String b = simplifiedStringURL(S("http://example.com"));
  EXPECT_EQ(U(a), "http://example.com");
  EXPECT_EQ(a, b);
  expectCases("simplified", [](const String& s) { return simplifiedStringURL(s); },
              {{"https://www.example.com/a/index.html?utm_source=x#top", "http://example.com/a"},
               {"http://x.com/?page=main.php", "http://x.com"},
               {"https://patents.google.com/patent/US1?ved=abc&oq=x", "http://patents.google.com/patent/us1?oq=x"},
               {"http://x.com/a?ved=abc", "http://x.com/a?ved=abc"},
               {"HTTPS://x.com//A%2FB/", "http://x.com/a/b"},
               {"http://x.com/a.php?PHPSESSID=abc&q=&r=1", "http://x.com/a.php?r=1"},
               {"http://example.com/a", nullptr}});
}

TEST(Simplified, FlagsChooseTheSteps) {
  String url = S("HTTPS://X.com/index.html?a=&utm_source=1#b");
  EXPECT_EQ(U(simplifiedStringURL(url, false, false, false, false, false)),
            "http://x.com/index.html?a=&utm_source=1#b");
  // The last parameter is removed up to the end, anchor included.
  EXPECT_EQ(U(simplifiedStringURL(url, false, true, false, true, false)), "http://x.com/index.html?");
  EXPECT_EQ(U(simplifiedStringURL(url, false, true, true, true, true)), "http://x.com/index.html?");
  EXPECT_EQ(U(simplifiedStringURL(S("http://x.com/index.html#b"), false, false, true, false, true)), "http://x.com");
}

TEST(HostForms, ComponentsAndInversion) {
  std::vector<String> components = hostComponents(S("www.Example.com"));
  ASSERT_EQ(components.size(), 3u);
  EXPECT_EQ(U(components[1]), "Example");
  EXPECT_TRUE(hostComponents(String()).empty());
  EXPECT_EQ(U(invertedHost(S("www.Example.com"))), "com.example.www");
  EXPECT_TRUE(invertedHost(S("")).isNull());

  auto joined = [](const std::vector<String>& parts) {
    std::string out;
    for (const String& p : parts) out += "[" + U(p) + "]";
    return out;
  };
  EXPECT_EQ(joined(invertedHostComponents(S("a.b.c.d"), 2)), "[d][c.b.a]");
  EXPECT_EQ(joined(invertedHostComponents(S("a.b.c.d"), 1)), "[d.c.b.a]");
  EXPECT_EQ(joined(invertedHostComponents(S("A.b.c.d"))), "[d][c][b][a]");
  EXPECT_EQ(joined(invertedHostComponents(S("a..b."), 5)), "[b][a]");
  EXPECT_EQ(joined(invertedHostComponents(S("a.b"), 3)), "[b][a]");
}

TEST(HostForms, LongLastComponentEndsInItsChecksum) {
  std::string host;
  for (int i = 0; i < 100; ++i) host += (i ? ".l" : "l") + std::to_string(i % 10);
  std::vector<String> components = invertedHostComponents(S(host.c_str()), 2);
  ASSERT_EQ(components.size(), 2u);
  std::string whole;
  for (int i = 98; i >= 0; --i) whole += "l" + std::to_string(i % 10) + (i ? "." : "");
  ASSERT_GE(whole.size(), 251u);
  char digits[9];
  snprintf(digits, sizeof digits, "%08lx", crc32(0, reinterpret_cast<const Bytef*>(whole.data()), whole.size()));
  EXPECT_EQ(components[1].length(), 250u);
  EXPECT_EQ(U(components[1]), whole.substr(0, 242) + digits);

  std::string exactly250(250, 'x');
  std::vector<String> kept = invertedHostComponents(S(("a." + exactly250).c_str()), 1);
  EXPECT_EQ(kept[0].length(), 250u);  // 252 units: shortened
  EXPECT_EQ(invertedHostComponents(S(("a." + std::string(246, 'x')).c_str()), 1)[0].length(), 248u);
}

TEST(HostForms, AppendingToPaths) {
  EXPECT_EQ(U(stringByAppendingInvertedHostComponentsToPath(S("www.a.com"), S("/tmp/x"))), "/tmp/x/com/a/www");
  EXPECT_EQ(U(stringByAppendingInvertedHostComponentsToPath(S("www.a.com"), S("/tmp/x/"), 2)), "/tmp/x/com/a.www");
  EXPECT_TRUE(stringByAppendingInvertedHostComponentsToPath(S("a.com"), String()).isNull());
  String path = S("/tmp");
  EXPECT_TRUE(stringByAppendingInvertedHostComponentsToPath(S(""), path).isSameObject(path));
}

TEST(NullArguments, GiveNullResults) {
  String null;
  for (auto op :
       {stringByReplacingStandardPercentEscapesOfURL, stringByReplacingASCIIPercentEscapesOfURL,
        stringByAddingStandardPercentEscapesToURL, stringByAddingASCIIPercentEscapesToURL, stringByFormattingURL,
        standardizedStringURL, stringURLWithoutAnchor, stringURLWithoutCredentials, stringURLScheme,
        stringURLWithoutScheme, stringURLPathExtension, displayStringURL, stringURLByRemovingSessionIDs,
        stringURLByRemovingAnalytics, stringURLByRemovingIndexPages, stringURLByRemovingEmptyParams}) {
    EXPECT_TRUE(op(null).isNull());
  }
  EXPECT_TRUE(simplifiedStringURL(null).isNull());
}

}  // namespace
}  // namespace norvane::urls
