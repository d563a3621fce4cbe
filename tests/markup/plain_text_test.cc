#include "norvane/markup/plain_text.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "norvane/core/unicode.h"

namespace norvane::markup {
namespace {

struct Options {
  bool reformat = false, onlyBody = false, removeJunk = false, googleTags = false, imageAlts = true;
  bool nonUmlauted = false;
};

std::u16string convert(std::u16string_view html, Options o = {}, bool* junk = nullptr) {
  String result = stringByConvertingHtml2PlainTextNonUmlauted(String(html), o.nonUmlauted, o.reformat, o.onlyBody,
                                                              o.removeJunk, junk, o.googleTags, o.imageAlts);
  return result.toU16();
}

struct Case {
  const char* name;
  std::u16string html;
  std::u16string text;
  Options options = {};
};

TEST(PlainTextTest, Layout) {
  const Case cases[] = {
      {"paragraphs", u"<p>One</p><p>Two</p>", u"One\n\nTwo\n\n"},
      {"line break", u"a<br>b", u"a\nb"},
      {"breaks need text", u"<br><br>", u""},
      {"cells", u"<td>a</td><td>b</td>", u"a b "},
      {"inline", u"a <b>bold</b> c", u"a bold c"},
      {"no space from inline tags", u"<b>x</b>y", u"xy"},
      {"links set spaces", u"<a href=\"x\">link</a>text", u"link text"},
      {"heading", u"<h2>Title</h2>text", u"Title\n\ntext"},
      {"list", u"<ul><li>a<li>b</ul>c", u"a\nb\nc"},
      {"collapse white", u"<p>  a \n\t b  </p>", u"a b\n\n"},
      {"entities", u"x &amp; y &lt;z&gt; &eacute;t&eacute;", u"x & y <z> \u00E9t\u00E9"},
      {"short runs keep entities", u"<b>&lt</b>", u"&lt"},
      {"four unit run converts whole", u"<b>&lt;</b>", u"<"},
      {"four unit run converts", u"<b>&lt;</b>x", u"<x"},
      {"script and style", u"a<script>var x = '<p>';</script>b<style>p{}</style>c", u"abc"},
      {"comments", u"a<!-- hidden -->b", u"ab"},
      {"select options", u"x<select><option>a</option></select>y", u"xy"},
      {"table starts paragraph", u"text<table><tr><td>a</td></tr></table>after", u"text\n\na \n\nafter"},
      {"pre without reformat", u"x<pre>a\n  b</pre>y", u"x\n\na by"},
      {"textarea", u"a<textarea>typed</textarea>b", u"ab"},
      {"noscript", u"a<noscript>enable js</noscript>b", u"ab"},
      {"title is text", u"<title>T</title>body", u"Tbody"},
      {"no tags at all", u"plain", u"plain"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(convert(c.html, c.options), c.text);
  }
}

TEST(PlainTextTest, ReturnsReceiverWhenNothingReached) {
  String empty(u"");
  EXPECT_TRUE(stringByConvertingHtml2PlainText(empty).isSameObject(empty));
  EXPECT_TRUE(stringByConvertingHtml2PlainText(String()).isNull());
}

TEST(PlainTextTest, HiddenText) {
  const Case cases[] = {
      {"display none", u"<div style=\"display:none\">x</div>y", u"y"},
      {"visibility hidden", u"<div style=\"visibility: hidden\">x</div>y", u"y"},
      {"display none in table", u"ab<table><tr><td><div style=\"display:none\">x</div>y", u"ab\n\nx\n\ny"},
      {"first table is not counted", u"<table><tr><td><div style=\"display:none\">x</div>y", u"y"},
      {"hidden span everywhere", u"<table><tr><td><span style=\"display:none\">x</span>y", u"y"},
      {"hidden class ends at next div", u"<div class=\"hidden\">a<div>b</div></div>", u"b\n\n"},
      {"far off page", u"<div style=\"position:absolute; top:-5000px\">x</div>y", u"y"},
      {"tiny", u"<div style=\"width:1px;height:1px\">x</div>y", u"y"},
      {"uppercase style words stay", u"<div style=\"DISPLAY:NONE\">x</div>y", u"x\n\ny"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(convert(c.html, c.options), c.text);
  }
}

TEST(PlainTextTest, Images) {
  EXPECT_EQ(convert(u"a<img alt=\"x\">b"), u"a x b");
  EXPECT_EQ(convert(u"a<img title=\"t\">b"), u"a t b");
  Options noAlts;
  noAlts.imageAlts = false;
  EXPECT_EQ(convert(u"a<img alt=\"x\">b", noAlts), u"ab");
}

TEST(PlainTextTest, InvisibleFontsAndJunk) {
  std::u16string page = u"<body bgcolor=\"#FFF\"><font color=\"#fff\">x</font>y</body>";
  Options junk;
  junk.removeJunk = true;
  EXPECT_EQ(convert(page, junk), u"y");
  EXPECT_EQ(convert(page), u"xy");
  Options plain;
  EXPECT_EQ(convert(u"<font style=\"font-size:2pt\">x</font>y", junk), u"y");
  EXPECT_EQ(convert(u"<font style=\"font-size:12pt\">x</font>y", junk), u"xy");

  // Long wordy text in an invisible font is reported as junk.
  std::u16string words;
  for (int i = 0; i < 30; ++i) words += u"keyword ";
  bool removed = false;
  convert(u"<body bgcolor=white><font color=WHITE>" + words + u"</font>y", junk, &removed);
  EXPECT_TRUE(removed);
  removed = true;
  convert(u"<body bgcolor=white><font color=WHITE>short</font>y", junk, &removed);
  EXPECT_FALSE(removed);
}

TEST(PlainTextTest, JunkThresholdsAtTheirBoundaries) {
  Options junk;
  junk.removeJunk = true;
  for (size_t length : {10000u, 10001u}) {
    std::u16string run(length, u'a');
    bool removed = false;
    std::u16string out = convert(u"<p>" + run + u"</p>x", junk, &removed);
    SCOPED_TRACE(length);
    EXPECT_EQ(removed, length == 10001);
    EXPECT_EQ(out.find(run) != std::u16string::npos, length == 10000);
  }
  for (size_t length : {3500u, 3501u}) {
    std::u16string run(length, u'a');
    bool removed = false;
    convert(u"<a href=x>" + run + u"</a>", junk, &removed);
    EXPECT_EQ(removed, length == 3501) << length;
  }
  // Inside pre the run stays unless a paragraph grows beyond 20000 units.
  std::u16string run(15000, u'b');
  bool removed = false;
  EXPECT_NE(convert(u"<pre>" + run + u"</pre>", junk, &removed).find(run), std::u16string::npos);
  EXPECT_FALSE(removed);
  std::u16string sameParagraph = u"<p>intro</p><pre>" + run + u"<b>x</b>" + run + u"</pre>";
  EXPECT_EQ(convert(sameParagraph, junk, &removed), u"intro\n\n");
  EXPECT_TRUE(removed);
  // Without removeJunk nothing is dropped.
  removed = true;
  EXPECT_NE(convert(u"<p>" + std::u16string(10001, u'a') + u"</p>", {}, &removed).size(), 0u);
  EXPECT_FALSE(removed);
}

TEST(PlainTextTest, CrawlComments) {
  std::u16string page = u"<!-- googleoff: index -->x<!-- googleon: index -->y";
  Options google;
  google.googleTags = true;
  EXPECT_EQ(convert(page, google), u"y");
  EXPECT_EQ(convert(page), u"xy");
  EXPECT_EQ(convert(u"<!-- googleoff: all -->x<!-- googleon: all -->y", google), u"y");
  EXPECT_EQ(convert(u"<!-- googleoff: snippet -->x", google), u"x");  // only the index bit hides text
}

TEST(PlainTextTest, OnlyBody) {
  Options body;
  body.onlyBody = true;
  EXPECT_EQ(convert(u"<title>T</title><body>text</body>after", body), u"text");
  EXPECT_EQ(convert(u"no body tag <b>here</b>", body), u"no body tag here");
  // An unclosed head keeps the depth at 0 after <body>: the second scan takes
  // everything.
  EXPECT_EQ(convert(u"<head><title>T</title><body>text", body), u"Ttext");
  EXPECT_EQ(convert(u"<title>T</title>x"), u"Tx");
  Options junk;
  junk.removeJunk = true;
  EXPECT_EQ(convert(u"<title>T</title>x", junk), u"x");
}

TEST(PlainTextTest, ReformatAndNonUmlauted) {
  Options reformat;
  reformat.reformat = true;
  EXPECT_EQ(convert(u"<pre>one\ntwo\n\nthree\n- item</pre>", reformat), u"one two\n\nthree\n- item");
  Options folded;
  folded.nonUmlauted = true;
  EXPECT_EQ(convert(u"<p>Cr&egrave;me br&ucirc;l&eacute;e</p>", folded), u"Creme brulee\n\n");
}

TEST(PlainTextTest, SimplifiedAndStripped) {
  EXPECT_EQ(stringByConvertingHtml2SimplifiedPlainText(String(u"<head><title>T</title></head><body><p>a</p>b</body>")),
            u" a b");
  EXPECT_EQ(stripTags(String(u"<p>a</p><p>b &amp; c</p>")), u"a b &amp; c");
  String plain(u"no tags");
  EXPECT_TRUE(stripTags(plain).isSameObject(plain));
}

// Every page of the Python documentation converts, and the text holds the
// page's title words and none of its markup.
TEST(PlainTextTest, PythonDocumentationPages) {
  const std::filesystem::path root = "/usr/share/doc/python3.11/html";
  if (!std::filesystem::exists(root)) GTEST_SKIP() << "python3.11-doc is not installed";
  size_t pages = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    if (entry.path().extension() != ".html") continue;
    std::ifstream file(entry.path(), std::ios::binary);
    std::stringstream bytes;
    bytes << file.rdbuf();
    String html = String::fromUtf8(bytes.str());
    String text = stringByConvertingHtml2PlainTextNonUmlauted(html, false, false, true, false);
    ASSERT_FALSE(text.isNull()) << entry.path();
    EXPECT_FALSE(text.isEmpty()) << entry.path();
    EXPECT_LT(text.length(), html.length()) << entry.path();
    ++pages;
  }
  EXPECT_GT(pages, 400u);
}

}  // namespace
}  // namespace norvane::markup
