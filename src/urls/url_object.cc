// URL objects: parsing into components and the operations on a Url value.

#include "norvane/urls/url_object.h"

#include <sys/stat.h>

#include <cstdlib>

#include "norvane/urls/classification.h"
#include "norvane/urls/normal_forms.h"
#include "urls/url_tables.h"
#include "urls/url_text.h"

namespace norvane::urls {
namespace {

using detail::View;

String lowered(View s) {
  std::u16string out(s);
  const unichar* lower = text::lowerCharsTable();
  for (unichar& u : out) u = lower[u];
  return String::fromU16(std::move(out));
}

bool schemeIs(const Url& url, std::initializer_list<std::string_view> schemes) {
  std::optional<UrlParts> parts = parseUrl(url.string.view());
  if (!parts || parts->scheme.empty()) return false;
  for (std::string_view scheme : schemes) {
    if (detail::equalsNoCase(parts->scheme, scheme)) return true;
  }
  return false;
}

// The path with "." and ".." resolved, duplicate and trailing "/" removed and
// escapes decoded, as a file system path.
String standardizedPath(View path) {
  String decoded = stringByReplacingPercentEscapesOfURL(String(path));
  View p = decoded.view();
  std::vector<View> components;
  for (size_t start = 0; start <= p.size();) {
    size_t slash = p.find(u'/', start);
    if (slash == View::npos) slash = p.size();
    View component = p.substr(start, slash - start);
    if (component == u"..") {
      if (!components.empty()) components.pop_back();
    } else if (!component.empty() && component != u".") {
      components.push_back(component);
    }
    start = slash + 1;
  }
  std::u16string out;
  for (View component : components) {
    out.push_back('/');
    out += component;
  }
  if (out.empty() && !p.empty() && p[0] == '/') out = u"/";
  return String::fromU16(std::move(out));
}

// A file URL answers with its standardised path, others with `form` of the
// URL's text.
template <typename Form>
String onTextOrPath(const Url& url, Form form) {
  if (isFileURL(url)) return standardizedPath(urlPath(url).view());
  return form(url.string);
}

// The text behind "scheme:".
View resourceSpecifier(View s) {
  size_t colon = detail::findFirstOf(s, ":/?#");
  return colon != NotFound && s[colon] == ':' ? s.substr(colon + 1) : s;
}

// Without a leading "/" and, if there was one, without the user information
// in front of the first "/".
View hostAndPath(View specifier) {
  bool slashed = !specifier.empty() && specifier[0] == '/';
  while (!specifier.empty() && specifier[0] == '/') specifier.remove_prefix(1);
  if (slashed) {
    size_t at = specifier.find(u'@');
    if (at != View::npos && at < specifier.find(u'/')) specifier.remove_prefix(at + 1);
  }
  return specifier;
}

// Landing page: no path, or just "/".
bool isLandingPage(const UrlParts& parts) {
  return parts.path.empty() || parts.path == u"/";
}

bool containsNoneOf(View lowerUrl, std::initializer_list<std::string_view> rows) {
  for (std::string_view row : rows) {
    if (detail::contains(lowerUrl, row)) return false;
  }
  return true;
}

bool hostIsOneOf(View host, std::initializer_list<std::string_view> hosts) {
  for (std::string_view h : hosts) {
    if (host == detail::widen(h)) return true;
  }
  return false;
}

}  // namespace

String urlScheme(const Url& url) {
  std::optional<UrlParts> parts = parseUrl(url.string.view());
  return parts ? String(parts->scheme) : String::empty();
}

String urlHost(const Url& url) {
  std::optional<UrlParts> parts = parseUrl(url.string.view());
  return parts ? String(parts->host) : String::empty();
}

String urlPath(const Url& url) {
  std::optional<UrlParts> parts = parseUrl(url.string.view());
  return parts ? String(parts->path) : String::empty();
}

// ---- Hosts ---------------------------------------------------------------

std::vector<String> hostComponents(const Url& url) {
  return hostComponents(urlHost(url));
}
String invertedHost(const Url& url) {
  return invertedHost(urlHost(url));
}
std::vector<String> invertedHostComponents(const Url& url, size_t maximum) {
  return invertedHostComponents(urlHost(url), maximum);
}

// ---- Forms ---------------------------------------------------------------

String standardizedStringURL(const Url& url) {
  return onTextOrPath(url, [](const String& s) { return standardizedStringURL(s); });
}
String stringURLWithoutAnchor(const Url& url) {
  return stringURLWithoutAnchor(url.string);
}
String stringURLByRemovingSessionIDs(const Url& url) {
  return onTextOrPath(url, [](const String& s) { return stringURLByRemovingSessionIDs(s); });
}
String stringURLByRemovingEmptyParams(const Url& url) {
  return onTextOrPath(url, [](const String& s) { return stringURLByRemovingEmptyParams(s); });
}
String stringURLByRemovingAnalytics(const Url& url) {
  return onTextOrPath(url, [](const String& s) { return stringURLByRemovingAnalytics(s); });
}
String stringURLByRemovingQueryParam(const Url& url, View param) {
  return onTextOrPath(url, [&](const String& s) { return stringURLByRemovingQueryParam(s, param); });
}
String stringURLByRemovingIndexPages(const Url& url) {
  return onTextOrPath(url, [](const String& s) { return stringURLByRemovingIndexPages(s); });
}
String simplifiedStringURL(const Url& url) {
  return onTextOrPath(url, [](const String& s) { return simplifiedStringURL(s); });
}
String simplifiedStringURL(const Url& url, bool sessionIDs, bool analytics, bool indexPages, bool emptyParams,
                           bool anchors) {
  return onTextOrPath(url, [&](const String& s) {
    return simplifiedStringURL(s, sessionIDs, analytics, indexPages, emptyParams, anchors);
  });
}

Url URLWithoutCredentials(const Url& url) {
  return Url{stringURLWithoutCredentials(url.string)};
}

String absoluteStringWithoutUserAndPassword(const Url& url) {
  if (isFileURL(url)) return standardizedPath(urlPath(url).view());
  std::optional<UrlParts> parts = parseUrl(url.string.view());
  if (!parts || (!parts->hasUser && !parts->hasPassword)) return url.string;
  std::u16string out;
  if (!parts->scheme.empty()) {
    out += parts->scheme;
    out += u"://";
  }
  out += parts->host;
  View s = url.string.view();
  out += s.substr(size_t(parts->path.data() - s.data()));
  return String::fromU16(std::move(out));
}

String absoluteStringWithHostAndPath(const Url& url) {
  if (isFileURL(url)) return standardizedPath(urlPath(url).view());
  return String(hostAndPath(resourceSpecifier(url.string.view())));
}

String displayString(const Url& url) {
  if (isFileURL(url)) {
    String path = standardizedPath(urlPath(url).view());
    const char* home = getenv("HOME");
    if (home && *home) {
      String homePath = String::fromUtf8(home);
      View p = path.view();
      View h = homePath.view();
      if (h != u"/" && p.starts_with(h) && (p.size() == h.size() || p[h.size()] == '/')) {
        return String(u"~" + std::u16string(p.substr(h.size())));
      }
    }
    return path;
  }
  bool web = isWebKitURL(url);
  if (!web && !isMailURL(url)) return url.string;
  View specifier = resourceSpecifier(url.string.view());
  bool slashed = !specifier.empty() && specifier[0] == '/';
  while (!specifier.empty() && specifier.front() == '/') specifier.remove_prefix(1);
  while (!specifier.empty() && specifier.back() == '/') specifier.remove_suffix(1);
  if (slashed) {
    size_t at = specifier.find(u'@');
    if (at != View::npos && at < specifier.find(u'/')) specifier.remove_prefix(at + 1);
  }
  if (detail::hasPrefixNoCase(specifier, "www.")) specifier.remove_prefix(4);
  if (specifier.empty() || specifier == u"/") return web ? urlHost(url) : url.string;
  return String(specifier);
}

bool isHostEqualTo(const Url& url, const Url& other) {
  if (url.string.isNull() || other.string.isNull()) return false;
  bool fileA = isFileURL(url);
  bool fileB = isFileURL(other);
  if (fileA || fileB) return fileA && fileB;
  std::optional<UrlParts> a = parseUrl(url.string.view());
  std::optional<UrlParts> b = parseUrl(other.string.view());
  if (!a || !b || !a->hasAuthority || !b->hasAuthority) return false;
  if (a->host.size() != b->host.size()) return false;
  return a->host.empty() ||
         text::fastCaseInsensitiveCompareUnichars(a->host.data(), a->host.size(), b->host.data(), b->host.size()) == 0;
}

String pathExtension(const Url& url) {
  if (isFileURL(url)) return String(detail::pathExtensionOf(standardizedPath(urlPath(url).view()).view()));
  return String(detail::pathExtensionOf(urlPath(url).view()));
}

// ---- Predicates by scheme ------------------------------------------------

bool isFileURL(const Url& url) {
  return schemeIs(url, {"file"});
}
bool isSafariReaderURL(const Url& url) {
  return schemeIs(url, {"safari-resource", "safari-reader", "reading-list"});
}
bool isBookendsURL(const Url& url) {
  std::optional<UrlParts> parts = parseUrl(url.string.view());
  return parts && parts->scheme == u"bookends" && parts->host == u"sonnysoftware.com";
}
bool isDataURL(const Url& url) {
  return schemeIs(url, {"data"});
}
bool isAboutURL(const Url& url) {
  return schemeIs(url, {"about"});
}
bool isFeedURL(const Url& url) {
  return schemeIs(url, {"feed"});
}
bool isMailURL(const Url& url) {
  return schemeIs(url, {"mailto"});
}
bool isJavaScriptURL(const Url& url) {
  return schemeIs(url, {"javascript"});
}
bool isAppleScriptURL(const Url& url) {
  return schemeIs(url, {"applescript"});
}
bool isHTTPURL(const Url& url) {
  return schemeIs(url, {"http", "https"});
}
bool isFTPURL(const Url& url) {
  return schemeIs(url, {"ftp", "ftps"});
}
bool isNewsURL(const Url& url) {
  return schemeIs(url, {"news", "nntp"});
}
bool isDownloadableURL(const Url& url) {
  return schemeIs(url, {"http", "https", "ftp", "ftps"});
}

bool isRemoteWebKitURL(const Url& url) {
  if (!schemeIs(url, {"http", "https", "ftp", "ftps", "feed"})) return false;
  String host = urlHost(url);
  return text::containsAlphaNumCharacter(host) && !detail::contains(host.view(), "...");
}

bool isWebKitURL(const Url& url) {
  return isFileURL(url) || isRemoteWebKitURL(url);
}

bool isLoadableURL(const Url& url) {
  if (isFileURL(url)) {
    std::string path = standardizedPath(urlPath(url).view()).toUtf8();
    struct stat info;
    return stat(path.c_str(), &info) == 0 && !S_ISDIR(info.st_mode);
  }
  return schemeIs(url, {"http", "https", "ftp", "ftps", "feed"});
}

bool isUsableURL(const Url& url) {
  return isWebKitURL(url) || isJavaScriptURL(url) || detail::hasPrefixNoCase(urlScheme(url).view(), "apple");
}

bool isSearchEngine(const Url& url) {
  std::optional<UrlParts> parts = parseUrl(url.string.view());
  if (!parts || parts->host.empty()) return false;
  String hostString = lowered(parts->host);
  View host = hostString.view();
  String urlString = lowered(url.string.view());
  View lowerUrl = urlString.view();

  // 2. Blogs of one network are pages, not searches.
  if (host.size() >= 16 && detail::hasSuffix(host, ".blogspot.com")) return false;
  // 3. Two short search hosts.
  if ((host.size() == 7 || host.size() == 8) && hostIsOneOf(host, {"ask.com", "bing.com"})) return true;
  // 4. Search engines, directories, reference sites and archives.
  if (host.size() >= 6 && tables::searchHostMatcher().matches(host.data(), host.size())) return true;
  // 5. The first portal: searches and directories, not its news articles.
  if (detail::contains(host, "yahoo")) {
    if (detail::hasPrefix(host, "reuters.")) return false;
    if (!detail::hasSuffix(host, "yahoo.com")) return true;
    if (hostIsOneOf(host, {"finance.yahoo.com", "sports.yahoo.com", "movies.yahoo.com", "music.yahoo.com",
                           "travel.yahoo.com", "weather.yahoo.com", "shopping.yahoo.com"})) {
      return isLandingPage(*parts);
    }
    if (host == u"news.yahoo.com") return containsNoneOf(lowerUrl, {"news?tmpl=story"});
    if (host == u"answers.yahoo.com") return containsNoneOf(lowerUrl, {"answers.yahoo.com/question/"});
    if (host == u"groups.yahoo.com") return containsNoneOf(lowerUrl, {"groups.yahoo.com/group/"});
    if (host == u"local.yahoo.com") {
      return containsNoneOf(lowerUrl, {"local.yahoo.com/info-", "local.yahoo.com/details", "local.yahoo.com/review",
                                       "local.yahoo.com/map", "local.yahoo.com/photos", "local.yahoo.com/events",
                                       "local.yahoo.com/deals"});
    }
    if (host == u"rds.yahoo.com") return containsNoneOf(lowerUrl, {"/**http", "/*-http"});
    return true;
  }
  // 6. A blog search site counts only with its landing page.
  if (host == u"technorati.com") return isLandingPage(*parts);
  // 7. The second portal: everything but its products and content pages.
  if (detail::contains(host, "google")) {
    if (hostIsOneOf(host, {"mail.google.com", "docs.google.com", "drive.google.com", "maps.google.com"})) return false;
    if (host == u"picasaweb.google.com") return detail::contains(lowerUrl, "/lh/view?");
    if (host == u"groups.google.com") return containsNoneOf(lowerUrl, {"groups.google.com/group/"});
    if (host == u"video.google.com") return containsNoneOf(lowerUrl, {"video.google.com/videoplay?"});
    return true;
  }
  // 8. An encyclopedia: only its search page.
  if (detail::contains(host, "wikipedia")) return detail::contains(lowerUrl, "/wiki/special:search");
  // 9. A shop: only its search results.
  if (detail::contains(u"." + std::u16string(host) + u".", ".amazon.")) {
    return detail::hasPrefixNoCase(parts->path, "/s/");
  }
  return false;
}

// ---- Reachability --------------------------------------------------------

namespace {

// The flags of the URL's host, or nullopt for a URL that counts as local and
// online without asking (a file URL or one without host).
std::optional<uint32_t> hostFlags(const Url& url, Reachability& reachability) {
  if (isFileURL(url)) return std::nullopt;
  std::optional<UrlParts> parts = parseUrl(url.string.view());
  if (!parts || parts->host.empty()) return std::nullopt;
  std::string host = String(parts->host).toUtf8();
  return reachability.connectionFlagsForHost(host.c_str());
}

}  // namespace

bool isLocalURL(const Url& url, Reachability& reachability) {
  std::optional<uint32_t> flags = hostFlags(url, reachability);
  return !flags || (*flags & (kReachabilityIsLocalAddress | kReachabilityIsDirect)) != 0;
}

bool isURLOnline(const Url& url, Reachability& reachability) {
  std::optional<uint32_t> flags = hostFlags(url, reachability);
  constexpr uint32_t kMask =
      kReachabilityReachable | kReachabilityConnectionRequired | kReachabilityInterventionRequired;
  return !flags || (*flags & kMask) == kReachabilityReachable;
}

}  // namespace norvane::urls
