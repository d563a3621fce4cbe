// Kinds of pages and schemes of string URLs.

#include "norvane/urls/classification.h"

#include <string>

#include "norvane/text/strings.h"
#include "urls/url_tables.h"
#include "urls/url_text.h"

namespace norvane::urls {
namespace {

using detail::LoweredText;
using detail::View;

bool matchesTable(const String& url, size_t minimumLength, const detail::RowMatcher& rows) {
  if (url.length() < minimumLength) return false;
  return LoweredText(url.view()).matches(rows);
}

// True when the first occurrence of `word` (exact case) starts the text or
// follows a unit other than e, o, p in either case, so that "leadserver",
// "loads." and the like are no ads.
bool holdsAdWord(View s, std::string_view word) {
  size_t at = detail::find(s, word);
  if (at == NotFound) return false;
  if (at == 0) return true;
  unichar before = s[at - 1];
  return !(before < 128 && std::string_view("eopEOP").find(char(before)) != std::string_view::npos);
}

bool containsAnyExactRow(View s, const char* const* rows) {
  for (; *rows; ++rows) {
    if (detail::contains(s, *rows)) return true;
  }
  return false;
}

bool hasAnyPrefixNoCase(const String& url, size_t minimumLength, std::initializer_list<std::string_view> prefixes) {
  if (url.length() < minimumLength) return false;
  for (std::string_view prefix : prefixes) {
    if (detail::hasPrefixNoCase(url.view(), prefix)) return true;
  }
  return false;
}

// The host in the scheme of the reference manager's links.
constexpr std::string_view kBookendsPrefix = "bookends://sonnysoftware.com";

}  // namespace

// ---- Kinds of pages ------------------------------------------------------

bool stringURLIsImageAd(const String& url) {
  return matchesTable(url, 12, tables::imageAdMatcher());
}

bool stringURLIsAdSense(const String& url) {
  if (url.length() < 12) return false;
  LoweredText lowered(url.view());
  return tables::advertisementMatcher().matchingTables(lowered.data(), lowered.size(),
                                                       tables::kTextAdBit | tables::kImageAdBit) != 0;
}

bool stringURLIsAdvertisement(const String& url) {
  return stringURLIsAdvertisementIncludingCommonHosts(url, true);
}

bool stringURLIsAdvertisementIncludingCommonHosts(const String& url, bool includingCommonHosts) {
  using namespace tables;
  if (url.length() < 4) return false;
  View s = url.view();
  uint32_t wanted = kAdPathBit;
  if (s.size() >= 12) wanted |= kTextAdBit | kImageAdBit;
  if (s.size() >= 5) wanted |= kGeneralAdBit;
  if (includingCommonHosts && s.size() >= 9) wanted |= kCommonAdHostBit;
  LoweredText lowered(s);
  uint32_t found = advertisementMatcher().matchingTables(lowered.data(), lowered.size(), wanted);
  if (found & (kTextAdBit | kImageAdBit | kGeneralAdBit | kCommonAdHostBit)) return true;
  // The exceptions exempt a URL from the ad path table only.
  if ((found & kAdPathBit) && !containsAnyExactRow(s, kAdException)) return true;
  if (holdsAdWord(s, "adserver") || holdsAdWord(s, "ads.")) return true;
  View last = detail::lastPathComponent(s);
  if (last.size() >= 8) {
    if (last.size() >= 11 && detail::contains(last, "counter") && detail::containsNoCase(last, "htm")) return true;
    if (detail::hasPrefixNoCase(last, "banner.")) return true;
  }
  return false;
}

bool stringURLIsBookmarklet(const String& url) {
  if (url.length() < 16) return false;
  uint32_t wanted = 0;
  if (url.view().find(u'?') != View::npos) wanted |= 1;
  if (url.length() >= 18) wanted |= 2;
  LoweredText lowered(url.view());
  return tables::shareMatcher().matchingTables(lowered.data(), lowered.size(), wanted) != 0;
}

bool stringURLIsRecaptcha(const String& url) {
  return matchesTable(url, 27, tables::captchaMatcher());
}

bool stringURLIsTranslation(const String& url) {
  return matchesTable(url, 22, tables::translationMatcher());
}

bool stringURLIsTopicOrThread(const String& url) {
  if (url.isNull()) return false;
  if (matchesTable(url, 13, tables::topicMatcher())) return true;
  if (text::countNumbers(url) < 2) return false;
  // The text without its digits must end in "-t-.html": match from the end,
  // skipping digits.
  constexpr std::string_view kEnding = "-t-.html";
  View s = url.view();
  size_t i = s.size();
  for (size_t k = kEnding.size(); k-- > 0;) {
    while (i > 0 && detail::isAsciiDigit(s[i - 1])) --i;
    if (i == 0 || text::toLower(s[i - 1]) != unichar(kEnding[k])) return false;
    --i;
  }
  return true;
}

bool stringURLIsForum(const String& url) {
  return matchesTable(url, 4, tables::forumMatcher());
}

bool stringURLIsCached(const String& url) {
  return matchesTable(url, 12, tables::cacheMatcher());
}

// ---- Schemes -------------------------------------------------------------

bool isWebKitStringURL(const String& url) {
  return hasAnyPrefixNoCase(url, 5, {"http://", "https://", "feed://", "ftp://", "ftps://", "www.", "ftp.", "file://"});
}

bool isRemoteWebKitStringURL(const String& url) {
  return hasAnyPrefixNoCase(url, 5, {"http://", "https://", "feed://", "ftp://", "ftps://", "www.", "ftp."});
}

bool isLoadableStringURL(const String& url) {
  return hasAnyPrefixNoCase(url, 5, {"http://", "https://", "ftp://", "ftps://", "feed://", "www.", "ftp.", "file://"});
}

bool isDownloadableStringURL(const String& url) {
  return hasAnyPrefixNoCase(url, 5, {"http://", "https://", "ftp://", "ftps://", "www.", "ftp."});
}

bool isHTTPStringURL(const String& url) {
  return hasAnyPrefixNoCase(url, 7, {"http://", "https://"});
}

bool isFTPStringURL(const String& url) {
  return hasAnyPrefixNoCase(url, 6, {"ftp://", "ftps://"});
}

bool isNewsStringURL(const String& url) {
  return hasAnyPrefixNoCase(url, 7, {"news://", "nntp://"});
}

bool isSafariReaderStringURL(const String& url) {
  return hasAnyPrefixNoCase(url, 13, {"safari-resource:", "safari-reader:", "reading-list:"});
}

bool isFeedStringURL(const String& url) {
  return hasAnyPrefixNoCase(url, 0, {"feed:"});
}

bool isJavaScriptStringURL(const String& url) {
  return hasAnyPrefixNoCase(url, 0, {"javascript:"});
}

bool isAppleScriptStringURL(const String& url) {
  return hasAnyPrefixNoCase(url, 0, {"applescript:"});
}

bool isFileStringURL(const String& url) {
  if (url.isEmpty()) return false;
  return url[0] == '/' || url[0] == '~' || detail::hasPrefixNoCase(url.view(), "file://");
}

bool isDataStringURL(const String& url) {
  return detail::hasPrefix(url.view(), "data:");
}

bool isAboutStringURL(const String& url) {
  return detail::hasPrefix(url.view(), "about:");
}

bool isBookendsStringURL(const String& url) {
  return detail::hasPrefix(url.view(), kBookendsPrefix);
}

bool isMailStringURL(const String& url) {
  View s = url.view();
  if (detail::hasPrefixNoCase(s, "mailto:")) return s.size() > 11;
  if (s.empty() || !detail::isAsciiAlnum(s[0])) return false;
  size_t at = detail::findFirstOf(s, ":@/?");
  if (at == NotFound || s[at] != '@' || at == 0) return false;
  if (!detail::isAsciiAlnum(s[at - 1])) return false;
  for (size_t i = 0; i < at; ++i) {
    if (!detail::isAsciiAlnum(s[i]) && s[i] != '-' && s[i] != '.' && s[i] != '_') return false;
  }
  if (at + 1 >= s.size() || !detail::isAsciiAlnum(s[at + 1])) return false;
  size_t dot = detail::findFirstOf(s, ":@/?.", at + 1);
  if (dot == NotFound || s[dot] != '.' || dot + 1 >= s.size() || !detail::isAsciiLetter(s[dot + 1])) return false;
  size_t next = detail::findFirstOf(s, ":@/?.,", dot + 1);
  if (next == NotFound) return s.size() - dot < 6;
  if (s[next] == '?' || s[next] == '.') return next - dot < 6;
  return false;
}

// ---- Feed and file forms -------------------------------------------------

String WebKitStringURL(const String& url) {
  View s = url.view();
  if (!detail::hasPrefixNoCase(s, "feed:")) return url;
  if (detail::hasPrefixNoCase(s, "feed:http:") || detail::hasPrefixNoCase(s, "feed:https:")) {
    return String(s.substr(5));
  }
  return String(u"http:" + std::u16string(s.substr(5)));
}

String validFeedStringURL(const String& url) {
  View s = url.view();
  if (!detail::hasPrefixNoCase(s, "feed:")) return url;
  if (detail::hasPrefixNoCase(s, "feed:http:") || detail::hasPrefixNoCase(s, "feed:https:")) {
    return String(s.substr(5));
  }
  if (s.size() < 6 || s[5] == '/') return url;
  return String(u"http://" + std::u16string(s.substr(5)));
}

String stringByAbbreviatingFileURL(const String& url) {
  View s = url.view();
  if (detail::hasPrefix(s, "file://localhost/")) return String(s.substr(16));
  if (detail::hasPrefix(s, "file:///")) return String(s.substr(7));
  return url;
}

// ---- HTTP results --------------------------------------------------------

bool isHTTPStatusCodeOkay(int64_t code) {
  return code <= 200 || (code >= 207 && code <= 299);
}

bool isHTTPStatusCodeTemporaryError(int64_t code) {
  switch (code) {
    case 307:
    case 408:
    case 429:
    case 500:
    case 502:
    case 503:
    case 504:
    case 507:
    case 509:
    case 510:
      return true;
    default:
      return false;
  }
}

int64_t HTTPStatusCodeForNSURLError(int64_t errorCode) {
  switch (errorCode) {
    case -1014:
      return 204;  // zero byte resource
    case -1013:    // user authentication required
    case -1012:
      return 401;  // user cancelled authentication
    case -1010:    // redirect to non-existent location
    case -1007:
      return 302;  // too many redirects
    case -1001:
      return 408;  // timed out
    case -1102:
      return 403;  // no permissions to read file
    case -1100:
      return 404;  // file does not exist
    default:
      return 0;
  }
}

bool isTemporaryNSURLError(int64_t errorCode) {
  return errorCode == -1011 || errorCode == -1009 || errorCode == -1005 || errorCode == -1001;
}

// ---- Tables --------------------------------------------------------------

std::vector<std::string_view> urlTableRows(std::string_view name) {
  static constexpr std::pair<std::string_view, const char* const*> kTables[] = {
      {"image-ad", tables::kImageAd},
      {"text-ad", tables::kTextAd},
      {"general-ad", tables::kGeneralAd},
      {"ad-path", tables::kAdPath},
      {"ad-exception", tables::kAdException},
      {"common-ad-host", tables::kCommonAdHost},
      {"share", tables::kShare},
      {"second-share", tables::kSecondShare},
      {"captcha", tables::kCaptcha},
      {"translation", tables::kTranslation},
      {"topic", tables::kTopic},
      {"forum", tables::kForum},
      {"cache", tables::kCache},
      {"search-host", tables::kSearchHost}};
  std::vector<std::string_view> rows;
  for (auto [tableName, table] : kTables) {
    if (tableName != name) continue;
    for (const char* const* row = table; *row; ++row) rows.emplace_back(*row);
  }
  return rows;
}

}  // namespace norvane::urls
