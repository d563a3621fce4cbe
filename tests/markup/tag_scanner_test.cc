#include "norvane/markup/tag_scanner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "norvane/core/log.h"
#include "norvane/core/unicode.h"
#include "norvane/text/chars.h"

namespace norvane::markup {
namespace {

String S(const char* utf8) {
  return String::fromUtf8(utf8);
}

// One handler call, with the name and tag as text for readable failures.
struct Call {
  unsigned kind;
  std::string name;  // "-" when there is none
  std::string tag;
  std::string before;  // the text from previousTagEnd to tagLocation
  size_t tagLocation;
  size_t previousTagEnd;

  friend bool operator==(const Call&, const Call&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Call& c) {
    return out << "{" << c.kind << ", " << c.name << ", \"" << c.tag << "\", \"" << c.before << "\", " << c.tagLocation
               << ", " << c.previousTagEnd << "}";
  }
};

std::string utf8(const unichar* units, size_t location, size_t length) {
  return utf16ToUtf8(std::u16string_view(units + location, length));
}

std::vector<Call> scan(const String& text, size_t stopAfter = SIZE_MAX) {
  std::vector<Call> calls;
  GetTagsOfString(text, [&](unichar* c, size_t nameLocation, size_t nameLength, size_t tagLocation, size_t tagLength,
                            size_t previousTagEnd, unsigned kind) {
    calls.push_back({kind, nameLocation == NotFound ? "-" : utf8(c, nameLocation, nameLength),
                     utf8(c, tagLocation, tagLength), utf8(c, previousTagEnd, tagLocation - previousTagEnd),
                     tagLocation, previousTagEnd});
    return calls.size() >= stopAfter;
  });
  return calls;
}

Call end(const char* before, size_t length, size_t previousTagEnd) {
  return {0, "-", "", before, length, previousTagEnd};
}

struct ScanCase {
  const char* input;
  std::vector<Call> expected;
};

class ScanCases : public testing::TestWithParam<ScanCase> {};

TEST_P(ScanCases, ReportsTheseCalls) {
  const ScanCase& c = GetParam();
  EXPECT_EQ(scan(S(c.input)), c.expected) << "input: " << c.input;
}

INSTANTIATE_TEST_SUITE_P(
    Scanner, ScanCases,
    testing::Values(
        ScanCase{"plain text", {end("plain text", 10, 0)}},
        ScanCase{"<p>a</p>", {{1, "p", "<p>", "", 0, 0}, {1, "p", "</p>", "a", 4, 3}, end("", 8, 8)}},
        // A '<' inside a tag never moves its start.
        ScanCase{"a < b and c > d", {{1, "b", "< b and c >", "a ", 2, 0}, end(" d", 15, 13)}},
        ScanCase{"<1>x<>", {{1, "-", "<1>", "", 0, 0}, {1, "-", "<>", "x", 4, 3}, end("", 6, 6)}},
        ScanCase{"<1 foo=\"bar\">", {{1, "foo", "<1 foo=\"bar\">", "", 0, 0}, end("", 13, 13)}},
        ScanCase{"<!DOCTYPE html><?xml v?>",
                 {{1, "DOCTYPE", "<!DOCTYPE html>", "", 0, 0}, {1, "xml", "<?xml v?>", "", 15, 15}, end("", 24, 24)}},
        ScanCase{"<a=b>", {{1, "a", "<a=b>", "", 0, 0}, end("", 5, 5)}},
        ScanCase{"<dc:date>x", {{1, "dc:date", "<dc:date>", "", 0, 0}, end("x", 10, 9)}},
        ScanCase{"<br/>", {{1, "br", "<br/>", "", 0, 0}, end("", 5, 5)}},
        ScanCase{"<a\thref=x>", {{1, "a", "<a\thref=x>", "", 0, 0}, end("", 10, 10)}},
        // Quotes open only behind '='.
        ScanCase{"<a href=\"x>y\">z", {{1, "a", "<a href=\"x>y\">", "", 0, 0}, end("z", 15, 14)}},
        ScanCase{"<a \"x>y\">z", {{1, "a", "<a \"x>", "", 0, 0}, end("y\">z", 10, 6)}},
        ScanCase{"<a b= 'x>' c=\"'>\">", {{1, "a", "<a b= 'x>' c=\"'>\">", "", 0, 0}, end("", 18, 18)}},
        ScanCase{"<a title=it's>x'>y", {{1, "a", "<a title=it's>x'>", "", 0, 0}, end("y", 18, 17)}},
        // An '=' inside quotes expects no value.
        ScanCase{"<a x=\"=\" 'b>c", {{1, "a", "<a x=\"=\" 'b>", "", 0, 0}, end("c", 13, 12)}},
        ScanCase{"<a title=\"never closed>text", {end("<a title=\"never closed>text", 27, 0)}},
        // Comments.
        ScanCase{"<!-->x", {{2, "-", "<!-->", "", 0, 0}, end("x", 6, 5)}},
        ScanCase{"<!->x", {{2, "-", "<!->", "", 0, 0}, end("x", 5, 4)}},
        ScanCase{"<!-- a --!>", {{2, "-", "<!-- a --!>", "", 0, 0}, end("", 11, 11)}},
        ScanCase{"<!-- a > b -->c", {{2, "-", "<!-- a > b -->", "", 0, 0}, end("c", 15, 14)}},
        ScanCase{"<!-- \"x -->", {{2, "-", "<!-- \"x -->", "", 0, 0}, end("", 11, 11)}},
        ScanCase{"<!-x!>y->z", {{2, "-", "<!-x!>y->", "", 0, 0}, end("z", 10, 9)}},
        ScanCase{"a<!-- open", {{2, "-", "<!-- open", "a", 1, 0}, end("", 10, 10)}},
        // Marked sections.
        ScanCase{"<![CDATA[a > b]]>", {{3, "-", "<![CDATA[a > b]]>", "", 0, 0}, end("", 17, 17)}},
        ScanCase{"<![CDATA[a]> b]]>", {{3, "-", "<![CDATA[a]>", "", 0, 0}, end(" b]]>", 17, 12)}},
        ScanCase{"<![if !IE]>x<![endif]-->",
                 {{3, "-", "<![if !IE]>", "", 0, 0}, {3, "-", "<![endif]-->", "x", 12, 11}, end("", 24, 24)}},
        ScanCase{"<![CDATA[ never", {{3, "-", "<![CDATA[ never", "", 0, 0}, end("", 15, 15)}},
        // "<!" at the very end is an unterminated ordinary tag.
        ScanCase{"ab<!", {end("ab<!", 4, 0)}}, ScanCase{"<!>", {{1, "-", "<!>", "", 0, 0}, end("", 3, 3)}},
        // Script and style bodies.
        ScanCase{"<script>if (a<b) x=\"</div>\";</script>z",
                 {{1, "script", "<script>if (a<b) x=\"</div>\";</script>", "", 0, 0}, end("z", 38, 37)}},
        ScanCase{
            "<SCRIPT><!-- document.write(\"</SCRIPT>\"); --></SCRIPT>",
            {{1, "SCRIPT", "<SCRIPT><!-- document.write(\"</SCRIPT>\"); --></SCRIPT>", "", 0, 0}, end("", 54, 54)}},
        ScanCase{"<script src=\"x\"/><b>",
                 {{1, "script", "<script src=\"x\"/>", "", 0, 0}, {1, "b", "<b>", "", 17, 17}, end("", 20, 20)}},
        ScanCase{"<style>p<b>", {{1, "style", "<style>", "", 0, 0}, {1, "b", "<b>", "p", 8, 7}, end("", 11, 11)}},
        ScanCase{"<Style>a{}</STYLE >b", {{1, "Style", "<Style>a{}</STYLE >", "", 0, 0}, end("b", 20, 19)}},
        ScanCase{"<script>x</script", {{1, "script", "<script>x</script", "", 0, 0}, end("", 17, 17)}},
        ScanCase{"<scripts>x</scripts>",
                 {{1, "scripts", "<scripts>", "", 0, 0}, {1, "scripts", "</scripts>", "x", 10, 9}, end("", 20, 20)}},
        ScanCase{"<script>a<script>b</script>",
                 {{1, "script", "<script>a<script>b</script>", "", 0, 0}, end("", 27, 27)}},
        ScanCase{"<script><!--</script>x<script>y</script>-->",
                 {{1, "script", "<script><!--</script>", "", 0, 0},
                  {1, "script", "<script>y</script>", "x", 22, 21},
                  end("-->", 43, 40)}},
        ScanCase{"<style><style>x</script>",
                 {{1, "style", "<style>", "", 0, 0},
                  {1, "style", "<style>", "", 7, 7},
                  {1, "script", "</script>", "x", 15, 14},
                  end("", 24, 24)}},
        ScanCase{"</script><i>", {{1, "script", "</script>", "", 0, 0}, {1, "i", "<i>", "", 9, 9}, end("", 12, 12)}}));

TEST(Scanner, EmptyAndNullStringsAreNotScanned) {
  int calls = 0;
  auto count = [&](unichar*, size_t, size_t, size_t, size_t, size_t, unsigned) { return ++calls, false; };
  EXPECT_FALSE(GetTagsOfString(String(), count));
  EXPECT_FALSE(GetTagsOfString(String::empty(), count));
  EXPECT_EQ(calls, 0);
  EXPECT_TRUE(GetTagsOfString(S("x"), count));
  EXPECT_EQ(calls, 1);
}

TEST(Scanner, StoppingHandlerGetsNoClosingCall) {
  EXPECT_EQ(scan(S("<a><b>"), 2).size(), 2u);
  EXPECT_EQ(scan(S("<a><b>c"), 1).size(), 1u);
  // Calls at the end of the text are made whatever they answer.
  EXPECT_EQ(scan(S("<!-- x"), 1).size(), 2u);
}

TEST(Scanner, NamesAreUnitsOfTheBuffer) {
  // Non-ASCII letters start and continue names.
  auto calls = scan(S("<été x>"));
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[0].name, "été");
}

struct Record {
  std::vector<std::string> names;
  const String* scanned = nullptr;
};

bool RecordNamesHandler(const String& string, unichar* characters, size_t nameLocation, size_t nameLength, size_t,
                        size_t, size_t, unsigned kind, void* context) {
  auto* record = static_cast<Record*>(context);
  EXPECT_TRUE(string.isSameObject(*record->scanned));
  if (kind == 1 && nameLocation != NotFound) record->names.push_back(utf8(characters, nameLocation, nameLength));
  return false;
}

TEST(Scanner, FunctionHandlerReceivesStringAndContext) {
  const String text = S("<a><b/></a>");
  Record record;
  record.scanned = &text;
  EXPECT_TRUE(GetTagsOfString(text, RecordNamesHandler, &record));
  EXPECT_EQ(record.names, (std::vector<std::string>{"a", "b", "a"}));
  EXPECT_FALSE(GetTagsOfString(text, nullptr, &record));
}

TEST(Scanner, MutableScanWorksOnAPrivateCopy) {
  const String text = S("ab<i>cd");
  unichar* seen = nullptr;
  EXPECT_TRUE(GetTagsOfString(
      text,
      [&](unichar* c, size_t, size_t, size_t tagLocation, size_t, size_t previousTagEnd, unsigned) {
        seen = c;
        for (size_t k = previousTagEnd; k < tagLocation; ++k) c[k] = 'X';
        return false;
      },
      true));
  EXPECT_NE(seen, text.data());
  EXPECT_EQ(text, S("ab<i>cd"));
  // Without the copy the scan reads the string's own storage.
  GetTagsOfString(text, [&](unichar* c, size_t, size_t, size_t, size_t, size_t, unsigned) {
    seen = c;
    return true;
  });
  EXPECT_EQ(seen, text.data());
}

TEST(Scanner, ParseXmlCatchesAndLogsHandlerExceptions) {
  LogCapture capture;
  bool result = parseXmlWithHandler(S("<a>"), [](unichar*, size_t, size_t, size_t, size_t, size_t, unsigned) -> bool {
    throw std::runtime_error("handler failed");
  });
  EXPECT_FALSE(result);
  EXPECT_TRUE(capture.contains("parseXmlWithHandler: (String): std::runtime_error:\nhandler failed\n"));
  EXPECT_TRUE(
      parseXmlWithHandler(S("<a>"), [](unichar*, size_t, size_t, size_t, size_t, size_t, unsigned) { return false; }));
  EXPECT_FALSE(parseXmlWithHandler(S("<a>"), nullptr, nullptr, false));
}

TEST(Scanner, RawBufferScanOfConstUnits) {
  const std::u16string text = u"<x>y";
  size_t calls = 0;
  scanTags(text.data(), text.size(), [&](const unichar*, size_t, size_t, size_t, size_t, size_t, unsigned) {
    ++calls;
    return false;
  });
  EXPECT_EQ(calls, 2u);
}

// Long inputs exercise the vector searches across block boundaries: a tag
// put at every offset of a long text must be found at that offset.
TEST(Scanner, FindsTagsAtEveryOffsetOfLongTexts) {
  for (size_t offset = 0; offset < 70; ++offset) {
    std::string text(offset, 'x');
    text += "<a href='>' b=\"c\">";
    text += std::string(40 - offset % 37, 'y');
    auto calls = scan(S(text.c_str()));
    ASSERT_EQ(calls.size(), 2u) << offset;
    EXPECT_EQ(calls[0].tagLocation, offset);
    EXPECT_EQ(calls[0].tag, "<a href='>' b=\"c\">");
    EXPECT_EQ(calls[1].tagLocation, text.size());
  }
}

// ---------------------------------------------------------------------------
// Small string operations

TEST(FixedXml, ReplacesControlUnitsExceptTabAndLineEnds) {
  EXPECT_EQ(fixedXml(S("a\x01"
                       "b\tc\nd\re\x1f")),
            S("a b\tc\nd\re "));
  const String clean = S("a\tb\n");
  EXPECT_TRUE(fixedXml(clean).isSameObject(clean));
  EXPECT_TRUE(fixedXml(String()).isNull());
  const String text = S("x");
  EXPECT_TRUE(optimizedXml(text).isSameObject(text));
}

TEST(TagShape, Predicates) {
  struct Case {
    const char* tag;
    bool open, closed, meta, remark;
  };
  const Case cases[] = {
      {"<a>", true, false, false, false},       {"</a>", false, true, false, false},
      {"<br/>", true, true, false, false},      {"<>", false, false, false, false},
      {"</>", false, false, false, false},      {"<![CDATA[x]]>", true, false, true, false},
      {"<!-- x -->", true, false, false, true}, {"<!-x->", true, false, false, false},
  };
  for (const Case& c : cases) {
    const String tag = S(c.tag);
    EXPECT_EQ(isTagOpen(tag), c.open) << c.tag;
    EXPECT_EQ(isTagClosed(tag), c.closed) << c.tag;
    EXPECT_EQ(isMetaTag(tag), c.meta) << c.tag;
    EXPECT_EQ(isRemarkTag(tag), c.remark) << c.tag;
    const String padded = S((std::string("xy") + c.tag + "z").c_str());
    const Range range{2, tag.length()};
    EXPECT_EQ(isTagOpenInRange(padded, range), c.open) << c.tag;
    EXPECT_EQ(isTagClosedInRange(padded, range), c.closed) << c.tag;
    EXPECT_EQ(isMetaTagInRange(padded, range), c.meta) << c.tag;
    EXPECT_EQ(isRemarkTagInRange(padded, range), c.remark) << c.tag;
  }
  EXPECT_FALSE(isTagOpenCharacters(nullptr, {0, 5}));
  EXPECT_FALSE(isTagOpenInRange(S("<a>"), {2, 3}));
}

TEST(TagShape, DepthChange) {
  const std::u16string tags[] = {u"<a>", u"</a>", u"<br/>", u"<>"};
  const int expected[] = {1, -1, 0, 0};
  for (size_t k = 0; k < 4; ++k) EXPECT_EQ(tagDepthChange(tags[k].data(), {0, tags[k].size()}), expected[k]);
}

// ---------------------------------------------------------------------------
// Attributes

struct AttributeCase {
  const char* tag;
  const char* name;
  const char* expected;  // nullptr: no value
};

class TagAttributes : public testing::TestWithParam<AttributeCase> {};

TEST_P(TagAttributes, ValueOfName) {
  const AttributeCase& c = GetParam();
  const std::u16string tag = utf8ToUtf16(c.tag);
  const String value = attributeOfTagCharacters(tag.data(), tag.size(), c.name);
  const Range range = rangeOfAttributeOfTagCharacters(tag.data(), tag.size(), c.name);
  if (c.expected == nullptr) {
    EXPECT_TRUE(value.isNull()) << c.tag << " gave " << value.toUtf8();
    EXPECT_EQ(range, NotFoundRange) << c.tag;
  } else {
    EXPECT_EQ(value, S(c.expected)) << c.tag;
    ASSERT_TRUE(range.found()) << c.tag;
    EXPECT_EQ(utf8(tag.data(), range.location, range.length), c.expected) << c.tag;
  }
  // The same tag inside a larger buffer: ranges count from the buffer's start.
  const std::u16string padded = u"text " + tag + u" more";
  const Range inner = rangeOfAttributeOfTagCharacters(padded.data(), Range{5, tag.size()}, c.name);
  if (c.expected != nullptr) {
    EXPECT_EQ(inner.location, range.location + 5) << c.tag;
    EXPECT_EQ(attributeOfTagCharacters(padded.data(), Range{5, tag.size()}, c.name), S(c.expected)) << c.tag;
  } else {
    EXPECT_EQ(inner, NotFoundRange) << c.tag;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Scanner, TagAttributes,
    testing::Values(
        AttributeCase{"<a href=\"x.html\">", "HREF", "x.html"}, AttributeCase{"<a HREF='x.html'>", "href", "x.html"},
        AttributeCase{"<a href = x.html title=y>", "HREF", "x.html"},
        AttributeCase{"<a data-href=\"x\" href=\"y\">", "HREF", "y"},
        AttributeCase{"<a my_href=\"x\" href=\"y\">", "HREF", "y"},
        AttributeCase{"<a x=\"href=1\" href=\"y\">", "HREF", "y"},
        AttributeCase{"<a x='href=1' href=\"y\">", "HREF", "y"},
        AttributeCase{"<b=c>", "B", nullptr},  // no longer than name + 5
        AttributeCase{"<a href=a/>", "HREF", "a/"}, AttributeCase{"<a href=>", "HREF", nullptr},
        AttributeCase{"<a href==\"x\">", "HREF", "x"}, AttributeCase{"<a href=\"  x  \">", "HREF", "  x"},
        AttributeCase{"<a href=\"\" b>", "HREF", nullptr}, AttributeCase{"<a hrefs=\"x\">", "HREF", nullptr},
        AttributeCase{"<a href\n=\n\"x\">", "HREF", "x"}, AttributeCase{"<a title=\"x>y\" href=z>", "TITLE", "x"},
        AttributeCase{"<a title=\"it's\" href=z>", "HREF", "z"},
        AttributeCase{"<a title='it\"s' href=\"z\">", "HREF", "z"},
        AttributeCase{"<a title=\"unclosed href=z>", "HREF", nullptr},
        AttributeCase{"<a href=\"unclosed>", "HREF", "unclosed"},
        AttributeCase{"<img src=x.png width=10>", "WIDTH", "10"}, AttributeCase{"<a href>", "HREF", nullptr}));

TEST(Scanner, ContentAttributeKeepsMarkup) {
  struct Case {
    const char* tag;
    const char* expected;
  };
  const Case cases[] = {
      {"<meta name=x content=\"<b>bold</b> text\">", "<b>bold</b> text"},
      {"<meta content=\"a > b\">", "a"},
      {"<meta content=\">a\">", ">a"},
      {"<meta content=\"text<\">", "text"},
      {"<meta content=\"text</\">", "text"},
      {"<meta content=\"unclosed><meta name=y>", "unclosed"},
      {"<meta content=plain>", "plain"},
  };
  for (const Case& c : cases) {
    const std::u16string tag = utf8ToUtf16(c.tag);
    EXPECT_EQ(contentAttributeOfTagCharacters(tag.data(), {0, tag.size()}), S(c.expected)) << c.tag;
  }
  const std::u16string plain = u"<meta content=\"a<b>c\">";
  EXPECT_EQ(attributeOfTagCharacters(plain.data(), plain.size(), "CONTENT"), S("a<b"));
}

TEST(Scanner, AttributesOfTagsAndStylesInStrings) {
  EXPECT_EQ(attributeOfTagWithName(S("<a data-href=x href=\"y\">"), S("href")), S("y"));
  EXPECT_EQ(attributeOfTagWithName(S("<a my_href=x>"), S("HREF")), S("x"));  // '_' does not prevent a match
  EXPECT_EQ(attributeOfTagWithName(S("<a href='x>y'>"), S("HREF")), S("x"));
  EXPECT_TRUE(attributeOfTagWithName(S("<a href=x>"), S("")).isNull());
  EXPECT_TRUE(attributeOfTagWithName(S("<b=c>"), S("B")).isNull());
  EXPECT_EQ(attributeOfTagWithName(S("<a b=c>"), S("B")), S("c"));
  EXPECT_EQ(attributeOfTagInRange(S("zz<a href=x>zz"), {2, 10}, S("HREF")), S("x"));
  EXPECT_TRUE(attributeOfTagInRange(S("<a href=x>"), {2, 20}, S("HREF")).isNull());

  EXPECT_EQ(attributeOfStyleWithName(S("width: 10px"), S("WIDTH")), S("10px"));
  EXPECT_EQ(attributeOfStyleWithName(S("font-family: Arial Black;"), S("font-family")), S("Arial"));
  EXPECT_EQ(attributeOfStyleWithName(S("font-family: 'Arial Black'; x:y"), S("FONT-FAMILY")), S("Arial Black"));
  EXPECT_EQ(attributeOfStyleWithName(S("_top: 5; left: 3"), S("top")), S("5"));
  EXPECT_EQ(attributeOfStyleWithName(S("margin-top: 5; top: 3"), S("top")), S("3"));
  EXPECT_EQ(attributeOfStyleWithName(S("top::5"), S("top")), S(":5"));  // one separator is skipped
  EXPECT_EQ(attributeOfStyleInRange(S("x{color:red;top:4}"), {2, 15}, S("TOP")), S("4"));
}

TEST(Scanner, HeaderFields) {
  EXPECT_EQ(headerCharset(S("text/html; charset=UTF-8")), S("UTF-8"));
  EXPECT_EQ(headerCharset(S("text/html; charset = \"utf-8\"; x")), S("utf-8"));
  EXPECT_EQ(headerCharset(S("text/html;CHARSET='latin1'")), S("latin1"));
  EXPECT_EQ(headerCharset(S("text/html; xcharset=koi8-r>")), S("koi8-r"));
  EXPECT_EQ(headerCharset(S("charset=\"\" charset=b")), S("b"));  // an empty quoted value fails
  EXPECT_EQ(headerCharset(S("charset=;")), S(""));
  EXPECT_TRUE(headerCharset(S("text/html")).isNull());
  EXPECT_TRUE(headerCharset(String()).isNull());

  EXPECT_EQ(headerRefresh(S("5; URL=http://x.org/a b")), S("http://x.org/a"));
  EXPECT_EQ(headerRefresh(S("0;url='http://x.org/'")), S("http://x.org/"));
  EXPECT_EQ(refreshInterval(S(" 15; url=x")), 15);
  EXPECT_EQ(refreshInterval(S("-3")), -3);
  EXPECT_EQ(refreshInterval(S("none")), 0);

  EXPECT_EQ(headerFieldNamed(S("a; NAME=value; b"), S("NAME")), S("value"));
  EXPECT_EQ(headerFieldNamed(S("NAME= value"), S("NAME")), S(" value"));  // not tolerant
  EXPECT_EQ(headerFieldNamed(S("NAME='a;b'"), S("NAME")), S("a;b"));
  EXPECT_EQ(headerFieldNamed(S("NAME=\"a;b\""), S("NAME")), S("\"a"));
  EXPECT_EQ(headerFieldNamed(S("NAME=|a;b|"), S("NAME"), u'|'), S("a;b"));
  EXPECT_EQ(headerFieldNamed(S("NAME=a b c"), S("NAME"), u'\'', 0), S("a b c"));
  EXPECT_EQ(headerFieldNamed(S("NAME=a,b"), S("NAME"), u'\'', u','), S("a"));
  EXPECT_TRUE(headerFieldNamed(S("NAME=a"), S("")).isNull());
  EXPECT_TRUE(headerFieldNamed(S("name=a"), S("name")).isNull());  // names are given in upper case
  EXPECT_EQ(headerFieldNamed(S("name=a"), S("NAME")), S("a"));
  EXPECT_EQ(HTTPHeaderFieldNamed(S("Digest REALM=\"a,b\", NONCE=x, y"), S("NONCE")), S("x"));
  EXPECT_EQ(HTTPHeaderFieldNamed(S("REALM=\"a,b\""), S("REALM")), S("a,b"));
}

TEST(Scanner, TagWidthAndHeight) {
  struct Case {
    const char* tag;
    bool result;
    int width, height;
  };
  const Case cases[] = {
      {"<img width=20 height=30>", true, 20, 30},
      {"<img width=\"20px\" heigh=\"7\">", true, 20, 7},
      {"<img width=20 height=0 heigh=9>", true, 20, 9},
      {"<img style=\"width: 10px; height: 12px\">", true, 10, 12},
      {"<img width=0 style=\"height: 12px\">", false, 0, 0},
      {"<img width=-4 height=2>", false, -4, 2},
      {"<img w=1>", false, 0, 0},  // fewer than 10 units
      {"<img src=x.png>", false, 0, 0},
  };
  for (const Case& c : cases) {
    const String tag = S(c.tag);
    int width = -99, height = -99;
    EXPECT_EQ(getTagWidth(&width, &height, tag), c.result) << c.tag;
    EXPECT_EQ(width, c.width) << c.tag;
    EXPECT_EQ(height, c.height) << c.tag;
    int w2 = -99, h2 = -99;
    EXPECT_EQ(getTagWidth(&w2, &h2, tag.data(), tag.length()), c.result) << c.tag;
    EXPECT_EQ(w2, c.width) << c.tag;
  }
}

TEST(Scanner, BackgroundStyleURL) {
  struct Case {
    const char* tag;
    const char* expected;
  };
  const Case cases[] = {
      {"<td style=\"background: url('a.png') no-repeat\">", "a.png"},
      {"<td style=\"BACKGROUND-IMAGE: URL(''b.png'');background-repeat:no-repeat\">", "b.png"},
      {"<td style='background: url(\"c.png\") no-repeat'>", "\"c.png\""},
      {"<td style=\"background: url(a.png)\">", nullptr},
      {"<td style=\"color: red; no-repeat url(a.png)\">", nullptr},
      {"</td style=\"background: url(a.png) no-repeat\">", nullptr},
      {"<td style=\"background: url() no-repeat\">", nullptr},
  };
  for (const Case& c : cases) {
    const std::u16string tag = utf8ToUtf16(c.tag);
    const String url = backgroundStyleURLOfTagCharacters(tag.data(), tag.size());
    if (c.expected == nullptr) {
      EXPECT_TRUE(url.isNull()) << c.tag;
    } else {
      EXPECT_EQ(url, S(c.expected)) << c.tag;
    }
  }
}

// ---------------------------------------------------------------------------
// Real pages

std::vector<std::filesystem::path> pythonDocPages() {
  std::vector<std::filesystem::path> pages;
  const std::filesystem::path root = "/usr/share/doc/python3.11/html";
  if (!std::filesystem::exists(root)) return pages;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    if (entry.is_regular_file() && entry.path().extension() == ".html") pages.push_back(entry.path());
  }
  std::sort(pages.begin(), pages.end());
  return pages;
}

std::string readFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream content;
  content << in.rdbuf();
  return content.str();
}

