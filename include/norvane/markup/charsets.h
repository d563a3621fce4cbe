// Character-set names, and markup recognised by file extension or by text.
//
// A charset name is read forgivingly: whatever stands in a `charset`
// attribute, an `encoding` declaration or a Content-Type header is reduced to
// its letters and digits in lower case ("ISO-8859-1", "iso_8859_1" and
// "Iso 8859 1" are all "iso88591") and then looked up, first by the number it
// holds and then by the name. Names give a CFStringEncoding; the NSString
// forms convert that to an NSStringEncoding of an available converter.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "norvane/core/string.h"
#include "norvane/text/encodings.h"

namespace norvane::markup {

using text::CFStringEncoding;
using text::kInvalidEncoding;
using text::NSStringEncoding;

// The encoding a charset name stands for, or kInvalidEncoding (also for a
// null name and a name of fewer than 3 letters and digits).
CFStringEncoding charset2CFStringEncoding(const String& name);
// The same as an NSStringEncoding of an available encoding. Kamenicky,
// KOI8-CS2 and Shift JIS map to their numbers directly. A name that gives no
// available encoding is logged as "Unknown/Unsupported encoding: <name>",
// unless it is null or empty, starts with '%', '/', '0', '<' or '>', or is
// "auto" in any case.
NSStringEncoding charset2NSStringEncoding(const String& name);
// The Mac encoding named by what follows "mac" in a normalised name: null or
// empty is Mac Roman (0); an unknown rest gives kInvalidEncoding.
CFStringEncoding macEncoding(const String& rest);
// Receiver-first forms of the two lookups.
inline CFStringEncoding CFEncodingFromName(const String& name) {
  return charset2CFStringEncoding(name);
}
inline NSStringEncoding NSEncodingFromName(const String& name) {
  return charset2NSStringEncoding(name);
}

// The encodings tried, in order, when Shift JIS or EUC-CN is declared but
// does not decode.
std::span<const CFStringEncoding> japaneseFallbackEncodings();  // 14 entries
std::span<const CFStringEncoding> chineseFallbackEncodings();   // 7 entries

// ---------------------------------------------------------------------------
// Markup by extension. Extensions compare without regard to case; the HTML
// and MIME HTML tests first cut the extension at its first '?' ("php?id=1"
// is "php"). The XML test takes the custom extensions first.
bool isHTMLExtension(const String& extension);
bool isMimeHTMLExtension(const String& extension);
bool isXMLExtension(const String& extension);
bool isPropertyListExtension(const String& extension);
bool isMarkupExtension(const String& extension);  // any of the three above

// The same on a path's extension (what follows the last '.' of the last
// path component; none for a leading '.').
bool isHTMLFile(const String& path);
bool isMimeHTMLFile(const String& path);
bool isXMLFile(const String& path);
bool isPropertyListFile(const String& path);
bool isMarkupFile(const String& path);

// The extensions as arrays, each in lower and in upper case (with the
// exceptions the implementation lists). XMLFileTypes appends each custom
// extension unchanged and in upper case; MarkupFileTypes joins XML, HTML and
// property list types in that order.
std::vector<String> HTMLFileTypes();
std::vector<String> MimeHTMLFileTypes();
std::vector<String> XMLFileTypes();
std::vector<String> PropertyListFileTypes();
std::vector<String> MarkupFileTypes();

// The user's additional XML extensions (the setting
// "AdditionalXMLExtensions"), read once through the provider installed with
// setPathExtensionsProvider and kept for the process's life. Without a
// provider the list is empty.
std::vector<String> CustomXMLFileTypes();
using PathExtensionsProvider = std::vector<String> (*)(std::string_view key);
// Install before the first use of the XML types; later calls are ignored
// once the list was read.
void setPathExtensionsProvider(PathExtensionsProvider provider);

// ---------------------------------------------------------------------------
// Markup by text.

// At least 6 units; the first unit outside the white set is '<' and the last
// one '>'; and "<!DOCTYPE HTML", "<HTML" or "<TITLE>" occurs, in any case.
bool isHTML(const String& s);
// Counts '<' and '>' into the places given (either may be null); true if the
// counts are equal and not 0.
bool countLTGT(const String& s, size_t* lessThanCount, size_t* greaterThanCount);

}  // namespace norvane::markup
