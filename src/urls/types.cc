// MIME types and file extensions.

#include <algorithm>
#include <array>
#include <initializer_list>

#include "norvane/urls/classification.h"
#include "urls/url_text.h"

namespace norvane::urls {
namespace {

using detail::View;
using Literals = std::initializer_list<std::string_view>;

bool anyPrefix(View s, Literals literals) {
  return std::any_of(literals.begin(), literals.end(),
                     [&](std::string_view l) { return detail::hasPrefixNoCase(s, l); });
}
bool anySuffix(View s, Literals literals) {
  return std::any_of(literals.begin(), literals.end(),
                     [&](std::string_view l) { return detail::hasSuffixNoCase(s, l); });
}
bool anyContained(View s, Literals literals) {
  return std::any_of(literals.begin(), literals.end(),
                     [&](std::string_view l) { return detail::containsNoCase(s, l); });
}

// ---- Extension lists -----------------------------------------------------

constexpr std::string_view kImageTypes[] = {"jpeg", "jpe",  "jpg", "jfif", "ief", "gif", "png",
                                            "bmp",  "tiff", "tif", "ras",  "cmx", "ico", "pnm",
                                            "pbm",  "pgm",  "ppm", "rgb",  "xbm", "xwd", "cod"};
constexpr std::string_view kMarkupTypes[] = {
    "sgm",        "sgml", "dtd", "xml", "xsl", "xslt",    "xbl", "ent",  "wml",  "opml",    "plist",   "sdef", "idata",
    "xmloutline", "rss",  "rdf", "rsd", "tbx", "qfilter", "xsd", "wsdl", "dita", "ditamap", "ditaval", "opf"};
constexpr std::string_view kRichTextTypes[] = {"rtf", "rtfd"};
constexpr std::string_view kExecutableTypes[] = {"class", "exe"};

constexpr std::string_view kOfficeAlways[] = {"xls", "xlsx", "xla", "xlc", "xlm", "xlt",
                                              "xlw", "pps",  "pot", "ppt", "pptx"};
constexpr std::string_view kOfficeMSWord[] = {"word", "doc", "docm", "docx", "dot", "dotm", "dotx"};
constexpr std::string_view kOfficeOpenOffice[] = {"odt", "ott"};
constexpr std::string_view kOfficeStarOffice[] = {"stw", "sxw"};
constexpr std::string_view kOfficeWordPerfect[] = {"wpd"};
constexpr std::string_view kOfficePDF[] = {"pdf"};
constexpr std::string_view kOfficePostScript[] = {"postscript", "ps", "eps", "ai"};

// Multimedia and archive extensions, one string of rows per length.
constexpr std::string_view kMultimedia2[] = {"ra", "rm", "qt", "au", "dv", "ts"};
constexpr std::string_view kMultimedia3[] = {
    "avi", "vfw", "swf", "swa", "viv", "ram", "wmv", "wma", "asf", "asx", "wvx", "mov", "mqv", "mpe", "mpm", "mpa",
    "mpv", "m1v", "m1a", "m1s", "m15", "m2v", "m2a", "m3u", "m75", "mpg", "mp2", "mp3", "m4a", "m4b", "m4v", "mp4",
    "m4p", "aif", "wav", "snd", "mid", "rmi", "3gp", "3g2", "flc", "bwf", "pls", "cel", "gsm", "dvd", "qht", "amr",
    "aac", "sdp", "atr", "dif", "sdv", "sd2", "smf", "smi", "caf", "kar", "amc", "sml", "qtz", "flv", "fid", "f4v"};
constexpr std::string_view kMultimedia4[] = {"moov", "mpeg", "mpv2", "mpga", "divx", "aiff", "aifc",
                                             "midi", "3gpp", "3gp2", "qtpf", "adts", "skin", "smil",
                                             "rtsp", "cdda", "qhtm", "rmvb", "webm", "m3u8", "mjpg"};
constexpr std::string_view kMultimedia5[] = {"movie"};

constexpr std::string_view kAudio[] = {"ra",  "au",  "ram", "wma", "mp3", "m3u",  "m4a",  "mpa",  "m4p", "aif",
                                       "m2a", "wav", "snd", "mid", "rmi", "aifc", "aiff", "mpga", "midi"};
constexpr std::string_view kVideo[] = {"rm",   "qt",   "ts",   "mp2",  "mpe",  "wmv",  "asf",  "asx",
                                       "mov",  "avi",  "m1v",  "mp4",  "m2v",  "mpg",  "3g2",  "flc",
                                       "wvx",  "flv",  "m4v",  "f4v",  "fid",  "mpeg", "divx", "moov",
                                       "mpv2", "rmvb", "webm", "3gpp", "3gp2", "m3u8", "movie"};
constexpr std::string_view kEmbedded[] = {"swf", "viv"};

constexpr std::string_view kArchive2[] = {"gz", "bz", "7z"};
constexpr std::string_view kArchive3[] = {"tgz", "tar", "tbz", "bz2", "bin", "hqx", "sit", "zip", "jar",
                                          "dmg", "smi", "img", "lha", "lzh", "iso", "rar", "arj"};
constexpr std::string_view kArchive4[] = {"sitx", "gzip", "bzip"};
constexpr std::string_view kArchive5[] = {"bzip2", "bzip5"};
constexpr std::string_view kArchive7[] = {"torrent"};
constexpr std::string_view kArchive11[] = {"sparseimage"};

template <size_t N>
void append(std::vector<String>& list, const std::string_view (&rows)[N]) {
  for (std::string_view row : rows) list.push_back(String::fromLatin1(row));
}

template <size_t N>
bool holdsNoCase(View extension, const std::string_view (&rows)[N]) {
  for (std::string_view row : rows) {
    if (detail::equalsNoCase(extension, row)) return true;
  }
  return false;
}

bool listHoldsNoCase(const std::vector<String>& list, const String& extension) {
  if (extension.isNull()) return false;
  return std::any_of(list.begin(), list.end(),
                     [&](const String& e) { return text::isEqualToStringNoCase(e, extension); });
}

bool isMultimediaExtension(View e) {
  switch (e.size()) {
    case 2:
      return holdsNoCase(e, kMultimedia2);
    case 3:
      return holdsNoCase(e, kMultimedia3);
    case 4:
      return holdsNoCase(e, kMultimedia4);
    case 5:
      return holdsNoCase(e, kMultimedia5);
    default:
      return false;
  }
}

bool isArchiveExtension(View e) {
  switch (e.size()) {
    case 2:
      return holdsNoCase(e, kArchive2);
    case 3:
      return holdsNoCase(e, kArchive3);
    case 4:
      return holdsNoCase(e, kArchive4);
    case 5:
      return holdsNoCase(e, kArchive5);
    case 7:
      return holdsNoCase(e, kArchive7);
    case 11:
      return holdsNoCase(e, kArchive11);
    default:
      return false;
  }
}

}  // namespace

// ---- MIME types ----------------------------------------------------------

bool isMarkupMIMEType(const String& type) {
  View t = type.view();
  if (detail::hasPrefixNoCase(t, "text/")) return true;
  if (!detail::hasPrefixNoCase(t, "application/")) return false;
  return anyContained(t, {"htm", "sgml", "xml", "rsd", "atom"}) || detail::contains(t, "rdf") ||
         detail::contains(t, "rss");
}

bool isHTMLMIMEType(const String& type) {
  View t = type.view();
  if (detail::hasPrefixNoCase(t, "text/") && !anyPrefix(t, {"text/css", "text/javascript"})) return true;
  return detail::containsNoCase(t, "htm");
}

bool isXMLMIMEType(const String& type) {
  return anySuffix(type.view(), {"/xml", "/rss+xml"});
}
bool isJSONMIMEType(const String& type) {
  return anySuffix(type.view(), {"/json", "/x-json"});
}
bool isJavaScriptMIMEType(const String& type) {
  return anySuffix(type.view(), {"/javascript", "/x-javascript"});
}
bool isWebArchiveMIMEType(const String& type) {
  return detail::equalsNoCase(type.view(), "application/x-webarchive");
}
bool isImageMIMEType(const String& type) {
  return detail::hasPrefixNoCase(type.view(), "image/");
}
bool isTextMIMEType(const String& type) {
  return detail::hasPrefixNoCase(type.view(), "text/");
}
bool isPlainTextMIMEType(const String& type) {
  return detail::equalsNoCase(type.view(), "text/plain");
}
bool isStylesheetOrScriptMIMEType(const String& type) {
  return anyContained(type.view(), {"css", "javascript", "pointplus"});
}
bool isRTFMIMEType(const String& type) {
  return anySuffix(type.view(), {"/rtf", "/x-rtf"}) || detail::contains(type.view(), "richtext");
}
bool isPDFMIMEType(const String& type) {
  return anySuffix(type.view(), {"/pdf", "/x-pdf"});
}
bool isPostScriptMIMEType(const String& type) {
  return anySuffix(type.view(), {"/postscript", "/x-postscript"});
}
bool isMSWordMIMEType(const String& type) {
  return detail::containsNoCase(type.view(), "msword") ||
         anySuffix(type.view(), {"/doc", "/docx", "/x-doc", "/x-docx", "/dot", "/x-dot"});
}
bool isMSPowerPointMIMEType(const String& type) {
  return anyContained(type.view(), {"powerpoint", "/ppt", "/x-ppt"});
}
bool isMSExcelMIMEType(const String& type) {
  return anyContained(type.view(), {"excel", "/xls", "/x-xls"});
}
bool isMSOfficeMIMEType(const String& type) {
  return isMSWordMIMEType(type) || isMSPowerPointMIMEType(type) || isMSExcelMIMEType(type);
}
bool isOpenOfficeMIMEType(const String& type) {
  return detail::containsNoCase(type.view(), "/vnd.oasis.opendocument.text");
}
bool isStarOfficeMIMEType(const String& type) {
  return detail::containsNoCase(type.view(), "/vnd.sun.xml.writer");
}
bool isMultimediaMIMEType(const String& type) {
  View t = type.view();
  return anyPrefix(t, {"audio/", "video/"}) ||
         anyContained(t, {"/wmf", "/x-wmf", "/asf", "/x-asf", "/asx", "/x-asx", "msmetafile"});
}

// ---- Extensions ----------------------------------------------------------

const std::vector<String>& imageTypes() {
  static const std::vector<String> list = [] {
    std::vector<String> l;
    append(l, kImageTypes);
    return l;
  }();
  return list;
}
bool isImageType(const String& extension) {
  return listHoldsNoCase(imageTypes(), extension);
}

const std::vector<String>& markupTypes() {
  static const std::vector<String> list = [] {
    std::vector<String> l;
    append(l, kMarkupTypes);
    return l;
  }();
  return list;
}
bool isMarkupType(const String& extension) {
  return listHoldsNoCase(markupTypes(), extension);
}

const std::vector<String>& richTextTypes() {
  static const std::vector<String> list = [] {
    std::vector<String> l;
    append(l, kRichTextTypes);
    return l;
  }();
  return list;
}
bool isRichTextType(const String& extension) {
  return listHoldsNoCase(richTextTypes(), extension);
}

const std::vector<String>& executableTypes() {
  static const std::vector<String> list = [] {
    std::vector<String> l;
    append(l, kExecutableTypes);
    return l;
  }();
  return list;
}
bool isExecutableType(const String& extension) {
  return listHoldsNoCase(executableTypes(), extension);
}

std::vector<String> officeTypesIncluding(bool msWord, bool openOffice, bool starOffice, bool wordPerfect, bool pdf,
                                         bool postScript) {
  std::vector<String> list;
  append(list, kOfficeAlways);
  if (msWord) append(list, kOfficeMSWord);
  if (openOffice) append(list, kOfficeOpenOffice);
  if (starOffice) append(list, kOfficeStarOffice);
  if (wordPerfect) append(list, kOfficeWordPerfect);
  if (pdf) append(list, kOfficePDF);
  if (postScript) append(list, kOfficePostScript);
  return list;
}
const std::vector<String>& officeTypes() {
  static const std::vector<String> list = officeTypesIncluding(true, true, true, true, true, true);
  return list;
}
bool isOfficeType(const String& extension) {
  return listHoldsNoCase(officeTypes(), extension);
}

const std::vector<String>& multimediaTypes() {
  static const std::vector<String> list = [] {
    std::vector<String> l;
    append(l, kMultimedia2);
    append(l, kMultimedia3);
    append(l, kMultimedia4);
    append(l, kMultimedia5);
    return l;
  }();
  return list;
}
bool isMultimediaType(const String& extension) {
  return !extension.isNull() && isMultimediaExtension(extension.view());
}

bool isMultimediaType(const String& extension, bool audio, bool video, bool embedded) {
  if (extension.isNull()) return false;
  View e = extension.view();
  return (audio && holdsNoCase(e, kAudio)) || (video && holdsNoCase(e, kVideo)) ||
         (embedded && holdsNoCase(e, kEmbedded));
}

const std::vector<String>& archiveTypes() {
  static const std::vector<String> list = [] {
    std::vector<String> l;
    append(l, kArchive2);
    append(l, kArchive3);
    append(l, kArchive4);
    append(l, kArchive5);
    append(l, kArchive7);
    append(l, kArchive11);
    return l;
  }();
  return list;
}
bool isArchiveType(const String& extension) {
  return !extension.isNull() && isArchiveExtension(extension.view());
}

std::vector<String> binaryFileTypesIncluding(bool richText, bool msWord, bool openOffice, bool starOffice,
                                             bool wordPerfect, bool pdf, bool postScript) {
  std::vector<String> list = imageTypes();
  const std::vector<String>* parts[] = {&multimediaTypes(), &archiveTypes(), &executableTypes()};
  for (const std::vector<String>* part : parts) list.insert(list.end(), part->begin(), part->end());
  std::vector<String> office = officeTypesIncluding(msWord, openOffice, starOffice, wordPerfect, pdf, postScript);
  list.insert(list.end(), office.begin(), office.end());
  if (richText) list.insert(list.end(), richTextTypes().begin(), richTextTypes().end());
  list.push_back(String::fromLatin1("dat"));
  return list;
}
const std::vector<String>& binaryFileTypes() {
  static const std::vector<String> list = binaryFileTypesIncluding(true, true, true, true, true, true, true);
  return list;
}
bool isBinaryFileType(const String& extension) {
  return listHoldsNoCase(binaryFileTypes(), extension);
}

bool isEmailExtension(const String& extension) {
  return detail::equalsNoCase(extension.view(), "eml") || detail::equalsNoCase(extension.view(), "emlx");
}

}  // namespace norvane::urls