// A straightforward reading of the same rules, unit by unit, with no jumps:
// it counts the tags of each kind and the units of text outside tags.
struct NaiveCount {
  size_t kinds[4] = {0, 0, 0, 0};
  size_t textUnits = 0;
};

NaiveCount naiveCount(const std::u16string& s) {
  NaiveCount count;
  const size_t n = s.size();
  size_t i = 0, previousEnd = 0;
  auto lower = [](char16_t c) { return static_cast<char16_t>(c | 32); };
  auto closingAt = [&](size_t at, const char* word) {
    const size_t w = std::strlen(word);
    if (at + 2 + w > n || s[at] != '<' || s[at + 1] != '/') return false;
    for (size_t k = 0; k < w; ++k)
      if (lower(s[at + 2 + k]) != word[k]) return false;
    return true;
  };
  while (i < n) {
    if (s[i] != '<') {
      ++i;
      continue;
    }
    const size_t start = i;
    int mode = 1;
    bool shortComment = false;
    if (i + 2 < n && s[i + 1] == '!' && (s[i + 2] == '[' || s[i + 2] == '-')) {
      mode = s[i + 2] == '[' ? 3 : 2;
      shortComment = mode == 2 && (i + 3 >= n || s[i + 3] != '-');
      i += 3;
    } else {
      ++i;
    }
    bool valueExpected = false, inDouble = false, inSingle = false, ended = false;
    for (; i < n && !ended; ++i) {
      const char16_t c = s[i];
      if (mode == 1) {
        if (c == '=' && !inDouble && !inSingle) valueExpected = true;
        if (c == '"') inDouble = valueExpected ? (valueExpected = false, true) : false;
        if (c == '\'') inSingle = valueExpected ? (valueExpected = false, true) : false;
        if (c == '>' && !inDouble && !inSingle) ended = true;
      } else if (c == '>') {
        if (mode == 2) {
          ended = shortComment
                      ? s[i - 1] == '-'
                      : (s[i - 1] == '-' && s[i - 2] == '-') || (s[i - 1] == '!' && s[i - 2] == '-' && s[i - 3] == '-');
        } else {
          ended = s[i - 1] == ']' || (s[i - 1] == '-' && s[i - 2] == '-' && s[i - 3] == ']');
        }
      }
    }
    if (!ended) {
      if (mode != 1) {
        ++count.kinds[mode];
        count.textUnits += start - previousEnd;
        previousEnd = n;
      }
      break;
    }
    // Script and style elements without a comment inside are one tag.
    if (mode == 1) {
      size_t k = start + 1;
      while (k < i && !((s[k] | 32) >= 'a' && (s[k] | 32) <= 'z')) ++k;
      for (const char* word : {"script", "style"}) {
        const size_t w = std::strlen(word);
        bool same = k + w < i && !((s[k + w] | 32) >= 'a' && (s[k + w] | 32) <= 'z');
        for (size_t m = 0; same && m < w; ++m) same = lower(s[k + m]) == word[m];
        if (!same || s[start + 1] == '/' || s[i - 2] == '/') continue;
        size_t close = i;
        while (close < n && !closingAt(close, word)) ++close;
        if (close < n) {
          while (close < n && s[close] != '>') ++close;
          i = close < n ? close + 1 : n;
        }
      }
    }
    ++count.kinds[mode];
    count.textUnits += start - previousEnd;
    previousEnd = i;
  }
  count.textUnits += n - previousEnd;
  ++count.kinds[0];
  return count;
}

