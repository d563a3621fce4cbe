// The tag scanner: one pass over HTML, XML or feed text that reports each
// tag, comment and marked section to a handler, with ranges into the buffer.
// No tree is built and nothing is allocated per tag.
//
// A scan walks the code units once. It recognises:
//   kind 1  ordinary tags: opening, closing, self-closing, also <!DOCTYPE ..>,
//           <?xml ..?> and <!>; script and style elements come as one call
//           for the whole element, so no markup inside them is ever seen;
//   kind 2  comments (<!-- .. -->, and the short form <!- .. ->);
//   kind 3  marked sections beginning <![ (CDATA sections, conditional
//           comments).
// After the last tag exactly one closing call of kind 0 follows, with
// tagLocation = the text's length, so the text behind the last tag reaches
// the handler; a handler that returns true stops the scan at once and there
// is no closing call. Malformed markup is never an error: an unterminated tag
// is text, an unterminated comment or section is reported up to the end.
//
// Handler arguments, in order:
//   characters      the buffer; every location is an index into it
//   nameLocation    index of the tag's name (the first letter of the tag up
//                   to white space, '/', '=' or '>'), NotFound if it has none;
//                   comments and marked sections have none
//   nameLength      0 if it has none
//   tagLocation     index of the tag's '<'
//   tagLength       length of the tag, '<' and '>' included
//   previousTagEnd  index just behind the previous tag; the units from here
//                   to tagLocation are the text before this tag
//   tagKind         0..3 as above
// The function form also receives the scanned string and the caller's
// context record. Returning true stops the scan.
//
// Writing: when the scan was asked for a private copy (`mutableBuffer`), a
// handler may rewrite units from previousTagEnd up to the end of the current
// tag; the scanner re-reads none of them. Otherwise the buffer may be the
// string's own storage and must not be written.
//
// Any number of scans may run at once; a handler may start another scan.
#pragma once

#include <cstddef>
#include <type_traits>

#include "norvane/core/string.h"
#include "norvane/core/types.h"
#include "norvane/markup/tag_scanner_core.h"

