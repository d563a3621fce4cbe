// The operations on a URL object, a `Url` value (core/value.h), that look
// at its scheme, host and path.
#pragma once

#include <string_view>
#include <vector>

#include "norvane/core/string.h"
#include "norvane/core/value.h"
#include "norvane/urls/reachability.h"
#include "norvane/urls/url_parts.h"

namespace norvane::urls {

// The components of a URL object; empty for a URL that does not parse.
String urlScheme(const Url& url);
String urlHost(const Url& url);
String urlPath(const Url& url);

// ---- Hosts ---------------------------------------------------------------

std::vector<String> hostComponents(const Url& url);
String invertedHost(const Url& url);
std::vector<String> invertedHostComponents(const Url& url, size_t maximum = 0);

// ---- Forms ---------------------------------------------------------------

// The normal forms of normal_forms.h applied to the URL's text; a file URL
// yields its standardised path instead (except for the anchor form).
String standardizedStringURL(const Url& url);
String stringURLWithoutAnchor(const Url& url);
String stringURLByRemovingSessionIDs(const Url& url);
String stringURLByRemovingEmptyParams(const Url& url);
String stringURLByRemovingAnalytics(const Url& url);
String stringURLByRemovingQueryParam(const Url& url, std::u16string_view param);
String stringURLByRemovingIndexPages(const Url& url);
String simplifiedStringURL(const Url& url);
String simplifiedStringURL(const Url& url, bool sessionIDs, bool analytics, bool indexPages, bool emptyParams,
                           bool anchors);

// The same URL without user and password.
Url URLWithoutCredentials(const Url& url);
// The path for a file URL; the text if there are no credentials; else
// scheme, "://", host and everything behind the host.
String absoluteStringWithoutUserAndPassword(const Url& url);
// The path for a file URL; else the text behind "scheme:" without leading
// "/" and without user information.
String absoluteStringWithHostAndPath(const Url& url);
// For showing to a user: the path with "~" for the home folder for a file
// URL; host and path without "www." for web and mail URLs; else the text.
String displayString(const Url& url);
// Hosts equal ignoring case; two file URLs count as equal.
bool isHostEqualTo(const Url& url, const Url& other);
// The extension of the path; empty when there is none.
String pathExtension(const Url& url);

// ---- Predicates by scheme ------------------------------------------------

bool isFileURL(const Url& url);
bool isSafariReaderURL(const Url& url);
bool isBookendsURL(const Url& url);
bool isDataURL(const Url& url);
bool isAboutURL(const Url& url);
bool isFeedURL(const Url& url);
bool isMailURL(const Url& url);
bool isJavaScriptURL(const Url& url);
bool isAppleScriptURL(const Url& url);
bool isHTTPURL(const Url& url);
bool isFTPURL(const Url& url);
bool isNewsURL(const Url& url);
bool isDownloadableURL(const Url& url);
// http(s), ftp(s) or feed with a host that holds a letter or digit and no
// "...".
bool isRemoteWebKitURL(const Url& url);
bool isWebKitURL(const Url& url);
// An existing regular file, or a loadable remote scheme.
bool isLoadableURL(const Url& url);
bool isUsableURL(const Url& url);
// A page of results of a search engine, directory or web archive, or the
// landing page of one.
bool isSearchEngine(const Url& url);

// ---- Reachability --------------------------------------------------------

// File URLs and URLs without a host are local; otherwise the host must
// resolve to an address of this machine or of a directly attached network.
bool isLocalURL(const Url& url, Reachability& reachability = systemReachability());
// File URLs and URLs without a host are online; otherwise the host must be
// reachable without a connection having to be made first.
bool isURLOnline(const Url& url, Reachability& reachability = systemReachability());

}  // namespace norvane::urls