TEST(ScannerOnRealPages, KeepsInvariantsAndAgreesWithANaiveCount) {
  const auto pages = pythonDocPages();
  if (pages.size() < 100) GTEST_SKIP() << "python3.11-doc is not installed";
  size_t tags = 0;
  for (const auto& path : pages) {
    const String text = String::fromUtf8(readFile(path));
    NaiveCount seen;
    size_t lastEnd = 0, lastPrevious = 0;
    bool ok = true;
    const size_t n = text.length();
    GetTagsOfString(text, [&](unichar* c, size_t nameLocation, size_t nameLength, size_t tagLocation, size_t tagLength,
                              size_t previousTagEnd, unsigned kind) {
      ok = ok && kind <= 3 && tagLocation <= n && tagLength <= n - tagLocation && previousTagEnd <= tagLocation &&
           previousTagEnd >= lastPrevious && previousTagEnd == lastEnd && seen.kinds[0] == 0;
      if (nameLocation != NotFound) {
        ok = ok && kind == 1 && nameLocation > tagLocation && nameLocation + nameLength <= tagLocation + tagLength &&
             nameLength > 0 && text::isInRep(text::alphaCharacterSetRep(), c[nameLocation]);
      } else {
        ok = ok && nameLength == 0;
      }
      if (kind != 0)
        ok = ok && c[tagLocation] == '<' && (c[tagLocation + tagLength - 1] == '>' || tagLocation + tagLength == n);
      ++seen.kinds[kind];
      seen.textUnits += tagLocation - previousTagEnd;
      lastPrevious = previousTagEnd;
      lastEnd = tagLocation + tagLength;
      return false;
    });
    ASSERT_TRUE(ok) << path;
    const NaiveCount expected = naiveCount(std::u16string(text.view()));
    for (int kind = 0; kind < 4; ++kind) EXPECT_EQ(seen.kinds[kind], expected.kinds[kind]) << path << " kind " << kind;
    EXPECT_EQ(seen.textUnits, expected.textUnits) << path;
    EXPECT_EQ(seen.kinds[0], 1u) << path;
    tags += seen.kinds[1];
  }
  EXPECT_GT(tags, pages.size() * 50);
}

