// Markup bytes to strings, and the charset a page declares.
//
// Decoding takes up to two passes: a first guess (a byte-order mark, a
// charset name from outside, or the default), then the encoding the decoded
// markup declares ahead of its <body>. Where both give text, the one with
// fewer U+FFFD is kept, with the exceptions each operation lists. Decoding
// never fails on content: a malformed byte sequence becomes U+FFFD or leaves
// the bytes to the next candidate.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "norvane/core/string.h"
#include "norvane/core/types.h"
#include "norvane/markup/charsets.h"

namespace norvane::markup {

// The charset a page names ahead of its <body>: the CHARSET of a <meta>
// tag's CONTENT (entities converted), else the <meta> tag's own CHARSET
// attribute, or the ENCODING of an <?xml ..?> declaration, whichever comes
// first. Empty when there is none.
String markupCharset(const String& s);
// The range of the whole tag that names it, or {NotFound, 0}.
Range markupCharsetRange(const String& s);
// charset2NSStringEncoding of markupCharset.
NSStringEncoding markupEncoding(const String& s);
// charset2NSStringEncoding of the CHARSET in a Content-Type value.
NSStringEncoding headerEncoding(const String& s);
// ISO Latin 1 if the markup declares it, else UTF-8.
NSStringEncoding defaultURLEncoding(const String& s);

// The string as bytes in the encoding it declares, which is reported in
// `encoding`. A string that declares no available encoding, or holds a
// character its declared encoding cannot express, is written as ASCII with
// every other character as an entity, and ASCII (1) is reported. A null or
// empty string gives empty data and ASCII.
std::vector<uint8_t> markupData(const String& s, NSStringEncoding* encoding = nullptr);

// Decodes markup bytes. A byte-order mark FE FF or FF FE (with at least 3
// bytes of data) picks UTF-16 in that order, otherwise the first pass uses
// `defaultEncoding`; a non-empty `encodingName` of an available encoding
// overrides both. Empty data gives an empty string; the result is null only
// when no candidate decodes at all. `url` takes part in no decision.
// `usedEncoding` (may be null) receives the encoding of the result, ASCII for
// empty data and kInvalidEncoding for a null result.
String stringWithMarkupData(std::string_view data, const String& encodingName, NSStringEncoding defaultEncoding,
                            const String& url, NSStringEncoding* usedEncoding = nullptr);
String stringWithMarkupData(std::string_view data, NSStringEncoding defaultEncoding);
// The name is the CHARSET of a Content-Type value, if one is given.
String stringWithMarkupDataAndContentType(std::string_view data, const String& contentType,
                                          NSStringEncoding defaultEncoding);

// Reads and decodes a file. Binary property lists (and files with a
// property-list extension) come back as XML property-list text when they
// parse, with no encoding reported. `usedEncoding` (may be null) receives the
// encoding of the result, kInvalidEncoding if there is none. An empty path
// or an unreadable file gives null.
String stringWithMarkupContentsOfFile(const std::string& path, NSStringEncoding defaultEncoding,
                                      NSStringEncoding* usedEncoding = nullptr);

}  // namespace norvane::markup