namespace norvane::markup {

enum TagKind : unsigned {
  kTagKindEnd = 0,
  kTagKindTag = 1,
  kTagKindComment = 2,
  kTagKindMarkedSection = 3,
};

// The function form of a tag handler. `context` is passed through unchanged.
using TagHandler = bool (*)(const String& string, unichar* characters, size_t nameLocation, size_t nameLength,
                            size_t tagLocation, size_t tagLength, size_t previousTagEnd, unsigned tagKind,
                            void* context);

// The closure form has the same arguments without string and context:
//   bool(unichar* characters, size_t nameLocation, size_t nameLength,
//        size_t tagLocation, size_t tagLength, size_t previousTagEnd,
//        unsigned tagKind)
// Any callable will do (a lambda capturing a context record); it is called
// directly, so it inlines into the scan loop.
template <class Closure>
concept TagClosure = std::is_invocable_r_v<bool, Closure&, unichar*, size_t, size_t, size_t, size_t, size_t, unsigned>;

// Scans `length` units of `characters` (const or not: the handler receives
// the same pointer type). Always true: a raw buffer scan always runs, an
// empty buffer giving only the closing call.
template <class CharT, class Handler>
bool scanTags(CharT* characters, size_t length, Handler&& handler) {
  detail::TagScanLoop<CharT, Handler&> loop{characters, length, handler};
  loop.run();
  return true;
}

// Scans a string with the function handler. False, with no handler call, if
// the string is null or empty or no buffer could be had (or `handler` is
// null); true otherwise, also when a handler stopped the scan. With
// `mutableBuffer` the handler works on a private, page-aligned copy.
bool GetTagsOfString(const String& string, TagHandler handler, void* context, bool mutableBuffer = false);

// Scans a string with a closure. Results as above.
template <class Closure>
requires TagClosure<Closure>
bool GetTagsOfString(const String& string, Closure&& closure, bool mutableBuffer = false) {
  detail::ScanBuffer buffer(string, mutableBuffer);
  if (!buffer.ok()) return false;
  return scanTags(buffer.data(), buffer.length(), closure);
}

// The same scans under an exception guard: an exception leaving a handler is
// logged as "<operation> (String): <name>:\n<reason>\n<call stack>" and
// yields false; the scan's buffer is released. A null handler yields false.
bool parseXmlWithHandler(const String& string, TagHandler handler, void* context, bool mutableBuffer);
template <class Closure>
requires TagClosure<Closure>
bool parseXmlWithHandler(const String& string, Closure&& closure) {
  try {
    return GetTagsOfString(string, closure, false);
  } catch (...) {
    detail::logScanException("parseXmlWithHandler:", std::current_exception());
    return false;
  }
}

// A string whose units can be read directly: always the receiver here, since
// every String owns a plain unit buffer.
String optimizedXml(const String& string);

// The receiver with every unit below 32 except tab, line feed and carriage
// return replaced by a space; the receiver itself if there is none. Null
// gives null.
String fixedXml(const String& string);

// ---------------------------------------------------------------------------
// Shape of a tag, on a range of a buffer or of a string. A null buffer or a
// range reaching outside the string gives false.
//
//   open    length >= 3 and the second unit is not '/'
//   closed  length >= 4 and the second or the last-but-one unit is '/'
//   meta    length >= 7 and the second and third units are "!["
//   remark  length >= 7 and the second and third units are "!-"
// A self-closing tag such as <br/> is open and closed at once.
bool isTagOpenCharacters(const unichar* characters, Range range);
bool isTagClosedCharacters(const unichar* characters, Range range);
bool isTagOpen(const String& tag);
bool isTagOpenInRange(const String& string, Range range);
bool isTagClosed(const String& tag);
bool isTagClosedInRange(const String& string, Range range);
bool isMetaTag(const String& tag);
bool isMetaTagInRange(const String& string, Range range);
bool isRemarkTag(const String& tag);
bool isRemarkTagInRange(const String& string, Range range);

// What a tag does to a depth counter: 0 if it is shorter than 3 units or its
// last-but-one unit is '/', -1 for a closing tag (second unit '/'), else +1.
int tagDepthChange(const unichar* characters, Range tag);

// ---------------------------------------------------------------------------
// Attributes of a tag in a buffer. `name` is NUL-terminated ASCII in any
// case, compared through the upper-case table. The tag runs over `range`
// (or from 0 over `length`) with its '<' first.
//
// The value is found behind the name, optional white space and '='; quoted
// values of other attributes are skipped, and a name preceded by a letter,
// digit, '-' or '_' does not match (NAME is not found in data-name=). A
// quoted value runs to its closing quote (the first '>' also ends it here),
// an unquoted one to white space or '>'. Trailing white space is dropped. An
// empty value, no value, or a tag no longer than the name plus 5 units gives
// null.
String attributeOfTagCharacters(const unichar* characters, size_t length, const char* name);
String attributeOfTagCharacters(const unichar* characters, Range range, const char* name);
// The CONTENT attribute of a meta tag, whose value may hold markup: nested
// <...> pairs are kept, the value stops before a following "<meta", and a
// stray '<' or "</" just before the closing quote is cut off.
String contentAttributeOfTagCharacters(const unichar* characters, Range range);
// The range of the value in the buffer instead of a copy; {NotFound, 0} if
// there is none.
Range rangeOfAttributeOfTagCharacters(const unichar* characters, size_t length, const char* name);
Range rangeOfAttributeOfTagCharacters(const unichar* characters, Range range, const char* name);

// The common core of the forms above. With `outRange` the value is not
// copied: its range is stored there (when found) and null is returned.
String attributeOfTagCharactersWithName(const unichar* characters, size_t location, size_t length, const char* name,
                                        bool contentMode, Range* outRange);

// Attributes of a tag or entries of a style in a string; `name` in any case.
// Tags: "name = value" ended by '>'; styles: "name: value" ended by ';'. A
// quoted value ends at its quote or the terminator, an unquoted one at white
// space or the terminator ("font-family: Arial Black" gives "Arial"). A name
// preceded by a letter, digit or '-' does not match; '_' does not prevent a
// match.
String attributeOfTagWithName(const String& tag, const String& name);
String attributeOfTagInRange(const String& string, Range range, const String& name);
String attributeOfStyleWithName(const String& style, const String& name);
String attributeOfStyleInRange(const String& string, Range range, const String& name);
// The common core: the range must lie in the string; null if the name is
// empty or n + minimumExtra is not below the range's length.
String attributeOfStringWithName(const String& string, Range range, const String& name, size_t minimumExtra,
                                 unichar separator, unichar terminator);

// ---------------------------------------------------------------------------
// Header lines such as a Content-Type or Refresh value: "NAME=value".
// The line is read through the upper-case table and compared with `name` as
// given, so `name` must be upper case ("CHARSET"); it matches anywhere in the
// line, with no check of what precedes it ("XCHARSET=" matches CHARSET).
//
// headerFieldNamed: the value behind "name=" (no white space skipped behind
// '='); quoted by `quotation` it runs to the same quote, otherwise to
// `separator` or the end. Null for a null or empty name or no match.
String headerFieldNamed(const String& line, const String& name);                     // quotation ', separator ;
String headerFieldNamed(const String& line, const String& name, unichar quotation);  // separator ;
String headerFieldNamed(const String& line, const String& name, unichar quotation, unichar separator);
String HTTPHeaderFieldNamed(const String& line, const String& name);  // quotation ", separator ,
// Tolerant forms: white space after '=' is skipped, either quote opens a
// value, and an unquoted value also ends at white space, quotes or '>'.
String headerCharset(const String& line);  // CHARSET=
String headerRefresh(const String& line);  // URL=
// The leading integer of a refresh header: the interval before its URL.
int refreshInterval(const String& line);

// The common core. `name` must be given in upper case. A quoted value that is
// empty fails that position and the search goes on; an unquoted empty value
// is an empty string. Nothing is trimmed.
String copyOfAttributeOfString(const String& line, const unichar* name, size_t nameLength, unichar quotation,
                               bool tolerant, unichar separator);

// ---------------------------------------------------------------------------
// Size of a tag from WIDTH and HEIGHT (or the misspelt HEIGH) attributes, or
// else from the width and height entries of its STYLE attribute. A tag of
// fewer than 10 units gives 0 and 0. True if the width is above 0.
bool getTagWidth(int* width, int* height, const unichar* characters, Range range);
bool getTagWidth(int* width, int* height, const unichar* characters, size_t length);
bool getTagWidth(int* width, int* height, const String& string, Range range);
bool getTagWidth(int* width, int* height, const String& tag);

// The url(...) of an open tag whose STYLE holds "background:" or
// "background-image:" together with "no-repeat"; surrounding single quotes
// are removed. Null otherwise or when empty.
String backgroundStyleURLOfTagCharacters(const unichar* characters, Range range);
String backgroundStyleURLOfTagCharacters(const unichar* characters, size_t length);

// The integer at the start of a text: white space skipped, an optional sign,
// decimal digits up to the first other unit; 0 if there are none. Saturates
// at the int range.
int integerValueOfCharacters(const unichar* characters, size_t length);

}  // namespace norvane::markup
