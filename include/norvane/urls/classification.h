// What a URL is good for, told from its text alone: advertisements, share
// buttons, captchas, translations, forums, cached copies; its scheme; and the
// predicates on MIME types, file extensions and HTTP results.
//
// The URL predicates test the URL, mapped to lower case, against fixed
// tables of lower-case fragments that may match anywhere. Each has a minimum
// length below which it answers false. A null string is never of any kind.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "norvane/core/string.h"

namespace norvane::urls {

// ---- Kinds of pages ------------------------------------------------------

bool stringURLIsImageAd(const String& url);
bool stringURLIsAdSense(const String& url);
// Ad networks, ad paths, ad servers, counters and banners; with
// `includingCommonHosts` also hosts that serve mostly ads.
bool stringURLIsAdvertisementIncludingCommonHosts(const String& url, bool includingCommonHosts);
bool stringURLIsAdvertisement(const String& url);
// Links that share or bookmark the current page with some service.
bool stringURLIsBookmarklet(const String& url);
bool stringURLIsRecaptcha(const String& url);
bool stringURLIsTranslation(const String& url);
// A forum topic or thread page.
bool stringURLIsTopicOrThread(const String& url);
bool stringURLIsForum(const String& url);
// A search engine's cached copy of a page.
bool stringURLIsCached(const String& url);

// ---- Schemes -------------------------------------------------------------

bool isWebKitStringURL(const String& url);
bool isRemoteWebKitStringURL(const String& url);
bool isLoadableStringURL(const String& url);
bool isDownloadableStringURL(const String& url);
bool isHTTPStringURL(const String& url);
bool isFTPStringURL(const String& url);
bool isNewsStringURL(const String& url);
bool isSafariReaderStringURL(const String& url);
bool isFeedStringURL(const String& url);
bool isJavaScriptStringURL(const String& url);
bool isAppleScriptStringURL(const String& url);
// "file://", or a path (first unit "/" or "~").
bool isFileStringURL(const String& url);
bool isDataStringURL(const String& url);
bool isAboutStringURL(const String& url);
bool isBookendsStringURL(const String& url);
// "mailto:" with an address, or a bare address such as "name@example.org".
bool isMailStringURL(const String& url);

// A feed address as a web engine can load it ("feed:http://x" -> "http://x",
// "feed://x" -> "http://x").
String WebKitStringURL(const String& url);
// A feed address made a web address; addresses with "/" as sixth unit stay.
String validFeedStringURL(const String& url);
// "file://localhost/p" and "file:///p" become the path "/p".
String stringByAbbreviatingFileURL(const String& url);

// ---- HTTP results --------------------------------------------------------

bool isHTTPStatusCodeOkay(int64_t code);
bool isHTTPStatusCodeTemporaryError(int64_t code);
// The status code that stands for a URL loading error code; 0 for others.
int64_t HTTPStatusCodeForNSURLError(int64_t errorCode);
bool isTemporaryNSURLError(int64_t errorCode);

// ---- MIME types (compared without case unless noted) ---------------------

bool isMarkupMIMEType(const String& type);
bool isHTMLMIMEType(const String& type);
bool isXMLMIMEType(const String& type);
bool isJSONMIMEType(const String& type);
bool isJavaScriptMIMEType(const String& type);
bool isWebArchiveMIMEType(const String& type);
bool isImageMIMEType(const String& type);
bool isTextMIMEType(const String& type);
bool isPlainTextMIMEType(const String& type);
bool isStylesheetOrScriptMIMEType(const String& type);
bool isRTFMIMEType(const String& type);
bool isPDFMIMEType(const String& type);
bool isPostScriptMIMEType(const String& type);
bool isMSWordMIMEType(const String& type);
bool isMSPowerPointMIMEType(const String& type);
bool isMSExcelMIMEType(const String& type);
bool isMSOfficeMIMEType(const String& type);
bool isOpenOfficeMIMEType(const String& type);
bool isStarOfficeMIMEType(const String& type);
bool isMultimediaMIMEType(const String& type);

// ---- File extensions (without the point, compared without case) ----------

const std::vector<String>& imageTypes();
bool isImageType(const String& extension);
const std::vector<String>& markupTypes();
bool isMarkupType(const String& extension);
const std::vector<String>& richTextTypes();
bool isRichTextType(const String& extension);
const std::vector<String>& executableTypes();
bool isExecutableType(const String& extension);
const std::vector<String>& officeTypes();
bool isOfficeType(const String& extension);
std::vector<String> officeTypesIncluding(bool msWord, bool openOffice, bool starOffice, bool wordPerfect, bool pdf,
                                         bool postScript);
const std::vector<String>& multimediaTypes();
bool isMultimediaType(const String& extension);
bool isMultimediaType(const String& extension, bool audio, bool video, bool embedded);
const std::vector<String>& archiveTypes();
bool isArchiveType(const String& extension);
const std::vector<String>& binaryFileTypes();
bool isBinaryFileType(const String& extension);
std::vector<String> binaryFileTypesIncluding(bool richText, bool msWord, bool openOffice, bool starOffice,
                                             bool wordPerfect, bool pdf, bool postScript);
// "eml" or "emlx".
bool isEmailExtension(const String& extension);

// ---- Tables, for inspection ----------------------------------------------

// The rows of a named URL table ("image-ad", "text-ad", "general-ad",
// "ad-path", "common-ad-host", "ad-exception", "share", "second-share",
// "captcha", "translation", "topic", "forum", "cache", "search-host");
// empty for an unknown name.
std::vector<std::string_view> urlTableRows(std::string_view name);

}  // namespace norvane::urls
