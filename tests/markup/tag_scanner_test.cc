#include "norvane/markup/tag_scanner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "norvane/core/log.h"
#include "norvane/core/unicode.h"

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

}  // namespace
}  // namespace norvane::markup