// The vector search and a plain unit loop agree on every page, also when
// the page is cut at arbitrary lengths.
TEST(ScannerOnRealPages, PrefixesOfPagesKeepOneClosingCall) {
  const auto pages = pythonDocPages();
  if (pages.size() < 100) GTEST_SKIP() << "python3.11-doc is not installed";
  for (size_t p = 0; p < pages.size(); p += 25) {
    const std::u16string page = utf8ToUtf16(readFile(pages[p]));
    for (size_t cut = 1; cut < page.size(); cut += 997) {
      size_t closing = 0, last = 0;
      bool ordered = true;
      scanTags(page.data(), cut,
               [&](const unichar*, size_t, size_t, size_t tagLocation, size_t tagLength, size_t previousTagEnd,
                   unsigned kind) {
                 ordered = ordered && previousTagEnd >= last && tagLocation + tagLength <= cut;
                 last = previousTagEnd;
                 closing += kind == 0;
                 return false;
               });
      ASSERT_EQ(closing, 1u) << pages[p] << " cut at " << cut;
      ASSERT_TRUE(ordered) << pages[p] << " cut at " << cut;
    }
  }
}

// Every href of an <a> tag on the pages, read by the attribute reader,
// equals the text between ` href="` and the next '"' in the tag: the pages
// quote all their attributes with '"'.
TEST(ScannerOnRealPages, HrefValuesMatchTheQuotedText) {
  const auto pages = pythonDocPages();
  if (pages.size() < 100) GTEST_SKIP() << "python3.11-doc is not installed";
  size_t links = 0;
  for (size_t p = 0; p < pages.size(); p += 5) {
    const String text = String::fromUtf8(readFile(pages[p]));
    bool ok = true;
    GetTagsOfString(text, [&](unichar* c, size_t nameLocation, size_t nameLength, size_t tagLocation, size_t tagLength,
                              size_t, unsigned kind) {
      if (kind != 1 || nameLength != 1 || (c[nameLocation] | 32) != 'a' || c[tagLocation + 1] == '/') return false;
      const std::u16string_view tag(c + tagLocation, tagLength);
      const size_t marker = tag.find(u" href=\"");
      const Range found = rangeOfAttributeOfTagCharacters(c, Range{tagLocation, tagLength}, "HREF");
      if (marker == std::u16string_view::npos) {
        ok = ok && !found.found();
        return false;
      }
      const size_t start = marker + 7;
      const size_t stop = tag.find(u'"', start);
      std::u16string_view expected = tag.substr(start, stop - start);
      while (!expected.empty() && (expected.back() == ' ' || expected.back() == '\n')) expected.remove_suffix(1);
      if (expected.empty()) {
        ok = ok && !found.found();
      } else {
        ok = ok && found.found() && std::u16string_view(c + found.location, found.length) == expected;
        EXPECT_TRUE(ok) << pages[p] << ": " << utf16ToUtf8(tag);
      }
      ++links;
      return !ok;
    });
    ASSERT_TRUE(ok) << pages[p];
  }
  EXPECT_GT(links, 10000u);
}

// Scans share nothing: several threads scanning the same strings see the
// same calls.
TEST(Scanner, ConcurrentScansAgree) {
  const String page = S("<html><head><script>a<b</script></head><body class='x'>t<!-- c --> &amp; <br/></body>");
  const auto expected = scan(page);
  std::vector<std::thread> threads;
  std::vector<int> agreed(4, 0);
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (int round = 0; round < 200; ++round) agreed[t] += scan(page) == expected;
    });
  }
  for (auto& thread : threads) thread.join();
  for (int t = 0; t < 4; ++t) EXPECT_EQ(agreed[t], 200);
}

}  // namespace
}  // namespace norvane::markup
