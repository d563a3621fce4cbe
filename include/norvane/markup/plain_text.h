// HTML to plain text: one tag handler driven by the scanner, writing through
// a raw cursor into a buffer sized in advance. There is no document tree;
// the handler keeps flags and counters in a context record on the caller's
// stack.
//
// The converter knows which elements break lines (paragraphs: p, div, dir,
// menu, table, blockquote, hr, h0-h9; lines: br, li, ol, ul, dd, dl, dt,
// tr), which text a browser would not show (hidden div and span, option,
// noframes, noscript, marquee, textarea, script, style, comments), what is
// likely junk, and it can restrict itself to the body or to what crawl
// comments ("googleon:" / "googleoff:" with index, snippet, anchor or all)
// mark as indexable.
//
// Every conversion answers the receiver itself when the scan reached no
// content (or no buffer could be had). Trailing breaks stay.
#pragma once

#include <cstdint>

#include "norvane/core/string.h"
#include "norvane/markup/tag_scanner.h"

namespace norvane::markup {

struct PlainTextContext {
  unichar* buffer = nullptr;         // start of the output
  unichar* cursor = nullptr;         // where the next unit goes
  unichar* paragraphMark = nullptr;  // the cursor behind the latest break
  String bodyColor;                  // BGCOLOR of the latest body tag
  bool convertEntities = false;
  bool inMarquee = false;
  bool inTextArea = false;
  bool inNoFrames = false;
  bool inNoScript = false;
  bool standardEntities = false;
  bool nonUmlauted = false;
  bool textSinceBreak = false;
  bool reformat = false;
  bool collapse = true;  // false inside pre, code and plaintext
  bool spacePending = false;
  bool sawContent = false;
  bool invisibleFont = false;
  bool feedDateFont = false;
  bool hiddenDiv = false;
  bool hiddenSpan = false;
  bool inOption = false;
  bool removeJunk = false;
  bool didRemoveJunk = false;
  bool googleTags = false;
  bool imageAlts = false;
  int64_t bodyDepth = 0;
  int64_t linkDepth = 0;
  int64_t tableDepth = 0;
  uint64_t googleMask = 7;  // bit 0 index, bit 1 snippet, bit 2 anchor
};

// Writes `length` units of `characters` from `location` (converting entities
// in place first) and answers the new cursor. `firstUnit` is the index of
// the unit that tells whether the text began with white space.
unichar* appendRangeToPlainText(PlainTextContext* context, unichar* characters, size_t location, size_t length,
                                size_t firstUnit, unichar* cursor);

// True if the tag's STYLE hides what it holds: visibility hidden, display
// none, absolute positions far off the page, or a size of 1 to 3 pixels.
bool isHiddenStyle(const unichar* characters, size_t location, size_t length);

// The handlers, in the scanner's function form; `context` is a
// PlainTextContext.
bool PlainTextHandler(const String& string, unichar* characters, size_t nameLocation, size_t nameLength,
                      size_t tagLocation, size_t tagLength, size_t previousTagEnd, unsigned tagKind, void* context);
// No layout at all: each text run inside the body, behind one space.
bool SimplePlainTextHandler(const String& string, unichar* characters, size_t nameLocation, size_t nameLength,
                            size_t tagLocation, size_t tagLength, size_t previousTagEnd, unsigned tagKind,
                            void* context);

// The one conversion all forms below use. `didRemoveJunk` may be null.
String convertHtml2PlainTextUsingHandler(const String& html, TagHandler handler, bool entities, bool stdEntities,
                                         bool nonUmlauted, bool reformat, bool onlyBody, bool removeJunk,
                                         bool* didRemoveJunk, bool googleTags, bool imageAlts);

String stringByConvertingHtml2PlainText(const String& html);
String stringByConvertingHtml2ReformattedPlainText(const String& html);
String stringByConvertingHtml2PlainTextNonUmlauted(const String& html, bool nonUmlauted);
String stringByConvertingHtml2PlainTextNonUmlauted(const String& html, bool nonUmlauted, bool reformat, bool onlyBody,
                                                   bool googleTags, bool imageAlts = true);
String stringByConvertingHtml2PlainTextNonUmlauted(const String& html, bool nonUmlauted, bool reformat, bool onlyBody,
                                                   bool removeJunk, bool* didRemoveJunk, bool googleTags,
                                                   bool imageAlts);
String stringByConvertingHtml2PlainTextEntities(const String& html, bool entities, bool stdEntities, bool nonUmlauted,
                                                bool reformat, bool onlyBody, bool removeJunk, bool* didRemoveJunk,
                                                bool googleTags, bool imageAlts);
String stringByConvertingHtml2SimplifiedPlainText(const String& html);

// The text without any tag: each non-empty text between tags, set off by a
// space from output that does not end in white space. Entities stay.
String stripTags(const String& html);

}  // namespace norvane::markup
