// Normal forms of URLs held as plain strings.
//
// Nothing is validated in advance: every operation takes any string. A null
// argument gives a null result unless a comment says otherwise, and an
// operation that changes nothing returns the receiver itself (the same
// String object, see String::isSameObject).
//
// A query delimiter is one of "&", ";" and "?". A parameter name counts only
// when the unit directly in front of it is a query delimiter.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "norvane/core/string.h"

namespace norvane::urls {

// Encodings are NSStringEncoding numbers (text/encodings.h); one that is not
// available makes the escape operations return the receiver.
inline constexpr uint32_t kUTF8Encoding = 4;

// ---- Replacing percent escapes -------------------------------------------

// Decodes, in place, the escapes of `units` whose value the chosen set holds
// and answers the new length. `standard` chooses the standard set (tab, LF,
// CR, space, $ % & ' + / : ; = @ ~, and "?" when the text holds no literal
// "?"); otherwise every value below 128 is decoded. A "%" that is not
// followed by two hexadecimal digits is copied as it stands.
size_t convertPercentEscapesOfURL(unichar* units, size_t length, bool standard);

String stringByReplacingStandardPercentEscapesOfURL(const String& url);
String stringByReplacingASCIIPercentEscapesOfURL(const String& url);
// Decodes the escapes that form valid text in the encoding and leaves the
// others as they stand. For UTF-8 each character of a run of escapes counts
// on its own; in other encodings a run decodes as a whole or not at all.
String stringByReplacingPercentEscapesOfURL(const String& url, uint32_t encoding = kUTF8Encoding);

// ---- Adding percent escapes ----------------------------------------------

// Escapes space # $ % & + / : ; = ? @ as "%xx" (lower-case hex digits).
String stringByAddingStandardPercentEscapesToURL(const String& url);
// Escapes every unit below 128 that is not an ASCII letter or digit.
String stringByAddingASCIIPercentEscapesToURL(const String& url);
// The general form: encodes the text in `encoding` and escapes, as "%XX",
// every byte that is not a legal URL character (ASCII letters and digits and
// ! # $ % & ' ( ) * + , - . / : ; = ? @ [ ] _ ~) and every byte outside
// ASCII. Units of `leaveUnescaped` stay as they are; units of `toBeEscaped`
// are escaped even when legal. A unit the encoding cannot represent makes the
// result null.
String stringByAddingPercentEscapesToURL(const String& url, uint32_t encoding = kUTF8Encoding);
String stringByAddingPercentEscapesToURL(const String& url, uint32_t encoding, std::u16string_view leaveUnescaped);
// A null `toBeEscaped` stands for ":?&;@".
String stringByAddingPercentEscapesToURL(const String& url, uint32_t encoding, std::u16string_view leaveUnescaped,
                                         const String& toBeEscaped);
// A search term as it goes into a query string: runs of white units become
// one space, the term is escaped with `encoding`, and with
// `defaultPercentEscapes` "+" becomes "%2B" and then "%20" becomes "+".
String stringByFormattingQueryTerm(const String& term, uint32_t encoding, bool defaultPercentEscapes = true);

// ---- Cleaning ------------------------------------------------------------

// A pasted or dropped address made presentable: trimmed, unwrapped from
// "<...>" around an address, and without line ends, "<" and ">".
String stringByFormattingURL(const String& url);
// Duplicate slashes before the query removed ("://" kept) and final "/." and
// "/.." dropped when the text has no query.
String standardizedStringURL(const String& url);
// The part before the first "#", unless that "#" starts an application route
// ("#!" or "#/" followed by at least one more unit).
String stringURLWithoutAnchor(const String& url);
// User and password dropped. Paths ("/..." or "~...") and strings that do not
// parse as URLs come back unchanged.
String stringURLWithoutCredentials(const String& url);
// The part before the first of ":/;?" when that unit is ":"; else null.
String stringURLScheme(const String& url);
// The part behind the scheme's ":" and the "/" that follow it, if there is a
// scheme; else the receiver.
String stringURLWithoutScheme(const String& url);
// The extension of the URL's path, cut at the first of "?&;=#"; null when
// there is none.
String stringURLPathExtension(const String& url);
// True when `extensions` holds the path extension, ignoring case.
bool stringURLMatchingExtensions(const String& url, const std::vector<String>& extensions);
// For showing to a user: no credentials, scheme, trailing "/" or leading
// "www.".
String displayStringURL(const String& url);
// Equal after dropping anchors, standardising and dropping trailing "/",
// compared ignoring case. A null side is unequal.
bool isEqualToStringURL(const String& url, const String& other);

// ---- Removing parameters and pages ---------------------------------------

// Session identifiers, and the whole query of login, register and widget
// pages.
String stringURLByRemovingSessionIDs(const String& url);
// The utm_ campaign parameters.
String stringURLByRemovingAnalytics(const String& url);
// A final "/index.html" (and its kin), the "/" included.
String stringURLByRemovingIndexPages(const String& url);
// Parameters with an empty value.
String stringURLByRemovingEmptyParams(const String& url);
// Removes the parameter `param` (its name with the "=", such as "ved=")
// wherever it follows a query delimiter, ignoring case.
String stringURLByRemovingQueryParam(const String& url, std::u16string_view param);

// The key under which two addresses of one page compare equal. Applies, in
// this order: standard escapes replaced, anchor dropped, standardised,
// session ids, analytics and empty parameters removed, index pages cut,
// "https://www." and "http://www." made "http://", trailing "/" removed and
// everything lower-cased.
String simplifiedStringURL(const String& url);
String simplifiedStringURL(const String& url, bool sessionIDs, bool analytics, bool indexPages, bool emptyParams,
                           bool anchors);

// ---- Host forms ----------------------------------------------------------

// The components between "."; empty for a null or empty host.
std::vector<String> hostComponents(const String& host);
// Lower-cased components in reverse order joined with "."; null for a null
// or empty host.
String invertedHost(const String& host);
// Lower-cased components in reverse order, empty ones dropped. With more
// components than `maximum` (0: no limit) the components from the maximum-th
// on are joined into one last component; one of 251 units or more becomes its
// first 242 units followed by the 8 hex digits of the CRC-32 of its UTF-8.
std::vector<String> invertedHostComponents(const String& host, size_t maximum = 0);
// `path` with each inverted component appended as one path component. Null
// for a null path; the path itself for an empty host.
String stringByAppendingInvertedHostComponentsToPath(const String& host, const String& path, size_t maximum = 0);

}  // namespace norvane::urls
