// Markup recognised by file extension and by text.

#include <atomic>
#include <mutex>

#include "norvane/markup/charsets.h"
#include "norvane/text/chars.h"

namespace norvane::markup {
namespace {

using text::fastCaseInsensitiveCompareUnicharsWithChars;

const char* const kHTMLExtensions[] = {"SHTML", "XHTML", "PHTML", "MHTML", "JHTML", "HTML", "ASPX", "PHP3", "PHP4",
                                       "PHP5",  "SHTM",  "XHTM",  "HTM",   "CFM",   "PHP",  "JSP",  "ASP",  "CGI"};
const char* const kMimeHTMLExtensions[] = {"MHTML", "MHT"};
const char* const kXMLExtensions[] = {"XML",  "XSL",  "ENT",  "WML",  "DTD",   "SGM",     "XBL",     "RSS",
                                      "RDF",  "RSD",  "TBX",  "XSD",  "OPF",   "SGML",    "OPML",    "SHTM",
                                      "XSLT", "SDEF", "WSDL", "DITA", "IDATA", "DITAMAP", "DITAVAL", "XMLOUTLINE"};
const char* const kPropertyListExtensions[] = {"PLIST",       "strings",      "qfilter",          "scoutSet",
                                               "scriptSuite", "entitlements", "scriptTerminology"};
// XMLFileTypes leaves SHTM to the HTML types and has these in lower case only.
const char* const kXMLLowerCaseOnly[] = {"xmloutline", "idata", "rss", "rsd", "rdf"};
const char* const kPropertyListFileTypes[] = {
    "plist",   "PLIST",        "scriptsuite", "scriptSuite", "scriptterminology", "scriptTerminology",
    "strings", "entitlements", "qfilter",     "scoutSet"};

template <size_t N>
bool isInList(std::u16string_view extension, const char* const (&list)[N]) {
  for (const char* entry : list) {
    if (fastCaseInsensitiveCompareUnicharsWithChars(extension, entry) == 0) return true;
  }
  return false;
}

std::u16string_view cutAtQuestionMark(std::u16string_view extension) {
  size_t mark = extension.find(u'?');
  return mark == std::u16string_view::npos ? extension : extension.substr(0, mark);
}

String pathExtension(const String& path) {
  std::u16string_view view = path.view();
  size_t slash = view.rfind(u'/');
  std::u16string_view last = slash == std::u16string_view::npos ? view : view.substr(slash + 1);
  size_t dot = last.rfind(u'.');
  if (dot == std::u16string_view::npos || dot == 0) return String::empty();
  return String(last.substr(dot + 1));
}

String lowerAscii(std::string_view ascii) {
  std::u16string units;
  for (char c : ascii) units += static_cast<unichar>(c >= 'A' && c <= 'Z' ? c | 32 : c);
  return String::fromU16(std::move(units));
}

String upperAscii(std::string_view ascii) {
  std::u16string units;
  for (char c : ascii) units += static_cast<unichar>(c >= 'a' && c <= 'z' ? c & ~32 : c);
  return String::fromU16(std::move(units));
}

String upperCase(const String& s) {
  return text::stringByApplyingConversionTable(s, text::upperCharsTable());
}

std::atomic<PathExtensionsProvider> gProvider{nullptr};

}  // namespace

void setPathExtensionsProvider(PathExtensionsProvider provider) {
  gProvider.store(provider);
}

std::vector<String> CustomXMLFileTypes() {
  static const std::vector<String> custom = [] {
    PathExtensionsProvider provider = gProvider.load();
    return provider ? provider("AdditionalXMLExtensions") : std::vector<String>();
  }();
  return custom;
}

bool isHTMLExtension(const String& extension) {
  return isInList(cutAtQuestionMark(extension.view()), kHTMLExtensions);
}

bool isMimeHTMLExtension(const String& extension) {
  return isInList(cutAtQuestionMark(extension.view()), kMimeHTMLExtensions);
}

bool isXMLExtension(const String& extension) {
  for (const String& custom : CustomXMLFileTypes()) {
    if (text::isEqualToStringNoCase(custom, extension)) return true;
  }
  return isInList(extension.view(), kXMLExtensions);
}

bool isPropertyListExtension(const String& extension) {
  return isInList(extension.view(), kPropertyListExtensions);
}

bool isMarkupExtension(const String& extension) {
  return isXMLExtension(extension) || isHTMLExtension(extension) || isPropertyListExtension(extension);
}

bool isHTMLFile(const String& path) {
  return isHTMLExtension(pathExtension(path));
}
bool isMimeHTMLFile(const String& path) {
  return isMimeHTMLExtension(pathExtension(path));
}
bool isXMLFile(const String& path) {
  return isXMLExtension(pathExtension(path));
}
bool isPropertyListFile(const String& path) {
  return isPropertyListExtension(pathExtension(path));
}
bool isMarkupFile(const String& path) {
  return isMarkupExtension(pathExtension(path));
}

std::vector<String> HTMLFileTypes() {
  std::vector<String> types;
  for (const char* extension : kHTMLExtensions) {
    types.push_back(lowerAscii(extension));
    types.push_back(upperAscii(extension));
  }
  return types;
}

std::vector<String> MimeHTMLFileTypes() {
  std::vector<String> types;
  for (const char* extension : kMimeHTMLExtensions) {
    types.push_back(lowerAscii(extension));
    types.push_back(upperAscii(extension));
  }
  return types;
}

std::vector<String> XMLFileTypes() {
  std::vector<String> types;
  for (const char* extension : kXMLExtensions) {
    std::string_view name = extension;
    if (name == "SHTM") continue;
    types.push_back(lowerAscii(name));
    if (!isInList(lowerAscii(name).view(), kXMLLowerCaseOnly)) types.push_back(upperAscii(name));
  }
  for (const String& custom : CustomXMLFileTypes()) {
    types.push_back(custom);
    types.push_back(upperCase(custom));
  }
  return types;
}

std::vector<String> PropertyListFileTypes() {
  std::vector<String> types;
  for (const char* extension : kPropertyListFileTypes) types.push_back(String::fromLatin1(extension));
  return types;
}

std::vector<String> MarkupFileTypes() {
  std::vector<String> types = XMLFileTypes();
  for (String& type : HTMLFileTypes()) types.push_back(std::move(type));
  for (String& type : PropertyListFileTypes()) types.push_back(std::move(type));
  return types;
}

bool isHTML(const String& s) {
  size_t length = s.length();
  if (length < 6) return false;
  const unichar* units = s.data();
  text::CharacterSetRep white = text::whiteCharacterSetRep();
  size_t first = 0;
  while (first < length && text::isInRep(white, units[first])) ++first;
  if (first == length || units[first] != '<') return false;
  size_t last = length;
  while (last > first && text::isInRep(white, units[last - 1])) --last;
  if (units[last - 1] != '>') return false;
  static const char* const kMarks[] = {"<!DOCTYPE HTML", "<HTML", "<TITLE>", nullptr};
  return text::fastContainsSubCStrings(units, length, kMarks, text::upperCharsTable());
}

bool countLTGT(const String& s, size_t* lessThanCount, size_t* greaterThanCount) {
  size_t lessThan = 0, greaterThan = 0;
  const unichar* units = s.data();
  for (size_t i = 0, length = s.length(); i < length; ++i) {
    lessThan += units[i] == '<';
    greaterThan += units[i] == '>';
  }
  if (lessThanCount) *lessThanCount = lessThan;
  if (greaterThanCount) *greaterThanCount = greaterThan;
  return lessThan == greaterThan && lessThan != 0;
}

}  // namespace norvane::markup
