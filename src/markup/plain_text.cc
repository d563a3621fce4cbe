#include "norvane/markup/plain_text.h"

#include <unistd.h>

#include <cstring>
#include <memory>
#include <new>

#include "norvane/markup/entities.h"
#include "norvane/text/chars.h"

namespace norvane::markup {
namespace {

using text::isInRep;

constexpr int64_t kWholeText = 0x3FFFFFFFFFFFFFFF;
constexpr size_t kLongCollapsedRun = 10001;
constexpr size_t kLongLinkRun = 3501;
constexpr ptrdiff_t kUnitsPerParagraph = 20000;

inline bool isLineEnd(unichar u) {
  return u == 0x0A || u == 0x0D || u == 0x03 || u == 0x0C || u == 0x2028 || u == 0x2029 || u == 0xFEFF || u == 0xFFFC;
}

// Compares a tag name with a lower-case ASCII literal by (c | 32).
inline bool nameIs(const unichar* name, size_t length, const char* literal) {
  for (size_t i = 0; i < length; ++i) {
    if (literal[i] == 0 || (name[i] | 32) != literal[i]) return false;
  }
  return literal[length] == 0;
}

inline bool isHeading(const unichar* name, size_t length) {
  return length == 2 && (name[0] | 32) == 'h' && name[1] >= u'0' && name[1] <= u'9';
}

inline bool isClosingTag(const unichar* characters, size_t tagLocation, size_t tagLength) {
  return tagLength >= 2 && characters[tagLocation + 1] == u'/';
}

inline bool isSelfClosingTag(const unichar* characters, size_t tagLocation, size_t tagLength) {
  return tagLength >= 3 && characters[tagLocation + tagLength - 2] == u'/';
}

// A tag below 4 units counts as open; else neither its second nor its
// last-but-one unit is '/'.
inline bool openTest(const unichar* characters, size_t tagLocation, size_t tagLength) {
  if (tagLength < 4) return true;
  return !isClosingTag(characters, tagLocation, tagLength) && !isSelfClosingTag(characters, tagLocation, tagLength);
}

inline int depthDelta(const unichar* characters, size_t tagLocation, size_t tagLength) {
  return tagDepthChange(characters, Range{tagLocation, tagLength});
}

// What a tag name does to the layout before the tag's own effects, by one
// dispatch on the name's length.
enum class BreakKind { kNone, kParagraph, kLine, kRow, kCell, kInline };

BreakKind breakKindOf(const unichar* name, size_t length) {
  switch (length) {
    case 1:
      return (name[0] | 32) == 'p' ? BreakKind::kParagraph : BreakKind::kNone;
    case 2: {
      if (isHeading(name, length) || nameIs(name, length, "hr")) return BreakKind::kParagraph;
      if (nameIs(name, length, "tr")) return BreakKind::kRow;
      if (nameIs(name, length, "td") || nameIs(name, length, "th")) return BreakKind::kCell;
      for (const char* line : {"br", "li", "ol", "ul", "dd", "dl", "dt"}) {
        if (nameIs(name, length, line)) return BreakKind::kLine;
      }
      return BreakKind::kNone;
    }
    case 3:
      return nameIs(name, length, "div") || nameIs(name, length, "dir") ? BreakKind::kParagraph : BreakKind::kNone;
    case 4:
      if (nameIs(name, length, "menu")) return BreakKind::kParagraph;
      return nameIs(name, length, "code") || nameIs(name, length, "cite") ? BreakKind::kInline : BreakKind::kNone;
    case 5:
      return nameIs(name, length, "table") ? BreakKind::kParagraph : BreakKind::kNone;
    case 10:
      return nameIs(name, length, "blockquote") ? BreakKind::kParagraph : BreakKind::kNone;
    default:
      return BreakKind::kNone;
  }
}

void clearTheTwo(PlainTextContext& c) {
  c.inMarquee = false;
  c.inTextArea = false;
}

void clearTheGroup(PlainTextContext& c) {
  clearTheTwo(c);
  c.bodyColor = String();
  c.tableDepth = 0;
  c.invisibleFont = false;
  c.feedDateFont = false;
  c.hiddenDiv = false;
  c.hiddenSpan = false;
  c.inOption = false;
}

inline bool outputEndsWhite(const PlainTextContext& c, const unichar* cursor, text::CharacterSetRep white) {
  return cursor > c.buffer && isInRep(white, cursor[-1]);
}

unichar* breakWith(PlainTextContext& c, unichar* cursor, int lineFeeds) {
  for (int i = 0; i < lineFeeds; ++i) *cursor++ = u'\n';
  c.paragraphMark = cursor;
  c.textSinceBreak = false;
  c.spacePending = false;
  return cursor;
}

unichar* paragraphBreak(PlainTextContext& c, unichar* cursor) {
  return breakWith(c, cursor, 2);
}
unichar* lineBreak(PlainTextContext& c, unichar* cursor) {
  return breakWith(c, cursor, 1);
}

// A space if the output has some and does not end white; otherwise the space
// is left pending.
unichar* cellGap(PlainTextContext& c, unichar* cursor, text::CharacterSetRep white) {
  if (cursor > c.buffer && !isInRep(white, cursor[-1])) {
    *cursor++ = u' ';
    c.spacePending = false;
  } else {
    c.spacePending = true;
  }
  return cursor;
}

// All text since the last break goes when a paragraph grows beyond 20000
// units while junk is being removed.
unichar* applyJunkLimit(PlainTextContext& c, unichar* cursor) {
  if (c.removeJunk && cursor - c.paragraphMark > kUnitsPerParagraph) {
    c.didRemoveJunk = true;
    return c.paragraphMark;
  }
  return cursor;
}

bool containsNoCase(const unichar* characters, size_t location, size_t length, const char* needle) {
  return text::fastCaseInsensitiveUnicharsContainChars(characters + location, length, needle, std::strlen(needle)) !=
         nullptr;
}

void applyCrawlComment(PlainTextContext& c, const unichar* characters, size_t tagLocation, size_t tagLength) {
  if (!c.googleTags || tagLength < 19) return;
  bool on = containsNoCase(characters, tagLocation, tagLength, "googleon:");
  if (!on && !containsNoCase(characters, tagLocation, tagLength, "googleoff:")) return;
  uint64_t bits = 0;
  if (containsNoCase(characters, tagLocation, tagLength, "all")) {
    bits = 7;
  } else {
    if (containsNoCase(characters, tagLocation, tagLength, "index")) bits |= 1;
    if (containsNoCase(characters, tagLocation, tagLength, "snippet")) bits |= 2;
    if (containsNoCase(characters, tagLocation, tagLength, "anchor")) bits |= 4;
  }
  if (on) {
    // "googleon: all" turns everything on; named parts are added.
    c.googleMask = bits == 7 ? 7 : (c.googleMask | bits);
  } else {
    c.googleMask &= ~bits;
  }
}

// Text that a hidden font would have drawn: long, wordy text is junk.
void testHiddenTextForJunk(PlainTextContext& c, unichar* characters, size_t location, size_t length) {
  if (length < 100) return;
  length = convertEntities2Characters(characters, characters + location, location, length, true, false, false);
  if (length < 100) return;
  text::CharacterSetRep white = text::whiteCharacterSetRep();
  const unichar* p = characters + location;
  size_t start = 0, end = length;
  while (start < end && isInRep(white, p[start])) ++start;
  while (end > start && isInRep(white, p[end - 1])) --end;
  if (end - start < 100) return;
  text::CharacterSetRep alphaNum = text::alphaNumCharacterSetRep();
  size_t alphaNumCount = 0, separatorRuns = 0;
  bool inRun = false;
  for (size_t i = start; i < end; ++i) {
    if (isInRep(alphaNum, p[i])) {
      ++alphaNumCount;
      inRun = false;
    } else if (!inRun) {
      ++separatorRuns;
      inRun = true;
    }
  }
  if (alphaNumCount >= 100 && separatorRuns >= 5 && alphaNumCount / separatorRuns >= 6) c.didRemoveJunk = true;
}

// Compares an attribute's value with a lower-case ASCII word in place,
// without making a string: the hot tags (div, span) carry a class on nearly
// every occurrence.
bool attributeEqualsNoCase(const unichar* characters, size_t tagLocation, size_t tagLength, const char* name,
                           const char* expected) {
  Range value = rangeOfAttributeOfTagCharacters(characters, Range{tagLocation, tagLength}, name);
  if (!value.found() || value.length != std::strlen(expected)) return false;
  return text::fastCaseInsensitiveCompareUnicharsWithChars(characters + value.location, value.length, expected,
                                                           value.length) == 0;
}

bool isHiddenBlock(const unichar* characters, size_t tagLocation, size_t tagLength) {
  return attributeEqualsNoCase(characters, tagLocation, tagLength, "CLASS", "hidden") ||
         isHiddenStyle(characters, tagLocation, tagLength);
}

void readFont(PlainTextContext& c, const unichar* characters, size_t tagLocation, size_t tagLength) {
  Range tag{tagLocation, tagLength};
  c.invisibleFont = false;
  if (!c.bodyColor.isNull()) {
    String color = attributeOfTagCharacters(characters, tag, "COLOR");
    c.invisibleFont = !color.isNull() && text::isEqualToStringNoCase(color, c.bodyColor);
  }
  if (!c.invisibleFont) {
    // A font size of 1 to 4 points cannot be read.
    String style = attributeOfTagCharacters(characters, tag, "STYLE");
    if (!style.isNull() &&
        text::fastCaseInsensitiveUnicharsContainChars(style.data(), style.length(), "font-size", 9)) {
      const unichar* pt = text::fastCaseInsensitiveUnicharsContainChars(style.data(), style.length(), "pt", 2);
      size_t at = pt ? static_cast<size_t>(pt - style.data()) : NotFound;
      if (pt && at >= 2) {
        unichar before = style[at - 1], twoBefore = style[at - 2];
        bool twoBeforeIsDigit = twoBefore >= u'0' && twoBefore <= u'9';
        c.invisibleFont = !twoBeforeIsDigit && before >= u'1' && before <= u'4';
      }
    }
  }
  String cls = attributeOfTagCharacters(characters, tag, "CLASS");
  c.feedDateFont = cls == u"feed_date";
}

// The body of PlainTextHandler; `characters` is the scan's private copy.
bool handlePlainText(PlainTextContext& c, unichar* characters, size_t nameLocation, size_t nameLength,
                     size_t tagLocation, size_t tagLength, size_t previousTagEnd, unsigned tagKind) {
  const unichar* name = nameLocation == NotFound ? nullptr : characters + nameLocation;

  if (c.bodyDepth < 1) {
    if (name) {
      if (nameIs(name, nameLength, "noframes")) {
        c.bodyDepth += depthDelta(characters, tagLocation, tagLength);
        clearTheGroup(c);
        c.inNoFrames = openTest(characters, tagLocation, tagLength);
      } else if (nameIs(name, nameLength, "noscript")) {
        c.bodyDepth += depthDelta(characters, tagLocation, tagLength);
        clearTheGroup(c);
        c.inNoScript = openTest(characters, tagLocation, tagLength);
      } else if (nameIs(name, nameLength, "body")) {
        c.bodyDepth += depthDelta(characters, tagLocation, tagLength);
        clearTheGroup(c);
        c.inNoFrames = false;
        c.bodyColor = attributeOfTagCharacters(characters, Range{tagLocation, tagLength}, "BGCOLOR");
      } else if (nameIs(name, nameLength, "head")) {
        c.bodyDepth -= depthDelta(characters, tagLocation, tagLength);
        clearTheGroup(c);
        c.inNoFrames = false;
      }
    } else if (tagKind == kTagKindComment) {
      applyCrawlComment(c, characters, tagLocation, tagLength);
    }
    return false;
  }

  text::CharacterSetRep white = text::whiteCharacterSetRep();
  unichar* cursor = c.cursor;
  auto done = [&] {
    c.cursor = cursor;
    c.sawContent = true;
    return false;
  };

  // Stage 1: the text before the tag.
  if (tagLocation > previousTagEnd) {
    size_t length = tagLocation - previousTagEnd;
    bool titleJunk = c.removeJunk && name && nameIs(name, nameLength, "title");
    bool hidden = (c.hiddenDiv && c.tableDepth < 1) || c.hiddenSpan || c.inOption;
    if (!titleJunk && !hidden) {
      bool suppressed = c.inNoFrames || c.inNoScript || c.inMarquee || c.inTextArea ||
                        (c.removeJunk && c.invisibleFont) || (c.googleTags && (!(c.googleMask & 1) || c.feedDateFont));
      if (!suppressed) {
        cursor = appendRangeToPlainText(&c, characters, previousTagEnd, length, previousTagEnd, cursor);
      } else if (c.invisibleFont && !c.didRemoveJunk) {
        testHiddenTextForJunk(c, characters, previousTagEnd, length);
      }
    }
  }

  if (!name) {
    if (tagKind == kTagKindComment) applyCrawlComment(c, characters, tagLocation, tagLength);
    return done();
  }

  // Stage 2: breaks.
  BreakKind kind = breakKindOf(name, nameLength);
  bool hasOutput = cursor > c.buffer;
  if (c.textSinceBreak) {
    switch (kind) {
      case BreakKind::kParagraph:
        cursor = paragraphBreak(c, cursor);
        break;
      case BreakKind::kLine:
      case BreakKind::kRow:
        cursor = lineBreak(c, cursor);
        break;
      case BreakKind::kCell:
        cursor = cellGap(c, cursor, white);
        c.textSinceBreak = false;
        break;
      case BreakKind::kInline:
        if (hasOutput && !isInRep(white, cursor[-1])) {
          *cursor++ = u' ';
          c.spacePending = false;
        }
        break;
      case BreakKind::kNone:
        break;
    }
  } else if (hasOutput) {
    if (kind == BreakKind::kCell && !isInRep(white, cursor[-1])) {
      *cursor++ = u' ';
      c.spacePending = false;
    } else if (kind == BreakKind::kRow && !isLineEnd(cursor[-1])) {
      cursor = lineBreak(c, cursor);
    }
  }

  // Stage 3: what the tag itself does.
  bool closing = isClosingTag(characters, tagLocation, tagLength);
  bool selfClosing = isSelfClosingTag(characters, tagLocation, tagLength);
  auto changeLinkDepth = [&] {
    if (tagLength > 2 && !closing) {
      ++c.linkDepth;
    } else if (c.linkDepth > 0) {
      --c.linkDepth;
    }
  };
  switch (name[0] | 32) {
    case 'a':
      if (nameLength == 1) {
        changeLinkDepth();
        c.spacePending = true;
      }
      break;
    case 'b':
      if (nameIs(name, nameLength, "body")) {
        c.bodyDepth += depthDelta(characters, tagLocation, tagLength);
        clearTheGroup(c);
        c.bodyColor = attributeOfTagCharacters(characters, Range{tagLocation, tagLength}, "BGCOLOR");
      }
      break;
    case 'c':
      if (nameIs(name, nameLength, "code")) {
        clearTheTwo(c);
        c.collapse = (closing || selfClosing) && tagLength >= 4;
      }
      break;
    case 'd':
      if (nameIs(name, nameLength, "div")) {
        clearTheTwo(c);
        c.hiddenDiv = isHiddenBlock(characters, tagLocation, tagLength);
      }
      break;
    case 'f':
      if (nameIs(name, nameLength, "font")) readFont(c, characters, tagLocation, tagLength);
      break;
    case 'h':
      if (isHeading(name, nameLength)) {
        clearTheTwo(c);
        changeLinkDepth();
      }
      break;
    case 'i':
      if (nameIs(name, nameLength, "img")) {
        if (c.imageAlts) {
          Range tag{tagLocation, tagLength};
          Range alt = rangeOfAttributeOfTagCharacters(characters, tag, "ALT");
          if (!alt.found()) alt = rangeOfAttributeOfTagCharacters(characters, tag, "TITLE");
          c.spacePending = true;
          if (alt.found()) {
            cursor = appendRangeToPlainText(&c, characters, alt.location, alt.length, 0, cursor);
            c.spacePending = true;
          }
        }
      } else if (nameIs(name, nameLength, "input")) {
        clearTheTwo(c);
        cursor = cellGap(c, cursor, white);
      } else if (nameIs(name, nameLength, "iframe")) {
        c.inNoFrames = openTest(characters, tagLocation, tagLength);
      }
      break;
    case 'm':
      if (nameIs(name, nameLength, "marquee")) c.inMarquee = openTest(characters, tagLocation, tagLength);
      break;
    case 'n':
      if (nameIs(name, nameLength, "noframes")) {
        c.inNoFrames = openTest(characters, tagLocation, tagLength);
      } else if (nameIs(name, nameLength, "noscript")) {
        c.inNoScript = openTest(characters, tagLocation, tagLength);
      }
      break;
    case 'o':
      if (nameIs(name, nameLength, "option")) {
        clearTheTwo(c);
        c.inOption = openTest(characters, tagLocation, tagLength);
      }
      break;
    case 'p':
      if (nameIs(name, nameLength, "pre")) {
        bool textBefore = c.textSinceBreak;
        clearTheTwo(c);
        if (closing || selfClosing) {
          c.collapse = true;
        } else {
          c.collapse = false;
          if (textBefore || c.spacePending) cursor = paragraphBreak(c, cursor);
        }
      } else if (nameIs(name, nameLength, "plaintext")) {
        clearTheTwo(c);
        if (closing || selfClosing) {
          c.collapse = true;
        } else {
          c.collapse = false;
          cursor = paragraphBreak(c, cursor);
        }
      }
      break;
    case 's':
      if (nameIs(name, nameLength, "span")) {
        c.hiddenSpan = isHiddenBlock(characters, tagLocation, tagLength);
      } else if (nameIs(name, nameLength, "select")) {
        clearTheTwo(c);
        c.inOption = false;
      }
      break;
    case 't':
      if (nameIs(name, nameLength, "table")) {
        if (cursor - c.buffer >= 2) {
          clearTheTwo(c);
          if (!isLineEnd(cursor[-1])) {
            cursor = paragraphBreak(c, cursor);
          } else if (!isLineEnd(cursor[-2])) {
            cursor = lineBreak(c, cursor);
          }
          if (tagLength >= 3) {
            if (!closing && !selfClosing) {
              ++c.tableDepth;
            } else if (closing && tagLength >= 4) {
              --c.tableDepth;
            }
          }
        }
      } else if (nameIs(name, nameLength, "textarea")) {
        c.inTextArea = openTest(characters, tagLocation, tagLength);
      }
      break;
    default:
      break;
  }
  return done();
}

bool handleSimplePlainText(PlainTextContext& c, unichar* characters, size_t nameLocation, size_t nameLength,
                           size_t tagLocation, size_t tagLength, size_t previousTagEnd) {
  if (c.bodyDepth >= 1 && tagLocation > previousTagEnd) {
    size_t length = tagLocation - previousTagEnd;
    if (length >= 4) {
      length = convertEntities2Characters(characters, characters + previousTagEnd, previousTagEnd, length, true, false,
                                          false);
    }
    if (length > 0) {
      *c.cursor++ = u' ';
      std::memcpy(c.cursor, characters + previousTagEnd, length * sizeof(unichar));
      c.cursor += length;
      c.sawContent = true;
    }
  }
  if (nameLocation != NotFound) {
    const unichar* name = characters + nameLocation;
    if (nameIs(name, nameLength, "noframes") || nameIs(name, nameLength, "body")) {
      c.bodyDepth += depthDelta(characters, tagLocation, tagLength);
    } else if (nameIs(name, nameLength, "head")) {
      c.bodyDepth -= depthDelta(characters, tagLocation, tagLength);
    }
  }
  return false;
}

void resetContext(PlainTextContext& c, unichar* buffer, bool entities, bool stdEntities, bool nonUmlauted,
                  bool reformat, int64_t bodyDepth, bool removeJunk, bool googleTags, bool imageAlts) {
  c = PlainTextContext();
  c.buffer = c.cursor = c.paragraphMark = buffer;
  c.convertEntities = entities;
  c.standardEntities = stdEntities;
  c.nonUmlauted = nonUmlauted;
  c.reformat = reformat;
  c.bodyDepth = bodyDepth;
  c.removeJunk = removeJunk;
  c.googleTags = googleTags;
  c.imageAlts = imageAlts;
}

}  // namespace

unichar* appendRangeToPlainText(PlainTextContext* context, unichar* characters, size_t location, size_t length,
                                size_t firstUnit, unichar* cursor) {
  PlainTextContext& c = *context;
  if (c.removeJunk && ((length >= kLongCollapsedRun && c.collapse) || (length >= kLongLinkRun && c.linkDepth > 0))) {
    c.didRemoveJunk = true;
    c.spacePending = c.collapse;
    return cursor;
  }
  // Most runs hold no reference at all; a vectorised look for '&' spares
  // them the converter's unit-by-unit pass (which must run anyway when it
  // also folds diacritics).
  if (length >= 4 && (c.nonUmlauted || text::fastUnicharsContainChars(characters + location, length, "&", 1))) {
    if (c.convertEntities) {
      length = convertEntities2Characters(characters, characters + location, location, length, c.standardEntities,
                                          false, c.nonUmlauted);
    } else if (c.standardEntities) {
      length = convertStdEntities2Characters(characters + location, length);
    }
  }
  if (length == 0) {
    c.spacePending = c.collapse;
    return cursor;
  }

  text::CharacterSetRep white = text::whiteCharacterSetRep();
  const unichar* p = characters + location;
  const unichar* end = p + length;
  bool endsWhite = isInRep(white, end[-1]);
  if (c.collapse) {
    while (p < end && isInRep(white, *p)) ++p;
    while (end > p && isInRep(white, end[-1])) --end;
    if (p == end) {
      c.spacePending = true;
      return cursor;
    }
  }

  if (isInRep(white, characters[firstUnit])) c.spacePending = true;
  if (c.spacePending) {
    if (c.textSinceBreak) {
      *cursor++ = u' ';
    } else if (!c.collapse && cursor > c.buffer && !isInRep(white, cursor[-1])) {
      *cursor++ = u' ';
    }
  }

  if (c.collapse || !c.reformat) {
    while (p < end) {
      if (!isInRep(white, *p)) {
        *cursor++ = *p++;
        continue;
      }
      while (p < end && isInRep(white, *p)) ++p;
      *cursor++ = u' ';
      if (p == end && !c.collapse) *cursor++ = end[-1];
    }
    cursor = applyJunkLimit(c, cursor);
    c.spacePending = endsWhite;
    c.textSinceBreak = true;
    return cursor;
  }

  // Preformatted text with reformatting: line structure is interpreted.
  text::CharacterSetRep space = text::spaceCharacterSetRep();
  while (p < end) {
    unichar u = *p;
    if (isLineEnd(u)) {
      int lineEnds = 0;
      while (p < end && isLineEnd(*p)) {
        if (*p == u'\r' && p + 1 < end && p[1] == u'\n') ++p;
        ++p;
        ++lineEnds;
      }
      if (lineEnds >= 2) {
        cursor = applyJunkLimit(c, cursor);
        cursor = paragraphBreak(c, cursor);
      } else if (p < end) {
        unichar next = *p;
        if (next == u' ' || next == u'-' || next == u'/' || next == u'>' || next == u'}') {
          cursor = applyJunkLimit(c, cursor);
          cursor = lineBreak(c, cursor);
        } else if (!outputEndsWhite(c, cursor, white)) {
          *cursor++ = u' ';
        }
      }
    } else if (isInRep(space, u)) {
      while (p < end && isInRep(space, *p) && !isLineEnd(*p)) ++p;
      *cursor++ = u' ';
    } else {
      *cursor++ = u;
      ++p;
    }
  }
  cursor = applyJunkLimit(c, cursor);
  if (cursor > c.paragraphMark) c.textSinceBreak = true;
  return cursor;
}

bool isHiddenStyle(const unichar* characters, size_t location, size_t length) {
  if (!rangeOfAttributeOfTagCharacters(characters, Range{location, length}, "STYLE").found()) return false;
  String style = attributeOfTagCharacters(characters, Range{location, length}, "STYLE");
  if (style.isNull()) return false;
  std::u16string_view s = style.view();
  if (size_t at = s.find(u"visibility"); at != std::u16string_view::npos && s.find(u"hidden", at) != s.npos) {
    return true;
  }
  if (size_t at = s.find(u"display:"); at != std::u16string_view::npos && s.find(u"none", at) != s.npos) return true;
  if (text::fastCaseInsensitiveUnicharsContainChars(style.data(), style.length(), "position:absolute", 17)) {
    for (const char16_t* side : {u"top", u"left"}) {
      String value = attributeOfStyleWithName(style, String(side));
      if (!value.isNull() && integerValueOfCharacters(value.data(), value.length()) <= -1001) return true;
    }
  }
  int width = 0, height = 0;
  if (getTagWidth(&width, &height, characters, Range{location, length}) && width > 0) {
    return (width >= 1 && width <= 3) || height < 0 || (height >= 1 && height <= 3);
  }
  return false;
}

bool PlainTextHandler(const String&, unichar* characters, size_t nameLocation, size_t nameLength, size_t tagLocation,
                      size_t tagLength, size_t previousTagEnd, unsigned tagKind, void* context) {
  return handlePlainText(*static_cast<PlainTextContext*>(context), characters, nameLocation, nameLength, tagLocation,
                         tagLength, previousTagEnd, tagKind);
}

bool SimplePlainTextHandler(const String&, unichar* characters, size_t nameLocation, size_t nameLength,
                            size_t tagLocation, size_t tagLength, size_t previousTagEnd, unsigned, void* context) {
  return handleSimplePlainText(*static_cast<PlainTextContext*>(context), characters, nameLocation, nameLength,
                               tagLocation, tagLength, previousTagEnd);
}

String convertHtml2PlainTextUsingHandler(const String& html, TagHandler handler, bool entities, bool stdEntities,
                                         bool nonUmlauted, bool reformat, bool onlyBody, bool removeJunk,
                                         bool* didRemoveJunk, bool googleTags, bool imageAlts) {
  if (didRemoveJunk) *didRemoveJunk = false;
  if (html.isEmpty() || !handler) return html;
  text::lowerCharsTable();
  text::upperCharsTable();

  // Eight output units per input unit cover the breaks and spaces tags add.
  size_t page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
  size_t capacity = ((html.length() * 8 * sizeof(unichar) + page - 1) / page) * page / sizeof(unichar);
  std::unique_ptr<unichar[]> output(new (std::nothrow) unichar[capacity]);
  std::unique_ptr<unichar[]> scratch(new (std::nothrow) unichar[html.length()]);
  if (!output || !scratch) return html;

  PlainTextContext context;
  auto scan = [&](int64_t bodyDepth) {
    resetContext(context, output.get(), entities, stdEntities, nonUmlauted, reformat, bodyDepth, removeJunk, googleTags,
                 imageAlts);
    // Entities are converted in place, so every scan works on a fresh copy.
    std::memcpy(scratch.get(), html.data(), html.length() * sizeof(unichar));
    // The built-in handlers are called directly so that they inline into
    // the scan loop; any other goes through its pointer.
    if (handler == PlainTextHandler) {
      scanTags(scratch.get(), html.length(),
               [&](unichar* characters, size_t nameLocation, size_t nameLength, size_t tagLocation, size_t tagLength,
                   size_t previousTagEnd, unsigned tagKind) {
                 return handlePlainText(context, characters, nameLocation, nameLength, tagLocation, tagLength,
                                        previousTagEnd, tagKind);
               });
    } else {
      scanTags(scratch.get(), html.length(),
               [&](unichar* characters, size_t nameLocation, size_t nameLength, size_t tagLocation, size_t tagLength,
                   size_t previousTagEnd, unsigned tagKind) {
                 return handler(html, characters, nameLocation, nameLength, tagLocation, tagLength, previousTagEnd,
                                tagKind, &context);
               });
    }
  };
  scan(onlyBody ? 0 : kWholeText);
  if (onlyBody && !context.sawContent) scan(kWholeText);
  if (!context.sawContent) return html;
  if (didRemoveJunk) *didRemoveJunk = context.didRemoveJunk;
  return String(output.get(), static_cast<size_t>(context.cursor - output.get()));
}

String stringByConvertingHtml2PlainText(const String& html) {
  return convertHtml2PlainTextUsingHandler(html, PlainTextHandler, true, true, false, false, false, false, nullptr,
                                           false, true);
}

String stringByConvertingHtml2ReformattedPlainText(const String& html) {
  return convertHtml2PlainTextUsingHandler(html, PlainTextHandler, true, true, false, true, false, false, nullptr,
                                           false, true);
}

String stringByConvertingHtml2PlainTextNonUmlauted(const String& html, bool nonUmlauted) {
  return convertHtml2PlainTextUsingHandler(html, PlainTextHandler, true, true, nonUmlauted, false, false, false,
                                           nullptr, false, true);
}

String stringByConvertingHtml2PlainTextNonUmlauted(const String& html, bool nonUmlauted, bool reformat, bool onlyBody,
                                                   bool googleTags, bool imageAlts) {
  return convertHtml2PlainTextUsingHandler(html, PlainTextHandler, true, true, nonUmlauted, reformat, onlyBody, false,
                                           nullptr, googleTags, imageAlts);
}

String stringByConvertingHtml2PlainTextNonUmlauted(const String& html, bool nonUmlauted, bool reformat, bool onlyBody,
                                                   bool removeJunk, bool* didRemoveJunk, bool googleTags,
                                                   bool imageAlts) {
  return convertHtml2PlainTextUsingHandler(html, PlainTextHandler, true, true, nonUmlauted, reformat, onlyBody,
                                           removeJunk, didRemoveJunk, googleTags, imageAlts);
}

String stringByConvertingHtml2PlainTextEntities(const String& html, bool entities, bool stdEntities, bool nonUmlauted,
                                                bool reformat, bool onlyBody, bool removeJunk, bool* didRemoveJunk,
                                                bool googleTags, bool imageAlts) {
  return convertHtml2PlainTextUsingHandler(html, PlainTextHandler, entities, stdEntities, nonUmlauted, reformat,
                                           onlyBody, removeJunk, didRemoveJunk, googleTags, imageAlts);
}

String stringByConvertingHtml2SimplifiedPlainText(const String& html) {
  return convertHtml2PlainTextUsingHandler(html, SimplePlainTextHandler, true, true, false, false, true, false, nullptr,
                                           false, true);
}

String stripTags(const String& html) {
  if (html.isEmpty()) return html;
  std::u16string out;
  out.reserve(html.length());
  text::CharacterSetRep white = text::whiteCharacterSetRep();
  scanTags(html.data(), html.length(),
           [&](const unichar* characters, size_t, size_t, size_t tagLocation, size_t, size_t previousTagEnd, unsigned) {
             if (tagLocation > previousTagEnd) {
               if (!out.empty() && !isInRep(white, out.back())) out.push_back(u' ');
               out.append(characters + previousTagEnd, tagLocation - previousTagEnd);
             }
             return false;
           });
  return out == html.view() ? html : String(out);
}

}  // namespace norvane::markup
